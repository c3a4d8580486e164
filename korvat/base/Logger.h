#pragma once

#include <functional>
#include <string>

#include "korvat/base/Export.h"

namespace zavri::base {

// Messages of the library, printf style. Static: one level and one sink for the whole process.
//
// Threads may log side by side, and a thread may replace the sink meanwhile. The level is a plain
// variable: set it before other threads use the library.
class KORVAT_API Logger {
 public:
  // A message is written when `_logLevel` is at least its level.
  enum Level : int {
    Silent = -1,
    Error = 0,
    Warning = 1,
    Info = 2,
    Debug = 3,
    Trace = 4,
  };

  // Receives a whole message, with the new line that ends it.
  using Sink = std::function<void(Level, const std::string&)>;

  // Each formats and hands over one message when the level asks for it, and does nothing
  // otherwise. A caller for whom the arguments are dear to make tests the level first.
  static void error(const char* format, ...) __attribute__((format(printf, 1, 2)));
  static void warning(const char* format, ...) __attribute__((format(printf, 1, 2)));
  static void info(const char* format, ...) __attribute__((format(printf, 1, 2)));
  static void debug(const char* format, ...) __attribute__((format(printf, 1, 2)));
  static void trace(const char* format, ...) __attribute__((format(printf, 1, 2)));

  // Replaces the sink and returns the one before. An empty sink means standard error, the default.
  // The sink is called by one thread at a time; it must neither log nor replace itself.
  static Sink setSink(Sink sink);
};

// Level up to which messages are written. Starts at Warning.
extern KORVAT_API Logger::Level _logLevel;

// True when messages of `level` are written.
inline bool isLogged(Logger::Level level) {
  return _logLevel >= level;
}

}  // namespace zavri::base
