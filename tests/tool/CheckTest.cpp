#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"

// What the program finds wrong with catalogues.
namespace zavri::test {

namespace {

using testing::ElementsAreArray;

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(text.substr(begin, end - begin));
  }
  return lines;
}

const std::string kFaulty = std::string(KORVAT_TEST_DATA) + "/faulty";

// Every fault once, at the line of its item or, for what is found while a file is read, of the
// element.
const std::vector<std::string> kFindings = {
    "cps.xml:7: warning: [ItemBuilder] missing attribute 'idx' in item",
    "cps.xml:11: error: SCPTarray: declares 70000 bytes, its members take 65536",
    "cps.xml:13: warning: [VarBuilder] 'array-size' (70000) in Scalar cut to 65536",
    "enums.xml:10: error: empty_t: the enumeration has no members",
    "enums.xml:16: error: twice_t: the member 'TW_A' has the same name as in line 15",
    "enums.xml:17: warning: twice_t: the member 'TW_B' has the same value 0 as in line 15",
    "enums.xml:18: warning: [EnumBuilder] TW_C -> 300 (overflow)",
    "fps.xml:9: error: SFPTbad: has the same key 1 as in line 4",
    "fps.xml:9: error: SFPTbad: inherits from 0000000000000000-0/SFPTmissing, which does not exist",
    "fps.xml:9: error: SFPTbad: nvoA: the type 0000000000000000-0/SNVT_missing does not exist",
    "fps.xml:9: error: SFPTbad: nvoB: another network variable has the number 1",
    "fps.xml:9: error: SFPTbad: two network variables are called 'nvoB'",
    "fps.xml:9: error: SFPTbad: nvoC: names no type",
    "fps.xml:9: error: SFPTbad: nvoC: the minimum lies above the maximum",
    "fps.xml:14: warning: [FpBuilder::setDirection] direction unhandled: 'up'",
    "fps.xml:18: error: SFPTcircle: inherits from itself",
    "nvs.xml:8: error: SNVT_size: declares 3 bytes, its members take 2",
    "nvs.xml:12: warning: SNVT_no_size: declares no size; its members take 2 bytes",
    "nvs.xml:15: error: SNVT_no_layout: has no layout",
    "nvs.xml:18: error: SNVT_crossed: the minimum 9 lies above the maximum 3",
    "nvs.xml:22: error: SNVT_misfit: low: the minimum -129 does not fit signed short (-128..127)",
    "nvs.xml:22: error: SNVT_misfit: bits: the maximum 8 does not fit 3 bits (0..7)",
    "nvs.xml:22: error: SNVT_misfit: mark: the invalid value 256 does not fit unsigned short "
    "(0..255)",
    "nvs.xml:30: error: SNVT_real: the maximum 1e+39 does not fit float",
    "nvs.xml:34: error: SNVT_overlap: b: the bit field overlaps the one before it: offset 3, width "
    "5",
    "nvs.xml:41: error: SNVT_leaves: the bit field leaves its byte: offset 6, width 4",
    "nvs.xml:45: error: SNVT_no_width: the bit field has no width",
    "nvs.xml:49: error: SNVT_shared_byte: b: shares the byte of the bit field before it, which "
    "begins that byte and does not fill it: add bit fields up to its end",
    "nvs.xml:56: error: SNVT_names: two members are called 'a'",
    "nvs.xml:56: error: SNVT_names: a member has no name",
    "nvs.xml:64: error: SNVT_no_enum: the enumeration 0000000000000000-0/missing_t does not exist",
    "nvs.xml:68: error: SNVT_no_ref: the reference to 0000000000000000-0/SNVT_missing leads to no "
    "layout",
    "nvs.xml:72: error: SNVT_circle: the layout cannot be followed: it holds itself, or is too "
    "large",
    "nvs.xml:78: error: SNVT_format: format: could not parse concatenation part (pos:5 'x')",
    "nvs.xml:78: error: SNVT_format: format 'A': there is no member 'a'",
    "nvs.xml:78: error: SNVT_format: format 'A': there is no member 'b'",
    "nvs.xml:78: error: SNVT_format: format 'B': '' is no number and cannot be shown in another "
    "unit",
    "nvs.xml:78: warning: SNVT_format: format 'C': [FormattedString::analyzeFormatSpecs] unmatched "
    "fmt spec size 2: 1 args provided - fmtSpec: '%d %d' - input: text(\"%d %d\", a)",
    "nvs.xml:78: error: SNVT_format: format 'C': there is no member 'a'",
    "nvs.xml:88: error: SNVT_base_type: the number has no base type",
    "nvs.xml:90: warning: [VarBuilder][0000000000000000-0] invalid nc-type (short) for Scalar",
    "nvs.xml:92: error: SNVT_good: has the same name as in line 4",
    "nvs.xml:96: error: SNVT_number: has the same number 16 as in line 78",
    "nvs.xml:100: error: SCPTstrange: is not loaded from a file of that name: it belongs into "
    "cps.xml",
};

TEST(Check, FindsEachFaultAndItsPlace) {
  std::vector<std::string> expected;
  for (const std::string& finding : kFindings) {
    expected.push_back(kFaulty + "/0000000000000000-0/" + finding);
  }
  expected.push_back(kFaulty +
                     "/8000010000000000-3/nvs.xml:5: error: mismatched tag at line 5, column 5");
  expected.push_back(kFaulty +
                     "/drafts: warning: the folder is named after no set (16 hexadecimal digits, "
                     "'-', a scope from 0 to 6): nobody finds its types");
  const ToolResult result = runTool({"check", kFaulty});
  EXPECT_THAT(linesOf(result.output), ElementsAreArray(expected));
  EXPECT_EQ(result.errors, "korvat: 46 findings in 27 types in 5 files of 2 sets\n");
  EXPECT_EQ(result.status, 1);
}

TEST(Check, PrintsItsFindingsAsJson) {
  const ToolResult result = runTool({"check", kFaulty, "--json"});
  EXPECT_EQ(result.status, 1);
  json::Value findings;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, findings, error)) << error;
  ASSERT_EQ(findings.getSize(), kFindings.size() + 2);
  const std::string file = kFaulty + "/0000000000000000-0/cps.xml";
  EXPECT_EQ(findings[1].stringify(),
            R"({"file":")" + file +
                R"(","line":11,"severity":"error","type":"SCPTarray",)"
                R"("message":"declares 70000 bytes, its members take 65536"})");
}

TEST(Check, FindsNothingInTheEmbeddedCatalogue) {
  const ToolResult result = runTool({"check"});
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.output.rfind("no finding: ", 0), 0u) << result.output;
  EXPECT_EQ(linesOf(result.output).size(), 1u);
  EXPECT_EQ(result.status, 0);
}

TEST(Check, FindsNothingInTheUserSets) {
  const ToolResult result = runTool({"check", std::string(KORVAT_TEST_DATA) + "/catalogue"});
  EXPECT_EQ(result.output, "no finding: 24 types in 15 files of 6 sets\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(runTool({"check", std::string(KORVAT_TEST_DATA) + "/catalogue", "--json"}).output,
            "[]\n");
}

TEST(Check, NeedsACatalogue) {
  const ToolResult missing = runTool({"check", "/no/such/folder"});
  EXPECT_EQ(missing.status, 3);
  EXPECT_EQ(missing.output, "");
  const ToolResult empty = runTool({"check", std::string(KORVAT_TEST_DATA) + "/faulty/drafts"});
  EXPECT_EQ(empty.status, 3);
  EXPECT_EQ(empty.output, "");
  EXPECT_NE(empty.errors.find("holds no resource set"), std::string::npos) << empty.errors;
}

}  // namespace

}  // namespace zavri::test
