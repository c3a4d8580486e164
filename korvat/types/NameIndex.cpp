#include "korvat/types/NameIndex.h"

#include <functional>
#include <utility>

#include "korvat/base/ShortText.h"

namespace zavri::korvat {

std::uint32_t NameIndex::hash(std::string_view name) {
  return static_cast<std::uint32_t>(std::hash<std::string_view>()(name));
}

std::size_t NameIndex::findSlot(std::string_view name, std::uint32_t hash) const {
  const std::size_t mask = _slots.size() - 1;
  std::size_t index = hash & mask;
  while (_slots[index].type != nullptr &&
         (_slots[index].hash != hash || !base::isSameName(nameOf(_slots[index]), name))) {
    index = (index + 1) & mask;
  }
  return index;
}

const BaseType* NameIndex::find(std::string_view name) const {
  return _slots.empty() ? nullptr : _slots[findSlot(name, hash(name))].type;
}

void NameIndex::enter(std::string_view name, const BaseType* type) {
  if (_slots.size() < 2 * (_count + 1)) grow();
  Slot& slot = _slots[findSlot(name, hash(name))];
  if (slot.type == nullptr) {
    slot.hash = hash(name);
    slot.nameStart = static_cast<std::uint32_t>(_names.size());
    slot.nameSize = static_cast<std::uint32_t>(name.size());
    _names.append(name);
    ++_count;
  }
  slot.type = type;
}

void NameIndex::grow() {
  const std::vector<Slot> old = std::exchange(_slots, {});
  _slots.resize(old.empty() ? 16 : 2 * old.size());
  for (const Slot& slot : old) {
    if (slot.type != nullptr) _slots[findSlot(nameOf(slot), slot.hash)] = slot;
  }
}

}  // namespace zavri::korvat
