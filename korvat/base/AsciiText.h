#pragma once

namespace zavri::util {

// Characters of ASCII, whatever the locale.

// Blank, tab, line feed, vertical tab, form feed, carriage return.
constexpr bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

constexpr bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

constexpr bool isLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

constexpr char toLower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Value of a hexadecimal digit of either case, or -1.
constexpr int hexValue(char digit) {
  if (digit >= '0' && digit <= '9') return digit - '0';
  if (digit >= 'A' && digit <= 'F') return digit - 'A' + 10;
  if (digit >= 'a' && digit <= 'f') return digit - 'a' + 10;
  return -1;
}

}  // namespace zavri::util
