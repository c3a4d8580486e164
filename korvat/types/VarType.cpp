#include "korvat/types/VarType.h"

#include <algorithm>

#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"

namespace zavri::korvat {

namespace {

// Bytes that a leaf takes up in a raw value; 0 for a member that has content of its own.
unsigned leafSize(const Member& member) {
  switch (member.getKind()) {
    case Member::Kind::Scalar:
      return static_cast<const MemScalar&>(member).getByteCount();
    case Member::Kind::Float:
      return static_cast<const MemFloat&>(member).getByteCount();
    case Member::Kind::Bitfield:
    case Member::Kind::Enum:
      return 1;
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  return 0;
}

// True for a single value of an enumeration that a path can name.
bool canDiscriminate(const Member& member) {
  return member.getKind() == Member::Kind::Enum && !member.isArray() &&
         !member.getProgName().empty();
}

// Nearest enumeration before `child` in the structure; null when there is none.
const Member* findEnumBefore(const MemAggregate& structure, const Member* child) {
  const Member* nearest = nullptr;
  for (const auto& sibling : structure.getChildren()) {
    if (sibling.get() == child) break;
    if (sibling && canDiscriminate(*sibling)) nearest = sibling.get();
  }
  return nearest;
}

}  // namespace

VarType::VarType(ResourceType type) : BaseType(type) {}

VarType::VarType(const VarType& source, bool withoutFormats)
    : BaseType(source),
      _member(source._member ? source._member->clone() : nullptr),
      _size(source._size) {
  if (!withoutFormats) _formats = source._formats;
}

VarType::~VarType() = default;

void VarType::setMember(std::unique_ptr<Member> member) {
  _member = std::move(member);
}

bool VarType::getMaxSize(TypeManager* typeManager, unsigned& byteCount) const {
  if (!_member) return false;

  std::uint64_t end = 0;
  const auto onMember = [&end](Member::Context& context, const Member& member) {
    if (member.isArray() && context.arrayIndex < 0) return true;
    end = std::max(end, std::uint64_t{context.bytePos} + leafSize(member));
    return true;
  };
  const auto onStructEnd = [](Member::Context&, const Member&) { return true; };
  const base::Buffer nothing;
  Member::Context context(typeManager, nothing, true);
  context.useDynamicArrays = false;
  if (!_member->traverse(context, onMember, onStructEnd)) return false;
  byteCount = static_cast<unsigned>(end);
  return true;
}

std::string VarType::findDiscriminator(const std::string& unionPath) const {
  std::string discriminator;
  const Member* member = _member.get();
  std::size_t begin = 0;  // of the component after `member` in the path
  while (begin < unionPath.size() && member != nullptr &&
         member->getKind() == Member::Kind::Aggregate) {
    const auto& aggregate = static_cast<const MemAggregate&>(*member);
    const std::size_t end = std::min(unionPath.find('.', begin), unionPath.size());
    member = aggregate.findChild(unionPath.substr(begin, end - begin));
    if (member != nullptr && !aggregate.isUnion()) {
      const Member* nearest = findEnumBefore(aggregate, member);
      if (nearest != nullptr) discriminator = unionPath.substr(0, begin) + nearest->getProgName();
    }
    begin = end + 1;
  }
  return member == nullptr ? std::string() : discriminator;
}

}  // namespace zavri::korvat
