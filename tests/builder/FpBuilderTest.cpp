#include "korvat/builder/FpBuilder.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/LogCapture.h"
#include "tests/builder/BuilderDriver.h"
#include "tests/builder/TypeDump.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;
using Texts = std::vector<std::string>;

// A profile "f" with that content.
std::string fpt(const std::string& content) {
  return "<fpt id='SFPTf' idx='1' key='2'>" + content + "</fpt>";
}
// The same with one network variable "n" or one property "c" that holds `fields`.
std::string withNv(const std::string& fields) {
  return fpt("<f-nvs><f-nv id='n' idx='1'>" + fields + "</f-nv></f-nvs>");
}
std::string withCp(const std::string& fields) {
  return fpt("<f-cps><f-cp id='c' idx='1'>" + fields + "</f-cp></f-cps>");
}
// Their dumps, `fields` being what the datapoint adds.
std::string nvDump(const std::string& fields) {
  return "fp f 1 key 2\n  nv 1 n output" + fields + "\n";
}
std::string cpDump(const std::string& fields) {
  return "fp f 1 key 2\n  cp 1 c input" + fields + "\n";
}

class FpBuilderTest : public testing::Test {
 protected:
  // Builds from `xml` and dumps the profiles that come out.
  std::string build(const std::string& xml) {
    _driver.items.clear();
    EXPECT_TRUE(_driver.feed(xml));
    std::string text;
    for (const auto& item : _driver.items) text += dumpType(*item);
    return text;
  }

  void act(FpBuilder::Action action, const AttributeMap* attributes, const std::string* value) {
    _builder.processAction(action, attributes, value);
  }

  const AttributeMap _item = {{"id", "SFPTf"}, {"idx", "1"}, {"key", "2"}};
  const AttributeMap _member = {{"id", "n"}, {"idx", "1"}};
  FpBuilder _builder;
  BuilderDriver _driver{_builder};
};

// --- The whole ---

TEST_F(FpBuilderTest, BuildsAProfileWithItsDatapoints) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(R"(
<fpt id="UFPTboiler" idx="3" key="20004" stlp_std="yes">
  <obsolete>yes</obsolete>
  <inheriting>
    <ref href="http://types.lonmark.org/0000000000000000-0/fps/SFPTnodeObject">SFPTnodeObject</ref>
  </inheriting>
  <f-nvs>
    <f-nv id="nviSetpoint" idx="1">
      <member>4</member>
      <mandatory>yes</mandatory>
      <dir>input</dir>
      <min>10</min>
      <max>35.5</max>
      <default>-2.25</default>
      <array>not permitted</array>
      <ref href="http://types.lonmark.org/0000000000000000-0/nvs/SNVT_temp_p">SNVT_temp_p</ref>
    </f-nv>
    <f-nv id="nvoState" idx="2">
      <mandatory>no</mandatory>
      <dir>output</dir>
      <array>permitted</array>
      <ref href="9FFFFF0000000000-3/nvs/UNVTBoilerState">UNVTBoilerState</ref>
    </f-nv>
  </f-nvs>
  <f-cps>
    <f-cp id="cpTarget" idx="1">
      <mandatory>yes</mandatory>
      <applies>nvoState</applies>
      <ref href="9FFFFF0000000000-3/cps/UCPTBoilerTarget">UCPTBoilerTarget</ref>
    </f-cp>
  </f-cps>
</fpt>)"),
            "fp boiler 3 obsolete standard key 20004 inherits 0000000000000000-0/SFPTnodeObject\n"
            "  nv 1 nviSetpoint input mandatory member 4 0000000000000000-0/SNVT_temp_p "
            "min 10 max 35.5 default -2.25 single\n"
            "  nv 2 nvoState output 9FFFFF0000000000-3/UNVTBoilerState\n"
            "  cp 1 cpTarget input mandatory 9FFFFF0000000000-3/UCPTBoilerTarget "
            "applies to 'nvoState'\n");
  EXPECT_EQ(log.texts(), Texts{});
  const auto* profile = _driver.item<FpType>();
  ASSERT_NE(profile, nullptr);
  EXPECT_EQ(profile->getTypeId().getType(), ResourceType::Fp);
  EXPECT_EQ(profile->getFlags(), 0x5u);
  EXPECT_EQ(profile->getBase().getType(), ResourceType::Fp);
  for (const DpRef* dp : profile->getNvColl()) EXPECT_EQ(dp->getFpType(), profile);
}

TEST_F(FpBuilderTest, PassesTheItemThenReportsDoneThenStartsAnew) {
  build(fpt(""));
  EXPECT_EQ(_driver.calls, (Texts{"addItem", "onItemBuildDone"}));
  EXPECT_EQ(_builder.getState(), FpBuilder::PS_Begin);
}

TEST_F(FpBuilderTest, BuildsItemsOneAfterTheOther) {
  EXPECT_EQ(build("<items>" + withNv("<ref href='9FFFFF0000000000-3/nvs'>UNVTa</ref>") +
                  "<fpt id='g' idx='5' key='6'><f-nvs><f-nv id='m' idx='1'><ref>SNVT_b</ref>"
                  "</f-nv></f-nvs></fpt></items>"),
            nvDump(" 9FFFFF0000000000-3/UNVTa") +
                "fp g 5 key 6\n  nv 1 m output 0000000000000000-0/SNVT_b\n");
}

// --- Attributes of the item ---

struct BuildCase {
  std::string name;
  std::string xml;
  std::string dump;
  Texts warnings;
};

class FpBuilderCase : public FpBuilderTest, public testing::WithParamInterface<BuildCase> {};

TEST_P(FpBuilderCase, BuildsAndWarns) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(build(GetParam().xml), GetParam().dump);
  EXPECT_EQ(log.texts(), GetParam().warnings);
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
}

const auto caseName = [](const auto& info) { return info.param.name; };

INSTANTIATE_TEST_SUITE_P(
    Item, FpBuilderCase,
    testing::ValuesIn(std::vector<BuildCase>{
        {"StripsTheFourLetters", "<fpt id='UFPTa' idx='1' key='2'/>", "fp a 1 key 2\n", {}},
        {"KeepsANameWithoutLetters",
         "<fpt id='nodeObject' idx='1' key='0'/>",
         "fp nodeObject 1 key 0\n",
         {}},
        {"KeyZero", "<fpt id='a' idx='1' key='0'/>", "fp a 1 key 0\n", {}},
        {"KeyWithTextBehindIt", "<fpt id='a' idx='1' key=' 8010x'/>", "fp a 1 key 8010\n", {}},
        {"NoKey",
         "<fpt id='SFPTa' idx='1'/>",
         "fp a 1\n",
         {"[FpBuilder::setIdAndIndex] no key for a\n"}},
        {"NoId",
         "<fpt idx='1' key='2'/>",
         "fp  1 key 2\n",
         {"[ItemBuilder] missing attribute 'id' in item\n"}},
        {"NoIndex",
         "<fpt id='a' key='2'/>",
         "fp a -1 key 2\n",
         {"[ItemBuilder] missing attribute 'idx' in item\n"}},
        {"NoAttributes",
         "<fpt/>",
         "fp  -1\n",
         {"[ItemBuilder] missing attribute 'id' in item\n",
          "[ItemBuilder] missing attribute 'idx' in item\n",
          "[FpBuilder::setIdAndIndex] no key for \n"}},
        {"Standard", "<fpt id='a' idx='1' key='2' stlp_std='yes'/>", "fp a 1 standard key 2\n", {}},
        {"NotStandard", "<fpt id='a' idx='1' key='2' stlp_std='no'/>", "fp a 1 key 2\n", {}},
        {"StandardInCapitals",
         "<fpt id='a' idx='1' key='2' stlp_std='Yes'/>",
         "fp a 1 key 2\n",
         {}},
        {"Obsolete", fpt("<obsolete>yes</obsolete>"), "fp f 1 obsolete key 2\n", {}},
        {"NotObsolete", fpt("<obsolete>no</obsolete>"), "fp f 1 key 2\n", {}},
        {"ObsoleteTakesNothingBack",
         fpt("<obsolete>yes</obsolete><obsolete>no</obsolete>"),
         "fp f 1 obsolete key 2\n",
         {}},
        {"ObsoleteInCapitals", fpt("<obsolete>YES</obsolete>"), "fp f 1 key 2\n", {}},
    }),
    caseName);

// --- References ---

INSTANTIATE_TEST_SUITE_P(
    Reference, FpBuilderCase,
    testing::ValuesIn(std::vector<BuildCase>{
        {"Url",
         withNv("<ref href='http://types.lonmark.org/9FFFFF0000000000-3/nvs/UNVTa'>UNVTa"
                "</ref>"),
         nvDump(" 9FFFFF0000000000-3/UNVTa"),
         {}},
        {"PlainPath",
         withNv("<ref href='9FFFFF0000000000-3/nvs/UNVTa'>UNVTa</ref>"),
         nvDump(" 9FFFFF0000000000-3/UNVTa"),
         {}},
        {"PrefixAndSlash",
         withNv("<ref href='9FFFFF0000000000-3/'>UNVTa</ref>"),
         nvDump(" 9FFFFF0000000000-3/UNVTa"),
         {}},
        {"NoSlash",
         withNv("<ref href='9FFFFF0000000000-3'>UNVTa</ref>"),
         nvDump(" 9FFFFF0000000000-3/UNVTa"),
         {"[FpBuilder::rememberRefBase] ref-base='9FFFFF0000000000-3'\n"}},
        {"UrlWithoutAnotherSlash",
         withNv("<ref href='http://types.lonmark.org/9FFFFF0000000000-3'>UNVTa</ref>"),
         nvDump(" 9FFFFF0000000000-3/UNVTa"),
         {"[FpBuilder::rememberRefBase] ref-base='9FFFFF0000000000-3'\n"}},
        {"EmptyHref",
         withNv("<ref href=''>SNVT_a</ref>"),
         nvDump(" 0000000000000000-0/SNVT_a"),
         {"[FpBuilder::rememberRefBase] ref-base=''\n"}},
        {"LeadingSlash",
         withNv("<ref href='/nvs/SNVT_a'>SNVT_a</ref>"),
         nvDump(" 0000000000000000-0/SNVT_a"),
         {}},
        {"OtherUrlIsKeptWhole",
         withNv("<ref href='http://example.org/0/nvs'>SNVT_a</ref>"),
         nvDump(" /UNVT_a"),
         {}},  // "http:" is no prefix
        {"UrlInsideTheText",
         withNv("<ref href='x/http://types.lonmark.org/9FFFFF0000000000-3/nvs'>SNVT_a</ref>"),
         nvDump(" /UNVT_a"),
         {}},
        {"StandardPrefix",
         withNv("<ref href='0000000000000000-0/nvs'>SNVT_a</ref>"),
         nvDump(" 0000000000000000-0/SNVT_a"),
         {}},
        {"NoHref", withNv("<ref>SNVT_a</ref>"), nvDump(" 0000000000000000-0/SNVT_a"), {}},
        {"NameWithoutLetters",
         withNv("<ref href='0000000000000000-0/nvs'>_a</ref>"),
         nvDump(" 0000000000000000-0/SNVT_a"),
         {}},
        {"KindIsThatOfTheDatapoint",
         withNv("<ref href='0000000000000000-0/cps'>SCPTa</ref>"),
         nvDump(" 0000000000000000-0/SNVTa"),
         {}},
        {"Property",
         withCp("<ref href='0000000000000000-0/cps'>SCPTa</ref>"),
         cpDump(" 0000000000000000-0/SCPTa"),
         {}},
        {"PropertyNamedLikeAVariable",
         withCp("<ref>SNVT_a</ref>"),
         cpDump(" 0000000000000000-0/SCPT_a"),
         {}},
        {"LaterReferenceWins",
         withNv("<ref>SNVT_a</ref><ref>SNVT_b</ref>"),
         nvDump(" 0000000000000000-0/SNVT_b"),
         {}},
        {"EmptyReference", withNv("<ref href='0000000000000000-0/nvs'/>"), nvDump(""), {}},
        {"InheritedUserProfile",
         fpt("<inheriting><ref href='9FFFFF0000000000-3/fps/UFPTb'>UFPTb</ref></inheriting>"),
         "fp f 1 key 2 inherits 9FFFFF0000000000-3/UFPTb\n",
         {}},
        {"InheritedStandardProfile",
         fpt("<inheriting><ref>SFPTb</ref></inheriting>"),
         "fp f 1 key 2 inherits 0000000000000000-0/SFPTb\n",
         {}},
        {"InheritedWithoutSlash",
         fpt("<inheriting><ref href='9FFFFF0000000000-3'>UFPTb</ref></inheriting>"),
         "fp f 1 key 2 inherits 9FFFFF0000000000-3/UFPTb\n",
         {"[FpBuilder::rememberRefBase] ref-base='9FFFFF0000000000-3'\n"}},
        {"InheritedNothing",
         fpt("<inheriting><ref href='9FFFFF0000000000-3/fps'/></inheriting>"),
         "fp f 1 key 2\n",
         {}},
    }),
    caseName);

// The set that an inherited profile is in is used once; that of a datapoint's type stays until the
// next reference names its own.
INSTANTIATE_TEST_SUITE_P(
    ReferenceBase, FpBuilderCase,
    testing::ValuesIn(std::vector<BuildCase>{
        {"IsEmptiedByTheInheritedProfile",
         fpt("<inheriting><ref href='9FFFFF0000000000-3/fps'>UFPTb</ref></inheriting>"
             "<f-nvs><f-nv id='n' idx='1'><ref>SNVT_a</ref></f-nv></f-nvs>"),
         "fp f 1 key 2 inherits 9FFFFF0000000000-3/UFPTb\n"
         "  nv 1 n output 0000000000000000-0/SNVT_a\n",
         {}},
        {"StaysAfterADatapoint",
         fpt("<f-nvs><f-nv id='n' idx='1'><ref href='9FFFFF0000000000-3/nvs'>UNVTa</ref></f-nv>"
             "<f-nv id='m' idx='2'><ref>UNVTb</ref></f-nv></f-nvs>"
             "<f-cps><f-cp id='c' idx='1'><ref>UCPTc</ref></f-cp></f-cps>"),
         "fp f 1 key 2\n  nv 1 n output 9FFFFF0000000000-3/UNVTa\n"
         "  nv 2 m output 9FFFFF0000000000-3/UNVTb\n  cp 1 c input 9FFFFF0000000000-3/UCPTc\n",
         {}},
        {"IsReplacedByTheNextHref",
         fpt("<f-nvs><f-nv id='n' idx='1'><ref href='9FFFFF0000000000-3/nvs'>UNVTa</ref></f-nv>"
             "<f-nv id='m' idx='2'><ref href='0000000000000000-0/nvs'>SNVT_b</ref></f-nv></f-nvs>"),
         "fp f 1 key 2\n  nv 1 n output 9FFFFF0000000000-3/UNVTa\n"
         "  nv 2 m output 0000000000000000-0/SNVT_b\n",
         {}},
        {"StaysWhenItsReferenceHadNoText",
         fpt("<inheriting><ref href='9FFFFF0000000000-3/fps'/></inheriting>"
             "<f-nvs><f-nv id='n' idx='1'><ref>UNVTa</ref></f-nv></f-nvs>"),
         "fp f 1 key 2\n  nv 1 n output 9FFFFF0000000000-3/UNVTa\n",
         {}},
    }),
    caseName);

// --- Datapoints ---

INSTANTIATE_TEST_SUITE_P(
    Datapoint, FpBuilderCase,
    testing::ValuesIn(std::vector<BuildCase>{
        {"Plain", withNv(""), nvDump(""), {}},
        {"NoId",
         fpt("<f-nvs><f-nv idx='3'/></f-nvs>"),
         "fp f 1 key 2\n  nv 3  output\n",
         {"[FpBuilder::setIdAndIndex] no 'id'-attr found in f\n"}},
        {"NoIndex",
         fpt("<f-nvs><f-nv id='a'/><f-nv id='b'/></f-nvs><f-cps><f-cp id='c'/></f-cps>"),
         "fp f 1 key 2\n  nv 1 a output\n  nv 2 b output\n  cp 1 c input\n",
         {"[FpBuilder::setIdAndIndex] no 'idx'-attr found in f\n",
          "[FpBuilder::setIdAndIndex] no 'idx'-attr found in f\n",
          "[FpBuilder::setIdAndIndex] no 'idx'-attr found in f\n"}},
        {"NeitherIdNorIndex",
         fpt("<f-cps><f-cp/></f-cps>"),
         "fp f 1 key 2\n  cp 1  input\n",
         {"[FpBuilder::setIdAndIndex] no 'id'-attr found in f\n",
          "[FpBuilder::setIdAndIndex] no 'idx'-attr found in f\n"}},
        {"SparseIndices",
         fpt("<f-nvs><f-nv id='a' idx='1'/><f-nv id='b' idx='7'/></f-nvs>"),
         "fp f 1 key 2\n  nv 1 a output\n  nv 7 b output\n",
         {}},
        {"PropertyAmongVariables",
         fpt("<f-nvs><f-nv id='a' idx='1'/><f-cp id='b' idx='1'/><f-nv id='c' idx='2'/></f-nvs>"),
         "fp f 1 key 2\n  nv 1 a output\n  nv 2 c output\n  cp 1 b input\n",
         {}},
        {"VariableAmongProperties",
         fpt("<f-cps><f-nv id='a' idx='1'/></f-cps>"),
         "fp f 1 key 2\n  nv 1 a output\n",
         {}},
        {"PropertiesBeforeVariables",
         fpt("<f-cps><f-cp id='a' idx='1'/></f-cps><f-nvs><f-nv id='b' idx='1'/></f-nvs>"),
         "fp f 1 key 2\n  nv 1 b output\n  cp 1 a input\n",
         {}},
        {"Member", withNv("<member>12</member>"), nvDump(" member 12"), {}},
        {"MemberThatIsNoNumber", withNv("<member>12</member><member>x</member>"), nvDump(""), {}},
        {"Mandatory", withNv("<mandatory>yes</mandatory>"), nvDump(" mandatory"), {}},
        {"MandatoryTrue",
         withNv("<mandatory>yes</mandatory><mandatory>true</mandatory>"),
         nvDump(""),
         {}},
        {"MandatoryInCapitals",
         withNv("<mandatory>yes</mandatory><mandatory>Yes</mandatory>"),
         nvDump(""),
         {}},
        {"MandatoryTakenBack",
         withNv("<mandatory>yes</mandatory><mandatory>no</mandatory>"),
         nvDump(""),
         {}},
        {"Input", withNv("<dir>input</dir>"), "fp f 1 key 2\n  nv 1 n input\n", {}},
        {"Output", withCp("<dir>output</dir>"), "fp f 1 key 2\n  cp 1 c output\n", {}},
        {"DirectionWithACapital",
         withCp("<dir>Output</dir>"),
         cpDump(""),
         {"[FpBuilder::setDirection] direction unhandled: 'Output'\n"}},
        {"DirectionInout",
         withNv("<dir>input</dir><dir>inout</dir>"),
         "fp f 1 key 2\n  nv 1 n input\n",
         {"[FpBuilder::setDirection] direction unhandled: 'inout'\n"}},
        {"Min", withNv("<min>-273.17</min>"), nvDump(" min -273.17"), {}},
        {"MinZero", withNv("<min>0</min>"), nvDump(" min 0"), {}},
        {"MinThatIsNoNumber", withNv("<min>none</min>"), nvDump(" min 0"), {}},
        {"Max", withNv("<max>1.5e3</max>"), nvDump(" max 1500"), {}},
        {"Default", withNv("<default>7.5</default>"), nvDump(" default 7.5"), {}},
        {"DefaultWithTextBehindIt", withNv("<default>7.5 %</default>"), nvDump(" default 7.5"), {}},
        {"ArrayNotPermitted", withNv("<array>not permitted</array>"), nvDump(" single"), {}},
        {"ArrayNotPermittedAndABlank",
         withNv("<array>not permitted</array><array>not permitted </array>"),
         nvDump(""),
         {}},
        {"ArrayPermitted",
         withNv("<array>not permitted</array><array>permitted</array>"),
         nvDump(""),
         {}},
        {"ArrayWithoutText", withNv("<array/>"), nvDump(""), {}},
        {"AppliesTo", withCp("<applies>nvoValue</applies>"), cpDump(" applies to 'nvoValue'"), {}},
    }),
    caseName);

// --- Elements in the wrong place, unknown elements ---

INSTANTIATE_TEST_SUITE_P(
    Misplaced, FpBuilderCase,
    testing::ValuesIn(std::vector<BuildCase>{
        {"FieldsOutsideOfADatapoint",
         fpt("<member>1</member><mandatory>yes</mandatory><dir>input</dir><min>1</min><max>2</max>"
             "<default>3</default><array>not permitted</array><applies>x</applies>"
             "<ref>SNVT_a</ref><f-nvs><dir>input</dir><f-nv id='n' idx='1'/></f-nvs>"),
         nvDump(""),
         {}},
        {"FieldsBehindADatapoint",
         fpt("<f-nvs><f-nv id='n' idx='1'/><dir>input</dir></f-nvs><dir>input</dir>"),
         nvDump(""),
         {}},
        {"DatapointOutsideOfAList",
         fpt("<f-nv id='n' idx='1'><dir>input</dir></f-nv>"),
         "fp f 1 key 2\n",
         {}},
        // Its fields and its end are taken for those of the outer one.
        {"DatapointInsideOfADatapoint",
         withNv("<f-nv id='m' idx='2'><dir>input</dir></f-nv><min>4</min>"),
         "fp f 1 key 2\n  nv 1 n input\n",
         {}},
        {"ObsoleteInsideOfADatapoint", withNv("<obsolete>yes</obsolete>"), nvDump(""), {}},
        {"FieldsInsideOfAReference", withNv("<ref><dir>input</dir></ref>"), nvDump(""), {}},
        {"InheritanceWithoutReference",
         fpt("<inheriting>SFPTb</inheriting>"),
         "fp f 1 key 2\n",
         {}},
        {"UnknownElements",
         fpt("<p-name>SFPTf</p-name><f-nvs><group><f-nv id='n' idx='1'><note>x</note>"
             "<limits><min>4</min></limits></f-nv></group></f-nvs>"),
         nvDump(" min 4"),
         {}},
        {"ItemInsideOfAnItem",
         fpt("<f-nvs><fpt id='g' idx='9' key='9'/></f-nvs>"),
         "fp f 1 key 2\n",
         {}},
        {"WithoutAnItem", "<f-nvs><f-nv id='n' idx='1'/></f-nvs>", "", {}},
    }),
    caseName);

// --- Single actions ---

TEST_F(FpBuilderTest, WarnsOfAnItemWithoutAttributes) {
  LogCapture log;
  act(FpBuilder::PA_createFPT, nullptr, nullptr);
  EXPECT_EQ(log.texts(),
            (Texts{"[FpBuilder::processAction] PA_createFPT\n",
                   "[FpBuilder] missing attributes in member\n", "[FpBuilder::createNvt] \n"}));
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[FpBuilder] missing attributes in member\n"});
  act(FpBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), "fp  -1\n");
}

TEST_F(FpBuilderTest, ReplacesAHalfBuiltItem) {
  const AttributeMap second = {{"id", "second"}, {"idx", "2"}, {"key", "3"}};
  const std::string input = "input";
  act(FpBuilder::PA_createFPT, &_item, nullptr);
  act(FpBuilder::PA_pushNv, &_member, nullptr);
  act(FpBuilder::PA_createFPT, &second, nullptr);
  act(FpBuilder::PA_setDirection, nullptr, &input);  // the datapoint is gone with its profile
  act(FpBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), "fp second 2 key 3\n");
}

TEST_F(FpBuilderTest, HasNoDatapointAfterOneWithoutAttributes) {
  const std::string input = "input";
  act(FpBuilder::PA_createFPT, &_item, nullptr);
  act(FpBuilder::PA_pushNv, &_member, nullptr);
  act(FpBuilder::PA_pushCp, nullptr, nullptr);
  act(FpBuilder::PA_setDirection, nullptr, &input);
  act(FpBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), nvDump(""));
}

TEST_F(FpBuilderTest, ChangesNothingWithoutAnItemADatapointOrAText) {
  const std::string text = "yes";
  LogCapture log(Logger::Warning);
  for (std::uint32_t action = FpBuilder::PA_setObsolete; action <= FpBuilder::PA_setRef; ++action) {
    _builder.processAction(action, &_member, &text);
  }
  act(FpBuilder::PA_createFPT, &_item, nullptr);
  for (std::uint32_t action = FpBuilder::PA_setMember; action <= FpBuilder::PA_setRef; ++action) {
    _builder.processAction(action, nullptr, &text);  // no datapoint yet
  }
  act(FpBuilder::PA_pushNv, &_member, nullptr);
  for (std::uint32_t action = FpBuilder::PA_setMember; action <= FpBuilder::PA_setRef; ++action) {
    _builder.processAction(action, nullptr, nullptr);
  }
  act(FpBuilder::PA_setObsolete, nullptr, nullptr);
  act(FpBuilder::PA_setInheritRef, nullptr, nullptr);
  act(FpBuilder::PA_rememberRefBase, nullptr, nullptr);
  act(FpBuilder::PA_none, nullptr, nullptr);
  act(FpBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), nvDump(""));
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(FpBuilderTest, KeepsTheReferenceBaseWhileThereIsNoItem) {
  const AttributeMap reference = {{"href", "9FFFFF0000000000-3/fps"}};
  const std::string name = "UFPTb";
  act(FpBuilder::PA_rememberRefBase, &reference, nullptr);
  act(FpBuilder::PA_setInheritRef, nullptr, &name);
  act(FpBuilder::PA_createFPT, &_item, nullptr);
  act(FpBuilder::PA_setInheritRef, nullptr, &name);
  act(FpBuilder::PA_callDone, nullptr, nullptr);
  ASSERT_EQ(_driver.items.size(), 1u);
  EXPECT_EQ(dumpType(*_driver.items[0]), "fp f 1 key 2 inherits 9FFFFF0000000000-3/UFPTb\n");
}

TEST_F(FpBuilderTest, AsksTheMasterToSkipAnElement) {
  act(FpBuilder::PA_skipElement, nullptr, nullptr);
  EXPECT_EQ(_driver.calls, Texts{"skipElement"});
}

TEST_F(FpBuilderTest, ResetDropsTheHalfBuiltItemAndTheReferenceBase) {
  EXPECT_FALSE(
      _driver.feed("<fpt id='e' idx='1' key='1'><f-nvs><f-nv id='x' idx='1'>"
                   "<ref href='9FFFFF0000000000-3/nvs'>UNVTa"));
  EXPECT_EQ(_builder.getState(), FpBuilder::PS_Ref);
  _builder.reset();
  EXPECT_EQ(_builder.getState(), FpBuilder::PS_Begin);
  const std::string input = "input";
  act(FpBuilder::PA_setDirection, nullptr, &input);
  EXPECT_EQ(build(withNv("<ref>SNVT_a</ref>")), nvDump(" 0000000000000000-0/SNVT_a"));
}

// --- Traces ---

TEST_F(FpBuilderTest, TracesEachStep) {
  LogCapture log;
  build(
      "<fpt id='SFPTf' idx='1' key='2'><f-nvs><f-nv id='n' idx='1'>"
      "<ref href='http://types.lonmark.org/0000000000000000-0/nvs'>SNVT_a</ref>"
      "</f-nv></f-nvs><x/></fpt>");
  const Texts expected = {
      "[FpBuilder::onElement] <fpt> ==> PS_Begin / PE_fpt\n",
      "[TStateMachine::processEvent] PE_fpt value=(null)\n",
      "[VarBuilder::processEvent] PS_Begin [PE_fpt]-> PS_Item\n",
      "[FpBuilder::processAction] PA_createFPT\n",
      "[TypeId::stripPrefix] 'SFPTf'\n",
      "[FpBuilder::createNvt] f\n",
      "[FpBuilder::onElement] <f-nvs> ==> PS_Item / PE_nvs\n",
      "[TStateMachine::processEvent] PE_nvs value=(null)\n",
      "[VarBuilder::processEvent] PS_Item [PE_nvs]-> PS_Dps\n",
      "[FpBuilder::onElement] <f-nv> ==> PS_Dps / PE_nv\n",
      "[TStateMachine::processEvent] PE_nv value=(null)\n",
      "[VarBuilder::processEvent] PS_Dps [PE_nv]-> PS_Dp\n",
      "[FpBuilder::processAction] PA_pushNv\n",
      "[FpBuilder::onElement] <ref> ==> PS_Dp / PE_ref\n",
      "[TStateMachine::processEvent] PE_ref value=(null)\n",
      "[VarBuilder::processEvent] PS_Dp [PE_ref]-> PS_Ref\n",
      "[FpBuilder::processAction] PA_rememberRefBase\n",
      "[FpBuilder::rememberRefBase]\n",
      "[FpBuilder::rememberRefBase] => '0000000000000000-0'\n",
      "[FpBuilder::onValue] element=<ref> value='SNVT_a'\n",
      "[FpBuilder::getValueEvent] element='ref'\n",
      "[TStateMachine::processEvent] PE_ref_VALUE value=SNVT_a\n",
      "[VarBuilder::processEvent] PS_Ref [PE_ref_VALUE]-> PS_Ref\n",
      "[FpBuilder::processAction] PA_setRef\n",
      "[TypeId::stripPrefix] 'SNVT_a'\n",
      "[FpBuilder::onElementEnd] </ref> ==> PS_Ref / PE_ref_end\n",
      "[TStateMachine::processEvent] PE_ref_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Ref [PE_ref_end]-> PS_Dp\n",
      "[FpBuilder::onElementEnd] </f-nv> ==> PS_Dp / PE_nv_end\n",
      "[TStateMachine::processEvent] PE_nv_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Dp [PE_nv_end]-> PS_Dps\n",
      "[FpBuilder::onElementEnd] </f-nvs> ==> PS_Dps / PE_nvs_end\n",
      "[TStateMachine::processEvent] PE_nvs_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Dps [PE_nvs_end]-> PS_Item\n",
      "[FpBuilder::onElement] <x> ==> PS_Item / PE_None\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[FpBuilder::onElementEnd] </x> ==> PS_Item / PE_None\n",
      "[TStateMachine::processEvent] PE_None value=(null)\n",
      "[FpBuilder::onElementEnd] </fpt> ==> PS_Item / PE_fpt_end\n",
      "[TStateMachine::processEvent] PE_fpt_end value=(null)\n",
      "[VarBuilder::processEvent] PS_Item [PE_fpt_end]-> PS_End\n",
      "[FpBuilder::processAction] PA_callDone\n",
      "[FpBuilder::callDone]\n",
  };
  EXPECT_EQ(log.texts(Logger::Trace), expected);
  EXPECT_EQ(log.lines().size(), expected.size());
}

TEST_F(FpBuilderTest, TracesAReferenceWithoutHref) {
  LogCapture log;
  act(FpBuilder::PA_rememberRefBase, &_member, nullptr);
  EXPECT_EQ(log.texts(), (Texts{"[FpBuilder::processAction] PA_rememberRefBase\n",
                                "[FpBuilder::rememberRefBase]\n"}));
}

TEST(FpBuilder, WorksWithoutAMaster) {
  FpBuilder builder;
  { const BuilderDriver leaving(builder); }
  builder.onElement("fpt", {{"id", "e"}, {"idx", "1"}, {"key", "1"}});
  builder.onElementEnd("fpt");
  EXPECT_EQ(builder.getState(), FpBuilder::PS_Begin);
}

// A broken file may end anywhere.
TEST_F(FpBuilderTest, SurvivesAFileThatIsCutAnywhere) {
  const std::string xml =
      fpt("<inheriting><ref href='9FFFFF0000000000-3/fps'>UFPTb</ref></inheriting><f-nvs>"
          "<f-nv id='n' idx='1'><dir>input</dir><ref href='x/y'>SNVT_a</ref></f-nv></f-nvs>");
  LogCapture log(Logger::Silent);
  for (std::size_t length = 0; length < xml.size(); ++length) {
    SCOPED_TRACE(length);
    _builder.reset();
    EXPECT_FALSE(_driver.feed(xml.substr(0, length)));
  }
  EXPECT_TRUE(_driver.items.empty());
}

}  // namespace
}  // namespace zavri::korvat::builder
