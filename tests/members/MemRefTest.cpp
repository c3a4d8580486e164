#include "korvat/members/MemRef.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeRef;
using test::makeScalar;
using test::makeStruct;
using test::memberXml;
using test::nvtXml;
using test::refXml;
using test::scalarXml;
using test::structXml;
using Lines = std::vector<std::string>;

const base::Buffer kNothing;

// A catalogue of references of each sort:
//   _pair       structure of "a" (1 byte) and "b" (2 bytes)
//   _toPair     a reference to _pair, _toToPair one to _toPair
//   _words      an array of 3 numbers of 2 bytes
//   _circleA/B  references to each other, _toCircle one to the first
//   _self       a structure that holds itself, _mutualA/B two that hold each other
//   _empty      a type without a layout
//   _toMissing  a reference to a type that is not there
class MemRefInCatalogue : public testing::Test {
 protected:
  MemRefInCatalogue() : _manager(makeManager()) {}

  TypeManager* manager() { return &_manager; }

 private:
  TypeManager makeManager() {
    const std::string self =
        memberXml("x", scalarXml("unsigned char")) + memberXml("again", refXml("_self"));
    _files.write(TypeId::StdPrefix, "nvs",
                 nvtXml("_pair", structXml(memberXml("a", scalarXml("unsigned short")) +
                                           memberXml("b", scalarXml("unsigned long")))) +
                     nvtXml("_toPair", refXml("_pair")) + nvtXml("_toToPair", refXml("_toPair")) +
                     nvtXml("_words", scalarXml("signed long", "<array-size>3</array-size>")) +
                     nvtXml("_circleA", refXml("_circleB")) +
                     nvtXml("_circleB", refXml("_circleA")) +
                     nvtXml("_toCircle", refXml("_circleA")) + nvtXml("_self", structXml(self)) +
                     nvtXml("_mutualA", structXml(memberXml("x", scalarXml("unsigned char")) +
                                                  memberXml("other", refXml("_mutualB")))) +
                     nvtXml("_mutualB", structXml(memberXml("y", scalarXml("unsigned long")) +
                                                  memberXml("other", refXml("_mutualA")))) +
                     nvtXml("_empty", "<size>0</size>") + nvtXml("_toMissing", refXml("_missing")));
    return _files.makeManager();
  }

  test::TempCatalogue _files;
  TypeManager _manager;
};

TEST(MemRef, RefersToVariableAndPropertyTypes) {
  MemRef member;
  EXPECT_EQ(member.getRefId().getType(), ResourceType::Nv);
  EXPECT_TRUE(member.setRefType(ResourceType::Cp));
  EXPECT_EQ(member.getRefId().getType(), ResourceType::Cp);
  for (const ResourceType type : {ResourceType::Invalid, ResourceType::Enum, ResourceType::Fp}) {
    EXPECT_FALSE(member.setRefType(type));
    EXPECT_EQ(member.getRefId().getType(), ResourceType::Cp);
  }
  EXPECT_TRUE(member.setRefType(ResourceType::Nv));
  EXPECT_EQ(member.getRefId().getType(), ResourceType::Nv);
}

TEST(MemRef, ClonesItsReference) {
  const std::unique_ptr<Member> clone = makeRef("r", "_pair", 3)->clone();
  EXPECT_EQ(clone->getKind(), Member::Kind::Ref);
  EXPECT_EQ(clone->getArraySize(), 3u);
  const auto* copy = dynamic_cast<const MemRef*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->getRefId(), TypeId(ResourceType::Nv, TypeId::StdPrefix, "_pair"));
}

// --- Resolving ---

TEST_F(MemRefInCatalogue, ResolvesToTheTypeItNames) {
  const VarType* type = makeRef("r", "_pair")->resolve(manager());
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->getName(), "_pair");
}

TEST_F(MemRefInCatalogue, ResolvesAlongAChainOfReferences) {
  const VarType* type = makeRef("r", "_toToPair")->resolve(manager());
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->getName(), "_pair");
}

TEST_F(MemRefInCatalogue, ResolvesToATypeWithoutALayout) {
  const VarType* type = makeRef("r", "_empty")->resolve(manager());
  ASSERT_NE(type, nullptr);
  EXPECT_EQ(type->getMember(), nullptr);
}

struct BrokenCase {
  std::string name;
  std::string type;
  Lines warnings;
};

class BrokenReference : public MemRefInCatalogue, public testing::WithParamInterface<BrokenCase> {};

TEST_P(BrokenReference, IsReportedEachTimeItIsMet) {
  const auto member = makeRef("r", GetParam().type);
  static_cast<void>(manager()->getType(TypeId(ResourceType::Nv, TypeId::StdPrefix, "_pair")));
  test::LogCapture log;

  EXPECT_EQ(member->resolve(manager()), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
  log.clear();
  EXPECT_EQ(member->getBitCount(manager()), 0u);
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
  log.clear();
  EXPECT_EQ(member->findMemberAtPath(manager(), "a"), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
  log.clear();
  EXPECT_EQ(test::recordWalk(*member, manager()), Lines{"failed"});
  EXPECT_EQ(log.texts(Logger::Warning), GetParam().warnings);
}

const std::vector<BrokenCase> kBrokenCases = {
    {"Missing", "_missing", {"[korvat] could not resolve ref 0000000000000000-0/SNVT_missing\n"}},
    {"MissingAtTheEndOfAChain",
     "_toMissing",
     {"[korvat] could not resolve ref 0000000000000000-0/SNVT_toMissing\n"}},
    {"Circle", "_circleA", {"[korvat] cyclic reference 0000000000000000-0/SNVT_circleA\n"}},
    {"CircleBehindAChain",
     "_toCircle",
     {"[korvat] cyclic reference 0000000000000000-0/SNVT_toCircle\n"}},
};
INSTANTIATE_TEST_SUITE_P(References, BrokenReference, testing::ValuesIn(kBrokenCases),
                         [](const auto& info) { return info.param.name; });

TEST(MemRef, TakesAChainOfMoreThanSixtyFourTypesForACircle) {
  std::string items = nvtXml("_t0", scalarXml("unsigned char"));
  for (int i = 1; i <= 64; ++i) {
    items += nvtXml("_t" + std::to_string(i), refXml("_t" + std::to_string(i - 1)));
  }
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs", items);
  TypeManager manager = files.makeManager();
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(makeRef("r", "_t63")->getBitCount(&manager), 8u);
  EXPECT_TRUE(log.lines().empty());
  EXPECT_EQ(makeRef("r", "_t64")->resolve(&manager), nullptr);
  EXPECT_EQ(log.texts(), Lines{"[korvat] cyclic reference 0000000000000000-0/SNVT_t64\n"});
}

TEST(MemRef, ResolvesToNothingWithoutAManager) {
  test::LogCapture log;
  EXPECT_EQ(makeRef("r", "_pair")->resolve(nullptr), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] could not resolve ref 0000000000000000-0/SNVT_pair\n"});
}

TEST(MemRef, ResolvesToNothingThroughATypeThatHasNoValues) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums",
              "<enumt id=\"colour_t\" idx=\"1\"><members>"
              "<e-member id=\"RED\"><value>0</value></e-member></members></enumt>");
  TypeManager manager = files.makeManager();
  const auto member = makeRef("r", "colour_t");
  member->getRefId().setType(ResourceType::Enum);
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(member->resolve(&manager), nullptr);
  EXPECT_EQ(member->getBitCount(&manager), 0u);
  EXPECT_TRUE(log.lines().empty());
}

// --- Sizes and paths ---

TEST_F(MemRefInCatalogue, CountsTheBitsOfTheTypeItNames) {
  EXPECT_EQ(makeRef("r", "_pair")->getBitCount(manager()), 24u);
  EXPECT_EQ(makeRef("r", "_toToPair", 2)->getBitCount(manager()), 48u);
  EXPECT_EQ(makeRef("r", "_words")->getBitCount(manager()), 48u);
  EXPECT_EQ(makeRef("r", "_empty")->getBitCount(manager()), 0u);
}

TEST_F(MemRefInCatalogue, CountsATypeThatIsReferredToTwiceBothTimes) {
  const auto root = makeStruct("s", makeRef("r", "_pair"), makeRef("q", "_toPair"));
  EXPECT_EQ(root->getBitCount(manager()), 48u);
}

TEST_F(MemRefInCatalogue, IsTransparentInPaths) {
  const auto reference = makeRef("r", "_toPair");
  const Member* root = reference->findMemberAtPath(manager(), "");
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(root->getKind(), Member::Kind::Aggregate);
  const Member* found = reference->findMemberAtPath(manager(), "b");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->getProgName(), "b");
  const auto structure = makeStruct("s", makeRef("r", "_toPair", 2));
  EXPECT_EQ(structure->findMemberAtPath(manager(), "r[1].b"), found);
  EXPECT_EQ(structure->findMemberAtPath(manager(), "r.c"), nullptr);
  EXPECT_EQ(makeRef("r", "_empty")->findMemberAtPath(manager(), ""), nullptr);
}

// --- Walks ---

TEST_F(MemRefInCatalogue, WalksTheLayoutOfTheTypeAtItsOwnDepth) {
  const auto root =
      makeStruct("s", test::makeBitfield("f", 2, 3), makeRef("r", "_toPair"), makeScalar("x"));
  EXPECT_EQ(test::recordWalk(*root, manager()),
            (Lines{"s @0 d0", "f @0.2 d1", "r @1 d1", " @1 d1", "a @1 d2", "b @2 d2", "end  @4 d1",
                   "x @4 d1", "end s @5 d0"}));
}

TEST_F(MemRefInCatalogue, WalksAnElementOneLevelDeeper) {
  EXPECT_EQ(test::recordWalk(*makeRef("r", "_pair", 3), manager()),
            (Lines{"r(array) @0 d0",                                            //
                   "r[0] @0 d1", " @0 d2", "a @0 d3", "b @1 d3", "end  @3 d2",  //
                   "r[1] @3 d1", " @3 d2", "a @3 d3", "b @4 d3", "end  @6 d2",  //
                   "r[2] @6 d1", " @6 d2", "a @6 d3", "b @7 d3", "end  @9 d2"}));
}

TEST_F(MemRefInCatalogue, WalksAnArrayThatTheTypeIs) {
  EXPECT_EQ(test::recordWalk(*makeStruct("s", makeRef("r", "_words"), makeScalar("x")), manager()),
            (Lines{"s @0 d0", "r @0 d1", "(array) @0 d1", "[0] @0 d2", "[1] @2 d2", "[2] @4 d2",
                   "x @6 d1", "end s @7 d0"}));
}

TEST_F(MemRefInCatalogue, ShowsTheResolvedTypeToItsOwnCallbackOnly) {
  const auto root = makeStruct("s", makeScalar("x"), makeRef("r", "_toToPair"), makeScalar("y"));
  Lines types;
  Member::Context context(manager(), kNothing, true);
  test::WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&types](Member::Context& at, const Member& member) {
    const std::string type = at.currentType == nullptr ? "-" : at.currentType->getName();
    types.push_back(member.getProgName() + ":" + type);
    return true;
  }));
  EXPECT_EQ(types, (Lines{"s:-", "x:-", "r:_pair", ":-", "a:-", "b:-", "y:-"}));
}

TEST_F(MemRefInCatalogue, StaysInPlaceWhenTheCallbackSkipsIt) {
  const auto root = makeStruct("s", makeRef("r", "_pair"), makeScalar("x"));
  Member::Context context(manager(), kNothing, true);
  test::WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [](Member::Context& at, const Member& member) {
    at.skipChildren = member.getProgName() == "r";
    return true;
  }));
  EXPECT_EQ(record.lines, (Lines{"s @0 d0", "r @0 d1", "x @0 d1", "end s @1 d0"}));
}

TEST_F(MemRefInCatalogue, LeavesItsTypeToNobodyWhenItIsSkipped) {
  const auto root = makeStruct(
      "s", makeRef("r", "_pair"), makeScalar("x"), makeRef("r", "_pair"), test::makeFloat("f"),
      makeRef("r", "_pair"), test::makeBitfield("b", 0, 8), makeRef("r", "_pair"),
      test::makeEnum("e", "power_t"), makeRef("r", "_pair"), makeStruct("t"));
  Lines types;
  Member::Context context(manager(), kNothing, true);
  test::WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&types](Member::Context& at, const Member& member) {
    at.skipChildren = member.getKind() == Member::Kind::Ref;
    if (at.skipChildren || at.currentType == nullptr) return true;
    types.push_back(member.getProgName());
    return true;
  }));
  EXPECT_EQ(types, Lines());
}

TEST_F(MemRefInCatalogue, EndsTheWalkWhenTheCallbackAsksForItOrTheTypeHasNoLayout) {
  Member::Context context(manager(), kNothing, true);
  test::WalkRecord record;
  EXPECT_FALSE(record.walk(*makeRef("r", "_pair"), context,
                           [](Member::Context&, const Member&) { return false; }));
  EXPECT_EQ(test::recordWalk(*makeRef("r", "_empty"), manager()), (Lines{"r @0 d0", "failed"}));
}

TEST_F(MemRefInCatalogue, FailsTheWholeWalkAtABrokenReference) {
  const auto root = makeStruct("s", makeScalar("x"), makeRef("r", "_circleB"), makeScalar("y"));
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(test::recordWalk(*root, manager()), (Lines{"s @0 d0", "x @0 d1", "failed"}));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] cyclic reference 0000000000000000-0/SNVT_circleB\n"});
}

// --- Structures that hold themselves ---

TEST_F(MemRefInCatalogue, CountsAStructureInsideItselfAsNothing) {
  test::LogCapture log(Logger::Warning);
  EXPECT_EQ(makeRef("r", "_self")->getBitCount(manager()), 8u);
  EXPECT_EQ(log.texts(), Lines{"[korvat] cyclic reference 0000000000000000-0/SNVT_self\n"});

  log.clear();
  EXPECT_EQ(makeRef("r", "_mutualA")->getBitCount(manager()), 24u);
  EXPECT_EQ(log.texts(), Lines{"[korvat] cyclic reference 0000000000000000-0/SNVT_mutualA\n"});
}

TEST_F(MemRefInCatalogue, GivesUpAWalkThroughAStructureInsideItself) {
  for (const char* type : {"_self", "_mutualA"}) {
    test::LogCapture log(Logger::Warning);
    EXPECT_EQ(test::recordWalk(*makeRef("r", type), manager()).back(), "failed");
    EXPECT_EQ(log.texts(Logger::Warning),
              Lines{"[korvat] walk given up, members nested deeper than 256: \n"});
  }
}

TEST_F(MemRefInCatalogue, FollowsAPathIntoAStructureInsideItself) {
  const Member* found = makeRef("r", "_self")->findMemberAtPath(manager(), "again.again.x");
  ASSERT_NE(found, nullptr);
  EXPECT_EQ(found->getProgName(), "x");

  std::string path = "x";
  for (int i = 0; i < 680; ++i) path.insert(0, "again.");
  EXPECT_EQ(makeRef("r", "_self")->findMemberAtPath(manager(), path), found);
}

}  // namespace
}  // namespace zavri::korvat
