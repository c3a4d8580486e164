#include "korvat/members/MemScalar.h"

namespace zavri::korvat {

std::unique_ptr<Member> MemScalar::clone() const {
  return std::make_unique<MemScalar>(*this);
}

bool MemScalar::traverseMember(Context& context, const MemberCallback& onMember,
                               const StructEndCallback&) const {
  return visitBytes(context, *this, onMember, getByteCount());
}

std::uint64_t MemScalar::countElementBits(BitCount&) const {
  return std::uint64_t{8} * getByteCount();
}

double MemScalar::toPhysical(std::int64_t raw) const {
  return scaleInteger(static_cast<double>(raw));
}

std::int64_t MemScalar::fromPhysical(double value, bool quantize) const {
  return roundToInteger<std::int64_t>(unscale(value, quantize));
}

}  // namespace zavri::korvat
