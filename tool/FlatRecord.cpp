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
         std::all_of(word.begin(), word.end(), isDigit);
}

}  // namespace

bool FlatRecord::has(std::string_view name) const {
  return std::find(_names.begin(), _names.begin() + static_cast<std::ptrdiff_t>(_count), name) !=
         _names.begin() + static_cast<std::ptrdiff_t>(_count);
}

void FlatRecord::skipBlanks(std::string_view line) {
  while (_position < line.size() && isBlank(line[_position])) ++_position;
}

bool FlatRecord::take(std::string_view line, char c) {
  if (_position == line.size() || line[_position] != c) return false;
  ++_position;
  return true;
}

bool FlatRecord::takeText(std::string_view line, std::string_view& text) {
  if (!take(line, '"')) return false;
  const std::size_t begin = _position;
  while (_position < line.size() && isPlain(line[_position])) ++_position;
  text = line.substr(begin, _position - begin);
  return take(line, '"');
}

bool FlatRecord::takeWord(std::string_view line, std::string_view& word) {
  const std::size_t begin = _position;
  const auto isPart = [](char c) { return isDigit(c) || c == '-' || (c >= 'a' && c <= 'z'); };
  while (_position < line.size() && isPart(line[_position])) ++_position;
  word = line.substr(begin, _position - begin);
  return isKept(word);
}

// Goes on to the comma or the brace that ends the value, which may hold objects and arrays.
bool FlatRecord::takeNested(std::string_view line, std::string_view& value) {
  const std::size_t begin = _position;
  std::size_t depth = 0;
  while (_position < line.size()) {
    const char c = line[_position];
    if (c == '"') {
      std::string_view text;
      if (!takeText(line, text)) return false;
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
  value = line.substr(begin, _position - begin);
  return !value.empty();
}

bool FlatRecord::read(std::string_view line, bool takesValue, std::string& text) {
  _count = _position = 0;
  _type = _raw = _value = {};
  _hasType = _hasRaw = false;
  skipBlanks(line);
  if (!take(line, '{')) return false;
  text += '{';
  while (true) {
    if (!readProperty(line, takesValue, text)) return false;
    skipBlanks(line);
    if (take(line, '}')) break;
    if (!take(line, ',')) return false;
    text += ',';
  }
  skipBlanks(line);
  return _position == line.size();
}

bool FlatRecord::readProperty(std::string_view line, bool takesValue, std::string& text) {
  std::string_view name;
  skipBlanks(line);
  if (!takeText(line, name) || has(name) || _count == kMostProperties) return false;
  _names[_count++] = name;
  skipBlanks(line);
  if (!take(line, ':')) return false;
  skipBlanks(line);
  text += '"';
  text += name;
  text += "\":";
  if (takesValue && name == "value") {
    if (!takeNested(line, _value)) return false;
    text += _value;
    return true;
  }
  std::string_view value;
  if (_position < line.size() && line[_position] != '"') {
    if (!takeWord(line, value)) return false;
    text += value;
    return true;
  }
  if (!takeText(line, value)) return false;
  text += '"';
  if (name == "type") {
    _hasType = true;
    _type = value;
  } else if (name == "raw") {
    _hasRaw = true;
    _raw = value;
    _rawPosition = text.size();
  }
  text += value;
  text += '"';
  return true;
}

}  // namespace zavri::korvat::tool
