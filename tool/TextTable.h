#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "korvat/base/AsciiText.h"

namespace zavri::korvat::tool {

// Columns of text output; a longer text is left as it is.

inline std::string pad(std::string text, std::size_t width) {
  if (text.size() < width) text.resize(width, ' ');
  return text;
}

inline std::string rightAlign(const std::string& text, std::size_t width) {
  return std::string(text.size() < width ? width - text.size() : 0, ' ') + text;
}

// Pieces of hexadecimal text, or other words, as one text.
inline std::string join(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

// "1 type", "2 types"
inline std::string plural(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

inline std::string bytesText(std::size_t count) {
  return plural(count, "byte");
}

// Texts are searched without regard to case.
inline std::string lowered(std::string text) {
  for (char& c : text) c = util::toLower(c);
  return text;
}

// One line of output, without blanks at its end.
inline std::string toLine(const std::string& text) {
  return text.substr(0, text.find_last_not_of(' ') + 1) + "\n";
}

}  // namespace zavri::korvat::tool
