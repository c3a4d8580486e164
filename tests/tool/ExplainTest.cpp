#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"

// What the program tells about the bytes of one value.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

struct ExplainCase {
  std::string name;
  Words arguments;
  std::string output;
};

class ExplainedValue : public testing::TestWithParam<ExplainCase> {};

TEST_P(ExplainedValue, ShowsEachMemberBesideItsBytes) {
  Words words = {"explain"};
  words.insert(words.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

const std::vector<ExplainCase> kCases = {
    {"Structure",
     {"SNVT_switch", "C801"},
     "SNVT_switch  nv 95  2 bytes\n"
     "C8 01\n"
     "C8     value  100 percent of full level  raw 200, 5 * 10^-1 * raw\n"
     "   01  state  1 state code               raw 1\n"},
    {"ValueItself",
     {"SNVT_temp_p", "09", "2E"},
     "SNVT_temp_p  nv 105  2 bytes\n"
     "09 2E\n"
     "09 2E  (value)  23.5 degrees Celsius  raw 2350, 1 * 10^-2 * raw\n"},
    {"LittleEndian",
     {"--order", "little", "SNVT_temp_p", "2E09"},
     "SNVT_temp_p  nv 105  2 bytes\n"
     "2E 09\n"
     "2E 09  (value)  23.5 degrees Celsius  raw 2350, 1 * 10^-2 * raw\n"},
    // 0x63 is 99.
    {"BrokenLimits",
     {"SNVT_switch", "FF63"},
     "SNVT_switch  nv 95  2 bytes\n"
     "FF 63\n"
     "FF     value  127.5 percent of full level  raw 255, 5 * 10^-1 * raw, above the maximum, raw "
     "200\n"
     "   63  state  99 state code                raw 99, above the maximum, raw 1\n"},
    // 0xC38895C3 is the single nearest to the minimum, -273.17; 0xC38895C4 is the next one below.
    {"SingleAtItsLimit",
     {"SNVT_temp_f", "C38895C3"},
     "SNVT_temp_f  nv 63  4 bytes\n"
     "C3 88 95 C3\n"
     "C3 88 95 C3  (value)  -273.17 degrees Celsius  raw -273.1700134277344\n"},
    {"NoNumber",
     {"SNVT_temp_f", "7FC00000"},
     "SNVT_temp_f  nv 63  4 bytes\n"
     "7F C0 00 00\n"
     "7F C0 00 00  (value)  nan degrees Celsius  raw null, not a number\n"},
    {"InvalidMarkerAndMinimum",
     {"SNVT_switch", "00FE"},
     "SNVT_switch  nv 95  2 bytes\n"
     "00 FE\n"
     "00     value  0 percent of full level  raw 0, 5 * 10^-1 * raw\n"
     "   FE  state  -2 state code            raw -2, below the minimum, raw -1\n"},
    {"BitFields",
     {"SNVT_earth_pos", "8005FFFF0A000041200000"},
     "SNVT_earth_pos  nv 135  11 bytes\n"
     "80 05 FF FF 0A 00 00 41 20 00 00\n"
     "80                                1.......  latitude_direction   1                      raw "
     "1\n"
     "80                                .0......  longitude_direction  0                      raw "
     "0\n"
     "   05                                       latitude_deg         5 degrees              raw "
     "5\n"
     "      FF FF                                 latitude_min         65.535 minutes of arc  raw "
     "65535, 1 * 10^-3 * raw, the invalid marker\n"
     "            0A                              longitude_deg        10 degrees             raw "
     "10\n"
     "               00 00                        longitude_min        0 minutes of arc       raw "
     "0, 1 * 10^-3 * raw\n"
     "                     41 20 00 00            height_above_sea     10 meters              raw "
     "10.0\n"},
    {"EnumeratorWithoutAName",
     {"SNVT_occupancy", "63"},
     "SNVT_occupancy  nv 109  1 byte\n"
     "63\n"
     "63  (value)  99  raw 99, no enumerator\n"},
    {"LongText",
     {"SNVT_str_asc", "48656C6C6F" + std::string(52, '0')},
     "SNVT_str_asc  nv 36  31 bytes\n"
     "   0  48 65 6C 6C 6F 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
     "00 00  ascii  \"Hello\"\n"},
    {"OtherUnit",
     {"SCPTtemperatureHysteresis-US", "00C8"},
     "SCPTtemperatureHysteresis-US  cp 214  2 bytes\n"
     "00 C8\n"
     "00 C8  (value)  3.6  raw 200, 1 * 10^-2 * raw, shown 1.8 * physical + 0\n"},
    {"ShortInput",
     {"SNVT_switch", "C8", "--any-length"},
     "SNVT_switch  nv 95  1 byte\n"
     "C8\n"
     "C8   value  100 percent of full level  raw 200, 5 * 10^-1 * raw\n"
     "     state  0 state code               beyond the end of the input\n"},
    {"InColor",
     {"SNVT_count", "0001", "--color", "always"},
     "SNVT_count  nv 8  2 bytes\n"
     "00 01\n"
     "00 01  \033[1m(value)\033[0m  \033[32m1 count\033[0m  raw 1\n"},
};

INSTANTIATE_TEST_SUITE_P(Types, ExplainedValue, testing::ValuesIn(kCases), kNameOf);

TEST(Explain, PrintsJson) {
  const ToolResult result = runTool({"explain", "SNVT_switch", "C863", "--json"});
  json::Value rows;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, rows, error)) << error;
  ASSERT_EQ(rows.getSize(), 2u);
  EXPECT_EQ(rows[0].stringify(),
            R"({"path":"value","byte":0,"bytes":"C8","value":100.0,)"
            R"("unit":"percent of full level","raw":200,"scaling":{"a":5,"b":-1,"c":0}})");
  EXPECT_EQ(rows[1]["note"].asString(), "above the maximum, raw 1");
}

TEST(Explain, RefusesWhatIsNoValue) {
  EXPECT_EQ(runTool({"explain", "SNVT_switch", "C8"}).status, 1);
  EXPECT_EQ(runTool({"explain", "SNVT_switch", "C8"}).output, "");
  EXPECT_EQ(runTool({"explain", "SNVT_none", "C8"}).status, 3);
  EXPECT_EQ(runTool({"explain", "SNVT_switch"}).status, 2);
  EXPECT_EQ(runTool({"explain", "SNVT_switch", "C801", "--color", "blue"}).status, 2);
}

}  // namespace

}  // namespace zavri::test
