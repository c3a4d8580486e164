#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::arraySize;
using test::bits;
using test::encode;
using test::Encoded;
using test::encodeOver;
using test::enumeration;
using test::LogCapture;
using test::NamedMember;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::structure;
using test::unionOf;

using Bit = TypeManager::UnionModeBit;
using Lines = std::vector<std::string>;

const NamedMember kAfter{"after", scalar("unsigned short")};

// Two bytes.
const std::string kChoice =
    unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}});

// --- One alternative of several ---

TEST(JsonToRawUnion, TakesTheFirstAlternativeGiven) {
  OwnTypes types(structure({{"u", kChoice}, kAfter}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"u":{"word":258,"byte":7},"after":34})"), "070022");
  EXPECT_EQ(log.texts(),
            Lines{"[JsonConverter::toRaw] more than one union member, current member: 'word'\n"});
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
}

TEST(JsonToRawUnion, WritesSeveralAlternativesWhenAllowed) {
  OwnTypes types(structure({{"u", kChoice}, kAfter}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(
      encodeOver(types, "", R"({"u":{"word":258,"byte":7},"after":34})", Endianess::Big, true).raw,
      "010222");
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonToRawUnion, TakesItsFlagFromTheManagersModeBit) {
  OwnTypes types(kChoice);
  TypeManager& manager = types.manager();
  const TypeId id(ResourceType::Nv, "", "_x");
  const json::Value value = test::parsed(R"({"byte":7,"word":258})");
  const LogCapture log(Logger::Warning);
  base::Buffer raw;
  EXPECT_TRUE(manager.jsonToRaw(id, value, raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "0700");
  manager.setUnionModeBit(Bit::UnionConverterFlag);
  EXPECT_TRUE(manager.jsonToRaw(id, value, raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "0102");
  EXPECT_EQ(log.texts().size(), 1u);
}

TEST(JsonToRawUnion, WarnsForEachFurtherAlternative) {
  OwnTypes types(unionOf({{"a", scalar("unsigned short")},
                          {"b", structure({{"x", scalar("unsigned short")}})},
                          {"c", reference("SNVT_list")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"a":1,"b":{"x":2},"c":[3,4,5]})"), "010000");
  EXPECT_EQ(log.texts(),
            (Lines{"[JsonConverter::toRaw] more than one union member, current member: 'b'\n",
                   "[JsonConverter::toRaw] more than one union member, current member: 'c'\n"}));
}

TEST(JsonToRawUnion, CountsANullAlternativeAsMissing) {
  OwnTypes types(kChoice);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"byte":null,"word":258})"), "0102");
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonToRawUnion, LeavesItsBytesWhenNoAlternativeIsGiven) {
  OwnTypes types(structure({{"u", kChoice}, kAfter}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"u":{},"after":34})"), "000022");
  EXPECT_EQ(encodeOver(types, "A5B6", R"({"u":{},"after":34})").raw, "A5B622");
  EXPECT_EQ(log.texts(), Lines());
  EXPECT_EQ(encodeOver(types, "A5B6", R"({"after":34})").raw, "A5B622");
  EXPECT_EQ(log.texts(), Lines{"[JsonConverter::toRaw] expected object\n"});
}

TEST(JsonToRawUnion, PassesOverArraysThatAreNotGiven) {
  OwnTypes types(structure(
      {{"u", unionOf({{"list", scalar("unsigned short", arraySize(2))},
                      {"rows", structure({{"x", scalar("unsigned short")}}, arraySize(2))},
                      {"word", scalar("unsigned long")}})},
       kAfter}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"u":{"word":258},"after":34})"), "010222");
  EXPECT_EQ(encodeOver(types, "A5B6", R"({"u":{},"after":34})").raw, "A5B622");
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonToRawUnion, StartsEveryAlternativeAtItsFirstByte) {
  OwnTypes types(
      structure({{"first", scalar("unsigned short")},
                 {"u", unionOf({{"high", structure({{"bits", bits(0, 4)}})}, {"low", bits(4, 4)}})},
                 kAfter}));
  EXPECT_EQ(encode(types, R"({"first":1,"u":{"low":5},"after":34})"), "010522");
}

TEST(JsonToRawUnion, NestedTakesTheInnerAlternativeOfTheOuterOne) {
  OwnTypes types(
      structure({{"u", unionOf({{"quad", scalar("unsigned quad")}, {"inner", kChoice}})}, kAfter}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"u":{"inner":{"word":258}},"after":34})"), "0102000022");
  EXPECT_EQ(encode(types, R"({"u":{"quad":1},"after":34})"), "0000000122");
  EXPECT_EQ(log.texts(), Lines());
  EXPECT_EQ(encode(types, R"({"u":{"quad":1,"inner":{"word":258}},"after":34})"), "0000000122");
  ASSERT_FALSE(log.lines().empty());
  EXPECT_EQ(log.texts().front(),
            "[JsonConverter::toRaw] more than one union member, current member: 'inner'\n");
}

TEST(JsonToRawUnion, RefusesAMissingMemberOfAGivenAlternative) {
  OwnTypes types(unionOf({{"pair", reference("SNVT_pair")}, {"byte", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", R"({"pair":{"a":1}})");
  EXPECT_EQ(encoded.raw, "failed: 01");
  EXPECT_EQ(encoded.problems, Lines{"pair.b: a number is missing"});
}

// --- Hexadecimal text ---

struct HexCase {
  std::string name;
  std::string xml;
  std::string json;
  std::string raw;
};

class JsonToRawUnionHex : public testing::TestWithParam<HexCase> {};

TEST_P(JsonToRawUnionHex, IsTheTextOfItsBytes) {
  const HexCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, c.json), c.raw);
  EXPECT_EQ(log.texts(), Lines());
}

const std::vector<HexCase> kHexCases = {
    {"AtTheRoot", kChoice, R"("01FE")", "01FE"},
    {"LowerCaseWithBlanks", kChoice, R"("01 fe")", "01FE"},
    {"InAStructure", structure({{"u", kChoice}, kAfter}), R"({"u":"0102","after":34})", "010222"},
    {"Short", structure({{"u", kChoice}, kAfter}), R"({"u":"01","after":34})", "010022"},
    {"Empty", structure({{"u", kChoice}, kAfter}), R"({"u":"","after":34})", "000022"},
    {"InAStructureInAStructure", structure({{"s", structure({{"u", kChoice}})}, kAfter}),
     R"({"s":{"u":"0102"},"after":34})", "010222"},
    {"ThroughAReference", structure({{"u", reference("SNVT_either")}, kAfter}),
     R"({"u":"0102","after":34})", "010222"},
    {"Array",
     structure(
         {{"list", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}},
                           arraySize(2))},
          kAfter}),
     R"({"list":["0102","0304"],"after":34})", "0102030422"},
    {"ArrayOfReferences", structure({{"list", reference("SNVT_either"), arraySize(2)}, kAfter}),
     R"({"list":["0102","0304"],"after":34})", "0102030422"},
    {"Nested",
     structure({{"u", unionOf({{"inner", kChoice}, {"quad", scalar("unsigned quad")}})}, kAfter}),
     R"({"u":"01020304","after":34})", "0102030422"},
    {"WithManyKinds",
     structure({{"u", unionOf({{"pair", reference("SNVT_pair")},
                               {"text", scalar("unsigned char", arraySize(3))},
                               {"rows", reference("SNVT_pairs")},
                               {"power", enumeration("power_t")}})},
                kAfter}),
     R"({"u":"010203","after":34})", "01020322"},
};

INSTANTIATE_TEST_SUITE_P(Cases, JsonToRawUnionHex, testing::ValuesIn(kHexCases),
                         [](const auto& info) { return info.param.name; });

class JsonToRawHexMode : public testing::Test {
 protected:
  JsonToRawHexMode() : _types(structure({{"u", kChoice}, kAfter})) {
    _types.manager().setUnionModeBit(Bit::UnionRawHex);
  }

  OwnTypes _types;
};

TEST_F(JsonToRawHexMode, CutsALongText) {
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(_types, "", R"({"u":"0102030405","after":34})");
  EXPECT_EQ(encoded.raw, "010222");
  EXPECT_EQ(encoded.problems, Lines{"u: the hexadecimal text is too long for the union"});
  EXPECT_EQ(log.texts(),
            Lines{"[JsonConverter::toRawStructEnd] shortening raw by 3 bytes: 0102030405\n"});
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
}

TEST_F(JsonToRawHexMode, PadsAShortTextOverWhatWasThere) {
  EXPECT_EQ(encodeOver(_types, "A5B6C7", R"({"u":"01","after":34})").raw, "010022");
}

TEST_F(JsonToRawHexMode, ReportsATextThatIsNoHexadecimal) {
  const Encoded odd = encodeOver(_types, "", R"({"u":"01F","after":34})");
  EXPECT_EQ(odd.raw, "010022");
  EXPECT_EQ(odd.problems, Lines{R"(u: not hexadecimal text of whole bytes: "01F")"});
  const Encoded broken = encodeOver(_types, "", R"({"u":"XY","after":34})");
  EXPECT_EQ(broken.problems, Lines{R"(u: not hexadecimal text of whole bytes: "XY")"});
  const Encoded blank = encodeOver(_types, "", R"({"u":"01 02","after":34})");
  EXPECT_EQ(blank.raw, "010222");
  EXPECT_EQ(blank.problems, Lines());
}

TEST_F(JsonToRawHexMode, RefusesWhatIsNoText) {
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(_types, "A5B6C7", R"({"u":{"word":258},"after":34})");
  EXPECT_EQ(encoded.raw, "failed: A5B6C7");
  EXPECT_EQ(encoded.problems,
            Lines{R"(u: expected the hexadecimal text of a union, found: {"word":258})"});
  EXPECT_EQ(encode(_types, R"({"after":34})"), "failed: ");
  EXPECT_EQ(encode(_types, R"({"u":null,"after":34})"), "failed: ");
  EXPECT_EQ(log.texts(), Lines());
}

struct ModeCase {
  std::string name;
  std::vector<Bit> modeBits;
  bool isHex;
};

class JsonToRawUnionMode : public testing::TestWithParam<ModeCase> {};

TEST_P(JsonToRawUnionMode, ChoosesBetweenTextAndObject) {
  const ModeCase& c = GetParam();
  OwnTypes types(kChoice);
  for (const Bit bit : c.modeBits) types.manager().setUnionModeBit(bit);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"("0102")"), c.isHex ? "0102" : "0000");
  EXPECT_EQ(encode(types, R"({"word":258})"), c.isHex ? "failed: " : "0102");
}

INSTANTIATE_TEST_SUITE_P(
    Bits, JsonToRawUnionMode,
    testing::ValuesIn(std::vector<ModeCase>{
        {"None", {}, false},
        {"RawHex", {Bit::UnionRawHex}, true},
        {"NotToJson", {Bit::UnionRawHex, Bit::UnionNoRawHexToJson}, true},
        {"NotToRaw", {Bit::UnionRawHex, Bit::UnionNoRawHexToRaw}, false},
        {"NotToRawAlone", {Bit::UnionNoRawHexToRaw}, false},
        {"SeveralAlternatives", {Bit::UnionRawHex, Bit::UnionConverterFlag}, true},
    }),
    [](const auto& info) { return info.param.name; });

TEST(JsonToRawUnion, TracesTheEndOfNestedUnionsInHexMode) {
  OwnTypes types(structure({{"u", unionOf({{"inner", unionOf({})}})}}));
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  static_cast<void>(encode(types, R"({"u":""})"));
  const LogCapture log;
  EXPECT_EQ(encode(types, R"({"u":""})"), "");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{"[JsonConverter::toRaw] stack-size=1 depth=0 Aggregate\n",
                   "[JsonConverter::toRaw] stack-size=1\n",
                   "[JsonConverter::toRaw] stack-size=1 depth=1 Aggregate\n",
                   "[JsonConverter::toRaw] stack-size=1\n",
                   "[JsonConverter::toRaw] stack-size=2 depth=2 Aggregate\n",
                   "[JsonConverter::toRaw] stack-size=2\n",
                   "[JsonConverter::toRawStructEnd] stack-size=3 depth=2\n",
                   "[JsonConverter::toRawStructEnd] UNION END\n",
                   "[JsonConverter::toRawStructEnd] UNION inside UNION - ignore\n",
                   "[JsonConverter::toRawStructEnd] stack-size=3 depth=1\n",
                   "[JsonConverter::toRawStructEnd] UNION END\n",
                   "[JsonConverter::toRawStructEnd] -> top.name='u'\n",
                   "[JsonConverter::toRawStructEnd] stack-size=2 depth=0\n"}));
}

TEST(JsonToRawUnion, HasNoNameAtTheRoot) {
  OwnTypes types(kChoice);
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  static_cast<void>(encode(types, R"("0102")"));
  const LogCapture log;
  EXPECT_EQ(encode(types, R"("0102")"), "0102");
  EXPECT_TRUE(log.contains(Logger::Trace, "[JsonConverter::toRawStructEnd] -> top.name=''\n"));
}

}  // namespace
}  // namespace zavri::korvat
