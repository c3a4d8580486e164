#pragma once

#include <string>

#include "korvat/types/VarType.h"

namespace zavri::korvat {

// Configuration property type. One that takes the type of the network variable it applies to has
// no layout of its own.
class KORVAT_API CpType : public VarType {
 public:
  CpType() : VarType(ResourceType::Cp) {}

  std::unique_ptr<VarType> clone(bool withoutFormats) const override {
    return std::unique_ptr<VarType>(new CpType(*this, withoutFormats));
  }

  // Text of the default value as the definition gives it; empty when it gives none.
  const std::string& getDefaultValue() const { return _defaultValue; }
  void setDefaultValue(const std::string& text) { _defaultValue = text; }

 private:
  CpType(const CpType& source, bool withoutFormats)
      : VarType(source, withoutFormats), _defaultValue(source._defaultValue) {}

  std::string _defaultValue;
};

}  // namespace zavri::korvat
