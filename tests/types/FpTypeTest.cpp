#include "korvat/types/FpType.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/LogCapture.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::LogCapture;
using testing::ElementsAre;
using testing::IsEmpty;
using DpType = DpRef::DpType;

constexpr auto kNoKind = static_cast<DpType>(7);
const std::string kNoKindMessage = "[FpType::getColl] invalid type (7), using nvColl\n";
const std::string kLinearMessage = "[FpType::getDpRefByIndex] not found - using linear search\n";

// Adds a datapoint and returns it.
DpRef* add(FpType& profile, DpType dpType, const std::string& name, std::int32_t index = 0) {
  auto dp = std::make_unique<DpRef>(&profile, dpType, index);
  dp->setName(name);
  DpRef* added = dp.get();
  profile.add(std::move(dp));
  return added;
}

// Names and numbers of a collection: "nviA#1 nvoB#2 ".
std::string list(const std::vector<DpRef*>& coll) {
  std::string text;
  for (const DpRef* dp : coll) text += dp->getName() + "#" + std::to_string(dp->getIndex()) + " ";
  return text;
}

FpType makeProfile(const std::string& name) {
  FpType profile;
  profile.getTypeId().setId(name);
  profile.setIndex(22);
  profile.setKey(8301);
  profile.addFlags(BaseType::kObsolete);
  profile.getBase() = TypeId(ResourceType::Fp, "", "controller");
  add(profile, DpType::Nv, "nviA");
  add(profile, DpType::Cp, "cpA");
  return profile;
}

// --- Fields ---

TEST(FpType, IsAProfileWithoutAnything) {
  const FpType profile;
  EXPECT_EQ(profile.getTypeId().getType(), ResourceType::Fp);
  EXPECT_EQ(profile.getName(), "");
  EXPECT_EQ(profile.getIndex(), -1);
  EXPECT_EQ(profile.getFlags(), 0u);
  EXPECT_EQ(profile.getKey(), -1);
  EXPECT_FALSE(profile.hasKey());
  EXPECT_TRUE(profile.getBase() == TypeId::None);
  EXPECT_FALSE(profile.hasBase());
  EXPECT_THAT(profile.getNvColl(), IsEmpty());
  EXPECT_THAT(profile.getCpColl(), IsEmpty());
}

TEST(FpType, HasItsFlagBits) {
  EXPECT_EQ(BaseType::kObsolete, 0x1u);
  EXPECT_EQ(BaseType::kStandardProfile, 0x4u);
}

TEST(FpType, KeepsItsKey) {
  FpType profile;
  profile.setKey(0);
  EXPECT_EQ(profile.getKey(), 0);
}

struct BaseCase {
  std::string name;
  TypeId base;
  bool hasBase;
};
class FpTypeBase : public testing::TestWithParam<BaseCase> {};

TEST_P(FpTypeBase, IsAProfileWithAName) {
  FpType profile;
  profile.getBase() = GetParam().base;
  EXPECT_EQ(profile.hasBase(), GetParam().hasBase);
}

INSTANTIATE_TEST_SUITE_P(Identifiers, FpTypeBase,
                         testing::ValuesIn(std::vector<BaseCase>{
                             {"Default", TypeId(), false},
                             {"Profile", TypeId(ResourceType::Fp, "", "nodeObject"), true},
                             {"UserProfile",
                              TypeId(ResourceType::Fp, "9FFFFF0000000000-3", "boiler"), true},
                             {"ProfileWithoutName", TypeId(ResourceType::Fp, "", ""), false},
                             {"OtherType", TypeId(ResourceType::Nv, "", "nodeObject"), false},
                             {"Invalid", TypeId(ResourceType::Invalid, "", "nodeObject"), false},
                         }),
                         [](const auto& info) { return info.param.name; });

// --- Adding ---

TEST(FpType, NumbersItsDatapointsByPositionWhereTheyHaveNoNumber) {
  FpType profile;
  for (const char* name : {"a", "b", "c"}) add(profile, DpType::Nv, name);
  for (const char* name : {"x", "y"}) add(profile, DpType::Cp, name);
  EXPECT_EQ(list(profile.getNvColl()), "a#1 b#2 c#3 ");
  EXPECT_EQ(list(profile.getCpColl()), "x#1 y#2 ");
}

TEST(FpType, KeepsTheNumbersThatItsDatapointsHave) {
  FpType profile;
  add(profile, DpType::Nv, "a", 5);
  add(profile, DpType::Nv, "b");
  add(profile, DpType::Nv, "c", -1);
  add(profile, DpType::Nv, "d", 2);
  EXPECT_EQ(list(profile.getNvColl()), "a#5 b#2 c#-1 d#2 ");
}

TEST(FpType, OwnsWhatIsAdded) {
  FpType other;
  FpType profile;
  auto dp = std::make_unique<DpRef>(&other, DpType::Nv, 1);
  const DpRef* added = dp.get();
  profile.add(std::move(dp));
  EXPECT_THAT(profile.getNvColl(), ElementsAre(added));
  EXPECT_EQ(added->getFpType(), &profile);
}

TEST(FpType, ReportsANullDatapointAndAddsNothing) {
  FpType profile;
  LogCapture log;
  profile.add(nullptr);
  ASSERT_EQ(log.lines().size(), 1u);
  EXPECT_EQ(log.lines()[0].level, Logger::Error);
  EXPECT_EQ(log.lines()[0].text, "[FpType::add] null pointer\n");
  EXPECT_THAT(profile.getNvColl(), IsEmpty());
  EXPECT_THAT(profile.getCpColl(), IsEmpty());
}

// --- A number that is no kind ---

TEST(FpType, SelectsTheCollectionOfAKind) {
  FpType profile;
  const FpType& readOnly = profile;
  LogCapture log;
  EXPECT_EQ(&profile.getColl(DpType::Nv), &profile.getNvColl());
  EXPECT_EQ(&profile.getColl(DpType::Cp), &profile.getCpColl());
  EXPECT_EQ(&readOnly.getColl(DpType::Nv), &profile.getNvColl());
  EXPECT_EQ(&readOnly.getColl(DpType::Cp), &profile.getCpColl());
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST(FpType, SelectsTheVariablesWithAnErrorForAnyOtherNumber) {
  FpType profile;
  const FpType& readOnly = profile;
  LogCapture log;
  EXPECT_EQ(&profile.getColl(kNoKind), &profile.getNvColl());
  EXPECT_EQ(&readOnly.getColl(static_cast<DpType>(-1)), &profile.getNvColl());
  EXPECT_THAT(log.texts(Logger::Error),
              ElementsAre(kNoKindMessage, "[FpType::getColl] invalid type (-1), using nvColl\n"));
  EXPECT_EQ(log.lines().size(), 2u);
}

TEST(FpType, ReportsANumberThatIsNoKindInEveryOperation) {
  FpType profile;
  LogCapture log(Logger::Error);
  DpRef* dp = add(profile, kNoKind, "a");
  dp->setMember(3);
  dp->setAppliesTo("x");
  EXPECT_THAT(log.texts(), ElementsAre(kNoKindMessage));
  EXPECT_EQ(list(profile.getNvColl()), "a#1 ");

  EXPECT_EQ(profile.getDpRefByIndex(kNoKind, 1), dp);
  EXPECT_EQ(profile.getDpRefByMember(kNoKind, 3), dp);
  EXPECT_EQ(profile.getDpRefByTypeId(kNoKind, TypeId::None, "x"), dp);
  EXPECT_THAT(log.texts(),
              ElementsAre(kNoKindMessage, kNoKindMessage, kNoKindMessage, kNoKindMessage));
}

TEST(FpType, IsSilentBelowTheErrorLevel) {
  FpType profile;
  LogCapture log(Logger::Silent);
  profile.add(nullptr);
  profile.getColl(kNoKind);
  EXPECT_THAT(log.texts(), IsEmpty());
}

// --- By number ---

struct IndexCase {
  std::string name;
  std::vector<std::int32_t> indices;  // of the members a, b, c ...
  std::uint32_t index;
  std::string found;  // empty: none
  bool isSearched;    // member by member
};
class FpTypeByIndex : public testing::TestWithParam<IndexCase> {};

TEST_P(FpTypeByIndex, IsTheFirstMemberWithThatNumber) {
  const IndexCase& c = GetParam();
  for (const DpType dpType : {DpType::Nv, DpType::Cp}) {
    FpType profile;
    std::string name = "a";
    for (const std::int32_t index : c.indices) {
      add(profile, dpType, name, index);
      ++name[0];
    }
    LogCapture log;
    const DpRef* found = profile.getDpRefByIndex(dpType, c.index);
    EXPECT_EQ(found == nullptr ? "" : found->getName(), c.found);
    EXPECT_EQ(log.texts(),
              c.isSearched ? std::vector<std::string>{kLinearMessage} : std::vector<std::string>{});
    EXPECT_EQ(log.texts(Logger::Debug), log.texts());
  }
}

INSTANTIATE_TEST_SUITE_P(Numbers, FpTypeByIndex,
                         testing::ValuesIn(std::vector<IndexCase>{
                             {"First", {0, 0, 0}, 1, "a", false},
                             {"Second", {0, 0, 0}, 2, "b", false},
                             {"Last", {0, 0, 0}, 3, "c", false},
                             {"PastTheLast", {0, 0, 0}, 4, "", true},
                             {"Zero", {0, 0, 0}, 0, "", true},
                             {"SparseBehindItsPlace", {1, 3, 4}, 3, "b", true},
                             {"SparsePastTheSize", {1, 3, 4}, 4, "c", true},
                             {"SparseMissing", {1, 3, 4}, 2, "", true},
                             {"OutOfOrder", {2, 1}, 1, "b", true},
                             {"FirstOfTwoAlike", {4, 9, 9}, 9, "b", true},
                             {"InItsPlaceBeforeTheFirstAlike", {2, 2}, 2, "b", false},
                             {"Empty", {}, 1, "", true},
                             {"Huge", {0, -1}, 0xFFFFFFFF, "", true},
                         }),
                         [](const auto& info) { return info.param.name; });

TEST(FpType, PassesOverNullInACollection) {
  FpType profile;
  add(profile, DpType::Nv, "a");
  profile.getColl(DpType::Nv).insert(profile.getColl(DpType::Nv).begin(), nullptr);
  ASSERT_NE(profile.getDpRefByIndex(DpType::Nv, 1), nullptr);
  EXPECT_EQ(profile.getDpRefByIndex(DpType::Nv, 1)->getName(), "a");
  EXPECT_EQ(profile.getDpRefByMember(DpType::Nv, 5), nullptr);
  EXPECT_EQ(profile.getDpRefByTypeId(DpType::Nv, TypeId(ResourceType::Nv, "", "x"), ""), nullptr);
}

// --- By member number ---

TEST(FpType, FindsTheFirstDatapointWithAMemberNumber) {
  FpType profile;
  add(profile, DpType::Nv, "a")->setMember(10);
  DpRef* b = add(profile, DpType::Nv, "b");
  b->setMember(20);
  add(profile, DpType::Nv, "c")->setMember(20);
  DpRef* property = add(profile, DpType::Cp, "d");
  LogCapture log;
  EXPECT_EQ(profile.getDpRefByMember(DpType::Nv, 20), b);
  EXPECT_EQ(profile.getDpRefByMember(DpType::Nv, 2), nullptr);
  EXPECT_EQ(profile.getDpRefByMember(DpType::Nv, 0), nullptr);
  EXPECT_EQ(profile.getDpRefByMember(DpType::Cp, 20), nullptr);
  EXPECT_EQ(profile.getDpRefByMember(DpType::Cp, 0), property);
  EXPECT_THAT(log.texts(), IsEmpty());
}

// --- By type ---

struct TypedDatapoint {
  std::string name;
  TypeId typeId;
  std::string appliesTo;
};

struct TypeIdCase {
  std::string name;
  TypeId typeId;
  std::string appliesTo;
  std::string found;  // empty: none
};
class FpTypeByTypeId : public testing::TestWithParam<TypeIdCase> {};

const TypeId kLocation(ResourceType::Cp, "", "location");
const TypeId kGain(ResourceType::Cp, "", "gain");
const TypeId kUserGain(ResourceType::Cp, "9FFFFF1111111111-3", "gain");

TEST_P(FpTypeByTypeId, IsTheFirstOfThatTypeThatAppliesToIt) {
  FpType profile;
  profile.getTypeId().setId("_x");
  for (const TypedDatapoint& row : std::vector<TypedDatapoint>{
           {"otherProfile", kLocation, "SFPT_y"},
           {"nothing", kLocation, ""},
           {"ofTheProfile", kLocation, "SFPT_x"},
           {"ofTheProfileToo", kLocation, "_x"},
           {"ofAVariable", kGain, "nvoValue"},
           {"ofAnotherVariable", kGain, "nvoValue2"},
           {"userType", kUserGain, "nvoValue"},
       }) {
    DpRef* dp = add(profile, DpType::Cp, row.name);
    dp->setTypeId(row.typeId);
    dp->setAppliesTo(row.appliesTo);
  }
  const TypeIdCase& c = GetParam();
  const DpRef* found = profile.getDpRefByTypeId(DpType::Cp, c.typeId, c.appliesTo);
  EXPECT_EQ(found == nullptr ? "" : found->getName(), c.found);
  EXPECT_EQ(profile.getDpRefByTypeId(DpType::Nv, c.typeId, c.appliesTo), nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Types, FpTypeByTypeId,
    testing::ValuesIn(std::vector<TypeIdCase>{
        {"OfTheProfileItself", kLocation, "", "ofTheProfile"},
        {"OfAnotherProfile", kLocation, "SFPT_y", "otherProfile"},
        {"ExactText", kLocation, "_x", "ofTheProfileToo"},
        {"PartOfAText", kLocation, "SFPT", ""},
        {"OfAVariable", kGain, "nvoValue", "ofAVariable"},
        {"OfAVariableWithALongerName", kGain, "nvoValue2", "ofAnotherVariable"},
        {"OtherCase", kGain, "nvovalue", ""},
        {"NoneForTheProfile", kGain, "", ""},
        {"UserType", kUserGain, "nvoValue", "userType"},
        {"UserTypeOfTheSameMaker", TypeId(ResourceType::Cp, "9FFFFF2222222222-3", "gain"),
         "nvoValue", "userType"},
        {"OtherScope", TypeId(ResourceType::Cp, "9FFFFF1111111111-4", "gain"), "nvoValue", ""},
        {"OtherKind", TypeId(ResourceType::Nv, "", "gain"), "nvoValue", ""},
        {"OtherName", TypeId(ResourceType::Cp, "", "Gain"), "nvoValue", ""},
        {"InvalidPrefix", TypeId(ResourceType::Cp, "1", "gain"), "nvoValue", ""},
    }),
    [](const auto& info) { return info.param.name; });

// --- Copies ---

TEST(FpType, CopiesEverythingAndSharesTheDatapoints) {
  const FpType profile = makeProfile("a");
  const FpType copy(profile);
  EXPECT_TRUE(copy.getTypeId() == TypeId(ResourceType::Fp, "", "a"));
  EXPECT_EQ(copy.getIndex(), 22);
  EXPECT_EQ(copy.getKey(), 8301);
  EXPECT_EQ(copy.getFlags(), BaseType::kObsolete);
  EXPECT_EQ(copy.getBase().getId(), "controller");
  EXPECT_EQ(copy.getNvColl(), profile.getNvColl());
  EXPECT_EQ(copy.getCpColl(), profile.getCpColl());
  ASSERT_EQ(copy.getNvColl().size(), 1u);
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), &profile);
}

TEST(FpType, AddsToOneCopyOnly) {
  FpType profile = makeProfile("a");
  FpType copy(profile);
  add(copy, DpType::Nv, "nvoB");
  EXPECT_EQ(list(profile.getNvColl()), "nviA#1 ");
  EXPECT_EQ(list(copy.getNvColl()), "nviA#1 nvoB#2 ");
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), &profile);
  EXPECT_EQ(copy.getNvColl()[1]->getFpType(), &copy);
}

TEST(FpType, LeavesItsDatapointsToItsCopies) {
  std::optional<FpType> profile(makeProfile("a"));
  const FpType copy(*profile);
  const FpType copyOfTheCopy(copy);
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), &*profile);
  profile.reset();
  EXPECT_EQ(list(copy.getNvColl()), "nviA#1 ");
  EXPECT_EQ(list(copyOfTheCopy.getCpColl()), "cpA#1 ");
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), nullptr);
  EXPECT_EQ(copy.getCpColl()[0]->getFpType(), nullptr);
}

TEST(FpType, LosesNothingWhenACopyGoes) {
  const FpType profile = makeProfile("a");
  { const FpType copy(profile); }
  EXPECT_EQ(list(profile.getNvColl()), "nviA#1 ");
  EXPECT_EQ(profile.getNvColl()[0]->getFpType(), &profile);
}

TEST(FpType, TakesItsDatapointsAlongWhenItIsMoved) {
  FpType profile = makeProfile("a");
  const FpType copy(profile);
  const DpRef* dp = profile.getNvColl()[0];
  const FpType moved(std::move(profile));
  EXPECT_EQ(moved.getName(), "a");
  EXPECT_EQ(moved.getKey(), 8301);
  EXPECT_EQ(moved.getBase().getId(), "controller");
  EXPECT_THAT(moved.getNvColl(), ElementsAre(dp));
  EXPECT_EQ(dp->getFpType(), &moved);
  EXPECT_EQ(moved.getCpColl()[0]->getFpType(), &moved);
  EXPECT_THAT(copy.getNvColl(), ElementsAre(dp));
}

TEST(FpType, IsEmptyButUsableAfterItWasMoved) {
  FpType profile = makeProfile("a");
  const FpType moved(std::move(profile));
  EXPECT_THAT(profile.getNvColl(), IsEmpty());  // NOLINT: what is left is what is tested
  EXPECT_THAT(profile.getCpColl(), IsEmpty());
  add(profile, DpType::Nv, "nvoB");
  EXPECT_EQ(list(profile.getNvColl()), "nvoB#1 ");
  EXPECT_EQ(list(moved.getNvColl()), "nviA#1 ");
}

TEST(FpType, StaysTheOwnerInAVectorThatGrows) {
  EXPECT_TRUE(std::is_nothrow_move_constructible_v<FpType>);
  std::vector<FpType> profiles;
  for (int i = 0; i < 20; ++i) profiles.push_back(makeProfile("a"));
  for (const FpType& profile : profiles) {
    EXPECT_EQ(profile.getNvColl()[0]->getFpType(), &profile);
  }
}

TEST(FpType, ReplacesItsDatapointsWhenAssigned) {
  FpType target = makeProfile("target");
  const FpType copyOfTheTarget(target);
  const FpType source = makeProfile("source");
  target = source;
  EXPECT_EQ(target.getName(), "source");
  EXPECT_EQ(target.getKey(), 8301);
  EXPECT_EQ(target.getFlags(), BaseType::kObsolete);
  EXPECT_EQ(target.getNvColl(), source.getNvColl());
  EXPECT_EQ(target.getCpColl(), source.getCpColl());
  EXPECT_EQ(source.getNvColl()[0]->getFpType(), &source);
  // The old ones live on in the copy, without a profile.
  EXPECT_EQ(list(copyOfTheTarget.getNvColl()), "nviA#1 ");
  EXPECT_EQ(copyOfTheTarget.getNvColl()[0]->getFpType(), nullptr);
}

TEST(FpType, TakesDatapointsAlongWhenItIsMovedByAssignment) {
  FpType target = makeProfile("target");
  FpType source = makeProfile("source");
  const DpRef* dp = source.getNvColl()[0];
  target = std::move(source);
  EXPECT_EQ(target.getName(), "source");
  EXPECT_THAT(target.getNvColl(), ElementsAre(dp));
  EXPECT_EQ(dp->getFpType(), &target);
}

TEST(FpType, IsUnchangedWhenAssignedToItself) {
  FpType profile = makeProfile("a");
  const FpType& same = profile;
  const std::vector<DpRef*> nvs = profile.getNvColl();
  profile = same;
  EXPECT_EQ(profile.getName(), "a");
  EXPECT_EQ(profile.getNvColl(), nvs);
  EXPECT_EQ(list(profile.getCpColl()), "cpA#1 ");
  EXPECT_EQ(nvs[0]->getFpType(), &profile);
}

TEST(FpType, IsUnchangedWhenMovedToItself) {
  FpType profile = makeProfile("a");
  FpType& same = profile;
  const std::vector<DpRef*> nvs = profile.getNvColl();
  profile = std::move(same);
  EXPECT_EQ(profile.getName(), "a");
  EXPECT_EQ(profile.getNvColl(), nvs);
  EXPECT_EQ(nvs[0]->getFpType(), &profile);
}

TEST(FpType, StaysTheOwnerWhenItsCopyIsAssignedBack) {
  FpType profile = makeProfile("a");
  const FpType copy(profile);
  profile = copy;
  EXPECT_EQ(profile.getNvColl(), copy.getNvColl());
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), &profile);
}

TEST(FpType, BecomesTheOwnerOfAssignedDatapointsWithoutAProfile) {
  std::optional<FpType> original(makeProfile("a"));
  const FpType copy(*original);
  original.reset();
  FpType target;
  target = copy;
  EXPECT_EQ(copy.getNvColl()[0]->getFpType(), &target);
}

TEST(FpType, CanBeCopiedAndDestroyedThroughItsBase) {
  auto profile = std::make_unique<FpType>(makeProfile("a"));
  const FpType copy(*profile);
  const std::unique_ptr<BaseType> type = std::move(profile);
  EXPECT_EQ(list(dynamic_cast<const FpType&>(*type).getNvColl()), "nviA#1 ");
}

}  // namespace
}  // namespace zavri::korvat
