#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// What the program writes: encode, set and swap.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

struct OutputCase {
  std::string name;
  Words arguments;
  std::string output;  // without the new line at its end
};

class RawOutput : public testing::TestWithParam<OutputCase> {};

TEST_P(RawOutput, IsTheWholeAnswer) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, GetParam().output + "\n");
  EXPECT_EQ(result.errors, "");
}

const auto kNameOf = [](const auto& info) { return info.param.name; };

std::string zeros(unsigned byteCount) {
  return std::string(2 * byteCount, '0');
}

// SNVT_alarm has 29 bytes: location[6], object_id, alarm_type, priority_level, index_to_SNVT,
// value[4], year, month, day, hour, minute, second, millisecond, alarm_limit[4].
const std::string kAlarmRaw = "010203040506000A0A010012DEADBEEF07E40C1F173B3B03E7CAFEBABE";
const std::string kAlarmJson =
    R"({"location":[1,2,3,4,5,6],"object_id":10,"alarm_type":"AL_LOW_LMT_ALM_2",)"
    R"("priority_level":"PR_LEVEL_1","index_to_SNVT":18,"value":[222,173,190,239],"year":2020,)"
    R"("month":12,"day":31,"hour":23,"minute":59,"second":59,"millisecond":999,)"
    R"("alarm_limit":[202,254,186,190]})";

// SNVT_file_status has 27 bytes: status, number_of_files, selected_file and, from byte 5 on, a
// union of a descriptor (file_info[16], size, type) and an address (domain_id[6], domain_length,
// subnet, node).
const std::string kFileStatusHead = R"({"status":"FS_LOOKUP_OK","number_of_files":258,)"
                                    R"("selected_file":3,"adr":)";
const std::string kDescriptorJson =
    R"("descriptor":{"file_info":"ABCDEF\u0006HIabcdefg","size":10,"type":7})";
const std::string kDescriptorRaw = "414243444546064849616263646566670000000A0007";
// The same bytes as an address: 'A'..'F' = 65..70, 6, 'H' = 72, 'I' = 73.
const std::string kAddressJson =
    R"("address":{"domain_id":[65,66,67,68,69,70],"domain_length":6,"subnet":72,"node":73})";
const std::string kSmallAddressJson =
    R"("address":{"domain_id":[1,2,3,4,5,6],"domain_length":6,"subnet":7,"node":8})";

const std::vector<OutputCase> kEncodeCases = {
    {"Structure", {"encode", "SNVT_switch", R"({"value":100.0,"state":1})"}, "C801"},
    {"MembersInAnyOrder", {"encode", "SNVT_switch", R"({"state":-1,"value":50})"}, "64FF"},
    {"ScaledNumber", {"encode", "SNVT_temp_p", "23.5"}, "092E"},
    {"NegativeNumber", {"encode", "SNVT_temp_p", "-5"}, "FE0C"},
    {"LittleOrder", {"encode", "SNVT_temp_p", "23.5", "--order", "little"}, "2E09"},
    {"Float", {"encode", "SNVT_temp_f", "21.5"}, "41AC0000"},
    {"FloatInLittleOrder", {"--order", "little", "encode", "SNVT_temp_f", "21.5"}, "0000AC41"},
    {"EnumeratorByName", {"encode", "SNVT_date_day", R"("DAY_MON")"}, "01"},
    {"EnumeratorByText", {"encode", "SNVT_date_day", R"("-1")"}, "FF"},
    {"EnumeratorWithoutAName", {"encode", "SNVT_date_day", R"("7")"}, "07"},
    {"EnumeratorByNumber", {"encode", "SNVT_date_day", "6"}, "06"},
    {"BitsFromTheTop",
     {"encode", "SNVT_state",
      R"({"bit0":1,"bit1":0,"bit2":1,"bit3":0,"bit4":0,"bit5":0,"bit6":0,"bit7":1,)"
      R"("bit8":0,"bit9":0,"bit10":0,"bit11":0,"bit12":1,"bit13":1,"bit14":1,"bit15":0})"},
     "A10E"},
    {"ArraysAndNumbers", {"encode", "SNVT_alarm", kAlarmJson}, kAlarmRaw},
    {"TextIsPaddedWithZeros", {"encode", "SNVT_str_asc", R"({"ascii":"Hi"})"}, "4869" + zeros(29)},
    {"TextOfTheWholeLength",
     {"encode", "SNVT_str_asc", R"({"ascii":"0123456789012345678901234567890"})"},
     "30313233343536373839303132333435363738393031323334353637383930"},
    {"TextIsLatin1", {"encode", "SNVT_str_asc", R"({"ascii":"é\u00e8"})"}, "E9E8" + zeros(29)},
    {"WideText",
     {"encode", "SNVT_str_int", R"({"char_set":1,"wide_char":"A€"})"},
     "01004120AC" + zeros(26)},
    {"WideTextInLittleOrder",
     {"encode", "SNVT_str_int", R"({"char_set":1,"wide_char":"A€"})", "--order", "little"},
     "014100AC20" + zeros(26)},
    {"CutsToTheMaximum", {"encode", "SNVT_switch", R"({"value":1000,"state":1})"}, "C801"},
    {"CutsToTheMinimum", {"encode", "SNVT_temp_p", "-300"}, "954B"},  // -27317
    {"KeepsLimitsWithNoCut", {"encode", "SNVT_temp_p", "-273.17", "--no-cut"}, "954B"},
    {"TakesTheInvalidKeyword",
     {"encode", "SNVT_temp_p", R"("invalid")", "--invalid-keyword"},
     "7FFF"},
    {"TakesTheInvalidKeywordOfAMember",
     {"encode", "SNVT_time_stamp", "--invalid-keyword",
      R"({"year":"invalid","month":2,"day":3,"hour":4,"minute":5,"second":6})"},
     "FFFF0203040506"},
    {"TakesAMissingNumberWhenAllowed",
     {"encode", "SNVT_switch", R"({"value":1})", "--allow-missing"},
     "0200"},
    {"TakesAnUnknownMemberWhenAllowed",
     {"encode", "SNVT_switch", R"({"value":1,"more":[{}],"state":1})", "--allow-undefined"},
     "0201"},
    {"OneAlternativeOfAUnion",
     {"encode", "SNVT_file_status", kFileStatusHead + "{" + kSmallAddressJson + "}}"},
     "0101020003010203040506060708" + zeros(13)},
    {"AlternativesOfTheSameBytes",
     {"encode", "SNVT_file_status",
      kFileStatusHead + "{" + kDescriptorJson + "," + kAddressJson + "}}"},
     "0101020003" + kDescriptorRaw},
    {"UnionInHexadecimal",
     {"encode", "SNVT_file_status", kFileStatusHead + "\"" + kDescriptorRaw + "\"}", "--union-hex"},
     "0101020003" + kDescriptorRaw},
    {"ShortUnionInHexadecimal",
     {"encode", "SNVT_file_status", kFileStatusHead + R"("0a0B"})", "--union-hex"},
     "01010200030A0B" + zeros(20)},
    {"ConfigurationProperty",
     {"encode", "SCPTmaxSndT", R"({"day":1,"hour":2,"minute":3,"second":4,"millisecond":5})"},
     "00010203040005"},
};

INSTANTIATE_TEST_SUITE_P(Encode, RawOutput, testing::ValuesIn(kEncodeCases), kNameOf);

// SNVT_trans_table ends with fields of two bits; the last two bits belong to none.
const std::string kOnes30 = std::string(60, 'F');

const std::vector<OutputCase> kSetCases = {
    {"FirstMember", {"set", "SNVT_switch", "C8FF", "value", "50"}, "64FF"},
    {"LastMember", {"set", "SNVT_switch", "C8FF", "state", "0"}, "C800"},
    {"NegativeNumber", {"set", "SNVT_switch", "C800", "state", "-1"}, "C8FF"},
    {"WholeValue", {"set", "SNVT_temp_p", "0001", "", "-5"}, "FE0C"},
    {"SomeMembers", {"set", "SNVT_switch", "C8FF", "", R"({"value":1})"}, "02FF"},
    {"LittleOrder", {"set", "SNVT_temp_p", "0000", "", "23.5", "--order", "little"}, "2E09"},
    {"BitAmongZeros", {"set", "SNVT_state", "0000", "bit3", "1"}, "1000"},
    {"BitAmongOnes", {"set", "SNVT_state", "FFFF", "bit12", "0"}, "FFF7"},
    {"FieldOfTwoBits",
     {"set", "SNVT_trans_table", kOnes30, "interp_pts_1_to_2", "1"},
     std::string(56, 'F') + "DFFF"},
    {"ElementOfAnArray",
     {"set", "SNVT_alarm", kAlarmRaw, "location[5]", "255"},
     "0102030405FF" + kAlarmRaw.substr(12)},
    {"FirstElementsOfAnArray",
     {"set", "SNVT_alarm", kAlarmRaw, "location", "[9,8]"},
     "0908" + kAlarmRaw.substr(4)},
    {"NumberBehindArrays",
     {"set", "SNVT_alarm", kAlarmRaw, "index_to_SNVT", "258"},
     kAlarmRaw.substr(0, 20) + "0102" + kAlarmRaw.substr(24)},
    {"MemberOfAnAlternative",
     {"set", "SNVT_file_status", "0101020003" + kDescriptorRaw, "adr.descriptor.size", "258"},
     "0101020003" + kDescriptorRaw.substr(0, 32) + "000001020007"},
    {"ElementOfTheOtherAlternative",
     {"set", "SNVT_file_status", "0101020003" + kDescriptorRaw, "adr.address.domain_id[2]", "0"},
     "010102000341420044" + kDescriptorRaw.substr(8)},
    {"UnionInHexadecimal",
     {"set", "SNVT_file_status", "0101020003" + kDescriptorRaw, "adr", "01", "--union-hex"},
     "010102000301" + zeros(21)},
    {"EnumeratorByPlainName",
     {"set", "SNVT_tod_event", "00FF1234", "next_state", "OC_BYPASS"},
     "00021234"},
    {"EnumeratorByJson",
     {"set", "SNVT_tod_event", "00FF1234", "current_state", R"("OC_STANDBY")"},
     "03FF1234"},
    {"EnumeratorByNumber", {"set", "SNVT_tod_event", "00FF1234", "next_state", "1"}, "00011234"},
    {"PlainText",
     {"set", "SNVT_str_asc", "58595A" + zeros(28), "ascii", "Hi you"},
     "486920796F75" + zeros(25)},
    {"TextOfDigits",
     {"set", "SNVT_str_asc", std::string(62, 'A'), "ascii", "123"},
     "313233" + zeros(28)},
    {"TextAsJson",
     {"set", "SNVT_str_asc", std::string(62, 'A'), "ascii", R"("\u0041")"},
     "41" + zeros(30)},
    {"WideTextBehindItsCharSet",
     {"set", "SNVT_str_int", "01" + std::string(60, 'A'), "wide_char", "€"},
     "0120AC" + zeros(28)},
    {"InvalidKeyword", {"set", "SNVT_temp_p", "0001", "", "invalid", "--invalid-keyword"}, "7FFF"},
    {"NumberWhereTheInvalidMarkerStands",
     {"set", "SNVT_temp_p", "7FFF", "", "21.5", "--invalid-keyword"},
     "0866"},
    {"CutsToTheMaximum", {"set", "SNVT_switch", "02FF", "value", "1000"}, "C8FF"},
    {"GrowsAShortValueWhenAsked",
     {"set", "SNVT_switch", "C8", "state", "1", "--any-length"},
     "C801"},
    {"KeepsWhatFollowsTheValue",
     {"set", "SNVT_switch", "C80122", "state", "0", "--any-length"},
     "C80022"},
};

INSTANTIATE_TEST_SUITE_P(Set, RawOutput, testing::ValuesIn(kSetCases), kNameOf);

const std::vector<OutputCase> kSwapCases = {
    {"FromBig", {"swap", "SNVT_temp_p", "092E", "--from", "big"}, "2E09"},
    {"FromLittle", {"swap", "SNVT_temp_p", "2E09", "--from", "little"}, "092E"},
    {"Float", {"swap", "SNVT_temp_f", "41AC0000", "--from", "big"}, "0000AC41"},
    {"BytesStay", {"swap", "SNVT_switch", "C801", "--from", "big"}, "C801"},
    {"BitsStay", {"swap", "SNVT_state", "A10E", "--from", "big"}, "A10E"},
    {"NumbersAmongBytes",
     {"swap", "SNVT_alarm", kAlarmRaw, "--from", "big"},
     "0102030405060A000A011200DEADBEEFE4070C1F173B3BE703CAFEBABE"},
    {"UnionsStay",
     {"swap", "SNVT_file_status", "0101020003" + kDescriptorRaw, "--from", "big"},
     "0102010300" + kDescriptorRaw},
    {"WideTextUnits",
     {"swap", "SNVT_str_int", "01004120AC" + zeros(26), "--from", "big"},
     "014100AC20" + zeros(26)},
    {"KeepsWhatFollowsTheValue",
     {"swap", "SNVT_temp_p", "2E0911", "--from", "little", "--any-length"},
     "092E11"},
};

INSTANTIATE_TEST_SUITE_P(Swap, RawOutput, testing::ValuesIn(kSwapCases), kNameOf);

// --- Errors ---

struct RefusedCase {
  std::string name;
  std::string type;
  std::string json;  // as the program writes it
  std::string message;
  Words options = {};
};

class RefusedJson : public testing::TestWithParam<RefusedCase> {};

Words with(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) result += c == '"' ? std::string("\\\"") : std::string(1, c);
  return result;
}

TEST_P(RefusedJson, IsOneLineThatNamesTheMember) {
  const RefusedCase& c = GetParam();
  const ToolResult result = runTool(with({"encode", c.type, c.json}, c.options));
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_EQ(result.errors.rfind("korvat: cannot encode " + c.type + ": " + c.message, 0), 0u)
      << result.errors;
}

TEST_P(RefusedJson, IsTheErrorOfItsRecord) {
  const RefusedCase& c = GetParam();
  const std::string record =
      R"({"n":1,"type":")" + c.type + R"(","value":)" + c.json + R"(,"z":[true,null])";
  const ToolResult result = runTool(with({"encode", "--stream"}, c.options), record + "}\n");
  const std::string start =
      record + ",\"error\":\"" + escaped("cannot encode " + c.type + ": " + c.message);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output.substr(0, start.size()), start);
  EXPECT_EQ(std::count(result.output.begin(), result.output.end(), '\n'), 1);
  EXPECT_EQ(result.errors.substr(result.errors.find('\n') + 1),
            "korvat: 1 of 1 records failed; each has its \"error\"\n");
}

std::string alarmWith(const std::string& location) {
  return R"({"location":)" + location + kAlarmJson.substr(kAlarmJson.find(R"(,"object_id")"));
}

const std::vector<RefusedCase> kRefusedCases = {
    {"NumberForAnObject", "SNVT_switch", "5", "expected an object, found: 5"},
    {"ArrayForAnObject", "SNVT_switch", "[1,2]", "expected an object, found: [1,2]"},
    {"NullForAnObject", "SNVT_switch", "null", "an object is missing"},
    {"ObjectForANumber", "SNVT_switch", R"({"value":{},"state":1})", "value: not a number: {}"},
    {"TextForANumber", "SNVT_switch", R"({"value":1,"state":"on"})",
     R"(state: not a number: "on")"},
    {"BooleanForANumber", "SNVT_temp_p", "true", "not a number: true"},
    {"NullForANumber", "SNVT_switch", R"({"value":null,"state":1})", "value: a number is missing"},
    {"NumberForAnArray", "SNVT_alarm", alarmWith("3"), "location: expected an array, found: 3"},
    {"NullForAnElement", "SNVT_alarm", alarmWith("[1,null,3,4,5,6]"),
     "location[1]: a number is missing"},
    {"TooFewElements", "SNVT_alarm", alarmWith("[1,2,3,4,5]"), "location[5]: a number is missing"},
    {"TooManyElements", "SNVT_alarm", alarmWith("[1,2,3,4,5,6,7]"),
     "location: 7 elements given, at most 6 expected"},
    {"NumberForAText", "SNVT_str_asc", R"({"ascii":5})", "ascii: expected a text, found: 5"},
    {"TextTooLong", "SNVT_str_asc", R"({"ascii":"01234567890123456789012345678901"})",
     "ascii: the text is too long"},
    {"MissingNumber", "SNVT_switch", R"({"value":1})", "state: a number is missing"},
    {"MissingText", "SNVT_str_asc", "{}", "ascii: a text is missing"},
    {"MissingEnumerator", "SNVT_tod_event", R"({"current_state":"OC_NUL","time_to_next_state":5})",
     "next_state: a value of occup_t is missing"},
    {"MissingUnion", "SNVT_file_status",
     R"({"status":"FS_LOOKUP_OK","number_of_files":258,"selected_file":3})",
     "adr: an object is missing"},
    {"UnknownMember", "SNVT_switch", R"({"value":1,"state":1,"x":3})", "unknown member 'x'"},
    {"UnknownMemberInside", "SNVT_file_status",
     kFileStatusHead + R"({"address":{"domain_id":[1,2,3,4,5,6],"street":1}}})",
     "adr.address: unknown member 'street'"},
    {"MisspeltEnumerator", "SNVT_tod_event",
     R"({"current_state":"OC_NUL","next_state":"OC_BYPAS","time_to_next_state":5})",
     R"(next_state: "OC_BYPAS" is neither a name nor a number of occup_t)"},
    {"EnumeratorBeyondAByte", "SNVT_date_day", "128",
     "128 is neither a name nor a number of days_of_week_t"},
    {"BeyondTheBaseType",
     "SNVT_switch",
     R"({"value":1000,"state":1})",
     "value: 1000 is out of range",
     {"--no-cut"}},
    {"BeyondTheLimits",
     "SNVT_switch",
     R"({"value":101,"state":1})",
     "value: the value is outside the member's limits",
     {"--no-cut"}},
    {"KeywordThatIsNotEnabled", "SNVT_temp_p", R"("invalid")", R"(not a number: "invalid")"},
    {"KeywordWithoutAnInvalidValue",
     "SNVT_temp_f",
     R"("invalid")",
     R"("invalid" given, but the member has no invalid value)",
     {"--invalid-keyword"}},
    {"ObjectForUnionHex",
     "SNVT_file_status",
     kFileStatusHead + "{}}",
     "adr: expected the hexadecimal text of a union, found: {}",
     {"--union-hex"}},
    {"UnionHexTooLong",
     "SNVT_file_status",
     kFileStatusHead + "\"" + kDescriptorRaw + "00\"}",
     "adr: the hexadecimal text is too long for the union",
     {"--union-hex"}},
    {"AlternativesOfDifferentBytes", "SNVT_file_status",
     kFileStatusHead + "{" + kDescriptorJson + "," + kSmallAddressJson + "}}",
     "several alternatives of a union are given that stand for different bytes"},
};

INSTANTIATE_TEST_SUITE_P(Encode, RefusedJson, testing::ValuesIn(kRefusedCases), kNameOf);

struct ErrorCase {
  std::string name;
  Words arguments;
  int status;
  std::string message;  // stands in the one line of standard error
};

class WriteError : public testing::TestWithParam<ErrorCase> {};

TEST_P(WriteError, IsOneLineAndNoOutput) {
  const ToolResult result = runTool(GetParam().arguments);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1) << result.errors;
  EXPECT_NE(result.errors.find(GetParam().message), std::string::npos) << result.errors;
}

std::string nested(unsigned depth) {
  return std::string(depth, '[') + std::string(depth, ']');
}

const std::vector<ErrorCase> kErrorCases = {
    {"EncodeNoJson", {"encode", "SNVT_switch", "{\"value\":1"}, 1, "'{\"value\":1' is not JSON: "},
    {"EncodeBrokenUtf8",
     {"encode", "SNVT_str_asc", "{\"ascii\":\"\xFF\"}"},
     1,
     " is not JSON: Invalid encoding in string"},
    {"EncodeDeepNesting",
     {"encode", "SNVT_switch", nested(201)},
     1,
     "is not JSON: Nested too deeply"},
    {"EncodeTheDeepestNesting",
     {"encode", "SNVT_switch", nested(200)},
     1,
     "cannot encode SNVT_switch: expected an object"},
    {"EncodeHugeNumber", {"encode", "SNVT_temp_f", "1e999"}, 1, "'1e999' is not JSON: "},
    {"EncodeUnknownType", {"encode", "SNVT_foo", "1"}, 3, "unknown type 'SNVT_foo'"},
    {"EncodeEnumeration", {"encode", "hvac_t", "1"}, 3, "'hvac_t' has no values"},
    {"EncodeNoLayout", {"encode", "SCPTdefOutput", "1"}, 1, "has no layout of its own"},
    {"EncodeWithoutJson", {"encode", "SNVT_switch"}, 2, "TYPE and JSON are required"},
    {"EncodeTooManyArguments", {"encode", "SNVT_temp_p", "1", "2"}, 2, "2"},
    {"SetUnknownMember",
     {"set", "SNVT_switch", "C801", "stat", "1"},
     1,
     "no member 'stat' at path 'stat'; expected one of: value, state"},
    {"SetElementPastTheEnd",
     {"set", "SNVT_alarm", kAlarmRaw, "location[6]", "1"},
     1,
     "no element [6] at path 'location[6]'; there are 6"},
    {"SetHugeIndex",
     {"set", "SNVT_alarm", kAlarmRaw, "location[99999999999]", "1"},
     1,
     "no element [99999999999]"},
    {"SetNull", {"set", "SNVT_switch", "C801", "value", "null"}, 1, "null is no value for 'value'"},
    {"SetTextForANumber",
     {"set", "SNVT_switch", "C801", "state", "on"},
     1,
     "state: not a number: \"on\""},
    {"SetRefusedNumberThoughMissingIsAllowed",
     {"set", "SNVT_switch", "C801", "state", "on", "--allow-missing"},
     1,
     "state: not a number: \"on\""},
    {"RefusedNumberThoughMissingIsAllowed",
     {"encode", "SNVT_switch", R"({"value":"a","state":1})", "--allow-missing"},
     1,
     "value: not a number: \"a\""},
    {"MissingEnumerationThoughMissingIsAllowed",
     {"encode", "SNVT_file_status", "{}", "--allow-missing"},
     1,
     "status: a value of file_status_t is missing"},
    {"SetNumberForAnObject",
     {"set", "SNVT_switch", "C801", "", "5"},
     1,
     "expected an object, found: 5"},
    {"SetMisspeltEnumerator",
     {"set", "SNVT_tod_event", "00FF1234", "next_state", "OC_BYPAS"},
     1,
     "next_state: \"OC_BYPAS\" is neither a name nor a number of occup_t"},
    {"SetBitOutOfRange",
     {"set", "SNVT_state", "0000", "bit3", "2", "--no-cut"},
     1,
     "bit3: 2 does not fit a bit field of 1 bits"},
    {"SetBeyondTheLimits",
     {"set", "SNVT_switch", "C801", "value", "101", "--no-cut"},
     1,
     "value: the value is outside the member's limits"},
    {"SetTextTooLong",
     {"set", "SNVT_str_asc", zeros(31), "ascii", std::string(32, 'a')},
     1,
     "ascii: the text is too long"},
    {"SetShortValue", {"set", "SNVT_switch", "C8", "state", "1"}, 1, "1 byte given"},
    {"SetNoHex", {"set", "SNVT_switch", "C8XY", "state", "1"}, 1, "'X' at position 3"},
    {"SetWithoutValue", {"set", "SNVT_switch", "C801", "state"}, 2, "VALUE"},
    {"SwapWithoutOrder", {"swap", "SNVT_temp_p", "2E09"}, 2, "--from"},
    {"SwapUnknownOrder", {"swap", "SNVT_temp_p", "2E09", "--from", "middle"}, 2, "middle"},
    {"SwapShortValue", {"swap", "SNVT_temp_p", "2E", "--from", "little"}, 1, "1 byte given"},
    {"SwapShortValueOfAnyLength",
     {"swap", "SNVT_temp_p", "2E", "--from", "little", "--any-length"},
     1,
     "cannot swap SNVT_temp_p"},
    {"SwapUnknownType", {"swap", "SNVT_foo", "00", "--from", "big"}, 3, "unknown type 'SNVT_foo'"},
};

INSTANTIATE_TEST_SUITE_P(Commands, WriteError, testing::ValuesIn(kErrorCases), kNameOf);

// --- Dynamic arrays ---

// SNVT_series: a count of one byte and up to four numbers of two bytes.
class DynamicSeries : public testing::Test {
 protected:
  DynamicSeries() {
    _files.write(
        korvat::TypeId::StdPrefix, "nvs",
        nvt("_series", structure({{"count", scalar("unsigned short")},
                                  {"data", scalar("unsigned long"), dynamicArray(0, 4)}})));
  }

  ToolResult run(const Words& words) { return runTool(with(words, {"--catalog", _files.path()})); }

  std::string outputOf(const Words& words) {
    const ToolResult result = run(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.errors, "");
    return result.output;
  }

 private:
  TempCatalogue _files;
};

TEST_F(DynamicSeries, TakesItsCountFromTheArray) {
  EXPECT_EQ(
      outputOf({"encode", "SNVT_series", R"({"count":9,"data":[1,258]})", "--dynamic-arrays"}),
      "0200010102\n");
  EXPECT_EQ(outputOf({"encode", "SNVT_series", R"({"count":9,"data":[]})", "--dynamic-arrays"}),
            "00\n");
}

TEST_F(DynamicSeries, HasItsFullSizeWithoutTheOption) {
  EXPECT_EQ(outputOf({"encode", "SNVT_series", R"({"count":9,"data":[1,258,3,4]})"}),
            "090001010200030004\n");
}

TEST_F(DynamicSeries, NeedsEveryElementWithoutTheOption) {
  const ToolResult result = run({"encode", "SNVT_series", R"({"count":2,"data":[1,258]})"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors.rfind("korvat: cannot encode SNVT_series: data[2]: a number", 0), 0u)
      << result.errors;
}

TEST_F(DynamicSeries, RefusesMoreElementsThanItHolds) {
  const ToolResult result =
      run({"encode", "SNVT_series", R"({"count":5,"data":[1,2,3,4,5]})", "--dynamic-arrays"});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find("data: 5 elements given, at most 4 expected"), std::string::npos)
      << result.errors;
}

TEST_F(DynamicSeries, ChangesOneElement) {
  EXPECT_EQ(outputOf({"set", "SNVT_series", "0200010102", "data[1]", "7", "--dynamic-arrays"}),
            "0200010007\n");
}

TEST_F(DynamicSeries, SwapsTheElementsThatAreThere) {
  EXPECT_EQ(outputOf({"swap", "SNVT_series", "0200010102", "--from", "big", "--dynamic-arrays"}),
            "0201000201\n");
}

// --- There and back ---

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(text.substr(begin, end - begin));
  }
  return lines;
}

json::Value parsed(const std::string& text) {
  json::Value value;
  std::string error;
  EXPECT_TRUE(json::Value::parse(text, value, error)) << text << ": " << error;
  return value;
}

std::string hexOf(unsigned byte) {
  char text[3];
  std::snprintf(text, sizeof text, "%02X", byte & 0xFF);
  return text;
}

// Name and size of the types that have a layout of their own.
std::map<std::string, unsigned> listLayouts() {
  std::map<std::string, unsigned> sizes;
  for (const char* kind : {"nv", "cp"}) {
    const json::Value types = parsed(runTool({"list", kind, "--json"}).output);
    for (unsigned i = 0; i < types.getSize(); ++i) {
      const auto size = static_cast<unsigned>(types[i]["size"].asInt32());
      if (size != 0) sizes[types[i]["name"].asString()] = size;
    }
  }
  return sizes;
}

struct UnusedBits {
  unsigned byte;
  unsigned usedMask;
};

// The bits that belong to no member are not in the JSON value: encoding writes zeros there.
const std::map<std::string, UnusedBits> kUnusedBits = {
    {"SNVT_chlr_status", {2, 0xFC}},   // six flags
    {"SNVT_ent_status", {3, 0xE0}},    // 27 flags, then a whole byte
    {"SNVT_reg_val", {5, 0xE0}},       // a flag and a number of two bits
    {"SCPTbaseValue", {5, 0xE0}},      // the same layout
    {"SNVT_trans_table", {29, 0xFC}},  // three fields of two bits
    {"SCPTtrnsTblX", {29, 0xFC}},      // the same layout
    {"SCPTtrnsTblY", {29, 0xFC}},      // the same layout
    {"SNVT_earth_pos", {0, 0xC0}},     // two flags, then a whole byte
};

std::string withoutUnusedBits(const std::string& type, std::string raw) {
  const auto found = kUnusedBits.find(type);
  if (found == kUnusedBits.end()) return raw;
  const std::size_t place = 2 * std::size_t{found->second.byte};
  const unsigned byte = static_cast<unsigned>(std::stoul(raw.substr(place, 2), nullptr, 16));
  return raw.replace(place, 2, hexOf(byte & found->second.usedMask));
}

// What became of one raw value of each type, decoded and encoded again without cutting.
struct RoundTrip {
  std::set<std::string> same;
  std::map<std::string, std::string> errors;
};

RoundTrip goThereAndBack(const std::map<std::string, std::string>& raws) {
  std::string input;
  for (const auto& [type, raw] : raws) {
    input += R"({"type":")" + type + R"(","raw":")" + raw + "\"}\n";
  }
  const ToolResult decoded = runTool({"decode", "--stream"}, input);
  EXPECT_EQ(decoded.status, 0);
  EXPECT_EQ(decoded.errors, "");
  const ToolResult encoded = runTool({"encode", "--stream", "--no-cut"}, decoded.output);
  const std::vector<std::string> lines = linesOf(encoded.output);
  EXPECT_EQ(lines.size(), raws.size());

  RoundTrip result;
  for (const std::string& line : lines) {
    const json::Value record = parsed(line);
    const std::string type = record["type"].asString();
    if (!record["error"].isNull()) {
      result.errors[type] = record["error"].asString();
      continue;
    }
    EXPECT_EQ(record["raw"].asString(), withoutUnusedBits(type, raws.at(type))) << type;
    result.same.insert(type);
  }
  return result;
}

// Every byte `first`, or counting up from it.
std::map<std::string, std::string> fill(const std::map<std::string, unsigned>& sizes,
                                        unsigned first, unsigned step) {
  std::map<std::string, std::string> raws;
  for (const auto& [type, size] : sizes) {
    std::string& raw = raws[type];
    for (unsigned i = 0; i < size; ++i) raw += hexOf(first + i * step);
  }
  return raws;
}

TEST(RoundTripOfTheCatalogue, KeepsAllZeros) {
  const std::map<std::string, unsigned> sizes = listLayouts();
  EXPECT_GE(sizes.size(), 136u);
  const RoundTrip result = goThereAndBack(fill(sizes, 0, 0));
  // Those have a member that may not be 0.
  const std::set<std::string> outside = {
      "SNVT_address",      "SNVT_ctrl_req",           "SNVT_scene",    "SCPTeffectivePeriod",
      "SCPTlogFileHeader", "SCPTnvDynamicAssignment", "SCPTtimePeriod"};
  for (const auto& [type, size] : sizes) {
    EXPECT_EQ(result.same.count(type), outside.count(type) == 0 ? 1u : 0u) << type;
  }
  for (const auto& [type, error] : result.errors) {
    EXPECT_NE(error.find("the value is outside the member's limits"), std::string::npos) << error;
  }
}

TEST(RoundTripOfTheCatalogue, KeepsEveryValueThatIsWithinItsLimits) {
  const std::map<std::string, unsigned> sizes = listLayouts();
  // The header of a log file is fixed: type 2049, version 1.0. A time zone lies within a day.
  std::set<std::string> kept =
      goThereAndBack({{"SCPTlogFileHeader", "0801010000010000000200000003040000000506"},
                      {"SNVT_time_zone", "00000E10000200000057020000012C"}})
          .same;
  const std::vector<std::pair<unsigned, unsigned>> patterns = {
      {0x01, 0}, {0x02, 0}, {0x05, 0}, {0x7F, 0}, {0x80, 0}, {0xFF, 0}, {0x01, 1}, {0x10, 1}};
  for (const auto& [first, step] : patterns) {
    SCOPED_TRACE("bytes from " + hexOf(first) + " in steps of " + std::to_string(step));
    const RoundTrip result = goThereAndBack(fill(sizes, first, step));
    kept.insert(result.same.begin(), result.same.end());
    EXPECT_GE(result.same.size(), sizes.size() / 2);
    for (const auto& [type, error] : result.errors) {
      const bool isOutside =
          error.find("the value is outside the member's limits") != std::string::npos;
      const bool isNoNumber = error.find("a number is missing") != std::string::npos;  // a NaN
      EXPECT_TRUE(isOutside || isNoNumber) << error;
    }
  }
  for (const auto& [type, size] : sizes) EXPECT_EQ(kept.count(type), 1u) << type;
}

}  // namespace

}  // namespace zavri::test
