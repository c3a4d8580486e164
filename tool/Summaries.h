#pragma once

#include <map>
#include <string>

#include "korvat/types/BaseType.h"

namespace zavri::korvat::tool {

// What types are for, in the few words that the attribute "summary" of an item says. Types do not
// keep them: the files are read again, each once, when one of its types is first asked for.
class Summaries {
 public:
  explicit Summaries(std::string baseDir) : _baseDir(std::move(baseDir)) {}

  // Empty for a type without one.
  const std::string& find(const BaseType& type);

 private:
  using TextsByName = std::map<std::string, std::string>;

  std::string _baseDir;
  std::map<std::string, TextsByName> _files;  // by path
};

}  // namespace zavri::korvat::tool
