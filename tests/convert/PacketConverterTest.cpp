#include "korvat/convert/PacketConverter.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using base::Packet;
using test::arraySize;
using test::bits;
using test::bytesOf;
using test::dynamicArray;
using test::enumeration;
using test::floating;
using test::LogCapture;
using test::OwnTypes;
using test::reference;
using test::scalar;
using test::structure;
using test::unionOf;
using util::BinaryUtils;

using Lines = std::vector<std::string>;

// The converted bytes, behind "failed: " when it was refused.
std::string convert(OwnTypes& types, const std::string& hex, Endianess from, Endianess to) {
  Buffer buffer = bytesOf(hex);
  const bool isDone =
      PacketConverter(&types.manager(), test::typeOf(types), from, to).convert(buffer);
  return (isDone ? "" : "failed: ") + BinaryUtils::toString(buffer);
}

std::string toLittle(OwnTypes& types, const std::string& hex) {
  return convert(types, hex, Endianess::Big, Endianess::Little);
}

std::string toBig(OwnTypes& types, const std::string& hex) {
  return convert(types, hex, Endianess::Little, Endianess::Big);
}

struct OrderCase {
  std::string name;
  std::string xml;
  std::string big;
  std::string little;
};

class PacketConverterOrder : public testing::TestWithParam<OrderCase> {};

TEST_P(PacketConverterOrder, ChangesFromBigToLittle) {
  const OrderCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(toLittle(types, c.big), c.little);
  EXPECT_EQ(log.texts(), Lines());
}

TEST_P(PacketConverterOrder, ChangesFromLittleToBig) {
  const OrderCase& c = GetParam();
  OwnTypes types(c.xml);
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(toBig(types, c.little), c.big);
  EXPECT_EQ(log.texts(), Lines());
}

const std::string kUnion =
    unionOf({{"word", scalar("unsigned long")}, {"byte", scalar("signed char")}});

const std::vector<OrderCase> kOrderCases = {
    {"Structure", structure({{"a", scalar("unsigned long")}, {"b", scalar("unsigned quad")}}),
     "000100000002", "010002000000"},
    {"Byte", scalar("unsigned short"), "A5", "A5"},
    {"Float", floating("float"), "3FC00000", "0000C03F"},
    {"Double", floating("double float"), "3FF8000000000001", "010000000000F83F"},
    {"Enumeration", structure({{"e", enumeration("power_t")}, {"w", scalar("signed long")}}),
     "01FFFE", "01FEFF"},
    {"BitsThatShareAByte",
     structure({{"a", bits(0, 3)}, {"b", bits(3, 5)}, {"w", scalar("unsigned long")}}), "A50102",
     "A50201"},
    {"Array", scalar("unsigned long", arraySize(2)), "00010002", "01000200"},
    {"ArrayOfStructures", structure({{"w", scalar("unsigned long")}}, arraySize(2)), "00010002",
     "01000200"},
    {"Reference", structure({{"r", reference("SNVT_word")}, {"a", reference("SNVT_pair")}}),
     "01020304", "02010304"},
    {"ArrayOfReferences", structure({{"r", reference("SNVT_word"), arraySize(2)}}), "01020304",
     "02010403"},
    {"UnionIsCopied", structure({{"u", kUnion}, {"w", scalar("unsigned long")}}), "01020304",
     "01020403"},
    {"NestedUnionIsCopied",
     structure({{"u", unionOf({{"quad", scalar("unsigned quad")}, {"inner", kUnion}})},
                {"w", scalar("unsigned long")}}),
     "010203040506", "010203040605"},
    {"DynamicArrayWithACountOfOneByte",
     structure({{"n", scalar("unsigned short")},
                {"list", scalar("unsigned long"), dynamicArray(0, 4)},
                {"after", scalar("unsigned long")}}),
     "02000100020003", "02010002000300"},
    {"DynamicArrayWithACountOfTwoBytes",
     structure({{"n", scalar("unsigned long")},
                {"list", scalar("unsigned long"), dynamicArray(0, 300)},
                {"after", scalar("unsigned long")}}),
     "000100020003", "010002000300"},
    {"EmptyDynamicArray",
     structure({{"n", scalar("unsigned short")},
                {"list", scalar("unsigned long"), dynamicArray(0, 4)},
                {"after", scalar("unsigned long")}}),
     "000003", "000300"},
    {"EnumerationBehindTheCount",
     structure({{"n", scalar("unsigned short")},
                {"e", enumeration("power_t")},
                {"list", scalar("unsigned long"), dynamicArray(0, 4)}}),
     "01000102", "01000201"},
};

INSTANTIATE_TEST_SUITE_P(Cases, PacketConverterOrder, testing::ValuesIn(kOrderCases),
                         [](const auto& info) { return info.param.name; });

TEST(PacketConverter, CopiesAUnionUnchanged) {
  OwnTypes types(kUnion);
  EXPECT_EQ(toLittle(types, "0102"), "0102");
}

TEST(PacketConverter, LeavesAValueThatHasTheOrderAlready) {
  OwnTypes types(scalar("unsigned long"));
  EXPECT_EQ(convert(types, "0102", Endianess::Big, Endianess::Big), "0102");
  EXPECT_EQ(convert(types, "010203", Endianess::Little, Endianess::Little), "010203");
}

TEST(PacketConverter, RefusesAnEmptyBuffer) {
  OwnTypes types(scalar("unsigned long"));
  static_cast<void>(test::typeOf(types));
  const LogCapture log;
  EXPECT_EQ(convert(types, "", Endianess::Big, Endianess::Big), "failed: ");
  EXPECT_EQ(toLittle(types, ""), "failed: ");
  EXPECT_EQ(log.texts(Logger::Debug), Lines());
}

TEST(PacketConverter, TellsThatTheSizesDiffer) {
  OwnTypes types(scalar("unsigned long"));
  static_cast<void>(test::typeOf(types));
  const LogCapture log(Logger::Debug);
  EXPECT_EQ(convert(types, "010203", Endianess::Big, Endianess::Big), "010203");
  EXPECT_EQ(log.texts(Logger::Debug),
            Lines{"[korvat] converting type _x: sizes differ, type max size 2 (buffer-size 3)\n"});
  EXPECT_EQ(convert(types, "0102", Endianess::Big, Endianess::Big), "0102");
  EXPECT_EQ(log.lines().size(), 1u);
}

TEST(PacketConverter, ClearsWhatNoMemberCovers) {
  OwnTypes types(scalar("unsigned long"));
  EXPECT_EQ(toLittle(types, "0102A5A5"), "02010000");
}

TEST(PacketConverter, LeavesABufferThatIsTooShort) {
  OwnTypes scalars(structure({{"a", scalar("unsigned long")}, {"b", scalar("unsigned quad")}}));
  EXPECT_EQ(toLittle(scalars, "0001000000"), "failed: 0001000000");
  EXPECT_EQ(toLittle(scalars, "00"), "failed: 00");
  OwnTypes floats(structure({{"a", scalar("unsigned long")}, {"f", floating("float")}}));
  EXPECT_EQ(toLittle(floats, "0001"), "failed: 0001");
  OwnTypes enums(structure({{"a", scalar("unsigned long")}, {"e", enumeration("power_t")}}));
  EXPECT_EQ(toLittle(enums, "0001"), "failed: 0001");
  OwnTypes fields(structure({{"a", scalar("unsigned long")}, {"b", bits(0, 8)}}));
  EXPECT_EQ(toLittle(fields, "0001"), "failed: 0001");
  // A walk that is far beyond the end has no position to go to.
  OwnTypes gaps(structure({{"b", bits(4, 0)}, {"a", scalar("unsigned long"), arraySize(3)}}));
  EXPECT_EQ(toLittle(gaps, "00"), "failed: 00");
}

TEST(PacketConverter, LeavesABufferWithoutRoomForItsUnion) {
  OwnTypes types(structure({{"w", scalar("unsigned long")}, {"u", kUnion}}));
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(toLittle(types, "000102"), "failed: 000102");
  EXPECT_EQ(log.texts(), Lines{"[VarType::convertPacketStructEnd] invalid union size\n"});
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
}

TEST(PacketConverter, GoesNoFurtherThanAUnionWithoutRoom) {
  const std::string tooLong = unionOf({{"quad", scalar("unsigned quad")}});
  for (const std::string& next : {structure({{"w", scalar("unsigned long")}}), tooLong}) {
    OwnTypes types(structure({{"u", tooLong}, {"next", next}}));
    const LogCapture log(Logger::Warning);
    EXPECT_EQ(toLittle(types, "0001"), "failed: 0001");
    EXPECT_EQ(log.texts(), Lines{"[VarType::convertPacketStructEnd] invalid union size\n"});
  }
}

TEST(PacketConverter, PassesOverMembersWithoutABaseTypeOrAKind) {
  TypeManager manager("drv");
  NvType type;
  type.setMember(test::makeStruct("", test::makeScalar("none", NcType::None),
                                  std::make_unique<test::OddMember>(0),
                                  test::makeScalar("word", NcType::UnsignedLong)));
  Buffer buffer = bytesOf("A50102");
  EXPECT_TRUE(PacketConverter(&manager, type, Endianess::Big, Endianess::Little).convert(buffer));
  EXPECT_EQ(BinaryUtils::toString(buffer), "000201");
}

TEST(PacketConverter, LeavesABufferOfATypeThatCannotBeWalked) {
  OwnTypes bare("");
  EXPECT_EQ(toLittle(bare, "0102"), "failed: 0102");
  EXPECT_EQ(convert(bare, "0102", Endianess::Big, Endianess::Big), "0102");
  OwnTypes dangling(structure({{"a", scalar("unsigned long")}, {"r", reference("SNVT_missing")}}));
  EXPECT_EQ(toLittle(dangling, "01020304"), "failed: 01020304");
}

TEST(PacketConverter, LeavesABufferShorterThanItsDynamicArray) {
  OwnTypes types(structure(
      {{"n", scalar("unsigned short")}, {"list", scalar("unsigned long"), dynamicArray(0, 4)}}));
  types.manager().setUseDynamicArrays(true);
  EXPECT_EQ(toLittle(types, "03000100"), "failed: 03000100");
}

TEST(PacketConverter, ReadsTheWholeDynamicArrayWithoutTheOption) {
  OwnTypes types(structure(
      {{"n", scalar("unsigned short")}, {"list", scalar("unsigned long"), dynamicArray(0, 2)}}));
  EXPECT_EQ(toLittle(types, "0100010002"), "0101000200");
}

TEST(PacketConverter, ForgetsTheCountBehindAFloatingNumber) {
  OwnTypes types(structure({{"n", scalar("unsigned short")},
                            {"f", floating("float")},
                            {"list", scalar("unsigned short"), dynamicArray(0, 2)}}));
  types.manager().setUseDynamicArrays(true);
  const LogCapture log(Logger::Warning);
  EXPECT_EQ(toLittle(types, "013FC000000506"), "010000C03F0506");
  EXPECT_EQ(log.texts(), Lines{"Member::getEffectiveArraySize failed, no arraySize in context\n"});
}

TEST(PacketConverter, TracesTheEndOfStructuresAndUnions) {
  OwnTypes types(structure({{"u", unionOf({{"inner", kUnion}})}}));
  static_cast<void>(test::typeOf(types));
  const LogCapture log;
  EXPECT_EQ(toLittle(types, "0102"), "0102");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Lines{"[VarType::convertPacketStructEnd] depth=2\n",
                   "[VarType::convertPacketStructEnd] UNION END\n",
                   "[VarType::convertPacketStructEnd] UNION inside UNION - ignore\n",
                   "[VarType::convertPacketStructEnd] depth=1\n",
                   "[VarType::convertPacketStructEnd] UNION END\n",
                   "[VarType::convertPacketStructEnd] depth=0\n"}));
}

// --- The manager ---

TEST(PacketConverter, IsReachedThroughTheManagerInBothDirections) {
  OwnTypes types(scalar("unsigned long"));
  const TypeId id(ResourceType::Nv, "", "_x");
  const bool isLittle = Packet::getHostByteOrder() == Endianess::Little;
  const Endianess other = isLittle ? Endianess::Big : Endianess::Little;
  for (const bool toNetwork : {false, true}) {
    Buffer buffer = bytesOf("0102");
    EXPECT_TRUE(types.manager().convert(other, id, buffer, toNetwork));
    EXPECT_EQ(BinaryUtils::toString(buffer), "0201");
    EXPECT_TRUE(types.manager().convert(Packet::getHostByteOrder(), id, buffer, toNetwork));
    EXPECT_EQ(BinaryUtils::toString(buffer), "0201");
  }
}

TEST(PacketConverter, WarnsOfAMissingType) {
  OwnTypes types(scalar("unsigned long"));
  Buffer buffer = bytesOf("0102");
  const LogCapture log(Logger::Warning);
  EXPECT_FALSE(
      types.manager().convert(Endianess::Big, TypeId(ResourceType::Nv, "", "_none"), buffer, true));
  EXPECT_EQ(log.texts(), Lines{"[korvat] missing var type 0000000000000000-0/SNVT_none\n"});
  EXPECT_EQ(log.lines().front().level, Logger::Warning);
  EXPECT_EQ(BinaryUtils::toString(buffer), "0102");
}

// --- Numbers ---

struct SizeCase {
  std::string name;
  unsigned byteCount;
  std::string copied;  // of 0102030405060708
  std::uint64_t peeked;
};

class PacketNumber : public testing::TestWithParam<SizeCase> {};

TEST_P(PacketNumber, IsCopiedIntoTheOtherOrder) {
  const SizeCase& c = GetParam();
  Packet input(Endianess::Big, bytesOf("0102030405060708"));
  Packet output(Endianess::Little);
  EXPECT_TRUE(copyNumber(input, output, c.byteCount));
  EXPECT_EQ(BinaryUtils::toString(output), c.copied);
  EXPECT_EQ(input.getPos(), c.byteCount);
}

TEST_P(PacketNumber, IsReadWithoutMoving) {
  const SizeCase& c = GetParam();
  const Packet input(Endianess::Big, bytesOf("0102030405060708"));
  std::uint64_t number = 99;
  EXPECT_TRUE(peekNumber(input, c.byteCount, number));
  EXPECT_EQ(number, c.peeked);
  EXPECT_EQ(input.getPos(), 0u);
}

INSTANTIATE_TEST_SUITE_P(Sizes, PacketNumber,
                         testing::ValuesIn(std::vector<SizeCase>{
                             {"Nothing", 0, "", 0},
                             {"OneByte", 1, "01", 0x01},
                             {"TwoBytes", 2, "0201", 0x0102},
                             {"FourBytes", 4, "04030201", 0x01020304},
                             {"EightBytes", 8, "0807060504030201", 0x0102030405060708},
                         }),
                         [](const auto& info) { return info.param.name; });

TEST(PacketNumberSize, NeedsItsBytes) {
  for (const unsigned byteCount : {1u, 2u, 4u, 8u}) {
    Packet input(Endianess::Big);
    input.setSize(byteCount - 1);
    Packet output(Endianess::Little);
    std::uint64_t number = 99;
    EXPECT_FALSE(copyNumber(input, output, byteCount));
    EXPECT_FALSE(peekNumber(input, byteCount, number));
    EXPECT_EQ(output.getSize(), 0u);
    EXPECT_EQ(number, 99u);
  }
}

TEST(PacketNumberSize, IsRefusedWithAnErrorWhenOdd) {
  for (const unsigned byteCount : {3u, 5u, 6u, 7u, 9u}) {
    Packet input(Endianess::Big, bytesOf("010203040506070809"));
    Packet output(Endianess::Little);
    std::uint64_t number = 99;
    const LogCapture log;
    EXPECT_FALSE(copyNumber(input, output, byteCount));
    EXPECT_FALSE(peekNumber(input, byteCount, number));
    const std::string size = std::to_string(byteCount);
    ASSERT_EQ(log.texts(Logger::Error),
              (Lines{"[korvat/convertPacket] invalid size " + size + "\n",
                     "[korvat/convertPacket] invalid size " + size + " (setContextArraySize)\n"}));
    EXPECT_EQ(output.getSize(), 0u);
    EXPECT_EQ(number, 99u);
  }
}

}  // namespace
}  // namespace zavri::korvat
