#include "korvat/builder/EnumBuilder.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "tests/LogCapture.h"
#include "tests/builder/BuilderDriver.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;
using Items = std::map<std::int8_t, std::string>;
using Texts = std::vector<std::string>;

// An enumeration "e" whose list holds `members`.
std::string enumWith(const std::string& members) {
  return "<enumt id='e' idx='1'><members>" + members + "</members></enumt>";
}

class EnumBuilderTest : public testing::Test {
 protected:
  // Builds from `xml` and returns the items by value of the one type that comes out.
  Items build(const std::string& xml) {
    EXPECT_TRUE(_driver.feed(xml));
    const auto* type = _driver.item<EnumType>();
    EXPECT_NE(type, nullptr);
    return type == nullptr ? Items{} : type->getItemsByValue();
  }

  EnumBuilder _builder;
  BuilderDriver _driver{_builder};
};

TEST_F(EnumBuilderTest, BuildsATypeWithItsItems) {
  const Items items = build(
      "<enumt id='occup_t' idx='12'><members>"
      "<e-member id='OC_NUL'><value>-1</value></e-member>"
      "<e-member id='OC_OCCUPIED'><value>0</value></e-member>"
      "<e-member id='OC_BYPASS'><value>2</value></e-member>"
      "</members></enumt>");
  EXPECT_EQ(items, (Items{{-1, "OC_NUL"}, {0, "OC_OCCUPIED"}, {2, "OC_BYPASS"}}));
  const auto* type = _driver.item<EnumType>();
  EXPECT_EQ(type->BaseType::getName(), "occup_t");
  EXPECT_EQ(type->getTypeId().getType(), ResourceType::Enum);
  EXPECT_EQ(type->getIndex(), 12);
}

TEST_F(EnumBuilderTest, PassesTheItemThenReportsDoneThenStartsAnew) {
  build(enumWith(""));
  EXPECT_EQ(_driver.calls, (Texts{"addItem", "onItemBuildDone"}));
  EXPECT_EQ(_builder.getState(), EnumBuilder::PS_Begin);

  ASSERT_TRUE(_driver.feed("<enumt id='second' idx='2'/>"));
  ASSERT_EQ(_driver.items.size(), 2u);
  EXPECT_EQ(_driver.items[1]->getName(), "second");
}

struct ValueCase {
  std::string name;
  std::string text;
  Items items;
  Texts warnings;
};

class EnumBuilderValue : public testing::TestWithParam<ValueCase> {};

TEST_P(EnumBuilderValue, IsKeptWhenItFitsASignedByte) {
  EnumBuilder builder;
  BuilderDriver driver(builder);
  LogCapture log(Logger::Warning);
  ASSERT_TRUE(driver.feed(
      enumWith("<e-member id='E_A'><value>" + GetParam().text + "</value></e-member>")));
  ASSERT_NE(driver.item<EnumType>(), nullptr);
  EXPECT_EQ(driver.item<EnumType>()->getItemsByValue(), GetParam().items);
  EXPECT_EQ(log.texts(), GetParam().warnings);
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
}

const std::vector<ValueCase> kValueCases = {
    {"Highest", "127", {{127, "E_A"}}, {}},
    {"Lowest", "-128", {{-128, "E_A"}}, {}},
    {"JustAbove", "128", {}, {"[EnumBuilder] E_A -> 128 (overflow)\n"}},
    {"JustBelow", "-129", {}, {"[EnumBuilder] E_A -> -129 (overflow)\n"}},
    {"WouldWrapToZero", "256", {}, {"[EnumBuilder] E_A -> 256 (overflow)\n"}},
    {"Huge", "99999999999", {}, {"[EnumBuilder] E_A -> 99999999999 (overflow)\n"}},
    {"NoNumberIsZero", "many", {{0, "E_A"}}, {}},
    {"LeadingBlanksAndTrailingText", " 5 (five)", {{5, "E_A"}}, {}},
};
INSTANTIATE_TEST_SUITE_P(EnumBuilder, EnumBuilderValue, testing::ValuesIn(kValueCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(EnumBuilderTest, ForgetsTheNameOfADroppedValueAndLoadsTheOthers) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(enumWith("<e-member id='E_A'><value>200</value><value>1</value></e-member>"
                           "<e-member id='E_B'><value>2</value></e-member>")),
            (Items{{1, ""}, {2, "E_B"}}));
  EXPECT_EQ(log.texts(), Texts{"[EnumBuilder] E_A -> 200 (overflow)\n"});
}

TEST_F(EnumBuilderTest, AddsASecondValueOfAMemberUnderTheEmptyName) {
  EXPECT_EQ(build(enumWith("<e-member id='E_A'><value>1</value><value>2</value></e-member>")),
            (Items{{1, "E_A"}, {2, ""}}));
}

TEST_F(EnumBuilderTest, WarnsOfAMemberWithoutIdAndAddsItUnderTheEmptyName) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(enumWith("<e-member id='E_A'><value>1</value></e-member>"
                           "<e-member name='E_B'><value>2</value></e-member>")),
            (Items{{1, "E_A"}, {2, ""}}));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[EnumBuilder] missing attribute 'id' in enum member\n"});
}

TEST_F(EnumBuilderTest, KeepsTheNameOfAMemberThatHadNoValueForTheNextWithoutId) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(enumWith("<e-member id='E_A'/><e-member><value>2</value></e-member>")),
            (Items{{2, "E_A"}}));
}

TEST_F(EnumBuilderTest, WarnsOfAMemberWithoutAttributes) {
  LogCapture log(Logger::Warning);
  _builder.processAction(EnumBuilder::PA_setActEnumString, nullptr, nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[EnumBuilder] missing attributes in enum member\n"});
}

TEST_F(EnumBuilderTest, IgnoresAValueOutsideOfAMember) {
  EXPECT_EQ(build("<enumt id='e' idx='1'><value>1</value><members><value>2</value></members>"
                  "<value>3</value></enumt>"),
            Items{});
}

TEST_F(EnumBuilderTest, SkipsCommentsAndRefsHoweverDeep) {
  const Items items = build(
      "<enumt id='e' idx='1'>"
      "<refs><members><e-member id='E_X'><value>9</value></e-member></members></refs>"
      "<members><e-member id='E_A'>"
      "<comment><b><value>7</value></b><value>8</value></comment>"
      "<value>1</value></e-member></members></enumt>");
  EXPECT_EQ(items, (Items{{1, "E_A"}}));
  EXPECT_EQ(_driver.calls, (Texts{"skipElement", "skipElement", "addItem", "onItemBuildDone"}));
}

TEST_F(EnumBuilderTest, PassesOverUnknownElementsButNotOverTheirChildren) {
  EXPECT_EQ(build(enumWith("<group><e-member id='E_A'><note/><value>1</value></e-member></group>")),
            (Items{{1, "E_A"}}));
}

TEST_F(EnumBuilderTest, FlagsTheEnumerationOfCharacterEncodings) {
  build("<enumt id='char_encoding_t' idx='3'/>");
  EXPECT_TRUE(_driver.item<EnumType>()->hasFlags(BaseType::kCharEncoding));
}

TEST_F(EnumBuilderTest, ReplacesAHalfBuiltItem) {
  const AttributeMap first = {{"id", "first"}, {"idx", "1"}};
  const AttributeMap second = {{"id", "second"}, {"idx", "2"}};
  _builder.processAction(EnumBuilder::PA_setIdAndIndex, &first, nullptr);
  _builder.processAction(EnumBuilder::PA_setIdAndIndex, &second, nullptr);
  _builder.processAction(EnumBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(_driver.items[0]->getName(), "second");
}

TEST_F(EnumBuilderTest, ResetDropsTheHalfBuiltItemAndTheName) {
  EXPECT_FALSE(_driver.feed("<enumt id='e' idx='1'><members><e-member id='E_A'>"));
  EXPECT_EQ(_builder.getState(), EnumBuilder::PS_InMember);
  _builder.reset();
  EXPECT_EQ(_builder.getState(), EnumBuilder::PS_Begin);

  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(enumWith("<e-member><value>1</value></e-member>")), (Items{{1, ""}}));
}

TEST_F(EnumBuilderTest, KeepsTheMemberNameWhileThereIsNoItem) {
  const AttributeMap member = {{"id", "E_A"}};
  const AttributeMap item = {{"id", "e"}, {"idx", "1"}};
  const std::string one = "1";
  _builder.processAction(EnumBuilder::PA_setActEnumString, &member, nullptr);
  _builder.processAction(EnumBuilder::PA_addEnumMember, nullptr, &one);
  _builder.processAction(EnumBuilder::PA_setIdAndIndex, &item, nullptr);
  _builder.processAction(EnumBuilder::PA_addEnumMember, nullptr, &one);
  _builder.processAction(EnumBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_NE(_driver.item<EnumType>(), nullptr);
  EXPECT_EQ(_driver.item<EnumType>()->getItemsByValue(), (Items{{1, "E_A"}}));
}

TEST_F(EnumBuilderTest, ForgetsTheMemberNameWithoutAValue) {
  const AttributeMap member = {{"id", "E_A"}};
  const AttributeMap item = {{"id", "e"}, {"idx", "1"}};
  const std::string one = "1";
  _builder.processAction(EnumBuilder::PA_setIdAndIndex, &item, nullptr);
  _builder.processAction(EnumBuilder::PA_setActEnumString, &member, nullptr);
  _builder.processAction(EnumBuilder::PA_addEnumMember, nullptr, nullptr);
  _builder.processAction(EnumBuilder::PA_addEnumMember, nullptr, &one);
  _builder.processAction(EnumBuilder::PA_callDone, nullptr, nullptr);
  EXPECT_EQ(_driver.item<EnumType>()->getItemsByValue(), (Items{{1, ""}}));
}

TEST_F(EnumBuilderTest, TracesEachStep) {
  LogCapture log;
  build(enumWith("<e-member id='E_A'><value>1</value></e-member>"));
  const Texts expected = {
      "[EnumBuilder::onElement] <enumt>\n",
      "[TStateMachine::processEvent] PE_enum value=(null)\n",
      "[VarBuilder::processEvent] PS_Begin [PE_enum]-> PS_Item\n",
      "[EnumBuilder::processAction] PA_setIdAndIndex\n",
      "[EnumBuilder::onElement] <members>\n",
      "[TStateMachine::processEvent] PE_members value=(null)\n",
      "[VarBuilder::processEvent] PS_Item [PE_members]-> PS_Members\n",
      "[EnumBuilder::onElement] <e-member>\n",
      "[TStateMachine::processEvent] PE_member value=(null)\n",
      "[VarBuilder::processEvent] PS_Members [PE_member]-> PS_InMember\n",
      "[EnumBuilder::processAction] PA_setActEnumString\n",
      "[EnumBuilder::onElement] <value>\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[EnumBuilder::onValue] element=<value> value='1'\n",
      "[TStateMachine::processEvent] PE_value_value value=1\n",
      "[VarBuilder::processEvent] PS_InMember [PE_value_value]-> PS_InMember\n",
      "[EnumBuilder::processAction] PA_addEnumMember\n",
      "[EnumBuilder::addEnumMember] E_A -> 1\n",
      "[EnumBuilder::onElementEnd] </value>\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[EnumBuilder::onElementEnd] </e-member>\n",
      "[TStateMachine::processEvent] PE_member_end value=(null)\n",
      "[VarBuilder::processEvent] PS_InMember [PE_member_end]-> PS_Members\n",
      "[EnumBuilder::onElementEnd] </members>\n",
      "[TStateMachine::processEvent] PE_members_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Members [PE_members_end]-> PS_Item\n",
      "[EnumBuilder::onElementEnd] </enumt>\n",
      "[TStateMachine::processEvent] PE_enum_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Item [PE_enum_end]-> PS_End\n",
      "[EnumBuilder::processAction] PA_callDone\n",
      "[EnumBuilder::callDone]\n",
  };
  EXPECT_EQ(log.texts(Logger::Trace), expected);
  EXPECT_EQ(log.lines().size(), expected.size());
}

TEST_F(EnumBuilderTest, TracesAMissingValueAsNull) {
  LogCapture log;
  _builder.processAction(EnumBuilder::PA_addEnumMember, nullptr, nullptr);
  EXPECT_TRUE(log.contains(Logger::Trace, "[EnumBuilder::addEnumMember]  -> (null)\n"));
}

TEST(EnumBuilder, WorksWithoutAMaster) {
  EnumBuilder builder;
  { const BuilderDriver leaving(builder); }
  const AttributeMap attributes = {{"id", "e"}, {"idx", "1"}};
  builder.onElement("enumt", attributes);
  builder.onElement("refs", {});
  builder.onElementEnd("enumt");
  EXPECT_EQ(builder.getState(), EnumBuilder::PS_Begin);
}

}  // namespace
}  // namespace zavri::korvat::builder
