#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// Puts rows of comma separated values (RFC 4180) together from lines: a quoted field may hold line
// ends. Lines may end in CR LF; blank lines between the rows are passed over.
class CsvReader {
 public:
  enum class State {
    More,    // the row goes on in the next line, or there is none in this one
    Row,     // getFields() holds a row
    Broken,  // getError() tells what is wrong with the row, getFields() holds its beginning
  };

  // Takes the next line, without its line feed.
  State addLine(std::string_view line);
  // At the end of the input: Broken when a quoted field has no end, else More.
  State finish();

  const std::vector<std::string>& getFields() const { return _fields; }
  const std::string& getError() const { return _error; }
  // Number of the line in which the row begins; the first one is 1.
  std::uint64_t getFirstLine() const { return _firstLine; }

 private:
  State readFields(std::string_view line);
  State fail(const std::string& error);

  std::vector<std::string> _fields;
  std::string _error;
  std::size_t _byteCount = 0;  // of the row so far
  std::uint64_t _lineCount = 0;
  std::uint64_t _firstLine = 0;
  bool _isQuoteOpen = false;
};

// Appends a field to a row, which may be empty so far, quoted where it has to be.
void addCsvField(std::string& row, bool isFirst, std::string_view text);

// A value as a field: a text as it is, nothing for null, any other one as JSON.
std::string toCsvText(const json::Value& value);

}  // namespace zavri::korvat::tool
