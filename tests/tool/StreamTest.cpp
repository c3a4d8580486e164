#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tests/RunTool.h"

extern char** environ;

// decode --stream and encode --stream.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

struct StreamCase {
  std::string name;
  Words arguments;
  std::string input;
  std::string output;
};

const auto kNameOf = [](const auto& info) { return info.param.name; };

class GoodStream : public testing::TestWithParam<StreamCase> {};

TEST_P(GoodStream, IsConvertedLineByLine) {
  const ToolResult result = runTool(GetParam().arguments, GetParam().input);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
}

const std::string kSwitchRecord = R"({"type":"SNVT_switch","raw":"C801"})";
const std::string kSwitchDone =
    R"({"type":"SNVT_switch","raw":"C801","value":{"value":100.0,"state":1}})";

const std::vector<StreamCase> kGoodCases = {
    {"DecodesRecordsOfAnyType",
     {"decode", "--stream"},
     kSwitchRecord + "\n" + R"({"type":"SNVT_temp_p","raw":"09 2e"})" + "\n" +
         R"({"type":"SCPTmaxSndT","raw":"00010203040005"})" + "\n",
     kSwitchDone + "\n" + R"({"type":"SNVT_temp_p","raw":"09 2e","value":23.5})" + "\n" +
         R"({"type":"SCPTmaxSndT","raw":"00010203040005","value":)"
         R"({"day":1,"hour":2,"minute":3,"second":4,"millisecond":5}})"
         "\n"},
    {"EncodesRecordsOfAnyType",
     {"encode", "--stream"},
     R"({"type":"SNVT_switch","value":{"state":1,"value":100}})"
     "\n"
     R"({"type":"SNVT_date_day","value":"DAY_TUE"})"
     "\n",
     R"({"type":"SNVT_switch","value":{"state":1,"value":100},"raw":"C801"})"
     "\n"
     R"({"type":"SNVT_date_day","value":"DAY_TUE","raw":"02"})"
     "\n"},
    {"PassesOtherPropertiesThroughInOrder",
     {"decode", "--stream"},
     R"({"z":[1,{"x":null}],"raw":"C801","a":true,"type":"SNVT_switch","n":-1.5,"t":"\u00e9\n"})"
     "\n",
     R"({"z":[1,{"x":null}],"raw":"C801","a":true,"type":"SNVT_switch","n":-1.5,"t":"é\n",)"
     R"("value":{"value":100.0,"state":1}})"
     "\n"},
    {"ReplacesAnOldResultInItsPlace",
     {"encode", "--stream"},
     R"({"raw":"0000","type":"SNVT_switch","value":{"value":100.0,"state":1}})"
     "\n",
     R"({"raw":"C801","type":"SNVT_switch","value":{"value":100.0,"state":1}})"
     "\n"},
    {"SkipsBlankLines",
     {"decode", "--stream"},
     "\n \t\n\r\n" + kSwitchRecord + "\n\n",
     kSwitchDone + "\n"},
    {"TakesLinesThatEndInCarriageReturns",
     {"decode", "--stream"},
     kSwitchRecord + "\r\n" + kSwitchRecord + "\r\n",
     kSwitchDone + "\n" + kSwitchDone + "\n"},
    {"TakesALastLineWithoutAnEnd",
     {"decode", "--stream"},
     kSwitchRecord + "\n" + kSwitchRecord,
     kSwitchDone + "\n" + kSwitchDone + "\n"},
    {"TakesNothingAtAll", {"decode", "--stream"}, "", ""},
    {"TakesTheOptions",
     {"encode", "--stream", "--order", "little", "--allow-missing"},
     R"({"type":"SNVT_temp_p","value":23.5})"
     "\n"
     R"({"type":"SNVT_switch","value":{"state":1}})"
     "\n",
     R"({"type":"SNVT_temp_p","value":23.5,"raw":"2E09"})"
     "\n"
     R"({"type":"SNVT_switch","value":{"state":1},"raw":"0001"})"
     "\n"},
    {"DecodesBareHexadecimal",
     {"decode", "--stream", "--type", "SNVT_switch"},
     "C801\n c8 FF \r\n1234\n0000",
     "{\"value\":100.0,\"state\":1}\n{\"value\":100.0,\"state\":-1}\n"
     "{\"value\":9.0,\"state\":52}\n{\"value\":0.0,\"state\":0}\n"},  // 0x12 = 18, 0x34 = 52
    {"EncodesBareValues",
     {"encode", "--stream", "--type", "SNVT_temp_p"},
     "23.5\n-5\r\n 0.01",
     "092E\nFE0C\n0001\n"},
    {"EncodesBareObjects",
     {"encode", "--stream", "--type", "SNVT_switch"},
     R"({"value":100.0,"state":1})"
     "\n",
     "C801\n"},
    {"EncodesBareTexts",
     {"encode", "--stream", "--type", "SNVT_date_day"},
     "\"DAY_SAT\"\n",
     "06\n"},
    {"TakesRecordsAmongBareLines",
     {"decode", "--stream", "--type", "SNVT_switch"},
     R"({"type":"SNVT_temp_p","raw":"092E"})"
     "\nC801\n"
     R"({"raw":"C801","n":1})"
     "\n",
     R"({"type":"SNVT_temp_p","raw":"092E","value":23.5})"
     "\n"
     R"({"value":100.0,"state":1})"
     "\n"
     R"({"raw":"C801","n":1,"value":{"value":100.0,"state":1}})"
     "\n"},
    {"EncodesRecordsAmongBareValues",
     {"encode", "--stream", "--type", "SNVT_switch"},
     R"({"type":"SNVT_temp_p","value":1})"
     "\n"
     R"({"value":1,"state":0})"
     "\n",
     R"({"type":"SNVT_temp_p","value":1,"raw":"0064"})"
     "\n0200\n"},
    // SNVT_temp_p has no member "value", SNVT_switch none of the name "time".
    {"EncodesRecordsThatNameNoType",
     {"encode", "--stream", "--type", "SNVT_temp_p"},
     R"({"time":"10:00","value":23.5})"
     "\n"
     R"({"value":-5})"
     "\n",
     R"({"time":"10:00","value":23.5,"raw":"092E"})"
     "\n"
     R"({"value":-5,"raw":"FE0C"})"
     "\n"},
    {"TellsRecordsFromValuesWithAMemberOfThatName",
     {"encode", "--stream", "--type", "SNVT_switch"},
     R"({"time":"10:00","value":{"value":100,"state":1}})"
     "\n"
     R"({"value":100,"state":1})"
     "\n",
     R"({"time":"10:00","value":{"value":100,"state":1},"raw":"C801"})"
     "\nC801\n"},
    {"DropsAnOldError",
     {"decode", "--stream"},
     R"({"error":"old","type":"SNVT_switch","raw":"C801"})"
     "\n",
     kSwitchDone + "\n"},
    {"DropsAnOldErrorOfAValue",
     {"encode", "--stream"},
     R"({"type":"SNVT_temp_p","error":"old","value":23.5})"
     "\n",
     R"({"type":"SNVT_temp_p","value":23.5,"raw":"092E"})"
     "\n"},
    {"SkipsAByteOrderMark",
     {"decode", "--stream"},
     "\xEF\xBB\xBF" + kSwitchRecord + "\n" + kSwitchRecord + "\n",
     kSwitchDone + "\n" + kSwitchDone + "\n"},
    {"SkipsAByteOrderMarkBeforeBareLines",
     {"decode", "--stream", "--type", "SNVT_temp_p"},
     "\xEF\xBB\xBF"
     "092E\n",
     "23.5\n"},
    {"EncodesWhatWasDecodedWithADefaultType",
     {"encode", "--stream", "--type", "SNVT_switch"},
     R"({"raw":"","n":1,"value":{"value":1,"state":0}})"
     "\n",
     R"({"raw":"0200","n":1,"value":{"value":1,"state":0}})"
     "\n"},
};

INSTANTIATE_TEST_SUITE_P(Commands, GoodStream, testing::ValuesIn(kGoodCases), kNameOf);

// --- Records that fail ---

class FailingLine : public testing::TestWithParam<StreamCase> {};

// The line under test stands between two good ones, which it must not disturb.
TEST_P(FailingLine, KeepsItsPlace) {
  const bool isDecoding = GetParam().arguments.front() == "decode";
  const std::string good =
      isDecoding ? kSwitchRecord
                 : R"({"type":"SNVT_switch","value":{"value":100.0,"state":1},"raw":""})";
  const std::string done =
      isDecoding ? kSwitchDone
                 : R"({"type":"SNVT_switch","value":{"value":100.0,"state":1},"raw":"C801"})";
  const ToolResult result =
      runTool(GetParam().arguments, good + "\n" + GetParam().input + "\n" + good + "\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors.rfind("korvat: 1 failed, the first in line 2: ", 0), 0u);
  EXPECT_EQ(result.errors.substr(result.errors.find('\n') + 1),
            "korvat: 1 of 3 records failed; each has its \"error\"\n");
  EXPECT_EQ(result.output, done + "\n" + GetParam().output + "\n" + done + "\n");
}

const std::string kWrongLength =
    "1 byte given, but a value of SNVT_switch has 2: 'state' at byte 1 is not there; --any-length "
    "takes it all the same";

const std::vector<StreamCase> kFailingCases = {
    {"ValueOfTheWrongLength",
     {"decode", "--stream"},
     R"({"a":1,"type":"SNVT_switch","raw":"C8","z":[]})",
     R"({"a":1,"type":"SNVT_switch","raw":"C8","z":[],"error":")" + kWrongLength + "\"}"},
    {"NoHexadecimal",
     {"decode", "--stream"},
     R"({"type":"SNVT_switch","raw":"C8X1"})",
     R"({"type":"SNVT_switch","raw":"C8X1","error":"'C8X1' is not hexadecimal: 'X' at position 3 (byte 1); )"
     R"(expected digits 0-9, A-F"})"},
    {"MissingType",
     {"decode", "--stream"},
     R"({"raw":"C801"})",
     R"({"raw":"C801","error":"\"type\" is missing or no text"})"},
    {"TypeThatIsNoText",
     {"decode", "--stream"},
     R"({"type":95,"raw":"C801"})",
     R"({"type":95,"raw":"C801","error":"\"type\" is missing or no text"})"},
    {"TypeThatIsNoTextBesidesADefault",
     {"decode", "--stream", "--type", "SNVT_temp_p"},
     R"({"type":95,"raw":"C801"})",
     R"({"type":95,"raw":"C801","error":"\"type\" is missing or no text"})"},
    {"MissingRaw",
     {"decode", "--stream"},
     R"({"type":"SNVT_switch"})",
     R"({"type":"SNVT_switch","error":"\"raw\" is missing or no text"})"},
    {"RawThatIsNoText",
     {"decode", "--stream"},
     R"({"type":"SNVT_switch","raw":7})",
     R"({"type":"SNVT_switch","raw":7,"error":"\"raw\" is missing or no text"})"},
    {"EnumerationWithoutValues",
     {"decode", "--stream"},
     R"({"type":"hvac_t","raw":"00"})",
     R"({"type":"hvac_t","raw":"00","error":"'hvac_t' has no values: expected a network variable )"
     R"(or configuration property type"})"},
    {"NoObject", {"decode", "--stream"}, "[1,2]", R"({"error":"expected a JSON object"})"},
    {"BareNumberWithoutADefaultType",
     {"decode", "--stream"},
     "1234",
     R"({"error":"expected a JSON object"})"},
    {"BareLineOfTheWrongLength",
     {"decode", "--stream", "--type", "SNVT_switch"},
     " C8",
     R"({"raw":"C8","error":")" + kWrongLength + "\"}"},
    {"BareLineOfAnOddLength",
     {"decode", "--stream", "--type", "SNVT_switch"},
     "123",
     R"({"raw":"123","error":"'123' is not whole bytes: 3 digits given, )"
     R"(expected an even number"})"},
    {"MissingValue",
     {"encode", "--stream"},
     R"({"type":"SNVT_switch","raw":"C801"})",
     R"({"type":"SNVT_switch","raw":"C801","error":"\"value\" is missing"})"},
    {"MissingTypeOfAValue",
     {"encode", "--stream"},
     R"({"value":1,"n":[]})",
     R"({"value":1,"n":[],"error":"\"type\" is missing or no text"})"},
    {"NullValue",
     {"encode", "--stream"},
     R"({"type":"SNVT_temp_p","value":null,"n":1})",
     R"({"type":"SNVT_temp_p","value":null,"n":1,)"
     R"("error":"cannot encode SNVT_temp_p: a number is missing; )"
     R"(expected -273.17 to 327.67 degrees Celsius"})"},
    {"BareValueThatIsRefused",
     {"encode", "--stream", "--type", "SNVT_switch"},
     R"({"value":1,"state":"on"})",
     R"({"value":{"value":1,"state":"on"},)"
     R"("error":"cannot encode SNVT_switch: state: not a number: \"on\" (byte 1); )"
     R"(expected -1 to 1 state code"})"},
};

INSTANTIATE_TEST_SUITE_P(Commands, FailingLine, testing::ValuesIn(kFailingCases), kNameOf);

// The reason is worded by the JSON parser or names a folder: only its beginning is fixed.
class FailingLineStart : public testing::TestWithParam<StreamCase> {};

TEST_P(FailingLineStart, KeepsItsPlace) {
  const ToolResult result = runTool(
      GetParam().arguments, kSwitchRecord + "\n" + GetParam().input + "\n" + kSwitchRecord + "\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors.rfind("korvat: 1 failed, the first in line 2: ", 0), 0u);
  EXPECT_EQ(result.errors.substr(result.errors.find('\n') + 1),
            "korvat: 1 of 3 records failed; each has its \"error\"\n");
  const std::string start = kSwitchDone + "\n" + GetParam().output;
  const std::string end = "\"}\n" + kSwitchDone + "\n";
  ASSERT_GE(result.output.size(), start.size() + end.size()) << result.output;
  EXPECT_EQ(result.output.substr(0, start.size()), start);
  EXPECT_EQ(result.output.substr(result.output.size() - end.size()), end);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 3);
}

const std::vector<StreamCase> kFailingStartCases = {
    {"UnknownType",
     {"decode", "--stream"},
     R"({"type":"SNVT_foo","raw":"00","n":1})",
     R"({"type":"SNVT_foo","raw":"00","n":1,"error":"unknown type 'SNVT_foo': no nv type of )"},
    {"TypeOfAnUnknownSet",
     {"decode", "--stream"},
     R"({"type":"8000010000000000-3/UNVTx","raw":"00"})",
     R"({"type":"8000010000000000-3/UNVTx","raw":"00","error":"unknown type )"},
    {"NoJson", {"decode", "--stream"}, "not json", R"({"error":"not JSON: )"},
    {"CutJson",
     {"decode", "--stream"},
     R"({"type":"SNVT_switch","raw":"C801")",
     R"({"error":"not JSON: )"},
    {"BrokenUtf8",
     {"decode", "--stream"},
     "{\"type\":\"SNVT_switch\",\"raw\":\"C801\",\"n\":\"\xFF\"}",
     R"({"error":"not JSON: Invalid encoding in string.)"},
    {"ByteOrderMarkInALaterLine",
     {"decode", "--stream"},
     "\xEF\xBB\xBF" + kSwitchRecord,
     R"({"error":"not JSON: )"},
    {"NestedTooDeeply",
     {"decode", "--stream"},
     "{\"type\":\"SNVT_switch\",\"raw\":\"C801\",\"n\":" + std::string(200, '[') +
         std::string(200, ']') + "}",
     R"({"error":"not JSON: Nested too deeply.)"},
    {"NoHexadecimalOnABareLine",
     {"decode", "--stream", "--type", "SNVT_switch"},
     "not json",
     R"({"raw":"not json","error":"'not json' is not hexadecimal: 'n' at position 1 (byte 0); )"},
};

INSTANTIATE_TEST_SUITE_P(Commands, FailingLineStart, testing::ValuesIn(kFailingStartCases),
                         kNameOf);

TEST(Stream, CountsEveryRecordThatFails) {
  const ToolResult result =
      runTool({"decode", "--stream"}, "1\n\n" + kSwitchRecord + "\n2\n" + kSwitchRecord + "\n3\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "korvat: 3 failed, the first in line 1: expected a JSON object\n"
            "korvat: 3 of 5 records failed; each has its \"error\"\n");
}

// Reasons are told apart by what is left of their messages without numbers, quoted texts and paths.
TEST(Stream, SumsUpTheReasons) {
  const ToolResult result = runTool({"encode", "--stream", "--type", "SNVT_switch"},
                                    R"({"value":1})"
                                    "\n"
                                    R"({"value":"a","state":1})"
                                    "\n\n"
                                    R"({"value":1,"state":"b"})"
                                    "\n"
                                    R"({"state":1})"
                                    "\n"
                                    R"({"type":"SNVT_switch","value":{"value":1,"state":1,"c":5}})"
                                    "\n"
                                    R"({"value":1,"state":{}})"
                                    "\n"
                                    R"({"value":1,"state":1})"
                                    "\n[");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(
      result.errors,
      "korvat: 3 failed, the first in line 2: cannot encode SNVT_switch: not a number: ...\n"
      "korvat: 2 failed, the first in line 1: cannot encode SNVT_switch: a number is missing\n"
      "korvat: 1 failed, the first in line 6: cannot encode SNVT_switch: "
      "unknown member '...'\n"
      "korvat: 1 failed, the first in line 9: not JSON: Invalid value.\n"
      "korvat: 7 of 8 records failed; each has its \"error\"\n");
}

// Twelve reasons, the last of them twice.
TEST(Stream, ShowsTheTenMostFrequentReasons) {
  const Words types = {"amp",    "amp_mil", "angle", "count", "count_inc", "freq_hz", "temp",
                       "temp_p", "lux",     "press", "speed", "flow",      "flow"};
  std::string input;
  for (const std::string& type : types)
    input += R"({"type":"SNVT_)" + type +
             R"(","raw":"00"})"
             "\n";
  const auto lineOf = [&](int count, std::size_t line) {
    return "korvat: " + std::to_string(count) + " failed, the first in line " +
           std::to_string(line) + ": N byte given, but a value of SNVT_" + types[line - 1] +
           " has N\n";
  };
  std::string errors = lineOf(2, 12);
  for (std::size_t line = 1; line <= 9; ++line) errors += lineOf(1, line);
  errors += "korvat: 2 failed for 2 other reasons\n";
  errors += "korvat: 13 of 13 records failed; each has its \"error\"\n";
  EXPECT_EQ(runTool({"decode", "--stream"}, input).errors, errors);
}

// What is quoted from the layout or the grammar, and the set, tell reasons apart; what is quoted
// from the record does not.
TEST(Stream, TellsReasonsApartByWhatTheRecordDoesNotSay) {
  const std::string unknown = R"(","raw":"00"})"
                              "\n";
  const ToolResult result =
      runTool({"decode", "--stream"}, R"({"type":"8000010000000000-3/UNVTx)" + unknown +
                                          R"({"type":"8000010000000000-3/UNVTy)" + unknown +
                                          R"({"type":"8000010000000000-4/UNVTx)" + unknown +
                                          R"({"type":"SNVT_switch","raw":"C8"})"
                                          "\n"
                                          R"({"type":"SNVT_switch","raw":""})"
                                          "\n"
                                          R"({"type":"SNVT_switch" "raw":"C801"})"
                                          "\n");
  const auto isThere = [&](const std::string& text) {
    return result.errors.find("korvat: " + text) != std::string::npos;
  };
  EXPECT_TRUE(
      isThere("2 failed, the first in line 1: unknown type '...': no nv type of that name "
              "in set 8000010000000000-3 of '"));
  EXPECT_TRUE(
      isThere("1 failed, the first in line 3: unknown type '...': no nv type of that name "
              "in set 8000010000000000-4 of '"));
  EXPECT_TRUE(
      isThere("1 failed, the first in line 4: N byte given, but a value of SNVT_switch has "
              "N: 'state' at byte N is not there\n"));
  EXPECT_TRUE(
      isThere("1 failed, the first in line 5: N bytes given, but a value of SNVT_switch "
              "has N: 'value' at byte N is not there\n"));
  EXPECT_TRUE(
      isThere("1 failed, the first in line 6: not JSON: Missing a comma or '}' after an "
              "object member.\n"))
      << result.errors;
}

// 1000 reasons are told apart: ten are shown, 990 are known, and there are more.
TEST(Stream, CountsNoReasonsBeyondThoseThatItTellsApart) {
  std::string input;
  for (int i = 1; i <= 1010; ++i) {
    char set[17];
    std::snprintf(set, sizeof set, "80%04d0000000000", i);
    input += std::string(R"({"type":")") + set +
             R"(-3/UNVTx","raw":"00"})"
             "\n";
  }
  const ToolResult result = runTool({"decode", "--stream"}, input);
  const std::string end =
      "\nkorvat: 1000 failed for more than 990 other reasons\n"
      "korvat: 1010 of 1010 records failed; each has its \"error\"\n";
  ASSERT_GT(result.errors.size(), end.size());
  EXPECT_EQ(result.errors.substr(result.errors.size() - end.size()), end);
}

// --- The short road ---

struct RoadCase {
  std::string name;
  Words arguments;
  Words lines;
};

class BothRoads : public testing::TestWithParam<RoadCase> {};

// With messages of the library all records go through documents. Each form comes twice: the first
// record of a type always does.
TEST_P(BothRoads, GiveTheSame) {
  std::string input;
  for (int i = 0; i < 2; ++i) {
    for (const std::string& line : GetParam().lines) input += line + "\n";
  }
  Words general = GetParam().arguments;
  general.insert(general.end(), {"--log", "error"});
  const ToolResult expected = runTool(general, input);
  const ToolResult result = runTool(GetParam().arguments, input);
  EXPECT_EQ(result.output, expected.output);
  EXPECT_EQ(result.status, expected.status);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'),
            static_cast<std::ptrdiff_t>(2 * GetParam().lines.size()));
}

const Words kRecordsToDecode = {
    kSwitchRecord,
    R"( { "type" : "SNVT_switch" ,	"raw" : "C801" } )",
    R"({"raw":"c8fF","type":"SNVT_switch"})",
    R"({"raw":"C8 01","type":"SNVT_switch"})",
    R"({"raw":"C8","type":"SNVT_switch"})",
    R"({"raw":"C80G","type":"SNVT_switch"})",
    R"({"raw":"C801","type":"SNVT_switch","value":7,"z":0})",
    R"({"raw":"C801","type":"SNVT_switch","value":"old"})",
    R"({"raw":"C801","type":"SNVT_switch","error":"old"})",
    R"({"raw":"C801","type":"SNVT_switch","rawNumbers":"old"})",
    R"({"raw":"C801","raw":"0000","type":"SNVT_switch"})",
    R"({"raw":"C801","type":"SNVT_temp_p","type":"SNVT_switch"})",
    R"({"a":1,"a":2,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":1,"b":-1,"c":0,"d":true,"e":false,"f":null,"g":"/\u007F'<","raw":"C801","type":"SNVT_switch"})",
    R"({"a":-0,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":01,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":1.50,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":1e2,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":123456789012345678,"b":-123456789012345678,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":18446744073709551616,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":nul,"raw":"C801","type":"SNVT_switch"})",
    R"({"a":"\u0041\n","raw":"C801","type":"SNVT_switch"})",
    R"({"a":"\u00e9 é","raw":"C801","type":"SNVT_switch"})",
    "{\"a\":\"\x7F\",\"raw\":\"C801\",\"type\":\"SNVT_switch\"}",
    "{\"a\":\"\t\",\"raw\":\"C801\",\"type\":\"SNVT_switch\"}",
    "{\"a\":\"\xFF\",\"raw\":\"C801\",\"type\":\"SNVT_switch\"}",
    R"({"a":[1,{}],"raw":"C801","type":"SNVT_switch"})",
    R"({"":"","raw":"C801","type":"SNVT_switch"})",
    R"({"1":1,"2":1,"3":1,"4":1,"5":1,"6":1,"7":1,"8":1,"9":1,"10":1,"11":1,"12":1,"13":1,"14":1,"15":1,"raw":"C801","type":"SNVT_switch"})",
    R"({"raw":"C801","type":"SNVT_switch",})",
    R"({"raw":"C801" "type":"SNVT_switch"})",
    R"({"raw":"C801","type":"SNVT_switch"} x)",
    R"({"raw":"C801","type":"SNVT_switch"}{})",
    R"({"raw":"C801","type":"SNVT_switch")",
    R"({"raw":"C801"})",
    R"({"raw":"C801","type":5})",
    R"({"raw":5,"type":"SNVT_switch"})",
    R"({"raw":null,"type":null})",
    R"({"raw":"C801","type":""})",
    R"({"raw":"C801","type":"SNVT_none"})",
    R"({"raw":"01","type":"hvac_t"})",
    R"({"raw":"","type":"SNVT_switch"})",
    R"({})",
    R"({"raw":"092E","type":"SNVT_temp_p"})",
    R"({"raw":"7FFF","type":"SNVT_temp_p"})",
    R"({"raw":"FF","type":"SNVT_date_day"})",
    R"({"raw":"63","type":"SNVT_date_day"})",
    R"({"raw":"7FC00000","type":"SNVT_temp_f"})",
    R"({"raw":"3DCCCCCD","type":"SNVT_temp_f"})",
    R"({"raw":"0101020003414200000000000000000000000000000000000500","type":"SNVT_file_status"})",
    R"({"raw":"010102000341420000000000000000000000000000000000050006","type":"SNVT_file_status"})",
    R"({"raw":"4122C3A95C0A00000000000000000000000000000000000000000000000000","type":"SNVT_str_asc"})",
    R"({"raw":"00010203040005","type":"0000000000000000-0/SCPTmaxSndT"})",
    "C801",
    "c8ff",
    " C801 ",
    "C8 01",
    "12",
    "1234",
    "123",
    "FALSE",
    "false",
    "1e5f",
    "\"C801\"",
    "[]",
};

const Words kRecordsToEncode = {
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":1}})",
    R"( { "type" : "SNVT_switch" , "value" : {"value":100.0,"state":1} } )",
    R"({"raw":"","type":"SNVT_switch","value":{"value":100.0,"state":1},"n":5})",
    R"({"raw":"0000","value":{"value":0.5,"state":-1},"type":"SNVT_switch"})",
    R"({"raw":7,"value":{"value":0.5,"state":-1},"type":"SNVT_switch"})",
    R"({"error":"old","value":{"value":0.5,"state":-1},"type":"SNVT_switch"})",
    R"({"type":"SNVT_switch","value":{"value":100,"state":1}})",
    R"({"type":"SNVT_switch","value":{"value":1e2,"state":1}})",
    R"({"type":"SNVT_switch","value":{"value":100.2,"state":1}})",
    R"({"type":"SNVT_switch","value":{"value":127.5,"state":1}})",
    R"({"type":"SNVT_switch","value":{"value":300.0,"state":1}})",
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":5}})",
    R"({"type":"SNVT_switch","value":{"state":1,"value":100.0}})",
    R"({"type":"SNVT_switch","value":{"value":100.0, "state":1}})",
    R"({"type":"SNVT_switch","value":{"value":100.0}})",
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":1,"x":1}})",
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":1}]})",
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":1})",
    R"({"type":"SNVT_switch","value":{"value":100.0,"state":1},"value":{"value":1.0,"state":0}})",
    R"({"type":"SNVT_switch","value":null})",
    R"({"type":"SNVT_switch","value":})",
    R"({"type":"SNVT_switch"})",
    R"({"type":"SNVT_temp_p","value":23.5})",
    R"({"type":"SNVT_temp_p","value":23.5 })",
    R"({"type":"SNVT_temp_p","value":23.504})",
    R"({"type":"SNVT_temp_p","value":327.67})",
    R"({"type":"SNVT_temp_p","value":-274.0})",
    R"({"type":"SNVT_temp_p","value":"invalid"})",
    R"({"type":"SNVT_temp_f","value":0.1})",
    R"({"type":"SNVT_temp_f","value":1e-7})",
    R"({"type":"SNVT_temp_f","value":16777216.0})",
    R"({"type":"SNVT_temp_f","value":1.5e20})",
    R"({"type":"SNVT_temp_f","value":null})",
    R"({"type":"SNVT_date_day","value":"DAY_TUE"})",
    R"({"type":"SNVT_date_day","value":"99"})",
    R"({"type":"SNVT_date_day","value":"DAY_X"})",
    R"({"type":"SNVT_str_asc","value":"abc"})",
    R"({"type":"SNVT_str_asc","value":"a\"b"})",
    R"({"type":"SNVT_str_asc","value":"a}b,c"})",
    R"({"type":"SNVT_str_asc","value":"é"})",
    R"({"type":"SNVT_none","value":1})",
    R"({"value":{"value":100.0,"state":1},"n":1})",
    R"({"value":23.5})",
    R"({"value":100.0,"state":1})",
    R"({"value":100.0,"state":1,"x":1})",
    R"({"value":100,"state":1})",
    R"({"state":1,"value":100.0})",
    "23.5",
    "23.50",
    "23",
    " 23.5",
    "\"DAY_TUE\"",
    "[1]",
    "{",
    "x",
    "null",
};

const std::vector<RoadCase> kRoadCases = {
    {"Decode", {"decode", "--stream"}, kRecordsToDecode},
    {"DecodeWithAType", {"decode", "--stream", "--type", "SNVT_switch"}, kRecordsToDecode},
    {"DecodeLittleEndian", {"decode", "--stream", "--order", "little"}, kRecordsToDecode},
    {"DecodeWithTheKeyword", {"decode", "--stream", "--invalid-keyword"}, kRecordsToDecode},
    {"DecodeAnyLength", {"decode", "--stream", "--any-length"}, kRecordsToDecode},
    {"DecodeUnionsAsHexadecimal", {"decode", "--stream", "--union-hex"}, kRecordsToDecode},
    {"DecodeSelected", {"decode", "--stream", "--select", "state"}, kRecordsToDecode},
    {"Encode", {"encode", "--stream"}, kRecordsToEncode},
    {"EncodeWithAType", {"encode", "--stream", "--type", "SNVT_switch"}, kRecordsToEncode},
    {"EncodeWithATypeOfOneNumber",
     {"encode", "--stream", "--type", "SNVT_temp_p"},
     kRecordsToEncode},
    {"EncodeWithATypeOfOneName",
     {"encode", "--stream", "--type", "SNVT_date_day"},
     kRecordsToEncode},
    {"EncodeLittleEndian", {"encode", "--stream", "--order", "little"}, kRecordsToEncode},
    {"EncodeWithTheKeyword", {"encode", "--stream", "--invalid-keyword"}, kRecordsToEncode},
    {"EncodeMissingMembers", {"encode", "--stream", "--allow-missing"}, kRecordsToEncode},
    {"EncodeUnknownMembers", {"encode", "--stream", "--allow-undefined"}, kRecordsToEncode},
};

INSTANTIATE_TEST_SUITE_P(Commands, BothRoads, testing::ValuesIn(kRoadCases), kNameOf);

// --- Long lines and many lines ---

constexpr std::size_t kLongestLine = 16 * 1024 * 1024;

// A record of this many bytes.
std::string paddedRecord(std::size_t byteCount) {
  const std::string start = R"({"type":"SNVT_switch","raw":"C801","pad":")";
  const std::string end = "\"}";
  return start + std::string(byteCount - start.size() - end.size(), 'x') + end;
}

TEST(Stream, TakesALineOfSixteenMebibytes) {
  const std::string record = paddedRecord(kLongestLine);
  const ToolResult result = runTool({"decode", "--stream"}, record + "\n");
  EXPECT_EQ(result.status, 0);
  const std::string done =
      record.substr(0, record.size() - 1) + ",\"value\":{\"value\":100.0,\"state\":1}}\n";
  EXPECT_TRUE(result.output == done) << result.output.substr(0, 200);
}

TEST(Stream, RefusesALongerLineAndGoesOn) {
  for (const std::size_t excess : {std::size_t{1}, kLongestLine}) {
    const ToolResult result = runTool(
        {"decode", "--stream"}, paddedRecord(kLongestLine + excess) + "\n" + kSwitchRecord + "\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output,
              "{\"error\":\"the line has more than 16777216 bytes\"}\n" + kSwitchDone + "\n");
    EXPECT_EQ(result.errors,
              "korvat: 1 failed, the first in line 1: the line has more than N bytes\n"
              "korvat: 1 of 2 records failed; each has its \"error\"\n");
  }
}

// Lines of many lengths meet the ends of the blocks in which the input is read.
TEST(Stream, KeepsTheOrderOfManyLines) {
  std::string input;
  std::string output;
  for (unsigned i = 0; i < 20'000; ++i) {
    const std::string start =
        "{\"n\":" + std::to_string(i) + ",\"pad\":\"" + std::string(i % 97, 'x') + "\",";
    char raw[5];
    std::snprintf(raw, sizeof raw, "%04X", i);
    const std::string record = start + R"("type":"SNVT_count","raw":")" + raw + "\"";
    input += record + "}\n";
    output += record + ",\"value\":" + std::to_string(i) + "}\n";
  }
  const ToolResult result = runTool({"decode", "--stream"}, input);
  EXPECT_EQ(result.status, 0);
  EXPECT_TRUE(result.output == output);
  EXPECT_EQ(result.errors, "");
}

// --- Usage ---

struct UsageCase {
  std::string name;
  Words arguments;
  int status;
  std::string message;  // stands in the one line of standard error
};

class WrongStream : public testing::TestWithParam<UsageCase> {};

TEST_P(WrongStream, IsOneLineAndNoOutput) {
  const ToolResult result = runTool(GetParam().arguments, "C801\n");
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_NE(result.errors.find(GetParam().message), std::string::npos) << result.errors;
}

const std::vector<UsageCase> kUsageCases = {
    {"DecodeWithAType",
     {"decode", "--stream", "SNVT_switch"},
     2,
     "--stream reads standard input: name the type with --type"},
    {"EncodeWithAType", {"encode", "SNVT_switch", "--stream"}, 2, "name the type with --type"},
    {"EncodeWithAValue", {"encode", "SNVT_switch", "1", "--stream"}, 2, "name the type"},
    {"DecodeTypeWithoutStream", {"decode", "--type", "SNVT_switch"}, 2, "requires --stream"},
    {"EncodeTypeWithoutStream", {"encode", "--type", "SNVT_switch"}, 2, "requires --stream"},
    {"TypeWithoutAName", {"decode", "--stream", "--type"}, 2, "--type"},
    {"OtherCommand", {"get", "--stream"}, 2, "korvat --help"},
    {"UnknownDefaultType",
     {"decode", "--stream", "--type", "SNVT_foo"},
     3,
     "unknown type 'SNVT_foo'"},
    {"UnknownDefaultTypeToEncode",
     {"encode", "--stream", "--type", "SNVT_foo"},
     3,
     "unknown type 'SNVT_foo'"},
    {"DefaultTypeWithoutValues",
     {"decode", "--stream", "--type", "hvac_t"},
     3,
     "'hvac_t' has no values"},
    {"MissingCatalogue", {"decode", "--stream", "--catalog", "/no/such/folder"}, 3, "no catalogue"},
};

INSTANTIATE_TEST_SUITE_P(Commands, WrongStream, testing::ValuesIn(kUsageCases), kNameOf);

// --- Where the output goes ---

struct Ending {
  bool isSignal = true;  // also when the program had to be stopped
  int status = -1;
  std::string errors;
};

// A program that runs by itself: nobody has to read what it writes.
class RunningTool {
 public:
  // `errors` takes its standard error; without it, that is part of the ending.
  RunningTool(const Words& arguments, int input, int output, int errors = -1) {
    Words words{KORVAT_TOOL};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors < 0 ? fileno(_errors) : errors,
                                     STDERR_FILENO);
    _isStarted =
        posix_spawn(&_process, KORVAT_TOOL, &actions, nullptr, pointers.data(), environ) == 0;
    posix_spawn_file_actions_destroy(&actions);
  }

  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;
  ~RunningTool() { std::fclose(_errors); }

  // Waits for the end; stops the program when it has not ended by itself after a while.
  Ending wait() {
    Ending ending;
    if (!_isStarted) return ending;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    int status = 0;
    while (waitpid(_process, &status, WNOHANG) == 0) {
      if (std::chrono::steady_clock::now() > deadline) kill(_process, SIGKILL);
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ending.isSignal = WIFSIGNALED(status);
    if (WIFEXITED(status)) ending.status = WEXITSTATUS(status);
    std::rewind(_errors);
    for (int c = 0; (c = std::fgetc(_errors)) != EOF;) ending.errors += static_cast<char>(c);
    return ending;
  }

 private:
  std::FILE* _errors = std::tmpfile();
  pid_t _process = 0;
  bool _isStarted = false;
};

struct Pipe {
  Pipe() { isOpen = pipe2(ends.data(), O_CLOEXEC) == 0; }
  ~Pipe() {
    closeReader();
    closeWriter();
  }

  void closeReader() {
    if (ends[0] >= 0) close(ends[0]);
    ends[0] = -1;
  }

  void closeWriter() {
    if (ends[1] >= 0) close(ends[1]);
    ends[1] = -1;
  }

  bool isOpen = false;
  std::array<int, 2> ends{-1, -1};  // to read from, to write to
};

// Nobody reads the output, and the input stays open: only the write can end the program.
TEST(Stream, EndsQuietlyWhenItsReaderHasGone) {
  for (const std::string& line : {kSwitchRecord + "\n", std::string("no record\n")}) {
    Pipe input;
    Pipe output;
    ASSERT_TRUE(input.isOpen && output.isOpen);
    output.closeReader();
    ASSERT_EQ(write(input.ends[1], line.data(), line.size()), static_cast<ssize_t>(line.size()));

    const Ending ending = RunningTool({"decode", "--stream"}, input.ends[0], output.ends[1]).wait();
    EXPECT_FALSE(ending.isSignal);
    EXPECT_EQ(ending.status, 0);
    EXPECT_EQ(ending.errors, "");
  }
}

class UnreadOutput : public testing::TestWithParam<UsageCase> {};

TEST_P(UnreadOutput, IsNoError) {
  Pipe input;
  Pipe output;
  ASSERT_TRUE(input.isOpen && output.isOpen);
  output.closeReader();
  const Ending ending = RunningTool(GetParam().arguments, input.ends[0], output.ends[1]).wait();
  EXPECT_FALSE(ending.isSignal);
  EXPECT_EQ(ending.status, GetParam().status);
  EXPECT_EQ(ending.errors, GetParam().message);
}

TEST_P(UnreadOutput, IsAnErrorWhenThereIsNoRoom) {
  Pipe input;
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  ASSERT_TRUE(input.isOpen && full >= 0);
  const Ending ending = RunningTool(GetParam().arguments, input.ends[0], full).wait();
  close(full);
  EXPECT_EQ(ending.status, 1);
  EXPECT_EQ(ending.errors.rfind("korvat: cannot write: ", 0), 0u) << ending.errors;
  EXPECT_EQ(ending.errors.find("Success"), std::string::npos) << ending.errors;
}

const std::vector<UsageCase> kUnreadCases = {
    {"OneLine", {"decode", "SNVT_switch", "C801"}, 0, ""},
    {"ManyLines", {"list"}, 0, ""},
    {"ManyLinesOfJson", {"list", "--json"}, 0, ""},
    {"Description", {"describe", "SNVT_state_64"}, 0, ""},
};

INSTANTIATE_TEST_SUITE_P(Commands, UnreadOutput, testing::ValuesIn(kUnreadCases), kNameOf);

// Each answer is there before the next question: two programs may talk to each other.
TEST(Stream, AnswersEachLineAtOnce) {
  Pipe input;
  Pipe output;
  ASSERT_TRUE(input.isOpen && output.isOpen);
  RunningTool tool({"decode", "--stream", "--type", "SNVT_temp_p"}, input.ends[0], output.ends[1]);
  for (const auto& [question, answer] : std::vector<std::pair<std::string, std::string>>{
           {"092E\n", "23.5\n"}, {"0001\n", "0.01\n"}}) {
    ASSERT_EQ(write(input.ends[1], question.data(), question.size()),
              static_cast<ssize_t>(question.size()));
    pollfd reader{output.ends[0], POLLIN, 0};
    ASSERT_EQ(poll(&reader, 1, 30'000), 1) << "no answer to " << question;
    char text[16] = {};
    const ssize_t size = read(output.ends[0], text, sizeof text - 1);
    EXPECT_EQ(std::string(text, static_cast<std::size_t>(std::max<ssize_t>(size, 0))), answer);
  }
  input.closeWriter();
  const Ending ending = tool.wait();
  EXPECT_EQ(ending.status, 0);
}

// --- Terminals and pipes ---

// A file without a name that holds a text.
class TextFile {
 public:
  explicit TextFile(const std::string& text = "") {
    std::fwrite(text.data(), 1, text.size(), _file);
    std::rewind(_file);
  }
  TextFile(const TextFile&) = delete;
  TextFile& operator=(const TextFile&) = delete;
  ~TextFile() { std::fclose(_file); }

  int getNumber() const { return fileno(_file); }

  std::string readAll() {
    std::string text;
    std::rewind(_file);
    for (int c = 0; (c = std::fgetc(_file)) != EOF;) text += static_cast<char>(c);
    return text;
  }

 private:
  std::FILE* _file = std::tmpfile();
};

// What a program writes to a terminal.
class Terminal {
 public:
  Terminal() : _reader(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (_reader < 0 || grantpt(_reader) != 0 || unlockpt(_reader) != 0) return;
    _writer = open(ptsname(_reader), O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;
  ~Terminal() {
    if (_writer >= 0) close(_writer);
    if (_reader >= 0) close(_reader);
  }

  int getNumber() const { return _writer; }

  std::string readAll() {
    std::string text;
    char block[4096];
    pollfd ready{_reader, POLLIN, 0};
    while (poll(&ready, 1, 0) == 1 && (ready.revents & POLLIN) != 0) {
      const ssize_t size = read(_reader, block, sizeof block);
      if (size <= 0) break;
      text.append(block, static_cast<std::size_t>(size));
    }
    return text;
  }

 private:
  int _reader;
  int _writer = -1;
};

const std::string kErase = "\r\033[K";

TEST(StreamProgress, IsShownOnATerminalAndErased) {
  Terminal terminal;
  ASSERT_GE(terminal.getNumber(), 0);
  const TextFile input("C801\nC8\n0000\n");
  TextFile output;
  const Ending ending = RunningTool({"decode", "--stream", "--type", "SNVT_switch"},
                                    input.getNumber(), output.getNumber(), terminal.getNumber())
                            .wait();
  EXPECT_EQ(ending.status, 1);
  const std::string shown = terminal.readAll();
  const std::string start = kErase + "3 records, 100 %, ";
  const std::string end =
      " a second" + kErase + "korvat: 1 failed, the first in line 2: N byte given";
  EXPECT_EQ(shown.substr(0, start.size()), start) << shown;
  const std::size_t digits = shown.find_first_not_of("0123456789", start.size());
  EXPECT_GT(digits, start.size());
  EXPECT_EQ(shown.substr(digits, end.size()), end) << shown;
  EXPECT_EQ(std::count(shown.begin(), shown.end(), '\n'), 2);
}

TEST(StreamProgress, IsNotShownWhereTheOutputIs) {
  Terminal terminal;
  ASSERT_GE(terminal.getNumber(), 0);
  const TextFile input("C801\n");
  const Ending ending = RunningTool({"decode", "--stream", "--type", "SNVT_switch"},
                                    input.getNumber(), terminal.getNumber(), terminal.getNumber())
                            .wait();
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(terminal.readAll(), "{\"value\":100.0,\"state\":1}\r\n");
}

TEST(StreamProgress, IsNotShownForAPipe) {
  Terminal terminal;
  Pipe input;
  ASSERT_TRUE(terminal.getNumber() >= 0 && input.isOpen);
  ASSERT_EQ(write(input.ends[1], "C801\n", 5), 5);
  TextFile output;
  RunningTool tool({"decode", "--stream", "--type", "SNVT_switch"}, input.ends[0],
                   output.getNumber(), terminal.getNumber());
  input.closeWriter();
  EXPECT_EQ(tool.wait().status, 0);
  EXPECT_EQ(output.readAll(), "{\"value\":100.0,\"state\":1}\n");
  EXPECT_EQ(terminal.readAll(), "");
}

TEST(StreamOfRows, GoesThroughAPipe) {
  std::string input = "n,raw,note\n";
  std::string output = "n,raw,note,value,error\n";
  for (unsigned i = 0; i < 20'000; ++i) {
    char raw[5];
    std::snprintf(raw, sizeof raw, "%04X", i);
    const std::string row = std::to_string(i) + "," + raw + ",\"" + std::string(i % 97, 'x') +
                            "\n\"\"" + std::string(i % 13, ',') + "\"";
    input += row + "\n";
    output += row + "," + std::to_string(i) + ",\n";
  }
  Pipe pipe;
  ASSERT_TRUE(pipe.isOpen);
  TextFile shown;
  RunningTool tool({"decode", "--stream", "--type", "SNVT_count", "--csv-in", "--csv"},
                   pipe.ends[0], shown.getNumber());
  pipe.closeReader();
  for (std::size_t begin = 0; begin < input.size();) {
    const ssize_t size = write(pipe.ends[1], input.data() + begin, input.size() - begin);
    ASSERT_GT(size, 0);
    begin += static_cast<std::size_t>(size);
  }
  pipe.closeWriter();
  const Ending ending = tool.wait();
  EXPECT_EQ(ending.status, 0);
  EXPECT_EQ(ending.errors, "");
  EXPECT_TRUE(shown.readAll() == output);
}

}  // namespace

}  // namespace zavri::test
