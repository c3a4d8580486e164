#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// JSON text of single values, as json::Value writes it.
namespace zavri::json {

// Appends `content` in quotes. The text is valid UTF-8 whatever it holds: broken sequences become
// U+FFFD.
void appendJsonString(std::string& text, std::string_view content);

// Appends an integer of 64 bits, or the shortest text that reads back as the same single or double,
// with a point or an exponent; "null" for NaN and the infinities.
template <typename T>
void appendJsonNumber(std::string& text, T number);

}  // namespace zavri::json
