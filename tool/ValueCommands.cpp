#include "tool/Commands.h"

#include <cstdio>

#include "korvat/base/BinaryUtils.h"
#include "korvat/convert/PacketConverter.h"
#include "tool/Failure.h"
#include "tool/JsonPath.h"

namespace zavri::korvat::tool {

namespace {

json::Value decodeText(Catalogue& catalogue, const std::string& type, const std::string& hex) {
  const VarType& varType = catalogue.findVarType(type);
  const base::Buffer buffer = catalogue.readHex(hex);
  catalogue.checkLength(varType, buffer);
  return catalogue.decode(varType, buffer);
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

}  // namespace

void runDecode(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex) {
  std::string text;
  for (const std::string& piece : hex) text += (text.empty() ? "" : " ") + piece;
  print(decodeText(catalogue, type, text));
}

void runGet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path) {
  print(select(decodeText(catalogue, type, hex), path));
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
