#include "korvat/types/ResourceGroupFp.h"

#include <utility>

namespace zavri::korvat {

bool ResourceGroupFp::internalAddType(std::unique_ptr<BaseType> type) {
  if (type) forgetKey(type->getName());  // before the base deletes the profile of that name
  const auto* fpType = dynamic_cast<const FpType*>(type.get());
  if (!ResourceGroup::internalAddType(std::move(type))) return false;

  if (fpType != nullptr && fpType->hasKey()) _typesByKey[fpType->getKey()] = fpType;
  return true;
}

const FpType* ResourceGroupFp::findByKey(std::int32_t key) const {
  const auto found = _typesByKey.find(key);
  return found == _typesByKey.end() ? nullptr : found->second;
}

// A profile about to be deleted must not be found by its key any more, unless another profile has
// taken that key.
void ResourceGroupFp::forgetKey(const std::string& name) {
  const auto* old = dynamic_cast<const FpType*>(getType(name));
  if (old == nullptr) return;
  const auto found = _typesByKey.find(old->getKey());
  if (found != _typesByKey.end() && found->second == old) _typesByKey.erase(found);
}

}  // namespace zavri::korvat
