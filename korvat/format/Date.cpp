#include "korvat/format/Date.h"

#include <array>

namespace zavri::korvat::format {

const char* Date::getPartName(std::size_t position) const {
  constexpr std::array<const char*, 3> kParts{"year", "month", "day"};
  return position < kParts.size() ? kParts[position] : nullptr;
}

}  // namespace zavri::korvat::format
