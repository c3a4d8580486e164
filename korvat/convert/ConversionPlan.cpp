#include "korvat/convert/ConversionPlan.h"

#include <algorithm>

#include "korvat/base/JsonText.h"
#include "korvat/convert/PlanStep.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

namespace {

// Larger types are rare and take their time anyway.
constexpr std::size_t kMaxSteps = 16'384;
constexpr std::uint64_t kMaxRawSize = 1 << 20;  // bytes

// Of structures and arrays, each perhaps behind a reference.
constexpr std::uint32_t kMaxDepth = 64;
static_assert(2 * (kMaxDepth + 1) < kMaxNesting, "a walk goes deeper");

// Digits behind the point up to which every number that is not 0 prints without an exponent.
constexpr int kMaxPlainDecimals = 5;

}  // namespace

EnumTable::EnumTable(const EnumType& type) : _names(1) {
  for (const auto& [value, name] : type.getItemsByValue()) {
    if (name.empty()) continue;
    _index[static_cast<std::uint8_t>(value)] = static_cast<std::uint16_t>(_names.size());
    Name entry{name, {}, 0};
    json::appendJsonString(entry.json, name);
    entry.jsonSize = entry.json.size();
    entry.json.append(kPadding, ' ');
    _names.push_back(std::move(entry));
  }
  for (const auto& [name, value] : type.getItemsByName()) _values[name] = value;
}

const EnumTable& EnumTables::get(const EnumType& type) {
  return _tables.try_emplace(&type, type).first->second;
}

ConversionPlan::ConversionPlan() = default;
ConversionPlan::~ConversionPlan() = default;

// Works out the steps as a walk would come to the members. Each function returns false for what a
// plan does not cover.
class ConversionPlan::Maker {
 public:
  Maker(ConversionPlan& plan, EnumTables& enums, const FindType& findType)
      : _plan(plan), _enums(enums), _findType(findType) {}

  bool make(const Member& root) {
    Place place;
    if (!addMember(root, nullptr, place)) return false;
    const std::uint64_t end = place.bytePos + (place.bitOffset != 0 ? 1 : 0);
    _plan._readSize = static_cast<std::uint32_t>(place.end);
    _plan._writeSize = static_cast<std::uint32_t>(std::max(place.end, end));
    _plan._isSolid = _isSolid;
    _plan._keys.append(kPadding, ' ');
    return true;
  }

 private:
  // Where the walk stands, from the start of the value or of the array's element.
  struct Place {
    std::uint64_t bytePos = 0;
    unsigned bitOffset = 0;
    std::uint64_t end = 0;  // of the bytes that members cover

    void closeByte() {
      if (bitOffset != 0) ++bytePos;
      bitOffset = 0;
    }
    void cover(std::uint64_t from, std::uint64_t byteCount) {
      end = std::max(end, from + byteCount);
    }
  };

  bool addMember(const Member& member, const std::string* name, Place& place) {
    if (member.isCharSet()) return false;
    if (!member.isArray()) return addElement(member, name, place);

    const std::uint64_t count = member.getArraySize();
    const bool isText = member.getKind() == Member::Kind::Scalar && isCharacter(member);
    if (isText) {
      place.closeByte();
      if (!countVisits(count)) return false;
      addStep(Step::Kind::Text, member, name, place).count = static_cast<std::uint32_t>(count);
      return advance(place, count);
    }

    const bool isBitfield = member.getKind() == Member::Kind::Bitfield;
    if (!isBitfield) place.closeByte();
    const std::uint32_t index = indexOfNext();
    addStep(Step::Kind::Array, member, name, place).count = static_cast<std::uint32_t>(count);
    const std::uint64_t outer = _multiplier;
    _multiplier *= count;
    ++_depth;
    Place element;
    if (_depth > kMaxDepth || !addElement(member, nullptr, element)) return false;
    --_depth;
    _multiplier = outer;

    // Elements begin on a whole byte, but for bit fields, which stay in theirs until one ends it.
    const std::uint64_t stride = element.bytePos + (element.bitOffset != 0 && !isBitfield ? 1 : 0);
    const std::uint64_t last = place.bytePos + (count - 1) * stride;
    place.cover(last, element.end);
    place.bytePos = last + element.bytePos;
    place.bitOffset = element.bitOffset;
    Step& step = _plan._steps[index];
    step.stride = static_cast<std::uint32_t>(stride);
    step.next = indexOfNext();
    return place.bytePos <= kMaxRawSize && place.end <= kMaxRawSize;
  }

  bool addElement(const Member& member, const std::string* name, Place& place) {
    if (_plan._steps.size() >= kMaxSteps || !countVisits(1)) return false;
    switch (member.getKind()) {
      case Member::Kind::Ref:
        return addReferred(static_cast<const MemRef&>(member), name, place);
      case Member::Kind::Aggregate:
        return addAggregate(static_cast<const MemAggregate&>(member), name, place);
      case Member::Kind::Scalar:
        return addScalar(static_cast<const MemScalar&>(member), name, place);
      case Member::Kind::Float:
        return addFloat(static_cast<const MemFloat&>(member), name, place);
      case Member::Kind::Bitfield:
        return addBitfield(static_cast<const MemBitfield&>(member), name, place);
      case Member::Kind::Enum:
        return addEnum(static_cast<const MemEnum&>(member), name, place);
      default:
        return false;
    }
  }

  bool addReferred(const MemRef& reference, const std::string* name, Place& place) {
    place.closeByte();
    const VarType* type = resolve(reference);
    return type != nullptr && addMember(*type->getMember(), name, place);
  }

  // The type at the end of a chain of references; null when there is none or it has no layout.
  const VarType* resolve(const MemRef& first) const {
    const MemRef* reference = &first;
    for (std::size_t i = 0; i < kMaxReferences; ++i) {
      const BaseType* type = _findType(reference->getRefId());
      const VarType* varType = type == nullptr ? nullptr : type->asVarType();
      if (varType == nullptr || varType->getMember() == nullptr) return nullptr;
      if (varType->getMember()->getKind() != Member::Kind::Ref) return varType;
      reference = static_cast<const MemRef*>(varType->getMember());
    }
    return nullptr;
  }

  bool addAggregate(const MemAggregate& aggregate, const std::string* name, Place& place) {
    place.closeByte();
    if (_depth == kMaxDepth || !isPlain(aggregate)) return false;
    _plan._hasUnions = _plan._hasUnions || aggregate.isUnion();
    const std::uint32_t index = indexOfNext();
    addStep(Step::Kind::Object, aggregate, name, place).count =
        static_cast<std::uint32_t>(aggregate.getChildren().size());
    ++_depth;
    const std::uint64_t start = place.bytePos;
    std::uint64_t longest = 0;
    for (const auto& child : aggregate.getChildren()) {
      const std::uint32_t childIndex = indexOfNext();
      if (!addMember(*child, &child->getProgName(), place)) return false;
      addKey(_plan._steps[childIndex], childIndex == index + 1);
      if (!aggregate.isUnion()) continue;
      place.closeByte();
      longest = std::max(longest, place.bytePos - start);
      place.bytePos = start;
    }
    if (aggregate.isUnion()) place.bytePos = start + longest;
    --_depth;
    _plan._steps[index].next = indexOfNext();
    return true;
  }

  // Members that are all there and are found by names of their own.
  static bool isPlain(const MemAggregate& aggregate) {
    const auto& children = aggregate.getChildren();
    return std::all_of(children.begin(), children.end(), [&](const auto& child) {
      return child && !child->getProgName().empty() &&
             aggregate.findChild(child->getProgName()) == child.get();
    });
  }

  void addKey(Step& step, bool isFirst) {
    step.keyStart = static_cast<std::uint32_t>(_plan._keys.size());
    _plan._keys += isFirst ? '{' : ',';
    json::appendJsonString(_plan._keys, *step.name);
    _plan._keys += ':';
    step.keySize = static_cast<std::uint32_t>(_plan._keys.size()) - step.keyStart;
  }

  bool addScalar(const MemScalar& scalar, const std::string* name, Place& place) {
    const NcTypeRow& row = ncTypeRow(scalar.getNcType());
    if (row.byteCount == 0 || row.isFloating) return false;
    place.closeByte();
    Step& step = addStep(kindOf(scalar), scalar, name, place);
    step.byteCount = static_cast<std::uint8_t>(row.byteCount);
    step.isSigned = row.isSigned;
    setRange(step, scalar, std::int64_t{1} << (8 * row.byteCount));
    if (step.kind == Step::Kind::Decimal) setDecimal(step, scalar.getScaling());
    return advance(place, row.byteCount);
  }

  // `span` is the count of numbers that the field holds.
  static void setRange(Step& step, const MemScalar& scalar, std::int64_t span) {
    step.lowest = step.isSigned ? -span / 2 : 0;
    step.highest = step.lowest + span - 1;
    if (scalar.hasMin()) step.lowest = std::max(step.lowest, scalar.getMin());
    if (scalar.hasMax()) step.highest = std::min(step.highest, scalar.getMax());
  }

  static void setDecimal(Step& step, const Scaling& scaling) {
    step.decimals = static_cast<std::uint8_t>(-scaling.b);
    step.factor = scaling.a;
    step.added = scaling.c;
  }

  static Step::Kind kindOf(const MemScalar& scalar) {
    if (scalar.isScalingIdentity()) return Step::Kind::Integer;
    const int decimals = -scalar.getScaling().b;
    const bool isDecimal =
        scalar.getDisplayScaling().isIdentity() && decimals >= 0 && decimals <= kMaxPlainDecimals;
    return isDecimal ? Step::Kind::Decimal : Step::Kind::Scaled;
  }

  bool addFloat(const MemFloat& member, const std::string* name, Place& place) {
    const NcTypeRow& row = ncTypeRow(member.getNcType());
    if (!row.isFloating) return false;
    place.closeByte();
    addStep(Step::Kind::Floating, member, name, place).isSingle = row.byteCount == 4;
    return advance(place, row.byteCount);
  }

  bool addBitfield(const MemBitfield& member, const std::string* name, Place& place) {
    const BitSlot& slot = member.getSlot();
    if (!slot.isUsable()) return false;
    _isSolid = false;
    place.bitOffset = slot.offset;
    const Step::Kind kind = member.isScalingIdentity() ? Step::Kind::Bits : Step::Kind::ScaledBits;
    addStep(kind, member, name, place).slot = slot;
    place.cover(place.bytePos, 1);
    if (slot.offset + slot.width < 8) return true;
    place.bitOffset = 0;
    ++place.bytePos;
    return true;
  }

  bool addEnum(const MemEnum& member, const std::string* name, Place& place) {
    const auto* type = dynamic_cast<const EnumType*>(_findType(member.getRefId()));
    if (type == nullptr || type->hasFlags(BaseType::kCharEncoding)) return false;
    place.closeByte();
    addStep(Step::Kind::Enum, member, name, place).names = &_enums.get(*type);
    return advance(place, 1);
  }

  static bool isCharacter(const Member& member) {
    const NcType ncType = static_cast<const MemScalar&>(member).getNcType();
    return ncType == NcType::UnsignedChar || ncType == NcType::SignedChar;
  }

  Step& addStep(Step::Kind kind, const Member& member, const std::string* name,
                const Place& place) {
    Step step;
    step.kind = kind;
    step.offset = static_cast<std::uint32_t>(place.bytePos);
    step.next = indexOfNext() + 1;
    step.name = name;
    step.member = &member;
    _plan._steps.push_back(step);
    return _plan._steps.back();
  }

  static bool advance(Place& place, std::uint64_t byteCount) {
    place.cover(place.bytePos, byteCount);
    place.bytePos += byteCount;
    return place.bytePos <= kMaxRawSize;
  }

  // A walk gives up after so many.
  bool countVisits(std::uint64_t count) {
    _visits += _multiplier * count;
    return _visits <= kMaxVisits;
  }

  std::uint32_t indexOfNext() const { return static_cast<std::uint32_t>(_plan._steps.size()); }

  ConversionPlan& _plan;
  EnumTables& _enums;
  const FindType& _findType;
  std::uint64_t _visits = 0;
  std::uint64_t _multiplier = 1;  // elements of the arrays around, multiplied
  bool _isSolid = true;           // no bit fields so far
  std::uint32_t _depth = 0;
};

std::unique_ptr<const ConversionPlan> ConversionPlan::make(const VarType& type, EnumTables& enums,
                                                           const FindType& findType) {
  if (type.getMember() == nullptr) return nullptr;
  std::unique_ptr<ConversionPlan> plan(new ConversionPlan);
  if (!Maker(*plan, enums, findType).make(*type.getMember())) return nullptr;
  plan->_steps.shrink_to_fit();
  return plan;
}

}  // namespace zavri::korvat
