#include "korvat/members/RawText.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "korvat/base/BinaryUtils.h"

namespace zavri::korvat {
namespace {

using base::CharEncoding;
using base::Endianess;

constexpr CharEncoding kIso = CharEncoding::Iso8859_1;
constexpr CharEncoding kUtf8 = CharEncoding::Utf8;
constexpr CharEncoding kUtf16 = CharEncoding::Utf16;
constexpr CharEncoding kUtf32 = CharEncoding::Utf32;
constexpr CharEncoding kUnknown = static_cast<CharEncoding>(3);
constexpr Endianess kBig = Endianess::Big;
constexpr Endianess kLittle = Endianess::Little;

TEST(RawText, HasCodeUnitsOfOneTwoOrFourBytes) {
  EXPECT_EQ(codeUnitSize(kIso), 1u);
  EXPECT_EQ(codeUnitSize(kUtf8), 1u);
  EXPECT_EQ(codeUnitSize(kUtf16), 2u);
  EXPECT_EQ(codeUnitSize(kUtf32), 4u);
  EXPECT_EQ(codeUnitSize(kUnknown), 1u);
}

TEST(RawText, HasAnEncodingForEachWidth) {
  EXPECT_EQ(encodingOfWidth(1), kUtf8);
  EXPECT_EQ(encodingOfWidth(2), kUtf16);
  EXPECT_EQ(encodingOfWidth(4), kUtf32);
  EXPECT_EQ(encodingOfWidth(3), kUtf8);
  EXPECT_EQ(encodingOfWidth(-1), kUtf8);
}

TEST(RawText, HasAWidthForEachStandardEncodingOfCharacters) {
  EXPECT_EQ(widthOfCharEncoding(0), 1);
  EXPECT_EQ(widthOfCharEncoding(1), 2);
  EXPECT_EQ(widthOfCharEncoding(2), 4);
  EXPECT_EQ(widthOfCharEncoding(3), 2);
  EXPECT_EQ(widthOfCharEncoding(4), 2);
  EXPECT_EQ(widthOfCharEncoding(5), -1);
  EXPECT_EQ(widthOfCharEncoding(-1), -1);
}

struct ReadCase {
  std::string name;
  CharEncoding encoding;
  Endianess order;
  std::string bytes;  // hexadecimal
  std::string text;   // UTF-8
};

class ReadText : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadText, EndsAtTheFirstZeroCharacter) {
  const ReadCase& c = GetParam();
  base::Buffer bytes;
  util::BinaryUtils::stringToBuffer(bytes, c.bytes, 0);
  EXPECT_EQ(readText(bytes.getData(), bytes.getSize(), c.encoding, c.order), c.text);
}

// "a", U+00E9, U+20AC and U+1F600 are 61, C3 A9, E2 82 AC and F0 9F 98 80 in UTF-8.
const std::vector<ReadCase> kReadCases = {
    {"Empty", kIso, kBig, "", ""},
    {"ZerosOnly", kIso, kBig, "0000", ""},
    {"Iso", kIso, kBig, "61E900", "a\u00E9"},
    {"IsoWithoutAZero", kIso, kBig, "616263", "abc"},
    {"IsoIgnoresWhatFollowsTheZero", kIso, kBig, "6100636465", "a"},
    {"IsoHasNoByteOrder", kIso, kLittle, "616200", "ab"},
    {"UnknownEncodingIsIso", kUnknown, kBig, "61E900", "a\u00E9"},
    {"Utf8", kUtf8, kBig, "61C3A9E282ACF09F9880", "a\u00E9\u20AC\U0001F600"},
    {"Utf8Broken", kUtf8, kBig, "61FF62", "a\uFFFDb"},
    {"Utf8CutByTheZero", kUtf8, kBig, "61E28200", "a\uFFFD"},
    {"Utf16Big", kUtf16, kBig, "006100E920AC0000", "a\u00E9\u20AC"},
    {"Utf16Little", kUtf16, kLittle, "6100E900AC200000", "a\u00E9\u20AC"},
    {"Utf16PairBig", kUtf16, kBig, "D83DDE00", "\U0001F600"},
    {"Utf16PairLittle", kUtf16, kLittle, "3DD800DE", "\U0001F600"},
    {"Utf16LoneSurrogate", kUtf16, kBig, "D83D0061", "\uFFFDa"},
    {"Utf16ZeroByteIsNoEnd", kUtf16, kBig, "61000061", "\u6100a"},
    {"Utf16LeavesOutHalfAUnit", kUtf16, kBig, "006100", "a"},
    {"Utf16OneByte", kUtf16, kBig, "61", ""},
    {"Utf32Big", kUtf32, kBig, "000000610001F60000000000000000FF", "a\U0001F600"},
    {"Utf32Little", kUtf32, kLittle, "6100000000F60100", "a\U0001F600"},
    {"Utf32OutOfRange", kUtf32, kBig, "00110000", "\uFFFD"},
    {"Utf32LeavesOutPartOfAUnit", kUtf32, kBig, "00000061000000", "a"},
};
INSTANTIATE_TEST_SUITE_P(Encodings, ReadText, testing::ValuesIn(kReadCases),
                         [](const auto& info) { return info.param.name; });

struct WriteCase {
  std::string name;
  CharEncoding encoding;
  Endianess order;
  std::string text;  // UTF-8
  unsigned byteCount;
  std::string bytes;  // hexadecimal
  bool isCut;
};

class WriteText : public testing::TestWithParam<WriteCase> {};

TEST_P(WriteText, PadsWithZerosAndCutsBehindAWholeCharacter) {
  const WriteCase& c = GetParam();
  bool isCut = !c.isCut;
  const base::Buffer bytes = writeText(c.text, c.byteCount, c.encoding, c.order, isCut);
  EXPECT_EQ(util::BinaryUtils::toString(bytes), c.bytes);
  EXPECT_EQ(isCut, c.isCut);
}

const std::vector<WriteCase> kWriteCases = {
    {"Empty", kIso, kBig, "", 2, "0000", false},
    {"NoRoomForNothing", kIso, kBig, "", 0, "", false},
    {"NoRoom", kIso, kBig, "a", 0, "", true},
    {"Iso", kIso, kBig, "a\u00E9", 4, "61E90000", false},
    {"IsoExact", kIso, kBig, "abc", 3, "616263", false},
    {"IsoCut", kIso, kBig, "abcd", 3, "616263", true},
    {"IsoWithoutSuchACharacter", kIso, kBig, "\u20AC", 2, "3F00", false},
    {"UnknownEncodingIsIso", kUnknown, kBig, "\u00E9", 2, "E900", false},
    {"Utf8", kUtf8, kBig, "a\u20AC", 5, "61E282AC00", false},
    {"Utf8CutInTheSecondByte", kUtf8, kBig, "a\u20AC", 2, "6100", true},
    {"Utf8CutInTheThirdByte", kUtf8, kBig, "a\u20AC", 3, "610000", true},
    {"Utf8CutBehindACharacter", kUtf8, kBig, "\u20ACa", 3, "E282AC", true},
    {"Utf8FirstCharacterTooLong", kUtf8, kBig, "\U0001F600", 3, "000000", true},
    {"Utf16Big", kUtf16, kBig, "a\u20AC", 6, "006120AC0000", false},
    {"Utf16Little", kUtf16, kLittle, "a\u20AC", 6, "6100AC200000", false},
    {"Utf16PairLittle", kUtf16, kLittle, "\U0001F600", 4, "3DD800DE", false},
    {"Utf16CutInAPair", kUtf16, kBig, "a\U0001F600", 4, "00610000", true},
    {"Utf16CutBehindAPair", kUtf16, kBig, "\U0001F600a", 4, "D83DDE00", true},
    {"Utf16OddSize", kUtf16, kBig, "ab", 3, "006100", true},
    {"Utf32Big", kUtf32, kBig, "\U0001F600", 8, "0001F60000000000", false},
    {"Utf32LittleCut", kUtf32, kLittle, "\U0001F600a", 4, "00F60100", true},
    {"Utf32OddSize", kUtf32, kBig, "ab", 7, "00000061000000", true},
};
INSTANTIATE_TEST_SUITE_P(Encodings, WriteText, testing::ValuesIn(kWriteCases),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::korvat
