#include "korvat/base/ProgId.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

constexpr std::uint8_t kBytes[] = {0x9F, 0xFF, 0xFF, 0x05, 0x00, 0x80, 0x04, 0xAB};
constexpr char kText[] = "9FFFFF05008004AB";

TEST(ProgId, StartsAsTheInvalidStandardId) {
  const ProgId progId;
  EXPECT_FALSE(progId.isValid());
  EXPECT_EQ(progId.toString(), "0000000000000000");
}

TEST(ProgId, TakesBytes) {
  ProgId progId;
  progId.set(kBytes);
  EXPECT_TRUE(progId.isValid());
  EXPECT_EQ(progId.toString(), kText);
}

TEST(ProgId, TakesTextOfEitherCase) {
  ProgId upper;
  ProgId mixed;
  EXPECT_TRUE(upper.set(kText));
  EXPECT_TRUE(mixed.set("9ffFff05008004aB"));
  EXPECT_TRUE(std::equal(upper.getBytes().begin(), upper.getBytes().end(), kBytes));
  EXPECT_EQ(mixed, upper);
}

TEST(ProgId, AcceptsTheStandardIdThoughItIsInvalid) {
  ProgId progId;
  progId.set(kBytes);
  EXPECT_TRUE(progId.set("0000000000000000"));
  EXPECT_FALSE(progId.isValid());
  EXPECT_EQ(progId, ProgId());
}

TEST(ProgId, IsValidWhenAnyByteIsSet) {
  for (unsigned i = 0; i < ProgId::kSize; ++i) {
    SCOPED_TRACE(i);
    std::uint8_t bytes[ProgId::kSize] = {};
    bytes[i] = 1;
    ProgId progId;
    progId.set(bytes);
    EXPECT_TRUE(progId.isValid());
  }
}

struct RefusedCase {
  std::string name;
  std::string text;
};

class ProgIdRefused : public testing::TestWithParam<RefusedCase> {};

TEST_P(ProgIdRefused, KeepsTheOldValue) {
  ProgId progId;
  progId.set(kBytes);
  EXPECT_FALSE(progId.set(GetParam().text));
  EXPECT_EQ(progId.toString(), kText);
}

const std::vector<RefusedCase> kRefusedCases = {
    {"Empty", ""},
    {"TooShort", "9FFFFF05008004A"},
    {"TooLong", "9FFFFF05008004AB0"},
    {"WithBlanks", "9FFFFF 5008004AB"},
    {"BlankAtTheEnd", "9FFFFF05008004A "},
    {"NoDigitAtTheStart", "GFFFFF05008004AB"},
    {"NoDigitAtTheEnd", "9FFFFF05008004Ag"},
    {"BesideTheDigits", "9FFFFF05008004/:"},
    {"Sign", "-FFFFF05008004AB"},
    {"ZeroByte", std::string("9FFFFF05008004A\0", 16)},
};
INSTANTIATE_TEST_SUITE_P(Texts, ProgIdRefused, testing::ValuesIn(kRefusedCases),
                         [](const auto& info) { return info.param.name; });

TEST(ProgId, OrdersByItsBytes) {
  ProgId low;
  ProgId high;
  ASSERT_TRUE(low.set("0000000000000001"));
  ASSERT_TRUE(high.set("8000000000000000"));
  EXPECT_TRUE(low < high);
  EXPECT_FALSE(high < low);
  EXPECT_FALSE(low < low);
  EXPECT_TRUE(low != high);
  EXPECT_TRUE(low == low);
}

}  // namespace
}  // namespace zavri::base
