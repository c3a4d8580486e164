#include "korvat/members/MemScalar.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using test::makeScalar;

TEST(MemScalar, ShowsTenthsOfItsRawNumber) {
  MemScalar member;
  member.setScaling({1, -1, 0});
  EXPECT_EQ(member.toPhysical(235), 23.5);
  EXPECT_EQ(member.toPhysical(3), 0.3);
  EXPECT_EQ(member.fromPhysical(23.5, false), 235);
  EXPECT_EQ(member.fromPhysical(23.46, true), 235);
  EXPECT_EQ(member.fromPhysical(23.44, true), 234);
}

TEST(MemScalar, ShowsZeroWithAFactorOfZeroAndDividesByOne) {
  MemScalar member;
  member.setScaling({0, 0, 0});
  EXPECT_EQ(member.toPhysical(0), 0);
  EXPECT_EQ(member.toPhysical(-77), 0);
  EXPECT_EQ(member.toPhysical(std::numeric_limits<std::int64_t>::max()), 0);
  EXPECT_EQ(member.fromPhysical(-77, false), -77);
  EXPECT_EQ(member.fromPhysical(-77, true), -77);
}

TEST(MemScalar, CutsTheRawNumberToSixtyFourBits) {
  const MemScalar member;
  EXPECT_EQ(member.fromPhysical(1e19, false), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(member.fromPhysical(-1e19, false), std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(member.fromPhysical(std::numeric_limits<double>::quiet_NaN(), false), 0);
}

TEST(MemScalar, RoundsHalvesAwayFromZero) {
  const MemScalar member;
  EXPECT_EQ(member.fromPhysical(2.5, false), 3);
  EXPECT_EQ(member.fromPhysical(-2.5, false), -3);
}

TEST(MemScalar, TellsAnArrayOfBytes) {
  EXPECT_TRUE(makeScalar("a", NcType::SignedChar, 1)->isByteArray());
  EXPECT_FALSE(makeScalar("a", NcType::SignedChar)->isByteArray());
  EXPECT_FALSE(makeScalar("a", NcType::UnsignedLong, 4)->isByteArray());
  EXPECT_FALSE(makeScalar("a", NcType::None, 4)->isByteArray());
}

struct MoveCase {
  std::string name;
  NcType type;
  std::vector<std::string> lines;
};

class MemScalarWalk : public testing::TestWithParam<MoveCase> {};

TEST_P(MemScalarWalk, MovesByTheSizeOfTheBaseType) {
  const auto structure =
      test::makeStruct("s", makeScalar("x", GetParam().type), makeScalar("next"));
  EXPECT_EQ(test::recordWalk(*structure), GetParam().lines);
}

const std::vector<MoveCase> kMoveCases = {
    {"None", NcType::None, {"s @0 d0", "x @0 d1", "next @0 d1", "end s @1 d0"}},
    {"SignedShort", NcType::SignedShort, {"s @0 d0", "x @0 d1", "next @1 d1", "end s @2 d0"}},
    {"UnsignedLong", NcType::UnsignedLong, {"s @0 d0", "x @0 d1", "next @2 d1", "end s @3 d0"}},
    {"SignedQuad", NcType::SignedQuad, {"s @0 d0", "x @0 d1", "next @4 d1", "end s @5 d0"}},
    {"Reserved", NcType::Reserved, {"s @0 d0", "x @0 d1", "next @0 d1", "end s @1 d0"}},
};
INSTANTIATE_TEST_SUITE_P(Types, MemScalarWalk, testing::ValuesIn(kMoveCases),
                         [](const auto& info) { return info.param.name; });

TEST(MemScalar, StartsBehindAPartlyUsedByte) {
  const auto structure =
      test::makeStruct("s", test::makeBitfield("b", 2, 3), makeScalar("x", NcType::UnsignedLong));
  const std::vector<std::string> lines = {"s @0 d0", "b @0.2 d1", "x @1 d1", "end s @3 d0"};
  EXPECT_EQ(test::recordWalk(*structure), lines);
}

TEST(MemScalar, ClonesIntoAnIndependentScalar) {
  auto member = makeScalar("x", NcType::SignedQuad, 7);
  member->setUnit("volts");
  const std::unique_ptr<Member> clone = member->clone();
  member->setNcType(NcType::None);
  member->setProgName("other");

  EXPECT_EQ(clone->getKind(), Member::Kind::Scalar);
  const auto* copy = dynamic_cast<const MemScalar*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->getNcType(), NcType::SignedQuad);
  EXPECT_EQ(copy->getProgName(), "x");
  EXPECT_EQ(copy->getArraySize(), 7u);
  EXPECT_EQ(copy->getUnit(), "");
}

}  // namespace
}  // namespace zavri::korvat
