#pragma once

#include "korvat/base/Buffer.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/base/Packet.h"
#include "korvat/members/Member.h"

namespace zavri::korvat {

// Rewrites a raw value field by field from one byte order into another. Unions are copied as they
// are; the element counts of dynamic arrays are read in the order `from`. Good for one conversion;
// manager and type must outlive it.
class KORVAT_API PacketConverter {
 public:
  PacketConverter(TypeManager* typeManager, const VarType& type, base::Endianess from,
                  base::Endianess to);

  // True without a change when the two orders are the same. False for an empty buffer, a type
  // without a layout, and when a member lies beyond the buffer or cannot be walked: the buffer then
  // stays as it was. Bytes that no member covers become zero.
  [[nodiscard]] bool convert(base::Buffer& buffer);

 private:
  bool convertMember(Member::Context& context, const Member& member);
  bool convertStructEnd(Member::Context& context, const Member& member);
  bool copyOuterUnion(const Member::Context& context);
  bool moveTo(std::uint32_t bytePos);
  void setContextArraySize(Member::Context& context, const Member& member) const;

  TypeManager* _typeManager;
  const VarType* _type;
  base::Packet _input;
  base::Packet _output;
  bool _hasFailed = false;  // at a struct end, whose own result the walk does not use
};

// Copies a number of 0, 1, 2, 4 or 8 bytes from packet to packet, each in its own byte order. False
// when the input ends before, and with an error message for any other size.
[[nodiscard]] bool copyNumber(base::Packet& input, base::Packet& output, unsigned byteCount);
// Reads such a number, unsigned, without moving.
[[nodiscard]] bool peekNumber(const base::Packet& input, unsigned byteCount, std::uint64_t& number);

}  // namespace zavri::korvat
