#include <gtest/gtest.h>

#include <algorithm>

#include "tests/RunTool.h"

namespace zavri::test {

namespace {

struct OutputCase {
  std::string name;
  std::vector<std::string> arguments;
  std::string output;
};

class ProgramOutput : public testing::TestWithParam<OutputCase> {};

TEST_P(ProgramOutput, IsTheWholeAnswer) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
}

const std::string kStd = "0000000000000000-0/";
const std::string kUserCatalogue = std::string(KORVAT_TEST_DATA) + "/catalogue";

// SNVT_switch: value is 5 * raw / 10 percent, state a signed byte. SNVT_temp_p: raw / 100.
const std::vector<OutputCase> kOutputCases = {
    {"DecodesByBareName", {"decode", "SNVT_switch", "C801"}, "{\"value\":100.0,\"state\":1}\n"},
    {"DecodesByNameWithPrefix",
     {"decode", kStd + "SNVT_switch", "C801"},
     "{\"value\":100.0,\"state\":1}\n"},
    {"DecodesByFullTypeId",
     {"decode", "/~/type/dp/x/" + kStd + "SNVT_switch", "C801"},
     "{\"value\":100.0,\"state\":1}\n"},
    {"TakesLowerCaseAndBlanks",
     {"decode", "SNVT_switch", "c8 ff"},
     "{\"value\":100.0,\"state\":-1}\n"},
    {"TakesHexInPieces", {"decode", "SNVT_switch", "C8", "00"}, "{\"value\":100.0,\"state\":0}\n"},
    {"TakesOptionsBehindTheCommand",
     {"decode", "SNVT_temp_p", "2E09", "--order", "little"},
     "23.5\n"},  // 0x092E = 2350
    {"ShowsTheInvalidKeyword",
     {"--invalid-keyword", "decode", "SNVT_temp_p", "7FFF"},
     "\"invalid\"\n"},
    {"ShowsTheInvalidNumberWithoutIt", {"decode", "SNVT_temp_p", "7FFF"}, "327.67\n"},
    {"TakesShortInputWhenAsked",
     {"decode", "SNVT_switch", "02", "--any-length"},
     "{\"value\":1.0,\"state\":0}\n"},
    {"TakesLongInputWhenAsked",
     {"decode", "SNVT_switch", "02017F", "--any-length"},
     "{\"value\":1.0,\"state\":1}\n"},
    {"GetsOneMember", {"get", "SNVT_switch", "C801", "state"}, "1\n"},
    {"GetsOneElement",
     {"get", "SNVT_alarm", "010203040506000A0A010012DEADBEEF07E40C1F173B3B03E7CAFEBABE",
      "location[5]"},
     "6\n"},
    {"GetsTheWholeForAnEmptyPath", {"get", "SNVT_temp_p", "0001", ""}, "0.01\n"},
    {"GetsAMemberOfANestedStructure",
     {"get", "SNVT_file_status",
      "000002000141424300000000000000000000000000"
      "0000000A0007",
      "adr.descriptor.size"},
     "10\n"},
    {"ListsByPattern",
     {"list", "nv", "SNVT_temp_?"},
     "nv      63  SNVT_temp_f                       4 bytes\n"
     "nv     105  SNVT_temp_p                       2 bytes\n"},
    {"ListsByPartOfTheName",
     {"list", "ELAPSED"},
     "nv      87  SNVT_elapsed_tm                   7 bytes\n"},
    {"ListsProfiles",
     {"--catalog", kUserCatalogue, "list", "fp"},
     "fp       2  SFPTopenLoopSensor                key 1, 1 nvs, 0 cps\n"
     "fp       6  SFPTcontroller                    key 5, 1 nvs, 0 cps  obsolete\n"
     "fp      22  SFPTboilerController              key 8301, 3 nvs, 1 cps\n"},
    {"ListsEveryKindInOrder",
     {"--catalog", kUserCatalogue, "--prefix", "9FFFFF0000000000-3", "list", "boiler"},
     "nv       1  UNVTBoilerState                   4 bytes\n"
     "nv       2  UNVTBoilerFault                   3 bytes\n"
     "cp       1  UCPTBoilerTarget                  4 bytes\n"
     "enum     1  boiler_stage_t                    4 items\n"
     "enum     2  boiler_fault_t                    3 items\n"
     "fp       1  UFPTboiler                        key 20003, 3 nvs, 2 cps\n"},
    {"DescribesAStructure",
     {"describe", "SNVT_switch"},
     "SNVT_switch  nv 95  set 0000000000000000-0  2 bytes\n"
     "load level together with on/off state\n"
     "  byte bit  bits  member   type\n"
     "     0        16  (value)  struct\n"
     "     0         8  value    unsigned short  raw 0..200  = 5 * 10^-1 * raw  [percent of full "
     "level]\n"
     "     1         8  state    signed short    raw -1..1  invalid -1  [state code]\n"
     "  byte   0   1   2   3   4   5   6   7\n"
     "       +-------------------------------+\n"
     "     0 |             value             |\n"
     "       +-------------------------------+\n"
     "     1 |             state             |\n"
     "       +-------------------------------+\n"
     "format text(\"%f %d\", value, state)\n"},
};

INSTANTIATE_TEST_SUITE_P(Commands, ProgramOutput, testing::ValuesIn(kOutputCases),
                         [](const auto& info) { return info.param.name; });

struct ErrorCase {
  std::string name;
  std::vector<std::string> arguments;
  int status;
  std::string message;  // stands in the one line of standard error
};

class ProgramError : public testing::TestWithParam<ErrorCase> {};

TEST_P(ProgramError, IsOneLineAndNoOutput) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_NE(result.errors.find(GetParam().message), std::string::npos) << result.errors;
}

const std::vector<ErrorCase> kErrorCases = {
    {"UnknownType", {"decode", "SNVT_foo", "00"}, 3, "unknown type 'SNVT_foo'"},
    {"ProfileToDescribe",
     {"--catalog", kUserCatalogue, "describe", "SFPTcontroller"},
     3,
     "'SFPTcontroller' has no layout"},
    {"ProfileToDecode",
     {"--catalog", kUserCatalogue, "decode", "SFPTcontroller", "00"},
     3,
     "'SFPTcontroller' has no values"},
    {"UnknownTypeToDescribe", {"describe", "SNVT_foo"}, 3, "unknown type 'SNVT_foo'"},
    {"TypeOfAnUnknownSet", {"decode", "8000010000000000-3/UNVTx", "00"}, 3, "8000010000000000-3"},
    {"EmptyTypeText", {"decode", "/", "00"}, 3, "unknown type '/'"},
    {"EnumerationWithoutValues", {"decode", "hvac_t", "00"}, 3, "'hvac_t' has no values"},
    {"OddHex", {"decode", "SNVT_switch", "C80"}, 1, "3 digits given, expected an even number"},
    {"NoHex", {"decode", "SNVT_switch", "C8XY"}, 1, "'X' at position 3"},
    {"TooShort",
     {"decode", "SNVT_switch", "C8"},
     1,
     "1 byte given, but a value of SNVT_switch has 2"},
    {"TooLong", {"decode", "SNVT_switch", "C80100"}, 1, "3 bytes given"},
    {"EmptyHex", {"decode", "SNVT_switch", ""}, 1, "0 bytes given"},
    {"NewLineInAnArgument", {"decode", "SNVT_a\nb", "00"}, 3, "unknown type 'SNVT_a b'"},
    {"MissingCatalogue", {"--catalog", "/no/such/folder", "list"}, 3, "no catalogue"},
    {"CatalogueWithoutTypes", {"--catalog", "/proc/self", "list"}, 3, "no nv types in set"},
    {"NoLayout", {"decode", "SCPTdefOutput", "00"}, 1, "has no layout of its own"},
    {"UnknownMember", {"get", "SNVT_switch", "C801", "stat"}, 1, "expected one of: value, state"},
    {"IndexIntoNoArray", {"get", "SNVT_switch", "C801", "value[0]"}, 1, "there is no array here"},
    {"IndexWithoutNumber", {"get", "SNVT_switch", "C801", "value[x]"}, 1, "expected [n]"},
    {"MemberOfANumber", {"get", "SNVT_temp_p", "0000", "a"}, 1, "there are no members here"},
    {"NothingListed", {"list", "nv", "no such type"}, 3, "no type matches 'no such type'"},
    {"NoProfiles",
     {"--catalog", kUserCatalogue, "--prefix", "9000000501238500-2", "list", "fp"},
     3,
     "no fp types in set 9000000501238500-2"},
    {"UnknownKind", {"list", "fx", "temp"}, 2, "unknown kind 'fx'; expected nv, cp, enum or fp"},
    {"NoCommand", {}, 2, "korvat --help"},
    {"UnknownCommand", {"frobnicate"}, 2, "korvat --help"},
    {"MissingArgument", {"decode", "SNVT_switch"}, 2, "HEX"},
    {"UnknownOption", {"decode", "SNVT_switch", "C801", "--frob"}, 2, "--frob"},
    {"UnknownOrder", {"--order", "middle", "decode", "SNVT_switch", "C801"}, 2, "middle"},
    {"UnknownLogLevel", {"--log", "loud", "list"}, 2, "loud"},
};

INSTANTIATE_TEST_SUITE_P(Commands, ProgramError, testing::ValuesIn(kErrorCases),
                         [](const auto& info) { return info.param.name; });

TEST(Program, DescribesAsJson) {
  const ToolResult result = runTool({"describe", "SNVT_switch", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.output.find("\"scaling\": {\n        \"a\": 5,\n        \"b\": -1,"),
            std::string::npos)
      << result.output;
}

TEST(Program, DescribesAnEnumeration) {
  const ToolResult result = runTool({"describe", "hvac_t"});
  EXPECT_EQ(result.status, 0);
  EXPECT_NE(result.output.find("\n    -1  HVAC_NUL\n     0  HVAC_AUTO\n     1  HVAC_HEAT\n"),
            std::string::npos)
      << result.output;
}

TEST(Program, ListsAsJson) {
  const ToolResult result = runTool({"list", "nv", "SNVT_switch", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "[\n  {\n    \"kind\": \"nv\",\n    \"index\": 95,\n    \"name\": \"SNVT_switch\",\n"
            "    \"size\": 2,\n    \"obsolete\": false\n  }\n]\n");
}

TEST(Program, ListsProfilesAsJson) {
  const ToolResult result =
      runTool({"--catalog", kUserCatalogue, "list", "fp", "boiler", "--json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output,
            "[\n  {\n    \"kind\": \"fp\",\n    \"index\": 22,\n"
            "    \"name\": \"SFPTboilerController\",\n    \"key\": 8301,\n    \"nvs\": 3,\n"
            "    \"cps\": 1,\n    \"obsolete\": false\n  }\n]\n");
}

TEST(Program, ShowsTheMessagesOfTheLibraryWhenAsked) {
  const ToolResult result = runTool({"decode", "SNVT_temp_p", "0001", "--log", "debug"});
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, "0.01\n");
  EXPECT_NE(result.errors.find("[ResourceFileSet::loadResources][nv] going to load"),
            std::string::npos)
      << result.errors;
}

TEST(Program, HelpAndVersionAreNoErrors) {
  EXPECT_EQ(runTool({"--help"}).status, 0);
  EXPECT_EQ(runTool({"decode", "--help"}).status, 0);
  const ToolResult version = runTool({"--version"});
  EXPECT_EQ(version.status, 0);
  EXPECT_EQ(version.output.rfind("korvat ", 0), 0u) << version.output;
}

}  // namespace

}  // namespace zavri::test
