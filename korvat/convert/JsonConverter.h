#pragma once

#include <cstdint>
#include <deque>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/CharEncoder.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/base/Value.h"
#include "korvat/members/Member.h"

namespace zavri::korvat {

class MemBitfield;
class MemEnum;
class MemFloat;
class MemScalar;
class TypeManager;
class VarType;

// Converts raw values of one type to JSON. Manager and type must outlive it. Made for one thread;
// any number of converters may work side by side while nobody loads types or changes options.
//
//   structure                object, one member per member of the structure, in layout order
//   union                    object of all alternatives, or the hexadecimal text of its bytes
//   array                    array
//   array of characters      string
//   integer, bit field       integer of its own width without scaling, else the physical value
//   integer with its invalid marker
//                            "invalid", when the manager supports the keyword
//   float, double            number of its own precision without scaling, else the physical value
//   enumeration              string: the enumerator's name, or the decimal number when it has none
//   reference                the value of the type it refers to
class KORVAT_API JsonConverter {
 public:
  // One node on the path from the root of the JSON value to the member being converted.
  struct StackItem {
    const std::string* name;  // null for an array element
    std::int32_t index;       // -1 for a named member
    json::Value* value;       // owned by the JSON value
  };
  using Stack = std::deque<StackItem>;

  JsonConverter(TypeManager* typeManager, const VarType& type, base::Endianess endianess,
                bool allowSeveralUnionMembers);

  // Converts the bytes of `buffer`; what lies beyond its end reads as 0. False when the type has no
  // layout, a reference cannot be resolved, a union in hexadecimal text reaches beyond the buffer,
  // or a limit is met; `value` then holds what was converted so far.
  [[nodiscard]] bool rawToJson(const base::Buffer& buffer, json::Value& value);

  // Callbacks of the walk: convert one member; close a structure or union. The stack must hold the
  // root. False ends the walk.
  bool toJson(Member::Context& context, const Member& member, const base::Buffer& buffer,
              Stack& stack);
  bool toJsonStructEnd(Member::Context& context, const Member& member, const base::Buffer& buffer,
                       Stack& stack);

 private:
  // How the next array of numbers is to be read as text.
  struct TextRule {
    bool isText;
    base::CharEncoding encoding;
  };

  json::Value& findTarget(Member::Context& context, const std::string& key, json::Value& parent,
                          Stack& stack) const;
  bool closeAggregate(Member::Context& context, const Member& member, const base::Buffer& buffer,
                      Stack& stack) const;
  bool writeMember(Member::Context& context, const std::string& key, const Member& member,
                   const base::Buffer& buffer, json::Value& target) const;
  void writeArray(Member::Context& context, const Member& member, const base::Buffer& buffer,
                  json::Value& target) const;
  void writeScalar(Member::Context& context, const MemScalar& member, const base::Buffer& buffer,
                   json::Value& target) const;
  void writeFloat(Member::Context& context, const MemFloat& member, const base::Buffer& buffer,
                  json::Value& target) const;
  void writeBitfield(const Member::Context& context, const MemBitfield& member,
                     const base::Buffer& buffer, json::Value& target) const;
  void writeEnum(Member::Context& context, const MemEnum& member, const base::Buffer& buffer,
                 json::Value& target) const;
  bool writeUnionHex(Member::Context& context, const base::Buffer& buffer, Stack& stack) const;
  TextRule takeTextRule(Member::Context& context, const MemScalar& member) const;

  TypeManager* _typeManager;
  const VarType* _type;
  base::Endianess _endianess;
  bool _allowSeveralUnionMembers;
};

}  // namespace zavri::korvat
