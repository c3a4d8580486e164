#include "korvat/convert/PlanCache.h"

#include <cstdint>
#include <utility>

#include "korvat/base/ShortText.h"

namespace zavri::korvat {

namespace {

std::size_t hash(const TypeId& id) {
  return static_cast<std::size_t>(
      base::hashName(id.getId(), static_cast<std::uint64_t>(id.getType())));
}

bool isStandard(const TypeId& id) {
  const std::uint8_t* const progId = id.getProgId().getBytes().data();
  return id.isPrefixValid() && base::loadBytes<std::uint64_t>(progId) == 0;
}

// True for prefixes that are spelled alike. One that is not valid is like no other.
bool hasSamePrefix(const TypeId& a, const TypeId& b) {
  if (isStandard(a) && isStandard(b)) return true;
  return a.getScope() == b.getScope() && a.getScope() != Scope::InvalidScope &&
         a.getScopeMaskedProgId() == b.getScopeMaskedProgId();
}

}  // namespace

const PlanCache::Entry* PlanCache::findIn(const Table& table, const TypeId& id) {
  const std::size_t mask = table.slots.size() - 1;
  for (std::size_t slot = hash(id) & mask;; slot = (slot + 1) & mask) {
    const Entry* entry = table.slots[slot].load(std::memory_order_acquire);
    if (entry == nullptr) return nullptr;
    if (entry->id.getType() == id.getType() && base::isSameName(entry->id.getId(), id.getId()) &&
        hasSamePrefix(entry->id, id)) {
      return entry;
    }
  }
}

void PlanCache::insert(Table& table, const Entry& entry) {
  const std::size_t mask = table.slots.size() - 1;
  std::size_t slot = hash(entry.id) & mask;
  while (table.slots[slot].load(std::memory_order_relaxed) != nullptr) slot = (slot + 1) & mask;
  table.slots[slot].store(&entry, std::memory_order_release);
}

void PlanCache::add(const TypeId& id, const VarType& type, const ConversionPlan::FindType& findType,
                    const bool& isLoaded) {
  if (id.getScope() == Scope::InvalidScope) return;
  const std::lock_guard<std::mutex> lock(_mutex);
  if (find(id) != nullptr) return;

  std::unique_ptr<const ConversionPlan> plan = ConversionPlan::make(type, _enums, findType);
  if (plan == nullptr && !isLoaded) return;
  _entries.push_back(std::make_unique<const Entry>(Entry{id, &type, std::move(plan)}));
  if (!_tables.empty() && 2 * _entries.size() <= _tables.back()->slots.size()) {
    return insert(*_tables.back(), *_entries.back());
  }
  const std::size_t slotCount = _tables.empty() ? 16 : 2 * _tables.back()->slots.size();
  _tables.push_back(std::make_unique<Table>(slotCount));
  for (const auto& entry : _entries) insert(*_tables.back(), *entry);
  _table.store(_tables.back().get(), std::memory_order_release);
}

}  // namespace zavri::korvat
