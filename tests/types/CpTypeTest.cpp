#include "korvat/types/CpType.h"

#include <gtest/gtest.h>

#include <memory>

#include "korvat/members/MemScalar.h"

namespace zavri::korvat {
namespace {

TEST(CpType, IsAPropertyTypeWithoutDefault) {
  const CpType type;
  EXPECT_EQ(type.getTypeId().getType(), ResourceType::Cp);
  EXPECT_EQ(type.getIndex(), -1);
  EXPECT_EQ(type.getFlags(), 0u);
  EXPECT_EQ(type.getDefaultValue(), "");
}

class CpTypeClone : public testing::TestWithParam<bool> {};

TEST_P(CpTypeClone, KeepsTheDefaultValue) {
  CpType source;
  source.getTypeId().setId("Setpoint");
  source.setDefaultValue("20, 1");
  source.setFormatText("", "text");
  source.setMember(std::make_unique<MemScalar>());

  const std::unique_ptr<VarType> copy = source.clone(GetParam());
  const auto* property = dynamic_cast<CpType*>(copy.get());
  ASSERT_NE(property, nullptr);
  EXPECT_EQ(property->getTypeId().toString(), "0000000000000000-0/SCPTSetpoint");
  EXPECT_EQ(property->getDefaultValue(), "20, 1");
  EXPECT_EQ(property->getFormats().size(), GetParam() ? 0u : 1u);
  EXPECT_EQ(property->getMember()->getKind(), Member::Kind::Scalar);
  EXPECT_NE(property->getMember(), source.getMember());
}

INSTANTIATE_TEST_SUITE_P(Formats, CpTypeClone, testing::Bool(), [](const auto& info) {
  return info.param ? "WithoutFormats" : "WithFormats";
});

}  // namespace
}  // namespace zavri::korvat
