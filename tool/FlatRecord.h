#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>

namespace zavri::korvat::tool {

// A record of the common form, read without a document: an object of texts, integers, true, false
// and null, in ASCII and without escapes, each property once. What is read refers to the line.
class FlatRecord {
 public:
  // Appends the record to `text` as json::Value::stringify() prints it, without the closing brace.
  // False, with anything appended, for a line of another form: it is no failure yet. With
  // `takesValue` the property "value" may be anything, and is taken as it stands: whether it is
  // JSON is not checked.
  [[nodiscard]] bool read(std::string_view line, bool takesValue, std::string& text);

  // Empty when there is none, or no text.
  std::string_view getType() const { return _type; }
  bool hasType() const { return _hasType; }
  std::string_view getRaw() const { return _raw; }
  bool hasRaw() const { return _hasRaw; }
  // The place of the raw value's text, within its quotes, in what read() has appended to.
  std::size_t getRawPosition() const { return _rawPosition; }
  // The JSON text of "value"; empty when there is none.
  std::string_view getValue() const { return _value; }
  // Whether there is a property of the name, whatever it holds.
  bool has(std::string_view name) const;

 private:
  static constexpr std::size_t kMostProperties = 16;

  bool readProperty(bool takesValue, const std::string& text);
  void skipBlanks(std::string& text);
  void dropBlanks(std::string& text);
  bool take(char c);
  bool takeText(std::string_view& text);
  bool takeWord();
  bool takeNested();

  std::string_view _line;
  std::array<std::string_view, kMostProperties> _names;
  std::size_t _count = 0;
  std::size_t _position = 0;
  std::size_t _copied = 0;  // what stands before this in the line is in the text, or is blank
  std::string_view _type;
  std::string_view _raw;
  std::string_view _value;
  std::size_t _rawPosition = 0;
  bool _hasType = false;
  bool _hasRaw = false;
};

}  // namespace zavri::korvat::tool
