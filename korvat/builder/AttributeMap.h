#pragma once

#include <map>
#include <string>

namespace zavri::korvat::builder {

// Attributes of one element start, value by name.
using AttributeMap = std::map<std::string, std::string>;

// Value of the attribute `name` (exact), or null.
inline const std::string* findAttribute(const AttributeMap& attributes, const std::string& name) {
  const auto found = attributes.find(name);
  return found == attributes.end() ? nullptr : &found->second;
}

// `text` for a message; "(null)" where there is none.
inline const char* toPrintable(const std::string* text) {
  return text == nullptr ? "(null)" : text->c_str();
}

}  // namespace zavri::korvat::builder
