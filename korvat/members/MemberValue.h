#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/CharEncoder.h"
#include "korvat/base/Export.h"
#include "korvat/members/Member.h"
#include "korvat/members/RawCodec.h"

namespace zavri::korvat {

class Value;

// Access to one member, or one element of an array member, of a raw value. Owns nothing: manager,
// types, value object and buffer must outlive it.
//
// Every operation answers NotAccessible (or 0, or an empty text) for a member value that is not
// placed: without a manager, a member, a byte offset, or bytes of its own.
class KORVAT_API MemberValue {
 public:
  // Not accessible.
  MemberValue() = default;
  // `byteOffset` is where the member begins, negative for one that is not placed; `elementIndex`
  // names an element of an array, negative for the member as a whole. A reference that is no array
  // is replaced by the root member of its type. `path` holds the names along the way, for messages;
  // `topValue` may be null when every operation is given a buffer.
  MemberValue(TypeManager* typeManager, const VarType* typeContext, const Value* topValue,
              const Member* member, std::vector<std::string> path, std::int32_t byteOffset,
              std::int32_t elementIndex);

  // True when the member is placed: some operations may work.
  bool isValid() const;
  const Member* getMember() const { return _member; }
  const VarType* getTypeContext() const { return _typeContext; }
  std::int32_t getByteOffset() const { return _byteOffset; }
  std::int32_t getElementIndex() const { return _elementIndex; }
  // The type's name and the path to the member, joined by ".".
  std::string getPathText() const;

  // Element `index` of an array member of numbers, bit fields or enumerations that is accessed as a
  // whole; not accessible for other members and past the end.
  MemberValue operator[](std::int32_t index) const;

  // Copies the member's bytes out, or in; the smaller of the two sizes counts. Without a `buffer`
  // that of the value object is used. A destination that is larger is filled up with zeros; a
  // source that is smaller too. Writing appends to a buffer that is too short.
  //   Exact, OutOfRange (read beyond the buffer: the destination is zero), DoesNotFit (one element
  //   of another size), Truncated (the whole of an array that is shorter), NotAccessible
  AccessStatus getValue(void* destination, unsigned byteCount,
                        const base::Buffer* buffer = nullptr) const;
  AccessStatus setValue(const void* source, unsigned byteCount,
                        base::Buffer* buffer = nullptr) const;

  // Reads element `index` (negative: this value's own element, the first of a whole array) as a
  // signed or unsigned integer of 8, 16 or 32 bits, a signed one of 64 bits, float or double:
  // results of readField(), and OutOfRange with a 0 beyond the buffer. A bit field gives its bits,
  // unsigned; an enumeration its unsigned byte.
  template <typename T>
  AccessStatus get(std::int32_t index, T& value) const;
  // Writes it: results of writeField() and setValue(); a bit field takes only numbers of its width,
  // see setBitfield(). A number outside the member's limits is written and reported when the
  // manager shows warnings.
  template <typename T>
  AccessStatus set(std::int32_t index, T value) const;

  // This element, converted as above; 0 when it cannot be read.
  std::uint8_t getUInt8() const { return getAs<std::uint8_t>(); }
  std::int8_t getInt8() const { return getAs<std::int8_t>(); }
  std::uint16_t getUInt16() const { return getAs<std::uint16_t>(); }
  std::int16_t getInt16() const { return getAs<std::int16_t>(); }
  std::uint32_t getUInt32() const { return getAs<std::uint32_t>(); }
  std::int32_t getInt32() const { return getAs<std::int32_t>(); }
  float getFloat() const { return getAs<float>(); }
  double getDouble() const { return getAs<double>(); }
  AccessStatus setUInt8(std::uint8_t value) const { return set(-1, value); }
  AccessStatus setInt8(std::int8_t value) const { return set(-1, value); }
  AccessStatus setUInt16(std::uint16_t value) const { return set(-1, value); }
  AccessStatus setInt16(std::int16_t value) const { return set(-1, value); }
  AccessStatus setUInt32(std::uint32_t value) const { return set(-1, value); }
  AccessStatus setInt32(std::int32_t value) const { return set(-1, value); }
  AccessStatus setFloat(float value) const { return set(-1, value); }
  AccessStatus setDouble(double value) const { return set(-1, value); }

  // The bits of a bit field, unsigned; 0 when there is none.
  std::uint8_t getBitfield(const base::Buffer* buffer = nullptr) const;
  // Exact; OutOfRange for a value that needs more than the field's width, NotAccessible for a whole
  // array and a field without a width: nothing is written.
  AccessStatus setBitfield(std::int64_t value, base::Buffer* buffer = nullptr) const;

  // The text in a member of integers, up to its first zero character; empty when there is none.
  std::string getText(base::CharEncoding encoding) const;
  // Writes a UTF-8 text, padded with zeros. Truncated when it was cut, always behind a whole
  // character.
  AccessStatus setText(const std::string& utf8, base::CharEncoding encoding) const;

  // Bytes of an array of one-byte numbers as hexadecimal text: the first `count`, all when it is
  // negative. Empty when the buffer does not hold them.
  std::string getRawHex(std::int32_t count = -1) const;
  // The reverse, cut or padded with zeros to the array's size.
  AccessStatus setRawHex(const std::string& hex) const;

  // True when `value` (64 bits for a scalar, double for a floating member, 16 bits for a bit field)
  // lies within the member's limits or is its invalid marker. Throws the text "no member def"
  // without a member.
  bool isInRange(std::int64_t integer, double floating) const;

 private:
  template <typename T>
  T getAs() const {
    T value{};
    static_cast<void>(get(-1, value));
    return value;
  }

  NcType getNcType() const;
  unsigned getElementSize() const;
  bool isWholeArray() const;
  bool isByteArray() const;
  unsigned getByteCount() const;  // 0 also when it is beyond the range of byte offsets
  // First byte in the buffer, of the element when one is named.
  std::uint64_t getPosition() const;
  base::Buffer* findBuffer(base::Buffer* buffer) const;
  // Points `bytes` to the member's first `byteCount` bytes: Exact, OutOfRange (beyond the buffer)
  // or NotAccessible.
  AccessStatus findBytes(unsigned byteCount, const base::Buffer* buffer,
                         const std::uint8_t*& bytes) const;
  base::Endianess getByteOrder() const;
  MemberValue atElement(std::int32_t index) const;
  void reportOutOfRange(std::int64_t integer, double floating) const;

  TypeManager* _typeManager = nullptr;
  const VarType* _typeContext = nullptr;
  const Value* _topValue = nullptr;
  const Member* _member = nullptr;
  std::int32_t _byteOffset = -1;    // bytes from the start of the buffer
  std::int32_t _elementIndex = -1;  // -1: the member as a whole
  std::vector<std::string> _path;
};

}  // namespace zavri::korvat
