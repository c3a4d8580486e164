#pragma once

#include <cstdint>
#include <deque>
#include <set>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/CharEncoder.h"
#include "korvat/base/Endianess.h"
#include "korvat/base/Export.h"
#include "korvat/base/Value.h"
#include "korvat/members/Member.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {

class EnumType;
class LeafWriter;
class MemAggregate;
class MemBitfield;
class MemEnum;
class MemFloat;
class MemScalar;
class TypeManager;
class VarType;
struct CountedArray;

// Converts raw values of one type to JSON and back. Manager and type must outlive it. Made for one
// thread; any number of converters of one manager may work side by side, each on values of its own,
// while nobody loads types or changes options of that manager.
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

  // The same for JSON that is read.
  struct ConstStackItem {
    const std::string* name;
    std::int32_t index;
    const json::Value* value;  // null when the input has no such node
  };
  using ConstStack = std::deque<ConstStackItem>;

  // What was wrong with the JSON value at one place.
  struct Problem {
    std::string path;  // "values[3].state"; empty for the value itself
    std::string text;
  };

  JsonConverter(TypeManager* typeManager, const VarType& type, base::Endianess endianess,
                bool allowSeveralUnionMembers);

  // Converts the bytes of `buffer`; what lies beyond its end reads as 0. False when the type has no
  // layout, a reference cannot be resolved, a union in hexadecimal text reaches beyond the buffer,
  // or a limit is met; `value` then holds what was converted so far.
  [[nodiscard]] bool rawToJson(const base::Buffer& buffer, json::Value& value);

  // Writes a JSON value of the shape above into `raw`, which grows to the whole value; bytes that
  // no member covers stay. False when a member cannot be written, by the rules of LeafWriter, an
  // object has a property that names no member (unless the manager allows undefined fields), or the
  // walk failed: `raw` then holds what was written so far.
  //   missing scalar     refused, unless the manager allows missing fields
  //   missing structure  a problem; its members are left alone
  //   union              the first alternative given, the others are left out, unless the flag
  //                      `allowSeveralUnionMembers` is set; hexadecimal text in that union mode
  //   dynamic array      its count is taken from the array given, not from the count's own node
  [[nodiscard]] bool jsonToRaw(const json::Value& value, base::Buffer& raw);
  // The same for a part of a value: members that are missing, or null, keep their bits.
  [[nodiscard]] bool patchRaw(const json::Value& value, base::Buffer& raw);
  // What was wrong in the last conversion to raw, at most kMaxProblems; also what was only reported
  // by a warning.
  const std::vector<Problem>& getProblems() const { return _problems; }
  static constexpr std::size_t kMaxProblems = 20;

  // Callbacks of the walk: convert one member; close a structure or union. The stack must hold the
  // root. False ends the walk.
  bool toJson(Member::Context& context, const Member& member, const base::Buffer& buffer,
              Stack& stack);
  bool toJsonStructEnd(Member::Context& context, const Member& member, const base::Buffer& buffer,
                       Stack& stack);
  bool toRaw(Member::Context& context, const Member& member, base::Buffer& raw, ConstStack& stack);
  bool toRawStructEnd(Member::Context& context, const Member& member, base::Buffer& raw,
                      ConstStack& stack);

 private:
  // Whether an array of integers is text, and of which kind.
  struct TextRule {
    bool isText;
    base::CharEncoding encoding;
    bool usesSelection;  // of a character encoding before it
  };

  json::Value& findTarget(Member::Context& context, const std::string& key, json::Value& parent,
                          Stack& stack) const;
  bool closeAggregate(Member::Context& context, const Member& member, const base::Buffer& buffer,
                      Stack& stack) const;
  bool writeMember(Member::Context& context, const std::string& key, const Member& member,
                   const base::Buffer& buffer, json::Value& target);
  void writeArray(Member::Context& context, const Member& member, const base::Buffer& buffer,
                  json::Value& target) const;
  void writeScalar(Member::Context& context, const MemScalar& member, const base::Buffer& buffer,
                   json::Value& target) const;
  void writeFloat(Member::Context& context, const MemFloat& member, const base::Buffer& buffer,
                  json::Value& target) const;
  void writeBitfield(const Member::Context& context, const MemBitfield& member,
                     const base::Buffer& buffer, json::Value& target) const;
  void writeEnum(Member::Context& context, const MemEnum& member, const base::Buffer& buffer,
                 json::Value& target);
  const EnumType* findEnum(const MemEnum& member);
  bool writeUnionHex(Member::Context& context, const base::Buffer& buffer, Stack& stack) const;
  static TextRule findTextRule(const Member::Context& context, const MemScalar& member);
  static TextRule takeTextRule(Member::Context& context, const MemScalar& member);

  // Where the node of a member was found.
  enum class Visit {
    Pass,     // nothing is to be done: the walk goes on
    Convert,  // the node is to be written
  };

  bool walkToRaw(const json::Value& value, base::Buffer& raw);
  Visit findNode(Member::Context& context, const Member& member, const std::string& key,
                 bool isReferenced, ConstStack& stack);
  bool isSkippedInUnion(Member::Context& context, const Member& member, bool isAlternative,
                        const json::Value* node) const;
  bool checkObject(const Member::Context& context, const MemAggregate& aggregate,
                   const json::Value& node, const ConstStack& stack);
  bool getArray(Member::Context& context, const Member& member, const json::Value& node,
                base::Buffer& raw, const ConstStack& stack);
  bool convertMember(Member::Context& context, const Member& member, const std::string& key,
                     const json::Value& node, base::Buffer& raw, const ConstStack& stack);
  bool writeLeaf(Member::Context& context, const Member& member, const std::string& key,
                 const json::Value& node, base::Buffer& raw, const ConstStack& stack);
  bool writeCountedScalar(Member::Context& context, const MemScalar& member, const std::string& key,
                          const json::Value& node, LeafWriter& writer, base::Buffer& raw,
                          const ConstStack& stack);
  TextRule foreseeTextRule(const Member::Context& context, const MemScalar& member,
                           const CountedArray& counted, const json::Value& object,
                           const base::Buffer& raw) const;
  static void selectCharSet(Member::Context& context, const Member& member);
  void noteWritten(Member::Context& context, const Member& member, const base::Buffer& raw) const;
  bool closeAggregateToRaw(Member::Context& context, const Member& member, base::Buffer& raw,
                           ConstStack& stack);
  bool readUnionHex(Member::Context& context, base::Buffer& raw, ConstStack& stack);
  void addProblem(const ConstStack& stack, const std::string& text);
  void addProblem(const ConstStack& stack, const json::Value& node, const std::string& text);

  TypeManager* _typeManager;
  const VarType* _type;
  base::Endianess _endianess;
  bool _allowSeveralUnionMembers;
  bool _keepMissing = false;  // a patch: what is missing keeps its bits
  std::vector<Problem> _problems;
  std::set<TypeId> _missingEnums;  // enumerations that were looked for and not found
};

}  // namespace zavri::korvat
