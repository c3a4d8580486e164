#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"

// Every command with wrong input of each kind: one clear error, the right exit status, nothing on
// standard output.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

constexpr int kProblem = 1;
constexpr int kUsage = 2;
constexpr int kNotFound = 3;

struct WrongCase {
  Words words;  // @EMPTY, @BROKEN and @FILE stand for a folder, a catalogue and a file of the test
  int status;
  std::string error;  // part of the line
};

// Wrong input that several commands can get.
const std::string kUnknownType = "unknown type 'SNVT_zyxwvut'";
const std::string kOddHex = "is not whole bytes: 3 digits given, expected an even number";
const std::string kNoHex = "is not hexadecimal: 'X' at position 1 (byte 0)";
const std::string kShort = "1 byte given, but a value of SNVT_switch has 2: 'state' at byte 1";
const std::string kLong = "3 bytes given, but a value of SNVT_switch has 2";
const std::string kNoValues = "'hvac_t' has no values: expected a network variable";
const std::string kNoLayout = "'SCPTdefOutput' has no layout of its own";
const std::string kNoCatalogue = "no catalogue: '/no/such/folder' is not a folder";

const std::vector<WrongCase> kCases = {
    // decode
    {{"decode"}, kUsage, "TYPE and HEX are required"},
    {{"decode", "SNVT_switch"}, kUsage, "TYPE and HEX are required"},
    {{"decode", "SNVT_zyxwvut", "C801"}, kNotFound, kUnknownType},
    {{"decode", "zzz/UNVTx", "C801"}, kNotFound, "'zzz/UNVTx': it names no set"},
    {{"decode", "hvac_t", "00"}, kNotFound, kNoValues},
    {{"decode", "SCPTdefOutput", "00"}, kProblem, kNoLayout},
    {{"decode", "SNVT_switch", "C80"}, kProblem, kOddHex},
    {{"decode", "SNVT_switch", "XY"}, kProblem, kNoHex},
    {{"decode", "SNVT_switch", "C8"}, kProblem, kShort},
    {{"decode", "SNVT_switch", "C80100"}, kProblem, kLong},
    {{"decode", "SNVT_switch", "C801", "--select", "stat"}, kProblem, "no member 'stat'"},
    {{"decode", "SNVT_switch", "C801", "--enum", "names"}, kUsage, "'names' is none of"},
    {{"decode", "--text", "SNVT_temp_p", "092E"}, kProblem, "has no display format"},
    {{"decode", "--text", "--format", "XY", "SNVT_switch", "C801"}, kProblem, "format 'XY'"},
    {{"decode", "--text", "--stream"}, kUsage, "excludes"},
    {{"decode", "--csv", "SNVT_switch", "C801"}, kUsage, "requires"},
    {{"decode", "--stream", "SNVT_switch"}, kUsage, "name the type with --type"},
    {{"decode", "--stream", "--type", "SNVT_zyxwvut"}, kNotFound, kUnknownType},
    {{"--catalog", "/no/such/folder", "decode", "SNVT_switch", "C801"}, kNotFound, kNoCatalogue},
    {{"--catalog", "@EMPTY", "decode", "SNVT_switch", "C801"}, kNotFound, "cannot load"},
    {{"--catalog", "@BROKEN", "decode", "SNVT_switch", "C801"}, kNotFound, "nvs.xml"},
    // encode
    {{"encode"}, kUsage, "TYPE and JSON are required"},
    {{"encode", "SNVT_zyxwvut", "1"}, kNotFound, kUnknownType},
    {{"encode", "hvac_t", "1"}, kNotFound, kNoValues},
    {{"encode", "SCPTdefOutput", "1"}, kProblem, kNoLayout},
    {{"encode", "SNVT_switch", "{\"value\":"}, kProblem, "is not JSON"},
    {{"encode", "SNVT_switch", ""}, kProblem, "is not JSON"},
    {{"encode", "SNVT_switch", "5"}, kProblem, "expected an object of value, state"},
    {{"encode", "SNVT_switch", "{\"value\":1}"}, kProblem, "state: a number is missing (byte 1)"},
    {{"encode", "SNVT_switch", "{\"value\":1,\"state\":0,\"x\":0}"}, kProblem, "member 'x'"},
    {{"encode", "--no-cut", "SNVT_switch", "{\"value\":101,\"state\":0}"}, kProblem, "0 to 100"},
    {{"--catalog", "/no/such/folder", "encode", "SNVT_temp", "1"}, kNotFound, kNoCatalogue},
    // explain
    {{"explain"}, kUsage, "required"},
    {{"explain", "SNVT_switch"}, kUsage, "HEX"},
    {{"explain", "SNVT_zyxwvut", "00"}, kNotFound, kUnknownType},
    {{"explain", "hvac_t", "00"}, kNotFound, kNoValues},
    {{"explain", "SCPTdefOutput", "00"}, kProblem, kNoLayout},
    {{"explain", "SNVT_switch", "C80"}, kProblem, kOddHex},
    {{"explain", "SNVT_switch", "XY"}, kProblem, kNoHex},
    {{"explain", "SNVT_switch", "C8"}, kProblem, kShort},
    {{"explain", "SNVT_switch", "C80100"}, kProblem, kLong},
    {{"--color", "blue", "explain", "SNVT_switch", "C801"}, kUsage, "'blue' is none of"},
    {{"explain", "SNVT_switch", "C801", "--dynamic-arrays"}, kUsage, "does not take"},
    // guess and search
    {{"guess", "C801", "--dynamic-arrays"}, kUsage, "does not take --dynamic-arrays"},
    {{"guess"}, kUsage, "HEX"},
    {{"guess", "C80"}, kProblem, kOddHex},
    {{"guess", "XY"}, kProblem, kNoHex},
    {{"guess", ""}, kNotFound, "no type of 0 bytes"},
    {{"--catalog", "@EMPTY", "guess", "C801"}, kNotFound, "no type of 2 bytes"},
    {{"search"}, kUsage, "WORD"},
    {{"search", " "}, kUsage, "no word to search for"},
    {{"search", "zyxwvut"}, kNotFound, "no type matches 'zyxwvut'"},
    // get, set, swap
    {{"get", "SNVT_switch", "C801"}, kUsage, "PATH"},
    {{"get", "SNVT_zyxwvut", "C801", "state"}, kNotFound, kUnknownType},
    {{"get", "SNVT_switch", "XY01", "state"}, kProblem, kNoHex},
    {{"get", "SNVT_switch", "C8", "state"}, kProblem, kShort},
    {{"get", "SNVT_switch", "C801", "stat"}, kProblem, "did you mean 'state'?"},
    {{"get", "SNVT_switch", "C801", "state[0]"}, kProblem, "there is no array here"},
    {{"get", "SNVT_trans_table", std::string(60, '0'), "point[7]"}, kProblem, "there are 7"},
    {{"set", "SNVT_switch", "C801", "state"}, kUsage, "VALUE"},
    {{"set", "SNVT_zyxwvut", "C801", "state", "1"}, kNotFound, kUnknownType},
    {{"set", "SNVT_switch", "XY01", "state", "1"}, kProblem, kNoHex},
    {{"set", "SNVT_switch", "C8", "state", "1"}, kProblem, kShort},
    {{"set", "SNVT_switch", "C801", "stat", "1"}, kProblem, "did you mean 'state'?"},
    {{"set", "SNVT_switch", "C801", "state", "on"}, kProblem, "expected -1 to 1 state code"},
    {{"set", "SNVT_switch", "C801", "state", "null"}, kProblem, "null is no value"},
    {{"swap", "SNVT_temp_p", "092E"}, kUsage, "--from"},
    {{"swap", "SNVT_temp_p", "092E", "--from", "small"}, kUsage, "'small' is none of"},
    {{"swap", "SNVT_zyxwvut", "092E", "--from", "big"}, kNotFound, kUnknownType},
    {{"swap", "SNVT_temp_p", "XY", "--from", "big"}, kProblem, kNoHex},
    {{"swap", "SNVT_switch", "C8", "--from", "big"}, kProblem, kShort},
    // describe, schema, profile
    {{"describe"}, kUsage, "TYPE"},
    {{"describe", "SNVT_zyxwvut"}, kNotFound, kUnknownType},
    {{"describe", "SFPTnodeObject"}, kNotFound, "see 'korvat profile SFPTnodeObject'"},
    {{"describe", "SNVT_switch", "--svg", "/no/such/folder/x.svg"}, kProblem, "cannot write"},
    {{"describe", "hvac_t", "--svg", "x.svg"}, kNotFound, kNoValues},
    {{"schema"}, kUsage, "TYPE"},
    {{"schema", "SNVT_zyxwvut"}, kNotFound, kUnknownType},
    {{"schema", "SNVT_switch", "hvac_t"}, kNotFound, kNoValues},
    {{"schema", "SCPTdefOutput"}, kProblem, kNoLayout},
    {{"profile"}, kUsage, "PROFILE"},
    {{"profile", "SFPTzyxwvut"}, kNotFound, "unknown type 'SFPTzyxwvut'"},
    {{"profile", "SNVT_switch"}, kNotFound, "is no functional profile"},
    {{"profile", ""}, kNotFound, "unknown type ''"},
    {{"profile", "999999"}, kNotFound, "no functional profile with the key 999999"},
    {{"profile", "99999999999999999999"}, kNotFound, "key 99999999999999999999"},
    // list, check, diff
    {{"list", "zyxwvut"}, kNotFound, "no type matches 'zyxwvut'"},
    {{"list", "fx", "temp"}, kUsage, "unknown kind 'fx'"},
    {{"list", "nv", "temp", "press"}, kUsage, "too many arguments: 'press'"},
    {{"list", "--size", "9-3"}, kUsage, "9-3"},
    {{"list", "--size", "x"}, kUsage, "'x'"},
    {{"list", "--unit", "zyxwvut"}, kNotFound, "no type"},
    {{"--catalog", "@EMPTY", "list"}, kNotFound, "no nv types in set"},
    {{"check", "/no/such/folder"}, kNotFound, kNoCatalogue},
    {{"check", ""}, kUsage, "the name of the folder is empty"},
    {{"--catalog", "", "list"}, kUsage, "the name of the folder is empty"},
    {{"check", "@EMPTY"}, kNotFound, "no catalogue"},
    {{"check", "@FILE"}, kNotFound, "is not a folder"},
    {{"diff"}, kUsage, "OLD"},
    {{"diff", "@EMPTY"}, kUsage, "NEW"},
    {{"diff", "/no/such/folder", "@BROKEN"}, kNotFound, kNoCatalogue},
    {{"diff", "@BROKEN", "/no/such/folder"}, kNotFound, kNoCatalogue},
    {{"diff", "", ""}, kNotFound, "no catalogue"},
    // completion, and no command at all
    {{"completion"}, kUsage, "SHELL"},
    {{"completion", "tcsh"}, kUsage, "tcsh"},
    {{}, kUsage, "see 'korvat --help'"},
    {{"frobnicate"}, kUsage, "unknown command 'frobnicate'"},
    {{"--frobnicate"}, kUsage, "unknown option '--frobnicate'"},
    {{"--order", "middle", "list"}, kUsage, "'middle' is none of"},
    {{"--log", "loud", "list"}, kUsage, "'loud' is none of"},
    {{"--errors", "xml", "list"}, kUsage, "'xml' is none of"},
    {{"--prefix", "nonsense", "decode", "SNVT_switch", "C801"}, kUsage, "'nonsense' names no set"},
    {{"--prefix", "9FFFFF00000000003", "list"}, kUsage, "names no set"},
};

class WrongInput : public TempCatalogue {
 public:
  WrongInput() {
    std::filesystem::create_directory(path() + "/empty");
    std::filesystem::create_directory(path() + "/broken");
    write("broken/0000000000000000-0", "nvs", "<nvt></mismatch>");
    std::ofstream(path() + "/file") << "text";
  }

  Words fill(Words words) const {
    for (std::string& word : words) {
      if (word == "@EMPTY") word = path() + "/empty";
      if (word == "@BROKEN") word = path() + "/broken";
      if (word == "@FILE") word = path() + "/file";
    }
    return words;
  }
};

std::string lineOf(const Words& words) {
  std::string line = "korvat";
  for (const std::string& word : words) line += " '" + word + "'";
  return line;
}

TEST(WrongInputOfEveryCommand, IsOneErrorWithItsStatusAndNoOutput) {
  const WrongInput folder;
  for (const WrongCase& wrong : kCases) {
    const ToolResult result = runTool(folder.fill(wrong.words));
    EXPECT_EQ(result.status, wrong.status) << lineOf(wrong.words) << "\n" << result.errors;
    EXPECT_EQ(result.output, "") << lineOf(wrong.words);
    EXPECT_EQ(result.errors.rfind("korvat: ", 0), 0u) << lineOf(wrong.words);
    EXPECT_EQ(std::count(result.errors.begin(), result.errors.end(), '\n'), 1)
        << lineOf(wrong.words) << "\n"
        << result.errors;
    EXPECT_NE(result.errors.find(wrong.error), std::string::npos) << lineOf(wrong.words) << "\n"
                                                                  << result.errors;
  }
}

TEST(WrongInputOfEveryCommand, LeavesNoCommandOut) {
  std::set<std::string> tried;
  for (const WrongCase& wrong : kCases) tried.insert(wrong.words.begin(), wrong.words.end());
  const std::string help = runTool({"--help"}).output;
  const std::size_t begin = help.find("Subcommands:\n");
  ASSERT_NE(begin, std::string::npos);
  std::istringstream lines(help.substr(begin + 13));
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  ", 0) != 0 || line[2] == ' ') continue;
    EXPECT_EQ(tried.count(line.substr(2, line.find(' ', 2) - 2)), 1u) << line;
  }
}

}  // namespace

}  // namespace zavri::test
