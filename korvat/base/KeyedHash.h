#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "korvat/base/Export.h"

namespace zavri::base {

// SipHash-2-4 of `text` under the key of those two halves.
KORVAT_API std::uint64_t sipHash(std::uint64_t key0, std::uint64_t key1, std::string_view text);

// Hash of `text` under a key that each process draws for itself: whoever chooses the texts cannot
// choose which of them collide. Not for anything that is kept or shown. Any thread may call it.
KORVAT_API std::size_t hashText(std::string_view text);

}  // namespace zavri::base
