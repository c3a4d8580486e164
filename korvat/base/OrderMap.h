#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "korvat/base/KeyedHash.h"

namespace zavri::base {

// Map from text to T that keeps the order of insertion. T may be incomplete where the map is
// declared.
//
// A small map is searched from front to back; beyond kIndexedFrom entries a hash index takes over,
// so that building and reading a map stay linear in its size. That holds for keys that were chosen
// to collide too: where keys crowd in the index, it changes to hashText().
template <typename T>
class TOrderMap {
 public:
  using Entry = std::pair<std::string, T>;
  using const_iterator = typename std::vector<Entry>::const_iterator;

  TOrderMap() = default;
  TOrderMap(const TOrderMap& other)
      : _entries(other._entries),
        _index(other._index ? std::make_unique<Index>(*other._index) : nullptr) {}
  TOrderMap(TOrderMap&&) noexcept = default;
  TOrderMap& operator=(const TOrderMap& other) { return *this = TOrderMap(other); }
  TOrderMap& operator=(TOrderMap&&) noexcept = default;
  ~TOrderMap() = default;

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

    return append(key);
  }

  // The same for a key that the caller knows to be missing.
  T& append(std::string_view key) {
    _entries.emplace_back(std::piecewise_construct, std::forward_as_tuple(key),
                          std::forward_as_tuple());
    if (_entries.size() < kIndexedFrom) return _entries.back().second;
    try {
      addToIndex();
    } catch (...) {
      _entries.pop_back();
      throw;
    }
    return _entries.back().second;
  }

  // Makes room for that many entries.
  void reserve(std::size_t count) { _entries.reserve(count); }

  void clear() {
    _entries.clear();
    _index.reset();
  }

 private:
  static constexpr std::size_t kIndexedFrom = 16;
  static constexpr std::size_t kAbsent = static_cast<std::size_t>(-1);
  // Steps of one insertion through the index beyond which chance is no explanation.
  static constexpr std::size_t kMaxSteps = 128;

  // One place of the hash index. The hash tells most other keys apart without a look at them.
  struct Slot {
    std::uint32_t entry = 0;  // position + 1; 0 where free
    std::uint32_t hash = 0;
  };

  // Hash index with linear probing.
  struct Index {
    explicit Index(std::size_t slotCount) : slots(slotCount) {}

    std::uint32_t hash(std::string_view key) const {
      return static_cast<std::uint32_t>(isKeyed ? hashText(key)
                                                : std::hash<std::string_view>()(key));
    }

    std::vector<Slot> slots;  // a power of two, at least half of them free
    bool isKeyed = false;     // the hash is hashText()
  };

  std::size_t findPosition(std::string_view key) const {
    if (!_index) {
      for (std::size_t i = 0; i < _entries.size(); ++i) {
        if (_entries[i].first == key) return i;
      }
      return kAbsent;
    }
    const Slot& found = _index->slots[findSlot(key, _index->hash(key))];
    return found.entry == 0 ? kAbsent : found.entry - 1;
  }

  // The slot that holds `key`, else the free one where it belongs.
  std::size_t findSlot(std::string_view key, std::uint32_t hash) const {
    const std::vector<Slot>& slots = _index->slots;
    const std::size_t mask = slots.size() - 1;
    std::size_t slot = hash & mask;
    while (slots[slot].entry != 0 &&
           (slots[slot].hash != hash || _entries[slots[slot].entry - 1].first != key)) {
      slot = (slot + 1) & mask;
    }
    return slot;
  }

  // Takes the last entry into the index, which is made, or made anew, when it is due: with room for
  // all entries that there is room for.
  void addToIndex() {
    if (_index && _index->slots.size() >= 2 * _entries.size()) return enter(_entries.size() - 1);
    _index = std::make_unique<Index>(std::bit_ceil(2 * _entries.capacity()));
    enterAll();
  }

  void enterAll() {
    for (std::size_t i = 0; i < _entries.size(); ++i) enter(i);
  }

  void enter(std::size_t position) {
    const std::string& key = _entries[position].first;
    const std::uint32_t hash = _index->hash(key);
    std::vector<Slot>& slots = _index->slots;
    const std::size_t slot = findSlot(key, hash);
    slots[slot] = {static_cast<std::uint32_t>(position + 1), hash};
    if (_index->isKeyed || ((slot - hash) & (slots.size() - 1)) <= kMaxSteps) return;

    _index->isKeyed = true;
    std::fill(slots.begin(), slots.end(), Slot());
    enterAll();
  }

  std::vector<Entry> _entries;    // in order of insertion
  std::unique_ptr<Index> _index;  // none while the map is small
};

}  // namespace zavri::base
