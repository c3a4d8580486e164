#pragma once

#include <cstddef>
#include <cstdint>

namespace zavri::korvat {

// Bounds that keep a broken or hostile definition harmless. Real types stay far below them.

// Elements of one array; a larger one is cut when its file is read.
inline constexpr std::uint32_t kMaxArraySize = 65'536;

// Visits after which one walk gives up. A short file can describe billions of elements (arrays of
// arrays of empty structures), so the work is bounded here and not by what the file claims.
inline constexpr std::uint32_t kMaxVisits = 4'000'000;

// Aggregates and references inside each other after which one walk gives up. A structure may hold
// a reference to itself.
inline constexpr std::uint32_t kMaxNesting = 256;

// Types that a reference may lead through before it reaches a layout.
inline constexpr std::size_t kMaxReferences = 64;

// Groups that may be loaded inside each other: the formats of one set may show members of types of
// another set, and so on.
inline constexpr unsigned kMaxNestedLoads = 32;

// Members of all types that the formats of one group may derive. A short file can ask for thousands
// of copies of a large type.
inline constexpr std::uint32_t kMaxDerivedMembers = 250'000;

// Bytes of a member path. With kMaxNesting in mind, a longer one names nothing.
inline constexpr std::size_t kMaxPathSize = 4'096;

}  // namespace zavri::korvat
