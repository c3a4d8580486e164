#pragma once

#include <string>

namespace zavri::korvat::tool {

enum class Severity {
  Error,    // a type is missing, or its values are converted wrongly
  Warning,  // what was meant is done, but something is not as it should be
};

// What is wrong at one place of a catalogue.
struct Finding {
  std::string file;
  unsigned long line = 0;  // from 1; 0 for the file or folder as a whole
  Severity severity = Severity::Error;
  std::string type;  // as people write it; empty for what belongs to no type
  std::string message;
};

}  // namespace zavri::korvat::tool
