#include "korvat/types/DpRef.h"

namespace zavri::korvat {

DpRef::DpRef(FpType* owner, DpType type, std::int32_t index)
    : _fpType(owner),
      _index(index),
      _dpType(type),
      _direction(type == DpType::Cp ? Direction::Input : Direction::Output) {}

void DpRef::setMin(double min) {
  _min = min;
  _hasMin = true;
}

void DpRef::setMax(double max) {
  _max = max;
  _hasMax = true;
}

void DpRef::setDefaultValue(double value) {
  _defaultValue = value;
  _hasDefault = true;
}

}  // namespace zavri::korvat
