#include "korvat/convert/ConversionPlan.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "korvat/convert/JsonConverter.h"
#include "korvat/members/Limits.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/NvType.h"
#include "tests/LogCapture.h"
#include "tests/builder/TypeDump.h"
#include "tests/convert/Encoding.h"
#include "tests/convert/RandomTypes.h"
#include "tests/convert/StandardValues.h"
#include "tests/convert/TypeXml.h"
#include "tests/members/MemberTree.h"

// Plans against the walk of the members, which defines what they have to give.
namespace zavri::korvat {
namespace {

using base::Buffer;
using base::Endianess;
using base::Logger;
using test::LogCapture;
using test::Random;

std::string hexOf(const Buffer& buffer) {
  return util::BinaryUtils::toString(buffer);
}

Buffer drawBytes(Random& random, unsigned byteCount) {
  Buffer buffer;
  buffer.setSize(byteCount);
  const unsigned kind = random.below(4);
  for (unsigned i = 0; i < byteCount; ++i) {
    const auto byte = static_cast<std::uint8_t>(random.bits());
    buffer.getData()[i] = kind == 0 ? 0 : kind == 1 ? 0xFF : kind == 2 ? byte % 8 : byte;
  }
  return buffer;
}

// Checks one type's plan with many values.
class PlanCheck {
 public:
  PlanCheck(TypeManager& manager, const VarType& type)
      : _manager(manager), _type(type), _plan(makePlan()) {}

  bool hasPlan() const { return _plan != nullptr; }

  // True when the plan itself converts a value of so many bytes.
  bool reads(unsigned byteCount) const {
    Buffer raw;
    raw.setSize(byteCount);
    std::string text;
    return _plan->rawToJsonText(raw, text, false);
  }

  // True when the plan itself converts the document, and its text.
  bool takes(const std::string& json) {
    const json::Value value = test::parsed(json);
    checkEncoding(value, {});
    checkText(json, {});
    Buffer raw;
    const bool takesDocument = _plan->jsonToRaw(value, raw);
    EXPECT_EQ(_plan->jsonTextToRaw(json, raw), takesDocument) << json;
    return takesDocument;
  }

  void check(Random& random) {
    unsigned byteCount = 0;
    ASSERT_TRUE(_type.getMaxSize(&_manager, byteCount));
    Buffer raw = drawBytes(random, byteCount);
    checkDecoding(raw);
    if (byteCount > 0) {
      raw.setSize(random.below(byteCount));
      checkDecoding(raw);
    }
    raw = drawBytes(random, byteCount);
    json::Value value;
    ASSERT_TRUE(walk().rawToJson(raw, value));
    const Buffer before = drawBytes(random, random.below(byteCount + 3));
    checkEncoding(value, before);
    alter(random, value);
    checkEncoding(value, before);
    checkText(value.stringify(), before);
    checkText(value.stringify(2), before);
    for (int i = 0; i < 2; ++i) checkText(garble(random, value.stringify()), before);
  }

 private:
  std::unique_ptr<const ConversionPlan> makePlan() {
    return ConversionPlan::make(_type, _enums,
                                [this](const TypeId& id) { return _manager.getType(id); });
  }

  JsonConverter walk() { return JsonConverter(&_manager, _type, Endianess::Big, false); }

  void checkDecoding(const Buffer& raw) {
    json::Value expected;
    const LogCapture log(Logger::Debug);
    const bool isDone = walk().rawToJson(raw, expected);
    const bool isSilent = log.lines().empty();

    json::Value value("untouched");
    std::string text = "untouched";
    const bool isSupported = _manager.isSupportInvalidKeyword();
    const bool isCovered = _plan->rawToJson(raw, value, isSupported);
    EXPECT_EQ(_plan->rawToJsonText(raw, text, isSupported), isCovered);
    if (isCovered) {
      EXPECT_TRUE(isDone && isSilent);
      EXPECT_EQ(value.stringify(), expected.stringify());
      expectSameNumberTypes(value, expected);
      EXPECT_EQ(text, expected.stringify());
    } else {
      EXPECT_EQ(value.stringify() + text, "\"untouched\"untouched");
    }
  }

  static void expectSameNumberTypes(const json::Value& a, const json::Value& b) {
    EXPECT_EQ(a.getNumberType(), b.getNumberType());
    for (unsigned i = 0; a.isArray() && i < a.getSize(); ++i) expectSameNumberTypes(a[i], b[i]);
    for (const auto& [name, member] : a.getPropertyMap()) expectSameNumberTypes(member, b[name]);
  }

  void checkEncoding(const json::Value& value, const Buffer& before) {
    Buffer expected = before;
    const LogCapture log(Logger::Debug);
    JsonConverter converter = walk();
    const bool isDone = converter.jsonToRaw(value, expected);
    const bool isClean = isDone && log.lines().empty() && converter.getProblems().empty();

    Buffer raw = before;
    if (_plan->jsonToRaw(value, raw)) {
      EXPECT_TRUE(isClean) << value.stringify();
      EXPECT_EQ(hexOf(raw), hexOf(expected)) << value.stringify();
      ++encoded;
    } else {
      EXPECT_EQ(hexOf(raw), hexOf(before));
    }
  }

  void checkText(const std::string& text, const Buffer& before) {
    json::Value value;
    std::string error;
    const bool isJson = json::Value::parse(text, value, error);
    Buffer expected = before;
    const LogCapture log(Logger::Debug);
    const bool isDone = isJson && walk().jsonToRaw(value, expected) && log.lines().empty();

    Buffer raw = before;
    if (_plan->jsonTextToRaw(text, raw)) {
      EXPECT_TRUE(isDone) << text;
      EXPECT_EQ(hexOf(raw), hexOf(expected)) << text;
      ++parsed;
    } else {
      EXPECT_EQ(hexOf(raw), hexOf(before));
    }
  }

  // `text` with one character changed, left out or added.
  static std::string garble(Random& random, std::string text) {
    constexpr std::string_view kCharacters = "{}[]:,\"\\ \n0159-+.eEtnx";
    const std::size_t position = random.below(static_cast<unsigned>(text.size()));
    const char other = kCharacters[random.below(kCharacters.size())];
    const unsigned kind = random.below(3);
    if (kind == 0) text[position] = other;
    if (kind == 1) text.erase(position, 1);
    if (kind == 2) text.insert(position, 1, other);
    return text;
  }

  // Puts something else in the place of some of the leaves.
  static void alter(Random& random, json::Value& node) {
    if (node.isArray()) {
      const unsigned count = node.getSize();
      for (unsigned i = 0; i < count; ++i) alter(random, node[i]);
      if (random.chance(3)) node[count].setValue(1);
    } else if (node.isObject()) {
      std::vector<std::string> names;
      for (const auto& [name, member] : node.getPropertyMap()) names.push_back(name);
      for (const std::string& name : names) alter(random, node[name]);
      if (random.chance(3)) node["unknown"].setValue(1);
    } else if (random.chance(30)) {
      alterLeaf(random, node);
    }
  }

  static void alterLeaf(Random& random, json::Value& node) {
    switch (random.below(11)) {
      case 0:
        return node.setValue(static_cast<std::int64_t>(random.bits()));
      case 1:
        return node.setValue(random.bits());
      case 2:
        return node.setValue(static_cast<double>(random.between(-1'000'000, 1'000'000)) / 1000);
      case 3:
        return node.setValue(static_cast<double>(random.between(-40'000, 70'000)) / 2);
      case 4:
        return node.setValue(std::int32_t(random.between(-300, 300)));
      case 5:
        return node.setValue(1e300);
      case 6:
        return node.setValue(-0.0);
      case 7:
        return node.setValue("invalid");
      case 8:
        return node.setValue("a\"\xC3\xA9\\");
      case 9:
        return node.setValue(random.chance(50) ? "PWR_ON" : "7");
      default:
        return node.clear();
    }
  }

  TypeManager& _manager;
  const VarType& _type;
  EnumTables _enums;
  std::unique_ptr<const ConversionPlan> _plan;

 public:
  unsigned encoded = 0;  // documents that the plan took
  unsigned parsed = 0;   // texts that it took
};

TEST(ConversionPlan, GivesWhatTheWalkGivesForRandomTypes) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums", test::randomEnums());
  files.write(TypeId::StdPrefix, "nvs", test::randomNvs());
  TypeManager manager = files.makeManager();
  constexpr std::uint64_t kSeed = 20'240;
  SCOPED_TRACE(kSeed);
  Random random(kSeed);
  unsigned planned = 0;
  unsigned encoded = 0;
  unsigned parsed = 0;
  for (int i = 0; i < 2000; ++i) {
    manager.setSupportInvalidKeyword(random.chance(50));
    NvType type;
    type.setMember(test::RandomTypes(random, {}).make());
    PlanCheck plan(manager, type);
    if (!plan.hasPlan()) continue;
    ++planned;
    for (int j = 0; j < 4; ++j) plan.check(random);
    encoded += plan.encoded;
    parsed += plan.parsed;
    if (testing::Test::HasFailure()) {
      FAIL() << "case " << i << "\n" << builder::dumpMember(*type.getMember());
    }
  }
  EXPECT_GT(planned, 800u);
  EXPECT_GT(encoded, 2000u);
  EXPECT_GT(parsed, 500u);
}

TEST(ConversionPlan, GivesWhatTheWalkGivesForEveryStandardType) {
  TypeManager manager = test::makeStandardTypes();
  manager.setAllowCuttingToMinMax(true);
  Random random(7);
  unsigned planned = 0;
  for (const VarType* type : test::findStandardLayouts(manager)) {
    SCOPED_TRACE(type->getTypeId().toString());
    PlanCheck plan(manager, *type);
    if (!plan.hasPlan()) continue;
    ++planned;
    for (int i = 0; i < 50; ++i) {
      manager.setSupportInvalidKeyword(i % 2 != 0);
      plan.check(random);
    }
  }
  EXPECT_GT(planned, 200u);
}

// --- Through the manager: the first conversion walks, the later ones follow the plan ---

TEST(PlannedConversion, ShowsEveryRawNumberOfTwoBytesAsTheWalkDoes) {
  for (const char* fields : {"", "<scaling><a>5</a><b>-3</b><c>0</c></scaling>",
                             "<scaling><a>-7</a><b>-5</b><c>12</c></scaling>",
                             "<scaling><a>3</a><b>0</b><c>-9</c></scaling>",
                             "<scaling><a>1</a><b>2</b><c>0</c></scaling>",
                             "<scaling><a>1</a><b>-7</b><c>0</c></scaling>"}) {
    test::OwnTypes types(test::scalar("signed long", fields));
    const TypeId id(ResourceType::Nv, "", "_x");
    const VarType* type = types.manager().getVarType(id);
    ASSERT_NE(type, nullptr);
    JsonConverter walk(&types.manager(), *type, Endianess::Big, false);
    for (unsigned i = 0; i < 65'536; ++i) {
      const std::uint8_t bytes[] = {static_cast<std::uint8_t>(i >> 8),
                                    static_cast<std::uint8_t>(i)};
      const Buffer raw(bytes, 2);
      json::Value expected;
      ASSERT_TRUE(walk.rawToJson(raw, expected));
      std::string text;
      ASSERT_TRUE(types.manager().rawToJsonText(id, raw, text));
      ASSERT_EQ(text, expected.stringify()) << fields;
      Buffer back;
      ASSERT_TRUE(types.manager().jsonTextToRaw(id, text, back));
      ASSERT_EQ(hexOf(back), hexOf(raw)) << fields << text;
    }
  }
}

struct TextCase {
  std::string name;
  std::string text;
  std::string raw;  // "failed" for a text that is refused
};
class PlannedText : public testing::TestWithParam<TextCase> {};

// SNVT_x: a power of two tenths a step, a word, two names of states.
TEST_P(PlannedText, IsReadLikeADocument) {
  test::OwnTypes types(test::structure({
      {"level", test::scalar("unsigned short", test::scaling(2, -1, 0))},
      {"count", test::scalar("signed long")},
      {"state", test::enumeration("power_t", test::arraySize(2))},
  }));
  const LogCapture quiet(Logger::Error);
  const TypeId id(ResourceType::Nv, "", "_x");
  json::Value first;
  ASSERT_TRUE(types.manager().rawToJson(id, test::bytesOf("0000000000"), first));

  Buffer raw = test::bytesOf("FFFFFFFFFF");
  const bool isDone = types.manager().jsonTextToRaw(id, GetParam().text, raw);
  EXPECT_EQ(isDone ? hexOf(raw) : "failed", GetParam().raw);
}

const std::vector<TextCase> kTextCases = {
    // 2.4 is 12 steps of 0.2; 258 = 0x0102
    {"Compact", R"({"level":2.4,"count":258,"state":["PWR_ON","PWR_OFF"]})", "0C01020100"},
    {"WithBlanks",
     " { \"level\" : 2.4 ,\n\"count\":\t258,\"state\":[ \"PWR_ON\" , \"PWR_NUL\" ] } ",
     "0C010201FF"},
    {"InAnotherOrder", R"({"count":258,"state":["PWR_ON","PWR_OFF"],"level":2.4})", "0C01020100"},
    {"WithAnExponent", R"({"level":24e-1,"count":258,"state":["PWR_ON","PWR_OFF"]})", "0C01020100"},
    {"WithEscapes", R"({"l\u0065vel":2.4,"count":258,"state":["PWR_\u004fN","1"]})", "0C01020101"},
    {"BeyondTheRange", R"({"level":1e9,"count":-99999999999999999999,"state":["PWR_ON","0"]})",
     "FF80000100"},
    {"OfTwoWithOneNameTheLater",
     R"({"level":9,"level":2.4,"count":258,"state":["PWR_ON","PWR_OFF"]})", "0C01020100"},
    {"LeadingZero", R"({"level":02.4,"count":258,"state":["PWR_ON","PWR_OFF"]})", "failed"},
    {"NoDigitBehindThePoint", R"({"level":2.,"count":258,"state":["PWR_ON","PWR_OFF"]})", "failed"},
    {"OnlyASign", R"({"level":2.4,"count":-,"state":["PWR_ON","PWR_OFF"]})", "failed"},
    {"NewLineInAName", "{\"level\":2.4,\"count\":258,\"state\":[\"PWR_ON\n\",\"PWR_OFF\"]}",
     "failed"},
    {"ZeroWithAnExponent", R"({"level":0e3,"count":-0.0E-5,"state":["PWR_ON","PWR_OFF"]})",
     "0000000100"},
    {"ZeroWithAHugeExponent", R"({"level":0e309,"count":258,"state":["PWR_ON","PWR_OFF"]})",
     "failed"},
    {"CutShort", R"({"level":2.4,"count":258,"state":["PWR_ON","PWR_OFF"])", "failed"},
    {"TextBehind", R"({"level":2.4,"count":258,"state":["PWR_ON","PWR_OFF"]} x)", "failed"},
    {"MemberMissing", R"({"level":2.4,"state":["PWR_ON","PWR_OFF"]})", "failed"},
    {"UnknownMember", R"({"level":2.4,"count":258,"state":["PWR_ON","PWR_OFF"],"more":1})",
     "failed"},
    {"UnknownName", R"({"level":2.4,"count":258,"state":["PWR_ON","PWR_HALF"]})", "failed"},
    {"Empty", "", "failed"},
};
INSTANTIATE_TEST_SUITE_P(Texts, PlannedText, testing::ValuesIn(kTextCases),
                         [](const auto& info) { return info.param.name; });

class PlainText : public testing::TestWithParam<TextCase> {};

// The plan alone: what it leaves to the walk gives the same, only later.
TEST_P(PlainText, IsTakenByThePlan) {
  test::OwnTypes types(test::structure({
      {"level", test::scalar("unsigned short", test::scaling(2, -1, 0))},
      {"count", test::scalar("signed long", test::tag("min", "-300") + test::tag("max", "300"))},
      {"low", test::signedBits(4, 4)},
      {"ratio", test::floating("float")},
  }));
  TypeManager& manager = types.manager();
  const VarType* type = manager.getVarType(TypeId(ResourceType::Nv, "", "_x"));
  EnumTables enums;
  const auto plan =
      ConversionPlan::make(*type, enums, [&](const TypeId& id) { return manager.getType(id); });
  ASSERT_NE(plan, nullptr);
  Buffer raw = test::bytesOf("FFFFFFF0FFFFFFFF");
  EXPECT_TRUE(plan->jsonTextToRaw(GetParam().text, raw));
  EXPECT_EQ(hexOf(raw), GetParam().raw);

  json::Value value;
  std::string error;
  ASSERT_TRUE(json::Value::parse(GetParam().text, value, error)) << error;
  raw = test::bytesOf("FFFFFFF0FFFFFFFF");
  EXPECT_TRUE(plan->jsonToRaw(value, raw));
  EXPECT_EQ(hexOf(raw), GetParam().raw);
}

// 2.4 is 12 steps of 0.2, 51 is 255 of them; -300 = 0xFED4, 300 = 0x012C; -8 and 7 in four bits are
// 8 and 7, and the four beside them stay; 1.5 = 0x3FC00000, 0.1 = 0x3DCCCCCD.
const std::vector<TextCase> kPlainTextCases = {
    {"OfFractions", R"({"level":2.4,"count":258,"low":-8,"ratio":1.5})", "0C0102F83FC00000"},
    {"OfTheLowest", R"({"level":0,"count":-300,"low":-8,"ratio":-1.5})", "00FED4F8BFC00000"},
    {"OfTheHighest", R"({"level":51,"count":300,"low":7,"ratio":0.1})", "FF012CF73DCCCCCD"},
    {"WithBlanksEverywhere",
     "\t{ \"level\" :\r\n2.4 , \"count\" : 258 ,\"low\":-8 , \"ratio\":1.5 } ", "0C0102F83FC00000"},
    {"WithExponents", R"({"level":24e-1,"count":2.58E2,"low":-8e+0,"ratio":0.015E2})",
     "0C0102F83FC00000"},
    {"OfManyDigits",
     R"({"level":2.4000000000000000,"count":258.00000000000000,"low":-8,"ratio":1.50000000000000000})",
     "0C0102F83FC00000"},
    {"OfZeros", R"({"level":0.0,"count":-0,"low":0,"ratio":0})", "000000F000000000"},
};
INSTANTIATE_TEST_SUITE_P(Texts, PlainText, testing::ValuesIn(kPlainTextCases),
                         [](const auto& info) { return info.param.name; });

TEST(PlannedConversion, FollowsTheOptionsThatAreSetLater) {
  test::OwnTypes types(test::structure(
      {{"a", test::scalar("unsigned short", test::invalid("255") + test::tag("max", "9"))}}));
  TypeManager& manager = types.manager();
  const TypeId id(ResourceType::Nv, "", "_x");
  EXPECT_EQ(types.decode("FF"), R"({"a":255})");
  EXPECT_EQ(types.decode("FF"), R"({"a":255})");
  manager.setSupportInvalidKeyword(true);
  EXPECT_EQ(types.decode("FF"), R"({"a":"invalid"})");

  Buffer raw;
  EXPECT_TRUE(manager.jsonTextToRaw(id, R"({"a":12})", raw));
  EXPECT_EQ(hexOf(raw), "09");
  manager.setAllowCuttingToMinMax(false);
  const LogCapture quiet(Logger::Error);
  EXPECT_FALSE(manager.jsonTextToRaw(id, R"({"a":12})", raw));
}

TEST(PlannedConversion, SaysEveryWalkAtTraceLevel) {
  test::OwnTypes types(test::scalar("unsigned short"));
  EXPECT_EQ(types.decode("07"), "7");
  const LogCapture log(Logger::Trace);
  EXPECT_EQ(types.decode("07"), "7");
  EXPECT_FALSE(log.lines().empty());
}

TEST(PlannedConversion, ReportsAMissingEnumerationEachTime) {
  test::OwnTypes types(test::enumeration("missing_t"));
  for (int i = 0; i < 3; ++i) {
    const LogCapture log(Logger::Warning);
    EXPECT_EQ(types.decode("07"), R"("7")");
    EXPECT_EQ(log.texts(), std::vector<std::string>{
                               "[korvat] could not resolve enum 0000000000000000-0/missing_t\n"});
  }
}

// A reference leads to another type in a manager whose sets are others.
TEST(PlannedConversion, ResolvesReferencesInTheManagerThatConverts) {
  test::TempCatalogue one;
  test::TempCatalogue other;
  one.write(
      TypeId::StdPrefix, "nvs",
      test::nvt("_x", test::reference("SNVT_y")) + test::nvt("_y", test::scalar("unsigned short")));
  other.write(TypeId::StdPrefix, "nvs",
              test::nvt("_x", test::reference("SNVT_y")) +
                  test::nvt("_y", test::scalar("unsigned short", test::scaling(1, -1, 0))));
  TypeManager manager = one.makeManager();
  TypeManager second = other.makeManager();
  const TypeId id(ResourceType::Nv, "", "_x");
  const Buffer raw = test::bytesOf("07");
  std::string text;
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(manager.rawToJsonText(id, raw, text));
    EXPECT_EQ(text, "7");
    EXPECT_TRUE(second.rawToJsonText(id, raw, text));
    EXPECT_EQ(text, "0.7");
  }
  const TypeManager copy = second;
  manager = copy;
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(manager.rawToJsonText(id, raw, text));
    EXPECT_EQ(text, "0.7");
  }
}

TEST(PlannedConversion, OutlivesTheManagerItWasCopiedFrom) {
  test::TempCatalogue files;
  files.write(TypeId::StdPrefix, "enums", test::sharedEnums());
  files.write(TypeId::StdPrefix, "nvs", test::nvt("_x", test::enumeration("power_t")));
  const TypeId id(ResourceType::Nv, "", "_x");
  const Buffer raw = test::bytesOf("01");
  std::string text;
  auto first = std::make_unique<TypeManager>(files.makeManager());
  EXPECT_TRUE(first->rawToJsonText(id, raw, text));
  EXPECT_TRUE(first->rawToJsonText(id, raw, text));
  TypeManager copy = *first;
  first.reset();
  for (int i = 0; i < 2; ++i) {
    EXPECT_TRUE(copy.rawToJsonText(id, raw, text));
    EXPECT_EQ(text, R"("PWR_ON")");
  }
}

TEST(PlannedConversion, ServesManyThreadsThroughOneManager) {
  TypeManager manager = test::makeStandardTypes();
  manager.setAllowCuttingToMinMax(true);
  const std::vector<const VarType*> types = test::findStandardLayouts(manager);
  static_cast<void>(
      manager.getResourceFileSet(TypeId::StdPrefix).getGroup(ResourceType::Enum, true, &manager));
  const auto convertAll = [&](std::string& texts) {
    for (const VarType* type : types) {
      Buffer raw;
      raw.setSize(static_cast<unsigned>(type->getSize()));
      std::string text;
      for (int i = 0; i < 3; ++i) {
        if (!manager.rawToJsonText(type->getTypeId(), raw, text)) text = "failed";
      }
      texts += text;
      json::Value value;
      texts += manager.rawToJson(type->getTypeId(), raw, value) ? value.stringify() : "failed";
    }
  };
  std::vector<std::string> texts(4);
  std::vector<std::thread> threads;
  for (std::string& text : texts) threads.emplace_back(convertAll, std::ref(text));
  for (std::thread& thread : threads) thread.join();

  std::string expected;
  for (const VarType* type : types) {
    Buffer raw;
    raw.setSize(static_cast<unsigned>(type->getSize()));
    json::Value value;
    ASSERT_TRUE(JsonConverter(&manager, *type, Endianess::Big, false).rawToJson(raw, value));
    expected += value.stringify() + value.stringify();
  }
  for (const std::string& text : texts) EXPECT_EQ(text, expected);
}

struct LayoutCase {
  std::string name;
  std::string xml;
  bool hasPlan;
  bool isConverted = true;  // values of it, too
};
class PlannedLayout : public testing::TestWithParam<LayoutCase> {};

TEST_P(PlannedLayout, IsOneThatAPlanCovers) {
  test::OwnTypes types(GetParam().xml);
  const LogCapture quiet(Logger::Error);
  const VarType* type = types.manager().getVarType(TypeId(ResourceType::Nv, "", "_x"));
  ASSERT_NE(type, nullptr);
  PlanCheck check(types.manager(), *type);
  EXPECT_EQ(check.hasPlan(), GetParam().hasPlan);
  Random random(1);
  unsigned byteCount = 0;
  const bool isSmall = type->getMaxSize(&types.manager(), byteCount) && byteCount < 1000;
  if (isSmall && check.hasPlan()) {
    EXPECT_TRUE(check.reads(byteCount));
  }
  const bool isConverted = GetParam().isConverted && isSmall && check.hasPlan();
  for (int i = 0; i < 5 && isConverted; ++i) check.check(random);
}

// A byte inside as many structures.
std::string nested(int depth) {
  std::string xml = test::scalar("unsigned short");
  for (int i = 0; i < depth; ++i) xml = test::structure({{"m", xml}});
  return xml;
}

// A structure of as many members like that, with `others` behind them.
std::string wide(int count, const std::string& member, const std::string& others = "") {
  std::string members;
  for (int i = 0; i < count; ++i) {
    members += test::tag("member", member + test::tag("p-name", "m" + std::to_string(i)));
  }
  return "<aggregate cat='struct'>" + test::tag("members", members + others) + "</aggregate>";
}

// 65,536 structures, each with so many that are empty.
std::string emptyElements(int count) {
  return test::structure({{"e", test::structure({}, test::arraySize(count))}},
                         test::arraySize(65'536));
}

// A member behind three bits that do not end their byte, and a number behind it.
std::string behindBits(const std::string& member) {
  return test::structure(
      {{"before", test::bits(2, 3)}, {"it", member}, {"after", test::scalar("unsigned long")}});
}

const std::string kLongText = test::scalar("unsigned char", test::arraySize(65'536));
const std::string kByte = test::scalar("unsigned short");

const std::vector<LayoutCase> kLayoutCases = {
    {"Scalar", kByte, true},
    {"Single", test::floating("float"), true},
    {"BitFields", test::structure({{"a", test::bits(0, 3)}, {"b", test::signedBits(3, 5)}}), true},
    {"ScalarBehindBits", behindBits(test::scalar("signed long")), true},
    {"FloatBehindBits", behindBits(test::floating("double float")), true},
    {"EnumerationBehindBits", behindBits(test::enumeration("power_t")), true},
    {"StructureBehindBits", behindBits(test::structure({{"a", kByte}})), true},
    {"UnionBehindBits", behindBits(test::unionOf({{"a", kByte}})), true},
    {"ReferenceBehindBits", behindBits(test::reference("SNVT_word")), true},
    {"ReferenceToBitsBehindBits", behindBits(test::reference("SNVT_low")), true},
    {"ArrayBehindBits", behindBits(test::scalar("unsigned long", test::arraySize(2))), true},
    {"ArrayOfBitsBehindBits", behindBits(test::bits(0, 8, test::arraySize(2))), true},
    {"TextBehindBits", behindBits(test::scalar("unsigned char", test::arraySize(3))), true},
    {"MemberBehindAUnion",
     test::structure({{"before", kByte},
                      {"u", test::unionOf({{"a", kByte},
                                           {"b", test::scalar("unsigned quad")},
                                           {"c", test::scalar("signed long")}})},
                      {"after", test::scalar("unsigned long")}}),
     true},
    {"UnionOfNothing",
     test::structure({{"before", kByte},
                      {"u", test::unionOf({{"empty", test::structure({})}})},
                      {"after", test::scalar("unsigned long")}}),
     true},
    {"UnionInAUnion",
     test::structure(
         {{"before", kByte},
          {"u", test::unionOf({{"a", behindBits(test::bits(3, 2))},
                               {"v", test::unionOf({{"b", test::scalar("signed long")}})}})},
          {"after", test::scalar("unsigned long")}}),
     true},
    {"EmptyStructure", test::structure({}), true},
    {"Enumeration", test::enumeration("power_t"), true},
    {"MissingEnumeration", test::enumeration("missing_t"), false},
    {"CharacterEncoding", test::enumeration("char_encoding_t"), false},
    {"MemberOfNoName", test::structure({{"", kByte}}), false},
    {"TwoMembersOfOneName", test::structure({{"a", kByte}, {"a", kByte}}), false},
    {"ArrayBehindCharSet",
     test::structure({{"char_set", kByte}, {"text", kByte, test::arraySize(4)}}), false},
    {"BrokenReference", test::reference("SNVT_missing"), false},
    {"ReferenceToAStructureInItself", test::reference("SNVT_endless"), false},
    {"ReferenceToItself", test::reference("SNVT_x"), false},
    {"ManyStructuresSideBySide", wide(300, nested(1)), true},
    {"ManyArraysSideBySide", wide(300, test::structure({{"a", kByte, test::arraySize(2)}})), true},
    {"Union", test::unionOf({{"a", kByte}, {"b", test::scalar("unsigned long")}}), true},
    {"Text", test::scalar("unsigned char", test::arraySize(5)), true},
    {"TextOf256Bytes", test::scalar("unsigned char", test::arraySize(256)), true},
    {"TextOf257Bytes", test::scalar("unsigned char", test::arraySize(257)), true},
    {"ManyIntegers", test::scalar("s32_type", test::arraySize(249)), true},
    {"ManyDecimals", test::scalar("s32_type", test::scaling(1, -5, 0) + test::arraySize(249)),
     true},
    {"ManyScaledNumbers", test::scalar("s32_type", test::scaling(1, 9, 0) + test::arraySize(249)),
     true},
    {"ManyFloats", test::floating("double float", test::arraySize(124)), true},
    {"ManyBits", test::signedBits(0, 8, test::arraySize(999)), true},
    {"ManyEnumerations", test::enumeration("power_t", test::arraySize(999)), true},
    {"StructuresInStructures", nested(60), true},
    {"AllSteps", wide(16'383, kByte), true},
    {"MoreSteps", wide(16'384, kByte), false},
    {"ReferenceToATypeWithoutALayout", test::reference("SNVT_bare"), false},
    {"OneMebibyte", wide(16, kLongText), true},
    {"MoreThanOneMebibyte", wide(17, kLongText), false},
    {"BitsBehindOneMebibyte",
     wide(16, kLongText,
          test::tag("member", test::bits(0, 3, test::arraySize(2)) + test::tag("p-name", "bits"))),
     false},
    {"ArrayOfAQuarterOfAMebibyte",
     test::structure({{"a", test::scalar("unsigned quad")}}, test::arraySize(65'536)), true},
    {"ArrayOfMoreThanOneMebibyte",
     test::structure({{"a", test::scalar("unsigned quad", test::arraySize(5))}},
                     test::arraySize(65'536)),
     false},
    {"AllVisits", emptyElements(60), true, false},
    {"MoreVisits", emptyElements(61), false},
    {"FarMoreVisits", emptyElements(65'536), false},
    {"MoreVisitsWithAText", test::structure({{"empty", emptyElements(60)}, {"text", kLongText}}),
     false},
};
INSTANTIATE_TEST_SUITE_P(Layouts, PlannedLayout, testing::ValuesIn(kLayoutCases),
                         [](const auto& info) { return info.param.name; });

// Layouts that no file describes.
TEST(PlannedConversion, CoversNothingThatIsNotThere) {
  using test::makeFloat;
  using test::makeScalar;
  using test::makeStruct;
  struct Case {
    const char* name;
    std::unique_ptr<Member> layout;
  };
  Case cases[] = {
      {"no layout", nullptr},
      {"no kind", std::make_unique<test::OddMember>(0)},
      {"no member", makeStruct("", makeScalar("a"), std::unique_ptr<MemScalar>())},
      {"no integer", makeScalar("", NcType::Double)},
      {"no base type", makeScalar("", NcType::None)},
      {"no floating number", makeFloat("", NcType::UnsignedLong)},
      {"bits of no width", test::makeBitfield("", 0, 0)},
  };
  for (Case& c : cases) {
    SCOPED_TRACE(c.name);
    TypeManager manager("drv");
    NvType type;
    type.setMember(std::move(c.layout));
    EXPECT_FALSE(PlanCheck(manager, type).hasPlan());
  }
}

TEST(PlannedConversion, CoversSixtyFourLevels) {
  for (const int levels : {64, 65}) {
    for (const std::uint32_t elementCount : {0u, 2u}) {
      SCOPED_TRACE(testing::Message() << levels << " of " << elementCount);
      std::unique_ptr<Member> layout =
          test::makeScalar("leaf", NcType::UnsignedShort, elementCount);
      const int around = elementCount == 0 ? levels : levels - 1;  // an array is a level, too
      for (int i = 0; i < around; ++i) layout = test::makeStruct("level", std::move(layout));
      TypeManager manager("drv");
      NvType type;
      type.setMember(std::move(layout));
      EXPECT_EQ(PlanCheck(manager, type).hasPlan(), levels == 64);
    }
  }
}

TEST(PlannedConversion, LeavesDocumentsOfAnotherShapeToTheWalk) {
  test::OwnTypes types(test::structure({{"a", kByte},
                                        {"list", kByte, test::arraySize(2)},
                                        {"s", test::structure({{"x", kByte}})},
                                        {"e", test::enumeration("power_t")},
                                        {"t", test::scalar("unsigned char", test::arraySize(2))}}));
  const VarType& type = test::typeOf(types);
  PlanCheck check(types.manager(), type);
  for (const char* text : {
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":-1,"list":[300,2.5],"s":{"x":1e2},"e":"PWR_ON","t":""})",
           " {\n\t\"a\" :1 ,\r\n\"list\": [ 1 ,2 ] ,\"s\":{ \"x\":3 }, \"e\": \"PWR_ON\" "
           ",\"t\":\"A \" } \n",
       }) {
    EXPECT_TRUE(check.takes(text)) << text;
  }
  for (const char* text : {
           "5",
           "[1,2,3,4,5]",
           "{}",
           R"({"a":"1","list":[1,2],"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":5,"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1],"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1,null],"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":{"x":1,"y":2},"s":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1,2],"s":[3],"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1,2],"s":3,"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1,2],"other":{"x":3},"e":"PWR_ON","t":"AB"})",
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":1,"t":"AB"})",
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":"none","t":"AB"})",
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":"PWR_ON","t":5})",
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":"PWR_ON","t":"ABC"})",
           R"({"a":1,"list":[1,2],"s":{"x":3},"e":"PWR_ON","t":"AB","z":1})",
       }) {
    EXPECT_FALSE(check.takes(text)) << text;
  }
}

TEST(PlannedConversion, TakesANumberOfEachKind) {
  struct Case {
    std::string xml;
    std::string before;  // what stands around the number
    std::string behind;
  };
  for (const Case& c : {
           Case{kByte, "", ""},
           Case{test::scalar("signed long", test::scaling(5, -1, 0)), "", ""},
           Case{test::scalar("signed long", test::scaling(5, 2, 0)), "", ""},
           Case{test::floating("float"), "", ""},
           Case{test::floating("double float", test::scaling(5, 0, 0)), "", ""},
           Case{test::structure({{"b", test::bits(0, 4)}}), R"({"b":)", "}"},
           Case{test::reference("SNVT_alias_2"), R"({"a":)", R"(,"b":0})"},
       }) {
    SCOPED_TRACE(c.xml);
    test::OwnTypes types(c.xml);
    PlanCheck check(types.manager(), test::typeOf(types));
    ASSERT_TRUE(check.hasPlan());
    EXPECT_TRUE(check.takes(c.before + "1" + c.behind));
    EXPECT_TRUE(check.takes(c.before + "1.5" + c.behind));
  }
}

// A whole number that falls between two steps is rounded, halves away from zero; one with a
// fraction is brought to the nearest step first, halves upward.
TEST(PlannedConversion, RoundsToAStepAsTheWalkDoes) {
  test::OwnTypes types(test::scalar("signed long", test::scaling(2, 0, 0)));
  PlanCheck check(types.manager(), test::typeOf(types));
  for (int number = -9; number <= 9; ++number) {
    EXPECT_TRUE(check.takes(std::to_string(number)));
    EXPECT_TRUE(check.takes(std::to_string(number) + ".0"));
    EXPECT_TRUE(check.takes(std::to_string(number) + ".5"));
  }
  EXPECT_EQ(test::encode(types, "-3"), "FFFE");
  EXPECT_EQ(test::encode(types, "-3.0"), "FFFF");
}

TEST(EnumTable, LeavesOutItemsWithoutAName) {
  EnumType type;
  type.addItem(1, "ONE");
  type.addItem(2, "");
  const EnumTable table(type);
  EXPECT_EQ(table.nameOf(1), "ONE");
  EXPECT_EQ(table.textOf(1), "\"ONE\"");
  EXPECT_EQ(table.nameOf(2), "");
  EXPECT_EQ(table.textOf(2), "");
}

TEST(PlannedConversion, CopiesNamesOfAnyLength) {
  for (const std::size_t length : {std::size_t{1}, std::size_t{2040}, std::size_t{5000}}) {
    SCOPED_TRACE(length);
    const std::string name(length, 'n');
    test::OwnTypes types(test::structure(
        {{name, test::scalar("unsigned short")}, {name + "2", test::scalar("unsigned long")}}));
    const TypeId id(ResourceType::Nv, "", "_x");
    const std::string expected = "{\"" + name + "\":7,\"" + name + "2\":258}";
    for (int i = 0; i < 2; ++i) {  // by the walk, and by the plan
      std::string text;
      EXPECT_TRUE(types.manager().rawToJsonText(id, test::bytesOf("070102"), text));
      EXPECT_EQ(text, expected);
      Buffer raw;
      EXPECT_TRUE(types.manager().jsonTextToRaw(id, expected, raw));
      EXPECT_EQ(hexOf(raw), "070102");
    }
  }
}

// 64 types may stand between a reference and a layout.
TEST(PlannedConversion, FollowsAsManyReferencesAsTheWalk) {
  for (const std::size_t length : {kMaxReferences - 1, kMaxReferences, kMaxReferences + 1}) {
    SCOPED_TRACE(length);
    std::string items = test::nvt("_0", test::scalar("unsigned short"));
    for (std::size_t i = 1; i <= length; ++i) {
      items += test::nvt("_" + std::to_string(i), test::reference("SNVT_" + std::to_string(i - 1)));
    }
    test::TempCatalogue files;
    files.write(TypeId::StdPrefix, "nvs", items);
    TypeManager manager = files.makeManager();
    const LogCapture quiet(Logger::Error);
    const TypeId id(ResourceType::Nv, "", "_" + std::to_string(length));
    json::Value value;
    const bool isWalked = JsonConverter(&manager, *manager.getVarType(id), Endianess::Big, false)
                              .rawToJson(test::bytesOf("07"), value);
    EXPECT_EQ(isWalked, length <= kMaxReferences);
    for (int i = 0; i < 2; ++i) {
      std::string text;
      EXPECT_EQ(manager.rawToJsonText(id, test::bytesOf("07"), text), isWalked);
    }
  }
}

TEST(PlannedConversion, LeavesTheTextAloneForAnUnknownType) {
  test::OwnTypes types(test::scalar("unsigned short"));
  std::string text = "before";
  EXPECT_FALSE(types.manager().rawToJsonText(TypeId(ResourceType::Nv, "", "_none"),
                                             test::bytesOf("07"), text));
  EXPECT_EQ(text, "before");
}

TEST(PlannedConversion, WritesWhatWasConvertedBeforeAFailure) {
  test::OwnTypes types(test::structure(
      {{"a", test::scalar("unsigned short")}, {"b", test::reference("SNVT_none")}}));
  const LogCapture quiet(Logger::Error);
  std::string text;
  const TypeId id(ResourceType::Nv, "", "_x");
  EXPECT_FALSE(types.manager().rawToJsonText(id, test::bytesOf("07"), text));
  EXPECT_EQ(text, R"({"a":7})");
}

}  // namespace
}  // namespace zavri::korvat
