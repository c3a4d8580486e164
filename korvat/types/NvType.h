#pragma once

#include "korvat/types/VarType.h"

namespace zavri::korvat {

// Network variable type.
class KORVAT_API NvType : public VarType {
 public:
  NvType() : VarType(ResourceType::Nv) {}

  std::unique_ptr<VarType> clone(bool withoutFormats) const override {
    return std::unique_ptr<VarType>(new NvType(*this, withoutFormats));
  }

 private:
  NvType(const NvType& source, bool withoutFormats) : VarType(source, withoutFormats) {}
};

}  // namespace zavri::korvat
