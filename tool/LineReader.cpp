#include "tool/LineReader.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

constexpr std::size_t kBlockSize = std::size_t{256} * 1024;  // bytes read at once

}  // namespace

void LineReader::read(const LineCallback& onLine, const PauseCallback& onPause) {
  const auto block = std::make_unique_for_overwrite<char[]>(kBlockSize);
  while (true) {
    const ssize_t size = ::read(STDIN_FILENO, block.get(), kBlockSize);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) {
      throw Failure(kProblem, std::string("cannot read standard input: ") + std::strerror(errno));
    }
    if (size == 0) break;
    _byteCount += static_cast<std::uint64_t>(size);
    if (!takeBlock({block.get(), static_cast<std::size_t>(size)}, onLine)) return;
    if (!onPause()) return;
  }
  if (!_rest.empty() && !onLine(_rest)) return;
  onPause();
}

bool LineReader::takeBlock(std::string_view block, const LineCallback& onLine) {
  std::size_t begin = 0;
  while (begin < block.size()) {
    const std::size_t end = block.find('\n', begin);
    const std::string_view piece = block.substr(begin, end - begin);
    if (end == std::string_view::npos) {
      keep(piece);
      return true;
    }
    begin = end + 1;
    if (_rest.empty()) {
      if (!onLine(piece)) return false;
      continue;
    }
    keep(piece);
    const bool goesOn = onLine(_rest);
    _rest.clear();
    if (!goesOn) return false;
  }
  return true;
}

void LineReader::keep(std::string_view piece) {
  const std::size_t room = kLongestLine + 1 - _rest.size();
  _rest.append(piece.substr(0, room));
}

}  // namespace zavri::korvat::tool
