#include "korvat/convert/DynamicArrays.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::arraySize;
using test::bits;
using test::dynamicArray;
using test::encode;
using test::Encoded;
using test::encodeOver;
using test::enumeration;
using test::floating;
using test::LogCapture;
using test::OwnTypes;
using test::patch;
using test::reference;
using test::scalar;
using test::scaling;
using test::structure;
using test::unionOf;

using Lines = std::vector<std::string>;

// A count and up to four numbers of two bytes.
const std::string kCounted = structure({{"n", scalar("unsigned short")},
                                        {"list", scalar("unsigned long"), dynamicArray(0, 4)},
                                        {"after", scalar("unsigned short")}});

struct CountCase {
  std::string name;
  std::string xml;
  std::string json;
  std::string raw;
};

class DynamicArrayCount : public testing::TestWithParam<CountCase> {};

TEST_P(DynamicArrayCount, FollowsWhatIsGiven) {
  const CountCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, c.json), c.raw);
  EXPECT_EQ(log.texts(), Lines());
}

const std::vector<CountCase> kCountCases = {
    {"OverItsOwnNode", kCounted, R"({"n":4,"list":[1,2],"after":34})", "020001000222"},
    {"WithoutItsOwnNode", kCounted, R"({"list":[1],"after":34})", "01000122"},
    {"WhateverItsOwnNodeIs", kCounted, R"({"n":"x","list":[1],"after":34})", "01000122"},
    {"EmptyArray", kCounted, R"({"n":4,"list":[],"after":34})", "0022"},
    {"CountOfTwoBytes",
     structure({{"n", scalar("unsigned long")},
                {"list", scalar("unsigned short"), dynamicArray(0, 300)}}),
     R"({"n":0,"list":[7,8]})", "00020708"},
    {"Text",
     structure({{"n", scalar("unsigned short")},
                {"text", scalar("unsigned char"), dynamicArray(0, 4)},
                {"after", scalar("unsigned short")}}),
     R"({"n":0,"text":"ABC","after":34})", "0341424322"},
    // One byte a character: é is E9 there.
    {"TextOfOneByteCharacters",
     structure(
         {{"n", scalar("unsigned short")}, {"text", scalar("unsigned char"), dynamicArray(0, 4)}}),
     R"({"n":0,"text":"é"})", "01E9"},
    {"TextBehindCharSet",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned long"), dynamicArray(0, 4)}}),
     R"({"char_set":0,"text":"AB"})", "0200410042"},
    {"TextWhoseEncodingStandsInBetween",
     structure({{"n", scalar("unsigned short")},
                {"encoding", enumeration("char_encoding_t")},
                {"text", scalar("unsigned long"), dynamicArray(0, 4)},
                {"after", scalar("unsigned short")}}),
     R"({"n":0,"encoding":"CE_16","text":"AB","after":34})", "02010041004222"},
    {"TextOfUtf8InBetween",
     structure({{"n", scalar("unsigned short")},
                {"encoding", enumeration("char_encoding_t")},
                {"text", scalar("unsigned char"), dynamicArray(0, 4)}}),
     R"({"n":0,"encoding":"CE_8","text":"é"})", "0200C3A9"},
    {"EnumerationInBetween",
     structure({{"n", scalar("unsigned short")},
                {"power", enumeration("power_t")},
                {"list", scalar("unsigned short"), dynamicArray(0, 4)}}),
     R"({"n":0,"power":1,"list":[5,6]})", "02010506"},
    {"BitFieldInBetween",
     structure({{"n", scalar("unsigned short")},
                {"bits", bits(0, 8)},
                {"list", scalar("unsigned short"), dynamicArray(0, 4)}}),
     R"({"n":0,"bits":1,"list":[5,6]})", "02010506"},
    {"OfStructures",
     structure({{"n", scalar("unsigned short")},
                {"rows", structure({{"a", scalar("unsigned short")}}), dynamicArray(0, 3)}}),
     R"({"n":0,"rows":[{"a":1},{"a":2}]})", "020102"},
    {"GivenByAReference",
     structure(
         {{"n", reference("SNVT_word")}, {"list", scalar("unsigned short"), dynamicArray(0, 4)}}),
     R"({"n":9,"list":[5,6]})", "00020506"},
    {"GivenByTheLastOfSeveralReferences",
     structure({{"r", reference("SNVT_word")},
                {"b", scalar("unsigned short")},
                {"n", reference("SNVT_word")},
                {"list", scalar("unsigned short"), dynamicArray(0, 4)}}),
     R"({"r":1,"b":2,"n":9,"list":[5,6]})", "00010200020506"},
    {"OfReferences",
     structure(
         {{"n", scalar("unsigned short")}, {"list", reference("SNVT_pair"), dynamicArray(0, 4)}}),
     R"({"n":9,"list":[{"a":1,"b":2}]})", "010102"},
    {"InEachElementOfAnArray",
     structure(
         {{"n", scalar("unsigned short")}, {"list", scalar("unsigned short"), dynamicArray(0, 4)}},
         arraySize(2)),
     R"([{"n":9,"list":[5]},{"n":9,"list":[6,7]}])", "0105020607"},
};

INSTANTIATE_TEST_SUITE_P(Cases, DynamicArrayCount, testing::ValuesIn(kCountCases),
                         [](const auto& info) { return info.param.name; });

TEST(DynamicArrays, StandWholeWithoutTheOption) {
  OwnTypes types(kCounted);
  EXPECT_EQ(encode(types, R"({"n":2,"list":[1,2,3,4],"after":34})"), "02000100020003000422");
}

TEST(DynamicArrays, AreCutToWhatTheTypeHolds) {
  OwnTypes types(kCounted);
  types.manager().setUseDynamicArrays(true);
  const Encoded encoded = encodeOver(types, "", R"({"n":1,"list":[1,2,3,4,5],"after":34})");
  EXPECT_EQ(encoded.raw, "04000100020003000422");
  EXPECT_EQ(encoded.problems, Lines{"list: 5 elements given, at most 4 expected"});
}

// A count that is "invalid" is none: neither the one in the buffer before counts.
TEST(DynamicArrays, StandWholeBehindAnInvalidCount) {
  OwnTypes types(structure({{"n", scalar("unsigned short", test::invalid("2"))},
                            {"list", scalar("unsigned short"), dynamicArray(0, 4)},
                            {"after", scalar("unsigned short")}}));
  types.manager().setUseDynamicArrays(true);
  types.manager().setSupportInvalidKeyword(true);
  types.manager().setAllowMissingFields(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encodeOver(types, "01AABBCCDDEE", R"({"n":"invalid","after":34})").raw, "02AABBCCDD22");
}

TEST(DynamicArrays, CutATextToWhatTheTypeHolds) {
  OwnTypes types(structure(
      {{"n", scalar("unsigned short")}, {"text", scalar("unsigned char"), dynamicArray(0, 2)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":0,"text":"ABC"})"), "024142");
  EXPECT_EQ(log.texts(), Lines{"[JsonConverter::getString] string truncated: ABC\n"});
}

TEST(DynamicArrays, TakeTheCountGivenWhenTheArrayIsNot) {
  OwnTypes types(kCounted);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":2,"after":34})"), "020000000022");
  EXPECT_EQ(encode(types, R"({"n":200,"after":34})"), "C8000000000000000022");
  EXPECT_EQ(log.texts(), (Lines{"[JsonConverter::getArray] expected array\n",
                                "[JsonConverter::getArray] expected array\n"}));
}

TEST(DynamicArrays, AreAsLongAsTheBytesSayWhenTheCountIsForgiven) {
  OwnTypes types(kCounted);
  types.manager().setUseDynamicArrays(true);
  types.manager().setAllowMissingFields(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"after":34})"), "0022");
  EXPECT_EQ(encodeOver(types, "01", R"({"after":34})").raw, "01000022");
}

TEST(DynamicArrays, ForgetACountBehindAFloatingNumber) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"f", floating("float")},
                            {"list", scalar("unsigned short"), dynamicArray(0, 3)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":1,"f":1.5,"list":[5,6,7]})"), "013FC00000050607");
  EXPECT_EQ(types.decode("013FC00000050607"), R"({"n":1,"f":1.5,"list":[5,6,7]})");
}

TEST(DynamicArrays, AreNotCountedByAScaledNumber) {
  OwnTypes types(structure({{"n", scalar("unsigned short", scaling(5, -1, 0))},
                            {"list", scalar("unsigned short"), dynamicArray(0, 2)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":0.5,"list":[5,6]})"), "010506");
  EXPECT_EQ(log.texts(), Lines{"Member::getEffectiveArraySize failed, no arraySize in context\n"});
}

TEST(DynamicArrays, AreNotCountedAcrossAnotherArray) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"fixed", scalar("unsigned short"), arraySize(1)},
                            {"list", scalar("unsigned short"), dynamicArray(0, 2)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":9,"fixed":[1],"list":[5,6]})"), "09010506");
}

TEST(DynamicArrays, AreNotCountedByANumberInAnArray) {
  OwnTypes types(structure({{"ns", reference("SNVT_word"), arraySize(2)},
                            {"list", scalar("unsigned short"), dynamicArray(0, 4)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"ns":[1,2],"list":[5,6,7,8]})"), "0001000205060708");
  EXPECT_EQ(log.texts(), Lines{"Member::getEffectiveArraySize failed, no arraySize in context\n"});
}

TEST(DynamicArrays, TakeTheCountGivenWhereNoArrayIs) {
  OwnTypes types(kCounted);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", R"({"n":2,"list":5,"after":34})");
  EXPECT_EQ(encoded.raw, "failed: 02");
}

TEST(DynamicArrays, CountNoCharactersForStructures) {
  OwnTypes types(
      structure({{"n", scalar("unsigned short")},
                 {"rows", structure({{"a", scalar("unsigned short")}}), dynamicArray(0, 3)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"n":2,"rows":"AB"})"), "00");
}

TEST(DynamicArrays, AreNotFoundBehindAReferenceThatLeadsNowhere) {
  for (const char* target : {"SNVT_missing", "SNVT_bare"}) {
    OwnTypes types(structure({{"n", scalar("unsigned short")},
                              {"r", reference(target)},
                              {"list", scalar("unsigned short"), dynamicArray(0, 4)}}));
    types.manager().setUseDynamicArrays(true);
    const LogCapture log(Logger::Warning);
    EXPECT_EQ(encode(types, R"({"n":9,"r":1,"list":[5,6]})"), "failed: 09");
  }
}

TEST(DynamicArrays, AreNotFoundBehindAMemberThatIsNotThere) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  NvType type;
  auto list = test::makeScalar("list", NcType::UnsignedShort, 4);
  list->setArrayMinSize(0);
  type.setMember(
      test::makeStruct("", test::makeScalar("n"), std::unique_ptr<MemScalar>(), std::move(list)));
  const LogCapture log(Logger::Warning);
  JsonConverter converter(&manager, type, Endianess::Big, false);
  base::Buffer raw;
  EXPECT_TRUE(converter.jsonToRaw(test::parsed(R"({"n":9,"list":[5,6]})"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "09");
}

// A count that is shown in another unit is the raw number all the same.
TEST(DynamicArrays, AreCountedByANumberShownInAnotherUnit) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  NvType type;
  auto count = test::makeScalar("n");
  count->setDisplayScaling(DisplayScaling(2, 10));
  auto list = test::makeScalar("list", NcType::UnsignedShort, 4);
  list->setArrayMinSize(0);
  type.setMember(test::makeStruct("", std::move(count), std::move(list)));
  JsonConverter converter(&manager, type, Endianess::Big, false);
  base::Buffer raw;
  EXPECT_TRUE(converter.jsonToRaw(test::parsed(R"({"n":0,"list":[5,6,7]})"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "03050607");
  json::Value value;
  EXPECT_TRUE(converter.rawToJson(raw, value));
  EXPECT_EQ(value.stringify(0), R"({"n":16.0,"list":[5,6,7]})");
}

TEST(DynamicArrays, AreNotCountedByANumberWithoutABaseType) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  manager.setAllowMissingFields(true);
  NvType type;
  type.setMember(test::makeStruct("", test::makeScalar("n", NcType::None), test::makeScalar("b")));
  JsonConverter converter(&manager, type, Endianess::Big, false);
  base::Buffer raw;
  EXPECT_TRUE(converter.jsonToRaw(test::parsed(R"({"n":9,"b":7})"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "07");
}

TEST(DynamicArrays, AreCountedInAUnionByWhatItGives) {
  OwnTypes types(structure({{"u", unionOf({{"counted", kCounted}, {"byte", bits(0, 8)}})}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(encode(types, R"({"u":{"counted":{"n":4,"list":[1],"after":34}}})"), "01000122");
}

TEST(DynamicArrays, WriteTheCountInTheOrderOfTheValue) {
  OwnTypes types(structure(
      {{"n", scalar("unsigned long")}, {"list", scalar("unsigned long"), dynamicArray(0, 4)}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(encode(types, R"({"list":[1,2]})", Endianess::Little), "020001000200");
}

TEST(DynamicArrays, ReadBackWhatWasWritten) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"encoding", enumeration("char_encoding_t")},
                            {"text", scalar("unsigned long"), dynamicArray(0, 4)}}));
  types.manager().setUseDynamicArrays(true);
  const std::string json = R"({"n":2,"encoding":"CE_16","text":"AB"})";
  EXPECT_EQ(encode(types, json), "020100410042");
  EXPECT_EQ(types.decode("020100410042"), json);
}

// The encoding stands between the count and the text. Where it is not given or is no name, the
// count is made with what the buffer holds.
TEST(DynamicArrays, CountTextByTheEncodingThatIsInTheBuffer) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"encoding", enumeration("char_encoding_t")},
                            {"text", scalar("unsigned char"), dynamicArray(0, 8)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(patch(types, "0001", R"({"n":0,"text":"ABC"})"), "0601004100420043");
  EXPECT_EQ(patch(types, "0000", R"({"n":0,"text":"ABC"})"), "0300414243");
  EXPECT_EQ(patch(types, "0001", R"({"n":0,"encoding":"CE_8","text":"ABC"})"), "0300414243");
  EXPECT_EQ(encodeOver(types, "0001", R"({"encoding":"no name","text":"ABC"})").raw,
            "failed: 0601");
}

TEST(DynamicArrays, CountTextByTheEncodingBehindAnotherEnumeration) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"power", enumeration("power_t")},
                            {"encoding", enumeration("char_encoding_t")},
                            {"text", scalar("unsigned char"), dynamicArray(0, 8)}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(patch(types, "000001", R"({"n":0,"text":"ABC"})"), "060001004100420043");
  EXPECT_EQ(patch(types, "000100", R"({"n":0,"text":"ABC"})"), "030100414243");
}

TEST(DynamicArrays, AreCountedBehindAReference) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              test::nvt("_bytes", scalar("unsigned short", dynamicArray(0, 4))) +
                  test::nvt("_x", structure({{"n", scalar("unsigned short")},
                                             {"list", reference("SNVT_bytes")},
                                             {"after", scalar("unsigned short")}})));
  TypeManager manager = files.makeManager();
  manager.setUseDynamicArrays(true);
  base::Buffer raw;
  EXPECT_TRUE(manager.jsonToRaw(TypeId(ResourceType::Nv, "", "_x"),
                                test::parsed(R"({"n":4,"list":[5,6],"after":34})"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "02050622");

  // Where the array is not given, as many elements as it has room for.
  const LogCapture quiet(Logger::Error);
  raw.setSize(0);
  EXPECT_TRUE(manager.jsonToRaw(TypeId(ResourceType::Nv, "", "_x"),
                                test::parsed(R"({"n":200,"after":34})"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "C80000000022");
}

TEST(DynamicArrays, NeedACountOfTheirOwnStructure) {
  OwnTypes types(
      structure({{"n", scalar("unsigned short")},
                 {"s", structure({{"list", scalar("unsigned short"), dynamicArray(0, 4)}})}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(encode(types, R"({"n":2,"s":{"list":[5,6]}})"), "020506");
}

}  // namespace
}  // namespace zavri::korvat
