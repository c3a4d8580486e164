#include "tool/Commands.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/StringUtils.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/Value.h"
#include "korvat/types/EnumType.h"
#include "tool/Leaves.h"
#include "tool/ScalingText.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

using util::StringUtils;

constexpr unsigned kMaxAlignedBytes = 16;  // of a value whose members stand under their bytes

// An explanation is made as JSON first; the text form is a rendering of it.
class Explanation {
 public:
  Explanation(TypeManager& manager, const VarType& type, base::Endianess order, base::Buffer& raw)
      : _manager(manager), _raw(raw), _access(&manager, &type, order, raw) {
    _rows.switchType(json::JsonType::Array);
  }

  json::Value explain(const json::Value& value) {
    for (const Leaf& leaf : findLeaves(_access, value)) {
      if (leaf.access.isValid()) addLeaf(leaf);
    }
    return std::move(_rows);
  }

 private:
  void addLeaf(const Leaf& leaf) {
    const MemberValue& access = leaf.access;
    json::Value& row = _rows[_rows.getSize()];
    row["path"] = leaf.path;
    if (leaf.isInUnion) row["alternative"].setBoolean(true);
    const Member& member = *access.getMember();
    const bool isWhole = member.isArray() && access.getElementIndex() < 0;
    const unsigned byteCount = byteCountOf(_manager, access);
    const unsigned offset = firstByteOf(_manager, access);
    row["byte"] = offset;
    row["bytes"] = bytesAt(offset, byteCount);
    row["value"] = *leaf.shown;
    if (!member.getUnit().empty()) row["unit"] = member.getUnit();
    if (_raw.getSize() < offset + byteCount) {
      row["note"] = "beyond the end of the input";
    } else if (!isWhole) {
      addRaw(access, member, row);
    }
  }

  std::string bytesAt(unsigned offset, unsigned byteCount) const {
    if (offset >= _raw.getSize()) return "";
    const unsigned count = std::min(byteCount, _raw.getSize() - offset);
    return util::BinaryUtils::toString(base::Buffer(_raw.getData() + offset, count));
  }

  void addRaw(const MemberValue& access, const Member& member, json::Value& row) {
    switch (member.getKind()) {
      case Member::Kind::Scalar: {
        std::int64_t raw = 0;
        static_cast<void>(access.get(-1, raw));
        return addNumber(static_cast<const MemScalar&>(member), raw, row);
      }
      case Member::Kind::Float: {
        double raw = 0;
        static_cast<void>(access.get(-1, raw));
        addNumber(static_cast<const MemFloat&>(member), raw, row);
        if (!std::isfinite(raw)) row["note"] = std::isnan(raw) ? "not a number" : "infinite";
        return;
      }
      case Member::Kind::Bitfield: {
        const auto& field = static_cast<const MemBitfield&>(member);
        row["bit"] = std::uint32_t{field.getSlot().offset};
        row["width"] = std::uint32_t{field.getSlot().width};
        const std::int16_t raw = readBits(_raw.getData()[row["byte"].asInt32()], field.getSlot());
        return addNumber(field, raw, row);
      }
      case Member::Kind::Enum: {
        const std::int8_t raw = access.getInt8();
        row["raw"].setValue(raw);
        const EnumType* type = static_cast<const MemEnum&>(member).resolveEnum(&_manager);
        if (type != nullptr && type->getName(raw).empty()) row["note"] = "no enumerator";
        return;
      }
      case Member::Kind::Invalid:
      case Member::Kind::Ref:
      case Member::Kind::Aggregate:
        return;
    }
  }

  template <typename M, typename T>
  static void addNumber(const M& member, T raw, json::Value& row) {
    row["raw"].setValue(raw);
    const Scaling& scaling = member.getScaling();
    if (!scaling.isIdentity()) {
      row["scaling"]["a"] = std::int32_t{scaling.a};
      row["scaling"]["b"] = std::int32_t{scaling.b};
      row["scaling"]["c"] = std::int32_t{scaling.c};
    }
    const DisplayScaling& display = member.getDisplayScaling();
    if (!display.isIdentity()) {
      row["display"]["factor"].setValue(display.getFactor());
      row["display"]["offset"].setValue(display.getOffset());
    }
    // What an alternative of a union holds that does not apply says nothing about limits.
    if (row.getPropertyMap().find("alternative") != nullptr) return;
    switch (standingOf(member, raw)) {
      case Standing::Marker:
        row["note"] = "the invalid marker";
        break;
      case Standing::Below:
        row["note"] = "below the minimum, raw " + textOf(member.getMin());
        break;
      case Standing::Above:
        row["note"] = "above the maximum, raw " + textOf(member.getMax());
        break;
      case Standing::Inside:
        break;
    }
  }

  template <typename T>
  static std::string textOf(T number) {
    json::Value value;
    value.setValue(number);
    return value.asString();
  }

  TypeManager& _manager;
  const base::Buffer& _raw;
  const Value _access;
  json::Value _rows;
};

// Texts of a terminal, or nothing at all.
class Colors {
 public:
  explicit Colors(bool isOn) : _isOn(isOn) {}

  std::string member(const std::string& text) const { return paint("1", text); }
  std::string value(const std::string& text) const { return paint("32", text); }
  std::string note(const std::string& text) const { return paint("31", text); }

 private:
  std::string paint(const char* code, const std::string& text) const {
    return _isOn && !text.empty() ? std::string("\033[") + code + "m" + text + "\033[0m" : text;
  }

  bool _isOn;
};

// "C8 01"
std::string spaced(const std::string& hex) {
  std::string text;
  for (std::size_t i = 0; i < hex.size(); i += 2) {
    text += (i == 0 ? "" : " ") + hex.substr(i, 2);
  }
  return text;
}

// The bits of a bit field in their byte: "..101...".
std::string bitsText(const json::Value& row) {
  if (row["bit"].isNull() || row["bytes"].asString().empty()) return "";
  const auto byte = std::stoul(row["bytes"].asString(), nullptr, 16);
  const int first = row["bit"].asInt32();
  const int end = first + row["width"].asInt32();
  std::string text(8, '.');
  for (int i = first; i < std::min(end, 8); ++i) {
    text[static_cast<std::size_t>(i)] = (byte >> (7 - i) & 1) != 0 ? '1' : '0';
  }
  return text;
}

std::string valueText(const json::Value& row) {
  const json::Value& value = row["value"];
  std::string text = value.isString() ? value.asString() : value.stringify();
  if (value.isFloating()) text = StringUtils::toString(value.asDouble());
  if (value.getNumberType() == json::NumberType::Single) {
    text = StringUtils::toString(static_cast<float>(value.asDouble()));
  }
  if (row["raw"].isNull() && value.isString()) text = value.stringify();  // a text, in quotes
  if (!row["unit"].isNull()) text += " " + row["unit"].asString();
  return text;
}

// "raw 200, 5 * 10^-1 * raw" behind a value that was scaled.
std::string rawText(const json::Value& row) {
  if (row["raw"].isNull()) return "";
  std::string text = "raw " + row["raw"].asString();
  if (!row["scaling"].isNull()) text += ", " + scalingText(row["scaling"]);
  if (!row["display"].isNull()) text += ", shown " + displayText(row["display"]);
  return text;
}

std::string toText(const VarType& type, const base::Buffer& raw, const json::Value& rows,
                   const Colors& colors) {
  const bool isAligned = raw.getSize() <= kMaxAlignedBytes;
  const std::string hex = spaced(util::BinaryUtils::toString(raw));
  std::size_t bytesWidth = isAligned ? hex.size() : 0;
  std::size_t bitsWidth = 0;
  std::size_t pathWidth = 0;
  std::size_t valueWidth = 0;
  const auto pathText = [](const json::Value& row) {
    return row["path"].asString().empty() ? std::string("(value)") : row["path"].asString();
  };
  const auto placeText = [isAligned](const json::Value& row) {
    const std::string bytes = spaced(row["bytes"].asString());
    const auto offset = static_cast<std::size_t>(row["byte"].asInt32());
    if (isAligned) return std::string(3 * offset, ' ') + bytes;
    return rightAlign(row["byte"].asString(), 4) + "  " + bytes;
  };
  for (unsigned i = 0; i < rows.getSize(); ++i) {
    bytesWidth = std::max(bytesWidth, placeText(rows[i]).size());
    bitsWidth = std::max(bitsWidth, bitsText(rows[i]).size());
    pathWidth = std::max(pathWidth, pathText(rows[i]).size());
    valueWidth = std::max(valueWidth, valueText(rows[i]).size());
  }

  std::string text = displayName(type) + "  " + resourceTypeName(type.getTypeId().getType()) + " " +
                     std::to_string(type.getIndex()) + "  " + bytesText(raw.getSize()) + "\n";
  if (isAligned) text += hex + "\n";
  for (unsigned i = 0; i < rows.getSize(); ++i) {
    const json::Value& row = rows[i];
    std::string line = pad(placeText(row), bytesWidth) + "  ";
    if (bitsWidth > 0) line += pad(bitsText(row), bitsWidth) + "  ";
    line += colors.member(pad(pathText(row), pathWidth)) + "  " +
            colors.value(pad(valueText(row), valueWidth)) + "  " + rawText(row);
    if (!row["note"].isNull()) {
      line += (rawText(row).empty() ? "" : ", ") + colors.note(row["note"].asString());
    }
    text += toLine(line);
  }
  return text;
}

bool isColored(const std::string& when) {
  if (when == "always") return true;
  if (when == "never") return false;
  const char* const noColor = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) == 1 && (noColor == nullptr || *noColor == '\0');
}

}  // namespace

void runExplain(Catalogue& catalogue, const std::string& typeName,
                const std::vector<std::string>& hex) {
  catalogue.refuseDynamicArrays("explain");
  const VarType& type = catalogue.findVarType(typeName);
  base::Buffer raw = catalogue.readHex(join(hex));
  catalogue.checkLength(type, raw);
  const json::Value value = catalogue.decode(type, raw);
  const Options& options = catalogue.getOptions();
  const json::Value rows =
      Explanation(catalogue.getManager(), type, options.order, raw).explain(value);
  if (options.printJson) {
    std::printf("%s\n", rows.stringify(2).c_str());
  } else {
    std::fputs(toText(type, raw, rows, Colors(isColored(options.color))).c_str(), stdout);
  }
}

}  // namespace zavri::korvat::tool
