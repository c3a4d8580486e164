#include "korvat/members/MemFloat.h"

#include <algorithm>
#include <limits>

namespace zavri::korvat {

std::unique_ptr<Member> MemFloat::clone() const {
  return std::make_unique<MemFloat>(*this);
}

bool MemFloat::traverseMember(Context& context, const MemberCallback& onMember,
                              const StructEndCallback&) const {
  return visitBytes(context, *this, onMember, getByteCount());
}

std::uint64_t MemFloat::countElementBits(BitCount&) const {
  return std::uint64_t{8} * getByteCount();
}

double MemFloat::toPhysical(double raw) const {
  const double physical = korvat::toPhysical(raw, getScaling());
  return getDisplayScaling().isIdentity() ? physical : getDisplayScaling().toShown(physical);
}

double MemFloat::fromPhysical(double value, bool quantize) const {
  return std::min(unscale(value, quantize), std::numeric_limits<double>::max());
}

}  // namespace zavri::korvat
