#include "korvat/base/Logger.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <utility>

namespace zavri::base {

Logger::Level _logLevel = Logger::Warning;

namespace {

struct Output {
  std::mutex mutex;
  Logger::Sink sink;  // empty: standard error
};

Output& getOutput() {
  static Output output;
  return output;
}

std::string formatMessage(const char* format, std::va_list arguments) {
  std::va_list measured;
  va_copy(measured, arguments);
  const int size = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (size < 0) return format;  // arguments that cannot be printed; say what is known

  std::string message(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(message.data(), message.size() + 1, format, arguments);
  return message;
}

void writeMessage(Logger::Level level, const char* format, std::va_list arguments) {
  const std::string message = formatMessage(format, arguments);

  Output& output = getOutput();
  const std::lock_guard<std::mutex> lock(output.mutex);
  if (output.sink) {
    output.sink(level, message);
  } else {
    std::fwrite(message.data(), 1, message.size(), stderr);
  }
}

}  // namespace

void Logger::error(const char* format, ...) {
  if (!isLogged(Error)) return;

  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(Error, format, arguments);
  va_end(arguments);
}

void Logger::warning(const char* format, ...) {
  if (!isLogged(Warning)) return;

  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(Warning, format, arguments);
  va_end(arguments);
}

void Logger::info(const char* format, ...) {
  if (!isLogged(Info)) return;

  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(Info, format, arguments);
  va_end(arguments);
}

void Logger::debug(const char* format, ...) {
  if (!isLogged(Debug)) return;

  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(Debug, format, arguments);
  va_end(arguments);
}

void Logger::trace(const char* format, ...) {
  if (!isLogged(Trace)) return;

  std::va_list arguments;
  va_start(arguments, format);
  writeMessage(Trace, format, arguments);
  va_end(arguments);
}

Logger::Sink Logger::setSink(Sink sink) {
  Output& output = getOutput();
  const std::lock_guard<std::mutex> lock(output.mutex);
  return std::exchange(output.sink, std::move(sink));
}

}  // namespace zavri::base
