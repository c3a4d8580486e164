#pragma once

#include <cstdint>

#include "korvat/base/Export.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

class VarType;

// An item of the catalogue. Owned by the resource group that holds it; not changed once its file
// has been read, and from then on readable from any number of threads.
class KORVAT_API BaseType {
 public:
  // Bits of the flags.
  static constexpr std::uint32_t kObsolete = 0x1;
  static constexpr std::uint32_t kStandardProfile = 0x4;  // its definition says "stlp_std"
  static constexpr std::uint32_t kDerivedFormat = 0x8;    // made for a format: found by name only
  static constexpr std::uint32_t kCharEncoding = 0x10;    // the enumeration of character encodings

  virtual ~BaseType() = default;

  // This type when it is one that values have, else null.
  virtual const VarType* asVarType() const { return nullptr; }

  const TypeId& getTypeId() const { return _typeId; }
  TypeId& getTypeId() { return _typeId; }
  // The name inside its group: "_temp_p".
  const std::string& getName() const { return _typeId.getId(); }

  // LonMark type number; -1 when none was given.
  std::int32_t getIndex() const { return _index; }
  void setIndex(std::int32_t index) { _index = index; }

  std::uint32_t getFlags() const { return _flags; }
  bool hasFlags(std::uint32_t flags) const { return (_flags & flags) == flags; }
  void addFlags(std::uint32_t flags) { _flags |= flags; }

 protected:
  explicit BaseType(ResourceType type) { _typeId.setType(type); }
  BaseType(const BaseType&) = default;
  BaseType(BaseType&&) = default;
  BaseType& operator=(const BaseType&) = default;
  BaseType& operator=(BaseType&&) = default;

 private:
  TypeId _typeId;
  std::int32_t _index = -1;
  std::uint32_t _flags = 0;
};

}  // namespace zavri::korvat
