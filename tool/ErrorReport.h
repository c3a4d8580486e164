#pragma once

#include <CLI/CLI.hpp>

#include "tool/Failure.h"

namespace zavri::korvat::tool {

// Whether errors are to be printed for programs, as JSON. Looks at the bare arguments, for the
// command line may be what is wrong.
bool isJsonErrorWanted(int argumentCount, char** arguments);

// What is wrong with the command line, with the command or option that may have been meant.
Failure usageFailure(const CLI::App& app, const CLI::ParseError& error);

// Prints an error on standard error, as one line: "korvat: " and the message, or an object with
// "error", "status" and the details of the failure. Gives the exit status.
int report(const Failure& failure, bool asJson);

}  // namespace zavri::korvat::tool
