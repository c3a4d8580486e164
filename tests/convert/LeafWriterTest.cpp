#include "korvat/convert/LeafWriter.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/LogCapture.h"
#include "tests/convert/Encoding.h"
#include "tests/members/MemberTree.h"

namespace zavri::korvat {
namespace {

using base::Buffer;
using base::CharEncoding;
using base::Endianess;
using base::Logger;
using test::LogCapture;
using test::makeBitfield;
using test::makeEnum;
using test::makeFloat;
using test::makeScalar;
using test::parsed;

using Lines = std::vector<std::string>;

constexpr bool kCut = true;
constexpr bool kRefuse = false;

// Result, bytes and warnings of one write into an empty buffer.
struct Written {
  bool isDone = false;
  std::string raw;
  Lines warnings;
  std::string problem;
};

class Desk {
 public:
  Desk() : manager("drv") {}

  Written write(const Member& member, const json::Value& node, const std::string& before = "") {
    const LogCapture log(Logger::Warning);
    Buffer raw = test::bytesOf(before);
    const Member::Context context(&manager, raw, true);
    LeafWriter writer(&manager, order);
    Written written;
    written.isDone = dispatch(writer, context, member, node, raw);
    written.raw = util::BinaryUtils::toString(raw);
    written.warnings = log.texts(Logger::Warning);
    written.problem = writer.getProblem();
    return written;
  }

  TypeManager manager;
  Endianess order = Endianess::Big;

 private:
  static bool dispatch(LeafWriter& writer, const Member::Context& context, const Member& member,
                       const json::Value& node, Buffer& raw) {
    switch (member.getKind()) {
      case Member::Kind::Scalar:
        return writer.writeScalar(context, static_cast<const MemScalar&>(member), node, raw);
      case Member::Kind::Float:
        return writer.writeFloat(context, static_cast<const MemFloat&>(member), node, raw);
      case Member::Kind::Bitfield:
        return writer.writeBitfield(context, static_cast<const MemBitfield&>(member), node, raw);
      case Member::Kind::Enum:
        return writer.writeEnum(context, static_cast<const MemEnum&>(member), node, raw);
      default:
        return false;
    }
  }
};

// --- Integers of each base type ---

struct ScalarCase {
  std::string name;
  NcType type;
  std::string json;
  bool isCutting;
  std::string raw;      // nothing when refused
  std::string warning;  // behind "[korvat/setRawValue] ", without its new line
};

class LeafWriterScalar : public testing::TestWithParam<ScalarCase> {};

TEST_P(LeafWriterScalar, KeepsToTheRangeOfItsBaseType) {
  const ScalarCase& c = GetParam();
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(c.isCutting);
  const Written written = desk.write(*makeScalar("it", c.type), parsed(c.json));
  EXPECT_EQ(written.isDone, !c.raw.empty());
  EXPECT_EQ(written.raw, c.raw);
  const Lines expected =
      c.warning.empty() ? Lines() : Lines{"[korvat/setRawValue] " + c.warning + "\n"};
  EXPECT_EQ(written.warnings, expected);
  EXPECT_EQ(written.problem.empty(), written.isDone);
}

std::string integerOverflow(const std::string& number) {
  return "Integer overflow with value: " + number + " (int: " + number + ")";
}

const std::vector<ScalarCase> kScalarCases = {
    {"SignedShortHighest", NcType::SignedShort, "127", kRefuse, "7F", ""},
    {"SignedShortLowest", NcType::SignedShort, "-128", kRefuse, "80", ""},
    {"SignedShortAbove", NcType::SignedShort, "200", kRefuse, "", integerOverflow("200")},
    {"SignedShortBelow", NcType::SignedShort, "-129", kRefuse, "", integerOverflow("-129")},
    {"SignedShortCutAbove", NcType::SignedShort, "200", kCut, "7F", ""},
    {"SignedShortCutBelow", NcType::SignedShort, "-200", kCut, "80", ""},
    {"SignedCharHighest", NcType::SignedChar, "127", kRefuse, "7F", ""},
    {"SignedCharAbove", NcType::SignedChar, "128", kRefuse, "", integerOverflow("128")},
    {"SignedCharCutBelow", NcType::SignedChar, "-200", kCut, "80", ""},
    {"UnsignedShortHighest", NcType::UnsignedShort, "255", kRefuse, "FF", ""},
    {"UnsignedShortAbove", NcType::UnsignedShort, "256", kRefuse, "", integerOverflow("256")},
    {"UnsignedShortBelow", NcType::UnsignedShort, "-1", kRefuse, "", integerOverflow("-1")},
    {"UnsignedShortCutAbove", NcType::UnsignedShort, "256", kCut, "FF", ""},
    {"UnsignedShortCutBelow", NcType::UnsignedShort, "-1", kCut, "00", ""},
    {"UnsignedCharHighest", NcType::UnsignedChar, "255", kRefuse, "FF", ""},
    {"UnsignedCharAbove", NcType::UnsignedChar, "256", kRefuse, "", integerOverflow("256")},
    {"UnsignedCharCutBelow", NcType::UnsignedChar, "-1", kCut, "00", ""},
    {"SignedLongHighest", NcType::SignedLong, "32767", kRefuse, "7FFF", ""},
    {"SignedLongLowest", NcType::SignedLong, "-32768", kRefuse, "8000", ""},
    {"SignedLongAbove", NcType::SignedLong, "32768", kRefuse, "", integerOverflow("32768")},
    {"SignedLongBelow", NcType::SignedLong, "-32769", kRefuse, "", integerOverflow("-32769")},
    {"SignedLongCutAbove", NcType::SignedLong, "32768", kCut, "7FFF", ""},
    {"SignedLongCutBelow", NcType::SignedLong, "-32769", kCut, "8000", ""},
    {"UnsignedLongHighest", NcType::UnsignedLong, "65535", kRefuse, "FFFF", ""},
    {"UnsignedLongAbove", NcType::UnsignedLong, "65536", kRefuse, "", integerOverflow("65536")},
    {"UnsignedLongBelow", NcType::UnsignedLong, "-1", kRefuse, "", integerOverflow("-1")},
    {"UnsignedLongCutAbove", NcType::UnsignedLong, "65536", kCut, "FFFF", ""},
    {"UnsignedLongCutBelow", NcType::UnsignedLong, "-1", kCut, "0000", ""},
    {"SignedQuadHighest", NcType::SignedQuad, "2147483647", kRefuse, "7FFFFFFF", ""},
    {"SignedQuadLowest", NcType::SignedQuad, "-2147483648", kRefuse, "80000000", ""},
    {"SignedQuadAbove", NcType::SignedQuad, "2147483648", kRefuse, "",
     integerOverflow("2147483648")},
    {"SignedQuadBelow", NcType::SignedQuad, "-2147483649", kRefuse, "",
     integerOverflow("-2147483649")},
    {"SignedQuadCutAbove", NcType::SignedQuad, "2147483648", kCut, "7FFFFFFF", ""},
    {"SignedQuadCutBelow", NcType::SignedQuad, "-2147483649", kCut, "80000000", ""},
    {"UnsignedQuadHighest", NcType::UnsignedQuad, "4294967295", kRefuse, "FFFFFFFF", ""},
    {"UnsignedQuadAbove", NcType::UnsignedQuad, "4294967296", kRefuse, "",
     integerOverflow("4294967296")},
    {"UnsignedQuadBelow", NcType::UnsignedQuad, "-1", kRefuse, "", integerOverflow("-1")},
    {"UnsignedQuadCutAbove", NcType::UnsignedQuad, "4294967296", kCut, "FFFFFFFF", ""},
    {"UnsignedQuadCutBelow", NcType::UnsignedQuad, "-1", kCut, "00000000", ""},
    // Beyond 64 signed bits the number in brackets is the nearest one that prints.
    {"LargestInteger", NcType::UnsignedShort, "18446744073709551615", kRefuse, "",
     "Integer overflow with value: 18446744073709551615 (int: 9223372036854775807)"},
    {"LargestIntegerCut", NcType::UnsignedQuad, "18446744073709551615", kCut, "FFFFFFFF", ""},
    // A double on a scalar is brought to whole steps first: halves upwards.
    {"DoubleRounded", NcType::SignedShort, "99.6", kRefuse, "64", ""},
    {"DoubleHalf", NcType::SignedShort, "-2.5", kRefuse, "FE", ""},
    {"DoubleAbove", NcType::SignedShort, "300.7", kRefuse, "",
     "overflow with value: 300.7 (d:300.700000)"},
    {"DoubleCutAbove", NcType::SignedShort, "300.7", kCut, "7F", ""},
    {"DoubleBelow", NcType::UnsignedLong, "-1.0", kRefuse, "",
     "overflow with value: -1.0 (d:-1.000000)"},
    {"DoubleCutBelow", NcType::UnsignedLong, "-1.0", kCut, "0000", ""},
    {"DoubleCutFarAbove", NcType::UnsignedQuad, "1e300", kCut, "FFFFFFFF", ""},
    // The words differ by one letter, as they always have.
    {"Text", NcType::SignedShort, R"("5")", kCut, "", R"(Not a numeric value: "5")"},
    {"Keyword", NcType::SignedShort, R"("invalid")", kCut, "", R"(Not a numeric value: "invalid")"},
    {"Boolean", NcType::SignedShort, "true", kCut, "", "Not a numeric value: true"},
    {"Null", NcType::SignedShort, "null", kCut, "", "Not a numeric value: null"},
    {"Array", NcType::UnsignedLong, "[1]", kCut, "", "Not a numeric value: [1]"},
    {"Object", NcType::UnsignedLong, R"({"a":1})", kCut, "", R"(Not a numeric value: {"a":1})"},
};

INSTANTIATE_TEST_SUITE_P(Types, LeafWriterScalar, testing::ValuesIn(kScalarCases),
                         [](const auto& info) { return info.param.name; });

TEST(LeafWriter, WritesInTheByteOrderOfTheValue) {
  Desk desk;
  desk.order = Endianess::Little;
  EXPECT_EQ(desk.write(*makeScalar("it", NcType::UnsignedLong), parsed("258")).raw, "0201");
  EXPECT_EQ(desk.write(*makeScalar("it", NcType::SignedQuad), parsed("-2")).raw, "FEFFFFFF");
  EXPECT_EQ(desk.write(*makeFloat("it"), parsed("1.5")).raw, "0000C03F");
}

TEST(LeafWriter, KeepsTheBytesOfARefusedField) {
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(false);
  const Written written = desk.write(*makeScalar("it"), parsed("256"), "A5B6");
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "A5B6");
  EXPECT_EQ(written.problem, "256 is out of range");
}

TEST(LeafWriter, ForgetsTheProblemOfTheWriteBefore) {
  Desk desk;
  Buffer raw;
  const Member::Context context(&desk.manager, raw, true);
  LeafWriter writer(&desk.manager, Endianess::Big);
  const LogCapture quiet(Logger::Warning);
  const auto text = makeScalar("text", NcType::UnsignedChar, 4);
  const auto fail = [&] {
    EXPECT_FALSE(writer.writeScalar(context, *makeScalar("it"), parsed("null"), raw));
    EXPECT_NE(writer.getProblem(), "");
  };
  fail();
  EXPECT_TRUE(writer.writeScalar(context, *makeScalar("it"), parsed("1"), raw));
  EXPECT_EQ(writer.getProblem(), "");
  fail();
  EXPECT_TRUE(writer.writeFloat(context, *makeFloat("it"), parsed("1"), raw));
  EXPECT_EQ(writer.getProblem(), "");
  fail();
  EXPECT_TRUE(writer.writeBitfield(context, *makeBitfield("it", 0, 8), parsed("1"), raw));
  EXPECT_EQ(writer.getProblem(), "");
  fail();
  EXPECT_TRUE(writer.writeText(context, parsed(R"("AB")"), 4, CharEncoding::Iso8859_1, raw));
  EXPECT_EQ(writer.getProblem(), "");
}

// JSON text has no NaN, but a document that a program made can.
TEST(LeafWriter, MakesZeroOfNaNInAnInteger) {
  Desk desk;
  json::Value node;
  node.setValue(std::numeric_limits<double>::quiet_NaN());
  desk.manager.setAllowCuttingToMinMax(true);
  EXPECT_EQ(desk.write(*makeScalar("it", NcType::UnsignedLong), node, "1234").raw, "0000");
  EXPECT_EQ(desk.write(*makeBitfield("it", 4, 4), node, "12").raw, "10");
  EXPECT_EQ(desk.write(*makeFloat("it"), node).raw, "7FC00000");
  desk.manager.setAllowCuttingToMinMax(false);
  const Written refused = desk.write(*makeBitfield("it", 4, 4), node, "12");
  EXPECT_FALSE(refused.isDone);
  EXPECT_EQ(refused.raw, "12");
}

TEST(LeafWriter, RefusesMembersWithoutABaseType) {
  Desk desk;
  for (const NcType type : {NcType::None, NcType::Float, NcType::Double, NcType::Reserved}) {
    const Written written = desk.write(*makeScalar("it", type), parsed("1"));
    EXPECT_FALSE(written.isDone);
    EXPECT_EQ(written.raw, "");
    EXPECT_EQ(written.problem, "the member has no base type");
  }
  const Written written = desk.write(*makeFloat("it", NcType::UnsignedShort), parsed("1"));
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.problem, "the member has no base type");
}

// --- Scaling ---

struct ScaledCase {
  std::string name;
  NcType type;
  Scaling scaling;
  std::string json;
  bool isCutting;
  std::string raw;
  std::string warning;
};

class LeafWriterScaled : public testing::TestWithParam<ScaledCase> {};

TEST_P(LeafWriterScaled, TurnsPhysicalValuesIntoRawOnes) {
  const ScaledCase& c = GetParam();
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(c.isCutting);
  auto member = makeScalar("it", c.type);
  member->setScaling(c.scaling);
  const Written written = desk.write(*member, parsed(c.json));
  EXPECT_EQ(written.isDone, !c.raw.empty());
  EXPECT_EQ(written.raw, c.raw);
  const Lines expected =
      c.warning.empty() ? Lines() : Lines{"[korvat/setRawValue] " + c.warning + "\n"};
  EXPECT_EQ(written.warnings, expected);
}

const std::vector<ScaledCase> kScaledCases = {
    // 23.5 * 10
    {"Double", NcType::SignedLong, {1, -1, 0}, "23.5", kRefuse, "00EB", ""},
    // snapped to 23.5 first
    {"DoubleBetweenSteps", NcType::SignedLong, {1, -1, 0}, "23.46", kRefuse, "00EB", ""},
    // -274.0 * 10 + 2740
    {"Offset", NcType::UnsignedLong, {1, -1, -2740}, "-274.0", kRefuse, "0000", ""},
    // 20 * 10 + 2740 = 2940
    {"Integer", NcType::UnsignedLong, {1, -1, -2740}, "20", kRefuse, "0B7C", ""},
    // 100 / 0.5
    {"Factor", NcType::UnsignedShort, {5, -1, 0}, "100", kRefuse, "C8", ""},
    // a factor of 0 divides by 1
    {"FactorOfZero", NcType::UnsignedShort, {0, 0, 0}, "7", kRefuse, "07", ""},
    {"Above",
     NcType::UnsignedShort,
     {5, -1, 0},
     "128",
     kRefuse,
     "",
     "overflow with value: 128 (d:128.000000)"},
    {"CutAbove", NcType::UnsignedShort, {5, -1, 0}, "128", kCut, "FF", ""},
    {"Below",
     NcType::UnsignedShort,
     {5, -1, 0},
     "-0.5",
     kRefuse,
     "",
     "overflow with value: -0.5 (d:-0.500000)"},
    {"CutBelow", NcType::SignedShort, {5, -1, 0}, "-1000.0", kCut, "80", ""},
    {"CutQuadAbove", NcType::UnsignedQuad, {1, -1, 0}, "1e30", kCut, "FFFFFFFF", ""},
    {"Text",
     NcType::UnsignedShort,
     {5, -1, 0},
     R"("invalid")",
     kCut,
     "",
     R"(not a numeric value: "invalid")"},
    {"Null", NcType::UnsignedShort, {5, -1, 0}, "null", kCut, "", "not a numeric value: null"},
};

INSTANTIATE_TEST_SUITE_P(Cases, LeafWriterScaled, testing::ValuesIn(kScaledCases),
                         [](const auto& info) { return info.param.name; });

// --- Limits and the invalid marker ---

struct LimitCase {
  std::string name;
  std::string json;
  bool isCutting;
  bool isKeyword;  // the invalid keyword is supported
  bool isDone;
  std::string raw;
};

class LeafWriterLimits : public testing::TestWithParam<LimitCase> {};

TEST_P(LeafWriterLimits, HoldForScalars) {
  const LimitCase& c = GetParam();
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(c.isCutting);
  desk.manager.setSupportInvalidKeyword(c.isKeyword);
  auto member = makeScalar("it");
  member->setMin(10);
  member->setMax(100);
  member->setInvalid(255);
  const Written written = desk.write(*member, parsed(c.json));
  EXPECT_EQ(written.isDone, c.isDone);
  EXPECT_EQ(written.raw, c.raw);
}

TEST_P(LeafWriterLimits, HoldForBitFields) {
  const LimitCase& c = GetParam();
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(c.isCutting);
  desk.manager.setSupportInvalidKeyword(c.isKeyword);
  auto member = makeBitfield("it", 0, 8);
  member->setMin(10);
  member->setMax(100);
  member->setInvalid(255);
  const Written written = desk.write(*member, parsed(c.json));
  EXPECT_EQ(written.isDone, c.isDone);
  EXPECT_EQ(written.raw, c.raw);
}

const std::vector<LimitCase> kLimitCases = {
    {"Lowest", "10", kRefuse, false, true, "0A"},
    {"Highest", "100", kRefuse, false, true, "64"},
    {"AboveIsStoredAndRefused", "101", kRefuse, false, false, "65"},
    {"BelowIsStoredAndRefused", "9", kRefuse, false, false, "09"},
    {"AboveIsCut", "101", kCut, false, true, "64"},
    {"BelowIsCut", "9", kCut, false, true, "0A"},
    {"MarkerMayLieOutside", "255", kRefuse, false, true, "FF"},
    {"MarkerIsNotCut", "255", kCut, false, true, "FF"},
    {"KeywordIsTheMarker", R"("invalid")", kRefuse, true, true, "FF"},
    {"KeywordIsNotCut", R"("invalid")", kCut, true, true, "FF"},
    {"KeywordIsComparedExactly", R"("Invalid")", kCut, true, false, ""},
    {"KeywordIsAnOption", R"("invalid")", kCut, false, false, ""},
};

INSTANTIATE_TEST_SUITE_P(Cases, LeafWriterLimits, testing::ValuesIn(kLimitCases),
                         [](const auto& info) { return info.param.name; });

TEST(LeafWriter, WritesNothingForTheKeywordWithoutAMarker) {
  Desk desk;
  desk.manager.setSupportInvalidKeyword(true);
  const Written written = desk.write(*makeScalar("it"), parsed(R"("invalid")"), "A5");
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "A5");
  EXPECT_EQ(written.warnings, Lines());
  EXPECT_EQ(written.problem, "\"invalid\" given, but the member has no invalid value");
}

TEST(LeafWriter, HoldsLimitsAgainstRawNumbers) {
  Desk desk;
  auto member = makeScalar("it", NcType::UnsignedLong);
  member->setScaling({1, -1, 0});
  member->setMax(1000);
  // 200 is raw 2000
  EXPECT_EQ(desk.write(*member, parsed("200")).raw, "03E8");
  desk.manager.setAllowCuttingToMinMax(false);
  const Written written = desk.write(*member, parsed("200"));
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "07D0");
  EXPECT_EQ(written.problem, "the value is outside the member's limits");
}

// --- Floating members ---

TEST(LeafWriterFloat, StoresSinglesAndDoubles) {
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(false);
  EXPECT_EQ(desk.write(*makeFloat("it"), parsed("1.5")).raw, "3FC00000");
  EXPECT_EQ(desk.write(*makeFloat("it"), parsed("2")).raw, "40000000");
  EXPECT_EQ(desk.write(*makeFloat("it", NcType::Double), parsed("-1.5")).raw, "BFF8000000000000");
  EXPECT_EQ(desk.write(*makeFloat("it", NcType::Double), parsed("2")).raw, "4000000000000000");
}

TEST(LeafWriterFloat, ScalesBack) {
  Desk desk;
  auto member = makeFloat("it");
  member->setScaling({1, -1, 0});
  EXPECT_EQ(desk.write(*member, parsed("1")).raw, "41200000");
  auto wide = makeFloat("it", NcType::Double);
  wide->setScaling({2, 0, 1});
  // 6 / 2 - 1
  EXPECT_EQ(desk.write(*wide, parsed("6")).raw, "4000000000000000");
}

TEST(LeafWriterFloat, CutsOrRefusesWhatASingleCannotHold) {
  Desk desk;
  EXPECT_EQ(desk.write(*makeFloat("it"), parsed("1e300")).raw, "7F7FFFFF");
  EXPECT_EQ(desk.write(*makeFloat("it"), parsed("-1e300")).raw, "FF7FFFFF");
  desk.manager.setAllowCuttingToMinMax(false);
  const Written written = desk.write(*makeFloat("it"), parsed("1e39"));
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "");
  EXPECT_EQ(written.warnings, Lines{"[korvat/setRawValue] Number overflow with value: 1e+39 "
                                    "(d:999999999999999939709166371603178586112.000000)\n"});
}

TEST(LeafWriterFloat, KeepsToItsLimits) {
  Desk desk;
  auto member = makeFloat("it");
  member->setMin(-1);
  member->setMax(1.5);
  EXPECT_EQ(desk.write(*member, parsed("7")).raw, "3FC00000");
  EXPECT_EQ(desk.write(*member, parsed("-7.5")).raw, "BF800000");
  desk.manager.setAllowCuttingToMinMax(false);
  const Written written = desk.write(*member, parsed("2"));
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "40000000");
}

TEST(LeafWriterFloat, TakesTheDecimalOfTheLargestSingle) {
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(kRefuse);
  const auto member = makeFloat("f", NcType::Float);
  // The largest single is 3.40282346638528860e38; halfway to where the next one would be lies
  // 3.40282356779733661e38.
  EXPECT_EQ(desk.write(*member, parsed("3.4028235e38")).raw, "7F7FFFFF");
  EXPECT_EQ(desk.write(*member, parsed("-3.4028235e38")).raw, "FF7FFFFF");
  EXPECT_FALSE(desk.write(*member, parsed("3.4028236e38")).isDone);
}

TEST(LeafWriterFloat, TakesTheLimitThatNoSingleEquals) {
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(kRefuse);
  const auto member = makeFloat("f", NcType::Float);
  member->setMin(-273.17);
  member->setMax(273.17);
  // The single nearest to 273.17 is 273.170013427734375.
  EXPECT_TRUE(desk.write(*member, parsed("-273.17")).isDone);
  EXPECT_TRUE(desk.write(*member, parsed("273.17")).isDone);
  EXPECT_FALSE(desk.write(*member, parsed("273.1701")).isDone);
  EXPECT_FALSE(desk.write(*member, parsed("-273.1701")).isDone);
}

TEST(LeafWriterFloat, TakesTheInvalidKeyword) {
  Desk desk;
  desk.manager.setSupportInvalidKeyword(true);
  auto member = makeFloat("it", NcType::Double);
  EXPECT_FALSE(desk.write(*member, parsed(R"("invalid")")).isDone);
  member->setInvalid(-1);
  EXPECT_EQ(desk.write(*member, parsed(R"("invalid")")).raw, "BFF0000000000000");
}

TEST(LeafWriterFloat, RefusesWhatIsNoNumber) {
  Desk desk;
  const Written written = desk.write(*makeFloat("it"), parsed(R"("1.5")"));
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.warnings, Lines{"[korvat/setRawValue] Not a numeric value: \"1.5\"\n"});
  EXPECT_EQ(written.problem, "not a number: \"1.5\"");
}

// --- Bit fields ---

struct BitsCase {
  std::string name;
  BitSlot slot;
  std::string json;
  bool isCutting;
  bool isDone;
  std::string raw;  // over A5: 1010 0101
  std::string warning;
};

class LeafWriterBits : public testing::TestWithParam<BitsCase> {};

TEST_P(LeafWriterBits, ChangeNothingButThemselves) {
  const BitsCase& c = GetParam();
  Desk desk;
  desk.manager.setAllowCuttingToMinMax(c.isCutting);
  const auto member = makeBitfield("it", c.slot.offset, c.slot.width, c.slot.isSigned);
  const Written written = desk.write(*member, parsed(c.json), "A5");
  EXPECT_EQ(written.isDone, c.isDone);
  EXPECT_EQ(written.raw, c.raw);
  const Lines expected =
      c.warning.empty() ? Lines() : Lines{"[korvat/setRawValue] " + c.warning + "\n"};
  EXPECT_EQ(written.warnings, expected);
}

const std::vector<BitsCase> kBitsCases = {
    {"FirstThree", {0, 3, false}, "2", kRefuse, true, "45", ""},
    {"MiddleThree", {2, 3, false}, "7", kRefuse, true, "BD", ""},
    {"LastFourSigned", {4, 4, true}, "-1", kRefuse, true, "AF", ""},
    {"TooLargeForItsWidth", {0, 3, false}, "8", kCut, false, "A5", ""},
    {"TooLowForItsWidth", {0, 3, true}, "-5", kCut, false, "A5", ""},
    {"WithoutWidth", {0, 0, false}, "0", kCut, false, "A5", ""},
    {"WholeByte", {0, 8, false}, "255", kRefuse, true, "FF", ""},
    {"WholeByteAbove", {0, 8, false}, "256", kRefuse, false, "A5", integerOverflow("256")},
    {"WholeByteCutAbove", {0, 8, false}, "256", kCut, true, "FF", ""},
    {"WholeByteCutBelow", {0, 8, true}, "-300", kCut, true, "80", ""},
    // A double is cut toward zero.
    {"Double", {0, 8, true}, "-2.9", kRefuse, true, "FE", ""},
    // 300 - 256: only the low-order bits of a double are kept.
    {"DoubleWraps", {0, 8, false}, "300.0", kCut, true, "2C", ""},
    {"SignedDoubleWraps", {0, 8, true}, "300.0", kCut, true, "2C", ""},
    {"NegativeDoubleWraps", {0, 8, false}, "-1.0", kCut, true, "FF", ""},
    {"HugeDoubleIsCut", {0, 8, false}, "1e300", kCut, true, "FF", ""},
    {"DoubleAbove",
     {0, 8, false},
     "300.0",
     kRefuse,
     false,
     "A5",
     "Number overflow with value: 300.0 (d:300.000000)"},
    {"SignedDoubleAbove",
     {0, 8, true},
     "127.5",
     kRefuse,
     false,
     "A5",
     "Number overflow with value: 127.5 (d:127.500000)"},
    {"SignedDoubleBelow",
     {0, 8, true},
     "-128.5",
     kRefuse,
     false,
     "A5",
     "Number overflow with value: -128.5 (d:-128.500000)"},
    {"Text", {0, 8, false}, R"("1")", kCut, false, "A5", R"(Not a numeric value: "1")"},
};

INSTANTIATE_TEST_SUITE_P(Cases, LeafWriterBits, testing::ValuesIn(kBitsCases),
                         [](const auto& info) { return info.param.name; });

TEST(LeafWriterBits, WrapsADoubleBeforeItCutsToTheLimits) {
  Desk desk;
  auto member = makeBitfield("it", 0, 8);
  member->setMax(40);
  // 300 wraps to 44, which is above 40.
  EXPECT_EQ(desk.write(*member, parsed("300.0")).raw, "28");
  member->setMax(50);
  EXPECT_EQ(desk.write(*member, parsed("300.0")).raw, "2C");
}

TEST(LeafWriterBits, ScalesBack) {
  Desk desk;
  auto member = makeBitfield("it", 4, 4);
  member->setScaling({5, -1, 0});
  EXPECT_EQ(desk.write(*member, parsed("1.5"), "F0").raw, "F3");
  desk.manager.setAllowCuttingToMinMax(false);
  const Written written = desk.write(*member, parsed("200"), "F0");
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "F0");
  EXPECT_EQ(written.warnings,
            Lines{"[korvat/setRawValue] overflow with value: 200 (d:200.000000)\n"});
}

TEST(LeafWriterBits, TellsTheWidthThatWasTooSmall) {
  Desk desk;
  EXPECT_EQ(desk.write(*makeBitfield("it", 0, 3), parsed("9")).problem,
            "9 does not fit a bit field of 3 bits");
}

// --- Enumerations ---

class LeafWriterEnum : public testing::Test {
 protected:
  LeafWriterEnum() : _types(test::scalar("unsigned short")) {}

  Written write(const std::string& json, const std::string& type = "power_t") {
    LogCapture log(Logger::Warning);
    Buffer raw;
    const Member::Context context(&_types.manager(), raw, true);
    LeafWriter writer(&_types.manager(), Endianess::Big);
    const auto member = makeEnum("it", type);
    const bool isDone = writer.writeEnum(context, *member, parsed(json), raw);
    return {isDone, util::BinaryUtils::toString(raw), log.texts(Logger::Warning),
            writer.getProblem()};
  }

 private:
  test::OwnTypes _types;
};

TEST_F(LeafWriterEnum, TakesNamesAndNumbersInEachForm) {
  EXPECT_EQ(write(R"("PWR_ON")").raw, "01");
  EXPECT_EQ(write(R"("1")").raw, "01");
  EXPECT_EQ(write("1").raw, "01");
  EXPECT_EQ(write("1.9").raw, "01");
  EXPECT_EQ(write("-1.9").raw, "FF");
  EXPECT_EQ(write(R"("PWR_NUL")").raw, "FF");
  EXPECT_EQ(write(R"("-1")").raw, "FF");
  // Numbers without a name are taken too.
  EXPECT_EQ(write("7").raw, "07");
  EXPECT_EQ(write(R"("7")").raw, "07");
  EXPECT_EQ(write("127").raw, "7F");
  EXPECT_EQ(write("-128").raw, "80");
}

TEST_F(LeafWriterEnum, RefusesWhatNamesNoValue) {
  for (const char* text : {R"("PWR_OF")", R"("pwr_on")", R"("1x")", R"("")", "true", "null", "[1]",
                           "{}", "128", "-129", R"("128")", "300.0", "18446744073709551615"}) {
    const Written written = write(text);
    EXPECT_FALSE(written.isDone) << text;
    EXPECT_EQ(written.raw, "") << text;
    EXPECT_EQ(written.warnings,
              Lines{std::string("[korvat/getEnum] not a numeric value: ") + text + "\n"});
  }
  EXPECT_EQ(write("null").problem, "a value of power_t is missing");
  EXPECT_EQ(write(R"("PWR_OF")").problem, R"("PWR_OF" is neither a name nor a number of power_t)");
}

TEST_F(LeafWriterEnum, RefusesAnUnknownType) {
  const Written written = write("1", "nothing_t");
  EXPECT_FALSE(written.isDone);
  EXPECT_EQ(written.raw, "");
  EXPECT_EQ(written.warnings, Lines{"[korvat/getEnum] unknown enum: nothing_t\n"});
  EXPECT_EQ(written.problem, "unknown enumeration type nothing_t");
}

// --- Text ---

struct TextCase {
  std::string name;
  std::string text;
  unsigned byteCount;
  CharEncoding encoding;
  std::string raw;
  bool isCut;
};

class LeafWriterText : public testing::TestWithParam<TextCase> {};

TEST_P(LeafWriterText, FillsItsArray) {
  const TextCase& c = GetParam();
  const LogCapture log(Logger::Warning);
  TypeManager manager("drv");
  Buffer raw;
  const Member::Context context(&manager, raw, true);
  LeafWriter writer(&manager, Endianess::Big);
  EXPECT_TRUE(writer.writeText(context, json::Value(c.text), c.byteCount, c.encoding, raw));
  EXPECT_EQ(util::BinaryUtils::toString(raw), c.raw);
  const Lines expected =
      c.isCut ? Lines{"[JsonConverter::getString] string truncated: " + c.text + "\n"} : Lines();
  EXPECT_EQ(log.texts(Logger::Warning), expected);
  const std::string problem =
      "the text is too long: it was cut to " + std::to_string(c.byteCount) + " bytes";
  EXPECT_EQ(writer.getProblem(), c.isCut ? problem : "");
}

const std::vector<TextCase> kTextCases = {
    {"Padded", "AB", 4, CharEncoding::Iso8859_1, "41420000", false},
    {"Whole", "ABCD", 4, CharEncoding::Iso8859_1, "41424344", false},
    {"Cut", "ABCDE", 4, CharEncoding::Iso8859_1, "41424344", true},
    {"Empty", "", 2, CharEncoding::Iso8859_1, "0000", false},
    {"IntoNothing", "A", 0, CharEncoding::Iso8859_1, "", true},
    {"Latin", "\xC3\xA9", 2, CharEncoding::Iso8859_1, "E900", false},
    {"Utf8", "\xC3\xA9", 3, CharEncoding::Utf8, "C3A900", false},
    {"Utf8CutBetweenCharacters", "A\xC3\xA9", 2, CharEncoding::Utf8, "4100", true},
    {"Utf16", "A\xC3\xA9", 6, CharEncoding::Utf16, "004100E90000", false},
    {"Utf16CutBetweenCharacters", "A\xF0\x9F\x98\x80", 4, CharEncoding::Utf16, "00410000", true},
    {"Utf32", "A\xF0\x9F\x98\x80", 8, CharEncoding::Utf32, "000000410001F600", false},
    {"Utf32Cut", "AB", 4, CharEncoding::Utf32, "00000041", true},
};

INSTANTIATE_TEST_SUITE_P(Cases, LeafWriterText, testing::ValuesIn(kTextCases),
                         [](const auto& info) { return info.param.name; });

TEST(LeafWriter, RefusesWhatIsNoText) {
  const LogCapture log(Logger::Warning);
  TypeManager manager("drv");
  Buffer raw = test::bytesOf("A5");
  const Member::Context context(&manager, raw, true);
  LeafWriter writer(&manager, Endianess::Big);
  EXPECT_FALSE(writer.writeText(context, parsed("[65]"), 1, CharEncoding::Utf8, raw));
  EXPECT_EQ(writer.getProblem(), "expected a text, found: [65]");
  EXPECT_FALSE(writer.writeText(context, json::Value(), 1, CharEncoding::Utf8, raw));
  EXPECT_EQ(writer.getProblem(), "a text is missing");
  EXPECT_EQ(util::BinaryUtils::toString(raw), "A5");
  EXPECT_EQ(log.texts(), (Lines{"[JsonConverter::getString] expected string, found: [65]\n",
                                "[JsonConverter::getString] expected string, found: null\n"}));
}

}  // namespace
}  // namespace zavri::korvat
