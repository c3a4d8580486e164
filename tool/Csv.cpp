#include "tool/Csv.h"

#include "tool/LineReader.h"

namespace zavri::korvat::tool {

CsvReader::State CsvReader::fail(const std::string& error) {
  _error = error;
  _isQuoteOpen = false;
  return State::Broken;
}

CsvReader::State CsvReader::addLine(std::string_view line) {
  ++_lineCount;
  if (!_isQuoteOpen) {
    if (line.find_first_not_of(" \t\r") == std::string_view::npos) return State::More;
    _fields.assign(1, "");
    _byteCount = 0;
    _firstLine = _lineCount;
  }
  _byteCount += line.size() + 1;
  if (_byteCount > LineReader::kLongestLine + 1) {
    return fail("the row has more than " + std::to_string(LineReader::kLongestLine) + " bytes");
  }
  return readFields(line);
}

CsvReader::State CsvReader::readFields(std::string_view line) {
  bool isBehindQuotes = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    const char c = line[i];
    if (_isQuoteOpen) {
      if (c != '"') {
        _fields.back() += c;
      } else if (i + 1 < line.size() && line[i + 1] == '"') {
        _fields.back() += line[++i];
      } else {
        _isQuoteOpen = false;
        isBehindQuotes = true;
      }
    } else if (c == ',') {
      _fields.emplace_back();
      isBehindQuotes = false;
    } else if (c == '\r' && i + 1 == line.size()) {
      break;
    } else if (isBehindQuotes) {
      return fail("text behind the closing quote of field " + std::to_string(_fields.size()));
    } else if (c == '"' && _fields.back().empty()) {
      _isQuoteOpen = true;
    } else {
      _fields.back() += c;
    }
  }
  if (!_isQuoteOpen) return State::Row;
  _fields.back() += '\n';
  return State::More;
}

CsvReader::State CsvReader::finish() {
  if (!_isQuoteOpen) return State::More;
  return fail("the quote of field " + std::to_string(_fields.size()) + " is not closed");
}

void addCsvField(std::string& row, bool isFirst, std::string_view text) {
  if (!isFirst) row += ',';
  if (text.find_first_of(",\"\r\n") == std::string_view::npos) {
    row += text;
    return;
  }
  row += '"';
  for (const char c : text) {
    if (c == '"') row += '"';
    row += c;
  }
  row += '"';
}

std::string toCsvText(const json::Value& value) {
  return value.isNull() ? "" : value.asString();
}

}  // namespace zavri::korvat::tool
