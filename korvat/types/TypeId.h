#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/base/ProgId.h"

namespace zavri::korvat {

// What a catalogue item is.
enum class ResourceType : std::int32_t {
  Invalid = 0,  // no type, failed parse
  Enum = 1,
  Nv = 2,  // network variable type, SNVT or UNVT
  Cp = 3,  // configuration property type, SCPT or UCPT
  Fp = 4,  // functional profile, SFPT or UFPT
};

// "invalid", "enum", "nv", "cp" or "fp"; empty for any other number.
KORVAT_API const char* resourceTypeName(ResourceType type);

// LonMark resource scope: how much of the program ID counts.
enum class Scope : std::int8_t {
  Standard = 0,
  DeviceClass = 1,
  DeviceClassSubclass = 2,
  Manufacturer = 3,
  ManufacturerClass = 4,
  ManufacturerClassSubclass = 5,
  ManufacturerClassSubclassModel = 6,
  InvalidScope = 7,
};

// Names one item of the catalogue: what it is, the resource set it lives in (its prefix: program ID
// and scope) and its name there, without the four letters SNVT, UNVT, SCPT, UCPT, SFPT or UFPT.
// A plain value.
class KORVAT_API TypeId {
 public:
  // Bytes of the program ID that count at scope 0 to 6.
  using ScopeMaskTable = std::array<std::array<std::uint8_t, base::ProgId::kSize>, 7>;

  static const std::string StdPrefix;      // "0000000000000000-0"
  static const std::string StdProgId;      // "0000000000000000"
  static const std::string GenericNvType;  // "_xxx": SNVT_xxx stands for any network variable type
  static const TypeId None;                // the default identifier: "not found"
  static const ScopeMaskTable ScopeMask;

  TypeId() = default;
  TypeId(ResourceType type, const std::string& prefix, const std::string& id);

  explicit operator bool() const { return _type != ResourceType::Invalid; }

  // Equal when type, masked program ID, validity of the prefix, scope and name are. Program IDs
  // that differ only where the scope masks them are the same.
  bool operator==(const TypeId& other) const;
  bool operator!=(const TypeId& other) const { return !(*this == other); }
  // Order by type, unmasked program ID, scope and name. Two identifiers that differ only in the
  // validity of their prefix are each less than the other.
  bool operator<(const TypeId& other) const;

  ResourceType getType() const { return _type; }
  void setType(ResourceType type) { _type = type; }
  const std::string& getId() const { return _id; }
  void setId(const std::string& id) { _id = id; }

  // Takes "<16 hexadecimal digits>-<scope digit>", any character serving as separator; an empty
  // text is the standard prefix. Any other text of 16 characters or less, and a program ID that is
  // no hexadecimal text, leave a prefix that is not valid.
  void setPrefix(const std::string& prefix);
  // The prefix with the masked program ID; empty when it is not valid.
  std::string getPrefix() const;
  bool isPrefixValid() const { return _prefixValid; }

  // InvalidScope for a prefix that is not valid and for a scope outside 0 to 6.
  Scope getScope() const;
  // Keeps the old scope, with a warning, for anything but 0 to 6.
  void setScope(Scope scope);
  // One scope towards the standard; false, and nothing changes, from Standard and InvalidScope.
  bool lowerScope();

  const base::ProgId& getProgId() const { return _progId; }
  // The program ID with the bytes that the scope ignores at zero; unmasked for a bad scope.
  base::ProgId getScopeMaskedProgId() const;

  // 0 to 6 and back; InvalidScope and -1 for anything else.
  static Scope numToScope(signed char number);
  static signed char scopeToNum(Scope scope);

  // True for SNVT_xxx, which takes any network variable type.
  bool isGenericNv() const;

  // "<prefix>/<format id>", such as "0000000000000000-0/SNVT_temp_p".
  std::string toString() const;
  // The reverse; an identifier of type Invalid for a text without "/" or without a name.
  void fromString(const std::string& text);

  // The name with its four letters: "SNVT_temp_p"; an enumeration's name is as it is.
  std::string toLonFormatId() const;
  // The reverse. A name that begins with "S" becomes standard, one with "U" keeps the prefix that
  // the identifier has; a name without the letters is an enumeration. False for an empty text.
  bool fromLonFormatId(const std::string& text);

  // "#<program ID>[<scope>].<format id>"
  std::string toLonFormat() const;

  // `text` without the four letters of a network variable, property or profile name.
  static std::string stripPrefix(const std::string& text);

 private:
  bool isStandard() const { return _prefixValid && _scope == 0; }
  static std::size_t getSeparatorPosition();

  ResourceType _type = ResourceType::Invalid;
  base::ProgId _progId;  // unmasked
  std::int8_t _scope = 0;
  bool _prefixValid = true;
  std::string _id;
};

}  // namespace zavri::korvat
