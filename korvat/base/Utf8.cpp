#include "korvat/base/Utf8.h"

#include <cstdint>

namespace zavri::base {

namespace {

// What a first byte asks of the bytes behind it (Unicode 15, table 3-7). Only the second byte has
// narrower limits than 0x80..0xBF: they keep out overlong forms, surrogates and codes too large.
struct Lead {
  std::uint8_t first;       // lowest first byte of this row
  std::uint8_t last;        // highest one
  std::uint8_t following;   // bytes
  std::uint8_t secondFrom;  // lowest second byte
  std::uint8_t secondTo;    // highest one
};

constexpr Lead kLeads[] = {
    {0xC2, 0xDF, 1, 0x80, 0xBF}, {0xE0, 0xE0, 2, 0xA0, 0xBF}, {0xE1, 0xEC, 2, 0x80, 0xBF},
    {0xED, 0xED, 2, 0x80, 0x9F}, {0xEE, 0xEF, 2, 0x80, 0xBF}, {0xF0, 0xF0, 3, 0x90, 0xBF},
    {0xF1, 0xF3, 3, 0x80, 0xBF}, {0xF4, 0xF4, 3, 0x80, 0x8F},
};

const Lead* findLead(std::uint8_t byte) {
  for (const Lead& lead : kLeads) {
    if (byte >= lead.first && byte <= lead.last) return &lead;
  }
  return nullptr;
}

}  // namespace

char32_t takeUtf8(std::string_view utf8, std::size_t& pos) {
  const auto first = static_cast<std::uint8_t>(utf8[pos++]);
  if (first < 0x80) return first;

  const Lead* const lead = findLead(first);
  if (lead == nullptr) return kReplacementCharacter;

  char32_t code = first & (0x3Fu >> lead->following);
  std::uint8_t lowest = lead->secondFrom;
  std::uint8_t highest = lead->secondTo;
  for (unsigned i = 0; i < lead->following; ++i) {
    if (pos == utf8.size()) return kReplacementCharacter;

    const auto byte = static_cast<std::uint8_t>(utf8[pos]);
    if (byte < lowest || byte > highest) return kReplacementCharacter;

    code = (code << 6) | (byte & 0x3Fu);
    ++pos;
    lowest = 0x80;
    highest = 0xBF;
  }
  return code;
}

void appendUtf8(std::string& utf8, char32_t code) {
  if (!isCharacter(code)) code = kReplacementCharacter;
  if (code < 0x80) {
    utf8 += static_cast<char>(code);
    return;
  }

  const unsigned following = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  constexpr std::uint8_t kLeadBits[] = {0x00, 0xC0, 0xE0, 0xF0};
  utf8 += static_cast<char>(kLeadBits[following] | (code >> (6 * following)));
  for (unsigned i = following; i > 0; --i) {
    utf8 += static_cast<char>(0x80u | ((code >> (6 * (i - 1))) & 0x3Fu));
  }
}

}  // namespace zavri::base
