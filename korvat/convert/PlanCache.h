#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "korvat/convert/ConversionPlan.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

class VarType;

// The types that one manager has converted values of, with their plans, found by identifier in one
// step. Owns the plans; what they refer to is the manager's, which drops the cache when it takes
// over other types: an identifier that has an entry stands for that type as long as the cache
// exists.
//
// Any number of threads may find and add side by side. Finding takes no lock: entries stand in a
// hash table of atomic slots that are only ever filled; a table that has become too small is kept
// for those who still read it.
class PlanCache {
 public:
  struct Entry {
    TypeId id;
    const VarType* type;
    std::unique_ptr<const ConversionPlan> plan;  // null for a type that only the walk converts
  };

  // The entry of the type that `id` names, or null when nobody has tried to make a plan for it.
  // Identifiers of one prefix and name have the same entry.
  const Entry* find(const TypeId& id) const {
    const Table* table = _table.load(std::memory_order_acquire);
    return table == nullptr ? nullptr : findIn(*table, id);
  }

  // Makes the plan of the type that `id` names, unless that was done. A plan that fails because a
  // type that it needs is not loaded is not noted: `isLoaded` tells, once `findType` has looked for
  // all.
  void add(const TypeId& id, const VarType& type, const ConversionPlan::FindType& findType,
           const bool& isLoaded);

 private:
  struct Table {
    explicit Table(std::size_t slotCount) : slots(slotCount) {}

    std::vector<std::atomic<const Entry*>> slots;  // a power of two, half of them free or more
  };

  static const Entry* findIn(const Table& table, const TypeId& id);
  static void insert(Table& table, const Entry& entry);

  std::atomic<const Table*> _table{nullptr};  // the last one of _tables
  std::mutex _mutex;                          // for all that follows
  std::vector<std::unique_ptr<Table>> _tables;
  std::vector<std::unique_ptr<const Entry>> _entries;
  EnumTables _enums;
};

}  // namespace zavri::korvat
