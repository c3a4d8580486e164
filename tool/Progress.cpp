#include "tool/Progress.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace zavri::korvat::tool {

namespace {

constexpr std::chrono::milliseconds kInterval{200};

}  // namespace

Progress::Progress() {
  if (isatty(STDERR_FILENO) == 0 || isatty(STDOUT_FILENO) != 0) return;
  struct stat status {};
  if (fstat(STDIN_FILENO, &status) != 0 || !S_ISREG(status.st_mode)) return;
  const off_t position = lseek(STDIN_FILENO, 0, SEEK_CUR);
  if (position < 0 || status.st_size <= position) return;
  _totalByteCount = static_cast<std::uint64_t>(status.st_size - position);
  _isOn = true;
}

void Progress::show(std::uint64_t recordCount, std::uint64_t byteCount) {
  if (!_isOn) return;
  const Clock::time_point now = Clock::now();
  if (now < _next) return;

  _next = now + kInterval;
  const double seconds = std::max(std::chrono::duration<double>(now - _start).count(), 1e-3);
  const double percent =
      100.0 * static_cast<double>(byteCount) / static_cast<double>(_totalByteCount);
  std::fprintf(stderr, "\r\033[K%llu records, %.0f %%, %.0f a second",
               static_cast<unsigned long long>(recordCount), std::min(percent, 100.0),
               static_cast<double>(recordCount) / seconds);
  std::fflush(stderr);
  _isShown = true;
}

void Progress::erase() {
  if (!_isShown) return;
  std::fputs("\r\033[K", stderr);
  std::fflush(stderr);
  _isShown = false;
}

}  // namespace zavri::korvat::tool
