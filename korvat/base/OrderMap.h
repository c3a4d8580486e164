#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace zavri::base {

// Map from text to T that keeps the order of insertion. T may be incomplete where the map is
// declared.
//
// A small map is searched from front to back; beyond kIndexedFrom entries a hash index takes over,
// so that building and reading a map stay linear in its size.
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
  // until the next insertion.
  T& operator[](std::string_view key) {
    const std::size_t position = findPosition(key);
    if (position != kAbsent) return _entries[position].second;

    return append(key);
  }

  // The same for a key that the caller knows to be missing.
  T& append(std::string_view key) {
    _entries.emplace_back(std::piecewise_construct, std::forward_as_tuple(key),
                          std::forward_as_tuple());
    if (_entries.size() >= kIndexedFrom) addToIndex();
    return _entries.back().second;
  }

  // Makes room for that many entries.
  void reserve(std::size_t count) { _entries.reserve(count); }

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
    const Slot& found = _slots[findSlot(key, hash(key))];
    return found.entry == 0 ? kAbsent : found.entry - 1;
  }

  // One place of the hash index. The hash tells most other keys apart without a look at them.
  struct Slot {
    std::uint32_t entry = 0;  // position + 1; 0 where free
    std::uint32_t hash = 0;
  };

  static std::uint32_t hash(std::string_view key) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(key));
  }

  // The slot that holds `key`, else the free one where it belongs.
  std::size_t findSlot(std::string_view key, std::uint32_t hash) const {
    const std::size_t mask = _slots.size() - 1;
    std::size_t slot = hash & mask;
    while (_slots[slot].entry != 0 &&
           (_slots[slot].hash != hash || _entries[_slots[slot].entry - 1].first != key)) {
      slot = (slot + 1) & mask;
    }
    return slot;
  }

  // Takes the last entry into the index, which is made, or made anew, when it is due: with room for
  // all entries that there is room for.
  void addToIndex() {
    std::size_t first = _entries.size() - 1;
    if (_slots.size() < 2 * _entries.size()) {
      _slots.assign(std::bit_ceil(2 * _entries.capacity()), Slot());
      first = 0;
    }
    for (std::size_t i = first; i < _entries.size(); ++i) {
      const std::string& key = _entries[i].first;
      const std::uint32_t keyHash = hash(key);
      _slots[findSlot(key, keyHash)] = {static_cast<std::uint32_t>(i + 1), keyHash};
    }
  }

  std::vector<Entry> _entries;  // in order of insertion

  // Hash index with linear probing. Empty while the map is small, else a power of two of slots, at
  // least half of them free.
  std::vector<Slot> _slots;
};

}  // namespace zavri::base
