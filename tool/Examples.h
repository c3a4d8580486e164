#pragma once

#include <CLI/CLI.hpp>

namespace zavri::korvat::tool {

// Adds examples to the help of each command that `app` has.
void addExamples(CLI::App& app);

}  // namespace zavri::korvat::tool
