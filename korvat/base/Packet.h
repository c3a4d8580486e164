#pragma once

#include <cstdint>

#include "korvat/base/Buffer.h"
#include "korvat/base/Endianess.h"

namespace zavri::base {

// Buffer that is read and written number by number, in its own byte order, at one position.
// The position starts at 0 and lies between 0 and the size.
class KORVAT_API Packet : public Buffer {
 public:
  explicit Packet(Endianess endianess);
  // Holds a copy of `bytes`.
  Packet(Endianess endianess, const Buffer& bytes);
  virtual ~Packet() = default;

  Endianess getEndianess() const { return _endianess; }
  static Endianess getHostByteOrder();

  // The same as in Buffer; the position moves to the new end when it lay behind it.
  void setSize(unsigned size);
  void clear();

  // Writes the number at the position, over what is there, appending what reaches past the end,
  // and moves behind it.
  void add(unsigned char value);
  void add(unsigned short value);
  void add(unsigned int value);
  void add(unsigned long long value);
  // The same for bytes as they are, which may lie in this packet. `advance` false leaves the
  // position where it was. What would make the packet larger than an unsigned can tell is not
  // written at all.
  void add(const Buffer& bytes);
  void addBytes(const unsigned char* bytes, unsigned size, bool advance);

  // Reads the number at the position; read() moves behind it, peek() does not. False when not
  // enough bytes remain: `value` and the position stay.
  [[nodiscard]] bool read(unsigned char& value);
  [[nodiscard]] bool read(unsigned short& value);
  [[nodiscard]] bool read(unsigned int& value);
  [[nodiscard]] bool read(unsigned long long& value);
  [[nodiscard]] bool peek(unsigned char& value) const;
  [[nodiscard]] bool peek(unsigned short& value) const;
  [[nodiscard]] bool peek(unsigned int& value) const;
  [[nodiscard]] bool peek(unsigned long long& value) const;

  unsigned getPos() const { return _pos; }
  // False, and nothing moves, past the end of the bytes.
  [[nodiscard]] bool setPos(unsigned pos);

 private:
  template <typename T>
  void addNumber(T value);
  template <typename T>
  bool peekNumber(T& value) const;
  template <typename T>
  bool readNumber(T& value);
  unsigned countRemaining() const;

  Endianess _endianess;
  unsigned _pos = 0;  // bytes
};

}  // namespace zavri::base
