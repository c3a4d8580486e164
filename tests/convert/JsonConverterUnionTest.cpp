#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::arraySize;
using test::bits;
using test::enumeration;
using test::floating;
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

struct UnionCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string asObject;
  std::string asHex;
};

class JsonConverterUnion : public testing::TestWithParam<UnionCase> {};

TEST_P(JsonConverterUnion, IsAnObjectOfAllAlternatives) {
  const UnionCase& c = GetParam();
  EXPECT_EQ(OwnTypes(c.xml).decode(c.raw), c.asObject);
}

TEST_P(JsonConverterUnion, IsTheTextOfItsBytesInRawHexMode) {
  const UnionCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  EXPECT_EQ(types.decode(c.raw), c.asHex);
}

const std::vector<UnionCase> kUnionCases = {
    {"AtTheRoot", kChoice, "01FE", R"({"byte":1,"word":510})", R"("01FE")"},
    {"InAStructure", structure({{"u", kChoice}, kAfter}), "01FE22",
     R"({"u":{"byte":1,"word":510},"after":34})", R"({"u":"01FE","after":34})"},
    {"ShorterAlternativeLast",
     structure(
         {{"u", unionOf({{"word", scalar("unsigned long")}, {"byte", scalar("unsigned short")}})},
          kAfter}),
     "010222", R"({"u":{"word":258,"byte":1},"after":34})", R"({"u":"0102","after":34})"},
    {"InAStructureInAStructure", structure({{"s", structure({{"u", kChoice}})}, kAfter}), "010222",
     R"({"s":{"u":{"byte":1,"word":258}},"after":34})", R"({"s":{"u":"0102"},"after":34})"},
    {"ThroughAReference", structure({{"u", reference("SNVT_either")}, kAfter}), "010222",
     R"({"u":{"byte":1,"word":258},"after":34})", R"({"u":"0102","after":34})"},
    {"Array",
     structure(
         {{"list", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}},
                           arraySize(2))},
          kAfter}),
     "0102030422", R"({"list":[{"byte":1,"word":258},{"byte":3,"word":772}],"after":34})",
     R"({"list":["0102","0304"],"after":34})"},
    {"ArrayAtTheRoot",
     unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}, arraySize(2)),
     "01020304", R"([{"byte":1,"word":258},{"byte":3,"word":772}])", R"(["0102","0304"])"},
    {"ArrayOfReferences", structure({{"list", reference("SNVT_either"), arraySize(2)}, kAfter}),
     "0102030422", R"({"list":[{"byte":1,"word":258},{"byte":3,"word":772}],"after":34})",
     R"({"list":["0102","0304"],"after":34})"},
    {"InAnArrayOfStructures", structure({{"u", kChoice}, kAfter}, arraySize(2)), "010222030433",
     R"([{"u":{"byte":1,"word":258},"after":34},{"u":{"byte":3,"word":772},"after":51}])",
     R"([{"u":"0102","after":34},{"u":"0304","after":51}])"},
    // 0 01 00000: the rest of the byte is skipped
    {"BehindBitFields", structure({{"flags", bits(1, 2)}, {"u", kChoice}, kAfter}), "20010222",
     R"({"flags":1,"u":{"byte":1,"word":258},"after":34})", R"({"flags":1,"u":"0102","after":34})"},
    {"BitFieldsInside",
     structure({{"u", unionOf({{"flags", structure({{"high", bits(0, 4)}, {"low", bits(4, 4)}})},
                               {"byte", scalar("unsigned short")}})},
                kAfter}),
     "A522", R"({"u":{"flags":{"high":10,"low":5},"byte":165},"after":34})",
     R"({"u":"A5","after":34})"},
    {"PartlyUsedLastByte", structure({{"u", unionOf({{"flags", bits(1, 3)}})}, kAfter}), "5022",
     R"({"u":{"flags":5},"after":34})", R"({"u":"50","after":34})"},
    {"TextInside",
     structure({{"u", unionOf({{"text", scalar("unsigned char", arraySize(3))},
                               {"numbers", scalar("unsigned short", arraySize(2))}})},
                kAfter}),
     "41420022", R"({"u":{"text":"AB","numbers":[65,66]},"after":34})",
     R"({"u":"414200","after":34})"},
    {"EveryKindInside",
     structure({{"u", unionOf({{"f", floating("float")},
                               {"e", enumeration("power_t")},
                               {"s", structure({{"a", scalar("signed short")}})},
                               {"r", reference("SNVT_pair")}})},
                kAfter}),
     "3F80000022", R"({"u":{"f":1.0,"e":"63","s":{"a":63},"r":{"a":63,"b":-128}},"after":34})",
     R"({"u":"3F800000","after":34})"},
    {"OnlyTheOutermostOne",
     structure({{"u", unionOf({{"word", scalar("unsigned long")},
                               {"inner", unionOf({{"low", scalar("unsigned short")},
                                                  {"high", scalar("signed short")}})}})},
                kAfter}),
     "FE0222", R"({"u":{"word":65026,"inner":{"low":254,"high":-2}},"after":34})",
     R"({"u":"FE02","after":34})"},
    {"OnlyTheOutermostOneThroughAStructure",
     structure({{"u", unionOf({{"s", structure({{"inner", kChoice}})}})}, kAfter}), "010222",
     R"({"u":{"s":{"inner":{"byte":1,"word":258}}},"after":34})", R"({"u":"0102","after":34})"},
    {"TwoInARow", structure({{"u", kChoice}, {"v", kChoice}}), "01020304",
     R"({"u":{"byte":1,"word":258},"v":{"byte":3,"word":772}})", R"({"u":"0102","v":"0304"})"},
    {"Empty", structure({{"u", unionOf({})}, kAfter}), "22", R"({"u":{},"after":34})",
     R"({"u":"","after":34})"},
};

INSTANTIATE_TEST_SUITE_P(Places, JsonConverterUnion, testing::ValuesIn(kUnionCases),
                         [](const auto& info) { return info.param.name; });

struct ModeCase {
  std::string name;
  std::vector<Bit> bits;
  std::string json;
};

class JsonConverterUnionMode : public testing::TestWithParam<ModeCase> {};

TEST_P(JsonConverterUnionMode, ChoosesTheFormOfUnions) {
  const ModeCase& c = GetParam();
  OwnTypes types(structure({{"u", kChoice}}));
  for (const Bit bit : c.bits) types.manager().setUnionModeBit(bit);
  EXPECT_EQ(types.decode("0102"), c.json);
}

const std::string kObject = R"({"u":{"byte":1,"word":258}})";
const std::string kHex = R"({"u":"0102"})";

INSTANTIATE_TEST_SUITE_P(
    Bits, JsonConverterUnionMode,
    testing::ValuesIn(std::vector<ModeCase>{
        {"None", {}, kObject},
        {"RawHex", {Bit::UnionRawHex}, kHex},
        {"RawHexButNotToJson", {Bit::UnionRawHex, Bit::UnionNoRawHexToJson}, kObject},
        {"RawHexButNotToRaw", {Bit::UnionRawHex, Bit::UnionNoRawHexToRaw}, kHex},
        {"OnlyTheExceptions", {Bit::UnionNoRawHexToJson, Bit::UnionNoRawHexToRaw}, kObject},
        {"RawHexWithConverterFlag", {Bit::UnionRawHex, Bit::UnionConverterFlag}, kHex},
    }),
    [](const auto& info) { return info.param.name; });

TEST(JsonConverterUnion, KeepsTheOrderOfItsBytesInAnyByteOrder) {
  OwnTypes types(structure({{"u", kChoice}}));
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  EXPECT_EQ(types.decode("01FE", Endianess::Little), R"({"u":"01FE"})");
}

class JsonConverterShortUnion : public testing::Test {
 protected:
  // Conversion of `hex` as SNVT_x; `_warnings` holds what was logged.
  std::string decode(OwnTypes& types, const std::string& hex) {
    types.manager().setUnionModeBit(Bit::UnionRawHex);
    const LogCapture log(Logger::Warning);
    std::string json = types.decode(hex);
    _warnings = log.texts(Logger::Warning);
    return json;
  }

  Lines _warnings;
  const Lines _invalidSize{"[JsonConverter::toJsonStructEnd] invalid union size\n"};
};

TEST_F(JsonConverterShortUnion, StopsTheConversion) {
  OwnTypes types(structure({{"before", scalar("unsigned short")}, {"u", kChoice}, kAfter}));
  EXPECT_EQ(decode(types, "1101"), R"(failed: {"before":17,"u":""})");
  EXPECT_EQ(_warnings, _invalidSize);
}

TEST_F(JsonConverterShortUnion, FailsTheConversionAsTheLastMemberToo) {
  OwnTypes types(structure({{"u", kChoice}}));
  EXPECT_EQ(decode(types, "01"), R"(failed: {"u":""})");
  EXPECT_EQ(_warnings, _invalidSize);
}

TEST_F(JsonConverterShortUnion, FailsTheConversionInAnEmptyBuffer) {
  OwnTypes types(structure({{"u", kChoice}}));
  EXPECT_EQ(decode(types, ""), R"(failed: {"u":""})");
  EXPECT_EQ(_warnings, _invalidSize);
}

TEST_F(JsonConverterShortUnion, FailsTheConversionBeyondTheBuffer) {
  OwnTypes types(structure({{"before", scalar("unsigned quad")}, {"u", kChoice}}));
  EXPECT_EQ(decode(types, "11"), R"(failed: {"before":0,"u":""})");
  EXPECT_EQ(_warnings, _invalidSize);
}

TEST_F(JsonConverterShortUnion, IsReportedOnce) {
  OwnTypes types(structure({{"u", kChoice}}, arraySize(3)));
  EXPECT_EQ(decode(types, "0102"), R"(failed: [{"u":"0102"},{"u":""}])");
  EXPECT_EQ(_warnings, _invalidSize);
}

TEST_F(JsonConverterShortUnion, ReadsZerosAsAnObject) {
  OwnTypes types(structure({{"u", kChoice}}));
  types.manager().setUnionModeBit(Bit::UnionNoRawHexToJson);
  EXPECT_EQ(decode(types, "01"), R"({"u":{"byte":1,"word":0}})");
  EXPECT_EQ(_warnings, Lines());
}

TEST(JsonConverterUnion, TracesItsEnd) {
  OwnTypes types(
      structure({{"u", unionOf({{"inner", unionOf({{"byte", scalar("unsigned short")}})}})}}));
  types.manager().setUnionModeBit(Bit::UnionRawHex);
  ASSERT_EQ(types.decode("FE"), R"({"u":"FE"})");

  const LogCapture log(Logger::Trace);
  types.decode("FE");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{
                "[JsonConverter::toJson] stack-size=1 depth=0 Aggregate\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=1 depth=1 Aggregate\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=2 depth=2 Aggregate\n",
                "[JsonConverter::toJson] stack-size=2\n",
                "[JsonConverter::toJson] stack-size=3 depth=3 Scalar\n",
                "[JsonConverter::toJson] stack-size=3\n",
                "[JsonConverter::toJsonStructEnd] stack-size=4 depth=2\n",
                "[JsonConverter::toJsonStructEnd] UNION END\n",
                "[JsonConverter::toJsonStructEnd] UNION inside UNION - ignore\n",
                "[JsonConverter::toJsonStructEnd] stack-size=4 depth=1\n",
                "[JsonConverter::toJsonStructEnd] UNION END\n",
                "[JsonConverter::toJsonStructEnd] union raw_hex: 'FE'\n",
                "[JsonConverter::toJsonStructEnd] stack-size=2 depth=0\n",
            }));
}

}  // namespace
}  // namespace zavri::korvat
