#include "korvat/members/MemberValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/BinaryUtils.h"
#include "korvat/members/Value.h"
#include "korvat/types/NvType.h"
#include "korvat/types/TypeManager.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::CharEncoding;
using base::Endianess;
using base::Logger;
using test::makeBitfield;
using test::makeFloat;
using test::makeScalar;
using test::withArray;
using Lines = std::vector<std::string>;

constexpr AccessStatus kExact = AccessStatus::Exact;
constexpr AccessStatus kRange = AccessStatus::OutOfRange;
constexpr AccessStatus kNoFit = AccessStatus::DoesNotFit;
constexpr AccessStatus kSign = AccessStatus::SignChange;
constexpr AccessStatus kTruncated = AccessStatus::Truncated;
constexpr AccessStatus kNoAccess = AccessStatus::NotAccessible;

base::Buffer bufferOf(const std::string& hex) {
  base::Buffer buffer;
  util::BinaryUtils::stringToBuffer(buffer, hex, 0);
  return buffer;
}

// A manager, a type called "_sample" and a buffer for values of it.
class MemberValueTest : public testing::Test {
 protected:
  MemberValueTest() : _manager("drv") { _type.getTypeId().setId("_sample"); }

  void fill(const std::string& hex) { _buffer = bufferOf(hex); }
  void setOrder(Endianess order) { _value = Value(&_manager, &_type, order, _buffer); }
  std::string hex() const { return util::BinaryUtils::toString(_buffer); }

  MemberValue at(const Member& member, std::int32_t byteOffset, std::int32_t elementIndex = -1) {
    return MemberValue(&_manager, &_type, &_value, &member, {"some", member.getProgName()},
                       byteOffset, elementIndex);
  }
  // The same without a value object, and so without a buffer.
  MemberValue alone(const Member& member, std::int32_t byteOffset) {
    return MemberValue(&_manager, &_type, nullptr, &member, {member.getProgName()}, byteOffset, -1);
  }

  TypeManager _manager;
  NvType _type;
  base::Buffer _buffer;
  Value _value{&_manager, &_type, Endianess::Big, _buffer};
};

// --- What it is ---

TEST_F(MemberValueTest, KeepsWhatItWasMadeOf) {
  const auto member = makeScalar("x", NcType::UnsignedLong, 3);
  const MemberValue value = at(*member, 5, 2);
  EXPECT_TRUE(value.isValid());
  EXPECT_EQ(value.getMember(), member.get());
  EXPECT_EQ(value.getTypeContext(), &_type);
  EXPECT_EQ(value.getByteOffset(), 5);
  EXPECT_EQ(value.getElementIndex(), 2);
}

TEST_F(MemberValueTest, TakesEachNegativePlaceForNone) {
  const auto member = makeScalar("x");
  const MemberValue value = at(*member, -1000, -1000);
  EXPECT_FALSE(value.isValid());
  EXPECT_EQ(value.getByteOffset(), -1);
  EXPECT_EQ(value.getElementIndex(), -1);
}

TEST_F(MemberValueTest, NamesItsTypeAndPath) {
  const auto member = makeScalar("x", NcType::UnsignedLong, 3);
  EXPECT_EQ(at(*member, 0).getPathText(), "_sample.some.x");
  EXPECT_EQ(at(*member, 0)[2].getPathText(), "_sample.some.x[2]");
  EXPECT_EQ(alone(*member, 0).getPathText(), "x");
  EXPECT_EQ(MemberValue().getPathText(), "");
  const MemberValue root(&_manager, &_type, &_value, member.get(), {}, 0, -1);
  EXPECT_EQ(root.getPathText(), "_sample");
  EXPECT_EQ(root[1].getPathText(), "_sample.[1]");
}

TEST_F(MemberValueTest, GivesElementsOfAWholeArrayOnly) {
  const auto array = makeScalar("x", NcType::UnsignedLong, 3);
  EXPECT_TRUE(at(*array, 0)[0].isValid());
  EXPECT_TRUE(at(*array, 0)[2].isValid());
  EXPECT_EQ(at(*array, 4)[2].getByteOffset(), 4);
  EXPECT_EQ(at(*array, 4)[2].getElementIndex(), 2);
  EXPECT_FALSE(at(*array, 0)[3].isValid());
  EXPECT_FALSE(at(*array, 0)[-1].isValid());
  EXPECT_FALSE(at(*array, 0)[1][1].isValid());
  EXPECT_FALSE(at(*array, -1)[0].isValid());
  EXPECT_FALSE(at(*makeScalar("x"), 0)[0].isValid());
  const auto structures = withArray(test::makeStruct("s", makeScalar("x")), 3);
  EXPECT_FALSE(at(*structures, 0)[0].isValid());
  EXPECT_FALSE(MemberValue()[0].isValid());
}

// --- Nothing to access ---

// Every operation, on a member value that is not placed, has no manager, or no bytes of its own.
void expectNoAccess(const MemberValue& value, base::Buffer& buffer) {
  const base::Buffer before = buffer;
  std::uint8_t bytes[8] = {9, 9, 9, 9, 9, 9, 9, 9};
  EXPECT_EQ(value.getValue(bytes, 8), kNoAccess);
  EXPECT_EQ(value.getValue(bytes, 8, &buffer), kNoAccess);
  EXPECT_EQ(value.setValue(bytes, 8), kNoAccess);
  EXPECT_EQ(value.setValue(bytes, 8, &buffer), kNoAccess);
  double number = 7;
  EXPECT_EQ(value.get(-1, number), kNoAccess);
  EXPECT_EQ(value.get(0, number), kNoAccess);
  EXPECT_EQ(number, 7);
  EXPECT_EQ(value.set(-1, std::uint64_t{1}), kNoAccess);
  EXPECT_EQ(value.set(0, std::int64_t{1}), kNoAccess);
  EXPECT_EQ(value.getInt32(), 0);
  EXPECT_EQ(value.getDouble(), 0);
  EXPECT_EQ(value.setInt8(1), kNoAccess);
  EXPECT_EQ(value.setFloat(1), kNoAccess);
  EXPECT_EQ(value.getBitfield(), 0);
  EXPECT_EQ(value.getBitfield(&buffer), 0);
  EXPECT_EQ(value.setBitfield(1), kNoAccess);
  EXPECT_EQ(value.setBitfield(1, &buffer), kNoAccess);
  EXPECT_EQ(value.getText(CharEncoding::Utf8), "");
  EXPECT_EQ(value.setText("a", CharEncoding::Utf8), kNoAccess);
  EXPECT_EQ(value.getRawHex(), "");
  EXPECT_EQ(value.getRawHex(1), "");
  EXPECT_EQ(value.setRawHex("01"), kNoAccess);
  EXPECT_EQ(bytes[0], 9);
  EXPECT_EQ(buffer, before);
}

TEST_F(MemberValueTest, AnswersNotAccessibleWithoutAPlace) {
  fill("FFFFFFFFFFFFFFFF");
  expectNoAccess(at(*makeScalar("x"), -1), _buffer);
  expectNoAccess(at(*makeScalar("x", NcType::UnsignedShort, 4), -1), _buffer);
  expectNoAccess(at(*makeBitfield("x", 2, 3), -1), _buffer);
}

TEST_F(MemberValueTest, AnswersNotAccessibleWithoutAMemberOrAManager) {
  fill("FFFFFFFFFFFFFFFF");
  expectNoAccess(MemberValue(), _buffer);
  expectNoAccess(MemberValue(&_manager, &_type, &_value, nullptr, {}, 0, -1), _buffer);
  const auto member = makeScalar("x", NcType::UnsignedShort, 4);
  expectNoAccess(MemberValue(nullptr, &_type, &_value, member.get(), {}, 0, -1), _buffer);
}

TEST_F(MemberValueTest, AnswersNotAccessibleForMembersWithoutBytesOfTheirOwn) {
  fill("FFFFFFFFFFFFFFFF");
  expectNoAccess(at(*makeScalar("x", NcType::None), 0), _buffer);
  expectNoAccess(at(*makeScalar("x", NcType::Reserved, 4), 0), _buffer);
  expectNoAccess(at(*test::makeStruct("s", makeScalar("x")), 0), _buffer);
  expectNoAccess(at(*test::makeRef("r", "_pair", 2), 0), _buffer);
  // 2^30 numbers of 4 bytes: more than any value has.
  const auto huge = makeScalar("x", NcType::UnsignedQuad, 0x40000000);
  std::uint8_t byte = 9;
  EXPECT_EQ(at(*huge, 0).getValue(&byte, 1), kNoAccess);
  EXPECT_EQ(at(*huge, 0).setValue(&byte, 1), kNoAccess);
  EXPECT_EQ(hex(), "FFFFFFFFFFFFFFFF");
}

TEST_F(MemberValueTest, ReportsAMissingBuffer) {
  const auto member = makeScalar("x", NcType::UnsignedShort, 2);
  std::uint8_t byte = 9;
  test::LogCapture log;
  EXPECT_EQ(alone(*member, 0).getValue(&byte, 1), kNoAccess);
  EXPECT_EQ(byte, 9);
  EXPECT_EQ(log.texts(Logger::Warning), Lines{"[MemberValue::getValue] no top value object\n"});
  EXPECT_EQ(log.lines().size(), 1u);

  log.clear();
  EXPECT_EQ(alone(*member, 0).setValue(&byte, 1), kNoAccess);
  EXPECT_EQ(log.texts(Logger::Warning), Lines{"[MemberValue::setValue] no buffer\n"});
  EXPECT_EQ(log.lines().size(), 1u);

  EXPECT_EQ(alone(*member, 0).getUInt8(), 0);
  EXPECT_EQ(alone(*member, 0).setUInt8(1), kNoAccess);
  EXPECT_EQ(alone(*member, 0).getText(CharEncoding::Utf8), "");
  EXPECT_EQ(alone(*member, 0).getRawHex(), "");

  log.clear();
  EXPECT_EQ(alone(*makeBitfield("b", 0, 3), 0).setBitfield(9), kNoAccess);
  EXPECT_EQ(log.texts(), Lines{"[MemberValue::setValue] no buffer\n"});
}

// --- References ---

TEST(MemberValueOfReference, IsThatOfTheRootOfItsType) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "nvs",
              test::nvtXml("_number", test::scalarXml("signed long")) +
                  test::nvtXml("_toNumber", test::refXml("_number")) +
                  test::nvtXml("_empty", "<size>0</size>"));
  TypeManager manager = files.makeManager();
  static_cast<void>(manager.getVarType("0000000000000000-0/SNVT_number"));
  base::Buffer buffer = bufferOf("00FFFE");
  const NvType type;
  const Value top(&manager, &type, Endianess::Big, buffer);
  const auto make = [&](const Member& member) {
    return MemberValue(&manager, &type, &top, &member, {"r"}, 1, -1);
  };

  test::LogCapture log(Logger::Debug);
  EXPECT_EQ(make(*test::makeRef("r", "_toNumber")).getInt16(), -2);
  EXPECT_EQ(log.texts(), Lines{"[MemberValue::MemberValue] trying to resolve ref for r\n"});
  EXPECT_EQ(log.texts(Logger::Debug).size(), 1u);

  log.clear();
  EXPECT_FALSE(make(*test::makeRef("q", "_missing")).isValid());
  EXPECT_EQ(log.texts(Logger::Debug),
            (Lines{"[MemberValue::MemberValue] trying to resolve ref for q\n",
                   "[MemberValue::operator [ix]] unresolved ref for q\n"}));
  EXPECT_EQ(log.texts(Logger::Warning),
            Lines{"[korvat] could not resolve ref 0000000000000000-0/SNVT_missing\n"});

  log.clear();
  EXPECT_FALSE(make(*test::makeRef("e", "_empty")).isValid());
  EXPECT_EQ(log.texts(), (Lines{"[MemberValue::MemberValue] trying to resolve ref for e\n",
                                "[MemberValue::operator [ix]] unresolved ref for e\n"}));

  log.clear();
  const auto array = test::makeRef("a", "_number", 2);
  EXPECT_EQ(make(*array).getMember(), array.get());
  EXPECT_TRUE(log.lines().empty());
}

// --- Bytes ---

struct GetCase {
  std::string name;
  std::uint32_t arraySize;  // of numbers of 2 bytes
  std::int32_t byteOffset;
  std::int32_t elementIndex;
  unsigned byteCount;
  AccessStatus status;
  std::string bytes;  // of the destination, which holds EE before
};

class GetValue : public MemberValueTest, public testing::WithParamInterface<GetCase> {};

TEST_P(GetValue, CopiesTheSmallerOfTheTwoSizes) {
  const GetCase& c = GetParam();
  fill("0102030405060708");
  const auto member = makeScalar("x", NcType::UnsignedLong, c.arraySize);
  base::Buffer destination = bufferOf(std::string(2 * c.byteCount, 'E'));
  EXPECT_EQ(at(*member, c.byteOffset, c.elementIndex).getValue(destination.getData(), c.byteCount),
            c.status);
  EXPECT_EQ(util::BinaryUtils::toString(destination), c.bytes);
}

// clang-format off
const std::vector<GetCase> kGetCases = {
    // name                      array at element bytes status      destination
    {"OneOfTheSameSize",         0,    2, -1, 2,  kExact,     "0304"},
    {"LargerDestination",        0,    2, -1, 4,  kNoFit,     "03040000"},
    {"SmallerDestination",       0,    2, -1, 1,  kNoFit,     "03"},
    {"NoDestination",            0,    2, -1, 0,  kNoAccess,  ""},
    {"AtTheEndOfTheBuffer",      0,    6, -1, 2,  kExact,     "0708"},
    {"PartlyBeyondTheBuffer",    0,    7, -1, 2,  kRange,     "0000"},
    {"RightBehindTheBuffer",     0,    8, -1, 2,  kRange,     "0000"},
    {"FarBehindTheBuffer",       0,    INT32_MAX, -1, 2, kRange, "0000"},
    {"WholeArray",               3,    1, -1, 6,  kExact,     "020304050607"},
    {"WholeArrayLargerArea",     3,    1, -1, 8,  kTruncated, "0203040506070000"},
    {"WholeArraySmallerArea",    3,    1, -1, 4,  kExact,     "02030405"},
    {"WholeArrayBeyondTheBuffer", 3,   4, -1, 6,  kRange,     "000000000000"},
    {"FirstElement",             3,    1, 0,  2,  kExact,     "0203"},
    {"LastElement",              3,    1, 2,  2,  kExact,     "0607"},
    {"LastElementLargerArea",    3,    1, 2,  3,  kNoFit,     "060700"},
    {"ElementBeyondTheBuffer",   4,    1, 3,  2,  kRange,     "0000"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Sizes, GetValue, testing::ValuesIn(kGetCases),
                         [](const auto& info) { return info.param.name; });

struct SetCase {
  std::string name;
  std::uint32_t arraySize;  // of numbers of 2 bytes
  std::int32_t byteOffset;
  std::int32_t elementIndex;
  std::string source;
  AccessStatus status;
  std::string bytes;  // of the buffer, which holds 4 bytes EE before
};

class SetValue : public MemberValueTest, public testing::WithParamInterface<SetCase> {};

TEST_P(SetValue, CopiesTheSmallerOfTheTwoSizesAndAppends) {
  const SetCase& c = GetParam();
  fill("EEEEEEEE");
  const auto member = makeScalar("x", NcType::UnsignedLong, c.arraySize);
  const base::Buffer source = bufferOf(c.source);
  EXPECT_EQ(at(*member, c.byteOffset, c.elementIndex).setValue(source.getData(), source.getSize()),
            c.status);
  EXPECT_EQ(hex(), c.bytes);
}

// clang-format off
const std::vector<SetCase> kSetCases = {
    // name                      array at element source  status   buffer
    {"OneOfTheSameSize",         0,    1, -1, "0102",     kExact,     "EE0102EE"},
    {"LargerSource",             0,    1, -1, "010203",   kNoFit,     "EE0102EE"},
    {"SmallerSource",            0,    1, -1, "01",       kNoFit,     "EE0100EE"},
    {"NoSource",                 0,    1, -1, "",         kNoAccess,  "EEEEEEEE"},
    {"PartlyBeyondTheBuffer",    0,    3, -1, "0102",     kExact,     "EEEEEE0102"},
    {"BehindTheBuffer",          0,    6, -1, "0102",     kExact,     "EEEEEEEE00000102"},
    {"BeyondAnyValue",           0,    INT32_MAX, -1, "0102", kNoAccess, "EEEEEEEE"},
    {"WholeArray",               2,    0, -1, "01020304", kExact,     "01020304"},
    {"WholeArrayCutsTheSource",  2,    0, -1, "0102030405", kTruncated, "01020304"},
    {"WholeArrayFillsUp",        2,    0, -1, "010203",   kExact,     "01020300"},
    {"WholeArrayAppends",        2,    2, -1, "01",       kExact,     "EEEE01000000"},
    {"Element",                  2,    0, 1,  "0102",     kExact,     "EEEE0102"},
    {"ElementAppends",           3,    0, 2,  "0102",     kExact,     "EEEEEEEE0102"},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Sizes, SetValue, testing::ValuesIn(kSetCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(MemberValueTest, PrefersTheBufferOfTheCall) {
  fill("0102");
  base::Buffer other = bufferOf("0A0B");
  const auto member = makeScalar("x");
  std::uint8_t byte = 0;
  EXPECT_EQ(at(*member, 1).getValue(&byte, 1, &other), kExact);
  EXPECT_EQ(byte, 0x0B);
  byte = 0x77;
  EXPECT_EQ(alone(*member, 1).setValue(&byte, 1, &other), kExact);
  EXPECT_EQ(util::BinaryUtils::toString(other), "0A77");
  EXPECT_EQ(hex(), "0102");
}

// --- Numbers ---

TEST_F(MemberValueTest, ReadsAndWritesEachNumberTypeInEachBaseType) {
  struct Row {
    NcType type;
    const char* bytes;  // of 100
  };
  const Row rows[] = {
      {NcType::UnsignedChar, "64"},       {NcType::SignedChar, "64"},
      {NcType::UnsignedShort, "64"},      {NcType::SignedShort, "64"},
      {NcType::UnsignedLong, "0064"},     {NcType::SignedLong, "0064"},
      {NcType::UnsignedQuad, "00000064"}, {NcType::SignedQuad, "00000064"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(ncTypeRow(row.type).name));
    const auto member = makeScalar("x", row.type);
    const MemberValue value = at(*member, 0);
    const auto check = [&](AccessStatus status) {
      EXPECT_EQ(status, kExact);
      EXPECT_EQ(hex(), row.bytes);
      EXPECT_EQ(value.getUInt8(), 100);
      EXPECT_EQ(value.getInt8(), 100);
      EXPECT_EQ(value.getUInt16(), 100);
      EXPECT_EQ(value.getInt16(), 100);
      EXPECT_EQ(value.getUInt32(), 100u);
      EXPECT_EQ(value.getInt32(), 100);
      EXPECT_EQ(value.getFloat(), 100);
      EXPECT_EQ(value.getDouble(), 100);
      _buffer.clear();
    };
    check(value.setUInt8(100));
    check(value.setInt8(100));
    check(value.setUInt16(100));
    check(value.setInt16(100));
    check(value.setUInt32(100));
    check(value.setInt32(100));
    check(value.setFloat(100));
    check(value.setDouble(100));
    check(value.set(-1, std::int64_t{100}));
    check(value.set(-1, std::uint64_t{100}));
  }
}

TEST_F(MemberValueTest, ReadsAndWritesFloatingMembers) {
  const auto single = makeFloat("f");
  EXPECT_EQ(at(*single, 0).setDouble(2.5), kExact);
  EXPECT_EQ(hex(), "40200000");
  EXPECT_EQ(at(*single, 0).getFloat(), 2.5f);
  EXPECT_EQ(at(*single, 0).setDouble(0.1), kNoFit);
  EXPECT_EQ(hex(), "3DCCCCCD");

  const auto wide = makeFloat("d", NcType::Double);
  EXPECT_EQ(at(*wide, 0).setDouble(0.1), kExact);
  EXPECT_EQ(hex(), "3FB999999999999A");
  EXPECT_EQ(at(*wide, 0).getDouble(), 0.1);
  EXPECT_EQ(at(*wide, 0).setInt8(-1), kExact);
  std::int64_t integer = 0;
  EXPECT_EQ(at(*wide, 0).get(-1, integer), kExact);
  EXPECT_EQ(integer, -1);
}

TEST_F(MemberValueTest, UsesTheByteOrderOfItsValue) {
  fill("0102");
  const auto member = makeScalar("x", NcType::UnsignedLong);
  EXPECT_EQ(at(*member, 0).getUInt16(), 258);
  setOrder(Endianess::Little);
  EXPECT_EQ(at(*member, 0).getUInt16(), 513);
  EXPECT_EQ(at(*member, 0).setUInt16(3), kExact);
  EXPECT_EQ(hex(), "0300");
}

TEST_F(MemberValueTest, GivesTheCodesOfTheConversion) {
  const auto member = makeScalar("x", NcType::UnsignedLong);
  fill("012C");
  std::uint8_t narrow = 0;
  EXPECT_EQ(at(*member, 0).get(-1, narrow), kNoFit);
  EXPECT_EQ(narrow, 44);
  fill("8000");
  std::int16_t sign = 0;
  EXPECT_EQ(at(*member, 0).get(-1, sign), kSign);
  EXPECT_EQ(sign, -32768);
  EXPECT_EQ(at(*member, 0).setInt32(-1), kSign);
  EXPECT_EQ(hex(), "FFFF");
  EXPECT_EQ(at(*member, 0).setInt32(65537), kNoFit);
  EXPECT_EQ(hex(), "0001");
}

TEST_F(MemberValueTest, ReadsZeroBeyondTheBuffer) {
  fill("01");
  const auto member = makeScalar("x", NcType::UnsignedLong);
  std::int64_t value = 7;
  EXPECT_EQ(at(*member, 0).get(-1, value), kRange);
  EXPECT_EQ(value, 0);
  const auto bitfield = makeBitfield("b", 2, 3);
  value = 7;
  EXPECT_EQ(at(*bitfield, 1).get(-1, value), kRange);
  EXPECT_EQ(value, 0);
}

TEST_F(MemberValueTest, ReadsAndWritesSingleElements) {
  fill("000100020003");
  const auto array = makeScalar("x", NcType::UnsignedLong, 3);
  std::int32_t value = 0;
  EXPECT_EQ(at(*array, 0).get(2, value), kExact);
  EXPECT_EQ(value, 3);
  EXPECT_EQ(at(*array, 0, 1).get(-1, value), kExact);
  EXPECT_EQ(value, 2);
  EXPECT_EQ(at(*array, 0, 1).get(0, value), kExact);
  EXPECT_EQ(value, 1);
  EXPECT_EQ(at(*array, 0).get(-1, value), kExact);  // of a whole array the first
  EXPECT_EQ(value, 1);
  value = 7;
  EXPECT_EQ(at(*array, 0).get(3, value), kNoAccess);
  EXPECT_EQ(value, 7);

  EXPECT_EQ(at(*array, 0).set(2, 0x0A0B), kExact);
  EXPECT_EQ(at(*array, 0)[1].setInt32(0x0C), kExact);
  EXPECT_EQ(at(*array, 0).set(3, 1), kNoAccess);
  EXPECT_EQ(hex(), "0001000C0A0B");
}

TEST_F(MemberValueTest, TakesAMemberThatIsNoArrayForItsFirstElement) {
  fill("05");
  const auto member = makeScalar("x");
  std::uint8_t value = 0;
  EXPECT_EQ(at(*member, 0).get(0, value), kExact);
  EXPECT_EQ(value, 5);
  EXPECT_EQ(at(*member, 0).get(1, value), kNoAccess);
}

TEST_F(MemberValueTest, TakesAnEnumerationForAnUnsignedByte) {
  fill("FF");
  const auto member = test::makeEnum("e", "colour_t");
  EXPECT_EQ(at(*member, 0).getInt16(), 255);
  EXPECT_EQ(at(*member, 0).setUInt8(254), kExact);
  EXPECT_EQ(at(*member, 0).setInt8(-3), kSign);
  EXPECT_EQ(hex(), "FD");
}

// --- Limits ---

struct RangeCase {
  std::string name;
  std::shared_ptr<Member> member;  // limits 0 to 100, invalid marker 120
  double value;
  std::string bytes;
  Lines warnings;
};

template <typename T>
std::shared_ptr<Member> limited(std::unique_ptr<T> member) {
  member->setMin(0);
  member->setMax(100);
  member->setInvalid(120);
  return member;
}

class WrittenRange : public MemberValueTest, public testing::WithParamInterface<RangeCase> {};

TEST_P(WrittenRange, IsReportedAndWrittenAllTheSame) {
  const RangeCase& c = GetParam();
  test::LogCapture log;
  EXPECT_EQ(at(*c.member, 0).setDouble(c.value), kExact);
  EXPECT_EQ(hex(), c.bytes);
  EXPECT_EQ(log.texts(Logger::Warning), c.warnings);
  EXPECT_EQ(log.lines().size(), c.warnings.size());

  log.clear();
  _manager.showWarnings(false);
  EXPECT_EQ(at(*c.member, 0).setDouble(c.value), kExact);
  EXPECT_TRUE(log.lines().empty());
}

// clang-format off
const std::vector<RangeCase> kRangeCases = {
    {"ScalarWithin",    limited(makeScalar("x", NcType::SignedLong)), 100, "0064", {}},
    {"ScalarInvalid",   limited(makeScalar("x", NcType::SignedLong)), 120, "0078", {}},
    {"ScalarAbove",     limited(makeScalar("x", NcType::SignedLong)), 101, "0065",
     {"[korvat] value out of range for _sample.some.x: [101.000000][101]\n"}},
    {"ScalarBelow",     limited(makeScalar("x", NcType::SignedLong)), -1, "FFFF",
     {"[korvat] value out of range for _sample.some.x: [-1.000000][-1]\n"}},
    {"QuadAbove",       limited(makeScalar("x", NcType::UnsignedQuad)), 4294967295.0, "FFFFFFFF",
     {"[korvat] value out of range for _sample.some.x: [4294967295.000000][4294967295]\n"}},
    {"FloatWithin",     limited(makeFloat("f")), 99.5, "42C70000", {}},
    {"FloatAbove",      limited(makeFloat("f")), 100.5, "42C90000",
     {"[korvat] value out of range for _sample.some.f: [100.500000][100]\n"}},
    {"DoubleBelow",     limited(makeFloat("f", NcType::Double)), -0.5, "BFE0000000000000",
     {"[korvat] value out of range for _sample.some.f: [-0.500000][0]\n"}},
    {"BitfieldWithin",  limited(makeBitfield("b", 0, 8)), 100, "64", {}},
    {"BitfieldInvalid", limited(makeBitfield("b", 0, 8)), 120, "78", {}},
    {"BitfieldAbove",   limited(makeBitfield("b", 0, 8)), 101, "65",
     {"[korvat] value out of range for _sample.some.b: [101.000000][101]\n"}},
    {"BitfieldBelow",   limited(makeBitfield("b", 0, 8, true)), -1, "FF",
     {"[korvat] value out of range for _sample.some.b: [-1.000000][-1]\n"}},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Members, WrittenRange, testing::ValuesIn(kRangeCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(MemberValueTest, ChecksANumberInTheMembersOwnType) {
  const auto scalar = limited(makeScalar("x"));
  EXPECT_TRUE(at(*scalar, 0).isInRange(100, 1000));
  EXPECT_FALSE(at(*scalar, 0).isInRange(101, 50));
  const auto floating = limited(makeFloat("f"));
  EXPECT_TRUE(at(*floating, 0).isInRange(1000, 100));
  EXPECT_FALSE(at(*floating, 0).isInRange(50, 100.5));
  const auto bitfield = limited(makeBitfield("b", 0, 8));
  EXPECT_TRUE(at(*bitfield, 0).isInRange(120, 1000));
  EXPECT_FALSE(at(*bitfield, 0).isInRange(-1, 50));
  EXPECT_TRUE(at(*test::makeEnum("e", "colour_t"), 0).isInRange(-1000, 1e300));
  EXPECT_TRUE(at(*test::makeStruct("s"), 0).isInRange(-1000, 1e300));
}

TEST_F(MemberValueTest, RaisesATextForARangeWithoutAMember) {
  try {
    static_cast<void>(MemberValue().isInRange(0, 0));
    FAIL() << "no exception";
  } catch (const char* text) {
    EXPECT_STREQ(text, "no member def");
  }
}

// --- Bit fields ---

TEST_F(MemberValueTest, ReplacesOnlyTheBitsOfABitField) {
  fill("B4");
  const auto member = makeBitfield("b", 2, 3);
  const MemberValue value = at(*member, 0);
  EXPECT_EQ(value.getBitfield(), 6);
  EXPECT_EQ(value.setBitfield(9), kRange);
  EXPECT_EQ(value.setBitfield(-1), kRange);
  EXPECT_EQ(value.setBitfield(200), kRange);
  EXPECT_EQ(hex(), "B4");
  EXPECT_EQ(value.setBitfield(5), kExact);
  EXPECT_EQ(hex(), "AC");  // 10'101'100
  EXPECT_EQ(value.getBitfield(), 5);
}

TEST_F(MemberValueTest, TakesTheValuesOfASignedBitField) {
  fill("00");
  const auto member = makeBitfield("b", 2, 3, true);
  EXPECT_EQ(at(*member, 0).setBitfield(4), kRange);
  EXPECT_EQ(at(*member, 0).setBitfield(-5), kRange);
  EXPECT_EQ(hex(), "00");
  EXPECT_EQ(at(*member, 0).setBitfield(-4), kExact);
  EXPECT_EQ(hex(), "20");                      // 00'100'000
  EXPECT_EQ(at(*member, 0).getBitfield(), 4);  // its bits, without the sign
  EXPECT_EQ(at(*member, 0).getInt32(), 4);
}

TEST_F(MemberValueTest, ReadsAndWritesTheBitsOfABitFieldAsANumber) {
  fill("B4");
  const auto member = makeBitfield("b", 2, 3);
  EXPECT_EQ(at(*member, 0).getUInt8(), 6);
  EXPECT_EQ(at(*member, 0).getDouble(), 6);
  EXPECT_EQ(at(*member, 0).setInt32(0), kExact);
  EXPECT_EQ(hex(), "84");
  EXPECT_EQ(at(*member, 0).setDouble(7), kExact);
  EXPECT_EQ(hex(), "BC");
}

TEST_F(MemberValueTest, RefusesNumbersThatABitFieldCannotHold) {
  fill("B4");
  const auto member = makeBitfield("b", 2, 3);
  const MemberValue value = at(*member, 0);
  EXPECT_EQ(value.setInt32(8), kRange);
  EXPECT_EQ(value.setInt8(-1), kRange);
  EXPECT_EQ(value.setDouble(2.5), kRange);
  EXPECT_EQ(value.setDouble(std::numeric_limits<double>::quiet_NaN()), kRange);
  EXPECT_EQ(value.setUInt32(0xFFFFFFFF), kRange);
  EXPECT_EQ(value.set(-1, std::int64_t{1} << 40), kRange);
  EXPECT_EQ(value.set(-1, std::uint64_t{1} << 63), kRange);
  EXPECT_EQ(hex(), "B4");
}

TEST_F(MemberValueTest, NeedsAWidthAndASingleElementForABitField) {
  fill("B4B4");
  EXPECT_EQ(at(*makeBitfield("b", 2, 0), 0).setBitfield(0), kNoAccess);
  EXPECT_EQ(at(*makeBitfield("b", 2, 0), 0).getBitfield(), 0);
  EXPECT_EQ(at(*makeBitfield("b", 6, 3), 0).setBitfield(0), kNoAccess);
  EXPECT_EQ(at(*makeScalar("x"), 0).setBitfield(0), kNoAccess);
  EXPECT_EQ(at(*makeScalar("x"), 0).getBitfield(), 0);
  const auto array = makeBitfield("b", 2, 6, false, 2);
  EXPECT_EQ(at(*array, 0).setBitfield(0), kNoAccess);
  EXPECT_EQ(hex(), "B4B4");
  EXPECT_EQ(at(*array, 0, 1).setBitfield(1), kExact);
  EXPECT_EQ(hex(), "B481");
  EXPECT_EQ(at(*array, 0).getBitfield(), 0x34);  // of a whole array the first
  EXPECT_EQ(at(*array, 0, 1).getBitfield(), 1);
}

TEST_F(MemberValueTest, PlacesTheElementsOfABitFieldWhereAWalkVisitsThem) {
  fill("1F2F3F");
  const auto bytes = makeBitfield("b", 4, 4, false, 3);
  EXPECT_EQ(at(*bytes, 0, 2).setBitfield(0), kExact);
  EXPECT_EQ(hex(), "1F2F30");

  // A walk stays in the byte of a field that does not end it.
  const auto narrow = makeBitfield("n", 0, 4, false, 3);
  EXPECT_EQ(at(*narrow, 0, 2).getBitfield(), 1);
  EXPECT_EQ(at(*narrow, 0, 2).setBitfield(7), kExact);
  EXPECT_EQ(hex(), "7F2F30");
  EXPECT_EQ(test::recordWalk(*narrow),
            (Lines{"n(array) @0 d0", "n[0] @0 d1", "n[1] @0 d1", "n[2] @0 d1"}));
}

TEST_F(MemberValueTest, AppendsTheByteOfABitFieldBehindTheBuffer) {
  const auto member = makeBitfield("b", 2, 3);
  EXPECT_EQ(at(*member, 1).getBitfield(), 0);
  EXPECT_EQ(at(*member, 1).setBitfield(9), kRange);
  EXPECT_EQ(hex(), "");
  EXPECT_EQ(at(*member, 1).setBitfield(7), kExact);
  EXPECT_EQ(hex(), "0038");
}

TEST_F(MemberValueTest, ReadsAndWritesABitFieldInTheBufferOfTheCall) {
  base::Buffer other = bufferOf("FF");
  const auto member = makeBitfield("b", 2, 3);
  EXPECT_EQ(alone(*member, 0).setBitfield(2, &other), kExact);
  EXPECT_EQ(util::BinaryUtils::toString(other), "D7");  // 11'010'111
  EXPECT_EQ(alone(*member, 0).getBitfield(&other), 2);
}

// --- Text ---

TEST_F(MemberValueTest, ReadsATextInEachEncodingAndByteOrder) {
  const auto bytes = makeScalar("t", NcType::UnsignedChar, 6);
  fill("61C3A90062FF");
  EXPECT_EQ(at(*bytes, 0).getText(CharEncoding::Utf8), "a\u00E9");
  EXPECT_EQ(at(*bytes, 0).getText(CharEncoding::Iso8859_1), "a\u00C3\u00A9");

  const auto words = makeScalar("t", NcType::UnsignedLong, 3);
  fill("006120AC0000");
  EXPECT_EQ(at(*words, 0).getText(CharEncoding::Utf16), "a\u20AC");
  fill("6100AC200000");
  setOrder(Endianess::Little);
  EXPECT_EQ(at(*words, 0).getText(CharEncoding::Utf16), "a\u20AC");

  const auto quads = makeScalar("t", NcType::UnsignedQuad, 2);
  fill("00F6010000000000");
  EXPECT_EQ(at(*quads, 0).getText(CharEncoding::Utf32), "\U0001F600");
}

TEST_F(MemberValueTest, WritesATextInEachEncodingAndByteOrder) {
  const auto bytes = makeScalar("t", NcType::UnsignedChar, 4);
  fill("FFFFFFFFFF");
  EXPECT_EQ(at(*bytes, 0).setText("a\u00E9", CharEncoding::Utf8), kExact);
  EXPECT_EQ(hex(), "61C3A900FF");
  EXPECT_EQ(at(*bytes, 0).setText("a\u00E9", CharEncoding::Iso8859_1), kExact);
  EXPECT_EQ(hex(), "61E90000FF");

  const auto words = makeScalar("t", NcType::UnsignedLong, 3);
  EXPECT_EQ(at(*words, 0).setText("a\u20AC", CharEncoding::Utf16), kExact);
  EXPECT_EQ(hex(), "006120AC0000");
  setOrder(Endianess::Little);
  EXPECT_EQ(at(*words, 0).setText("a\u20AC", CharEncoding::Utf16), kExact);
  EXPECT_EQ(hex(), "6100AC200000");
}

TEST_F(MemberValueTest, TellsThatATextWasCut) {
  const auto bytes = makeScalar("t", NcType::UnsignedChar, 3);
  EXPECT_EQ(at(*bytes, 0).setText("abcd", CharEncoding::Iso8859_1), kTruncated);
  EXPECT_EQ(hex(), "616263");
  EXPECT_EQ(at(*bytes, 0).getText(CharEncoding::Iso8859_1), "abc");
  EXPECT_EQ(at(*bytes, 0).setText("ab\u20AC", CharEncoding::Utf8), kTruncated);
  EXPECT_EQ(hex(), "616200");
  EXPECT_EQ(at(*bytes, 0).setText("", CharEncoding::Utf8), kExact);
  EXPECT_EQ(hex(), "000000");
}

TEST_F(MemberValueTest, ReadsAndWritesASingleCharacter) {
  const auto bytes = makeScalar("t", NcType::UnsignedChar, 3);
  fill("616263");
  EXPECT_EQ(at(*bytes, 0, 1).getText(CharEncoding::Utf8), "b");
  EXPECT_EQ(at(*bytes, 0, 1).setText("xy", CharEncoding::Utf8), kTruncated);
  EXPECT_EQ(hex(), "617863");
}

TEST_F(MemberValueTest, HasATextInMembersOfIntegersOnly) {
  fill("61616161616161616161");
  EXPECT_EQ(at(*makeFloat("f"), 0).getText(CharEncoding::Utf8), "");
  EXPECT_EQ(at(*makeFloat("f"), 0).setText("b", CharEncoding::Utf8), kNoAccess);
  EXPECT_EQ(at(*makeBitfield("b", 0, 8), 0).getText(CharEncoding::Utf8), "");
  EXPECT_EQ(at(*test::makeStruct("s"), 0).setText("b", CharEncoding::Utf8), kNoAccess);
  EXPECT_EQ(hex(), "61616161616161616161");
}

TEST_F(MemberValueTest, HasNoTextBeyondTheBuffer) {
  fill("616263");
  const auto bytes = makeScalar("t", NcType::UnsignedChar, 4);
  EXPECT_EQ(at(*bytes, 0).getText(CharEncoding::Utf8), "");
}

// --- Hexadecimal text ---

TEST_F(MemberValueTest, ShowsTheBytesOfAnArray) {
  fill("EE01ABFFEE");
  const auto bytes = makeScalar("h", NcType::SignedChar, 3);
  EXPECT_EQ(at(*bytes, 1).getRawHex(), "01ABFF");
  EXPECT_EQ(at(*bytes, 1).getRawHex(-5), "01ABFF");
  EXPECT_EQ(at(*bytes, 1).getRawHex(2), "01AB");
  EXPECT_EQ(at(*bytes, 1).getRawHex(0), "");
  EXPECT_EQ(at(*bytes, 1).getRawHex(4), "01ABFF");
  EXPECT_EQ(at(*bytes, 1, 2).getRawHex(), "01ABFF");
}

TEST_F(MemberValueTest, ShowsTheFirstBytesOfAnArrayThatTheBufferCuts) {
  fill("EE01AB");
  const auto bytes = makeScalar("h", NcType::SignedChar, 3);
  EXPECT_EQ(at(*bytes, 1).getRawHex(2), "01AB");
  EXPECT_EQ(at(*bytes, 1).getRawHex(3), "");
  EXPECT_EQ(at(*bytes, 1).getRawHex(), "");
}

struct HexCase {
  std::string name;
  std::string text;
  std::string bytes;  // of the buffer, which holds 5 bytes EE before; the array is in the middle
};

class SetRawHex : public MemberValueTest, public testing::WithParamInterface<HexCase> {};

TEST_P(SetRawHex, CutsOrPadsToTheArray) {
  fill("EEEEEEEEEE");
  const auto bytes = makeScalar("h", NcType::UnsignedShort, 3);
  EXPECT_EQ(at(*bytes, 1).setRawHex(GetParam().text), kExact);
  EXPECT_EQ(hex(), GetParam().bytes);
}

const std::vector<HexCase> kHexCases = {
    {"AllBytes", "0102AB", "EE0102ABEE"},     {"LowerCase", "0102ab", "EE0102ABEE"},
    {"WithBlanks", "01 02 03", "EE010203EE"}, {"Shorter", "01", "EE010000EE"},
    {"Longer", "0102030405", "EE010203EE"},   {"Empty", "", "EE000000EE"},
    {"OddDigit", "010", "EE010000EE"},        {"NoDigit", "01x2", "EE010000EE"},
};
INSTANTIATE_TEST_SUITE_P(Texts, SetRawHex, testing::ValuesIn(kHexCases),
                         [](const auto& info) { return info.param.name; });

TEST_F(MemberValueTest, AppendsTheBytesOfAnHexadecimalText) {
  const auto bytes = makeScalar("h", NcType::UnsignedShort, 2);
  EXPECT_EQ(at(*bytes, 1).setRawHex("0102"), kExact);
  EXPECT_EQ(hex(), "000102");
}

struct NoHexCase {
  std::string name;
  std::shared_ptr<Member> member;
  std::string size;
};

class NoRawHex : public MemberValueTest, public testing::WithParamInterface<NoHexCase> {};

TEST_P(NoRawHex, IsThereForAMemberThatIsNoArrayOfBytes) {
  fill("0102030405060708");
  test::LogCapture log;
  EXPECT_EQ(at(*GetParam().member, 0).getRawHex(), "");
  EXPECT_EQ(log.texts(Logger::Debug), Lines{"[MemberValue::getRawHex] invalid type size " +
                                            GetParam().size + ": _sample.some.x\n"});
  EXPECT_EQ(log.lines().size(), 1u);

  log.clear();
  EXPECT_EQ(at(*GetParam().member, 0).setRawHex("0A"), kNoAccess);
  EXPECT_EQ(log.texts(Logger::Debug), Lines{"[MemberValue::setRawHex] invalid type size " +
                                            GetParam().size + ": _sample.some.x\n"});
  EXPECT_EQ(hex(), "0102030405060708");
}

const std::vector<NoHexCase> kNoHexCases = {
    {"ArrayOfWords", makeScalar("x", NcType::UnsignedLong, 2), "2"},
    {"ArrayOfFloats", makeFloat("x", NcType::Float, 2), "4"},
    {"ArrayWithoutABaseType", makeScalar("x", NcType::None, 2), "0"},
    {"SingleByte", makeScalar("x"), "1"},
    {"Structure", test::makeStruct("x"), "0"},
};
INSTANTIATE_TEST_SUITE_P(Members, NoRawHex, testing::ValuesIn(kNoHexCases),
                         [](const auto& info) { return info.param.name; });

}  // namespace
}  // namespace zavri::korvat
