#include "korvat/members/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "korvat/types/NvType.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Endianess;
using base::Logger;
using test::makeBitfield;
using test::makeRef;
using test::makeScalar;
using test::makeStruct;
using test::makeUnion;
using test::withArray;

// Layout, with the byte at which each member begins:
//
//   head          0   1 byte
//   flags.low     1   bit field at bit 0, 3 wide       flags.high   1, bit 4, 2 wide
//   words         2   3 numbers of 2 bytes
//   u             8   union: u.byte, u.quad (4 bytes), u.inner.x 8 and u.inner.y 9 (2 bytes)
//   list         12   2 structures of 3 bytes: id 12 and 15, value 13 and 16
//   pairs        18   2 references to "_pair" (3 bytes): a 18 and 21, b 19 and 22
//   direct       24   a reference to "_toWords", an array of 3 numbers of 2 bytes
//   bits         30   2 bit fields of 8 bits
//   dynamic      32   dynamic array of 1 to 4 bytes
//   tail         36   1 byte
std::unique_ptr<Member> makeRoot() {
  auto inner = makeStruct("inner", makeScalar("x"), makeScalar("y", NcType::UnsignedLong));
  return makeStruct(
      "", makeScalar("head"),
      makeStruct("flags", makeBitfield("low", 0, 3), makeBitfield("high", 4, 2)),
      makeScalar("words", NcType::UnsignedLong, 3),
      makeUnion("u", makeScalar("byte"), makeScalar("quad", NcType::UnsignedQuad),
                std::move(inner)),
      withArray(makeStruct("list", makeScalar("id"), makeScalar("value", NcType::UnsignedLong)), 2),
      makeRef("pairs", "_pair", 2), makeRef("direct", "_toWords"),
      makeBitfield("bits", 0, 8, false, 2), withArray(makeScalar("dynamic"), 4, 1),
      makeScalar("tail"));
}

class RawValue : public testing::Test {
 protected:
  RawValue() : _manager(makeManager()) {
    _type.getTypeId().setId("_sample");
    _type.setMember(makeRoot());
  }

  Value access() { return Value(&_manager, &_type, Endianess::Big, _buffer); }
  TypeManager& manager() { return _manager; }
  base::Buffer& buffer() { return _buffer; }

 private:
  TypeManager makeManager() {
    _files.write(
        TypeId::StdPrefix, "nvs",
        test::nvtXml("_pair",
                     test::structXml(test::memberXml("a", test::scalarXml("unsigned char")) +
                                     test::memberXml("b", test::scalarXml("unsigned long")))) +
            test::nvtXml("_words", test::scalarXml("unsigned long", "<array-size>3</array-size>")) +
            test::nvtXml("_toWords", test::refXml("_words")) +
            test::nvtXml("_toMissing", test::refXml("_missing")) +
            test::nvtXml("_empty", "<size>0</size>"));
    return _files.makeManager();
  }

  test::TempCatalogue _files;
  TypeManager _manager;
  NvType _type;
  base::Buffer _buffer;
};

struct PlaceCase {
  std::string name;
  std::string path;
  std::int32_t byteOffset;
  std::int32_t elementIndex;
  std::string member;  // program name
};

class ValuePath : public RawValue, public testing::WithParamInterface<PlaceCase> {};

TEST_P(ValuePath, LeadsToThePlaceThatAWalkVisits) {
  const PlaceCase& c = GetParam();
  const Value value = access();
  const MemberValue found = value[c.path];
  ASSERT_TRUE(found.isValid());
  EXPECT_EQ(found.getByteOffset(), c.byteOffset);
  EXPECT_EQ(found.getElementIndex(), c.elementIndex);
  EXPECT_EQ(found.getMember()->getProgName(), c.member);
  EXPECT_EQ(found.getTypeContext(), value.getType());
  EXPECT_EQ(found.getPathText(), c.path.empty() ? "_sample" : "_sample." + c.path);
}

const std::vector<PlaceCase> kPlaceCases = {
    {"TheValueItself", "", 0, -1, ""},
    {"FirstMember", "head", 0, -1, "head"},
    {"Structure", "flags", 1, -1, "flags"},
    {"BitField", "flags.low", 1, -1, "low"},
    {"BitFieldInTheSameByte", "flags.high", 1, -1, "high"},
    {"ArrayBehindAPartlyUsedByte", "words", 2, -1, "words"},
    {"FirstElement", "words[0]", 2, 0, "words"},
    {"LastElement", "words[2]", 2, 2, "words"},
    {"Union", "u", 8, -1, "u"},
    {"FirstAlternative", "u.byte", 8, -1, "byte"},
    {"OtherAlternative", "u.quad", 8, -1, "quad"},
    {"MemberOfAnAlternative", "u.inner.y", 9, -1, "y"},
    {"ArrayOfStructures", "list", 12, -1, "list"},
    {"StructureInAnArray", "list[1]", 15, 1, "list"},
    {"MemberOfAnElement", "list[0].value", 13, -1, "value"},
    {"MemberOfTheLastElement", "list[1].value", 16, -1, "value"},
    {"ArrayOfReferences", "pairs", 18, -1, "pairs"},
    {"ElementThatIsAReference", "pairs[1]", 21, -1, ""},
    {"MemberBehindAReference", "pairs[1].b", 22, -1, "b"},
    {"ReferenceToAnArray", "direct", 24, -1, ""},
    {"ElementBehindAReference", "direct[2]", 24, 2, ""},
    {"ArrayOfBitFields", "bits[1]", 30, 1, "bits"},
    {"DynamicArray", "dynamic", 32, -1, "dynamic"},
    {"ElementOfADynamicArray", "dynamic[3]", 32, 3, "dynamic"},
    {"BehindADynamicArrayAtFullSize", "tail", 36, -1, "tail"},
};
INSTANTIATE_TEST_SUITE_P(Paths, ValuePath, testing::ValuesIn(kPlaceCases),
                         [](const auto& info) { return info.param.name; });

struct NowhereCase {
  std::string name;
  std::string path;
};

class PathToNowhere : public RawValue, public testing::WithParamInterface<NowhereCase> {};

TEST_P(PathToNowhere, GivesAMemberValueThatIsNotAccessible) {
  const Value value = access();
  const MemberValue found = value[GetParam().path];
  EXPECT_FALSE(found.isValid());
  std::uint8_t byte = 7;
  EXPECT_EQ(found.get(-1, byte), AccessStatus::NotAccessible);
  EXPECT_EQ(found.set(-1, byte), AccessStatus::NotAccessible);
  EXPECT_EQ(found.getText(base::CharEncoding::Utf8), "");
  EXPECT_EQ(byte, 7);
  EXPECT_EQ(buffer().getSize(), 0u);
}

const std::vector<NowhereCase> kNowhereCases = {
    {"UnknownMember", "nothing"},
    {"UnknownBelow", "flags.nothing"},
    {"BelowALeaf", "head.x"},
    {"BelowABitField", "flags.low.x"},
    {"MemberOfAnArrayWithoutIndex", "list.id"},
    {"MemberOfReferencesWithoutIndex", "pairs.a"},
    {"IndexPastTheArray", "words[3]"},
    {"IndexPastAnArrayOfStructures", "list[2].id"},
    {"IndexPastAnArrayBehindAReference", "direct[3]"},
    {"IndexPastADynamicArray", "dynamic[4]"},
    {"NegativeIndex", "words[-1]"},
    {"IndexThatIsNoNumber", "words[x]"},
    {"IndexWithMoreBehind", "words[1x]"},
    {"IndexTooLarge", "words[4294967296]"},
    {"NoIndex", "words[]"},
    {"IndexNotClosed", "words[1"},
    {"TextBehindTheIndex", "words[1]x"},
    {"TwoIndexes", "words[1][2]"},
    {"IndexOfNoArray", "head[0]"},
    {"IndexOfAStructure", "flags[0]"},
    {"IndexOfTheValueItself", "[0]"},
    {"IndexOfAnElementThatIsAReference", "pairs[1][0]"},
    {"EmptyComponent", "flags..low"},
    {"DotInFront", ".head"},
    {"OnlyADot", "."},
    {"TooLong", std::string(5'000, 'x')},
};
INSTANTIATE_TEST_SUITE_P(Paths, PathToNowhere, testing::ValuesIn(kNowhereCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(RawValue, IsPlacedAtFullSizeWhereDynamicArraysAreInUseToo) {
  manager().setUseDynamicArrays(true);
  test::LogCapture log(Logger::Warning);
  const Value value = access();
  EXPECT_EQ(value["tail"].getByteOffset(), 36);
  EXPECT_TRUE(log.lines().empty());
}

TEST_F(RawValue, ReadsAndWritesMembersInItsBuffer) {
  const Value value = access();
  EXPECT_EQ(value["pairs[1].b"].setUInt16(0x1234), AccessStatus::Exact);
  EXPECT_EQ(value["flags.high"].setUInt8(3), AccessStatus::Exact);
  ASSERT_EQ(buffer().getSize(), 24u);  // up to the end of what was written
  EXPECT_EQ(buffer().getData()[22], 0x12);
  EXPECT_EQ(buffer().getData()[23], 0x34);
  EXPECT_EQ(buffer().getData()[1], 0x0C);
  EXPECT_EQ(value["pairs"].getUInt8(), 0);  // a reference that is an array has no bytes of its own
  EXPECT_EQ(value["pairs[1].b"].getUInt16(), 0x1234);
}

TEST_F(RawValue, IsNotValidWithoutATypeOrALayout) {
  const Value withoutType(&manager(), nullptr, Endianess::Big, buffer());
  EXPECT_FALSE(withoutType.isValid());
  EXPECT_FALSE(withoutType[""].isValid());

  const NvType empty;
  const Value withoutLayout(&manager(), &empty, Endianess::Big, buffer());
  EXPECT_FALSE(withoutLayout.isValid());
  EXPECT_FALSE(withoutLayout[""].isValid());
  EXPECT_TRUE(access().isValid());
}

TEST_F(RawValue, KeepsWhatItWasMadeOf) {
  const Value value(&manager(), nullptr, Endianess::Little, buffer());
  EXPECT_EQ(value.getType(), nullptr);
  EXPECT_EQ(value.getEndianess(), Endianess::Little);
  EXPECT_EQ(&value.getBuffer(), &buffer());
}

TEST_F(RawValue, IsWhatAManagerGivesAccessTo) {
  const std::uint8_t bytes[] = {1, 0, 2};
  base::Buffer raw(bytes, 3);
  const Value value = manager().accessValue(
      Endianess::Big, TypeId(ResourceType::Nv, TypeId::StdPrefix, "_pair"), raw);
  EXPECT_EQ(value["b"].getUInt16(), 2);
  EXPECT_EQ(value["b"].getPathText(), "_pair.b");
  const Value missing = manager().accessValue(
      Endianess::Big, TypeId(ResourceType::Nv, TypeId::StdPrefix, "_missing"), raw);
  EXPECT_FALSE(missing.isValid());
}

TEST_F(RawValue, ReachesElementsOfAValueThatIsAnArray) {
  NvType type;
  type.getTypeId().setId("_words");
  type.setMember(makeScalar("", NcType::UnsignedLong, 3));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  EXPECT_EQ(value["[2]"].getByteOffset(), 0);
  EXPECT_EQ(value["[2]"].getElementIndex(), 2);
  EXPECT_EQ(value["[2]"].getPathText(), "_words.[2]");
  EXPECT_FALSE(value["[3]"].isValid());
}

TEST_F(RawValue, ReachesNothingBehindAMemberThatIsBroken) {
  NvType type;
  type.setMember(
      makeStruct("", makeScalar("first"), makeRef("broken", "_missing"), makeScalar("behind")));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  const test::LogCapture log;
  EXPECT_TRUE(value["first"].isValid());
  EXPECT_FALSE(value["broken"].isValid());
  EXPECT_FALSE(value["broken.x"].isValid());
  EXPECT_FALSE(value["broken[0]"].isValid());
  EXPECT_FALSE(value["behind"].isValid());
}

TEST_F(RawValue, ReachesNothingBehindAMemberThatIsMissing) {
  NvType type;
  type.setMember(
      makeStruct("", makeScalar("first"), std::unique_ptr<MemScalar>(), makeScalar("behind")));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  EXPECT_TRUE(value["first"].isValid());
  EXPECT_FALSE(value["behind"].isValid());
}

TEST_F(RawValue, ReachesNoElementBehindABrokenOne) {
  NvType type;
  type.setMember(withArray(makeStruct("", makeScalar("x"), makeRef("broken", "_missing")), 2));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  const test::LogCapture log;
  EXPECT_TRUE(value["[0].x"].isValid());
  EXPECT_FALSE(value["[1].x"].isValid());
}

TEST_F(RawValue, StartsAMemberOfAUnionBehindABitFieldOnAWholeByte) {
  NvType type;
  type.setMember(makeStruct("", makeBitfield("f", 1, 2),
                            makeUnion("u", makeScalar("a"), makeScalar("b", NcType::UnsignedLong)),
                            makeBitfield("g", 1, 2), makeRef("r", "_words"),
                            makeBitfield("h", 4, 4)));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  EXPECT_EQ(value["u.b"].getByteOffset(), 1);
  EXPECT_EQ(value["g"].getByteOffset(), 3);
  EXPECT_EQ(value["r"].getByteOffset(), 4);
  EXPECT_EQ(value["r[1]"].getByteOffset(), 4);
  EXPECT_EQ(value["h"].getByteOffset(), 10);
}

TEST_F(RawValue, ReachesMembersFarBehindLargeArrays) {
  NvType type;
  auto large = makeStruct("large", makeScalar("x", NcType::Double, 65536));
  type.setMember(makeStruct("", withArray(std::move(large), 50), makeScalar("behind")));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  EXPECT_EQ(value["behind"].getByteOffset(), 50 * 8 * 65536);
  EXPECT_EQ(value["large[49].x"].getByteOffset(), 49 * 8 * 65536);
}

TEST_F(RawValue, ReachesNothingBehindMoreElementsThanAWalkVisits) {
  NvType type;
  auto large = makeStruct("large", makeScalar("x", NcType::UnsignedShort, 65536));
  type.setMember(makeStruct("", withArray(std::move(large), 65536), makeScalar("behind")));
  const Value value(&manager(), &type, Endianess::Big, buffer());
  test::LogCapture log(Logger::Warning);
  EXPECT_FALSE(value["behind"].isValid());
  EXPECT_EQ(log.texts(),
            std::vector<std::string>{"[korvat] walk given up after 4000000 visits: \n"});
}

}  // namespace
}  // namespace zavri::korvat
