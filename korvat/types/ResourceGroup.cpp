#include "korvat/types/ResourceGroup.h"

#include "korvat/base/Logger.h"

namespace zavri::korvat {

const BaseType* ResourceGroup::getType(const std::string& name) const {
  return _lookup.find(name);
}

const BaseType* ResourceGroup::getTypeByIndex(std::int32_t index) const {
  const auto found = _typesByIndex.find(index);
  return found == _typesByIndex.end() ? nullptr : found->second;
}

bool ResourceGroup::internalAddType(std::unique_ptr<BaseType> type) {
  if (!type || type->getName().empty()) return false;

  if (!type->hasFlags(BaseType::kDerivedFormat)) enterIndex(type.get());
  std::unique_ptr<BaseType>& slot = _typesByName[type->getName()];
  if (slot) forgetIndex(slot.get());
  slot = std::move(type);
  _lookup.enter(slot->getName(), slot.get());
  return true;
}

void ResourceGroup::enterIndex(BaseType* type) {
  BaseType*& slot = _typesByIndex[type->getIndex()];
  if (slot != nullptr) {
    base::Logger::debug("[ResourceGroup::internalAddType] replacing type index %ld (%s->%s)\n",
                        static_cast<long>(type->getIndex()), slot->getName().c_str(),
                        type->getName().c_str());
  }
  slot = type;
}

// A type about to be deleted must not be found by its number any more, unless another type has
// taken that number.
void ResourceGroup::forgetIndex(const BaseType* type) {
  const auto found = _typesByIndex.find(type->getIndex());
  if (found != _typesByIndex.end() && found->second == type) _typesByIndex.erase(found);
}

}  // namespace zavri::korvat
