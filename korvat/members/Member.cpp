#include "korvat/members/Member.h"

#include <algorithm>
#include <limits>

#include "korvat/base/Logger.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/types/TypeManager.h"

namespace zavri::korvat {

using base::Logger;

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

std::uint32_t saturate(std::uint64_t number) {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(number, kLargest));
}

}  // namespace

Member::Context::Context(TypeManager* manager, const base::Buffer& raw, bool severalUnionMembers)
    : owner(manager),
      buffer(&raw),
      allowSeveralUnionMembers(severalUnionMembers),
      useDynamicArrays(manager != nullptr && manager->getUseDynamicArrays()) {}

bool Member::Context::isInUnion() const {
  return !unionStack.empty() && !parentStack.empty() && parentStack.back()->isUnion();
}

const Member* Member::Context::getNextSibling(const std::string& progName) const {
  if (parentStack.empty() || parentStack.back()->isUnion()) return nullptr;
  return parentStack.back()->getNextSibling(progName);
}

bool Member::Context::countVisit() {
  if (visits < kMaxVisits) {
    ++visits;
    return true;
  }
  Logger::warning("[korvat] walk given up after %ld visits: %s\n", static_cast<long>(visits),
                  getPlace().c_str());
  return false;
}

bool Member::Context::enter() {
  if (nesting < kMaxNesting) {
    ++nesting;
    return true;
  }
  Logger::warning("[korvat] walk given up, members nested deeper than %ld: %s\n",
                  static_cast<long>(kMaxNesting), getPlace().c_str());
  return false;
}

void Member::Context::closeByte() {
  if (bitOffset == 0) return;
  advance(1);
  bitOffset = 0;
}

void Member::Context::advance(std::uint64_t byteCount) {
  bytePos = saturate(bytePos + std::min<std::uint64_t>(byteCount, kLargest));
}

std::string Member::Context::getPlace() const {
  std::string place;
  if (describePlace) describePlace(place);
  return place;
}

Member::Member(const Member& source)
    : _kind(source._kind),
      _arrayMinSize(source._arrayMinSize),
      _arraySize(source._arraySize),
      _progName(source._progName),
      _isCharSet(source._isCharSet) {}

void Member::setProgName(const std::string& progName) {
  static const std::string charSet = "char_set";
  _progName = progName;
  _isCharSet = progName == charSet;
}

const char* Member::getKindName(Kind kind) {
  switch (kind) {
    case Kind::Invalid:
      return "Invalid";
    case Kind::Ref:
      return "Ref";
    case Kind::Float:
      return "Float";
    case Kind::Scalar:
      return "Scalar";
    case Kind::Bitfield:
      return "Bitfield";
    case Kind::Enum:
      return "Enum";
    case Kind::Aggregate:
      return "Aggregate";
  }
  return "(unknown)";
}

bool Member::traverse(TypeManager* typeManager, const base::Buffer& buffer,
                      const MemberCallback& onMember, const StructEndCallback& onStructEnd) const {
  Context context(typeManager, buffer, true);
  return traverse(context, onMember, onStructEnd);
}

bool Member::traverse(Context& context, const MemberCallback& onMember,
                      const StructEndCallback& onStructEnd) const {
  const std::uint32_t elementCount = getEffectiveArraySize(context);
  const std::uint32_t start = context.bytePos;
  context.arrayIndex = -1;
  if (isArray()) {
    context.elementCount = elementCount;
    if (!onMember(context, *this)) return false;
    context.depth += 1;
  }

  std::uint32_t visited = 0;
  while (visited < elementCount && !(context.stopArray && visited > 0)) {
    if (!context.countVisit()) return false;
    if (isArray()) {
      context.arrayIndex = static_cast<std::int32_t>(visited);
      context.elementCount = elementCount;
    }
    if (!traverseMember(context, onMember, onStructEnd)) return false;
    ++visited;
  }

  if (isArray()) {
    context.forgetArraySize();
    context.depth -= 1;
  }
  if (context.stopArray && visited > 0) {
    // The elements that were not visited are taken to be as long as the visited ones on average, so
    // that a caller can leave at the first empty element and still land behind the array.
    const std::uint64_t average = (context.bytePos - start) / visited;
    context.advance(average * (elementCount - visited));
  }
  context.stopArray = false;
  context.arrayIndex = -1;
  return true;
}

bool Member::visitBytes(Context& context, const Member& member, const MemberCallback& onMember,
                        unsigned byteCount) {
  context.closeByte();
  context.currentType = nullptr;
  if (!onMember(context, member)) return false;
  if (context.skipChildren) {
    context.skipChildren = false;
    return true;
  }
  context.advance(byteCount);
  return true;
}

const Member* Member::findMemberAtPath(TypeManager*, const std::string& path) const {
  if (path.empty()) return this;
  Logger::warning("[findMemberAtPath] failed: progName='%s' path='%s'\n", _progName.c_str(),
                  path.c_str());
  return nullptr;
}

std::uint32_t Member::getBitCount(TypeManager* typeManager) const {
  BitCount count;
  count.typeManager = typeManager;
  return saturate(countBits(count));
}

std::uint32_t Member::getElementBitCount(TypeManager* typeManager) const {
  BitCount count;
  count.typeManager = typeManager;
  return saturate(countElementBits(count));
}

std::uint64_t Member::countBits(BitCount& count) const {
  if (isDynamicArray()) {
    Logger::info(
        "[Member::getBitCount] [%s] cannot correctly determine static bit count of dynamic array, "
        "using max size\n",
        getKindName(_kind));
  }
  if (count.nesting > kMaxNesting) {
    Logger::warning("[Member::getBitCount] given up, members nested deeper than %ld\n",
                    static_cast<long>(kMaxNesting));
    return 0;
  }
  ++count.nesting;
  const std::uint64_t bits = saturate(countElementBits(count));
  --count.nesting;
  return saturate(isArray() ? bits * _arraySize : bits);
}

std::uint32_t Member::getEffectiveArraySize(const Context& context) const {
  if (!isArray()) return 1;
  if (!isDynamicArray() || !context.useDynamicArrays) return _arraySize;

  if (context.arraySize < 0) {
    Logger::warning("Member::getEffectiveArraySize failed, no arraySize in context\n");
    return _arraySize;
  }
  const auto elementCount = static_cast<std::uint32_t>(context.arraySize);
  if (elementCount < _arrayMinSize) {
    Logger::warning(
        "Member::getEffectiveArraySize failed because %ld is below array-min-size of %ld\n",
        static_cast<long>(elementCount), static_cast<long>(_arrayMinSize));
  }
  return elementCount;
}

}  // namespace zavri::korvat
