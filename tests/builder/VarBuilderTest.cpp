#include "korvat/builder/VarBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"
#include "tests/builder/BuilderDriver.h"
#include "tests/builder/TypeDump.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;
using Texts = std::vector<std::string>;

const std::string kStd = "0000000000000000-0";

// Content of one "nvt" of the identifier "_t" and the index 7.
std::string nvt(const std::string& content) {
  return "<nvt id='_t' idx='7'>" + content + "</nvt>";
}
std::string cpt(const std::string& content) {
  return "<cpt id='t' idx='7'>" + content + "</cpt>";
}
std::string structOf(const std::string& members) {
  return nvt("<aggregate cat='struct'><members>" + members + "</members></aggregate>");
}

// Lets a test run actions in a state of its choice.
class OpenVarBuilder : public VarBuilder {
 public:
  using VarBuilder::setState;
};

class VarBuilderTest : public testing::Test {
 protected:
  VarBuilderTest() {
    _builder.setFileSetName("8000010128000000-4");
    _driver.strings = {{"u_1", "percent"}, {"u_2", "degrees Celsius"}};
  }

  // Dump of the one type that is built from `xml`.
  std::string build(const std::string& xml) {
    EXPECT_TRUE(_driver.feed(xml));
    return _driver.items.size() == 1 ? dumpType(*_driver.items.front()) : "(not one item)\n";
  }

  void createNvt() {
    const AttributeMap attributes = {{"id", "_t"}, {"idx", "7"}};
    _builder.processAction(VarBuilder::PA_createNVT, &attributes, nullptr);
  }

  OpenVarBuilder _builder;
  BuilderDriver _driver{_builder};
};

// --- Whole types ---

struct TypeCase {
  std::string name;
  std::string xml;
  std::string dump;
};

class VarBuilderType : public testing::TestWithParam<TypeCase> {};

TEST_P(VarBuilderType, IsBuiltWithoutAWarning) {
  VarBuilder builder;
  BuilderDriver driver(builder);
  driver.strings = {{"u_1", "percent"}, {"u_2", "degrees Celsius"}};
  LogCapture log(Logger::Warning);
  ASSERT_TRUE(driver.feed(GetParam().xml));
  ASSERT_EQ(driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*driver.items.front()), GetParam().dump);
  EXPECT_EQ(log.texts(), Texts{});
  EXPECT_EQ(driver.calls.back(), "onItemBuildDone");
  EXPECT_EQ(builder.getState(), VarBuilder::PS_Begin);
}

const std::vector<TypeCase> kTypeCases = {
    {"EmptyNv", "<nvt id='_a' idx='1'/>", "nv _a 1 size 0\n"},
    {"EmptyCp", "<cpt id='a' idx='2'/>", "cp a 2 size 0 default ''\n"},
    {"ScalarRoot",
     "<nvt id='_temp' idx='39'><p-name>SNVT_temp</p-name><size>2</size>"
     "<scalar><nc-type>unsigned long</nc-type><min>0</min><max>65534</max><invalid>65535</invalid>"
     "<scaling><a>1</a><b>-1</b><c>-2740</c><s>2</s></scaling></scalar>"
     "<unit id='u_2'/></nvt>",
     "nv _temp 39 size 2\n"
     "Scalar 'unsigned long' min 0 max 65534 invalid 65535 scaling 1,-1,-2740"
     " [unit degrees Celsius]\n"},
    {"UnitBeforeTheRoot", nvt("<unit id='u_1'/><scalar><nc-type>signed char</nc-type></scalar>"),
     "nv _t 7 size 0\nScalar 'signed char' [unit percent]\n"},
    {"FieldsAfterScaling",
     nvt("<scalar><scaling><a>2</a></scaling><nc-type>s32_type</nc-type><max>9</max></scalar>"),
     "nv _t 7 size 0\nScalar 's32_type' max 9 scaling 2,0,0\n"},
    {"FloatRoot",
     nvt("<float><nc-type>float</nc-type><min>-1.5</min><max>2</max><invalid>3</invalid>"
         "<scaling><a>3</a><b>1</b><c>4</c></scaling><array-min-size>1</array-min-size>"
         "<array-size>2</array-size></float>"),
     "nv _t 7 size 0\n"
     "Float 'float' min -1.500000 max 2.000000 invalid 3.000000 scaling 3,1,4 x 1..2\n"},
    {"BitfieldRoot",
     nvt("<bitfield><signed>yes</signed><width>3</width><offset>5</offset><min>-4</min>"
         "<max>3</max><invalid>-1</invalid><scaling><a>5</a></scaling>"
         "<array-min-size>2</array-min-size><array-size>4</array-size></bitfield>"),
     "nv _t 7 size 0\n"
     "Bitfield signed offset 5 width 3 min -4 max 3 invalid -1 scaling 5,0,0 x 2..4\n"},
    {"EnumRoot",
     nvt("<enum><ref href='http://types.lonmark.org/0000000000000000-0/enums/occup_t'>occup_t"
         "</ref><array-size>3</array-size></enum>"),
     "nv _t 7 size 0\nEnum enum " + kStd + " occup_t x 3\n"},
    {"RefRoot", nvt("<ref>SNVT_temp_p</ref>"), "nv _t 7 size 0\nRef nv " + kStd + " _temp_p\n"},
    {"CharacterArray",
     nvt("<scalar><nc-type>unsigned char</nc-type><array-size>31</array-size>"
         "</scalar>"),
     "nv _t 7 size 0\nScalar 'unsigned char' x 31\n"},
    {"Structure",
     structOf("<member><scalar><nc-type>unsigned short</nc-type></scalar><p-name>value</p-name>"
              "<unit id='u_1'/></member>"
              "<member><enum><ref>boolean_t</ref></enum><p-name>state</p-name></member>"),
     "nv _t 7 size 0\n"
     "Aggregate struct\n"
     "  Scalar value 'unsigned short' [unit percent]\n"
     "  Enum state enum " +
         kStd + " boolean_t\n"},
    {"EveryKindOfMember",
     structOf("<member><ref>SNVT_x</ref><p-name>a</p-name></member>"
              "<member><scalar/><p-name>b</p-name></member>"
              "<member><float/><p-name>c</p-name></member>"
              "<member><bitfield/><p-name>d</p-name></member>"
              "<member><enum/><p-name>e</p-name></member>"
              "<member><aggregate cat='union'/><p-name>f</p-name></member>"),
     "nv _t 7 size 0\n"
     "Aggregate struct\n"
     "  Ref a nv " +
         kStd +
         " _x\n"
         "  Scalar b ''\n"
         "  Float c ''\n"
         "  Bitfield d unsigned offset 0 width 0\n"
         "  Enum e enum " +
         kStd +
         " \n"
         "  Aggregate f union\n"},
    {"NestedAggregates",
     structOf("<member><aggregate cat='struct'><members>"
              "<member><scalar><nc-type>signed long</nc-type></scalar><p-name>deep</p-name>"
              "</member></members><array-size>2</array-size></aggregate><p-name>outer</p-name>"
              "</member>"
              "<member><aggregate cat='union'><members>"
              "<member><scalar/><p-name>one</p-name></member>"
              "<member><float/><p-name>two</p-name></member>"
              "</members></aggregate><p-name>choice</p-name></member>"
              "<member><scalar/><p-name>last</p-name></member>"),
     "nv _t 7 size 0\n"
     "Aggregate struct\n"
     "  Aggregate outer struct x 2\n"
     "    Scalar deep 'signed long'\n"
     "  Aggregate choice union\n"
     "    Scalar one ''\n"
     "    Float two ''\n"
     "  Scalar last ''\n"},
    {"ArrayAroundAMember",
     structOf("<member><ref>SNVT_x</ref><array-min-size>1</array-min-size>"
              "<array-size>4</array-size><p-name>a</p-name></member>"),
     "nv _t 7 size 0\nAggregate struct\n  Ref a nv " + kStd + " _x x 1..4\n"},
    {"ArrayOfTheRootStructure",
     nvt("<aggregate cat='struct'><array-min-size>0</array-min-size><array-size>5</array-size>"
         "<members/></aggregate>"),
     "nv _t 7 size 0\nAggregate struct x 0..5\n"},
    {"Property",
     "<cpt id='maxRcvT' idx='21'><p-name>SCPTmaxRcvT</p-name><default>0 0:0</default>"
     "<obsolete>yes</obsolete><size>7</size><ref>SNVT_elapsed_tm</ref></cpt>",
     "cp maxRcvT 21 obsolete size 7 default '0 0:0'\nRef nv " + kStd + " _elapsed_tm\n"},
    {"NotObsolete", nvt("<obsolete>no</obsolete>"), "nv _t 7 size 0\n"},
    {"ObsoleteInAnotherCase", nvt("<obsolete>YES</obsolete>"), "nv _t 7 size 0\n"},
    {"Formats",
     nvt("<formats><format id='SNVT_t'> text(\"%d\")\n </format>"
         "<format id='SNVT_t#US'>text(\"%f\")</format>"
         "<format id='SNVT_t#US'>text(\"later\")</format>"
         "<format id='UNVT_t_p#x'>text()</format>"
         "<format id='_tSI'>si</format></formats>"),
     "nv _t 7 size 0\n"
     "format '' = 'text(\"%d\")'\n"
     "format 'SI' = 'si'\n"
     "format 'US' = 'text(\"later\")'\n"
     "format '_p#x' = 'text()'\n"},
    {"RefsAreSkipped", nvt("<refs><scalar/><scalar/><size>9</size></refs><scalar/><refs/>"),
     "nv _t 7 size 0\nScalar ''\n"},
    {"UnknownElementsPass",
     nvt("<remark><scalar><note>7</note><nc-type>unsigned char</nc-type></scalar></remark>"
         "<size><deep/></size><more>1</more>"),
     "nv _t 7 size 0\nScalar 'unsigned char'\n"},
    {"AnyOrder", nvt("<formats/><scalar/><size>1</size><p-name>_t</p-name><unit id='u_1'/>"),
     "nv _t 7 size 1\nScalar '' [unit percent]\n"},
};
INSTANTIATE_TEST_SUITE_P(VarBuilder, VarBuilderType, testing::ValuesIn(kTypeCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(VarBuilderTest, BuildsOneTypeAfterTheOther) {
  ASSERT_TRUE(_driver.feed(nvt("<unit id='u_1'/><formats><format id='_t#a'>x</format></formats>")));
  LogCapture log(Logger::Warning);
  ASSERT_TRUE(
      _driver.feed("<nvt id='_u' idx='8'><scalar/><formats><format>y</format></formats>"
                   "</nvt>"));
  ASSERT_EQ(_driver.items.size(), 2u);
  EXPECT_EQ(dumpType(*_driver.items[1]), "nv _u 8 size 0\nScalar ''\n");  // no unit, no format
  EXPECT_EQ(log.texts(), Texts{"[VarBuilder] no 'id' given for format\n"});
  EXPECT_EQ(_driver.calls, (Texts{"addItem", "onItemBuildDone", "addItem", "onItemBuildDone"}));
}

TEST_F(VarBuilderTest, FindsTheMembersOfAnAggregateByName) {
  build(
      structOf("<member><scalar/><p-name>a</p-name></member>"
               "<member><aggregate cat='union'><members><member><float/><p-name>b</p-name>"
               "</member></members></aggregate><p-name>c</p-name></member>"));
  const auto& root = static_cast<const MemAggregate&>(*_driver.item<NvType>()->getMember());
  ASSERT_EQ(root.getChildren().size(), 2u);
  EXPECT_EQ(root.findChild("a"), root.getChildren()[0].get());
  ASSERT_EQ(root.findChild("c"), root.getChildren()[1].get());
  const auto& choice = static_cast<const MemAggregate&>(*root.findChild("c"));
  EXPECT_EQ(choice.findChild("b"), choice.getChildren()[0].get());
}

TEST_F(VarBuilderTest, TakesAnyCategoryButUnionForAStructure) {
  for (const char* category : {"struct", "Union", "unions", ""}) {
    SCOPED_TRACE(category);
    _driver.items.clear();
    EXPECT_EQ(build(nvt("<aggregate cat='" + std::string(category) + "'/>")),
              "nv _t 7 size 0\nAggregate struct\n");
  }
}

// --- States ---

TEST_F(VarBuilderTest, ReturnsToTheItemWhenTheRootEnds) {
  for (const char* name : {"ref", "scalar", "float", "bitfield", "enum", "aggregate"}) {
    SCOPED_TRACE(name);
    _builder.reset();
    _builder.onElement("nvt", {{"id", "_t"}, {"idx", "7"}});
    _builder.onElement(name, {{"cat", "struct"}});
    _builder.onElementEnd(name);
    EXPECT_EQ(_builder.getState(), VarBuilder::PS_Item);
  }
}

TEST_F(VarBuilderTest, StaysInTheMemberUntilItsOwnEnd) {
  for (const char* name : {"ref", "scalar", "float", "bitfield", "enum", "aggregate"}) {
    SCOPED_TRACE(name);
    _builder.reset();
    _builder.onElement("nvt", {{"id", "_t"}, {"idx", "7"}});
    _builder.onElement("aggregate", {{"cat", "struct"}});
    _builder.onElement("members", {});
    _builder.onElement("member", {});
    _builder.onElement(name, {{"cat", "struct"}});
    _builder.onElementEnd(name);
    EXPECT_EQ(_builder.getState(), VarBuilder::PS_Member);
    _builder.onElementEnd("member");
    EXPECT_EQ(_builder.getState(), VarBuilder::PS_Members);
    _builder.onElementEnd("members");
    EXPECT_EQ(_builder.getState(), VarBuilder::PS_Aggregate);
    _builder.onElementEnd("aggregate");
    EXPECT_EQ(_builder.getState(), VarBuilder::PS_Item);
  }
}

struct KindState {
  VarBuilder::Action push;
  VarBuilder::State state;
};

TEST_F(VarBuilderTest, ReturnsFromScalingToTheStateOfTheTopMember) {
  const std::vector<KindState> cases = {
      {VarBuilder::PA_pushRef, VarBuilder::PS_Ref},
      {VarBuilder::PA_pushFloat, VarBuilder::PS_Float},
      {VarBuilder::PA_pushScalar, VarBuilder::PS_Scalar},
      {VarBuilder::PA_pushBitfield, VarBuilder::PS_Bitfield},
      {VarBuilder::PA_pushEnum, VarBuilder::PS_Enum},
      {VarBuilder::PA_pushAggregate, VarBuilder::PS_Aggregate},
  };
  const AttributeMap attributes = {{"cat", "struct"}};
  for (const KindState& c : cases) {
    SCOPED_TRACE(VarBuilder::actionName(c.push));
    createNvt();
    _builder.processAction(c.push, &attributes, nullptr);
    _builder.setState(VarBuilder::PS_Scaling);
    _builder.processEvent(VarBuilder::PE_scaling_end, nullptr, nullptr);
    EXPECT_EQ(_builder.getState(), c.state);
  }
}

TEST_F(VarBuilderTest, WarnsWhenScalingEndsWithoutAMember) {
  LogCapture log(Logger::Warning);
  _builder.setState(VarBuilder::PS_Scaling);
  _builder.processEvent(VarBuilder::PE_scaling_end, nullptr, nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[VarBuilder] invalid state\n"});
  EXPECT_EQ(_builder.getState(), VarBuilder::PS_Scaling);
}

TEST_F(VarBuilderTest, PopsNothingFromAnEmptyStack) {
  createNvt();
  _builder.processAction(VarBuilder::PA_pop, nullptr, nullptr);
  EXPECT_EQ(_builder.getState(), VarBuilder::PS_Item);
  _builder.processAction(VarBuilder::PA_checkPop, nullptr, nullptr);
  EXPECT_EQ(_builder.getState(), VarBuilder::PS_Member);
  _builder.processAction(VarBuilder::PA_callBuildLookup, nullptr, nullptr);
}

TEST_F(VarBuilderTest, BuildsALookupOnlyInAnAggregate) {
  createNvt();
  _builder.processAction(VarBuilder::PA_pushScalar, nullptr, nullptr);
  _builder.processAction(VarBuilder::PA_callBuildLookup, nullptr, nullptr);
  _builder.processAction(VarBuilder::PA_callDone, nullptr, nullptr);
  EXPECT_EQ(dumpType(*_driver.items.at(0)), "nv _t 7 size 0\nScalar ''\n");
}

TEST_F(VarBuilderTest, ResetDropsTheHalfBuiltType) {
  EXPECT_FALSE(_driver.feed("<nvt id='_x' idx='1'><aggregate cat='union'><members><member>"));
  _builder.reset();
  EXPECT_EQ(_builder.getState(), VarBuilder::PS_Begin);
  EXPECT_EQ(build(nvt("<scalar/>")), "nv _t 7 size 0\nScalar ''\n");
}

TEST_F(VarBuilderTest, ReplacesATypeThatIsStillHeld) {
  createNvt();
  _builder.processAction(VarBuilder::PA_pushScalar, nullptr, nullptr);
  const AttributeMap attributes = {{"id", "p"}, {"idx", "8"}};
  _builder.processAction(VarBuilder::PA_createCPT, &attributes, nullptr);
  _builder.processAction(VarBuilder::PA_pushFloat, nullptr, nullptr);
  _builder.processAction(VarBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), "cp p 8 size 0 default ''\nFloat ''\n");
}

// --- Warnings ---

struct WarningCase {
  std::string name;
  std::string xml;
  Texts warnings;
  std::string dump;  // of the type that is built all the same
};

class VarBuilderWarning : public testing::TestWithParam<WarningCase> {};

TEST_P(VarBuilderWarning, LeavesTheFieldUnset) {
  VarBuilder builder;
  builder.setFileSetName("8000010128000000-4");
  BuilderDriver driver(builder);
  driver.strings = {{"u_1", "percent"}};
  LogCapture log(Logger::Warning);
  ASSERT_TRUE(driver.feed(GetParam().xml));
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
  ASSERT_EQ(driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*driver.items.front()), GetParam().dump);
}

const std::vector<WarningCase> kWarningCases = {
    {"MissingId",
     "<nvt idx='7'/>",
     {"[ItemBuilder] missing attribute 'id' in item\n"},
     "nv  7 size 0\n"},
    {"MissingIndex",
     "<nvt id='_t'/>",
     {"[ItemBuilder] missing attribute 'idx' in item\n"},
     "nv _t -1 size 0\n"},
    {"DefaultInNv",
     nvt("<default>1</default>"),
     {"[VarBuilder] can only set default value in CP\n"},
     "nv _t 7 size 0\n"},
    {"OtherProgName",
     nvt("<p-name>SNVT_u</p-name>"),
     {"[VarBuilder] p-name differs from identifier: p-name=_u  id=_t\n"},
     "nv _t 7 size 0\n"},
    {"ProgNameOfAProfileIsNotStripped",
     nvt("<p-name>SFPT_t</p-name>"),
     {"[VarBuilder] p-name differs from identifier: p-name=SFPT_t  id=_t\n"},
     "nv _t 7 size 0\n"},
    {"MissingCategory",
     nvt("<aggregate/>"),
     {"[VarBuilder] missing attribute 'cat' in aggregate\n"},
     "nv _t 7 size 0\nAggregate struct\n"},
    {"UnitWithoutId",
     nvt("<scalar/><unit/>"),
     {"[VarBuilder] missing attribute 'id' in unit\n"},
     "nv _t 7 size 0\nScalar ''\n"},
    {"UnitUnknown",
     nvt("<scalar/><unit id='u_9'/>"),
     {"[VarBuilder] no string for id 'u_9' unit in _t\n"},
     "nv _t 7 size 0\nScalar ''\n"},
    {"FormatWithoutId",
     nvt("<formats><format>x</format></formats>"),
     {"[VarBuilder] no 'id' given for format\n"},
     "nv _t 7 size 0\n"},
    {"FormatWithoutIdAfterOneWithId",
     nvt("<formats><format id='_t'>x</format><format>y</format></formats>"),
     {"[VarBuilder] no 'id' given for format\n"},
     "nv _t 7 size 0\nformat '' = 'x'\n"},
    {"FormatOfAnotherType",
     nvt("<formats><format id='SNVT_u#US'> x </format></formats>"),
     {"[VarBuilder] format-id does not begin with type name: format='_u#US' type='_t' \n"},
     "nv _t 7 size 0\nformat '_u#US' = 'x'\n"},
    {"SecondElementInAMember",
     structOf("<member><scalar/><float><max>3</max></float><p-name>a</p-name></member>"),
     {"[VarBuilder] cannot add member to Scalar\n"},
     "nv _t 7 size 0\nAggregate struct\n  Scalar a '' max 3\n"},
    {"SecondReferenceInAMember",
     structOf("<member><enum/><ref href='x'>y</ref><p-name>a</p-name></member>"),
     {"[VarBuilder] cannot add member to Enum\n"},
     "nv _t 7 size 0\nAggregate struct\n  Enum a enum " + kStd + " y\n"},
    {"SecondAggregateInAMember",
     structOf("<member><bitfield/><aggregate/><p-name>a</p-name></member>"),
     {"[VarBuilder] cannot add member to Bitfield\n"},
     "nv _t 7 size 0\nAggregate struct\n  Bitfield a unsigned offset 0 width 0\n"},
    {"UnknownBaseType",
     nvt("<scalar><nc-type>word</nc-type></scalar>"),
     {"[VarBuilder][8000010128000000-4] invalid nc-type (word) for Scalar\n"},
     "nv _t 7 size 0\nScalar ''\n"},
    {"IntegerTypeOfAFloat",
     nvt("<float><nc-type>unsigned quad</nc-type></float>"),
     {"[VarBuilder][8000010128000000-4] invalid nc-type (unsigned quad) for Float\n"},
     "nv _t 7 size 0\nFloat ''\n"},
    {"NegativeArraySize",
     nvt("<scalar><array-size>-5</array-size></scalar>"),
     {"[VarBuilder] negative 'array-size' (-5) in Scalar\n"},
     "nv _t 7 size 0\nScalar ''\n"},
    {"HugeArraySize",
     nvt("<scalar><array-size>4000000000</array-size></scalar>"),
     {"[VarBuilder] 'array-size' (4000000000) in Scalar cut to 65536\n"},
     "nv _t 7 size 0\nScalar '' x 65536\n"},
    {"NoPrefixInHref",
     nvt("<enum><ref href='enums/x'>y</ref></enum>"),
     {"[VarBuilder] invalid 'href'-attribute: >>>enums/x<<<\n"},
     "nv _t 7 size 0\nEnum enum " + kStd + " y\n"},
    {"ShortHref",
     nvt("<ref href='http://types.lonmark.org/x'>SNVT_y</ref>"),
     {"[VarBuilder] invalid 'href'-attribute : >>>http://types.lonmark.org/x<<<\n"},
     "nv _t 7 size 0\nRef nv " + kStd + " _y\n"},
    {"UnknownFolderInHref",
     nvt("<ref href='8000010128000000-4/units/x'>SNVT_y</ref>"),
     {"[VarBuilder] cannot determine type from 'href'-attribute: "
      ">>>8000010128000000-4/units/x<<<\n"},
     "nv _t 7 size 0\nRef nv " + kStd + " _y\n"},
    {"EnumPointsAtVariables",
     nvt("<enum><ref href='8000010128000000-4/nvs/x'>y</ref></enum>"),
     {"[VarBuilder] failed to set ref-type to nv from 'href'-attribute: "
      ">>>8000010128000000-4/nvs/x<<<\n"},
     "nv _t 7 size 0\nEnum enum " + kStd + " y\n"},
    {"RefPointsAtEnumerations",
     nvt("<ref href='8000010128000000-4/enums/x'/>"),
     {"[VarBuilder] failed to set ref-type to enum from 'href'-attribute: "
      ">>>8000010128000000-4/enums/x<<<\n"},
     "nv _t 7 size 0\nRef nv " + kStd + " \n"},
    {"RefPointsAtProfiles",
     nvt("<ref href='8000010128000000-4/fps/SFPTx'/>"),
     {"[VarBuilder] failed to set ref-type to fp from 'href'-attribute: "
      ">>>8000010128000000-4/fps/SFPTx<<<\n"},
     "nv _t 7 size 0\nRef nv " + kStd + " \n"},
    {"UserNameAfterABadHref",
     nvt("<ref href='nowhere'>UNVT_y</ref>"),
     {"[VarBuilder] invalid 'href'-attribute : >>>nowhere<<<\n"},
     "nv _t 7 size 0\nRef nv 8000010128000000-4 _y\n"},
};
INSTANTIATE_TEST_SUITE_P(VarBuilder, VarBuilderWarning, testing::ValuesIn(kWarningCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(VarBuilderTest, WarnsOfAMemberWithoutAType) {
  const std::vector<VarBuilder::Action> pushes = {
      VarBuilder::PA_pushRef,      VarBuilder::PA_pushScalar, VarBuilder::PA_pushFloat,
      VarBuilder::PA_pushBitfield, VarBuilder::PA_pushEnum,   VarBuilder::PA_pushAggregate};
  for (const VarBuilder::Action push : pushes) {
    SCOPED_TRACE(VarBuilder::actionName(push));
    LogCapture log(Logger::Warning);
    _builder.processAction(push, nullptr, nullptr);
    EXPECT_EQ(log.texts(Logger::Warning), Texts{"[VarBuilder] member without nvt/cpt\n"});
  }
}

TEST_F(VarBuilderTest, ThrowsATextForASecondRoot) {
  LogCapture log(Logger::Warning);
  std::string thrown;
  try {
    _driver.feed(nvt("<scalar/><float/>"));
  } catch (const char* text) {
    thrown = text;
  }
  EXPECT_EQ(thrown, "illegal state");
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"illegal xml while parsing type=_t ix=7\n"});
  EXPECT_TRUE(_driver.items.empty());
}

TEST_F(VarBuilderTest, TakesTheElementBehindAnEmptyMemberForASecondRoot) {
  // The end of an empty "member" closes the structure around it.
  LogCapture log(Logger::Warning);
  EXPECT_THROW(_driver.feed(structOf("<member/><member><scalar/></member>")), const char*);
  EXPECT_EQ(log.texts(), Texts{"illegal xml while parsing type=_t ix=7\n"});
}

TEST_F(VarBuilderTest, BuildsAStructureWhoseLastMemberIsEmpty) {
  EXPECT_EQ(build(structOf("<member><scalar/><p-name>a</p-name></member><member/>")),
            "nv _t 7 size 0\nAggregate struct\n  Scalar a ''\n");
}

TEST_F(VarBuilderTest, WarnsOfABaseTypeWithoutAMember) {
  LogCapture log(Logger::Warning);
  const std::string text = "float";
  createNvt();
  _builder.processAction(VarBuilder::PA_setNcType, nullptr, &text);
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[VarBuilder] cannot set nc-type float\n"});
}

TEST_F(VarBuilderTest, WarnsOfAReferenceInAMemberOfAnotherKind) {
  LogCapture log(Logger::Warning);
  const std::string text = "SNVT_x";
  const AttributeMap href = {{"href", "0000000000000000-0/enums/x"}};
  createNvt();
  _builder.processAction(VarBuilder::PA_pushScalar, nullptr, nullptr);
  _builder.processAction(VarBuilder::PA_setRefValue, nullptr, &text);
  _builder.processAction(VarBuilder::PA_handleEnumRef, &href, nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), (Texts{"[VarBuilder] cannot set 'ref' in Scalar\n",
                                               "[VarBuilder] cannot set 'href' in Scalar\n"}));
}

TEST_F(VarBuilderTest, WarnsOfAUnitWithoutAttributes) {
  LogCapture log(Logger::Warning);
  _builder.processAction(VarBuilder::PA_setUnit, nullptr, nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[VarBuilder] missing attributes in unit member\n"});
}

TEST_F(VarBuilderTest, DoesWithoutATypeAMemberATextAndAttributes) {
  const std::string text = "1";
  const AttributeMap attributes = {{"id", "u_1"}, {"cat", "union"}, {"href", "x"}};
  LogCapture log(Logger::Error);
  for (std::uint32_t action = 0; action <= VarBuilder::PA_callDone + 1; ++action) {
    SCOPED_TRACE(VarBuilder::actionName(action));
    _builder.processAction(action, nullptr, nullptr);
    _builder.reset();
    _builder.processAction(action, &attributes, &text);
    _builder.reset();
  }
  ASSERT_EQ(_driver.items.size(), 2u);  // callDone gives what there is: nothing
  EXPECT_EQ(_driver.items[0], nullptr);
  EXPECT_EQ(_driver.items[1], nullptr);
}

TEST_F(VarBuilderTest, SetsNoFieldOfAnEmptyStack) {
  const std::string text = "1";
  LogCapture log(Logger::Warning);
  createNvt();
  for (const VarBuilder::Action action :
       {VarBuilder::PA_setMin, VarBuilder::PA_setMax, VarBuilder::PA_setInvalid,
        VarBuilder::PA_setScalingA, VarBuilder::PA_setScalingB, VarBuilder::PA_setScalingC,
        VarBuilder::PA_setScalingS, VarBuilder::PA_setBitfieldSigned,
        VarBuilder::PA_setBitfieldWidth, VarBuilder::PA_setBitfieldOffset,
        VarBuilder::PA_setArrayMinSize, VarBuilder::PA_setArraySize, VarBuilder::PA_setRefValue}) {
    _builder.processAction(action, nullptr, &text);
  }
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(VarBuilderTest, KeepsTheFormatIdWithoutAttributes) {
  const AttributeMap attributes = {{"id", "SNVT_t#x"}};
  const std::string text = "f";
  createNvt();
  _builder.processAction(VarBuilder::PA_rememberIdAttr, &attributes, nullptr);
  _builder.processAction(VarBuilder::PA_rememberIdAttr, nullptr, nullptr);
  _builder.processAction(VarBuilder::PA_addFormat, nullptr, &text);
  _builder.processAction(VarBuilder::PA_callDone, nullptr, nullptr);
  EXPECT_EQ(dumpType(*_driver.items.at(0)), "nv _t 7 size 0\nformat 'x' = 'f'\n");
}

TEST_F(VarBuilderTest, KeepsAUnitThatWasSetWhenALaterOneIsUnknown) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(nvt("<scalar/><unit id='u_1'/><unit id='u_9'/>")),
            "nv _t 7 size 0\nScalar '' [unit percent]\n");
}

TEST_F(VarBuilderTest, GivesAUnitInAStructureToTheMemberBeforeIt) {
  EXPECT_EQ(build(structOf("<member><scalar/><unit id='u_1'/><p-name>a</p-name></member>"
                           "<member><enum/><p-name>b</p-name><unit id='u_2'/></member>")),
            "nv _t 7 size 0\nAggregate struct\n  Scalar a '' [unit percent]\n"
            "  Enum b enum " +
                kStd + "  [unit degrees Celsius]\n");
}

// --- References ---

struct RefCase {
  std::string name;
  std::string member;
  std::string dump;
};

class VarBuilderReference : public testing::TestWithParam<RefCase> {};

TEST_P(VarBuilderReference, NamesAType) {
  VarBuilder builder;
  builder.setFileSetName("8000010128000000-4");
  BuilderDriver driver(builder);
  LogCapture log(Logger::Warning);
  ASSERT_TRUE(driver.feed(nvt(GetParam().member)));
  ASSERT_NE(driver.item<NvType>(), nullptr);
  EXPECT_EQ(dumpMember(*driver.item<NvType>()->getMember()), GetParam().dump + "\n");
  EXPECT_EQ(log.texts(), Texts{});
}

const std::vector<RefCase> kRefCases = {
    {"Standard", "<ref>SNVT_temp_p</ref>", "Ref nv " + kStd + " _temp_p"},
    {"StandardProperty", "<ref>SCPTdefOutput</ref>", "Ref cp " + kStd + " defOutput"},
    {"WithoutLetters", "<ref>temp_p</ref>", "Ref nv " + kStd + " temp_p"},
    {"LettersAlone", "<ref>SNVT</ref>", "Ref nv " + kStd + " "},
    {"ProfileLettersStay", "<ref>SFPTx</ref>", "Ref nv " + kStd + " SFPTx"},
    {"OfTheLoadedSet", "<ref>UNVT_flow</ref>", "Ref nv 8000010128000000-4 _flow"},
    {"PropertyOfTheLoadedSet", "<ref>UCPTflow</ref>", "Ref cp 8000010128000000-4 flow"},
    {"HrefAndText", "<ref href='9000010128000000-4/nvs/SNVT_x'>UNVT_flow</ref>",
     "Ref nv 9000010128000000-4 _flow"},
    {"HrefWithUrl", "<ref href='http://types.lonmark.org/9000010128000000-4/cps/UCPTx'>UCPTy</ref>",
     "Ref cp 9000010128000000-4 y"},
    {"HrefAlone", "<ref href='9000010128000000-4/cps/UCPTx'/>", "Ref cp 9000010128000000-4 x"},
    {"HrefWithoutName", "<ref href='9000010128000000-4/nvs'>UNVT_x</ref>",
     "Ref nv 9000010128000000-4 _x"},
    {"TextInfersTheType", "<ref href='9000010128000000-4/nvs/UCPTx'>UCPTx</ref>",
     "Ref cp 9000010128000000-4 x"},
    {"EnumByText", "<enum><ref>occup_t</ref></enum>", "Enum enum " + kStd + " occup_t"},
    {"EnumTextIsNotStripped", "<enum><ref>SNVT_t</ref></enum>", "Enum enum " + kStd + " SNVT_t"},
    {"EnumByHref", "<enum><ref href='9000010128000000-4/enums/own_t'/></enum>",
     "Enum enum 9000010128000000-4 own_t"},
    {"EnumHrefNameIsNotStripped", "<enum><ref href='9000010128000000-4/enums/UNVT_t'/></enum>",
     "Enum enum 9000010128000000-4 UNVT_t"},
    {"EnumByHrefAndText", "<enum><ref href='9000010128000000-4/enums/a_t'>b_t</ref></enum>",
     "Enum enum 9000010128000000-4 b_t"},
};
INSTANTIATE_TEST_SUITE_P(VarBuilder, VarBuilderReference, testing::ValuesIn(kRefCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(VarBuilderTest, LooksForAUserTypeInTheStandardSetWhenTheLoadedSetHasNoPrefix) {
  _builder.setFileSetName("my types");
  EXPECT_EQ(build(nvt("<ref>UNVT_flow</ref>")), "nv _t 7 size 0\nRef nv " + kStd + " _flow\n");
}

TEST_F(VarBuilderTest, TakesTheHrefOfOneReferenceForThatOneOnly) {
  EXPECT_EQ(build(structOf("<member><ref href='9000010128000000-4/nvs/UNVT_a'>UNVT_a</ref></member>"
                           "<member><ref>UNVT_b</ref></member>")),
            "nv _t 7 size 0\nAggregate struct\n  Ref nv 9000010128000000-4 _a\n"
            "  Ref nv 8000010128000000-4 _b\n");
}

TEST_F(VarBuilderTest, TellsWhenANameChangesTheTypeOfAReference) {
  LogCapture log(Logger::Debug);
  build(nvt("<ref>UCPTx</ref>"));
  EXPECT_EQ(log.texts(Logger::Debug),
            Texts{"[VarBuilder::setRefValue] inferring resource type 'cp' from 'UCPTx'\n"});
}

TEST_F(VarBuilderTest, TellsNothingWhenANameAgreesWithTheTypeOfAReference) {
  LogCapture log(Logger::Debug);
  build(nvt("<ref>SNVT_x</ref>"));
  EXPECT_EQ(log.texts(), Texts{});
}

// --- Traces ---

TEST_F(VarBuilderTest, TracesEachStep) {
  LogCapture log;
  build(nvt("<p-name>SNVT_t</p-name>"));
  const Texts expected = {
      "[VarBuilder::onElement] <nvt> ==> PS_Begin / PE_nvt\n",
      "[TStateMachine::processEvent] PE_nvt value=(null)\n",
      "[VarBuilder::processEvent] PS_Begin [PE_nvt]-> PS_Item\n",
      "[VarBuilder::processAction] PA_createNVT\n",
      "[VarBuilder::createNvt] _t\n",
      "[VarBuilder::onElement] <p-name> ==> PS_Item / PE_None\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[VarBuilder::onValue] element=<p-name> value='SNVT_t'\n",
      "[VarBuilder::getValueEvent] element='p-name'\n",
      "[TStateMachine::processEvent] PE_p_name_VALUE value=SNVT_t\n",
      "[VarBuilder::processEvent] PS_Item [PE_p_name_VALUE]-> PS_Item\n",
      "[VarBuilder::processAction] PA_setProgName\n",
      "[VarBuilder::stripPrefix] 'SNVT_t'\n",
      "[VarBuilder::onElementEnd] </p-name> ==> PS_Item / PE_None\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[VarBuilder::onElementEnd] </nvt> ==> PS_Item / PE_nvt_end\n",
      "[TStateMachine::processEvent] PE_nvt_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Item [PE_nvt_end]-> PS_End\n",
      "[VarBuilder::processAction] PA_callDone\n",
      "[VarBuilder::callDone]\n",
  };
  EXPECT_EQ(log.texts(Logger::Trace), expected);
  EXPECT_EQ(log.lines().size(), expected.size());
}

struct TraceCase {
  std::string name;
  std::string xml;
  std::string trace;
};

class VarBuilderTrace : public testing::TestWithParam<TraceCase> {};

TEST_P(VarBuilderTrace, IsWritten) {
  VarBuilder builder;
  BuilderDriver driver(builder);
  driver.strings = {{"u_1", "percent"}};
  LogCapture log;
  ASSERT_TRUE(driver.feed(GetParam().xml));
  EXPECT_TRUE(log.contains(Logger::Trace, GetParam().trace));
}

const std::string kMember =
    "<member><bitfield><width>3</width><offset>5</offset></bitfield><p-name>a</p-name></member>";

const std::vector<TraceCase> kTraceCases = {
    {"CreateNvt", nvt(""), "[VarBuilder::createNvt] _t\n"},
    {"CreateCpt", cpt(""), "[VarBuilder::createCpt] t\n"},
    {"PushRef", nvt("<ref/>"), "[VarBuilder::pushRef]\n"},
    {"PushScalar", nvt("<scalar/>"), "[VarBuilder::pushScalar]\n"},
    {"PushFloat", nvt("<float/>"), "[VarBuilder::pushFloat]\n"},
    {"PushBitfield", nvt("<bitfield/>"), "[VarBuilder::pushBitfield]\n"},
    {"PushEnum", nvt("<enum/>"), "[VarBuilder::pushEnum]\n"},
    {"PushAggregate", nvt("<aggregate cat='struct'/>"), "[VarBuilder::pushAggregate]\n"},
    {"CheckPop", nvt("<scalar/>"), "[VarBuilder::checkPop]\n"},
    {"Pop", structOf(kMember), "[VarBuilder::pop]\n"},
    {"BuildLookup", structOf(kMember), "[VarBuilder::callBuildLookup]\n"},
    {"ProgName", structOf(kMember), "[VarBuilder::setProgName] 'a'\n"},
    {"Width", structOf(kMember), "[VarBuilder::setBitfieldWidth] 3\n"},
    {"Offset", structOf(kMember), "[VarBuilder::setBitfieldOffset] 5\n"},
    {"RefValue", nvt("<ref>SNVT_x</ref>"), "[VarBuilder::setRefValue] SNVT_x\n"},
    {"StripPrefix", nvt("<ref>SNVT_x</ref>"), "[VarBuilder::stripPrefix] 'SNVT_x'\n"},
    {"EnumRef", nvt("<enum><ref/></enum>"), "[VarBuilder::handleEnumRef]\n"},
    {"NcType", nvt("<float><nc-type>float</nc-type></float>"), "[VarBuilder::setNcType] float\n"},
    {"Unit", nvt("<scalar/><unit id='u_1'/>"), "[VarBuilder::setUnit]\n"},
    {"UnitText", nvt("<scalar/><unit id='u_1'/>"), "[VarBuilder] setting unit 'percent' in _t\n"},
    {"FormatId", nvt("<formats><format id='_t'>x</format></formats>"),
     "[VarBuilder::rememberIdAttr]\n"},
    {"FormatText", nvt("<formats><format id='_t'>x</format></formats>"),
     "[VarBuilder::rememberIdAttr] x\n"},
    {"CallDone", nvt(""), "[VarBuilder::callDone]\n"},
};
INSTANTIATE_TEST_SUITE_P(VarBuilder, VarBuilderTrace, testing::ValuesIn(kTraceCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(VarBuilderTest, TracesTheMemberThatScalingReturnsTo) {
  LogCapture log;
  _builder.processAction(VarBuilder::PA_setState, nullptr, nullptr);
  EXPECT_TRUE(log.contains(Logger::Trace, "[VarBuilder::setState] top=(nil)\n"));
}

TEST_F(VarBuilderTest, TracesATypeWithoutAttributesByItsEmptyName) {
  LogCapture log;
  _builder.processAction(VarBuilder::PA_createNVT, nullptr, nullptr);
  EXPECT_TRUE(log.contains(Logger::Warning, "[ItemBuilder] missing attributes in member\n"));
  EXPECT_TRUE(log.contains(Logger::Trace, "[VarBuilder::createNvt] \n"));
}

}  // namespace
}  // namespace zavri::korvat::builder
