#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// Which types the program lists when it is asked for a unit, a size or a kind.
namespace zavri::test {

namespace {

using korvat::TypeId;
using Words = std::vector<std::string>;

const auto kNameOf = [](const auto& info) { return info.param.name; };

std::string nvtOf(const std::string& name, int index, const std::string& content) {
  return "<nvt id='" + name + "' idx='" + std::to_string(index) + "'>" + content + "</nvt>";
}

// Six types of 1, 2, 3, 4, 5 and 2 bytes and an enumeration. _room takes its unit from _temp, and
// _loop holds itself.
class ListedTypes {
 public:
  ListedTypes() {
    const std::string strings = tag("strings",
                                    "<string id='c'>degrees Celsius</string>"
                                    "<string id='p'>percent</string>"
                                    "<string id='f'>percent of full level</string>");
    const std::string unit = "<unit id='";
    _files.writeRaw(
        TypeId::StdPrefix, "nvs",
        tag("ldrf",
            strings +
                tag("items",
                    nvtOf("_level", 1, scalar("unsigned short") + unit + "f'/>") +
                        nvtOf("_temp", 2, scalar("signed long") + unit + "c'/>") +
                        nvtOf("_room", 3,
                              structure({{"temp", reference("SNVT_temp")},
                                         {"valve", scalar("unsigned short"), unit + "p'/>"}})) +
                        nvtOf("_count", 4, scalar("unsigned quad")) +
                        nvtOf("_name", 5, scalar("unsigned char", arraySize(5))) +
                        nvtOf("_loop", 6, structure({{"next", reference("SNVT_loop")}})))));
    _files.writeRaw(
        TypeId::StdPrefix, "cps",
        tag("ldrf", strings + tag("items", "<cpt id='limit' idx='1'>" + scalar("signed long") +
                                               unit + "c'/></cpt>")));
    _files.write(TypeId::StdPrefix, "enums", enumt("temp_t", {{0, "T_0"}}));
  }

  ToolResult list(const Words& arguments) const {
    Words words = {"--catalog", _files.path(), "list"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return runTool(words);
  }

 private:
  TempCatalogue _files;
};

const std::string kLevel = "nv       1  SNVT_level                        1 byte\n";
const std::string kTemp = "nv       2  SNVT_temp                         2 bytes\n";
const std::string kRoom = "nv       3  SNVT_room                         3 bytes\n";
const std::string kCount = "nv       4  SNVT_count                        4 bytes\n";
const std::string kName = "nv       5  SNVT_name                         5 bytes\n";
const std::string kLimit = "cp       1  SCPTlimit                         2 bytes\n";
const std::string kTempEnum = "enum     1  temp_t                            1 items\n";

struct ListCase {
  std::string name;
  Words arguments;
  std::string output;
};

class ListOfTypes : public testing::TestWithParam<ListCase> {};

TEST_P(ListOfTypes, HoldsThoseThatKeepToEverything) {
  const ToolResult result = ListedTypes().list(GetParam().arguments);
  EXPECT_EQ(result.output, GetParam().output);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
}

const std::vector<ListCase> kLists = {
    {"Unit", {"--unit", "degrees Celsius"}, kTemp + kRoom + kLimit},
    {"UnitInEitherCase", {"--unit", "DEGREES celsius"}, kTemp + kRoom + kLimit},
    {"UnitAsAWhole", {"--unit", "percent"}, kRoom},
    {"UnitByPattern", {"--unit", "percent*"}, kLevel + kRoom},
    {"Size", {"--size", "2"}, kTemp + kLimit},
    {"Sizes", {"--size", "3-5"}, kRoom + kCount + kName},
    {"SizesOfOne", {"--size", "4-4"}, kCount},
    {"Kind", {"--kind", "cp"}, kLimit},
    {"KindAndPattern", {"--kind", "nv", "temp"}, kTemp},
    // Beside the option every argument is a pattern: only SNVT_name has an "am".
    {"PatternBesideTheOption", {"am", "--kind", "nv"}, kName},
    {"KindAsAPattern", {"--kind", "nv", "nv", "--size", "1"}, kLevel},
    {"KindOfEnumerations", {"--kind", "enum"}, kTempEnum},
    {"UnitAndSize", {"--unit", "degrees celsius", "--size", "3-9"}, kRoom},
    {"Everything", {"nv", "SNVT_*", "--unit", "*celsius", "--size", "1-2"}, kTemp},
};
INSTANTIATE_TEST_SUITE_P(Queries, ListOfTypes, testing::ValuesIn(kLists), kNameOf);

TEST(List, FollowsTypesInsideEachOtherToAnyDepth) {
  constexpr int kDepth = 20'000;
  std::string items = nvtOf("_t0", 1, scalar("unsigned short") + "<unit id='p'/>");
  for (int i = 1; i <= kDepth; ++i) {
    const std::string inner = "SNVT_t" + std::to_string(i - 1);
    items += nvtOf("_t" + std::to_string(i), i + 1, structure({{"inner", reference(inner)}}));
  }
  TempCatalogue files;
  files.writeRaw(
      TypeId::StdPrefix, "nvs",
      tag("ldrf", "<strings><string id='p'>percent</string></strings>" + tag("items", items)));
  const ToolResult result =
      runTool({"--catalog", files.path(), "list", "nv", "SNVT_t20000", "--unit", "percent"});
  EXPECT_EQ(result.output.rfind("nv   20001  SNVT_t20000 ", 0), 0u) << result.output;
  EXPECT_EQ(result.status, 0);
}

struct RefusedListCase {
  std::string name;
  Words arguments;
  int status;
  std::string message;
};

class RefusedList : public testing::TestWithParam<RefusedListCase> {};

TEST_P(RefusedList, TellsWhy) {
  const ToolResult result = ListedTypes().list(GetParam().arguments);
  EXPECT_EQ(result.status, GetParam().status);
  EXPECT_EQ(result.errors, "korvat: " + GetParam().message + "\n");
  EXPECT_EQ(result.output, "");
}

std::string noSize(const std::string& text) {
  return "'" + text + "' is no size: expected a number of bytes such as 2, or a range such as 1-4";
}

const std::vector<RefusedListCase> kRefusals = {
    {"SizeOfLetters", {"--size", "x"}, 2, noSize("x")},
    {"SizesBackwards", {"--size", "9-3"}, 2, noSize("9-3")},
    {"SizeWithoutEnd", {"--size", "1-"}, 2, noSize("1-")},
    {"SizeWithoutBegin", {"--size=-3"}, 2, noSize("-3")},
    {"SizeWithSomethingBehind", {"--size", "1-2-3"}, 2, noSize("1-2-3")},
    {"SizeBeyondNumbers", {"--size", "99999999999"}, 2, noSize("99999999999")},
    {"SizeOfNothing", {"--size", ""}, 2, noSize("")},
    {"UnknownKind", {"--kind", "fx"}, 2, "unknown kind 'fx'; expected nv, cp, enum or fp"},
    {"KindOfNothing", {"--kind", ""}, 2, "unknown kind ''; expected nv, cp, enum or fp"},
    {"KindTwice",
     {"--kind", "nv", "nv", "temp"},
     2,
     "'temp' is one argument too many: --kind says 'nv', so that only PATTERN is expected"},
    {"NoSuchUnit", {"--unit", "celsius"}, 3, "no type matches --unit 'celsius'"},
    {"NoSuchSize", {"temp", "--size", "7"}, 3, "no type matches 'temp' --size 7"},
    {"UnitOfNothing", {"--unit", ""}, 3, "no type matches --unit ''"},
    {"EnumerationsHaveNoSize", {"enum", "--size", "1"}, 3, "no type matches --size 1"},
};
INSTANTIATE_TEST_SUITE_P(Queries, RefusedList, testing::ValuesIn(kRefusals), kNameOf);

}  // namespace

}  // namespace zavri::test
