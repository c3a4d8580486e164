#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/types/BaseType.h"

namespace zavri::korvat {

// The named values of one enumeration type, such as 0 "OC_OCCUPIED". Owns its items; filled by
// EnumBuilder.
class KORVAT_API EnumType : public BaseType {
 public:
  EnumType() : BaseType(ResourceType::Enum) {}

  // Adds one item. The first item with a value or a name wins, so that both look-ups are total.
  void addItem(std::int8_t value, const std::string& name);

  // Name of `value`; an empty text, valid for ever, when no item has that value.
  const std::string& getName(std::int8_t value) const;

  // Value of `name` (exact), or -1. An item may have the value -1 too: ask hasName() where the
  // difference matters.
  std::int8_t getValue(const std::string& name) const;
  bool hasName(const std::string& name) const;

  using BaseType::getName;

  // All items by value and by name. One that lost its value or its name to an earlier item stands
  // in the other map only.
  const std::map<std::int8_t, std::string>& getItemsByValue() const { return _byValue; }
  const std::map<std::string, std::int8_t>& getItemsByName() const { return _byName; }

 private:
  std::map<std::int8_t, std::string> _byValue;
  std::map<std::string, std::int8_t> _byName;
};

}  // namespace zavri::korvat
