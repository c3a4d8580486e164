#include "korvat/base/Packet.h"

#include <bit>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zavri::base {
namespace {

using Bytes = std::vector<std::uint8_t>;

Buffer toBuffer(const Bytes& bytes) {
  return Buffer(bytes.data(), static_cast<unsigned>(bytes.size()));
}

Bytes toBytes(const Buffer& buffer) {
  return Bytes(buffer.getData(), buffer.getData() + buffer.getSize());
}

TEST(Endianess, NumbersNetworkOrderZero) {
  EXPECT_EQ(static_cast<int>(Endianess::Big), 0);
  EXPECT_EQ(static_cast<int>(Endianess::Little), 1);
}

TEST(Packet, KnowsTheByteOrderOfThisMachine) {
  const std::uint16_t number = 0x0102;
  const auto first = *reinterpret_cast<const unsigned char*>(&number);
  EXPECT_EQ(Packet::getHostByteOrder(), first == 1 ? Endianess::Big : Endianess::Little);
}

TEST(Packet, StartsEmptyAtPositionZero) {
  const Packet packet(Endianess::Little);
  EXPECT_EQ(packet.getEndianess(), Endianess::Little);
  EXPECT_EQ(packet.getSize(), 0u);
  EXPECT_EQ(packet.getPos(), 0u);
}

TEST(Packet, CopiesABufferAndStartsAtItsBegin) {
  Buffer bytes = toBuffer({1, 2, 3});
  const Packet packet(Endianess::Big, bytes);
  bytes.getData()[0] = 9;
  EXPECT_EQ(toBytes(packet), (Bytes{1, 2, 3}));
  EXPECT_EQ(packet.getPos(), 0u);
}

struct OrderCase {
  std::string name;
  Endianess endianess;
  Bytes bytes;  // of 0x12, 0x3456, 0x789ABCDE and 0x0123456789ABCDEF in this order
};

class PacketOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(PacketOrder, WritesNumbersInItsByteOrder) {
  Packet packet(GetParam().endianess);
  packet.add(static_cast<unsigned char>(0x12));
  packet.add(static_cast<unsigned short>(0x3456));
  packet.add(0x789ABCDEu);
  packet.add(0x0123456789ABCDEFull);
  EXPECT_EQ(toBytes(packet), GetParam().bytes);
  EXPECT_EQ(packet.getPos(), 15u);
}

TEST_P(PacketOrder, ReadsNumbersInItsByteOrder) {
  Packet packet(GetParam().endianess, toBuffer(GetParam().bytes));
  unsigned char byte = 0;
  unsigned short shortNumber = 0;
  unsigned int number = 0;
  unsigned long long longNumber = 0;
  EXPECT_TRUE(packet.read(byte));
  EXPECT_TRUE(packet.read(shortNumber));
  EXPECT_TRUE(packet.read(number));
  EXPECT_TRUE(packet.read(longNumber));
  EXPECT_EQ(byte, 0x12);
  EXPECT_EQ(shortNumber, 0x3456);
  EXPECT_EQ(number, 0x789ABCDEu);
  EXPECT_EQ(longNumber, 0x0123456789ABCDEFull);
  EXPECT_EQ(packet.getPos(), 15u);
}

TEST_P(PacketOrder, PeeksNumbersWithoutMoving) {
  Packet packet(GetParam().endianess, toBuffer(GetParam().bytes));
  unsigned char byte = 0;
  EXPECT_TRUE(packet.peek(byte));
  EXPECT_EQ(byte, 0x12);
  EXPECT_EQ(packet.getPos(), 0u);

  unsigned short shortNumber = 0;
  ASSERT_TRUE(packet.setPos(1));
  EXPECT_TRUE(packet.peek(shortNumber));
  EXPECT_EQ(shortNumber, 0x3456);

  unsigned int number = 0;
  ASSERT_TRUE(packet.setPos(3));
  EXPECT_TRUE(packet.peek(number));
  EXPECT_EQ(number, 0x789ABCDEu);

  unsigned long long longNumber = 0;
  ASSERT_TRUE(packet.setPos(7));
  EXPECT_TRUE(packet.peek(longNumber));
  EXPECT_EQ(longNumber, 0x0123456789ABCDEFull);
  EXPECT_EQ(packet.getPos(), 7u);
}

const std::vector<OrderCase> kOrderCases = {
    {"Big",
     Endianess::Big,
     {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF}},
    {"Little",
     Endianess::Little,
     {0x12, 0x56, 0x34, 0xDE, 0xBC, 0x9A, 0x78, 0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}},
};
INSTANTIATE_TEST_SUITE_P(Orders, PacketOrder, testing::ValuesIn(kOrderCases),
                         [](const auto& info) { return info.param.name; });

// Reads a T when one byte too few remains, from a packet whose position is 1.
template <typename T>
void expectRefusedRead() {
  Packet packet(Endianess::Big, toBuffer(Bytes(sizeof(T), 0xFF)));
  ASSERT_TRUE(packet.setPos(1));
  T value = 42;
  EXPECT_FALSE(packet.read(value));
  EXPECT_FALSE(packet.peek(value));
  EXPECT_EQ(value, T{42});
  EXPECT_EQ(packet.getPos(), 1u);
}

TEST(Packet, RefusesAReadPastItsEnd) {
  expectRefusedRead<unsigned char>();
  expectRefusedRead<unsigned short>();
  expectRefusedRead<unsigned int>();
  expectRefusedRead<unsigned long long>();
}

TEST(Packet, ReadsWhatEndsWithIt) {
  Packet packet(Endianess::Big, toBuffer({0, 1, 2}));
  ASSERT_TRUE(packet.setPos(1));
  unsigned short value = 0;
  EXPECT_TRUE(packet.read(value));
  EXPECT_EQ(value, 0x0102);
}

TEST(Packet, MovesWithinItsBytesAndToTheirEndOnly) {
  Packet packet(Endianess::Big, toBuffer({1, 2}));
  EXPECT_TRUE(packet.setPos(2));
  EXPECT_EQ(packet.getPos(), 2u);
  EXPECT_FALSE(packet.setPos(3));
  EXPECT_FALSE(packet.setPos(0xFFFFFFFFu));
  EXPECT_EQ(packet.getPos(), 2u);
  EXPECT_TRUE(packet.setPos(0));
  EXPECT_EQ(packet.getPos(), 0u);
}

TEST(Packet, WritesOverWhatIsThereAndAppendsTheRest) {
  Packet packet(Endianess::Big, toBuffer({1, 2, 3}));
  ASSERT_TRUE(packet.setPos(2));
  packet.add(0xAABBCCDDu);
  EXPECT_EQ(toBytes(packet), (Bytes{1, 2, 0xAA, 0xBB, 0xCC, 0xDD}));
  EXPECT_EQ(packet.getPos(), 6u);

  ASSERT_TRUE(packet.setPos(0));
  packet.add(static_cast<unsigned char>(9));
  EXPECT_EQ(toBytes(packet), (Bytes{9, 2, 0xAA, 0xBB, 0xCC, 0xDD}));
  EXPECT_EQ(packet.getPos(), 1u);
}

TEST(Packet, AppendsBytesAsTheyAre) {
  Packet packet(Endianess::Little);
  packet.add(toBuffer({1, 2}));
  const unsigned char more[] = {3, 4};
  packet.addBytes(more, 2, true);
  EXPECT_EQ(toBytes(packet), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(packet.getPos(), 4u);
}

TEST(Packet, StaysWhereItWasWhenNotAskedToAdvance) {
  Packet packet(Endianess::Big);
  const unsigned char bytes[] = {3, 4};
  packet.addBytes(bytes, 2, false);
  EXPECT_EQ(packet.getPos(), 0u);
  unsigned short value = 0;
  EXPECT_TRUE(packet.read(value));
  EXPECT_EQ(value, 0x0304);
}

TEST(Packet, TakesNoBytes) {
  Packet packet(Endianess::Big, toBuffer({1}));
  packet.add(Buffer());
  packet.addBytes(nullptr, 0, true);
  EXPECT_EQ(toBytes(packet), (Bytes{1}));
  EXPECT_EQ(packet.getPos(), 0u);
}

TEST(Packet, AppendsItself) {
  Packet packet(Endianess::Big, toBuffer({1, 2, 3}));
  ASSERT_TRUE(packet.setPos(3));
  packet.add(packet);
  EXPECT_EQ(toBytes(packet), (Bytes{1, 2, 3, 1, 2, 3}));
}

TEST(Packet, RefusesWhatExceedsTheRangeOfSizes) {
  Packet packet(Endianess::Big, toBuffer({1, 2}));
  ASSERT_TRUE(packet.setPos(1));
  const unsigned char byte = 0;
  packet.addBytes(&byte, 0xFFFFFFFFu, true);
  EXPECT_EQ(toBytes(packet), (Bytes{1, 2}));
  EXPECT_EQ(packet.getPos(), 1u);
}

TEST(Packet, MovesToItsNewEndWhenItIsCut) {
  Packet packet(Endianess::Big, toBuffer({1, 2, 3}));
  ASSERT_TRUE(packet.setPos(3));
  packet.setSize(1);
  EXPECT_EQ(packet.getPos(), 1u);
  packet.clear();
  EXPECT_EQ(packet.getPos(), 0u);
  EXPECT_EQ(packet.getSize(), 0u);
}

TEST(Packet, ReadsNothingBehindTheEndWhenCutThroughItsBase) {
  Packet packet(Endianess::Big, toBuffer({1, 2, 3}));
  ASSERT_TRUE(packet.setPos(3));
  static_cast<Buffer&>(packet).setSize(1);
  unsigned char value = 42;
  EXPECT_FALSE(packet.read(value));
  EXPECT_EQ(value, 42);
}

}  // namespace
}  // namespace zavri::base
