#include "korvat/base/Buffer.h"

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

constexpr std::uint8_t kBytes[] = {0x12, 0x34, 0x56};

TEST(Buffer, StartsEmpty) {
  EXPECT_EQ(Buffer().getSize(), 0u);
}

TEST(Buffer, CopiesTheBytesItIsGiven) {
  std::uint8_t bytes[] = {1, 2};
  const Buffer buffer(bytes, 2);
  bytes[0] = 9;
  ASSERT_EQ(buffer.getSize(), 2u);
  EXPECT_EQ(buffer.getData()[0], 1);
  EXPECT_EQ(buffer.getData()[1], 2);
}

TEST(Buffer, TakesNoBytesFromANullPointer) {
  EXPECT_EQ(Buffer(nullptr, 0).getSize(), 0u);
}

TEST(Buffer, CopiesAreIndependent) {
  const Buffer original(kBytes, 3);
  Buffer copy;
  copy = original;
  copy.getData()[0] = 0xFF;
  EXPECT_EQ(original.getData()[0], 0x12);
  EXPECT_EQ(copy.getData()[0], 0xFF);
}

TEST(Buffer, AppendsZeroBytesWhenItGrows) {
  Buffer buffer(kBytes, 3);
  buffer.setSize(5);
  const std::uint8_t expected[] = {0x12, 0x34, 0x56, 0, 0};
  EXPECT_EQ(buffer, Buffer(expected, 5));
}

TEST(Buffer, GrowsToASizeAndNeverShrinks) {
  Buffer buffer(kBytes, 3);
  buffer.growTo(2);
  EXPECT_EQ(buffer, Buffer(kBytes, 3));
  buffer.growTo(5);
  const std::uint8_t expected[] = {0x12, 0x34, 0x56, 0, 0};
  EXPECT_EQ(buffer, Buffer(expected, 5));
}

TEST(Buffer, CutsWhenItShrinks) {
  Buffer buffer(kBytes, 3);
  buffer.setSize(1);
  EXPECT_EQ(buffer, Buffer(kBytes, 1));
}

TEST(Buffer, ForgetsCutBytes) {
  Buffer buffer(kBytes, 3);
  buffer.setSize(1);
  buffer.setSize(2);
  EXPECT_EQ(buffer.getData()[1], 0);
}

TEST(Buffer, IsEmptyAfterClear) {
  Buffer buffer(kBytes, 3);
  buffer.clear();
  EXPECT_EQ(buffer.getSize(), 0u);
  EXPECT_EQ(buffer, Buffer());
}

TEST(Buffer, ComparesSizeAndBytes) {
  const std::uint8_t others[] = {0x12, 0x34, 0x57};
  EXPECT_TRUE(Buffer(kBytes, 3) == Buffer(kBytes, 3));
  EXPECT_FALSE(Buffer(kBytes, 3) != Buffer(kBytes, 3));
  EXPECT_TRUE(Buffer(kBytes, 3) != Buffer(others, 3));
  EXPECT_TRUE(Buffer(kBytes, 3) != Buffer(kBytes, 2));
}

}  // namespace
}  // namespace zavri::base
