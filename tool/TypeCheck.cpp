#include "tool/TypeCheck.h"

#include <algorithm>
#include <set>
#include <type_traits>
#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"
#include "korvat/format/ArgumentExpression.h"
#include "korvat/format/Concatenation.h"
#include "korvat/format/Condition.h"
#include "korvat/format/FormatParser.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/VarType.h"
#include "tool/NumberRange.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

using base::Logger;
using format::FormatBase;
using util::StringUtils;

std::string joinPath(const std::string& path, const std::string& name) {
  return path.empty() ? name : path + "." + name;
}

// "state: " for a message; nothing for the value itself.
std::string prefixOf(const std::string& path) {
  return path.empty() ? "" : path + ": ";
}

// Collects what the library says while it lives.
class WarningCapture {
 public:
  WarningCapture()
      : _previous(Logger::setSink([this](Logger::Level level, const std::string& text) {
          if (level <= Logger::Warning) _texts.push_back(StringUtils::trim(text));
        })) {}
  WarningCapture(const WarningCapture&) = delete;
  WarningCapture& operator=(const WarningCapture&) = delete;
  ~WarningCapture() { Logger::setSink(_previous); }

  const std::vector<std::string>& getTexts() const { return _texts; }

 private:
  std::vector<std::string> _texts;
  Logger::Sink _previous;
};

class VarTypeCheck {
 public:
  VarTypeCheck(TypeManager& manager, const VarType& type) : _manager(manager), _type(type) {}

  std::vector<Problem> run() {
    if (_type.getMember() != nullptr) {
      checkMember(*_type.getMember(), "");
      checkSize();
    } else if (_type.getTypeId().getType() == ResourceType::Nv) {
      error("has no layout");
    }
    for (const auto& [name, text] : _type.getFormats()) checkFormat(name, text);
    return std::move(_problems);
  }

 private:
  // How the byte of the last bit field stands behind a member: a bit field that begins its byte and
  // does not fill it leaves the byte to whatever comes next.
  enum class ByteState { Closed, LeftToTheNext };

  void error(const std::string& message) { _problems.push_back({Severity::Error, message}); }
  void warn(const std::string& message) { _problems.push_back({Severity::Warning, message}); }

  ByteState checkMember(const Member& member, const std::string& path) {
    if (member.isArray() && member.getArrayMinSize() > member.getArraySize()) {
      warn(prefixOf(path) + "the smallest array size lies above the largest");
    }
    switch (member.getKind()) {
      case Member::Kind::Scalar: {
        const auto& scalar = static_cast<const MemScalar&>(member);
        const NcTypeRow& row = ncTypeRow(scalar.getNcType());
        if (row.byteCount == 0) {
          error(prefixOf(path) + "the number has no base type");
        } else {
          checkLimits(scalar, rangeOf(row), path, std::string(row.name));
        }
        break;
      }
      case Member::Kind::Float: {
        const auto& number = static_cast<const MemFloat&>(member);
        const NcTypeRow& row = ncTypeRow(number.getNcType());
        if (row.byteCount == 0) {
          error(prefixOf(path) + "the number has no base type");
        } else {
          checkLimits(number, floatRangeOf(number.getNcType()), path, std::string(row.name));
        }
        break;
      }
      case Member::Kind::Bitfield:
        return checkBitfield(static_cast<const MemBitfield&>(member), path);
      case Member::Kind::Enum: {
        const auto& reference = static_cast<const MemEnum&>(member);
        if (reference.resolveEnum(&_manager) == nullptr) {
          error(prefixOf(path) + "the enumeration " + reference.getRefId().toString() +
                " does not exist");
        }
        break;
      }
      case Member::Kind::Ref: {
        const auto& reference = static_cast<const MemRef&>(member);
        const VarType* type = reference.resolve(&_manager);
        if (type == nullptr || type->getMember() == nullptr) {
          error(prefixOf(path) + "the reference to " + reference.getRefId().toString() +
                " leads to no layout");
        }
        break;
      }
      case Member::Kind::Aggregate:
        return checkAggregate(static_cast<const MemAggregate&>(member), path);
      case Member::Kind::Invalid:
        break;
    }
    return ByteState::Closed;
  }

  template <typename M, typename T>
  void checkLimits(const M& member, const Range<T>& range, const std::string& path,
                   const std::string& baseType) {
    const std::string bounds =
        std::is_floating_point_v<T>
            ? baseType
            : baseType + " (" + textOf(range.lowest) + ".." + textOf(range.highest) + ")";
    const auto checkFit = [&](bool isGiven, T raw, const char* name) {
      if (!isGiven || (range.lowest <= raw && raw <= range.highest)) return;
      error(prefixOf(path) + "the " + name + " " + textOf(raw) + " does not fit " + bounds);
    };
    checkFit(member.hasMin(), member.getMin(), "minimum");
    checkFit(member.hasMax(), member.getMax(), "maximum");
    checkFit(member.hasInvalid(), member.getInvalid(), "invalid value");
    if (member.hasMin() && member.hasMax() && member.getMin() > member.getMax()) {
      error(prefixOf(path) + "the minimum " + textOf(member.getMin()) + " lies above the maximum " +
            textOf(member.getMax()));
    }
  }

  ByteState checkBitfield(const MemBitfield& member, const std::string& path) {
    const BitSlot& slot = member.getSlot();
    const std::string place =
        "offset " + std::to_string(slot.offset) + ", width " + std::to_string(slot.width);
    if (slot.width == 0) {
      error(prefixOf(path) + "the bit field has no width");
      return ByteState::Closed;
    }
    if (slot.offset + slot.width > 8) {
      error(prefixOf(path) + "the bit field leaves its byte: " + place);
      return ByteState::Closed;
    }
    checkLimits(member, rangeOf(slot), path, std::to_string(slot.width) + " bits");
    const bool isLeft = slot.offset == 0 && slot.width < 8 && !member.isArray();
    return isLeft ? ByteState::LeftToTheNext : ByteState::Closed;
  }

  ByteState checkAggregate(const MemAggregate& aggregate, const std::string& path) {
    checkNames(aggregate, path);
    ByteState state = ByteState::Closed;
    unsigned usedBits = 0;  // of the byte that bit fields share
    for (const auto& child : aggregate.getChildren()) {
      if (!child) {
        error(prefixOf(path) + "a member was announced and never came");
        break;
      }
      const std::string childPath = joinPath(path, child->getProgName());
      const bool isBitfield = child->getKind() == Member::Kind::Bitfield && !child->isArray();
      if (!isBitfield && state == ByteState::LeftToTheNext && !aggregate.isUnion()) {
        error(prefixOf(childPath) +
              "shares the byte of the bit field before it, which begins that byte and does not "
              "fill it: add bit fields up to its end");
      }
      if (!isBitfield || aggregate.isUnion()) usedBits = 0;
      state = checkMember(*child, childPath);
      if (isBitfield) {
        usedBits = checkOverlap(static_cast<const MemBitfield&>(*child), childPath, usedBits);
      }
    }
    return aggregate.isArray() ? ByteState::Closed : state;
  }

  // The bits in use behind a bit field; none when it ends its byte.
  unsigned checkOverlap(const MemBitfield& member, const std::string& path, unsigned usedBits) {
    const BitSlot& slot = member.getSlot();
    if (slot.width == 0 || slot.offset + slot.width > 8) return usedBits;
    const unsigned bits = ((1u << slot.width) - 1) << (8 - slot.offset - slot.width);
    if ((usedBits & bits) != 0) {
      error(prefixOf(path) + "the bit field overlaps the one before it: offset " +
            std::to_string(slot.offset) + ", width " + std::to_string(slot.width));
    }
    return slot.offset + slot.width == 8 ? 0 : usedBits | bits;
  }

  void checkNames(const MemAggregate& aggregate, const std::string& path) {
    std::set<std::string> names;
    for (const auto& child : aggregate.getChildren()) {
      if (!child) continue;
      const std::string& name = child->getProgName();
      if (name.empty()) {
        error(prefixOf(path) + "a member has no name");
      } else if (!names.insert(name).second) {
        error(prefixOf(path) + "two members are called '" + name + "'");
      }
    }
  }

  // Once the members themselves are in order.
  void checkSize() {
    if (!_problems.empty()) return;
    unsigned byteCount = 0;
    if (!_type.getMaxSize(&_manager, byteCount)) {
      error("the layout cannot be followed: it holds itself, or is too large");
    } else if (_type.getSize() == 0) {
      warn("declares no size; its members take " + bytesText(byteCount));
    } else if (byteCount != static_cast<unsigned>(_type.getSize())) {
      error("declares " + std::to_string(_type.getSize()) + " bytes, its members take " +
            std::to_string(byteCount));
    }
  }

  void checkFormat(const std::string& name, const std::string& text) {
    const std::string where = name.empty() ? "format: " : "format '" + name + "': ";
    format::FormatParser parser;
    const WarningCapture warnings;
    const bool isParsed = parser.parse(text);
    for (const std::string& warning : warnings.getTexts()) warn(where + warning);
    if (!isParsed) return error(where + parser.getError());
    const auto format = parser.takeFormat();
    checkPaths(format->getBody(), where);
  }

  // All members that a format shows or asks for.
  void checkPaths(const FormatBase* node, const std::string& where) {
    if (node == nullptr) return;
    switch (node->getKind()) {
      case FormatBase::Kind::FT_Concatenation:
        for (const auto& part : static_cast<const format::Concatenation*>(node)->getParts()) {
          checkPaths(part.get(), where);
        }
        return;
      case FormatBase::Kind::FT_FormattedString:
        for (const auto& field : static_cast<const format::FormattedString*>(node)->getFields()) {
          checkPath(field->getFieldName(), field->getNumericSpec().has_value(), where);
        }
        return;
      case FormatBase::Kind::FT_Condition: {
        const auto* condition = static_cast<const format::Condition*>(node);
        checkPath(condition->getFieldName(), false, where);
        checkPaths(condition->getThen(), where);
        checkPaths(condition->getElse(), where);
        return;
      }
      case FormatBase::Kind::FT_Date:
      case FormatBase::Kind::FT_Time:
        for (const std::string& path :
             static_cast<const format::ArgumentExpression*>(node)->getArguments()) {
          checkPath(path, false, where);
        }
        return;
      case FormatBase::Kind::FT_Base:
      case FormatBase::Kind::FT_Format:
      case FormatBase::Kind::FT_Field:
        return;
    }
  }

  void checkPath(const std::string& path, bool isNumber, const std::string& where) {
    const Member* root = _type.getMember();
    if (root == nullptr) return;  // a property that takes the members of a network variable
    const Member* member = root->findMemberAtPath(&_manager, path);
    if (member == nullptr) return error(where + "there is no member '" + path + "'");
    if (isNumber && dynamic_cast<const MemNumeric*>(member) == nullptr) {
      error(where + "'" + path + "' is no number and cannot be shown in another unit");
    }
  }

  TypeManager& _manager;
  const VarType& _type;
  std::vector<Problem> _problems;
};

void checkDatapoints(TypeManager& manager, const std::vector<DpRef*>& datapoints, const char* kind,
                     std::vector<Problem>& problems) {
  std::set<std::int32_t> indices;
  std::set<std::string> names;
  for (const DpRef* datapoint : datapoints) {
    const std::string& name = datapoint->getName();
    const TypeId& type = datapoint->getTypeId();
    if (type.getId().empty()) {
      problems.push_back({Severity::Error, name + ": names no type"});
    } else if (!type.isGenericNv() && manager.getType(type) == nullptr) {
      problems.push_back(
          {Severity::Error, name + ": the type " + type.toString() + " does not exist"});
    }
    if (!indices.insert(datapoint->getIndex()).second) {
      problems.push_back({Severity::Error, name + ": another " + kind + " has the number " +
                                               std::to_string(datapoint->getIndex())});
    }
    if (!names.insert(name).second) {
      problems.push_back(
          {Severity::Error, std::string("two ") + kind + "s are called '" + name + "'"});
    }
    if (datapoint->hasMin() && datapoint->hasMax() && datapoint->getMin() > datapoint->getMax()) {
      problems.push_back({Severity::Error, name + ": the minimum lies above the maximum"});
    }
  }
}

std::vector<Problem> checkProfile(TypeManager& manager, const FpType& profile) {
  std::vector<Problem> problems;
  std::set<const FpType*> met{&profile};
  for (const FpType* heir = &profile; heir->hasBase();) {
    const FpType* base = manager.getFpType(heir->getBase());
    if (base == nullptr) {
      // Of an inherited profile, that is a finding of its own.
      if (heir == &profile) {
        problems.push_back({Severity::Error, "inherits from " + profile.getBase().toString() +
                                                 ", which does not exist"});
      }
      break;
    }
    if (!met.insert(base).second) {
      problems.push_back({Severity::Error, "inherits from itself"});
      break;
    }
    heir = base;
  }
  checkDatapoints(manager, profile.getNvColl(), "network variable", problems);
  checkDatapoints(manager, profile.getCpColl(), "configuration property", problems);
  return problems;
}

}  // namespace

std::vector<Problem> checkType(TypeManager& manager, const BaseType& type) {
  if (const auto* varType = dynamic_cast<const VarType*>(&type)) {
    return VarTypeCheck(manager, *varType).run();
  }
  if (const auto* profile = dynamic_cast<const FpType*>(&type)) {
    return checkProfile(manager, *profile);
  }
  const auto* enumType = dynamic_cast<const EnumType*>(&type);
  if (enumType != nullptr && enumType->getItemsByName().empty()) {
    return {{Severity::Error, "the enumeration has no members"}};
  }
  return {};
}

}  // namespace zavri::korvat::tool
