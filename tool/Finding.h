#pragma once

#include <string>
#include <vector>

namespace zavri::korvat::tool {

enum class Severity {
  Error,    // a type is missing, or its values are converted wrongly or otherwise than before
  Warning,  // what was meant is done, but something is not as it should be
  Note,     // nothing to repair
};

// What there is to say about one place of a catalogue.
struct Finding {
  std::string file;
  unsigned long line = 0;  // from 1; 0 for the file or folder as a whole
  Severity severity = Severity::Error;
  std::string type;  // as people write it; empty for what belongs to no type
  std::string message;
};

// In the order of files and lines; those of one line stay as they are.
void sortByPlace(std::vector<Finding>& findings);

// Writes them to standard output: one line each, "nvs.xml:12: error: SNVT_x: message", as editors
// and CI systems read it, or an array of objects in JSON.
void printFindings(const std::vector<Finding>& findings, bool asJson);

}  // namespace zavri::korvat::tool
