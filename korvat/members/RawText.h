#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/CharEncoder.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"

// Text inside raw values: arrays of characters, ended by a zero character or by the array's end.
// The code units of UTF-16 and UTF-32 stand in the value's byte order.
namespace zavri::korvat {

// Bytes of one code unit: 1, 2 or 4.
KORVAT_API unsigned codeUnitSize(base::CharEncoding encoding);

// The Unicode encoding with code units of that many bytes; UTF-8 for anything but 2 and 4.
KORVAT_API base::CharEncoding encodingOfWidth(std::int32_t byteCount);

// Bytes per character that a value of the standard enumeration char_encoding_t stands for; -1 when
// it selects none.
KORVAT_API std::int32_t widthOfCharEncoding(std::int8_t value);

// The text in `byteCount` bytes up to the first zero character, as UTF-8. Bytes that do not make up
// a whole code unit at the end are left out.
KORVAT_API std::string readText(const std::uint8_t* bytes, unsigned byteCount,
                                base::CharEncoding encoding, base::Endianess order);

// `utf8` in `byteCount` bytes, padded with zeros. A text that is too long is cut behind the last
// character that fits whole, and `isCut` set.
KORVAT_API base::Buffer writeText(const std::string& utf8, unsigned byteCount,
                                  base::CharEncoding encoding, base::Endianess order, bool& isCut);

}  // namespace zavri::korvat
