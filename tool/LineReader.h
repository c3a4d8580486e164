#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace zavri::korvat::tool {

// Standard input, line by line, in constant memory.
class LineReader {
 public:
  // Bytes; a longer line arrives as its beginning, one byte too long.
  static constexpr std::size_t kLongestLine = std::size_t{16} * 1024 * 1024;

  using LineCallback = std::function<bool(std::string_view)>;
  using PauseCallback = std::function<bool()>;

  // Calls `onLine` for each line, without its line feed, and `onPause` after each block. Stops when
  // one of them is false. Throws Failure when the input cannot be read.
  void read(const LineCallback& onLine, const PauseCallback& onPause);

  // Bytes read so far.
  std::uint64_t getByteCount() const { return _byteCount; }

 private:
  bool takeBlock(std::string_view block, const LineCallback& onLine);
  void keep(std::string_view piece);

  std::string _rest;  // of a line whose end has not come yet
  std::uint64_t _byteCount = 0;
};

}  // namespace zavri::korvat::tool
