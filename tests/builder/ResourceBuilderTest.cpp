#include "korvat/builder/ResourceBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/builder/ResourceTransitionTable.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/ResourceGroup.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/builder/TypeDump.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;
using test::TempCatalogue;
using Table = ResourceTransitionTable;
using Texts = std::vector<std::string>;

const std::string kFolder = "8000010128000000-4";

std::string ldrf(const std::string& content) {
  return "<ldrf>" + content + "</ldrf>";
}
std::string items(const std::string& content) {
  return "<items>" + content + "</items>";
}

// Lets a test reach what only the XML parser calls, and keeps the items for it.
class OpenResourceBuilder : public ResourceBuilder {
 public:
  using ResourceBuilder::getItemBuilder;
  using ResourceBuilder::getState;
  using ResourceBuilder::processAction;
  using ResourceBuilder::processEvent;
  using ResourceBuilder::ResourceBuilder;

  void addItem(std::unique_ptr<BaseType> item) override {
    itemBuilders.push_back(getItemBuilder());
    dumps += dumpType(*item);
  }

  std::vector<const ItemBuilder*> itemBuilders;  // that gave the items
  std::string dumps;                             // of the items
};

// Interferes when a "unit" asks for its string.
template <typename Interference>
class InterferingBuilder : public OpenResourceBuilder {
 public:
  InterferingBuilder(ResourceFileSet& fileSet, Interference interference)
      : OpenResourceBuilder(fileSet), _interference(interference) {}

  const std::string* lookupString(const std::string&) override {
    _interference(*this);
    return nullptr;
  }

 private:
  Interference _interference;
};

class ResourceBuilderTest : public testing::Test {
 protected:
  // Writes `xml` to a file and returns its path.
  std::string write(const std::string& xml) {
    _files.writeRaw(kFolder, "test", xml);
    return _files.path() + "/" + kFolder + "/test.xml";
  }

  bool load(const std::string& xml) { return _builder.load(write(xml), true); }

  // Dumps of all types that the file set takes from a file with these items, by name.
  std::string dumpGroup(ResourceType type, const std::string& file, const std::string& content) {
    _files.write(kFolder, file, content);
    const ResourceGroup* group = _fileSet.getGroup(type, true);
    if (group == nullptr) return "(no group)";
    std::string text;
    for (const auto& [name, item] : group->getTypesByName()) text += dumpType(*item);
    return text;
  }

  // Whether a string "u_1" of that file can be found afterwards.
  bool hasString(const std::string& xml, const std::string& id = "u_1") {
    EXPECT_TRUE(load(xml));
    return _builder.lookupString(id) != nullptr;
  }

  TempCatalogue _files;
  TypeManager _manager = _files.makeManager();
  ResourceFileSet _fileSet{&_manager, kFolder.c_str()};
  OpenResourceBuilder _builder{_fileSet};
};

// --- Passes ---

TEST_F(ResourceBuilderTest, BuildsTheItemsOfEveryKind) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(
      load(ldrf(items("<enumt id='e_t' idx='1'><members><e-member id='E'><value>1</value>"
                      "</e-member></members></enumt>"
                      "<nvt id='_n' idx='2'><size>1</size></nvt>"
                      "<cpt id='c' idx='3'><default>4</default></cpt>"
                      "<fpt id='f' idx='4' key='5'/>"))));
  EXPECT_EQ(_builder.dumps,
            "enum e_t 1\nnv _n 2 size 1\ncp c 3 size 0 default '4'\nfp f 4 key 5\n");
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(ResourceBuilderTest, FindsAStringThatIsDefinedBehindTheItem) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(load(ldrf(items("<nvt id='_n' idx='2'><scalar/><unit id='u_1'/></nvt>") +
                        "<strings><string id='u_1'>percent</string></strings>")));
  EXPECT_EQ(_builder.dumps, "nv _n 2 size 0\nScalar '' [unit percent]\n");
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(ResourceBuilderTest, LoadsAFileOfStringsOnly) {
  EXPECT_TRUE(load(ldrf("<strings><string id='u_1'>percent</string></strings>")));
  EXPECT_TRUE(_builder.itemBuilders.empty());
  ASSERT_NE(_builder.lookupString("u_1"), nullptr);
  EXPECT_EQ(*_builder.lookupString("u_1"), "percent");
}

TEST_F(ResourceBuilderTest, KeepsTheLaterTextOfAStringId) {
  EXPECT_TRUE(
      load(ldrf("<strings><string id='u_1'>a</string><string id='u_1'>b</string></strings>"
                "<strings><string id='u_2'>c</string><string id='u_2'/></strings>")));
  EXPECT_EQ(*_builder.lookupString("u_1"), "b");
  EXPECT_EQ(*_builder.lookupString("u_2"), "c");  // an empty element has no text
}

TEST_F(ResourceBuilderTest, KeepsAStringWithoutIdUnderTheEmptyId) {
  EXPECT_TRUE(
      load(ldrf("<strings><string id='u_1'>a</string><string name='u_2'>b</string>"
                "</strings>")));
  EXPECT_EQ(*_builder.lookupString("u_1"), "a");
  ASSERT_NE(_builder.lookupString(""), nullptr);
  EXPECT_EQ(*_builder.lookupString(""), "b");
  EXPECT_EQ(_builder.lookupString("u_2"), nullptr);
}

TEST_F(ResourceBuilderTest, ForgetsTheStringsOfAnEarlierFile) {
  EXPECT_TRUE(hasString(ldrf("<strings><string id='u_1'>a</string></strings>")));
  EXPECT_FALSE(hasString(ldrf("<strings><string id='u_2'>a</string></strings>")));
}

TEST_F(ResourceBuilderTest, LoadsSeveralFilesOneAfterTheOther) {
  EXPECT_TRUE(load(ldrf(items("<nvt id='_a' idx='1'/>"))));
  EXPECT_FALSE(_builder.load("no such file", false));
  EXPECT_TRUE(load(ldrf(items("<nvt id='_b' idx='2'/>"))));
  EXPECT_EQ(_builder.dumps, "nv _a 1 size 0\nnv _b 2 size 0\n");
}

struct StringsCase {
  std::string name;
  std::string content;
  bool isCollected;
};

// The rule is the same whether the steps are traced or not.
class CollectedStrings : public ResourceBuilderTest,
                         public testing::WithParamInterface<StringsCase> {};

TEST_P(CollectedStrings, DependOnTheItemBeforeThem) {
  LogCapture log(Logger::Silent);
  EXPECT_EQ(hasString(ldrf(GetParam().content)), GetParam().isCollected);
}

TEST_P(CollectedStrings, DependOnTheItemBeforeThemWhenTraced) {
  LogCapture log(Logger::Trace);
  EXPECT_EQ(hasString(ldrf(GetParam().content)), GetParam().isCollected);
}

const std::string kStrings = "<strings><string id='u_1'>percent</string></strings>";
const std::string kEnum = "<enumt id='e_t' idx='1'><members/></enumt>";
const std::string kNv = "<nvt id='_n' idx='2'><scalar/></nvt>";

const std::vector<StringsCase> kStringsCases = {
    {"BeforeTheItems", kStrings + items(kEnum), true},
    {"BehindAnEnumeration", items(kEnum) + kStrings, false},
    {"BehindAVariable", items(kNv) + kStrings, true},
    {"BehindAProperty", items("<cpt id='c' idx='1'/>") + kStrings, true},
    {"BehindAProfile", items("<fpt id='f' idx='1'/>") + kStrings, true},
    {"BehindAnEnumerationAndAVariable", items(kEnum + kNv) + kStrings, true},
    {"BehindAVariableAndAnEnumeration", items(kNv + kEnum) + kStrings, false},
    {"BehindNoItem", items("") + kStrings, true},
    {"BehindAVariableWithAnEnumeration",
     items("<nvt id='_n' idx='2'><enum><ref>e_t</ref></enum><size>1</size></nvt>") + kStrings,
     true},
    {"BehindAnEnumerationThatHoldsAnEnumElement",
     items("<enumt id='e_t' idx='1'><refs><enum/></refs></enumt>") + kStrings, true},
    {"InsideOfAnItem", items("<nvt id='_n' idx='2'>" + kStrings + "</nvt>"), false},
    {"InsideOfItems", items(kStrings), false},
    {"InsideOfControl", "<control>" + kStrings + "</control>", false},
    {"InAnUnknownElement", "<extension>" + kStrings + "</extension>", true},
};
INSTANTIATE_TEST_SUITE_P(ResourceBuilder, CollectedStrings, testing::ValuesIn(kStringsCases),
                         [](const auto& info) { return info.param.name; });

// --- Items ---

TEST_F(ResourceBuilderTest, UsesOneItemBuilderForItemsOfOneKind) {
  EXPECT_TRUE(load(ldrf(items("<nvt id='_a' idx='1'/><nvt id='_b' idx='2'/>"))));
  ASSERT_EQ(_builder.itemBuilders.size(), 2u);
  EXPECT_NE(_builder.itemBuilders[0], nullptr);
  EXPECT_EQ(_builder.itemBuilders[0], _builder.itemBuilders[1]);
}

TEST_F(ResourceBuilderTest, MakesAnotherItemBuilderWhenTheKindChanges) {
  EXPECT_TRUE(load(ldrf(items("<nvt id='_a' idx='1'/><cpt id='b' idx='2'/>"))));
  ASSERT_EQ(_builder.itemBuilders.size(), 2u);
  EXPECT_NE(_builder.itemBuilders[0], _builder.itemBuilders[1]);
  EXPECT_EQ(_builder.dumps, "nv _a 1 size 0\ncp b 2 size 0 default ''\n");
}

TEST_F(ResourceBuilderTest, GivesTheNameOfTheFileSetToTheItemBuilder) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(
      load(ldrf(items("<nvt id='_a' idx='1'><scalar><nc-type>word</nc-type></scalar></nvt>"
                      "<nvt id='_b' idx='2'><ref>UNVT_a</ref></nvt>"))));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[VarBuilder][8000010128000000-4] invalid nc-type (word) for Scalar\n"});
  EXPECT_EQ(_builder.dumps,
            "nv _a 1 size 0\nScalar ''\nnv _b 2 size 0\nRef nv 8000010128000000-4 _a\n");
}

TEST_F(ResourceBuilderTest, BuildsProfilesAmongOtherItems) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(
      load(ldrf(items("<nvt id='_a' idx='1'/>"
                      "<fpt id='SFPTf' idx='2' key='3'><f-nvs><f-nv id='n' idx='1'>"
                      "<ref>SNVT_a</ref></f-nv></f-nvs></fpt>"
                      "<fpt id='g' idx='3' key='4'/>"
                      "<nvt id='_b' idx='4'/>"))));
  EXPECT_EQ(_builder.dumps,
            "nv _a 1 size 0\n"
            "fp f 2 key 3\n  nv 1 n output 0000000000000000-0/SNVT_a\n"
            "fp g 3 key 4\n"
            "nv _b 4 size 0\n");
  EXPECT_EQ(log.texts(), Texts{});
  ASSERT_EQ(_builder.itemBuilders.size(), 4u);
  EXPECT_EQ(_builder.itemBuilders[1], _builder.itemBuilders[2]);
}

TEST_F(ResourceBuilderTest, GivesTheItemsToTheGroupOfTheirKind) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(dumpGroup(ResourceType::Enum, "enums", "<enumt id='e_t' idx='1'/>"), "enum e_t 1\n");
  EXPECT_EQ(dumpGroup(ResourceType::Nv, "nvs", "<nvt id='_n' idx='2'/>"), "nv _n 2 size 0\n");
  EXPECT_EQ(dumpGroup(ResourceType::Cp, "cps", "<cpt id='c' idx='3'/>"),
            "cp c 3 size 0 default ''\n");
  EXPECT_EQ(dumpGroup(ResourceType::Fp, "fps", "<fpt id='SFPTf' idx='4' key='5'/>"),
            "fp f 4 key 5\n");
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(ResourceBuilderTest, WarnsWhenTheFileSetRefusesAnItem) {
  LogCapture log(Logger::Warning);
  EXPECT_EQ(dumpGroup(ResourceType::Nv, "nvs", "<nvt id='' idx='1'/><nvt id='_b' idx='2'/>"),
            "nv _b 2 size 0\n");
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[ResourceBuilder::onItemBuildDone]\n"});
}

TEST_F(ResourceBuilderTest, WarnsWhenThereIsNoGroupForAnItem) {
  ResourceBuilder builder(_fileSet);
  const std::string path = write(ldrf(items("<nvt id='_a' idx='1'/>")));
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(builder.load(path, true));
  EXPECT_EQ(log.texts(Logger::Warning), Texts{"[ResourceBuilder::onItemBuildDone]\n"});
}

TEST_F(ResourceBuilderTest, AddsNoItemThatIsNone) {
  ResourceBuilder builder(_fileSet);
  LogCapture log;
  builder.addItem(nullptr);
  EXPECT_EQ(log.texts(), Texts{"[ResourceBuilder::addItem] (null)\n"});
}

TEST_F(ResourceBuilderTest, GoesOnWithTheNextItemAfterOneWithoutAttributes) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(load(ldrf(items("<nvt/><nvt id='_b' idx='2'/>"))));
  EXPECT_EQ(log.texts(Logger::Warning), (Texts{"[ItemBuilder] missing attribute 'id' in item\n",
                                               "[ItemBuilder] missing attribute 'idx' in item\n"}));
  EXPECT_EQ(_builder.dumps, "nv  -1 size 0\nnv _b 2 size 0\n");
}

TEST_F(ResourceBuilderTest, IgnoresUnknownAndMisplacedElements) {
  LogCapture log(Logger::Warning);
  EXPECT_TRUE(
      load("<ldrf><about><folder>x</folder></about><nvt id='_out' idx='9'/>"
           "<items><group><nvt id='_a' idx='1'/></group><string id='s'>t</string></items>"
           "<ldrf/></ldrf>"));
  EXPECT_EQ(_builder.dumps, "nv _a 1 size 0\n");
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(ResourceBuilderTest, LoadsADocumentOfAnotherKindAsAnEmptyOne) {
  EXPECT_TRUE(load("<html><items><nvt id='_a' idx='1'/></items></html>"));
  EXPECT_EQ(_builder.dumps, "");
}

// --- Failures ---

TEST_F(ResourceBuilderTest, FailsInSilenceForAMissingFileUnlessAskedToWarn) {
  LogCapture log(Logger::Debug);
  EXPECT_FALSE(_builder.load("no/such/file.xml", false));
  EXPECT_EQ(log.texts(), Texts{});
}

TEST_F(ResourceBuilderTest, WarnsOfAMissingFileWhenAsked) {
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(_builder.load("no/such/file.xml", true));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[ResourceBuilder][M_CollectStrings] cannot load 'no/such/file.xml'\n"});
}

TEST_F(ResourceBuilderTest, FailsInTheFirstPassForBrokenXml) {
  const std::string path = write("<ldrf><items><nvt id='_a' idx='1'></nvt>");
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(_builder.load(path, false));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[ResourceBuilder][M_CollectStrings] could not parse file '" + path + "'\n"});
  EXPECT_EQ(_builder.dumps, "");  // nothing was built
}

TEST_F(ResourceBuilderTest, FailsForAnEmptyFileAndForAFolder) {
  const std::string path = write("");
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(_builder.load(path, true));
  EXPECT_FALSE(_builder.load(_files.path(), true));
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"[ResourceBuilder][M_CollectStrings] could not parse file '" + path + "'\n",
                   "[ResourceBuilder][M_CollectStrings] could not parse file '" + _files.path() +
                       "'\n"}));
}

const std::string kItemThenUnit =
    "<ldrf><items><nvt id='_a' idx='1'/><nvt id='_b' idx='2'><scalar/><unit id='u'/></nvt>"
    "<nvt id='_c' idx='3'/></items></ldrf>";

TEST_F(ResourceBuilderTest, KeepsTheItemsBeforeASecondRootAndFails) {
  const std::string path =
      write(ldrf(items("<nvt id='_a' idx='1'/><nvt id='_b' idx='2'><scalar/><scalar/></nvt>"
                       "<nvt id='_c' idx='3'/>")));
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(_builder.load(path, true));
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"illegal xml while parsing type=_b ix=2\n",
                   "[ResourceBuilder][M_BuildResources] exception while parsing file '" + path +
                       "': illegal state\n"}));
  EXPECT_EQ(_builder.dumps, "nv _a 1 size 0\n");

  EXPECT_TRUE(load(ldrf(items("<nvt id='_d' idx='4'/>"))));  // nothing is left of the failure
  EXPECT_EQ(_builder.dumps, "nv _a 1 size 0\nnv _d 4 size 0\n");
}

TEST_F(ResourceBuilderTest, FailsForAStandardException) {
  const std::string path = write(kItemThenUnit);
  InterferingBuilder builder(_fileSet, [](auto&) { throw std::runtime_error("out of luck"); });
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(builder.load(path, true));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[ResourceBuilder][M_BuildResources] std-exception while parsing file '" + path +
                  "': out of luck\n"});
  EXPECT_EQ(builder.dumps, "nv _a 1 size 0\n");
}

TEST_F(ResourceBuilderTest, FailsForAnUnknownException) {
  const std::string path = write(kItemThenUnit);
  InterferingBuilder builder(_fileSet, [](auto&) { throw 42; });
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(builder.load(path, true));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[ResourceBuilder][M_BuildResources] unknown exception while parsing file '" +
                  path + "'\n"});
  EXPECT_EQ(builder.dumps, "nv _a 1 size 0\n");
}

TEST_F(ResourceBuilderTest, FailsWhenTheParseIsStopped) {
  const std::string path = write(kItemThenUnit);
  LogCapture log(Logger::Warning);
  InterferingBuilder builder(_fileSet, [&](OpenResourceBuilder& self) {
    self.processAction(Table::PA_checkDone, nullptr, nullptr);
  });
  EXPECT_FALSE(builder.load(path, true));
  EXPECT_TRUE(
      log.contains(Logger::Warning,
                   "[ResourceBuilder][M_BuildResources] could not parse file '" + path + "'\n"));
  EXPECT_EQ(builder.dumps, "nv _a 1 size 0\n");
}

// --- Events ---

TEST_F(ResourceBuilderTest, FollowsItsTable) {
  // The events that lead to each state.
  const std::vector<std::vector<std::uint32_t>> ways = {
      {},
      {Table::PE_ldrf},
      {Table::PE_ldrf, Table::PE_control},
      {Table::PE_ldrf, Table::PE_items},
      {Table::PE_ldrf, Table::PE_items, Table::PE_nvt},
      {Table::PE_ldrf, Table::PE_strings},
      {Table::PE_ldrf, Table::PE_strings, Table::PE_string},
      {Table::PE_ldrf, Table::PE_ldrf_end},
  };
  for (std::uint32_t state = 0; state < ways.size(); ++state) {
    for (std::uint32_t event = 0; event <= Table::PE_ldrf_end + 1; ++event) {
      SCOPED_TRACE(std::string(Table::stateName(state)) + " " + Table::eventName(event));
      OpenResourceBuilder builder(_fileSet);
      for (const std::uint32_t step : ways[state]) builder.processEvent(step, nullptr, nullptr);
      ASSERT_EQ(builder.getState(), state);

      builder.processEvent(event, nullptr, nullptr);
      const Transition* row = findTransition(Table::kTransitions, state, event);
      EXPECT_EQ(builder.getState(), row == nullptr ? state : row->nextState);
    }
  }
}

TEST_F(ResourceBuilderTest, NamesItsPasses) {
  EXPECT_STREQ(ResourceBuilder::modeName(0), "M_CollectStrings");
  EXPECT_STREQ(ResourceBuilder::modeName(1), "M_BuildResources");
  EXPECT_STREQ(ResourceBuilder::modeName(2), "(unknown)");
}

TEST_F(ResourceBuilderTest, SetsAStringIdOnlyFromAttributes) {
  LogCapture log;
  _builder.processAction(Table::PA_setActStringId, nullptr, nullptr);
  _builder.processAction(Table::PA_addToDictionary, nullptr, nullptr);
  EXPECT_EQ(log.texts(), (Texts{"[ResourceBuilder::setActStringId]\n",
                                "[ResourceBuilder::addToDictionary] '' -> '(null)'\n"}));
  EXPECT_EQ(_builder.lookupString(""), nullptr);
}

TEST_F(ResourceBuilderTest, MakesNoItemBuilderWithoutAttributes) {
  ASSERT_TRUE(load(ldrf("")));  // the pass that builds is the last one
  LogCapture log;
  _builder.processAction(Table::PA_handleEnum, nullptr, nullptr);
  _builder.processAction(Table::PA_handleNv, nullptr, nullptr);
  _builder.processAction(Table::PA_handleCp, nullptr, nullptr);
  _builder.processAction(Table::PA_handleFp, nullptr, nullptr);
  EXPECT_EQ(log.texts(), (Texts{"[ResourceBuilder::handleEnum]\n", "[ResourceBuilder::handleNv]\n",
                                "[ResourceBuilder::handleCp]\n", "[ResourceBuilder::handleFp]\n"}));
  EXPECT_EQ(_builder.getItemBuilder(), nullptr);
}

// --- Traces ---

TEST_F(ResourceBuilderTest, TracesEachStepOfBothPasses) {
  const std::string path = write(
      "<ldrf><control><folder>f</folder></control>"
      "<strings><string id='u'>t</string></strings></ldrf>");
  LogCapture log;
  ASSERT_TRUE(_builder.load(path, true));
  const auto elements = [](bool isBuilding) {
    Texts texts = {
        "<ldrf>  ==> PE_ldrf  (PS_Begin)\n",
        "[ResourceBuilder::processEvent] PE_ldrf value=(null)\n",
        "<control>  ==> PE_control  (PS_Top)\n",
        "[ResourceBuilder::processEvent] PE_control value=(null)\n",
        "<folder>  ==> PE_None  (PS_Control)\n",
        "[ResourceBuilder::onValue] element=<folder> value='f'\n",
        "[ResourceBuilder::processEvent] PE_folder_value value=f\n",
    };
    if (isBuilding) texts.push_back("[ResourceBuilder::setFolderValue] f\n");
    for (const char* text : {
             "</folder>  ==> PE_None  (PS_Control)\n",
             "</control>  ==> PE_control_end  (PS_Control)\n",
             "[ResourceBuilder::processEvent] PE_control_end value=(null)\n",
             "<strings>  ==> PE_strings  (PS_Top)\n",
             "[ResourceBuilder::processEvent] PE_strings value=(null)\n",
             "<string>  ==> PE_string  (PS_Strings)\n",
             "[ResourceBuilder::processEvent] PE_string value=(null)\n",
         }) {
      texts.push_back(text);
    }
    if (!isBuilding) texts.push_back("[ResourceBuilder::setActStringId]\n");
    texts.push_back("[ResourceBuilder::onValue] element=<string> value='t'\n");
    texts.push_back("[ResourceBuilder::processEvent] PE_string_value value=t\n");
    if (!isBuilding) texts.push_back("[ResourceBuilder::addToDictionary] 'u' -> 't'\n");
    for (const char* text : {
             "</string>  ==> PE_string_end  (PS_InString)\n",
             "[ResourceBuilder::processEvent] PE_string_end value=(null)\n",
             "</strings>  ==> PE_strings_end  (PS_Strings)\n",
             "[ResourceBuilder::processEvent] PE_strings_end value=(null)\n",
             "</ldrf>  ==> PE_ldrf_end  (PS_Top)\n",
             "[ResourceBuilder::processEvent] PE_ldrf_end value=(null)\n",
         }) {
      texts.push_back(text);
    }
    if (isBuilding) texts.push_back("[ResourceBuilder::verify]\n");
    return texts;
  };

  Texts expected = {"[ResourceBuilder::load] " + path + "\n",
                    "[ResourceBuilder::load][M_CollectStrings] " + path + "\n"};
  for (const std::string& text : elements(false)) expected.push_back(text);
  expected.push_back("[ResourceBuilder::load][M_BuildResources] " + path + "\n");
  for (const std::string& text : elements(true)) expected.push_back(text);
  EXPECT_EQ(log.texts(Logger::Trace), expected);
  EXPECT_EQ(log.lines().size(), expected.size());
}

TEST_F(ResourceBuilderTest, TracesElementsInsideItemsWhileItCollects) {
  const std::string path = write(ldrf(items("<nvt id='_a' idx='1'><size>1</size></nvt>")));
  LogCapture log;
  ASSERT_TRUE(_builder.load(path, true));
  const Texts texts = log.texts(Logger::Trace);
  const Texts expected = {
      "<nvt>  ==> PE_nvt  (PS_Items)\n",
      "[ResourceBuilder::processEvent] PE_nvt value=(null)\n",
      "<size>  ==> PE_None  (PS_InItem)\n",
      "[ResourceBuilder::onValue] element=<size> value='1'\n",
      "[ResourceBuilder::processEvent] PE_None value=1\n",
      "</size>  ==> PE_None  (PS_InItem)\n",
      "</nvt>  ==> PE_item_end  (PS_InItem)\n",
      "[ResourceBuilder::processEvent] PE_item_end value=(null)\n",
  };
  EXPECT_NE(std::search(texts.begin(), texts.end(), expected.begin(), expected.end()), texts.end());
}

TEST_F(ResourceBuilderTest, TracesTheHandlingOfAnItem) {
  const std::string path =
      write(ldrf(items("<nvt id='_a' idx='1'><refs/><unit id='u'/></nvt><cpt id='b' idx='2'/>"
                       "<enumt id='c_t' idx='3'/><fpt id='d' idx='4'/>")));
  ResourceBuilder builder(_fileSet);
  LogCapture log;
  ASSERT_TRUE(builder.load(path, true));
  for (const char* text :
       {"[ResourceBuilder::handleNv]\n", "[ResourceBuilder::handleCp]\n",
        "[ResourceBuilder::handleEnum]\n", "[ResourceBuilder::handleFp]\n",
        "[ResourceBuilder::skipElement]\n", "[ResourceBuilder::lookupString] 'u'\n",
        "[ResourceBuilder::addItem] _a\n", "[ResourceBuilder::addItem] b\n",
        "[ResourceBuilder::addItem] c_t\n", "[ResourceBuilder::addItem] d\n",
        "[ResourceBuilder::onItemBuildDone]\n"}) {
    EXPECT_TRUE(log.contains(Logger::Trace, text)) << text;
  }

  const Texts texts = log.texts();
  const Texts done = {"[VarBuilder::callDone]\n", "[ResourceBuilder::addItem] _a\n",
                      "[ResourceBuilder::onItemBuildDone]\n",  // the warning: no group takes it
                      "[ResourceBuilder::onItemBuildDone]\n",
                      "[ResourceBuilder::processEvent] PE_item_end value=(null)\n"};
  EXPECT_NE(std::search(texts.begin(), texts.end(), done.begin(), done.end()), texts.end());
}

TEST_F(ResourceBuilderTest, TracesThatAParseIsStopped) {
  LogCapture log;
  _builder.processAction(Table::PA_checkDone, nullptr, nullptr);
  EXPECT_EQ(log.texts(), Texts{"[ResourceBuilder::checkDone]\n"});
}

// --- Hostile files ---

TEST_F(ResourceBuilderTest, FailsBeyondTheDepthOfElements) {
  std::string xml;
  for (int i = 0; i < 100; ++i) xml += "<member><aggregate cat='struct'><members>";
  const std::string path = write(ldrf(items("<nvt id='_a' idx='1'>" + xml)));
  LogCapture log(Logger::Warning);
  EXPECT_FALSE(_builder.load(path, true));
  EXPECT_EQ(log.texts(Logger::Warning),
            Texts{"[ResourceBuilder][M_CollectStrings] could not parse file '" + path + "'\n"});
}

TEST_F(ResourceBuilderTest, SurvivesAFileThatIsCutAnywhere) {
  const std::string xml = ldrf(
      "<strings><string id='u'>t</string></strings>" +
      items("<enumt id='e_t' idx='1'><members><e-member id='E'><value>1</value></e-member>"
            "</members></enumt><nvt id='_a' idx='1'><p-name>SNVT_a</p-name>"
            "<aggregate cat='union'><members><member><scalar><scaling><a>1</a></scaling></scalar>"
            "<p-name>x</p-name><unit id='u'/></member></members></aggregate>"
            "<formats><format id='SNVT_a'>text()</format></formats></nvt>"));
  LogCapture log(Logger::Error);
  for (std::size_t size = 0; size < xml.size(); ++size) {
    EXPECT_FALSE(load(xml.substr(0, size))) << size;
  }
  EXPECT_TRUE(load(xml));
}

}  // namespace
}  // namespace zavri::korvat::builder
