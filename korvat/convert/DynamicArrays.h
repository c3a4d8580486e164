#pragma once

#include <string>
#include <vector>

#include "korvat/members/Member.h"

// A dynamic array takes its element count from the number before it.
namespace zavri::korvat {

class MemScalar;

// To be called after each member that a converter has visited, with the key it goes by: a count
// that claims more than the array that comes next can hold means all of it.
void limitArraySize(Member::Context& context, const std::string& key, const Member& member);

// A dynamic array, with the members between its count and itself.
struct CountedArray {
  const Member* array = nullptr;     // null when there is none
  const std::string* key = nullptr;  // its name in the structure
  std::vector<const Member*> between;
};

// The dynamic array whose element count the scalar is: the next array in the structure around it,
// with nothing in between that would set or drop the count on the way. Either may be given by a
// reference; `key` is the name that the scalar goes by.
CountedArray findCountedArray(const Member::Context& context, const std::string& key,
                              const MemScalar& scalar);

}  // namespace zavri::korvat
