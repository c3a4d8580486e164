#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/convert/TypeXml.h"

// The commands that find types: by a raw value, and by words.
namespace zavri::test {

namespace {

using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

std::string limits(int low, int high) {
  return tag("min", std::to_string(low)) + tag("max", std::to_string(high));
}

std::string nvType(const std::string& id, int index, const std::string& member,
                   const std::string& attributes = "") {
  return "<nvt id='_" + id + "' idx='" + std::to_string(index) + "' " + attributes + ">" + member +
         "</nvt>\n";
}

// A set of few types, most of one byte.
class SmallSet : public TempCatalogue {
 public:
  SmallSet() {
    write(korvat::TypeId::StdPrefix, "enums", enumt("color_t", {{0, "COL_RED"}, {1, "COL_BLUE"}}));
    write(korvat::TypeId::StdPrefix, "nvs",
          nvType("any", 1, scalar("unsigned short"), "summary='whatever fits into a byte'") +
              nvType("few", 2, scalar("unsigned short", limits(0, 15))) +
              nvType("one", 3, scalar("unsigned short", limits(7, 7))) +
              nvType("marked", 4, scalar("unsigned short", limits(0, 14) + invalid("255"))) +
              nvType("color", 5, enumeration("color_t")) +
              nvType("old", 6, scalar("unsigned short", limits(0, 15)) + tag("obsolete", "yes")) +
              nvType("word", 7, scalar("unsigned long", limits(0, 255))));
  }

  ToolResult run(Words words) const {
    words.insert(words.begin(), {"--catalog", path()});
    return runTool(words);
  }
};

// --- guess ---

struct GuessCase {
  std::string name;
  std::string hex;
  Words types;  // best first
};

class GuessedTypes : public testing::TestWithParam<GuessCase> {};

TEST_P(GuessedTypes, AreThoseWhoseSizeAndLimitsFitTheTightestFirst) {
  const ToolResult result = SmallSet().run({"guess", GetParam().hex, "--json"});
  json::Value rows;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, rows, error)) << error << result.errors;
  Words types;
  for (unsigned i = 0; i < rows.getSize(); ++i) types.push_back(rows[i]["type"].asString());
  EXPECT_EQ(types, GetParam().types);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

const std::vector<GuessCase> kGuessCases = {
    // One number of 256 speaks more for a type than two enumerators, those more than 16 numbers.
    {"NarrowLimitsFirst", "07", {"SNVT_one", "SNVT_few", "SNVT_marked", "SNVT_old", "SNVT_any"}},
    {"EnumeratorsOfTheEnumeration",
     "01",
     {"SNVT_color", "SNVT_few", "SNVT_marked", "SNVT_old", "SNVT_any"}},
    {"TheInvalidMarkerIsWithinTheLimits", "FF", {"SNVT_marked", "SNVT_any"}},
    {"WithoutLimits", "80", {"SNVT_any"}},
    {"OfTwoBytes", "00FF", {"SNVT_word"}},
};

INSTANTIATE_TEST_SUITE_P(Values, GuessedTypes, testing::ValuesIn(kGuessCases), kNameOf);

TEST(Guess, SaysHowManyBitsSpeakForAType) {
  const ToolResult result = SmallSet().run({"guess", "07", "--json"});
  json::Value rows;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, rows, error)) << error;
  // 1 of 256 is 8 bits, 16 of 256 are 4.
  EXPECT_EQ(rows[0]["evidence"].asDouble(), 8.0);
  EXPECT_EQ(rows[1]["evidence"].asDouble(), 4.0);
  EXPECT_EQ(rows[2]["evidence"].asDouble(), 4.0);
  EXPECT_EQ(rows[4]["evidence"].asDouble(), 0.0);
  EXPECT_EQ(rows[0]["value"].asInt32(), 7);
}

TEST(Guess, PrintsEachTypeWithItsValue) {
  EXPECT_EQ(SmallSet().run({"guess", "FF"}).output,
            "SNVT_marked                   255\n"
            "SNVT_any                      255\n");
}

TEST(Guess, FindsNothingBesideTheLimits) {
  const ToolResult result = SmallSet().run({"guess", "0100"});
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "korvat: no type of 2 bytes has this value within its limits\n");
  EXPECT_EQ(result.status, 3);
}

TEST(Guess, PutsTheSwitchFirstForASwitchValue) {
  const ToolResult result = runTool({"guess", "C801"});
  EXPECT_EQ(result.output.substr(0, result.output.find('\n')),
            "SNVT_switch                   {\"value\":100.0,\"state\":1}");
}

TEST(Guess, LooksIntoAllSetsUnlessOneIsNamed) {
  const std::string catalogue = KORVAT_TEST_DATA "/catalogue";
  EXPECT_EQ(runTool({"--catalog", catalogue, "guess", "01020910"}).output.substr(0, 34),
            "9FFFFF0000000000-3/UNVTBoilerState");
  EXPECT_EQ(runTool({"--catalog", catalogue, "--prefix", "9FFFFF0000000000-3", "guess", "01020910"})
                .output.substr(0, 15),
            "UNVTBoilerState");
}

// The single nearest to the limit -273.17 stands for it, though it is a little less.
TEST(Guess, TakesTheSingleThatStandsForALimit) {
  EXPECT_NE(runTool({"guess", "C38895C3"}).output.find("SNVT_temp_f "), std::string::npos);
  EXPECT_EQ(runTool({"guess", "C38895C4"}).output.find("SNVT_temp_f "), std::string::npos);
}

// --- search ---

struct SearchCase {
  std::string name;
  Words words;
  std::string output;
};

class FoundTypes : public testing::TestWithParam<SearchCase> {};

TEST_P(FoundTypes, AreThoseThatHaveAllWords) {
  Words words = {"search"};
  words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
  const ToolResult result = SmallSet().run(words);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

const std::vector<SearchCase> kSearchCases = {
    {"InTheName", {"snvt_w"}, "nv   SNVT_word\n"},
    {"InTheSummary",
     {"Fits", "byte"},
     "nv   SNVT_any                      whatever fits into a byte\n"},
    {"WordsOfOneArgument",
     {"byte whatever"},
     "nv   SNVT_any                      whatever fits into a byte\n"},
    {"NamesBeforeEnumerators",
     {"col_", "color"},
     "nv   SNVT_color                      (enumerator COL_BLUE)\n"
     "enum color_t                         (enumerator COL_BLUE)\n"},
};

INSTANTIATE_TEST_SUITE_P(Words, FoundTypes, testing::ValuesIn(kSearchCases), kNameOf);

TEST(Search, FindsUnitsAndMembersOfTheStandardTypes) {
  const std::string lines = runTool({"search", "celsius", "heat"}).output;
  EXPECT_NE(lines.find("nv   SNVT_temp_setpt"), std::string::npos) << lines;
  EXPECT_NE(lines.find("(unit degrees Celsius)"), std::string::npos) << lines;
}

TEST(Search, SaysInJsonWhereEachWordStands) {
  const ToolResult result = SmallSet().run({"search", "blue", "--json"});
  json::Value rows;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, rows, error)) << error;
  ASSERT_EQ(rows.getSize(), 2u);
  EXPECT_EQ(rows[0]["kind"].asString(), "nv");
  EXPECT_EQ(rows[0]["name"].asString(), "SNVT_color");
  EXPECT_EQ(rows[0]["found"][0]["part"].asString(), "enumerator");
  EXPECT_EQ(rows[0]["found"][0]["text"].asString(), "COL_BLUE");
  EXPECT_EQ(rows[1]["name"].asString(), "color_t");
}

TEST(Search, LooksIntoAllSetsUnlessOneIsNamed) {
  const std::string catalogue = KORVAT_TEST_DATA "/catalogue";
  EXPECT_EQ(runTool({"--catalog", catalogue, "search", "boilerstate"}).output,
            "nv   9FFFFF0000000000-3/UNVTBoilerState\n");
  EXPECT_EQ(runTool({"--catalog", catalogue, "--prefix", "9FFFFF0000000000-3", "search", "state"})
                .output.find("nv   UNVTBoilerState"),
            0u);
}

struct FailureCase {
  std::string name;
  Words words;
  int status;
  std::string error;
};

class NothingFound : public testing::TestWithParam<FailureCase> {};

TEST_P(NothingFound, IsSaidInOneLine) {
  const ToolResult result = SmallSet().run(GetParam().words);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, "korvat: " + GetParam().error + "\n");
  EXPECT_EQ(result.status, GetParam().status);
}

const std::vector<FailureCase> kFailureCases = {
    {"NoTypeHasTheWords", {"search", "any", "color"}, 3, "no type matches 'any color'"},
    {"NoWord", {"search", " "}, 2, "no word to search for"},
};

INSTANTIATE_TEST_SUITE_P(Words, NothingFound, testing::ValuesIn(kFailureCases), kNameOf);

}  // namespace

}  // namespace zavri::test
