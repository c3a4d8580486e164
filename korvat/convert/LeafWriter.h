#pragma once

#include <cstdint>
#include <string>

#include "korvat/base/Buffer.h"
#include "korvat/base/CharEncoder.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Value.h"
#include "korvat/members/Member.h"

namespace zavri::korvat {

class MemBitfield;
class MemEnum;
class MemFloat;
class MemScalar;
class TypeManager;

// Writes single JSON nodes into the fields of a raw value. Each operation writes at the position of
// the context, makes the buffer long enough for what it writes, and is true when it wrote a value
// that the member takes; otherwise getProblem() tells why not.
//
// Numbers, by the options of the manager: the text "invalid" stands for the invalid marker when the
// keyword is supported. With cutting allowed a number is brought to the nearest one that the field
// and then the member's limits take; without it such a number is refused. One outside the limits
// alone is refused only after it was stored.
class LeafWriter {
 public:
  LeafWriter(TypeManager* typeManager, base::Endianess endianess)
      : _typeManager(typeManager), _endianess(endianess) {}

  bool writeScalar(const Member::Context& context, const MemScalar& member, const json::Value& node,
                   base::Buffer& raw);
  bool writeFloat(const Member::Context& context, const MemFloat& member, const json::Value& node,
                  base::Buffer& raw);
  bool writeBitfield(const Member::Context& context, const MemBitfield& member,
                     const json::Value& node, base::Buffer& raw);
  // A name, or a number as a number or as decimal text, within a signed byte.
  bool writeEnum(const Member::Context& context, const MemEnum& member, const json::Value& node,
                 base::Buffer& raw);
  // Text into a whole array of `byteCount` bytes, cut when it is too long.
  bool writeText(const Member::Context& context, const json::Value& node, unsigned byteCount,
                 base::CharEncoding encoding, base::Buffer& raw);

  // What was wrong with the last node; empty when nothing was.
  const std::string& getProblem() const { return _problem; }

 private:
  // What became of a number.
  enum class Outcome {
    Refused,      // nothing is to be stored
    OutOfLimits,  // to be stored, but outside the member's limits
    Taken,
  };

  template <typename Target, typename M>
  Outcome setRawValue(const M& member, const json::Value& node, Target& target);
  template <typename Target, typename M>
  Outcome convertUnscaled(const M& member, const json::Value& node, Target& target);
  template <typename Target, typename M>
  Outcome convertScaled(const M& member, const json::Value& node, Target& target);
  template <typename Target, typename M>
  Outcome keepWithinLimits(const M& member, Target& target);
  template <typename Target, typename M>
  bool storeNumber(const Member::Context& context, const M& member, const json::Value& node,
                   base::Buffer& raw);

  void refuse(const char* what, const json::Value& node);

  TypeManager* _typeManager;
  base::Endianess _endianess;
  std::string _problem;
};

}  // namespace zavri::korvat
