#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/types/TypeId.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// What the program makes of display formats: decode --text and describe.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

// --- The embedded catalogue ---

struct TextCase {
  std::string name;
  Words arguments;
  std::string text;
};

class ValueAsText : public testing::TestWithParam<TextCase> {};

TEST_P(ValueAsText, IsShownTheWayItsFormatSays) {
  Words words = {"decode", "--text"};
  words.insert(words.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.output, GetParam().text + "\n");
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

const std::vector<TextCase> kTexts = {
    {"Numbers", {"SNVT_switch", "C801"}, "100 percent of full level 1"},
    {"FloatingNumber", {"SNVT_temp_f", "41BC0000"}, "23.5 degrees Celsius"},
    {"Text",
     {"SNVT_str_asc", "48656C6C6F", "0000000000000000000000000000000000000000000000000000"},
     "Hello"},
    {"Enumerator", {"SNVT_occupancy", "02"}, "OC_BYPASS"},
    {"EnumeratorWithoutAName", {"SNVT_occupancy", "63"}, "99"},
    // 0x07EA is 2026.
    {"DateAndTime", {"SNVT_time_stamp", "--format", "LO", "07EA0B150B1E05"}, "2026-11-21 11:30:05"},
    {"Date", {"SNVT_date_cal", "07EA0105"}, "2026-01-05"},
    {"DaysAndTime", {"SNVT_elapsed_tm", "00010203040005"}, "1 02:03:04.005"},
    // 30.00 kJ/kg: 0.429923 * 30 + 7.67 = 20.56769.
    {"FormatInAnotherUnit", {"SNVT_enthalpy", "--format", "US", "0BB8"}, "20.56769"},
    {"TypeInAnotherUnit", {"SNVT_enthalpy-US", "0BB8"}, "20.56769"},
    // 100 l/s: 2.1189 * 100 = 211.89; the second member is 100 * 0.005 percent.
    {"MemberInAnotherUnit", {"SNVT_hvac_overid-US", "0100640064"}, "HVO_POSITION,0.5,211.89"},
    {"InvalidMarker", {"--invalid-keyword", "SNVT_enthalpy-SI", "7FFF"}, "invalid"},
};

INSTANTIATE_TEST_SUITE_P(Types, ValueAsText, testing::ValuesIn(kTexts), kNameOf);

struct RefusalCase {
  std::string name;
  Words arguments;
  int status;
  std::string error;
};

class RefusedText : public testing::TestWithParam<RefusalCase> {};

TEST_P(RefusedText, IsOneErrorWithoutOutput) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "korvat: " + GetParam().error + "\n");
  EXPECT_EQ(result.status, GetParam().status);
}

const std::vector<RefusalCase> kRefusals = {
    {"TypeWithoutAFormat",
     {"decode", "--text", "SNVT_temp_p", "092E"},
     1,
     "SNVT_temp_p has no display format; decode shows it without --text"},
    {"TypeWithFormatsInOtherUnits",
     {"decode", "--text", "SNVT_enthalpy", "0BB8"},
     1,
     "SNVT_enthalpy has no display format of its own; take a type in other units: "
     "SNVT_enthalpy-SI, SNVT_enthalpy-US, SNVT_enthalpy-US_diff"},
    {"UnknownFormat",
     {"decode", "--text", "SNVT_switch", "--format", "XY", "C801"},
     1,
     "SNVT_switch has no display format 'XY'; see 'korvat describe SNVT_switch'"},
    {"ShortValue",
     {"decode", "--text", "SNVT_switch", "C8"},
     1,
     "1 byte given, but a value of SNVT_switch has 2: 'state' at byte 1 is not there; --any-length "
     "takes it all the same"},
    {"Stream",
     {"decode", "--text", "--stream"},
     2,
     "--stream excludes --text; see 'korvat --help'"},
    {"FormatWithoutText",
     {"decode", "--format", "US", "SNVT_switch", "C801"},
     2,
     "--format requires --text; see 'korvat --help'"},
};

INSTANTIATE_TEST_SUITE_P(Types, RefusedText, testing::ValuesIn(kRefusals), kNameOf);

TEST(Description, ShowsFormatsAndTheTypesInTheirUnits) {
  const ToolResult result = runTool({"describe", "SNVT_hvac_overid"});
  const std::string expected =
      "format SI text(\"%m,%f,%f\", state, percent, flow)\n"
      "format SI_LO text(\"%m|%f|%f\", state, percent, flow)\n"
      "format US text(\"%m,%f,%f\", state, percent, flow*2.1189+0(0:966))\n"
      "  type SNVT_hvac_overid-US is in its units\n"
      "format US_LO text(\"%m|%f|%f\", state, percent, flow*2.1189+0(0:966))\n"
      "  type SNVT_hvac_overid-US_LO is in its units\n";
  ASSERT_GE(result.output.size(), expected.size());
  EXPECT_EQ(result.output.substr(result.output.size() - expected.size()), expected);
}

TEST(Description, ShowsTheTreeOfAFormat) {
  const ToolResult result = runTool({"describe", "SCPTtemperatureHysteresis-US", "--formats"});
  EXPECT_EQ(result.output,
            "SCPTtemperatureHysteresis-US  cp 214  set 0000000000000000-0  2 bytes\n"
            "default 0.00\n"
            "  byte bit  bits  member   type\n"
            "     0        16  (value)  signed long  raw -32768..32766  invalid 32767"
            "  = 1 * 10^-2 * raw  shown = 1.8 * physical + 0\n"
            "  byte   0   1   2   3   4   5   6   7\n"
            "       +-------------------------------+\n"
            "   0-1 |            (value)            |\n"
            "       +-------------------------------+\n"
            "format US text(\"%f\", *1.8+0(0:855))\n"
            "   [FT_Format]\n"
            "      [FT_FormattedString]\n"
            "         \"%f\"\n"
            "         [0]\n"
            "            [FT_Field]\n"
            "               field spec:  '%f' * 1.8 + 0   mode=0 index=855\n");
}

TEST(Description, ShowsFormatsAsJson) {
  const ToolResult result = runTool({"describe", "SNVT_enthalpy-US", "--formats", "--json"});
  json::Value described;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, described, error)) << error;
  EXPECT_EQ(described["shownBy"].asString(), "US");
  EXPECT_EQ(described["formats"]["US"].asString(), "text(\"%f\", *0.429923+7.67(0:1400))");
  EXPECT_EQ(described["formatTrees"]["US"].asString().find("   [FT_Format]\n"), 0u);
  EXPECT_EQ(described["members"][0]["display"].stringify(), R"({"factor":0.429923,"offset":7.67})");
}

TEST(Description, TellsWhyATextIsNoFormat) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              "<nvt id='_x' idx='1'><scalar><nc-type>unsigned short</nc-type></scalar><formats>"
              "<format id='SNVT_x'>text(x)</format></formats></nvt>");
  const ToolResult result = runTool({"--catalog", files.path(), "describe", "SNVT_x", "--formats"});
  EXPECT_NE(result.output.find("format text(x)\n"
                               "   could not parse concatenation part (pos:5 'x')\n"),
            std::string::npos)
      << result.output;
  const ToolResult shown = runTool({"--catalog", files.path(), "decode", "--text", "SNVT_x", "00"});
  EXPECT_EQ(shown.status, 1);
}

// --- Formats of our own ---

struct FormatCase {
  std::string name;
  std::string format;  // between "text" and the end
  std::string text;
};

class FormatOfOurOwn : public testing::TestWithParam<FormatCase> {
 protected:
  // 10 bytes: power, n (signed, in degrees), half (steps of 0.5), word, name, codes.
  FormatOfOurOwn() {
    _files.write(TypeId::StdPrefix, "enums", sharedEnums());
    _files.writeRaw(
        TypeId::StdPrefix, "nvs",
        "<ldrf><strings><string id='deg'>degrees</string></strings><items><nvt id='_x' idx='1'>" +
            structure({{"power", enumeration("power_t")},
                       {"n", scalar("signed short"), "<unit id='deg'/>"},
                       {"half", scalar("unsigned short", scaling(5, -1, 0)), "<unit id='deg'/>"},
                       {"word", scalar("unsigned long")},
                       {"name", scalar("unsigned char", arraySize(3))},
                       {"codes", scalar("unsigned short", arraySize(2))}}) +
            "<formats><format id='SNVT_x'><![CDATA[text" + GetParam().format +
            "]]></format></formats></nvt></items></ldrf>");
  }

  TempCatalogue _files;
};

// power PWR_ON, n -2, half 7.5, word 200, name "A\u00E9", codes 10 and 255.
const std::string kValue = "01FE0F00C841E9000AFF";

TEST_P(FormatOfOurOwn, ShowsTheMembers) {
  const ToolResult result =
      runTool({"--catalog", _files.path(), "decode", "--text", "SNVT_x", kValue});
  EXPECT_EQ(result.output, GetParam().text + "\n");
  EXPECT_EQ(result.errors, "");
}

const std::vector<FormatCase> kFormats = {
    {"Decimal", R"(("%d %i %u", n, word, half))", "-2 200 7.5"},
    {"WidthAndFlags", R"(("[%5d][%-5d][%05d][%+d][%03d]", n, n, n, word, word))",
     "[   -2][-2   ][-0002][+200][200]"},
    {"Hexadecimal", R"(("%x %X %o %02X", word, codes[1], word, codes[0]))", "c8 FF 310 0A"},
    {"NegativeHexadecimal", R"(("%x", n))", "fffffffe"},
    {"Floating", R"(("%f|%.2f|%8.1f|%.1e|%g", half, half, half, word, half))",
     "7.5 degrees|7.50 degrees|     7.5 degrees|2.0e+02|7.5 degrees"},
    {"Enumerator", R"(("%m=%s=%d", power, power, power))", "PWR_ON=PWR_ON=PWR_ON"},
    {"TextAndItsCut", R"(("%s|%.1s|%5s", name, name, power))", "A\u00E9|A|PWR_ON"},
    {"Characters", R"(("%c%c%c%c.%d", name[0], name[1], name[2], word, name[0]))",
     "A\u00E9\u00C8.65"},
    {"PercentSignAndEscapes", R"(("100%% \"%d\" \\ a\tb", n))", "100% \"-2\" \\ a\tb"},
    {"ConversionWithoutAMember", R"(("%d %d", n))", "-2 %d"},
    {"PercentSignInAText", R"(("100% sure", n))", "100% sure"},
    {"PercentSignAtTheEnd", R"(("%d%", n))", "-2%"},
    {"WidthOfNothing", R"(("[%03c][%03s]", name[2], name))", "[   ][ A\u00E9]"},
    {"WidthCountsCharacters", R"(("[%4s][%-4s]", name, name))", "[  A\u00E9][A\u00E9  ]"},
    {"ConditionOnAScaledNumber", R"(((half == 7) ? ("7") : ("other")))", "other"},
    {"EqualNumber", R"(((power == 1) ? ("on %d", word) : ("off")))", "on 200"},
    {"OtherNumber", R"(((power == 0) ? ("a") : ((n != -2) ? ("b") : ("c"))))", "c"},
    {"Parts", R"((("<"), date(word, n), (">"), time(codes[0], half), ((word==200)?("!"):("?"))))",
     "<0200--2>10:7.5!"},
};

INSTANTIATE_TEST_SUITE_P(Formats, FormatOfOurOwn, testing::ValuesIn(kFormats), kNameOf);

}  // namespace

}  // namespace zavri::test
