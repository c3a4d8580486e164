#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/Logger.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/convert/PacketConverter.h"
#include "korvat/types/NvType.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/builder/TypeDump.h"
#include "tests/convert/PlainReader.h"
#include "tests/convert/RandomTypes.h"
#include "tests/convert/TypeXml.h"

// What is converted both ways comes back, for types and values at random.
//
// The seed is the same every time. KORVAT_RANDOM_CASES=<n> tries n cases of each kind from a seed
// of its own, which it prints; KORVAT_SEED=<n> takes that seed.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using test::Bytes;
using test::Leaf;
using test::PlainReader;
using test::PlainValue;
using test::Random;

constexpr unsigned kDefaultCases = 20'000;  // of each kind
constexpr unsigned kValuesPerType = 5;

std::optional<std::uint64_t> numberFromEnvironment(const char* name) {
  const char* text = std::getenv(name);
  if (text == nullptr) return std::nullopt;
  return std::strtoull(text, nullptr, 10);
}

std::uint64_t chooseSeed() {
  if (const auto given = numberFromEnvironment("KORVAT_SEED")) return *given;
  if (!numberFromEnvironment("KORVAT_RANDOM_CASES")) return 1;
  std::random_device device;
  const std::uint64_t seed = device();
  std::cout << "KORVAT_SEED=" << seed << std::endl;
  return seed;
}

Endianess otherThan(Endianess order) {
  return order == Endianess::Big ? Endianess::Little : Endianess::Big;
}

Buffer bufferOf(const Bytes& bytes) {
  return Buffer(bytes.data(), static_cast<unsigned>(bytes.size()));
}

std::string hexOf(const Buffer& buffer) {
  return PlainReader::toHex(Bytes(buffer.getData(), buffer.getData() + buffer.getSize()), 0,
                            buffer.getSize());
}

// The bits of `covered` where the mask is set, those of `other` elsewhere.
Buffer mix(const Bytes& covered, const Bytes& mask, const Bytes& other) {
  Bytes mixed(covered.size());
  for (std::size_t i = 0; i < covered.size(); ++i) {
    mixed[i] = static_cast<std::uint8_t>((covered[i] & mask[i]) | (other[i] & ~mask[i]));
  }
  return bufferOf(mixed);
}

// The same, a NaN being the same as a NaN.
bool isSame(const json::Value& left, const json::Value& right) {
  if (left.isFloating() && std::isnan(left.asDouble())) {
    return left.getNumberType() == right.getNumberType() && std::isnan(right.asDouble());
  }
  if (left.isArray() && right.isArray() && left.getSize() == right.getSize()) {
    for (unsigned i = 0; i < left.getSize(); ++i) {
      if (!isSame(left[i], right[i])) return false;
    }
    return true;
  }
  if (!left.isObject() || !right.isObject() || left.getSize() != right.getSize()) {
    return left == right;
  }
  for (const auto& [name, value] : left.getPropertyMap()) {
    const json::Value* other = right.getPropertyMap().find(name);
    if (other == nullptr || !isSame(value, *other)) return false;
  }
  return true;
}

// What the cases of one kind may have.
struct CaseRules {
  bool hasUnions = true;
  bool hasHexUnions = true;  // in hexadecimal text
  bool hasDynamicArraysInUnions = true;
  bool hasOverlaps = true;
  bool hasWideText = true;
  bool leavesUnions = true;
};

bool fits(const CaseRules& rules, const PlainValue& value) {
  if (value.bytes.empty() || value.leaves.empty()) return false;
  if (value.overlaps && !rules.hasOverlaps) return false;
  if (value.hasWideText && !rules.hasWideText) return false;
  return rules.leavesUnions || !value.leavesUnion;
}

class RoundTrip : public testing::Test {
 protected:
  // One random value of one random type.
  struct Case {
    Case(TypeManager& manager, Endianess byteOrder, bool goesThroughText)
        : order(byteOrder), isText(goesThroughText), reader(manager, byteOrder, goesThroughText) {}

    NvType type;
    Endianess order;
    bool isText;
    PlainReader reader;
    PlainValue value;
  };

  RoundTrip() : _manager(_files.makeManager()) {
    _files.write(TypeId::StdPrefix, "enums", test::randomEnums());
    _files.write(TypeId::StdPrefix, "nvs", test::randomNvs());
  }

  // Calls `check` for one value after the other until one fails.
  template <typename Check>
  void forEachCase(const CaseRules& rules, Check check) {
    const test::LogCapture quiet(base::Logger::Error);
    const auto caseCount =
        static_cast<unsigned>(numberFromEnvironment("KORVAT_RANDOM_CASES").value_or(kDefaultCases));
    const std::uint64_t seed = chooseSeed();
    unsigned done = 0;
    unsigned without = 0;  // draws that found no value
    for (unsigned typeNumber = 0; done < caseCount && without <= caseCount; ++typeNumber) {
      Random random(seed * 1'000'003 + typeNumber);
      Case drawn(_manager, random.chance(50) ? Endianess::Big : Endianess::Little,
                 random.chance(50));
      drawType(rules, random, drawn);
      for (unsigned i = 0; i < kValuesPerType && done < caseCount; ++i) {
        if (!drawn.reader.draw(*drawn.type.getMember(), random, drawn.value)) {
          ++without;
          continue;
        }
        if (!fits(rules, drawn.value)) continue;
        check(drawn, random);
        ++done;
        if (HasFailure()) return describe(seed, done, drawn);
      }
    }
    EXPECT_EQ(done, caseCount);
    EXPECT_LE(without, caseCount / 20) << "too many draws without a value";
  }

  TypeManager& manager() { return _manager; }

  testing::AssertionResult encode(const Case& drawn, const json::Value& value, Buffer& raw) {
    JsonConverter converter(&_manager, drawn.type, drawn.order, true);
    return resultOf(converter.jsonToRaw(value, raw), converter);
  }

  static testing::AssertionResult resultOf(bool isDone, const JsonConverter& converter) {
    if (isDone && converter.getProblems().empty()) return testing::AssertionSuccess();
    testing::AssertionResult failure = testing::AssertionFailure();
    for (const auto& problem : converter.getProblems()) {
      failure << problem.path << ": " << problem.text << "\n";
    }
    return failure;
  }

  bool decode(const Case& drawn, Endianess order, const Buffer& raw, json::Value& value) {
    return JsonConverter(&_manager, drawn.type, order, true).rawToJson(raw, value);
  }

  // The JSON value after a way through text, where the case takes it.
  static json::Value passOn(const Case& drawn, const json::Value& value) {
    if (!drawn.isText) return value;
    json::Value read;
    std::string error;
    EXPECT_TRUE(json::Value::parse(value.stringify(), read, error)) << error;
    return read;
  }

 private:
  void drawType(const CaseRules& rules, Random& random, Case& drawn) {
    const bool isHex = rules.hasHexUnions && random.chance(20);
    _manager.clearUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
    if (isHex) _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
    _manager.setUseDynamicArrays(random.chance(50));
    _manager.setAllowCuttingToMinMax(random.chance(50));
    _manager.setSupportInvalidKeyword(random.chance(50));

    test::TypeRules typeRules;
    typeRules.hasUnions = rules.hasUnions;
    // What stands inside a union in hexadecimal text is not known when its end is looked for.
    typeRules.hasDynamicArraysInUnions = rules.hasDynamicArraysInUnions && !isHex;
    typeRules.hasEncodingsInUnions = !isHex;
    drawn.type.setMember(test::RandomTypes(random, typeRules).make());
  }

  void describe(std::uint64_t seed, unsigned number, const Case& drawn) {
    ADD_FAILURE() << "KORVAT_SEED=" << seed << ", case " << number
                  << (drawn.order == Endianess::Big ? ", big-endian" : ", little-endian")
                  << (drawn.isText ? ", through text" : "")
                  << (_manager.getUseDynamicArrays() ? ", dynamic arrays" : "")
                  << (_manager.isAllowCuttingToMinMax() ? ", cutting" : "")
                  << (_manager.isSupportInvalidKeyword() ? ", invalid keyword" : "")
                  << (_manager.isUnionRawToRawHex() ? ", unions in hexadecimal text" : "")
                  << "\ntype:\n"
                  << builder::dumpMember(*drawn.type.getMember())
                  << "bytes: " << hexOf(bufferOf(drawn.value.bytes))
                  << "\nmask:  " << hexOf(bufferOf(drawn.value.mask))
                  << "\njson:  " << drawn.value.json.stringify();
  }

  test::TempCatalogue _files;
  TypeManager _manager;
};

TEST_F(RoundTrip, BringsTheBytesBackFromJson) {
  forEachCase({}, [this](const Case& drawn, Random& random) {
    const PlainValue& value = drawn.value;
    json::Value json;
    ASSERT_TRUE(decode(drawn, drawn.order, bufferOf(value.bytes), json));

    // Into no bytes, where the bits that no member covers become 0, and over the inverse of the
    // value, where they stay.
    const bool isOver = random.chance(50);
    Bytes before(value.bytes.size());
    if (isOver) {
      std::transform(value.bytes.begin(), value.bytes.end(), before.begin(),
                     [](std::uint8_t byte) { return static_cast<std::uint8_t>(~byte); });
    }
    Buffer raw = isOver ? bufferOf(before) : Buffer();
    ASSERT_TRUE(encode(drawn, passOn(drawn, json), raw)) << json.stringify();
    EXPECT_EQ(hexOf(raw), hexOf(mix(value.bytes, value.mask, before))) << json.stringify();
  });
}

TEST_F(RoundTrip, BringsTheJsonBackFromBytes) {
  forEachCase({}, [this](const Case& drawn, Random&) {
    const PlainValue& value = drawn.value;
    Buffer raw;
    ASSERT_TRUE(encode(drawn, passOn(drawn, value.json), raw));
    EXPECT_EQ(hexOf(raw), hexOf(mix(value.bytes, value.mask, Bytes(value.bytes.size()))));
    json::Value json;
    ASSERT_TRUE(decode(drawn, drawn.order, raw, json));
    EXPECT_TRUE(isSame(json, value.json)) << json.stringify();
  });
}

TEST_F(RoundTrip, BringsTheBytesBackFromTheOtherByteOrder) {
  CaseRules rules;
  rules.hasHexUnions = false;
  // Unions are copied without a look at the counts in them.
  rules.hasDynamicArraysInUnions = false;
  // A bit field at the start of a byte that it does not end is no part of a union that ends with
  // it, so that its byte is not copied with the union.
  rules.leavesUnions = false;
  forEachCase(rules, [this](const Case& drawn, Random&) {
    const PlainValue& value = drawn.value;
    const Endianess other = otherThan(drawn.order);
    Buffer raw = bufferOf(value.bytes);
    ASSERT_TRUE(PacketConverter(&manager(), drawn.type, drawn.order, other).convert(raw));
    ASSERT_TRUE(PacketConverter(&manager(), drawn.type, other, drawn.order).convert(raw));
    const Bytes back(raw.getData(), raw.getData() + raw.getSize());
    const Bytes zeros(back.size());
    EXPECT_EQ(hexOf(mix(back, value.mask, zeros)), hexOf(mix(value.bytes, value.mask, zeros)));
  });
}

TEST_F(RoundTrip, ShowsTheSameJsonInTheOtherByteOrder) {
  CaseRules rules;
  rules.hasUnions = false;  // their bytes stay as they are
  rules.hasHexUnions = false;
  rules.hasOverlaps = false;
  // Each element changes its byte order, not several that make up a character.
  rules.hasWideText = false;
  forEachCase(rules, [this](const Case& drawn, Random&) {
    const Endianess other = otherThan(drawn.order);
    Buffer raw = bufferOf(drawn.value.bytes);
    json::Value before;
    ASSERT_TRUE(decode(drawn, drawn.order, raw, before));
    ASSERT_TRUE(PacketConverter(&manager(), drawn.type, drawn.order, other).convert(raw));
    json::Value after;
    ASSERT_TRUE(decode(drawn, other, raw, after));
    EXPECT_TRUE(isSame(before, after)) << before.stringify() << "\n" << after.stringify();
  });
}

TEST_F(RoundTrip, ChangesOnlyTheBitsOfTheMemberThatIsPatched) {
  forEachCase({}, [this](Case& drawn, Random& random) {
    const auto& leaves = drawn.value.leaves;
    const Leaf& leaf = leaves[random.below(static_cast<std::uint32_t>(leaves.size()))];
    Bytes expected = drawn.value.bytes;
    drawn.reader.redraw(leaf, random, expected);

    json::Value patch;
    json::Value* node = &patch;
    for (const Leaf::Step& step : leaf.path) {
      node = step.name.empty() ? &(*node)[step.index] : &(*node)[step.name];
    }
    *node = drawn.reader.toJson(leaf, expected);
    Buffer raw = bufferOf(drawn.value.bytes);
    JsonConverter converter(&manager(), drawn.type, drawn.order, random.chance(50));
    ASSERT_TRUE(resultOf(converter.patchRaw(passOn(drawn, patch), raw), converter))
        << patch.stringify();
    // A count that grew makes room for the elements that it counts.
    expected.resize(std::max<std::size_t>(expected.size(), raw.getSize()));
    EXPECT_EQ(hexOf(raw), hexOf(bufferOf(expected))) << patch.stringify();
  });
}

// The root of the first element's type is no alternative of the union that is left out.
TEST(RoundTripFinding, PatchesAnElementBehindOneThatIsPassedOverInAUnion) {
  test::OwnTypes types(test::unionOf({{"lists", test::reference("SNVT_list"), test::arraySize(2)},
                                      {"word", test::scalar("unsigned long")}}));
  const VarType* type = types.manager().getVarType(TypeId(ResourceType::Nv, "", "_x"));
  ASSERT_NE(type, nullptr);
  json::Value patch;
  patch["lists"][1][0].setValue(std::uint8_t{0xAA});
  Buffer raw = test::bytesOf("010203040506");
  EXPECT_TRUE(JsonConverter(&types.manager(), *type, Endianess::Big, true).patchRaw(patch, raw));
  EXPECT_EQ(hexOf(raw), "010203AA0506");
}

// A floating number between a number and a dynamic array leaves the array without a count.
TEST(RoundTripFinding, WritesAWholeDynamicArrayBehindAFloatingNumber) {
  test::OwnTypes types(
      test::structure({{"one", test::scalar("unsigned short")},
                       {"ratio", test::floating("float")},
                       {"values", test::scalar("unsigned short"), test::dynamicArray(0, 3)}}));
  types.manager().setUseDynamicArrays(true);
  const test::LogCapture quiet(base::Logger::Error);
  const TypeId id(ResourceType::Nv, "", "_x");
  const Buffer raw = test::bytesOf("013F800000070809");
  json::Value value;
  ASSERT_TRUE(types.manager().rawToJson(id, raw, value));
  EXPECT_EQ(value.stringify(), "{\"one\":1,\"ratio\":1.0,\"values\":[7,8,9]}");
  Buffer back;
  EXPECT_TRUE(types.manager().jsonToRaw(id, value, back));
  EXPECT_EQ(hexOf(back), "013F800000070809");
}

}  // namespace
}  // namespace zavri::korvat
