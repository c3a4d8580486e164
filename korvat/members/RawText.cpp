#include "korvat/members/RawText.h"

#include <algorithm>

#include "korvat/members/RawCodec.h"

namespace zavri::korvat {

using base::CharEncoding;
using base::Endianess;

namespace {

// The encoder speaks big-endian; this turns its code units into those of `order` and back.
void reorderUnits(std::string& bytes, unsigned unitSize, Endianess order) {
  if (order == Endianess::Big || unitSize == 1) return;
  for (std::size_t i = 0; i + unitSize <= bytes.size(); i += unitSize) {
    std::reverse(bytes.begin() + static_cast<std::ptrdiff_t>(i),
                 bytes.begin() + static_cast<std::ptrdiff_t>(i + unitSize));
  }
}

// True when the code unit at byte `pos` continues a character that began before it.
bool continuesCharacter(const std::string& bytes, std::size_t pos, CharEncoding encoding) {
  const auto first = static_cast<std::uint8_t>(bytes[pos]);
  if (encoding == CharEncoding::Utf8) return (first & 0xC0) == 0x80;
  if (encoding == CharEncoding::Utf16) return (first & 0xFC) == 0xDC;  // low surrogate
  return false;
}

}  // namespace

unsigned codeUnitSize(CharEncoding encoding) {
  switch (encoding) {
    case CharEncoding::Utf16:
      return 2;
    case CharEncoding::Utf32:
      return 4;
    case CharEncoding::Iso8859_1:
    case CharEncoding::Utf8:
      break;
  }
  return 1;
}

CharEncoding encodingOfWidth(std::int32_t byteCount) {
  if (byteCount == 2) return CharEncoding::Utf16;
  return byteCount == 4 ? CharEncoding::Utf32 : CharEncoding::Utf8;
}

std::int32_t widthOfCharEncoding(std::int8_t value) {
  switch (value) {
    case 0:
      return 1;
    case 1:
    case 3:
    case 4:
      return 2;
    case 2:
      return 4;
    default:
      return -1;
  }
}

std::string readText(const std::uint8_t* bytes, unsigned byteCount, CharEncoding encoding,
                     Endianess order) {
  const unsigned unitSize = codeUnitSize(encoding);
  unsigned end = 0;
  while (byteCount - end >= unitSize && loadBits(bytes + end, unitSize, order) != 0) {
    end += unitSize;
  }
  std::string text(reinterpret_cast<const char*>(bytes), end);
  reorderUnits(text, unitSize, order);
  return base::CharEncoder::convertToUtf8(text, encoding);
}

base::Buffer writeText(const std::string& utf8, unsigned byteCount, CharEncoding encoding,
                       Endianess order, bool& isCut) {
  const unsigned unitSize = codeUnitSize(encoding);
  std::string text = base::CharEncoder::convertToEncoding(utf8, encoding);
  isCut = text.size() > byteCount;
  if (isCut) {
    std::size_t end = byteCount - byteCount % unitSize;
    while (end > 0 && continuesCharacter(text, end, encoding)) end -= unitSize;
    text.resize(end);
  }
  reorderUnits(text, unitSize, order);

  base::Buffer buffer(reinterpret_cast<const std::uint8_t*>(text.data()),
                      static_cast<unsigned>(text.size()));
  buffer.setSize(byteCount);
  return buffer;
}

}  // namespace zavri::korvat
