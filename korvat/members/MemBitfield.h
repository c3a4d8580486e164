#pragma once

#include "korvat/members/MemNumeric.h"
#include "korvat/members/RawCodec.h"

namespace zavri::korvat {

// A number of 1 to 8 bits inside one byte. Bit fields that follow each other share the byte until
// one ends it.
class KORVAT_API MemBitfield : public TMemNumeric<std::int16_t> {
 public:
  MemBitfield() : TMemNumeric(Kind::Bitfield) {}

  std::unique_ptr<Member> clone() const override;
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  std::uint64_t countElementBits(BitCount& count) const override;

  // Physical value of a raw number.
  double toPhysical(std::int16_t raw) const;
  // Raw number of a physical value: rounded, halves away from zero, and cut to 16 bits; 0 for NaN.
  // `quantize` first snaps the value to the member's resolution.
  std::int16_t fromPhysical(double value, bool quantize) const;

  const BitSlot& getSlot() const { return _slot; }
  void setSigned(bool isSigned) { _slot.isSigned = isSigned; }
  void setWidth(std::uint8_t bitCount) { _slot.width = bitCount; }
  void setOffset(std::uint8_t bitOffset) { _slot.offset = bitOffset; }

 private:
  BitSlot _slot;
};

}  // namespace zavri::korvat
