#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace zavri::korvat::tool {

// Adds the command that prints what a shell (bash, zsh or fish) has to run so that it completes the
// command line of the program.
void addCompletionCommand(CLI::App& app);

// What these scripts ask the program, as "korvat complete WORDS": what may stand in the place of
// the last of these words of a command line. Prints "words", "files" or "folders", and after
// "words" one candidate a line, some with a tab and a description. `app` does not parse the words:
// they may be wrong, or not finished yet.
void runComplete(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace zavri::korvat::tool
