#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

// Comparing and hashing of names, most of which are shorter than a call of memcmp() is worth.
namespace zavri::base {

template <typename T>
inline T loadBytes(const void* bytes) {
  T number = 0;
  std::memcpy(&number, bytes, sizeof number);
  return number;
}

// a == b
inline bool isSameName(std::string_view a, std::string_view b) {
  const std::size_t size = a.size();
  if (size != b.size()) return false;
  const char* const x = a.data();
  const char* const y = b.data();
  // The last piece overlaps the one before it where the name is no whole number of them.
  if (size >= 8) {
    for (std::size_t i = 0; i + 8 < size; i += 8) {
      if (loadBytes<std::uint64_t>(x + i) != loadBytes<std::uint64_t>(y + i)) return false;
    }
    return loadBytes<std::uint64_t>(x + size - 8) == loadBytes<std::uint64_t>(y + size - 8);
  }
  if (size >= 4) {
    return loadBytes<std::uint32_t>(x) == loadBytes<std::uint32_t>(y) &&
           loadBytes<std::uint32_t>(x + size - 4) == loadBytes<std::uint32_t>(y + size - 4);
  }
  for (std::size_t i = 0; i < size; ++i) {
    if (x[i] != y[i]) return false;
  }
  return true;
}

// A hash for tables that hold what we trust: it resists nobody who looks for collisions.
inline std::uint64_t hashName(std::string_view name, std::uint64_t seed) {
  const auto mix = [](std::uint64_t bits) {
    bits *= 0x9E3779B97F4A7C15;
    return bits ^ bits >> 32;
  };
  std::uint64_t bits = mix(name.size() ^ seed << 32);
  const char* at = name.data();
  std::size_t rest = name.size();
  for (; rest > 8; rest -= 8, at += 8) bits = mix(bits ^ loadBytes<std::uint64_t>(at));
  if (name.size() >= 8) return mix(bits ^ loadBytes<std::uint64_t>(at + rest - 8));
  if (rest >= 4) {
    const std::uint64_t first = loadBytes<std::uint32_t>(at);
    return mix(bits ^ first << 32 ^ loadBytes<std::uint32_t>(at + rest - 4));
  }
  std::uint64_t last = 0;
  for (std::size_t i = 0; i < rest; ++i) last = last << 8 | static_cast<unsigned char>(at[i]);
  return mix(bits ^ last);
}

}  // namespace zavri::base
