#include "tool/Commands.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>

#include "korvat/base/StringUtils.h"
#include "korvat/format/FormatParser.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/CpType.h"
#include "korvat/types/EnumType.h"
#include "tool/BitGrid.h"
#include "tool/Failure.h"
#include "tool/Layout.h"
#include "tool/ScalingText.h"
#include "tool/Summaries.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

using util::StringUtils;

// A description is made as JSON first; the text form is a rendering of it.

template <typename T>
void addLimits(const TMemNumeric<T>& member, json::Value& row) {
  if (!member.getScaling().isIdentity()) {
    row["scaling"]["a"] = std::int32_t{member.getScaling().a};
    row["scaling"]["b"] = std::int32_t{member.getScaling().b};
    row["scaling"]["c"] = std::int32_t{member.getScaling().c};
  }
  if (!member.getDisplayScaling().isIdentity()) {
    row["display"]["factor"].setValue(member.getDisplayScaling().getFactor());
    row["display"]["offset"].setValue(member.getDisplayScaling().getOffset());
  }
  if (member.hasMin()) row["min"].setValue(member.getMin());
  if (member.hasMax()) row["max"].setValue(member.getMax());
  if (member.hasInvalid()) row["invalid"].setValue(member.getInvalid());
}

void addNumber(const Member& member, json::Value& row) {
  switch (member.getKind()) {
    case Member::Kind::Scalar: {
      const auto& scalar = static_cast<const MemScalar&>(member);
      row["type"] = std::string(ncTypeRow(scalar.getNcType()).name);
      return addLimits(scalar, row);
    }
    case Member::Kind::Float: {
      const auto& number = static_cast<const MemFloat&>(member);
      row["type"] = std::string(ncTypeRow(number.getNcType()).name);
      return addLimits(number, row);
    }
    case Member::Kind::Bitfield: {
      const auto& field = static_cast<const MemBitfield&>(member);
      row["type"] = field.getSlot().isSigned ? "signed bits" : "unsigned bits";
      return addLimits(field, row);
    }
    case Member::Kind::Enum:
      row["type"] = "enum " + static_cast<const MemEnum&>(member).getRefId().getId();
      return;
    case Member::Kind::Aggregate: {
      const auto& aggregate = static_cast<const MemAggregate&>(member);
      row["type"] = aggregate.isUnion() ? "union" : "struct";
      if (!aggregate.getDiscriminator().empty()) {
        row["discriminator"] = aggregate.getDiscriminator();
      }
      return;
    }
    case Member::Kind::Ref:
      row["type"] = "reference";
      return;
    case Member::Kind::Invalid:
      row["type"] = "invalid";
      return;
  }
}

json::Value describeMember(const LayoutRow& row) {
  json::Value described;
  described["path"] = row.path;
  described["nesting"] = row.nesting;
  described["byte"] = row.byteOffset;
  if (row.member->getKind() == Member::Kind::Bitfield) described["bit"] = row.bitOffset;
  described["bits"] = row.bitCount;
  described["kind"] = Member::getKindName(row.member->getKind());
  if (row.member->isArray()) {
    described["elements"] = row.member->getArraySize();
    if (row.member->isDynamicArray()) described["minElements"] = row.member->getArrayMinSize();
  }
  addNumber(*row.member, described);
  if (row.refType != nullptr) described["refType"] = displayName(*row.refType);
  if (!row.member->getUnit().empty()) described["unit"] = row.member->getUnit();
  return described;
}

json::Value describeItems(const EnumType& type) {
  json::Value items;
  items.switchType(json::JsonType::Array);
  for (const auto& [value, name] : type.getItemsByValue()) {
    json::Value& item = items[items.getSize()];
    item["value"].setValue(value);
    item["name"] = name;
  }
  return items;
}

// The tree that a display format is parsed into, or why it cannot be.
std::string treeOf(const std::string& text) {
  format::FormatParser parser;
  if (!parser.parse(text)) return "   " + parser.getError() + "\n";
  std::string tree;
  parser.takeFormat()->dump(tree, 1);
  return tree;
}

void describeFormats(Catalogue& catalogue, const VarType& type, bool withTrees,
                     json::Value& described) {
  std::map<std::string, std::string> texts = type.getFormats();
  if (const Format* format = type.getFormat()) {
    texts[format->getName()] = format->getText();
    described["shownBy"] = format->getName();
  }
  for (const auto& [name, text] : texts) {
    described["formats"][name] = text;
    if (withTrees) described["formatTrees"][name] = treeOf(text);
  }
  for (const VarType* derived : findDerivedTypes(catalogue.getManager(), type)) {
    described["derivedTypes"][derived->getFormat()->getName()] = displayName(*derived);
  }
}

json::Value describeType(Catalogue& catalogue, const BaseType& type, bool withTrees) {
  json::Value described;
  described["name"] = displayName(type);
  described["kind"] = resourceTypeName(type.getTypeId().getType());
  described["index"] = type.getIndex();
  described["set"] = type.getTypeId().getPrefix();
  const std::string summary = Summaries(catalogue.getManager().getBaseDir()).find(type);
  if (!summary.empty()) described["summary"] = summary;
  described["obsolete"].setBoolean(type.hasFlags(BaseType::kObsolete));

  if (const auto* enumType = dynamic_cast<const EnumType*>(&type)) {
    described["items"] = describeItems(*enumType);
    return described;
  }

  if (type.getTypeId().getType() == ResourceType::Fp) {
    throw Failure(kNotFound, "'" + displayName(type) + "' has no layout: see 'korvat profile " +
                                 displayName(type) + "'");
  }

  const auto& varType = static_cast<const VarType&>(type);
  described["size"] = varType.getSize();
  if (const auto* cpType = dynamic_cast<const CpType*>(&type)) {
    if (!cpType->getDefaultValue().empty()) described["default"] = cpType->getDefaultValue();
  }
  described["members"].switchType(json::JsonType::Array);
  if (varType.getMember() != nullptr) {
    described["size"] = catalogue.getSize(varType);
    for (const LayoutRow& row : makeLayout(catalogue.getManager(), varType)) {
      described["members"][described["members"].getSize()] = describeMember(row);
      if (row.member->getKind() != Member::Kind::Enum) continue;
      const auto& member = static_cast<const MemEnum&>(*row.member);
      const EnumType* enumType = member.resolveEnum(&catalogue.getManager());
      if (enumType != nullptr) described["enums"][enumType->getName()] = describeItems(*enumType);
    }
  }
  describeFormats(catalogue, varType, withTrees, described);
  return described;
}

std::string limitsText(const json::Value& row) {
  std::string text;
  if (!row["min"].isNull() || !row["max"].isNull()) {
    text += "  raw " + (row["min"].isNull() ? "" : row["min"].asString()) + ".." +
            (row["max"].isNull() ? "" : row["max"].asString());
  }
  if (!row["invalid"].isNull()) text += "  invalid " + row["invalid"].asString();
  return text;
}

std::string typeText(const json::Value& row) {
  std::string text = row["type"].asString();
  if (!row["elements"].isNull()) {
    const std::string least =
        row["minElements"].isNull() ? "" : row["minElements"].asString() + "..";
    text += " [" + least + row["elements"].asString() + "]";
  }
  if (!row["refType"].isNull()) text += " of " + row["refType"].asString();
  return text;
}

// The root member has no name of its own.
std::string pathText(const json::Value& row) {
  const std::string path = row["path"].asString();
  return path.empty() ? "(value)" : path;
}

std::string memberLines(const json::Value& members) {
  std::size_t nameWidth = 6;
  std::size_t typeWidth = 4;
  for (unsigned i = 0; i < members.getSize(); ++i) {
    nameWidth = std::max(nameWidth, pathText(members[i]).size());
    typeWidth = std::max(typeWidth, typeText(members[i]).size());
  }
  std::string lines = "  byte bit  bits  " + pad("member", nameWidth) + "  type\n";
  for (unsigned i = 0; i < members.getSize(); ++i) {
    const json::Value& row = members[i];
    const std::string bit = row["bit"].isNull() ? "" : row["bit"].asString();
    std::string line = "  " + rightAlign(row["byte"].asString(), 4) + rightAlign(bit, 4) +
                       rightAlign(row["bits"].asString(), 6) + "  " +
                       pad(pathText(row), nameWidth) + "  " + pad(typeText(row), typeWidth) +
                       limitsText(row);
    if (!row["scaling"].isNull()) line += "  = " + scalingText(row["scaling"]);
    if (!row["display"].isNull()) line += "  shown = " + displayText(row["display"]);
    if (!row["unit"].isNull()) line += "  [" + row["unit"].asString() + "]";
    if (!row["discriminator"].isNull()) line += "  chosen by " + row["discriminator"].asString();
    lines += toLine(line);
  }
  return lines;
}

std::string itemLines(const json::Value& items) {
  std::string lines;
  for (unsigned i = 0; i < items.getSize(); ++i) {
    lines += "  " + rightAlign(items[i]["value"].asString(), 4) + "  " +
             items[i]["name"].asString() + "\n";
  }
  return lines;
}

// The grid of a layout that can be taken in at a glance.
std::string gridText(Catalogue& catalogue, const VarType& type) {
  constexpr std::size_t kMostLines = 200;
  if (type.getMember() == nullptr) return "";
  const std::vector<GridLine> lines = makeBitGrid(makeLayout(catalogue.getManager(), type));
  return lines.size() > kMostLines ? "" : drawText(lines);
}

std::string toText(const json::Value& type, const std::string& grid) {
  const bool isEnum = !type["items"].isNull();
  std::string text = type["name"].asString() + "  " + type["kind"].asString() + " " +
                     type["index"].asString() + "  set " + type["set"].asString();
  if (!isEnum) text += "  " + bytesText(static_cast<std::size_t>(type["size"].asInt32()));
  if (type["obsolete"].asInt32() != 0) text += "  obsolete";
  text += "\n";
  if (!type["summary"].isNull()) text += type["summary"].asString() + "\n";
  if (!type["default"].isNull()) text += "default " + type["default"].asString() + "\n";

  text += itemLines(type["items"]);
  if (type["members"].getSize() > 0) text += memberLines(type["members"]);
  if (!isEnum && type["members"].getSize() == 0) {
    text += "  no layout of its own: it takes the type of the network variable it applies to\n";
  }
  text += grid;
  for (const auto& [name, items] : type["enums"].getPropertyMap()) {
    text += "enum " + name + "\n" + itemLines(items);
  }
  for (const auto& [name, format] : type["formats"].getPropertyMap()) {
    text += "format " + (name.empty() ? "" : name + " ") + format.asString() + "\n";
    const std::string derived = type["derivedTypes"][name].asString();
    if (!type["derivedTypes"][name].isNull()) text += "  type " + derived + " is in its units\n";
    if (!type["formatTrees"][name].isNull()) text += type["formatTrees"][name].asString();
  }
  return text;
}

}  // namespace

void runDescribe(Catalogue& catalogue, const std::string& type, bool withTrees) {
  const BaseType& found = catalogue.findType(type);
  const json::Value described = describeType(catalogue, found, withTrees);
  std::string text = described.stringify(2) + "\n";
  if (!catalogue.getOptions().printJson) {
    const auto* varType = dynamic_cast<const VarType*>(&found);
    text = toText(described, varType == nullptr ? "" : gridText(catalogue, *varType));
  }
  std::fputs(text.c_str(), stdout);
}

void runDescribeAsPicture(Catalogue& catalogue, const std::string& typeName,
                          const std::string& path) {
  const VarType& type = catalogue.findVarType(typeName);
  const std::string title = displayName(type) + ", " + bytesText(catalogue.getSize(type));
  const std::string picture = drawSvg(title, makeBitGrid(makeLayout(catalogue.getManager(), type)));
  if (path == "-") {
    std::fputs(picture.c_str(), stdout);
    return;
  }
  std::ofstream file(path, std::ios::binary);
  file << picture;
  file.close();
  if (!file) throw Failure(kProblem, "cannot write '" + path + "': " + std::strerror(errno));
}

}  // namespace zavri::korvat::tool
