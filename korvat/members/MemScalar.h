#pragma once

#include "korvat/members/MemNumeric.h"

namespace zavri::korvat {

// An integer of 1, 2 or 4 bytes.
class KORVAT_API MemScalar : public TMemNumeric<std::int64_t>, public NcTyped {
 public:
  MemScalar() : TMemNumeric(Kind::Scalar) {}

  std::unique_ptr<Member> clone() const override;
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  std::uint64_t countElementBits(BitCount& count) const override;

  // Physical value of a raw number.
  double toPhysical(std::int64_t raw) const;
  // Raw number of a physical value: rounded, halves away from zero, and cut to the range of 64
  // bits; 0 for NaN. `quantize` first snaps the value to the member's resolution.
  std::int64_t fromPhysical(double value, bool quantize) const;

  // True for an array of numbers of one byte.
  bool isByteArray() const { return isArray() && getByteCount() == 1; }
};

}  // namespace zavri::korvat
