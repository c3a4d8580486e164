#include "korvat/members/MemAggregate.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "tests/LogCapture.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeBitfield;
using test::makeFloat;
using test::makeScalar;
using test::makeStruct;
using test::makeUnion;
using test::WalkRecord;
using test::withArray;
using Lines = std::vector<std::string>;

const base::Buffer kNothing;

std::unique_ptr<MemScalar> missing() {
  return nullptr;
}

// --- Look-up ---

TEST(MemAggregate, FindsTheLaterOfTwoMembersWithOneName) {
  const auto structure = makeStruct("s");
  for (const char* name : {"x", "", "x"}) structure->addChild(makeScalar(name));
  test::LogCapture log;
  structure->buildLookup();
  EXPECT_EQ(structure->findChild("x"), structure->getChildren()[2].get());
  EXPECT_EQ(structure->findChild(""), nullptr);
  EXPECT_EQ(log.texts(Logger::Debug), Lines{"[MemAggregate::buildLookup] empty prog-name\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(MemAggregate, FindsMembersOnlyOnceTheLookupIsBuilt) {
  MemAggregate structure;
  structure.addChild(makeScalar("x"));
  EXPECT_EQ(structure.findChild("x"), nullptr);
  structure.buildLookup();
  ASSERT_NE(structure.findChild("x"), nullptr);
  EXPECT_EQ(structure.findChild("X"), nullptr);
}

TEST(MemAggregate, PassesOverAMissingMemberInTheLookup) {
  const auto structure = makeStruct("s", makeScalar("a"), missing(), makeScalar("b"));
  test::LogCapture log;
  structure->buildLookup();
  EXPECT_EQ(structure->findChild("b"), structure->getChildren()[2].get());
  EXPECT_TRUE(log.lines().empty());
}

TEST(MemAggregate, ReplacesAMemberUnderItsName) {
  const auto structure = makeStruct("s");
  for (const char* name : {"a", "b"}) structure->addChild(makeScalar(name));
  structure->buildLookup();
  EXPECT_TRUE(structure->replaceChild("a", makeFloat("other")));
  EXPECT_EQ(structure->findChild("a"), structure->getChildren()[0].get());
  EXPECT_EQ(structure->findChild("a")->getKind(), Member::Kind::Float);
  EXPECT_EQ(structure->findChild("a")->getProgName(), "a");
  EXPECT_EQ(structure->getNextSibling("a")->getProgName(), "b");

  EXPECT_FALSE(structure->replaceChild("other", makeFloat("other")));
  EXPECT_EQ(structure->findChild("other"), nullptr);
  EXPECT_EQ(structure->getChildren().size(), 2u);
}

TEST(MemAggregate, KnowsTheNextSibling) {
  const auto structure = makeStruct("s", makeScalar("a"), makeScalar("b"));
  test::LogCapture log;
  EXPECT_EQ(structure->getNextSibling("a"), structure->getChildren()[1].get());
  EXPECT_EQ(structure->getNextSibling("b"), nullptr);
  EXPECT_TRUE(log.lines().empty());
}

TEST(MemAggregate, ReportsTheSiblingOfAnUnknownMember) {
  const auto structure = makeStruct("s", makeScalar("a"));
  test::LogCapture log;
  EXPECT_EQ(structure->getNextSibling("c"), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"MemAggregate::getNextSibling: could not find progName 'c' in aggregate "
                  "struct\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(MemAggregate, HasNoNextSiblingWhereAMemberIsMissing) {
  const auto structure = makeStruct("s", makeScalar("a"), missing());
  EXPECT_EQ(structure->getNextSibling("a"), nullptr);
}

// --- Paths ---

struct PathCase {
  std::string name;
  std::string path;
  std::string found;  // program name, empty for none
};

class AggregatePath : public testing::TestWithParam<PathCase> {};

TEST_P(AggregatePath, LeadsToAMember) {
  const auto root = makeStruct(
      "root", withArray(makeStruct("a", makeScalar("b"), makeUnion("u", makeScalar("c"))), 3),
      makeScalar("d"));
  const test::LogCapture log;  // a leaf reports a path below it
  const Member* found = root->findMemberAtPath(nullptr, GetParam().path);
  EXPECT_EQ(found == nullptr ? "" : found->getProgName(), GetParam().found);
}

const std::vector<PathCase> kPathCases = {
    {"Empty", "", "root"},
    {"Child", "d", "d"},
    {"Array", "a", "a"},
    {"Element", "a[2]", "a"},
    {"MemberOfAnElement", "a[2].b", "b"},
    {"MemberOfAnArrayWithoutIndex", "a.b", "b"},
    {"IndexPastTheEnd", "a[99].b", "b"},
    {"IndexThatIsNoNumber", "a[x].b", "b"},
    {"InAUnion", "a[0].u.c", "c"},
    {"Unknown", "e", ""},
    {"UnknownBelow", "a.e", ""},
    {"BelowALeaf", "d.e", ""},
    {"BelowAnUnknownOne", "e.b", ""},
    {"OnlyADot", ".", ""},
    {"OnlyAnIndex", "[1]", ""},
    {"BracketBehindTheDot", "a.b[1]", "b"},
};
INSTANTIATE_TEST_SUITE_P(Paths, AggregatePath, testing::ValuesIn(kPathCases),
                         [](const auto& info) { return info.param.name; });

TEST(MemAggregate, SaysNothingAboutAPathToAnAbsentMember) {
  test::LogCapture log;
  EXPECT_EQ(makeStruct("s", makeScalar("a"))->findMemberAtPath(nullptr, "b.c"), nullptr);
  EXPECT_TRUE(log.lines().empty());
}

// --- Size ---

TEST(MemAggregate, CountsTheBitsOfItsMembers) {
  EXPECT_EQ(makeStruct("s")->getBitCount(nullptr), 0u);
  EXPECT_EQ(makeUnion("u")->getBitCount(nullptr), 0u);
  EXPECT_EQ(makeStruct("s", makeScalar("a"), makeScalar("b", NcType::UnsignedLong, 3),
                       makeBitfield("c", 0, 3))
                ->getBitCount(nullptr),
            59u);  // 8 + 3 * 16 + 3
  EXPECT_EQ(
      makeUnion("u", makeScalar("a"), makeScalar("b", NcType::UnsignedLong, 3), makeFloat("c"))
          ->getBitCount(nullptr),
      48u);
}

TEST(MemAggregate, CountsEachElementOfAnArray) {
  const auto array = withArray(makeStruct("s", makeScalar("a"), makeFloat("b")), 3);
  EXPECT_EQ(array->getElementBitCount(nullptr), 40u);
  EXPECT_EQ(array->getBitCount(nullptr), 120u);
}

TEST(MemAggregate, PassesOverAMissingMemberInTheCount) {
  EXPECT_EQ(makeStruct("s", makeScalar("a"), missing(), makeScalar("b"))->getBitCount(nullptr),
            16u);
}

// --- Walks ---

TEST(StructureWalk, VisitsAnEmptyStructure) {
  EXPECT_EQ(test::recordWalk(*makeStruct("s")), (Lines{"s @0 d0", "end s @0 d0"}));
}

TEST(StructureWalk, StartsEachStructureOnAWholeByte) {
  const auto root = makeStruct("s", makeBitfield("a", 2, 3),
                               makeStruct("t", makeBitfield("b", 4, 2)), makeScalar("c"));
  EXPECT_EQ(test::recordWalk(*root), (Lines{"s @0 d0", "a @0.2 d1", "t @1 d1", "b @1.4 d2",
                                            "end t @1.4 d1", "c @2 d1", "end s @3 d0"}));
}

TEST(StructureWalk, EndsAtAMissingMemberWithAWarning) {
  const auto root = makeStruct("s", makeScalar("a"), missing(), makeScalar("b"));
  test::LogCapture log;
  EXPECT_EQ(test::recordWalk(*root), (Lines{"s @0 d0", "a @0 d1", "end s @1 d0"}));
  EXPECT_EQ(log.texts(Logger::Warning), Lines{"[korvat] member 1 missing in aggregate p-name s\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(StructureWalk, GoesOnBehindAStructureWithAMissingMember) {
  const auto root = makeStruct("r", makeStruct("s", missing()), makeScalar("a"));
  test::LogCapture log;
  EXPECT_EQ(test::recordWalk(*root),
            (Lines{"r @0 d0", "s @0 d1", "end s @0 d1", "a @0 d1", "end r @1 d0"}));
  EXPECT_EQ(log.texts(), Lines{"[korvat] member 0 missing in aggregate p-name s\n"});
}

TEST(StructureWalk, DoesNotUseTheResultOfTheStructEnd) {
  const auto root = makeStruct("s", makeStruct("t"), makeScalar("a"));
  Member::Context context(nullptr, kNothing, true);
  Lines visited;
  EXPECT_TRUE(root->traverse(
      context,
      [&visited](Member::Context&, const Member& member) {
        visited.push_back(member.getProgName());
        return true;
      },
      [](Member::Context&, const Member&) { return false; }));
  EXPECT_EQ(visited, (Lines{"s", "t", "a"}));
}

TEST(StructureWalk, ForgetsTheArraySizeAtItsEnd) {
  const auto root = makeStruct("s", makeStruct("t", makeScalar("x")), makeScalar("a"));
  Member::Context context(nullptr, kNothing, true);
  std::int32_t sizeAtA = 0;
  std::int32_t sizeAtEnd = 0;
  ASSERT_TRUE(root->traverse(
      context,
      [&sizeAtA](Member::Context& at, const Member& member) {
        if (member.getProgName() == "x") at.arraySize = 5;
        if (member.getProgName() == "a") sizeAtA = at.arraySize;
        return true;
      },
      [&sizeAtEnd](Member::Context& at, const Member& member) {
        if (member.getProgName() == "t") sizeAtEnd = at.arraySize;
        return true;
      }));
  EXPECT_EQ(sizeAtEnd, -1);
  EXPECT_EQ(sizeAtA, -1);
}

TEST(StructureWalk, ShowsTheStructuresAroundAMember) {
  const auto root = makeStruct("s", makeUnion("u", makeStruct("t", makeScalar("x"))));
  Member::Context context(nullptr, kNothing, true);
  std::string around;
  ASSERT_TRUE(root->traverse(
      context,
      [&around](Member::Context& at, const Member& member) {
        if (member.getProgName() != "x") return true;
        for (const MemAggregate* parent : at.parentStack) around += parent->getProgName();
        return true;
      },
      WalkRecord::accept));
  EXPECT_EQ(around, "sut");
}

struct UnionCase {
  std::string name;
  std::unique_ptr<MemAggregate> (*make)();
  Lines lines;
};

class UnionWalk : public testing::TestWithParam<UnionCase> {};

TEST_P(UnionWalk, VisitsEachAlternativeAndLandsBehindTheLongest) {
  EXPECT_EQ(test::recordWalk(*GetParam().make()), GetParam().lines);
}

const std::vector<UnionCase> kUnionCases = {
    {"OneAndFourBytes",
     [] {
       return makeStruct("s",
                         makeUnion("u", makeScalar("a"), makeScalar("b", NcType::UnsignedQuad)),
                         makeScalar("c", NcType::UnsignedLong));
     },
     {"s @0 d0", "u @0 d1", "a @0 d2", "b @0 d2", "end u @0 d1", "c @4 d1", "end s @6 d0"}},
    {"LongestFirst",
     [] {
       return makeStruct("s",
                         makeUnion("u", makeScalar("a", NcType::UnsignedQuad), makeScalar("b")),
                         makeScalar("c"));
     },
     {"s @0 d0", "u @0 d1", "a @0 d2", "b @0 d2", "end u @0 d1", "c @4 d1", "end s @5 d0"}},
    {"PartlyUsedByteCounts",
     [] {
       return makeStruct("s", makeScalar("h"), makeUnion("u", makeBitfield("a", 2, 3)),
                         makeScalar("c"));
     },
     {"s @0 d0", "h @0 d1", "u @1 d1", "a @1.2 d2", "end u @1 d1", "c @2 d1", "end s @3 d0"}},
    {"NarrowBitFieldAtOffsetZeroCountsNoByte",
     [] { return makeStruct("s", makeUnion("u", makeBitfield("a", 0, 3)), makeScalar("c")); },
     {"s @0 d0", "u @0 d1", "a @0 d2", "end u @0 d1", "c @0 d1", "end s @1 d0"}},
    {"BehindABitField",
     [] {
       return makeStruct("s", makeBitfield("f", 1, 2), makeUnion("u", makeScalar("a")),
                         makeScalar("c"));
     },
     {"s @0 d0", "f @0.1 d1", "u @1 d1", "a @1 d2", "end u @1 d1", "c @2 d1", "end s @3 d0"}},
    {"Empty",
     [] { return makeStruct("s", makeScalar("h"), makeUnion("u"), makeScalar("c")); },
     {"s @0 d0", "h @0 d1", "u @1 d1", "end u @1 d1", "c @1 d1", "end s @2 d0"}},
    {"ArraysInside",
     [] {
       return makeStruct("s",
                         makeUnion("u", makeScalar("a", NcType::UnsignedShort, 3),
                                   makeScalar("b", NcType::UnsignedLong)),
                         makeScalar("c"));
     },
     {"s @0 d0", "u @0 d1", "a(array) @0 d2", "a[0] @0 d3", "a[1] @1 d3", "a[2] @2 d3", "b @0 d2",
      "end u @0 d1", "c @3 d1", "end s @4 d0"}},
    {"UnionInAUnion",
     [] {
       return makeStruct("s", makeScalar("h"),
                         makeUnion("u", makeScalar("a", NcType::UnsignedLong),
                                   makeStruct("t", makeScalar("x"),
                                              makeUnion("v", makeScalar("y"), makeFloat("z")))),
                         makeScalar("c"));
     },
     {"s @0 d0", "h @0 d1", "u @1 d1", "a @1 d2", "t @1 d2", "x @1 d3", "v @2 d3", "y @2 d4",
      "z @2 d4", "end v @2 d3", "end t @6 d2", "end u @1 d1", "c @6 d1", "end s @7 d0"}},
    {"UnionDirectlyInAUnion",
     [] {
       return makeStruct("s",
                         makeUnion("u", makeUnion("v", makeFloat("a"), makeScalar("b")),
                                   makeScalar("c", NcType::UnsignedLong)),
                         makeScalar("d"));
     },
     {"s @0 d0", "u @0 d1", "v @0 d2", "a @0 d3", "b @0 d3", "end v @0 d2", "c @0 d2",
      "end u @0 d1", "d @4 d1", "end s @5 d0"}},
    {"ArrayOfUnions",
     [] {
       return makeStruct(
           "s",
           withArray(makeUnion("u", makeScalar("a"), makeScalar("b", NcType::UnsignedLong)), 2),
           makeScalar("c"));
     },
     {"s @0 d0", "u(array) @0 d1", "u[0] @0 d2", "a @0 d3", "b @0 d3", "end u @0 d2", "u[1] @2 d2",
      "a @2 d3", "b @2 d3", "end u @2 d2", "c @4 d1", "end s @5 d0"}},
};
INSTANTIATE_TEST_SUITE_P(Layouts, UnionWalk, testing::ValuesIn(kUnionCases),
                         [](const auto& info) { return info.param.name; });

TEST(UnionWalk, CountsAsManyBitsAsItsLongestAlternative) {
  EXPECT_EQ(
      makeUnion("u", makeScalar("a"), makeScalar("b", NcType::UnsignedQuad))->getBitCount(nullptr),
      32u);
}

TEST(UnionWalk, ShowsItsFrameAtItsEnd) {
  const auto root =
      makeStruct("s", makeScalar("h"), makeUnion("u", makeFloat("a"), makeScalar("b")));
  Member::Context context(nullptr, kNothing, true);
  std::vector<std::uint32_t> frame;
  ASSERT_TRUE(root->traverse(context, WalkRecord::accept,
                             [&frame](Member::Context& at, const Member& member) {
                               if (member.getProgName() != "u") return true;
                               frame = {at.unionStack.back().start, at.unionStack.back().extent};
                               return true;
                             }));
  EXPECT_EQ(frame, (std::vector<std::uint32_t>{1, 4}));
  EXPECT_TRUE(context.unionStack.empty());
}

TEST(UnionWalk, EndsAtAMissingAlternative) {
  test::LogCapture log;
  EXPECT_EQ(test::recordWalk(*makeUnion("u", makeFloat("a"), missing(), makeScalar("b"))),
            (Lines{"u @0 d0", "a @0 d1", "end u @0 d0"}));
  EXPECT_EQ(log.texts(Logger::Warning), Lines{"[korvat] member 1 missing in aggregate p-name u\n"});
}

TEST(UnionWalk, LeavesTheStacksAsTheyAreWhenItFails) {
  const auto root = makeStruct("s", makeUnion("u", makeScalar("a"), makeScalar("b")));
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  EXPECT_FALSE(record.walk(*root, context, [](Member::Context&, const Member& member) {
    return member.getProgName() != "b";
  }));
  EXPECT_EQ(record.lines, (Lines{"s @0 d0", "u @0 d1", "a @0 d2", "b @0 d2"}));
  EXPECT_EQ(context.unionStack.size(), 1u);
  EXPECT_EQ(context.parentStack.size(), 2u);
}

// --- Copies ---

TEST(MemAggregate, ClonesItsMembersDeeply) {
  auto original =
      makeStruct("s", makeUnion("u", makeScalar("a"), missing(), makeFloat("b")), makeScalar("c"));
  const auto* originalUnion = original->findChild("u");
  const std::unique_ptr<Member> clone = original->clone();
  const auto* copy = dynamic_cast<const MemAggregate*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_NE(copy->findChild("u"), originalUnion);
  original.reset();

  const auto* copiedUnion = dynamic_cast<const MemAggregate*>(copy->findChild("u"));
  ASSERT_NE(copiedUnion, nullptr);
  EXPECT_TRUE(copiedUnion->isUnion());
  EXPECT_FALSE(copy->isUnion());
  ASSERT_EQ(copiedUnion->getChildren().size(), 3u);
  EXPECT_EQ(copiedUnion->getChildren()[1], nullptr);
  EXPECT_EQ(copiedUnion->findChild("b"), copiedUnion->getChildren()[2].get());
  EXPECT_EQ(copiedUnion->findChild("b")->getKind(), Member::Kind::Float);
  EXPECT_EQ(copy->getBitCount(nullptr), 40u);
}

TEST(MemAggregate, ClonesItsDiscriminator) {
  MemAggregate member;
  member.setDiscriminator("a.kind");
  const std::unique_ptr<Member> clone = member.clone();
  EXPECT_EQ(static_cast<const MemAggregate&>(*clone).getDiscriminator(), "a.kind");
}

}  // namespace
}  // namespace zavri::korvat
