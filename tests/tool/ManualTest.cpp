#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/RunTool.h"

// The manual page of the program against what the program says of itself.
namespace zavri::test {

namespace {

using Names = std::set<std::string>;

std::string readPage() {
  std::ifstream file(KORVAT_SOURCE_DIR "/docs/man/korvat.1");
  return {std::istreambuf_iterator<char>(file), {}};
}

// What the first group of `pattern` matches, wherever it does.
Names findAll(const std::string& text, const std::string& pattern) {
  const std::regex regex(pattern, std::regex::ECMAScript | std::regex::multiline);
  Names names;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match) {
    names.insert((*match)[1]);
  }
  return names;
}

std::string helpOf(const std::vector<std::string>& words) {
  std::vector<std::string> arguments = words;
  arguments.push_back("--help");
  return runTool(arguments).output;
}

Names commandsOf(const std::string& help) {
  const std::size_t begin = help.find("\nSubcommands:\n");
  return begin == std::string::npos ? Names{} : findAll(help.substr(begin), "^  ([a-z]+) ");
}

Names optionsOf(const std::string& help) {
  return findAll(help, "^  (?:-[a-z],)?--([a-z-]+)");
}

TEST(ManualPage, HasEveryCommandOfTheHelp) {
  const Names commands = commandsOf(helpOf({}));
  ASSERT_GE(commands.size(), 10u);
  const Names described = findAll(readPage(), "^\\.It Ic ([a-z]+)");
  for (const std::string& command : commands) {
    EXPECT_EQ(described.count(command), 1u) << "korvat.1 has no entry for the command " << command;
  }
}

TEST(ManualPage, HasEveryLongOptionOfTheHelp) {
  const std::string page = readPage();
  Names described = findAll(page, "^\\.It Fl -([a-z-]+)");
  described.merge(findAll(page, "^\\.It Fl [a-z] , Fl -([a-z-]+)"));
  std::vector<std::vector<std::string>> places = {{}};
  for (const std::string& command : commandsOf(helpOf({}))) places.push_back({command});
  for (const std::vector<std::string>& place : places) {
    const Names options = optionsOf(helpOf(place));
    EXPECT_EQ(options.count("help"), 1u);
    for (const std::string& option : options) {
      EXPECT_EQ(described.count(option), 1u)
          << "korvat.1 has no entry for --" << option
          << (place.empty() ? "" : " of the command " + place.front());
    }
  }
}

TEST(ManualPage, DescribesNoCommandAndNoOptionThatIsGone) {
  const std::string help = helpOf({});
  Names commands = commandsOf(help);
  Names options = optionsOf(help);
  for (const std::string& command : commands) options.merge(optionsOf(helpOf({command})));
  commands.insert("complete");  // the help does not show it
  for (const std::string& command : findAll(readPage(), "^\\.It Ic ([a-z]+)")) {
    EXPECT_EQ(commands.count(command), 1u) << command;
  }
  for (const std::string& option : findAll(readPage(), "^\\.It Fl -([a-z-]+)")) {
    EXPECT_EQ(options.count(option), 1u) << option;
  }
}

}  // namespace

}  // namespace zavri::test
