#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/Export.h"

namespace zavri::util {

// Hexadecimal text and bytes. Written in upper case without separators; read in either case,
// white space skipped.
class KORVAT_API BinaryUtils {
 public:
  // Reads digits from byte `start` of `text` on, replacing what `buffer` held, and returns the
  // count of bytes read; 0 when `start` lies past the end. A lone last digit, or any other
  // character, ends the reading.
  static unsigned stringToBuffer(base::Buffer& buffer, const std::string& text, unsigned start);

  static std::string toString(const base::Buffer& buffer);
  // Replaces what `text` held.
  static void bufferToString(std::string& text, const unsigned char* bytes, unsigned size);
};

}  // namespace zavri::util
