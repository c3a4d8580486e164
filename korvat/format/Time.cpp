#include "korvat/format/Time.h"

#include <array>

namespace zavri::korvat::format {

const char* Time::getPartName(std::size_t position) const {
  constexpr std::array<const char*, 4> kParts{"hour", "minute", "second", "millisecond"};
  return position < kParts.size() ? kParts[position] : nullptr;
}

}  // namespace zavri::korvat::format
