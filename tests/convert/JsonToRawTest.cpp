#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using test::arraySize;
using test::bits;
using test::encode;
using test::Encoded;
using test::encodeOver;
using test::enumeration;
using test::floating;
using test::invalid;
using test::LogCapture;
using test::OwnTypes;
using test::parsed;
using test::problemsOf;
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
  std::string json;
  std::string raw;
};

const std::vector<KindCase> kKinds = {
    {"UnsignedShort", scalar("unsigned short"), "254", "FE"},
    {"SignedLong", scalar("signed long"), "-2", "FFFE"},
    {"UnsignedQuad", scalar("unsigned quad"), "4294967294", "FFFFFFFE"},
    {"ScaledScalar", scalar("signed long", scaling(1, -2, 0)), "-2.0", "FF38"},
    {"Float", floating("float"), "1.5", "3FC00000"},
    {"Double", floating("double float"), "-1.5", "BFF8000000000000"},
    {"WholeByteOfBits", bits(0, 8), "254", "FE"},
    {"LastBitsOfAByte", bits(5, 3), "5", "05"},
    {"EnumeratorByName", enumeration("power_t"), R"("PWR_ON")", "01"},
    {"EnumeratorByNumber", enumeration("power_t"), "1", "01"},
    {"EnumeratorByText", enumeration("power_t"), R"("1")", "01"},
    {"Structure", structure({{"a", scalar("unsigned short")}, {"b", scalar("signed long")}}),
     R"({"b":-2,"a":1})", "01FFFE"},
    {"EmptyStructure", structure({}), "{}", ""},
    {"StructureInStructure",
     structure({{"outer", structure({{"inner", scalar("unsigned short")}})}}),
     R"({"outer":{"inner":5}})", "05"},
    {"Union", unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}),
     R"({"word":258})", "0102"},
    {"ShortAlternative",
     unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}),
     R"({"byte":7})", "0700"},
    {"ReferenceToScalar", reference("SNVT_word"), "258", "0102"},
    {"ReferenceToScaledScalar", reference("SNVT_half"), "100.0", "C8"},
    {"ReferenceToFloat", reference("SNVT_ratio"), "2.5", "40200000"},
    {"ReferenceToEnumeration", reference("SNVT_power"), R"("PWR_OFF")", "00"},
    {"ReferenceToBits", reference("SNVT_low"), "12", "0C"},
    {"ReferenceToStructure", reference("SNVT_pair"), R"({"a":1,"b":-1})", "01FF"},
    {"ReferenceToUnion", reference("SNVT_either"), R"({"word":258})", "0102"},
    {"ReferenceToArray", reference("SNVT_list"), "[1,2,3]", "010203"},
    {"ReferenceToText", reference("SNVT_text"), R"("AB")", "41420000"},
    {"ReferenceToArrayOfStructures", reference("SNVT_pairs"), R"([{"a":1},{"a":2}])", "0102"},
    {"ReferenceToReference", reference("SNVT_alias"), R"({"a":1,"b":-1})", "01FF"},
    {"ReferenceToReferenceToScalar", reference("SNVT_word_alias"), "258", "0102"},
};

const std::vector<KindCase> kArrayKinds = {
    {"ArrayOfScalars", scalar("signed long", arraySize(2)), "[1,-1]", "0001FFFF"},
    {"ArrayOfOne", scalar("unsigned short", arraySize(1)), "[7]", "07"},
    {"ArrayOfFloats", floating("float", arraySize(2)), "[1.0,-2]", "3F800000C0000000"},
    {"ArrayOfEnumerations", enumeration("power_t", arraySize(3)), R"(["PWR_OFF",1,"-1"])",
     "0001FF"},
    {"ArrayOfBytesOfBits", bits(0, 8, arraySize(2)), "[1,255]", "01FF"},
    {"ArrayOfStructures",
     structure({{"a", scalar("unsigned short")}, {"b", scalar("unsigned short")}}, arraySize(2)),
     R"([{"a":1,"b":2},{"a":3,"b":4}])", "01020304"},
    {"ArrayOfUnions",
     unionOf({{"byte", scalar("unsigned short")}, {"word", scalar("unsigned long")}}, arraySize(2)),
     R"([{"byte":1},{"word":772}])", "01000304"},
    {"ArrayInArray", structure({{"list", scalar("unsigned short", arraySize(2))}}, arraySize(2)),
     R"([{"list":[1,2]},{"list":[3,4]}])", "01020304"},
    {"UnsignedCharacters", scalar("unsigned char", arraySize(4)), R"("ABCD")", "41424344"},
    {"SignedCharacters", scalar("signed char", arraySize(4)), R"("A")", "41000000"},
};

class JsonToRawAnyKind : public testing::TestWithParam<KindCase> {};

TEST_P(JsonToRawAnyKind, IsReadFromTheNodeOfTheCallerAsTheRoot) {
  const KindCase& c = GetParam();
  OwnTypes types(c.xml);
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", c.json);
  EXPECT_EQ(encoded.raw, c.raw);
  EXPECT_EQ(encoded.problems, Lines());
  EXPECT_EQ(log.texts(), Lines());
}

TEST_P(JsonToRawAnyKind, IsReadFromAStructureUnderItsName) {
  const KindCase& c = GetParam();
  OwnTypes types(structure(
      {{"before", scalar("unsigned short")}, {"it", c.xml}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(encode(types, R"({"after":34,"before":17,"it":)" + c.json + "}"), "11" + c.raw + "22");
}

TEST_P(JsonToRawAnyKind, IsReadFromAStructureInsideAnArrayOfStructures) {
  const KindCase& c = GetParam();
  OwnTypes types(structure({{"it", c.xml}, {"after", scalar("unsigned short")}}, arraySize(2)));
  EXPECT_EQ(
      encode(types, R"([{"it":)" + c.json + R"(,"after":1},{"it":)" + c.json + R"(,"after":2}])"),
      c.raw + "01" + c.raw + "02");
}

TEST_P(JsonToRawAnyKind, IsReadFromAUnion) {
  const KindCase& c = GetParam();
  OwnTypes types(structure({{"choice", unionOf({{"none", structure({})}, {"it", c.xml}})},
                            {"after", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"choice":{"it":)" + c.json + R"(},"after":34})"), c.raw + "22");
  EXPECT_EQ(log.texts(), Lines());
}

TEST_P(JsonToRawAnyKind, IsPassedOverInAUnionThatDoesNotGiveIt) {
  const KindCase& c = GetParam();
  OwnTypes types(
      structure({{"choice", unionOf({{"it", c.xml}, {"byte", scalar("unsigned short")}})},
                 {"after", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  const std::string rest = c.raw.size() < 2 ? "" : std::string(c.raw.size() - 2, '0');
  EXPECT_EQ(encode(types, R"({"choice":{"byte":17},"after":34})"), "11" + rest + "22");
  EXPECT_EQ(log.texts(), Lines());
}

INSTANTIATE_TEST_SUITE_P(Single, JsonToRawAnyKind, testing::ValuesIn(kKinds),
                         [](const auto& info) { return info.param.name; });
INSTANTIATE_TEST_SUITE_P(Arrays, JsonToRawAnyKind, testing::ValuesIn(kArrayKinds),
                         [](const auto& info) { return info.param.name; });

class JsonToRawSingleKind : public testing::TestWithParam<KindCase> {};

TEST_P(JsonToRawSingleKind, IsReadFromAnArray) {
  const KindCase& c = GetParam();
  OwnTypes types(structure({{"list", c.xml, arraySize(2)}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(encode(types, R"({"list":[)" + c.json + "," + c.json + R"(],"after":34})"),
            c.raw + c.raw + "22");
}

TEST_P(JsonToRawSingleKind, IsReadFromAnArrayInAUnion) {
  const KindCase& c = GetParam();
  OwnTypes types(structure(
      {{"choice", unionOf({{"list", c.xml, arraySize(2)}})}, {"after", scalar("unsigned short")}}));
  EXPECT_EQ(encode(types, R"({"choice":{"list":[)" + c.json + "," + c.json + R"(]},"after":34})"),
            c.raw + c.raw + "22");
}

INSTANTIATE_TEST_SUITE_P(Kinds, JsonToRawSingleKind, testing::ValuesIn(kKinds),
                         [](const auto& info) { return info.param.name; });

TEST(JsonToRaw, KeepsTheElementsOfAnArrayOfReferencesApart) {
  OwnTypes types(structure({{"words", reference("SNVT_word"), arraySize(2)},
                            {"pairs", reference("SNVT_pair"), arraySize(2)},
                            {"lists", reference("SNVT_list"), arraySize(2)},
                            {"texts", reference("SNVT_text"), arraySize(2)}}));
  EXPECT_EQ(encode(types, R"({"words":[1,2],"pairs":[{"a":1,"b":2},{"a":3,"b":4}],)"
                          R"("lists":[[1,2,3],[4,5,6]],"texts":["A","BC"]})"),
            "00010002010203040102030405064100000042430000");
}

TEST(JsonToRaw, WritesInTheOrderAskedFor) {
  OwnTypes types(structure({{"w", scalar("unsigned long")}, {"f", floating("float")}}));
  EXPECT_EQ(encode(types, R"({"w":258,"f":1.5})", Endianess::Little), "02010000C03F");
}

TEST(JsonToRaw, FillsBitFieldsThatShareAByte) {
  OwnTypes types(structure({{"a", bits(0, 3)},
                            {"b", signedBits(3, 5)},
                            {"c", bits(2, 2)},
                            {"d", scalar("unsigned short")}}));
  // 101 11111, 00 10 0000
  EXPECT_EQ(encode(types, R"({"a":5,"b":-1,"c":2,"d":7})"), "BF2007");
}

// --- The buffer ---

TEST(JsonToRaw, GrowsTheBufferToTheWholeValue) {
  OwnTypes types(structure({{"w", scalar("unsigned long")}, {"b", bits(0, 3)}}));
  EXPECT_EQ(encodeOver(types, "FF", R"({"w":258,"b":1})").raw, "010220");
}

TEST(JsonToRaw, KeepsWhatNoMemberCovers) {
  OwnTypes types(structure({{"a", bits(1, 3)}, {"b", scalar("unsigned short")}}));
  // 1 000 1111
  EXPECT_EQ(encodeOver(types, "FFFFFFFF", R"({"a":0,"b":1})").raw, "8F01FFFF");
}

TEST(JsonToRaw, GivesMembersThatMayBeMissingTheirPlace) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}, {"b", scalar("unsigned quad")}}));
  types.manager().setAllowMissingFields(true);
  EXPECT_EQ(encode(types, R"({"a":1})"), "0100000000");
  EXPECT_EQ(encodeOver(types, "000000000005", R"({"a":1})").raw, "010000000005");
}

TEST(JsonToRaw, StopsAtARefusedMemberWithWhatItWroteBefore) {
  OwnTypes types(structure({{"a", scalar("unsigned short")},
                            {"b", scalar("unsigned short")},
                            {"c", scalar("unsigned short")}}));
  types.manager().setAllowCuttingToMinMax(false);
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", R"({"a":1,"b":256,"c":3})");
  EXPECT_EQ(encoded.raw, "failed: 01");
  EXPECT_EQ(encoded.problems, Lines{"b: 256 is out of range"});
  EXPECT_EQ(log.texts(),
            Lines{"[korvat/setRawValue] Integer overflow with value: 256 (int: 256)\n"});
}

TEST(JsonToRaw, FailsForATypeWithoutALayout) {
  OwnTypes types("");
  EXPECT_EQ(encode(types, "1"), "failed: ");
}

TEST(JsonToRaw, FailsForReferencesThatLeadNowhere) {
  for (const char* name : {"SNVT_missing", "SNVT_dangling", "SNVT_chicken"}) {
    OwnTypes types(structure({{"a", scalar("unsigned short")}, {"r", reference(name)}}));
    const LogCapture log(Logger::Warning);
    EXPECT_EQ(encode(types, R"({"a":1,"r":1})"), "failed: 01") << name;
  }
}

TEST(JsonToRaw, GivesUpOnAStructureInsideItself) {
  OwnTypes types(reference("SNVT_endless"));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, "{}"), "failed: ");
  ASSERT_FALSE(log.lines().empty());
  EXPECT_EQ(log.texts().back(), "[korvat] walk given up, members nested deeper than 256: next\n");
}

TEST(JsonToRaw, GivesUpOnTooManyVisits) {
  const std::string list = structure({}, arraySize(3000));
  OwnTypes types(structure({{"list", structure({{"inner", list}}, arraySize(3000))}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, "{}"), "failed: ");
  ASSERT_FALSE(log.lines().empty());
  EXPECT_EQ(log.texts().back(), "[korvat] walk given up after 4000000 visits: list\n");
}

// --- What is missing, undefined, or of another kind ---

TEST(JsonToRaw, RefusesAMissingScalarUnlessAllowed) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}, {"b", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  const Encoded refused = encodeOver(types, "", R"({"b":2})");
  EXPECT_EQ(refused.raw, "failed: ");
  EXPECT_EQ(refused.problems, Lines{"a: a number is missing"});
  types.manager().setAllowMissingFields(true);
  const Encoded forgiven = encodeOver(types, "A5", R"({"b":2})");
  EXPECT_EQ(forgiven.raw, "A502");
  EXPECT_EQ(forgiven.problems, Lines());
  EXPECT_EQ(log.texts(), (Lines{"[korvat/setRawValue] Not a numeric value: null\n",
                                "[korvat/setRawValue] Not a numeric value: null\n"}));
}

TEST(JsonToRaw, ForgivesAnyRefusedScalarWhenFieldsMayBeMissing) {
  OwnTypes types(structure({{"a", scalar("unsigned short", test::tag("max", "5"))},
                            {"b", scalar("unsigned short")},
                            {"c", scalar("unsigned short")}}));
  types.manager().setAllowMissingFields(true);
  types.manager().setAllowCuttingToMinMax(false);
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "A5A5A5", R"({"a":256,"b":"x","c":3})");
  EXPECT_EQ(encoded.raw, "A5A503");
  EXPECT_EQ(encoded.problems, (Lines{"a: 256 is out of range", "b: not a number: \"x\""}));
}

TEST(JsonToRaw, ForgivesOnlyScalars) {
  for (const std::string& xml : {floating("float"), bits(0, 8), enumeration("power_t")}) {
    OwnTypes types(structure({{"it", xml}}));
    types.manager().setAllowMissingFields(true);
    const LogCapture log(Logger::Warning);
    EXPECT_EQ(encode(types, "{}"), "failed: ") << xml;
  }
}

TEST(JsonToRaw, RefusesAMissingTextUnlessAllowed) {
  OwnTypes types(
      structure({{"t", scalar("unsigned char", arraySize(2))}, {"b", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"b":2})"), "failed: ");
  EXPECT_EQ(problemsOf(types, R"({"b":2})"), Lines{"t: a text is missing"});
  types.manager().setAllowMissingFields(true);
  EXPECT_EQ(encode(types, R"({"b":2})"), "000002");
  EXPECT_EQ(log.texts().back(), "[JsonConverter::getString] expected string, found: null\n");
}

TEST(JsonToRaw, RefusesUndefinedMembersUnlessAllowed) {
  OwnTypes types(structure(
      {{"a", scalar("unsigned short")}, {"s", structure({{"b", scalar("unsigned short")}})}}));
  const std::string json = R"({"a":1,"s":{"b":2,"x":3}})";
  const Encoded refused = encodeOver(types, "", json);
  EXPECT_EQ(refused.raw, "failed: 01");
  EXPECT_EQ(refused.problems, Lines{"s: unknown member 'x'"});
  EXPECT_EQ(problemsOf(types, R"({"a":1,"B":2})"), Lines{": unknown member 'B'"});
  types.manager().setAllowUndefinedFields(true);
  EXPECT_EQ(encode(types, json), "0102");
}

TEST(JsonToRaw, RefusesUndefinedAlternatives) {
  OwnTypes types(reference("SNVT_either"));
  EXPECT_EQ(encode(types, R"({"bite":1})"), "failed: ");
  types.manager().setAllowUndefinedFields(true);
  EXPECT_EQ(encode(types, R"({"bite":1})"), "0000");
}

TEST(JsonToRaw, ReportsAMissingStructureAndGoesOn) {
  OwnTypes types(structure({{"s", structure({{"a", scalar("unsigned short")},
                                             {"list", scalar("unsigned short", arraySize(2))}})},
                            {"b", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", R"({"b":2})");
  EXPECT_EQ(encoded.raw, "00000002");
  EXPECT_EQ(encoded.problems, Lines{"s: an object is missing"});
  EXPECT_EQ(log.texts(), Lines{"[JsonConverter::toRaw] expected object\n"});
}

TEST(JsonToRaw, ReportsWhatIsNoObject) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}}));
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", "5");
  EXPECT_EQ(encoded.raw, "failed: ");
  EXPECT_EQ(encoded.problems, (Lines{": expected an object, found: 5", "a: a number is missing"}));
  EXPECT_EQ(log.texts(), (Lines{"[JsonConverter::toRaw] expected object\n",
                                "[korvat/setRawValue] Not a numeric value: null\n"}));
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
}

TEST(JsonToRaw, SaysNothingOfAnAlternativeThatIsNoObject) {
  OwnTypes types(unionOf({{"s", structure({})}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"s":5})"), "");
  EXPECT_EQ(log.texts(), Lines());
}

// --- Arrays ---

TEST(JsonToRaw, RefusesTooFewElementsUnlessFieldsMayBeMissing) {
  OwnTypes types(scalar("unsigned short", arraySize(3)));
  const LogCapture log(Logger::Warning);
  const Encoded encoded = encodeOver(types, "", "[1,2]");
  EXPECT_EQ(encoded.raw, "failed: 0102");
  EXPECT_EQ(encoded.problems, Lines{"[2]: a number is missing"});
  types.manager().setAllowMissingFields(true);
  EXPECT_EQ(encode(types, "[1,2]"), "010200");
}

TEST(JsonToRaw, ReportsElementsPastTheEnd) {
  OwnTypes types(structure({{"list", scalar("unsigned short", arraySize(2))}}));
  const Encoded encoded = encodeOver(types, "", R"({"list":[1,2,3]})");
  EXPECT_EQ(encoded.raw, "0102");
  EXPECT_EQ(encoded.problems, Lines{"list: 3 elements given, at most 2 expected"});
}

TEST(JsonToRaw, ReportsWhatIsNoArray) {
  OwnTypes types(structure({{"list", scalar("unsigned short", arraySize(2))}}));
  const LogCapture log(Logger::Warning);
  const Encoded wrong = encodeOver(types, "", R"({"list":7})");
  EXPECT_EQ(wrong.raw, "failed: ");
  EXPECT_EQ(wrong.problems,
            (Lines{"list: expected an array, found: 7", "list[0]: a number is missing"}));
  EXPECT_EQ(log.texts(), (Lines{"[JsonConverter::getArray] expected array\n",
                                "[korvat/setRawValue] Not a numeric value: null\n"}));
  const Encoded missing = encodeOver(types, "", "{}");
  EXPECT_EQ(missing.raw, "0000");
  EXPECT_EQ(missing.problems, Lines{"list: an array is missing"});
}

TEST(JsonToRaw, TellsThePathOfAnElement) {
  OwnTypes types(structure(
      {{"rows", structure({{"cells", enumeration("power_t"), arraySize(2)}}), arraySize(2)}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(problemsOf(types, R"({"rows":[{"cells":[0,1]},{"cells":[0,"PWR_OF"]}]})"),
            Lines{R"(rows[1].cells[1]: "PWR_OF" is neither a name nor a number of power_t)"});
}

TEST(JsonToRaw, KeepsNoMoreProblemsThanItsLimit) {
  OwnTypes types(structure({}, arraySize(30)));
  const LogCapture log(Logger::Warning);
  json::Value numbers = parsed("[]");
  for (int i = 0; i < 30; ++i) numbers[i] = json::Value(i);
  const Encoded encoded = encodeOver(types, "", numbers.stringify());
  ASSERT_EQ(encoded.problems.size(), 20u);
  EXPECT_EQ(encoded.problems[19], "[19]: expected an object, found: 19");
}

TEST(JsonToRaw, ForgetsTheProblemsOfTheConversionBefore) {
  OwnTypes types(scalar("unsigned short"));
  const LogCapture log(Logger::Warning);
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  EXPECT_FALSE(converter.jsonToRaw(parsed("null"), raw));
  EXPECT_EQ(converter.getProblems().size(), 1u);
  EXPECT_TRUE(converter.jsonToRaw(parsed("1"), raw));
  EXPECT_TRUE(converter.getProblems().empty());
}

// --- The keyword ---

TEST(JsonToRaw, TakesTheInvalidKeywordWhenSupported) {
  OwnTypes types(structure({{"a", scalar("unsigned long", invalid("65535"))}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"a":"invalid"})"), "failed: ");
  types.manager().setSupportInvalidKeyword(true);
  EXPECT_EQ(encode(types, R"({"a":"invalid"})"), "FFFF");
}

TEST(JsonToRaw, WritesNothingForTheKeywordWithoutAnInvalidValue) {
  OwnTypes types(structure({{"a", scalar("unsigned long")}}));
  types.manager().setSupportInvalidKeyword(true);
  EXPECT_EQ(encodeOver(types, "A5B6", R"({"a":"invalid"})").raw, "failed: A5B6");
}

// --- The callbacks ---

TEST(JsonToRaw, EndsTheWalkForAnEmptyStack) {
  OwnTypes types(scalar("unsigned short"));
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  Member::Context context(&types.manager(), raw, false);
  JsonConverter::ConstStack stack;
  const LogCapture log;
  EXPECT_FALSE(converter.toRaw(context, *test::makeScalar("a"), raw, stack));
  EXPECT_FALSE(context.hasFailed);
  EXPECT_FALSE(converter.toRawStructEnd(context, *test::makeStruct("s"), raw, stack));
  EXPECT_TRUE(context.hasFailed);
  EXPECT_EQ(log.texts(), Lines());
}

TEST(JsonToRaw, EndsTheWalkOnceItHasFailed) {
  OwnTypes types(scalar("unsigned short"));
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  Member::Context context(&types.manager(), raw, false);
  context.hasFailed = true;
  const json::Value value = parsed("1");
  JsonConverter::ConstStack stack{{nullptr, -1, &value}};
  EXPECT_FALSE(converter.toRaw(context, *test::makeScalar("a"), raw, stack));
  EXPECT_EQ(raw.getSize(), 0u);
}

TEST(JsonToRaw, ClosesOnlyStructuresAndUnions) {
  OwnTypes types(scalar("unsigned short"));
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  Member::Context context(&types.manager(), raw, false);
  const json::Value value;
  JsonConverter::ConstStack stack{{nullptr, -1, &value}};
  EXPECT_TRUE(converter.toRawStructEnd(context, *test::makeStruct("s"), raw, stack));
  EXPECT_FALSE(converter.toRawStructEnd(context, *test::makeScalar("a"), raw, stack));
  EXPECT_TRUE(context.hasFailed);
}

TEST(JsonToRaw, EndsTheWalkAtAMemberOfNoKind) {
  OwnTypes types(scalar("unsigned short"));
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  Member::Context context(&types.manager(), raw, false);
  const json::Value value = parsed("1");
  JsonConverter::ConstStack stack{{nullptr, -1, &value}};
  EXPECT_FALSE(converter.toRaw(context, test::OddMember(0), raw, stack));
  EXPECT_EQ(raw.getSize(), 0u);
}

TEST(JsonToRaw, FindsNothingForAMemberWithoutAName) {
  OwnTypes types(structure({{"", scalar("unsigned short")}, {"b", scalar("unsigned short")}}));
  const LogCapture quiet(Logger::Error);
  EXPECT_EQ(problemsOf(types, R"({"b":7})"), Lines{": a number is missing"});
  types.manager().setAllowMissingFields(true);
  EXPECT_EQ(encodeOver(types, "0102", R"({"b":7})").raw, "0107");
}

TEST(JsonToRaw, TakesAUnionThatNobodyEnteredForAnEmptyOne) {
  OwnTypes types(scalar("unsigned short"));
  JsonConverter converter(&types.manager(), test::typeOf(types), Endianess::Big, false);
  Buffer raw;
  Member::Context context(&types.manager(), raw, false);
  const json::Value value = parsed(R"("0102")");
  JsonConverter::ConstStack stack{{nullptr, -1, &value}};
  EXPECT_TRUE(converter.toRawStructEnd(context, *test::makeUnion("u"), raw, stack));
  types.manager().setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);
  const LogCapture quiet(Logger::Error);
  EXPECT_TRUE(converter.toRawStructEnd(context, *test::makeUnion("u"), raw, stack));
  EXPECT_EQ(raw.getSize(), 0u);
}

TEST(JsonToRaw, TracesItsSteps) {
  OwnTypes types(structure({{"a", scalar("unsigned short")}, {"e", enumeration("power_t")}}));
  static_cast<void>(encode(types, R"({"a":1,"e":1})"));  // loads what it needs
  const LogCapture log;
  EXPECT_EQ(encode(types, R"({"a":1,"e":1})"), "0101");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{"[JsonConverter::toRaw] stack-size=1 depth=0 Aggregate\n",
                   "[JsonConverter::toRaw] stack-size=1\n",
                   "[JsonConverter::toRaw] stack-size=1 depth=1 Scalar\n",
                   "[JsonConverter::toRaw] stack-size=1\n",
                   "[JsonConverter::toRaw] stack-size=2 depth=1 Enum\n",
                   "[JsonConverter::toRaw] stack-size=1\n",
                   "[JsonConverter::toRawStructEnd] stack-size=2 depth=0\n"}));
}

// --- The manager ---

TEST(JsonToRaw, IsReachedThroughTheManager) {
  OwnTypes types(scalar("unsigned long"));
  TypeManager& manager = types.manager();
  const TypeId id(ResourceType::Nv, "", "_x");
  Buffer raw;
  EXPECT_TRUE(manager.jsonToRaw(id, parsed("258"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "0102");
  EXPECT_TRUE(manager.jsonToRaw(id, parsed("258"), raw, Endianess::Little, false));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "0201");
  manager.setNetworkEndianess(Endianess::Little);
  EXPECT_TRUE(manager.jsonToRaw(id, parsed("1"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "0100");
}

TEST(JsonToRaw, SaysNothingOfAnUnknownType) {
  OwnTypes types(scalar("unsigned long"));
  Buffer raw = test::bytesOf("A5");
  const LogCapture log(Logger::Warning);
  EXPECT_FALSE(types.manager().jsonToRaw(TypeId(ResourceType::Nv, "", "_none"), parsed("1"), raw));
  EXPECT_FALSE(
      types.manager().jsonToRaw(TypeId(ResourceType::Enum, "", "power_t"), parsed("1"), raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), "A5");
  EXPECT_EQ(log.texts(), Lines());
}

}  // namespace
}  // namespace zavri::korvat
