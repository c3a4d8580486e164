#pragma once

#include <string>

#include "tool/ValueShape.h"

namespace zavri::korvat::tool {

// What the command line says about a stream of records.
struct StreamOptions {
  std::string type;    // of records that name none; may be empty
  bool isCsv = false;  // output: rows instead of JSON
  bool isFromCsv = false;
  std::string rawColumn = "raw";  // of CSV input: what is to be decoded
  ShapeOptions shape;
};

}  // namespace zavri::korvat::tool
