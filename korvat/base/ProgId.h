#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "korvat/base/Export.h"

namespace zavri::base {

// LonMark program ID: 8 bytes that name a device's manufacturer, class, usage, channel and model.
// All zero is the ID of the standard resources.
class KORVAT_API ProgId {
 public:
  static constexpr unsigned kSize = 8;              // bytes
  static constexpr unsigned kTextSize = 2 * kSize;  // hexadecimal digits

  ProgId() = default;  // all zero

  // Takes 16 hexadecimal digits of either case. False, and the old value stays, for other text.
  bool set(const std::string& text);
  // Takes 8 bytes.
  void set(const std::uint8_t* bytes);

  // False for the all-zero standard ID.
  bool isValid() const { return *this != ProgId(); }

  const std::array<std::uint8_t, kSize>& getBytes() const { return _bytes; }
  // 16 upper-case hexadecimal digits.
  std::string toString() const;

  bool operator==(const ProgId& other) const { return _bytes == other._bytes; }
  bool operator!=(const ProgId& other) const { return _bytes != other._bytes; }
  bool operator<(const ProgId& other) const { return _bytes < other._bytes; }

 private:
  std::array<std::uint8_t, kSize> _bytes{};
};

}  // namespace zavri::base
