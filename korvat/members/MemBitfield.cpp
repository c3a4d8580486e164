#include "korvat/members/MemBitfield.h"

#include "korvat/base/Logger.h"

namespace zavri::korvat {

std::unique_ptr<Member> MemBitfield::clone() const {
  return std::make_unique<MemBitfield>(*this);
}

bool MemBitfield::traverseMember(Context& context, const MemberCallback& onMember,
                                 const StructEndCallback&) const {
  context.bitOffset = _slot.offset;
  if (_slot.offset >= 8) {
    base::Logger::debug("[MemBitfield::traverseMember] _offset=%ld\n",
                        static_cast<long>(_slot.offset));
  }
  context.currentType = nullptr;
  if (!onMember(context, *this)) return false;
  if (context.skipChildren) {
    context.skipChildren = false;
    return true;
  }
  if (_slot.width + _slot.offset >= 8) {
    context.advance(1);
    context.bitOffset = 0;
  }
  return true;
}

std::uint64_t MemBitfield::countElementBits(BitCount&) const {
  return _slot.width;
}

double MemBitfield::toPhysical(std::int16_t raw) const {
  return scaleInteger(raw);
}

std::int16_t MemBitfield::fromPhysical(double value, bool quantize) const {
  return roundToInteger<std::int16_t>(unscale(value, quantize));
}

}  // namespace zavri::korvat
