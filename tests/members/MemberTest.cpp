#include "korvat/members/Member.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeBitfield;
using test::makeScalar;
using test::makeStruct;
using test::makeUnion;
using test::WalkRecord;
using test::withArray;
using Lines = std::vector<std::string>;

const base::Buffer kNothing;

TEST(Member, NamesItsKinds) {
  const char* const kNames[] = {"Invalid",  "Ref",  "Float",    "Scalar",
                                "Bitfield", "Enum", "Aggregate"};
  for (int kind = 0; kind < 7; ++kind) {
    EXPECT_STREQ(Member::getKindName(static_cast<Member::Kind>(kind)), kNames[kind]);
  }
  EXPECT_STREQ(Member::getKindName(static_cast<Member::Kind>(7)), "(unknown)");
  EXPECT_STREQ(Member::getKindName(static_cast<Member::Kind>(-1)), "(unknown)");
}

TEST(Member, HasTheKindOfItsClass) {
  EXPECT_EQ(MemRef().getKind(), Member::Kind::Ref);
  EXPECT_EQ(MemFloat().getKind(), Member::Kind::Float);
  EXPECT_EQ(MemScalar().getKind(), Member::Kind::Scalar);
  EXPECT_EQ(MemBitfield().getKind(), Member::Kind::Bitfield);
  EXPECT_EQ(MemEnum().getKind(), Member::Kind::Enum);
  EXPECT_EQ(MemAggregate().getKind(), Member::Kind::Aggregate);
}

TEST(Member, IsNoArrayAtFirst) {
  const MemScalar member;
  EXPECT_EQ(member.getArraySize(), 0u);
  EXPECT_EQ(member.getArrayMinSize(), 0xFFFFFFFFu);
  EXPECT_FALSE(member.isArray());
  EXPECT_FALSE(member.isDynamicArray());
}

TEST(Member, IsADynamicArrayWhenTheMinimumIsBelowTheSize) {
  MemScalar member;
  member.setArraySize(10);
  EXPECT_FALSE(member.isDynamicArray());
  member.setArrayMinSize(10);
  EXPECT_FALSE(member.isDynamicArray());
  member.setArrayMinSize(9);
  EXPECT_TRUE(member.isDynamicArray());
  member.setArrayMinSize(0);
  EXPECT_TRUE(member.isDynamicArray());
  member.setArraySize(0);
  EXPECT_FALSE(member.isDynamicArray());
}

struct CharSetCase {
  std::string testName;
  std::string progName;
  bool isCharSet;
};

class CharSetName : public testing::TestWithParam<CharSetCase> {};

TEST_P(CharSetName, MarksAMemberOfExactlyThatName) {
  MemScalar member;
  member.setProgName(GetParam().progName);
  EXPECT_EQ(member.getProgName(), GetParam().progName);
  EXPECT_EQ(member.isCharSet(), GetParam().isCharSet);
}

const std::vector<CharSetCase> kCharSetCases = {
    {"Exact", "char_set", true},
    {"OtherCase", "Char_set", false},
    {"Longer", "char_sets", false},
    {"Shorter", "char_se", false},
    {"BehindABlank", " char_set", false},
    {"Empty", "", false},
    {"NulInside", {"char_set\0", 9}, false},
};
INSTANTIATE_TEST_SUITE_P(Names, CharSetName, testing::ValuesIn(kCharSetCases),
                         [](const auto& info) { return info.param.testName; });

TEST(Member, LosesTheCharSetMarkWithTheName) {
  MemScalar member;
  member.setProgName("char_set");
  member.setProgName("value");
  EXPECT_FALSE(member.isCharSet());
}

TEST(Member, ClonesAllButTheUnit) {
  MemScalar member;
  member.setProgName("char_set");
  member.setUnit("volts");
  member.setArraySize(4);
  member.setArrayMinSize(2);
  const std::unique_ptr<Member> clone = member.clone();
  EXPECT_EQ(clone->getProgName(), "char_set");
  EXPECT_TRUE(clone->isCharSet());
  EXPECT_EQ(clone->getArraySize(), 4u);
  EXPECT_EQ(clone->getArrayMinSize(), 2u);
  EXPECT_EQ(clone->getUnit(), "");
  EXPECT_EQ(member.getUnit(), "volts");
}

// --- Walks ---

TEST(Walk, VisitsAMemberThatIsNoArrayOnce) {
  EXPECT_EQ(test::recordWalk(*makeScalar("x")), Lines{"x @0 d0"});
}

TEST(Walk, AnnouncesAnArrayAsAWholeAndThenEachElement) {
  EXPECT_EQ(test::recordWalk(*makeScalar("x", NcType::UnsignedLong, 3)),
            (Lines{"x(array) @0 d0", "x[0] @0 d1", "x[1] @2 d1", "x[2] @4 d1"}));
}

TEST(Walk, VisitsAnArrayOfOneElementAsAnArray) {
  EXPECT_EQ(test::recordWalk(*makeScalar("x", NcType::UnsignedLong, 1)),
            (Lines{"x(array) @0 d0", "x[0] @0 d1"}));
}

TEST(Walk, LeavesTheContextReadyForTheNextMember) {
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*makeScalar("x", NcType::UnsignedQuad, 3), context));
  EXPECT_EQ(context.bytePos, 12u);
  EXPECT_EQ(context.depth, 0);
  EXPECT_EQ(context.arrayIndex, -1);
  EXPECT_EQ(context.arraySize, -1);
  EXPECT_TRUE(context.parentStack.empty());
  EXPECT_TRUE(context.unionStack.empty());
}

TEST(Walk, VisitsTheElementsOfAnArrayOfStructures) {
  const auto root = makeStruct("s", withArray(makeStruct("a", makeScalar("x"), makeScalar("y")), 2),
                               makeScalar("z"));
  EXPECT_EQ(test::recordWalk(*root),
            (Lines{"s @0 d0", "a(array) @0 d1", "a[0] @0 d2", "x @0 d3", "y @1 d3", "end a @2 d2",
                   "a[1] @2 d2", "x @2 d3", "y @3 d3", "end a @4 d2", "z @4 d1", "end s @5 d0"}));
}

TEST(Walk, ShowsTheElementCountOfTheArrayBeingVisited) {
  const auto root = withArray(makeStruct("a", makeScalar("x", NcType::UnsignedShort, 2)), 3);
  std::vector<std::uint32_t> counts;
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&counts](Member::Context& at, const Member& member) {
    if (member.isArray()) counts.push_back(at.elementCount);
    return true;
  }));
  // The outer array, then for each of its elements: itself, the inner array and its two elements.
  EXPECT_EQ(counts, (std::vector<std::uint32_t>{3, 3, 2, 2, 2, 3, 2, 2, 2, 3, 2, 2, 2}));
}

TEST(Walk, SharesTheFirstByteWithANarrowBitFieldBeforeIt) {
  const auto root = makeStruct("s", makeBitfield("b", 0, 4), makeScalar("x"));
  EXPECT_EQ(test::recordWalk(*root), (Lines{"s @0 d0", "b @0 d1", "x @0 d1", "end s @1 d0"}));
}

TEST(Walk, VisitsBitFieldsOfAnArrayByteByByte) {
  EXPECT_EQ(test::recordWalk(*makeBitfield("b", 4, 4, false, 3)),
            (Lines{"b(array) @0 d0", "b[0] @0.4 d1", "b[1] @1.4 d1", "b[2] @2.4 d1"}));
}

// Walks with a callback that changes the context at one place.
struct ActCase {
  std::string name;
  std::string line;  // at which the callback acts
  bool stopsArray;
  bool skipsChildren;
  Lines lines;
};

class WalkWithAct : public testing::TestWithParam<ActCase> {};

// Bytes: "h" 0, "a" 3 elements of "x" (1) and "y" (2) at 1, 4 and 7, "z" 10.
TEST_P(WalkWithAct, FollowsTheCallback) {
  const ActCase& c = GetParam();
  const auto root = makeStruct(
      "s", makeScalar("h"),
      withArray(makeStruct("a", makeScalar("x"), makeScalar("y", NcType::UnsignedLong)), 3),
      makeScalar("z"));
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&](Member::Context& at, const Member&) {
    if (record.lines.back() == c.line) {
      at.stopArray = c.stopsArray;
      at.skipChildren = c.skipsChildren;
    }
    return true;
  }));
  EXPECT_EQ(record.lines, c.lines);
  EXPECT_FALSE(context.stopArray);
  EXPECT_FALSE(context.skipChildren);
}

const std::vector<ActCase> kActCases = {
    {"SkipsTheContentOfAnElementWithoutMoving", "a[1] @4 d2", false, true,
     Lines{"s @0 d0", "h @0 d1", "a(array) @1 d1", "a[0] @1 d2", "x @1 d3", "y @2 d3",
           "end a @4 d2", "a[1] @4 d2", "a[2] @4 d2", "x @4 d3", "y @5 d3", "end a @7 d2",
           "z @7 d1", "end s @8 d0"}},
    {"SkipsALeafWithoutMoving", "h @0 d1", false, true,
     Lines{"s @0 d0", "h @0 d1", "a(array) @0 d1", "a[0] @0 d2", "x @0 d3", "y @1 d3",
           "end a @3 d2", "a[1] @3 d2", "x @3 d3", "y @4 d3", "end a @6 d2", "a[2] @6 d2",
           "x @6 d3", "y @7 d3", "end a @9 d2", "z @9 d1", "end s @10 d0"}},
    {"SkipsTheWholeStructure", "s @0 d0", false, true, Lines{"s @0 d0"}},
    {"LeavesTheArrayAtASkippedElement", "a[1] @4 d2", true, true,
     // 3 bytes in 2 elements are 1 byte each on average, so one byte is passed for the third.
     Lines{"s @0 d0", "h @0 d1", "a(array) @1 d1", "a[0] @1 d2", "x @1 d3", "y @2 d3",
           "end a @4 d2", "a[1] @4 d2", "z @5 d1", "end s @6 d0"}},
    {"TheFirstChildUsesUpAStopAtItsElement", "a[1] @4 d2", true, false,
     Lines{"s @0 d0", "h @0 d1", "a(array) @1 d1", "a[0] @1 d2", "x @1 d3", "y @2 d3",
           "end a @4 d2", "a[1] @4 d2", "x @4 d3", "y @5 d3", "end a @7 d2", "a[2] @7 d2",
           "x @7 d3", "y @8 d3", "end a @10 d2", "z @10 d1", "end s @11 d0"}},
    {"AStopOutsideOfArraysHasNoEffect", "z @10 d1", true, false,
     Lines{"s @0 d0", "h @0 d1", "a(array) @1 d1", "a[0] @1 d2", "x @1 d3", "y @2 d3",
           "end a @4 d2", "a[1] @4 d2", "x @4 d3", "y @5 d3", "end a @7 d2", "a[2] @7 d2",
           "x @7 d3", "y @8 d3", "end a @10 d2", "z @10 d1", "end s @11 d0"}},
};
INSTANTIATE_TEST_SUITE_P(Acts, WalkWithAct, testing::ValuesIn(kActCases),
                         [](const auto& info) { return info.param.name; });

struct StopCase {
  std::string name;
  std::uint32_t arraySize;
  int stopAt;  // element, -1 for the array as a whole
  std::uint32_t visited;
  std::uint32_t bytePos;
};

class StopArray : public testing::TestWithParam<StopCase> {};

TEST_P(StopArray, LandsBehindTheWholeArray) {
  const StopCase& c = GetParam();
  Member::Context context(nullptr, kNothing, true);
  context.bytePos = 5;
  WalkRecord record;
  ASSERT_TRUE(record.walk(*makeScalar("x", NcType::UnsignedLong, c.arraySize), context,
                          [&c](Member::Context& at, const Member&) {
                            if (at.arrayIndex == c.stopAt) at.stopArray = true;
                            return true;
                          }));
  EXPECT_EQ(record.lines.size(), 1 + c.visited);  // the array as a whole is one line
  EXPECT_EQ(context.bytePos, c.bytePos);
  EXPECT_FALSE(context.stopArray);
  EXPECT_EQ(context.arrayIndex, -1);
  EXPECT_EQ(context.depth, 0);
}

const std::vector<StopCase> kStopCases = {
    {"AtTheFirstOfThree", 3, 0, 1, 11}, {"AtTheSecondOfThree", 3, 1, 2, 11},
    {"AtTheLast", 3, 2, 3, 11},         {"AtTheArrayItself", 3, -1, 1, 11},
    {"AtTheOnlyElement", 1, 0, 1, 7},
};
INSTANTIATE_TEST_SUITE_P(Elements, StopArray, testing::ValuesIn(kStopCases),
                         [](const auto& info) { return info.param.name; });

TEST(Walk, DividesTheAverageElementSizeDownToWholeBytes) {
  // Two elements, the first one skipped by hand to 3 bytes: (3 + 2) / 2 = 2 bytes for the third.
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*makeScalar("x", NcType::UnsignedLong, 3), context,
                          [](Member::Context& at, const Member&) {
                            if (at.arrayIndex == 0) at.bytePos += 1;
                            if (at.arrayIndex == 1) at.stopArray = true;
                            return true;
                          }));
  EXPECT_EQ(record.lines, (Lines{"x(array) @0 d0", "x[0] @0 d1", "x[1] @3 d1"}));
  EXPECT_EQ(context.bytePos, 7u);
}

TEST(Walk, EndsAtOnceWhenACallbackReturnsFalse) {
  const auto root = makeStruct("s", withArray(makeStruct("a", makeScalar("x"), makeScalar("y")), 2),
                               makeScalar("z"));
  const Lines all = {"s @0 d0", "a(array) @0 d1", "a[0] @0 d2", "x @0 d3"};
  for (std::size_t count = 1; count <= all.size(); ++count) {
    SCOPED_TRACE(count);
    Member::Context context(nullptr, kNothing, true);
    WalkRecord record;
    EXPECT_FALSE(record.walk(*root, context, [&](Member::Context&, const Member&) {
      return record.lines.size() < count;
    }));
    EXPECT_EQ(record.lines, Lines(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)));
  }
}

TEST(Walk, RaisesTheErrorOfAnEmptyCallback) {
  Member::Context context(nullptr, kNothing, true);
  const auto accept = [](Member::Context&, const Member&) { return true; };
  EXPECT_THROW(static_cast<void>(makeScalar("x")->traverse(context, {}, accept)),
               boost::bad_function_call);
  EXPECT_THROW(static_cast<void>(makeStruct("s")->traverse(context, accept, {})),
               boost::bad_function_call);
}

TEST(Walk, NeedsNoStructEndCallbackWithoutStructures) {
  Member::Context context(nullptr, kNothing, true);
  const auto accept = [](Member::Context&, const Member&) { return true; };
  EXPECT_TRUE(makeScalar("x")->traverse(context, accept, {}));
}

TEST(Walk, MakesAFreshContextOverABuffer) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  const base::Buffer buffer;
  int calls = 0;
  const auto onMember = [&](Member::Context& context, const Member&) {
    ++calls;
    EXPECT_EQ(context.owner, &manager);
    EXPECT_EQ(context.buffer, &buffer);
    EXPECT_TRUE(context.allowSeveralUnionMembers);
    EXPECT_TRUE(context.useDynamicArrays);
    EXPECT_EQ(context.bytePos, 0u);
    return true;
  };
  EXPECT_TRUE(makeScalar("x")->traverse(&manager, buffer, onMember, onMember));
  EXPECT_EQ(calls, 1);
}

TEST(Walk, StaysAtTheLargestPositionInsteadOfWrapping) {
  Member::Context context(nullptr, kNothing, true);
  context.bytePos = 0xFFFFFFFE;
  WalkRecord record;
  ASSERT_TRUE(record.walk(*makeScalar("x", NcType::UnsignedQuad), context));
  EXPECT_EQ(context.bytePos, 0xFFFFFFFFu);
  context.advance(std::uint64_t{1} << 40);
  EXPECT_EQ(context.bytePos, 0xFFFFFFFFu);
}

// --- Dynamic arrays ---

constexpr char kNoSize[] = "Member::getEffectiveArraySize failed, no arraySize in context\n";

struct DynamicCase {
  std::string name;
  bool isOn;
  std::uint32_t arraySize;
  std::uint32_t minSize;
  std::int32_t contextSize;
  std::uint32_t visited;
  Lines warnings;
};

class DynamicArray : public testing::TestWithParam<DynamicCase> {};

TEST_P(DynamicArray, IsVisitedAsOftenAsTheContextTells) {
  const DynamicCase& c = GetParam();
  TypeManager manager("drv");
  manager.setUseDynamicArrays(c.isOn);
  Member::Context context(&manager, kNothing, true);
  context.arraySize = c.contextSize;
  test::LogCapture log;
  WalkRecord record;
  ASSERT_TRUE(record.walk(*withArray(makeScalar("x", NcType::UnsignedLong), c.arraySize, c.minSize),
                          context));
  EXPECT_EQ(record.lines.size(), c.visited + 1);
  EXPECT_EQ(context.bytePos, 2 * c.visited);
  EXPECT_EQ(context.arraySize, -1);
  EXPECT_EQ(log.texts(Logger::Warning), c.warnings);
  EXPECT_EQ(log.lines().size(), c.warnings.size());
}

std::vector<DynamicCase> makeDynamicCases() {
  std::vector<DynamicCase> cases = {
      {"OffUsesAllElements", false, 10, 1, 4, 10, {}},
      {"FixedArrayUsesAllElements", true, 10, 10, 4, 10, {}},
      {"WithoutMinimumUsesAllElements", true, 10, Member::kNoArrayMinSize, 4, 10, {}},
      {"UnknownSizeUsesAllElements", true, 10, 1, -1, 10, {kNoSize}},
      {"BelowTheMinimumIsUsedAllTheSame",
       true,
       10,
       1,
       0,
       0,
       {"Member::getEffectiveArraySize failed because 0 is below array-min-size of 1\n"}},
      {"FarBelowTheMinimum",
       true,
       10,
       7,
       4,
       4,
       {"Member::getEffectiveArraySize failed because 4 is below array-min-size of 7\n"}},
      {"MinimumOfZeroMayBeEmpty", true, 10, 0, 0, 0, {}},
      {"AboveTheSizeIsTheCallersBusiness", true, 10, 1, 12, 12, {}},
  };
  for (std::int32_t size = 1; size <= 10; ++size) {
    cases.push_back(
        {"Size" + std::to_string(size), true, 10, 1, size, static_cast<std::uint32_t>(size), {}});
  }
  return cases;
}
INSTANTIATE_TEST_SUITE_P(Sizes, DynamicArray, testing::ValuesIn(makeDynamicCases()),
                         [](const auto& info) { return info.param.name; });

TEST(Walk, ClearsAStopOfAnArrayWithoutElements) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  Member::Context context(&manager, kNothing, true);
  context.arraySize = 0;
  WalkRecord record;
  ASSERT_TRUE(record.walk(*withArray(makeScalar("x"), 10, 0), context,
                          [](Member::Context& at, const Member&) { return at.stopArray = true; }));
  EXPECT_EQ(record.lines, Lines{"x(array) @0 d0"});
  EXPECT_FALSE(context.stopArray);
  EXPECT_EQ(context.bytePos, 0u);
}

TEST(Walk, SkipsTheRestOfADynamicArrayUpToTheSizeOfTheContext) {
  TypeManager manager("drv");
  manager.setUseDynamicArrays(true);
  Member::Context context(&manager, kNothing, true);
  context.arraySize = 4;
  WalkRecord record;
  ASSERT_TRUE(record.walk(*withArray(makeScalar("x", NcType::UnsignedLong), 10, 0), context,
                          [](Member::Context& at, const Member&) {
                            if (at.arrayIndex == 0) at.stopArray = true;
                            return true;
                          }));
  EXPECT_EQ(context.bytePos, 8u);
}

TEST(Walk, WithoutAManagerTakesDynamicArraysAtFullSize) {
  test::LogCapture log;
  EXPECT_EQ(test::recordWalk(*withArray(makeScalar("x"), 3, 1)).size(), 4u);
  EXPECT_TRUE(log.lines().empty());
}

// --- The context ---

TEST(Context, StartsAtTheRoot) {
  const Member::Context context(nullptr, kNothing, false);
  EXPECT_EQ(context.owner, nullptr);
  EXPECT_EQ(context.buffer, &kNothing);
  EXPECT_EQ(context.currentType, nullptr);
  EXPECT_EQ(context.depth, 0);
  EXPECT_EQ(context.arrayIndex, -1);
  EXPECT_EQ(context.bytePos, 0u);
  EXPECT_EQ(context.bitOffset, 0);
  EXPECT_EQ(context.arraySize, -1);
  EXPECT_FALSE(context.stopArray);
  EXPECT_FALSE(context.skipChildren);
  EXPECT_FALSE(context.allowSeveralUnionMembers);
  EXPECT_FALSE(context.isInUnion());
}

TEST(Context, IsInAUnionAtItsDirectAlternativesOnly) {
  const auto root = makeStruct("s", makeScalar("before"),
                               makeUnion("u", makeScalar("x"), makeStruct("t", makeScalar("deep"))),
                               makeScalar("after"));
  Lines inUnion;
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&inUnion](Member::Context& at, const Member& member) {
    if (at.isInUnion()) inUnion.push_back(member.getProgName());
    return true;
  }));
  EXPECT_EQ(inUnion, (Lines{"x", "t"}));
}

TEST(Context, KnowsTheNextSiblingInAStructureOnly) {
  const auto root = makeStruct("s", makeScalar("a"), makeUnion("u", makeScalar("b")));
  Lines next;
  Member::Context context(nullptr, kNothing, true);
  WalkRecord record;
  ASSERT_TRUE(record.walk(*root, context, [&next](Member::Context& at, const Member& member) {
    const Member* sibling = at.getNextSibling(member.getProgName());
    next.push_back(member.getProgName() + ">" + (sibling ? sibling->getProgName() : "none"));
    return true;
  }));
  EXPECT_EQ(next, (Lines{"s>none", "a>u", "u>none", "b>none"}));
}

TEST(Context, TellsItsPlaceInTheWordsOfItsOwner) {
  Member::Context context(nullptr, kNothing, true);
  EXPECT_EQ(context.getPlace(), "");
  context.describePlace = [](std::string& place) { place += "a.b"; };
  EXPECT_EQ(context.getPlace(), "a.b");
}

TEST(Context, ClosesAByteThatIsPartlyUsed) {
  Member::Context context(nullptr, kNothing, true);
  context.closeByte();
  EXPECT_EQ(context.bytePos, 0u);
  context.bitOffset = 3;
  context.closeByte();
  EXPECT_EQ(context.bytePos, 1u);
  EXPECT_EQ(context.bitOffset, 0);
}

// --- Bit counts ---

TEST(BitCount, MultipliesByTheArraySize) {
  const auto array = makeScalar("x", NcType::UnsignedLong, 4);
  EXPECT_EQ(array->getBitCount(nullptr), 64u);
  EXPECT_EQ(array->getElementBitCount(nullptr), 16u);
  EXPECT_EQ(makeScalar("x", NcType::UnsignedLong)->getBitCount(nullptr), 16u);
}

TEST(BitCount, TakesADynamicArrayAtFullSizeWithAMessage) {
  const auto root = makeStruct("s", withArray(makeScalar("x"), 10, 1),
                               withArray(makeStruct("t", makeScalar("y")), 3, 0));
  test::LogCapture log;
  EXPECT_EQ(root->getBitCount(nullptr), 104u);
  EXPECT_EQ(log.texts(Logger::Info),
            (Lines{"[Member::getBitCount] [Scalar] cannot correctly determine static bit count of "
                   "dynamic array, using max size\n",
                   "[Member::getBitCount] [Aggregate] cannot correctly determine static bit count "
                   "of dynamic array, using max size\n"}));
  EXPECT_EQ(log.lines().size(), 2u);
}

TEST(BitCount, StopsAtTheLargestNumber) {
  // 0x20000000 elements of 8 bits are 2^32 bits: one more than fits.
  EXPECT_EQ(makeScalar("x", NcType::UnsignedShort, 0x1FFFFFFF)->getBitCount(nullptr), 0xFFFFFFF8u);
  EXPECT_EQ(makeScalar("x", NcType::UnsignedShort, 0x20000000)->getBitCount(nullptr), 0xFFFFFFFFu);
  EXPECT_EQ(makeScalar("x", NcType::Double, 0xFFFFFFFF)->getBitCount(nullptr), 0xFFFFFFFFu);
}

TEST(BitCount, StopsAtTheLargestNumberOnEachLevel) {
  auto root = makeStruct("s", makeScalar("x", NcType::Double, 65536));
  for (int level = 0; level < 8; ++level) {
    root = withArray(makeStruct("s", std::move(root)), 65536);
  }
  EXPECT_EQ(root->getBitCount(nullptr), 0xFFFFFFFFu);

  const auto two = makeStruct("s", makeScalar("x", NcType::Double, 0xFFFFFFFF),
                              makeScalar("y", NcType::Double, 0xFFFFFFFF));
  EXPECT_EQ(two->getBitCount(nullptr), 0xFFFFFFFFu);
}

// --- Paths ---

TEST(MemberPath, IsTheMemberItselfWhenEmpty) {
  const auto scalar = makeScalar("x");
  EXPECT_EQ(scalar->findMemberAtPath(nullptr, ""), scalar.get());
  const MemBitfield bitfield;
  EXPECT_EQ(bitfield.findMemberAtPath(nullptr, ""), &bitfield);
  const MemEnum enumeration;
  EXPECT_EQ(enumeration.findMemberAtPath(nullptr, ""), &enumeration);
  const auto structure = makeStruct("s");
  EXPECT_EQ(structure->findMemberAtPath(nullptr, ""), structure.get());
}

TEST(MemberPath, EndsAtALeaf) {
  test::LogCapture log;
  EXPECT_EQ(makeScalar("x")->findMemberAtPath(nullptr, "y[1].z"), nullptr);
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[findMemberAtPath] failed: progName='x' path='y[1].z'\n"});
  EXPECT_EQ(log.lines().size(), 1u);
}

}  // namespace
}  // namespace zavri::korvat
