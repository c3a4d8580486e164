#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/format/ArgumentExpression.h"
#include "korvat/format/Concatenation.h"
#include "korvat/format/Condition.h"
#include "korvat/format/Field.h"
#include "korvat/format/Format.h"
#include "korvat/format/FormattedString.h"

namespace zavri::korvat::format {

// Parses display formats by recursive descent. White space may stand between all tokens.
//
//   expression := "text" format
//   format     := string | condition | concat
//   string     := '(' '"' text '"' { ',' field } ')'
//   concat     := '(' part { ',' part } ')'
//   part       := string | condition | "date" '(' args ')' | "time" '(' args ')'
//   condition  := '(' '(' name ( "==" | "!=" ) integer ')' '?' format ':' format ')'
//   field      := name | [ name ] '*' number [ signed number ] [ '(' integer ':' integer ')' ]
//   args       := name { [ ',' ] name } [ ',' ]
//   name       := letters, digits, '_', '.', '[' and ']'; a member path, not looked into here
//
// A quote inside the text of a string is escaped by "\". What stands behind the format is not
// looked at. A parser may be used for one expression after the other.
class KORVAT_API FormatParser {
 public:
  // Conditions inside each other after which a format is refused.
  static constexpr unsigned kMaxNesting = 200;

  // False, and getError() tells why, when `input` is no format; there is then no result.
  [[nodiscard]] bool parse(const std::string& input);

  // The result of the last parse; null after a failure, and once it was taken.
  std::unique_ptr<Format> takeFormat() { return std::move(_format); }

  // Innermost problem first, with the byte position where it was met; then, each behind "; ", what
  // that made impossible. Empty after a success.
  const std::string& getError() const { return _error; }

  // Whether an error also quotes the rest of the input.
  void setQuoteRest(bool isOn) { _quoteRest = isOn; }

 private:
  [[nodiscard]] bool parseExpression(std::unique_ptr<FormatBase>& body);
  [[nodiscard]] bool parseFormat(std::unique_ptr<FormatBase>& node);
  [[nodiscard]] bool parseStringFormat(std::unique_ptr<FormatBase>& node);
  [[nodiscard]] bool parseQuoted(std::string& text);
  [[nodiscard]] bool parseConcatenation(std::unique_ptr<FormatBase>& node);
  [[nodiscard]] bool parsePart(std::unique_ptr<FormatBase>& node);
  [[nodiscard]] bool parseCondition(std::unique_ptr<FormatBase>& node);
  [[nodiscard]] bool parseTest(Condition& condition);
  [[nodiscard]] bool parseFieldSpec(std::unique_ptr<Field>& field);
  [[nodiscard]] bool parseNumericSpec(Field::NumericSpec& spec);
  [[nodiscard]] bool parseArguments(ArgumentExpression& function);
  [[nodiscard]] bool parseName(std::string& name);
  [[nodiscard]] bool parseNumber(double& number);
  [[nodiscard]] bool parseInteger(std::int32_t& number);
  [[nodiscard]] bool parseInteger(std::optional<std::int32_t>& number);

  bool isAtEnd() const { return _pos >= _input.size(); }
  // The character at the cursor; NUL at the end.
  char peek() const { return isAtEnd() ? '\0' : _input[_pos]; }
  void skipSpace();
  void skipDigits();
  // Position of the first character that is no white space, from `pos` on.
  std::size_t findToken(std::size_t pos) const;
  // Takes one character, white space before it included.
  [[nodiscard]] bool expect(char character, const char* error);
  // Takes the name of a function when a parenthesis follows it; else nothing moves.
  bool takeFunction(const char* name);

  // Records a problem at the cursor; always false.
  bool fail(const std::string& message);

  std::string _input;
  std::size_t _pos = 0;  // of the cursor, in bytes
  std::string _error;
  bool _quoteRest = false;
  unsigned _nesting = 0;
  bool _isInputQuoted = false;  // by a warning about unmatched conversions
  std::unique_ptr<Format> _format;
};

}  // namespace zavri::korvat::format
