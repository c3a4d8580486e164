#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace zavri::korvat::tool {

// What may stand in one place of the command line.
struct Offers {
  enum class Kind { Words, Files, Folders };
  struct Word {
    std::string text;
    std::string description;  // may be empty
  };

  Kind kind = Kind::Words;
  std::vector<Word> words;  // for Kind::Words only
};

// What may stand in the place of the last of `words`, which are those behind the name of the
// program. Of the last word only its form counts: whether it begins like an option, or an option's
// value behind "=". What it begins with does not, as shells compare in their own ways; member paths
// alone, which can be very many, are limited to those that it is the beginning of, or that are the
// beginning of it.
//
// Commands, options and their fixed values are those that `app` has. The names of types and what is
// in them come from the catalogue that the words choose; without one there are no offers. A name
// with a character that a shell could take for more than itself is never offered.
Offers findOffers(const CLI::App& app, const std::vector<std::string>& words);

}  // namespace zavri::korvat::tool
