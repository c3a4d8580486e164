#pragma once

#include <chrono>
#include <cstdint>

namespace zavri::korvat::tool {

// A line on standard error that tells how far a stream is: "12345 records, 34 %, 56000 a second".
// Shown only on a terminal that does not show the output too, for input from a regular file, and
// erased with the object.
class Progress {
 public:
  Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() { erase(); }

  // To be called now and then; draws the line anew a few times a second.
  void show(std::uint64_t recordCount, std::uint64_t byteCount);
  void erase();

 private:
  using Clock = std::chrono::steady_clock;

  bool _isOn = false;
  bool _isShown = false;
  std::uint64_t _totalByteCount = 0;
  Clock::time_point _start = Clock::now();
  Clock::time_point _next = _start;
};

}  // namespace zavri::korvat::tool
