#pragma once

#include <string>

#include "korvat/members/Member.h"

// A dynamic array takes its element count from the number before it.
namespace zavri::korvat {

class MemScalar;

// To be called after each member that a converter has visited, with the key it goes by: a count
// that claims more than the array that comes next can hold means all of it.
void limitArraySize(Member::Context& context, const std::string& key, const Member& member);

// The dynamic array whose element count the scalar is: the next array in its structure, with
// nothing in between that would set or drop the count on the way; null when there is none.
const Member* findCountedArray(const Member::Context& context, const MemScalar& scalar);

}  // namespace zavri::korvat
