#include "korvat/members/RawCodec.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <type_traits>
#include <vector>

#include "korvat/base/BinaryUtils.h"

namespace zavri::korvat {
namespace {

using base::Endianess;

constexpr AccessStatus kExact = AccessStatus::Exact;
constexpr AccessStatus kRange = AccessStatus::OutOfRange;
constexpr AccessStatus kNoFit = AccessStatus::DoesNotFit;
constexpr AccessStatus kSign = AccessStatus::SignChange;
constexpr AccessStatus kNoAccess = AccessStatus::NotAccessible;

constexpr NcType kU8 = NcType::UnsignedChar;  // rows of U8 and S8 run for "short" too
constexpr NcType kS8 = NcType::SignedChar;
constexpr NcType kU16 = NcType::UnsignedLong;
constexpr NcType kS16 = NcType::SignedLong;
constexpr NcType kU32 = NcType::UnsignedQuad;
constexpr NcType kS32 = NcType::SignedQuad;
constexpr NcType kF32 = NcType::Float;
constexpr NcType kF64 = NcType::Double;

const std::vector<NcType> kConvertible = {
    NcType::UnsignedChar, NcType::SignedChar, NcType::UnsignedShort, NcType::SignedShort,
    NcType::UnsignedLong, NcType::SignedLong, NcType::UnsignedQuad,  NcType::SignedQuad,
    NcType::Float,        NcType::Double,
};

// Number type on the caller's side of an access.
enum class Number { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float, Double };

const char* nameOf(Number number) {
  constexpr const char* kNames[] = {"Int8",   "UInt8", "Int16",  "UInt16", "Int32",
                                    "UInt32", "Int64", "UInt64", "Float",  "Double"};
  return kNames[static_cast<int>(number)];
}

std::string nameOf(NcType type) {
  std::string name(ncTypeRow(type).name);
  name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
  name.erase(std::remove(name.begin(), name.end(), '_'), name.end());
  return name;
}

std::vector<std::uint8_t> bytesOf(const std::string& hex) {
  base::Buffer buffer;
  util::BinaryUtils::stringToBuffer(buffer, hex, 0);
  return {buffer.getData(), buffer.getData() + buffer.getSize()};
}

std::vector<std::uint8_t> reversed(std::vector<std::uint8_t> bytes) {
  std::reverse(bytes.begin(), bytes.end());
  return bytes;
}

// The types that a row stands for.
std::vector<NcType> typesOf(NcType type) {
  if (type == kU8) return {NcType::UnsignedChar, NcType::UnsignedShort};
  if (type == kS8) return {NcType::SignedChar, NcType::SignedShort};
  return {type};
}

// --- Reading ---

struct ReadCase {
  Number number;
  NcType type;
  std::string bytes;  // hexadecimal, big-endian
  double value;       // all expected values are numbers that a double holds
  AccessStatus status;
};

std::string nameOfRead(const testing::TestParamInfo<ReadCase>& info) {
  return std::string(nameOf(info.param.number)) + "From" + nameOf(info.param.type) +
         info.param.bytes;
}

template <typename T>
void checkRead(const ReadCase& c) {
  for (const NcType type : typesOf(c.type)) {
    const std::vector<std::uint8_t> big = bytesOf(c.bytes);
    ASSERT_EQ(big.size(), ncTypeSize(type));
    T value{77};
    EXPECT_EQ(readField(type, big.data(), Endianess::Big, value), c.status);
    EXPECT_EQ(static_cast<double>(value), c.value);

    const std::vector<std::uint8_t> little = reversed(big);
    value = T{77};
    EXPECT_EQ(readField(type, little.data(), Endianess::Little, value), c.status);
    EXPECT_EQ(static_cast<double>(value), c.value);
  }
}

class ReadField : public testing::TestWithParam<ReadCase> {};

TEST_P(ReadField, GivesTheValueAndTheCodeInBothByteOrders) {
  switch (GetParam().number) {
    case Number::Int8:
      return checkRead<std::int8_t>(GetParam());
    case Number::UInt8:
      return checkRead<std::uint8_t>(GetParam());
    case Number::Int16:
      return checkRead<std::int16_t>(GetParam());
    case Number::UInt16:
      return checkRead<std::uint16_t>(GetParam());
    case Number::Int32:
      return checkRead<std::int32_t>(GetParam());
    case Number::UInt32:
      return checkRead<std::uint32_t>(GetParam());
    case Number::Int64:
      return checkRead<std::int64_t>(GetParam());
    case Number::Float:
      return checkRead<float>(GetParam());
    case Number::Double:
      return checkRead<double>(GetParam());
    case Number::UInt64:
      FAIL() << "no field is read as an unsigned number of 64 bits";
  }
}

// clang-format off
const std::vector<ReadCase> kReadInt8 = {
    {Number::Int8, kU8,  "00",               0,    kExact},
    {Number::Int8, kU8,  "7F",               127,  kExact},
    {Number::Int8, kU8,  "80",               -128, kSign},
    {Number::Int8, kU8,  "FF",               -1,   kSign},
    {Number::Int8, kS8,  "7F",               127,  kExact},
    {Number::Int8, kS8,  "80",               -128, kExact},
    {Number::Int8, kS8,  "FF",               -1,   kExact},
    {Number::Int8, kU16, "007F",             127,  kExact},
    {Number::Int8, kU16, "0080",             -128, kNoFit},
    {Number::Int8, kU16, "012C",             44,   kNoFit},
    {Number::Int8, kU16, "FF7F",             127,  kNoFit},
    {Number::Int8, kU16, "FF80",             -128, kSign},
    {Number::Int8, kU16, "FFFF",             -1,   kSign},
    {Number::Int8, kS16, "007F",             127,  kExact},
    {Number::Int8, kS16, "0080",             -128, kNoFit},
    {Number::Int8, kS16, "012C",             44,   kNoFit},
    {Number::Int8, kS16, "FF80",             -128, kExact},
    {Number::Int8, kS16, "FF7F",             127,  kNoFit},
    {Number::Int8, kS16, "FFFF",             -1,   kExact},
    {Number::Int8, kU32, "0000007F",         127,  kExact},
    {Number::Int8, kU32, "00000080",         -128, kNoFit},
    {Number::Int8, kU32, "00010000",         0,    kNoFit},
    {Number::Int8, kU32, "FFFFFF80",         -128, kSign},
    {Number::Int8, kU32, "FFFFFFFF",         -1,   kSign},
    {Number::Int8, kS32, "0000007F",         127,  kExact},
    {Number::Int8, kS32, "00000080",         -128, kNoFit},
    {Number::Int8, kS32, "FFFFFF80",         -128, kExact},
    {Number::Int8, kS32, "80000000",         0,    kNoFit},
    {Number::Int8, kF32, "40000000",         2,    kExact},
    {Number::Int8, kF32, "40200000",         2,    kNoFit},  // 2.5
    {Number::Int8, kF32, "BFC00000",         -1,   kNoFit},  // -1.5
    {Number::Int8, kF32, "42FE0000",         127,  kExact},
    {Number::Int8, kF32, "43000000",         127,  kNoFit},  // 128
    {Number::Int8, kF32, "C3000000",         -128, kExact},
    {Number::Int8, kF32, "C3010000",         -128, kNoFit},  // -129
    {Number::Int8, kF32, "7FC00000",         0,    kNoFit},  // NaN
    {Number::Int8, kF32, "7F800000",         127,  kNoFit},  // infinity
    {Number::Int8, kF32, "FF800000",         -128, kNoFit},
    {Number::Int8, kF64, "4000000000000000", 2,    kExact},
    {Number::Int8, kF64, "4004000000000000", 2,    kNoFit},
    {Number::Int8, kF64, "BFF8000000000000", -1,   kNoFit},
    {Number::Int8, kF64, "4060000000000000", 127,  kNoFit},
    {Number::Int8, kF64, "C060000000000000", -128, kExact},
    {Number::Int8, kF64, "C060200000000000", -128, kNoFit},
    {Number::Int8, kF64, "7FF8000000000000", 0,    kNoFit},
};
const std::vector<ReadCase> kReadUInt8 = {
    {Number::UInt8, kU8,  "00",               0,   kExact},
    {Number::UInt8, kU8,  "80",               128, kExact},
    {Number::UInt8, kU8,  "FF",               255, kExact},
    {Number::UInt8, kS8,  "7F",               127, kExact},
    {Number::UInt8, kS8,  "80",               128, kSign},
    {Number::UInt8, kS8,  "FF",               255, kSign},
    {Number::UInt8, kU16, "00FF",             255, kExact},
    {Number::UInt8, kU16, "012C",             44,  kNoFit},
    {Number::UInt8, kU16, "FFFF",             255, kNoFit},
    {Number::UInt8, kS16, "00FF",             255, kExact},
    {Number::UInt8, kS16, "0100",             0,   kNoFit},
    {Number::UInt8, kS16, "FFFF",             255, kSign},
    {Number::UInt8, kS16, "8000",             0,   kSign},
    {Number::UInt8, kU32, "000000FF",         255, kExact},
    {Number::UInt8, kU32, "0001022A",         42,  kNoFit},
    {Number::UInt8, kU32, "FFFFFFFF",         255, kNoFit},
    {Number::UInt8, kS32, "000000FF",         255, kExact},
    {Number::UInt8, kS32, "00000100",         0,   kNoFit},
    {Number::UInt8, kS32, "FFFFFFFE",         254, kSign},
    {Number::UInt8, kS32, "80000000",         0,   kSign},
    {Number::UInt8, kF32, "437F0000",         255, kExact},
    {Number::UInt8, kF32, "40200000",         2,   kNoFit},  // 2.5
    {Number::UInt8, kF32, "43800000",         255, kNoFit},  // 256
    {Number::UInt8, kF32, "BF800000",         0,   kNoFit},  // -1
    {Number::UInt8, kF32, "BF000000",         0,   kNoFit},  // -0.5
    {Number::UInt8, kF32, "80000000",         0,   kExact},  // -0
    {Number::UInt8, kF32, "7FC00000",         0,   kNoFit},
    {Number::UInt8, kF64, "406FE00000000000", 255, kExact},
    {Number::UInt8, kF64, "4070000000000000", 255, kNoFit},
    {Number::UInt8, kF64, "4004000000000000", 2,   kNoFit},
    {Number::UInt8, kF64, "BFF0000000000000", 0,   kNoFit},
    {Number::UInt8, kF64, "7FF8000000000000", 0,   kNoFit},
};
const std::vector<ReadCase> kReadInt16 = {
    {Number::Int16, kU8,  "FF",               255,    kExact},
    {Number::Int16, kS8,  "FF",               -1,     kExact},
    {Number::Int16, kS8,  "80",               -128,   kExact},
    {Number::Int16, kU16, "0102",             258,    kExact},
    {Number::Int16, kU16, "7FFF",             32767,  kExact},
    {Number::Int16, kU16, "8000",             -32768, kSign},
    {Number::Int16, kU16, "FFFF",             -1,     kSign},
    {Number::Int16, kS16, "8000",             -32768, kExact},
    {Number::Int16, kS16, "FFFE",             -2,     kExact},
    {Number::Int16, kU32, "00007FFF",         32767,  kExact},
    {Number::Int16, kU32, "00008000",         -32768, kNoFit},
    {Number::Int16, kU32, "00010002",         2,      kNoFit},
    {Number::Int16, kU32, "FFFF8000",         -32768, kSign},
    {Number::Int16, kU32, "FFFF7FFF",         32767,  kNoFit},
    {Number::Int16, kS32, "00007FFF",         32767,  kExact},
    {Number::Int16, kS32, "FFFF8000",         -32768, kExact},
    {Number::Int16, kS32, "00008000",         -32768, kNoFit},
    {Number::Int16, kS32, "FFFF7FFF",         32767,  kNoFit},
    {Number::Int16, kF32, "46FFFE00",         32767,  kExact},
    {Number::Int16, kF32, "47000000",         32767,  kNoFit},  // 32768
    {Number::Int16, kF32, "C7000000",         -32768, kExact},
    {Number::Int16, kF32, "C7000100",         -32768, kNoFit},  // -32769
    {Number::Int16, kF32, "BFC00000",         -1,     kNoFit},
    {Number::Int16, kF32, "7FC00000",         0,      kNoFit},
    {Number::Int16, kF64, "40DFFFC000000000", 32767,  kExact},
    {Number::Int16, kF64, "40E0000000000000", 32767,  kNoFit},
    {Number::Int16, kF64, "C0E0000000000000", -32768, kExact},
    {Number::Int16, kF64, "C0E0002000000000", -32768, kNoFit},
    {Number::Int16, kF64, "3FB999999999999A", 0,      kNoFit},  // 0.1
};
const std::vector<ReadCase> kReadUInt16 = {
    {Number::UInt16, kU8,  "FF",               255,   kExact},
    {Number::UInt16, kS8,  "7F",               127,   kExact},
    {Number::UInt16, kS8,  "FF",               65535, kSign},
    {Number::UInt16, kS8,  "80",               65408, kSign},
    {Number::UInt16, kU16, "FFFF",             65535, kExact},
    {Number::UInt16, kU16, "0102",             258,   kExact},
    {Number::UInt16, kS16, "7FFF",             32767, kExact},
    {Number::UInt16, kS16, "8000",             32768, kSign},
    {Number::UInt16, kS16, "FFFF",             65535, kSign},
    {Number::UInt16, kU32, "0000FFFF",         65535, kExact},
    {Number::UInt16, kU32, "00010000",         0,     kNoFit},
    {Number::UInt16, kU32, "FFFFFFFF",         65535, kNoFit},
    {Number::UInt16, kS32, "0000FFFF",         65535, kExact},
    {Number::UInt16, kS32, "00010001",         1,     kNoFit},
    {Number::UInt16, kS32, "FFFFFFFF",         65535, kSign},
    {Number::UInt16, kF32, "477FFF00",         65535, kExact},
    {Number::UInt16, kF32, "47800000",         65535, kNoFit},  // 65536
    {Number::UInt16, kF32, "BF800000",         0,     kNoFit},
    {Number::UInt16, kF64, "40EFFFE000000000", 65535, kExact},
    {Number::UInt16, kF64, "40F0000000000000", 65535, kNoFit},
    {Number::UInt16, kF64, "4004000000000000", 2,     kNoFit},
    {Number::UInt16, kF64, "7FF8000000000000", 0,     kNoFit},
};
const std::vector<ReadCase> kReadInt32 = {
    {Number::Int32, kU8,  "FF",               255,           kExact},
    {Number::Int32, kS8,  "FF",               -1,            kExact},
    {Number::Int32, kU16, "FFFF",             65535,         kExact},
    {Number::Int32, kS16, "FFFF",             -1,            kExact},
    {Number::Int32, kU32, "7FFFFFFF",         2147483647,    kExact},
    {Number::Int32, kU32, "80000000",         -2147483648.0, kSign},
    {Number::Int32, kU32, "FFFFFFFF",         -1,            kSign},
    {Number::Int32, kS32, "80000000",         -2147483648.0, kExact},
    {Number::Int32, kS32, "01020304",         16909060,      kExact},
    {Number::Int32, kF32, "4EFFFFFF",         2147483520,    kExact},
    {Number::Int32, kF32, "4F000000",         2147483647,    kNoFit},  // 2147483648
    {Number::Int32, kF32, "CF000000",         -2147483648.0, kExact},
    {Number::Int32, kF32, "40200000",         2,             kNoFit},
    {Number::Int32, kF64, "41DFFFFFFFC00000", 2147483647,    kExact},
    {Number::Int32, kF64, "41E0000000000000", 2147483647,    kNoFit},  // 2147483648
    {Number::Int32, kF64, "C1E0000000200000", -2147483648.0, kNoFit},  // -2147483649
    {Number::Int32, kF64, "7FF0000000000000", 2147483647,    kNoFit},  // infinity
    {Number::Int32, kF64, "FFF0000000000000", -2147483648.0, kNoFit},
};
const std::vector<ReadCase> kReadUInt32 = {
    {Number::UInt32, kU8,  "FF",               255,          kExact},
    {Number::UInt32, kS8,  "7F",               127,          kExact},
    {Number::UInt32, kS8,  "FF",               4294967295.0, kSign},
    {Number::UInt32, kU16, "FFFF",             65535,        kExact},
    {Number::UInt32, kS16, "7FFF",             32767,        kExact},
    {Number::UInt32, kS16, "8000",             4294934528.0, kSign},
    {Number::UInt32, kU32, "FFFFFFFF",         4294967295.0, kExact},
    {Number::UInt32, kS32, "7FFFFFFF",         2147483647,   kExact},
    {Number::UInt32, kS32, "80000000",         2147483648.0, kSign},
    {Number::UInt32, kS32, "FFFFFFFF",         4294967295.0, kSign},
    {Number::UInt32, kF32, "4F7FFFFF",         4294967040.0, kExact},
    {Number::UInt32, kF32, "4F800000",         4294967295.0, kNoFit},  // 4294967296
    {Number::UInt32, kF32, "BF800000",         0,            kNoFit},
    {Number::UInt32, kF64, "41EFFFFFFFE00000", 4294967295.0, kExact},
    {Number::UInt32, kF64, "41F0000000000000", 4294967295.0, kNoFit},
    {Number::UInt32, kF64, "BFF0000000000000", 0,            kNoFit},
    {Number::UInt32, kF64, "3FB999999999999A", 0,            kNoFit},
};
const std::vector<ReadCase> kReadInt64 = {
    {Number::Int64, kU8,  "FF",               255,                   kExact},
    {Number::Int64, kS8,  "80",               -128,                  kExact},
    {Number::Int64, kU16, "FFFF",             65535,                 kExact},
    {Number::Int64, kS16, "8000",             -32768,                kExact},
    {Number::Int64, kU32, "FFFFFFFF",         4294967295.0,          kExact},
    {Number::Int64, kS32, "80000000",         -2147483648.0,         kExact},
    {Number::Int64, kF32, "501502F9",         1e10,                  kExact},
    {Number::Int64, kF32, "40200000",         2,                     kNoFit},
    {Number::Int64, kF32, "5EFFFFFF",         9223371487098961920.0, kExact},
    {Number::Int64, kF32, "DF000000",         -0x1p63,               kExact},
    {Number::Int64, kF32, "7FC00000",         0,                     kNoFit},
    {Number::Int64, kF64, "4202A05F20000000", 1e10,                  kExact},
    {Number::Int64, kF64, "BFF8000000000000", -1,                    kNoFit},
    {Number::Int64, kF64, "43DFFFFFFFFFFFFF", 9223372036854774784.0, kExact},
    {Number::Int64, kF64, "C3E0000000000000", -0x1p63,               kExact},
    {Number::Int64, kF64, "FFF0000000000000", -0x1p63,               kNoFit},
};
const std::vector<ReadCase> kReadFloat = {
    {Number::Float, kU8,  "FF",               255,           kExact},
    {Number::Float, kS8,  "80",               -128,          kExact},
    {Number::Float, kU16, "FFFF",             65535,         kExact},
    {Number::Float, kS16, "8000",             -32768,        kExact},
    {Number::Float, kU32, "01000000",         16777216,      kExact},
    {Number::Float, kU32, "01000001",         16777216,      kNoFit},
    {Number::Float, kU32, "FFFFFFFF",         4294967296.0,  kNoFit},
    {Number::Float, kS32, "80000000",         -2147483648.0, kExact},
    {Number::Float, kS32, "7FFFFFFF",         2147483648.0,  kNoFit},
    {Number::Float, kF32, "40200000",         2.5,           kExact},
    {Number::Float, kF64, "4004000000000000", 2.5,           kExact},
    {Number::Float, kF64, "4170000010000000", 16777216,      kNoFit},  // 16777217
    {Number::Float, kF64, "7E37E43C8800759C", 0x1.fffffep127, kNoFit},  // 1e300
    {Number::Float, kF64, "FE37E43C8800759C", -0x1.fffffep127, kNoFit},
    {Number::Float, kF64, "01A56E1FC2F8F359", 0,             kNoFit},  // 1e-300
    {Number::Float, kF64, "7FF0000000000000", std::numeric_limits<double>::infinity(), kExact},
};
const std::vector<ReadCase> kReadDouble = {
    {Number::Double, kU8,  "FF",               255,           kExact},
    {Number::Double, kS8,  "FF",               -1,            kExact},
    {Number::Double, kU16, "0102",             258,           kExact},
    {Number::Double, kS16, "FFFE",             -2,            kExact},
    {Number::Double, kU32, "FFFFFFFF",         4294967295.0,  kExact},
    {Number::Double, kS32, "80000000",         -2147483648.0, kExact},
    {Number::Double, kF32, "40200000",         2.5,           kExact},
    {Number::Double, kF32, "3DCCCCCD",         0x1.99999ap-4, kExact},  // the single nearest 0.1
    {Number::Double, kF32, "FF800000",         -std::numeric_limits<double>::infinity(), kExact},
    {Number::Double, kF64, "3FB999999999999A", 0.1,           kExact},
    {Number::Double, kF64, "7E37E43C8800759C", 1e300,         kExact},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Int8, ReadField, testing::ValuesIn(kReadInt8), nameOfRead);
INSTANTIATE_TEST_SUITE_P(UInt8, ReadField, testing::ValuesIn(kReadUInt8), nameOfRead);
INSTANTIATE_TEST_SUITE_P(Int16, ReadField, testing::ValuesIn(kReadInt16), nameOfRead);
INSTANTIATE_TEST_SUITE_P(UInt16, ReadField, testing::ValuesIn(kReadUInt16), nameOfRead);
INSTANTIATE_TEST_SUITE_P(Int32, ReadField, testing::ValuesIn(kReadInt32), nameOfRead);
INSTANTIATE_TEST_SUITE_P(UInt32, ReadField, testing::ValuesIn(kReadUInt32), nameOfRead);
INSTANTIATE_TEST_SUITE_P(Int64, ReadField, testing::ValuesIn(kReadInt64), nameOfRead);
INSTANTIATE_TEST_SUITE_P(Float, ReadField, testing::ValuesIn(kReadFloat), nameOfRead);
INSTANTIATE_TEST_SUITE_P(Double, ReadField, testing::ValuesIn(kReadDouble), nameOfRead);

TEST(RawCodec, ReadsTwoToTheSixtyThirdAsTheLargestInteger) {
  const std::vector<std::uint8_t> bytes = bytesOf("43E0000000000000");
  std::int64_t value = 0;
  EXPECT_EQ(readField(kF64, bytes.data(), Endianess::Big, value), kNoFit);
  EXPECT_EQ(value, std::numeric_limits<std::int64_t>::max());
}

TEST(RawCodec, KeepsNotANumberBetweenFloatingTypes) {
  double wide = 0;
  EXPECT_EQ(readField(kF32, bytesOf("7FC00000").data(), Endianess::Big, wide), kExact);
  EXPECT_TRUE(std::isnan(wide));
  float narrow = 0;
  EXPECT_EQ(readField(kF64, bytesOf("7FF8000000000000").data(), Endianess::Big, narrow), kExact);
  EXPECT_TRUE(std::isnan(narrow));
}

TEST(RawCodec, ReadsAndWritesNothingWithoutABaseType) {
  for (const std::uint32_t code : {0u, 11u, 12u, 0xFFFFFFFFu}) {
    SCOPED_TRACE(code);
    std::uint8_t bytes[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    std::int32_t value = 77;
    EXPECT_EQ(readField(static_cast<NcType>(code), bytes, Endianess::Big, value), kNoAccess);
    EXPECT_EQ(value, 77);
    EXPECT_EQ(writeField(static_cast<NcType>(code), 5, Endianess::Big, bytes), kNoAccess);
    EXPECT_EQ(bytes[0], 1);
    EXPECT_EQ(bytes[7], 8);
  }
}

// --- Writing ---

struct WriteCase {
  Number number;
  double value;  // exact in the number type
  NcType type;
  std::string bytes;  // hexadecimal, big-endian
  AccessStatus status;
};

std::string nameOfWrite(const testing::TestParamInfo<WriteCase>& info) {
  return std::string(nameOf(info.param.number)) + "To" + nameOf(info.param.type) +
         info.param.bytes + "Row" + std::to_string(info.index);
}

template <typename T>
void checkWrite(const WriteCase& c) {
  const std::vector<std::uint8_t> expected = bytesOf(c.bytes);
  for (const NcType type : typesOf(c.type)) {
    ASSERT_EQ(expected.size(), ncTypeSize(type));
    const T value = static_cast<T>(c.value);
    std::vector<std::uint8_t> bytes(expected.size() + 1, 0xEE);
    EXPECT_EQ(writeField(type, value, Endianess::Big, bytes.data()), c.status);
    EXPECT_EQ(bytes.back(), 0xEE) << "wrote past the field";
    bytes.pop_back();
    EXPECT_EQ(bytes, expected);

    EXPECT_EQ(writeField(type, value, Endianess::Little, bytes.data()), c.status);
    EXPECT_EQ(bytes, reversed(expected));
  }
}

class WriteField : public testing::TestWithParam<WriteCase> {};

TEST_P(WriteField, StoresTheBytesInBothByteOrders) {
  switch (GetParam().number) {
    case Number::Int8:
      return checkWrite<std::int8_t>(GetParam());
    case Number::UInt8:
      return checkWrite<std::uint8_t>(GetParam());
    case Number::Int16:
      return checkWrite<std::int16_t>(GetParam());
    case Number::UInt16:
      return checkWrite<std::uint16_t>(GetParam());
    case Number::Int32:
      return checkWrite<std::int32_t>(GetParam());
    case Number::UInt32:
      return checkWrite<std::uint32_t>(GetParam());
    case Number::Int64:
      return checkWrite<std::int64_t>(GetParam());
    case Number::UInt64:
      return checkWrite<std::uint64_t>(GetParam());
    case Number::Float:
      return checkWrite<float>(GetParam());
    case Number::Double:
      return checkWrite<double>(GetParam());
  }
}

// clang-format off
const std::vector<WriteCase> kWriteIntegers = {
    {Number::Int8,   -1,            kU8,  "FF",               kSign},
    {Number::Int8,   127,           kU8,  "7F",               kExact},
    {Number::Int8,   -1,            kS8,  "FF",               kExact},
    {Number::Int8,   -1,            kU16, "FFFF",             kSign},
    {Number::Int8,   -2,            kS16, "FFFE",             kExact},
    {Number::Int8,   -1,            kU32, "FFFFFFFF",         kSign},
    {Number::Int8,   -128,          kS32, "FFFFFF80",         kExact},
    {Number::Int8,   -128,          kF32, "C3000000",         kExact},
    {Number::Int8,   -1,            kF64, "BFF0000000000000", kExact},
    {Number::UInt8,  255,           kU8,  "FF",               kExact},
    {Number::UInt8,  200,           kS8,  "C8",               kSign},
    {Number::UInt8,  127,           kS8,  "7F",               kExact},
    {Number::UInt8,  255,           kU16, "00FF",             kExact},
    {Number::UInt8,  255,           kS16, "00FF",             kExact},
    {Number::UInt8,  255,           kS32, "000000FF",         kExact},
    {Number::UInt8,  255,           kF32, "437F0000",         kExact},
    {Number::Int16,  300,           kU8,  "2C",               kNoFit},
    {Number::Int16,  255,           kU8,  "FF",               kExact},
    {Number::Int16,  -300,          kU8,  "D4",               kSign},
    {Number::Int16,  128,           kS8,  "80",               kNoFit},
    {Number::Int16,  -128,          kS8,  "80",               kExact},
    {Number::Int16,  -1,            kU16, "FFFF",             kSign},
    {Number::Int16,  -32768,        kS16, "8000",             kExact},
    {Number::Int16,  -1,            kS32, "FFFFFFFF",         kExact},
    {Number::UInt16, 258,           kU16, "0102",             kExact},
    {Number::UInt16, 65535,         kS8,  "FF",               kSign},
    {Number::UInt16, 200,           kS8,  "C8",               kNoFit},
    {Number::UInt16, 32768,         kS16, "8000",             kSign},
    {Number::UInt16, 32767,         kS16, "7FFF",             kExact},
    {Number::UInt16, 65535,         kF32, "477FFF00",         kExact},
    {Number::Int32,  256,           kU8,  "00",               kNoFit},
    {Number::Int32,  -1,            kU8,  "FF",               kSign},
    {Number::Int32,  65536,         kU16, "0000",             kNoFit},
    {Number::Int32,  -32769,        kS16, "7FFF",             kNoFit},
    {Number::Int32,  16909060,      kU32, "01020304",         kExact},
    {Number::Int32,  -1,            kU32, "FFFFFFFF",         kSign},
    {Number::Int32,  -2147483648.0, kS32, "80000000",         kExact},
    {Number::Int32,  16777217,      kF32, "4B800000",         kNoFit},
    {Number::Int32,  16777217,      kF64, "4170000010000000", kExact},
    {Number::UInt32, 4294967295.0,  kU8,  "FF",               kNoFit},
    {Number::UInt32, 4294967295.0,  kS8,  "FF",               kSign},
    {Number::UInt32, 4294967295.0,  kU32, "FFFFFFFF",         kExact},
    {Number::UInt32, 2147483648.0,  kS32, "80000000",         kSign},
    {Number::UInt32, 4294967295.0,  kF32, "4F800000",         kNoFit},
    {Number::UInt32, 4294967295.0,  kF64, "41EFFFFFFFE00000", kExact},
    {Number::Int64,  4294967295.0,  kU32, "FFFFFFFF",         kExact},
    {Number::Int64,  4294967296.0,  kU32, "00000000",         kNoFit},
    {Number::Int64,  -1,            kU32, "FFFFFFFF",         kSign},
    {Number::Int64,  2147483648.0,  kS32, "80000000",         kNoFit},
    {Number::Int64,  -2147483648.0, kS32, "80000000",         kExact},
    {Number::Int64,  -1,            kS8,  "FF",               kExact},
    {Number::Int64,  1e10,          kF32, "501502F9",         kExact},
    {Number::UInt64, 4294967295.0,  kU32, "FFFFFFFF",         kExact},
    {Number::UInt64, 0x1p63,        kU32, "00000000",         kNoFit},
    {Number::UInt64, 128,           kS8,  "80",               kNoFit},
    {Number::UInt64, 0x1p63,        kF64, "43E0000000000000", kExact},
};
const std::vector<WriteCase> kWriteFloating = {
    {Number::Float,  2,             kU8,  "02",               kExact},
    {Number::Float,  2.5,           kU8,  "02",               kNoFit},
    {Number::Float,  256,           kU8,  "FF",               kNoFit},
    {Number::Float,  -1,            kU8,  "00",               kNoFit},
    {Number::Float,  -200,          kS8,  "80",               kNoFit},
    {Number::Float,  70000,         kU16, "FFFF",             kNoFit},
    {Number::Float,  -32768,        kS16, "8000",             kExact},
    {Number::Float,  2147483648.0,  kU32, "80000000",         kExact},
    {Number::Float,  2147483648.0,  kS32, "7FFFFFFF",         kNoFit},
    {Number::Float,  2.5,           kF32, "40200000",         kExact},
    {Number::Float,  2.5,           kF64, "4004000000000000", kExact},
    {Number::Double, 255,           kU8,  "FF",               kExact},
    {Number::Double, 254.9,         kU8,  "FE",               kNoFit},
    {Number::Double, -0.5,          kS8,  "00",               kNoFit},
    {Number::Double, -129,          kS8,  "80",               kNoFit},
    {Number::Double, 65535,         kU16, "FFFF",             kExact},
    {Number::Double, 1e300,         kS16, "7FFF",             kNoFit},
    {Number::Double, 4294967295.0,  kU32, "FFFFFFFF",         kExact},
    {Number::Double, 3e9,           kS32, "7FFFFFFF",         kNoFit},
    {Number::Double, 0.1,           kF32, "3DCCCCCD",         kNoFit},
    {Number::Double, 1e300,         kF32, "7F7FFFFF",         kNoFit},
    {Number::Double, -1e300,        kF32, "FF7FFFFF",         kNoFit},
    {Number::Double, 0.1,           kF64, "3FB999999999999A", kExact},
    {Number::Double, std::numeric_limits<double>::infinity(), kF32, "7F800000", kExact},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Integers, WriteField, testing::ValuesIn(kWriteIntegers), nameOfWrite);
INSTANTIATE_TEST_SUITE_P(Floating, WriteField, testing::ValuesIn(kWriteFloating), nameOfWrite);

TEST(RawCodec, WritesTheEndsOfTheSixtyFourBitRangesToNarrowFields) {
  std::uint8_t byte = 0xEE;
  EXPECT_EQ(writeField(kS8, std::numeric_limits<std::int64_t>::max(), Endianess::Big, &byte),
            kNoFit);
  EXPECT_EQ(byte, 0xFF);
  EXPECT_EQ(writeField(kU8, std::numeric_limits<std::int64_t>::min(), Endianess::Big, &byte),
            kSign);
  EXPECT_EQ(byte, 0x00);
  EXPECT_EQ(writeField(kS8, std::numeric_limits<std::uint64_t>::max(), Endianess::Big, &byte),
            kSign);
  EXPECT_EQ(byte, 0xFF);
}

TEST(RawCodec, TellsThatAnIntegerOfMoreThanFiftyThreeBitsIsNoDouble) {
  std::uint8_t bytes[8] = {};
  EXPECT_EQ(writeField(kF64, std::numeric_limits<std::int64_t>::max(), Endianess::Big, bytes),
            kNoFit);
  EXPECT_EQ(loadBits(bytes, 8, Endianess::Big), 0x43E0000000000000u);
  EXPECT_EQ(writeField(kF64, std::numeric_limits<std::uint64_t>::max(), Endianess::Big, bytes),
            kNoFit);
  EXPECT_EQ(loadBits(bytes, 8, Endianess::Big), 0x43F0000000000000u);
}

TEST(RawCodec, WritesNotANumberAsZeroToAnIntegerField) {
  std::uint8_t bytes[2] = {0xEE, 0xEE};
  EXPECT_EQ(writeField(kU16, std::numeric_limits<double>::quiet_NaN(), Endianess::Big, bytes),
            kNoFit);
  EXPECT_EQ(bytes[0], 0);
  EXPECT_EQ(bytes[1], 0);
}

TEST(RawCodec, ReadsBackEachByteThatItWrites) {
  for (const NcType type : kConvertible) {
    if (ncTypeSize(type) != 1) continue;
    SCOPED_TRACE(nameOf(type));
    for (int raw = 0; raw < 256; ++raw) {
      const auto byte = static_cast<std::uint8_t>(raw);
      const int number = ncTypeRow(type).isSigned && raw > 127 ? raw - 256 : raw;
      std::int16_t value = 0;
      EXPECT_EQ(readField(type, &byte, Endianess::Big, value), kExact);
      EXPECT_EQ(value, number);
      std::uint8_t written = 0xEE;
      EXPECT_EQ(writeField(type, value, Endianess::Big, &written), kExact);
      EXPECT_EQ(written, byte);
    }
  }
}

// --- Whole numbers and bytes ---

struct IntegerCase {
  std::string name;
  NcType type;
  std::string bytes;  // hexadecimal, big-endian
  std::int64_t value;
};

class ReadInteger : public testing::TestWithParam<IntegerCase> {};

TEST_P(ReadInteger, ExtendsByTheSignOfTheType) {
  const IntegerCase& c = GetParam();
  EXPECT_EQ(readInteger(c.type, bytesOf(c.bytes).data(), Endianess::Big), c.value);
  EXPECT_EQ(readInteger(c.type, reversed(bytesOf(c.bytes)).data(), Endianess::Little), c.value);
}

const std::vector<IntegerCase> kIntegerCases = {
    {"UnsignedChar", NcType::UnsignedChar, "FE", 254},
    {"SignedChar", NcType::SignedChar, "FE", -2},
    {"UnsignedShort", NcType::UnsignedShort, "80", 128},
    {"SignedShort", NcType::SignedShort, "80", -128},
    {"UnsignedLong", NcType::UnsignedLong, "FFFE", 65534},
    {"SignedLong", NcType::SignedLong, "FFFE", -2},
    {"PositiveSignedLong", NcType::SignedLong, "7FFE", 32766},
    {"UnsignedQuad", NcType::UnsignedQuad, "FFFFFFFE", 4294967294},
    {"SignedQuad", NcType::SignedQuad, "FFFFFFFE", -2},
    {"SmallestSignedQuad", NcType::SignedQuad, "80000000", -2147483648LL},
    {"FloatIsNoInteger", NcType::Float, "40000000", 0},
    {"DoubleIsNoInteger", NcType::Double, "4000000000000000", 0},
    {"NoType", NcType::None, "FF", 0},
    {"NumberOutsideTheTable", static_cast<NcType>(12), "FF", 0},
};
INSTANTIATE_TEST_SUITE_P(Types, ReadInteger, testing::ValuesIn(kIntegerCases),
                         [](const auto& info) { return info.param.name; });

TEST(RawCodec, ReadsEachTypeAsADouble) {
  const auto read = [](NcType type, const std::string& hex) {
    const double number = readDouble(type, bytesOf(hex).data(), Endianess::Big);
    EXPECT_EQ(readDouble(type, reversed(bytesOf(hex)).data(), Endianess::Little), number);
    return number;
  };
  EXPECT_EQ(read(NcType::Float, "BFC00000"), -1.5);
  EXPECT_EQ(read(NcType::Double, "3FF8000000000001"), 0x1.8000000000001p0);
  EXPECT_EQ(read(NcType::SignedLong, "FFFE"), -2);
  EXPECT_EQ(read(NcType::UnsignedQuad, "FFFFFFFE"), 4294967294.0);
  EXPECT_EQ(read(NcType::None, "FF"), 0);
}

TEST(RawCodec, LoadsAndStoresEachCountOfBytes) {
  const std::uint8_t bytes[8] = {0x81, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x88};
  constexpr std::uint64_t kBig[] = {0,
                                    0x81,
                                    0x8102,
                                    0x810203,
                                    0x81020304,
                                    0x8102030405,
                                    0x810203040506,
                                    0x81020304050607,
                                    0x8102030405060788};
  constexpr std::uint64_t kLittle[] = {0,
                                       0x81,
                                       0x0281,
                                       0x030281,
                                       0x04030281,
                                       0x0504030281,
                                       0x060504030281,
                                       0x07060504030281,
                                       0x8807060504030281};
  for (unsigned count = 0; count <= 8; ++count) {
    SCOPED_TRACE(count);
    EXPECT_EQ(loadBits(bytes, count, Endianess::Big), kBig[count]);
    EXPECT_EQ(loadBits(bytes, count, Endianess::Little), kLittle[count]);

    for (const Endianess order : {Endianess::Big, Endianess::Little}) {
      std::uint8_t stored[8] = {};
      storeBits(order == Endianess::Big ? kBig[count] : kLittle[count], count, order, stored);
      EXPECT_TRUE(std::equal(stored, stored + count, bytes));
      EXPECT_TRUE(std::all_of(stored + count, stored + 8, [](int byte) { return byte == 0; }));
    }
  }
}

// --- Bit fields ---

// The eight bits of a byte as text, most significant first: the picture that slots are drawn on.
std::uint8_t byteOf(const std::string& bits) {
  return static_cast<std::uint8_t>(std::stoi(bits, nullptr, 2));
}

// The lowest `width` bits of `value` as text.
std::string bitsOf(int value, unsigned width) {
  std::string bits;
  for (unsigned i = 0; i < width; ++i) {
    bits.insert(0, 1, ((value >> i) & 1) != 0 ? '1' : '0');
  }
  return bits;
}

template <typename Check>
void forEachUsableSlot(Check check) {
  for (unsigned offset = 0; offset < 8; ++offset) {
    for (unsigned width = 1; offset + width <= 8; ++width) {
      for (const bool isSigned : {false, true}) {
        SCOPED_TRACE(std::to_string(offset) + "/" + std::to_string(width) +
                     (isSigned ? " signed" : ""));
        check(
            BitSlot{static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(width), isSigned});
      }
    }
  }
}

TEST(BitSlot, HasThirtySixUsablePlaces) {
  int count = 0;
  for (unsigned offset = 0; offset < 256; ++offset) {
    for (unsigned width = 0; width < 256; ++width) {
      const BitSlot slot{static_cast<std::uint8_t>(offset), static_cast<std::uint8_t>(width),
                         false};
      if (slot.isUsable()) ++count;
    }
  }
  EXPECT_EQ(count, 36);
}

TEST(BitSlot, HoldsEachOfItsValuesAndKeepsTheBitsAroundIt) {
  forEachUsableSlot([](const BitSlot& slot) {
    const int span = 1 << slot.width;
    const int lowest = slot.isSigned ? -(span / 2) : 0;
    for (int value = lowest; value < lowest + span; ++value) {
      for (const char around : {'0', '1'}) {
        std::string picture(8, around);
        picture.replace(slot.offset, slot.width, bitsOf(value, slot.width));
        const std::uint8_t expected = byteOf(picture);

        for (const char before : {'0', '1'}) {
          picture.replace(slot.offset, slot.width, std::string(slot.width, before));
          std::uint8_t byte = byteOf(picture);
          ASSERT_EQ(insertBits(value, slot, byte), kExact);
          ASSERT_EQ(byte, expected) << value;
        }
        ASSERT_EQ(extractBits(expected, slot), value < 0 ? value + span : value);
        ASSERT_EQ(readBits(expected, slot), value);
      }
    }
  });
}

TEST(BitSlot, RefusesEachByteThatItsWidthCannotHold) {
  forEachUsableSlot([](const BitSlot& slot) {
    const int span = 1 << slot.width;
    const int lowest = slot.isSigned ? -(span / 2) : 0;
    for (int value = -300; value <= 300; ++value) {
      if (value >= lowest && value < lowest + span) continue;
      std::uint8_t byte = 0xA5;
      ASSERT_EQ(insertBits(value, slot, byte), kRange) << value;
      ASSERT_EQ(byte, 0xA5);
    }
  });
}

struct UnusableCase {
  std::string name;
  BitSlot slot;
};

class UnusableSlot : public testing::TestWithParam<UnusableCase> {};

TEST_P(UnusableSlot, ReadsAsZeroAndTakesNothing) {
  const BitSlot& slot = GetParam().slot;
  EXPECT_FALSE(slot.isUsable());
  EXPECT_EQ(extractBits(0xFF, slot), 0);
  EXPECT_EQ(readBits(0xFF, slot), 0);
  for (const std::int64_t value : {0LL, 1LL, -1LL, 300LL}) {
    std::uint8_t byte = 0x5A;
    EXPECT_EQ(insertBits(value, slot, byte), kNoAccess);
    EXPECT_EQ(byte, 0x5A);
  }
}

const std::vector<UnusableCase> kUnusableCases = {
    {"NoWidth", {0, 0, false}},       {"NoWidthAtTheEnd", {7, 0, true}},
    {"NoWidthBehind", {8, 0, false}}, {"NineBits", {0, 9, false}},
    {"OneBitTooMany", {1, 8, true}},  {"TwoBitsInTheLast", {7, 2, false}},
    {"BehindTheByte", {8, 1, false}}, {"OffsetNine", {9, 4, true}},
    {"Largest", {255, 255, false}},   {"OffsetWrapsAround", {250, 6, true}},
    {"SumOfForty", {20, 20, false}},
};
INSTANTIATE_TEST_SUITE_P(Slots, UnusableSlot, testing::ValuesIn(kUnusableCases),
                         [](const auto& info) { return info.param.name; });

TEST(RawCodec, TakesTheLargestSingleForWhatItIs) {
  std::uint8_t bytes[4] = {};
  const double largest = std::numeric_limits<float>::max();
  EXPECT_EQ(writeField(NcType::Float, largest, Endianess::Big, bytes), AccessStatus::Exact);
  EXPECT_EQ(bytes[0], 0x7F);
  EXPECT_EQ(writeField(NcType::Float, -largest, Endianess::Big, bytes), AccessStatus::Exact);
  EXPECT_EQ(bytes[0], 0xFF);
  EXPECT_EQ(writeField(NcType::Float, largest * 1.001, Endianess::Big, bytes),
            AccessStatus::DoesNotFit);
}

TEST(BitSlot, CountsItsOffsetFromTheMostSignificantBit) {
  EXPECT_EQ(extractBits(0xB4, {2, 3, false}), 6);  // 1011'0100: bits 5 to 3 are 110
}

TEST(BitSlot, RefusesTwoHundredInThreeBits) {
  std::uint8_t byte = 0xB4;
  EXPECT_EQ(insertBits(200, {2, 3, false}, byte), kRange);
  EXPECT_EQ(byte, 0xB4);
}

TEST(BitSlot, RefusesTheEndsOfTheSixtyFourBitRange) {
  std::uint8_t byte = 0xA5;
  EXPECT_EQ(insertBits(std::numeric_limits<std::int64_t>::max(), {0, 8, true}, byte), kRange);
  EXPECT_EQ(insertBits(std::numeric_limits<std::int64_t>::min(), {0, 8, false}, byte), kRange);
  EXPECT_EQ(byte, 0xA5);
}

// --- Names ---

TEST(AccessStatus, HasFixedNumbersWithNames) {
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(0)), "exact");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(1)), "out of range");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(2)), "does not fit");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(3)), "sign change");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(4)), "truncated");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(5)), "not accessible");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(6)), "(unknown)");
  EXPECT_EQ(accessStatusName(static_cast<AccessStatus>(-1)), "(unknown)");
}

}  // namespace
}  // namespace zavri::korvat
