#include "korvat/base/CharEncoder.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

using namespace std::string_literals;

const std::string kFffd = "\xEF\xBF\xBD";  // U+FFFD in UTF-8

TEST(CharEncoding, HasTheNumbersOfTheEnumeration) {
  EXPECT_EQ(static_cast<int>(CharEncoding::Iso8859_1), 0);
  EXPECT_EQ(static_cast<int>(CharEncoding::Utf8), 1);
  EXPECT_EQ(static_cast<int>(CharEncoding::Utf16), 2);
  EXPECT_EQ(static_cast<int>(CharEncoding::Utf32), 4);
}

struct TextCase {
  std::string name;
  CharEncoding encoding;
  std::string utf8;
  std::string bytes;
};

class CharEncoderText : public testing::TestWithParam<TextCase> {};

TEST_P(CharEncoderText, GoesBothWays) {
  const TextCase& c = GetParam();
  EXPECT_EQ(CharEncoder::convertToEncoding(c.utf8, c.encoding), c.bytes);
  EXPECT_EQ(CharEncoder::convertToUtf8(c.bytes, c.encoding), c.utf8);
}

// U+0041, U+00E4, U+20AC, U+1F600 and the limits of each length.
const std::vector<TextCase> kTextCases = {
    {"IsoEmpty", CharEncoding::Iso8859_1, "", ""},
    {"IsoAscii", CharEncoding::Iso8859_1, "A~", "A~"},
    {"IsoLatin", CharEncoding::Iso8859_1, "\xC3\xA4\xC3\xBF\xC2\x80", "\xE4\xFF\x80"},
    {"IsoZero", CharEncoding::Iso8859_1, "a\0b"s, "a\0b"s},
    {"Utf8Empty", CharEncoding::Utf8, "", ""},
    {"Utf8Mixed", CharEncoding::Utf8, "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
     "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"},
    {"Utf8Zero", CharEncoding::Utf8, "a\0b"s, "a\0b"s},
    {"Utf16Mixed", CharEncoding::Utf16, "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
     "\0A\0\xE4\x20\xAC\xD8\x3D\xDE\x00"s},
    {"Utf16Limits", CharEncoding::Utf16,
     "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
     "\xF4\x8F\xBF\xBF",
     "\x00\x7F\x00\x80\x07\xFF\x08\x00\xD7\xFF\xE0\x00\xFF\xFF\xD8\x00\xDC\x00\xDB\xFF\xDF\xFF"s},
    {"Utf16Zero", CharEncoding::Utf16, "\0a"s, "\0\0\0a"s},
    {"Utf16KeepsTheByteOrderMark", CharEncoding::Utf16, "\xEF\xBB\xBF", "\xFE\xFF"},
    {"Utf32Mixed", CharEncoding::Utf32, "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80",
     "\0\0\0A\0\0\0\xE4\0\0\x20\xAC\0\x01\xF6\0"s},
    {"Utf32Highest", CharEncoding::Utf32, "\xF4\x8F\xBF\xBF", "\0\x10\xFF\xFF"s},
};
INSTANTIATE_TEST_SUITE_P(Texts, CharEncoderText, testing::ValuesIn(kTextCases),
                         [](const auto& info) { return info.param.name; });

struct BrokenCase {
  std::string name;
  CharEncoding encoding;
  std::string bytes;
  std::string utf8;
};

class CharEncoderBroken : public testing::TestWithParam<BrokenCase> {};

TEST_P(CharEncoderBroken, BecomesReplacementCharacters) {
  const BrokenCase& c = GetParam();
  EXPECT_EQ(CharEncoder::convertToUtf8(c.bytes, c.encoding), c.utf8);
}

const std::vector<BrokenCase> kBrokenCases = {
    {"LoneContinuation", CharEncoding::Utf8, "a\x80z", "a" + kFffd + "z"},
    {"TwoContinuations", CharEncoding::Utf8, "\x80\xBF", kFffd + kFffd},
    {"CutAtTheEnd", CharEncoding::Utf8, "a\xE2\x82", "a" + kFffd},
    {"CutBeforeALetter", CharEncoding::Utf8, "\xF0\x9F\x98z", kFffd + "z"},
    {"CutBeforeACharacter", CharEncoding::Utf8, "\xE2\x82\xC3\xA4", kFffd + "\xC3\xA4"},
    {"OverlongTwo", CharEncoding::Utf8, "\xC0\xAF", kFffd + kFffd},
    {"OverlongThree", CharEncoding::Utf8, "\xE0\x9F\xBF", kFffd + kFffd + kFffd},
    {"OverlongFour", CharEncoding::Utf8, "\xF0\x8F\xBF\xBF", kFffd + kFffd + kFffd + kFffd},
    {"Surrogate", CharEncoding::Utf8, "\xED\xA0\x80", kFffd + kFffd + kFffd},
    {"TooLarge", CharEncoding::Utf8, "\xF4\x90\x80\x80", kFffd + kFffd + kFffd + kFffd},
    {"NeverALead", CharEncoding::Utf8, "\xF5\xFE\xFF", kFffd + kFffd + kFffd},
    // The example of the Unicode Standard, section 3.9, table 3-11.
    {"UnicodeExample", CharEncoding::Utf8, "\xF0\x80\x80\x41", kFffd + kFffd + kFffd + "A"},
    {"UnicodeTruncated", CharEncoding::Utf8, "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41",
     kFffd + kFffd + kFffd + kFffd + "A"},
    {"LoneHighSurrogate", CharEncoding::Utf16, "\xD8\x3D\0z"s, kFffd + "z"},
    {"HighSurrogateAtTheEnd", CharEncoding::Utf16, "\xD8\x3D", kFffd},
    {"LoneLowSurrogate", CharEncoding::Utf16, "\xDE\x00\0z"s, kFffd + "z"},
    {"SwappedSurrogates", CharEncoding::Utf16, "\xDE\x00\xD8\x3D"s, kFffd + kFffd},
    {"TwoHighSurrogates", CharEncoding::Utf16, "\xD8\x3D\xD8\x3D\xDE\x00"s,
     kFffd + "\xF0\x9F\x98\x80"},
    {"OddByte", CharEncoding::Utf16, "\0az"s, "a" + kFffd},
    {"Utf32Surrogate", CharEncoding::Utf32, "\0\0\xD8\x00\0\0\0z"s, kFffd + "z"},
    {"Utf32TooLarge", CharEncoding::Utf32, "\0\x11\0\0"s, kFffd},
    {"Utf32FarTooLarge", CharEncoding::Utf32, "\xFF\xFF\xFF\xFF", kFffd},
    {"Utf32RestOfOne", CharEncoding::Utf32, "\0\0\0az"s, "a" + kFffd},
    {"Utf32RestOfThree", CharEncoding::Utf32, "\0\0\0"s, kFffd},
    {"UnknownEncodingIsIso", static_cast<CharEncoding>(-1), "\xE4", "\xC3\xA4"},
    {"OtherUnknownEncodingIsIso", static_cast<CharEncoding>(3), "\xE4", "\xC3\xA4"},
};
INSTANTIATE_TEST_SUITE_P(Texts, CharEncoderBroken, testing::ValuesIn(kBrokenCases),
                         [](const auto& info) { return info.param.name; });

TEST(CharEncoder, WritesAQuestionMarkForWhatIsoCannotHold) {
  EXPECT_EQ(CharEncoder::convertToEncoding("a\xE2\x82\xAC\xC4\x80z", CharEncoding::Iso8859_1),
            "a??z");
  EXPECT_EQ(CharEncoder::convertToEncoding("\x80\xC3", CharEncoding::Iso8859_1), "??");
  EXPECT_EQ(CharEncoder::convertToEncoding("\xC3\xA4", static_cast<CharEncoding>(7)), "\xE4");
}

TEST(CharEncoder, WritesBrokenUtf8AsReplacementCharacters) {
  EXPECT_EQ(CharEncoder::convertToEncoding("a\xFF", CharEncoding::Utf8), "a" + kFffd);
  EXPECT_EQ(CharEncoder::convertToEncoding("a\xFF", CharEncoding::Utf16), "\0a\xFF\xFD"s);
  EXPECT_EQ(CharEncoder::convertToEncoding("a\xFF", CharEncoding::Utf32), "\0\0\0a\0\0\xFF\xFD"s);
}

TEST(CharEncoder, ConvertsCodeUnitsToUtf8) {
  EXPECT_EQ(CharEncoder::convertUtf16toUtf8(u"A\u00E4\u20AC\U0001F600"),
            "A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(CharEncoder::convertUtf16toUtf8(std::u16string(u"a\0b", 3)), "a\0b"s);
  EXPECT_EQ(CharEncoder::convertUtf16toUtf8(std::u16string{0xD83D, u'z'}), kFffd + "z");
  EXPECT_EQ(CharEncoder::convertUtf16toUtf8(std::u16string{0xDE00}), kFffd);
  EXPECT_EQ(CharEncoder::convertUtf16toUtf8(u""), "");
}

TEST(CharEncoder, ConvertsUtf8ToCodeUnits) {
  EXPECT_EQ(CharEncoder::convertUtf8toUtf16_16("A\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"),
            u"A\u00E4\u20AC\U0001F600");
  EXPECT_EQ(CharEncoder::convertUtf8toUtf16_16("a\0b"s), std::u16string(u"a\0b", 3));
  EXPECT_EQ(CharEncoder::convertUtf8toUtf16_16("\xE2\x82z"), u"\uFFFDz");
  EXPECT_EQ(CharEncoder::convertUtf8toUtf16_16(""), u"");
}

TEST(CharEncoder, KeepsEveryCharacterInEveryUnicodeEncoding) {
  for (std::uint32_t code = 0; code <= 0x10FFFF; ++code) {
    if (code >= 0xD800 && code <= 0xDFFF) continue;
    std::string utf32 = "\0"s;
    utf32 += static_cast<char>(code >> 16);
    utf32 += static_cast<char>((code >> 8) & 0xFF);
    utf32 += static_cast<char>(code & 0xFF);
    const std::string utf8 = CharEncoder::convertToUtf8(utf32, CharEncoding::Utf32);
    ASSERT_EQ(CharEncoder::convertToEncoding(utf8, CharEncoding::Utf32), utf32) << code;
    ASSERT_EQ(CharEncoder::convertToUtf8(utf8, CharEncoding::Utf8), utf8) << code;
    ASSERT_EQ(CharEncoder::convertUtf16toUtf8(CharEncoder::convertUtf8toUtf16_16(utf8)), utf8)
        << code;
  }
}

}  // namespace
}  // namespace zavri::base
