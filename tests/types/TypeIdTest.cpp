#include "korvat/types/TypeId.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/LogCapture.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::LogCapture;

// Made before main(), possibly before the strings of the class.
const TypeId kStaticId(ResourceType::Nv, "8000012800000000-3", "flow");

std::string programId(const TypeId& id) {
  return id.getProgId().toString();
}

const auto rowName = [](const auto& info) { return info.param.name; };

// --- Constants ---

TEST(TypeIdConstants, HaveTheirTexts) {
  EXPECT_EQ(TypeId::StdPrefix, "0000000000000000-0");
  EXPECT_EQ(TypeId::StdProgId, "0000000000000000");
  EXPECT_EQ(TypeId::GenericNvType, "_xxx");
}

TEST(TypeIdConstants, NoneIsADefaultIdentifier) {
  EXPECT_EQ(TypeId::None.getType(), ResourceType::Invalid);
  EXPECT_EQ(programId(TypeId::None), "0000000000000000");
  EXPECT_EQ(TypeId::None.getScope(), Scope::Standard);
  EXPECT_TRUE(TypeId::None.isPrefixValid());
  EXPECT_EQ(TypeId::None.getId(), "");
  EXPECT_FALSE(TypeId::None);
  EXPECT_TRUE(TypeId::None == TypeId());
}

TEST(TypeIdConstants, ScopeMaskHasSevenRows) {
  const TypeId::ScopeMaskTable expected{{
      {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
      {0xF0, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00},
      {0xF0, 0x00, 0x00, 0xFF, 0xFF, 0x3F, 0xFF, 0x00},
      {0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00},
      {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00},
      {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 0xFF, 0x00},
      {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 0xFF, 0xFF},
  }};
  EXPECT_EQ(TypeId::ScopeMask, expected);
}

TEST(TypeIdConstants, AreNotNeededByAStaticIdentifier) {
  EXPECT_EQ(kStaticId.toString(), "8000010000000000-3/UNVTflow");
}

struct ResourceTypeNameCase {
  std::string name;
  int number;
  std::string text;
};
class ResourceTypeName : public testing::TestWithParam<ResourceTypeNameCase> {};

TEST_P(ResourceTypeName, IsEmptyOutsideTheTable) {
  const ResourceTypeNameCase& c = GetParam();
  EXPECT_EQ(resourceTypeName(static_cast<ResourceType>(c.number)), c.text);
}

INSTANTIATE_TEST_SUITE_P(Types, ResourceTypeName,
                         testing::ValuesIn(std::vector<ResourceTypeNameCase>{
                             {"Invalid", 0, "invalid"},
                             {"Enum", 1, "enum"},
                             {"Nv", 2, "nv"},
                             {"Cp", 3, "cp"},
                             {"Fp", 4, "fp"},
                             {"PastTheLast", 5, ""},
                             {"Negative", -1, ""},
                         }),
                         rowName);

// --- Construction and value semantics ---

TEST(TypeId, TakesTypePrefixAndName) {
  const TypeId id(ResourceType::Cp, "80000128000000AA-3", "Setpoint");
  EXPECT_EQ(id.getType(), ResourceType::Cp);
  EXPECT_EQ(programId(id), "80000128000000AA");
  EXPECT_EQ(id.getScope(), Scope::Manufacturer);
  EXPECT_TRUE(id.isPrefixValid());
  EXPECT_EQ(id.getId(), "Setpoint");
}

TEST(TypeId, ConvertsToFalseOnlyWhenInvalid) {
  TypeId id;
  EXPECT_FALSE(id);
  for (const auto type :
       {ResourceType::Enum, ResourceType::Nv, ResourceType::Cp, ResourceType::Fp}) {
    id.setType(type);
    EXPECT_TRUE(id) << resourceTypeName(type);
  }
}

TEST(TypeId, CopiesAllFields) {
  const TypeId user(ResourceType::Fp, "80000128000000AA-6", "Boiler");
  const TypeId copy(user);
  EXPECT_EQ(copy.getType(), ResourceType::Fp);
  EXPECT_EQ(programId(copy), "80000128000000AA");
  EXPECT_EQ(copy.getScope(), Scope::ManufacturerClassSubclassModel);
  EXPECT_EQ(copy.getId(), "Boiler");

  TypeId assigned;
  assigned = TypeId(ResourceType::Enum, "short", "mode_t");
  EXPECT_EQ(assigned.getType(), ResourceType::Enum);
  EXPECT_FALSE(assigned.isPrefixValid());
  EXPECT_EQ(assigned.getId(), "mode_t");
}

TEST(TypeId, KeepsItsNumbersWhenMovedFrom) {
  TypeId source(ResourceType::Nv, "80000128000000AA-4", "a name too long for a short string");
  const TypeId target(std::move(source));
  EXPECT_EQ(target.getId(), "a name too long for a short string");
  EXPECT_EQ(target.toString(), "8000012800000000-4/UNVTa name too long for a short string");
  EXPECT_EQ(source.getType(), ResourceType::Nv);
  EXPECT_EQ(programId(source), "80000128000000AA");
  EXPECT_EQ(source.getScope(), Scope::ManufacturerClass);
  EXPECT_EQ(source.getId(), "");
}

// --- Prefix ---

struct PrefixCase {
  std::string name;
  std::string prefix;
  bool isValid;
  std::string programId;  // unmasked
  Scope scope;
  std::string printed;
};
class TypeIdPrefix : public testing::TestWithParam<PrefixCase> {};

TEST_P(TypeIdPrefix, IsReadLeniently) {
  const PrefixCase& c = GetParam();
  TypeId id(ResourceType::Nv, "9FFFFFFFFFFFFFFF-6", "x");
  id.setPrefix(c.prefix);
  EXPECT_EQ(id.isPrefixValid(), c.isValid);
  EXPECT_EQ(programId(id), c.programId);
  EXPECT_EQ(id.getScope(), c.scope);
  EXPECT_EQ(id.getPrefix(), c.printed);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypeIdPrefix,
    testing::ValuesIn(std::vector<PrefixCase>{
        {"Empty", "", true, "0000000000000000", Scope::Standard, "0000000000000000-0"},
        {"Standard", "0000000000000000-0", true, "0000000000000000", Scope::Standard,
         "0000000000000000-0"},
        {"User", "80000128000000AA-3", true, "80000128000000AA", Scope::Manufacturer,
         "8000010000000000-3"},
        {"LowerCase", "9abcdef0123456ff-4", true, "9ABCDEF0123456FF", Scope::ManufacturerClass,
         "9ABCDEF012000000-4"},
        {"AnySeparator", "80000128000000AA/3", true, "80000128000000AA", Scope::Manufacturer,
         "8000010000000000-3"},
        {"TextBehindTheScope", "80000128000000AA-3xyz", true, "80000128000000AA",
         Scope::Manufacturer, "8000010000000000-3"},
        {"UserScopeZero", "80000128000000AA-0", true, "80000128000000AA", Scope::Standard,
         "0000000000000000-0"},
        {"StandardProgramIdWithAScope", "0000000000000000-3", true, "0000000000000000",
         Scope::Standard, "0000000000000000-0"},
        {"OneCharacter", "8", false, "0000000000000000", Scope::InvalidScope, ""},
        {"SixteenCharacters", "0000000000000000", false, "0000000000000000", Scope::InvalidScope,
         ""},
        {"SixteenUserCharacters", "80000128000000AA", false, "0000000000000000",
         Scope::InvalidScope, ""},
        {"NoHexadecimalDigits", "GHIJKLMNOPQRSTUV-3", false, "0000000000000000",
         Scope::InvalidScope, ""},
        {"OneWrongDigit", "80000128000000AZ-3", false, "0000000000000000", Scope::InvalidScope, ""},
    }),
    rowName);

struct BadScopeCase {
  std::string name;
  std::string prefix;
};
class TypeIdBadScope : public testing::TestWithParam<BadScopeCase> {};

TEST_P(TypeIdBadScope, ReadsAsInvalidScopeOfAValidPrefix) {
  TypeId id(ResourceType::Nv, GetParam().prefix, "x");
  EXPECT_TRUE(id.isPrefixValid());
  EXPECT_EQ(id.getScope(), Scope::InvalidScope);
  EXPECT_EQ(programId(id), "80000128000000AA");
  EXPECT_EQ(id.getScopeMaskedProgId().toString(), "80000128000000AA");
  EXPECT_FALSE(id.lowerScope());
}

INSTANTIATE_TEST_SUITE_P(Texts, TypeIdBadScope,
                         testing::ValuesIn(std::vector<BadScopeCase>{
                             {"SeventeenCharacters", "80000128000000AA-"},
                             {"Seven", "80000128000000AA-7"},
                             {"Nine", "80000128000000AA-9"},
                             {"Letter", "80000128000000AA-A"},
                             {"Minus", "80000128000000AA--1"},
                             {"HighByte", "80000128000000AA-\xFF"},
                         }),
                         rowName);

TEST(TypeId, CanTakeItsOwnPrefix) {
  TypeId id(ResourceType::Nv, "80000128000000AA-3", "x");
  id.setPrefix(id.getPrefix());
  EXPECT_EQ(programId(id), "8000010000000000");
  EXPECT_EQ(id.getPrefix(), "8000010000000000-3");
}

// --- Scope ---

struct MaskCase {
  std::string name;
  std::string prefix;
  std::string masked;
};
class TypeIdMask : public testing::TestWithParam<MaskCase> {};

TEST_P(TypeIdMask, KeepsTheBytesThatTheScopeCounts) {
  const MaskCase& c = GetParam();
  const TypeId id(ResourceType::Nv, c.prefix, "x");
  EXPECT_EQ(id.getScopeMaskedProgId().toString(), c.masked);
  EXPECT_EQ(id.getPrefix(), c.masked + "-" + c.prefix.back());
}

INSTANTIATE_TEST_SUITE_P(Scopes, TypeIdMask,
                         testing::ValuesIn(std::vector<MaskCase>{
                             {"Standard", "FFFFFFFFFFFFFFFF-0", "0000000000000000"},
                             {"DeviceClass", "FFFFFFFFFFFFFFFF-1", "F00000FFFF000000"},
                             {"DeviceClassSubclass", "FFFFFFFFFFFFFFFF-2", "F00000FFFF3FFF00"},
                             {"Manufacturer", "FFFFFFFFFFFFFFFF-3", "FFFFFF0000000000"},
                             {"ManufacturerClass", "FFFFFFFFFFFFFFFF-4", "FFFFFFFFFF000000"},
                             {"ManufacturerClassSubclass", "FFFFFFFFFFFFFFFF-5",
                              "FFFFFFFFFF3FFF00"},
                             {"Model", "FFFFFFFFFFFFFFFF-6", "FFFFFFFFFF3FFFFF"},
                             {"KeepsZeroBits", "8123456789ABCDEF-6", "81234567892BCDEF"},
                         }),
                         rowName);

TEST(TypeIdScope, GoesDownOneStepAtATime) {
  TypeId id(ResourceType::Nv, "FFFFFFFFFFFFFFFF-6", "x");
  const std::vector<std::string> prefixes = {"FFFFFFFFFF3FFF00-5", "FFFFFFFFFF000000-4",
                                             "FFFFFF0000000000-3", "F00000FFFF3FFF00-2",
                                             "F00000FFFF000000-1", "0000000000000000-0"};
  for (const std::string& prefix : prefixes) {
    EXPECT_TRUE(id.lowerScope());
    EXPECT_EQ(id.getPrefix(), prefix);
    EXPECT_EQ(programId(id), "FFFFFFFFFFFFFFFF");
  }
  EXPECT_FALSE(id.lowerScope());
  EXPECT_EQ(id.getScope(), Scope::Standard);
}

TEST(TypeIdScope, StaysWithoutAValidPrefix) {
  TypeId invalid(ResourceType::Nv, "80000128000000AA", "x");
  EXPECT_FALSE(invalid.lowerScope());
  EXPECT_EQ(invalid.getScope(), Scope::InvalidScope);

  TypeId standard(ResourceType::Nv, "", "x");
  EXPECT_FALSE(standard.lowerScope());
  EXPECT_EQ(standard.getScope(), Scope::Standard);
}

TEST(TypeIdScope, CanBeSetFromZeroToSix) {
  LogCapture log;
  TypeId id(ResourceType::Nv, "FFFFFFFFFFFFFFFF-3", "x");
  for (int number = 0; number <= 6; ++number) {
    id.setScope(static_cast<Scope>(number));
    EXPECT_EQ(static_cast<int>(id.getScope()), number);
  }
  EXPECT_TRUE(log.lines().empty());
}

struct SetScopeCase {
  std::string name;
  int scope;
  std::string message;
};
class TypeIdSetScope : public testing::TestWithParam<SetScopeCase> {};

TEST_P(TypeIdSetScope, KeepsTheOldScopeWithAWarning) {
  const SetScopeCase& c = GetParam();
  TypeId id(ResourceType::Nv, "80000128000000AA-3", "x");
  LogCapture log;
  id.setScope(static_cast<Scope>(c.scope));
  EXPECT_EQ(id.getScope(), Scope::Manufacturer);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Warning);
  EXPECT_EQ(log.lines()[0].text, c.message);
}

INSTANTIATE_TEST_SUITE_P(Numbers, TypeIdSetScope,
                         testing::ValuesIn(std::vector<SetScopeCase>{
                             {"InvalidScope", 7, "[TypeId::setScope] invalid scope 7/-1\n"},
                             {"Nine", 9, "[TypeId::setScope] invalid scope 9/-1\n"},
                             {"Negative", -1, "[TypeId::setScope] invalid scope -1/-1\n"},
                         }),
                         rowName);

TEST(TypeIdScope, IsSetSilentlyBelowTheWarningLevel) {
  TypeId id(ResourceType::Nv, "80000128000000AA-3", "x");
  LogCapture log(Logger::Error);
  id.setScope(Scope::InvalidScope);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(id.getScope(), Scope::Manufacturer);
}

TEST(TypeIdScope, TranslatesEveryNumber) {
  for (int number = -128; number <= 127; ++number) {
    SCOPED_TRACE(number);
    const auto narrow = static_cast<signed char>(number);
    const bool isScope = number >= 0 && number <= 6;
    EXPECT_EQ(TypeId::numToScope(narrow),
              isScope ? static_cast<Scope>(number) : Scope::InvalidScope);
    EXPECT_EQ(TypeId::scopeToNum(static_cast<Scope>(narrow)), isScope ? number : -1);
  }
}

TEST(TypeIdScope, HasItsNumbers) {
  EXPECT_EQ(TypeId::numToScope(0), Scope::Standard);
  EXPECT_EQ(TypeId::numToScope(1), Scope::DeviceClass);
  EXPECT_EQ(TypeId::numToScope(2), Scope::DeviceClassSubclass);
  EXPECT_EQ(TypeId::numToScope(3), Scope::Manufacturer);
  EXPECT_EQ(TypeId::numToScope(4), Scope::ManufacturerClass);
  EXPECT_EQ(TypeId::numToScope(5), Scope::ManufacturerClassSubclass);
  EXPECT_EQ(TypeId::numToScope(6), Scope::ManufacturerClassSubclassModel);
  EXPECT_EQ(static_cast<int>(Scope::InvalidScope), 7);
}

// --- Generic network variable type ---

struct GenericCase {
  std::string name;
  ResourceType type;
  std::string prefix;
  std::string id;
  bool isGeneric;
};
class TypeIdGenericNv : public testing::TestWithParam<GenericCase> {};

TEST_P(TypeIdGenericNv, IsTheStandardTypeOfThatName) {
  const GenericCase& c = GetParam();
  EXPECT_EQ(TypeId(c.type, c.prefix, c.id).isGenericNv(), c.isGeneric);
}

INSTANTIATE_TEST_SUITE_P(Types, TypeIdGenericNv,
                         testing::ValuesIn(std::vector<GenericCase>{
                             {"Standard", ResourceType::Nv, "", "_xxx", true},
                             {"ShortPrefix", ResourceType::Nv, "12", "_xxx", true},
                             {"UserSet", ResourceType::Nv, "8000010000000000-3", "_xxx", false},
                             {"Property", ResourceType::Cp, "", "_xxx", false},
                             {"OtherName", ResourceType::Nv, "", "_xxx2", false},
                             {"OtherCase", ResourceType::Nv, "", "_XXX", false},
                         }),
                         rowName);

// --- Equality and order ---

struct IdFields {
  ResourceType type;
  std::string prefix;
  std::string id;

  TypeId make() const { return TypeId(type, prefix, id); }
};

struct CompareCase {
  std::string name;
  IdFields left;
  IdFields right;
  bool isEqual;
  bool isLess;
  bool isGreater;
};
class TypeIdCompare : public testing::TestWithParam<CompareCase> {};

TEST_P(TypeIdCompare, GivesEqualityAndOrder) {
  const CompareCase& c = GetParam();
  const TypeId left = c.left.make();
  const TypeId right = c.right.make();
  EXPECT_EQ(left == right, c.isEqual);
  EXPECT_EQ(right == left, c.isEqual);
  EXPECT_EQ(left != right, !c.isEqual);
  EXPECT_EQ(left < right, c.isLess);
  EXPECT_EQ(right < left, c.isGreater);
}

constexpr ResourceType kNv = ResourceType::Nv;

INSTANTIATE_TEST_SUITE_P(
    Pairs, TypeIdCompare,
    testing::ValuesIn(std::vector<CompareCase>{
        {"Same", {kNv, "", "_temp"}, {kNv, "", "_temp"}, true, false, false},
        {"Type", {ResourceType::Enum, "", "a"}, {kNv, "", "a"}, false, true, false},
        {"TypeBeforeProgramId",
         {ResourceType::Enum, "9000000000000000-3", "b"},
         {kNv, "8000000000000000-3", "a"},
         false,
         true,
         false},
        {"ProgramId",
         {kNv, "8000010000000000-3", "a"},
         {kNv, "8000020000000000-3", "a"},
         false,
         true,
         false},
        {"ProgramIdBeforeScope",
         {kNv, "8000010000000000-6", "a"},
         {kNv, "8000020000000000-3", "a"},
         false,
         true,
         false},
        {"ProgramIdByUnsignedByte",
         {kNv, "7F00000000000000-3", "a"},
         {kNv, "8000000000000000-3", "a"},
         false,
         true,
         false},
        {"MaskedBytesCountForTheOrderOnly",
         {kNv, "80000128000000AA-3", "a"},
         {kNv, "80000199000000BB-3", "a"},
         true,
         true,
         false},
        {"UsageBitsCountForTheOrderOnly",
         {kNv, "8000012800000100-5", "a"},
         {kNv, "8000012800C00100-5", "a"},
         true,
         true,
         false},
        {"Scope",
         {kNv, "8000010000000000-3", "a"},
         {kNv, "8000010000000000-4", "a"},
         false,
         true,
         false},
        {"ScopeBeforeName",
         {kNv, "8000010000000000-3", "b"},
         {kNv, "8000010000000000-4", "a"},
         false,
         true,
         false},
        {"ScopeBySignedByte",
         {kNv, "8000010000000000-", "a"},
         {kNv, "8000010000000000-3", "a"},
         false,
         true,
         false},
        {"ShorterNameFirst", {kNv, "", "_temp"}, {kNv, "", "_temp_p"}, false, true, false},
        {"NameByCase", {kNv, "", "Z"}, {kNv, "", "a"}, false, true, false},
        {"NameByUnsignedByte", {kNv, "", "\x7F"}, {kNv, "", "\x80"}, false, true, false},
        {"ValidityMakesEachLess", {kNv, "", "a"}, {kNv, "12", "a"}, false, true, true},
        {"BothPrefixesInvalid", {kNv, "12", "a"}, {kNv, "345", "a"}, true, false, false},
    }),
    rowName);

// --- Format identifier ---

struct FormatIdCase {
  std::string name;
  IdFields fields;
  std::string text;
};
class TypeIdToLonFormatId : public testing::TestWithParam<FormatIdCase> {};

TEST_P(TypeIdToLonFormatId, PutsTheLettersInFront) {
  EXPECT_EQ(GetParam().fields.make().toLonFormatId(), GetParam().text);
}

constexpr const char* kUserPrefix = "8000010000000000-3";

INSTANTIATE_TEST_SUITE_P(
    Types, TypeIdToLonFormatId,
    testing::ValuesIn(std::vector<FormatIdCase>{
        {"StandardNv", {ResourceType::Nv, "", "_temp_p"}, "SNVT_temp_p"},
        {"StandardCp", {ResourceType::Cp, "", "_location"}, "SCPT_location"},
        {"StandardFp", {ResourceType::Fp, "", "lampActuator"}, "SFPTlampActuator"},
        {"StandardEnum", {ResourceType::Enum, "", "occup_t"}, "occup_t"},
        {"StandardInvalid", {ResourceType::Invalid, "", "text"}, "text"},
        {"UserNv", {ResourceType::Nv, kUserPrefix, "flowRate"}, "UNVTflowRate"},
        {"UserCp", {ResourceType::Cp, kUserPrefix, "Setpoint"}, "UCPTSetpoint"},
        {"UserFp", {ResourceType::Fp, kUserPrefix, "Boiler"}, "UFPTBoiler"},
        {"UserEnum", {ResourceType::Enum, kUserPrefix, "mode_t"}, "mode_t"},
        {"ProgramIdWithScopeZero", {ResourceType::Nv, "8000010000000000-0", "a"}, "SNVTa"},
        {"StandardProgramIdWithAScope", {ResourceType::Nv, "0000000000000000-3", "a"}, "UNVTa"},
        {"InvalidPrefix", {ResourceType::Nv, "12", "a"}, "UNVTa"},
        {"NoName", {ResourceType::Nv, "", ""}, "SNVT"},
    }),
    rowName);

struct FromFormatIdCase {
  std::string name;
  std::string text;
  bool isRead;
  ResourceType type;
  std::string id;
  std::string prefix;  // after reading into an identifier of the set 8000010000000000-3
};
class TypeIdFromLonFormatId : public testing::TestWithParam<FromFormatIdCase> {};

TEST_P(TypeIdFromLonFormatId, ReadsEveryTextThatIsNotEmpty) {
  const FromFormatIdCase& c = GetParam();
  TypeId id(ResourceType::Fp, kUserPrefix, "before");
  EXPECT_EQ(id.fromLonFormatId(c.text), c.isRead);
  EXPECT_EQ(id.getType(), c.type);
  EXPECT_EQ(id.getId(), c.id);
  EXPECT_EQ(id.getPrefix(), c.prefix);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypeIdFromLonFormatId,
    testing::ValuesIn(std::vector<FromFormatIdCase>{
        {"Empty", "", false, ResourceType::Invalid, "", kUserPrefix},
        {"StandardNv", "SNVT_temp_p", true, ResourceType::Nv, "_temp_p", "0000000000000000-0"},
        {"StandardCp", "SCPTlocation", true, ResourceType::Cp, "location", "0000000000000000-0"},
        {"StandardFp", "SFPTlamp", true, ResourceType::Fp, "lamp", "0000000000000000-0"},
        {"UserNv", "UNVTflowRate", true, ResourceType::Nv, "flowRate", kUserPrefix},
        {"UserCp", "UCPTSetpoint", true, ResourceType::Cp, "Setpoint", kUserPrefix},
        {"UserFp", "UFPTBoiler", true, ResourceType::Fp, "Boiler", kUserPrefix},
        {"OneLetterName", "SNVTa", true, ResourceType::Nv, "a", "0000000000000000-0"},
        {"Enumeration", "occup_t", true, ResourceType::Enum, "occup_t", kUserPrefix},
        {"FourCharacters", "SNVT", true, ResourceType::Enum, "SNVT", kUserPrefix},
        {"OneCharacter", "S", true, ResourceType::Enum, "S", kUserPrefix},
        {"ThirdLetterOfNvIsFree", "SNxT_a", true, ResourceType::Nv, "_a", "0000000000000000-0"},
        {"ThirdLetterOfUserNvIsFree", "UN#Ta", true, ResourceType::Nv, "a", kUserPrefix},
        {"ThirdLetterOfCpCounts", "SCxT_a", true, ResourceType::Enum, "SCxT_a", kUserPrefix},
        {"ThirdLetterOfFpCounts", "SFxT_a", true, ResourceType::Enum, "SFxT_a", kUserPrefix},
        {"OtherSecondLetter", "SXPT_a", true, ResourceType::Enum, "SXPT_a", kUserPrefix},
        {"OtherFirstLetter", "XNVT_a", true, ResourceType::Enum, "XNVT_a", kUserPrefix},
        {"OtherFourthLetter", "SNVX_a", true, ResourceType::Enum, "SNVX_a", kUserPrefix},
        {"LowerCase", "snvt_a", true, ResourceType::Enum, "snvt_a", kUserPrefix},
    }),
    rowName);

TEST(TypeId, ReadsAFormatIdFromItsOwnName) {
  TypeId id(ResourceType::Enum, kUserPrefix, "UCPTSetpoint");
  EXPECT_TRUE(id.fromLonFormatId(id.getId()));
  EXPECT_EQ(id.getType(), ResourceType::Cp);
  EXPECT_EQ(id.getId(), "Setpoint");
}

// --- Plain form and LonMark format ---

struct TextCase {
  std::string name;
  IdFields fields;
  std::string plain;
  std::string lonFormat;
};
class TypeIdText : public testing::TestWithParam<TextCase> {};

TEST_P(TypeIdText, IsPlainOrAFormatSpecification) {
  const TypeId id = GetParam().fields.make();
  EXPECT_EQ(id.toString(), GetParam().plain);
  EXPECT_EQ(id.toLonFormat(), GetParam().lonFormat);
}

INSTANTIATE_TEST_SUITE_P(
    Types, TypeIdText,
    testing::ValuesIn(std::vector<TextCase>{
        {"StandardNv",
         {ResourceType::Nv, "", "_temp_p"},
         "0000000000000000-0/SNVT_temp_p",
         "#0000000000000000[0].SNVT_temp_p"},
        {"StandardEnum",
         {ResourceType::Enum, "", "occup_t"},
         "0000000000000000-0/occup_t",
         "#0000000000000000[0].occup_t"},
        {"UserNvMasked",
         {ResourceType::Nv, "80000101280000AA-4", "flowRate"},
         "8000010128000000-4/UNVTflowRate",
         "#8000010128000000[4].UNVTflowRate"},
        {"UserFp",
         {ResourceType::Fp, "8000010128C00142-6", "Boiler"},
         "8000010128000142-6/UFPTBoiler",
         "#8000010128000142[6].UFPTBoiler"},
        {"NameWithDash",
         {ResourceType::Cp, kUserPrefix, "a-b"},
         "8000010000000000-3/UCPTa-b",
         "#8000010000000000[3].UCPTa-b"},
        {"InvalidPrefixEnum", {ResourceType::Enum, "12", "occup_t"}, "/occup_t", "#].occup_t"},
        {"InvalidPrefixNv", {ResourceType::Nv, "12", "a"}, "/UNVTa", "#].UNVTa"},
        {"None", {ResourceType::Invalid, "", ""}, "0000000000000000-0/", "#0000000000000000[0]."},
    }),
    rowName);

struct FromTextCase {
  std::string name;
  std::string text;
  ResourceType type;
  std::string id;
  Scope scope;
  std::string plain;
};
class TypeIdFromString : public testing::TestWithParam<FromTextCase> {};

TEST_P(TypeIdFromString, ReadsPrefixAndFormatId) {
  const FromTextCase& c = GetParam();
  LogCapture log;
  TypeId id(ResourceType::Fp, "9FFFFFFFFFFFFFFF-6", "before");
  id.fromString(c.text);
  EXPECT_EQ(id.getType(), c.type);
  EXPECT_EQ(id.getId(), c.id);
  EXPECT_EQ(id.getScope(), c.scope);
  EXPECT_EQ(id.toString(), c.plain);
  EXPECT_TRUE(log.lines().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypeIdFromString,
    testing::ValuesIn(std::vector<FromTextCase>{
        {"Empty", "", ResourceType::Invalid, "", Scope::Standard, "0000000000000000-0/"},
        {"NoSlash", "SNVT_temp_p", ResourceType::Invalid, "", Scope::Standard,
         "0000000000000000-0/"},
        {"Standard", "0000000000000000-0/SNVT_temp_p", ResourceType::Nv, "_temp_p", Scope::Standard,
         "0000000000000000-0/SNVT_temp_p"},
        {"EmptyPrefix", "/SCPTlocation", ResourceType::Cp, "location", Scope::Standard,
         "0000000000000000-0/SCPTlocation"},
        {"User", "80000101280000AA-4/UNVTflowRate", ResourceType::Nv, "flowRate",
         Scope::ManufacturerClass, "8000010128000000-4/UNVTflowRate"},
        {"UserEnum", "8000010000000000-3/mode_t", ResourceType::Enum, "mode_t", Scope::Manufacturer,
         "8000010000000000-3/mode_t"},
        {"StandardNameDropsThePrefix", "80000101280000AA-4/SNVT_temp_p", ResourceType::Nv,
         "_temp_p", Scope::Standard, "0000000000000000-0/SNVT_temp_p"},
        {"UserNameOfTheStandardSet", "0000000000000000-0/UNVTa", ResourceType::Nv, "a",
         Scope::Standard, "0000000000000000-0/SNVTa"},
        {"FourLetters", "/SNVT", ResourceType::Enum, "SNVT", Scope::Standard,
         "0000000000000000-0/SNVT"},
        {"FreeThirdLetter", "/SNxT_a", ResourceType::Nv, "_a", Scope::Standard,
         "0000000000000000-0/SNVT_a"},
        {"SecondSlashIsPartOfTheName", "/a/b", ResourceType::Enum, "a/b", Scope::Standard,
         "0000000000000000-0/a/b"},
        {"ShortPrefix", "8000/UNVTa", ResourceType::Nv, "a", Scope::InvalidScope, "/UNVTa"},
        {"RejectedPrefix", "XXXXXXXXXXXXXXXX-3/a", ResourceType::Enum, "a", Scope::InvalidScope,
         "/a"},
    }),
    rowName);

struct NamelessCase {
  std::string name;
  std::string text;
  std::string message;
};
class TypeIdNameless : public testing::TestWithParam<NamelessCase> {};

TEST_P(TypeIdNameless, IsInvalidWithADebugMessage) {
  LogCapture log;
  TypeId id(ResourceType::Nv, "", "before");
  id.fromString(GetParam().text);
  EXPECT_EQ(id.getType(), ResourceType::Invalid);
  EXPECT_EQ(id.getId(), "");
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Debug);
  EXPECT_EQ(log.lines()[0].text, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, TypeIdNameless,
    testing::ValuesIn(std::vector<NamelessCase>{
        {"SlashAlone", "/", "[TypeId::fromString]failed to get type and id from '/'\n"},
        {"PrefixAlone", "0000000000000000-0/",
         "[TypeId::fromString]failed to get type and id from '0000000000000000-0/'\n"},
    }),
    rowName);

TEST(TypeIdFromString, KeepsTheValidityOfThePrefixWithoutASlash) {
  TypeId id(ResourceType::Nv, "12", "before");
  id.fromString("SNVT_temp_p");
  EXPECT_FALSE(id.isPrefixValid());
  EXPECT_EQ(id.getScope(), Scope::InvalidScope);
}

TEST(TypeIdFromString, IsSilentBelowTheDebugLevel) {
  LogCapture log(Logger::Info);
  TypeId id;
  id.fromString("/");
  EXPECT_TRUE(log.lines().empty());
}

struct StripCase {
  std::string name;
  std::string text;
  std::string stripped;
};
class TypeIdStripPrefix : public testing::TestWithParam<StripCase> {};

TEST_P(TypeIdStripPrefix, TakesTheLettersOff) {
  LogCapture log;
  EXPECT_EQ(TypeId::stripPrefix(GetParam().text), GetParam().stripped);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Trace);
  EXPECT_EQ(log.lines()[0].text, "[TypeId::stripPrefix] '" + GetParam().text + "'\n");
}

INSTANTIATE_TEST_SUITE_P(Texts, TypeIdStripPrefix,
                         testing::ValuesIn(std::vector<StripCase>{
                             {"StandardNv", "SNVT_temp_p", "_temp_p"},
                             {"UserNv", "UNVTflow", "flow"},
                             {"StandardCp", "SCPTlocation", "location"},
                             {"UserCp", "UCPTset", "set"},
                             {"StandardFp", "SFPTlamp", "lamp"},
                             {"UserFp", "UFPTboiler", "boiler"},
                             {"LettersAlone", "SNVT", ""},
                             {"OnlyOnce", "SNVTSNVT_a", "SNVT_a"},
                             {"ThirdLetterCounts", "SNxT_a", "SNxT_a"},
                             {"OtherLetters", "XNVT_a", "XNVT_a"},
                             {"LowerCase", "snvt_a", "snvt_a"},
                             {"InTheMiddle", "aSNVT_b", "aSNVT_b"},
                             {"Short", "SNV", "SNV"},
                             {"Empty", "", ""},
                         }),
                         rowName);

}  // namespace
}  // namespace zavri::korvat
