#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "korvat/types/TypeId.h"
#include "tool/TextTable.h"
#include "tool/TypeDiff.h"

// What the comparisons of the kinds of types share.
namespace zavri::korvat::tool {

// "state: " for a message; nothing for the value itself.
inline std::string prefixOf(const std::string& path) {
  return path.empty() ? "" : path + ": ";
}

inline std::string quoted(const std::string& text) {
  return "'" + text + "'";
}

// "b instead of a"
inline std::string insteadOf(const std::string& newText, const std::string& oldText) {
  return newText + " instead of " + oldText;
}

// Differences in the order in which they are found.
class ChangeList {
 public:
  void wire(const std::string& message) { _changes.push_back({Breaks::Wire, message}); }
  void json(const std::string& message) { _changes.push_back({Breaks::Json, message}); }
  void note(const std::string& message) { _changes.push_back({Breaks::Nothing, message}); }

  // The last one, whose weight the end of the comparison may settle.
  std::size_t getLastIndex() const { return _changes.size() - 1; }
  void setBreaks(std::size_t index, Breaks breaks) { _changes[index].breaks = breaks; }

  bool isEmpty() const { return _changes.empty(); }
  std::vector<Change> take() { return std::move(_changes); }

 private:
  std::vector<Change> _changes;
};

// "SNVT_x", with its set when that is not the standard one.
inline std::string nameOf(const TypeId& id) {
  const std::string prefix = id.getPrefix();
  return (prefix == TypeId::StdPrefix ? "" : prefix + "/") + id.toLonFormatId();
}

}  // namespace zavri::korvat::tool
