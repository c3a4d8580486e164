#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::arraySize;
using test::bits;
using test::dynamicArray;
using test::enumeration;
using test::LogCapture;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::structure;

struct TextCase {
  std::string name;
  std::string xml;
  std::string raw;
  std::string json;
  Endianess order = Endianess::Big;
};

class JsonConverterText : public testing::TestWithParam<TextCase> {};

TEST_P(JsonConverterText, IsOneString) {
  const TextCase& c = GetParam();
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(OwnTypes(c.xml).decode(c.raw, c.order), c.json);
  EXPECT_TRUE(log.lines().empty());
}

std::string nameOf(const testing::TestParamInfo<TextCase>& info) {
  return info.param.name;
}

// Eight bits a character, ISO 8859-1, when nothing selects another encoding.
const std::vector<TextCase> kPlainCases = {
    {"UnsignedCharacters", scalar("unsigned char", arraySize(3)), "414243", R"("ABC")"},
    {"SignedCharacters", scalar("signed char", arraySize(3)), "414243", R"("ABC")"},
    {"EndsAtTheFirstZero", scalar("unsigned char", arraySize(4)), "41420043", R"("AB")"},
    {"ZerosAreAnEmptyText", scalar("unsigned char", arraySize(2)), "0000", R"("")"},
    {"OneCharacter", scalar("unsigned char", arraySize(1)), "41", R"("A")"},
    {"Iso8859", scalar("unsigned char", arraySize(3)), "E9DFFF", R"("éßÿ")"},
    {"SignedIso8859", scalar("signed char", arraySize(2)), "E9DF", R"("éß")"},
    {"CharactersThatJsonEscapes", scalar("unsigned char", arraySize(4)), "225C0A09",
     R"("\"\\\n\t")"},
    {"ElementsAreSteppedOver",
     structure({{"text", scalar("unsigned char", arraySize(3))}, {"after", scalar("signed char")}}),
     "414243FF", R"({"text":"ABC","after":-1})"},
    {"BehindAPartlyUsedByte",
     structure({{"flag", bits(1, 2)}, {"text", scalar("unsigned char", arraySize(2))}}), "604142",
     R"({"flag":3,"text":"AB"})"},  // 0 11 00000
    {"ShortsAreNumbers", scalar("unsigned short", arraySize(2)), "4142", "[65,66]"},
    {"LongsAreNumbers", scalar("unsigned long", arraySize(2)), "00410042", "[65,66]"},
    {"SingleCharacterIsANumber", scalar("unsigned char"), "41", "65"},
    {"ArrayOfTexts", structure({{"text", scalar("unsigned char", arraySize(2))}}, arraySize(2)),
     "41424300", R"([{"text":"AB"},{"text":"C"}])"},
};

std::string encoded(const std::string& ncType, int elementCount) {
  return structure({{"encoding", enumeration("char_encoding_t")},
                    {"text", scalar(ncType, arraySize(elementCount))}});
}

// An item of char_encoding_t before it selects the bytes of one character.
const std::vector<TextCase> kEncodedCases = {
    {"MinusOneSelectsNothing", encoded("unsigned char", 3), "FFE94100",
     R"({"encoding":"CE_NUL","text":"éA"})"},
    {"MinusOneLeavesNumbers", encoded("unsigned short", 2), "FF4142",
     R"({"encoding":"CE_NUL","text":[65,66]})"},
    {"ZeroIsUtf8", encoded("unsigned char", 4), "00C3A94100", R"({"encoding":"CE_8","text":"éA"})"},
    {"ZeroIsUtf8InShorts", encoded("unsigned short", 3), "0041C3A9",
     R"({"encoding":"CE_8","text":"Aé"})"},
    {"OneIsUtf16", encoded("unsigned char", 6), "0100E920AC0000",
     R"({"encoding":"CE_16","text":"é€"})"},
    {"OneIsUtf16InLongs", encoded("unsigned long", 3), "0100E920AC0000",
     R"({"encoding":"CE_16","text":"é€"})"},
    {"OneIsUtf16InSignedLongs", encoded("signed long", 1), "0120AC",
     R"({"encoding":"CE_16","text":"€"})"},
    {"TwoIsUtf32", encoded("unsigned char", 8), "020001F60000000000",
     R"({"encoding":"CE_32","text":"😀"})"},
    {"TwoIsUtf32InQuads", encoded("unsigned quad", 2), "020001F60000000041",
     R"({"encoding":"CE_32","text":"😀A"})"},
    {"TwoIsUtf32InSignedQuads", encoded("s32_type", 1), "02000000E9",
     R"({"encoding":"CE_32","text":"é"})"},
    {"ThreeIsUtf16", encoded("unsigned long", 2), "0300410042", R"({"encoding":"3","text":"AB"})"},
    {"FourIsUtf16", encoded("unsigned long", 2), "0400410042", R"({"encoding":"4","text":"AB"})"},
    {"FiveSelectsNothing", encoded("unsigned char", 2), "05E941",
     R"({"encoding":"5","text":"éA"})"},
    {"MinusTwoSelectsNothing", encoded("unsigned char", 2), "FEE941",
     R"({"encoding":"-2","text":"éA"})"},
    {"OtherEnumerationsSelectNothing",
     structure(
         {{"power", enumeration("power_t")}, {"text", scalar("unsigned short", arraySize(2))}}),
     "004142", R"({"power":"PWR_OFF","text":[65,66]})"},
    {"SurrogatesAreOneCharacter", encoded("unsigned long", 3), "01D83DDE000041",
     R"({"encoding":"CE_16","text":"😀A"})"},
    {"LoneSurrogateIsReplaced", encoded("unsigned long", 2), "01D83D0041",
     R"({"encoding":"CE_16","text":"�A"})"},
    {"BrokenUtf8IsReplaced", encoded("unsigned char", 3), "0041FF42",
     R"({"encoding":"CE_8","text":"A�B"})"},
    {"Utf8CutByTheEndOfTheArray", encoded("unsigned char", 3), "0041E282",
     R"({"encoding":"CE_8","text":"A�"})"},
    {"CodeBeyondUnicodeIsReplaced", encoded("unsigned quad", 1), "0200110000",
     R"({"encoding":"CE_32","text":"�"})"},
    {"ZeroByteInUtf16IsNoEnd", encoded("unsigned long", 3), "01010000420000",
     R"({"encoding":"CE_16","text":"ĀB"})"},  // U+0100, U+0042
    {"OddByteAtTheEndIsLeftOut", encoded("unsigned char", 3), "01004142",
     R"({"encoding":"CE_16","text":"A"})"},
};

const std::vector<TextCase> kSelectionCases = {
    {"IsUsedUpByTheFirstText",
     structure({{"encoding", enumeration("char_encoding_t")},
                {"first", scalar("unsigned char", arraySize(2))},
                {"second", scalar("unsigned char", arraySize(2))}}),
     "0100E94142", R"({"encoding":"CE_16","first":"é","second":"AB"})"},
    {"WaitsForAnArrayOfItsWidth",
     structure({{"encoding", enumeration("char_encoding_t")},
                {"numbers", scalar("unsigned short", arraySize(2))},
                {"text", scalar("unsigned long", arraySize(2))}}),
     "01010200410042", R"({"encoding":"CE_16","numbers":[1,2],"text":"AB"})"},
    {"IsReplacedByALaterOne",
     structure({{"first", enumeration("char_encoding_t")},
                {"second", enumeration("char_encoding_t")},
                {"text", scalar("unsigned char", arraySize(2))}}),
     "01FFE941", R"({"first":"CE_16","second":"CE_NUL","text":"éA"})"},
    {"IsMadeAnewForEachElement",
     structure({{"encoding", enumeration("char_encoding_t")},
                {"text", scalar("unsigned char", arraySize(2))}},
               arraySize(2)),
     "0100E9FFE941", R"([{"encoding":"CE_16","text":"é"},{"encoding":"CE_NUL","text":"éA"}])"},
    {"ReachesThroughAReference",
     structure({{"encoding", enumeration("char_encoding_t")}, {"text", reference("SNVT_text")}}),
     "01004100E9", R"({"encoding":"CE_16","text":"Aé"})"},
};

// A member called "char_set" makes the array right behind it a text of its own width.
const std::vector<TextCase> kCharSetCases = {
    {"LongsAreUtf16",
     structure(
         {{"char_set", scalar("unsigned short")}, {"text", scalar("unsigned long", arraySize(3))}}),
     "0700E920AC0000", R"({"char_set":7,"text":"é€"})"},
    {"QuadsAreUtf32",
     structure(
         {{"char_set", scalar("unsigned short")}, {"text", scalar("unsigned quad", arraySize(1))}}),
     "000001F600", R"({"char_set":0,"text":"😀"})"},
    {"ShortsAreUtf8",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned short", arraySize(3))}}),
     "00C3A941", R"({"char_set":0,"text":"éA"})"},
    {"CharactersAreUtf8",
     structure({{"char_set", bits(0, 8)}, {"text", scalar("unsigned char", arraySize(2))}}),
     "00C3A9", R"({"char_set":0,"text":"é"})"},
    {"OnlyRightBehindIt",
     structure({{"char_set", scalar("unsigned short")},
                {"other", scalar("unsigned short")},
                {"text", scalar("unsigned long", arraySize(2))}}),
     "000000410042", R"({"char_set":0,"other":0,"text":[65,66]})"},
    {"OnlyTheFirstArray",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned long", arraySize(1))},
                {"list", scalar("unsigned long", arraySize(1))}}),
     "0000410042", R"({"char_set":0,"text":"A","list":[66]})"},
    {"NotForAnotherCase",
     structure(
         {{"Char_Set", scalar("unsigned short")}, {"text", scalar("unsigned long", arraySize(1))}}),
     "000041", R"({"Char_Set":0,"text":[65]})"},
    {"NotForASingleNumber",
     structure({{"char_set", scalar("unsigned short")}, {"text", scalar("unsigned long")}}),
     "000041", R"({"char_set":0,"text":65})"},
};

const std::vector<TextCase> kLittleEndianCases = {
    {"Utf16", encoded("unsigned long", 3), "01E900AC200000", R"({"encoding":"CE_16","text":"é€"})",
     Endianess::Little},
    {"Utf16InCharacters", encoded("unsigned char", 4), "01E900AC20",
     R"({"encoding":"CE_16","text":"é€"})", Endianess::Little},
    {"Surrogates", encoded("unsigned long", 2), "013DD800DE", R"({"encoding":"CE_16","text":"😀"})",
     Endianess::Little},
    {"Utf32", encoded("unsigned quad", 1), "0200F60100", R"({"encoding":"CE_32","text":"😀"})",
     Endianess::Little},
    {"Utf8", encoded("unsigned char", 2), "00C3A9", R"({"encoding":"CE_8","text":"é"})",
     Endianess::Little},
    {"Iso8859", scalar("unsigned char", arraySize(2)), "E941", R"("éA")", Endianess::Little},
    {"CharSet",
     structure(
         {{"char_set", scalar("unsigned short")}, {"text", scalar("unsigned long", arraySize(1))}}),
     "00AC20", R"({"char_set":0,"text":"€"})", Endianess::Little},
};

INSTANTIATE_TEST_SUITE_P(Plain, JsonConverterText, testing::ValuesIn(kPlainCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Encoded, JsonConverterText, testing::ValuesIn(kEncodedCases), nameOf);
INSTANTIATE_TEST_SUITE_P(Selection, JsonConverterText, testing::ValuesIn(kSelectionCases), nameOf);
INSTANTIATE_TEST_SUITE_P(CharSet, JsonConverterText, testing::ValuesIn(kCharSetCases), nameOf);
INSTANTIATE_TEST_SUITE_P(LittleEndian, JsonConverterText, testing::ValuesIn(kLittleEndianCases),
                         nameOf);

TEST(JsonConverterText, HasAsManyCharactersAsADynamicArraySays) {
  OwnTypes types(structure({{"count", scalar("unsigned short")},
                            {"text", scalar("unsigned char", dynamicArray(0, 4))},
                            {"after", scalar("unsigned short")}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(types.decode("02414255"), R"({"count":2,"text":"AB","after":85})");
  EXPECT_EQ(types.decode("0055"), R"({"count":0,"text":"","after":85})");
}

}  // namespace
}  // namespace zavri::korvat
