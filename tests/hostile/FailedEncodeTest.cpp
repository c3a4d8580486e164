#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/RunTool.h"

// In the program a failed conversion to raw bytes gives no bytes at all, and leaves those that a
// record has.
namespace zavri::test {
namespace {

struct FailedEncode {
  std::string name;
  std::vector<std::string> arguments;
  std::string input;
  std::string output;
};

class FailedEncodeTest : public testing::TestWithParam<FailedEncode> {};

TEST_P(FailedEncodeTest, LeavesTheRawValueAsItWas) {
  const FailedEncode& c = GetParam();
  const ToolResult result = runTool(c.arguments, c.input);
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.output, c.output);
  EXPECT_FALSE(result.errors.empty());
}

// The first member can be written, the second one cannot.
const std::string kHalfGood = R"({"value":50.0,"state":"on"})";
const std::string kNotANumber =
    "cannot encode SNVT_switch: state: not a number: \\\"on\\\" (byte 1); expected -1 to 1 state "
    "code";

const std::vector<FailedEncode> kFailedEncodes = {
    {"OfAValue", {"encode", "SNVT_switch", kHalfGood}, "", ""},
    {"OfAMember", {"set", "SNVT_switch", "C801", "state", "on"}, "", ""},
    {"OfARecordWithARawValue",
     {"encode", "--stream"},
     R"({"type":"SNVT_switch","raw":"C801","value":)" + kHalfGood + "}\n",
     R"({"type":"SNVT_switch","raw":"C801","value":)" + kHalfGood + ",\"error\":\"" + kNotANumber +
         "\"}\n"},
    {"OfARecordWithout",
     {"encode", "--stream"},
     R"({"type":"SNVT_switch","value":)" + kHalfGood + "}\n",
     R"({"type":"SNVT_switch","value":)" + kHalfGood + ",\"error\":\"" + kNotANumber + "\"}\n"},
};
INSTANTIATE_TEST_SUITE_P(Cases, FailedEncodeTest, testing::ValuesIn(kFailedEncodes),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::test
