#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// The form of decoded values: --select, --enum, --raw-too and --null-invalid.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

struct ShapeCase {
  std::string name;
  Words options;
  std::string value;            // of kRaw as JSON
  std::string rawNumbers = {};  // as JSON, if there are any
  std::string raw = {};         // instead of kRaw
};

// 12 bytes: power, half (steps of 0.5, 255 is invalid), bits (a signed field and an unsigned one
// without a name of its own), list[2] (hundredths, 65535 is invalid), pair {a, power}, text[2].
const std::string kLayout = structure(
    {{"power", enumeration("power_t")},
     {"half", scalar("unsigned short", scaling(5, -1, 0) + invalid("255"))},
     {"low", signedBits(0, 4, invalid("-8"))},
     {"high", bits(4, 4)},
     {"list", scalar("unsigned long", scaling(1, -2, 0) + invalid("65535")), arraySize(2)},
     {"pair", structure({{"a", scalar("signed short")}, {"power", enumeration("power_t")}})},
     {"text", scalar("unsigned char"), arraySize(2)}});

// power 1, half 255, low -8, high 15, list 200 and 65535, pair -2 and 7, text "AB".
const std::string kRaw = "01FF8F00C8FFFFFE074142";

class Shape : public testing::TestWithParam<ShapeCase> {
 protected:
  Shape() {
    _files.write(TypeId::StdPrefix, "enums", sharedEnums());
    _files.write(TypeId::StdPrefix, "nvs", sharedNvs() + nvt("_x", kLayout));
  }

  const std::string& getRaw() const { return GetParam().raw.empty() ? kRaw : GetParam().raw; }

  ToolResult decode(const Words& words, const std::string& input = "") {
    Words all{"--catalog", _files.path(), "decode"};
    all.insert(all.end(), words.begin(), words.end());
    all.insert(all.end(), GetParam().options.begin(), GetParam().options.end());
    return runTool(all, input);
  }

  TempCatalogue _files;
};

TEST_P(Shape, IsThatOfEachRecord) {
  const std::string record = R"({"n":1,"raw":")" + getRaw() + "\"";
  const std::string result =
      record + ",\"value\":" + GetParam().value +
      (GetParam().rawNumbers.empty() ? "" : ",\"rawNumbers\":" + GetParam().rawNumbers) + "}\n";
  const ToolResult shown =
      decode({"--stream", "--type", "SNVT_x"}, record + "}\n" + record + "}\n");
  EXPECT_EQ(shown.output, result + result);
  EXPECT_EQ(shown.errors, "");
  EXPECT_EQ(shown.status, 0);
}

TEST_P(Shape, IsThatOfOneValueAndOfABareLine) {
  const std::string value =
      GetParam().rawNumbers.empty()
          ? GetParam().value
          : "{\"value\":" + GetParam().value + ",\"rawNumbers\":" + GetParam().rawNumbers + "}";
  EXPECT_EQ(decode({"SNVT_x", getRaw()}).output, value + "\n");
  EXPECT_EQ(decode({"--stream", "--type", "SNVT_x"}, getRaw() + "\n").output, value + "\n");
}

const std::vector<ShapeCase> kCases = {
    {"Plain",
     {},
     R"({"power":"PWR_ON","half":127.5,"low":-8,"high":15,"list":[2.0,655.35],)"
     R"("pair":{"a":-2,"power":"7"},"text":"AB"})"},
    {"SelectedMembers",
     {"--select", "pair,list,text"},
     R"({"pair":{"a":-2,"power":"7"},"list":[2.0,655.35],"text":"AB"})"},
    {"SelectedPaths", {"--select", "pair.a,list[0]"}, R"({"pair.a":-2,"list[0]":2.0})"},
    {"EnumByName", {"--enum", "name", "--select", "power"}, R"({"power":"PWR_ON"})"},
    {"EnumByNumber",
     {"--enum", "number", "--select", "power,pair"},
     R"({"power":1,"pair":{"a":-2,"power":7}})"},
    {"NegativeEnumByNumber",
     {"--enum", "number", "--select", "power"},
     R"({"power":-1})",
     "",
     "FFFF8F00C8FFFFFE074142"},
    {"EnumByBoth",
     {"--enum", "both", "--select", "power,pair.power"},
     R"({"power":{"name":"PWR_ON","number":1},"pair.power":{"name":null,"number":7}})"},
    {"NullForInvalid",
     {"--null-invalid"},
     R"({"power":"PWR_ON","half":null,"low":null,"high":15,"list":[2.0,null],)"
     R"("pair":{"a":-2,"power":"7"},"text":"AB"})"},
    {"NullForInvalidBeforeTheKeyword",
     {"--null-invalid", "--invalid-keyword", "--select", "half"},
     R"({"half":null})"},
    {"RawNumbers",
     {"--raw-too", "--select", "half,low,high,list,pair,text,power"},
     R"({"half":127.5,"low":-8,"high":15,"list":[2.0,655.35],"pair":{"a":-2,"power":"7"},)"
     R"("text":"AB","power":"PWR_ON"})",
     R"({"power":1,"half":255,"low":-8,"high":15,"list[0]":200,"list[1]":65535,"pair.a":-2,)"
     R"("pair.power":7})"},
    {"RawNumbersOfWhatIsSelected",
     {"--raw-too", "--select", "pair.a,list[1]"},
     R"({"pair.a":-2,"list[1]":655.35})",
     R"({"list[1]":65535,"pair.a":-2})"},
    {"RawNumbersInTheOtherOrder",
     {"--raw-too", "--select", "list[0]", "--order", "little"},
     R"({"list[0]":512.0})",  // 0xC800 is 51200
     R"({"list[0]":51200})"},
    {"AllAtOnce",
     {"--raw-too", "--null-invalid", "--enum", "number", "--select", "power,half"},
     R"({"power":1,"half":null})",
     R"({"power":1,"half":255})"},
    // The bytes that are not there count as zeros.
    {"ShortValue",
     {"--raw-too", "--select", "list[1],half", "--any-length"},
     R"({"list[1]":0.0,"half":1.0})",
     R"({"half":2,"list[1]":0})",
     "0102"},
};

INSTANTIATE_TEST_SUITE_P(Options, Shape, testing::ValuesIn(kCases), kNameOf);

TEST(ShapeOfAValueItself, HasTheNameValue) {
  const ToolResult result =
      runTool({"decode", "--stream", "--raw-too", "--type", "SNVT_temp_p"}, "092E\n");
  EXPECT_EQ(result.output, "{\"value\":23.5,\"rawNumbers\":{\"value\":2350}}\n");
}

TEST(ShapeOfAValueItself, MayBeAnEnumeration) {
  const ToolResult result =
      runTool({"decode", "--stream", "--enum", "both", "--csv", "--type", "SNVT_date_day"}, "02\n");
  EXPECT_EQ(result.output, "raw,value,value.number,error\n02,DAY_TUE,2,\n");
}

TEST(ShapeOfFloats, KnowsTheInvalidMarker) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              nvt("_x", structure({{"f", floating("float", invalid("0.1"))},
                                   {"d", floating("double float", invalid("-1"))}})));
  // The single nearest to 0.1, and -1.
  const ToolResult result = runTool({"--catalog", files.path(), "decode", "SNVT_x",
                                     "3DCCCCCDBFF0000000000000", "--null-invalid", "--raw-too"});
  EXPECT_EQ(result.output,
            "{\"value\":{\"f\":null,\"d\":null},\"rawNumbers\":{\"f\":0.1,\"d\":-1.0}}\n");
}

TEST(Selection, IsNullWhereADynamicArrayIsShort) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              nvt("_x", structure({{"n", scalar("unsigned short")},
                                   {"d", scalar("unsigned short"), dynamicArray(0, 3)}})));
  const ToolResult result = runTool({"--catalog", files.path(), "decode", "SNVT_x", "0105",
                                     "--dynamic-arrays", "--select", "d[0],d[2]"});
  EXPECT_EQ(result.output, "{\"d[0]\":5,\"d[2]\":null}\n");
}

// Types have members of their own: a record of another type fails alone.
TEST(Selection, FailsForRecordsWithoutTheMember) {
  const ToolResult result =
      runTool({"decode", "--stream", "--select", "state"}, R"({"type":"SNVT_switch","raw":"C801"})"
                                                           "\n"
                                                           R"({"type":"SNVT_temp_p","raw":"092E"})"
                                                           "\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output,
            R"({"type":"SNVT_switch","raw":"C801","value":{"state":1}})"
            "\n"
            R"({"type":"SNVT_temp_p","raw":"092E",)"
            R"("error":"no member 'state' at path 'state'; there are no members here"})"
            "\n");
}

// --- Usage ---

struct UsageCase {
  std::string name;
  Words arguments;
  int status;
  std::string message;
};

class WrongShape : public testing::TestWithParam<UsageCase> {};

TEST_P(WrongShape, IsOneLineAndNoOutput) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_NE(result.errors.find(GetParam().message), std::string::npos) << result.errors;
}

const std::vector<UsageCase> kUsageCases = {
    {"UnknownMember",
     {"decode", "--stream", "--type", "SNVT_switch", "--select", "state,stat"},
     1,
     "no member 'stat' at path 'stat'; expected one of: value, state"},
    {"UnknownMemberOfAValue",
     {"decode", "SNVT_switch", "C801", "--select", "a"},
     1,
     "no member 'a' at path 'a'; expected one of: value, state"},
    {"UnknownElement",
     {"decode", "--stream", "--type", "SNVT_alarm", "--select", "location[6]"},
     1,
     "no element [6] at path 'location[6]'; there are 6"},
    {"EmptyPath", {"decode", "SNVT_switch", "C801", "--select", ""}, 2, "needs the path"},
    {"UnknownForm", {"decode", "SNVT_switch", "C801", "--enum", "all"}, 2, "--enum"},
    {"DynamicArrays",
     {"decode", "SNVT_switch", "C801", "--raw-too", "--dynamic-arrays"},
     2,
     "they do not go with --dynamic-arrays"},
    {"Text", {"decode", "--text", "SNVT_switch", "C801", "--raw-too"}, 2, "--raw-too"},
    {"Encode", {"encode", "--stream", "--select", "a"}, 2, "--select"},
    {"CsvWithoutStream", {"decode", "SNVT_switch", "C801", "--csv"}, 2, "--stream"},
    {"CsvInWithoutStream", {"decode", "SNVT_switch", "C801", "--csv-in"}, 2, "--stream"},
    {"ColumnWithoutCsv", {"decode", "--stream", "--raw-column", "x"}, 2, "--csv-in"},
};

INSTANTIATE_TEST_SUITE_P(Commands, WrongShape, testing::ValuesIn(kUsageCases), kNameOf);

}  // namespace

}  // namespace zavri::test
