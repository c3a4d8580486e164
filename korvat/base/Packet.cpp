#include "korvat/base/Packet.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstring>
#include <functional>
#include <limits>

namespace zavri::base {

static_assert(sizeof(unsigned char) == 1 && sizeof(unsigned short) == 2 &&
                  sizeof(unsigned int) == 4 && sizeof(unsigned long long) == 8,
              "the widths of the network's numbers");

namespace {

// Bits by which byte `index` of a number of `size` bytes is shifted.
constexpr unsigned shiftOf(unsigned index, unsigned size, Endianess endianess) {
  return 8 * (endianess == Endianess::Big ? size - 1 - index : index);
}

}  // namespace

Packet::Packet(Endianess endianess) : _endianess(endianess) {}

Packet::Packet(Endianess endianess, const Buffer& bytes) : Buffer(bytes), _endianess(endianess) {}

Endianess Packet::getHostByteOrder() {
  return std::endian::native == std::endian::big ? Endianess::Big : Endianess::Little;
}

void Packet::setSize(unsigned size) {
  Buffer::setSize(size);
  _pos = std::min(_pos, size);
}

void Packet::clear() {
  setSize(0);
}

void Packet::add(unsigned char value) {
  addNumber(value);
}
void Packet::add(unsigned short value) {
  addNumber(value);
}
void Packet::add(unsigned int value) {
  addNumber(value);
}
void Packet::add(unsigned long long value) {
  addNumber(value);
}

void Packet::add(const Buffer& bytes) {
  addBytes(bytes.getData(), bytes.getSize(), true);
}

void Packet::addBytes(const unsigned char* bytes, unsigned size, bool advance) {
  if (size == 0 || size > std::numeric_limits<unsigned>::max() - _pos) return;

  // The packet's own bytes move when it grows, and may overlap with their target.
  const std::less<const unsigned char*> isBefore;
  const bool isOwn = !isBefore(bytes, getData()) && isBefore(bytes, getData() + getSize());
  const std::ptrdiff_t ownOffset = isOwn ? bytes - getData() : 0;

  if (size > countRemaining()) Buffer::setSize(_pos + size);
  std::memmove(getData() + _pos, isOwn ? getData() + ownOffset : bytes, size);
  if (advance) _pos += size;
}

bool Packet::read(unsigned char& value) {
  return readNumber(value);
}
bool Packet::read(unsigned short& value) {
  return readNumber(value);
}
bool Packet::read(unsigned int& value) {
  return readNumber(value);
}
bool Packet::read(unsigned long long& value) {
  return readNumber(value);
}

bool Packet::peek(unsigned char& value) const {
  return peekNumber(value);
}
bool Packet::peek(unsigned short& value) const {
  return peekNumber(value);
}
bool Packet::peek(unsigned int& value) const {
  return peekNumber(value);
}
bool Packet::peek(unsigned long long& value) const {
  return peekNumber(value);
}

bool Packet::setPos(unsigned pos) {
  if (pos > getSize()) return false;

  _pos = pos;
  return true;
}

template <typename T>
void Packet::addNumber(T value) {
  unsigned char bytes[sizeof(T)];
  for (unsigned i = 0; i < sizeof(T); ++i) {
    bytes[i] = static_cast<unsigned char>(value >> shiftOf(i, sizeof(T), _endianess));
  }
  addBytes(bytes, sizeof(T), true);
}

template <typename T>
bool Packet::peekNumber(T& value) const {
  if (countRemaining() < sizeof(T)) return false;

  unsigned long long number = 0;
  for (unsigned i = 0; i < sizeof(T); ++i) {
    const unsigned long long byte = getData()[_pos + i];
    number |= byte << shiftOf(i, sizeof(T), _endianess);
  }
  value = static_cast<T>(number);
  return true;
}

template <typename T>
bool Packet::readNumber(T& value) {
  if (!peekNumber(value)) return false;

  _pos += static_cast<unsigned>(sizeof(T));
  return true;
}

// A packet that was cut through its Buffer may end before the position.
unsigned Packet::countRemaining() const {
  return _pos < getSize() ? getSize() - _pos : 0;
}

}  // namespace zavri::base
