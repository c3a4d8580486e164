#include "korvat/types/EnumType.h"

namespace zavri::korvat {

void EnumType::addItem(std::int8_t value, const std::string& name) {
  _byValue.emplace(value, name);
  _byName.emplace(name, value);
}

const std::string& EnumType::getName(std::int8_t value) const {
  static const std::string none;
  const auto found = _byValue.find(value);
  return found == _byValue.end() ? none : found->second;
}

std::int8_t EnumType::getValue(const std::string& name) const {
  const auto found = _byName.find(name);
  return found == _byName.end() ? static_cast<std::int8_t>(-1) : found->second;
}

bool EnumType::hasName(const std::string& name) const {
  return _byName.count(name) != 0;
}

}  // namespace zavri::korvat
