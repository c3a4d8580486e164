#include "korvat/format/FormattedString.h"

#include <algorithm>
#include <stdexcept>

#include "korvat/base/AsciiText.h"
#include "korvat/base/Logger.h"

namespace zavri::korvat::format {

namespace {

enum class ScanState { Text = 1, AfterPercent = 2, AfterBackslash = 3 };

}  // namespace

std::vector<char> FormattedString::getFormatSpecArray(const std::string& formatText) {
  std::vector<char> letters;
  ScanState state = ScanState::Text;
  for (const char c : formatText) {
    if (c == '\0') break;
    switch (state) {
      case ScanState::Text:
        if (c == '%') state = ScanState::AfterPercent;
        if (c == '\\') state = ScanState::AfterBackslash;
        continue;
      case ScanState::AfterPercent:
        if (util::isLetter(c)) letters.push_back(c);
        state = ScanState::Text;
        continue;
      case ScanState::AfterBackslash:
        state = ScanState::Text;
        continue;
    }
    throw std::logic_error("getFormatSpecArray - unmapped state");
  }
  return letters;
}

bool FormattedString::analyzeFormatSpecs(const std::string& input) {
  const std::vector<char> letters = getFormatSpecArray(_formatText);
  const bool showsValueItself = letters.size() == 1 && _fields.empty();
  const bool isMatched = showsValueItself || letters.size() == _fields.size();
  if (!isMatched) {
    base::Logger::warning(
        "[FormattedString::analyzeFormatSpecs] unmatched fmt spec size %ld: %ld args provided - "
        "fmtSpec: '%s' - input: %s\n",
        static_cast<long>(letters.size()), static_cast<long>(_fields.size()), _formatText.c_str(),
        input.c_str());
  }
  const std::size_t count = std::min(letters.size(), _fields.size());
  for (std::size_t i = 0; i < count; ++i) {
    if (_fields[i]) _fields[i]->setConversion(letters[i]);
  }
  return isMatched;
}

void FormattedString::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  indent(text, level + 1);
  text += "\"" + _formatText + "\"\n";
  if (_fields.empty()) {
    indent(text, level + 1);
    text += "(empty)\n";
  }
  for (std::size_t i = 0; i < _fields.size(); ++i) dumpChild(text, level + 1, i, _fields[i].get());
}

}  // namespace zavri::korvat::format
