#include "korvat/types/ResourceFileSet.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/members/MemAggregate.h"
#include "korvat/types/CpType.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/NvType.h"
#include "korvat/types/ResourceGroupFp.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::LogCapture;
using test::TempCatalogue;
using testing::ElementsAre;
using testing::IsEmpty;

const auto rowName = [](const auto& info) { return info.param.name; };

constexpr ResourceType kAllTypes[] = {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp,
                                      ResourceType::Fp};
constexpr const char* kUserFolder = "9FFFFF0000000000-3";

// --- Construction ---

TEST(ResourceFileSet, AnnouncesItsFolder) {
  const TypeManager manager("drv");
  LogCapture log;
  const ResourceFileSet fileSet(&manager, "some-folder");
  EXPECT_EQ(fileSet.getFolder(), "some-folder");
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Debug);
  EXPECT_EQ(log.lines()[0].text, "[ResourceFileSet::ResourceFileSet] folder: some-folder\n");
}

TEST(ResourceFileSet, IsSilentBelowTheDebugLevel) {
  const TypeManager manager("drv");
  LogCapture log(Logger::Info);
  const ResourceFileSet fileSet(&manager, "some-folder");
  ResourceFileSet::locateFolder("/nowhere", "some-folder");
  EXPECT_THAT(log.texts(), IsEmpty());
}

// --- Folder location ---

struct FolderCase {
  std::string name;
  std::vector<std::string> folders;
  std::string prefix;
  std::string located;  // empty: none, the prefix itself is used
};
class LocateFolder : public testing::TestWithParam<FolderCase> {};

TEST_P(LocateFolder, FindsTheFolderOfAPrefix) {
  const FolderCase& c = GetParam();
  const TempCatalogue files;
  for (const std::string& folder : c.folders) {
    ASSERT_TRUE(std::filesystem::create_directory(files.path() + "/" + folder));
  }
  LogCapture log;
  EXPECT_EQ(ResourceFileSet::locateFolder(files.path(), c.prefix),
            c.located.empty() ? c.prefix : c.located);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Debug);
  EXPECT_EQ(log.lines()[0].text, "[ResourceFileSet::locateFolder] baseDir='" + files.path() +
                                     "' prefix='" + c.prefix + "' ==> '" + c.located + "'\n");
}

INSTANTIATE_TEST_SUITE_P(
    Prefixes, LocateFolder,
    testing::ValuesIn(std::vector<FolderCase>{
        {"Exact", {"9FFFFF0000000000-3"}, "9FFFFF0000000000-3", "9FFFFF0000000000-3"},
        {"OtherCase", {"9fffff0000000000-3"}, "9FFFFF0000000000-3", "9fffff0000000000-3"},
        {"OtherScope", {"9FFFFF0000000000-3"}, "9FFFFF0000000000-4", ""},
        {"Nothing", {}, "9FFFFF0501238500-5", ""},
        {"Empty", {"9FFFFF0000000000-3"}, "", ""},
        {"Scope5Bit7", {"9FFFFF0501A38500-5"}, "9FFFFF0501238500-5", "9FFFFF0501A38500-5"},
        {"Scope5Bit6", {"9FFFFF0501638500-5"}, "9FFFFF0501238500-5", "9FFFFF0501638500-5"},
        {"Scope5BothBits", {"9FFFFF0501E38500-5"}, "9FFFFF0501238500-5", "9FFFFF0501E38500-5"},
        {"Scope2Bit7", {"9000000501A38500-2"}, "9000000501238500-2", "9000000501A38500-2"},
        {"Scope2Bit6", {"9000000501638500-2"}, "9000000501238500-2", "9000000501638500-2"},
        {"Scope2BothBits", {"9000000501E38500-2"}, "9000000501238500-2", "9000000501E38500-2"},
        {"Scope6Bit7", {"9FFFFF0501A38542-6"}, "9FFFFF0501238542-6", "9FFFFF0501A38542-6"},
        {"Scope6Bit6", {"9FFFFF0501638542-6"}, "9FFFFF0501238542-6", "9FFFFF0501638542-6"},
        {"Scope6BothBits", {"9FFFFF0501E38542-6"}, "9FFFFF0501238542-6", "9FFFFF0501E38542-6"},
        {"PlainBeforeVariants",
         {"9FFFFF0501A38500-5", "9FFFFF0501238500-5"},
         "9FFFFF0501238500-5",
         "9FFFFF0501238500-5"},
        {"Bit7BeforeBit6",
         {"9FFFFF0501E38500-5", "9FFFFF0501638500-5", "9FFFFF0501A38500-5"},
         "9FFFFF0501238500-5",
         "9FFFFF0501A38500-5"},
        {"Bit6BeforeBothBits",
         {"9FFFFF0501E38500-5", "9FFFFF0501638500-5"},
         "9FFFFF0501238500-5",
         "9FFFFF0501638500-5"},
        {"VariantInOtherCase", {"9fffff0501a38500-5"}, "9FFFFF0501238500-5", "9fffff0501a38500-5"},
        {"OtherUsage", {"9FFFFF0501A48500-5"}, "9FFFFF0501238500-5", ""},
        {"Scope0HasNoVariants", {"0000000000800000-0"}, "0000000000000000-0", ""},
        {"Scope1HasNoVariants", {"9000000501A30000-1"}, "9000000501230000-1", ""},
        {"Scope3HasNoVariants", {"9FFFFF0501A38500-3"}, "9FFFFF0501238500-3", ""},
        {"Scope4HasNoVariants", {"9FFFFF0501A38500-4"}, "9FFFFF0501238500-4", ""},
        {"Scope7HasNoVariants", {"9FFFFF0501A38500-7"}, "9FFFFF0501238500-7", ""},
        {"EighteenCharactersAreNeeded", {"9FFFFF0501A38500-"}, "9FFFFF0501238500-", ""},
        {"ShorterThanTheUsageByte", {"9FFFFF0501A"}, "9FFFFF05012", ""},
        {"TextBehindTheScope",
         {"9FFFFF0501A38500-5x"},
         "9FFFFF0501238500-5x",
         "9FFFFF0501A38500-5x"},
        {"NoUsageDigits", {"9FFFFF0501808500-5"}, "9FFFFF0501XY8500-5", ""},
        {"OneUsageDigit", {"9FFFFF0501828500-5"}, "9FFFFF05012Y8500-5", ""},
    }),
    rowName);

// --- Groups and files ---

// A set in a temporary folder and its manager.
class ResourceFileSetTest : public testing::Test {
 protected:
  // Makes a set for `folder`.
  std::unique_ptr<ResourceFileSet> makeSet(const std::string& folder = kUserFolder) {
    return std::make_unique<ResourceFileSet>(&_manager, folder.c_str());
  }

  // The message that announces the reading of a file.
  std::string loading(const std::string& type, const std::string& file,
                      const std::string& folder = kUserFolder) {
    return "[ResourceFileSet::loadResources][" + type + "] going to load " + _files.path() + "/" +
           folder + "/" + file + ".xml\n";
  }

  TempCatalogue _files;
  TypeManager _manager = _files.makeManager();
};

TEST_F(ResourceFileSetTest, LoadsEachGroupFromItsFile) {
  _files.write(kUserFolder, "enums", "<enumt id='a_t' idx='1'/>");
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  _files.write(kUserFolder, "cps", "<cpt id='a' idx='3'/>");
  _files.write(kUserFolder, "fps", "<fpt id='UFPTa' idx='4' key='20001'/>");
  const auto fileSet = makeSet();

  const ResourceGroup* enums = fileSet->getGroup(ResourceType::Enum, true);
  ASSERT_NE(enums, nullptr);
  EXPECT_NE(dynamic_cast<const TResourceGroup<EnumType>*>(enums), nullptr);
  EXPECT_NE(dynamic_cast<const EnumType*>(enums->getType("a_t")), nullptr);
  EXPECT_EQ(enums->getTypeByIndex(1), enums->getType("a_t"));
  EXPECT_EQ(enums->getFileSet(), fileSet.get());

  const ResourceGroup* nvs = fileSet->getGroup(ResourceType::Nv, true);
  ASSERT_NE(nvs, nullptr);
  EXPECT_NE(dynamic_cast<const TResourceGroup<NvType>*>(nvs), nullptr);
  EXPECT_NE(dynamic_cast<const NvType*>(nvs->getType("a")), nullptr);
  EXPECT_EQ(nvs->getTypeByIndex(2), nvs->getType("a"));

  const ResourceGroup* cps = fileSet->getGroup(ResourceType::Cp, true);
  ASSERT_NE(cps, nullptr);
  EXPECT_NE(dynamic_cast<const TResourceGroup<CpType>*>(cps), nullptr);
  EXPECT_NE(dynamic_cast<const CpType*>(cps->getType("a")), nullptr);
  EXPECT_EQ(cps->getTypeByIndex(3), cps->getType("a"));

  const ResourceGroup* fps = fileSet->getGroup(ResourceType::Fp, true);
  ASSERT_NE(fps, nullptr);
  const auto* byKey = dynamic_cast<const ResourceGroupFp*>(fps);
  ASSERT_NE(byKey, nullptr);
  EXPECT_NE(dynamic_cast<const FpType*>(fps->getType("a")), nullptr);
  EXPECT_EQ(fps->getTypeByIndex(4), fps->getType("a"));
  EXPECT_EQ(byKey->findByKey(20001), fps->getType("a"));
  EXPECT_EQ(fps->getFileSet(), fileSet.get());
}

TEST_F(ResourceFileSetTest, ReadsAFileWhenItsGroupIsAskedForFirst) {
  _files.write(kUserFolder, "enums", "<enumt id='a_t' idx='1'/>");
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  _files.write(kUserFolder, "cps", "<cpt id='a' idx='3'/>");
  _files.write(kUserFolder, "fps", "<fpt id='UFPTa' idx='4' key='20001'/>");
  LogCapture log(Logger::Debug);
  const auto fileSet = makeSet();
  EXPECT_THAT(log.texts(),
              ElementsAre("[ResourceFileSet::ResourceFileSet] folder: 9FFFFF0000000000-3\n"));

  log.clear();
  fileSet->getGroup(ResourceType::Cp, true);
  EXPECT_THAT(log.texts(), ElementsAre(loading("cp", "cps")));
  log.clear();
  fileSet->getGroup(ResourceType::Enum, true);
  EXPECT_THAT(log.texts(), ElementsAre(loading("enum", "enums")));
  log.clear();
  fileSet->getGroup(ResourceType::Nv, true);
  EXPECT_THAT(log.texts(), ElementsAre(loading("nv", "nvs")));
  log.clear();
  fileSet->getGroup(ResourceType::Fp, true);
  EXPECT_THAT(log.texts(), ElementsAre(loading("fp", "fps")));
}

TEST_F(ResourceFileSetTest, ReadsAFileOnce) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const auto fileSet = makeSet();
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, true);
  ASSERT_NE(group, nullptr);
  const BaseType* type = group->getType("a");

  std::filesystem::remove_all(_files.path() + "/" + kUserFolder);
  LogCapture log;
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, true), group);
  EXPECT_EQ(group->getType("a"), type);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceFileSetTest, FindsFilesThatAreWrittenAfterItWasMade) {
  const auto fileSet = makeSet();
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, true);
  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->getType("a"), nullptr);
}

TEST_F(ResourceFileSetTest, HasNoGroupOfAnInvalidType) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const auto fileSet = makeSet();
  LogCapture log;
  EXPECT_EQ(fileSet->getGroup(ResourceType::Invalid, true), nullptr);
  EXPECT_EQ(fileSet->getGroup(static_cast<ResourceType>(9), true), nullptr);
  EXPECT_EQ(fileSet->getGroup(static_cast<ResourceType>(-1), true), nullptr);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceFileSetTest, WithAnEmptyFolderReadsNothing) {
  const auto fileSet = makeSet("");
  LogCapture log;
  for (const ResourceType type : kAllTypes) {
    EXPECT_EQ(fileSet->getGroup(type, true), nullptr) << resourceTypeName(type);
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceFileSetTest, WarnsAboutAMissingFileWhenAsked) {
  const auto fileSet = makeSet();
  LogCapture log(Logger::Warning);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Enum, true), nullptr);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Warning);
  EXPECT_EQ(log.lines()[0].text, "[ResourceBuilder][M_CollectStrings] cannot load '" +
                                     _files.path() + "/9FFFFF0000000000-3/enums.xml'\n");
}

TEST_F(ResourceFileSetTest, IsSilentAboutAMissingFileOtherwise) {
  const auto fileSet = makeSet();
  LogCapture log(Logger::Warning);
  for (const ResourceType type : kAllTypes) {
    EXPECT_EQ(fileSet->getGroup(type, false), nullptr) << resourceTypeName(type);
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(ResourceFileSetTest, TriesAMissingFileAgain) {
  const auto fileSet = makeSet();
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, false), nullptr);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, false), nullptr);
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, false);
  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->getType("a"), nullptr);
}

// --- Broken files ---

TEST_F(ResourceFileSetTest, FailsToLoadAFileThatIsBrokenInItsMiddle) {
  _files.writeRaw(kUserFolder, "enums",
                  "<ldrf><items><enumt id='a_t' idx='1'><members/></enumt><enumt id='b_t'");
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const auto fileSet = makeSet();

  LogCapture log(Logger::Warning);
  const std::string message = "[ResourceBuilder][M_CollectStrings] could not parse file '" +
                              _files.path() + "/9FFFFF0000000000-3/enums.xml'\n";
  EXPECT_EQ(fileSet->getGroup(ResourceType::Enum, false), nullptr);
  EXPECT_THAT(log.texts(Logger::Warning), ElementsAre(message));
  EXPECT_NE(fileSet->getGroup(ResourceType::Nv, true), nullptr);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Enum, false), nullptr);
  EXPECT_THAT(log.texts(Logger::Warning), ElementsAre(message, message));
}

TEST_F(ResourceFileSetTest, LoadsAFileThatWasRepaired) {
  const std::string twoRoots = test::scalar("float") + test::scalar("float");
  _files.write(kUserFolder, "nvs", test::nvt("good", "") + test::nvt("bad", twoRoots));
  const auto fileSet = makeSet();
  LogCapture log(Logger::Warning);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, true), nullptr);
  EXPECT_TRUE(log.contains(Logger::Warning,
                           "[ResourceBuilder][M_BuildResources] exception while parsing file '" +
                               _files.path() + "/9FFFFF0000000000-3/nvs.xml': illegal state\n"));

  _files.write(kUserFolder, "nvs", test::nvt("late", ""));
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, true);
  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->getType("late"), nullptr);
  EXPECT_EQ(group->getType("good"), nullptr);  // of the file that failed
}

// --- Where the files are ---

TEST_F(ResourceFileSetTest, ReadsBelowTheBaseFolder) {
  _manager.setBaseDir("/opt/t");
  const auto fileSet = makeSet("F");
  LogCapture log(Logger::Debug);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, false), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre("[ResourceFileSet::loadResources][nv] going to load "
                                       "/opt/t/F/nvs.xml\n"));
}

TEST_F(ResourceFileSetTest, ReadsBelowTheDefaultFolderWithoutABaseFolder) {
  _manager.setBaseDir("");
  const auto fileSet = makeSet("F");
  LogCapture log(Logger::Debug);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, false), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre("[ResourceFileSet::loadResources][nv] going to load "
                                       "res/korvat/F/nvs.xml\n"));
}

TEST_F(ResourceFileSetTest, StaysWhereItWasMade) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const auto fileSet = makeSet();
  _manager.setBaseDir("/opt/t");
  EXPECT_NE(fileSet->getGroup(ResourceType::Nv, true), nullptr);
}

TEST_F(ResourceFileSetTest, OutlivesTheManagerItWasMadeFor) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  auto manager = std::make_unique<TypeManager>(_files.makeManager());
  ResourceFileSet fileSet(manager.get(), kUserFolder);
  manager.reset();
  EXPECT_NE(fileSet.getGroup(ResourceType::Nv, true), nullptr);
}

// --- Identifiers ---

struct OwnPrefixCase {
  std::string name;
  std::string folder;
  std::string enumId;
  std::string nvId;
  std::string cpId;
  std::string fpId;
};
class OwnPrefix : public ResourceFileSetTest, public testing::WithParamInterface<OwnPrefixCase> {};

TEST_P(OwnPrefix, IsThatOfTheFolder) {
  const OwnPrefixCase& c = GetParam();
  _files.write(c.folder, "enums", "<enumt id='a_t' idx='1'/>");
  _files.write(c.folder, "nvs", "<nvt id='a' idx='2'/>");
  _files.write(c.folder, "cps", "<cpt id='a' idx='3'/>");
  _files.write(c.folder, "fps", "<fpt id='a' idx='4' key='5'/>");
  const auto fileSet = makeSet(c.folder);
  const auto idOf = [&](ResourceType type, const std::string& name) {
    return fileSet->getGroup(type, true)->getType(name)->getTypeId().toString();
  };
  EXPECT_EQ(idOf(ResourceType::Enum, "a_t"), c.enumId);
  EXPECT_EQ(idOf(ResourceType::Nv, "a"), c.nvId);
  EXPECT_EQ(idOf(ResourceType::Cp, "a"), c.cpId);
  EXPECT_EQ(idOf(ResourceType::Fp, "a"), c.fpId);
}

INSTANTIATE_TEST_SUITE_P(
    Folders, OwnPrefix,
    testing::ValuesIn(std::vector<OwnPrefixCase>{
        {"Standard", "0000000000000000-0", "0000000000000000-0/a_t", "0000000000000000-0/SNVTa",
         "0000000000000000-0/SCPTa", "0000000000000000-0/SFPTa"},
        {"User", "9FFFFF0000000000-3", "9FFFFF0000000000-3/a_t", "9FFFFF0000000000-3/UNVTa",
         "9FFFFF0000000000-3/UCPTa", "9FFFFF0000000000-3/UFPTa"},
        {"UserInLowerCase", "9fffff0000000000-3", "9FFFFF0000000000-3/a_t",
         "9FFFFF0000000000-3/UNVTa", "9FFFFF0000000000-3/UCPTa", "9FFFFF0000000000-3/UFPTa"},
        {"UsageVariant", "9FFFFF0501A38542-6", "9FFFFF0501238542-6/a_t", "9FFFFF0501238542-6/UNVTa",
         "9FFFFF0501238542-6/UCPTa", "9FFFFF0501238542-6/UFPTa"},
        {"NoPrefix", "mine", "0000000000000000-0/a_t", "0000000000000000-0/SNVTa",
         "0000000000000000-0/SCPTa", "0000000000000000-0/SFPTa"},
        {"BadScope", "9FFFFF0000000000-8", "0000000000000000-0/a_t", "0000000000000000-0/SNVTa",
         "0000000000000000-0/SCPTa", "0000000000000000-0/SFPTa"},
    }),
    rowName);

// --- Taking types ---

TEST_F(ResourceFileSetTest, TakesNoTypeOutsideOfALoad) {
  _files.write(kUserFolder, "enums", "<enumt id='a_t' idx='1'/>");
  const auto fileSet = makeSet();
  EXPECT_FALSE(fileSet->addType(ResourceType::Enum, std::make_unique<EnumType>()));
  EXPECT_FALSE(fileSet->addType(ResourceType::Invalid, std::make_unique<EnumType>()));
  EXPECT_FALSE(fileSet->addType(ResourceType::Fp, std::make_unique<EnumType>()));

  const BaseType* type = fileSet->getGroup(ResourceType::Enum, true)->getType("a_t");
  auto late = std::make_unique<EnumType>();
  late->getTypeId().setId("a_t");
  EXPECT_FALSE(fileSet->addType(ResourceType::Enum, std::move(late)));
  EXPECT_EQ(fileSet->getGroup(ResourceType::Enum, true)->getType("a_t"), type);
}

// A type that is in use must not be deleted by a file that is read later.
TEST_F(ResourceFileSetTest, DropsTypesOfAnotherKindThanTheFile) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'><size>1</size></nvt>");
  _files.write(kUserFolder, "cps", "<nvt id='a' idx='2'><size>9</size></nvt><cpt id='b' idx='3'/>");
  const auto fileSet = makeSet();
  const auto* type =
      dynamic_cast<const NvType*>(fileSet->getGroup(ResourceType::Nv, true)->getType("a"));
  ASSERT_NE(type, nullptr);

  LogCapture log(Logger::Warning);
  const ResourceGroup* cps = fileSet->getGroup(ResourceType::Cp, true);
  ASSERT_NE(cps, nullptr);
  EXPECT_NE(cps->getType("b"), nullptr);
  EXPECT_EQ(cps->getType("a"), nullptr);
  EXPECT_EQ(fileSet->getGroup(ResourceType::Nv, true)->getType("a"), type);
  EXPECT_EQ(type->getSize(), 1);
  EXPECT_THAT(log.texts(), ElementsAre("[ResourceBuilder::onItemBuildDone]\n"));
}

TEST_F(ResourceFileSetTest, KeepsTheLaterOfTwoTypesWithOneName) {
  _files.write(kUserFolder, "nvs",
               "<nvt id='a' idx='2'><size>1</size></nvt><nvt id='a' idx='4'><size>9</size></nvt>");
  const auto fileSet = makeSet();
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, true);
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(dynamic_cast<const NvType*>(group->getType("a"))->getSize(), 9);
  EXPECT_EQ(group->getTypeByIndex(2), nullptr);
  EXPECT_EQ(group->getTypeByIndex(4), group->getType("a"));
}

// What is left behind would be a pointer to a deleted profile.
TEST_F(ResourceFileSetTest, ForgetsTheKeyOfAProfileThatALaterOneReplaces) {
  _files.write(kUserFolder, "fps",
               "<fpt id='UFPTa' idx='1' key='20001'/><fpt id='UFPTa' idx='2' key='20002'/>");
  const auto fileSet = makeSet();
  const auto* group =
      dynamic_cast<const ResourceGroupFp*>(fileSet->getGroup(ResourceType::Fp, true));
  ASSERT_NE(group, nullptr);
  EXPECT_EQ(group->findByKey(20001), nullptr);
  EXPECT_EQ(group->getTypeByIndex(1), nullptr);
  EXPECT_EQ(group->findByKey(20002), group->getType("a"));
  EXPECT_EQ(group->getTypeByIndex(2), group->getType("a"));
}

// Profiles have no layout: nothing is looked for in them once they are read.
TEST_F(ResourceFileSetTest, LoadsProfilesWithoutAWord) {
  _files.write(kUserFolder, "fps", "<fpt id='UFPTa' idx='1' key='20001'/>");
  const auto fileSet = makeSet();
  LogCapture log(Logger::Info);
  EXPECT_NE(fileSet->getGroup(ResourceType::Fp, true), nullptr);
  EXPECT_THAT(log.texts(), IsEmpty());
}

// Notes its name in a list when it is deleted.
class NotedType : public BaseType {
 public:
  NotedType(const std::string& name, std::vector<std::string>& deleted)
      : BaseType(ResourceType::Invalid), _deleted(deleted) {
    getTypeId().setId(name);
  }
  ~NotedType() override { _deleted.push_back(getName()); }

 private:
  std::vector<std::string>& _deleted;
};

TEST_F(ResourceFileSetTest, DeletesProfilesFirstAndEnumerationsLast) {
  _files.write(kUserFolder, "enums", "<enumt id='a' idx='1'/>");
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  _files.write(kUserFolder, "cps", "<cpt id='a' idx='3'/>");
  _files.write(kUserFolder, "fps", "<fpt id='a' idx='4' key='5'/>");
  std::vector<std::string> deleted;
  auto fileSet = makeSet();
  const LogCapture log;
  // The sink adds a type of its own to each file while it is being read.
  ResourceType loading = ResourceType::Invalid;
  const Logger::Sink captured = Logger::setSink({});
  Logger::setSink([&](Logger::Level, const std::string& text) {
    if (text != "[ResourceBuilder::addItem] a\n") return;
    auto noted = std::make_unique<NotedType>(resourceTypeName(loading), deleted);
    EXPECT_TRUE(fileSet->addType(loading, std::move(noted)));
  });
  for (const ResourceType type : kAllTypes) {
    loading = type;
    EXPECT_NE(fileSet->getGroup(type, true), nullptr) << resourceTypeName(type);
  }
  Logger::setSink(captured);

  EXPECT_THAT(deleted, IsEmpty());
  fileSet.reset();
  EXPECT_THAT(deleted, ElementsAre("fp", "cp", "nv", "enum"));
}

TEST_F(ResourceFileSetTest, WarnsAboutATypeWithoutALayoutOfItsOwnClass) {
  _files.write(kUserFolder, "nvs", "<nvt id='a' idx='2'/>");
  const auto fileSet = makeSet();
  LogCapture log;
  // The sink adds an enumeration while the file of network variables is being read.
  const Logger::Sink captured = Logger::setSink({});
  Logger::setSink([&](Logger::Level level, const std::string& text) {
    if (text.rfind("[ResourceBuilder::addItem] a\n", 0) == 0) {
      auto stranger = std::make_unique<EnumType>();
      stranger->getTypeId().setId("stranger");
      EXPECT_TRUE(fileSet->addType(ResourceType::Nv, std::move(stranger)));
    }
    captured(level, text);
  });
  const ResourceGroup* group = fileSet->getGroup(ResourceType::Nv, true);
  Logger::setSink(captured);

  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->getType("a"), nullptr);
  EXPECT_NE(group->getType("stranger"), nullptr);
  EXPECT_THAT(log.texts(Logger::Warning),
              ElementsAre("[korvat] not a VarType: stranger\n",
                          "[korvat] not a VarType: 9FFFFF0000000000-3/stranger\n"));
}

// --- Discriminators ---

struct DiscriminatorCase {
  std::string name;
  std::string root;
  std::string unionPath;
  std::string discriminator;
  std::vector<std::string> messages;  // with debug level
};
class LoadedDiscriminator : public ResourceFileSetTest,
                            public testing::WithParamInterface<DiscriminatorCase> {
 protected:
  // Loads a file with one type of that layout and returns its union.
  const MemAggregate* loadUnion(ResourceType type, const std::string& file,
                                const std::string& item) {
    _files.write(TypeId::StdPrefix, file, item);
    _fileSet = makeSet(TypeId::StdPrefix);
    const ResourceGroup* group = _fileSet->getGroup(type, true);
    if (group == nullptr) return nullptr;
    const auto* varType = dynamic_cast<const VarType*>(group->getType("x"));
    if (varType == nullptr || varType->getMember() == nullptr) return nullptr;
    return dynamic_cast<const MemAggregate*>(
        varType->getMember()->findMemberAtPath(nullptr, GetParam().unionPath));
  }

  static std::vector<std::string> withName(const std::string& name,
                                           std::vector<std::string> messages) {
    for (std::string& message : messages) message.replace(message.find("%s"), 2, name);
    return messages;
  }

  std::unique_ptr<ResourceFileSet> _fileSet;
};

std::vector<std::string> noteworthy(const LogCapture& log) {
  std::vector<std::string> messages;
  for (const std::string& text : log.texts(Logger::Debug)) {
    if (text.find("discriminator") != std::string::npos) messages.push_back(text);
  }
  return messages;
}

TEST_P(LoadedDiscriminator, IsStoredInANetworkVariable) {
  const DiscriminatorCase& c = GetParam();
  LogCapture log;
  const MemAggregate* found = loadUnion(ResourceType::Nv, "nvs", test::nvt("x", c.root));
  ASSERT_NE(found, nullptr);
  EXPECT_TRUE(found->isUnion());
  EXPECT_EQ(found->getDiscriminator(), c.discriminator);
  EXPECT_EQ(noteworthy(log), withName("0000000000000000-0/SNVTx", c.messages));
}

TEST_P(LoadedDiscriminator, IsStoredInAProperty) {
  const DiscriminatorCase& c = GetParam();
  LogCapture log;
  const MemAggregate* found = loadUnion(ResourceType::Cp, "cps", test::cpt("x", c.root));
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->getDiscriminator(), c.discriminator);
  EXPECT_EQ(noteworthy(log), withName("0000000000000000-0/SCPTx", c.messages));
}

std::string byteMember() {
  return test::scalar("unsigned short");
}
std::string kind() {
  return test::enumeration("kind_t");
}
std::string choice() {
  return test::unionOf({{"a", byteMember()}, {"b", byteMember()}});
}

INSTANTIATE_TEST_SUITE_P(
    Layouts, LoadedDiscriminator,
    testing::ValuesIn(std::vector<DiscriminatorCase>{
        {"InTheEnclosingStructure",
         test::structure({{"kind", kind()}, {"n", byteMember()}, {"u", choice()}}),
         "u",
         "kind",
         {}},
        {"Outwards",
         test::structure({{"kind", kind()},
                          {"s", test::structure({{"n", byteMember()}, {"u", choice()}})}}),
         "s.u",
         "kind",
         {}},
        {"InAnInnerStructure",
         test::structure({{"far", kind()},
                          {"s", test::structure({{"near", kind()}, {"u", choice()}})}}),
         "s.u",
         "s.near",
         {}},
        {"InANestedUnion",
         test::structure({{"kind", kind()},
                          {"u", test::unionOf({{"s", test::structure({{"inner", kind()},
                                                                      {"v", choice()}})}})}}),
         "u.s.v",
         "u.s.inner",
         {}},
        {"DirectlyInAUnion",
         test::structure({{"kind", kind()}, {"u", test::unionOf({{"v", choice()}})}}),
         "u.v",
         "kind",
         {}},
        {"None",
         test::structure({{"n", byteMember()}, {"u", choice()}}),
         "u",
         "",
         {"[korvat] %s: no discriminator for union at u\n"}},
        {"OnlyBehindTheUnion",
         test::structure({{"s", test::structure({{"u", choice()}, {"kind", kind()}})}}),
         "s.u",
         "",
         {"[korvat] %s: no discriminator for union at s.u\n"}},
        {"RootUnion", choice(), "", "", {"[korvat] %s: no discriminator for union at \n"}},
        {"NoneForTwoUnions",
         test::unionOf({{"u", choice()}}),
         "u",
         "",
         {"[korvat] %s: no discriminator for union at \n",
          "[korvat] %s: no discriminator for union at u\n"}},
    }),
    rowName);

TEST_F(ResourceFileSetTest, IsSilentAboutDiscriminatorsBelowTheDebugLevel) {
  _files.write(kUserFolder, "nvs", test::nvt("x", choice()));
  const auto fileSet = makeSet();
  LogCapture log(Logger::Info);
  EXPECT_NE(fileSet->getGroup(ResourceType::Nv, true), nullptr);
  EXPECT_THAT(log.texts(), IsEmpty());
}

}  // namespace
}  // namespace zavri::korvat
