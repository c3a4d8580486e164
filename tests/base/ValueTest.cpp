#include "korvat/base/Value.h"

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::json {
namespace {

using namespace std::string_literals;

constexpr float kNanSingle = std::numeric_limits<float>::quiet_NaN();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::uint64_t kMaxUnsigned64 = std::numeric_limits<std::uint64_t>::max();

template <typename T>
Value makeNumber(T number) {
  Value value;
  value.setValue(number);
  return value;
}

Value makeBoolean(bool boolean) {
  Value value;
  value.setBoolean(boolean);
  return value;
}

Value makeContainer(JsonType type) {
  Value value;
  value.switchType(type);
  return value;
}

// The document that `text` stands for; a failure and null when it stands for none.
Value parsed(std::string_view text) {
  Value value;
  std::string error;
  EXPECT_TRUE(Value::parse(text, value, error)) << text.substr(0, 200) << ": " << error;
  return value;
}

std::string nested(std::size_t depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonType, HasFixedNumbers) {
  EXPECT_EQ(static_cast<int>(JsonType::Null), 0);
  EXPECT_EQ(static_cast<int>(JsonType::Boolean), 1);
  EXPECT_EQ(static_cast<int>(JsonType::Number), 2);
  EXPECT_EQ(static_cast<int>(JsonType::String), 3);
  EXPECT_EQ(static_cast<int>(JsonType::Array), 4);
  EXPECT_EQ(static_cast<int>(JsonType::Object), 5);
}

// --- Kinds and conversions ---

struct KindCase {
  std::string name;
  Value value;
  JsonType type;
  NumberType numberType;
  double asDouble;
  std::int32_t asInt32;
  std::int64_t asInt64;
  std::string asString;
};

class ValueKind : public testing::TestWithParam<KindCase> {};

TEST_P(ValueKind, KnowsItsTypeAndConverts) {
  const KindCase& c = GetParam();
  EXPECT_EQ(c.value.getType(), c.type);
  EXPECT_EQ(c.value.getNumberType(), c.numberType);
  EXPECT_EQ(c.value.isNull(), c.type == JsonType::Null);
  EXPECT_EQ(c.value.isNumber(), c.type == JsonType::Number);
  EXPECT_EQ(c.value.isString(), c.type == JsonType::String);
  EXPECT_EQ(c.value.isArray(), c.type == JsonType::Array);
  EXPECT_EQ(c.value.isObject(), c.type == JsonType::Object);
  const bool isFloating = c.numberType == NumberType::Single || c.numberType == NumberType::Double;
  EXPECT_EQ(c.value.isFloating(), isFloating);
  EXPECT_EQ(c.value.isInteger(), c.type == JsonType::Number && !isFloating);
  if (std::isnan(c.asDouble)) {
    EXPECT_TRUE(std::isnan(c.value.asDouble()));
  } else {
    EXPECT_EQ(c.value.asDouble(), c.asDouble);
  }
  EXPECT_EQ(c.value.asInt32(), c.asInt32);
  EXPECT_EQ(c.value.asInt64(), c.asInt64);
  EXPECT_EQ(c.value.asString(), c.asString);
}

constexpr auto kNumber = JsonType::Number;

// clang-format off
const std::vector<KindCase> kKindCases = {
    {"Null", Value(), JsonType::Null, NumberType::None, 0, 0, 0, "null"},
    {"True", makeBoolean(true), JsonType::Boolean, NumberType::None, 1, 1, 1, "true"},
    {"False", makeBoolean(false), JsonType::Boolean, NumberType::None, 0, 0, 0, "false"},
    {"Text", Value("abc"), JsonType::String, NumberType::None, 0, 0, 0, "abc"},
    {"TextObject", Value(std::string("abc")), JsonType::String, NumberType::None, 0, 0, 0, "abc"},
    {"NumberText", Value(" -12.5V"), JsonType::String, NumberType::None, -12.5, -12, -12,
     " -12.5V"},
    {"LargeNumberText", Value("5000000000"), JsonType::String, NumberType::None, 5e9, kMax32,
     5000000000, "5000000000"},
    {"Array", makeContainer(JsonType::Array), JsonType::Array, NumberType::None, 0, 0, 0, "[]"},
    {"Object", makeContainer(JsonType::Object), JsonType::Object, NumberType::None, 0, 0, 0, "{}"},
    {"Int", Value(-5), kNumber, NumberType::Int32, -5, -5, -5, "-5"},
    {"Unsigned", Value(4294967295u), kNumber, NumberType::UInt32, 4294967295.0, kMax32, 4294967295,
     "4294967295"},
    {"Int8", makeNumber(std::int8_t{-128}), kNumber, NumberType::Int8, -128, -128, -128, "-128"},
    {"UInt8", makeNumber(std::uint8_t{255}), kNumber, NumberType::UInt8, 255, 255, 255, "255"},
    {"Int16", makeNumber(std::int16_t{-32768}), kNumber, NumberType::Int16, -32768, -32768, -32768,
     "-32768"},
    {"UInt16", makeNumber(std::uint16_t{65535}), kNumber, NumberType::UInt16, 65535, 65535, 65535,
     "65535"},
    {"Int32", makeNumber(kMin32), kNumber, NumberType::Int32, -2147483648.0, kMin32, kMin32,
     "-2147483648"},
    {"UInt32", makeNumber(std::uint32_t{7}), kNumber, NumberType::UInt32, 7, 7, 7, "7"},
    {"Int64", makeNumber(kMin64), kNumber, NumberType::Int64, -9223372036854775808.0, kMin32,
     kMin64, "-9223372036854775808"},
    {"UInt64", makeNumber(kMaxUnsigned64), kNumber, NumberType::UInt64, 18446744073709551616.0,
     kMax32, kMax64, "18446744073709551615"},
    {"SmallUInt64", makeNumber(std::uint64_t{7}), kNumber, NumberType::UInt64, 7, 7, 7, "7"},
    {"Single", makeNumber(0.1f), kNumber, NumberType::Single, static_cast<double>(0.1f), 0, 0,
     "0.1"},
    {"Double", makeNumber(-2.75), kNumber, NumberType::Double, -2.75, -2, -2, "-2.75"},
    {"DoubleAbove32Bits", makeNumber(3e9), kNumber, NumberType::Double, 3e9, kMax32, 3000000000,
     "3000000000.0"},
    {"DoubleBelow32Bits", makeNumber(-3e9), kNumber, NumberType::Double, -3e9, kMin32, -3000000000,
     "-3000000000.0"},
    {"DoubleAbove64Bits", makeNumber(1e19), kNumber, NumberType::Double, 1e19, kMax32, kMax64,
     "1e+19"},
    {"DoubleJustAbove64Bits", makeNumber(9223372036854775808.0), kNumber, NumberType::Double,
     9223372036854775808.0, kMax32, kMax64, "9.223372036854776e+18"},
    {"DoubleJustBelow64Bits", makeNumber(9223372036854774784.0), kNumber, NumberType::Double,
     9223372036854774784.0, kMax32, 9223372036854774784, "9.223372036854775e+18"},
    {"DoubleBelow64Bits", makeNumber(-1e19), kNumber, NumberType::Double, -1e19, kMin32, kMin64,
     "-1e+19"},
    {"NotANumber", makeNumber(kNan), kNumber, NumberType::Double, kNan, 0, 0, "null"},
    {"Infinity", makeNumber(kInfinity), kNumber, NumberType::Double, kInfinity, kMax32, kMax64,
     "null"},
    {"NegativeInfinity", makeNumber(-kInfinity), kNumber, NumberType::Double, -kInfinity, kMin32,
     kMin64, "null"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Kinds, ValueKind, testing::ValuesIn(kKindCases),
                         [](const auto& info) { return info.param.name; });

// --- Children ---

TEST(Value, BecomesAnObjectByItsFirstMember) {
  Value value = "text";
  value["b"] = 1;
  value["a"]["c"] = "x";
  EXPECT_TRUE(value.isObject());
  EXPECT_EQ(value.getSize(), 2u);
  EXPECT_EQ(value.stringify(), R"({"b":1,"a":{"c":"x"}})");
}

TEST(Value, MakesAMissingMemberNull) {
  Value value;
  value["a"];
  EXPECT_EQ(value.stringify(), R"({"a":null})");
}

TEST(Value, BecomesAnArrayByItsFirstElement) {
  Value value = 5;
  value[2u] = "c";
  value[0] = 1;
  EXPECT_TRUE(value.isArray());
  EXPECT_EQ(value.getNumberType(), NumberType::None);
  EXPECT_EQ(value.stringify(), R"([1,null,"c"])");
  EXPECT_EQ(value.getSize(), 3u);
}

TEST(Value, ChangesBetweenContainers) {
  Value value;
  value["a"] = 1;
  value[0] = 2;
  EXPECT_EQ(value.stringify(), "[2]");
  value["a"] = 3;
  EXPECT_EQ(value.stringify(), R"({"a":3})");
}

TEST(Value, ReadsMissingChildrenAsNull) {
  const Value object = parsed(R"({"a":1})");
  const Value array = parsed("[1]");
  const Value text = "abc";
  EXPECT_TRUE(object["b"].isNull());
  EXPECT_TRUE(object[0].isNull());
  EXPECT_TRUE(array[1].isNull());
  EXPECT_TRUE(array[-1].isNull());
  EXPECT_TRUE(array["a"].isNull());
  EXPECT_TRUE(text["a"][0u]["b"].isNull());
  EXPECT_EQ(object["a"].asInt32(), 1);
  EXPECT_EQ(array[0u].asInt32(), 1);
  EXPECT_EQ(object.stringify(), R"({"a":1})");
}

TEST(Value, CountsElementsAndMembersOnly) {
  EXPECT_EQ(parsed("[1,2,3]").getSize(), 3u);
  EXPECT_EQ(parsed(R"({"a":1,"b":2})").getSize(), 2u);
  EXPECT_EQ(Value("abc").getSize(), 0u);
  EXPECT_EQ(Value(7).getSize(), 0u);
  EXPECT_EQ(Value().getSize(), 0u);
}

TEST(Value, ShowsItsMembersInOrder) {
  const Value value = parsed(R"({"z":1,"a":2,"m":3})");
  std::string order;
  for (const auto& [name, member] : value.getPropertyMap()) order += name + member.asString();
  EXPECT_EQ(order, "z1a2m3");
  EXPECT_TRUE(Value("text").getPropertyMap().empty());
  EXPECT_TRUE(parsed("[1]").getPropertyMap().empty());
}

TEST(Value, KeepsManyMembersInOrder) {
  Value value;
  std::string expected = "{";
  for (int i = 0; i < 1000; ++i) {
    const std::string key = "k" + std::to_string(999 - i);
    value[key] = i;
    expected += (i == 0 ? "\"" : ",\"") + key + "\":" + std::to_string(i);
  }
  EXPECT_EQ(value.stringify(), expected + "}");
  EXPECT_EQ(std::as_const(value)["k0"].asInt32(), 999);
}

// --- Copies and assignment ---

TEST(Value, CopiesDeeply) {
  Value original = parsed(R"({"a":[1,{"b":2}]})");
  Value copy = original;
  copy["a"][1]["b"] = 3;
  EXPECT_EQ(original.stringify(), R"({"a":[1,{"b":2}]})");
  EXPECT_EQ(copy.stringify(), R"({"a":[1,{"b":3}]})");
}

TEST(Value, TakesAPartOfItself) {
  Value object = parsed(R"({"a":{"b":{"c":1}}})");
  object = object["a"];
  EXPECT_EQ(object.stringify(), R"({"b":{"c":1}})");
  object = std::move(object["b"]);
  EXPECT_EQ(object.stringify(), R"({"c":1})");
  object = object["c"];
  EXPECT_EQ(object, Value(1));

  Value array = parsed("[[1,2],3]");
  array = array[0];
  EXPECT_EQ(array.stringify(), "[1,2]");
}

TEST(Value, BecomesAPartOfItself) {
  Value value = parsed(R"({"a":1})");
  value["self"] = value;
  EXPECT_EQ(value.stringify(), R"({"a":1,"self":{"a":1,"self":null}})");
}

TEST(Value, CanBeAssignedToItself) {
  Value value = parsed(R"({"a":[1,"x"]})");
  const Value& same = value;
  value = same;
  EXPECT_EQ(value.stringify(), R"({"a":[1,"x"]})");
}

TEST(Value, TakesItsOwnText) {
  Value value = parsed(R"(["some text that is too long for a short string"])");
  value.setValue(value[0].asString());
  EXPECT_EQ(value.asString(), "some text that is too long for a short string");
}

TEST(Value, ReplacesWhatItWas) {
  Value value = parsed(R"({"a":1})");
  value.setValue(std::uint8_t{3});
  EXPECT_EQ(value.getNumberType(), NumberType::UInt8);
  value.setBoolean(true);
  EXPECT_EQ(value.getType(), JsonType::Boolean);
  EXPECT_FALSE(value.isNumber());
  value.setValue(1.5);
  value.setValue("text");
  EXPECT_FALSE(value.isNumber());
  EXPECT_EQ(value.asString(), "text");
  value.setValue(2);
  value.clear();
  EXPECT_TRUE(value.isNull());
  EXPECT_FALSE(value.isNumber());
}

struct SwitchCase {
  std::string name;
  JsonType type;
  std::string text;
};

class ValueSwitch : public testing::TestWithParam<SwitchCase> {};

TEST_P(ValueSwitch, MakesAnEmptyNodeOfThatKind) {
  for (const char* const before : {"null", "true", "7", R"("x")", "[1]", R"({"a":1})"}) {
    SCOPED_TRACE(before);
    Value value = parsed(before);
    value.switchType(GetParam().type);
    EXPECT_EQ(value.getType(), GetParam().type);
    EXPECT_EQ(value.stringify(), GetParam().text);
  }
}

const std::vector<SwitchCase> kSwitchCases = {
    {"Null", JsonType::Null, "null"},  {"Boolean", JsonType::Boolean, "false"},
    {"Number", JsonType::Number, "0"}, {"String", JsonType::String, "\"\""},
    {"Array", JsonType::Array, "[]"},  {"Object", JsonType::Object, "{}"},
};
INSTANTIATE_TEST_SUITE_P(Kinds, ValueSwitch, testing::ValuesIn(kSwitchCases),
                         [](const auto& info) { return info.param.name; });

// --- JSON text ---

TEST(Value, WritesOneMemberOrElementALine) {
  const Value value = parsed(R"({"a":[1,{"b":null}],"c":{},"d":[],"e":true})");
  EXPECT_EQ(value.stringify(2),
            "{\n"
            "  \"a\": [\n"
            "    1,\n"
            "    {\n"
            "      \"b\": null\n"
            "    }\n"
            "  ],\n"
            "  \"c\": {},\n"
            "  \"d\": [],\n"
            "  \"e\": true\n"
            "}");
  EXPECT_EQ(parsed("[1]").stringify(4), "[\n    1\n]");
  EXPECT_EQ(value.stringify(), R"({"a":[1,{"b":null}],"c":{},"d":[],"e":true})");
}

struct NumberTextCase {
  std::string name;
  Value value;
  std::string text;
};

class ValueNumberText : public testing::TestWithParam<NumberTextCase> {};

TEST_P(ValueNumberText, ShowsKindAndPrecision) {
  EXPECT_EQ(GetParam().value.stringify(), GetParam().text);
}

const std::vector<NumberTextCase> kNumberTextCases = {
    {"DoubleZero", makeNumber(0.0), "0.0"},
    {"DoubleMinusZero", makeNumber(-0.0), "-0.0"},
    {"DoubleIntegral", makeNumber(100.0), "100.0"},
    {"DoubleTenth", makeNumber(0.1), "0.1"},
    {"DoubleOfASingle", makeNumber(static_cast<double>(0.1f)), "0.10000000149011612"},
    {"DoubleSmallestPlain", makeNumber(1e-5), "0.00001"},
    {"DoubleBelowPlain", makeNumber(9e-6), "9e-06"},
    {"DoubleLargestPlain", makeNumber(99999999999999984.0), "99999999999999984.0"},
    {"DoubleAbovePlain", makeNumber(1e17), "1e+17"},
    {"DoubleLarge", makeNumber(-1.25e100), "-1.25e+100"},
    {"SingleTenth", makeNumber(0.1f), "0.1"},
    {"SingleIntegral", makeNumber(-3.0f), "-3.0"},
    {"SingleMinusZero", makeNumber(-0.0f), "-0.0"},
    {"SingleLarge", makeNumber(3.4028235e38f), "3.4028235e+38"},
    {"SingleNotANumber", makeNumber(kNanSingle), "null"},
    {"IntegerZero", Value(0), "0"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, ValueNumberText, testing::ValuesIn(kNumberTextCases),
                         [](const auto& info) { return info.param.name; });

struct StringTextCase {
  std::string name;
  std::string content;
  std::string text;
};

class ValueStringText : public testing::TestWithParam<StringTextCase> {};

TEST_P(ValueStringText, IsEscapedAndValid) {
  const StringTextCase& c = GetParam();
  EXPECT_EQ(Value(c.content).stringify(), "\"" + c.text + "\"");
  Value object;
  object[c.content] = 1;
  EXPECT_EQ(object.stringify(), "{\"" + c.text + "\":1}");
}

const std::vector<StringTextCase> kStringTextCases = {
    {"Empty", "", ""},
    {"Plain", "a/b 'c' ~\x7F", "a/b 'c' ~\x7F"},
    {"QuoteAndBackslash", R"(say "\")", R"(say \"\\\")"},
    {"ShortEscapes", "\b\f\n\r\t", R"(\b\f\n\r\t)"},
    {"OtherControls", "\x01\x0B\x1F", R"(\u0001\u000b\u001f)"},
    {"ZeroByte", "a\0b"s, R"(a\u0000b)"},
    {"Utf8", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", "\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {"Latin1", "\xE4pfel", "\xEF\xBF\xBDpfel"},
    {"Surrogate", "\xED\xA0\x80", "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD"},
    {"CutCharacter", "a\xE2\x82", "a\xEF\xBF\xBD"},
};
INSTANTIATE_TEST_SUITE_P(Strings, ValueStringText, testing::ValuesIn(kStringTextCases),
                         [](const auto& info) { return info.param.name; });

struct ParseCase {
  std::string name;
  std::string text;
  Value value;
};

class ValueParse : public testing::TestWithParam<ParseCase> {};

TEST_P(ValueParse, ReadsTheText) {
  const Value value = parsed(GetParam().text);
  EXPECT_EQ(value.stringify(), GetParam().value.stringify());
  EXPECT_EQ(value.getNumberType(), GetParam().value.getNumberType());
}

const std::vector<ParseCase> kParseCases = {
    {"Null", "null", Value()},
    {"True", " true ", makeBoolean(true)},
    {"False", "\t\r\nfalse\n", makeBoolean(false)},
    {"EmptyText", "\"\"", Value("")},
    {"Zero", "0", makeNumber(std::int64_t{0})},
    {"MinusZeroInteger", "-0", makeNumber(std::int64_t{0})},
    {"Integer", "-17", makeNumber(std::int64_t{-17})},
    {"LargestSigned", "9223372036854775807", makeNumber(kMax64)},
    {"LowestSigned", "-9223372036854775808", makeNumber(kMin64)},
    {"AboveSigned", "9223372036854775808", makeNumber(std::uint64_t{9223372036854775808u})},
    {"LargestUnsigned", "18446744073709551615", makeNumber(kMaxUnsigned64)},
    {"AboveUnsigned", "18446744073709551616", makeNumber(18446744073709551616.0)},
    {"BelowSigned", "-9223372036854775809", makeNumber(-9223372036854775808.0)},
    {"Fraction", "1.5", makeNumber(1.5)},
    {"IntegralFraction", "5.0", makeNumber(5.0)},
    {"MinusZero", "-0.0", makeNumber(-0.0)},
    {"Exponent", "1E2", makeNumber(100.0)},
    {"SignedExponents", "25e-1", makeNumber(2.5)},
    {"PlusExponent", "2.5e+1", makeNumber(25.0)},
    {"LargestDouble", "1.7976931348623157e308", makeNumber(1.7976931348623157e308)},
    {"SmallestDouble", "5e-324", makeNumber(std::numeric_limits<double>::denorm_min())},
    {"TooSmall", "1e-400", makeNumber(0.0)},
    {"FarTooSmall", "1.00000000000000000000e-2147483639", makeNumber(0.0)},
    {"HalfwayBetweenDoubles", "9007199254740993.0", makeNumber(9007199254740992.0)},
    {"JustAboveHalfway", "9007199254740993.00000000000000000000000000000000001",
     makeNumber(9007199254740994.0)},
    {"LongFraction", "0.1000000000000000055511151231257827021181583404541015625", makeNumber(0.1)},
    {"Escapes", R"("\"\\\/\b\f\n\r\t\u0041\u00e4\u20AC")",
     Value("\"\\/\b\f\n\r\tA\xC3\xA4\xE2\x82\xAC")},
    {"SurrogatePair", R"("\ud83d\ude00")", Value("\xF0\x9F\x98\x80")},
    {"EscapedZero", R"("a\u0000b")", Value("a\0b"s)},
    {"Utf8", "\"\xF0\x9F\x98\x80\"", Value("\xF0\x9F\x98\x80")},
    // U+D7FB, whose first byte is that of the surrogates
    {"CharacterBesideSurrogates", "\"\xED\x9F\xBB\"", Value("\xED\x9F\xBB")},
    {"EmptyArray", "[ ]", makeContainer(JsonType::Array)},
    {"EmptyObject", "{ }", makeContainer(JsonType::Object)},
};
INSTANTIATE_TEST_SUITE_P(Texts, ValueParse, testing::ValuesIn(kParseCases),
                         [](const auto& info) { return info.param.name; });

TEST(Value, ReadsContainersInOrder) {
  const Value value = parsed(R"( { "z" : [ 1 , [ ] , { "y" : "x" } ] , "a" : null } )");
  EXPECT_EQ(value.stringify(), R"({"z":[1,[],{"y":"x"}],"a":null})");
}

TEST(Value, LetsTheLaterOfTwoMembersWin) {
  EXPECT_EQ(parsed(R"({"a":[1],"b":2,"a":{"c":3}})").stringify(), R"({"a":{"c":3},"b":2})");
}

struct ErrorCase {
  std::string name;
  std::string text;
  std::string error;
};

class ValueParseError : public testing::TestWithParam<ErrorCase> {};

TEST_P(ValueParseError, IsReportedAndLeavesTheValueAlone) {
  Value value = 42;
  std::string error;
  EXPECT_FALSE(Value::parse(GetParam().text, value, error));
  EXPECT_EQ(error, GetParam().error);
  EXPECT_EQ(value, Value(42));
}

const std::vector<ErrorCase> kErrorCases = {
    {"Empty", "", "The document is empty. (byte 0)"},
    {"Blank", " \n", "The document is empty. (byte 2)"},
    {"TwoValues", "1 2", "The document root must not be followed by other values. (byte 2)"},
    {"ZeroByteBehind", "1\0"s, "The document root must not be followed by other values. (byte 1)"},
    {"TextBehindZeroByte", "[1]\0x"s,
     "The document root must not be followed by other values. (byte 3)"},
    {"OnlyZeroByte", "\0"s, "The document is empty. (byte 0)"},
    {"Word", "nul", "Invalid value. (byte 3)"},
    {"UpperCaseWord", "True", "Invalid value. (byte 0)"},
    {"NotANumber", "NaN", "Invalid value. (byte 0)"},
    {"Infinity", "-Infinity", "Invalid value. (byte 1)"},
    {"SingleQuotes", "'a'", "Invalid value. (byte 0)"},
    {"Plus", "+1", "Invalid value. (byte 0)"},
    {"LeadingZero", "01", "The document root must not be followed by other values. (byte 1)"},
    {"NoFraction", "1.", "Miss fraction part in number. (byte 2)"},
    {"NoExponent", "1e", "Miss exponent in number. (byte 2)"},
    {"TooLarge", "1e309", "Number too big to be stored in double. (byte 0)"},
    {"JustTooLarge", "[1.8e308]", "Number too big to be stored in double. (byte 1)"},
    {"FarTooLarge", "-1e99999999999", "Number too big to be stored in double. (byte 0)"},
    {"TooManyDigits", std::string(400, '9'), "Number too big to be stored in double. (byte 0)"},
    {"CommaAtTheEnd", "[1,]", "Invalid value. (byte 3)"},
    {"NoComma", "[1 2]", "Missing a comma or ']' after an array element. (byte 3)"},
    {"NoColon", R"({"a" 1})", "Missing a colon after a name of object member. (byte 5)"},
    {"NoName", "{1:2}", "Missing a name for object member. (byte 1)"},
    {"WrongBracket", "[1}", "Missing a comma or ']' after an array element. (byte 2)"},
    {"Comment", "/* */ 1", "Invalid value. (byte 0)"},
    {"NoQuote", "\"abc", "Missing a closing quotation mark in string. (byte 4)"},
    {"BadEscape", R"("\x")", "Invalid escape character in string. (byte 1)"},
    {"BadHexDigit", R"("\u00g0")", "Incorrect hex digit after \\u escape in string. (byte 1)"},
    {"LineEndInString", "\"a\nb\"", "Invalid escape character in string. (byte 2)"},
    {"Latin1", "\"\xE4\"", "Invalid encoding in string. (byte 1)"},
    {"Overlong", "\"\xC0\xAF\"", "Invalid encoding in string. (byte 1)"},
    {"RawSurrogate", "\"\xED\xA0\x80\"", "Invalid encoding in string. (byte 1)"},
    {"BrokenKey", "{\"\xFF\":1}", "Invalid encoding in string. (byte 2)"},
    {"LoneHighSurrogate", R"("\ud83d")", "The surrogate pair in string is invalid. (byte 1)"},
    {"HighSurrogateBeforeLetter", R"("\ud83d\u0041")",
     "The surrogate pair in string is invalid. (byte 1)"},
    {"LoneLowSurrogate", R"(["\ude00"])", "The surrogate pair in string is invalid. (byte 9)"},
    {"LoneLowSurrogateInKey", R"({"\ude00":1})",
     "The surrogate pair in string is invalid. (byte 9)"},
    {"TooDeep", nested(201), "Nested too deeply. (byte 200)"},
};
INSTANTIATE_TEST_SUITE_P(Texts, ValueParseError, testing::ValuesIn(kErrorCases),
                         [](const auto& info) { return info.param.name; });

TEST(Value, ReadsTwoHundredLevels) {
  EXPECT_EQ(parsed(nested(Value::kMaxDepth)).stringify(), nested(200));
}

TEST(Value, CountsObjectsAsLevelsToo) {
  std::string text = "1";
  for (int i = 0; i < 100; ++i) text = "[{\"a\":" + text + "}]";
  EXPECT_EQ(parsed(text).stringify(), text);

  Value value;
  std::string error;
  EXPECT_FALSE(Value::parse("[" + text + "]", value, error));
  EXPECT_FALSE(Value::parse("{\"a\":" + text + "}", value, error));
}

TEST(Value, RefusesAMillionLevels) {
  for (const std::string& opening : {"["s, "{\"a\":"s}) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += opening;
    Value value = 42;
    std::string error;
    EXPECT_FALSE(Value::parse(text, value, error));
    EXPECT_EQ(value, Value(42));
  }
}

TEST(Value, RefusesATextCutAtAnyByte) {
  const std::string text =
      R"({"name":"\u00e4\n","list":[1,-2.5e3,true,false,null,{}],"sub":{"x":["y"]}})";
  parsed(text);
  for (std::size_t size = 0; size < text.size(); ++size) {
    SCOPED_TRACE(size);
    // A block of its own, so that a read past its end is found by tools that watch memory.
    const std::vector<char> cut(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(size));
    Value value = 42;
    std::string error;
    EXPECT_FALSE(Value::parse(std::string_view(cut.data(), cut.size()), value, error));
    EXPECT_FALSE(error.empty());
    EXPECT_EQ(value, Value(42));
  }
}

TEST(Value, SurvivesEveryFlippedBit) {
  const std::string text = "{\"a\":[1,-2.5e3,true,null,\"\xC3\xA4\\u00e4\"],\"b\":{}}";
  for (std::size_t bit = 0; bit < 8 * text.size(); ++bit) {
    SCOPED_TRACE(bit);
    std::string damaged = text;
    damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << (bit % 8)));
    Value value;
    std::string error;
    if (!Value::parse(damaged, value, error)) continue;

    const std::string written = value.stringify();
    EXPECT_EQ(parsed(written).stringify(), written);
  }
}

TEST(Value, ReadsTextThatIsNotTerminated) {
  const std::string text = "[12]34";
  EXPECT_EQ(parsed(std::string_view(text).substr(0, 4)).stringify(), "[12]");
  EXPECT_EQ(parsed(std::string_view(text).substr(4, 1)).asInt32(), 3);
}

TEST(Value, ReadsALargeArray) {
  std::string text = "[0";
  for (int i = 1; i < 100000; ++i) text += "," + std::to_string(i);
  text += "]";
  const Value value = parsed(text);
  EXPECT_EQ(value.getSize(), 100000u);
  EXPECT_EQ(value[99999].asInt32(), 99999);
  EXPECT_EQ(value.stringify(), text);
}

TEST(Value, ReadsBackRandomDoubles) {
  constexpr std::uint64_t kSeed = 20240118;
  SCOPED_TRACE(kSeed);
  std::mt19937_64 random(kSeed);
  for (int i = 0; i < 50000; ++i) {
    const auto number = std::bit_cast<double>(random());
    if (!std::isfinite(number)) continue;
    const std::string text = makeNumber(number).stringify();
    const Value copy = parsed(text);
    ASSERT_EQ(copy.getNumberType(), NumberType::Double) << text;
    ASSERT_EQ(std::bit_cast<std::uint64_t>(copy.asDouble()), std::bit_cast<std::uint64_t>(number))
        << text;
  }
}

TEST(Value, ReadsBackRandomSingles) {
  constexpr std::uint32_t kSeed = 20240119;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (int i = 0; i < 50000; ++i) {
    const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isfinite(number)) continue;
    const std::string text = makeNumber(number).stringify();
    const Value copy = parsed(text);
    ASSERT_EQ(copy.getNumberType(), NumberType::Double) << text;
    ASSERT_EQ(std::bit_cast<std::uint32_t>(static_cast<float>(copy.asDouble())),
              std::bit_cast<std::uint32_t>(number))
        << text;
  }
}

// Makes documents of the kinds and widths that reading gives back: Int64, UInt64 and Double.
class RandomDocument {
 public:
  explicit RandomDocument(std::uint64_t seed) : _random(seed) {}

  Value make(unsigned depth) {
    switch (pick(depth == 0 ? 6 : 8)) {
      case 0:
        return Value();
      case 1:
        return makeBoolean(pick(2) == 0);
      case 2:
        return makeNumber(static_cast<std::int64_t>(_random() >> pick(64)));
      case 3:
        return makeNumber(_random() | (std::uint64_t{1} << 63));
      case 4:
        return makeNumber((static_cast<double>(_random()) - 9e18) / std::pow(10.0, pick(40)));
      case 5:
        return Value(makeText());
      case 6:
        return makeArray(depth - 1);
      default:
        return makeObject(depth - 1);
    }
  }

 private:
  unsigned pick(unsigned count) { return static_cast<unsigned>(_random() % count); }

  std::string makeText() {
    static const std::vector<std::string> kPieces = {"a",
                                                     "Z",
                                                     " ",
                                                     "\"",
                                                     "\\",
                                                     "\n",
                                                     "\x01",
                                                     "\0"s,
                                                     "\x7F",
                                                     "\xC3\xA4",
                                                     "\xE2\x82\xAC",
                                                     "\xED\x9F\xBF",
                                                     "\xF0\x9F\x98\x80"};
    std::string text;
    for (unsigned i = pick(12); i > 0; --i) {
      text += kPieces[pick(static_cast<unsigned>(kPieces.size()))];
    }
    return text;
  }

  Value makeArray(unsigned depth) {
    Value array = makeContainer(JsonType::Array);
    const unsigned size = pick(6);
    for (unsigned i = 0; i < size; ++i) array[i] = make(depth);
    return array;
  }

  Value makeObject(unsigned depth) {
    Value object = makeContainer(JsonType::Object);
    for (unsigned i = pick(25); i > 0; --i) object[makeText()] = make(depth);
    return object;
  }

  std::mt19937_64 _random;
};

TEST(Value, ReadsBackRandomDocuments) {
  for (std::uint64_t seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE(seed);
    const Value value = RandomDocument(seed).make(4);
    const std::string text = value.stringify();
    const Value copy = parsed(text);
    ASSERT_EQ(copy, value);
    ASSERT_EQ(copy.stringify(), text);
    ASSERT_EQ(parsed(value.stringify(3)).stringify(), text);
  }
}

// --- Equality ---

TEST(Value, ComparesIntegersByValueWhateverTheirWidth) {
  EXPECT_EQ(makeNumber(std::int8_t{5}), makeNumber(std::uint64_t{5}));
  EXPECT_EQ(makeNumber(std::int8_t{-5}), makeNumber(std::int64_t{-5}));
  EXPECT_NE(makeNumber(std::int64_t{-1}), makeNumber(kMaxUnsigned64));
  EXPECT_NE(makeNumber(kMax64), makeNumber(std::uint64_t{9223372036854775808u}));
}

TEST(Value, TellsSinglesDoublesAndIntegersApart) {
  EXPECT_NE(makeNumber(5.0), Value(5));
  EXPECT_NE(makeNumber(5.0f), Value(5));
  EXPECT_NE(makeNumber(5.0f), makeNumber(5.0));
  EXPECT_EQ(makeNumber(5.0f), makeNumber(5.0f));
  EXPECT_EQ(makeNumber(-0.0), makeNumber(0.0));
  EXPECT_NE(makeNumber(kNan), makeNumber(kNan));
}

TEST(Value, TellsKindsApart) {
  const std::vector<Value> values = {Value(),          makeBoolean(false), Value(0),
                                     Value(""),        parsed("[]"),       parsed("{}"),
                                     makeNumber(0.0f), makeNumber(0.0)};
  for (std::size_t i = 0; i < values.size(); ++i) {
    for (std::size_t j = 0; j < values.size(); ++j) {
      EXPECT_EQ(values[i] == values[j], i == j) << i << ' ' << j;
      EXPECT_EQ(values[i] != values[j], i != j) << i << ' ' << j;
    }
  }
}

TEST(Value, ComparesChildren) {
  EXPECT_EQ(parsed(R"({"a":1,"b":[2]})"), parsed(R"({"b":[2],"a":1})"));
  EXPECT_NE(parsed(R"({"a":1,"b":2})"), parsed(R"({"a":1,"b":3})"));
  EXPECT_NE(parsed(R"({"a":1,"b":2})"), parsed(R"({"a":1,"c":2})"));
  EXPECT_NE(parsed(R"({"a":1})"), parsed(R"({"a":1,"b":2})"));
  EXPECT_NE(parsed(R"({"a":null})"), parsed(R"({"b":null})"));
  EXPECT_EQ(parsed("[1,2]"), parsed("[1,2]"));
  EXPECT_NE(parsed("[1,2]"), parsed("[2,1]"));
  EXPECT_NE(parsed("[1,2]"), parsed("[1]"));
}

}  // namespace
}  // namespace zavri::json
