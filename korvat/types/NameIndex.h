#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zavri::korvat {

class BaseType;

// Finds the types of one group by name. Does not own them. A hash table whose names lie side by
// side, so that a look-up touches few places in memory.
class NameIndex {
 public:
  // The type, or null.
  const BaseType* find(std::string_view name) const;

  // Enters a type, in the place of an earlier one of that name.
  void enter(std::string_view name, const BaseType* type);

 private:
  struct Slot {
    const BaseType* type = nullptr;  // null where free
    std::uint32_t hash = 0;
    std::uint32_t nameStart = 0;  // in _names
    std::uint32_t nameSize = 0;   // bytes
  };

  std::string_view nameOf(const Slot& slot) const {
    return {_names.data() + slot.nameStart, slot.nameSize};
  }
  static std::uint32_t hash(std::string_view name);
  // The slot of `name`, else the free one where it belongs.
  std::size_t findSlot(std::string_view name, std::uint32_t hash) const;
  void grow();

  std::vector<Slot> _slots;  // a power of two, half of them free or more
  std::string _names;        // one behind the other
  std::size_t _count = 0;
};

}  // namespace zavri::korvat
