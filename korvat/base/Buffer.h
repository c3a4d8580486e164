#pragma once

#include <cstdint>
#include <vector>

#include "korvat/base/Export.h"

namespace zavri::base {

// Bytes of one raw value, owned.
class KORVAT_API Buffer {
 public:
  Buffer() = default;
  // Copies `size` bytes.
  Buffer(const std::uint8_t* bytes, unsigned size);

  const std::uint8_t* getData() const { return _bytes.data(); }
  std::uint8_t* getData() { return _bytes.data(); }
  unsigned getSize() const { return static_cast<unsigned>(_bytes.size()); }

  // Cuts, or appends zero bytes.
  void setSize(unsigned size);
  // Appends zero bytes up to that size; never cuts.
  void growTo(std::uint64_t size);
  void clear();

  bool operator==(const Buffer& other) const { return _bytes == other._bytes; }
  bool operator!=(const Buffer& other) const { return _bytes != other._bytes; }

 private:
  std::vector<std::uint8_t> _bytes;
};

}  // namespace zavri::base
