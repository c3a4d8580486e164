#pragma once

#include <cstdint>
#include <optional>

#include "korvat/base/Export.h"
#include "korvat/members/Member.h"
#include "korvat/members/NcType.h"
#include "korvat/members/Scaling.h"

namespace zavri::korvat {

// A member that holds a number, with the scaling from the raw number to the physical value and, in
// a type made for a display format, on to the value that is shown. Where its classes speak of a
// physical value, they mean the one that is shown; their resolution is that of the scaling.
class KORVAT_API MemNumeric : public Member {
 public:
  const Scaling& getScaling() const { return _scaling; }
  void setScaling(const Scaling& scaling) { _scaling = scaling; }
  void setScalingA(std::int16_t a) { _scaling.a = a; }
  void setScalingB(std::int16_t b) { _scaling.b = b; }
  void setScalingC(std::int16_t c) { _scaling.c = c; }

  const DisplayScaling& getDisplayScaling() const { return _displayScaling; }
  void setDisplayScaling(const DisplayScaling& scaling) { _displayScaling = scaling; }

  // True when the raw number is the one that is shown.
  bool isScalingIdentity() const { return _scaling.isIdentity() && _displayScaling.isIdentity(); }

 protected:
  explicit MemNumeric(Kind kind) : Member(kind) {}
  MemNumeric(const MemNumeric&) = default;

  // What both scalings make of an integer, and the raw number, not yet rounded, of a shown value.
  double scaleInteger(double raw) const;
  double unscale(double value, bool quantize) const;

 private:
  Scaling _scaling;
  DisplayScaling _displayScaling;
};

// The limits of a numeric member, raw, and the raw number that marks a value as invalid.
template <typename T>
class TMemNumeric : public MemNumeric {
 public:
  bool hasMin() const { return _minValue.has_value(); }
  bool hasMax() const { return _maxValue.has_value(); }
  bool hasInvalid() const { return _invalidValue.has_value(); }
  // Each is 0 when it was not given.
  T getMin() const { return _minValue.value_or(T{0}); }
  T getMax() const { return _maxValue.value_or(T{0}); }
  T getInvalid() const { return _invalidValue.value_or(T{0}); }
  void setMin(T raw) { _minValue = raw; }
  void setMax(T raw) { _maxValue = raw; }
  void setInvalid(T raw) { _invalidValue = raw; }

  bool isInvalid(T raw) const { return hasInvalid() && raw == *_invalidValue; }
  // True within the limits, and always for the invalid marker.
  bool isInRange(T raw) const {
    if (isInvalid(raw)) return true;
    if (hasMin() && raw < *_minValue) return false;
    return !(hasMax() && raw > *_maxValue);
  }

 protected:
  explicit TMemNumeric(Kind kind) : MemNumeric(kind) {}
  TMemNumeric(const TMemNumeric&) = default;

 private:
  std::optional<T> _minValue;
  std::optional<T> _maxValue;
  std::optional<T> _invalidValue;
};

// What a member of a standard base type adds: the type, and with it the size.
class KORVAT_API NcTyped {
 public:
  virtual ~NcTyped() = default;

  NcType getNcType() const { return _ncType; }
  void setNcType(NcType ncType) { _ncType = ncType; }
  // Bytes of one element; 0 without a base type.
  unsigned getByteCount() const { return ncTypeSize(_ncType); }

 protected:
  NcTyped() = default;
  NcTyped(const NcTyped&) = default;
  NcTyped& operator=(const NcTyped&) = delete;

 private:
  NcType _ncType = NcType::None;
};

}  // namespace zavri::korvat
