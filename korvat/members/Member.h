#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <boost/function.hpp>

#include "korvat/base/Buffer.h"
#include "korvat/base/Export.h"

namespace zavri::korvat {

class MemAggregate;
class TypeManager;
class VarType;
struct BitCount;

// A node of the tree that describes the bit layout of a type's raw values: a number, a bit field,
// an enumeration, a reference to another type, a structure or a union; each of them may be an
// array.
//
// The tree is built by VarBuilder and not changed afterwards; from then on any number of threads
// may walk it, each with its own Context.
class KORVAT_API Member {
 public:
  enum class Kind : std::int32_t {
    Invalid = 0,
    Ref = 1,
    Float = 2,
    Scalar = 3,
    Bitfield = 4,
    Enum = 5,
    Aggregate = 6,
  };

  // A union being walked. Every alternative starts at its first byte.
  struct UnionFrame {
    std::uint32_t start = 0;   // bytes from the start of the buffer
    std::uint32_t extent = 0;  // bytes of the longest alternative so far
    // For the converter that writes:
    std::uint32_t alternativeCount = 0;  // alternatives that the input gives
    bool skipAlternative = false;        // the one being walked is not to be written
  };

  struct Context;

  // Called once for every member before its content is visited; for an array once as a whole
  // (`arrayIndex` -1) and once per element. False ends the walk.
  using MemberCallback = boost::function<bool(Context&, const Member&)>;
  // Called once after the children of every aggregate. Its result is not used.
  using StructEndCallback = boost::function<bool(Context&, const Member&)>;
  // Appends a text that tells where a walk stands.
  using PlaceCallback = boost::function<void(std::string&)>;

  static constexpr std::uint32_t kNoArrayMinSize = 0xFFFFFFFF;

  virtual ~Member() = default;

  // A deep copy of the same class. The unit is not copied.
  virtual std::unique_ptr<Member> clone() const = 0;

  // Walks this member with its array dimension. False when a callback ended the walk, a reference
  // could not be resolved or a limit was met; the context is then of no further use. An empty
  // callback raises boost::bad_function_call.
  [[nodiscard]] bool traverse(Context& context, const MemberCallback& onMember,
                              const StructEndCallback& onStructEnd) const;
  // The same with a fresh context at the start of `buffer`.
  [[nodiscard]] bool traverse(TypeManager* typeManager, const base::Buffer& buffer,
                              const MemberCallback& onMember,
                              const StructEndCallback& onStructEnd) const;

  // Walks one element, leaving the array dimension to traverse().
  virtual bool traverseMember(Context& context, const MemberCallback& onMember,
                              const StructEndCallback& onStructEnd) const = 0;

  // The member at a path below this one: program names joined by ".", an index in brackets is
  // ignored ("values[3].state"). An empty path is the member itself; null when there is none.
  virtual const Member* findMemberAtPath(TypeManager* typeManager, const std::string& path) const;

  // Bits of the member with all its elements, and of one element. A dynamic array counts with its
  // full size; an unresolvable or cyclic reference, and what is nested too deep, with 0 and a
  // warning; a count beyond 32 bits is cut to the largest.
  std::uint32_t getBitCount(TypeManager* typeManager) const;
  std::uint32_t getElementBitCount(TypeManager* typeManager) const;
  // The same inside a count that is under way.
  std::uint64_t countBits(BitCount& count) const;
  virtual std::uint64_t countElementBits(BitCount& count) const = 0;

  // Elements that a walk visits: 1 without an array, and for a dynamic array the size that the
  // context knows when its manager uses dynamic arrays.
  std::uint32_t getEffectiveArraySize(const Context& context) const;

  Kind getKind() const { return _kind; }
  // "Invalid", "Ref", "Float", "Scalar", "Bitfield", "Enum", "Aggregate" or "(unknown)".
  static const char* getKindName(Kind kind);

  // Name that a structure finds the member by.
  const std::string& getProgName() const { return _progName; }
  void setProgName(const std::string& progName);
  // True when the program name is "char_set": its value selects the characters of the next array.
  bool isCharSet() const { return _isCharSet; }

  const std::string& getUnit() const { return _unit; }
  void setUnit(const std::string& unit) { _unit = unit; }

  // Elements; 0 for a member that is no array.
  std::uint32_t getArraySize() const { return _arraySize; }
  void setArraySize(std::uint32_t elementCount) { _arraySize = elementCount; }
  std::uint32_t getArrayMinSize() const { return _arrayMinSize; }
  void setArrayMinSize(std::uint32_t elementCount) { _arrayMinSize = elementCount; }
  bool isArray() const { return _arraySize != 0; }
  bool isDynamicArray() const { return _arraySize != 0 && _arrayMinSize < _arraySize; }

 protected:
  explicit Member(Kind kind) : _kind(kind) {}
  Member(const Member& source);
  Member& operator=(const Member&) = delete;

  // Announces a member that starts on a whole byte and is `byteCount` long, and moves behind it
  // unless the callback skipped it.
  static bool visitBytes(Context& context, const Member& member, const MemberCallback& onMember,
                         unsigned byteCount);

 private:
  const Kind _kind;
  std::uint32_t _arrayMinSize = kNoArrayMinSize;  // elements
  std::uint32_t _arraySize = 0;                   // elements
  std::string _unit;
  std::string _progName;
  bool _isCharSet = false;
};

// State of one walk over one buffer. Made by the caller; members change it as they go, callbacks
// read it and may change it.
struct KORVAT_API Member::Context {
  // The buffer and the manager must outlive the context. `allowSeveralUnionMembers` is for the
  // converter that writes: more than one alternative of a union may be given.
  Context(TypeManager* owner, const base::Buffer& buffer, bool allowSeveralUnionMembers);

  TypeManager* owner;
  const base::Buffer* buffer;
  // Type that the member resolves to, when it is a reference.
  const VarType* currentType = nullptr;

  std::int32_t depth = 0;              // aggregates and arrays around the member; 0 at the root
  std::int32_t arrayIndex = -1;        // element being visited, -1 outside of arrays
  std::uint32_t bytePos = 0;           // bytes from the start of the buffer
  std::uint8_t bitOffset = 0;          // bits inside that byte; not 0 when it is partly used
  std::int32_t arraySize = -1;         // elements of the dynamic array that comes next, -1 unknown
  std::uint32_t elementCount = 1;      // elements of the array being visited
  bool stopArray = false;              // set by a callback: leave the array after this element
  bool skipChildren = false;           // set by a callback: do not visit the member's content
  std::vector<UnionFrame> unionStack;  // innermost last
  std::vector<const MemAggregate*> parentStack;  // innermost last

  // State of the converters.
  const std::string* pendingName = nullptr;  // key handed from a reference to what it refers to
  std::int32_t charEncoding = -1;            // bytes per character of the next text, -1 none
  bool isElementRoot = false;  // next comes the root of the type that an array element refers to
  bool isCharSetSelected = false;  // a "char_set" went before: the next array of numbers is text
  bool stringDone = false;         // the array being visited was converted whole, as text
  bool hasFailed = false;          // set at a struct end, whose own result is not used
  bool allowSeveralUnionMembers;
  PlaceCallback describePlace;  // may be empty

  // Bounds of the walk, see Limits.h.
  bool useDynamicArrays;
  std::uint32_t visits = 0;
  std::uint32_t nesting = 0;

  // True when the member is a direct alternative of a union.
  bool isInUnion() const;
  // The member after `progName` in the structure around; null at its end and outside of structures.
  const Member* getNextSibling(const std::string& progName) const;

  // Counts one visit. False, with a warning, when the walk has to be given up.
  [[nodiscard]] bool countVisit();
  // Pairs around the content of an aggregate or a reference. enter() is false, with a warning, when
  // they are too deep inside each other.
  [[nodiscard]] bool enter();
  void leave() { --nesting; }
  // A number was no element count, or its array is over.
  void forgetArraySize() { arraySize = -1; }
  // Moves to the next byte when the current one is partly used.
  void closeByte();
  // Moves by whole bytes; stays at the largest position when it would pass it.
  void advance(std::uint64_t byteCount);
  // Where the walk stands, for messages.
  std::string getPlace() const;
};

// One count of bits under way. A type is counted once, however often it is referred to: types that
// refer to two of the next kind each would otherwise take a time that doubles with each level.
struct BitCount {
  TypeManager* typeManager = nullptr;
  std::vector<const VarType*> typesUnderWay;      // outermost first; one of them again is a cycle
  std::map<const VarType*, std::uint64_t> known;  // bits of the types that were counted
  std::uint32_t nesting = 0;                      // members around the one being counted
};

}  // namespace zavri::korvat
