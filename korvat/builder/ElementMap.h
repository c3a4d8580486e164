#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zavri::korvat::builder {

// Events that an element called `name` gives; 0, which is no event, where it gives none.
struct ElementEvents {
  std::string_view name;
  std::uint32_t start;
  std::uint32_t end;
  std::uint32_t value;
};

// Events of all elements that a builder knows. Every callback of the XML parser looks one up, so
// the search compares numbers (the first eight characters) before it compares one whole name.
template <std::size_t N>
class TElementMap {
 public:
  // The names may come in any order; see isUnambiguous().
  constexpr explicit TElementMap(const std::array<ElementEvents, N>& rows) {
    for (std::size_t i = 0; i < N; ++i) _entries[i] = {keyOf(rows[i].name), rows[i]};
    std::sort(_entries.begin(), _entries.end(), isBefore);
  }

  // False when two names have the same eight characters: one of them would never be found.
  constexpr bool isUnambiguous() const {
    for (std::size_t i = 1; i < N; ++i) {
      if (_entries[i - 1].key == _entries[i].key) return false;
    }
    return true;
  }

  // The row called `name` (exact), or one without any events.
  constexpr const ElementEvents& find(std::string_view name) const {
    const auto found =
        std::lower_bound(_entries.begin(), _entries.end(), Entry{keyOf(name), {}}, isBefore);
    return found != _entries.end() && found->events.name == name ? found->events : kNone;
  }

 private:
  struct Entry {
    std::uint64_t key;
    ElementEvents events;
  };

  static constexpr ElementEvents kNone{};

  static constexpr bool isBefore(const Entry& a, const Entry& b) { return a.key < b.key; }

  static constexpr std::uint64_t keyOf(std::string_view name) {
    std::uint64_t key = 0;
    for (std::size_t i = 0; i < sizeof(key) && i < name.size(); ++i) {
      key = key << 8 | static_cast<unsigned char>(name[i]);
    }
    return key;
  }

  std::array<Entry, N> _entries{};
};

}  // namespace zavri::korvat::builder
