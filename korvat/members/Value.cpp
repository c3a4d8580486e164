#include "korvat/members/Value.h"

#include <algorithm>

#include "korvat/base/StringUtils.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

namespace {

// Follows a path through the layout, moving over what stands before each member on it as a walk
// would.
class Locator {
 public:
  Locator(TypeManager* typeManager, const base::Buffer& buffer, const Member* root)
      : _context(typeManager, buffer, true), _member(root) {
    _context.useDynamicArrays = false;
  }

  // Follows one component, "name", "name[index]" or "[index]". False when it leads nowhere.
  bool follow(const std::string& component) {
    const std::size_t bracket = std::min(component.find('['), component.size());
    if (bracket > 0 && !enterChild(component.substr(0, bracket))) return false;
    return bracket == component.size() || enterElement(component.substr(bracket));
  }

  // To be called when the whole path was followed.
  bool finish() {
    if (isOpenReference() && !resolveReference()) return false;
    if (_member->getKind() != Member::Kind::Bitfield) _context.closeByte();
    return _context.bytePos <= static_cast<std::uint32_t>(INT32_MAX);
  }

  const Member* getMember() const { return _member; }
  std::int32_t getByteOffset() const { return static_cast<std::int32_t>(_context.bytePos); }
  std::int32_t getElementIndex() const { return _elementIndex; }

 private:
  // True when the member stands for one value, not for a whole array.
  bool isSingle() const { return !_member->isArray() || _elementIndex >= 0; }
  bool isOpenReference() const { return _member->getKind() == Member::Kind::Ref && isSingle(); }

  bool resolveReference() {
    _context.closeByte();
    const VarType* type = static_cast<const MemRef*>(_member)->resolve(_context.owner);
    if (type == nullptr || type->getMember() == nullptr) return false;
    _member = type->getMember();
    _elementIndex = -1;
    return true;
  }

  bool enterChild(const std::string& name) {
    if (isOpenReference() && !resolveReference()) return false;
    if (_member->getKind() != Member::Kind::Aggregate || !isSingle()) return false;

    const auto& aggregate = static_cast<const MemAggregate&>(*_member);
    const Member* child = aggregate.findChild(name);
    if (child == nullptr) return false;
    _context.closeByte();
    if (!aggregate.isUnion() && !passSiblings(aggregate, child)) return false;
    _member = child;
    _elementIndex = -1;
    return true;
  }

  bool passSiblings(const MemAggregate& structure, const Member* child) {
    for (const auto& sibling : structure.getChildren()) {
      if (sibling.get() == child) return true;
      if (!sibling || !sibling->traverse(_context, pass, pass)) return false;
    }
    return false;
  }

  // `text` is "[index]".
  bool enterElement(const std::string& text) {
    if (isOpenReference() && !resolveReference()) return false;
    if (text.size() < 3 || text.back() != ']' || isSingle()) return false;

    bool isWhole = false;
    const std::int32_t index = util::StringUtils::toInt32(text.substr(1, text.size() - 2), isWhole);
    if (!isWhole || index < 0) return false;
    if (static_cast<std::uint32_t>(index) >= _member->getArraySize()) return false;

    _elementIndex = index;
    const Member::Kind kind = _member->getKind();
    if (kind != Member::Kind::Aggregate && kind != Member::Kind::Ref) return true;
    for (std::int32_t i = 0; i < index; ++i) {
      _context.arrayIndex = i;
      if (!_member->traverseMember(_context, pass, pass)) return false;
    }
    return true;
  }

  static bool pass(Member::Context&, const Member&) { return true; }

  Member::Context _context;
  const Member* _member;
  std::int32_t _elementIndex = -1;
};

}  // namespace

Value::Value(TypeManager* typeManager, const VarType* type, base::Endianess endianess,
             base::Buffer& buffer)
    : _typeManager(typeManager), _type(type), _endianess(endianess), _buffer(&buffer) {}

bool Value::isValid() const {
  return _type != nullptr && _type->getMember() != nullptr;
}

MemberValue Value::operator[](const std::string& path) const {
  if (!isValid() || path.size() > kMaxPathSize) return MemberValue();

  Locator locator(_typeManager, *_buffer, _type->getMember());
  std::vector<std::string> names;
  std::size_t begin = 0;
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    names.push_back(path.substr(begin, end - begin));
    if (names.back().empty() || !locator.follow(names.back())) return MemberValue();
    begin = end + 1;
  }
  if (!locator.finish()) return MemberValue();
  return MemberValue(_typeManager, _type, this, locator.getMember(), std::move(names),
                     locator.getByteOffset(), locator.getElementIndex());
}

}  // namespace zavri::korvat
