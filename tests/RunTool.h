#pragma once

#include <string>
#include <vector>

namespace zavri::test {

struct ToolResult {
  int status = -1;  // exit status; -1 when the program was ended by a signal
  std::string output;
  std::string errors;
};

// Runs the built program with these arguments, `input` on its standard input, and waits for it.
ToolResult runTool(const std::vector<std::string>& arguments, const std::string& input = "");

}  // namespace zavri::test
