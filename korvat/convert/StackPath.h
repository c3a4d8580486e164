#pragma once

#include <string>

namespace zavri::korvat {

// Appends the path to the top of a converter's stack: "values[3].state".
template <typename Stack>
void appendStackPath(const Stack& stack, std::string& text) {
  for (const auto& item : stack) {
    if (item.name != nullptr && !item.name->empty()) {
      if (!text.empty()) text += '.';
      text += *item.name;
    } else if (item.index >= 0) {
      text += '[' + std::to_string(item.index) + ']';
    }
  }
}

}  // namespace zavri::korvat
