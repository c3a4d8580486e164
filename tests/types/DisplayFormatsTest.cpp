#include "korvat/types/DisplayFormats.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvat/format/Format.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemNumeric.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"
#include "tests/LogCapture.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

namespace zavri::korvat {

namespace {

using base::Logger;
using test::bits;
using test::bytesOf;
using test::enumeration;
using test::floating;
using test::LogCapture;
using test::reference;
using test::scalar;
using test::scaling;
using test::structure;
using test::tag;
using testing::ElementsAre;
using testing::IsEmpty;

struct NamedFormat {
  std::string name;  // empty for the plain one
  std::string text;
};

std::string formats(const std::string& typeName, const std::vector<NamedFormat>& rows) {
  std::string content;
  for (const NamedFormat& row : rows) {
    content += "<format id='SNVT" + typeName + (row.name.empty() ? "" : "#") + row.name +
               "'><![CDATA[" + row.text + "]]></format>";
  }
  return tag("formats", content);
}

const std::string kCentigrade = scalar("signed long", scaling(1, -2, 0));  // 0.01 degrees
const std::string kToFahrenheit = R"(text("%f", *1.8+32(0:853)))";

// Loads a catalogue whose SNVT_x is the type under test.
class DisplayFormatsTest : public testing::Test {
 protected:
  DisplayFormatsTest() : _manager(_files.makeManager()) {}

  void load(const std::string& root, const std::vector<NamedFormat>& rows) {
    _files.write(TypeId::StdPrefix, "enums", test::sharedEnums());
    _files.write(TypeId::StdPrefix, "nvs",
                 test::sharedNvs() + test::nvt("_celsius", kCentigrade) +
                     test::nvt("_x", root + formats("_x", rows)));
  }

  const VarType* find(const std::string& name) {
    return _manager.getVarType(TypeId(ResourceType::Nv, "", name));
  }

  std::string decode(const std::string& name, const std::string& hex) {
    json::Value value;
    const TypeId id(ResourceType::Nv, "", name);
    const bool isDone = _manager.rawToJson(id, bytesOf(hex), value);
    return isDone ? value.stringify() : "failed";
  }

  std::string encode(const std::string& name, const std::string& text) {
    json::Value value;
    std::string error;
    EXPECT_TRUE(json::Value::parse(text, value, error)) << error;
    base::Buffer raw;
    const bool isDone = _manager.jsonToRaw(TypeId(ResourceType::Nv, "", name), value, raw);
    return isDone ? util::BinaryUtils::toString(raw) : "failed";
  }

  test::TempCatalogue _files;
  TypeManager _manager;
};

TEST_F(DisplayFormatsTest, AttachesAPlainFormatToItsType) {
  load(kCentigrade, {{"", R"(text("%f"))"}});
  const VarType* type = find("_x");
  ASSERT_NE(type, nullptr);
  ASSERT_NE(type->getFormat(), nullptr);
  EXPECT_EQ(type->getFormat()->getName(), "");
  EXPECT_EQ(type->getFormat()->getText(), R"(text("%f"))");
}

TEST_F(DisplayFormatsTest, LeavesATypeWithoutFormatsAlone) {
  load(kCentigrade, {});
  ASSERT_NE(find("_x"), nullptr);
  EXPECT_EQ(find("_x")->getFormat(), nullptr);
}

TEST_F(DisplayFormatsTest, AttachesTheLastOfSeveralPlainFormats) {
  load(kCentigrade, {{"SI", R"(text("%f C"))"}, {"LO", R"(text("%f c"))"}});
  ASSERT_NE(find("_x"), nullptr);
  ASSERT_NE(find("_x")->getFormat(), nullptr);
  EXPECT_EQ(find("_x")->getFormat()->getName(), "SI");
}

TEST_F(DisplayFormatsTest, DerivesATypeForAFormatInAnotherUnit) {
  load(kCentigrade, {{"", R"(text("%f"))"}, {"US", kToFahrenheit}});
  const VarType* type = find("_x");
  const VarType* derived = find("_x-US");
  ASSERT_NE(type, nullptr);
  ASSERT_NE(derived, nullptr);
  ASSERT_NE(type->getFormat(), nullptr);
  EXPECT_EQ(type->getFormat()->getName(), "");
  EXPECT_EQ(type->getFlags(), 0u);

  EXPECT_EQ(derived->getFlags(), BaseType::kDerivedFormat);
  EXPECT_EQ(derived->getTypeId().toString(), TypeId::StdPrefix + "/SNVT_x-US");
  ASSERT_NE(derived->getFormat(), nullptr);
  EXPECT_EQ(derived->getFormat()->getName(), "US");
  EXPECT_THAT(derived->getFormats(), IsEmpty());  // never expanded again
}

TEST_F(DisplayFormatsTest, FindsADerivedTypeByNameOnly) {
  load(kCentigrade, {{"US", kToFahrenheit}});
  ASSERT_NE(find("_x-US"), nullptr);
  EXPECT_EQ(_manager.getVarType(TypeId::StdPrefix + "/SNVT_x-US"), find("_x-US"));
  EXPECT_EQ(_manager.getTypeByIndex("", ResourceType::Nv, 1), find("_x"));
}

TEST_F(DisplayFormatsTest, NamesTheTypeOfAnUnnamedFormatWithADashAlone) {
  load(kCentigrade, {{"", kToFahrenheit}});
  EXPECT_NE(find("_x-"), nullptr);
  EXPECT_EQ(find("_x")->getFormat(), nullptr);
}

TEST_F(DisplayFormatsTest, ReadsAndWritesFahrenheit) {
  load(kCentigrade, {{"US", kToFahrenheit}});
  // 0x092E = 2350 is 23.5 degrees Celsius: 1.8 * 23.5 + 32 = 74.3.
  EXPECT_EQ(decode("_x", "092E"), "23.5");
  EXPECT_EQ(decode("_x-US", "092E"), "74.3");
  EXPECT_EQ(encode("_x-US", "74.3"), "092E");
  // 0xF060 = -4000 is -40 in both.
  EXPECT_EQ(decode("_x-US", "F060"), "-40.0");
  EXPECT_EQ(encode("_x-US", "-40"), "F060");
  // -17.78: 1.8 * -17.78 + 32 = -32.004 + 32 = -0.004.
  EXPECT_EQ(decode("_x-US", "F90E"), "-0.004");
  EXPECT_EQ(encode("_x-US", "-0.004"), "F90E");
}

TEST_F(DisplayFormatsTest, EncodesWhatItDecodes) {
  load(kCentigrade, {{"US", kToFahrenheit}});
  for (int raw = -32768; raw <= 32767; raw += 7) {
    SCOPED_TRACE(raw);
    const auto word = static_cast<std::uint16_t>(raw);
    const std::uint8_t bytes[] = {static_cast<std::uint8_t>(word >> 8),
                                  static_cast<std::uint8_t>(word & 0xFF)};
    const std::string hex = util::BinaryUtils::toString(base::Buffer(bytes, 2));
    const std::string text = decode("_x-US", hex);
    EXPECT_EQ(encode("_x-US", text), hex);
    // 1.8 * 0.01 * raw + 32 has three digits behind the point at most.
    EXPECT_LE(text.size() - text.find('.'), 4u) << text;
  }
}

TEST_F(DisplayFormatsTest, ScalesOnlyTheMembersThatAreNamed) {
  load(structure({{"in", scalar("unsigned short")},
                  {"out", structure({{"deep", scalar("unsigned short")},
                                     {"list", scalar("unsigned short", test::arraySize(2))}})}}),
       {{"US", R"(text("%d %d %d", in, out.deep*2+1, out.list[1]*0.5))"}});
  EXPECT_EQ(decode("_x", "0A0A0A0B"), R"({"in":10,"out":{"deep":10,"list":[10,11]}})");
  EXPECT_EQ(decode("_x-US", "0A0A0A0B"), R"({"in":10,"out":{"deep":21.0,"list":[5.0,5.5]}})");
  EXPECT_EQ(encode("_x-US", R"({"in":10,"out":{"deep":21,"list":[5,5.5]}})"), "0A0A0A0B");
}

TEST_F(DisplayFormatsTest, ScalesBitFieldsAndFloats) {
  load(structure({{"bits", bits(0, 8)}, {"number", floating("float")}}),
       {{"US", R"(text("%d %f", bits*0.1-3, number*2+0.5))"}});
  // 0x41200000 is 10.0.
  EXPECT_EQ(decode("_x-US", "3241200000"), R"({"bits":2.0,"number":20.5})");
  EXPECT_EQ(encode("_x-US", R"({"bits":2,"number":20.5})"), "3241200000");
}

TEST_F(DisplayFormatsTest, KeepsTheFractionOfAFloat) {
  load(floating("double float"), {{"US", R"(text("%f", *2))"}});
  // 1.5 is 3FF8 0000 0000 0000.
  EXPECT_EQ(decode("_x-US", "3FF8000000000000"), "3.0");
  EXPECT_EQ(encode("_x-US", "3.0"), "3FF8000000000000");
}

TEST_F(DisplayFormatsTest, CountsArrayElementsByTheRawNumber) {
  load(structure({{"count", scalar("unsigned short")},
                  {"list", scalar("unsigned short"), test::dynamicArray(0, 5)},
                  {"z", scalar("unsigned short")}}),
       {{"US", R"(text("%d", count*2))"}});
  _manager.setUseDynamicArrays(true);
  EXPECT_EQ(decode("_x", "020A0B0C"), R"({"count":2,"list":[10,11],"z":12})");
  EXPECT_EQ(decode("_x-US", "020A0B0C"), R"({"count":4.0,"list":[10,11],"z":12})");
  EXPECT_EQ(encode("_x-US", R"({"count":4,"list":[10,11],"z":12})"), "020A0B0C");
  EXPECT_EQ(encode("_x-US", R"({"count":9,"list":[10,11,12],"z":1})"), "030A0B0C01");
}

TEST_F(DisplayFormatsTest, AddsAUnitOnTopOfThatOfADerivedType) {
  _files.write(TypeId::StdPrefix, "nvs",
               test::nvt("_celsius", kCentigrade + formats("_celsius", {{"US", kToFahrenheit}})) +
                   test::nvt("_x", reference("SNVT_celsius-US") +
                                       formats("_x", {{"TEN", R"(text("%f", *10+1))"}})));
  // 10 * (1.8 * 23.5 + 32) + 1 = 744.
  EXPECT_EQ(decode("_x-TEN", "092E"), "744.0");
  EXPECT_EQ(encode("_x-TEN", "744"), "092E");
}

TEST_F(DisplayFormatsTest, WarnsAboutTwoUnitsForOneMember) {
  load(structure({{"l", scalar("unsigned short", test::arraySize(2))}}),
       {{"A", R"(text("%f %f", l[0]*2, l[1]*2))"}, {"B", R"(text("%f %f", l[0]*2, l[1]*3+1))"}});
  LogCapture log(Logger::Warning);
  EXPECT_EQ(decode("_x-A", "0102"), R"({"l":[2.0,4.0]})");
  EXPECT_EQ(decode("_x-B", "0102"), R"({"l":[4.0,7.0]})");
  EXPECT_THAT(log.texts(), ElementsAre("[korvat] two units for the member at path l[1], the last "
                                       "one counts: _x-B\n"));
}

TEST_F(DisplayFormatsTest, FollowsAReferenceAndLeavesItsTypeAlone) {
  load(reference("SNVT_celsius"), {{"US", kToFahrenheit}});
  EXPECT_EQ(decode("_x-US", "092E"), "74.3");
  EXPECT_EQ(decode("_x", "092E"), "23.5");
  EXPECT_EQ(decode("_celsius", "092E"), "23.5");
}

TEST_F(DisplayFormatsTest, FollowsReferencesOnThePath) {
  load(structure({{"a", reference("SNVT_alias_2")},
                  {"list", reference("SNVT_celsius"), test::arraySize(2)}}),
       {{"US", R"(text("%d %f", a.b*10, list*1.8+32))"}});
  EXPECT_EQ(decode("_x-US", "0102092EF060"), R"({"a":{"a":1,"b":20.0},"list":[74.3,-40.0]})");
  EXPECT_EQ(decode("_x", "0102092EF060"), R"({"a":{"a":1,"b":2},"list":[23.5,-40.0]})");
  EXPECT_EQ(decode("_pair", "0102"), R"({"a":1,"b":2})");
  EXPECT_EQ(encode("_x-US", R"({"a":{"a":1,"b":20},"list":[74.3,-40.0]})"), "0102092EF060");
}

TEST_F(DisplayFormatsTest, FollowsAReferenceIntoAnotherSetAndKind) {
  const std::string prefix = "8000010000000000-3";
  _files.write(TypeId::StdPrefix, "nvs", test::nvt("_celsius", kCentigrade));
  _files.write(prefix, "cps",
               "<cpt id='setpoint' idx='1'><ref>SNVT_celsius</ref><formats>"
               "<format id='UCPTsetpoint#US'>" +
                   kToFahrenheit + "</format></formats></cpt>");
  const LogCapture log(Logger::Warning);
  json::Value value;
  ASSERT_TRUE(
      _manager.rawToJson(TypeId(ResourceType::Cp, prefix, "setpoint-US"), bytesOf("092E"), value));
  EXPECT_EQ(value.stringify(), "74.3");
  EXPECT_THAT(log.texts(), IsEmpty());
}

TEST_F(DisplayFormatsTest, ResolvesTheUnionsOfADerivedType) {
  load(structure({{"kind", enumeration("power_t")},
                  {"value", test::unionOf({{"number", scalar("unsigned short")}})}}),
       {{"US", R"(text("%d", value.number*2))"}});
  ASSERT_NE(find("_x-US"), nullptr);
  EXPECT_EQ(find("_x-US")->findDiscriminator("value"), "kind");
}

struct UnreachableCase {
  std::string name;
  std::string root;
  std::string path;
};
class UnreachableMember : public DisplayFormatsTest,
                          public testing::WithParamInterface<UnreachableCase> {};

TEST_P(UnreachableMember, IsAWarningAndKeepsTheTypeAsItIs) {
  const UnreachableCase& c = GetParam();
  load(c.root, {{"US", "text(\"%f\", " + c.path + "*2)"}});
  LogCapture log(Logger::Warning);
  const VarType* derived = find("_x-US");
  ASSERT_NE(derived, nullptr);
  EXPECT_NE(derived->getFormat(), nullptr);
  EXPECT_TRUE(log.contains(Logger::Warning, "no member at path " + c.path + "\n"));
  if (c.root.empty()) return;
  EXPECT_EQ(decode("_x-US", "010203040506"), decode("_x", "010203040506"));
}

const std::vector<UnreachableCase> kUnreachables = {
    {"NoSuchMember", structure({{"a", scalar("unsigned short")}}), "b"},
    {"NoMemberInANumber", structure({{"a", scalar("unsigned short")}}), "a.b"},
    {"EmptyName", structure({{"a", scalar("unsigned short")}}), ".a"},
    {"Structure", structure({{"a", scalar("unsigned short")}}), ""},
    {"Enumeration", structure({{"a", enumeration("power_t")}}), "a"},
    {"NoLayout", "", ""},
    {"MissingType", reference("SNVT_missing"), ""},
    {"CyclicType", reference("SNVT_chicken"), ""},
    {"TypeWithoutALayout", reference("SNVT_bare"), ""},
    // What stands in place of the reference could not have the same layout.
    {"ArrayOfArrays", structure({{"a", reference("SNVT_list"), test::arraySize(2)}}), "a"},
    {"BitFieldInAByteOfItsOwn",
     structure({{"a", bits(0, 4)}, {"b", reference("SNVT_low")}, {"c", reference("SNVT_word")}}),
     "b"},
};

INSTANTIATE_TEST_SUITE_P(Paths, UnreachableMember, testing::ValuesIn(kUnreachables),
                         [](const auto& info) { return info.param.name; });

TEST_F(DisplayFormatsTest, CountsAReferenceAsMissingWithoutAManager) {
  load(reference("SNVT_celsius"), {{"US", kToFahrenheit}});
  LogCapture log(Logger::Warning);
  const ResourceGroup* group =
      _manager.getResourceFileSet(TypeId::StdPrefix).getGroup(ResourceType::Nv, true);
  ASSERT_NE(group, nullptr);
  EXPECT_NE(group->getType("_x-US"), nullptr);
  EXPECT_THAT(log.texts(),
              ElementsAre("[korvat] could not resolve ref " + TypeId::StdPrefix + "/SNVT_celsius\n",
                          "no member at path \n"));
}

TEST_F(DisplayFormatsTest, WarnsAboutATextThatIsNoFormat) {
  load(kCentigrade, {{"US", "text(x)"}, {"SI", R"(text("%f"))"}});
  LogCapture log(Logger::Warning);
  ASSERT_NE(find("_x"), nullptr);
  EXPECT_THAT(log.texts(),
              ElementsAre("[korvat] could not build format structure for 'US': could not parse "
                          "concatenation part (pos:5 'x')\n"));
  ASSERT_NE(find("_x")->getFormat(), nullptr);
  EXPECT_EQ(find("_x")->getFormat()->getName(), "SI");
}

// A short file must not ask for copies without end.
TEST_F(DisplayFormatsTest, LeavesOutDerivedTypesWithTooManyMembers) {
  constexpr unsigned kMembers = 10'000;
  constexpr unsigned kFormats = 40;
  std::string members;
  for (unsigned i = 0; i < kMembers; ++i) {
    members += tag("member", scalar("unsigned short") + tag("p-name", "m" + std::to_string(i)));
  }
  std::vector<NamedFormat> rows;
  for (unsigned i = 0; i < kFormats; ++i) rows.push_back({std::to_string(i), "text(\"%f\", m1*2)"});
  load("<aggregate cat='struct'>" + tag("members", members) + "</aggregate>", rows);

  LogCapture log(Logger::Warning);
  ASSERT_NE(find("_x"), nullptr);
  // 10,001 members a copy: the 25th one goes beyond 250,000.
  EXPECT_EQ(log.texts().size(), kFormats - 24);
  EXPECT_EQ(log.texts().front(), "[korvat] too many members in derived types, left out: _x-30\n");
}

class EndlessPath : public DisplayFormatsTest, public testing::WithParamInterface<unsigned> {};

TEST_P(EndlessPath, IntoATypeThatHoldsItselfLeadsNowhere) {
  std::string path = "next";
  for (unsigned i = 1; i < GetParam(); ++i) path += ".next";
  load(reference("SNVT_endless"), {{"US", "text(\"%f\", " + path + "*2)"}});
  LogCapture log(Logger::Warning);
  EXPECT_NE(find("_x-US"), nullptr);
  EXPECT_TRUE(log.contains(Logger::Warning, "no member at path " + path + "\n"));
}

INSTANTIATE_TEST_SUITE_P(Lengths, EndlessPath, testing::Values(100, 300, 800, 2000, 100'000));

// Each derived type copies the one before it, which would make it deeper and deeper.
TEST_F(DisplayFormatsTest, BoundsTheDepthOfTypesThatAreDerivedFromEachOther) {
  std::string path = "next";
  for (unsigned i = 1; i < 200; ++i) path += ".next";
  std::string nvs = test::nvt("_a", structure({{"next", reference("SNVT_a")}}) +
                                        formats("_a", {{"U", "text(\"%f\", " + path + "*2)"}}));
  std::string before = "_a";
  for (char letter = 'b'; letter <= 'z'; ++letter) {
    const std::string name = std::string("_") + letter;
    nvs += test::nvt(name, structure({{"next", reference("SNVT" + before + "-U")}}) +
                               formats(name, {{"U", "text(\"%f\", " + path + "*2)"}}));
    before = name;
  }
  _files.write(TypeId::StdPrefix, "nvs", nvs);
  const LogCapture log(Logger::Silent);
  ASSERT_NE(find("_z-U"), nullptr);
  EXPECT_NE(find("_z-U")->clone(true), nullptr);
}

// Each set refers to the next one.
TEST_F(DisplayFormatsTest, BoundsTheLoadsOfSetsThatNeedEachOther) {
  const auto prefixOf = [](unsigned number) {
    std::string digits = std::to_string(number);
    return "80" + std::string(4 - digits.size(), '0') + digits + "0000000000-3";
  };
  for (unsigned i = 0; i < 100; ++i) {
    _files.write(prefixOf(i), "nvs",
                 "<nvt id='x' idx='1'><ref href='" + prefixOf(i + 1) +
                     "/nvs/UNVTx'>UNVTx</ref><formats><format id='UNVTx#U'>text(\"%f\", *2)"
                     "</format></formats></nvt>");
  }
  LogCapture log(Logger::Warning);
  EXPECT_NE(_manager.getVarType(TypeId(ResourceType::Nv, prefixOf(0), "x")), nullptr);
  EXPECT_TRUE(log.contains(
      Logger::Warning,
      "[korvat] too many resource files that need each other: nvs in " + prefixOf(32) + "\n"));
  // It is no more than that: asked for by itself, it loads.
  EXPECT_NE(_manager.getVarType(TypeId(ResourceType::Nv, prefixOf(99), "x")), nullptr);
}

}  // namespace

}  // namespace zavri::korvat
