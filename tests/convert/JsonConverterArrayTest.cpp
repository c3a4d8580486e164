#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::bits;
using test::dynamicArray;
using test::enumeration;
using test::floating;
using test::invalid;
using test::LogCapture;
using test::NamedMember;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::scaling;
using test::structure;
using test::unionOf;

using Lines = std::vector<std::string>;

const std::string kNoCount = "Member::getEffectiveArraySize failed, no arraySize in context\n";

std::string belowMinimum(const std::string& count, const std::string& minimum) {
  return "Member::getEffectiveArraySize failed because " + count + " is below array-min-size of " +
         minimum + "\n";
}

// 1 to 4 bytes.
const std::string kList = scalar("unsigned short", dynamicArray(1, 4));

const NamedMember kAfter{"after", scalar("unsigned short")};

struct DynamicCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string json;
  Lines warnings = {};
};

class JsonConverterDynamicArray : public testing::TestWithParam<DynamicCase> {};

TEST_P(JsonConverterDynamicArray, HasAsManyElementsAsTheNumberBeforeItSays) {
  const DynamicCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode(c.raw), c.json);
  EXPECT_EQ(log.texts(Logger::Warning), c.warnings);
}

std::string nameOf(const testing::TestParamInfo<DynamicCase>& info) {
  return info.param.name;
}

std::string countedBy(const std::string& count) {
  return structure({{"count", count}, {"list", kList}, kAfter});
}

const std::vector<DynamicCase> kCountCases = {
    {"Two", countedBy(scalar("unsigned short")), "02010255",
     R"({"count":2,"list":[1,2],"after":85})"},
    {"Smallest", countedBy(scalar("unsigned short")), "010155",
     R"({"count":1,"list":[1],"after":85})"},
    {"Largest", countedBy(scalar("unsigned short")), "040102030455",
     R"({"count":4,"list":[1,2,3,4],"after":85})"},
    {"BelowTheMinimum",
     countedBy(scalar("unsigned short")),
     "0055",
     R"({"count":0,"list":[],"after":85})",
     {belowMinimum("0", "1")}},
    {"AboveTheMaximum", countedBy(scalar("unsigned short")), "050102030455",
     R"({"count":5,"list":[1,2,3,4],"after":85})"},
    {"FarAboveTheMaximum", countedBy(scalar("unsigned quad")), "FFFFFFFF0102030455",
     R"({"count":4294967295,"list":[1,2,3,4],"after":85})"},
    {"Negative",
     countedBy(scalar("signed short")),
     "FF0102030455",
     R"({"count":-1,"list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"TwoBytesWide", countedBy(scalar("unsigned long")), "000201027F",
     R"({"count":2,"list":[1,2],"after":127})"},
    {"Scaled",
     countedBy(scalar("unsigned short", scaling(2, 0, 0))),
     "010102030455",
     R"({"count":2.0,"list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"Float",
     countedBy(floating("float")),
     "400000000102030455",
     R"({"count":2.0,"list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"BitFieldIsNoCount",
     countedBy(bits(0, 8)),
     "020102030455",
     R"({"count":2,"list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"EnumerationIsNoCount",
     countedBy(enumeration("power_t")),
     "010102030455",
     R"({"count":"PWR_ON","list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"NothingBefore",
     structure({{"list", kList}, kAfter}),
     "0102030455",
     R"({"list":[1,2,3,4],"after":85})",
     {kNoCount}},
    {"AtTheRoot", kList, "01020304", "[1,2,3,4]", {kNoCount}},
    {"Reference", countedBy(reference("SNVT_word")), "0002010255",
     R"({"count":2,"list":[1,2],"after":85})"},
    {"ReferenceAboveTheMaximum", countedBy(reference("SNVT_word")), "FFFF0102030455",
     R"({"count":65535,"list":[1,2,3,4],"after":85})"},
    {"EnumerationBetween",
     structure({{"count", scalar("unsigned short")},
                {"mode", enumeration("power_t")},
                {"list", kList},
                kAfter}),
     "0201010255", R"({"count":2,"mode":"PWR_ON","list":[1,2],"after":85})"},
    {"EnumerationBetweenAboveTheMaximum",
     structure({{"count", scalar("unsigned short")},
                {"mode", enumeration("power_t")},
                {"list", kList},
                kAfter}),
     "FF010102030455", R"({"count":255,"mode":"PWR_ON","list":[1,2,3,4],"after":85})"},
    {"BitFieldBetweenAboveTheMaximum",
     structure(
         {{"count", scalar("unsigned short")}, {"flags", bits(0, 8)}, {"list", kList}, kAfter}),
     "FF070102030455", R"({"count":255,"flags":7,"list":[1,2,3,4],"after":85})"},
    {"FloatBetween",
     structure({{"count", scalar("unsigned short")}, {"f", floating("float")}, {"list", kList}}),
     "020000000001020304",
     R"({"count":2,"f":0.0,"list":[1,2,3,4]})",
     {kNoCount}},
    {"StructureBetween",
     structure({{"count", scalar("unsigned short")},
                {"s", structure({{"a", scalar("unsigned short")}})},
                {"list", kList}}),
     "020101020304",
     R"({"count":2,"s":{"a":1},"list":[1,2,3,4]})",
     {kNoCount}},
    {"ArrayBetween",
     structure({{"count", scalar("unsigned short")},
                {"fixed", scalar("unsigned short", test::arraySize(2))},
                {"list", kList}}),
     "02070801020304",
     R"({"count":2,"fixed":[7,8],"list":[1,2,3,4]})",
     {kNoCount}},
    {"InAStructureBehindTheCount",
     structure({{"count", scalar("unsigned short")}, {"s", structure({{"list", kList}})}, kAfter}),
     "02010255", R"({"count":2,"s":{"list":[1,2]},"after":85})"},
    {"InAStructureAboveTheMaximum",
     structure({{"count", scalar("unsigned short")}, {"s", structure({{"list", kList}})}, kAfter}),
     "FF0102030455", R"({"count":255,"s":{"list":[1,2,3,4]},"after":85})"},
    {"InAUnionAboveTheMaximum",
     structure({{"u", unionOf({{"count", scalar("unsigned short")}, {"list", kList}})}, kAfter}),
     "FF02030455", R"({"u":{"count":255,"list":[255,2,3,4]},"after":85})"},
    {"SecondArrayHasNoCount",
     structure({{"count", scalar("unsigned short")}, {"first", kList}, {"second", kList}}),
     "02010201020304",
     R"({"count":2,"first":[1,2],"second":[1,2,3,4]})",
     {kNoCount}},
    {"EachWithItsOwnCount",
     structure({{"n", scalar("unsigned short")},
                {"first", kList},
                {"m", scalar("unsigned short")},
                {"second", kList}}),
     "02010201 09", R"({"n":2,"first":[1,2],"m":1,"second":[9]})"},
};

const std::vector<DynamicCase> kElementCases = {
    {"Structures",
     structure({{"count", scalar("unsigned short")},
                {"list", structure({{"a", scalar("unsigned short")}, {"b", scalar("signed short")}},
                                   dynamicArray(0, 3))},
                kAfter}),
     "0201FF02FE55", R"({"count":2,"list":[{"a":1,"b":-1},{"a":2,"b":-2}],"after":85})"},
    {"NoStructures",
     structure({{"count", scalar("unsigned short")},
                {"list", structure({{"a", scalar("unsigned short")}}, dynamicArray(0, 3))},
                kAfter}),
     "0055", R"({"count":0,"list":[],"after":85})"},
    {"References",
     structure({{"count", scalar("unsigned short")},
                {"list", reference("SNVT_pair"), dynamicArray(0, 3)},
                kAfter}),
     "010A0B55", R"({"count":1,"list":[{"a":10,"b":11}],"after":85})"},
    {"Enumerations",
     structure({{"count", scalar("unsigned short")},
                {"list", enumeration("power_t", dynamicArray(0, 3))},
                kAfter}),
     "02010055", R"({"count":2,"list":["PWR_ON","PWR_OFF"],"after":85})"},
    {"Floats",
     structure({{"count", scalar("unsigned short")},
                {"list", floating("float", dynamicArray(0, 3))},
                kAfter}),
     "013F80000055", R"({"count":1,"list":[1.0],"after":85})"},
    // The last element is not the count of anything.
    {"CountIsForgottenBehindTheArray",
     structure({{"count", scalar("unsigned short")},
                {"list", kList},
                {"s", structure({{"rest", kList}})}}),
     "01020A0B0C0D",
     R"({"count":1,"list":[2],"s":{"rest":[10,11,12,13]}})",
     {kNoCount}},
};

INSTANTIATE_TEST_SUITE_P(Counts, JsonConverterDynamicArray, testing::ValuesIn(kCountCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Elements, JsonConverterDynamicArray, testing::ValuesIn(kElementCases),
                         nameOf);

TEST(JsonConverterDynamicArray, HasItsFullSizeUntilTheOptionIsSet) {
  OwnTypes types(countedBy(scalar("unsigned short")));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("020102030455"), R"({"count":2,"list":[1,2,3,4],"after":85})");
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonConverterDynamicArray, TakesNoCountFromTheKeywordInvalid) {
  OwnTypes types(countedBy(scalar("unsigned short", invalid("2"))));
  types.manager().setUseDynamicArrays(true);
  types.manager().setSupportInvalidKeyword(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("020102030455"), R"({"count":"invalid","list":[1,2,3,4],"after":85})");
  EXPECT_EQ(log.texts(), Lines{kNoCount});
}

TEST(JsonConverterDynamicArray, ReadsZerosBeyondTheEndOfTheBuffer) {
  OwnTypes types(countedBy(scalar("unsigned short")));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(types.decode("0301"), R"({"count":3,"list":[1,0,0],"after":0})");
}

}  // namespace
}  // namespace zavri::korvat
