#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/types/FpType.h"
#include "korvat/types/ResourceGroup.h"

namespace zavri::korvat {

// The functional profiles of one resource set, which are also found by their keys.
class KORVAT_API ResourceGroupFp : public TResourceGroup<FpType> {
 public:
  using TResourceGroup::TResourceGroup;

  // As for every group. A later profile also takes the key of an earlier one, which is still found
  // by name; the key of a profile that is replaced goes with it. A profile without a key is not
  // found by key.
  bool internalAddType(std::unique_ptr<BaseType> type) override;

  // The profile with that key, or null.
  const FpType* findByKey(std::int32_t key) const;

 private:
  void forgetKey(const std::string& name);

  std::map<std::int32_t, const FpType*> _typesByKey;
};

}  // namespace zavri::korvat
