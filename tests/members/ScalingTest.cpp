#include "korvat/members/Scaling.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

namespace zavri::korvat {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

Scaling scalingOf(int a, int b, int c) {
  return {static_cast<std::int16_t>(a), static_cast<std::int16_t>(b), static_cast<std::int16_t>(c)};
}

TEST(Scaling, IsTheIdentityByDefault) {
  const Scaling scaling;
  EXPECT_TRUE(scaling.isIdentity());
  EXPECT_TRUE(scaling == scalingOf(1, 0, 0));
  EXPECT_EQ(toPhysical(-12345, scaling), -12345);
  EXPECT_EQ(fromPhysical(-123.25, false, scaling), -123.25);
}

TEST(Scaling, IsNotTheIdentityWithAnyOtherFactor) {
  for (const Scaling& scaling : {scalingOf(2, 0, 0), scalingOf(1, 1, 0), scalingOf(1, 0, 1)}) {
    EXPECT_FALSE(scaling.isIdentity());
    EXPECT_FALSE(scaling == Scaling());
  }
}

struct PhysicalCase {
  std::string name;
  Scaling scaling;
  double raw;
  double physical;
};

class ToPhysical : public testing::TestWithParam<PhysicalCase> {};

TEST_P(ToPhysical, GivesTheNearestDecimal) {
  EXPECT_EQ(toPhysical(GetParam().raw, GetParam().scaling), GetParam().physical);
}

// clang-format off
const std::vector<PhysicalCase> kPhysicalCases = {
    // name               {a, b, c}               raw      physical
    {"Tenths",            {1, -1, 0},             235,     23.5},
    {"NoInverseOfTen",    {1, -1, 0},             3,       0.3},
    {"Hundredths",        {1, -2, 0},             7,       0.07},
    {"Thousands",         {1, 3, 0},              7,       7000},
    {"FiveThousandths",   {5, -3, 0},             1,       0.005},
    {"OffsetOfRaw",       {1, -1, -2740},         0,       -274},
    {"OffsetIsScaled",    {2, 0, 10},             5,       30},
    {"NegativeFactor",    {-1, -1, 0},            3,       -0.3},
    {"ZeroFactor",        {0, 0, 0},              235,     0},
    {"ZeroFactorOffset",  {0, 2, 100},            235,     0},
    {"LargestOffset",     {1, 0, 32767},          1,       32768},
    {"SmallestOffset",    {1, 0, -32768},         0,       -32768},
    {"LargestFactor",     {32767, 0, 0},          2,       65534},
    {"SmallestFactor",    {-32768, 0, 0},         2,       -65536},
    {"LargestExponent",   {1, 32767, 0},          1,       kInfinity},
    {"ZeroStaysZero",     {1, 32767, 0},          0,       0},
    {"SmallestExponent",  {1, -32768, 0},         1,       0},
    {"ZeroAtTheSmallest", {1, -32768, 0},         0,       0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Scalings, ToPhysical, testing::ValuesIn(kPhysicalCases),
                         [](const auto& info) { return info.param.name; });

// The decimal text of the value, read by the C library, is the definition of "nearest".
TEST(Scaling, HasNoNegativeZero) {
  EXPECT_FALSE(std::signbit(toPhysical(0, {-1, 0, 0})));
  EXPECT_FALSE(std::signbit(toPhysical(10, {-5, -2, -10})));
}

TEST(Scaling, GivesTheDoubleNearestToTheDecimalForEachExponentOfRealTypes) {
  for (int b = -22; b <= 22; ++b) {
    for (const int a : {1, 2, 5, -3, 32767}) {
      for (const int c : {0, -2740}) {
        for (const std::int64_t raw :
             {0LL, 1LL, 3LL, 7LL, 2741LL, -12345LL, 65535LL, 4294967295LL, -2147483648LL}) {
          const std::string text = std::to_string(a * (raw + c)) + "e" + std::to_string(b);
          SCOPED_TRACE(text);
          const double expected = std::strtod(text.c_str(), nullptr);
          ASSERT_EQ(toPhysical(static_cast<double>(raw), scalingOf(a, b, c)), expected);
        }
      }
    }
  }
}

TEST(Scaling, LeadsBackToTheRawNumberForEachExponentOfRealTypes) {
  for (int b = -22; b <= 22; ++b) {
    for (const int a : {1, 5, -3, 32767}) {
      for (const bool quantize : {false, true}) {
        for (const int raw : {-32768, -1, 0, 1, 3, 7, 235, 32767, 65535}) {
          const Scaling scaling = scalingOf(a, b, 100);
          SCOPED_TRACE(std::to_string(a) + "e" + std::to_string(b) + " " + std::to_string(raw));
          const double physical = toPhysical(raw, scaling);
          ASSERT_EQ(roundToInteger<std::int64_t>(fromPhysical(physical, quantize, scaling)), raw);
        }
      }
    }
  }
}

struct RawCase {
  std::string name;
  Scaling scaling;
  double value;
  bool quantize;
  double raw;
};

class FromPhysical : public testing::TestWithParam<RawCase> {};

TEST_P(FromPhysical, GivesTheRawNumber) {
  const RawCase& c = GetParam();
  EXPECT_DOUBLE_EQ(fromPhysical(c.value, c.quantize, c.scaling), c.raw);
}

// clang-format off
const std::vector<RawCase> kRawCases = {
    // name                 {a, b, c}       value   quantize raw
    {"Tenths",              {1, -1, 0},     23.5,   false,   235},
    {"BetweenTenths",       {1, -1, 0},     23.46,  false,   234.6},
    {"SnappedToTenths",     {1, -1, 0},     23.46,  true,    235},
    {"HalfSnapsUpwards",    {1, 0, 0},      2.5,    true,    3},
    {"NegativeHalfToo",     {1, 0, 0},      -2.5,   true,    -2},
    {"SnappedToFives",      {5, 0, 0},      12.4,   true,    2},
    {"SnappedToTens",       {1, 1, 0},      14.9,   true,    1},
    {"NegativeStep",        {-1, -1, 0},    0.34,   true,    -3},
    {"OffsetIsTakenOff",    {1, -1, -2740}, -274,   false,   0},
    {"ZeroFactorIsOne",     {0, 0, 0},      42.5,   false,   42.5},
    {"ZeroFactorSnapped",   {0, -1, 0},     42.04,  true,    420},
    {"ZeroFactorOffset",    {0, 0, 2},      42,     false,   40},
    {"LargestExponent",     {1, 32767, 0},  5,      false,   0},
    {"LargestSnapped",      {1, 32767, 0},  5,      true,    0},
    {"SmallestExponent",    {1, -32768, 0}, 5,      false,   kInfinity},
    {"SmallestSnapped",     {1, -32768, 0}, 5,      true,    kInfinity},
    {"ZeroAtTheSmallest",   {1, -32768, 3}, 0,      true,    -3},
    {"Infinity",            {1, -1, 0},     kInfinity,  true, kInfinity},
    {"NegativeInfinity",    {1, -1, 0},     -kInfinity, true, -kInfinity},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Scalings, FromPhysical, testing::ValuesIn(kRawCases),
                         [](const auto& info) { return info.param.name; });

TEST(Scaling, ReachesBeyondThePowersOfTenThatAreDoubles) {
  EXPECT_EQ(toPhysical(1, scalingOf(1, 22, 0)), 1e22);
  EXPECT_DOUBLE_EQ(toPhysical(1, scalingOf(1, 23, 0)), 1e23);  // the first that is not exact
  EXPECT_DOUBLE_EQ(toPhysical(1e10, scalingOf(1, -310, 0)), 1e-300);
  EXPECT_DOUBLE_EQ(toPhysical(1e-10, scalingOf(1, 310, 0)), 1e300);
  EXPECT_DOUBLE_EQ(fromPhysical(1e-300, false, scalingOf(1, -310, 0)), 1e10);
}

// A step that no double can hold rounds nothing.
TEST(Scaling, LeavesOutTheRoundingToAStepBeyondAllNumbers) {
  EXPECT_EQ(fromPhysical(5, true, scalingOf(1, -400, 0)), std::numeric_limits<double>::infinity());
  EXPECT_EQ(fromPhysical(5, true, scalingOf(1, 400, 0)), 0);
  EXPECT_DOUBLE_EQ(fromPhysical(1e300, true, scalingOf(1, 400, 0)), 1e-100);
}

TEST(Scaling, KeepsNotANumber) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_TRUE(std::isnan(toPhysical(nan, scalingOf(1, -1, 0))));
  EXPECT_TRUE(std::isnan(fromPhysical(nan, true, scalingOf(1, -1, 0))));
}

struct RoundCase {
  std::string name;
  double raw;
  std::int16_t narrow;
  std::int64_t wide;
};

class RoundToInteger : public testing::TestWithParam<RoundCase> {};

TEST_P(RoundToInteger, RoundsHalvesAwayFromZeroAndCutsToTheRange) {
  EXPECT_EQ(roundToInteger<std::int16_t>(GetParam().raw), GetParam().narrow);
  EXPECT_EQ(roundToInteger<std::int64_t>(GetParam().raw), GetParam().wide);
}

constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();

// clang-format off
const std::vector<RoundCase> kRoundCases = {
    {"Zero",              0,                      0,      0},
    {"BelowHalf",         0.4375,                 0,      0},
    {"Half",              0.5,                    1,      1},
    {"NegativeHalf",      -0.5,                   -1,     -1},
    {"TwoAndAHalf",       2.5,                    3,      3},
    {"MinusTwoAndAHalf",  -2.5,                   -3,     -3},
    {"MinusTwoAndALittle", -2.4375,               -2,     -2},
    {"Largest16",         32767.25,               32767,  32767},
    {"AboveLargest16",    32767.5,                32767,  32768},
    {"FortyThousand",     40000,                  32767,  40000},
    {"Smallest16",        -32768.25,              -32768, -32768},
    {"BelowSmallest16",   -32768.5,               -32768, -32769},
    {"BelowLargest64",    0x1.fffffffffffffp62,   32767,  9223372036854774784},
    {"AboveLargest64",    0x1p63,                 32767,  kMax64},
    {"Smallest64",        -0x1p63,                -32768, kMin64},
    {"BelowSmallest64",   -1e19,                  -32768, kMin64},
    {"Infinity",          kInfinity,              32767,  kMax64},
    {"NegativeInfinity",  -kInfinity,             -32768, kMin64},
    {"NotANumber",        std::numeric_limits<double>::quiet_NaN(), 0, 0},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Numbers, RoundToInteger, testing::ValuesIn(kRoundCases),
                         [](const auto& info) { return info.param.name; });

// --- Display scaling ---

TEST(DisplayScaling, IsTheIdentityByDefault) {
  const DisplayScaling scaling;
  EXPECT_TRUE(scaling.isIdentity());
  EXPECT_EQ(scaling.toShown(-123.25), -123.25);
  EXPECT_EQ(scaling.fromShown(-123.25), -123.25);
  EXPECT_TRUE(DisplayScaling(1, 0).isIdentity());
  EXPECT_FALSE(DisplayScaling(1, 0.5).isIdentity());
  EXPECT_FALSE(DisplayScaling(-1, 0).isIdentity());
}

struct ShownCase {
  std::string name;
  double factor;
  double offset;
  double physical;
  int decimalCount;  // of `physical`
  double shown;
};

class DisplayScalingBothWays : public testing::TestWithParam<ShownCase> {};

TEST_P(DisplayScalingBothWays, GivesTheNearestDecimalAndFindsBack) {
  const ShownCase& c = GetParam();
  const DisplayScaling scaling(c.factor, c.offset);
  EXPECT_EQ(scaling.toShownDecimal(c.physical, c.decimalCount), c.shown);
  EXPECT_FALSE(std::signbit(scaling.toShownDecimal(c.physical, c.decimalCount)) && c.shown == 0);
  EXPECT_NEAR(scaling.fromShown(c.shown), c.physical, std::abs(c.physical) * 1e-14 + 1e-14);
}

// clang-format off
const std::vector<ShownCase> kShownCases = {
    // name              factor     offset  physical      decimals  shown
    {"Fahrenheit",       1.8,       32,     23.5,         1,        74.3},
    {"FahrenheitOf2",    1.8,       32,     23.51,        2,        74.318},
    {"NearZero",         1.8,       32,     -17.78,       2,        -0.004},
    {"Zero",             2,         -3,     1.5,          1,        0},
    {"SixDecimals",      0.429923,  7.67,   30.01,        2,        20.57198923},
    {"OffsetDecimals",   2,         0.125,  3,            0,        6.125},
    {"SmallFactor",      5e-07,     0,      30,           0,        0.000015},
    {"LargeFactor",      1e+20,     0,      4,            0,        4e+20},
    {"TinyFactor",       1e-30,     0,      4,            0,        4e-30},
    {"NearlyTooLarge",   3,         0,      2715730968681.27, 2,    8147192906043.81},
    {"AllDecimals",      0.7,       0,      3e-21,        21,       2.1e-21},  // the 22 that are exact
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Units, DisplayScalingBothWays, testing::ValuesIn(kShownCases),
                         [](const auto& info) { return info.param.name; });

// 0.1 * (2e15 + 1) - 2e14 has lost all but its first digit: no decimal is nearer than another.
TEST(DisplayScaling, RoundsNothingThatAnOffsetHasLeftInaccurate) {
  const DisplayScaling scaling(0.1, -2e14);
  const double physical = 2e15 + 1;
  EXPECT_NE(scaling.toShown(physical), 0.1);
  EXPECT_EQ(scaling.toShownDecimal(physical, 0), scaling.toShown(physical));
}

TEST(DisplayScaling, KeepsWhatIsNoNumber) {
  const DisplayScaling scaling(1.8, 32);
  EXPECT_TRUE(std::isnan(scaling.toShownDecimal(std::nan(""), 2)));
  EXPECT_EQ(scaling.toShownDecimal(kInfinity, 2), kInfinity);
}

TEST(DisplayScaling, CountsAFactorOfZeroAsOneOnTheWayBack) {
  const DisplayScaling scaling(0, 5);
  EXPECT_EQ(scaling.toShown(123), 5);
  EXPECT_EQ(scaling.fromShown(7), 2);
}

}  // namespace
}  // namespace zavri::korvat
