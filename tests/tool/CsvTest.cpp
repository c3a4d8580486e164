#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// Streams of comma separated values.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

struct CsvCase {
  std::string name;
  Words arguments;
  std::string input;
  std::string output;
};

const Words kFromRows = {"decode", "--stream", "--csv-in"};
const Words kToRows = {"decode", "--stream", "--csv"};

Words plus(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

const Words kSwitch = {"--type", "SNVT_switch"};

class GoodCsv : public testing::TestWithParam<CsvCase> {};

TEST_P(GoodCsv, IsConvertedRowByRow) {
  const ToolResult result = runTool(GetParam().arguments, GetParam().input);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
}

const std::vector<CsvCase> kGoodCases = {
    // --- The four ways of input and output ---
    {"RecordsToRows", plus(kToRows, kSwitch),
     R"({"t":1,"raw":"C801","x":[2,"a"],"n":null})"
     "\n"
     R"({"raw":"0000","t":"2"})"
     "\n",
     "t,raw,x,n,value,state,error\n"
     "1,C801,\"[2,\"\"a\"\"]\",,100.0,1,\n"
     "2,0000,,,0.0,0,\n"},
    {"BareLinesToRows", plus(kToRows, kSwitch), "C801\n0200\n",
     "raw,value,state,error\nC801,100.0,1,\n0200,1.0,0,\n"},
    {"RowsToRecords", plus(kFromRows, kSwitch), "t,raw\n1,C801\n",
     R"({"t":"1","raw":"C801","value":{"value":100.0,"state":1}})"
     "\n"},
    {"RowsToRows", plus(kFromRows, plus(kSwitch, {"--csv"})), "t,raw,note\n1,C801,a\n",
     "t,raw,note,value,state,error\n1,C801,a,100.0,1,\n"},
    {"ValueItselfToRows", plus(kToRows, {"--type", "SNVT_temp_p"}), "092E\n",
     "raw,value,error\n092E,23.5,\n"},
    {"NothingToRows", plus(kToRows, kSwitch), "", "value,state,error\n"},
    {"ReplacesOldResults", plus(kToRows, kSwitch),
     R"({"raw":"C801","value":{"value":1,"state":0},"error":"old"})"
     "\n",
     "raw,value,state,error\nC801,100.0,1,\n"},
    {"LeavesOutPropertiesThatTheFirstRecordHasNot", plus(kToRows, kSwitch),
     "{\"raw\":\"C801\"}\n{\"raw\":\"C801\",\"t\":1}\n",
     "raw,value,state,error\nC801,100.0,1,\nC801,100.0,1,\n"},
    // "state" is a column of the input and a member.
    {"TellsAMemberFromAColumnOfItsName", plus(kToRows, kSwitch),
     R"({"raw":"C801","state":"on"})"
     "\n",
     "raw,state,value,value.state,error\nC801,on,100.0,1,\n"},

    {"ChosenEnumerationsOfAnyTypeAsNamesAndNumbers",
     plus(kToRows, {"--select", "mode,heat_output_primary", "--enum", "both"}),
     R"({"type":"SNVT_hvac_status","raw":"010FA0000000000000000000"})"
     "\n",
     "type,raw,mode,mode.number,heat_output_primary,heat_output_primary.number,error\n"
     "SNVT_hvac_status,010FA0000000000000000000,HVAC_HEAT,1,20.0,,\n"},
    // 3 bits from the top of the last byte: 010.
    {"MembersNamedLikePropertiesOfARecord", plus(kToRows, {"--type", "SNVT_reg_val"}),
     "000004D20040\n", "raw,value.raw,unit,nr_decimals,error\n000004D20040,1234,RVU_NONE,2,\n"},

    // --- Reading rows ---
    {"TakesAnotherColumn", plus(kFromRows, plus(kSwitch, {"--raw-column", "pay load"})),
     "pay load,raw\nC801,x\n",
     R"({"pay load":"C801","raw":"x","value":{"value":100.0,"state":1}})"
     "\n"},
    {"TakesTheTypeFromARow", plus(kFromRows, kSwitch), "type,raw\nSNVT_temp_p,092E\n,C801\n",
     R"({"type":"SNVT_temp_p","raw":"092E","value":23.5})"
     "\n"
     R"({"type":"","raw":"C801","value":{"value":100.0,"state":1}})"
     "\n"},
    {"TakesQuotedFields", plus(kFromRows, plus(kSwitch, {"--csv"})),
     "\"raw\",\"a,b\"\n\"C801\",\"x,\"\"y\"\"\"\nC801,\"\"\n",
     "raw,\"a,b\",value,state,error\nC801,\"x,\"\"y\"\"\",100.0,1,\nC801,,100.0,1,\n"},
    {"TakesLineEndsInQuotedFields", plus(kFromRows, plus(kSwitch, {"--csv"})),
     "raw,n\nC801,\"a\r\nb\n\nc\"\n", "raw,n,value,state,error\nC801,\"a\r\nb\n\nc\",100.0,1,\n"},
    {"TakesCarriageReturnsAndABlankLine", plus(kFromRows, kSwitch), "raw,n\r\n\r\nC801,1\r\n",
     R"({"raw":"C801","n":"1","value":{"value":100.0,"state":1}})"
     "\n"},
    {"TakesALastRowWithoutAnEnd", plus(kFromRows, kSwitch), "raw\nC801",
     R"({"raw":"C801","value":{"value":100.0,"state":1}})"
     "\n"},
    {"TakesAByteOrderMark", plus(kFromRows, kSwitch), "\xEF\xBB\xBFraw\nC801\n",
     R"({"raw":"C801","value":{"value":100.0,"state":1}})"
     "\n"},
    {"TakesQuotesInsideAField", plus(kFromRows, plus(kSwitch, {"--csv"})), "raw,n\nC801,5\"\n",
     "raw,n,value,state,error\nC801,\"5\"\"\",100.0,1,\n"},
    {"TakesAHeaderAlone", plus(kFromRows, plus(kSwitch, {"--csv"})), "raw,n\n",
     "raw,n,value,state,error\n"},

    // --- Members in columns ---
    // file_info is 16 characters, the address lies over its first bytes.
    {"ArraysAndUnions", plus(kToRows, {"--type", "SNVT_file_status"}),
     "0101020003"
     "41420000000000000000000000000000"
     "00000005"
     "0006\n",
     "raw,status,number_of_files,selected_file,adr.descriptor.file_info,adr.descriptor.size,"
     "adr.descriptor.type,adr.address.domain_id[0],adr.address.domain_id[1],"
     "adr.address.domain_id[2],adr.address.domain_id[3],adr.address.domain_id[4],"
     "adr.address.domain_id[5],adr.address.domain_length,adr.address.subnet,adr.address.node,"
     "error\n"
     "0101020003414200000000000000000000000000000000000500"
     "06,"
     "FS_LOOKUP_OK,258,3,AB,5,6,65,66,0,0,0,0,0,0,0,\n"},
    {"ChosenMembers", plus(kToRows, plus(kSwitch, {"--select", "state"})), "C801\n",
     "raw,state,error\nC801,1,\n"},
    {"ChosenMembersOfAnyType", plus(kToRows, {"--select", "state"}),
     R"({"type":"SNVT_switch","raw":"C801"})"
     "\n",
     "type,raw,state,error\nSNVT_switch,C801,1,\n"},

    // --- Encoding ---
    {"RowsToRaw", plus({"encode", "--stream", "--csv-in", "--csv"}, kSwitch),
     "t,state,value\n1,1,100\n2,0,0.5\n",
     "t,state,value,raw,error\n1,1,100,C801,\n2,0,0.5,0100,\n"},
    {"RowsToRawRecords", plus({"encode", "--stream", "--csv-in"}, kSwitch),
     "t,state,value\n1,1,100\n",
     R"({"t":"1","value":{"value":100,"state":1},"raw":"C801"})"
     "\n"},
    {"RawRecordsToRows", plus({"encode", "--stream", "--csv"}, kSwitch),
     R"({"t":1,"type":"SNVT_temp_p","value":23.5})"
     "\n",
     "t,type,value,raw,error\n1,SNVT_temp_p,23.5,092E,\n"},
    {"ValueItself",
     {"encode", "--stream", "--csv-in", "--csv", "--type", "SNVT_temp_p"},
     "value\n23.5\n",
     "value,raw,error\n23.5,092E,\n"},
    {"TypesOfRows",
     {"encode", "--stream", "--csv-in"},
     "type,value,state\nSNVT_switch,100,1\nSNVT_temp_p,23.5,\nSNVT_date_day,DAY_TUE,\n",
     R"({"type":"SNVT_switch","value":{"value":100,"state":1},"raw":"C801"})"
     "\n"
     R"({"type":"SNVT_temp_p","state":"","value":23.5,"raw":"092E"})"
     "\n"
     R"({"type":"SNVT_date_day","state":"","value":"DAY_TUE","raw":"02"})"
     "\n"},
    {"PrefixedMembers",
     {"encode", "--stream", "--csv-in", "--csv", "--type", "SNVT_switch"},
     "state,value.value,value.state\non,100,1\n",
     "state,value.value,value.state,raw,error\non,100,1,C801,\n"},
    {"MissingMembers",
     {"encode", "--stream", "--csv-in", "--csv", "--type", "SNVT_switch", "--allow-missing"},
     "value,state\n,1\n",
     "value,state,raw,error\n,1,0001,\n"},
    // One alternative of the union, and texts.
    {"OneAlternative",
     {"encode", "--stream", "--csv-in", "--csv", "--type", "SNVT_file_status"},
     "status,number_of_files,selected_file,adr.descriptor.file_info,adr.descriptor.size,"
     "adr.descriptor.type\nFS_LOOKUP_OK,258,3,AB,5,6\n",
     "status,number_of_files,selected_file,adr.descriptor.file_info,adr.descriptor.size,"
     "adr.descriptor.type,raw,error\nFS_LOOKUP_OK,258,3,AB,5,6,"
     "01010200034142000000000000000000000000000000000005"
     "0006,\n"},
};

INSTANTIATE_TEST_SUITE_P(Streams, GoodCsv, testing::ValuesIn(kGoodCases), kNameOf);

TEST(Csv, ComesBackFromItsColumns) {
  const ToolResult rows = runTool(plus(kToRows, kSwitch), "C801\n0100\n00FF\n");
  const ToolResult raws =
      runTool(plus({"encode", "--stream", "--csv-in", "--csv"}, kSwitch), rows.output);
  EXPECT_EQ(raws.status, 0);
  EXPECT_EQ(raws.output, "value,state,raw,error\n100.0,1,C801,\n0.5,0,0100,\n0.0,-1,00FF,\n");
}

TEST(Csv, ComesBackFromMembersNamedLikePropertiesOfARecord) {
  const Words type = {"--type", "SNVT_reg_val"};
  const ToolResult rows = runTool(plus(kToRows, type), "000004D20040\nFFFFFFFE0020\n");
  const ToolResult raws =
      runTool(plus({"encode", "--stream", "--csv-in", "--csv"}, type), rows.output);
  EXPECT_EQ(raws.errors, "");
  EXPECT_EQ(raws.output,
            "value.raw,unit,nr_decimals,raw,error\n1234,RVU_NONE,2,000004D20040,\n"
            "-2,RVU_NONE,1,FFFFFFFE0020,\n");
}

// --- Types of our own ---

class CsvOfOurOwn : public testing::Test {
 protected:
  CsvOfOurOwn() {
    _files.write(TypeId::StdPrefix, "enums", sharedEnums());
    _files.write(
        TypeId::StdPrefix, "nvs",
        nvt("_x", structure({{"n", scalar("unsigned short")},
                             {"d", scalar("unsigned short"), dynamicArray(0, 3)}})) +
            nvt("_rows", structure({{"a", scalar("unsigned short")}, {"p", enumeration("power_t")}},
                                   arraySize(2))));
  }

  ToolResult decode(const Words& words, const std::string& input) {
    return runTool(plus({"--catalog", _files.path(), "decode", "--stream", "--csv"}, words), input);
  }

  TempCatalogue _files;
};

TEST_F(CsvOfOurOwn, LeavesFieldsEmptyBehindAShortDynamicArray) {
  const ToolResult result = decode({"--type", "SNVT_x", "--dynamic-arrays"}, "0105\n03010203\n");
  EXPECT_EQ(result.output, "raw,n,d[0],d[1],d[2],error\n0105,1,5,,,\n03010203,3,1,2,3,\n");
}

TEST_F(CsvOfOurOwn, HasColumnsForStructuresInAnArray) {
  const ToolResult result = decode(
      {"--type", "SNVT_rows", "--enum", "both", "--raw-too", "--select", "[1]"}, "0500070A\n");
  EXPECT_EQ(result.output,
            "raw,[1].a,[1].a.raw,[1].p,[1].p.number,[1].p.raw,error\n0500070A,7,7,,10,10,\n");
}

TEST_F(CsvOfOurOwn, RefusesATypeOfTooManyMembers) {
  _files.write(TypeId::StdPrefix, "nvs", nvt("_x", scalar("unsigned short", arraySize(20'001))));
  const ToolResult result = decode({"--type", "SNVT_x"}, "");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors,
            "korvat: SNVT_x has more than 20000 members: choose some with --select\n");
  EXPECT_EQ(decode({"--type", "SNVT_x", "--select", "[20000]"}, "").output, "[20000],error\n");
}

// --- Rows that fail ---

class FailingCsv : public testing::TestWithParam<CsvCase> {};

// The row under test stands between two good ones.
TEST_P(FailingCsv, KeepsItsPlace) {
  const ToolResult result =
      runTool(GetParam().arguments, "raw,n\nC801,1\n" + GetParam().input + "\nC801,2\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, "raw,n,value,state,error\nC801,1,100.0,1,\n" + GetParam().output +
                               "\nC801,2,100.0,1,\n");
  EXPECT_EQ(result.errors.rfind("korvat: 1 failed, the first in line 3: ", 0), 0u) << result.errors;
}

const Words kRowsToRows = plus(kFromRows, plus(kSwitch, {"--csv"}));

const std::vector<CsvCase> kFailingCases = {
    {"TooFewFields", kRowsToRows, "C801", "C801,,,,\"the row has 1 fields, but the header 2\""},
    {"TooManyFields", kRowsToRows, "C801,a,b",
     "C801,a,,,\"the row has 3 fields, but the header 2\""},
    {"TextBehindAQuote", kRowsToRows, "C801,\"a\"b",
     "C801,a,,,text behind the closing quote of field 2"},
    {"NoHexadecimal", kRowsToRows, "C80,1",
     "C80,1,,,\"'C80' is not whole bytes: 3 digits given, expected an even number\""},
    {"RowOfSeveralLines", kRowsToRows, "C80,\"1\n\"",
     "C80,\"1\n\",,,\"'C80' is not whole bytes: 3 digits given, expected an even number\""},
};

INSTANTIATE_TEST_SUITE_P(Streams, FailingCsv, testing::ValuesIn(kFailingCases), kNameOf);

TEST(Csv, SaysWhichQuoteIsNotClosed) {
  const ToolResult result = runTool(kRowsToRows, "raw,n\nC801,1\nC801,\"2\nC801,3\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output,
            "raw,n,value,state,error\nC801,1,100.0,1,\n"
            "C801,\"2\nC801,3\n\",,,the quote of field 2 is not closed\n");
  EXPECT_EQ(result.errors,
            "korvat: 1 failed, the first in line 3: the quote of field N is not closed\n"
            "korvat: 1 of 2 records failed; each has its \"error\"\n");
}

// A quote that is not closed takes no more than that.
TEST(Csv, RefusesARowOfMoreThanSixteenMebibytesAndGoesOn) {
  const std::string lines =
      "C801,\"" + std::string(9u << 20, 'x') + "\n" + std::string(9u << 20, 'y') + "\n";
  const ToolResult result = runTool(plus(kFromRows, kSwitch), "raw\n" + lines + "C801\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.errors,
            "korvat: 1 failed, the first in line 2: the row has more than N bytes\n"
            "korvat: 1 of 2 records failed; each has its \"error\"\n");
  const std::string last = R"({"raw":"C801","value":{"value":100.0,"state":1}})"
                           "\n";
  EXPECT_EQ(result.output.substr(result.output.size() - last.size()), last);
}

// A first line without columns does not cost the others theirs.
TEST(Csv, WaitsForARecordThatTellsTheColumns) {
  const ToolResult result = runTool(plus(kToRows, {"--select", "state"}),
                                    "no json\n{\"type\":\"SNVT_switch\",\"raw\":\"C801\"}\n");
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output.rfind("type,raw,state,error\n,,,not JSON: ", 0), 0u) << result.output;
  EXPECT_EQ(result.output.substr(result.output.size() - 20), "SNVT_switch,C801,1,\n");
}

TEST(Csv, WaitsForNoMoreThanAThousandErrors) {
  std::string input;
  for (int i = 0; i < 1001; ++i) input += "[]\n";
  const ToolResult result = runTool(plus(kToRows, {"--select", "state"}),
                                    input + "{\"type\":\"SNVT_switch\",\"raw\":\"C801\"}\n");
  std::string output = "state,error\n";
  for (int i = 0; i < 1001; ++i) output += ",expected a JSON object\n";
  EXPECT_EQ(result.output, output + "1,\n");
}

TEST(Csv, TakesNoValueOfAnotherTypeThanThatOfItsColumns) {
  const ToolResult result =
      runTool(plus(kToRows, kSwitch), "{\"type\":\"SNVT_temp_p\",\"raw\":\"092E\"}\n");
  EXPECT_EQ(result.output,
            "type,raw,value,state,error\nSNVT_temp_p,092E,,,the columns are those of SNVT_switch: "
            "they take no value of SNVT_temp_p\n");
}

// --- Inputs that cannot be taken at all ---

struct UsageCase {
  std::string name;
  Words arguments;
  std::string input;
  int status;
  std::string message;
};

class WrongCsv : public testing::TestWithParam<UsageCase> {};

TEST_P(WrongCsv, IsOneLineAndNoOutput) {
  const ToolResult result = runTool(GetParam().arguments, GetParam().input);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "korvat: " + GetParam().message + "\n");
}

const std::vector<UsageCase> kUsageCases = {
    {"MissingColumn", plus(kFromRows, kSwitch), "t,payload\n1,C801\n", 1,
     "the CSV input has no column 'raw'; there are: t, payload"},
    {"MissingNamedColumn", plus(kFromRows, plus(kSwitch, {"--raw-column", "x"})), "t,raw\n1,C801\n",
     1, "the CSV input has no column 'x'; there are: t, raw"},
    {"NoMemberAmongTheColumns",
     {"encode", "--stream", "--csv-in", "--type", "SNVT_switch"},
     "a,b\n1,2\n",
     1,
     "no column is named like a member of SNVT_switch; its members are: value, state"},
    {"NoTypeForTheRows",
     {"encode", "--stream", "--csv-in"},
     "value\n1\n2\n",
     2,
     "the CSV input has no column 'type': name the type with --type"},
    {"ColumnTwice", plus(kFromRows, kSwitch), "raw,a,raw\nC801,1,C801\n", 1,
     "the header of the CSV input names a column twice"},
    {"BrokenHeader", plus(kFromRows, kSwitch), "raw,\"a\"b\n", 1,
     "the header of the CSV input: text behind the closing quote of field 2"},
    {"OpenHeader", plus(kFromRows, kSwitch), "raw,\"a\n", 1,
     "the header of the CSV input: the quote of field 2 is not closed"},
    {"NoHeader", plus(kFromRows, kSwitch), "", 1, "the CSV input is empty: it has no header"},
    {"RowsWithoutColumns", kToRows, "", 2,
     "--csv needs --type or --select, which tell the columns"},
    {"RawNumbersWithoutColumns", plus(kToRows, {"--select", "a", "--raw-too"}), "", 2,
     "--csv with --raw-too needs --type, which tells the columns"},
};

INSTANTIATE_TEST_SUITE_P(Streams, WrongCsv, testing::ValuesIn(kUsageCases), kNameOf);

}  // namespace

}  // namespace zavri::test
