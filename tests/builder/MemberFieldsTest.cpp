#include "korvat/builder/MemberFields.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "tests/LogCapture.h"

namespace zavri::korvat::builder {
namespace {

using base::Logger;
using test::LogCapture;
using Texts = std::vector<std::string>;

std::vector<std::unique_ptr<Member>> makeMembersWithoutNumbers() {
  std::vector<std::unique_ptr<Member>> members;
  members.push_back(std::make_unique<MemRef>());
  members.push_back(std::make_unique<MemEnum>());
  members.push_back(std::make_unique<MemAggregate>());
  return members;
}

// --- Limits ---

TEST(SetLimit, ReadsThe64BitsOfAScalar) {
  MemScalar scalar;
  setLimit(scalar, Limit::Min, "-9223372036854775808");
  setLimit(scalar, Limit::Max, "9223372036854775807");
  setLimit(scalar, Limit::Invalid, "4294967295");
  EXPECT_TRUE(scalar.hasMin());
  EXPECT_TRUE(scalar.hasMax());
  EXPECT_TRUE(scalar.hasInvalid());
  EXPECT_EQ(scalar.getMin(), -9223372036854775807 - 1);
  EXPECT_EQ(scalar.getMax(), 9223372036854775807);
  EXPECT_EQ(scalar.getInvalid(), 4294967295);
}

TEST(SetLimit, ReadsTheDoubleOfAFloat) {
  MemFloat number;
  setLimit(number, Limit::Min, "-1.5e-3");
  setLimit(number, Limit::Max, "3.40282347e38");
  setLimit(number, Limit::Invalid, "1e999");
  EXPECT_EQ(number.getMin(), -0.0015);
  EXPECT_EQ(number.getMax(), 3.40282347e38);
  EXPECT_EQ(number.getInvalid(), 1.7976931348623157e308);
  EXPECT_TRUE(number.hasMin());
  EXPECT_TRUE(number.hasMax());
  EXPECT_TRUE(number.hasInvalid());
}

TEST(SetLimit, CutsTheLimitsOfABitFieldTo16Bits) {
  MemBitfield bitfield;
  setLimit(bitfield, Limit::Min, "-32769");
  setLimit(bitfield, Limit::Max, "32768");
  setLimit(bitfield, Limit::Invalid, "7");
  EXPECT_EQ(bitfield.getMin(), -32768);
  EXPECT_EQ(bitfield.getMax(), 32767);
  EXPECT_EQ(bitfield.getInvalid(), 7);
  EXPECT_TRUE(bitfield.hasMin());
  EXPECT_TRUE(bitfield.hasMax());
  EXPECT_TRUE(bitfield.hasInvalid());
}

TEST(SetLimit, SetsNoOtherLimit) {
  MemScalar scalar;
  setLimit(scalar, Limit::Max, "5");
  EXPECT_FALSE(scalar.hasMin());
  EXPECT_TRUE(scalar.hasMax());
  EXPECT_FALSE(scalar.hasInvalid());
}

TEST(SetLimit, WarnsForAMemberThatHoldsNoNumber) {
  LogCapture log(Logger::Warning);
  for (const auto& member : makeMembersWithoutNumbers()) {
    setLimit(*member, Limit::Min, "1");
    setLimit(*member, Limit::Max, "1");
    setLimit(*member, Limit::Invalid, "1");
  }
  EXPECT_EQ(
      log.texts(Logger::Warning),
      (Texts{"[VarBuilder] cannot set 'min' in Ref\n", "[VarBuilder] cannot set 'max' in Ref\n",
             "[VarBuilder] cannot set 'invalid' in Ref\n",
             "[VarBuilder] cannot set 'min' in Enum\n", "[VarBuilder] cannot set 'max' in Enum\n",
             "[VarBuilder] cannot set 'invalid' in Enum\n",
             "[VarBuilder] cannot set 'min' in Aggregate\n",
             "[VarBuilder] cannot set 'max' in Aggregate\n",
             "[VarBuilder] cannot set 'invalid' in Aggregate\n"}));
}

// --- Scaling ---

struct ScalingCase {
  std::string name;
  std::string a, b, c;
  Scaling scaling;
};

class SetScaling : public testing::TestWithParam<ScalingCase> {
 protected:
  static void setAll(Member& member) {
    setScaling(member, ScalingPart::A, GetParam().a);
    setScaling(member, ScalingPart::B, GetParam().b);
    setScaling(member, ScalingPart::C, GetParam().c);
  }
};

TEST_P(SetScaling, CutsTheNumbersTo16Bits) {
  MemScalar scalar;
  setAll(scalar);
  EXPECT_EQ(scalar.getScaling(), GetParam().scaling);
  MemFloat number;
  setAll(number);
  EXPECT_EQ(number.getScaling(), GetParam().scaling);
  MemBitfield bitfield;
  setAll(bitfield);
  EXPECT_EQ(bitfield.getScaling(), GetParam().scaling);
}

const std::vector<ScalingCase> kScalingCases = {
    {"Plain", "5", "-1", "-2740", {5, -1, -2740}},
    {"AtTheLimits", "32767", "-32768", "0", {32767, -32768, 0}},
    {"JustBeyond", "32768", "-32769", "65536", {32767, -32768, 32767}},
    {"FarBeyond", "99999999999999999999", "-99999999999999999999", "1", {32767, -32768, 1}},
    {"NoNumbers", "a", "", "-", {0, 0, 0}},
};
INSTANTIATE_TEST_SUITE_P(MemberFields, SetScaling, testing::ValuesIn(kScalingCases),
                         [](const auto& info) { return info.param.name; });

TEST(SetScalingOf, WarnsForAMemberThatHoldsNoNumber) {
  LogCapture log(Logger::Warning);
  for (const auto& member : makeMembersWithoutNumbers()) {
    setScaling(*member, ScalingPart::A, "1");
    setScaling(*member, ScalingPart::B, "1");
    setScaling(*member, ScalingPart::C, "1");
  }
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"[VarBuilder] cannot set 'scaling/a' in Ref\n",
                   "[VarBuilder] cannot set 'scaling/b' in Ref\n",
                   "[VarBuilder] cannot set 'scaling/c' in Ref\n",
                   "[VarBuilder] cannot set 'scaling/a' in Enum\n",
                   "[VarBuilder] cannot set 'scaling/b' in Enum\n",
                   "[VarBuilder] cannot set 'scaling/c' in Enum\n",
                   "[VarBuilder] cannot set 'scaling/a' in Aggregate\n",
                   "[VarBuilder] cannot set 'scaling/b' in Aggregate\n",
                   "[VarBuilder] cannot set 'scaling/c' in Aggregate\n"}));
}

// --- Base type ---

struct NcTypeCase {
  std::string name;
  std::string text;
  NcType ofScalar;
  NcType ofFloat;
};

class SetNcType : public testing::TestWithParam<NcTypeCase> {};

TEST_P(SetNcType, TakesWhatFitsTheMember) {
  const NcTypeCase& c = GetParam();
  LogCapture log(Logger::Warning);
  MemScalar scalar;
  MemFloat number;
  setNcType(scalar, c.text, "set");
  setNcType(number, c.text, "set");
  EXPECT_EQ(scalar.getNcType(), c.ofScalar);
  EXPECT_EQ(number.getNcType(), c.ofFloat);

  Texts expected;
  if (c.ofScalar == NcType::None) {
    expected.push_back("[VarBuilder][set] invalid nc-type (" + c.text + ") for Scalar\n");
  }
  if (c.ofFloat == NcType::None) {
    expected.push_back("[VarBuilder][set] invalid nc-type (" + c.text + ") for Float\n");
  }
  EXPECT_EQ(log.texts(Logger::Warning), expected);
}

const std::vector<NcTypeCase> kNcTypeCases = {
    {"UnsignedChar", "unsigned char", NcType::UnsignedChar, NcType::None},
    {"SignedChar", "signed char", NcType::SignedChar, NcType::None},
    {"UnsignedShort", "unsigned short", NcType::UnsignedShort, NcType::None},
    {"SignedShort", "signed short", NcType::SignedShort, NcType::None},
    {"UnsignedLong", "unsigned long", NcType::UnsignedLong, NcType::None},
    {"SignedLong", "signed long", NcType::SignedLong, NcType::None},
    {"UnsignedQuad", "unsigned quad", NcType::UnsignedQuad, NcType::None},
    {"SignedQuad", "s32_type", NcType::SignedQuad, NcType::None},
    {"Float", "float", NcType::None, NcType::Float},
    {"DoubleFloat", "double float", NcType::None, NcType::Double},
    {"Double", "double", NcType::None, NcType::None},
    {"Empty", "", NcType::None, NcType::None},
    {"AnotherCase", "Float", NcType::None, NcType::None},
};
INSTANTIATE_TEST_SUITE_P(MemberFields, SetNcType, testing::ValuesIn(kNcTypeCases),
                         [](const auto& info) { return info.param.name; });

TEST(SetNcTypeOf, KeepsTheTypeThereWasWhenTheNewOneIsInvalid) {
  LogCapture log(Logger::Warning);
  MemScalar scalar;
  setNcType(scalar, "unsigned long", "");
  setNcType(scalar, "word", "");
  EXPECT_EQ(scalar.getNcType(), NcType::UnsignedLong);
}

TEST(SetNcTypeOf, WarnsForAMemberOfAnotherKind) {
  LogCapture log(Logger::Warning);
  for (const auto& member : makeMembersWithoutNumbers()) setNcType(*member, "float", "set");
  MemBitfield bitfield;
  setNcType(bitfield, "unsigned char", "set");
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"[VarBuilder][set] cannot set nc-type (float) in Ref\n",
                   "[VarBuilder][set] cannot set nc-type (float) in Enum\n",
                   "[VarBuilder][set] cannot set nc-type (float) in Aggregate\n",
                   "[VarBuilder][set] cannot set nc-type (unsigned char) in Bitfield\n"}));
}

// --- Bit fields ---

TEST(SetBitfieldSigned, IsSignedExactlyForYes) {
  MemBitfield bitfield;
  setBitfieldSigned(bitfield, "yes");
  EXPECT_TRUE(bitfield.getSlot().isSigned);
  for (const char* text : {"no", "Yes", "yes ", "true", "1", ""}) {
    SCOPED_TRACE(text);
    bitfield.setSigned(true);
    setBitfieldSigned(bitfield, text);
    EXPECT_FALSE(bitfield.getSlot().isSigned);
  }
}

TEST(SetBitfieldWidth, CutsTheCountTo8Bits) {
  const std::vector<std::pair<std::string, int>> cases = {
      {"3", 3}, {"255", 255}, {"256", 255}, {"99999999999", 255}, {"-1", 0}, {"wide", 0}};
  for (const auto& [text, count] : cases) {
    SCOPED_TRACE(text);
    MemBitfield bitfield;
    setBitfieldWidth(bitfield, text);
    EXPECT_EQ(bitfield.getSlot().width, count);
    setBitfieldOffset(bitfield, text);
    EXPECT_EQ(bitfield.getSlot().offset, count);
  }
}

TEST(SetBitfieldWidth, TracesItsText) {
  MemBitfield bitfield;
  LogCapture log;
  setBitfieldWidth(bitfield, "3");
  setBitfieldOffset(bitfield, "5");
  EXPECT_EQ(log.texts(Logger::Trace),
            (Texts{"[VarBuilder::setBitfieldWidth] 3\n", "[VarBuilder::setBitfieldOffset] 5\n"}));
}

TEST(SetBitfieldWidth, WarnsForAMemberOfAnotherKind) {
  MemScalar scalar;
  LogCapture log(Logger::Warning);
  setBitfieldSigned(scalar, "yes");
  setBitfieldWidth(scalar, "1");
  setBitfieldOffset(scalar, "1");
  EXPECT_EQ(log.texts(Logger::Warning), (Texts{"[VarBuilder] cannot set 'signed' in Scalar\n",
                                               "[VarBuilder] cannot set 'width' in Scalar\n",
                                               "[VarBuilder] cannot set 'offset' in Scalar\n"}));
}

// --- Arrays ---

TEST(SetArraySize, SetsTheMinimumTooWhenThereIsNone) {
  MemScalar scalar;
  setArraySize(scalar, "31");
  EXPECT_EQ(scalar.getArraySize(), 31u);
  EXPECT_EQ(scalar.getArrayMinSize(), 31u);
  EXPECT_FALSE(scalar.isDynamicArray());
}

TEST(SetArraySize, KeepsAMinimumThatWasGivenBefore) {
  MemAggregate aggregate;
  setArrayMinSize(aggregate, "0");
  setArraySize(aggregate, "10");
  EXPECT_EQ(aggregate.getArraySize(), 10u);
  EXPECT_EQ(aggregate.getArrayMinSize(), 0u);
  EXPECT_TRUE(aggregate.isDynamicArray());
}

TEST(SetArraySize, TakesAMinimumThatComesAfterwards) {
  MemEnum member;
  setArraySize(member, "10");
  setArrayMinSize(member, "2");
  EXPECT_EQ(member.getArrayMinSize(), 2u);
  EXPECT_TRUE(member.isDynamicArray());
}

TEST(SetArraySize, RefusesANegativeCount) {
  MemScalar scalar;
  LogCapture log(Logger::Warning);
  setArraySize(scalar, "-1");
  setArrayMinSize(scalar, "-2147483648");
  EXPECT_EQ(scalar.getArraySize(), 0u);
  EXPECT_EQ(scalar.getArrayMinSize(), Member::kNoArrayMinSize);
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"[VarBuilder] negative 'array-size' (-1) in Scalar\n",
                   "[VarBuilder] negative 'array-min-size' (-2147483648) in Scalar\n"}));
}

TEST(SetArraySize, CutsACountAboveTheLimit) {
  MemRef reference;
  LogCapture log(Logger::Warning);
  setArraySize(reference, "65536");
  EXPECT_TRUE(log.lines().empty());
  setArraySize(reference, "65537");
  EXPECT_EQ(reference.getArraySize(), 65536u);
  setArrayMinSize(reference, "99999999999");
  EXPECT_EQ(reference.getArrayMinSize(), 65536u);
  EXPECT_EQ(log.texts(Logger::Warning),
            (Texts{"[VarBuilder] 'array-size' (65537) in Ref cut to 65536\n",
                   "[VarBuilder] 'array-min-size' (99999999999) in Ref cut to 65536\n"}));
}

TEST(SetArraySize, MakesNoArrayOfZeroOrOfNoNumber) {
  for (const char* text : {"0", "many"}) {
    SCOPED_TRACE(text);
    MemScalar scalar;
    setArraySize(scalar, text);
    EXPECT_FALSE(scalar.isArray());
  }
}

}  // namespace
}  // namespace zavri::korvat::builder
