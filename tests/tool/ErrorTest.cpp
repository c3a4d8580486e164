#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/convert/TypeXml.h"

// What errors of the program teach: where, what was given and expected, which name was meant.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

struct LessonCase {
  std::string name;
  Words arguments;
  int status;
  std::string error;  // the end of the line, behind "korvat: " and what the case does not care for
};

class Lesson : public testing::TestWithParam<LessonCase> {};

TEST_P(Lesson, StandsAtTheEndOfTheOneLine) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, GetParam().status);
  const std::string expected = GetParam().error + "\n";
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  ASSERT_GE(result.errors.size(), expected.size()) << result.errors;
  EXPECT_EQ(result.errors.substr(result.errors.size() - expected.size()), expected);
}

const std::vector<LessonCase> kLessons = {
    // Names
    {"CharacterMissing", {"decode", "SNVT_swich", "C801"}, 3, "; did you mean 'SNVT_switch'?"},
    {"CharactersExchanged", {"decode", "SNVT_tepm_p", "0000"}, 3, "; did you mean 'SNVT_temp_p'?"},
    {"OtherCase", {"decode", "snvt_SWITCH", "C801"}, 3, "; did you mean 'SNVT_switch'?"},
    {"PartOfAName", {"describe", "elapsed"}, 3, "; did you mean 'SNVT_elapsed_tm'?"},
    {"NothingNear", {"decode", "SNVT_zyxwvutsrqp", "00"}, 3, "; see 'korvat list'"},
    {"Profile", {"profile", "SFPTnodeObjekt"}, 3, "; did you mean 'SFPTnodeObject'?"},
    {"Command",
     {"dekode", "SNVT_switch", "C801"},
     2,
     "korvat: unknown command 'dekode'; did you mean 'decode'?"},
    {"UnknownCommand",
     {"frobnicate"},
     2,
     "korvat: unknown command 'frobnicate'; see 'korvat --help'"},
    {"Option",
     {"list", "--catalogue=x"},
     2,
     "korvat: unknown option '--catalogue'; did you mean '--catalog'?"},
    {"OptionOfTheCommand",
     {"describe", "SNVT_switch", "--format"},
     2,
     "korvat: unknown option '--format'; did you mean '--formats'?"},
    {"TooManyArguments",
     {"get", "SNVT_switch", "C801", "state", "5"},
     2,
     "korvat: too many arguments: '5'; see 'korvat --help'"},
    {"ValueOfAnOption",
     {"--order", "middle", "list"},
     2,
     "korvat: --order: 'middle' is none of big,little; see 'korvat --help'"},
    {"MemberToRead",
     {"get", "SNVT_switch", "C801", "stat"},
     1,
     "korvat: no member 'stat' at path 'stat'; expected one of: value, state; did you mean "
     "'state'?"},
    {"MemberToWrite",
     {"encode", "SNVT_switch", R"({"value":1,"sate":1})"},
     1,
     "korvat: cannot encode SNVT_switch: unknown member 'sate'; expected an object of value, "
     "state; did you mean 'state'?"},
    {"Enumerator",
     {"encode", "SNVT_hvac_mode", "\"HVAC_HAET\""},
     1,
     "is neither a name nor a number of hvac_t; did you mean 'HVAC_HEAT'?"},
    // Places: 2 bytes of number, then a byte of flags.
    {"BitOfAField",
     {"encode", "SNVT_obj_status", R"({"object_id":1,"invalid_id":0,"invalid_request":"x"})"},
     1,
     "invalid_request: not a number: \"x\" (byte 2, bit 1); expected 0 to 1"},
    {"ByteOfAnElement",
     {"encode", "SNVT_alarm", R"({"location":[0,0,0,"x",0,0]})"},
     1,
     "location[3]: not a number: \"x\" (byte 3); expected 0 to 255"},
    // Raw 0..200, 5 * 10^-1 * raw.
    {"LimitsInPhysicalUnits",
     {"--no-cut", "encode", "SNVT_switch", R"({"value":100.5,"state":1})"},
     1,
     "(byte 0); expected 0 to 100 percent of full level"},
    {"MemberThatIsNotThere",
     {"decode", "SNVT_switch", "C8"},
     1,
     "korvat: 1 byte given, but a value of SNVT_switch has 2: 'state' at byte 1 is not there; "
     "--any-length takes it all the same"},
    {"FirstMemberThatIsCut",
     {"decode", "SNVT_temp_setpt", "0000000000"},
     1,
     "5 bytes given, but a value of SNVT_temp_setpt has 12: 'unoccupied_cool' at byte 4 is not "
     "there; --any-length takes it all the same"},
    {"TypeOfAnotherSet",
     {"--catalog", KORVAT_TEST_DATA "/catalogue", "describe", "UNVTCascade"},
     3,
     "; did you mean '9FFFFF0501000000-4/UNVTCascade'?"},
    {"PlaceInTheHexadecimalText",
     {"decode", "SNVT_switch", "C8 0G"},
     1,
     "'G' at position 5 (byte 1); expected digits 0-9, A-F"},
};

INSTANTIATE_TEST_SUITE_P(Errors, Lesson, testing::ValuesIn(kLessons), kNameOf);

// A count, an array of 1 to 4 numbers of 2 bytes, one more byte: 8 - 2 * (4 - count) + 2 bytes.
struct DynamicCase {
  std::string name;
  std::string hex;
  std::string output;
  std::string error;  // part of it
};

class DynamicLength : public testing::TestWithParam<DynamicCase> {};

TEST_P(DynamicLength, IsThatOfTheElementsThatTheCountSays) {
  TempCatalogue files;
  files.write(korvat::TypeId::StdPrefix, "nvs",
              nvt("_x", structure({{"n", scalar("unsigned short")},
                                   {"xs", scalar("unsigned long", dynamicArray(0, 4))},
                                   {"tail", scalar("unsigned short")}})));
  const ToolResult result =
      runTool({"--catalog", files.path(), "decode", "--dynamic-arrays", "SNVT_x", GetParam().hex});
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_NE(result.errors.find(GetParam().error), std::string::npos) << result.errors;
  EXPECT_EQ(result.errors.empty(), GetParam().error.empty());
  EXPECT_EQ(result.status, GetParam().error.empty() ? 0 : 1);
}

const std::vector<DynamicCase> kDynamicCases = {
    {"Fits", "0200010002FF", "{\"n\":2,\"xs\":[1,2],\"tail\":255}\n", ""},
    {"TooShort", "02", "", "1 byte given, but a value of SNVT_x has 6"},
    {"TooLong", "0200010002FF00", "", "7 bytes given, but a value of SNVT_x has 6"},
    {"LongerThanAny", "0200010002FF0000000000", "", "11 bytes given"},
    {"CountBeyondTheArray", "0900010002FF", "",
     "6 bytes given, but a value of SNVT_x has at most 10"},
};

INSTANTIATE_TEST_SUITE_P(Values, DynamicLength, testing::ValuesIn(kDynamicCases), kNameOf);

struct JsonCase {
  std::string name;
  Words arguments;
  std::string details;  // JSON of all but "error"
};

class JsonError : public testing::TestWithParam<JsonCase> {};

TEST_P(JsonError, IsOneObjectWithItsDetails) {
  Words words = {"--errors", "json"};
  words.insert(words.end(), GetParam().arguments.begin(), GetParam().arguments.end());
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  json::Value object;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.errors, object, error)) << error << result.errors;
  EXPECT_NE(object["error"].asString(), "");
  EXPECT_EQ(object["status"].asInt32(), result.status);
  json::Value details;
  for (const auto& [name, value] : object.getPropertyMap()) {
    if (name != "error") details[name] = value;
  }
  EXPECT_EQ(details.stringify(), GetParam().details);
}

const std::vector<JsonCase> kJsonCases = {
    {"UnknownType",
     {"decode", "SNVT_swich", "C801"},
     R"({"status":3,"given":"SNVT_swich","nearest":["SNVT_switch"]})"},
    {"Enumerator",
     {"set", "SNVT_hvac_status", "000000000000000000000000", "mode", "HVAC_COL"},
     R"({"status":1,"type":"SNVT_hvac_status","member":"mode","byte":0,"given":"HVAC_COL",)"
     R"("expected":"a name or number of hvac_t","nearest":["HVAC_COOL"]})"},
    {"BitField",
     {"encode", "SNVT_obj_status", R"({"object_id":1,"invalid_id":"x"})"},
     R"({"status":1,"type":"SNVT_obj_status","member":"invalid_id","byte":2,"bit":0,)"
     R"("given":"x","expected":"0 to 1"})"},
    {"Length",
     {"decode", "SNVT_switch", "C8"},
     R"({"status":1,"member":"state","byte":1,"type":"SNVT_switch","given":"1 byte",)"
     R"("expected":"2 bytes"})"},
    {"Element",
     {"get", "SNVT_switch", "C801", "value[9]"},
     R"({"status":1,"member":"value[9]","given":"[9]","expected":"there is no array here"})"},
    {"Usage", {"decode", "--strem"}, R"({"status":2,"given":"--strem","nearest":["--stream"]})"},
    {"UsageWithoutANearName", {"decode", "SNVT_switch"}, R"({"status":2})"},
};

INSTANTIATE_TEST_SUITE_P(Errors, JsonError, testing::ValuesIn(kJsonCases), kNameOf);

TEST(JsonErrors, AreAlsoAskedForWithAnEqualsSign) {
  EXPECT_EQ(runTool({"frobnicate", "--errors=json"}).errors.find("{\"error\":"), 0u);
}

TEST(TextErrors, AreTheDefault) {
  EXPECT_EQ(runTool({"--errors", "text", "frobnicate"}).errors.find("korvat: unknown command"), 0u);
  const ToolResult result = runTool({"--errors", "xml", "list"});
  EXPECT_EQ(result.errors, "korvat: --errors: 'xml' is none of json,text; see 'korvat --help'\n");
  EXPECT_EQ(result.status, 2);
}

}  // namespace

}  // namespace zavri::test
