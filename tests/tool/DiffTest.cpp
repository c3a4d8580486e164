#include <filesystem>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "korvat/base/Value.h"
#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// What the program finds changed from one catalogue to another.
namespace zavri::test {

namespace {

using korvat::TypeId;
using testing::UnorderedElementsAreArray;

const auto kNameOf = [](const auto& info) { return info.param.name; };

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(text.substr(begin, end - begin));
  }
  return lines;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

// The items of the files of one standard set; a file without items is not written.
struct Files {
  std::string enums;
  std::string nvs;
  std::string cps;
  std::string fps;
};

void write(TempCatalogue& catalogue, const Files& files) {
  if (!files.enums.empty()) catalogue.write(TypeId::StdPrefix, "enums", files.enums);
  if (!files.nvs.empty()) catalogue.write(TypeId::StdPrefix, "nvs", files.nvs);
  if (!files.cps.empty()) catalogue.write(TypeId::StdPrefix, "cps", files.cps);
  if (!files.fps.empty()) catalogue.write(TypeId::StdPrefix, "fps", files.fps);
}

// Compares two catalogues; their standard sets are called OLD and NEW in what is printed.
ToolResult diff(const Files& oldFiles, const Files& newFiles,
                const std::vector<std::string>& options = {}) {
  TempCatalogue oldCatalogue;
  TempCatalogue newCatalogue;
  write(oldCatalogue, oldFiles);
  write(newCatalogue, newFiles);
  std::vector<std::string> arguments = {"diff", oldCatalogue.path(), newCatalogue.path()};
  arguments.insert(arguments.end(), options.begin(), options.end());
  ToolResult result = runTool(arguments);
  const std::string set = "/" + TypeId::StdPrefix;
  result.output = replaced(result.output, oldCatalogue.path() + set, "OLD");
  result.output = replaced(result.output, newCatalogue.path() + set, "NEW");
  return result;
}

// --- One change of SNVT_x ---

struct MemberCase {
  std::string name;
  std::string oldRoot;
  std::string newRoot;
  std::vector<std::string> findings;  // behind the place: "error: SNVT_x: ..." without the name
};

class ChangedMember : public testing::TestWithParam<MemberCase> {};

TEST_P(ChangedMember, IsToldWithWhatItBreaks) {
  const MemberCase& c = GetParam();
  const auto files = [](const std::string& root) {
    return Files{sharedEnums() + enumt("state_t", {{0, "PWR_OFF"}, {1, "ST_ON"}}),
                 sharedNvs() + nvt("_x", root), "", ""};
  };
  std::vector<std::string> expected;
  bool breaks = false;
  for (const std::string& finding : c.findings) {
    const std::size_t behindSeverity = finding.find(": ") + 2;
    expected.push_back("NEW/nvs.xml:5: " + finding.substr(0, behindSeverity) +
                       "SNVT_x: " + finding.substr(behindSeverity));
    breaks = breaks || finding.rfind("error: ", 0) == 0;
  }
  const ToolResult result = diff(files(c.oldRoot), files(c.newRoot));
  std::vector<std::string> lines = linesOf(result.output);
  if (!breaks && !lines.empty()) lines.pop_back();  // the summary
  EXPECT_THAT(lines, UnorderedElementsAreArray(expected));
  EXPECT_EQ(result.status, breaks ? 1 : 0);
}

std::string byte(const std::string& fields = "") {
  return scalar("unsigned short", fields);
}

std::string pairOf(const std::string& first, const std::string& second) {
  return structure({{first, byte()}, {second, byte()}});
}

const std::vector<MemberCase> kNumberCases = {
    {"Nothing", byte(), byte(), {}},
    {"Width",
     byte(),
     scalar("unsigned long"),
     {"error: wire: unsigned long instead of unsigned short",
      "error: wire: a value takes 2 bytes instead of 1"}},
    {"Signedness",
     byte(),
     scalar("signed short"),
     {"error: wire: signed short instead of unsigned short"}},
    {"FloatingNumber",
     scalar("unsigned quad"),
     floating("float"),
     {"error: wire: a floating number instead of an integer"}},
    {"TextInsteadOfNumbers",
     byte(arraySize(4)),
     scalar("unsigned char", arraySize(4)),
     {"error: json: []: unsigned char instead of unsigned short: text instead of an array of "
      "numbers"}},
    {"NumbersInsteadOfText",
     scalar("unsigned char", arraySize(4)),
     byte(arraySize(4)),
     {"error: json: []: unsigned short instead of unsigned char: an array of numbers instead of "
      "text"}},
    {"OneCharacterIsANumberToo",
     byte(),
     scalar("unsigned char"),
     {"note: unsigned char instead of unsigned short"}},
    {"Factor",
     byte(scaling(5, -1, 0)),
     byte(scaling(5, -2, 0)),
     {"error: json: 5 * 10^-2 * raw instead of 5 * 10^-1 * raw"}},
    {"Offset",
     byte(scaling(5, -1, 0)),
     byte(scaling(5, -1, -40)),
     {"error: json: 5 * 10^-1 * (raw - 40) instead of 5 * 10^-1 * raw"}},
    {"ScalingWrittenOtherwise",
     byte(scaling(5, -1, 0)),
     byte(scaling(50, -2, 0)),
     {"note: 50 * 10^-2 * raw instead of 5 * 10^-1 * raw, which is the same"}},
    // A number without scaling is an integer: 3, not 3.0.
    {"ScalingThatChangesNothingButTheForm",
     byte(),
     byte(scaling(10, -1, 0)),
     {"error: json: 10 * 10^-1 * raw instead of raw"}},
    {"Maximum",
     byte(tag("max", "200")),
     byte(tag("max", "100")),
     {"error: json: maximum raw 100 instead of 200"}},
    {"MinimumAndMaximumGone",
     scalar("signed short", tag("min", "-100") + tag("max", "100")),
     scalar("signed short"),
     {"error: json: minimum raw -128 instead of -100",
      "error: json: maximum raw 127 instead of 100"}},
    {"LimitsThatTheBaseTypeHas", byte(), byte(tag("min", "0") + tag("max", "255")), {}},
    {"LimitOfAFloat",
     floating("float"),
     floating("float", tag("max", "100")),
     {"error: json: maximum raw 100.0 instead of without limit"}},
    {"InvalidMarker",
     byte(invalid("255")),
     byte(invalid("254")),
     {"error: json: invalid marker 254 instead of invalid marker 255"}},
    {"InvalidMarkerGone",
     byte(invalid("255")),
     byte(),
     {"error: json: no invalid marker instead of invalid marker 255"}},
    {"ArraySize",
     byte(arraySize(3)),
     byte(arraySize(4)),
     {"error: wire: an array of 4 instead of an array of 3",
      "error: wire: a value takes 4 bytes instead of 3"}},
    {"ArrayInsteadOfASingleValue",
     byte(),
     byte(arraySize(1)),
     {"error: wire: an array of 1 instead of a single value"}},
    {"DynamicArray",
     byte(arraySize(3)),
     byte(dynamicArray(1, 3)),
     {"error: wire: an array of 3, at least 1 instead of an array of 3"}},
};
INSTANTIATE_TEST_SUITE_P(Numbers, ChangedMember, testing::ValuesIn(kNumberCases), kNameOf);

const std::vector<MemberCase> kBitFieldCases = {
    {"BitOffset",
     structure({{"a", bits(0, 4)}, {"b", bits(4, 4)}}),
     structure({{"a", bits(4, 4)}, {"b", bits(0, 4)}}),
     {"error: wire: a: 4 unsigned bits at bit 4 instead of 4 unsigned bits at bit 0",
      "error: wire: b: 4 unsigned bits at bit 0 instead of 4 unsigned bits at bit 4",
      // a, at the end of its byte, leaves b a byte of its own.
      "error: wire: b: at byte 1 instead of 0", "error: wire: a value takes 2 bytes instead of 1"}},
    {"BitWidth",
     structure({{"a", bits(0, 4)}, {"b", bits(7, 1)}}),
     structure({{"a", bits(0, 3)}, {"b", bits(7, 1)}}),
     {"error: wire: a: 3 unsigned bits at bit 0 instead of 4 unsigned bits at bit 0"}},
    {"BitSign",
     bits(0, 8),
     signedBits(0, 8),
     {"error: wire: 8 signed bits at bit 0 instead of 8 unsigned bits at bit 0"}},
    {"BitLimit",
     bits(0, 8),
     bits(0, 8, tag("max", "9")),
     {"error: json: maximum raw 9 instead of 255"}},
    {"BitFieldAmongOthersThatStay",
     structure({{"a", bits(0, 3)}, {"c", bits(6, 2)}}),
     structure({{"a", bits(0, 3)}, {"b", bits(3, 3)}, {"c", bits(6, 2)}}),
     {"error: json: b: new member"}},
    {"BitFieldGoneAmongOthersThatStay",
     structure({{"a", bits(0, 3)}, {"b", bits(3, 3)}, {"c", bits(6, 2)}}),
     structure({{"a", bits(0, 3)}, {"c", bits(6, 2)}}),
     {"error: json: b: removed"}},
};
INSTANTIATE_TEST_SUITE_P(BitFields, ChangedMember, testing::ValuesIn(kBitFieldCases), kNameOf);

const std::vector<MemberCase> kStructureCases = {
    {"MemberName", pairOf("a", "b"), pairOf("a", "c"), {"error: json: b: renamed to 'c'"}},
    {"MemberAtTheEnd",
     structure({{"a", byte()}}),
     pairOf("a", "b"),
     {"error: wire: b: new member", "error: wire: a value takes 2 bytes instead of 1"}},
    {"MemberInFront",
     pairOf("b", "c"),
     structure({{"a", scalar("unsigned long")}, {"b", byte()}, {"c", byte()}}),
     {"error: wire: a: new member",
      "error: wire: b: at byte 2 instead of 0, and 1 more member moved",
      "error: wire: a value takes 4 bytes instead of 2"}},
    {"MemberGone",
     pairOf("a", "b"),
     structure({{"b", byte()}}),
     {"error: wire: a: removed", "error: wire: b: at byte 0 instead of 1",
      "error: wire: a value takes 1 byte instead of 2"}},
    {"Order",
     pairOf("a", "b"),
     pairOf("b", "a"),
     {"error: wire: the members are in another order",
      "error: wire: a: at byte 1 instead of 0, and 1 more member moved"}},
    {"MemberThatGrows",
     pairOf("a", "b"),
     structure({{"a", scalar("unsigned long")}, {"b", byte()}}),
     {"error: wire: a: unsigned long instead of unsigned short",
      "error: wire: b: at byte 2 instead of 1", "error: wire: a value takes 3 bytes instead of 2"}},
    {"NestedMember",
     structure({{"s", pairOf("a", "b")}}),
     structure({{"s", structure({{"a", byte()}, {"b", byte(scaling(5, -1, 0))}})}}),
     {"error: json: s.b: 5 * 10^-1 * raw instead of raw"}},
    {"StructureInsteadOfANumber",
     scalar("unsigned long"),
     pairOf("a", "b"),
     {"error: wire: a structure instead of an integer"}},
    {"UnionInsteadOfAStructure",
     pairOf("a", "b"),
     unionOf({{"a", byte()}, {"b", byte()}}),
     {"error: wire: a union instead of a structure", "error: wire: b: at byte 0 instead of 1",
      "error: wire: a value takes 1 byte instead of 2"}},
    {"UnionOfOneMember",
     structure({{"a", byte()}}),
     unionOf({{"a", byte()}}),
     {"error: json: a union instead of a structure"}},
    {"AlternativeThatFits",
     unionOf({{"a", scalar("unsigned long")}}),
     unionOf({{"a", scalar("unsigned long")}, {"b", byte()}}),
     {"note: b: new alternative"}},
    {"AlternativeThatIsLonger",
     unionOf({{"a", byte()}}),
     unionOf({{"a", byte()}, {"b", scalar("unsigned long")}}),
     {"error: wire: b: new alternative", "error: wire: a value takes 2 bytes instead of 1"}},
    {"AlternativeGone",
     unionOf({{"a", byte()}, {"b", byte()}}),
     unionOf({{"a", byte()}}),
     {"error: json: b: removed"}},
    {"OrderOfAlternatives",
     unionOf({{"a", byte()}, {"b", byte()}}),
     unionOf({{"b", byte()}, {"a", byte()}}),
     {"note: the members are in another order"}},
    {"TwoMembersWithOneName", pairOf("a", "a"), pairOf("a", "a"), {}},
};
INSTANTIATE_TEST_SUITE_P(Structures, ChangedMember, testing::ValuesIn(kStructureCases), kNameOf);

const std::vector<MemberCase> kReferenceCases = {
    {"OtherNameForTheSameMembers",
     reference("SNVT_pair"),
     reference("SNVT_alias"),
     {"note: a reference to SNVT_alias instead of a reference to SNVT_pair"}},
    {"MembersWrittenOut",
     reference("SNVT_pair"),
     structure({{"a", byte()}, {"b", scalar("signed short")}}),
     {"note: a structure instead of a reference to SNVT_pair"}},
    {"OtherMembersBehindTheReference",
     structure({{"v", reference("SNVT_word")}}),
     structure({{"v", reference("SNVT_half")}}),
     {"note: v: a reference to SNVT_half instead of a reference to SNVT_word",
      "error: wire: v: unsigned short instead of unsigned long",
      "error: json: v: 5 * 10^-1 * raw instead of raw",
      "error: wire: a value takes 1 byte instead of 2"}},
    // SNVT_list is an array of three.
    {"ArrayBehindTheReference",
     reference("SNVT_list"),
     byte(arraySize(3)),
     {"note: an integer instead of a reference to SNVT_list"}},
    {"OrderBehindTheReference",
     reference("SNVT_pair"),
     structure({{"b", scalar("signed short")}, {"a", byte()}}),
     {"note: a structure instead of a reference to SNVT_pair",
      "error: wire: the members are in another order"}},
    {"ReferenceToNothing",
     reference("SNVT_word"),
     reference("SNVT_missing"),
     {"error: wire: a reference to SNVT_missing instead of a reference to SNVT_word, and one of "
      "them leads to no layout"}},
    {"CircleThatStays",
     structure({{"v", reference("SNVT_endless")}}),
     structure({{"v", reference("SNVT_endless")}}),
     {}},
    {"OtherEnumeration",
     enumeration("power_t"),
     enumeration("state_t"),
     {"note: enumeration state_t instead of power_t",
      "error: json: 'PWR_ON' (1) is renamed to "
      "'ST_ON'",
      "error: wire: 'PWR_NUL' (-1) is removed"}},
    {"NumberInsteadOfAnEnumeration",
     enumeration("power_t"),
     scalar("signed short"),
     {"error: json: an integer instead of an enumeration"}},
    {"EnumerationInsteadOfAnUnsignedNumber",
     byte(),
     enumeration("power_t"),
     {"error: wire: an enumeration instead of an integer"}},
};
INSTANTIATE_TEST_SUITE_P(References, ChangedMember, testing::ValuesIn(kReferenceCases), kNameOf);

// --- Changes of other items ---

struct FilesCase {
  std::string name;
  Files oldFiles;
  Files newFiles;
  std::vector<std::string> lines;
  std::string summary;  // on standard error where something breaks
};

class ChangedFiles : public testing::TestWithParam<FilesCase> {};

TEST_P(ChangedFiles, AreToldWithWhatTheyBreak) {
  const FilesCase& c = GetParam();
  const ToolResult result = diff(c.oldFiles, c.newFiles);
  std::vector<std::string> lines = linesOf(result.output);
  if (result.status == 0) {
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), c.summary);
    lines.pop_back();
  } else {
    EXPECT_EQ(result.errors, "korvat: " + c.summary + "\n");
    EXPECT_EQ(result.status, 1);
  }
  EXPECT_THAT(lines, UnorderedElementsAreArray(c.lines));
  EXPECT_EQ(result.status == 1, result.output.find(": error: ") != std::string::npos);
}

// A type with its own number, in the form of nvt().
std::string numbered(const std::string& name, int index, const std::string& content) {
  return "<nvt id='" + name + "' idx='" + std::to_string(index) + "'><p-name>SNVT" + name +
         "</p-name>" + content + "</nvt>";
}

Files nvs(const std::string& items) {
  return {"", items, "", ""};
}

Files enums(const std::string& items) {
  return {items, "", "", ""};
}

const std::vector<FilesCase> kTypeCases = {
    {"NewType",
     nvs(numbered("_a", 1, byte())),
     nvs(numbered("_a", 1, byte()) + "\n" + numbered("_b", 2, byte())),
     {"NEW/nvs.xml:6: note: SNVT_b: new type"},
     "nothing breaks: 1 note; 1 type compared"},
    {"TypeGone",
     nvs(numbered("_a", 1, byte()) + "\n" + numbered("_b", 2, byte())),
     nvs(numbered("_a", 1, byte())),
     {"OLD/nvs.xml:6: error: SNVT_b: wire: the type is removed"},
     "1 change of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"TypeWithAnotherName",
     nvs(numbered("_a", 7, byte())),
     nvs(numbered("_b", 7, byte())),
     {"OLD/nvs.xml:5: error: SNVT_a: wire: the type is removed; its number 7 is that of SNVT_b now",
      "NEW/nvs.xml:5: note: SNVT_b: new type"},
     "1 change of the wire, 0 of the JSON, 1 note; 0 types compared"},
    {"TypeNumber",
     nvs(numbered("_a", 1, byte())),
     nvs(numbered("_a", 2, byte())),
     {"NEW/nvs.xml:5: error: SNVT_a: wire: number 2 instead of 1"},
     "1 change of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"Obsolete",
     nvs(numbered("_a", 1, byte())),
     nvs(numbered("_a", 1, tag("obsolete", "yes") + byte())),
     {"NEW/nvs.xml:5: note: SNVT_a: obsolete now"},
     "nothing breaks: 1 note; 1 type compared"},
    {"DeclaredSize",
     nvs(numbered("_a", 1, tag("size", "1") + byte())),
     nvs(numbered("_a", 1, tag("size", "2") + byte())),
     {"NEW/nvs.xml:5: note: SNVT_a: declares 2 bytes instead of 1"},
     "nothing breaks: 1 note; 1 type compared"},
    {"LayoutGone",
     nvs(numbered("_a", 1, byte())),
     nvs(numbered("_a", 1, "")),
     {"NEW/nvs.xml:5: error: SNVT_a: wire: has no layout of its own any more"},
     "1 change of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"DefaultValue",
     {"", "", cpt("a", tag("default", "00") + byte()), ""},
     {"", "", cpt("a", tag("default", "01") + byte()), ""},
     {"NEW/cps.xml:5: note: SCPTa: default value '01' instead of '00'"},
     "nothing breaks: 1 note; 1 type compared"},
    {"FileGone",
     {enumt("e_t", {{0, "E_0"}}), nvt("_a", enumeration("e_t")), "", ""},
     nvs(nvt("_a", enumeration("e_t"))),
     {"OLD/enums.xml: error: wire: the file is removed with its 1 type",
      "OLD/enums.xml: note: 1 type or profile uses it and changes with it: SNVT_a"},
     "1 change of the wire, 0 of the JSON, 1 note; 1 type compared"},
    {"NewFile",
     nvs(nvt("_a", byte())),
     {enumt("e_t", {{0, "E_0"}}) + enumt("f_t", {{0, "F_0"}}), nvt("_a", byte()), "", ""},
     {"NEW/enums.xml: note: the file is added with its 2 types"},
     "nothing breaks: 1 note; 1 type compared"},
    {"BrokenFile",
     nvs(nvt("_a", byte())),
     nvs("<nvt></items>"),
     {"NEW/nvs.xml:5: error: mismatched tag at line 5, column 8"},
     "1 file not loaded, 0 changes of the wire, 0 of the JSON, 0 notes; 0 types compared"},
};
INSTANTIATE_TEST_SUITE_P(Types, ChangedFiles, testing::ValuesIn(kTypeCases), kNameOf);

const std::vector<FilesCase> kEnumCases = {
    {"NewEnumerator",
     enums(enumt("e_t", {{0, "E_A"}})),
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     {"NEW/enums.xml:5: note: e_t: 'E_B' (1) is added"},
     "nothing breaks: 1 note; 1 type compared"},
    {"EnumeratorGone",
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     enums(enumt("e_t", {{0, "E_A"}})),
     {"NEW/enums.xml:5: error: e_t: wire: 'E_B' (1) is removed"},
     "1 change of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"EnumeratorWithAnotherNumber",
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     enums(enumt("e_t", {{0, "E_A"}, {2, "E_B"}})),
     {"NEW/enums.xml:5: error: e_t: wire: 'E_B' is 2 instead of 1"},
     "1 change of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"EnumeratorWithAnotherName",
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_C"}})),
     {"NEW/enums.xml:5: error: e_t: json: 'E_B' (1) is renamed to 'E_C'"},
     "0 changes of the wire, 1 of the JSON, 0 notes; 1 type compared"},
    {"EnumeratorsThatChangePlaces",
     enums(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     enums(enumt("e_t", {{0, "E_B"}, {1, "E_A"}})),
     {"NEW/enums.xml:5: error: e_t: wire: 'E_A' is 1 instead of 0",
      "NEW/enums.xml:5: error: e_t: wire: 'E_B' is 0 instead of 1"},
     "2 changes of the wire, 0 of the JSON, 0 notes; 1 type compared"},
    {"OneValueWithTwoNames",
     enums(enumt("e_t", {{0, "E_A"}, {0, "E_B"}})),
     enums(enumt("e_t", {{0, "E_B"}, {0, "E_A"}})),
     {"NEW/enums.xml:5: error: e_t: json: 0 is shown as 'E_B' instead of 'E_A'"},
     "0 changes of the wire, 1 of the JSON, 0 notes; 1 type compared"},
};
INSTANTIATE_TEST_SUITE_P(Enums, ChangedFiles, testing::ValuesIn(kEnumCases), kNameOf);

// SNVT_b refers to SNVT_a and SNVT_c to SNVT_b; SCPTd and SNVT_e know nothing of them.
Files chain(const std::string& rootOfA) {
  return {"",
          numbered("_a", 1, rootOfA) + "\n" + numbered("_b", 2, reference("SNVT_a")) + "\n" +
              numbered("_c", 3, structure({{"v", reference("SNVT_b")}, {"w", byte()}})) + "\n" +
              numbered("_e", 4, byte()),
          cpt("d", byte()),
          "<fpt id='f' idx='1'><f-nvs><f-nv id='nvoC' idx='1'><ref>SNVT_c</ref></f-nv></f-nvs>"
          "</fpt>"};
}

// 12 types that have one enumeration: SNVT_u_10 to SNVT_u_21.
Files manyUsers(const std::string& enumerators) {
  std::string items;
  for (int i = 10; i < 22; ++i) {
    items += numbered("_u_" + std::to_string(i), i, enumeration("e_t"));
  }
  return {enumerators, items, "", ""};
}

const std::vector<FilesCase> kUserCases = {
    // What grows behind a reference moves the members of SNVT_c: one cause, told where it is.
    {"UsersFarAway",
     chain(byte()),
     chain(scalar("unsigned long")),
     {"NEW/nvs.xml:5: error: SNVT_a: wire: unsigned long instead of unsigned short",
      "NEW/nvs.xml:5: error: SNVT_a: wire: a value takes 2 bytes instead of 1",
      "NEW/nvs.xml:5: note: SNVT_a: 3 types and profiles use it and change with it: SFPTf, SNVT_b, "
      "SNVT_c"},
     "2 changes of the wire, 0 of the JSON, 1 note; 6 types compared"},
    {"ManyUsers",
     manyUsers(enumt("e_t", {{0, "E_A"}})),
     manyUsers(enumt("e_t", {{0, "E_B"}})),
     {"NEW/enums.xml:5: error: e_t: json: 'E_A' (0) is renamed to 'E_B'",
      "NEW/enums.xml:5: note: e_t: 12 types and profiles use it and change with it: SNVT_u_10, "
      "SNVT_u_11, SNVT_u_12, SNVT_u_13, SNVT_u_14, SNVT_u_15, SNVT_u_16, SNVT_u_17, SNVT_u_18, "
      "SNVT_u_19 and 2 more"},
     "0 changes of the wire, 1 of the JSON, 1 note; 13 types compared"},
    {"UsersOfWhatBreaksNothing",
     manyUsers(enumt("e_t", {{0, "E_A"}})),
     manyUsers(enumt("e_t", {{0, "E_A"}, {1, "E_B"}})),
     {"NEW/enums.xml:5: note: e_t: 'E_B' (1) is added"},
     "nothing breaks: 1 note; 13 types compared"},
};
INSTANTIATE_TEST_SUITE_P(Users, ChangedFiles, testing::ValuesIn(kUserCases), kNameOf);

// SNVT_a with display formats. One in other units makes a type, such as SNVT_a-US.
Files shown(const std::string& formats) {
  return nvs(numbered("_a", 1, byte(scaling(5, -1, 0)) + tag("formats", formats)));
}

std::string format(const std::string& id, const std::string& field) {
  return "<format id='" + id + "'>text(\"%f\", " + field + ")</format>";
}

const std::string kPlain = "<format id='SNVT_a'>text(\"%f\")</format>";

// Two strings for units, and SNVT_a in one of them.
std::string withUnit(const std::string& unit) {
  return "<ldrf><strings><string id='p'>percent</string><string id='s'>%</string></strings><items>"
         "<nvt id='_a' idx='1'><scalar><nc-type>unsigned short</nc-type></scalar><unit id='" +
         unit + "'/></nvt></items></ldrf>";
}

const std::vector<FilesCase> kFormatCases = {
    {"FormatText",
     shown(kPlain),
     shown("<format id='SNVT_a'>text(\"%d\")</format>"),
     {"NEW/nvs.xml:5: note: SNVT_a: the display format is 'text(\"%d\")' instead of "
      "'text(\"%f\")'"},
     "nothing breaks: 1 note; 1 type compared"},
    {"NewFormatInOtherUnits",
     shown(kPlain),
     shown(kPlain + format("SNVT_a#US", "*1.8+32")),
     {"NEW/nvs.xml:5: note: SNVT_a: the display format 'US' is added",
      "NEW/nvs.xml:5: note: SNVT_a: the type in other units SNVT_a-US is added"},
     "nothing breaks: 2 notes; 1 type compared"},
    {"FormatInOtherUnitsGone",
     shown(kPlain + format("SNVT_a#US", "*1.8+32")),
     shown(kPlain),
     {"NEW/nvs.xml:5: note: SNVT_a: the display format 'US' is removed",
      "NEW/nvs.xml:5: error: SNVT_a: json: the type in other units SNVT_a-US is removed"},
     "0 changes of the wire, 1 of the JSON, 1 note; 1 type compared"},
    {"OtherUnits",
     shown(format("SNVT_a#US", "*1.8+32")),
     shown(format("SNVT_a#US", "*2+30")),
     {"NEW/nvs.xml:5: note: SNVT_a: the display format 'US' is 'text(\"%f\", *2+30)' instead of "
      "'text(\"%f\", *1.8+32)'",
      "NEW/nvs.xml:5: error: SNVT_a: json: in SNVT_a-US, 2 * physical + 30 instead of "
      "1.8 * physical + 32"},
     "0 changes of the wire, 1 of the JSON, 1 note; 1 type compared"},
};
INSTANTIATE_TEST_SUITE_P(Formats, ChangedFiles, testing::ValuesIn(kFormatCases), kNameOf);

// --- Profiles ---

std::string datapoint(const std::string& name, int index, const std::string& fields,
                      const std::string& type = "SNVT_a") {
  return "<f-nv id='" + name + "' idx='" + std::to_string(index) + "'>" + fields + "<ref>" + type +
         "</ref></f-nv>";
}

// SFPTf with these network variables, of types SNVT_a and SNVT_b.
Files profile(const std::string& datapoints, const std::string& attributes = "key='9'",
              const std::string& fields = "") {
  return {"", numbered("_a", 1, byte()) + numbered("_b", 2, byte()), "",
          "<fpt id='base' idx='2' key='8'/><fpt id='f' idx='1' " + attributes + ">" + fields +
              tag("f-nvs", datapoints) + "</fpt>"};
}

FilesCase profileCase(const std::string& name, const Files& oldFiles, const Files& newFiles,
                      const std::vector<std::string>& findings, const std::string& summary) {
  std::vector<std::string> lines;
  for (const std::string& finding : findings) {
    const std::size_t behindSeverity = finding.find(": ") + 2;
    lines.push_back("NEW/fps.xml:5: " + finding.substr(0, behindSeverity) +
                    "SFPTf: " + finding.substr(behindSeverity));
  }
  return {name, oldFiles, newFiles, lines, summary + "; 4 types compared"};
}

const std::string kOneOfTheWire = "1 change of the wire, 0 of the JSON, 0 notes";
const std::string kOneOfTheJson = "0 changes of the wire, 1 of the JSON, 0 notes";
const std::string kOneNote = "nothing breaks: 1 note";

const std::vector<FilesCase> kProfileCases = {
    profileCase("DatapointGone", profile(datapoint("nvoA", 1, "") + datapoint("nvoB", 2, "")),
                profile(datapoint("nvoA", 1, "")), {"error: wire: nvoB: removed"}, kOneOfTheWire),
    profileCase("DatapointName", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoB", 1, "")), {"error: json: nvoA: renamed to 'nvoB'"},
                kOneOfTheJson),
    profileCase("DatapointNumbers",
                profile(datapoint("nvoA", 1, "<member>1</member>") +
                        datapoint("nvoB", 2, "<member>2</member>")),
                profile(datapoint("nvoA", 2, "<member>2</member>") +
                        datapoint("nvoB", 3, "<member>3</member>")),
                {"error: wire: nvoA: number 2 instead of 1, and 1 more datapoint renumbered"},
                kOneOfTheWire),
    profileCase("MemberNumber", profile(datapoint("nvoA", 1, "<member>1</member>")),
                profile(datapoint("nvoA", 1, "<member>4</member>")),
                {"error: wire: nvoA: member number 4 instead of 1"}, kOneOfTheWire),
    profileCase("DatapointType", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoA", 1, "", "SNVT_b")),
                {"error: wire: nvoA: SNVT_b instead of SNVT_a"}, kOneOfTheWire),
    profileCase("Direction", profile(datapoint("nvoA", 1, "<dir>output</dir>")),
                profile(datapoint("nvoA", 1, "<dir>input</dir>")),
                {"error: wire: nvoA: input instead of output"}, kOneOfTheWire),
    profileCase("Mandatory", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoA", 1, "<mandatory>yes</mandatory>")),
                {"error: wire: nvoA: mandatory now"}, kOneOfTheWire),
    profileCase("Optional", profile(datapoint("nvoA", 1, "<mandatory>yes</mandatory>")),
                profile(datapoint("nvoA", 1, "")), {"error: wire: nvoA: optional now"},
                kOneOfTheWire),
    profileCase("NewOptionalDatapoint", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoA", 1, "") + datapoint("nvoB", 2, "")),
                {"note: nvoB: new and optional"}, kOneNote),
    profileCase(
        "NewMandatoryDatapoint", profile(datapoint("nvoA", 1, "")),
        profile(datapoint("nvoA", 1, "") + datapoint("nvoB", 2, "<mandatory>yes</mandatory>")),
        {"error: wire: nvoB: new and mandatory"}, kOneOfTheWire),
    profileCase("LimitOfADatapoint", profile(datapoint("nvoA", 1, "<max>100</max>")),
                profile(datapoint("nvoA", 1, "<max>90.5</max>")),
                {"note: nvoA: maximum 90.5 instead of 100"}, kOneNote),
    profileCase("Key", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoA", 1, ""), "key='10'"),
                {"error: wire: key 10 instead of key 9"}, kOneOfTheWire),
    profileCase("Inheritance", profile(datapoint("nvoA", 1, "")),
                profile(datapoint("nvoA", 1, ""), "key='9'",
                        "<inheriting><ref>SFPTbase</ref></inheriting>"),
                {"error: wire: inherits from SFPTbase instead of inherits from nothing"},
                kOneOfTheWire),
};
INSTANTIATE_TEST_SUITE_P(Profiles, ChangedFiles, testing::ValuesIn(kProfileCases), kNameOf);

// --- The command ---

TEST(Diff, TakesAUnitForATextThatPeopleRead) {
  TempCatalogue oldCatalogue;
  TempCatalogue newCatalogue;
  oldCatalogue.writeRaw(TypeId::StdPrefix, "nvs", withUnit("p"));
  newCatalogue.writeRaw(TypeId::StdPrefix, "nvs", withUnit("s"));
  const ToolResult result = runTool({"diff", oldCatalogue.path(), newCatalogue.path()});
  EXPECT_EQ(result.output, newCatalogue.path() + "/" + TypeId::StdPrefix +
                               "/nvs.xml:1: note: SNVT_a: unit '%' instead of 'percent'\n"
                               "nothing breaks: 1 note; 1 type compared\n");
  EXPECT_EQ(result.status, 0);
}

TEST(Diff, FindsNothingInACatalogueAndItself) {
  const std::string embedded = std::string(KORVAT_SOURCE_DIR) + "/res/korvat";
  const ToolResult result = runTool({"diff", embedded, embedded});
  EXPECT_EQ(linesOf(result.output).size(), 1u) << result.output;
  EXPECT_EQ(result.output.rfind("no change: ", 0), 0u) << result.output;
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);

  const std::string sets = std::string(KORVAT_TEST_DATA) + "/catalogue";
  EXPECT_EQ(runTool({"diff", sets, sets}).output, "no change: 24 types compared\n");
  EXPECT_EQ(runTool({"diff", sets, sets, "--json"}).output, "[]\n");
}

// Two datapoints of one name, types of one number, references in a circle: all as before.
TEST(Diff, TakesAFaultThatStaysForNoChange) {
  TempCatalogue catalogue;
  const std::string set = std::string(KORVAT_TEST_DATA) + "/faulty/" + TypeId::StdPrefix;
  std::filesystem::copy(set, catalogue.path() + "/" + TypeId::StdPrefix);
  EXPECT_EQ(runTool({"diff", catalogue.path(), catalogue.path()}).output,
            "no change: 27 types compared\n");
}

TEST(Diff, PrintsItsFindingsAsJson) {
  const ToolResult result =
      diff(nvs(numbered("_a", 1, byte())), nvs(numbered("_a", 2, byte())), {"--json"});
  EXPECT_EQ(result.status, 1);
  json::Value findings;
  std::string error;
  ASSERT_TRUE(json::Value::parse(result.output, findings, error)) << error;
  ASSERT_EQ(findings.getSize(), 1u);
  EXPECT_EQ(findings[0].stringify(),
            R"({"file":"NEW/nvs.xml","line":5,"severity":"error","type":"SNVT_a",)"
            R"("message":"wire: number 2 instead of 1"})");
}

TEST(Diff, ComparesSetsOfOnePrefix) {
  TempCatalogue oldCatalogue;
  TempCatalogue newCatalogue;
  const std::string folder = "9000010000000000-3";
  oldCatalogue.write(folder, "nvs", numbered("_a", 1, byte()));
  oldCatalogue.write(TypeId::StdPrefix, "nvs", numbered("_a", 1, byte()));
  newCatalogue.write(folder, "nvs", numbered("_a", 1, byte()));
  newCatalogue.write(TypeId::StdPrefix, "nvs", numbered("_a", 2, byte()));
  const ToolResult result = runTool({"diff", oldCatalogue.path(), newCatalogue.path()});
  EXPECT_EQ(result.output, newCatalogue.path() + "/" + TypeId::StdPrefix +
                               "/nvs.xml:5: error: SNVT_a: wire: number 2 instead of 1\n");
  EXPECT_EQ(result.status, 1);
}

struct WrongFolderCase {
  std::string name;
  std::string oldFolder;
  std::string newFolder;
  std::string reason;
};

class WrongFolder : public testing::TestWithParam<WrongFolderCase> {};

TEST_P(WrongFolder, IsNoCatalogue) {
  const ToolResult result = runTool({"diff", GetParam().oldFolder, GetParam().newFolder});
  EXPECT_EQ(result.status, 3);
  EXPECT_EQ(result.output, "");
  EXPECT_NE(result.errors.find(GetParam().reason), std::string::npos) << result.errors;
}

const std::string kSets = std::string(KORVAT_TEST_DATA) + "/catalogue";
const std::string kNoSets = std::string(KORVAT_TEST_DATA) + "/faulty/drafts";

const std::vector<WrongFolderCase> kWrongFolders = {
    {"OldMissing", "/no/such/folder", kSets, "'/no/such/folder' is not a folder"},
    {"NewMissing", kSets, "/no/such/folder", "'/no/such/folder' is not a folder"},
    {"OldWithoutSets", kNoSets, kSets, "drafts' holds no resource set"},
    {"NewWithoutSets", kSets, kNoSets, "drafts' holds no resource set"},
    {"OldWithoutName", "", kSets, "the name of a folder is empty"},
};
INSTANTIATE_TEST_SUITE_P(Folders, WrongFolder, testing::ValuesIn(kWrongFolders), kNameOf);

}  // namespace

}  // namespace zavri::test
