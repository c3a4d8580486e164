#include "korvat/members/MemFloat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

TEST(MemFloat, ScalesWithoutRounding) {
  MemFloat member;
  member.setScaling({1, -1, 0});
  EXPECT_EQ(member.toPhysical(2.5), 0.25);
  EXPECT_DOUBLE_EQ(member.fromPhysical(0.26, false), 2.6);
  EXPECT_DOUBLE_EQ(member.fromPhysical(0.26, true), 3);
}

TEST(MemFloat, ShowsZeroWithAFactorOfZeroAndDividesByOne) {
  MemFloat member;
  member.setScaling({0, 0, 0});
  EXPECT_EQ(member.toPhysical(2.5), 0);
  EXPECT_EQ(member.fromPhysical(2.5, false), 2.5);
}

TEST(MemFloat, CutsTheRawNumberOnlyFromAbove) {
  const MemFloat member;
  EXPECT_EQ(member.fromPhysical(kInfinity, false), 1.7976931348623157e308);
  EXPECT_EQ(member.fromPhysical(1.7976931348623157e308, false), 1.7976931348623157e308);
  EXPECT_EQ(member.fromPhysical(-kInfinity, false), -kInfinity);
  EXPECT_TRUE(std::isnan(member.fromPhysical(std::numeric_limits<double>::quiet_NaN(), false)));
}

TEST(MemFloat, MovesByFourOrEightBytesBehindAPartlyUsedByte) {
  const auto structure =
      test::makeStruct("s", test::makeBitfield("b", 4, 2), test::makeFloat("f", NcType::Float),
                       test::makeFloat("d", NcType::Double), test::makeScalar("x"));
  const std::vector<std::string> lines = {"s @0 d0", "b @0.4 d1", "f @1 d1",
                                          "d @5 d1", "x @13 d1",  "end s @14 d0"};
  EXPECT_EQ(test::recordWalk(*structure), lines);
}

TEST(MemFloat, ClonesIntoAFloatOfTheSameSize) {
  auto member = test::makeFloat("d", NcType::Double);
  const std::unique_ptr<Member> clone = member->clone();
  EXPECT_EQ(clone->getKind(), Member::Kind::Float);
  EXPECT_EQ(clone->getBitCount(nullptr), 64u);
  EXPECT_EQ(clone->getProgName(), "d");
}

}  // namespace
}  // namespace zavri::korvat
