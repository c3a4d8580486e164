#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <utility>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "tests/convert/TypeXml.h"

// Member trees at random.
namespace zavri::test {

// Random numbers that are the same everywhere for the same seed.
class Random {
 public:
  explicit Random(std::uint64_t seed) : _engine(seed) {}

  std::uint64_t bits() { return _engine(); }
  std::uint32_t below(std::uint32_t count) { return static_cast<std::uint32_t>(bits() % count); }
  bool chance(unsigned percent) { return below(100) < percent; }
  // Both ends may come; they lie less than 2^63 apart.
  std::int64_t between(std::int64_t lowest, std::int64_t highest) {
    const auto span = static_cast<std::uint64_t>(highest - lowest) + 1;
    return lowest + static_cast<std::int64_t>(bits() % span);
  }

 private:
  std::mt19937_64 _engine;
};

// --- The catalogue that the trees refer to ---

inline std::string randomEnums() {
  return sharedEnums() + enumt("edge_t", {{-128, "EDGE_LOW"}, {5, "EDGE_5"}, {127, "EDGE_HIGH"}});
}

inline std::string randomNvs() {
  return sharedNvs() + nvt("_edge", enumeration("edge_t")) +
         nvt("_precise", floating("double float")) + nvt("_quad", scalar("s32_type")) +
         nvt("_signed_bits", signedBits(2, 5)) +
         nvt("_grid", structure({{"cells", reference("SNVT_pair"), arraySize(2)},
                                 {"lists", reference("SNVT_list"), arraySize(2)}})) +
         nvt("_texts", structure({{"lines", reference("SNVT_text"), arraySize(2)},
                                  {"title", reference("SNVT_text")}})) +
         nvt("_mixed", structure({{"flag", signedBits(0, 3)},
                                  {"level", bits(3, 5, scaling(2, -1, 3))},
                                  {"edge", reference("SNVT_edge")},
                                  {"half", reference("SNVT_half")}})) +
         nvt("_nested", structure({{"mixed", reference("SNVT_mixed")},
                                   {"grid", reference("SNVT_grid")},
                                   {"ratio", reference("SNVT_ratio")}}));
}

inline constexpr std::array<const char*, 20> kReferableTypes{
    "_word", "_half",    "_ratio", "_power", "_high",        "_low",  "_pair",
    "_list", "_text",    "_pairs", "_alias", "_alias_2",     "_edge", "_word_alias",
    "_quad", "_precise", "_grid",  "_texts", "_signed_bits", "_mixed"};

// --- The trees ---

struct TypeRules {
  bool hasUnions = true;
  bool hasDynamicArraysInUnions = true;
  bool hasEncodingsInUnions = true;
};

// Makes one tree of at most 8 levels, about 24 members and 24 elements of one member.
class RandomTypes {
 public:
  RandomTypes(Random& random, const TypeRules& rules)
      : _random(random),
        _rules(rules),
        _budget(1 + random.below(1 + random.below(24))),
        _aggregatePercent(10 + random.below(80)) {}

  std::unique_ptr<korvat::Member> make() { return makeAny("", 0, true); }

 private:
  using Kind = korvat::Member::Kind;
  using NcType = korvat::NcType;
  using Name = std::string;

  static constexpr unsigned kMaxDepth = 8;
  static constexpr std::uint32_t kMaxElements = 24;

  template <typename T>
  std::unique_ptr<T> named(const Name& name) {
    if (_budget > 0) --_budget;
    auto member = std::make_unique<T>();
    member->setProgName(name);
    return member;
  }

  std::unique_ptr<korvat::Member> makeAny(const Name& name, unsigned depth, bool mayBeArray) {
    const std::uint32_t outerElements = _elements;
    const std::uint32_t elementCount = mayBeArray && _random.chance(20) ? drawArraySize() : 0;
    if (elementCount != 0) _elements *= elementCount;
    auto member = makeElement(name, depth);
    member->setArraySize(elementCount);
    _elements = outerElements;
    return member;
  }

  std::uint32_t drawArraySize() {
    return 1 + _random.below(std::min<std::uint32_t>(5, kMaxElements / _elements));
  }

  std::unique_ptr<korvat::Member> makeElement(const Name& name, unsigned depth) {
    if (depth < kMaxDepth && _budget > 0 && _random.chance(_aggregatePercent)) {
      return makeAggregate(name, depth);
    }
    switch (_random.below(12)) {
      case 0:
      case 1:
        return makeFloat(name);
      case 2:
      case 3:
        return makeBitfield(name, static_cast<std::uint8_t>(_random.below(8)));
      case 4:
      case 5:
        return makeEnum(name);
      case 6:
        return makeRef(name);
      default:
        return makeScalar(name);
    }
  }

  std::unique_ptr<korvat::MemAggregate> makeAggregate(const Name& name, unsigned depth) {
    auto aggregate = named<korvat::MemAggregate>(name);
    aggregate->setUnion(_rules.hasUnions && _random.chance(20));
    if (aggregate->isUnion()) ++_openUnions;
    for (unsigned rest = _random.below(6); rest > 0 && _budget > 0; --rest) {
      addChildren(*aggregate, depth + 1);
    }
    if (aggregate->isUnion()) --_openUnions;
    aggregate->buildLookup();
    return aggregate;
  }

  // Adds one child, or several that belong together.
  void addChildren(korvat::MemAggregate& aggregate, unsigned depth) {
    const unsigned pattern = _random.below(10);
    if (pattern == 0) return addBitGroup(aggregate);
    if (pattern == 1 && !aggregate.isUnion()) return addDynamicArray(aggregate, depth);
    if (pattern == 2) return addSelectedText(aggregate);
    aggregate.addChild(makeAny(childName(aggregate), depth, true));
  }

  static Name childName(const korvat::MemAggregate& aggregate) {
    return "m" + std::to_string(aggregate.getChildren().size());
  }

  void addBitGroup(korvat::MemAggregate& aggregate) {
    unsigned offset = _random.chance(70) ? 0 : _random.below(8);
    while (offset < 8) {
      auto member = makeBitfield(childName(aggregate), static_cast<std::uint8_t>(offset));
      offset += member->getSlot().width + (_random.chance(80) ? 0 : 1);
      aggregate.addChild(std::move(member));
      if (_random.chance(15)) return;
    }
  }

  // An element count, what may stand between, and the array; now and then a floating number takes
  // the place of the count, so that there is none.
  void addDynamicArray(korvat::MemAggregate& aggregate, unsigned depth) {
    if (_openUnions > 0 && !_rules.hasDynamicArraysInUnions) return;
    if (_random.chance(15)) {
      aggregate.addChild(makeFloat(childName(aggregate)));
    } else {
      const bool isCharSet = _random.chance(10) && !hasCharSet(aggregate);
      auto count = named<korvat::MemScalar>(isCharSet ? "char_set" : childName(aggregate));
      count->setNcType(drawIntegerType());
      aggregate.addChild(std::move(count));
    }
    if (_random.chance(30)) aggregate.addChild(makeEnum(childName(aggregate)));
    if (_random.chance(20)) addBitGroup(aggregate);

    const std::uint32_t largest = drawArraySize();
    const std::uint32_t outerElements = std::exchange(_elements, _elements * largest);
    auto array = makeAny(childName(aggregate), depth, false);
    _elements = outerElements;
    array->setArraySize(largest);
    array->setArrayMinSize(_random.below(largest));
    aggregate.addChild(std::move(array));
    if (_random.chance(30)) addBitGroup(aggregate);
  }

  // Something that selects the characters of an array, and mostly an array.
  void addSelectedText(korvat::MemAggregate& aggregate) {
    if (_random.chance(50) && !hasCharSet(aggregate)) {
      if (_random.chance(50)) {
        aggregate.addChild(makeScalar("char_set"));
      } else {
        aggregate.addChild(makeEnum("char_set"));
      }
    } else if (_openUnions == 0 || _rules.hasEncodingsInUnions) {
      auto selection = named<korvat::MemEnum>(childName(aggregate));
      selection->getRefId().setId("char_encoding_t");
      aggregate.addChild(std::move(selection));
    }
    if (_random.chance(20)) return;
    auto text = makeScalar(childName(aggregate));
    text->setArraySize(1 + _random.below(8));
    aggregate.addChild(std::move(text));
  }

  static bool hasCharSet(const korvat::MemAggregate& aggregate) {
    const auto& children = aggregate.getChildren();
    return std::any_of(children.begin(), children.end(),
                       [](const auto& child) { return child->isCharSet(); });
  }

  NcType drawIntegerType() {
    return static_cast<NcType>(_random.between(static_cast<std::int64_t>(NcType::UnsignedChar),
                                               static_cast<std::int64_t>(NcType::SignedQuad)));
  }

  // A multiplier of 0 comes alone: it shows every raw number as 0.
  korvat::Scaling drawScaling() {
    if (_random.chance(2)) return {0, 0, 0};
    korvat::Scaling scaling;
    scaling.a = static_cast<std::int16_t>(_random.chance(60) ? _random.between(1, 10)
                                                             : _random.between(-32768, 32767));
    if (scaling.a == 0) scaling.a = 1;
    scaling.b = static_cast<std::int16_t>(_random.chance(80) ? _random.between(-4, 4)
                                                             : _random.between(-20, 20));
    scaling.c = static_cast<std::int16_t>(_random.chance(50) ? 0 : _random.between(-32768, 32767));
    return scaling;
  }

  // Limits and an invalid marker within the raw numbers that the member can hold.
  template <typename T>
  void setLimits(korvat::TMemNumeric<T>& member, std::int64_t lowest, std::int64_t highest) {
    if (member.getScaling().a == 0) return;
    std::int64_t min = _random.between(lowest, highest);
    std::int64_t max = _random.between(lowest, highest);
    if (min > max) std::swap(min, max);
    if (_random.chance(20)) member.setMin(static_cast<T>(min));
    if (_random.chance(20)) member.setMax(static_cast<T>(max));
    if (_random.chance(20)) member.setInvalid(static_cast<T>(_random.between(lowest, highest)));
  }

  std::unique_ptr<korvat::MemScalar> makeScalar(const Name& name) {
    auto member = named<korvat::MemScalar>(name);
    member->setNcType(drawIntegerType());
    if (_random.chance(30)) member->setScaling(drawScaling());
    const unsigned bitCount = 8 * member->getByteCount();
    const bool isSigned = korvat::ncTypeRow(member->getNcType()).isSigned;
    const std::int64_t span = std::int64_t{1} << bitCount;
    const std::int64_t lowest = isSigned ? -span / 2 : 0;
    setLimits(*member, lowest, lowest + span - 1);
    return member;
  }

  std::unique_ptr<korvat::MemFloat> makeFloat(const Name& name) {
    auto member = named<korvat::MemFloat>(name);
    const bool isDouble = _random.chance(50);
    member->setNcType(isDouble ? NcType::Double : NcType::Float);
    if (_random.chance(30)) {
      korvat::Scaling scaling = drawScaling();
      scaling.a = static_cast<std::int16_t>(_random.between(1, 1000));
      if (isDouble) scaling.b = static_cast<std::int16_t>(_random.between(0, 3));
      member->setScaling(scaling);
    }
    setLimits(*member, -1000, 1000);
    return member;
  }

  std::unique_ptr<korvat::MemBitfield> makeBitfield(const Name& name, std::uint8_t offset) {
    auto member = named<korvat::MemBitfield>(name);
    const unsigned width = _random.chance(40) ? 8u - offset : 1 + _random.below(8u - offset);
    const bool isSigned = _random.chance(50);
    member->setOffset(offset);
    member->setWidth(static_cast<std::uint8_t>(width));
    member->setSigned(isSigned);
    if (_random.chance(30)) member->setScaling(drawScaling());
    const std::int64_t span = std::int64_t{1} << width;
    const std::int64_t lowest = isSigned ? -span / 2 : 0;
    setLimits(*member, lowest, lowest + span - 1);
    return member;
  }

  std::unique_ptr<korvat::MemEnum> makeEnum(const Name& name) {
    auto member = named<korvat::MemEnum>(name);
    const bool isEncoding = (_openUnions == 0 || _rules.hasEncodingsInUnions) && _random.chance(20);
    const char* plain = _random.chance(50) ? "power_t" : "edge_t";
    member->getRefId().setId(isEncoding ? "char_encoding_t" : plain);
    return member;
  }

  std::unique_ptr<korvat::MemRef> makeRef(const Name& name) {
    auto member = named<korvat::MemRef>(name);
    const bool isUnion = _rules.hasUnions && _random.chance(10);
    const char* plain =
        kReferableTypes[_random.below(static_cast<std::uint32_t>(kReferableTypes.size()))];
    member->getRefId().setId(isUnion ? "_either" : plain);
    return member;
  }

  Random& _random;
  TypeRules _rules;
  unsigned _budget;             // members still to be made, about
  unsigned _aggregatePercent;   // how often a member is a structure or a union
  std::uint32_t _elements = 1;  // of the arrays around, multiplied
  unsigned _openUnions = 0;
};

}  // namespace zavri::test
