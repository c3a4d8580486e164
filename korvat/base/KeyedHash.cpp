#include "korvat/base/KeyedHash.h"

#include <bit>
#include <random>

namespace zavri::base {

namespace {

// The names are those of the paper: J.-P. Aumasson, D. J. Bernstein, "SipHash: a fast short-input
// PRF", 2012.
struct SipState {
  std::uint64_t v0;
  std::uint64_t v1;
  std::uint64_t v2;
  std::uint64_t v3;

  void round() {
    v0 += v1;
    v2 += v3;
    v1 = std::rotl(v1, 13) ^ v0;
    v3 = std::rotl(v3, 16) ^ v2;
    v0 = std::rotl(v0, 32);
    v2 += v1;
    v0 += v3;
    v1 = std::rotl(v1, 17) ^ v2;
    v3 = std::rotl(v3, 21) ^ v0;
    v2 = std::rotl(v2, 32);
  }

  void compress(std::uint64_t word) {
    v3 ^= word;
    round();
    round();
    v0 ^= word;
  }
};

// A word of `byteCount` bytes, the first one lowest.
inline std::uint64_t readWord(const char* bytes, std::size_t byteCount) {
  std::uint64_t word = 0;
  for (std::size_t i = 0; i < byteCount; ++i) {
    word |= std::uint64_t{static_cast<unsigned char>(bytes[i])} << (8 * i);
  }
  return word;
}

struct HashKey {
  HashKey() {
    std::random_device device;
    key0 = std::uint64_t{device()} << 32 | device();
    key1 = std::uint64_t{device()} << 32 | device();
  }

  std::uint64_t key0 = 0;
  std::uint64_t key1 = 0;
};

}  // namespace

std::uint64_t sipHash(std::uint64_t key0, std::uint64_t key1, std::string_view text) {
  SipState state{key0 ^ 0x736F6D6570736575, key1 ^ 0x646F72616E646F6D, key0 ^ 0x6C7967656E657261,
                 key1 ^ 0x7465646279746573};
  const char* const end = text.data() + text.size() / 8 * 8;
  for (const char* bytes = text.data(); bytes != end; bytes += 8)
    state.compress(readWord(bytes, 8));
  state.compress(std::uint64_t{text.size()} << 56 | readWord(end, text.size() % 8));
  state.v2 ^= 0xFF;
  for (int i = 0; i < 4; ++i) state.round();
  return state.v0 ^ state.v1 ^ state.v2 ^ state.v3;
}

std::size_t hashText(std::string_view text) {
  static const HashKey kKey;
  return static_cast<std::size_t>(sipHash(kKey.key0, kKey.key1, text));
}

}  // namespace zavri::base
