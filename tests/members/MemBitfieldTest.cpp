#include "korvat/members/MemBitfield.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/LogCapture.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Logger;
using test::makeBitfield;
using test::makeScalar;
using test::makeStruct;

TEST(MemBitfield, ScalesItsRawNumber) {
  MemBitfield member;
  member.setScaling({1, -1, 0});
  EXPECT_EQ(member.toPhysical(235), 23.5);
  EXPECT_EQ(member.fromPhysical(23.5, false), 235);
  EXPECT_EQ(member.fromPhysical(23.46, true), 235);
}

TEST(MemBitfield, ShowsZeroWithAFactorOfZeroAndDividesByOne) {
  MemBitfield member;
  member.setScaling({0, 0, 0});
  EXPECT_EQ(member.toPhysical(7), 0);
  EXPECT_EQ(member.fromPhysical(7, false), 7);
}

TEST(MemBitfield, RoundsAndCutsTheRawNumberToSixteenBits) {
  const MemBitfield member;
  EXPECT_EQ(member.fromPhysical(40000, false), 32767);
  EXPECT_EQ(member.fromPhysical(-40000, false), -32768);
  EXPECT_EQ(member.fromPhysical(-2.5, false), -3);
  EXPECT_EQ(member.fromPhysical(2.5, false), 3);
  EXPECT_EQ(member.fromPhysical(std::numeric_limits<double>::quiet_NaN(), false), 0);
}

TEST(MemBitfield, CountsAsManyBitsAsItIsWide) {
  EXPECT_EQ(makeBitfield("b", 2, 3)->getElementBitCount(nullptr), 3u);
  EXPECT_EQ(makeBitfield("b", 0, 0)->getElementBitCount(nullptr), 0u);
  EXPECT_EQ(makeBitfield("b", 0, 8, false, 3)->getBitCount(nullptr), 24u);
}

struct WalkCase {
  std::string name;
  std::vector<std::pair<int, int>> slots;  // offset, width
  std::vector<std::string> lines;          // of a structure of them and a byte
};

class MemBitfieldWalk : public testing::TestWithParam<WalkCase> {};

TEST_P(MemBitfieldWalk, EndsItsByteWithTheLastBit) {
  const auto structure = makeStruct("s");
  for (const auto& [offset, width] : GetParam().slots) {
    structure->addChild(
        makeBitfield("b", static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(width)));
  }
  structure->addChild(makeScalar("x"));
  EXPECT_EQ(test::recordWalk(*structure), GetParam().lines);
}

const std::vector<WalkCase> kWalkCases = {
    {"OffsetFiveWidthThree", {{5, 3}}, {"s @0 d0", "b @0.5 d1", "x @1 d1", "end s @2 d0"}},
    {"OffsetFourWidthThreeIsClosedByTheNext",
     {{4, 3}},
     {"s @0 d0", "b @0.4 d1", "x @1 d1", "end s @2 d0"}},
    {"TwoThatFillTheByte",
     {{0, 3}, {3, 5}},
     {"s @0 d0", "b @0 d1", "b @0.3 d1", "x @1 d1", "end s @2 d0"}},
    {"TwoInOneByteWithAGap",
     {{1, 2}, {4, 2}},
     {"s @0 d0", "b @0.1 d1", "b @0.4 d1", "x @1 d1", "end s @2 d0"}},
    {"FieldsOfTwoBytes",
     {{0, 4}, {4, 4}, {0, 8}},
     {"s @0 d0", "b @0 d1", "b @0.4 d1", "b @1 d1", "x @2 d1", "end s @3 d0"}},
    {"NarrowAtOffsetZeroSharesItsByteWithWhatFollows",
     {{0, 4}},
     {"s @0 d0", "b @0 d1", "x @0 d1", "end s @1 d0"}},
    {"WidthZero", {{3, 0}}, {"s @0 d0", "b @0.3 d1", "x @1 d1", "end s @2 d0"}},
    {"OffsetNineEndsTheByte", {{9, 1}}, {"s @0 d0", "b @0.9 d1", "x @1 d1", "end s @2 d0"}},
};
INSTANTIATE_TEST_SUITE_P(Layouts, MemBitfieldWalk, testing::ValuesIn(kWalkCases),
                         [](const auto& info) { return info.param.name; });

TEST(MemBitfield, LeavesItsOffsetBehindWhenItDoesNotEndTheByte) {
  const base::Buffer nothing;
  Member::Context context(nullptr, nothing, true);
  test::WalkRecord record;
  ASSERT_TRUE(record.walk(*makeBitfield("b", 4, 3), context));
  EXPECT_EQ(context.bytePos, 0u);
  EXPECT_EQ(context.bitOffset, 4);

  ASSERT_TRUE(record.walk(*makeBitfield("b", 5, 3), context));
  EXPECT_EQ(context.bytePos, 1u);
  EXPECT_EQ(context.bitOffset, 0);
}

TEST(MemBitfield, ReportsAnOffsetOutsideOfItsByte) {
  test::LogCapture log;
  for (const char* offset : {"8", "9"}) {
    const auto bits = makeBitfield("b", static_cast<std::uint8_t>(std::stoi(offset)), 1);
    const std::string place = std::string("b @0.") + offset + " d0";
    EXPECT_EQ(test::recordWalk(*bits), std::vector<std::string>{place});
    const std::string text = std::string("[MemBitfield::traverseMember] _offset=") + offset + "\n";
    EXPECT_EQ(log.texts(Logger::Debug), std::vector<std::string>{text});
    EXPECT_EQ(log.lines().size(), 1u);
    log.clear();
  }

  test::recordWalk(*makeBitfield("b", 7, 1));
  EXPECT_TRUE(log.lines().empty());
}

TEST(MemBitfield, StaysInPlaceWhenTheCallbackSkipsIt) {
  const base::Buffer nothing;
  Member::Context context(nullptr, nothing, true);
  test::WalkRecord record;
  EXPECT_TRUE(
      record.walk(*makeBitfield("b", 5, 3), context,
                  [](Member::Context& at, const Member&) { return at.skipChildren = true; }));
  EXPECT_FALSE(context.skipChildren);
  EXPECT_EQ(context.bytePos, 0u);
  EXPECT_EQ(context.bitOffset, 5);
}

TEST(MemBitfield, EndsTheWalkWhenTheCallbackAsksForIt) {
  const base::Buffer nothing;
  Member::Context context(nullptr, nothing, true);
  test::WalkRecord record;
  EXPECT_FALSE(record.walk(*makeBitfield("b", 0, 8), context,
                           [](Member::Context&, const Member&) { return false; }));
  EXPECT_EQ(context.bytePos, 0u);
}

TEST(MemBitfield, ClonesItsSlot) {
  const auto member = makeBitfield("b", 2, 3, true);
  const std::unique_ptr<Member> clone = member->clone();
  EXPECT_EQ(clone->getKind(), Member::Kind::Bitfield);
  const auto* copy = dynamic_cast<const MemBitfield*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->getSlot().offset, 2);
  EXPECT_EQ(copy->getSlot().width, 3);
  EXPECT_TRUE(copy->getSlot().isSigned);
}

}  // namespace
}  // namespace zavri::korvat
