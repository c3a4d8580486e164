#include "korvat/types/BaseType.h"

#include <gtest/gtest.h>

namespace zavri::korvat {
namespace {

class PlainType : public BaseType {
 public:
  explicit PlainType(ResourceType type) : BaseType(type) {}
};

TEST(BaseType, StartsWithoutNumberAndFlags) {
  const PlainType type(ResourceType::Fp);
  EXPECT_EQ(type.getTypeId().getType(), ResourceType::Fp);
  EXPECT_EQ(type.getTypeId().getPrefix(), "0000000000000000-0");
  EXPECT_EQ(type.getName(), "");
  EXPECT_EQ(type.getIndex(), -1);
  EXPECT_EQ(type.getFlags(), 0u);
}

TEST(BaseType, IsNamedByItsIdentifier) {
  PlainType type(ResourceType::Nv);
  type.getTypeId().setId("_temp_p");
  EXPECT_EQ(type.getName(), "_temp_p");
}

TEST(BaseType, CollectsFlags) {
  PlainType type(ResourceType::Nv);
  type.addFlags(BaseType::kObsolete);
  type.addFlags(BaseType::kDerivedFormat);
  EXPECT_EQ(type.getFlags(), 0x9u);
  EXPECT_TRUE(type.hasFlags(0x8));
  EXPECT_TRUE(type.hasFlags(0x9));
  EXPECT_FALSE(type.hasFlags(BaseType::kCharEncoding));
  EXPECT_FALSE(type.hasFlags(0x18));
}

TEST(BaseType, HasFlagsWithFixedNumbers) {
  EXPECT_EQ(BaseType::kObsolete, 0x1u);
  EXPECT_EQ(BaseType::kDerivedFormat, 0x8u);
  EXPECT_EQ(BaseType::kCharEncoding, 0x10u);
}

TEST(BaseType, CopiesAllFields) {
  PlainType source(ResourceType::Cp);
  source.getTypeId().setId("set");
  source.setIndex(7);
  source.addFlags(BaseType::kObsolete);

  const PlainType copy(source);
  EXPECT_EQ(copy.getTypeId().toString(), "0000000000000000-0/SCPTset");
  EXPECT_EQ(copy.getIndex(), 7);
  EXPECT_EQ(copy.getFlags(), 0x1u);
}

}  // namespace
}  // namespace zavri::korvat
