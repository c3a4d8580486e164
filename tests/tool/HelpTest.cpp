#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "tests/RunTool.h"
#include "tests/TempCatalogue.h"

// What --help says, and whether its examples work.
namespace zavri::test {

namespace {

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// The commands that the help of the program lists.
std::vector<std::string> findCommands() {
  std::vector<std::string> commands;
  bool isListed = false;
  for (const std::string& line : linesOf(runTool({"--help"}).output)) {
    if (line == "Subcommands:") {
      isListed = true;
    } else if (isListed && line.rfind("  ", 0) == 0 && line[2] != ' ') {
      commands.push_back(line.substr(2, line.find(' ', 2) - 2));
    }
  }
  return commands;
}

std::vector<std::string> findExamples(const std::string& command) {
  std::vector<std::string> examples;
  bool isExample = false;
  for (const std::string& line : linesOf(runTool({command, "--help"}).output)) {
    if (isExample && line.rfind("  ", 0) == 0) examples.push_back(line.substr(2));
    if (line == "Examples:") isExample = true;
  }
  return examples;
}

std::string readFile(const std::filesystem::path& path) {
  std::stringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

TEST(Help, ListsTheCommands) {
  const std::vector<std::string> commands = findCommands();
  EXPECT_GE(commands.size(), 15u);
  EXPECT_EQ(commands.front(), "decode");
}

TEST(Help, HasExamplesThatWorkForEveryCommand) {
  // A folder with a small catalogue, as somebody would have who tries the examples.
  TempCatalogue folder;
  const std::filesystem::path root = folder.path();
  std::filesystem::copy(KORVAT_SOURCE_DIR "/tests/data/catalogue", root / "mycatalogue",
                        std::filesystem::copy_options::recursive);
  const std::string setUp = "cd '" + root.string() + "' && PATH='" +
                            std::filesystem::path(KORVAT_TOOL).parent_path().string() +
                            "':$PATH && { ";
  for (const std::string& command : findCommands()) {
    const std::vector<std::string> examples = findExamples(command);
    EXPECT_GE(examples.size(), 2u) << command;
    for (const std::string& example : examples) {
      const std::string line = setUp + example + "; } >out 2>errors";
      const int status = std::system(line.c_str());
      EXPECT_EQ(WEXITSTATUS(status), 0) << example << "\n" << readFile(root / "errors");
      EXPECT_EQ(readFile(root / "errors"), "") << example;
      const bool isFileWritten =
          example.find(" > ") != std::string::npos || example.find("--svg ") != std::string::npos;
      EXPECT_EQ(readFile(root / "out").empty(), isFileWritten) << example;
    }
  }
}

}  // namespace

}  // namespace zavri::test
