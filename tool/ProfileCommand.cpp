#include "tool/Commands.h"

#include <algorithm>
#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "korvat/base/StringUtils.h"
#include "korvat/base/Value.h"
#include "korvat/types/DpRef.h"
#include "korvat/types/FpType.h"
#include "korvat/types/TypeManager.h"
#include "tool/Failure.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

using util::StringUtils;

// A description is made as JSON first; the text form is a rendering of it.

// A name as people write it, with the set where that is not the standard one.
std::string nameOf(const TypeId& id) {
  return id.getPrefix() == TypeId::StdPrefix ? id.toLonFormatId() : id.toString();
}

json::Value describeDatapoint(TypeManager& manager, const DpRef& datapoint) {
  json::Value row;
  row["index"] = datapoint.getIndex();
  row["name"] = datapoint.getName();
  const TypeId& type = datapoint.getTypeId();
  if (!type.getId().empty()) {
    row["type"] = nameOf(type);
    if (!type.isGenericNv() && manager.getType(type) == nullptr) {
      row["unknownType"].setBoolean(true);
    }
  }
  row["direction"] = datapoint.getDirection() == DpRef::Direction::Input ? "input" : "output";
  row["mandatory"].setBoolean(datapoint.isMandatory());
  if (datapoint.getMember() != 0) row["member"] = datapoint.getMember();
  if (datapoint.hasMin()) row["min"].setValue(datapoint.getMin());
  if (datapoint.hasMax()) row["max"].setValue(datapoint.getMax());
  if (datapoint.hasDefault()) row["default"].setValue(datapoint.getDefaultValue());
  row["array"].setBoolean(datapoint.isArrayPermitted());
  if (!datapoint.getAppliesTo().empty()) row["appliesTo"] = datapoint.getAppliesTo();
  return row;
}

json::Value describeAll(TypeManager& manager, const std::vector<DpRef*>& datapoints) {
  json::Value rows;
  rows.switchType(json::JsonType::Array);
  for (const DpRef* datapoint : datapoints) {
    rows[rows.getSize()] = describeDatapoint(manager, *datapoint);
  }
  return rows;
}

json::Value describeProfile(TypeManager& manager, const FpType& profile) {
  json::Value described;
  described["name"] = displayName(profile);
  described["kind"] = resourceTypeName(ResourceType::Fp);
  described["index"] = profile.getIndex();
  if (profile.hasKey()) described["key"] = profile.getKey();
  described["set"] = profile.getTypeId().getPrefix();
  described["obsolete"].setBoolean(profile.hasFlags(BaseType::kObsolete));
  if (profile.hasBase()) {
    described["inherits"] = nameOf(profile.getBase());
    if (manager.getFpType(profile.getBase()) == nullptr) described["unknownBase"].setBoolean(true);
  }
  described["nvs"] = describeAll(manager, profile.getNvColl());
  described["cps"] = describeAll(manager, profile.getCpColl());
  return described;
}

// The profile and, nearest first, those it inherits from.
json::Value describeChain(TypeManager& manager, const FpType& profile) {
  json::Value described = describeProfile(manager, profile);
  std::set<const FpType*> shown{&profile};  // a broken file may make a circle
  for (const FpType* base = manager.getFpType(profile.getBase());
       base != nullptr && shown.insert(base).second; base = manager.getFpType(base->getBase())) {
    json::Value& inherited = described["inherited"];
    inherited[inherited.getSize()] = describeProfile(manager, *base);
  }
  return described;
}

std::string limitsText(const json::Value& row) {
  const auto numberText = [&row](const char* name) {
    return row[name].isNull() ? "" : StringUtils::toString(row[name].asDouble());
  };
  std::string text;
  if (!row["min"].isNull() || !row["max"].isNull()) {
    text += "  " + numberText("min") + ".." + numberText("max");
  }
  if (!row["default"].isNull()) text += "  default " + numberText("default");
  return text;
}

std::string datapointLines(const json::Value& rows, bool withDirection) {
  const auto typeText = [](const json::Value& row) {
    return row["type"].isNull() ? std::string("(no type given)") : row["type"].asString();
  };
  std::size_t nameWidth = 0;
  std::size_t typeWidth = 0;
  for (unsigned i = 0; i < rows.getSize(); ++i) {
    nameWidth = std::max(nameWidth, rows[i]["name"].asString().size());
    typeWidth = std::max(typeWidth, typeText(rows[i]).size());
  }
  std::string lines;
  for (unsigned i = 0; i < rows.getSize(); ++i) {
    const json::Value& row = rows[i];
    std::string line = "  " + rightAlign(row["index"].asString(), 4) + "  " +
                       pad(row["name"].asString(), nameWidth) + "  " +
                       pad(typeText(row), typeWidth);
    if (withDirection) line += "  " + pad(row["direction"].asString(), 6);
    line += row["mandatory"].asInt32() != 0 ? "  mandatory" : "  optional ";
    line += limitsText(row);
    if (row["array"].asInt32() == 0) line += "  no array";
    if (!row["appliesTo"].isNull()) line += "  applies to " + row["appliesTo"].asString();
    if (!row["unknownType"].isNull()) line += "  (no such type)";
    lines += toLine(line);
  }
  return lines;
}

std::string toText(const json::Value& profile) {
  std::string text = profile["name"].asString() + "  fp " + profile["index"].asString();
  if (!profile["key"].isNull()) text += "  key " + profile["key"].asString();
  text += "  set " + profile["set"].asString();
  if (profile["obsolete"].asInt32() != 0) text += "  obsolete";
  if (!profile["inherits"].isNull()) text += "  inherits from " + profile["inherits"].asString();
  if (!profile["unknownBase"].isNull()) text += " (no such profile)";
  text += "\n";
  if (profile["nvs"].getSize() > 0) {
    text += "network variables\n" + datapointLines(profile["nvs"], true);
  }
  if (profile["cps"].getSize() > 0) {
    text += "configuration properties\n" + datapointLines(profile["cps"], false);
  }
  for (unsigned i = 0; i < profile["inherited"].getSize(); ++i) {
    text += "\n" + toText(profile["inherited"][i]);
  }
  return text;
}

const FpType& findProfile(Catalogue& catalogue, const std::string& nameOrKey) {
  TypeManager& manager = catalogue.getManager();
  bool isWhole = false;
  const std::int32_t key = StringUtils::toInt32(nameOrKey, isWhole);
  const bool isNumber = nameOrKey.find_first_not_of("-0123456789") == std::string::npos &&
                        nameOrKey.find_first_of("0123456789") != std::string::npos;
  if (!isNumber) {
    const auto* profile = dynamic_cast<const FpType*>(&catalogue.findType(nameOrKey));
    if (profile == nullptr) {
      throw Failure(kNotFound, "'" + nameOrKey + "' is no functional profile; see 'korvat list fp'")
          .with("given", nameOrKey);
    }
    return *profile;
  }

  const std::string& given = catalogue.getOptions().prefix;
  const std::string prefix = given.empty() ? TypeId::StdPrefix : given;
  const FpType* profile = isWhole ? manager.getFpType(manager.searchFpType(prefix, key)) : nullptr;
  if (profile == nullptr) {
    throw Failure(kNotFound, "no functional profile with the key " + nameOrKey + " in set " +
                                 prefix + " and the more general ones; see 'korvat list fp'");
  }
  return *profile;
}

}  // namespace

void runProfile(Catalogue& catalogue, const std::string& nameOrKey) {
  const FpType& profile = findProfile(catalogue, nameOrKey);
  const json::Value described = describeChain(catalogue.getManager(), profile);
  const bool asJson = catalogue.getOptions().printJson;
  std::fputs((asJson ? described.stringify(2) + "\n" : toText(described)).c_str(), stdout);
}

}  // namespace zavri::korvat::tool
