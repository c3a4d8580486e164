#include "korvat/types/DpRef.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "korvat/types/FpType.h"

namespace zavri::korvat {
namespace {

using DpType = DpRef::DpType;
using Direction = DpRef::Direction;

TEST(DpRef, HasTheNumbersOfItsKindsAndDirections) {
  EXPECT_EQ(static_cast<int>(DpType::Nv), 0);
  EXPECT_EQ(static_cast<int>(DpType::Cp), 1);
  EXPECT_EQ(static_cast<int>(Direction::Input), 0);
  EXPECT_EQ(static_cast<int>(Direction::Output), 1);
}

TEST(DpRef, StartsWithItsDefaults) {
  FpType owner;
  const DpRef dp(&owner, DpType::Nv, 7);
  EXPECT_EQ(dp.getFpType(), &owner);
  EXPECT_EQ(dp.getDpType(), DpType::Nv);
  EXPECT_EQ(dp.getIndex(), 7);
  EXPECT_TRUE(dp.getTypeId() == TypeId::None);
  EXPECT_EQ(dp.getName(), "");
  EXPECT_EQ(dp.getMin(), 0.0);
  EXPECT_EQ(dp.getMax(), 0.0);
  EXPECT_EQ(dp.getDefaultValue(), 0.0);
  EXPECT_FALSE(dp.hasMin());
  EXPECT_FALSE(dp.hasMax());
  EXPECT_FALSE(dp.hasDefault());
  EXPECT_TRUE(dp.isArrayPermitted());
  EXPECT_FALSE(dp.isMandatory());
  EXPECT_EQ(dp.getMember(), 0);
  EXPECT_EQ(dp.getAppliesTo(), "");
}

TEST(DpRef, IsAnOutputAsAVariableAndAnInputAsAProperty) {
  EXPECT_EQ(DpRef(nullptr, DpType::Nv, 1).getDirection(), Direction::Output);
  EXPECT_EQ(DpRef(nullptr, DpType::Cp, 1).getDirection(), Direction::Input);
}

TEST(DpRef, KeepsWhatIsSet) {
  FpType owner;
  DpRef dp(nullptr, DpType::Cp, 0);
  dp.setFpType(&owner);
  dp.setTypeId(TypeId(ResourceType::Cp, "", "location"));
  dp.setIndex(-3);
  dp.setName("nciLocation");
  dp.setDirection(Direction::Output);
  dp.setArrayPermitted(false);
  dp.setMandatory(true);
  dp.setMember(12);
  dp.setAppliesTo("nvoStatus");
  EXPECT_EQ(dp.getFpType(), &owner);
  EXPECT_EQ(dp.getTypeId().toString(), "0000000000000000-0/SCPTlocation");
  EXPECT_EQ(dp.getIndex(), -3);
  EXPECT_EQ(dp.getName(), "nciLocation");
  EXPECT_EQ(dp.getDpType(), DpType::Cp);
  EXPECT_EQ(dp.getDirection(), Direction::Output);
  EXPECT_FALSE(dp.isArrayPermitted());
  EXPECT_TRUE(dp.isMandatory());
  EXPECT_EQ(dp.getMember(), 12);
  EXPECT_EQ(dp.getAppliesTo(), "nvoStatus");
}

// A limit of 0 is a limit: only the flag tells it from none.
TEST(DpRef, NotesWhichLimitsAreGiven) {
  DpRef min(nullptr, DpType::Nv, 1);
  min.setMin(0.0);
  EXPECT_TRUE(min.hasMin());
  EXPECT_FALSE(min.hasMax());
  EXPECT_FALSE(min.hasDefault());

  DpRef max(nullptr, DpType::Nv, 1);
  max.setMax(163.835);
  EXPECT_EQ(max.getMax(), 163.835);
  EXPECT_FALSE(max.hasMin());
  EXPECT_TRUE(max.hasMax());
  EXPECT_FALSE(max.hasDefault());

  DpRef preset(nullptr, DpType::Nv, 1);
  preset.setDefaultValue(-1.5);
  EXPECT_EQ(preset.getDefaultValue(), -1.5);
  EXPECT_FALSE(preset.hasMin());
  EXPECT_FALSE(preset.hasMax());
  EXPECT_TRUE(preset.hasDefault());
}

TEST(DpRef, IsAPlainClass) {
  EXPECT_FALSE(std::is_polymorphic_v<DpRef>);
}

}  // namespace
}  // namespace zavri::korvat
