#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"
#include "tests/convert/TypeXml.h"

// What the program offers to a shell for an unfinished command line, and the scripts that ask it.
namespace zavri::test {

namespace {

using korvat::TypeId;
using testing::Contains;
using testing::ElementsAreArray;
using testing::Not;
using Words = std::vector<std::string>;

Words linesOf(const std::string& text) {
  Words lines;
  std::size_t begin = 0;
  for (std::size_t end = 0; (end = text.find('\n', begin)) != std::string::npos; begin = end + 1) {
    lines.push_back(text.substr(begin, end - begin));
  }
  return lines;
}

// The lines of the answer, without descriptions.
Words complete(Words words) {
  words.insert(words.begin(), "complete");
  const ToolResult result = runTool(words);
  EXPECT_EQ(result.errors, "");
  EXPECT_EQ(result.status, 0);
  Words lines = linesOf(result.output);
  for (std::string& line : lines) line = line.substr(0, line.find('\t'));
  return lines;
}

// A small catalogue with names that a shell would take for commands.
class OwnCatalogue : public TempCatalogue {
 public:
  OwnCatalogue() {
    write(TypeId::StdPrefix, "enums",
          enumt("mode_t", {{0, "M_OFF"},
                           {1, "M_ON"},
                           {2, "$(touch hit)"},
                           {3, "`touch hit`"},
                           {4, "a b"},
                           {5, "a;b"},
                           {6, "-x"},
                           {7, "~"},
                           {8, "a&#10;b"}}));
    write(TypeId::StdPrefix, "nvs",
          nvt("_room", structure({{"mode", enumeration("mode_t")},
                                  {"levels", scalar("unsigned short"), arraySize(3)},
                                  {"name", scalar("unsigned char"), arraySize(4)},
                                  {"$HOME", scalar("unsigned short")}}) +
                           "<formats><format id='SNVT_room'>text(\"%m\", mode)</format>"
                           "<format id='SNVT_room#levels'>text(\"%d\", levels[0])</format>"
                           "<format id='SNVT_room#`hit`'>text(\"%d\", levels[1])</format>"
                           "</formats>") +
              nvt("_rooms", structure({{"all",
                                        structure({{"mode", enumeration("mode_t")},
                                                   {"level", scalar("unsigned short")}}),
                                        arraySize(2)}})) +
              nvt("_row", scalar("unsigned short", arraySize(2))) +
              nvt("_many", scalar("unsigned long", arraySize(5000))) +
              nvt("_$(touch hit)", scalar("unsigned short")));
    write(TypeId::StdPrefix, "cps", cpt("delay", scalar("unsigned long")));
  }
};

struct OfferCase {
  std::string name;
  Words words;
  Words lines;  // of the answer, without descriptions
};

const auto kNameOf = [](const auto& info) { return info.param.name; };

// --- With the catalogue above ---

class OfferFromCatalogue : public testing::TestWithParam<OfferCase> {};

TEST_P(OfferFromCatalogue, NamesWhatMayStandThere) {
  const OwnCatalogue files;
  Words words = {"--catalog", files.path()};
  words.insert(words.end(), GetParam().words.begin(), GetParam().words.end());
  EXPECT_THAT(complete(words), ElementsAreArray(GetParam().lines));
}

const Words kValueTypes = {"words",      "SNVT_many", "SNVT_room",
                           "SNVT_rooms", "SNVT_row",  "SCPTdelay"};

const std::vector<OfferCase> kCatalogueCases = {
    {"Types", {"decode", ""}, kValueTypes},
    {"TypesBehindOptions", {"--json", "decode", "--order", "big", "--no-cut", ""}, kValueTypes},
    {"TypesForAnOption", {"decode", "--stream", "--type", ""}, kValueTypes},
    {"TypesForAnOptionWithEqualsSign", {"decode", "--type=SNVT"}, kValueTypes},
    {"TypesAndEnumerations",
     {"describe", ""},
     {"words", "SNVT_many", "SNVT_room", "SNVT_rooms", "SNVT_row", "SCPTdelay", "mode_t"}},
    {"NoProfiles", {"profile", ""}, {"words"}},
    {"Sets", {"--prefix", ""}, {"words", "0000000000000000-0"}},
    {"TypesOfAnotherSet", {"--prefix", "8000010128000000-4", "decode", ""}, {"words"}},
    {"MembersWithTextAsOne",
     {"get", "SNVT_room", "00", ""},
     {"words", "mode", "levels", "levels[0]", "levels[1]", "levels[2]", "name"}},
    {"MembersOfElements",
     {"get", "SNVT_rooms", "00", ""},
     {"words", "all", "all[0]", "all[0].mode", "all[0].level", "all[1]", "all[1].mode",
      "all[1].level"}},
    {"MembersThatBeginSo",
     {"get", "SNVT_rooms", "00", "all[1"},
     {"words", "all", "all[1]", "all[1].mode", "all[1].level"}},
    {"ElementsOfTheValueItself", {"get", "SNVT_row", "0000", ""}, {"words", "[0]", "[1]"}},
    {"FarElements", {"set", "SNVT_many", "00", "[4999"}, {"words", "[4999]"}},
    {"NoMembersOfANumber", {"get", "SCPTdelay", "0000", ""}, {"words"}},
    {"NoMembersOfAnUnknownType", {"get", "SNVT_none", "00", ""}, {"words"}},
    {"Enumerators", {"set", "SNVT_room", "00", "mode", ""}, {"words", "M_OFF", "M_ON"}},
    {"EnumeratorsOfAnElement",
     {"set", "SNVT_rooms", "00", "all[1].mode", ""},
     {"words", "M_OFF", "M_ON"}},
    {"NoEnumeratorsOfANumber", {"set", "SNVT_room", "00", "levels[0]", ""}, {"words"}},
    {"NoEnumeratorsOfNoMember", {"set", "SNVT_room", "00", "none", ""}, {"words"}},
    {"Formats", {"decode", "SNVT_room", "--text", "--format", ""}, {"words", "levels"}},
    {"NothingForRawValues", {"decode", "SNVT_room", ""}, {"words"}},
    {"NothingForAWordTooMany", {"get", "SNVT_room", "00", "mode", ""}, {"words"}},
};
INSTANTIATE_TEST_SUITE_P(Completion, OfferFromCatalogue, testing::ValuesIn(kCatalogueCases),
                         kNameOf);

// --- With the parser alone ---

class Offer : public testing::TestWithParam<OfferCase> {};

TEST_P(Offer, NamesWhatTheParserTakes) {
  EXPECT_THAT(complete(GetParam().words), ElementsAreArray(GetParam().lines));
}

const std::vector<OfferCase> kParserCases = {
    {"ByteOrders", {"--order", ""}, {"words", "big", "little"}},
    {"ByteOrdersWithEqualsSign", {"--order=l"}, {"words", "big", "little"}},
    {"OptionOfACommand", {"swap", "SNVT_switch", "--from", ""}, {"words", "big", "little"}},
    {"WordsOfAChoice", {"--color", ""}, {"words", "always", "auto", "never"}},
    {"Shells", {"completion", ""}, {"words", "bash", "zsh", "fish"}},
    {"Kinds", {"list", ""}, {"words", "nv", "cp", "enum", "fp"}},
    {"FolderForAnOption", {"--catalog", "/"}, {"folders"}},
    {"FolderWithEqualsSign", {"--catalog=/"}, {"folders"}},
    {"File", {"describe", "SNVT_switch", "--svg", ""}, {"files"}},
    {"FolderForAnArgument", {"check", ""}, {"folders"}},
    {"NothingForAnUnknownCommand", {"nonsense", ""}, {"words"}},
    {"NothingWithoutACatalogue", {"--catalog", "/nowhere", "decode", ""}, {"words"}},
    {"TheCatalogueOfTheLastOption",
     {"decode", "--catalog", KORVAT_SOURCE_DIR, "--catalog=/nowhere", ""},
     {"words"}},
};
INSTANTIATE_TEST_SUITE_P(Completion, Offer, testing::ValuesIn(kParserCases), kNameOf);

TEST(Completion, SkipsAnOptionThatDoesNotExist) {
  EXPECT_THAT(complete({"--nonsense", "completion", ""}), Contains("fish"));
}

TEST(Completion, OffersEveryCommandWithWhatItDoes) {
  const Words lines = linesOf(runTool({"complete", ""}).output);
  EXPECT_THAT(lines, Contains("decode\tConvert raw values to JSON"));
  EXPECT_THAT(complete({"dec"}), ElementsAreArray(complete({""})));
}

TEST(Completion, OffersTheOptionsOfTheCommandAndOfTheProgram) {
  const Words program = complete({"--"});
  EXPECT_THAT(program, Contains("--catalog"));
  EXPECT_THAT(program, Not(Contains("--stream")));
  const Words decode = complete({"decode", "-"});
  EXPECT_THAT(decode, Contains("--catalog"));
  EXPECT_THAT(decode, Contains("--stream"));
  EXPECT_THAT(decode, Contains("--help").Times(1));
}

TEST(Completion, FindsACatalogueUnderTheHomeFolder) {
  const OwnCatalogue files;
  const std::filesystem::path folder = files.path();
  setenv("HOME", folder.parent_path().c_str(), 1);
  const Words words = {"--catalog", "~/" + folder.filename().string(), "decode", ""};
  EXPECT_THAT(complete(words), ElementsAreArray(kValueTypes));
}

TEST(Completion, SaysNothingAboutABrokenCatalogue) {
  TempCatalogue files;
  files.writeRaw(TypeId::StdPrefix, "nvs", "<ldrf><items>");
  EXPECT_THAT(complete({"--catalog", files.path(), "decode", ""}), ElementsAreArray({"words"}));
}

TEST(Completion, OffersABoundedNumberOfMembers) {
  const OwnCatalogue files;
  EXPECT_EQ(complete({"--catalog", files.path(), "get", "SNVT_many", "00", ""}).size(), 1001u);
}

// --- The scripts ---

class ShellScript : public testing::TestWithParam<std::string> {
 protected:
  void SetUp() override {
    if (run("command -v " + GetParam()).empty()) GTEST_SKIP() << "no " << GetParam();
    std::ofstream(scriptPath()) << runTool({"completion", GetParam()}).output;
  }

  std::string scriptPath() const { return _files.path() + "/script." + GetParam(); }

  // What a command prints on either channel.
  static std::string run(const std::string& command) {
    std::string text;
    std::FILE* pipe = popen(("{ " + command + "\n} 2>&1").c_str(), "r");
    char block[4096];
    std::size_t size = 0;
    while ((size = std::fread(block, 1, sizeof block, pipe)) > 0) text.append(block, size);
    pclose(pipe);
    return text;
  }

  OwnCatalogue _files;
};

TEST_P(ShellScript, IsUnderstoodByItsShell) {
  EXPECT_EQ(run(GetParam() + " -n " + scriptPath() + " && echo good"), "good\n");
}
INSTANTIATE_TEST_SUITE_P(Completion, ShellScript, testing::Values("bash", "zsh", "fish"),
                         [](const auto& info) { return info.param; });

class BashScript : public ShellScript {
 protected:
  // The replies of the completion function, one a line. `words` are those of the line, as bash
  // splits it, each quoted once more.
  std::string replies(const std::string& words) {
    const std::string path = _files.path() + "/driver.bash";
    std::ofstream(path) << "source " << scriptPath() << "\ncd " << _files.path() << "\nCOMP_WORDS=("
                        << KORVAT_TOOL << " --catalog '" << _files.path() << "' " << words
                        << ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                        << "_korvat \"${COMP_WORDS[0]}\"\n"
                        << "for reply in \"${COMPREPLY[@]}\"; do echo \"$reply\"; done\n";
    return run("bash " + path);
  }
};

TEST_P(BashScript, RepliesWithWhatFits) {
  EXPECT_EQ(replies("comple"), "completion\n");
  EXPECT_EQ(replies("--ord"), "--order\n");
  EXPECT_EQ(replies("--order = l"), "little\n");
  EXPECT_EQ(replies("--order ="), "big\nlittle\n");
  EXPECT_EQ(replies("get SNVT_room"), "SNVT_room\nSNVT_rooms\n");
  EXPECT_EQ(replies("set SNVT_room 00 mode ''"), "M_OFF\nM_ON\n");
  EXPECT_EQ(replies("check /"), "");  // bash itself knows the folders
  EXPECT_EQ(replies("get SNVT_none 00 ''"), "");
}

TEST_P(BashScript, WritesBracketsSoThatBashLeavesThem) {
  EXPECT_EQ(replies("get SNVT_room 00 levels"),
            "levels\nlevels\\[0\\]\nlevels\\[1\\]\nlevels\\[2\\]\n");
  EXPECT_EQ(replies("get SNVT_room 00 'levels\\[1'"), "levels\\[1\\]\n");
  EXPECT_EQ(replies("get SNVT_room 00 \"'levels[1\""), "levels[1]\n");
}

TEST_P(BashScript, RunsNothingThatACatalogueOrTheLineNames) {
  EXPECT_EQ(replies("get SNVT_room '$(touch hit)' ''"),
            "mode\nlevels\nlevels\\[0\\]\nlevels\\[1\\]\nlevels\\[2\\]\nname\n");
  EXPECT_EQ(replies("get '`touch hit`' 00 ''"), "");
  EXPECT_EQ(replies("get 'SNVT_$'"), "");
  EXPECT_FALSE(std::filesystem::exists(_files.path() + "/hit"));
}
INSTANTIATE_TEST_SUITE_P(Completion, BashScript, testing::Values("bash"),
                         [](const auto& info) { return info.param; });

}  // namespace

}  // namespace zavri::test
