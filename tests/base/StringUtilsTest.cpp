#include "korvat/base/StringUtils.h"

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::util {
namespace {

struct IntegerCase {
  std::string name;
  std::string text;
  std::int32_t number32;
  bool isWhole32;
  std::int64_t number64;
  bool isWhole64;
};

class StringUtilsInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(StringUtilsInteger, ReadsTheNumberAtTheStart) {
  const IntegerCase& c = GetParam();
  EXPECT_EQ(StringUtils::toInt32(c.text), c.number32);
  EXPECT_EQ(StringUtils::toInt64(c.text), c.number64);

  bool isWhole = !c.isWhole32;
  EXPECT_EQ(StringUtils::toInt32(c.text, isWhole), c.number32);
  EXPECT_EQ(isWhole, c.isWhole32);
  isWhole = !c.isWhole64;
  EXPECT_EQ(StringUtils::toInt64(c.text, isWhole), c.number64);
  EXPECT_EQ(isWhole, c.isWhole64);
}

constexpr std::int32_t kMax32 = 2147483647;
constexpr std::int32_t kMin32 = -kMax32 - 1;
constexpr std::int64_t kMax64 = 9223372036854775807;
constexpr std::int64_t kMin64 = -kMax64 - 1;

const std::vector<IntegerCase> kIntegerCases = {
    {"Empty", "", 0, false, 0, false},
    {"Zero", "0", 0, true, 0, true},
    {"Digits", "1234", 1234, true, 1234, true},
    {"LeadingZeros", "000000000000000000000000000007", 7, true, 7, true},
    {"Minus", "-7", -7, true, -7, true},
    {"MinusZero", "-0", 0, true, 0, true},
    {"Plus", "+7", 7, true, 7, true},
    {"LeadingBlanks", " \t\n\v\f\r7", 7, true, 7, true},
    {"TrailingBlank", "7 ", 7, false, 7, false},
    {"TrailingText", "7abc", 7, false, 7, false},
    {"Point", "7.9", 7, false, 7, false},
    {"Exponent", "1e3", 1, false, 1, false},
    {"Hexadecimal", "0x10", 0, false, 0, false},
    {"Text", "abc", 0, false, 0, false},
    {"OnlyBlanks", "  ", 0, false, 0, false},
    {"OnlyMinus", "-", 0, false, 0, false},
    {"OnlyPlus", "+", 0, false, 0, false},
    {"PlusMinus", "+-7", 0, false, 0, false},
    {"MinusPlus", "-+7", 0, false, 0, false},
    {"MinusBlank", "- 7", 0, false, 0, false},
    {"PlusBlank", "+ 7", 0, false, 0, false},
    {"PlusPlus", "++7", 0, false, 0, false},
    {"ZeroByte", std::string("7\0", 2), 7, false, 7, false},
    {"Max32", "2147483647", kMax32, true, kMax32, true},
    {"AboveMax32", "2147483648", kMax32, false, 2147483648, true},
    {"Min32", "-2147483648", kMin32, true, kMin32, true},
    {"BelowMin32", "-2147483649", kMin32, false, -2147483649, true},
    {"Max64", "9223372036854775807", kMax32, false, kMax64, true},
    {"AboveMax64", "9223372036854775808", kMax32, false, kMax64, false},
    {"Min64", "-9223372036854775808", kMin32, false, kMin64, true},
    {"BelowMin64", "-9223372036854775809", kMin32, false, kMin64, false},
    {"PlusAboveMax64", "+99999999999999999999", kMax32, false, kMax64, false},
    {"ManyDigits", std::string(5000, '9'), kMax32, false, kMax64, false},
};
INSTANTIATE_TEST_SUITE_P(Texts, StringUtilsInteger, testing::ValuesIn(kIntegerCases),
                         [](const auto& info) { return info.param.name; });

struct DoubleCase {
  std::string name;
  std::string text;
  double number;
  bool isWhole;
};

class StringUtilsDouble : public testing::TestWithParam<DoubleCase> {};

TEST_P(StringUtilsDouble, ReadsTheNumberAtTheStart) {
  const DoubleCase& c = GetParam();
  bool isWhole = !c.isWhole;
  const double number = StringUtils::toDouble(c.text, isWhole);
  EXPECT_EQ(number, c.number);
  EXPECT_EQ(std::signbit(number), std::signbit(c.number));
  EXPECT_EQ(isWhole, c.isWhole);
  EXPECT_EQ(StringUtils::toDouble(c.text), c.number);
}

constexpr double kMaxDouble = std::numeric_limits<double>::max();

const std::vector<DoubleCase> kDoubleCases = {
    {"Empty", "", 0, false},
    {"Integer", "42", 42, true},
    {"Fraction", "-0.5", -0.5, true},
    {"NoDigitBeforeThePoint", ".5", 0.5, true},
    {"NoDigitBehindThePoint", "5.", 5, true},
    {"Exponent", "1.5e3", 1500, true},
    {"NegativeExponent", "25E-2", 0.25, true},
    {"PlusExponent", "1e+2", 100, true},
    {"Plus", "+2.5", 2.5, true},
    {"PlusMinus", "+-2.5", 0, false},
    {"LeadingBlanks", " \t\n\v\f\r2.5", 2.5, true},
    {"TrailingBlank", "2.5 ", 2.5, false},
    {"TrailingText", "2.5V", 2.5, false},
    {"SecondPoint", "2.5.1", 2.5, false},
    {"ExponentWithoutDigits", "2e", 2, false},
    {"ExponentWithoutDigitsAfterSign", "2e+", 2, false},
    {"Comma", "2,5", 2, false},
    {"Hexadecimal", "0x10", 0, false},
    {"MinusZero", "-0.0", -0.0, true},
    {"Text", "abc", 0, false},
    {"OnlyPoint", ".", 0, false},
    {"OnlyMinus", "-", 0, false},
    {"Infinity", "inf", 0, false},
    {"NegativeInfinity", "-infinity", 0, false},
    {"NotANumber", "nan", 0, false},
    {"Largest", "1.7976931348623157e308", kMaxDouble, true},
    {"TooLarge", "1e309", kMaxDouble, false},
    {"TooLargeNegative", "-1e309", -kMaxDouble, false},
    {"TooLargeWithText", "1e309x", kMaxDouble, false},
    {"HugeExponent", "1e99999999999999999999", kMaxDouble, false},
    {"ManyDigits", std::string(400, '9'), kMaxDouble, false},
    {"ManyDigitsAndAPoint", std::string(400, '9') + ".5", kMaxDouble, false},
    {"Smallest", "5e-324", 4.9406564584124654e-324, true},
    {"TooSmall", "1e-400", 0, true},
    {"TooSmallNegative", "-1e-400", -0.0, true},
    {"TooSmallWithText", "1e-400x", 0, false},
    {"HugeNegativeExponent", "1e-99999999999999999999", 0, true},
    {"ManyZerosAndADigit", "0." + std::string(400, '0') + "1", 0, true},
    {"ManyZerosUndoneByTheExponent", "0." + std::string(400, '0') + "1e401", 1, true},
    {"ManyDigitsUndoneByTheExponent", "1" + std::string(400, '0') + "e-400", 1, true},
    {"ZeroWithHugeExponent", "0e999999", 0, true},
};
INSTANTIATE_TEST_SUITE_P(Texts, StringUtilsDouble, testing::ValuesIn(kDoubleCases),
                         [](const auto& info) { return info.param.name; });

struct FloatTextCase {
  std::string name;
  double number;
  std::string text;
};

class StringUtilsDoubleText : public testing::TestWithParam<FloatTextCase> {};

TEST_P(StringUtilsDoubleText, IsTheShortest) {
  EXPECT_EQ(StringUtils::toString(GetParam().number), GetParam().text);
}

const std::vector<FloatTextCase> kDoubleTextCases = {
    {"Zero", 0.0, "0"},
    {"MinusZero", -0.0, "-0"},
    {"Integral", 5.0, "5"},
    {"Negative", -5.25, "-5.25"},
    {"Tenth", 0.1, "0.1"},
    {"SumOfTenths", 0.1 + 0.2, "0.30000000000000004"},
    {"Third", 1.0 / 3.0, "0.3333333333333333"},
    {"Million", 1e6, "1000000"},
    {"SmallestPlain", 1e-5, "0.00001"},
    {"BelowSmallestPlain", 9.5e-6, "9.5e-06"},
    {"LargestPlain", 99999999999999984.0, "99999999999999984"},
    {"AboveLargestPlain", 1e17, "1e+17"},
    {"Large", 1e20, "1e+20"},
    {"NegativeLarge", -1.5e20, "-1.5e+20"},
    {"Largest", std::numeric_limits<double>::max(), "1.7976931348623157e+308"},
    {"SmallestDenormal", std::numeric_limits<double>::denorm_min(), "5e-324"},
    {"NotANumber", std::numeric_limits<double>::quiet_NaN(), "nan"},
    {"NegativeNotANumber", -std::numeric_limits<double>::quiet_NaN(), "nan"},
    {"Infinity", std::numeric_limits<double>::infinity(), "inf"},
    {"NegativeInfinity", -std::numeric_limits<double>::infinity(), "-inf"},
};
INSTANTIATE_TEST_SUITE_P(Numbers, StringUtilsDoubleText, testing::ValuesIn(kDoubleTextCases),
                         [](const auto& info) { return info.param.name; });

TEST(StringUtils, WritesSinglesAtTheirOwnPrecision) {
  EXPECT_EQ(StringUtils::toString(0.1f), "0.1");
  EXPECT_EQ(StringUtils::toString(1.0f / 3.0f), "0.33333334");
  EXPECT_EQ(StringUtils::toString(16777216.0f), "16777216");
  EXPECT_EQ(StringUtils::toString(1e-5f), "0.00001");
  EXPECT_EQ(StringUtils::toString(9.5e-6f), "9.5e-06");
  EXPECT_EQ(StringUtils::toString(1e17f), "1e+17");
  EXPECT_EQ(StringUtils::toString(std::numeric_limits<float>::max()), "3.4028235e+38");
  EXPECT_EQ(StringUtils::toString(std::numeric_limits<float>::denorm_min()), "1e-45");
}

TEST(StringUtils, WritesIntegers) {
  EXPECT_EQ(StringUtils::toString(0), "0");
  EXPECT_EQ(StringUtils::toString(-2147483647 - 1), "-2147483648");
  EXPECT_EQ(StringUtils::toString(2147483647), "2147483647");
  EXPECT_EQ(StringUtils::toString(4294967295u), "4294967295");
}

TEST(StringUtils, AppendsNumbersToAText) {
  std::string text = "x=";
  StringUtils::append(text, 2.5);
  StringUtils::append(text, 0.1f);
  EXPECT_EQ(text, "x=2.50.1");
}

TEST(StringUtils, ReadsBackRandomDoubles) {
  constexpr std::uint64_t kSeed = 20240117;
  SCOPED_TRACE(kSeed);
  std::mt19937_64 random(kSeed);
  for (int i = 0; i < 50000; ++i) {
    const auto number = std::bit_cast<double>(random());
    if (!std::isfinite(number)) continue;
    bool isWhole = false;
    const std::string text = StringUtils::toString(number);
    ASSERT_EQ(StringUtils::toDouble(text, isWhole), number) << text;
    ASSERT_TRUE(isWhole) << text;
  }
}

TEST(StringUtils, ReadsBackRandomSingles) {
  constexpr std::uint32_t kSeed = 20240117;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  for (int i = 0; i < 50000; ++i) {
    const auto number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
    if (!std::isfinite(number)) continue;
    const std::string text = StringUtils::toString(number);
    ASSERT_EQ(static_cast<float>(StringUtils::toDouble(text)), number) << text;
  }
}

TEST(StringUtils, IgnoresTheLocale) {
  const std::string oldLocale = std::setlocale(LC_ALL, nullptr);
  for (const char* const name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "C.UTF-8", "C"}) {
    if (std::setlocale(LC_ALL, name) != nullptr) break;
  }
  EXPECT_EQ(StringUtils::toString(1234567.5), "1234567.5");
  EXPECT_EQ(StringUtils::toDouble("1.5"), 1.5);
  EXPECT_EQ(StringUtils::toDouble("1,5"), 1.0);
  std::setlocale(LC_ALL, oldLocale.c_str());
}

TEST(StringUtils, TrimsBothEnds) {
  EXPECT_EQ(StringUtils::trim(" \t\r\n\v\fa b\n "), "a b");
  EXPECT_EQ(StringUtils::trim("a"), "a");
  EXPECT_EQ(StringUtils::trim(" \n "), "");
  EXPECT_EQ(StringUtils::trim(""), "");
  EXPECT_EQ(StringUtils::trim("\xC2\xA0x"), "\xC2\xA0x");  // a no-break space is no blank here
}

TEST(StringUtils, TellsWhatATextStartsWith) {
  EXPECT_TRUE(StringUtils::startsWith("abcd", "ab", 0));
  EXPECT_TRUE(StringUtils::startsWith("abcd", "cd", 2));
  EXPECT_TRUE(StringUtils::startsWith("abcd", "", 4));
  EXPECT_TRUE(StringUtils::startsWith("", "", 0));
  EXPECT_FALSE(StringUtils::startsWith("abcd", "cd", 1));
  EXPECT_FALSE(StringUtils::startsWith("abcd", "AB", 0));
  EXPECT_FALSE(StringUtils::startsWith("abcd", "cde", 2));
  EXPECT_FALSE(StringUtils::startsWith("abcd", "", 5));
  EXPECT_FALSE(StringUtils::startsWith("abcd", "a", 0xFFFFFFFFu));
}

TEST(StringUtils, TellsWhatIsEscaped) {
  const std::string text = R"(a\"b\\"c\\\")";  // escapes at 1, 4, 5, 8, 9, 10
  EXPECT_TRUE(StringUtils::isEscaped(text, 0, 2, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 0, 3, '\\'));
  EXPECT_TRUE(StringUtils::isEscaped(text, 0, 5, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 0, 6, '\\'));
  EXPECT_TRUE(StringUtils::isEscaped(text, 0, 11, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 0, 0, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 0, 2, '/'));
}

TEST(StringUtils, CountsNoEscapesBeforeTheBegin) {
  const std::string text = R"(\\\")";
  EXPECT_TRUE(StringUtils::isEscaped(text, 0, 3, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 1, 3, '\\'));
  EXPECT_TRUE(StringUtils::isEscaped(text, 2, 3, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 3, 3, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped(text, 4, 3, '\\'));
}

TEST(StringUtils, EscapesUpToTheEndOfTheTextOnly) {
  EXPECT_TRUE(StringUtils::isEscaped("a\\", 0, 2, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped("a\\", 0, 3, '\\'));
  EXPECT_FALSE(StringUtils::isEscaped("", 0, 0, '\\'));
}

TEST(StringUtils, IgnoresTheCaseOfAsciiLettersOnly) {
  EXPECT_TRUE(StringUtils::equalsIgnoreCase("aBz-9", "AbZ-9"));
  EXPECT_TRUE(StringUtils::equalsIgnoreCase("", ""));
  EXPECT_FALSE(StringUtils::equalsIgnoreCase("abc", "ab"));
  EXPECT_FALSE(StringUtils::equalsIgnoreCase("ab", "abc"));
  EXPECT_FALSE(StringUtils::equalsIgnoreCase("@[`{", "`{@["));
  EXPECT_FALSE(StringUtils::equalsIgnoreCase("\xC3\xA4", "\xC3\x84"));  // a and A with diaeresis
}

}  // namespace
}  // namespace zavri::util
