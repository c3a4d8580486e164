#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

class FpType;

// A datapoint of a functional profile: a network variable or configuration property member, the
// type it has and what the profile says about it. Owned by the profile it was added to and by the
// copies of that profile; filled by FpBuilder.
class KORVAT_API DpRef {
 public:
  // The collection of the profile that the datapoint belongs to.
  enum class DpType : std::int32_t {
    Nv = 0,  // network variable
    Cp = 1,  // configuration property
  };

  // As seen from the device.
  enum class Direction : std::int32_t {
    Input = 0,
    Output = 1,
  };

  // `index` is the member number, counted from 1; with 0 the profile numbers the member by its
  // position. A network variable is an output and a property an input until told otherwise.
  DpRef(FpType* owner, DpType type, std::int32_t index);

  // The profile that it was added to; before that the one it was made for, which must outlive it
  // then. Null once the profile it was added to is gone or was assigned to, even while a copy of
  // the profile keeps the datapoint.
  FpType* getFpType() const { return _fpType; }
  void setFpType(FpType* owner) { _fpType = owner; }

  // The type of the datapoint's values.
  const TypeId& getTypeId() const { return _typeId; }
  void setTypeId(const TypeId& id) { _typeId = id; }

  // Number among the profile's members of its kind, counted from 1.
  std::int32_t getIndex() const { return _index; }
  void setIndex(std::int32_t index) { _index = index; }
  // "nviSetpoint"
  const std::string& getName() const { return _name; }
  void setName(const std::string& name) { _name = name; }

  DpType getDpType() const { return _dpType; }
  Direction getDirection() const { return _direction; }
  void setDirection(Direction direction) { _direction = direction; }

  // Limits and default that the profile sets, physical numbers; each 0 while it is not given.
  double getMin() const { return _min; }
  double getMax() const { return _max; }
  double getDefaultValue() const { return _defaultValue; }
  void setMin(double min);
  void setMax(double max);
  void setDefaultValue(double value);
  bool hasMin() const { return _hasMin; }
  bool hasMax() const { return _hasMax; }
  bool hasDefault() const { return _hasDefault; }

  // Whether a device may implement the member as an array.
  bool isArrayPermitted() const { return _arrayPermitted; }
  void setArrayPermitted(bool isPermitted) { _arrayPermitted = isPermitted; }
  bool isMandatory() const { return _mandatory; }
  void setMandatory(bool isMandatory) { _mandatory = isMandatory; }

  // Member number as the definition's own element states it; 0 when it states none.
  std::int32_t getMember() const { return _member; }
  void setMember(std::int32_t member) { _member = member; }

  // What a property is about: the name of the profile or of one of its network variables.
  const std::string& getAppliesTo() const { return _appliesTo; }
  void setAppliesTo(const std::string& text) { _appliesTo = text; }

 private:
  FpType* _fpType;
  TypeId _typeId;
  std::int32_t _index;
  std::string _name;
  DpType _dpType;
  Direction _direction;
  double _min = 0.0;
  double _max = 0.0;
  double _defaultValue = 0.0;
  bool _hasMin = false;
  bool _hasMax = false;
  bool _hasDefault = false;
  bool _arrayPermitted = true;
  bool _mandatory = false;
  std::int32_t _member = 0;
  std::string _appliesTo;
};

}  // namespace zavri::korvat
