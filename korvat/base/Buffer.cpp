#include "korvat/base/Buffer.h"

namespace zavri::base {

Buffer::Buffer(const std::uint8_t* bytes, unsigned size) : _bytes(bytes, bytes + size) {}

void Buffer::setSize(unsigned size) {
  _bytes.resize(size);
}

void Buffer::clear() {
  _bytes.clear();
}

}  // namespace zavri::base
