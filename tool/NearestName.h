#pragma once

#include <string>
#include <vector>

namespace zavri::korvat::tool {

// The names that somebody may have meant who wrote `given`, at most three: those that the fewest
// typing mistakes (a character wrong, missing, too many, or two exchanged; case does not count)
// turn into it, if those are few, else those that hold it as a part, the shortest first.
std::vector<std::string> findNearest(const std::string& given,
                                     const std::vector<std::string>& names);

// "a, b, c"; of many names only the first ones and how many there are.
std::string joinNames(const std::vector<std::string>& names);

// "; did you mean 'a' or 'b'?", empty without names.
std::string didYouMean(const std::vector<std::string>& names);

}  // namespace zavri::korvat::tool
