#include "korvat/base/BinaryUtils.h"

#include <cstddef>
#include <vector>

#include "korvat/base/AsciiText.h"

namespace zavri::util {

unsigned BinaryUtils::stringToBuffer(base::Buffer& buffer, const std::string& text,
                                     unsigned start) {
  std::vector<std::uint8_t> bytes;
  int highDigit = -1;
  for (std::size_t i = start; i < text.size(); ++i) {
    if (isBlank(text[i])) continue;

    const int digit = hexValue(text[i]);
    if (digit < 0) break;

    if (highDigit < 0) {
      highDigit = digit;
    } else {
      bytes.push_back(static_cast<std::uint8_t>(highDigit * 16 + digit));
      highDigit = -1;
    }
  }
  const auto count = static_cast<unsigned>(bytes.size());
  buffer = base::Buffer(bytes.data(), count);
  return count;
}

std::string BinaryUtils::toString(const base::Buffer& buffer) {
  std::string text;
  bufferToString(text, buffer.getData(), buffer.getSize());
  return text;
}

void BinaryUtils::bufferToString(std::string& text, const unsigned char* bytes, unsigned size) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text.clear();
  text.reserve(2 * static_cast<std::size_t>(size));
  for (unsigned i = 0; i < size; ++i) {
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
}

}  // namespace zavri::util
