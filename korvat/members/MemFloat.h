#pragma once

#include "korvat/members/MemNumeric.h"

namespace zavri::korvat {

// A floating number of IEEE 754, single or double precision.
class KORVAT_API MemFloat : public TMemNumeric<double>, public NcTyped {
 public:
  MemFloat() : TMemNumeric(Kind::Float) {}

  std::unique_ptr<Member> clone() const override;
  bool traverseMember(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const override;
  std::uint64_t countElementBits(BitCount& count) const override;

  // Physical value of a raw number.
  double toPhysical(double raw) const;
  // Raw number of a physical value, cut from above to the largest finite double. `quantize` first
  // snaps the value to the member's resolution.
  double fromPhysical(double value, bool quantize) const;
};

}  // namespace zavri::korvat
