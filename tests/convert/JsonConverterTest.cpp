#include "korvat/convert/JsonConverter.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"
#include "tests/convert/TypeXml.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using json::NumberType;
using test::arraySize;
using test::bits;
using test::bytesOf;
using test::enumeration;
using test::floating;
using test::invalid;
using test::LogCapture;
using test::OddMember;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::scaling;
using test::signedBits;
using test::structure;
using test::unionOf;

using Lines = std::vector<std::string>;

// --- Every kind of member, at every place ---

struct KindCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string json;
};

std::string nameOf(const testing::TestParamInfo<KindCase>& info) {
  return info.param.name;
}

const std::vector<KindCase> kSingleKinds = {
    {"UnsignedShort", scalar("unsigned short"), "FE", "254"},
    {"SignedShort", scalar("signed short"), "80", "-128"},
    {"UnsignedLong", scalar("unsigned long"), "FFFE", "65534"},
    {"SignedLong", scalar("signed long"), "8000", "-32768"},
    {"UnsignedQuad", scalar("unsigned quad"), "FFFFFFFE", "4294967294"},
    {"SignedQuad", scalar("s32_type"), "80000000", "-2147483648"},
    // 1 * (-200 + 0) / 100
    {"ScaledScalar", scalar("signed long", scaling(1, -2, 0)), "FF38", "-2.0"},
    // 1 * (0 - 2740) / 10
    {"ScaledScalarWithOffset", scalar("unsigned long", scaling(1, -1, -2740)), "0000", "-274.0"},
    // 2 * (3 + 1) * 10
    {"ScaledUp", scalar("unsigned short", scaling(2, 1, 1)), "03", "80.0"},
    {"Float", floating("float"), "3FC00000", "1.5"},
    {"Double", floating("double float"), "BFF8000000000000", "-1.5"},
    // 10 / 10
    {"ScaledFloat", floating("float", scaling(1, -1, 0)), "41200000", "1.0"},
    // (1.5 + 1) * 2
    {"ScaledDouble", floating("double float", scaling(2, 0, 1)), "3FF8000000000000", "5.0"},
    {"WholeByteOfBits", bits(0, 8), "FE", "254"},
    {"WholeByteOfSignedBits", signedBits(0, 8), "FE", "-2"},
    // 1111 1101: the last three bits are 101
    {"LastBitsOfAByte", bits(5, 3), "FD", "5"},
    // 3 * 5 / 10
    {"ScaledBits", bits(0, 8, scaling(5, -1, 0)), "03", "1.5"},
    {"NamedEnumerator", enumeration("power_t"), "01", R"("PWR_ON")"},
    {"NegativeEnumerator", enumeration("power_t"), "FF", R"("PWR_NUL")"},
    {"NamelessEnumerator", enumeration("power_t"), "07", R"("7")"},
    {"NamelessNegativeEnumerator", enumeration("power_t"), "80", R"("-128")"},
    {"Structure", structure({{"a", scalar("unsigned short")}, {"b", scalar("signed long")}}),
     "01FFFE", R"({"a":1,"b":-2})"},
    {"EmptyStructure", structure({}), "", "{}"},
    {"StructureInStructure",
     structure({{"outer", structure({{"inner", scalar("unsigned short")}})}}), "05",
     R"({"outer":{"inner":5}})"},
    // Both alternatives begin at the first byte: 1 and 1 * 256 + 2.
    {"Union", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}),
     "0102", R"({"byte":1,"word":258})"},
    {"UnionThatBeginsWithItsLongest",
     unionOf({{"word", scalar("unsigned long")}, {"byte", scalar("unsigned short")}}), "0102",
     R"({"word":258,"byte":1})"},
    {"ReferenceToScalar", reference("SNVT_word"), "0102", "258"},
    // 200 * 5 / 10
    {"ReferenceToScaledScalar", reference("SNVT_half"), "C8", "100.0"},
    {"ReferenceToFloat", reference("SNVT_ratio"), "40200000", "2.5"},
    {"ReferenceToEnumeration", reference("SNVT_power"), "00", R"("PWR_OFF")"},
    {"ReferenceToBits", reference("SNVT_low"), "3C", "12"},
    {"ReferenceToStructure", reference("SNVT_pair"), "01FF", R"({"a":1,"b":-1})"},
    {"ReferenceToUnion", reference("SNVT_either"), "0102", R"({"byte":1,"word":258})"},
    {"ReferenceToArray", reference("SNVT_list"), "010203", "[1,2,3]"},
    {"ReferenceToText", reference("SNVT_text"), "41420000", R"("AB")"},
    {"ReferenceToArrayOfStructures", reference("SNVT_pairs"), "0102", R"([{"a":1},{"a":2}])"},
    {"ReferenceToReference", reference("SNVT_alias"), "01FF", R"({"a":1,"b":-1})"},
    {"ReferenceToReferenceToReference", reference("SNVT_alias_2"), "01FF", R"({"a":1,"b":-1})"},
    {"ReferenceToReferenceToScalar", reference("SNVT_word_alias"), "0102", "258"},
};

// An array of these is a text.
const std::vector<KindCase> kCharacterKinds = {
    {"UnsignedChar", scalar("unsigned char"), "FE", "254"},
    {"SignedChar", scalar("signed char"), "FE", "-2"},
};

const std::vector<KindCase> kArrayKinds = {
    {"ArrayOfScalars", scalar("signed long", arraySize(2)), "0001FFFF", "[1,-1]"},
    {"ArrayOfOne", scalar("unsigned short", arraySize(1)), "07", "[7]"},
    {"ArrayOfScaledScalars", scalar("unsigned short", arraySize(2) + scaling(5, -1, 0)), "01C8",
     "[0.5,100.0]"},
    {"ArrayOfFloats", floating("float", arraySize(2)), "3F800000C0000000", "[1.0,-2.0]"},
    {"ArrayOfEnumerations", enumeration("power_t", arraySize(3)), "0001FF",
     R"(["PWR_OFF","PWR_ON","PWR_NUL"])"},
    {"ArrayOfBytesOfBits", bits(0, 8, arraySize(2)), "01FF", "[1,255]"},
    {"ArrayOfStructures",
     structure({{"a", scalar("unsigned short")}, {"b", scalar("unsigned short")}}, arraySize(2)),
     "01020304", R"([{"a":1,"b":2},{"a":3,"b":4}])"},
    {"ArrayOfUnions",
     unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}, arraySize(2)),
     "01020304", R"([{"byte":1,"word":258},{"byte":3,"word":772}])"},
    {"ArrayInArray", structure({{"list", scalar("unsigned short", arraySize(2))}}, arraySize(2)),
     "01020304", R"([{"list":[1,2]},{"list":[3,4]}])"},
    {"UnsignedCharacters", scalar("unsigned char", arraySize(4)), "41424344", R"("ABCD")"},
    {"SignedCharacters", scalar("signed char", arraySize(4)), "41004344", R"("A")"},
};

class JsonConverterAnyKind : public testing::TestWithParam<KindCase> {};

TEST_P(JsonConverterAnyKind, FillsTheNodeOfTheCallerAsTheRoot) {
  const KindCase& c = GetParam();
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(OwnTypes(c.xml).decode(c.raw), c.json);
  EXPECT_EQ(log.texts(), Lines());
}

TEST_P(JsonConverterAnyKind, StandsInAStructureUnderItsName) {
  const KindCase& c = GetParam();
  OwnTypes types(structure(
      {{"before", scalar("unsigned short")}, {"it", c.xml}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(types.decode("11" + c.raw + "22"),
            R"({"before":17,"it":)" + c.json + R"(,"after":34})");
}

TEST_P(JsonConverterAnyKind, StandsInAStructureInsideAnArrayOfStructures) {
  const KindCase& c = GetParam();
  OwnTypes types(structure({{"it", c.xml}, {"after", scalar("unsigned short")}}, arraySize(2)));
  EXPECT_EQ(types.decode(c.raw + "01" + c.raw + "02"),
            R"([{"it":)" + c.json + R"(,"after":1},{"it":)" + c.json + R"(,"after":2}])");
}

TEST_P(JsonConverterAnyKind, IsAnAlternativeOfAUnion) {
  const KindCase& c = GetParam();
  OwnTypes types(
      structure({{"choice", unionOf({{"it", c.xml}})}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(types.decode(c.raw + "22"), R"({"choice":{"it":)" + c.json + R"(},"after":34})");
}

INSTANTIATE_TEST_SUITE_P(Single, JsonConverterAnyKind, testing::ValuesIn(kSingleKinds), nameOf);
INSTANTIATE_TEST_SUITE_P(Characters, JsonConverterAnyKind, testing::ValuesIn(kCharacterKinds),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Arrays, JsonConverterAnyKind, testing::ValuesIn(kArrayKinds), nameOf);

class JsonConverterSingleKind : public testing::TestWithParam<KindCase> {};

TEST_P(JsonConverterSingleKind, IsAnElementOfAnArray) {
  const KindCase& c = GetParam();
  OwnTypes types(structure({{"list", c.xml, arraySize(2)}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(types.decode(c.raw + c.raw + "22"),
            R"({"list":[)" + c.json + "," + c.json + R"(],"after":34})");
}

INSTANTIATE_TEST_SUITE_P(Kinds, JsonConverterSingleKind, testing::ValuesIn(kSingleKinds), nameOf);

TEST(JsonConverter, KeepsTheElementsOfAnArrayOfReferencesApart) {
  OwnTypes types(structure({{"words", reference("SNVT_word"), arraySize(2)},
                            {"pairs", reference("SNVT_pair"), arraySize(2)},
                            {"lists", reference("SNVT_list"), arraySize(2)},
                            {"texts", reference("SNVT_text"), arraySize(2)}}));
  EXPECT_EQ(types.decode("00010002 01020304 010203040506 4100000042430000"),
            R"({"words":[1,2],"pairs":[{"a":1,"b":2},{"a":3,"b":4}],)"
            R"("lists":[[1,2,3],[4,5,6]],"texts":["A","BC"]})");
}

TEST(JsonConverter, ListsTheMembersOfAStructureInLayoutOrder) {
  OwnTypes types(structure({{"z", scalar("unsigned short")},
                            {"m", reference("SNVT_word")},
                            {"a", scalar("unsigned short")}}));
  EXPECT_EQ(types.decode("01000203"), R"({"z":1,"m":2,"a":3})");
}

TEST(JsonConverter, ReplacesWhatTheNodeHeld) {
  OwnTypes types(scalar("unsigned short"));
  json::Value value;
  value["old"] = json::Value("text");
  ASSERT_TRUE(types.convert("05", value));
  EXPECT_EQ(value.stringify(0), "5");
}

// --- Widths of the numbers ---

struct NumberCase {
  std::string name;
  std::string xml;
  std::string raw;
  NumberType type;
};

class JsonConverterNumber : public testing::TestWithParam<NumberCase> {};

TEST_P(JsonConverterNumber, KeepsWidthSignAndPrecision) {
  const NumberCase& c = GetParam();
  json::Value value;
  ASSERT_TRUE(OwnTypes(c.xml).convert(c.raw, value));
  EXPECT_EQ(value.getNumberType(), c.type);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, JsonConverterNumber,
    testing::ValuesIn(std::vector<NumberCase>{
        {"UnsignedChar", scalar("unsigned char"), "01", NumberType::UInt8},
        {"SignedChar", scalar("signed char"), "01", NumberType::Int8},
        {"UnsignedShort", scalar("unsigned short"), "01", NumberType::UInt8},
        {"SignedShort", scalar("signed short"), "01", NumberType::Int8},
        {"UnsignedLong", scalar("unsigned long"), "0001", NumberType::UInt16},
        {"SignedLong", scalar("signed long"), "0001", NumberType::Int16},
        {"UnsignedQuad", scalar("unsigned quad"), "00000001", NumberType::UInt32},
        {"SignedQuad", scalar("s32_type"), "00000001", NumberType::Int32},
        {"ScaledScalar", scalar("unsigned short", scaling(2, 0, 0)), "01", NumberType::Double},
        {"ShiftedScalar", scalar("unsigned short", scaling(1, 0, 1)), "01", NumberType::Double},
        {"IdentityScaling", scalar("unsigned short", scaling(1, 0, 0)), "01", NumberType::UInt8},
        {"Bits", bits(0, 3), "20", NumberType::UInt8},
        {"SignedBits", signedBits(0, 3), "20", NumberType::Int8},
        {"ScaledBits", bits(0, 3, scaling(1, 1, 0)), "20", NumberType::Double},
        {"Float", floating("float"), "3F800000", NumberType::Single},
        {"Double", floating("double float"), "3FF0000000000000", NumberType::Double},
        {"ScaledFloat", floating("float", scaling(1, 1, 0)), "3F800000", NumberType::Double},
        {"ScaledDouble", floating("double float", scaling(1, 1, 0)), "3FF0000000000000",
         NumberType::Double},
    }),
    [](const auto& info) { return info.param.name; });

TEST(JsonConverter, NeverWritesAnEnumerationAsANumber) {
  json::Value value;
  ASSERT_TRUE(OwnTypes(enumeration("power_t")).convert("07", value));
  ASSERT_TRUE(value.isString());
  EXPECT_EQ(value.asString(), "7");
}

TEST(JsonConverter, WritesTheNumberOfAnEnumerationWhoseTypeIsMissing) {
  OwnTypes types(structure({{"mode", enumeration("ghost_t")},
                            {"b", scalar("unsigned short")},
                            {"again", enumeration("ghost_t")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("FD0507"), R"({"mode":"-3","b":5,"again":"7"})");
  ASSERT_EQ(log.texts(), Lines{"[korvat] could not resolve enum 0000000000000000-0/ghost_t\n"});
  EXPECT_EQ(log.lines()[0].level, Logger::Warning);
}

// --- Values by definition ---

struct DecodeCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string json;
};

class JsonConverterDecode : public testing::TestWithParam<DecodeCase> {};

TEST_P(JsonConverterDecode, GivesTheJson) {
  const DecodeCase& c = GetParam();
  EXPECT_EQ(OwnTypes(c.xml).decode(c.raw), c.json);
}

const std::vector<DecodeCase> kBitCases = {
    // 1010 0101: the bits from the most significant one are 101, 00101
    {"FirstBits", bits(0, 3), "A5", "5"},
    {"MiddleBits", bits(2, 3), "B4", "6"},  // 10 110 100
    {"OneBit", bits(7, 1), "01", "1"},
    {"SignedMinusOne", signedBits(2, 3), "38", "-1"},  // 00 111 000
    {"SignedLowest", signedBits(2, 3), "20", "-4"},    // 00 100 000
    {"SignedHighest", signedBits(2, 3), "18", "3"},    // 00 011 000
    {"UnsignedTopBit", bits(2, 3), "20", "4"},
    {"SignedSingleBit", signedBits(0, 1), "80", "-1"},
    {"SignedFourBitsMinusEight", signedBits(4, 4), "08", "-8"},
    {"ScaledSigned", signedBits(2, 3, scaling(1, -1, 0)), "20", "-0.4"},  // -4 / 10
    {"ScaledWithOffset", bits(0, 4, scaling(2, 0, -5)), "30", "-4.0"},    // 2 * (3 - 5)
    {"NoWidth", bits(0, 0), "FF", "0"},
    {"OutsideOfItsByte", bits(9, 1), "FF", "0"},
    {"SharedByte", structure({{"a", bits(0, 3)}, {"b", bits(3, 5)}, {"c", scalar("signed char")}}),
     "A5FF", R"({"a":5,"b":5,"c":-1})"},
    {"NextByteAfterAFullOne",
     structure({{"a", bits(0, 4)}, {"b", bits(4, 4)}, {"c", bits(0, 4)}, {"d", bits(4, 4)}}),
     "1234", R"({"a":1,"b":2,"c":3,"d":4})"},
    {"PartlyUsedByteIsClosed",
     structure({{"a", bits(0, 2)}, {"b", bits(2, 3)}, {"c", scalar("unsigned short")}}), "D807",
     R"({"a":3,"b":3,"c":7})"},  // 11 011 000
    {"PartlyUsedByteIsClosedByAStructure",
     structure({{"a", bits(1, 3)}, {"s", structure({{"c", bits(0, 8)}})}}), "5009",
     R"({"a":5,"s":{"c":9}})"},  // 0 101 0000
    {"PartlyUsedByteIsClosedByAReference",
     structure({{"a", bits(1, 3)}, {"r", reference("SNVT_high")}}), "50C0", R"({"a":5,"r":12})"},
    // A field at offset 0 that does not fill its byte leaves no trace of having used it.
    {"ByteOfAShortFirstFieldIsReadAgain",
     structure({{"a", bits(0, 4)}, {"c", scalar("unsigned short")}}), "A5", R"({"a":10,"c":165})"},
};

const std::vector<DecodeCase> kFloatCases = {
    {"Zero", floating("float"), "00000000", "0.0"},
    {"MinusZero", floating("float"), "80000000", "-0.0"},
    {"NotANumber", floating("float"), "7FC00000", "null"},
    {"Infinity", floating("float"), "7F800000", "null"},
    {"MinusInfinity", floating("float"), "FF800000", "null"},
    {"ScaledNotANumber", floating("float", scaling(1, -1, 0)), "7FC00000", "null"},
    {"ScaledInfinity", floating("float", scaling(1, -1, 0)), "FF800000", "null"},
    {"LargestSingle", floating("float"), "7F7FFFFF", "3.4028235e+38"},
    {"SmallestSingle", floating("float"), "00000001", "1e-45"},
    {"ShortestTextOfASingle", floating("float"), "3DCCCCCD", "0.1"},
    {"DoubleNotANumber", floating("double float"), "7FF8000000000000", "null"},
    {"DoubleInfinity", floating("double float"), "7FF0000000000000", "null"},
    {"LargestDouble", floating("double float"), "7FEFFFFFFFFFFFFF", "1.7976931348623157e+308"},
    {"ShortestTextOfADouble", floating("double float"), "3FB999999999999A", "0.1"},
    {"InvalidMarkerIsANumber", floating("float", invalid("-1")), "BF800000", "-1.0"},
    {"ScaledSingle", floating("float", scaling(1, -1, 0)), "BF800000", "-0.1"},
    {"ScaledSingleWithOffset", floating("float", scaling(1, 0, 1)), "3F000000", "1.5"},  // 0.5 + 1
    // The single next to 0.1 is 0.100000001490116119..., which shows once it is a double.
    {"ScaledSingleShowsItsError", floating("float", scaling(1, 1, 0)), "3DCCCCCD",
     "1.0000000149011612"},
};

const std::vector<DecodeCase> kScalingCases = {
    // Divided by ten, not multiplied by the inexact 0.1.
    {"NearestDecimal", scalar("unsigned short", scaling(1, -1, 0)), "03", "0.3"},
    {"ManyDecimals", scalar("s32_type", scaling(1, -7, 0)), "00000001", "1e-07"},
    {"LargestQuad", scalar("unsigned quad", scaling(1, -2, 0)), "FFFFFFFF", "42949672.95"},
    {"LowestQuad", scalar("s32_type", scaling(1, -3, 0)), "80000000", "-2147483.648"},
    {"NegativeFactor", scalar("unsigned short", scaling(-1, 0, 0)), "05", "-5.0"},
    {"FactorZero", scalar("unsigned short", scaling(0, 0, 7)), "05", "0.0"},
    {"MissingBaseType", test::tag("scalar", ""), "FF", "0"},
};

const std::vector<DecodeCase> kShortCases = {
    {"EmptyScalar", scalar("unsigned long"), "", "0"},
    {"HalfAScalar", scalar("unsigned long"), "FF", "0"},
    {"ThreeQuartersOfAFloat", floating("float"), "3F8000", "0.0"},
    {"EmptyBits", bits(0, 8), "", "0"},
    {"EmptyEnumeration", enumeration("power_t"), "", R"("PWR_OFF")"},
    {"EmptyArray", scalar("unsigned short", arraySize(3)), "", "[0,0,0]"},
    {"PartOfAnArray", scalar("unsigned long", arraySize(3)), "0001000200", "[1,2,0]"},
    {"EmptyText", scalar("unsigned char", arraySize(3)), "", R"("")"},
    {"PartOfAText", scalar("unsigned char", arraySize(4)), "4142", R"("AB")"},
    {"EmptyStructure",
     structure({{"a", scalar("unsigned short")}, {"t", scalar("unsigned char", arraySize(2))}}), "",
     R"({"a":0,"t":""})"},
    {"PartOfAStructure",
     structure({{"a", scalar("unsigned long")},
                {"b", scalar("unsigned quad")},
                {"c", scalar("unsigned short")}}),
     "0102030405", R"({"a":258,"b":0,"c":0})"},
    {"EmptyReference", reference("SNVT_pair"), "", R"({"a":0,"b":0})"},
    {"EmptyUnion", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}),
     "", R"({"byte":0,"word":0})"},
    {"MissingBaseType", test::tag("scalar", ""), "", "0"},
    {"LongerThanTheType", scalar("unsigned short"), "0102", "1"},
};

INSTANTIATE_TEST_SUITE_P(BitFields, JsonConverterDecode, testing::ValuesIn(kBitCases),
                         [](const auto& info) { return info.param.name; });
INSTANTIATE_TEST_SUITE_P(Floats, JsonConverterDecode, testing::ValuesIn(kFloatCases),
                         [](const auto& info) { return info.param.name; });
INSTANTIATE_TEST_SUITE_P(Scaling, JsonConverterDecode, testing::ValuesIn(kScalingCases),
                         [](const auto& info) { return info.param.name; });
INSTANTIATE_TEST_SUITE_P(ShortBuffers, JsonConverterDecode, testing::ValuesIn(kShortCases),
                         [](const auto& info) { return info.param.name; });

// --- Byte order ---

struct OrderCase {
  std::string name;
  std::string xml;
  std::string little;  // raw value with the least significant byte first
  std::string json;
};

class JsonConverterLittleEndian : public testing::TestWithParam<OrderCase> {};

TEST_P(JsonConverterLittleEndian, ReversesTheBytesOfEachNumber) {
  const OrderCase& c = GetParam();
  EXPECT_EQ(OwnTypes(c.xml).decode(c.little, Endianess::Little), c.json);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, JsonConverterLittleEndian,
    testing::ValuesIn(std::vector<OrderCase>{
        {"OneByte", scalar("unsigned short"), "FE", "254"},
        {"UnsignedLong", scalar("unsigned long"), "0201", "258"},
        {"SignedLong", scalar("signed long"), "FEFF", "-2"},
        {"UnsignedQuad", scalar("unsigned quad"), "04030201", "16909060"},  // 0x01020304
        {"SignedQuad", scalar("s32_type"), "FEFFFFFF", "-2"},
        {"Float", floating("float"), "0000C03F", "1.5"},
        {"Double", floating("double float"), "000000000000F83F", "1.5"},
        {"BitsStayInTheirByte", structure({{"a", bits(0, 4)}, {"b", bits(4, 4)}}), "12",
         R"({"a":1,"b":2})"},
        {"StructureKeepsItsOrder",
         structure({{"a", scalar("unsigned long")}, {"b", scalar("unsigned short")}}), "010002",
         R"({"a":1,"b":2})"},
        {"ArrayKeepsItsOrder", scalar("unsigned long", arraySize(2)), "01000200", "[1,2]"},
        {"ThroughAReference", reference("SNVT_word"), "0201", "258"},
    }),
    [](const auto& info) { return info.param.name; });

TEST(JsonConverter, TakesTheByteOrderOfTheManagerInTheShortForm) {
  OwnTypes types(scalar("unsigned long"));
  const TypeId id(ResourceType::Nv, "", "_x");
  json::Value value;
  ASSERT_TRUE(types.manager().rawToJson(id, bytesOf("0102"), value));
  EXPECT_EQ(value.stringify(0), "258");

  types.manager().setNetworkEndianess(Endianess::Little);
  ASSERT_TRUE(types.manager().rawToJson(id, bytesOf("0102"), value));
  EXPECT_EQ(value.stringify(0), "513");
}

// --- The keyword "invalid" ---

struct InvalidCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string withoutKeyword;
  std::string withKeyword;
};

class JsonConverterInvalid : public testing::TestWithParam<InvalidCase> {};

TEST_P(JsonConverterInvalid, IsWrittenOnlyWhenTheManagerSupportsIt) {
  const InvalidCase& c = GetParam();
  OwnTypes types(c.xml);
  EXPECT_EQ(types.decode(c.raw), c.withoutKeyword);
  types.manager().setSupportInvalidKeyword(true);
  EXPECT_EQ(types.decode(c.raw), c.withKeyword);
}

const std::string kKeyword = R"("invalid")";

INSTANTIATE_TEST_SUITE_P(
    Members, JsonConverterInvalid,
    testing::ValuesIn(std::vector<InvalidCase>{
        {"Marker", scalar("unsigned short", invalid("255")), "FF", "255", kKeyword},
        {"NoMarker", scalar("unsigned short", invalid("255")), "FE", "254", "254"},
        {"WithoutDefinition", scalar("unsigned short"), "FF", "255", "255"},
        {"Zero", scalar("unsigned long", invalid("0")), "0000", "0", kKeyword},
        {"NegativeMarker", scalar("signed long", invalid("-32768")), "8000", "-32768", kKeyword},
        {"ScaledMarker", scalar("signed long", invalid("32767") + scaling(1, -2, 0)), "7FFF",
         "327.67", kKeyword},
        {"LargestQuad", scalar("unsigned quad", invalid("4294967295")), "FFFFFFFF", "4294967295",
         kKeyword},
        {"LowestQuad", scalar("s32_type", invalid("-2147483648")), "80000000", "-2147483648",
         kKeyword},
        // The byte FF is the number -1, and -1 is not 255.
        {"MarkerOutsideOfTheType", scalar("signed short", invalid("255")), "FF", "-1", "-1"},
        {"InStructure", structure({{"a", scalar("unsigned short", invalid("0"))}}), "00",
         R"({"a":0})", R"({"a":"invalid"})"},
        {"InArray", scalar("unsigned short", invalid("0") + arraySize(2)), "0100", "[1,0]",
         R"([1,"invalid"])"},
        {"NeverForBits", bits(0, 8, invalid("255")), "FF", "255", "255"},
        {"NeverForFloats", floating("float", invalid("1")), "3F800000", "1.0", "1.0"},
        {"NeverForText", scalar("unsigned char", invalid("65") + arraySize(2)), "4141", R"("AA")",
         R"("AA")"},
    }),
    [](const auto& info) { return info.param.name; });

// --- What cannot be converted ---

TEST(JsonConverter, RefusesATypeThatIsUnknown) {
  OwnTypes types(scalar("unsigned short"));
  const LogCapture log(Logger::Warning);
  json::Value value;
  const TypeId id(ResourceType::Nv, "", "_unheard_of");
  EXPECT_FALSE(types.manager().rawToJson(id, bytesOf("01"), value));
  EXPECT_FALSE(types.manager().rawToJson(TypeId::None, bytesOf("01"), value));
  EXPECT_TRUE(value.isNull());
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonConverter, RefusesATypeThatIsNoVariableType) {
  OwnTypes types(scalar("unsigned short"));
  json::Value value;
  const TypeId id(ResourceType::Enum, "", "power_t");
  EXPECT_FALSE(types.manager().rawToJson(id, bytesOf("01"), value));
}

TEST(JsonConverter, RefusesATypeWithoutLayout) {
  EXPECT_EQ(OwnTypes("").decode("01"), "failed: null");
}

TEST(JsonConverter, StopsAtAReferenceThatCannotBeResolved) {
  OwnTypes types(structure({{"a", scalar("unsigned short")},
                            {"r", reference("SNVT_missing")},
                            {"b", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("0102"), R"(failed: {"a":1})");
  ASSERT_EQ(log.texts(), Lines{"[korvat] could not resolve ref 0000000000000000-0/SNVT_missing\n"});
  EXPECT_EQ(log.lines()[0].level, Logger::Warning);
}

TEST(JsonConverter, LooksForAMissingEnumerationInEachConversion) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", test::nvt("_x", enumeration("power_t")));
  TypeManager manager = files.makeManager();
  const LogCapture quiet(Logger::Error);
  const VarType* type = manager.getVarType(TypeId(ResourceType::Nv, "", "_x"));
  ASSERT_NE(type, nullptr);
  JsonConverter converter(&manager, *type, Endianess::Big, false);
  json::Value value;
  EXPECT_TRUE(converter.rawToJson(bytesOf("01"), value));
  EXPECT_EQ(value.stringify(), "\"1\"");
  files.write(TypeId::StdPrefix, "enums", test::sharedEnums());
  EXPECT_TRUE(converter.rawToJson(bytesOf("01"), value));
  EXPECT_EQ(value.stringify(), "\"PWR_ON\"");
}

TEST(JsonConverter, NamesTheFirstReferenceOfAChainThatEndsNowhere) {
  OwnTypes types(reference("SNVT_dangling"));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("01"), "failed: null");
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] could not resolve ref 0000000000000000-0/SNVT_dangling\n"});
}

TEST(JsonConverter, StopsAtAReferenceThatRunsInACircle) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}, {"r", reference("SNVT_chicken")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(types.decode("0102"), R"(failed: {"a":1})");
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] cyclic reference 0000000000000000-0/SNVT_chicken\n"});
}

TEST(JsonConverter, StopsAtAReferenceToATypeWithoutLayout) {
  OwnTypes types(structure({{"a", scalar("unsigned short")},
                            {"r", reference("SNVT_bare")},
                            {"b", scalar("unsigned short")}}));
  EXPECT_EQ(types.decode("0102"), R"(failed: {"a":1,"r":null})");
}

TEST(JsonConverter, GivesUpAStructureThatContainsItself) {
  OwnTypes types(reference("SNVT_endless"));
  // The root reference, and then a structure and a reference for each "next", count one each: the
  // 257th is the reference in the 128th structure.
  std::string place = "next";
  for (int i = 1; i < 128; ++i) place += ".next";
  const LogCapture log(Logger::Warning);
  json::Value value;
  EXPECT_FALSE(types.convert("01", value));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] walk given up, members nested deeper than 256: " + place + "\n"});
}

TEST(JsonConverter, LeavesNothingOfAnEarlierValue) {
  OwnTypes types("");
  const LogCapture quiet(Logger::Error);
  json::Value value("earlier");
  EXPECT_FALSE(types.convert("01", value));
  EXPECT_TRUE(value.isNull());
  TypeManager manager("drv");
  value.setValue("earlier");
  EXPECT_FALSE(
      JsonConverter(&manager, NvType(), Endianess::Big, false).rawToJson(bytesOf("01"), value));
  EXPECT_TRUE(value.isNull());
}

TEST(JsonConverter, GivesUpAfterTooManyVisits) {
  const std::string text = scalar("unsigned char", arraySize(65536));
  OwnTypes types(structure({{"texts", structure({{"text", text}}, arraySize(64))}}));
  // One visit for the root and 1 + 65,536 for each structure: 61 of them are 3,997,758 visits.
  const LogCapture log(Logger::Warning);
  json::Value value;
  EXPECT_FALSE(types.convert("41", value));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] walk given up after 4000000 visits: texts[61].text\n"});
  EXPECT_EQ(value["texts"].getSize(), 62u);
  EXPECT_EQ(value["texts"][0]["text"].asString(), "A");
}

// --- Messages and single steps of a walk ---

TEST(JsonConverter, TracesEveryMember) {
  OwnTypes types(structure({{"a", scalar("unsigned short")},
                            {"list", scalar("unsigned short", arraySize(1))},
                            {"r", reference("SNVT_power")}}));
  ASSERT_EQ(types.decode("010200"), R"({"a":1,"list":[2],"r":"PWR_OFF"})");

  const LogCapture log(Logger::Trace);
  types.decode("010200");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{
                "[JsonConverter::toJson] stack-size=1 depth=0 Aggregate\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=1 depth=1 Scalar\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=2 depth=1 Scalar\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=2 depth=2 Scalar\n",
                "[JsonConverter::toJson] stack-size=2\n",
                "[JsonConverter::toJson] stack-size=3 depth=1 Ref\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=2 depth=1 Enum\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJsonStructEnd] stack-size=2 depth=0\n",
            }));
}

TEST(JsonConverter, TracesFloatsAndBitFieldsByTheirKind) {
  OwnTypes types(structure({{"f", floating("float")}, {"b", bits(0, 8)}}));
  const LogCapture log(Logger::Trace);
  types.decode("0000000001");
  EXPECT_TRUE(log.contains(Logger::Trace, "[JsonConverter::toJson] stack-size=1 depth=1 Float\n"));
  EXPECT_TRUE(
      log.contains(Logger::Trace, "[JsonConverter::toJson] stack-size=2 depth=1 Bitfield\n"));
}

// Calls the two callbacks of a walk by hand.
class JsonConverterStep : public testing::Test {
 protected:
  bool convert(const Member& member) {
    return _converter.toJson(_context, member, _buffer, _stack);
  }
  bool end(const Member& member) {
    return _converter.toJsonStructEnd(_context, member, _buffer, _stack);
  }

  TypeManager _manager{"drv"};
  NvType _type;
  Buffer _buffer = bytesOf("0102");
  JsonConverter _converter{&_manager, _type, Endianess::Big, true};
  Member::Context _context{&_manager, _buffer, true};
  json::Value _root;
  JsonConverter::Stack _stack{{nullptr, -1, &_root}};
};

std::unique_ptr<MemScalar> makeByte(const std::string& name) {
  auto scalar = std::make_unique<MemScalar>();
  scalar->setNcType(NcType::UnsignedShort);
  scalar->setProgName(name);
  return scalar;
}

TEST_F(JsonConverterStep, RefusesAnEmptyStackInSilence) {
  _stack.clear();
  const LogCapture log(Logger::Trace);
  EXPECT_FALSE(convert(*makeByte("a")));
  EXPECT_FALSE(end(MemAggregate()));
  EXPECT_EQ(log.texts(), Lines());
}

TEST_F(JsonConverterStep, RefusesAParentWithoutNode) {
  _stack.back().value = nullptr;
  _context.depth = 1;
  EXPECT_FALSE(convert(*makeByte("a")));
}

TEST_F(JsonConverterStep, RefusesMembersOfUnknownKind) {
  const LogCapture log(Logger::Trace);
  EXPECT_FALSE(convert(OddMember(0)));
  EXPECT_FALSE(convert(OddMember(7)));
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{
                "[JsonConverter::toJson] stack-size=1 depth=0 Invalid\n",
                "[JsonConverter::toJson] stack-size=1\n",
                "[JsonConverter::toJson] stack-size=1 depth=0 (unknown)\n",
                "[JsonConverter::toJson] stack-size=1\n",
            }));
}

TEST_F(JsonConverterStep, StopsTheWalkAtAMemberOfUnknownKind) {
  auto root = std::make_unique<MemAggregate>();
  root->addChild(makeByte("a"));
  root->addChild(std::make_unique<OddMember>(0));
  root->addChild(makeByte("b"));
  root->buildLookup();
  _type.setMember(std::move(root));
  json::Value value;
  EXPECT_FALSE(_converter.rawToJson(_buffer, value));
  EXPECT_EQ(value["a"].stringify(0), "1");
  EXPECT_TRUE(value["b"].isNull());
}

TEST_F(JsonConverterStep, EndsAStructureAtAMemberThatNeverCame) {
  auto root = std::make_unique<MemAggregate>();
  root->setProgName("top");
  root->addChild(makeByte("a"));
  root->addChild(nullptr);
  root->addChild(makeByte("b"));
  root->buildLookup();
  _type.setMember(std::move(root));
  const LogCapture log(Logger::Warning);
  json::Value value;
  EXPECT_TRUE(_converter.rawToJson(_buffer, value));
  EXPECT_EQ(value.stringify(0), R"({"a":1})");
  EXPECT_EQ(log.texts(), Lines{"[korvat] member 1 missing in aggregate p-name top\n"});
}

TEST_F(JsonConverterStep, WritesTheRootIntoTheTopNode) {
  ASSERT_TRUE(convert(*makeByte("a")));
  EXPECT_EQ(_root.stringify(0), "1");
  EXPECT_EQ(_stack.size(), 1u);
}

TEST_F(JsonConverterStep, PushesANamedMember) {
  _root.switchType(json::JsonType::Object);
  _context.depth = 1;
  const auto member = makeByte("a");
  ASSERT_TRUE(convert(*member));
  ASSERT_EQ(_stack.size(), 2u);
  EXPECT_EQ(_stack.back().name, &member->getProgName());
  EXPECT_EQ(_stack.back().index, -1);
  EXPECT_EQ(_stack.back().value, &_root["a"]);
}

TEST_F(JsonConverterStep, PushesAnArrayElementWithoutName) {
  _root.switchType(json::JsonType::Array);
  _context.depth = 1;
  _context.arrayIndex = 2;
  ASSERT_TRUE(convert(*makeByte("a")));
  ASSERT_EQ(_stack.size(), 2u);
  EXPECT_EQ(_stack.back().name, nullptr);
  EXPECT_EQ(_stack.back().index, 2);
  EXPECT_EQ(_stack.back().value, &_root[2]);
}

TEST_F(JsonConverterStep, DropsTheItemsAboveTheParent) {
  _root.switchType(json::JsonType::Object);
  const std::string first = "first";
  const std::string second = "second";
  _stack.push_back({&first, -1, &_root["first"]});
  _stack.push_back({&second, -1, &_root["second"]});
  _context.depth = 1;
  const auto third = makeByte("third");
  ASSERT_TRUE(convert(*third));
  ASSERT_EQ(_stack.size(), 2u);
  EXPECT_EQ(*_stack.back().name, "third");
}

TEST_F(JsonConverterStep, FillsAParentThatHasNoTypeYet) {
  json::Value element;
  _stack.push_back({nullptr, 0, &element});
  _context.depth = 2;
  ASSERT_TRUE(convert(*makeByte("a")));
  EXPECT_EQ(element.stringify(0), "1");
  EXPECT_EQ(_context.depth, 1);
  EXPECT_EQ(_stack.size(), 2u);
}

TEST_F(JsonConverterStep, HandsTheNameOfAReferenceToItsTarget) {
  _root.switchType(json::JsonType::Object);
  _context.depth = 1;
  MemRef reference;
  reference.setProgName("r");
  ASSERT_TRUE(convert(reference));
  ASSERT_NE(_context.pendingName, nullptr);
  EXPECT_EQ(*_context.pendingName, "r");

  ASSERT_TRUE(convert(*makeByte("unused")));
  EXPECT_EQ(_context.pendingName, nullptr);
  EXPECT_EQ(_root.stringify(0), R"({"r":1})");
}

TEST_F(JsonConverterStep, SkipsTheElementsOfAText) {
  _root.setValue("AB");
  _context.depth = 1;
  _context.arrayIndex = 0;
  ASSERT_TRUE(convert(*makeByte("a")));
  EXPECT_TRUE(_context.stringDone);
  EXPECT_EQ(_root.stringify(0), R"("AB")");
  EXPECT_EQ(_stack.size(), 1u);
}

TEST_F(JsonConverterStep, ClosesAStructureAndLeavesTheArrayAroundIt) {
  _context.arrayIndex = 3;
  const LogCapture log(Logger::Trace);
  EXPECT_TRUE(end(MemAggregate()));
  EXPECT_EQ(_context.arrayIndex, -1);
  EXPECT_EQ(log.texts(Logger::Trace),
            Lines{"[JsonConverter::toJsonStructEnd] stack-size=1 depth=0\n"});
}

TEST_F(JsonConverterStep, RefusesTheEndOfWhatIsNoAggregate) {
  _context.arrayIndex = 3;
  EXPECT_FALSE(end(*makeByte("a")));
  EXPECT_EQ(_context.arrayIndex, -1);
}

TEST_F(JsonConverterStep, RefusesTheEndOfAUnionWithoutNode) {
  _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
  _stack.back().value = nullptr;
  MemAggregate choice;
  choice.setUnion(true);
  const LogCapture log(Logger::Trace);
  EXPECT_FALSE(end(choice));
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{"[JsonConverter::toJsonStructEnd] stack-size=1 depth=0\n",
                   "[JsonConverter::toJsonStructEnd] UNION END\n"}));
}

TEST_F(JsonConverterStep, TakesAUnionThatNobodyEnteredForAnEmptyOne) {
  _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
  MemAggregate choice;
  choice.setUnion(true);
  EXPECT_TRUE(end(choice));
  EXPECT_EQ(_root.stringify(), "\"\"");
}

TEST_F(JsonConverterStep, PutsAMemberThatIsNoCharacterInPlaceOfAText) {
  _root.setValue("text");
  _context.depth = 1;
  EXPECT_TRUE(convert(*makeByte("a")));
  EXPECT_FALSE(_context.stringDone);
  EXPECT_EQ(_root.stringify(0), R"({"a":1})");
}

TEST_F(JsonConverterStep, FormatsNoTracesBelowTheirLevel) {
  const LogCapture log(Logger::Debug);
  EXPECT_TRUE(convert(*makeByte("a")));
  EXPECT_TRUE(end(MemAggregate()));
  EXPECT_EQ(log.texts(), Lines());
}

}  // namespace
}  // namespace zavri::korvat
