#include "korvat/base/BinaryUtils.h"

#include <vector>

#include <gtest/gtest.h>

namespace zavri::util {
namespace {

using base::Buffer;

struct ReadCase {
  std::string name;
  std::string text;
  unsigned start;
  std::vector<std::uint8_t> bytes;
};

class BinaryUtilsRead : public testing::TestWithParam<ReadCase> {};

TEST_P(BinaryUtilsRead, GivesBytesAndTheirCount) {
  const ReadCase& c = GetParam();
  Buffer buffer(reinterpret_cast<const std::uint8_t*>("old"), 3);
  EXPECT_EQ(BinaryUtils::stringToBuffer(buffer, c.text, c.start), c.bytes.size());
  EXPECT_EQ(buffer, Buffer(c.bytes.data(), static_cast<unsigned>(c.bytes.size())));
}

const std::vector<ReadCase> kReadCases = {
    {"Empty", "", 0, {}},
    {"UpperCase", "C801", 0, {0xC8, 0x01}},
    {"LowerCase", "c8ff", 0, {0xC8, 0xFF}},
    {"EveryDigit",
     "0123456789ABCDEFabcdef",
     0,
     {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF, 0xAB, 0xCD, 0xEF}},
    {"Blanks", " C8\t01\r\n", 0, {0xC8, 0x01}},
    {"BlankWithinAByte", "C 8", 0, {0xC8}},
    {"LoneDigit", "C", 0, {}},
    {"LoneLastDigit", "C80", 0, {0xC8}},
    {"OtherCharacter", "C8x01", 0, {0xC8}},
    {"OtherCharacterWithinAByte", "C80x1", 0, {0xC8}},
    {"OtherCharacterAtTheStart", "-C8", 0, {}},
    {"Prefix", "0xC8", 0, {}},
    {"ZeroByte", std::string("C8\0C8", 5), 0, {0xC8}},
    {"FromTheMiddle", "90C801", 2, {0xC8, 0x01}},
    {"FromAnOddDigit", "90C801", 1, {0x0C, 0x80}},
    {"FromTheEnd", "C8", 2, {}},
    {"PastTheEnd", "C8", 3, {}},
    {"FarPastTheEnd", "C8", 0xFFFFFFFFu, {}},
};
INSTANTIATE_TEST_SUITE_P(Texts, BinaryUtilsRead, testing::ValuesIn(kReadCases),
                         [](const auto& info) { return info.param.name; });

TEST(BinaryUtils, WritesUpperCaseWithoutSeparators) {
  const std::uint8_t bytes[] = {0x00, 0x0A, 0xC8, 0xFF};
  EXPECT_EQ(BinaryUtils::toString(Buffer(bytes, 4)), "000AC8FF");
  EXPECT_EQ(BinaryUtils::toString(Buffer()), "");
}

TEST(BinaryUtils, ReplacesTheTextItWritesTo) {
  const unsigned char bytes[] = {0x12, 0xEF};
  std::string text = "old";
  BinaryUtils::bufferToString(text, bytes, 2);
  EXPECT_EQ(text, "12EF");
  BinaryUtils::bufferToString(text, nullptr, 0);
  EXPECT_EQ(text, "");
}

TEST(BinaryUtils, ReadsBackEveryByte) {
  Buffer all;
  all.setSize(256);
  for (unsigned i = 0; i < 256; ++i) all.getData()[i] = static_cast<std::uint8_t>(i);
  Buffer copy;
  EXPECT_EQ(BinaryUtils::stringToBuffer(copy, BinaryUtils::toString(all), 0), 256u);
  EXPECT_EQ(copy, all);
}

}  // namespace
}  // namespace zavri::util
