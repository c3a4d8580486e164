#include "korvat/types/VarType.h"

#include <algorithm>

#include "korvat/base/Logger.h"
#include "korvat/convert/PacketConverter.h"
#include "korvat/format/Format.h"
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

std::string joinPath(const std::string& path, const std::string& name) {
  return path.empty() ? name : path + "." + name;
}

// Goes through the members at `path`; `nearest` is the path of the enumeration that a union here
// would take.
void resolveIn(const BaseType& type, Member& member, const std::string& path,
               const std::string& nearest) {
  if (member.getKind() != Member::Kind::Aggregate) return;

  auto& aggregate = static_cast<MemAggregate&>(member);
  if (aggregate.isUnion()) {
    aggregate.setDiscriminator(nearest);
    if (nearest.empty() && base::isLogged(base::Logger::Debug)) {
      base::Logger::debug("[korvat] %s: no discriminator for union at %s\n",
                          type.getTypeId().toString().c_str(), path.c_str());
    }
  }
  std::string innermost = nearest;
  for (const auto& child : aggregate.getChildren()) {
    if (!child) continue;
    const std::string& name = child->getProgName();
    resolveIn(type, *child, joinPath(path, name), innermost);
    if (canDiscriminate(*child) && !aggregate.isUnion()) innermost = joinPath(path, name);
  }
}

}  // namespace

VarType::VarType(ResourceType type) : BaseType(type) {}

VarType::VarType(const VarType& source, bool withoutFormats)
    : BaseType(source),
      _member(source._member ? source._member->clone() : nullptr),
      _size(source._size) {
  if (withoutFormats) return;
  _formats = source._formats;
  if (source._format) _format = std::make_unique<Format>(*source._format);
}

VarType::~VarType() = default;

void VarType::setMember(std::unique_ptr<Member> member) {
  _member = std::move(member);
}

void VarType::setFormat(std::unique_ptr<Format> format) {
  _format = std::move(format);
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

bool VarType::convertPacket(TypeManager* typeManager, base::Endianess order,
                            base::Buffer& buffer) const {
  const base::Endianess host = base::Packet::getHostByteOrder();
  return PacketConverter(typeManager, *this, order, host).convert(buffer);
}

void VarType::resolveDiscriminators() {
  if (_member) resolveIn(*this, *_member, "", "");
}

std::string VarType::findDiscriminator(const std::string& unionPath) const {
  const Member* member = _member.get();
  std::size_t begin = 0;  // of the component after `member` in the path
  while (member != nullptr && member->getKind() == Member::Kind::Aggregate) {
    const auto& aggregate = static_cast<const MemAggregate&>(*member);
    if (begin >= unionPath.size()) return aggregate.getDiscriminator();
    const std::size_t end = std::min(unionPath.find('.', begin), unionPath.size());
    member = aggregate.findChild(unionPath.substr(begin, end - begin));
    begin = end + 1;
  }
  return "";
}

}  // namespace zavri::korvat
