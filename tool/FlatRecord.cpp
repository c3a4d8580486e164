#include "tool/FlatRecord.h"

#include <algorithm>

namespace zavri::korvat::tool {

namespace {

// Characters that stand for themselves in JSON text, read and written.
constexpr std::array<bool, 256> makePlainTable() {
  std::array<bool, 256> table{};
  for (std::size_t c = 0x20; c < 0x7F; ++c) table[c] = c != '"' && c != '\\';
  return table;
}

constexpr std::array<bool, 256> kIsPlain = makePlainTable();

bool isPlain(char c) {
  return kIsPlain[static_cast<unsigned char>(c)];
}

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool isBlank(char c) {
  return c == ' ' || c == '\t';
}

// An integer that is printed as it is written, or one of the words.
bool isKept(std::string_view word) {
  if (word == "true" || word == "false" || word == "null" || word == "0") return true;
  if (!word.empty() && word.front() == '-') word.remove_prefix(1);
  constexpr std::size_t kMostDigits = 18;  // that any integer of 64 bits has room for
  return !word.empty() && word.size() <= kMostDigits && word.front() != '0' &&
         std::all_of(word.begin(), word.end(), [](char c) { return isDigit(c); });
}

}  // namespace

bool FlatRecord::has(std::string_view name) const {
  return std::find(_names.begin(), _names.begin() + static_cast<std::ptrdiff_t>(_count), name) !=
         _names.begin() + static_cast<std::ptrdiff_t>(_count);
}

inline void FlatRecord::skipBlanks(std::string& text) {
  if (_position != _line.size() && isBlank(_line[_position])) dropBlanks(text);
}

void FlatRecord::dropBlanks(std::string& text) {
  text += _line.substr(_copied, _position - _copied);
  while (_position < _line.size() && isBlank(_line[_position])) ++_position;
  _copied = _position;
}

bool FlatRecord::take(char c) {
  if (_position == _line.size() || _line[_position] != c) return false;
  ++_position;
  return true;
}

bool FlatRecord::takeText(std::string_view& text) {
  if (!take('"')) return false;
  const char* const begin = _line.data() + _position;
  const char* const lineEnd = _line.data() + _line.size();
  const char* end = begin;
  while (end != lineEnd && isPlain(*end)) ++end;
  text = {begin, static_cast<std::size_t>(end - begin)};
  _position += text.size();
  return take('"');
}

bool FlatRecord::takeWord() {
  const std::size_t begin = _position;
  const auto isPart = [](char c) { return isDigit(c) || c == '-' || (c >= 'a' && c <= 'z'); };
  while (_position < _line.size() && isPart(_line[_position])) ++_position;
  return isKept(_line.substr(begin, _position - begin));
}

// Goes on to the comma or the brace that ends the value, which may hold objects and arrays.
bool FlatRecord::takeNested() {
  const std::size_t begin = _position;
  std::size_t depth = 0;
  while (_position < _line.size()) {
    const char c = _line[_position];
    if (c == '"') {
      std::string_view text;
      if (!takeText(text)) return false;
      continue;
    }
    if (!isPlain(c)) return false;
    if (c == '{' || c == '[') ++depth;
    if (depth == 0 && (c == ',' || c == '}')) break;
    if (c == '}' || c == ']') {
      if (depth == 0) return false;
      --depth;
    }
    ++_position;
  }
  _value = _line.substr(begin, _position - begin);
  return !_value.empty();
}

bool FlatRecord::read(std::string_view line, bool takesValue, std::string& text) {
  _line = line;
  _count = _position = _copied = 0;
  _type = _raw = _value = {};
  _hasType = _hasRaw = false;
  skipBlanks(text);
  if (!take('{')) return false;
  do {
    skipBlanks(text);
    std::string_view name;
    if (!takeText(name) || has(name) || _count == kMostProperties) return false;
    _names[_count++] = name;
    skipBlanks(text);
    if (!take(':')) return false;
    skipBlanks(text);
    if (!readProperty(takesValue, text)) return false;
    skipBlanks(text);
  } while (take(','));
  text += _line.substr(_copied, _position - _copied);
  if (!take('}')) return false;
  return std::all_of(_line.begin() + static_cast<std::ptrdiff_t>(_position), _line.end(), isBlank);
}

bool FlatRecord::readProperty(bool takesValue, const std::string& text) {
  const std::string_view name = _names[_count - 1];
  if (takesValue && name == "value") return takeNested();
  if (_position == _line.size()) return false;
  if (_line[_position] != '"') return takeWord();
  const std::size_t position = text.size() + _position + 1 - _copied;
  std::string_view value;
  if (!takeText(value)) return false;
  if (name == "type") {
    _hasType = true;
    _type = value;
  } else if (name == "raw") {
    _hasRaw = true;
    _raw = value;
    _rawPosition = position;
  }
  return true;
}

}  // namespace zavri::korvat::tool
