#pragma once

#include <malloc.h>

#include <cstddef>

namespace zavri::korvat::bench {

// Bytes that are allocated on the heap at the moment.
inline std::size_t getHeapSize() {
  const struct mallinfo2 info = mallinfo2();
  return info.uordblks + info.hblkhd;
}

}  // namespace zavri::korvat::bench
