#pragma once

#include <string>
#include <vector>

#include "korvat/types/TypeManager.h"
#include "tool/Finding.h"

namespace zavri::korvat {
class BaseType;
}

namespace zavri::korvat::tool {

// What is wrong with one type; without file and line.
struct Problem {
  Severity severity;
  std::string message;
};

// Looks at a type that is loaded: references, limits, bit fields, names, size and display formats
// of a variable type; the enumerators of an enumeration; the datapoints of a profile. The library's
// own messages go to the sink of the Logger meanwhile.
std::vector<Problem> checkType(TypeManager& manager, const BaseType& type);

}  // namespace zavri::korvat::tool
