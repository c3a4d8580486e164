#include "korvat/base/ProgId.h"

#include <algorithm>

#include "korvat/base/AsciiText.h"
#include "korvat/base/BinaryUtils.h"

namespace zavri::base {

bool ProgId::set(const std::string& text) {
  if (text.size() != kTextSize) return false;

  std::array<std::uint8_t, kSize> bytes{};
  for (unsigned i = 0; i < kTextSize; ++i) {
    const int digit = util::hexValue(text[i]);
    if (digit < 0) return false;

    bytes[i / 2] = static_cast<std::uint8_t>(bytes[i / 2] * 16 + digit);
  }
  _bytes = bytes;
  return true;
}

void ProgId::set(const std::uint8_t* bytes) {
  std::copy(bytes, bytes + kSize, _bytes.begin());
}

std::string ProgId::toString() const {
  std::string text;
  util::BinaryUtils::bufferToString(text, _bytes.data(), kSize);
  return text;
}

}  // namespace zavri::base
