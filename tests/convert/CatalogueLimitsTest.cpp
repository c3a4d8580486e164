#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Value.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/Value.h"
#include "korvat/types/EnumType.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/convert/StandardValues.h"

// Values at the limits, of every type of the catalogue that comes with the library, come back from
// their JSON: zeros, ones, and each member's lowest, highest and invalid number beside harmless
// ones; in arrays, also in the last element alone. What cannot come back is told from the
// definition, by the reasons in kObstacles.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;

// --- A layout taken apart ---

// Of a union: by its path, the alternative that a value holds.
using Selection = std::map<std::string, std::string>;

struct Union {
  std::string path;
  std::vector<std::string> alternatives;
};

// A member that holds a number, or an array of numbers.
struct Leaf {
  std::string path;
  const Member* member;
  Selection choices;           // the unions around it
  bool followsCharSet;         // text, whatever its base type
  std::string encodingPath{};  // of the character encoding before it, may be empty
};

std::string join(const std::string& path, const std::string& name) {
  return path.empty() ? name : path + "." + name;
}

// The root member of the type that a reference names; any other member itself.
const Member& resolve(TypeManager& manager, const Member& member) {
  if (member.getKind() != Member::Kind::Ref) return member;
  const VarType* type = static_cast<const MemRef&>(member).resolve(&manager);
  if (type == nullptr || type->getMember() == nullptr) throw std::runtime_error("bad reference");
  return *type->getMember();
}

class Layout {
 public:
  Layout(TypeManager& manager, const VarType& type) : _manager(manager) {
    addMember(*type.getMember(), "", {});
  }

  const std::vector<Leaf>& leaves() const { return _leaves; }

  // The first alternative of each union.
  Selection firstAlternatives() const {
    Selection selection;
    for (const Union& item : _unions) selection[item.path] = item.alternatives.front();
    return selection;
  }

  // That, and each further alternative beside the first ones of the other unions.
  std::vector<Selection> selections() const {
    std::vector<Selection> selections{firstAlternatives()};
    for (const Union& item : _unions) {
      for (std::size_t i = 1; i < item.alternatives.size(); ++i) {
        selections.push_back(firstAlternatives());
        selections.back()[item.path] = item.alternatives[i];
      }
    }
    return selections;
  }

 private:
  void addMember(const Member& member, const std::string& path, const Selection& choices) {
    const bool isLeaf =
        member.getKind() != Member::Kind::Ref && member.getKind() != Member::Kind::Aggregate;
    if (isLeaf) {
      _leaves.push_back({path, &member, choices, _isBehindCharSet, _encodingPath});
    } else if (!member.isArray()) {
      addElement(member, path, choices);
    } else {
      for (std::uint32_t i = 0; i < member.getArraySize(); ++i) {
        addElement(member, path + "[" + std::to_string(i) + "]", choices);
      }
    }
    _isBehindCharSet = member.isCharSet();
    if (member.getKind() != Member::Kind::Enum) return;
    const EnumType* type = static_cast<const MemEnum&>(member).resolveEnum(&_manager);
    if (type != nullptr && type->hasFlags(BaseType::kCharEncoding)) _encodingPath = path;
  }

  void addElement(const Member& member, const std::string& path, const Selection& choices) {
    if (member.getKind() == Member::Kind::Ref) {
      return addMember(resolve(_manager, member), path, choices);
    }
    const auto& aggregate = static_cast<const MemAggregate&>(member);
    if (aggregate.isUnion()) _unions.push_back({path, {}});
    const std::size_t unionNumber = _unions.size() - 1;
    for (const auto& child : aggregate.getChildren()) {
      Selection inner = choices;
      if (aggregate.isUnion()) {
        _unions[unionNumber].alternatives.push_back(child->getProgName());
        inner[path] = child->getProgName();
      }
      addMember(*child, join(path, child->getProgName()), inner);
    }
  }

  TypeManager& _manager;
  std::vector<Leaf> _leaves;
  std::vector<Union> _unions;
  bool _isBehindCharSet = false;
  std::string _encodingPath;
};

bool isSelected(const Leaf& leaf, const Selection& selection) {
  return std::all_of(leaf.choices.begin(), leaf.choices.end(), [&](const auto& choice) {
    return selection.at(choice.first) == choice.second;
  });
}

// The JSON value of `member` with only the selected alternatives of its unions.
json::Value selectFrom(TypeManager& manager, const Member& member, const std::string& path,
                       const Selection& selection, const json::Value& value, bool isElement) {
  json::Value selected;
  if (member.isArray() && !isElement) {
    for (unsigned i = 0; i < value.getSize(); ++i) {
      const std::string element = path + "[" + std::to_string(i) + "]";
      selected[i] = selectFrom(manager, member, element, selection, value[i], true);
    }
    return value.isArray() ? selected : value;
  }
  if (member.getKind() == Member::Kind::Ref) {
    return selectFrom(manager, resolve(manager, member), path, selection, value, false);
  }
  if (member.getKind() != Member::Kind::Aggregate) return value;
  const auto& aggregate = static_cast<const MemAggregate&>(member);
  for (const auto& child : aggregate.getChildren()) {
    const std::string& name = child->getProgName();
    if (aggregate.isUnion() && selection.at(path) != name) continue;
    selected[name] = selectFrom(manager, *child, join(path, name), selection, value[name], false);
  }
  return selected;
}

// --- Numbers of a leaf ---

bool isFloat(const Leaf& leaf) {
  return leaf.member->getKind() == Member::Kind::Float;
}

// Elements; 1 of a leaf that is no array.
std::int32_t countOf(const Leaf& leaf) {
  return std::max(static_cast<std::int32_t>(leaf.member->getArraySize()), 1);
}

const MemScalar* scalarOf(const Leaf& leaf) {
  if (leaf.member->getKind() != Member::Kind::Scalar) return nullptr;
  return static_cast<const MemScalar*>(leaf.member);
}

// A raw number of a leaf: `floating` of a float, `integer` of any other.
struct Number {
  std::string name;
  std::int64_t integer;
  double floating;
};

template <typename M>
std::vector<Number> extremesOf(const M& member, double lowest, double highest) {
  const auto numberOf = [](const char* name, double raw) {
    return Number{name, static_cast<std::int64_t>(std::clamp(raw, -0x1p62, 0x1p62)), raw};
  };
  std::vector<Number> numbers = {
      numberOf("lowest", member.hasMin() ? static_cast<double>(member.getMin()) : lowest),
      numberOf("highest", member.hasMax() ? static_cast<double>(member.getMax()) : highest)};
  if (member.hasInvalid()) {
    numbers.push_back(numberOf("invalid", static_cast<double>(member.getInvalid())));
  }
  return numbers;
}

// Lowest, highest and, where it has one, invalid number. Of an enumeration the enumerators count,
// and -1, which stands for "no value".
std::vector<Number> extremesOf(TypeManager& manager, const Leaf& leaf) {
  switch (leaf.member->getKind()) {
    case Member::Kind::Scalar: {
      const NcTypeRow& row = ncTypeRow(scalarOf(leaf)->getNcType());
      const double count = std::ldexp(1, static_cast<int>(8 * row.byteCount));
      const double lowest = row.isSigned ? -count / 2 : 0;
      return extremesOf(*scalarOf(leaf), lowest, lowest + count - 1);
    }
    case Member::Kind::Bitfield: {
      const auto& field = static_cast<const MemBitfield&>(*leaf.member);
      const double count = std::ldexp(1, field.getSlot().width);
      const double lowest = field.getSlot().isSigned ? -count / 2 : 0;
      return extremesOf(field, lowest, lowest + count - 1);
    }
    case Member::Kind::Float:
      return extremesOf(static_cast<const MemFloat&>(*leaf.member), -FLT_MAX, FLT_MAX);
    case Member::Kind::Enum: {
      const EnumType* type = static_cast<const MemEnum&>(*leaf.member).resolveEnum(&manager);
      if (type == nullptr || type->getItemsByValue().empty()) break;
      const auto& items = type->getItemsByValue();
      // Members are accessed by their unsigned bytes.
      const auto numberOf = [](const char* name, std::int8_t value) {
        return Number{name, static_cast<std::uint8_t>(value), 0};
      };
      return {numberOf("lowest", items.begin()->first), numberOf("highest", items.rbegin()->first),
              numberOf("invalid", -1)};
    }
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  throw std::runtime_error("no numbers for " + leaf.path);
}

// Zero, or the lowest number where zero is not between the limits.
Number harmlessOf(TypeManager& manager, const Leaf& leaf) {
  const std::vector<Number> extremes = extremesOf(manager, leaf);
  const bool isZeroInside = isFloat(leaf) ? extremes[0].floating <= 0 && extremes[1].floating >= 0
                                          : extremes[0].integer <= 0 && extremes[1].integer >= 0;
  if (isZeroInside || leaf.member->getKind() == Member::Kind::Enum) return {"zero", 0, 0};
  return extremes[0];
}

// --- What cannot come back ---

struct LeafValue {
  const Leaf* leaf;
  std::vector<Number> numbers;
  bool isText;
  bool isUtf8;
};

struct Reading {
  std::vector<LeafValue> values;
  bool hasUncoveredBits;
};

template <typename M>
bool isOutside(const M& member, double number) {
  if (member.hasInvalid() && number == static_cast<double>(member.getInvalid())) return false;
  return (member.hasMin() && number < static_cast<double>(member.getMin())) ||
         (member.hasMax() && number > static_cast<double>(member.getMax()));
}

// True for the single next to a limit that no single equals.
bool isRoundedLimit(const MemFloat& member, double number) {
  return member.getNcType() == NcType::Float &&
         (number == static_cast<double>(static_cast<float>(member.getMin())) ||
          number == static_cast<double>(static_cast<float>(member.getMax())));
}

bool isOutside(const Leaf& leaf, const Number& number) {
  switch (leaf.member->getKind()) {
    case Member::Kind::Scalar:
      return isOutside(*scalarOf(leaf), static_cast<double>(number.integer));
    case Member::Kind::Bitfield:
      return isOutside(static_cast<const MemBitfield&>(*leaf.member),
                       static_cast<double>(number.integer));
    case Member::Kind::Float:
      return isOutside(static_cast<const MemFloat&>(*leaf.member), number.floating) &&
             !isRoundedLimit(static_cast<const MemFloat&>(*leaf.member), number.floating);
    case Member::Kind::Enum:  // takes every byte
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  return false;
}

template <typename Test>
bool anyNumber(const Reading& reading, Test test) {
  for (const LeafValue& value : reading.values) {
    for (const Number& number : value.numbers) {
      if (test(value, number)) return true;
    }
  }
  return false;
}

struct Obstacle {
  const char* reason;
  bool (*holds)(const Reading&);
};

const Obstacle kObstacles[] = {
    {"a number is outside of its limits",
     [](const Reading& reading) {
       return anyNumber(reading, [](const LeafValue& value, const Number& number) {
         return !value.isText && !std::isnan(number.floating) && isOutside(*value.leaf, number);
       });
     }},
    {"JSON has no number for a NaN",
     [](const Reading& reading) {
       return anyNumber(reading, [](const LeafValue&, const Number& number) {
         return std::isnan(number.floating);
       });
     }},
    {"bits are set that no member covers",
     [](const Reading& reading) { return reading.hasUncoveredBits; }},
    {"a text goes on behind its first zero",
     [](const Reading& reading) {
       return std::any_of(reading.values.begin(), reading.values.end(), [](const LeafValue& value) {
         const auto isZero = [](const Number& number) { return number.integer == 0; };
         const auto zero = std::find_if(value.numbers.begin(), value.numbers.end(), isZero);
         return value.isText && !std::all_of(zero, value.numbers.end(), isZero);
       });
     }},
    {"a text is not the UTF-8 that it claims to be",
     [](const Reading& reading) {
       return anyNumber(reading, [](const LeafValue& value, const Number& number) {
         return value.isUtf8 && number.integer > 0xF4;  // in no text of UTF-8
       });
     }},
};

// --- The test ---

struct Way {
  std::string name;
  Endianess order;
  bool supportsInvalidKeyword;
};

void PrintTo(const Way& way, std::ostream* out) {
  *out << way.name;
}

class CatalogueLimits : public testing::TestWithParam<Way> {
 protected:
  CatalogueLimits() { _manager.setSupportInvalidKeyword(GetParam().supportsInvalidKeyword); }

  // Sets the numbers of the leaf from element `first` on.
  void place(const VarType& type, const Leaf& leaf, const Number& number, std::int32_t first,
             Buffer& raw) {
    const Value value = _manager.accessValue(GetParam().order, type.getTypeId(), raw);
    const MemberValue member = value[leaf.path];
    for (std::int32_t i = first; i < countOf(leaf); ++i) {
      const AccessStatus status = isFloat(leaf) ? member.set(i, static_cast<float>(number.floating))
                                                : member.set(i, number.integer);
      ASSERT_EQ(status, AccessStatus::Exact) << leaf.path;
    }
  }

  // The value that has `number` in the leaf, from element `first` on, and harmless ones in all else
  // that is selected.
  Buffer makeRaw(const VarType& type, const Layout& layout, const Selection& selection,
                 const Leaf& leaf, const Number& number, std::int32_t first) {
    Buffer raw = filled(type, 0);
    for (const Leaf& other : layout.leaves()) {
      if (isSelected(other, selection)) place(type, other, harmlessOf(_manager, other), 0, raw);
    }
    place(type, leaf, number, first, raw);
    return raw;
  }

  Buffer filled(const VarType& type, std::uint8_t byte) {
    const std::vector<std::uint8_t> bytes(static_cast<std::size_t>(type.getSize()), byte);
    return Buffer(bytes.data(), static_cast<unsigned>(bytes.size()));
  }

  // What the leaves hold, of which `isRead` is true.
  template <typename Test>
  Reading read(const VarType& type, const Layout& layout, Buffer raw, Test isRead) {
    Reading reading{{}, false};
    Buffer covered = filled(type, 0);
    for (const Leaf& leaf : layout.leaves()) {
      if (!isRead(leaf)) continue;
      reading.values.push_back(readLeaf(type, leaf, raw));
      coverLeaf(type, leaf, covered);
    }
    for (unsigned i = 0; i < raw.getSize(); ++i) {
      if ((raw.getData()[i] & ~covered.getData()[i]) != 0) reading.hasUncoveredBits = true;
    }
    return reading;
  }

  LeafValue readLeaf(const VarType& type, const Leaf& leaf, Buffer& raw) {
    const Value value = _manager.accessValue(GetParam().order, type.getTypeId(), raw);
    const MemberValue member = value[leaf.path];
    LeafValue read{&leaf, {}, false, false};
    for (std::int32_t i = 0; i < countOf(leaf); ++i) {
      Number number{"", 0, 0};
      const AccessStatus status =
          isFloat(leaf) ? member.get(i, number.floating) : member.get(i, number.integer);
      EXPECT_EQ(status, AccessStatus::Exact) << leaf.path;
      read.numbers.push_back(number);
    }
    const MemScalar* scalar = scalarOf(leaf);
    if (scalar == nullptr || !scalar->isArray()) return read;
    const bool isChar =
        scalar->getNcType() == NcType::UnsignedChar || scalar->getNcType() == NcType::SignedChar;
    // 0 is UTF-8, the one encoding whose number is known.
    read.isUtf8 = !leaf.encodingPath.empty() && value[leaf.encodingPath].getUInt8() == 0;
    read.isText = isChar || leaf.followsCharSet || read.isUtf8;
    return read;
  }

  void coverLeaf(const VarType& type, const Leaf& leaf, Buffer& covered) {
    const Value value = _manager.accessValue(GetParam().order, type.getTypeId(), covered);
    const MemberValue member = value[leaf.path];
    if (leaf.member->getKind() == Member::Kind::Bitfield) {
      const BitSlot& slot = static_cast<const MemBitfield&>(*leaf.member).getSlot();
      const int ones = slot.isSigned ? -1 : (1 << slot.width) - 1;
      ASSERT_EQ(member.setBitfield(ones), AccessStatus::Exact) << leaf.path;
      return;
    }
    const std::vector<std::uint8_t> ones(leaf.member->getBitCount(&_manager) / 8, 0xFF);
    ASSERT_EQ(member.setValue(ones.data(), static_cast<unsigned>(ones.size())), AccessStatus::Exact)
        << leaf.path;
  }

  std::set<std::string> findObstacles(const Reading& reading) {
    std::set<std::string> reasons;
    for (const Obstacle& obstacle : kObstacles) {
      if (obstacle.holds(reading)) reasons.insert(obstacle.reason);
    }
    _metReasons.insert(reasons.begin(), reasons.end());
    return reasons;
  }

  // Decodes and encodes the value: with all alternatives of its unions where each of them could be
  // given alone, else with the selected ones.
  void check(const VarType& type, const Layout& layout, const Selection& selection,
             const Buffer& raw) {
    const Endianess order = GetParam().order;
    json::Value value;
    ASSERT_TRUE(_manager.rawToJson(type.getTypeId(), raw, value, order, true));

    std::set<std::string> reasons =
        findObstacles(read(type, layout, raw, [](const Leaf&) { return true; }));
    const bool isWhole = reasons.empty();
    if (!isWhole) {
      reasons = findObstacles(
          read(type, layout, raw, [&](const Leaf& leaf) { return isSelected(leaf, selection); }));
      value = selectFrom(_manager, *type.getMember(), "", selection, value, false);
    }

    Buffer back;
    const std::string text = value.stringify();
    const bool isTaken =
        _manager.jsonToRaw(type.getTypeId(), test::parsed(text), back, order, isWhole);
    const bool isSame = isTaken && hexOf(back) == hexOf(raw);
    EXPECT_EQ(isSame, reasons.empty()) << hexOf(raw) << " is shown as " << text << " and "
                                       << (isTaken ? "comes back as " + hexOf(back) : "is refused")
                                       << "\nreasons not to: " << testing::PrintToString(reasons);
    ++_valueCount;
  }

  static std::string hexOf(const Buffer& raw) { return util::BinaryUtils::toString(raw); }

  void checkType(const VarType& type) {
    const Layout layout(_manager, type);
    for (const Selection& selection : layout.selections()) {
      SCOPED_TRACE(testing::PrintToString(selection));
      for (const std::uint8_t byte : {std::uint8_t{0x00}, std::uint8_t{0xFF}}) {
        check(type, layout, selection, filled(type, byte));
      }
    }
    for (const Leaf& leaf : layout.leaves()) {
      Selection selection = layout.firstAlternatives();
      for (const auto& [path, alternative] : leaf.choices) selection[path] = alternative;
      for (const Number& number : extremesOf(_manager, leaf)) {
        SCOPED_TRACE(leaf.path + ": " + number.name);
        check(type, layout, selection, makeRaw(type, layout, selection, leaf, number, 0));
        if (!leaf.member->isArray()) continue;
        SCOPED_TRACE("in the last element");
        const std::int32_t last = countOf(leaf) - 1;
        check(type, layout, selection, makeRaw(type, layout, selection, leaf, number, last));
      }
    }
  }

  const test::LogCapture _quiet{base::Logger::Error};
  TypeManager _manager = test::makeStandardTypes();
  std::set<std::string> _metReasons;
  unsigned _valueCount = 0;
};

TEST_P(CatalogueLimits, ComeBackFromJsonUnlessThereIsAReason) {
  const auto types = test::findStandardLayouts(_manager);
  for (const VarType* type : types) {
    SCOPED_TRACE(type->getTypeId().toLonFormatId());
    checkType(*type);
  }
  // Zeros, ones, and at least two of a member.
  EXPECT_GE(_valueCount, 4 * types.size());

  for (const Obstacle& obstacle : kObstacles) {
    EXPECT_EQ(_metReasons.count(obstacle.reason), 1u) << "met nowhere: " << obstacle.reason;
  }
}

const std::vector<Way> kWays = {
    {"BigEndian", Endianess::Big, false},
    {"LittleEndian", Endianess::Little, false},
    {"InvalidKeyword", Endianess::Big, true},
};

INSTANTIATE_TEST_SUITE_P(Ways, CatalogueLimits, testing::ValuesIn(kWays),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::korvat
