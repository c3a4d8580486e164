#pragma once

#include <string>
#include <vector>

#include "korvat/members/Member.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat::tool {

// One member in the layout of a type, as a walk meets it.
struct LayoutRow {
  const Member* member = nullptr;
  std::string path;                  // "values[].state"; an array's elements are shown once
  unsigned nesting = 0;              // structures, unions and arrays around it
  unsigned byteOffset = 0;           // bytes from the start of the value, for the first element
  unsigned bitOffset = 0;            // bits inside that byte, from the most significant one
  unsigned bitCount = 0;             // bits of one element
  const VarType* refType = nullptr;  // type that gives the member its layout, if it is a reference
};

// Rows beyond which a layout is not shown: a few types can describe billions of members.
inline constexpr std::size_t kMaxLayoutRows = 100'000;

// All members in the order of the layout. Throws Failure when it cannot be followed, or is larger
// than kMaxLayoutRows.
std::vector<LayoutRow> makeLayout(TypeManager& manager, const VarType& type);

}  // namespace zavri::korvat::tool
