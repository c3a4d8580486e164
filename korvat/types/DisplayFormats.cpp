#include "korvat/types/DisplayFormats.h"

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/Logger.h"
#include "korvat/format/Field.h"
#include "korvat/format/FormatParser.h"
#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemNumeric.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/ResourceGroup.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Logger;
using format::Field;

namespace {

std::uint32_t countMembers(const Member* member) {
  if (member == nullptr) return 0;
  std::uint32_t count = 1;
  if (member->getKind() != Member::Kind::Aggregate) return count;
  for (const auto& child : static_cast<const MemAggregate*>(member)->getChildren()) {
    count += countMembers(child.get());
  }
  return count;
}

// Levels of members inside each other, the member itself included.
std::uint32_t heightOf(const Member& member) {
  std::uint32_t height = 0;
  if (member.getKind() == Member::Kind::Aggregate) {
    for (const auto& child : static_cast<const MemAggregate&>(member).getChildren()) {
      if (child) height = std::max(height, heightOf(*child));
    }
  }
  return height + 1;
}

// The name at byte `pos` of a member path, without its index; `pos` moves behind the ".".
std::string takeName(const std::string& path, std::size_t& pos) {
  const std::size_t dot = std::min(path.find('.', pos), path.size());
  const std::string name = path.substr(pos, std::min(path.find('[', pos), dot) - pos);
  pos = dot + 1;
  return name;
}

bool isUnitChanging(const Field* field) {
  return field->getNumericSpec().has_value();
}

class DisplayFormats {
 public:
  DisplayFormats(ResourceGroup& group, TypeManager* typeManager)
      : _group(group), _typeManager(typeManager) {}

  void build(VarType& type) {
    for (const auto& [name, text] : type.getFormats()) {
      format::FormatParser parser;
      if (!parser.parse(text)) {
        Logger::warning("[korvat] could not build format structure for '%s': %s\n", name.c_str(),
                        parser.getError().c_str());
        continue;
      }
      std::unique_ptr<Format> format = parser.takeFormat();
      if (!format) {
        Logger::error("[korvat] no format structure for %s\n", name.c_str());
        continue;
      }
      format->setName(name);
      const std::vector<const Field*> fields = format->getFields();
      if (std::none_of(fields.begin(), fields.end(), isUnitChanging)) {
        type.setFormat(std::move(format));
      } else {
        derive(type, std::move(format));
      }
    }
  }

 private:
  void derive(const VarType& type, std::unique_ptr<Format> format) {
    const std::string name = type.getName() + "-" + format->getName();
    if (!takeMembers(type.getMember())) {
      Logger::warning("[korvat] too many members in derived types, left out: %s\n", name.c_str());
      return;
    }
    std::unique_ptr<VarType> derived = type.clone(true);
    derived->getTypeId().setId(name);
    derived->addFlags(BaseType::kDerivedFormat);
    _changed.clear();
    for (const Field* field : format->getFields()) {
      if (isUnitChanging(field)) apply(*field, *derived);
    }
    derived->setFormat(std::move(format));
    _group.internalAddType(std::move(derived));
  }

  void apply(const Field& field, VarType& type) {
    auto* number = dynamic_cast<MemNumeric*>(findMember(type, field.getFieldName()));
    if (number == nullptr) {
      Logger::warning("no member at path %s\n", field.getFieldName().c_str());
      return;
    }
    // On top of what a type that is derived itself shows.
    const Field::NumericSpec& spec = *field.getNumericSpec();
    const auto [own, isNew] = _changed.emplace(number, number->getDisplayScaling());
    const DisplayScaling scaling(spec.factor * own->second.getFactor(),
                                 spec.factor * own->second.getOffset() + spec.offset);
    if (!isNew && !(scaling == number->getDisplayScaling())) {
      Logger::warning("[korvat] two units for the member at path %s, the last one counts: %s\n",
                      field.getFieldName().c_str(), type.getName().c_str());
    }
    number->setDisplayScaling(scaling);
  }

  // The member at `path` in a type that is free to change. A type that is referred to on the way
  // belongs to others: a copy of its members takes the place of the reference.
  Member* findMember(VarType& type, const std::string& path) {
    if (path.size() > kMaxPathSize) return nullptr;
    Member* member = type.getMember();
    MemAggregate* parent = nullptr;
    std::size_t pos = 0;
    for (std::uint32_t depth = 0; member != nullptr; ++depth) {
      if (member->getKind() == Member::Kind::Ref) {
        std::unique_ptr<Member> copy = copyReferred(static_cast<MemRef&>(*member), parent, depth);
        Member* const copied = copy.get();
        if (copied == nullptr) return nullptr;
        if (parent == nullptr) {
          type.setMember(std::move(copy));
        } else {
          parent->replaceChild(copied->getProgName(), std::move(copy));
        }
        member = copied;
      }
      if (pos >= path.size()) return member;
      if (member->getKind() != Member::Kind::Aggregate) return nullptr;
      parent = static_cast<MemAggregate*>(member);
      member = parent->findChild(takeName(path, pos));
    }
    return nullptr;
  }

  // What a reference at that depth stands for, as a member of the same name and array size. Null
  // where a copy would not have the same layout (an array of arrays, and a bit field that would
  // move into the byte of the one before it) or would reach too deep.
  std::unique_ptr<Member> copyReferred(const MemRef& reference, const MemAggregate* parent,
                                       std::uint32_t depth) {
    const VarType* type = reference.resolve(_typeManager);
    const Member* root = type == nullptr ? nullptr : type->getMember();
    if (root == nullptr || (root->isArray() && reference.isArray())) return nullptr;
    if (root->getKind() == Member::Kind::Bitfield && parent != nullptr) return nullptr;
    if (depth + heightOf(*root) > kMaxNesting || !takeMembers(root)) return nullptr;

    std::unique_ptr<Member> copy = root->clone();
    copy->setProgName(reference.getProgName());
    if (reference.isArray()) {
      copy->setArraySize(reference.getArraySize());
      copy->setArrayMinSize(reference.getArrayMinSize());
    }
    return copy;
  }

  // Counts the members of one more copy; false when there are too many.
  bool takeMembers(const Member* root) {
    if (_memberCount >= kMaxDerivedMembers) return false;
    _memberCount += countMembers(root);
    return _memberCount < kMaxDerivedMembers;
  }

  ResourceGroup& _group;
  TypeManager* _typeManager;
  std::uint32_t _memberCount = 0;  // of the copies made so far
  // What the members that the format under way has changed showed before.
  std::map<const MemNumeric*, DisplayScaling> _changed;
};

}  // namespace

void buildDisplayFormats(ResourceGroup& group, TypeManager* typeManager) {
  std::vector<std::string> names;  // noted first: derived types come into the same group
  for (const auto& [name, type] : group.getTypesByName()) names.push_back(name);

  DisplayFormats formats(group, typeManager);
  for (const std::string& name : names) {
    const auto found = group.getTypesByName().find(name);
    auto* type = dynamic_cast<VarType*>(found->second.get());
    if (type == nullptr) {
      Logger::warning("[korvat] not a VarType: %s\n", name.c_str());
    } else {
      formats.build(*type);
    }
  }
}

}  // namespace zavri::korvat
