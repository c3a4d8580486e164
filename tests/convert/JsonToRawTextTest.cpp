#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::arraySize;
using test::encode;
using test::enumeration;
using test::LogCapture;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::structure;

using Lines = std::vector<std::string>;

struct TextCase {
  std::string name;
  std::string xml;
  std::string json;
  std::string raw;
};

class JsonToRawText : public testing::TestWithParam<TextCase> {};

TEST_P(JsonToRawText, IsWrittenInItsEncoding) {
  const TextCase& c = GetParam();
  OwnTypes types(c.xml);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, c.json), c.raw);
  EXPECT_EQ(log.texts(), Lines());
}

TEST_P(JsonToRawText, ReadsBackTheSame) {
  const TextCase& c = GetParam();
  EXPECT_EQ(OwnTypes(c.xml).decode(c.raw), c.json);
}

const std::string kChars = structure({{"encoding", enumeration("char_encoding_t")},
                                      {"text", scalar("unsigned char", arraySize(4))},
                                      {"after", scalar("unsigned short")}});
const std::string kWide = structure({{"encoding", enumeration("char_encoding_t")},
                                     {"text", scalar("unsigned long", arraySize(2))},
                                     {"after", scalar("unsigned short")}});
const std::string kQuads = structure({{"encoding", enumeration("char_encoding_t")},
                                      {"text", scalar("unsigned quad", arraySize(2))},
                                      {"after", scalar("unsigned short")}});

const std::vector<TextCase> kTextCases = {
    {"LatinWithoutEncoding", scalar("unsigned char", arraySize(3)), R"("é")", "E90000"},
    {"NoneSelected", kChars, R"({"encoding":"CE_NUL","text":"é","after":34})", "FFE900000022"},
    {"Utf8", kChars, R"({"encoding":"CE_8","text":"é","after":34})", "00C3A9000022"},
    {"Utf16InCharacters", kChars, R"({"encoding":"CE_16","text":"é","after":34})", "0100E9000022"},
    {"Utf32InCharacters", kChars, R"({"encoding":"CE_32","text":"é","after":34})", "02000000E922"},
    {"Utf16InWideNumbers", kWide, R"({"encoding":"CE_16","text":"Aé","after":34})", "01004100E922"},
    {"NumbersOfAnotherWidth", kWide, R"({"encoding":"CE_8","text":[65,66],"after":34})",
     "000041004222"},
    {"Utf32InQuads", kQuads, R"({"encoding":"CE_32","text":"A","after":34})",
     "02000000410000000022"},
    {"BehindCharSet",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned long", arraySize(2))},
                {"list", scalar("unsigned long", arraySize(1))}}),
     R"({"char_set":1,"text":"AB","list":[7]})", "01004100420007"},
    {"BehindCharSetInBytes",
     structure({{"char_set", scalar("unsigned short")},
                {"text", scalar("unsigned short", arraySize(2))}}),
     R"({"char_set":1,"text":"é"})", "01C3A9"},
    {"CharSetThroughAReferenceToTheText",
     structure({{"char_set", scalar("unsigned short")}, {"text", reference("SNVT_list")}}),
     R"({"char_set":1,"text":"AB"})", "01414200"},
    {"NotBehindCharSetButOneFurther",
     structure({{"char_set", scalar("unsigned short")},
                {"other", scalar("unsigned short")},
                {"list", scalar("unsigned short", arraySize(2))}}),
     R"({"char_set":1,"other":2,"list":[3,4]})", "01020304"},
    // The structure stands between the two.
    {"NotInsideAStructureBehindCharSet",
     structure({{"char_set", scalar("unsigned short")},
                {"s", structure({{"list", scalar("unsigned short", arraySize(2))}})}}),
     R"({"char_set":1,"s":{"list":[3,4]}})", "010304"},
    {"CharSetThatIsTextItself",
     structure({{"char_set", scalar("unsigned char", arraySize(2))},
                {"list", scalar("unsigned short", arraySize(2))}}),
     R"({"char_set":"A","list":[3,4]})", "41000304"},
    {"SelectionIsUsedUpByTheFirstText",
     structure({{"encoding", enumeration("char_encoding_t")},
                {"first", scalar("unsigned char", arraySize(2))},
                {"second", scalar("unsigned char", arraySize(2))}}),
     R"({"encoding":"CE_8","first":"é","second":"é"})", "00C3A9E900"},
    {"InAnArrayOfStructures",
     structure({{"text", scalar("unsigned char", arraySize(2))}}, arraySize(2)),
     R"([{"text":"AB"},{"text":"C"}])", "41424300"},
};

INSTANTIATE_TEST_SUITE_P(Cases, JsonToRawText, testing::ValuesIn(kTextCases),
                         [](const auto& info) { return info.param.name; });

TEST(JsonToRawTextRule, WritesCodeUnitsInTheOrderOfTheValue) {
  OwnTypes types(kWide);
  EXPECT_EQ(encode(types, R"({"encoding":"CE_16","text":"AB","after":34})", Endianess::Little),
            "014100420022");
}

TEST(JsonToRawTextRule, TakesTheEncodingFromAnArrayOfOne) {
  OwnTypes types(structure({{"encoding", enumeration("char_encoding_t"), arraySize(1)},
                            {"text", scalar("unsigned long"), arraySize(2)}}));
  const std::string json = R"({"encoding":["CE_16"],"text":"AB"})";
  EXPECT_EQ(encode(types, json), "0100410042");
  EXPECT_EQ(types.decode("0100410042"), json);
}

TEST(JsonToRawTextRule, CutsATextThatIsTooLong) {
  OwnTypes types(structure({{"text", scalar("unsigned char", arraySize(2))}}));
  const LogCapture log(Logger::Warning);
  const test::Encoded encoded = test::encodeOver(types, "", R"({"text":"ABC"})");
  EXPECT_EQ(encoded.raw, "4142");
  EXPECT_EQ(encoded.problems, Lines{"text: the text is too long: it was cut to 2 bytes"});
  EXPECT_EQ(log.texts(), Lines{"[JsonConverter::getString] string truncated: ABC\n"});
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
}

TEST(JsonToRawTextRule, RefusesAnArrayInPlaceOfAText) {
  OwnTypes types(structure({{"text", scalar("unsigned char", arraySize(2))}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"text":[65,66]})"), "failed: ");
  EXPECT_EQ(log.texts(), Lines{"[JsonConverter::getString] expected string, found: [65,66]\n"});
}

TEST(JsonToRawTextRule, KeepsTheSelectionOfACharSetThatWasForgiven) {
  OwnTypes types(structure(
      {{"char_set", scalar("unsigned short")}, {"text", scalar("unsigned short", arraySize(2))}}));
  types.manager().setAllowMissingFields(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(encode(types, R"({"text":"AB"})"), "004142");
}

}  // namespace
}  // namespace zavri::korvat
