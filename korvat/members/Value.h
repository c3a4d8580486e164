#pragma once

#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/members/MemberValue.h"

namespace zavri::korvat {

// A raw value with its type: its members are reached by path. Owns nothing; manager, type and
// buffer must outlive it, and it must outlive the member values it hands out.
class KORVAT_API Value {
 public:
  // `type` may be null: no member is then accessible.
  Value(TypeManager* typeManager, const VarType* type, base::Endianess endianess,
        base::Buffer& buffer);

  // True when there is a type with a layout.
  bool isValid() const;
  const VarType* getType() const { return _type; }
  base::Endianess getEndianess() const { return _endianess; }
  base::Buffer& getBuffer() const { return *_buffer; }

  // The member at a path such as "a.b[2].c"; an empty path is the value itself, "[2]" an element of
  // a value that is an array. Not accessible when there is no such member, and for an index past
  // the array. Members behind a dynamic array are placed as if it had its full size.
  MemberValue operator[](const std::string& path) const;

 private:
  TypeManager* _typeManager;
  const VarType* _type;
  base::Endianess _endianess;
  base::Buffer* _buffer;
};

}  // namespace zavri::korvat
