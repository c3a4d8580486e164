#include "tool/Commands.h"

#include <cstdio>
#include <memory>

#include "korvat/base/BinaryUtils.h"
#include "korvat/convert/PacketConverter.h"
#include "korvat/format/FormatParser.h"
#include "tool/Failure.h"
#include "tool/FormatText.h"
#include "tool/JsonPath.h"
#include "tool/TextTable.h"
#include "tool/ValueShape.h"

namespace zavri::korvat::tool {

namespace {

json::Value decodeHex(Catalogue& catalogue, const VarType& type, const std::string& hex) {
  const base::Buffer buffer = catalogue.readHex(hex);
  catalogue.checkLength(type, buffer);
  return catalogue.decode(type, buffer);
}

// The types that formats in other units have made of `type`, for a message.
std::string derivedNames(Catalogue& catalogue, const VarType& type) {
  std::string names;
  for (const VarType* derived : findDerivedTypes(catalogue.getManager(), type)) {
    names += (names.empty() ? "" : ", ") + displayName(*derived);
  }
  return names;
}

Failure noFormat(Catalogue& catalogue, const VarType& type) {
  const std::string derived = derivedNames(catalogue, type);
  return Failure(kProblem,
                 displayName(type) + " has no display format" +
                     (derived.empty() ? "; decode shows it without --text"
                                      : " of its own; take a type in other units: " + derived));
}

void print(const base::Buffer& raw) {
  std::printf("%s\n", util::BinaryUtils::toString(raw).c_str());
}

// The value that the command line gives for a member: JSON, or plain text where a text stands now
// and for everything that is no JSON, such as the name of an enumerator.
json::Value readMember(const std::string& text, const json::Value& current) {
  json::Value value;
  std::string error;
  const bool isJson = json::Value::parse(text, value, error);
  if (!isJson || (current.isString() && !value.isString())) value = text;
  return value;
}

void print(const json::Value& value) {
  std::printf("%s\n", value.stringify().c_str());
}

// The format `name` of `type`. One in another unit has a type of its own, which then takes the
// place of `type`; any other one is parsed into `parsed`.
const Format* findFormat(Catalogue& catalogue, const VarType*& type, const std::string& name,
                         std::unique_ptr<Format>& parsed) {
  for (const VarType* derived : findDerivedTypes(catalogue.getManager(), *type)) {
    if (derived->getFormat()->getName() != name) continue;
    type = derived;
    return derived->getFormat();
  }
  const auto found = type->getFormats().find(name);
  format::FormatParser parser;
  if (found == type->getFormats().end()) {
    throw Failure(kProblem, displayName(*type) + " has no display format '" + name +
                                "'; see 'korvat describe " + displayName(*type) + "'");
  }
  if (!parser.parse(found->second)) {
    throw Failure(kProblem, "the format '" + name + "' of " + displayName(*type) +
                                " cannot be read: " + parser.getError());
  }
  parsed = parser.takeFormat();
  return parsed.get();
}

}  // namespace

void runDecode(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex,
               const ShapeOptions& shapeOptions) {
  const VarType& varType = catalogue.findVarType(type);
  const base::Buffer raw = catalogue.readHex(join(hex));
  catalogue.checkLength(varType, raw);
  json::Value value = catalogue.decode(varType, raw);
  ValueShape shape(catalogue, shapeOptions);
  json::Value rawNumbers;
  shape.changeMembers(varType, raw, value, rawNumbers);
  shape.chooseMembers(varType, value);
  if (rawNumbers.isNull()) return print(value);
  json::Value both;
  both["value"] = value;
  both["rawNumbers"] = rawNumbers;
  print(both);
}

void runDecodeText(Catalogue& catalogue, const std::string& type,
                   const std::vector<std::string>& hex, const std::string& formatName) {
  const VarType* varType = &catalogue.findVarType(type);
  std::unique_ptr<Format> parsed;
  const Format* format = varType->getFormat();
  if (!formatName.empty()) format = findFormat(catalogue, varType, formatName, parsed);
  if (format == nullptr) throw noFormat(catalogue, *varType);

  const json::Value value = decodeHex(catalogue, *varType, join(hex));
  std::printf("%s\n", renderText(catalogue.getManager(), *varType, *format, value).c_str());
}

void runGet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path) {
  print(select(decodeHex(catalogue, catalogue.findVarType(type), hex), path));
}

void runEncode(Catalogue& catalogue, const std::string& type, const std::string& jsonText) {
  const VarType& varType = catalogue.findVarType(type);
  json::Value value;
  std::string error;
  if (!json::Value::parse(jsonText, value, error)) {
    throw Failure(kProblem, "'" + jsonText + "' is not JSON: " + error);
  }
  print(catalogue.encode(varType, value));
}

void runSet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path, const std::string& value) {
  const VarType& varType = catalogue.findVarType(type);
  base::Buffer raw = catalogue.readHex(hex);
  catalogue.checkLength(varType, raw);
  // Without the keyword, which would make a number look like a text.
  TypeManager& manager = catalogue.getManager();
  const bool isKeywordUsed = manager.isSupportInvalidKeyword();
  manager.setSupportInvalidKeyword(false);
  const json::Value current = catalogue.decode(varType, raw);
  manager.setSupportInvalidKeyword(isKeywordUsed);
  const json::Value member = readMember(value, select(current, path));
  if (member.isNull()) throw Failure(kProblem, "null is no value for '" + path + "'");
  // Members that are not given keep their bits anyway; the one that is given must not be refused
  // in silence.
  manager.setAllowMissingFields(false);
  catalogue.patch(varType, placeAt(path, member), raw);
  print(raw);
}

void runSwap(Catalogue& catalogue, const std::string& type, const std::string& hex,
             base::Endianess from) {
  const VarType& varType = catalogue.findVarType(type);
  base::Buffer raw = catalogue.readHex(hex);
  catalogue.checkLength(varType, raw);
  const auto to = from == base::Endianess::Big ? base::Endianess::Little : base::Endianess::Big;
  PacketConverter converter(&catalogue.getManager(), varType, from, to);
  const base::Buffer given = raw;
  if (!converter.convert(raw)) {
    throw Failure(kProblem,
                  "cannot swap " + displayName(varType) + ": it has more bytes than given");
  }
  // Bytes behind the value have no order: they stay.
  for (unsigned i = catalogue.getSize(varType); i < raw.getSize(); ++i) {
    raw.getData()[i] = given.getData()[i];
  }
  print(raw);
}

}  // namespace zavri::korvat::tool
