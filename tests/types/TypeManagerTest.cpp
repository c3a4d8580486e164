#include "korvat/types/TypeManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/Value.h"
#include "korvat/types/CpType.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/NvType.h"
#include "korvat/types/ResourceFileSet.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::bytesOf;
using test::LogCapture;
using test::TempCatalogue;
using testing::ElementsAre;
using testing::IsEmpty;

const auto rowName = [](const auto& info) { return info.param.name; };

constexpr ResourceType kAllTypes[] = {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp,
                                      ResourceType::Fp};
constexpr const char* kUserPrefix = "9FFFFF0000000000-3";

// A manager over the users' sets in the test data.
TypeManager makeUserManager() {
  TypeManager manager("drv");
  manager.setBaseDir(std::string(KORVAT_TEST_DATA) + "/catalogue");
  return manager;
}

TypeId nvId(const std::string& prefix, const std::string& name) {
  return TypeId(ResourceType::Nv, prefix, name);
}

// --- Construction and options ---

TEST(TypeManager, StartsWithItsDefaults) {
  const TypeManager manager("drv");
  EXPECT_EQ(manager.getDriverType(), "drv");
  EXPECT_EQ(manager.getBaseDir(), "");
  EXPECT_EQ(manager.getNetworkEndianess(), Endianess::Big);
  EXPECT_EQ(static_cast<int>(manager.getNetworkEndianess()), 0);
  EXPECT_FALSE(manager.getUseDynamicArrays());
  EXPECT_TRUE(manager.isShowWarnings());
  EXPECT_FALSE(manager.isAllowMissingFields());
  EXPECT_FALSE(manager.isAllowUndefinedFields());
  EXPECT_TRUE(manager.isAllowCuttingToMinMax());
  EXPECT_FALSE(manager.isSupportInvalidKeyword());
  EXPECT_FALSE(manager.isUnionJsonToRawHex());
  EXPECT_FALSE(manager.isUnionRawToRawHex());
}

TEST(TypeManager, TakesNoDriverTypeAsAnEmptyOne) {
  EXPECT_EQ(TypeManager(nullptr).getDriverType(), "");
  EXPECT_EQ(TypeManager("").getDriverType(), "");
}

TEST(TypeManager, HasItsTexts) {
  EXPECT_EQ(TypeManager::restTypePrefix, "/~/type/");
  EXPECT_EQ(TypeManager::restTypeGenericDp, "/~/type/schema/fragment/dp");
}

TEST(TypeManager, KeepsWhatIsSet) {
  TypeManager manager("drv");
  manager.setBaseDir("/opt/t");
  manager.setDriverType("other");
  manager.setNetworkEndianess(Endianess::Little);
  EXPECT_EQ(manager.getBaseDir(), "/opt/t");
  EXPECT_EQ(manager.getDriverType(), "other");
  EXPECT_EQ(manager.getNetworkEndianess(), Endianess::Little);
}

using Getter = bool (TypeManager::*)() const;
using Setter = void (TypeManager::*)(bool);

struct Option {
  Getter get;
  Setter set;
};
constexpr Option kOptions[] = {
    {&TypeManager::getUseDynamicArrays, &TypeManager::setUseDynamicArrays},
    {&TypeManager::isShowWarnings, &TypeManager::showWarnings},
    {&TypeManager::isAllowMissingFields, &TypeManager::setAllowMissingFields},
    {&TypeManager::isAllowUndefinedFields, &TypeManager::setAllowUndefinedFields},
    {&TypeManager::isAllowCuttingToMinMax, &TypeManager::setAllowCuttingToMinMax},
    {&TypeManager::isSupportInvalidKeyword, &TypeManager::setSupportInvalidKeyword},
};

struct OptionCase {
  std::string name;
  std::size_t row;  // of kOptions
};
class TypeManagerOption : public testing::TestWithParam<OptionCase> {};

TEST_P(TypeManagerOption, ChangesAlone) {
  for (const bool isOn : {true, false}) {
    TypeManager manager("drv");
    for (const Option& option : kOptions) (manager.*option.set)(!isOn);
    (manager.*kOptions[GetParam().row].set)(isOn);
    for (std::size_t i = 0; i < std::size(kOptions); ++i) {
      EXPECT_EQ((manager.*kOptions[i].get)(), i == GetParam().row ? isOn : !isOn) << i;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Flags, TypeManagerOption,
                         testing::ValuesIn(std::vector<OptionCase>{
                             {"UseDynamicArrays", 0},
                             {"ShowWarnings", 1},
                             {"AllowMissingFields", 2},
                             {"AllowUndefinedFields", 3},
                             {"AllowCuttingToMinMax", 4},
                             {"SupportInvalidKeyword", 5},
                         }),
                         rowName);

using UnionModeBit = TypeManager::UnionModeBit;

TEST(TypeManagerUnionMode, HasItsBitNumbers) {
  EXPECT_EQ(static_cast<int>(UnionModeBit::UnionRawHex), 0);
  EXPECT_EQ(static_cast<int>(UnionModeBit::UnionNoRawHexToJson), 1);
  EXPECT_EQ(static_cast<int>(UnionModeBit::UnionNoRawHexToRaw), 2);
  EXPECT_EQ(static_cast<int>(UnionModeBit::UnionConverterFlag), 3);
}

TEST(TypeManagerUnionMode, ChangesEachBitAlone) {
  constexpr UnionModeBit kBits[] = {UnionModeBit::UnionRawHex, UnionModeBit::UnionNoRawHexToJson,
                                    UnionModeBit::UnionNoRawHexToRaw,
                                    UnionModeBit::UnionConverterFlag};
  for (const UnionModeBit bit : kBits) {
    TypeManager manager("drv");
    manager.setUnionModeBit(bit);
    manager.setUnionModeBit(bit);
    for (const UnionModeBit other : kBits) {
      EXPECT_EQ(manager.hasUnionModeBit(other), other == bit);
      manager.setUnionModeBit(other);
    }
    manager.clearUnionModeBit(bit);
    for (const UnionModeBit other : kBits) {
      EXPECT_EQ(manager.hasUnionModeBit(other), other != bit);
    }
  }
}

struct UnionModeCase {
  std::string name;
  std::vector<UnionModeBit> bits;
  bool isHexToRaw;
  bool isHexToJson;
};
class TypeManagerUnionModeTest : public testing::TestWithParam<UnionModeCase> {};

TEST_P(TypeManagerUnionModeTest, TellsTheFormOfUnionsPerDirection) {
  TypeManager manager("drv");
  for (const UnionModeBit bit : GetParam().bits) manager.setUnionModeBit(bit);
  EXPECT_EQ(manager.isUnionJsonToRawHex(), GetParam().isHexToRaw);
  EXPECT_EQ(manager.isUnionRawToRawHex(), GetParam().isHexToJson);
}

INSTANTIATE_TEST_SUITE_P(
    Bits, TypeManagerUnionModeTest,
    testing::ValuesIn(std::vector<UnionModeCase>{
        {"None", {}, false, false},
        {"RawHex", {UnionModeBit::UnionRawHex}, true, true},
        {"NotToJson", {UnionModeBit::UnionRawHex, UnionModeBit::UnionNoRawHexToJson}, true, false},
        {"NotToRaw", {UnionModeBit::UnionRawHex, UnionModeBit::UnionNoRawHexToRaw}, false, true},
        {"NeitherWay",
         {UnionModeBit::UnionRawHex, UnionModeBit::UnionNoRawHexToJson,
          UnionModeBit::UnionNoRawHexToRaw},
         false,
         false},
        {"ExceptionsAlone",
         {UnionModeBit::UnionNoRawHexToJson, UnionModeBit::UnionNoRawHexToRaw},
         false,
         false},
        {"ConverterFlag", {UnionModeBit::UnionConverterFlag}, false, false},
    }),
    rowName);

// --- Identifiers as text ---

struct ToTypeIdCase {
  std::string name;
  std::string text;
  ResourceType type;
  std::string plain;
  std::vector<std::string> traces;
};
class TypeManagerToTypeId : public testing::TestWithParam<ToTypeIdCase> {};

TEST_P(TypeManagerToTypeId, ReadsPlainAndFullForms) {
  const ToTypeIdCase& c = GetParam();
  const TypeManager manager("drv");
  LogCapture log;
  const TypeId id = manager.toTypeId(c.text);
  EXPECT_EQ(id.getType(), c.type);
  EXPECT_EQ(id.toString(), c.plain);
  EXPECT_EQ(log.texts(), c.traces);
  EXPECT_EQ(log.texts(Logger::Trace), c.traces);
}

constexpr const char* kTempP = "0000000000000000-0/SNVT_temp_p";
constexpr const char* kNone = "0000000000000000-0/";

INSTANTIATE_TEST_SUITE_P(
    Texts, TypeManagerToTypeId,
    testing::ValuesIn(std::vector<ToTypeIdCase>{
        {"Plain", "0000000000000000-0/SNVT_temp_p", ResourceType::Nv, kTempP, {}},
        {"PlainWithoutPrefix", "/SNVT_temp_p", ResourceType::Nv, kTempP, {}},
        {"PlainUser", "9FFFFF1234567890-3/UCPTa", ResourceType::Cp, "9FFFFF0000000000-3/UCPTa", {}},
        {"NameAlone", "SNVT_temp_p", ResourceType::Invalid, kNone, {}},
        {"Datapoint",
         "/~/type/dp/drv/0000000000000000-0/SNVT_temp_p",
         ResourceType::Nv,
         kTempP,
         {}},
        {"ValueKind",
         "/~/type/value/drv/0000000000000000-0/SNVT_temp_p",
         ResourceType::Nv,
         kTempP,
         {}},
        {"AnyKind", "/~/type/x/drv/0000000000000000-0/SNVT_temp_p", ResourceType::Nv, kTempP, {}},
        {"EmptyKind", "/~/type//drv/0000000000000000-0/SNVT_temp_p", ResourceType::Nv, kTempP, {}},
        {"EmptyDriver", "/~/type/dp//0000000000000000-0/SNVT_temp_p", ResourceType::Nv, kTempP, {}},
        {"OtherDriver",
         "/~/type/dp/other/0000000000000000-0/SNVT_temp_p",
         ResourceType::Nv,
         kTempP,
         {"[TypeManager::toTypeId] probably wrong driver in type "
          "'/~/type/dp/other/0000000000000000-0/SNVT_temp_p'\n"}},
        {"FunctionalBlock",
         "/~/type/fb/drv/9FFFFF0000000000-3/UFPTBoiler",
         ResourceType::Fp,
         "9FFFFF0000000000-3/UFPTBoiler",
         {}},
        {"FullWithoutPrefix", "/~/type/dp/drv/SNVT_temp_p", ResourceType::Invalid, kNone, {}},
        {"AlmostTheFullForm", "/~/typ/dp", ResourceType::Enum, "0000000000000000-0/~/typ/dp", {}},
    }),
    rowName);

struct WrongTypeIdCase {
  std::string name;
  std::string text;
};
class TypeManagerWrongTypeId : public testing::TestWithParam<WrongTypeIdCase> {};

TEST_P(TypeManagerWrongTypeId, IsInvalidWithAWarning) {
  const std::string& text = GetParam().text;
  const TypeManager manager("drv");
  LogCapture log;
  EXPECT_TRUE(manager.toTypeId(text) == TypeId::None);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Warning);
  EXPECT_EQ(log.lines()[0].text, "[TypeManager::toTypeId] wrong typeId '" + text + "'\n");
}

INSTANTIATE_TEST_SUITE_P(Texts, TypeManagerWrongTypeId,
                         testing::ValuesIn(std::vector<WrongTypeIdCase>{
                             {"Empty", ""},
                             {"FullPrefixAlone", "/~/type/"},
                             {"NoSlash", "/~/type/dp"},
                             {"OneSlash", "/~/type/dp/drv"},
                             {"NothingBehindTheDriver", "/~/type/dp/drv/"},
                         }),
                         rowName);

TEST(TypeManager, ReadsAWrongIdentifierSilentlyBelowTheWarningLevel) {
  LogCapture log(Logger::Error);
  EXPECT_FALSE(TypeManager("drv").toTypeId(""));
  EXPECT_THAT(log.texts(), IsEmpty());
}

struct ToFullTypeIdCase {
  std::string name;
  TypeId (*make)();
  std::string datapoint;
  std::string value;
};
class TypeManagerToFullTypeId : public testing::TestWithParam<ToFullTypeIdCase> {};

TEST_P(TypeManagerToFullTypeId, DependsOnKindAndUse) {
  const TypeManager manager("drv");
  const TypeId id = GetParam().make();
  EXPECT_EQ(manager.toFullTypeId(id, false), GetParam().datapoint);
  EXPECT_EQ(manager.toFullTypeId(id, true), GetParam().value);
}

INSTANTIATE_TEST_SUITE_P(
    Identifiers, TypeManagerToFullTypeId,
    testing::ValuesIn(std::vector<ToFullTypeIdCase>{
        {"None", [] { return TypeId(); }, "", ""},
        {"StandardNv", [] { return nvId("", "_temp_p"); },
         "/~/type/dp/drv/0000000000000000-0/SNVT_temp_p",
         "/~/type/value/drv/0000000000000000-0/SNVT_temp_p"},
        {"UserCpMasked", [] { return TypeId(ResourceType::Cp, "9FFFFF1234567890-3", "Target"); },
         "/~/type/dp/drv/9FFFFF0000000000-3/UCPTTarget",
         "/~/type/value/drv/9FFFFF0000000000-3/UCPTTarget"},
        {"Enumeration", [] { return TypeId(ResourceType::Enum, "", "occup_t"); },
         "/~/type/dp/drv/0000000000000000-0/occup_t",
         "/~/type/value/drv/0000000000000000-0/occup_t"},
        {"Profile", [] { return TypeId(ResourceType::Fp, "", "lampActuator"); },
         "/~/type/fb/drv/0000000000000000-0/SFPTlampActuator",
         "/~/type/fb/drv/0000000000000000-0/SFPTlampActuator"},
        {"GenericNv", [] { return nvId("", "_xxx"); }, "/~/type/schema/fragment/dp", ""},
        {"GenericNameInAUserSet", [] { return nvId(kUserPrefix, "_xxx"); },
         "/~/type/dp/drv/9FFFFF0000000000-3/UNVT_xxx",
         "/~/type/value/drv/9FFFFF0000000000-3/UNVT_xxx"},
        {"InvalidPrefix", [] { return nvId("12", "a"); }, "/~/type/dp/drv//UNVTa",
         "/~/type/value/drv//UNVTa"},
    }),
    rowName);

TEST(TypeManager, ReadsBackTheFullIdentifiersItWrites) {
  const TypeManager manager("drv");
  const TypeId temp = nvId("", "_temp_p");
  EXPECT_TRUE(manager.toTypeId(manager.toFullTypeId(temp, false)) == temp);
  const TypeId profile(ResourceType::Fp, "9FFFFF0501238542-6", "Boiler");
  EXPECT_TRUE(manager.toTypeId(manager.toFullTypeId(profile, true)) == profile);
}

TEST(TypeManager, WritesAnEmptyDriverType) {
  EXPECT_EQ(TypeManager(nullptr).toFullTypeId(nvId("", "_temp_p"), false),
            "/~/type/dp//0000000000000000-0/SNVT_temp_p");
}

// --- Look-ups ---

TEST(TypeManager, ReadsNothingBeforeATypeIsAskedFor) {
  LogCapture log;
  TypeManager manager = makeUserManager();
  EXPECT_THAT(log.texts(), IsEmpty());

  const std::string base = manager.getBaseDir();
  manager.getResourceFileSet(kUserPrefix);
  EXPECT_THAT(log.texts(),
              ElementsAre("[ResourceFileSet::locateFolder] baseDir='" + base +
                              "' prefix='9FFFFF0000000000-3' ==> '9FFFFF0000000000-3'\n",
                          "[ResourceFileSet::ResourceFileSet] folder: 9FFFFF0000000000-3\n"));
}

TEST(TypeManager, FindsOneSetPerPrefix) {
  TypeManager manager = makeUserManager();
  ResourceFileSet& user = manager.getResourceFileSet(kUserPrefix);
  ResourceFileSet& standard = manager.getResourceFileSet(TypeId::StdPrefix);
  EXPECT_NE(&user, &standard);
  EXPECT_EQ(&manager.getResourceFileSet(kUserPrefix), &user);
  EXPECT_EQ(user.getFolder(), "9FFFFF0000000000-3");
  EXPECT_EQ(standard.getFolder(), "0000000000000000-0");
}

TEST(TypeManager, FindsTypesByIdentifierAndByText) {
  TypeManager manager = makeUserManager();
  const BaseType* temp = manager.getType(nvId("", "_temp_p"));
  ASSERT_NE(temp, nullptr);
  EXPECT_NE(dynamic_cast<const NvType*>(temp), nullptr);
  EXPECT_EQ(temp->getTypeId().toString(), "0000000000000000-0/SNVT_temp_p");
  EXPECT_EQ(temp->getIndex(), 105);
  EXPECT_EQ(manager.getType("0000000000000000-0/SNVT_temp_p"), temp);
  EXPECT_EQ(manager.getType("/~/type/dp/drv/0000000000000000-0/SNVT_temp_p"), temp);
  EXPECT_EQ(manager.getVarType(nvId("", "_temp_p")), temp);
  EXPECT_EQ(manager.getVarType("/SNVT_temp_p"), temp);
}

TEST(TypeManager, FindsNoVarTypeOfAnEnumeration) {
  TypeManager manager = makeUserManager();
  EXPECT_NE(dynamic_cast<const EnumType*>(manager.getType("/occup_t")), nullptr);
  EXPECT_EQ(manager.getVarType("/occup_t"), nullptr);
  EXPECT_EQ(manager.getVarType(TypeId(ResourceType::Enum, "", "occup_t")), nullptr);
}

TEST(TypeManager, FindsNoTypeThatIsNotThere) {
  TypeManager manager = makeUserManager();
  manager.showWarnings(false);
  EXPECT_EQ(manager.getType("/SNVT_temp_q"), nullptr);
  EXPECT_EQ(manager.getType("/UCPTBoilerTarget"), nullptr);
  EXPECT_EQ(manager.getType("9FFFFF0000000000-3/UNVT_temp_p"), nullptr);
}

TEST(TypeManager, FindsTheCatalogueWithoutABaseFolder) {
  TypeManager manager("drv");
  const BaseType* temp = manager.getType("/SNVT_temp_p");
  ASSERT_NE(temp, nullptr);
  EXPECT_EQ(manager.getTypeByIndex("", ResourceType::Nv, 105), temp);
}

TEST(TypeManager, MakesNoSetForAnInvalidIdentifier) {
  TypeManager manager = makeUserManager();
  LogCapture log;
  EXPECT_EQ(manager.getType(TypeId::None), nullptr);
  EXPECT_EQ(manager.getVarType(TypeId(ResourceType::Invalid, kUserPrefix, "a")), nullptr);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Invalid, 1), nullptr);
  EXPECT_EQ(manager.getType("SNVT_temp_p"), nullptr);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(TypeManager, WarnsAboutATextThatIsNoIdentifier) {
  TypeManager manager = makeUserManager();
  LogCapture log;
  EXPECT_EQ(manager.getVarType("/~/type/dp"), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre("[TypeManager::toTypeId] wrong typeId '/~/type/dp'\n"));
}

TEST(TypeManager, MakesTheSetOfAPrefixWithoutFolderOnce) {
  TypeManager manager = makeUserManager();
  manager.showWarnings(false);
  const std::string base = manager.getBaseDir();
  const std::string loading = "[ResourceFileSet::loadResources][nv] going to load " + base +
                              "/8000000000000000-3/nvs.xml\n";
  const std::string missing =
      "[TypeManager::getType] no resource-group 'nv' in file-set '8000000000000000-3'\n";
  LogCapture log(Logger::Debug);
  EXPECT_EQ(manager.getType("8000000000000000-3/UNVTa"), nullptr);
  EXPECT_THAT(log.texts(),
              ElementsAre("[ResourceFileSet::locateFolder] baseDir='" + base +
                              "' prefix='8000000000000000-3' ==> ''\n",
                          "[ResourceFileSet::ResourceFileSet] folder: 8000000000000000-3\n",
                          loading, missing));
  EXPECT_EQ(log.lines().back().level, Logger::Debug);

  log.clear();
  EXPECT_EQ(manager.getType("8000000000000000-3/UNVTa"), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(loading, missing));
}

TEST(TypeManager, HasNoTypesUnderAPrefixThatIsNotValid) {
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Debug);
  EXPECT_EQ(manager.getType("8000/UNVTa"), nullptr);
  EXPECT_TRUE(log.contains(Logger::Debug,
                           "[TypeManager::getType] no resource-group 'nv' in file-set ''\n"));
}

TEST(TypeManager, WarnsAboutMissingFilesUnlessToldOtherwise) {
  TypeManager manager = makeUserManager();
  const std::string message = "[ResourceBuilder][M_CollectStrings] cannot load '" +
                              manager.getBaseDir() + "/9FFFFF0501000000-4/enums.xml'\n";
  LogCapture log(Logger::Warning);
  EXPECT_EQ(manager.getType("9FFFFF0501000000-4/a_t"), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(message));
  manager.showWarnings(false);
  EXPECT_EQ(manager.getType("9FFFFF0501000000-4/a_t"), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(message));
}

TEST(TypeManager, FindsTypesByNumber) {
  TypeManager manager = makeUserManager();
  const BaseType* state = manager.getType("9FFFFF0000000000-3/UNVTBoilerState");
  ASSERT_NE(state, nullptr);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Nv, 1), state);
  EXPECT_EQ(manager.getVarTypeByIndex(kUserPrefix, ResourceType::Nv, 1), state);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Nv, 99), nullptr);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Nv, 105), nullptr);

  const BaseType* occupancy = manager.getTypeByIndex("", ResourceType::Enum, 45);
  ASSERT_NE(occupancy, nullptr);
  EXPECT_EQ(occupancy->getName(), "occup_t");
  EXPECT_EQ(manager.getVarTypeByIndex("", ResourceType::Enum, 45), nullptr);
}

TEST(TypeManager, MasksThePrefixOfANumber) {
  TypeManager manager = makeUserManager();
  EXPECT_EQ(manager.getTypeByIndex("9FFFFF1234567890-3", ResourceType::Nv, 1),
            manager.getType("9FFFFF0000000000-3/UNVTBoilerState"));
}

TEST(TypeManager, FindsIdentifiersByNumber) {
  TypeManager manager = makeUserManager();
  EXPECT_TRUE(manager.getTypeIdByIndex("", ResourceType::Nv, 105) == nvId("", "_temp_p"));
  const TypeId fault = manager.getTypeIdByIndex("9FFFFF1234567890-3", ResourceType::Nv, 2);
  EXPECT_EQ(fault.toString(), "9FFFFF0000000000-3/UNVTBoilerFault");
  EXPECT_EQ(fault.getProgId().toString(), "9FFFFF1234567890");
  EXPECT_TRUE(manager.getTypeIdByIndex("", ResourceType::Nv, 1) == TypeId::None);
  EXPECT_TRUE(manager.getTypeIdByIndex("", ResourceType::Invalid, 105) == TypeId::None);
}

TEST(TypeManager, SearchesNumbersWithoutWarnings) {
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Debug);
  EXPECT_EQ(manager.getTypeByIndex("9FFFFF0501000000-4", ResourceType::Cp, 1), nullptr);
  EXPECT_THAT(log.texts(Logger::Warning), IsEmpty());
  EXPECT_EQ(log.lines().back().level, Logger::Debug);
  EXPECT_EQ(log.lines().back().text,
            "[TypeManager::getTypeByIndex] no resource-group 'cp' in file-set "
            "'9FFFFF0501000000-4'\n");
}

TEST(TypeManager, StaysAtASetAfterTheBaseFolderChanged) {
  TypeManager manager = makeUserManager();
  manager.getResourceFileSet(TypeId::StdPrefix);
  manager.setBaseDir("/opt/t");
  EXPECT_NE(manager.getType("/SNVT_temp_p"), nullptr);
  manager.showWarnings(false);
  EXPECT_EQ(manager.getType("9FFFFF0000000000-3/UNVTBoilerState"), nullptr);
}

// --- Files that fail ---

TEST(TypeManager, WorksAroundABrokenFileAndTriesItAgain) {
  TempCatalogue files;
  files.writeRaw(kUserPrefix, "nvs", "<ldrf><items><nvt id='a' idx='1'/><nvt id=");
  files.write(kUserPrefix, "enums", "<enumt id='a_t' idx='1'/>");
  files.write(TypeId::StdPrefix, "nvs", "<nvt id='_std' idx='1'/>");
  TypeManager manager = files.makeManager();
  LogCapture log(Logger::Warning);
  const std::string message = "[ResourceBuilder][M_CollectStrings] could not parse file '" +
                              files.path() + "/9FFFFF0000000000-3/nvs.xml'\n";

  EXPECT_EQ(manager.getType("9FFFFF0000000000-3/UNVTa"), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(message));
  EXPECT_NE(manager.getType("9FFFFF0000000000-3/a_t"), nullptr);
  EXPECT_NE(manager.getType("/SNVT_std"), nullptr);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Nv, 1), nullptr);
  EXPECT_THAT(log.texts(), ElementsAre(message, message));

  files.write(kUserPrefix, "nvs", "<nvt id='a' idx='1'/>");
  const BaseType* type = manager.getType("9FFFFF0000000000-3/UNVTa");
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Nv, 1), type);
}

TEST(TypeManager, FindsAFileThatWasMissing) {
  TempCatalogue files;
  TypeManager manager = files.makeManager();
  manager.showWarnings(false);
  for (const ResourceType type : kAllTypes) {
    EXPECT_EQ(manager.getType(TypeId(type, kUserPrefix, "a")), nullptr) << resourceTypeName(type);
  }
  files.write(kUserPrefix, "cps", "<cpt id='a' idx='1'/>");
  EXPECT_NE(manager.getType("9FFFFF0000000000-3/UCPTa"), nullptr);
  EXPECT_EQ(manager.getType("9FFFFF0000000000-3/UNVTa"), nullptr);
}

// --- Users' sets ---

struct UserSetCase {
  std::string name;
  std::string text;
  std::string id;      // of the type
  std::string folder;  // of its set
};
class UserSet : public testing::TestWithParam<UserSetCase> {};

TEST_P(UserSet, IsFoundByItsPrefix) {
  const UserSetCase& c = GetParam();
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  const BaseType* type = manager.getType(c.text);
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->getTypeId().toString(), c.id);
  EXPECT_TRUE(type->getTypeId() == manager.toTypeId(c.text));
  EXPECT_EQ(manager.getType(type->getTypeId()), type);
  EXPECT_EQ(manager.getResourceFileSet(type->getTypeId().getPrefix()).getFolder(), c.folder);
  EXPECT_THAT(log.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Scopes, UserSet,
                         testing::ValuesIn(std::vector<UserSetCase>{
                             {"Scope3", "9FFFFF0000000000-3/UNVTBoilerState",
                              "9FFFFF0000000000-3/UNVTBoilerState", "9FFFFF0000000000-3"},
                             {"Scope3OfADevice", "9FFFFF0501A38542-3/UCPTBoilerTarget",
                              "9FFFFF0000000000-3/UCPTBoilerTarget", "9FFFFF0000000000-3"},
                             {"Scope3Enumeration", "9FFFFF0000000000-3/boiler_stage_t",
                              "9FFFFF0000000000-3/boiler_stage_t", "9FFFFF0000000000-3"},
                             {"Scope4OfADevice", "9FFFFF0501A38542-4/UNVTCascade",
                              "9FFFFF0501000000-4/UNVTCascade", "9FFFFF0501000000-4"},
                             {"Scope5Bit6", "9FFFFF0501238500-5/UNVTBurner",
                              "9FFFFF0501238500-5/UNVTBurner", "9FFFFF0501638500-5"},
                             {"Scope5OfADevice", "9FFFFF0501A38542-5/UNVTBurner",
                              "9FFFFF0501238500-5/UNVTBurner", "9FFFFF0501638500-5"},
                             {"Scope6Bit7", "9FFFFF0501238542-6/UNVTBurner",
                              "9FFFFF0501238542-6/UNVTBurner", "9FFFFF0501A38542-6"},
                             {"Scope6OfADevice", "9FFFFF0501E38542-6/UNVTBurner",
                              "9FFFFF0501238542-6/UNVTBurner", "9FFFFF0501A38542-6"},
                             {"Scope2BothBits", "9000000501238500-2/fuel_t",
                              "9000000501238500-2/fuel_t", "9000000501E38500-2"},
                         }),
                         rowName);

TEST(UserSets, DoNotMix) {
  TypeManager manager = makeUserManager();
  const VarType* general = manager.getVarType("9FFFFF0501238500-5/UNVTBurner");
  const VarType* model = manager.getVarType("9FFFFF0501238542-6/UNVTBurner");
  ASSERT_NE(general, nullptr);
  ASSERT_NE(model, nullptr);
  EXPECT_EQ(general->getSize(), 1);
  EXPECT_EQ(model->getSize(), 2);
}

struct ReferenceCase {
  std::string name;
  std::string text;
  std::string hex;
  std::string json;
};
class UserReference : public testing::TestWithParam<ReferenceCase> {};

TEST_P(UserReference, IsFollowedIntoOtherSets) {
  const ReferenceCase& c = GetParam();
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  json::Value value;
  EXPECT_TRUE(manager.rawToJson(manager.toTypeId(c.text), bytesOf(c.hex), value));
  EXPECT_EQ(value.stringify(0), c.json);
  EXPECT_THAT(log.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Values, UserReference,
    testing::ValuesIn(std::vector<ReferenceCase>{
        {"OwnAndStandardEnumeration", "9FFFFF0000000000-3/UNVTBoilerState", "01030898",
         R"({"stage":"BS_LOW","occupancy":"OC_STANDBY","temperature":22.0})"},
        {"PropertyLikeATypeOfItsSet", "9FFFFF0000000000-3/UCPTBoilerTarget", "02001964",
         R"({"stage":"BS_HIGH","occupancy":"OC_OCCUPIED","temperature":65.0})"},
        {"TypesOfAnotherSet", "9FFFFF0501000000-4/UNVTCascade", "000103089802FF1964",
         R"({"demand":"BS_OFF",)"
         R"("leader":{"stage":"BS_LOW","occupancy":"OC_STANDBY","temperature":22.0},)"
         R"("target":{"stage":"BS_HIGH","occupancy":"OC_NUL","temperature":65.0}})"},
        {"SetsInVariantFolders", "9FFFFF0501238542-6/UNVTBurnerPair", "012C0A",
         R"({"own":300,"general":5.0})"},
    }),
    rowName);

TEST(UserSets, HaveDiscriminators) {
  TypeManager manager = makeUserManager();
  const VarType* fault = manager.getVarType("9FFFFF0000000000-3/UNVTBoilerFault");
  ASSERT_NE(fault, nullptr);
  const auto* detail =
      dynamic_cast<const MemAggregate*>(fault->getMember()->findMemberAtPath(&manager, "detail"));
  ASSERT_NE(detail, nullptr);
  EXPECT_EQ(detail->getDiscriminator(), "fault");
}

TEST(UserSets, KeepTheDefaultOfAProperty) {
  TypeManager manager = makeUserManager();
  const auto* target =
      dynamic_cast<const CpType*>(manager.getType("9FFFFF0000000000-3/UCPTBoilerTarget"));
  ASSERT_NE(target, nullptr);
  EXPECT_EQ(target->getDefaultValue(), "2, 0, 6500");
}

// --- Functional profiles ---

constexpr const char* kDevicePrefix = "9FFFFF0501A38542-6";  // in every users' set of scope 3 to 6

TEST(Profiles, AreFoundByIdentifierTextAndNumber) {
  TypeManager manager = makeUserManager();
  const FpType* boiler = manager.getFpType("9FFFFF0000000000-3/UFPTboiler");
  ASSERT_NE(boiler, nullptr);
  EXPECT_EQ(boiler->getTypeId().toString(), "9FFFFF0000000000-3/UFPTboiler");
  EXPECT_EQ(manager.getFpType(TypeId(ResourceType::Fp, kUserPrefix, "boiler")), boiler);
  EXPECT_EQ(manager.getFpType("/~/type/fb/drv/9FFFFF0000000000-3/UFPTboiler"), boiler);
  EXPECT_EQ(manager.getFpTypeByIndex(kUserPrefix, 1), boiler);
  EXPECT_EQ(manager.getFpTypeByIndex("9FFFFF1234567890-3", 1), boiler);
  EXPECT_EQ(manager.getTypeByIndex(kUserPrefix, ResourceType::Fp, 1), boiler);
  EXPECT_TRUE(manager.getTypeIdByIndex(kUserPrefix, ResourceType::Fp, 1) == boiler->getTypeId());
  EXPECT_EQ(manager.getVarType("9FFFFF0000000000-3/UFPTboiler"), nullptr);
}

TEST(Profiles, AreNoOtherTypes) {
  TypeManager manager = makeUserManager();
  EXPECT_EQ(manager.getFpType("/SNVT_temp_p"), nullptr);
  EXPECT_EQ(manager.getFpType(nvId("", "_temp_p")), nullptr);
  EXPECT_EQ(manager.getFpType(TypeId::None), nullptr);
  EXPECT_EQ(manager.getFpType("/SFPTmissing"), nullptr);
  EXPECT_EQ(manager.getFpTypeByIndex("", 105), nullptr);
  LogCapture log(Logger::Debug);
  EXPECT_EQ(manager.getFpTypeByIndex("9000000501238500-2", 1), nullptr);
  EXPECT_EQ(log.lines().back().text,
            "[TypeManager::getTypeByIndex] no resource-group 'fp' in file-set "
            "'9000000501E38500-2'\n");
  EXPECT_THAT(log.texts(Logger::Warning), IsEmpty());
}

TEST(Profiles, HaveWhatTheirDefinitionsSay) {
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  const FpType* boiler = manager.getFpType("9FFFFF0000000000-3/UFPTboiler");
  ASSERT_NE(boiler, nullptr);
  EXPECT_EQ(boiler->getKey(), 20003);
  EXPECT_EQ(boiler->getFlags(), 0u);
  ASSERT_EQ(boiler->getNvColl().size(), 3u);
  const DpRef& setpoint = *boiler->getNvColl()[2];
  EXPECT_EQ(setpoint.getName(), "nviSetpoint");
  EXPECT_EQ(setpoint.getFpType(), boiler);
  EXPECT_EQ(setpoint.getDirection(), DpRef::Direction::Input);
  EXPECT_TRUE(setpoint.isMandatory());
  EXPECT_EQ(setpoint.getMin(), 10.0);
  EXPECT_EQ(setpoint.getMax(), 90.0);
  EXPECT_EQ(setpoint.getDefaultValue(), 65.0);
  EXPECT_TRUE(setpoint.hasDefault());
  EXPECT_EQ(boiler->getDpRefByMember(DpRef::DpType::Nv, 3), &setpoint);

  // A property of the profile as a whole, and one of a network variable.
  ASSERT_EQ(boiler->getCpColl().size(), 2u);
  const TypeId heartbeat(ResourceType::Cp, "", "maxSendTime");
  const TypeId target(ResourceType::Cp, kUserPrefix, "BoilerTarget");
  EXPECT_EQ(boiler->getDpRefByTypeId(DpRef::DpType::Cp, heartbeat, ""), boiler->getCpColl()[1]);
  EXPECT_EQ(boiler->getDpRefByTypeId(DpRef::DpType::Cp, target, ""), nullptr);
  EXPECT_EQ(boiler->getDpRefByTypeId(DpRef::DpType::Cp, target, "nvoState"),
            boiler->getCpColl()[0]);
  EXPECT_FALSE(boiler->getCpColl()[0]->isArrayPermitted());
  EXPECT_TRUE(boiler->getCpColl()[1]->isArrayPermitted());

  ASSERT_NE(manager.getFpType("/SFPTcontroller"), nullptr);
  EXPECT_EQ(manager.getFpType("/SFPTcontroller")->getFlags(), BaseType::kObsolete);
  EXPECT_EQ(manager.getFpType("/SFPTopenLoopSensor")->getFlags(), BaseType::kStandardProfile);
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(Profiles, ReferToTypesThatExist) {
  TypeManager manager = makeUserManager();
  for (const char* text :
       {"/SFPTboilerController", "9FFFFF0000000000-3/UFPTboiler", "9FFFFF0501000000-4/UFPTcascade",
        "9FFFFF0501238500-5/UFPTburner", "9FFFFF0501238542-6/UFPTburnerPair"}) {
    const FpType* profile = manager.getFpType(text);
    ASSERT_NE(profile, nullptr) << text;
    EXPECT_FALSE(profile->getNvColl().empty()) << text;
    for (const DpRef* dp : profile->getNvColl()) {
      EXPECT_NE(dynamic_cast<const NvType*>(manager.getType(dp->getTypeId())), nullptr)
          << text << " " << dp->getName();
    }
    for (const DpRef* dp : profile->getCpColl()) {
      EXPECT_NE(dynamic_cast<const CpType*>(manager.getType(dp->getTypeId())), nullptr)
          << text << " " << dp->getName();
    }
  }
}

TEST(Profiles, InheritAcrossSets) {
  TypeManager manager = makeUserManager();
  const FpType* profile = manager.getFpType("9FFFFF0501238542-6/UFPTburnerPair");
  std::vector<std::string> line;
  while (profile != nullptr) {
    line.push_back(profile->getTypeId().toString());
    profile = profile->hasBase() ? manager.getFpType(profile->getBase()) : nullptr;
  }
  EXPECT_THAT(line,
              ElementsAre("9FFFFF0501238542-6/UFPTburnerPair", "9FFFFF0501238500-5/UFPTburner",
                          "0000000000000000-0/SFPTopenLoopSensor"));
}

struct SearchCase {
  std::string name;
  std::string prefix;
  std::int32_t key;
  std::string found;  // empty: None
};
class SearchFpType : public testing::TestWithParam<SearchCase> {};

TEST_P(SearchFpType, FallsBackScopeByScope) {
  const SearchCase& c = GetParam();
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  const TypeId found = manager.searchFpType(c.prefix, c.key);
  if (c.found.empty()) {
    EXPECT_TRUE(found == TypeId::None) << found.toString();
  } else {
    EXPECT_EQ(found.getType(), ResourceType::Fp);
    EXPECT_EQ(found.toString(), c.found);
    const FpType* profile = manager.getFpType(found);
    ASSERT_NE(profile, nullptr);
    EXPECT_EQ(profile->getKey(), c.key);
    EXPECT_TRUE(profile->getTypeId() == found);
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Keys, SearchFpType,
    testing::ValuesIn(std::vector<SearchCase>{
        {"OfTheModel", kDevicePrefix, 20006, "9FFFFF0501238542-6/UFPTburnerPair"},
        {"OfTheSubclass", kDevicePrefix, 20005, "9FFFFF0501238500-5/UFPTburner"},
        {"OfTheClass", kDevicePrefix, 20004, "9FFFFF0501000000-4/UFPTcascade"},
        {"OfTheMaker", kDevicePrefix, 20003, "9FFFFF0000000000-3/UFPTboiler"},
        {"OfTheStandard", kDevicePrefix, 8301, "0000000000000000-0/SFPTboilerController"},
        {"OfNone", kDevicePrefix, 20007, ""},
        {"MostSpecific", kDevicePrefix, 20000, "9FFFFF0501238542-6/UFPTprobeOfModel"},
        {"FromScope5", "9FFFFF0501A38542-5", 20000, "9FFFFF0501238500-5/UFPTprobeOfSubclass"},
        {"FromScope4", "9FFFFF0501A38542-4", 20000, "9FFFFF0501000000-4/UFPTprobeOfClass"},
        {"FromScope3", "9FFFFF0501A38542-3", 20000, "9FFFFF0000000000-3/UFPTprobeOfMaker"},
        {"FromScope2", "9FFFFF0501A38542-2", 20000, ""},
        {"FromScope2ToTheStandard", "9FFFFF0501A38542-2", 1,
         "0000000000000000-0/SFPTopenLoopSensor"},
        {"FromScope0", "9FFFFF0501A38542-0", 1, "0000000000000000-0/SFPTopenLoopSensor"},
        {"FromTheStandardPrefix", "0000000000000000-0", 5, "0000000000000000-0/SFPTcontroller"},
        {"NotUpwards", "9FFFFF0501A38542-5", 20006, ""},
        {"OtherModel", "9FFFFF0501A38543-6", 20006, ""},
        {"OtherModelOfTheSubclass", "9FFFFF0501A38543-6", 20000,
         "9FFFFF0501238500-5/UFPTprobeOfSubclass"},
        {"OtherMaker", "9EEEEE0501A38542-6", 20003, ""},
        {"AlternateOfTheModel", "8FFFFF0501A38542-6", 20006, "9FFFFF0501238542-6/UFPTburnerPair"},
        {"AlternateOfTheSubclass", "8FFFFF0501A38542-6", 20005, "9FFFFF0501238500-5/UFPTburner"},
        {"AlternateOfTheClass", "8FFFFF0501A38542-6", 20004, "9FFFFF0501000000-4/UFPTcascade"},
        {"AlternateOfTheMaker", "8FFFFF0501A38542-6", 20003, "9FFFFF0000000000-3/UFPTboiler"},
        {"AlternateMostSpecific", "8FFFFF0501A38542-6", 20000,
         "9FFFFF0501238542-6/UFPTprobeOfModel"},
        {"AlternateOfTheStandard", "8FFFFF0501A38542-6", 8301,
         "0000000000000000-0/SFPTboilerController"},
        {"NoAlternateForAnotherDigit", "7FFFFF0501A38542-6", 20003, ""},
        {"NegativeKey", kDevicePrefix, -1, ""},
        {"ScopeOutOfRange", "9FFFFF0501A38542-7", 1, ""},
        {"NoProgramId", "nothing-hexadecima", 1, ""},
        {"TooShort", "9FFFFF0501A38542-", 20006, ""},
        {"TooLong", "9FFFFF0501A38542-6x", 20006, ""},
        {"OneCharacter", "9", 20006, ""},
    }),
    rowName);

TEST(SearchFpType, ThrowsForAnEmptyPrefix) {
  TypeManager manager = makeUserManager();
  try {
    manager.searchFpType("", 1);
    FAIL() << "no exception";
  } catch (const std::out_of_range& exception) {
    EXPECT_STREQ(exception.what(), "invalid string position");
  }
}

TEST(SearchFpType, CarriesThePrefixOfTheSetThatHasTheProfile) {
  TypeManager manager = makeUserManager();
  const TypeId found = manager.searchFpType("8FFFFF0501A38542-6", 20003);
  EXPECT_EQ(found.getPrefix(), "9FFFFF0000000000-3");
  EXPECT_EQ(found.getScope(), Scope::Manufacturer);
  EXPECT_EQ(found.getProgId().toString(), "9FFFFF0501A38542");
}

TEST(SearchFpType, AsksTheAlternateSetFirstAtEachScope) {
  TempCatalogue files;
  files.write("9FFFFF0000000000-3", "fps",
              "<fpt id='nineAtScope3' idx='1' key='1'/><fpt id='nineAlone' idx='2' key='2'/>");
  files.write("8FFFFF0000000000-3", "fps",
              "<fpt id='eightAtScope3' idx='1' key='1'/><fpt id='eightAlone' idx='2' key='3'/>");
  files.write("8FFFFF0501000000-4", "fps", "<fpt id='eightAtScope4' idx='1' key='4'/>");
  TypeManager manager = files.makeManager();
  EXPECT_EQ(manager.searchFpType("8FFFFF0000000000-3", 1).getId(), "nineAtScope3");
  EXPECT_EQ(manager.searchFpType("9FFFFF0000000000-3", 1).getId(), "eightAtScope3");
  EXPECT_EQ(manager.searchFpType("8FFFFF0000000000-3", 3).getId(), "eightAlone");
  EXPECT_EQ(manager.searchFpType("9FFFFF0000000000-3", 2).getId(), "nineAlone");

  // The scope comes before the digit.
  files.write("9FFFFF0000000000-3", "fps", "<fpt id='nineAtScope3' idx='1' key='4'/>");
  TypeManager again = files.makeManager();
  EXPECT_EQ(again.searchFpType("8FFFFF0501000000-4", 4).getId(), "eightAtScope4");
  EXPECT_EQ(again.searchFpType("9FFFFF0501000000-4", 4).getId(), "eightAtScope4");
}

TEST(SearchFpType, KeepsOnlySetsThatHaveProfiles) {
  TempCatalogue files;
  files.write("9FFFFF0000000000-3", "fps", "<fpt id='UFPTa' idx='1' key='20001'/>");
  files.write(TypeId::StdPrefix, "nvs", "<nvt id='_a' idx='1'/>");
  TypeManager manager = files.makeManager();
  const std::string base = files.path();
  const auto locating = [&](const std::string& prefix, const std::string& folder) {
    return "[ResourceFileSet::locateFolder] baseDir='" + base + "' prefix='" + prefix + "' ==> '" +
           folder + "'\n";
  };
  const auto making = [](const std::string& folder) {
    return "[ResourceFileSet::ResourceFileSet] folder: " + folder + "\n";
  };
  const auto loading = [&](const std::string& folder) {
    return "[ResourceFileSet::loadResources][fp] going to load " + base + "/" + folder +
           "/fps.xml\n";
  };
  const std::string eight = "8FFFFF0000000000-3";
  const std::string nine = "9FFFFF0000000000-3";
  LogCapture log(Logger::Debug);
  EXPECT_EQ(manager.searchFpType(nine, 20001).getId(), "a");
  EXPECT_THAT(log.texts(), ElementsAre(locating(eight, ""), making(eight), loading(eight),
                                       locating(nine, nine), making(nine), loading(nine)));
  log.clear();
  EXPECT_EQ(manager.searchFpType(nine, 20001).getId(), "a");
  EXPECT_THAT(log.texts(), ElementsAre(locating(eight, ""), making(eight), loading(eight)));

  // One without profiles that is there already is asked again, and stays.
  log.clear();
  ResourceFileSet& standard = manager.getResourceFileSet(TypeId::StdPrefix);
  log.clear();
  EXPECT_FALSE(manager.searchFpType(TypeId::StdPrefix, 1));
  EXPECT_THAT(log.texts(), ElementsAre(loading(TypeId::StdPrefix)));
  EXPECT_EQ(&manager.getResourceFileSet(TypeId::StdPrefix), &standard);
}

TEST(SearchFpType, KeepsASetWhoseProfilesHaveOtherKeys) {
  TypeManager manager = makeUserManager();
  EXPECT_FALSE(manager.searchFpType(kUserPrefix, 20007));
  LogCapture log(Logger::Debug);
  manager.getResourceFileSet(kUserPrefix);
  EXPECT_THAT(log.texts(), IsEmpty());
}

struct DpRefCase {
  std::string name;
  std::string prefix;
  DpRef::DpType dpType;
  std::int32_t key;
  std::int32_t index;
  std::string own;        // datapoint found in the profile; empty: none
  std::string ownType;    // and its type
  std::string inherited;  // datapoint found in the profile it inherits from
};
class SearchDpRef : public testing::TestWithParam<DpRefCase> {};

std::string nameOf(const DpRef* datapoint) {
  return datapoint == nullptr ? "" : datapoint->getName();
}

TEST_P(SearchDpRef, FindsDatapointsOfTheProfileOrOfItsBase) {
  const DpRefCase& c = GetParam();
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  EXPECT_EQ(nameOf(manager.searchDpRef(c.prefix, c.dpType, c.key, c.index, false)), c.own);
  EXPECT_EQ(nameOf(manager.searchDpRef(c.prefix, c.dpType, c.key, c.index, true)), c.inherited);
  for (const bool useBase : {false, true}) {
    const TypeId type = manager.searchVarType(c.prefix, c.dpType, c.key, c.index, useBase);
    EXPECT_EQ(type ? type.toString() : "", c.ownType);
  }
  EXPECT_THAT(log.texts(), IsEmpty());
}

constexpr auto kNv = DpRef::DpType::Nv;
constexpr auto kCp = DpRef::DpType::Cp;

INSTANTIATE_TEST_SUITE_P(
    Datapoints, SearchDpRef,
    testing::ValuesIn(std::vector<DpRefCase>{
        {"Variable", kDevicePrefix, kNv, 20003, 1, "nvoState", "9FFFFF0000000000-3/UNVTBoilerState",
         ""},
        {"VariableOfBoth", kDevicePrefix, kNv, 20003, 3, "nviSetpoint",
         "0000000000000000-0/SNVT_temp_p", "nvoEffectSetpt"},
        {"VariableOfTheBaseOnly", kDevicePrefix, kNv, 20003, 7, "", "", "nviOutdoorTemp"},
        {"Property", kDevicePrefix, kCp, 20003, 1, "cpTarget",
         "9FFFFF0000000000-3/UCPTBoilerTarget", "nciSndHrtBt"},
        {"PropertyOfStandardType", kDevicePrefix, kCp, 20003, 2, "cpHeartbeat",
         "0000000000000000-0/SCPTmaxSendTime", ""},
        {"NumberInGap", kDevicePrefix, kNv, 8301, 6, "nviSupplyTemp",
         "0000000000000000-0/SNVT_temp_p", ""},
        {"NoSuchNumber", kDevicePrefix, kNv, 8301, 4, "", "", ""},
        {"OfTheClass", kDevicePrefix, kNv, 20004, 1, "nvoCascade", "9FFFFF0501000000-4/UNVTCascade",
         "nvoState"},
        {"OfTheModel", kDevicePrefix, kNv, 20006, 1, "nvoPair", "9FFFFF0501238542-6/UNVTBurnerPair",
         "nvoBurner"},
        {"UnderTheAlternateProgramId", "8FFFFF0501A38542-6", kNv, 20006, 1, "nvoPair",
         "9FFFFF0501238542-6/UNVTBurnerPair", "nvoBurner"},
        {"AnyType", TypeId::StdPrefix, kNv, 1, 1, "nvoValue", "0000000000000000-0/SNVT_xxx", ""},
        {"NoSuchProfile", kDevicePrefix, kNv, 20007, 1, "", "", ""},
        {"NegativeKey", kDevicePrefix, kNv, -1, 1, "", "", ""},
        {"NumberZero", kDevicePrefix, kNv, 20003, 0, "", "", ""},
        {"NegativeNumber", kDevicePrefix, kNv, 20003, -1, "", "", ""},
        {"ShortPrefix", "9FFFFF0501A38542-", kNv, 20003, 1, "", "", ""},
        {"LongPrefix", "9FFFFF0501A38542-6x", kNv, 20003, 1, "", "", ""},
        // The key and the number are looked at before the prefix is.
        {"EmptyPrefixAndNegativeKey", "", kNv, -1, 1, "", "", ""},
        {"EmptyPrefixAndNumberZero", "", kNv, 1, 0, "", "", ""},
    }),
    rowName);

TEST(SearchDpRef, TakesAKindThatIsNoneForAVariable) {
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Error);
  const auto noKind = static_cast<DpRef::DpType>(2);
  EXPECT_EQ(nameOf(manager.searchDpRef(kDevicePrefix, noKind, 20003, 1, false)), "nvoState");
  EXPECT_THAT(log.texts(), ElementsAre("[FpType::getColl] invalid type (2), using nvColl\n"));
}

TEST(SearchDpRef, ThrowsForAnEmptyPrefix) {
  TypeManager manager = makeUserManager();
  EXPECT_THROW(manager.searchDpRef("", kNv, 1, 1, false), std::out_of_range);
  EXPECT_THROW(manager.searchVarType("", kNv, 1, 1, true), std::out_of_range);
}

TEST(SearchDpRef, FindsNoneWhenTheInheritedProfileIsMissing) {
  TempCatalogue files;
  files.write(kUserPrefix, "fps",
              "<fpt id='UFPTa' idx='1' key='20001'><inheriting><ref>SFPTgone</ref></inheriting>"
              "<f-nvs><f-nv id='n' idx='1'><ref>SNVT_a</ref></f-nv></f-nvs></fpt>");
  files.write(TypeId::StdPrefix, "fps", "<fpt id='SFPTb' idx='1' key='1'/>");
  TypeManager manager = files.makeManager();
  EXPECT_EQ(nameOf(manager.searchDpRef(kUserPrefix, kNv, 20001, 1, false)), "n");
  EXPECT_EQ(manager.searchDpRef(kUserPrefix, kNv, 20001, 1, true), nullptr);
}

TEST(Profiles, OutliveTheManagerAsCopiesWithoutAProfile) {
  auto manager = std::make_unique<TypeManager>(makeUserManager());
  const FpType copy(*manager->getFpType("9FFFFF0000000000-3/UFPTboiler"));
  manager.reset();
  ASSERT_EQ(copy.getNvColl().size(), 3u);
  EXPECT_EQ(copy.getNvColl()[0]->getName(), "nvoState");
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), nullptr);
}

// --- Copies ---

TEST(TypeManagerCopy, HasTheSameOptions) {
  TypeManager source("drv");
  source.setBaseDir("/opt/t");
  source.setNetworkEndianess(Endianess::Little);
  for (const Option& option : kOptions) (source.*option.set)(!(source.*option.get)());
  source.setUnionModeBit(UnionModeBit::UnionNoRawHexToRaw);

  TypeManager assigned("other");
  assigned = source;
  for (const TypeManager& copy : {TypeManager(source), assigned}) {
    EXPECT_EQ(copy.getDriverType(), "drv");
    EXPECT_EQ(copy.getBaseDir(), "/opt/t");
    EXPECT_EQ(copy.getNetworkEndianess(), Endianess::Little);
    for (const Option& option : kOptions) {
      EXPECT_EQ((copy.*option.get)(), (source.*option.get)());
    }
    EXPECT_TRUE(copy.hasUnionModeBit(UnionModeBit::UnionNoRawHexToRaw));
    EXPECT_FALSE(copy.hasUnionModeBit(UnionModeBit::UnionRawHex));
  }
}

TEST(TypeManagerCopy, SharesTheSets) {
  TypeManager source = makeUserManager();
  ResourceFileSet& fileSet = source.getResourceFileSet(kUserPrefix);
  const BaseType* state = source.getType("9FFFFF0000000000-3/UNVTBoilerState");

  TypeManager copy(source);
  EXPECT_EQ(&copy.getResourceFileSet(kUserPrefix), &fileSet);
  LogCapture log;
  EXPECT_EQ(copy.getType(state->getTypeId()), state);
  EXPECT_THAT(log.texts(), IsEmpty());

  // What one of them loads later is there for both; a set made later is not.
  const BaseType* stage = copy.getType("9FFFFF0000000000-3/boiler_stage_t");
  ASSERT_NE(stage, nullptr);
  EXPECT_EQ(source.getType("9FFFFF0000000000-3/boiler_stage_t"), stage);
  EXPECT_NE(&copy.getResourceFileSet(TypeId::StdPrefix),
            &source.getResourceFileSet(TypeId::StdPrefix));
}

TEST(TypeManagerCopy, GoesOnWhenTheOriginalIsGone) {
  auto source = std::make_unique<TypeManager>(makeUserManager());
  const BaseType* state = source->getType("9FFFFF0000000000-3/UNVTBoilerState");
  ASSERT_NE(state, nullptr);
  TypeManager copy(*source);
  source.reset();

  EXPECT_EQ(copy.getType("9FFFFF0000000000-3/UNVTBoilerState"), state);
  EXPECT_EQ(state->getIndex(), 1);
  // A group of a shared set, and sets, that are loaded only now.
  EXPECT_NE(copy.getType("9FFFFF0000000000-3/UCPTBoilerTarget"), nullptr);
  json::Value value;
  EXPECT_TRUE(copy.rawToJson(state->getTypeId(), bytesOf("01030898"), value));
  EXPECT_EQ(value["occupancy"].asString(), "OC_STANDBY");
}

TEST(TypeManagerCopy, LeavesTheOriginalUsableWhenItGoesFirst) {
  TypeManager source = makeUserManager();
  const BaseType* state = source.getType("9FFFFF0000000000-3/UNVTBoilerState");
  { const TypeManager copy(source); }
  EXPECT_EQ(source.getType("9FFFFF0000000000-3/UNVTBoilerState"), state);
  EXPECT_EQ(state->getName(), "BoilerState");
}

TEST(TypeManagerCopy, ReplacesTheSetsOfItsTarget) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", "<nvt id='_own' idx='1'/>");
  TypeManager target = files.makeManager();
  const BaseType* own = target.getType("/SNVT_own");
  ASSERT_NE(own, nullptr);

  TypeManager source = makeUserManager();
  const BaseType* temp = source.getType("/SNVT_temp_p");
  target = source;
  EXPECT_EQ(target.getType("/SNVT_own"), nullptr);
  EXPECT_EQ(target.getType("/SNVT_temp_p"), temp);
  EXPECT_EQ(own->getName(), "_own");  // still held
}

TEST(TypeManagerCopy, HoldsWhatItsSourceHeldBefore) {
  TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", "<nvt id='_own' idx='1'/>");
  auto first = std::make_unique<TypeManager>(files.makeManager());
  const BaseType* own = first->getType("/SNVT_own");
  ASSERT_NE(own, nullptr);
  *first = makeUserManager();
  TypeManager second("drv");
  second = *first;
  first.reset();
  EXPECT_EQ(own->getName(), "_own");
}

TEST(TypeManagerCopy, KeepsItsSetsWhenAssignedToItself) {
  TypeManager manager = makeUserManager();
  ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
  const BaseType* temp = manager.getType("/SNVT_temp_p");
  TypeManager& same = manager;
  manager = same;
  EXPECT_EQ(&manager.getResourceFileSet(TypeId::StdPrefix), &fileSet);
  EXPECT_EQ(manager.getType("/SNVT_temp_p"), temp);
  EXPECT_EQ(manager.getDriverType(), "drv");
  EXPECT_EQ(manager.getBaseDir(), std::string(KORVAT_TEST_DATA) + "/catalogue");
}

// --- Values ---

TEST(TypeManager, ConvertsNoValueOfAnUnknownType) {
  TypeManager manager = makeUserManager();
  LogCapture log(Logger::Warning);
  json::Value value("before");
  EXPECT_FALSE(manager.rawToJson(TypeId::None, bytesOf("00"), value));
  EXPECT_FALSE(manager.rawToJson(nvId("", "_missing"), bytesOf("00"), value));
  EXPECT_FALSE(manager.rawToJson(TypeId(ResourceType::Enum, "", "occup_t"), bytesOf("00"), value,
                                 Endianess::Big, true));
  EXPECT_EQ(value.asString(), "before");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(TypeManager, ConvertsInItsNetworkByteOrder) {
  TypeManager manager = makeUserManager();
  const TypeId id = nvId("", "_temp_p");
  json::Value value;
  ASSERT_TRUE(manager.rawToJson(id, bytesOf("0898"), value));
  EXPECT_EQ(value.asDouble(), 22.0);
  manager.setNetworkEndianess(Endianess::Little);
  ASSERT_TRUE(manager.rawToJson(id, bytesOf("9808"), value));
  EXPECT_EQ(value.asDouble(), 22.0);
  ASSERT_TRUE(manager.rawToJson(id, bytesOf("0898"), value, Endianess::Big, false));
  EXPECT_EQ(value.asDouble(), 22.0);
}

TEST(TypeManager, AccessesAValue) {
  TypeManager manager = makeUserManager();
  base::Buffer buffer = bytesOf("01030898");
  const TypeId id = nvId(kUserPrefix, "BoilerState");
  const Value value = manager.accessValue(Endianess::Big, id, buffer);
  EXPECT_TRUE(value.isValid());
  EXPECT_EQ(value.getType(), manager.getType(id));
  EXPECT_EQ(value.getEndianess(), Endianess::Big);
  EXPECT_EQ(&value.getBuffer(), &buffer);
  EXPECT_EQ(value["occupancy"].getUInt8(), 3);
  EXPECT_EQ(value["temperature"].getInt16(), 2200);
}

struct UnknownTypeCase {
  std::string name;
  TypeId (*make)();
};
class TypeManagerAccessUnknown : public testing::TestWithParam<UnknownTypeCase> {};

TEST_P(TypeManagerAccessUnknown, GivesAValueWithoutMembers) {
  TypeManager manager = makeUserManager();
  base::Buffer buffer = bytesOf("0102");
  const Value value = manager.accessValue(Endianess::Little, GetParam().make(), buffer);
  EXPECT_FALSE(value.isValid());
  EXPECT_EQ(value.getType(), nullptr);
  for (const char* path : {"", "a", "[0]"}) {
    const MemberValue member = value[path];
    EXPECT_FALSE(member.isValid()) << path;
    EXPECT_EQ(member.setUInt8(7), AccessStatus::NotAccessible) << path;
    EXPECT_EQ(member.getUInt8(), 0) << path;
  }
  EXPECT_EQ(buffer.getData()[0], 1);
}

INSTANTIATE_TEST_SUITE_P(Identifiers, TypeManagerAccessUnknown,
                         testing::ValuesIn(std::vector<UnknownTypeCase>{
                             {"None", [] { return TypeId(); }},
                             {"MissingName", [] { return nvId("", "_missing"); }},
                             {"Enumeration",
                              [] { return TypeId(ResourceType::Enum, "", "occup_t"); }},
                         }),
                         rowName);

}  // namespace
}  // namespace zavri::korvat
