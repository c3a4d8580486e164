#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/Logger.h"

namespace zavri::test {

// Keeps the messages that are logged during its life instead of writing them. Captures may be
// nested: the destructor restores the sink and the level it found.
class LogCapture {
 public:
  struct Line {
    base::Logger::Level level;
    std::string text;  // whole, with the new line that ends it
  };

  // Captures messages up to `level`; `_logLevel` has that value meanwhile.
  explicit LogCapture(base::Logger::Level level = base::Logger::Trace)
      : _oldLevel(std::exchange(base::_logLevel, level)),
        _oldSink(
            base::Logger::setSink([this](base::Logger::Level lineLevel, const std::string& text) {
              _lines.push_back({lineLevel, text});
            })) {}

  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  ~LogCapture() {
    base::Logger::setSink(std::move(_oldSink));
    base::_logLevel = _oldLevel;
  }

  const std::vector<Line>& lines() const { return _lines; }

  std::vector<std::string> texts() const {
    std::vector<std::string> texts;
    for (const Line& line : _lines) texts.push_back(line.text);
    return texts;
  }

  // Texts of the messages of exactly this level.
  std::vector<std::string> texts(base::Logger::Level level) const {
    std::vector<std::string> texts;
    for (const Line& line : _lines) {
      if (line.level == level) texts.push_back(line.text);
    }
    return texts;
  }

  // True when a message has exactly this level and this whole text.
  bool contains(base::Logger::Level level, const std::string& text) const {
    return std::any_of(_lines.begin(), _lines.end(),
                       [&](const Line& line) { return line.level == level && line.text == text; });
  }

  void clear() { _lines.clear(); }

 private:
  std::vector<Line> _lines;
  base::Logger::Level _oldLevel;
  base::Logger::Sink _oldSink;
};

}  // namespace zavri::test
