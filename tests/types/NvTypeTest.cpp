#include "korvat/types/NvType.h"

#include <gtest/gtest.h>

#include <memory>

namespace zavri::korvat {
namespace {

TEST(NvType, IsANetworkVariableType) {
  const NvType type;
  EXPECT_EQ(type.getTypeId().getType(), ResourceType::Nv);
  EXPECT_EQ(type.getTypeId().getPrefix(), TypeId::StdPrefix);
  EXPECT_EQ(type.getIndex(), -1);
  EXPECT_EQ(type.getFlags(), 0u);
}

TEST(NvType, ClonesAsItself) {
  NvType source;
  source.getTypeId().setId("_temp_p");
  const std::unique_ptr<VarType> copy = source.clone(true);
  EXPECT_NE(dynamic_cast<NvType*>(copy.get()), nullptr);
  EXPECT_EQ(copy->getTypeId().toString(), "0000000000000000-0/SNVT_temp_p");
}

}  // namespace
}  // namespace zavri::korvat
