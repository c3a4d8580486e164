#include "korvat/members/NcType.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace zavri::korvat {
namespace {

struct NcTypeCase {
  std::string testName;
  std::uint32_t code;
  std::string name;
  unsigned byteCount;
  bool isSigned;
  bool isFloating;
};

class NcTypeTable : public testing::TestWithParam<NcTypeCase> {};

TEST_P(NcTypeTable, HoldsTheFactsOfEachCode) {
  const NcTypeCase& c = GetParam();
  const auto type = static_cast<NcType>(c.code);
  EXPECT_EQ(ncTypeRow(type).name, c.name);
  EXPECT_EQ(ncTypeSize(type), c.byteCount);
  EXPECT_EQ(ncTypeRow(type).isSigned, c.isSigned);
  EXPECT_EQ(ncTypeRow(type).isFloating, c.isFloating);
}

// clang-format off
const std::vector<NcTypeCase> kNcTypeCases = {
    // name             code        text              bytes signed floating
    {"None",            0,          "",               0,    false, false},
    {"UnsignedChar",    1,          "unsigned char",  1,    false, false},
    {"SignedChar",      2,          "signed char",    1,    true,  false},
    {"UnsignedShort",   3,          "unsigned short", 1,    false, false},
    {"SignedShort",     4,          "signed short",   1,    true,  false},
    {"UnsignedLong",    5,          "unsigned long",  2,    false, false},
    {"SignedLong",      6,          "signed long",    2,    true,  false},
    {"UnsignedQuad",    7,          "unsigned quad",  4,    false, false},
    {"SignedQuad",      8,          "s32_type",       4,    true,  false},
    {"Float",           9,          "float",          4,    true,  true},
    {"Double",          10,         "double float",   8,    true,  true},
    {"Reserved",        11,         "",               0,    false, false},
    {"FirstBeyond",     12,         "",               0,    false, false},
    {"LargestNumber",   0xFFFFFFFF, "",               0,    false, false},
};
// clang-format on
INSTANTIATE_TEST_SUITE_P(Codes, NcTypeTable, testing::ValuesIn(kNcTypeCases),
                         [](const auto& info) { return info.param.testName; });

struct NcNameCase {
  std::string testName;
  std::string text;
  std::uint32_t code;
};

class NcTypeName : public testing::TestWithParam<NcNameCase> {};

TEST_P(NcTypeName, GivesTheCodeOfExactlyItsText) {
  EXPECT_EQ(static_cast<std::uint32_t>(ncTypeOf(GetParam().text)), GetParam().code);
}

const std::vector<NcNameCase> kNcNameCases = {
    {"UnsignedChar", "unsigned char", 1},
    {"SignedChar", "signed char", 2},
    {"UnsignedShort", "unsigned short", 3},
    {"SignedShort", "signed short", 4},
    {"UnsignedLong", "unsigned long", 5},
    {"SignedLong", "signed long", 6},
    {"UnsignedQuad", "unsigned quad", 7},
    {"SignedQuad", "s32_type", 8},
    {"Float", "float", 9},
    {"DoubleFloat", "double float", 10},
    {"DoubleAlone", "double", 0},
    {"OtherCase", "Float", 0},
    {"BlankBehind", "float ", 0},
    {"SignedQuadAsWords", "signed quad", 0},
    {"Empty", "", 0},
};
INSTANTIATE_TEST_SUITE_P(Texts, NcTypeName, testing::ValuesIn(kNcNameCases),
                         [](const auto& info) { return info.param.testName; });

}  // namespace
}  // namespace zavri::korvat
