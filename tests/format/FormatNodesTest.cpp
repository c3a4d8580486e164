#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "korvat/format/Concatenation.h"
#include "korvat/format/Condition.h"
#include "korvat/format/Date.h"
#include "korvat/format/Format.h"
#include "korvat/format/FormattedString.h"
#include "korvat/format/Time.h"
#include "tests/LogCapture.h"

namespace zavri::korvat::format {

namespace {

using base::Logger;
using test::LogCapture;

std::string dumpOf(const FormatBase& node) {
  std::string text;
  node.dump(text, 0);
  return text;
}

TEST(FormatBase, NamesEveryKind) {
  const std::vector<std::string> names = {
      "FT_Base", "FT_Format", "FT_Concatenation", "FT_FormattedString", "FT_Condition",
      "FT_Date", "FT_Time",   "FT_Field",         "(unknown)"};
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(FormatBase::getKindName(static_cast<FormatBase::Kind>(i)), names[i]);
  }
  EXPECT_STREQ(FormatBase::getKindName(static_cast<FormatBase::Kind>(-1)), "(unknown)");
}

TEST(Format, WithoutABodyDumpsNull) {
  EXPECT_EQ(dumpOf(Format()), "[FT_Format]\n   (null)\n");
}

TEST(Format, CopyHasNameTextAndNodes) {
  Format format("text(\"a\")", std::make_unique<FormattedString>("a"));
  format.setName("US");
  const auto copy = std::make_unique<Format>(format);
  EXPECT_EQ(copy->getName(), "US");
  EXPECT_EQ(copy->getText(), "text(\"a\")");
  EXPECT_EQ(dumpOf(*copy), dumpOf(format));
}

TEST(Format, CopyOutlivesItsSource) {
  auto format = std::make_unique<Format>("text(\"a\")", std::make_unique<FormattedString>("a"));
  const Format copy(*format);
  format.reset();
  EXPECT_EQ(dumpOf(copy), "[FT_Format]\n   [FT_FormattedString]\n      \"a\"\n      (empty)\n");
}

TEST(Concatenation, DumpsAMissingPartAsNull) {
  Concatenation concatenation;
  concatenation.add(nullptr);
  concatenation.add(std::make_unique<Date>());
  EXPECT_EQ(dumpOf(concatenation),
            "[FT_Concatenation]\n"
            "   [0] (null)\n"
            "   [1]\n"
            "      [FT_Date]\n"
            "         expressions:(empty)\n");
}

TEST(FormattedString, DumpsAMissingFieldAsNull) {
  FormattedString string("%d");
  string.add(nullptr);
  EXPECT_EQ(dumpOf(string), "[FT_FormattedString]\n   \"%d\"\n   [0] (null)\n");
  EXPECT_TRUE(string.analyzeFormatSpecs(""));
}

TEST(Condition, WithoutATestIsANegatedComparisonWithZero) {
  EXPECT_EQ(dumpOf(Condition()),
            "[FT_Condition]\n"
            "   if:\n"
            "       != 0\n"
            "   then: (null)\n"
            "   else: (null)\n");
}

TEST(Condition, DumpsAnUnknownOperator) {
  Condition condition;
  condition.setTest("x", static_cast<Condition::Operator>(2), -7);
  EXPECT_EQ(dumpOf(condition),
            "[FT_Condition]\n"
            "   if:\n"
            "      x (unknown) -7\n"
            "   then: (null)\n"
            "   else: (null)\n");
}

TEST(Date, HasThreeParts) {
  Date date;
  EXPECT_STREQ(date.getPartName(0), "year");
  EXPECT_STREQ(date.getPartName(1), "month");
  EXPECT_STREQ(date.getPartName(2), "day");
  EXPECT_EQ(date.getPartName(3), nullptr);
  EXPECT_TRUE(date.add("a") && date.add("b") && date.add("c"));
  EXPECT_FALSE(date.add("d"));
  EXPECT_EQ(date.getArguments(), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(Time, HasFourParts) {
  Time time;
  EXPECT_STREQ(time.getPartName(0), "hour");
  EXPECT_STREQ(time.getPartName(1), "minute");
  EXPECT_STREQ(time.getPartName(2), "second");
  EXPECT_STREQ(time.getPartName(3), "millisecond");
  EXPECT_EQ(time.getPartName(4), nullptr);
}

TEST(Field, HasNoConversionAtFirst) {
  Field field("v");
  EXPECT_EQ(dumpOf(field), "[FT_Field]\n   field spec: v\n");
  field.setConversion('x');
  EXPECT_EQ(dumpOf(field), "[FT_Field]\n   field spec: v '%x'\n");
}

struct ScanCase {
  std::string name;
  std::string formatText;
  std::string letters;
};

class ConversionScan : public testing::TestWithParam<ScanCase> {};

TEST_P(ConversionScan, TakesALetterRightBehindAPercentSign) {
  const std::vector<char> letters = FormattedString::getFormatSpecArray(GetParam().formatText);
  EXPECT_EQ(std::string(letters.begin(), letters.end()), GetParam().letters);
}

const std::vector<ScanCase> kScans = {
    {"Nothing", "", ""},
    {"NoConversion", "abc", ""},
    {"Two", "%d and %s", "ds"},
    {"CapitalLetter", "%X", "X"},
    {"Width", "%5d", ""},
    {"Precision", "%5.1f", ""},
    {"PercentSign", "%%", ""},
    {"PercentSignThenLetter", "%%d", ""},
    {"PercentSignAtTheEnd", "%d%", "d"},
    {"EscapedCharacter", "100\\%d", ""},
    {"EscapedBackslash", "\\\\%d", "d"},
    {"EscapeAtTheEnd", "%d\\", "d"},
    {"BehindTheFirstNul", std::string("%d\0%s", 5), "d"},
};

INSTANTIATE_TEST_SUITE_P(Texts, ConversionScan, testing::ValuesIn(kScans),
                         [](const auto& info) { return info.param.name; });

struct MatchCase {
  std::string name;
  std::string formatText;
  unsigned fieldCount;
  std::string letters;  // '-' for a field without one
  std::string warning;  // empty for none
};

class ArgumentMatching : public testing::TestWithParam<MatchCase> {};

TEST_P(ArgumentMatching, HandsConversionsToFieldsInOrder) {
  const MatchCase& c = GetParam();
  FormattedString string(c.formatText);
  for (unsigned i = 0; i < c.fieldCount; ++i) string.add(std::make_unique<Field>("f"));

  LogCapture log(Logger::Warning);
  EXPECT_EQ(string.analyzeFormatSpecs("INPUT"), c.warning.empty());
  std::string letters;
  for (const auto& field : string.getFields()) {
    letters += field->getConversion() == 0 ? '-' : field->getConversion();
  }
  EXPECT_EQ(letters, c.letters);
  const auto expected =
      c.warning.empty() ? std::vector<std::string>() : std::vector<std::string>{c.warning};
  EXPECT_EQ(log.texts(Logger::Warning), expected);
}

const std::vector<MatchCase> kMatches = {
    {"AsManyFields", "%d and %s", 2, "ds", ""},
    {"TheValueItself", "%f", 0, "", ""},
    {"NeitherOne", "100\\%d", 0, "", ""},
    {"WidthIsNoConversion", "%5.1f", 1, "-",
     "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 0: 1 args provided - "
     "fmtSpec: '%5.1f' - input: INPUT\n"},
    {"TooFewFields", "%d %s %f", 2, "ds",
     "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 3: 2 args provided - "
     "fmtSpec: '%d %s %f' - input: INPUT\n"},
    {"TooManyFields", "%d", 2, "d-",
     "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 1: 2 args provided - "
     "fmtSpec: '%d' - input: INPUT\n"},
    {"TwoConversionsWithoutAField", "%d %d", 0, "",
     "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size 2: 0 args provided - "
     "fmtSpec: '%d %d' - input: INPUT\n"},
};

INSTANTIATE_TEST_SUITE_P(Texts, ArgumentMatching, testing::ValuesIn(kMatches),
                         [](const auto& info) { return info.param.name; });

}  // namespace

}  // namespace zavri::korvat::format
