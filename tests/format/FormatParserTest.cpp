#include "korvat/format/FormatParser.h"

#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/LogCapture.h"

namespace zavri::korvat::format {

namespace {

using base::Logger;
using test::LogCapture;

// The tree of `input`; the error in brackets for a text that is no format.
std::string dumpOf(const std::string& input) {
  FormatParser parser;
  if (!parser.parse(input)) return "{" + parser.getError() + "}";
  std::string text;
  parser.takeFormat()->dump(text, 0);
  return text;
}

std::string errorOf(const std::string& input) {
  FormatParser parser;
  return parser.parse(input) ? "(none)" : parser.getError();
}

struct TreeCase {
  std::string name;
  std::string input;
  std::string tree;
};

class ParsedFormat : public testing::TestWithParam<TreeCase> {};

TEST_P(ParsedFormat, HasTheTreeOfItsText) {
  EXPECT_EQ(dumpOf(GetParam().input), GetParam().tree);
}

const std::vector<TreeCase> kTrees = {
    {"AValueOfItsOwn", R"(text("%f"))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%f\"\n"
     "      (empty)\n"},
    {"TwoMembers", R"(text("%d of %s", state, name))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%d of %s\"\n"
     "      [0]\n"
     "         [FT_Field]\n"
     "            field spec: state '%d'\n"
     "      [1]\n"
     "         [FT_Field]\n"
     "            field spec: name '%s'\n"},
    {"AnotherUnit", R"(text("%f", v*0.1-5(1:2)))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%f\"\n"
     "      [0]\n"
     "         [FT_Field]\n"
     "            field spec: v '%f' * 0.1 + -5   mode=1 index=2\n"},
    {"AnotherUnitOfTheValueItself", R"(text("%f", *1.8+32(0:853)))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%f\"\n"
     "      [0]\n"
     "         [FT_Field]\n"
     "            field spec:  '%f' * 1.8 + 32   mode=0 index=853\n"},
    {"AFactorAlone", R"(text("%f", v * -2.5e-1))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%f\"\n"
     "      [0]\n"
     "         [FT_Field]\n"
     "            field spec: v '%f' * -0.25 + 0   mode=0 index=0\n"},
    {"NamesWithPathAndIndex", R"(text("%x", a_1.domain_id[3]))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"%x\"\n"
     "      [0]\n"
     "         [FT_Field]\n"
     "            field spec: a_1.domain_id[3] '%x'\n"},
    {"Condition", R"(text((x == 1) ? ("a") : ("b")))",
     "[FT_Format]\n"
     "   [FT_Condition]\n"
     "      if:\n"
     "         x == 1\n"
     "      then:\n"
     "         [FT_FormattedString]\n"
     "            \"a\"\n"
     "            (empty)\n"
     "      else:\n"
     "         [FT_FormattedString]\n"
     "            \"b\"\n"
     "            (empty)\n"},
    {"PartsBehindEachOther", R"(text(("%d ",day),time(hour,minute),((unit!=-3)?("a"):("b"))))",
     "[FT_Format]\n"
     "   [FT_Concatenation]\n"
     "      [0]\n"
     "         [FT_FormattedString]\n"
     "            \"%d \"\n"
     "            [0]\n"
     "               [FT_Field]\n"
     "                  field spec: day '%d'\n"
     "      [1]\n"
     "         [FT_Time]\n"
     "            expressions:\n"
     "               [0] hour = hour\n"
     "               [1] minute = minute\n"
     "      [2]\n"
     "         [FT_Condition]\n"
     "            if:\n"
     "               unit != -3\n"
     "            then:\n"
     "               [FT_FormattedString]\n"
     "                  \"a\"\n"
     "                  (empty)\n"
     "            else:\n"
     "               [FT_FormattedString]\n"
     "                  \"b\"\n"
     "                  (empty)\n"},
    {"AFunctionAlone", "text ( date ( y m , d ) )",
     "[FT_Format]\n"
     "   [FT_Concatenation]\n"
     "      [0]\n"
     "         [FT_Date]\n"
     "            expressions:\n"
     "               [0] year = y\n"
     "               [1] month = m\n"
     "               [2] day = d\n"},
    {"EscapedQuote", R"(text("\"%d\\"))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"\\\"%d\\\\\"\n"
     "      (empty)\n"},
    {"NothingBehindTheFormatCounts", R"(text("a") and more))",
     "[FT_Format]\n"
     "   [FT_FormattedString]\n"
     "      \"a\"\n"
     "      (empty)\n"},
};

INSTANTIATE_TEST_SUITE_P(Formats, ParsedFormat, testing::ValuesIn(kTrees),
                         [](const auto& info) { return info.param.name; });

struct ErrorCase {
  std::string name;
  std::string input;
  std::string error;
};

class RefusedFormat : public testing::TestWithParam<ErrorCase> {};

TEST_P(RefusedFormat, TellsWhatIsWrongAndWhere) {
  EXPECT_EQ(errorOf(GetParam().input), GetParam().error);
}

const std::vector<ErrorCase> kErrors = {
    {"Empty", "", "empty (pos:0)"},
    {"AnotherWord", "abc", "does not start with 'text' (pos:0 'a')"},
    {"TheWordAlone", "text", "missing opening parenthesis '(' after 'text' (pos:4)"},
    {"TheWordAndMore", "text x", "missing opening parenthesis '(' after 'text' (pos:5 'x')"},
    // Strings.
    {"OpenString", R"(text("abc)", "string not closed (pos:9)"},
    {"OpenStringBehindAnEscape", R"(text("abc\"))", "string not closed (pos:12)"},
    {"NoMemberBehindTheComma", R"(text("%d",))", "empty field spec (pos:10 ')')"},
    {"EndInAMember", R"(text("%d", x)",
     "unexpected EOS while parsing field spec (pos:12); could not parse field spec"},
    {"EndBehindTheString", R"(text("%d")", "EOS in string format arguments (pos:9)"},
    {"MemberWithoutAComma", R"(text("%d" x))",
     "missing ')' at end of parseStringFormat (pos:10 'x')"},
    // Concatenations.
    {"NothingBehindTheParenthesis", "text(", "EOS while parsing concatenation (pos:5)"},
    {"EndBehindAPart", R"(text(("a"))", "EOS while parsing concatenation (pos:10)"},
    {"EndBehindAComma", R"(text(("a"),)", "EOS while parsing concatenation (pos:11)"},
    {"PartsWithoutAComma", R"(text(("a") ("b")))",
     "could not parse concatenation part (pos:11 '(')"},
    {"NoPart", "text()", "could not parse concatenation part (pos:5 ')')"},
    {"NameForAPart", "text(x)", "could not parse concatenation part (pos:5 'x')"},
    {"BrokenConditionAsPart", R"(text(("a"), (x)))",
     "missing opening parenthesis of condition (pos:13 'x'); could not parse condition for "
     "concatenation"},
    {"BrokenStringAsPart", R"(text(("a"), ("b))",
     "string not closed (pos:16); could not parse format for concatenation"},
    // Functions.
    {"FunctionWithoutParentheses", "text(date)", "could not parse concatenation part (pos:5 'd')"},
    {"FunctionAtTheEnd", "text(date", "could not parse concatenation part (pos:5 'd')"},
    {"FunctionOfNothing", "text(date())", "too few arguments for function call (pos:10 ')')"},
    {"FourthPartOfADate", "text(date(a,b,c,d))", "faild to add function arg #4 (pos:17 ')')"},
    {"FifthPartOfATime", "text(time(a,b,c,d,e))", "faild to add function arg #5 (pos:19 ')')"},
    {"EmptyArgument", "text(date(a,,b))", "faild to parse function arg #2 (pos:12 ',')"},
    {"EndInAnArgument", "text(time(a",
     "unexpected EOS while parsing field spec (pos:11); faild to parse function arg #1"},
    {"EndBehindAnArgument", "text(date(a,",
     "unexpected EOS while parsing field spec (pos:12); faild to parse function arg #2"},
    // Conditions.
    {"EndInTheNameOfACondition", "text((x",
     "unexpected EOS while parsing field spec (pos:7); could not parse field spec of condition"},
    {"NoNameInACondition", "text(( == 1) ? (\"a\") : (\"b\"))",
     "could not parse field spec of condition (pos:7 '=')"},
    {"UnknownComparison", "text((x < 1) ? (\"a\") : (\"b\"))",
     "expected '=' or '!' in condition (pos:8 '<')"},
    {"HalfAComparison", "text((x =< 1) ? (\"a\") : (\"b\"))",
     "expected '=' in condition (pos:9 '<')"},
    {"NameForANumber", "text((x == a) ? (\"a\") : (\"b\"))",
     "failed to parse int value (pos:11 'a'); failed to parse int value"},
    {"NumberThatRunsIntoAName", "text((x == 1a) ? (\"a\") : (\"b\"))",
     "failed to parse int value (pos:12 'a'); failed to parse int value"},
    {"NumberBeyond32Bits", "text((x == 2147483648) ? (\"a\") : (\"b\"))",
     "failed to parse int value (overflow?) (pos:21 ')'); failed to parse int value"},
    {"EndInANumber", "text((x == 1",
     "unexpected EOS while parsing numeric value (pos:12); failed to parse int value"},
    {"TwoNumbers", "text((x == 1 2) ? (\"a\") : (\"b\"))",
     "uexpected char after condition (pos:13 '2')"},
    {"NoQuestionMark", "text((x == 1) (\"a\") : (\"b\"))", "expected '?' after ')' (pos:14 '(')"},
    {"EndBehindTheQuestionMark", "text((x == 1) ?",
     "EOS in parseFormat() (pos:15); failed to parse then-branch of condition"},
    {"NameForABranch", "text((x == 1) ? x : (\"b\"))",
     "not a concat format (pos:16 'x'); failed to parse then-branch of condition"},
    {"NoColon", "text((x == 1) ? (\"a\") (\"b\"))", "expected ':' after ')' (pos:22 '(')"},
    {"NameForTheOtherBranch", "text((x == 1) ? (\"a\") : x)",
     "not a concat format (pos:24 'x'); failed to parse else-branch of condition"},
    {"OpenCondition", "text((x == 1) ? (\"a\") : (\"b\") x)",
     "missing closing parenthesis of condition (pos:30 'x')"},
    // Members in another unit.
    {"NoFactor", R"(text("%f", v*))", "failed to parse floating point number (pos:13 ')')"},
    {"TwoPoints", R"(text("%f", v*1.2.3))",
     "unexpected '.' (pos:16 '.'); failed to parse floating point number"},
    {"PointInTheExponent", R"(text("%f", v*1.2e3.4))",
     "unexpected '.' (pos:18 '.'); failed to parse floating point number"},
    {"NoDigitBeforeThePoint", R"(text("%f", v*.5))",
     "failed to parse floating point number (pos:13 '.')"},
    {"NoDigitBehindThePoint", R"(text("%f", v*1.))",
     "failed to parse floating point number (pos:15 ')')"},
    {"NoExponent", R"(text("%f", v*1e+))", "failed to parse floating point number (pos:16 ')')"},
    {"FactorBeyondADouble", R"(text("%f", v*1e999))",
     "failed to parse floating point number (pos:18 ')')"},
    {"NoOffset", R"(text("%f", v*1+x))", "failed to parse floating point number (pos:15 'x')"},
    {"NoMode", R"(text("%f", v*1(x:2)))",
     "failed to parse int value (pos:15 'x'); could not parse mode"},
    {"NoColonBehindTheMode", R"(text("%f", v*1(1;2)))", "expected ':' after mode (pos:16 ';')"},
    {"NoIndex", R"(text("%f", v*1(1:x)))",
     "failed to parse int value (pos:17 'x'); could not parse index"},
    {"OpenMode", R"(text("%f", v*1(1:2;)))", "expected closing parenthesis (pos:18 ';')"},
};

INSTANTIATE_TEST_SUITE_P(Formats, RefusedFormat, testing::ValuesIn(kErrors),
                         [](const auto& info) { return info.param.name; });

TEST(FormatParser, QuotesTheRestWhereThereIsOne) {
  FormatParser parser;
  parser.setQuoteRest(true);
  EXPECT_FALSE(parser.parse("text(x) y"));
  EXPECT_EQ(parser.getError(), "could not parse concatenation part (pos:5 'x') : x) y");
  EXPECT_FALSE(parser.parse("text("));
  EXPECT_EQ(parser.getError(), "EOS while parsing concatenation (pos:5)");
}

TEST(FormatParser, ForgetsWhatItParsedBefore) {
  FormatParser parser;
  ASSERT_TRUE(parser.parse("text(\"a\")"));
  EXPECT_EQ(parser.getError(), "");
  EXPECT_FALSE(parser.parse("text("));
  EXPECT_EQ(parser.takeFormat(), nullptr);
  ASSERT_TRUE(parser.parse("text(\"b\")"));
  EXPECT_EQ(parser.getError(), "");
  const std::unique_ptr<Format> format = parser.takeFormat();
  EXPECT_EQ(format->getText(), "text(\"b\")");
  EXPECT_EQ(parser.takeFormat(), nullptr);
}

// `depth` conditions inside each other.
std::string nested(unsigned depth) {
  std::string text = "text";
  for (unsigned i = 0; i < depth; ++i) text += "((x == 1) ? (\"b\") : ";
  return text + "(\"a\")" + std::string(depth, ')');
}

TEST(FormatParser, RefusesConditionsNestedTooDeep) {
  EXPECT_EQ(errorOf(nested(FormatParser::kMaxNesting)), "(none)");
  EXPECT_EQ(errorOf(nested(FormatParser::kMaxNesting + 1)).find("conditions nested too deep"), 0u);
  EXPECT_NE(errorOf("text" + std::string(1'000'000, '(')), "(none)");
  EXPECT_EQ(errorOf(nested(100'000)).find("conditions nested too deep"), 0u);
}

TEST(FormatParser, WarnsAboutConversionsAndMembersThatDoNotMatch) {
  const std::string input = R"(text(("%d %d", a), ("%5.1f", b)))";
  LogCapture log(Logger::Warning);
  EXPECT_EQ(errorOf(input), "(none)");
  EXPECT_EQ(log.texts(Logger::Warning),
            (std::vector<std::string>{
                "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 2: 1 args provided "
                "- fmtSpec: '%d %d' - input: " +
                    input + "\n",
                "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 0: 1 args provided "
                "- fmtSpec: '%5.1f' - input: " +
                    input + "\n"}));
}

TEST(FormatParser, QuotesALongInputOnceInItsWarnings) {
  std::string input = "text((\"%d\", a, b)";
  for (unsigned i = 0; i < 200'000; ++i) input += ",(\"%d\", a, b)";
  input += ")";
  LogCapture log(Logger::Warning);
  EXPECT_EQ(errorOf(input), "(none)");
  ASSERT_EQ(log.texts().size(), 200'001u);
  EXPECT_GT(log.texts()[0].size(), input.size());
  EXPECT_EQ(log.texts()[200'000],
            "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 1: 2 args provided "
            "- fmtSpec: '%d' - input: \n");
}

TEST(FormatParser, KnowsWhetherModeAndIndexWereGiven) {
  FormatParser parser;
  ASSERT_TRUE(parser.parse(R"(text("%f %f", a*2, b*2+0(0:7)))"));
  const std::unique_ptr<Format> format = parser.takeFormat();
  const std::vector<const Field*> fields = format->getFields();
  ASSERT_EQ(fields.size(), 2u);
  EXPECT_FALSE(fields[0]->getNumericSpec()->mode.has_value());
  EXPECT_FALSE(fields[0]->getNumericSpec()->index.has_value());
  EXPECT_EQ(fields[1]->getNumericSpec()->mode, 0);
  EXPECT_EQ(fields[1]->getNumericSpec()->index, 7);
}

TEST(FormatParser, TakesEveryFormatOfTheStandard) {
  std::ifstream file(KORVAT_TEST_DATA "/formats.txt");
  std::string text;
  unsigned count = 0;
  const LogCapture log(Logger::Silent);
  for (; std::getline(file, text); ++count) EXPECT_EQ(errorOf(text), "(none)") << text;
  EXPECT_EQ(count, 71u);
}

TEST(FormatParser, SurvivesEveryCutOfEveryFormat) {
  std::ifstream file(KORVAT_TEST_DATA "/formats.txt");
  const LogCapture log(Logger::Silent);
  for (std::string text; std::getline(file, text);) {
    // The last parenthesis closes the format: without it, each text is refused.
    for (std::size_t size = 0; size < text.size(); ++size) {
      EXPECT_NE(errorOf(text.substr(0, size)), "(none)") << text.substr(0, size);
    }
  }
}

}  // namespace

}  // namespace zavri::korvat::format
