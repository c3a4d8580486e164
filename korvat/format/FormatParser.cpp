#include "korvat/format/FormatParser.h"

#include <string_view>
#include <utility>

#include "korvat/base/AsciiText.h"
#include "korvat/base/StringUtils.h"
#include "korvat/format/Date.h"
#include "korvat/format/Time.h"

namespace zavri::korvat::format {

using util::StringUtils;

namespace {

constexpr std::string_view kStart = "text";
constexpr std::size_t kMaxQuotedSize = 512;  // bytes of an expression that each message may quote

bool isNameCharacter(char c) {
  return util::isDigit(c) || util::isLetter(c) || std::string_view("_.[]").find(c) < 4;
}

}  // namespace

bool FormatParser::parse(const std::string& input) {
  _input = input;
  _pos = 0;
  _error.clear();
  _nesting = 0;
  _isInputQuoted = false;
  _format.reset();

  std::unique_ptr<FormatBase> body;
  if (!parseExpression(body)) return false;
  if (!body) return fail("no resulting format");
  _format = std::make_unique<Format>(input, std::move(body));
  return true;
}

bool FormatParser::parseExpression(std::unique_ptr<FormatBase>& body) {
  if (_input.empty()) return fail("empty");
  if (std::string_view(_input).substr(0, kStart.size()) != kStart) {
    return fail("does not start with 'text'");
  }
  _pos = kStart.size();
  skipSpace();
  if (peek() != '(') return fail("missing opening parenthesis '(' after 'text'");
  return parseFormat(body);
}

// Looks at the next three characters: '("' begins a string, '((' a condition, save where a string
// or another parenthesis follows, and anything else can only be a concatenation.
bool FormatParser::parseFormat(std::unique_ptr<FormatBase>& node) {
  skipSpace();
  if (isAtEnd()) return fail("EOS in parseFormat()");
  const std::size_t secondPos = findToken(_pos + 1);
  const std::size_t thirdPos = findToken(secondPos + 1);
  const char second = secondPos < _input.size() ? _input[secondPos] : '\0';
  const char third = thirdPos < _input.size() ? _input[thirdPos] : '\0';

  if (peek() == '(' && second == '"') return parseStringFormat(node);
  if (peek() == '(' && second == '(' && third != '"' && third != '(') return parseCondition(node);
  return parseConcatenation(node);
}

bool FormatParser::parseStringFormat(std::unique_ptr<FormatBase>& node) {
  if (!expect('(', "missing '(' at begin of parseStringFormat")) return false;
  std::string text;
  if (!parseQuoted(text)) return false;

  auto string = std::make_unique<FormattedString>(text);
  skipSpace();
  while (peek() == ',') {
    ++_pos;
    std::unique_ptr<Field> field;
    if (!parseFieldSpec(field)) return false;
    string->add(std::move(field));
    skipSpace();
  }
  if (isAtEnd()) return fail("EOS in string format arguments");
  if (!expect(')', "missing ')' at end of parseStringFormat")) return false;

  // A long expression of many such strings is quoted once, not in the message about each of them.
  static const std::string nothing;
  const bool isQuoted = !_isInputQuoted || _input.size() <= kMaxQuotedSize;
  if (!string->analyzeFormatSpecs(isQuoted ? _input : nothing)) _isInputQuoted = true;
  node = std::move(string);
  return true;
}

bool FormatParser::parseQuoted(std::string& text) {
  if (!expect('"', "missing opening '\"'")) return false;

  const std::size_t begin = _pos;
  bool isEscaped = false;
  while (!isAtEnd() && (isEscaped || peek() != '"')) {
    isEscaped = !isEscaped && peek() == '\\';
    ++_pos;
  }
  if (isAtEnd()) return fail("string not closed");
  text = _input.substr(begin, _pos - begin);
  return expect('"', "missing '\"'");
}

bool FormatParser::parseConcatenation(std::unique_ptr<FormatBase>& node) {
  if (peek() != '(') return fail("not a concat format");

  auto concatenation = std::make_unique<Concatenation>();
  do {
    ++_pos;  // behind '(' or ','
    std::unique_ptr<FormatBase> part;
    if (!parsePart(part)) return false;
    concatenation->add(std::move(part));
    skipSpace();
  } while (peek() == ',');
  if (isAtEnd()) return fail("EOS while parsing concatenation");
  if (!expect(')', "could not parse concatenation part")) return false;

  node = std::move(concatenation);
  return true;
}

bool FormatParser::parsePart(std::unique_ptr<FormatBase>& node) {
  skipSpace();
  if (isAtEnd()) return fail("EOS while parsing concatenation");
  if (peek() == '(') {
    const std::size_t second = findToken(_pos + 1);
    const bool isString = second < _input.size() && _input[second] == '"';
    if (!isString) {
      return parseCondition(node) || fail("could not parse condition for concatenation");
    }
    return parseFormat(node) || fail("could not parse format for concatenation");
  }

  std::unique_ptr<ArgumentExpression> function;
  if (takeFunction("date")) function = std::make_unique<Date>();
  if (!function && takeFunction("time")) function = std::make_unique<Time>();
  if (!function) return fail("could not parse concatenation part");
  if (!parseArguments(*function)) return false;
  node = std::move(function);
  return true;
}

bool FormatParser::parseCondition(std::unique_ptr<FormatBase>& node) {
  if (_nesting >= kMaxNesting) return fail("conditions nested too deep");

  auto condition = std::make_unique<Condition>();
  if (!parseTest(*condition)) return false;
  if (!expect('?', "expected '?' after ')'")) return false;

  ++_nesting;
  std::unique_ptr<FormatBase> branch;
  if (!parseFormat(branch)) return fail("failed to parse then-branch of condition");
  condition->setThen(std::move(branch));
  if (!expect(':', "expected ':' after ')'")) return false;
  if (!parseFormat(branch)) return fail("failed to parse else-branch of condition");
  condition->setElse(std::move(branch));
  --_nesting;

  if (!expect(')', "missing closing parenthesis of condition")) return false;
  node = std::move(condition);
  return true;
}

bool FormatParser::parseTest(Condition& condition) {
  if (!expect('(', "missing opening parenthesis of if-statement")) return false;
  if (!expect('(', "missing opening parenthesis of condition")) return false;
  std::string name;
  if (!parseName(name) || name.empty()) return fail("could not parse field spec of condition");

  skipSpace();
  const bool isNegated = peek() == '!';
  if (peek() != '=' && !isNegated) return fail("expected '=' or '!' in condition");
  ++_pos;
  if (peek() != '=') return fail("expected '=' in condition");
  ++_pos;
  std::int32_t value = 0;
  if (!parseInteger(value)) return fail("failed to parse int value");
  if (!expect(')', "uexpected char after condition")) return false;

  condition.setTest(name, isNegated ? Condition::Operator::NotEqual : Condition::Operator::Equal,
                    value);
  return true;
}

bool FormatParser::parseFieldSpec(std::unique_ptr<Field>& field) {
  std::string name;
  if (!parseName(name)) return fail("could not parse field spec");
  skipSpace();
  if (peek() != '*') {
    if (name.empty()) return fail("empty field spec");
    field = std::make_unique<Field>(name);
    return true;
  }

  ++_pos;
  Field::NumericSpec spec;
  if (!parseNumericSpec(spec)) return false;
  field = std::make_unique<Field>(name, spec);
  return true;
}

bool FormatParser::parseNumericSpec(Field::NumericSpec& spec) {
  if (!parseNumber(spec.factor)) return fail("failed to parse floating point number");
  skipSpace();
  if (peek() == '+' || peek() == '-') {
    if (!parseNumber(spec.offset)) return fail("failed to parse floating point number");
    skipSpace();
  }
  if (peek() != '(') return true;

  ++_pos;
  if (!parseInteger(spec.mode)) return fail("could not parse mode");
  if (!expect(':', "expected ':' after mode")) return false;
  if (!parseInteger(spec.index)) return fail("could not parse index");
  return expect(')', "expected closing parenthesis");
}

bool FormatParser::parseArguments(ArgumentExpression& function) {
  for (std::size_t number = 1;; ++number) {
    skipSpace();
    if (peek() == ')') break;
    std::string name;
    if (!parseName(name) || name.empty()) {
      return fail("faild to parse function arg #" + std::to_string(number));
    }
    if (!function.add(name)) return fail("faild to add function arg #" + std::to_string(number));
    skipSpace();
    if (peek() == ',') ++_pos;
  }
  if (function.getArguments().empty()) return fail("too few arguments for function call");
  ++_pos;
  return true;
}

// A name may be empty; it is an error only where the input ends.
bool FormatParser::parseName(std::string& name) {
  skipSpace();
  const std::size_t begin = _pos;
  while (isNameCharacter(peek())) ++_pos;
  if (isAtEnd()) return fail("unexpected EOS while parsing field spec");
  name = _input.substr(begin, _pos - begin);
  return true;
}

// Says nothing of its own but where a second point stands.
bool FormatParser::parseNumber(double& number) {
  skipSpace();
  const std::size_t begin = _pos;
  if (peek() == '+' || peek() == '-') ++_pos;
  if (!util::isDigit(peek())) return false;
  skipDigits();
  const bool hasPoint = peek() == '.';
  if (hasPoint) {
    ++_pos;
    skipDigits();
  }
  if (peek() == 'e' || peek() == 'E') {
    ++_pos;
    if (peek() == '+' || peek() == '-') ++_pos;
    skipDigits();
  }
  if (hasPoint && peek() == '.') return fail("unexpected '.'");
  const std::string text = _input.substr(begin, _pos - begin);
  if (!util::isDigit(text.back())) return false;  // "1." and "1e" are cut short
  bool isWhole = false;
  number = StringUtils::toDouble(text, isWhole);
  return isWhole;
}

bool FormatParser::parseInteger(std::int32_t& number) {
  skipSpace();
  const std::size_t begin = _pos;
  if (peek() == '+' || peek() == '-') ++_pos;
  const std::size_t digits = _pos;
  skipDigits();
  if (isAtEnd()) return fail("unexpected EOS while parsing numeric value");
  if (digits == _pos || isNameCharacter(peek())) return fail("failed to parse int value");

  bool isWhole = false;
  number = StringUtils::toInt32(_input.substr(begin, _pos - begin), isWhole);
  return isWhole || fail("failed to parse int value (overflow?)");
}

bool FormatParser::parseInteger(std::optional<std::int32_t>& number) {
  return parseInteger(number.emplace());
}

void FormatParser::skipSpace() {
  _pos = findToken(_pos);
}

void FormatParser::skipDigits() {
  while (util::isDigit(peek())) ++_pos;
}

std::size_t FormatParser::findToken(std::size_t pos) const {
  while (pos < _input.size() && util::isBlank(_input[pos])) ++pos;
  return pos;
}

bool FormatParser::expect(char character, const char* error) {
  skipSpace();
  if (isAtEnd() || peek() != character) return fail(error);
  ++_pos;
  return true;
}

bool FormatParser::takeFunction(const char* name) {
  if (!StringUtils::startsWith(_input, name, static_cast<unsigned>(_pos))) return false;
  const std::size_t parenthesis = findToken(_pos + std::string_view(name).size());
  if (parenthesis >= _input.size() || _input[parenthesis] != '(') return false;
  _pos = parenthesis + 1;
  return true;
}

bool FormatParser::fail(const std::string& message) {
  if (!_error.empty()) {
    _error += "; " + message;
    return false;
  }
  _error = message + " (pos:" + std::to_string(_pos);
  if (!isAtEnd()) _error += std::string(" '") + peek() + "'";
  _error += ")";
  if (_quoteRest && !isAtEnd()) _error += " : " + _input.substr(_pos);
  return false;
}

}  // namespace zavri::korvat::format
