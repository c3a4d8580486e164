#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "korvat/base/KeyedHash.h"

namespace zavri::base {

// Map from text to T that keeps the order of insertion. T may be incomplete where the map is
// declared.
//
// A small map is searched from front to back; beyond kIndexedFrom entries a hash index takes over,
// so that building and reading a map stay linear in its size. That holds for keys that were chosen
// to collide too: see hashText().
template <typename T>
class TOrderMap {
 public:
  using Entry = std::pair<std::string, T>;
  using const_iterator = typename std::vector<Entry>::const_iterator;

  std::size_t size() const { return _entries.size(); }
  bool empty() const { return _entries.empty(); }
  const_iterator begin() const { return _entries.begin(); }
  const_iterator end() const { return _entries.end(); }

  // The value under `key`, or null.
  const T* find(std::string_view key) const {
    const std::size_t position = findPosition(key);
    return position == kAbsent ? nullptr : &_entries[position].second;
  }

  // The value under `key`, made at the end of the order when it is missing. The reference holds
  // until the next insertion. The map stays as it was when memory runs out.
  T& operator[](std::string_view key) {
    const std::size_t position = findPosition(key);
    if (position != kAbsent) return _entries[position].second;

    _entries.emplace_back(std::string(key), T());
    try {
      addToIndex();
    } catch (...) {
      _entries.pop_back();
      throw;
    }
    return _entries.back().second;
  }

  void clear() {
    _entries.clear();
    _slots.clear();
  }

 private:
  static constexpr std::size_t kIndexedFrom = 16;
  static constexpr std::size_t kAbsent = static_cast<std::size_t>(-1);

  std::size_t findPosition(std::string_view key) const {
    if (_slots.empty()) {
      for (std::size_t i = 0; i < _entries.size(); ++i) {
        if (_entries[i].first == key) return i;
      }
      return kAbsent;
    }
    const std::uint32_t found = _slots[findSlot(key)];
    return found == 0 ? kAbsent : found - 1;
  }

  // The slot that holds `key`, else the free one where it belongs.
  std::size_t findSlot(std::string_view key) const {
    const std::size_t mask = _slots.size() - 1;
    std::size_t slot = hashText(key) & mask;
    while (_slots[slot] != 0 && _entries[_slots[slot] - 1].first != key) slot = (slot + 1) & mask;
    return slot;
  }

  // Takes the last entry into the index, which is made or doubled when it is due.
  void addToIndex() {
    if (_entries.size() < kIndexedFrom) return;

    std::size_t first = _entries.size() - 1;
    if (_slots.size() < 2 * _entries.size()) {
      _slots = std::vector<std::uint32_t>(_slots.empty() ? 4 * kIndexedFrom : 2 * _slots.size(), 0);
      first = 0;
    }
    for (std::size_t i = first; i < _entries.size(); ++i) {
      _slots[findSlot(_entries[i].first)] = static_cast<std::uint32_t>(i + 1);
    }
  }

  std::vector<Entry> _entries;  // in order of insertion

  // Hash index with linear probing: position + 1 of an entry, 0 where free. Empty while the map is
  // small, else a power of two of slots, at least half of them free.
  std::vector<std::uint32_t> _slots;
};

}  // namespace zavri::base
