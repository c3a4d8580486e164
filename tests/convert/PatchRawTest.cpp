#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::arraySize;
using test::bits;
using test::dynamicArray;
using test::Encoded;
using test::enumeration;
using test::floating;
using test::LogCapture;
using test::OwnTypes;
using test::patch;
using test::patchOver;
using test::reference;
using test::scalar;
using test::structure;
using test::unionOf;

using Lines = std::vector<std::string>;

struct PatchCase {
  std::string name;
  std::string xml;
  std::string before;
  std::string json;
  std::string after;
};

class PatchRaw : public testing::TestWithParam<PatchCase> {};

TEST_P(PatchRaw, ChangesNothingElse) {
  const PatchCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  const Encoded patched = patchOver(types, c.before, c.json);
  EXPECT_EQ(patched.raw, c.after);
  EXPECT_EQ(patched.problems, Lines());
  EXPECT_EQ(log.texts(), Lines());
}

const std::string kTwoWords =
    structure({{"a", scalar("unsigned long")}, {"b", scalar("unsigned long")}});
const std::string kOuter =
    structure({{"s", structure({{"a", scalar("unsigned short")}, {"f", floating("float")}})},
               {"list", scalar("unsigned short", arraySize(3))},
               {"e", enumeration("power_t")},
               {"r", reference("SNVT_pair")},
               {"t", scalar("unsigned char", arraySize(2))}});
const std::string kOuterRaw = "01 3FC00000 020304 01 0506 4142";
const std::string kCounted = structure({{"n", scalar("unsigned short")},
                                        {"list", scalar("unsigned long"), dynamicArray(0, 4)},
                                        {"after", scalar("unsigned short")}});
const std::string kEncoded = structure({{"encoding", enumeration("char_encoding_t")},
                                        {"text", scalar("unsigned char", arraySize(4))}});
const std::string kUnion = structure(
    {{"u", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}})},
     {"after", scalar("unsigned short")}});

const std::vector<PatchCase> kPatchCases = {
    {"FirstOfTwo", kTwoWords, "A5A5B6B6", R"({"a":258})", "0102B6B6"},
    {"LastOfTwo", kTwoWords, "A5A5B6B6", R"({"b":258})", "A5A50102"},
    {"Nothing", kTwoWords, "A5A5B6B6", "{}", "A5A5B6B6"},
    {"NullIsMissing", kTwoWords, "A5A5B6B6", R"({"a":null,"b":1})", "A5A50001"},
    {"TheValueItselfIsNull", kTwoWords, "A5A5B6B6", "null", "A5A5B6B6"},
    {"BytesBehindTheValue", kTwoWords, "A5A5B6B6C7", R"({"a":258})", "0102B6B6C7"},
    {"ShortValueIsFilledUp", kTwoWords, "A5A5", R"({"a":258})", "01020000"},
    // 1 010 0101 -> 1 111 0101
    {"BitsInAByte", structure({{"a", bits(0, 1)}, {"b", bits(1, 3)}, {"c", bits(4, 4)}}), "A5",
     R"({"b":7})", "F5"},
    {"MemberOfAStructure", kOuter, kOuterRaw, R"({"s":{"a":9}})",
     "093FC0000002030401050641"
     "42"},
    {"NullStructure", kOuter, kOuterRaw, R"({"s":null,"e":0})",
     "013FC00000020304000506"
     "4142"},
    {"MemberOfAReference", kOuter, kOuterRaw, R"({"r":{"b":-1}})",
     "013FC000000203040105FF"
     "4142"},
    {"OneElement", kOuter, kOuterRaw, R"({"list":[null,9]})", "013FC000000209040105064142"},
    {"NullArray", kOuter, kOuterRaw, R"({"list":null,"e":0})", "013FC000000203040005064142"},
    {"Text", kOuter, kOuterRaw, R"({"t":"C"})", "013FC000000203040105064300"},
    {"BehindADynamicArray", kCounted, "020001000222", R"({"after":7})", "020001000207"},
    {"OneElementOfADynamicArray", kCounted, "020001000222", R"({"list":[null,9]})", "020001000922"},
    {"CountStaysWhenTheArrayIsGiven", kCounted, "020001000222", R"({"list":[9]})", "020009000222"},
    {"TextInTheEncodingOfTheBytes", kEncoded, "0100410000", R"({"text":"BC"})", "0100420043"},
    {"EncodingAlone", kEncoded, "0100410000", R"({"encoding":"CE_8"})", "0000410000"},
    {"CharSetOfTheBytes",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned short", arraySize(2))}}),
     "014142", R"({"text":"C"})", "014300"},
    {"AlternativeOfAUnion", kUnion, "A5B622", R"({"u":{"byte":7}})", "07B622"},
    {"BehindAUnion", kUnion, "A5B622", R"({"after":7})", "A5B607"},
};

INSTANTIATE_TEST_SUITE_P(Cases, PatchRaw, testing::ValuesIn(kPatchCases),
                         [](const auto& info) { return info.param.name; });

TEST(PatchRawRule, KeepsAUnionThatIsNotGivenInHexMode) {
  OwnTypes types(kUnion);
  types.manager().setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
  EXPECT_EQ(patch(types, "A5B622", R"({"after":7})"), "A5B607");
  EXPECT_EQ(patch(types, "A5B622", R"({"u":null,"after":7})"), "A5B607");
  EXPECT_EQ(patch(types, "A5B622", R"({"u":"01"})"), "010022");
}

TEST(PatchRawRule, RefusesWhatTheWholeConversionRefuses) {
  OwnTypes types(kTwoWords);
  types.manager().setAllowCuttingToMinMax(false);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(patch(types, "A5A5B6B6", R"({"c":1})"), "failed: A5A5B6B6");
  EXPECT_EQ(patch(types, "A5A5B6B6", R"({"b":65536})"), "failed: A5A5B6B6");
  EXPECT_EQ(patch(types, "A5A5B6B6", R"({"b":"x"})"), "failed: A5A5B6B6");
}

TEST(PatchRawRule, IsFollowedByAWholeConversion) {
  OwnTypes types(kTwoWords);
  const LogCapture log(Logger::Warning);
  JsonConverter converter(&types.manager(), test::typeOf(types), base::Endianess::Big, false);
  base::Buffer raw = test::bytesOf("A5A5B6B6");
  EXPECT_TRUE(converter.patchRaw(test::parsed(R"({"a":1})"), raw));
  EXPECT_FALSE(converter.jsonToRaw(test::parsed(R"({"a":1})"), raw));
}

TEST(PatchRaw, KeepsAnEnumerationWhoseTypeIsMissing) {
  OwnTypes types(test::structure(
      {{"e", test::enumeration("ghost_t")}, {"b", test::scalar("unsigned short")}}));
  const LogCapture quiet(Logger::Error);
  EXPECT_EQ(patch(types, "0502", R"({"b":7})"), "0507");
  EXPECT_EQ(patch(types, "0502", R"({"e":1})"), "failed: 0502");
}

TEST(PatchRaw, EndsWithTheByteOfBitsThatAreNotGiven) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}, {"b", bits(3, 3)}}));
  EXPECT_EQ(patch(types, "", R"({"a":7})"), "0700");
}

}  // namespace
}  // namespace zavri::korvat
