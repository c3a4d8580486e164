#pragma once

#include <string>

#include "korvat/base/Endianess.h"

namespace zavri::korvat::tool {

// What the command line says besides the command and its arguments.
struct Options {
  std::string catalog;  // base folder; empty for the installed one or that of the source tree
  std::string prefix;   // set that bare type names belong to; empty for the standard set
  base::Endianess order = base::Endianess::Big;
  bool useDynamicArrays = false;
  bool supportInvalidKeyword = false;
  bool useUnionHex = false;
  bool allowMissingFields = false;
  bool allowUndefinedFields = false;
  bool refuseCutting = false;
  bool acceptAnyLength = false;
  bool printJson = false;
  std::string errorForm = "text";  // "text" or "json"
  std::string color = "auto";      // "auto", "always" or "never"
  int logLevel = -1;               // of base::Logger; silent by default
};

}  // namespace zavri::korvat::tool
