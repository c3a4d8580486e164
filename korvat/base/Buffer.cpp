#include "korvat/base/Buffer.h"

namespace zavri::base {

Buffer::Buffer(const std::uint8_t* bytes, unsigned size) : _bytes(bytes, bytes + size) {}

void Buffer::setSize(unsigned size) {
  _bytes.resize(size);
}

void Buffer::growTo(std::uint64_t size) {
  if (getSize() < size) setSize(static_cast<unsigned>(size));
}

void Buffer::clear() {
  _bytes.clear();
}

}  // namespace zavri::base
