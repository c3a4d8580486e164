#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/types/BaseType.h"

namespace zavri::korvat {

class Format;
class Member;
class TypeManager;

// A type that values have: a network variable or configuration property type. Owns the tree of
// members that describes the layout of its raw values, and its display format.
class KORVAT_API VarType : public BaseType {
 public:
  ~VarType() override;

  const VarType* asVarType() const final { return this; }

  // A new object of the same class with its own copy of the member tree, without the display
  // formats when `withoutFormats` is set.
  virtual std::unique_ptr<VarType> clone(bool withoutFormats) const = 0;

  // Root of the layout; null when the definition had none.
  const Member* getMember() const { return _member.get(); }
  Member* getMember() { return _member.get(); }
  void setMember(std::unique_ptr<Member> member);

  // Size in bytes as the definition states it; 0 when it states none.
  std::int32_t getSize() const { return _size; }
  void setSize(std::int32_t size) { _size = size; }

  // Bytes from the start of a value to the end of its last member, dynamic arrays at their full
  // size. False when there is no layout or a reference in it cannot be resolved.
  [[nodiscard]] bool getMaxSize(TypeManager* typeManager, unsigned& byteCount) const;

  // Rewrites the raw value in `buffer`, which stands in `order`, into the host's byte order. A
  // reversal is its own inverse: the same call brings numbers back; element counts of dynamic
  // arrays are read in `order` all the same. False, and nothing changes, when the value is empty or
  // shorter than its members or the type has no layout.
  [[nodiscard]] bool convertPacket(TypeManager* typeManager, base::Endianess order,
                                   base::Buffer& buffer) const;

  // Texts of the display formats, as the definition gives them, by name; the name of the plain
  // format is empty.
  const std::map<std::string, std::string>& getFormats() const { return _formats; }
  void setFormatText(const std::string& name, const std::string& text) { _formats[name] = text; }

  // How a value is shown to people; null for a type without a display format. Of several formats
  // that leave the members as they are, the last one by name.
  const Format* getFormat() const { return _format.get(); }
  void setFormat(std::unique_ptr<Format> format);

  // Notes in every union of the layout the dotted path of the enumeration that tells which
  // alternative holds: the nearest enumeration before the union in the structure around it, else
  // the nearest one in the next structure outwards. To be called once the layout is complete.
  void resolveDiscriminators();
  // That path for the union at `unionPath`; empty when there is none.
  std::string findDiscriminator(const std::string& unionPath) const;

 protected:
  explicit VarType(ResourceType type);
  VarType(const VarType& source, bool withoutFormats);

 private:
  std::unique_ptr<Member> _member;
  std::int32_t _size = 0;  // bytes
  std::map<std::string, std::string> _formats;
  std::unique_ptr<Format> _format;
};

}  // namespace zavri::korvat
