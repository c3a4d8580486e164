#include "korvat/members/MemAggregate.h"

#include <algorithm>

#include "korvat/base/Logger.h"
#include "korvat/members/Limits.h"

namespace zavri::korvat {

using base::Logger;

MemAggregate::MemAggregate(const MemAggregate& source)
    : Member(source), _isUnion(source._isUnion), _discriminator(source._discriminator) {
  for (const auto& child : source._children) addChild(child ? child->clone() : nullptr);
  buildLookup();
}

std::unique_ptr<Member> MemAggregate::clone() const {
  return std::unique_ptr<Member>(new MemAggregate(*this));
}

void MemAggregate::addChild(std::unique_ptr<Member> child) {
  _children.push_back(std::move(child));
}

void MemAggregate::buildLookup() {
  // Only what has come since the last time: a definition may ask again and again.
  for (; _lookedUpCount < _children.size(); ++_lookedUpCount) {
    const Member* child = _children[_lookedUpCount].get();
    if (child == nullptr) continue;
    if (child->getProgName().empty()) {
      Logger::debug("[MemAggregate::buildLookup] empty prog-name\n");
      continue;
    }
    _lookup[child->getProgName()] = _lookedUpCount;
  }
}

const Member* MemAggregate::findChild(const std::string& progName) const {
  const auto found = _lookup.find(progName);
  return found == _lookup.end() ? nullptr : _children[found->second].get();
}

Member* MemAggregate::findChild(const std::string& progName) {
  const auto found = _lookup.find(progName);
  return found == _lookup.end() ? nullptr : _children[found->second].get();
}

bool MemAggregate::replaceChild(const std::string& progName, std::unique_ptr<Member> child) {
  const auto found = _lookup.find(progName);
  if (found == _lookup.end()) return false;
  child->setProgName(progName);
  _children[found->second] = std::move(child);
  return true;
}

const Member* MemAggregate::getNextSibling(const std::string& progName) const {
  const auto found = _lookup.find(progName);
  if (found == _lookup.end()) {
    Logger::warning(
        "MemAggregate::getNextSibling: could not find progName '%s' in aggregate struct\n",
        progName.c_str());
    return nullptr;
  }
  const std::size_t next = found->second + 1;
  return next < _children.size() ? _children[next].get() : nullptr;
}

bool MemAggregate::traverseMember(Context& context, const MemberCallback& onMember,
                                  const StructEndCallback& onStructEnd) const {
  context.closeByte();
  context.currentType = nullptr;
  if (!onMember(context, *this)) return false;
  if (context.skipChildren) {
    context.skipChildren = false;
    return true;
  }
  if (!context.enter()) return false;
  if (_isUnion) context.unionStack.push_back({context.bytePos, 0});
  context.depth += 1;
  context.parentStack.push_back(this);

  if (!traverseChildren(context, onMember, onStructEnd)) return false;

  context.parentStack.pop_back();
  context.forgetArraySize();
  context.depth -= 1;
  onStructEnd(context, *this);
  if (_isUnion) {
    const UnionFrame frame = context.unionStack.back();
    context.unionStack.pop_back();
    context.bytePos = frame.start;
    context.advance(frame.extent);
    context.bitOffset = 0;
  }
  context.leave();
  return true;
}

bool MemAggregate::traverseChildren(Context& context, const MemberCallback& onMember,
                                    const StructEndCallback& onStructEnd) const {
  for (std::size_t i = 0; i < _children.size(); ++i) {
    if (!_children[i]) {
      Logger::warning("[korvat] member %ld missing in aggregate p-name %s\n", static_cast<long>(i),
                      getProgName().c_str());
      return true;
    }
    if (!_children[i]->traverse(context, onMember, onStructEnd)) return false;
    if (!_isUnion) continue;

    context.closeByte();
    UnionFrame& frame = context.unionStack.back();
    frame.extent = std::max(frame.extent, context.bytePos - frame.start);
    context.bytePos = frame.start;
  }
  return true;
}

const Member* MemAggregate::findMemberAtPath(TypeManager* typeManager,
                                             const std::string& path) const {
  if (path.empty()) return this;
  if (path.size() > kMaxPathSize) return nullptr;

  const std::size_t dot = std::min(path.find('.'), path.size());
  const std::size_t bracket = std::min(path.find('['), dot);
  const Member* child = findChild(path.substr(0, bracket));
  if (child == nullptr) return nullptr;
  const std::string rest = dot == path.size() ? std::string() : path.substr(dot + 1);
  return child->findMemberAtPath(typeManager, rest);
}

std::uint64_t MemAggregate::countElementBits(BitCount& count) const {
  std::uint64_t bits = 0;
  for (const auto& child : _children) {
    if (!child) continue;
    const std::uint64_t childBits = child->countBits(count);
    bits = _isUnion ? std::max(bits, childBits) : bits + childBits;
  }
  return bits;
}

}  // namespace zavri::korvat
