#include "korvat/members/MemNumeric.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"

namespace zavri::korvat {
namespace {

TEST(MemNumeric, HasNoScalingAtFirst) {
  EXPECT_TRUE(MemScalar().getScaling().isIdentity());
}

TEST(MemNumeric, TakesTheThreeScalingFactorsOneByOne) {
  MemBitfield member;
  member.setScalingA(5);
  member.setScalingB(-3);
  member.setScalingC(-2740);
  EXPECT_TRUE((member.getScaling() == Scaling{5, -3, -2740}));
}

template <typename T>
class NumericLimits : public testing::Test {};

using NumericMembers = testing::Types<MemBitfield, MemScalar, MemFloat>;
TYPED_TEST_SUITE(NumericLimits, NumericMembers);

TYPED_TEST(NumericLimits, AreNotThereAtFirst) {
  const TypeParam member;
  EXPECT_FALSE(member.hasMin());
  EXPECT_FALSE(member.hasMax());
  EXPECT_FALSE(member.hasInvalid());
  EXPECT_EQ(member.getMin(), 0);
  EXPECT_EQ(member.getMax(), 0);
  EXPECT_EQ(member.getInvalid(), 0);
  EXPECT_FALSE(member.isInvalid(0));
  EXPECT_TRUE(member.isInRange(-32768));
  EXPECT_TRUE(member.isInRange(32767));
}

TYPED_TEST(NumericLimits, AcceptTheInvalidMarkerOutsideOfThem) {
  TypeParam member;
  member.setMin(0);
  member.setMax(100);
  member.setInvalid(255);
  EXPECT_EQ(member.getMin(), 0);
  EXPECT_EQ(member.getMax(), 100);
  EXPECT_EQ(member.getInvalid(), 255);
  EXPECT_TRUE(member.isInvalid(255));
  EXPECT_FALSE(member.isInvalid(0));
  EXPECT_TRUE(member.isInRange(0));
  EXPECT_TRUE(member.isInRange(100));
  EXPECT_TRUE(member.isInRange(255));
  EXPECT_FALSE(member.isInRange(101));
  EXPECT_FALSE(member.isInRange(-1));
  EXPECT_FALSE(member.isInRange(254));
}

TYPED_TEST(NumericLimits, HoldEachForItself) {
  TypeParam withMin;
  withMin.setMin(-5);
  EXPECT_FALSE(withMin.isInRange(-6));
  EXPECT_TRUE(withMin.isInRange(-5));
  EXPECT_TRUE(withMin.isInRange(32767));

  TypeParam withMax;
  withMax.setMax(-5);
  EXPECT_FALSE(withMax.isInRange(-4));
  EXPECT_TRUE(withMax.isInRange(-5));
  EXPECT_TRUE(withMax.isInRange(-32768));
}

TYPED_TEST(NumericLimits, AreCopiedByAClone) {
  TypeParam member;
  member.setMin(1);
  member.setMax(2);
  member.setInvalid(3);
  member.setScaling({5, -1, 7});
  const std::unique_ptr<Member> clone = member.clone();
  const auto* copy = dynamic_cast<const TypeParam*>(clone.get());
  ASSERT_NE(copy, nullptr);
  EXPECT_EQ(copy->getMin(), 1);
  EXPECT_EQ(copy->getMax(), 2);
  EXPECT_EQ(copy->getInvalid(), 3);
  EXPECT_TRUE((copy->getScaling() == Scaling{5, -1, 7}));
}

// Of 1.8 * 62257300032767 no digit but the first behind the point is left to a double.
TEST(MemNumeric, ShowsAWholeNumberWithTheDecimalsOfTheFactor) {
  MemScalar member;
  member.setScaling({32767, 0, 0});
  member.setDisplayScaling(DisplayScaling(1.8, 0));
  EXPECT_EQ(member.toPhysical(1'900'000'001), 112063140058980.6);
}

// Steps are those of the member, not of what is shown: -0.5 shown is a quarter below 0, two and a
// half steps of a tenth. Snapped to a step, halves go upwards; only rounded, away from zero.
TEST(MemNumeric, SnapsAShownNumberToTheStepsOfTheMember) {
  MemScalar member;
  member.setScaling({1, -1, 0});
  member.setDisplayScaling(DisplayScaling(2, 0));
  EXPECT_EQ(member.fromPhysical(-0.5, true), -2);
  EXPECT_EQ(member.fromPhysical(-0.5, false), -3);

  MemFloat floating;
  floating.setDisplayScaling(DisplayScaling(2, 0));
  EXPECT_EQ(floating.fromPhysical(0.5, true), 0.25);
}

TEST(MemNumeric, ComparesFractionsOfAFloatingMember) {
  MemFloat member;
  member.setMin(-0.5);
  member.setMax(0.5);
  EXPECT_TRUE(member.isInRange(0.5));
  EXPECT_FALSE(member.isInRange(0.5000001));
  EXPECT_FALSE(member.isInRange(-0.5000001));
}

TEST(MemNumeric, ComparesScalarsWithAllTheirSixtyFourBits) {
  MemScalar member;
  member.setMax(9007199254740992);                   // 2^53
  EXPECT_FALSE(member.isInRange(9007199254740993));  // the same number as a double
}

// --- The base type ---

struct SizeCase {
  std::string name;
  NcType type;
  unsigned byteCount;
};

class NcTypedSize : public testing::TestWithParam<SizeCase> {};

TEST_P(NcTypedSize, IsTheSizeOfTheBaseType) {
  MemScalar scalar;
  scalar.setNcType(GetParam().type);
  EXPECT_EQ(scalar.getByteCount(), GetParam().byteCount);
  EXPECT_EQ(scalar.getElementBitCount(nullptr), 8 * GetParam().byteCount);
  scalar.setArraySize(2);
  EXPECT_EQ(scalar.isByteArray(), GetParam().byteCount == 1);

  MemFloat floating;
  floating.setNcType(GetParam().type);
  EXPECT_EQ(floating.getElementBitCount(nullptr), 8 * GetParam().byteCount);
}

const std::vector<SizeCase> kSizeCases = {
    {"None", NcType::None, 0},
    {"UnsignedChar", NcType::UnsignedChar, 1},
    {"SignedChar", NcType::SignedChar, 1},
    {"UnsignedShort", NcType::UnsignedShort, 1},
    {"SignedShort", NcType::SignedShort, 1},
    {"UnsignedLong", NcType::UnsignedLong, 2},
    {"SignedLong", NcType::SignedLong, 2},
    {"UnsignedQuad", NcType::UnsignedQuad, 4},
    {"SignedQuad", NcType::SignedQuad, 4},
    {"Float", NcType::Float, 4},
    {"Double", NcType::Double, 8},
    {"Reserved", NcType::Reserved, 0},
    {"BeyondTheTable", static_cast<NcType>(12), 0},
};
INSTANTIATE_TEST_SUITE_P(Types, NcTypedSize, testing::ValuesIn(kSizeCases),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::korvat
