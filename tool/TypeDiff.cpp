#include "tool/TypeDiff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <type_traits>
#include <utility>

#include "korvat/members/Limits.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemRef.h"
#include "korvat/members/MemScalar.h"
#include "korvat/types/CpType.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "tool/Catalogue.h"
#include "tool/ChangeList.h"
#include "tool/Layout.h"
#include "tool/NumberRange.h"
#include "tool/ProfileDiff.h"
#include "tool/ScalingText.h"

namespace zavri::korvat::tool {

namespace {

// --- Enumerations ---

void compareItems(const EnumType& oldType, const EnumType& newType, const std::string& prefix,
                  ChangeList& changes) {
  const auto& oldNames = oldType.getItemsByName();
  const auto& newNames = newType.getItemsByName();
  std::set<std::string> renamed;  // new names of old values
  for (const auto& [name, value] : oldNames) {
    const auto found = newNames.find(name);
    const std::string item = prefix + quoted(name);
    if (found != newNames.end()) {
      if (found->second == value) continue;
      changes.wire(item + " is " + insteadOf(textOf(found->second), textOf(value)));
      continue;
    }
    const std::string& newName = newType.getName(value);
    if (newName.empty() || oldNames.count(newName) != 0) {
      changes.wire(item + " (" + textOf(value) + ") is removed");
      continue;
    }
    changes.json(item + " (" + textOf(value) + ") is renamed to " + quoted(newName));
    renamed.insert(newName);
  }
  // Of several names of one value, the first is shown.
  for (const auto& [value, name] : oldType.getItemsByValue()) {
    const std::string& newName = newType.getName(value);
    const auto kept = newNames.find(name);
    if (newName == name || kept == newNames.end() || kept->second != value) continue;
    changes.json(prefix + textOf(value) + " is shown as " +
                 insteadOf(quoted(newName), quoted(name)));
  }
  for (const auto& [name, value] : newNames) {
    if (oldNames.count(name) != 0 || renamed.count(name) != 0) continue;
    changes.note(prefix + quoted(name) + " (" + textOf(value) + ") is added");
  }
}

// --- Types with values ---

json::Value describeScaling(const Scaling& scaling) {
  json::Value described;
  described["a"] = std::int32_t{scaling.a};
  described["b"] = std::int32_t{scaling.b};
  described["c"] = std::int32_t{scaling.c};
  return described;
}

std::string toText(const Scaling& scaling) {
  return scaling.isIdentity() ? "raw" : scalingText(describeScaling(scaling));
}

// The same numbers with the shortest multiplier: 50 * 10^-2 is 5 * 10^-1.
Scaling reduce(Scaling scaling) {
  while (scaling.a != 0 && scaling.a % 10 == 0) {
    scaling.a = static_cast<std::int16_t>(scaling.a / 10);
    scaling.b = static_cast<std::int16_t>(scaling.b + 1);
  }
  return scaling;
}

// A raw number as it is becomes an integer in JSON; what a scaling makes of it does not.
bool isSameNumber(const Scaling& a, const Scaling& b) {
  return a.isIdentity() == b.isIdentity() && reduce(a) == reduce(b);
}

std::string toText(const DisplayScaling& scaling) {
  json::Value described;
  described["factor"].setValue(scaling.getFactor());
  described["offset"].setValue(scaling.getOffset());
  return displayText(described);
}

std::string toText(const NcTypeRow& row) {
  return row.name.empty() ? "no base type" : std::string(row.name);
}

std::string toText(const BitSlot& slot) {
  return plural(slot.width, slot.isSigned ? "signed bit" : "unsigned bit") + " at bit " +
         std::to_string(slot.offset);
}

bool isSameSlot(const BitSlot& a, const BitSlot& b) {
  return a.offset == b.offset && a.width == b.width && a.isSigned == b.isSigned;
}

bool isSameShape(const NcTypeRow& a, const NcTypeRow& b) {
  return a.byteCount == b.byteCount && a.isSigned == b.isSigned && a.isFloating == b.isFloating;
}

bool isChar(NcType type) {
  return type == NcType::UnsignedChar || type == NcType::SignedChar;
}

const char* kindText(const Member& member) {
  switch (member.getKind()) {
    case Member::Kind::Scalar:
      return "an integer";
    case Member::Kind::Float:
      return "a floating number";
    case Member::Kind::Bitfield:
      return "a bit field";
    case Member::Kind::Enum:
      return "an enumeration";
    case Member::Kind::Aggregate:
      return static_cast<const MemAggregate&>(member).isUnion() ? "a union" : "a structure";
    case Member::Kind::Ref:
      return "a reference";
    case Member::Kind::Invalid:
      break;
  }
  return "nothing";
}

// Whether two members of different kinds stand for the same bytes: an enumeration is a signed byte.
bool isSameByte(const Member& a, const Member& b) {
  const auto isSignedByte = [](const Member& member) {
    if (member.getKind() == Member::Kind::Enum) return true;
    if (member.getKind() != Member::Kind::Scalar) return false;
    const NcTypeRow& row = ncTypeRow(static_cast<const MemScalar&>(member).getNcType());
    return row.byteCount == 1 && row.isSigned;
  };
  return isSignedByte(a) && isSignedByte(b);
}

const TypeId& refIdOf(const Member& member) {
  return static_cast<const MemRefBase&>(member).getRefId();
}

// Whether a member may be another one with a new name: the same form, its content aside.
bool isSameAtFirstSight(const Member& a, const Member& b) {
  if (a.getKind() != b.getKind() || a.getArraySize() != b.getArraySize()) return false;
  switch (a.getKind()) {
    case Member::Kind::Scalar:
      return isSameShape(ncTypeRow(static_cast<const MemScalar&>(a).getNcType()),
                         ncTypeRow(static_cast<const MemScalar&>(b).getNcType()));
    case Member::Kind::Float:
      return static_cast<const MemFloat&>(a).getNcType() ==
             static_cast<const MemFloat&>(b).getNcType();
    case Member::Kind::Bitfield:
      return isSameSlot(static_cast<const MemBitfield&>(a).getSlot(),
                        static_cast<const MemBitfield&>(b).getSlot());
    case Member::Kind::Enum:
    case Member::Kind::Ref:
      return refIdOf(a) == refIdOf(b);
    case Member::Kind::Aggregate:
      return static_cast<const MemAggregate&>(a).isUnion() ==
                 static_cast<const MemAggregate&>(b).isUnion() &&
             static_cast<const MemAggregate&>(a).getChildren().size() ==
                 static_cast<const MemAggregate&>(b).getChildren().size();
    case Member::Kind::Invalid:
      return true;
  }
  return false;
}

std::vector<const Member*> childrenOf(const MemAggregate& aggregate) {
  std::vector<const Member*> children;
  for (const auto& child : aggregate.getChildren()) {
    if (!child) break;  // where a walk ends
    children.push_back(child.get());
  }
  return children;
}

// Which member of one version of a structure or union is which one of the other: that of its name,
// or, where both names are gone, one of the same form in the same place.
class ChildAlignment {
 public:
  using Pair = std::pair<const Member*, const Member*>;  // old and new; null for one that is not

  ChildAlignment(const MemAggregate& oldAggregate, const MemAggregate& newAggregate)
      : _old(childrenOf(oldAggregate)),
        _new(childrenOf(newAggregate)),
        _oldNames(positionsOf(_old)),
        _newNames(positionsOf(_new)) {
    while (_o < _old.size() || _n < _new.size()) step();
  }

  const std::vector<Pair>& getPairs() const { return _pairs; }
  bool isReordered() const { return !_taken.empty(); }

 private:
  using Positions = std::map<std::string, std::size_t>;

  static Positions positionsOf(const std::vector<const Member*>& children) {
    Positions positions;
    for (std::size_t i = 0; i < children.size(); ++i) {
      positions.emplace(children[i]->getProgName(), i);
    }
    return positions;
  }

  void step() {
    const Member* oldOne = _o < _old.size() ? _old[_o] : nullptr;
    const Member* newOne = _n < _new.size() ? _new[_n] : nullptr;
    if (newOne != nullptr && _taken.count(_n) != 0) {
      ++_n;
      return;
    }
    const bool isGone = oldOne != nullptr && _newNames.count(oldOne->getProgName()) == 0;
    const bool isFresh = newOne != nullptr && _oldNames.count(newOne->getProgName()) == 0;
    const bool isSameName =
        oldOne != nullptr && newOne != nullptr && oldOne->getProgName() == newOne->getProgName();
    if (isSameName || (isGone && isFresh && isSameAtFirstSight(*oldOne, *newOne))) {
      _pairs.emplace_back(_old[_o++], _new[_n++]);
    } else if (isGone) {
      _pairs.emplace_back(_old[_o++], nullptr);
    } else if (isFresh) {
      _pairs.emplace_back(nullptr, _new[_n++]);
    } else if (oldOne != nullptr) {
      // Of two members with one name, one may have had its turn.
      const std::size_t position = _newNames.at(oldOne->getProgName());
      if (position >= _n && _taken.insert(position).second) {
        _pairs.emplace_back(oldOne, _new[position]);
      }
      ++_o;
    } else {
      ++_n;
    }
  }

  const std::vector<const Member*> _old;
  const std::vector<const Member*> _new;
  const Positions _oldNames;  // the first of each name
  const Positions _newNames;
  std::size_t _o = 0;  // next ones
  std::size_t _n = 0;
  std::set<std::size_t> _taken;  // new ones that were met out of order
  std::vector<Pair> _pairs;
};

// Two versions of a network variable or property type.
class VarTypeDiff {
 public:
  VarTypeDiff(TypeManager& oldManager, const VarType& oldType, TypeManager& newManager,
              const VarType& newType)
      : _oldManager(oldManager), _oldType(oldType), _newManager(newManager), _newType(newType) {}

  std::vector<Change> run() {
    const Member* oldRoot = _oldType.getMember();
    const Member* newRoot = _newType.getMember();
    if ((oldRoot == nullptr) != (newRoot == nullptr)) {
      _changes.wire(newRoot == nullptr ? "has no layout of its own any more"
                                       : "has a layout of its own now");
    } else if (oldRoot != nullptr) {
      compareMembers({oldRoot, oldRoot->getProgName()}, {newRoot, newRoot->getProgName()}, 0);
      if (!_changes.isEmpty()) comparePlaces();
    }
    compareDeclaredSize();
    compareFormats();
    return _changes.take();
  }

 private:
  // A member of one of the versions, and how it is met.
  struct Met {
    const Member* member = nullptr;
    std::string path;
    bool isElement = false;   // one element of the array that the member is
    bool isFollowed = false;  // behind a reference that has changed in one of the versions

    bool isArray() const { return member->isArray() && !isElement; }
  };

  // A member that only one version has, or another order: it breaks the wire unless all other
  // members stay where they are.
  struct LayoutChange {
    std::size_t index;  // in the list
    Breaks harmless;    // what it breaks when they do
  };

  static bool isReference(const Met& met) {
    return met.member->getKind() == Member::Kind::Ref && !met.isArray();
  }

  // The layout behind a reference; no member when it leads nowhere.
  static Met follow(const Met& met, TypeManager& manager) {
    if (!isReference(met)) return met;
    const VarType* type = static_cast<const MemRef*>(met.member)->resolve(&manager);
    return {type == nullptr ? nullptr : type->getMember(), met.path, false, false};
  }

  void compareMembers(Met oldMet, Met newMet, unsigned nesting) {
    if (nesting > kMaxNesting) return;  // no walk reaches what stands here
    compareUnits(oldMet, newMet);
    const bool isOldReference = isReference(oldMet);
    const bool isNewReference = isReference(newMet);
    if (isOldReference || isNewReference) {
      if (isOldReference && isNewReference && refIdOf(*oldMet.member) == refIdOf(*newMet.member)) {
        return pair(oldMet, newMet);
      }
      const std::string change = insteadOf(contentText(newMet), contentText(oldMet));
      const std::string path = newMet.path;
      pair(oldMet, newMet);
      oldMet = follow(oldMet, _oldManager);
      newMet = follow(newMet, _newManager);
      oldMet.isFollowed = newMet.isFollowed = true;
      if (oldMet.member == nullptr || newMet.member == nullptr) {
        return _changes.wire(prefixOf(path) + change + ", and one of them leads to no layout");
      }
      _changes.note(prefixOf(path) + change);
      if (!_followed.emplace(oldMet.member, newMet.member).second) return;
    }
    pair(oldMet, newMet);
    compareArrays(oldMet, newMet);
    if (oldMet.isArray() || newMet.isArray()) {
      oldMet = elementOf(oldMet);
      newMet = elementOf(newMet);
      if (isReference(oldMet) || isReference(newMet)) {
        return compareMembers(oldMet, newMet, nesting + 1);
      }
    }
    compareContent(oldMet, newMet, nesting);
  }

  static Met elementOf(const Met& met) {
    if (!met.isArray()) return met;
    return {met.member, met.path + "[]", true, met.isFollowed};
  }

  static std::string contentText(const Met& met) {
    return isReference(met) ? "a reference to " + nameOf(refIdOf(*met.member))
                            : kindText(*met.member);
  }

  // Notes two members that are versions of each other.
  void pair(const Met& oldMet, const Met& newMet) {
    if (newMet.isFollowed) return;
    _pairs.emplace_back(oldMet.path, newMet.path);
  }

  void compareUnits(const Met& oldMet, const Met& newMet) {
    const std::string& oldUnit = oldMet.member->getUnit();
    const std::string& newUnit = newMet.member->getUnit();
    if (oldUnit == newUnit || oldMet.isElement || newMet.isElement) return;
    _changes.note(prefixOf(newMet.path) + "unit " + insteadOf(quoted(newUnit), quoted(oldUnit)));
  }

  static std::string arrayText(const Met& met) {
    if (!met.isArray()) return "a single value";
    std::string text = "an array of " + std::to_string(met.member->getArraySize());
    if (met.member->isDynamicArray()) {
      text += ", at least " + std::to_string(met.member->getArrayMinSize());
    }
    return text;
  }

  void compareArrays(const Met& oldMet, const Met& newMet) {
    const std::string oldText = arrayText(oldMet);
    const std::string newText = arrayText(newMet);
    if (oldText != newText) {
      _changes.wire(prefixOf(newMet.path) + insteadOf(newText, oldText));
    }
  }

  void compareContent(const Met& oldMet, const Met& newMet, unsigned nesting) {
    const Member& oldMember = *oldMet.member;
    const Member& newMember = *newMet.member;
    const std::string prefix = prefixOf(newMet.path);
    if (oldMember.getKind() != newMember.getKind()) {
      const std::string message = prefix + insteadOf(kindText(newMember), kindText(oldMember));
      return isSameByte(oldMember, newMember) ? _changes.json(message) : _changes.wire(message);
    }
    switch (newMember.getKind()) {
      case Member::Kind::Scalar: {
        const auto& oldScalar = static_cast<const MemScalar&>(oldMember);
        const auto& newScalar = static_cast<const MemScalar&>(newMember);
        const NcTypeRow& row = ncTypeRow(newScalar.getNcType());
        const bool isSame = compareBaseTypes(oldScalar.getNcType(), newMet, newScalar.getNcType());
        return compareNumbers(oldScalar, newScalar, prefix, isSame, rangeOf(row));
      }
      case Member::Kind::Float: {
        const auto& oldFloat = static_cast<const MemFloat&>(oldMember);
        const auto& newFloat = static_cast<const MemFloat&>(newMember);
        const bool isSame = compareBaseTypes(oldFloat.getNcType(), newMet, newFloat.getNcType());
        return compareNumbers(oldFloat, newFloat, prefix, isSame,
                              floatRangeOf(newFloat.getNcType()));
      }
      case Member::Kind::Bitfield: {
        const auto& oldField = static_cast<const MemBitfield&>(oldMember);
        const auto& newField = static_cast<const MemBitfield&>(newMember);
        const BitSlot& oldSlot = oldField.getSlot();
        const BitSlot& newSlot = newField.getSlot();
        if (!isSameSlot(oldSlot, newSlot)) {
          _changes.wire(prefix + insteadOf(toText(newSlot), toText(oldSlot)));
        }
        const bool isSame = oldSlot.width == newSlot.width && oldSlot.isSigned == newSlot.isSigned;
        return compareNumbers(oldField, newField, prefix, isSame, rangeOf(newSlot));
      }
      case Member::Kind::Enum:
        return compareEnums(static_cast<const MemEnum&>(oldMember),
                            static_cast<const MemEnum&>(newMember), prefix);
      case Member::Kind::Aggregate:
        return compareAggregates(oldMet, newMet, nesting);
      case Member::Kind::Ref:  // followed before, unless a limit was met
      case Member::Kind::Invalid:
        return;
    }
  }

  // Whether the raw numbers are the same.
  bool compareBaseTypes(NcType oldType, const Met& newMet, NcType newType) {
    if (oldType == newType) return true;
    const std::string message =
        prefixOf(newMet.path) + insteadOf(toText(ncTypeRow(newType)), toText(ncTypeRow(oldType)));
    if (!isSameShape(ncTypeRow(oldType), ncTypeRow(newType))) {
      _changes.wire(message);
      return false;
    }
    if (newMet.isElement && isChar(oldType) != isChar(newType)) {
      _changes.json(message + (isChar(newType) ? ": text instead of an array of numbers"
                                               : ": an array of numbers instead of text"));
    } else {
      _changes.note(message);
    }
    return true;
  }

  template <typename T>
  void compareNumbers(const TMemNumeric<T>& oldMember, const TMemNumeric<T>& newMember,
                      const std::string& prefix, bool isSameRaw, const Range<T>& range) {
    const Scaling& oldScaling = oldMember.getScaling();
    const Scaling& newScaling = newMember.getScaling();
    if (!(oldScaling == newScaling)) {
      const std::string message = prefix + insteadOf(toText(newScaling), toText(oldScaling));
      if (isSameNumber(oldScaling, newScaling)) {
        _changes.note(message + ", which is the same");
      } else {
        _changes.json(message);
      }
    }
    if (invalidText(oldMember) != invalidText(newMember)) {
      _changes.json(prefix + insteadOf(invalidText(newMember), invalidText(oldMember)));
    }
    if (!isSameRaw) return;  // the numbers of limits of another base type say little
    const Range<T> oldLimits = limitsOf(oldMember, range);
    const Range<T> newLimits = limitsOf(newMember, range);
    if (oldLimits.lowest != newLimits.lowest) {
      _changes.json(prefix + "minimum raw " +
                    insteadOf(limitText(newMember.hasMin(), newLimits.lowest),
                              limitText(oldMember.hasMin(), oldLimits.lowest)));
    }
    if (oldLimits.highest != newLimits.highest) {
      _changes.json(prefix + "maximum raw " +
                    insteadOf(limitText(newMember.hasMax(), newLimits.highest),
                              limitText(oldMember.hasMax(), oldLimits.highest)));
    }
  }

  template <typename T>
  static std::string invalidText(const TMemNumeric<T>& member) {
    return member.hasInvalid() ? "invalid marker " + textOf(member.getInvalid())
                               : "no invalid marker";
  }

  // The raw numbers that are taken: one beyond the base type limits nothing.
  template <typename T>
  static Range<T> limitsOf(const TMemNumeric<T>& member, const Range<T>& range) {
    return {member.hasMin() ? std::max(member.getMin(), range.lowest) : range.lowest,
            member.hasMax() ? std::min(member.getMax(), range.highest) : range.highest};
  }

  // The largest number of a floating type is no limit to write down.
  template <typename T>
  static std::string limitText(bool isGiven, T limit) {
    return isGiven || !std::is_floating_point_v<T> ? textOf(limit) : "without limit";
  }

  void compareEnums(const MemEnum& oldMember, const MemEnum& newMember, const std::string& prefix) {
    const TypeId& oldId = oldMember.getRefId();
    const TypeId& newId = newMember.getRefId();
    if (oldId == newId) return;
    const std::string change = prefix + "enumeration " + insteadOf(nameOf(newId), nameOf(oldId));
    const EnumType* oldType = oldMember.resolveEnum(&_oldManager);
    const EnumType* newType = newMember.resolveEnum(&_newManager);
    if (oldType == nullptr || newType == nullptr) {
      return _changes.json(change + ", and one of them does not exist");
    }
    _changes.note(change);
    if (!_followedEnums.emplace(oldType, newType).second) return;
    compareItems(*oldType, *newType, prefix, _changes);
  }

  void compareAggregates(const Met& oldMet, const Met& newMet, unsigned nesting) {
    const auto& oldAggregate = static_cast<const MemAggregate&>(*oldMet.member);
    const auto& newAggregate = static_cast<const MemAggregate&>(*newMet.member);
    if (oldAggregate.isUnion() != newAggregate.isUnion()) {
      addLayoutChange(newMet, insteadOf(kindText(newAggregate), kindText(oldAggregate)),
                      Breaks::Json);
    }
    const ChildAlignment alignment(oldAggregate, newAggregate);
    const bool isUnion = newAggregate.isUnion();
    for (const auto& [oldChild, newChild] : alignment.getPairs()) {
      if (newChild == nullptr) {
        addLayoutChange(childOf(oldMet, *oldChild), "removed", Breaks::Json);
        continue;
      }
      const Met newChildMet = childOf(newMet, *newChild);
      if (oldChild == nullptr) {
        addLayoutChange(newChildMet, isUnion ? "new alternative" : "new member",
                        isUnion ? Breaks::Nothing : Breaks::Json);
        continue;
      }
      const Met oldChildMet = childOf(oldMet, *oldChild);
      if (oldChild->getProgName() != newChild->getProgName()) {
        _changes.json(prefixOf(oldChildMet.path) + "renamed to " + quoted(newChild->getProgName()));
      }
      compareMembers(oldChildMet, newChildMet, nesting + 1);
    }
    if (alignment.isReordered()) {
      addLayoutChange(newMet, "the members are in another order", Breaks::Nothing);
    }
  }

  static Met childOf(const Met& parent, const Member& child) {
    const std::string& name = child.getProgName();
    return {&child, parent.path.empty() ? name : parent.path + "." + name, false,
            parent.isFollowed};
  }

  void addLayoutChange(const Met& met, const std::string& what, Breaks harmless) {
    _changes.wire(prefixOf(met.path) + what);
    // Behind a reference the places are not known.
    if (!met.isFollowed) _layoutChanges.push_back({_changes.getLastIndex(), harmless});
  }

  using Places = std::map<std::string, unsigned>;  // first byte by path

  // Both versions are laid out with the new types behind their references: what has moved only
  // because such a type has grown is no change of this type.
  std::optional<Places> findPlaces(const VarType& type, unsigned& byteCount) {
    if (!type.getMaxSize(&_newManager, byteCount)) return std::nullopt;
    try {
      Places places;
      for (const LayoutRow& row : makeLayout(_newManager, type)) {
        places.emplace(row.path, row.byteOffset);
      }
      return places;
    } catch (const Failure&) {
      return std::nullopt;
    }
  }

  void comparePlaces() {
    unsigned oldByteCount = 0;
    unsigned newByteCount = 0;
    const std::optional<Places> oldPlaces = findPlaces(_oldType, oldByteCount);
    const std::optional<Places> newPlaces = findPlaces(_newType, newByteCount);
    if (!oldPlaces || !newPlaces) return;
    const std::size_t movedCount = compareOffsets(*oldPlaces, *newPlaces);
    if (oldByteCount != newByteCount) {
      _changes.wire("a value takes " +
                    insteadOf(plural(newByteCount, "byte"), std::to_string(oldByteCount)));
    } else if (movedCount == 0) {
      for (const LayoutChange& change : _layoutChanges) {
        _changes.setBreaks(change.index, change.harmless);
      }
    }
  }

  // Number of members that have moved: one finding tells of all.
  std::size_t compareOffsets(const Places& oldPlaces, const Places& newPlaces) {
    std::size_t movedCount = 0;
    std::string first;
    for (const auto& [oldPath, newPath] : _pairs) {
      const auto oldPlace = oldPlaces.find(oldPath);
      const auto newPlace = newPlaces.find(newPath);
      if (oldPlace == oldPlaces.end() || newPlace == newPlaces.end()) continue;
      if (oldPlace->second == newPlace->second) continue;
      if (++movedCount > 1) continue;
      first = newPath + ": at byte " +
              insteadOf(std::to_string(newPlace->second), std::to_string(oldPlace->second));
    }
    if (movedCount > 1) first += ", and " + plural(movedCount - 1, "more member") + " moved";
    if (movedCount > 0) _changes.wire(first);
    return movedCount;
  }

  // What a file says about the size; the members have the last word.
  void compareDeclaredSize() {
    if (_oldType.getSize() == _newType.getSize()) return;
    const std::string change =
        "declares " + insteadOf(plural(sizeOf(_newType), "byte"), std::to_string(sizeOf(_oldType)));
    if (_newType.getMember() == nullptr && _oldType.getMember() == nullptr) {
      _changes.wire(change);
    } else if (_changes.isEmpty()) {
      _changes.note(change);
    }
  }

  static std::size_t sizeOf(const VarType& type) {
    return static_cast<std::size_t>(std::max(type.getSize(), 0));
  }

  // --- Display formats, and the types in other units that they make ---

  using Shown = std::map<std::string, DisplayScaling>;  // by path; those in other units

  void compareFormats() {
    const auto& oldFormats = _oldType.getFormats();
    const auto& newFormats = _newType.getFormats();
    for (const auto& [name, text] : oldFormats) {
      const auto found = newFormats.find(name);
      if (found == newFormats.end()) {
        _changes.note(formatText(name) + " is removed");
      } else if (found->second != text) {
        _changes.note(formatText(name) + " is " + insteadOf(quoted(found->second), quoted(text)));
      }
    }
    for (const auto& [name, text] : newFormats) {
      if (oldFormats.count(name) == 0) _changes.note(formatText(name) + " is added");
    }
    compareDerivedTypes();
  }

  static std::string formatText(const std::string& name) {
    return name.empty() ? "the display format" : "the display format " + quoted(name);
  }

  void compareDerivedTypes() {
    std::map<std::string, const VarType*> newTypes;
    for (const VarType* type : findDerivedTypes(_newManager, _newType)) {
      newTypes[type->getName()] = type;
    }
    for (const VarType* oldType : findDerivedTypes(_oldManager, _oldType)) {
      const auto found = newTypes.find(oldType->getName());
      if (found == newTypes.end()) {
        _changes.json("the type in other units " + displayName(*oldType) + " is removed");
      } else {
        compareShown(*oldType, *found->second);
        newTypes.erase(found);
      }
    }
    for (const auto& [name, type] : newTypes) {
      _changes.note("the type in other units " + displayName(*type) + " is added");
    }
  }

  // The members are those of this type, and compared already.
  void compareShown(const VarType& oldType, const VarType& newType) {
    if (oldType.getMember() == nullptr || newType.getMember() == nullptr) return;
    Shown oldShown;
    Shown newShown;
    collectShown(*oldType.getMember(), "", oldShown);
    collectShown(*newType.getMember(), "", newShown);
    std::set<std::string> paths;
    for (const auto& [path, scaling] : oldShown) paths.insert(path);
    for (const auto& [path, scaling] : newShown) paths.insert(path);
    for (const std::string& path : paths) {
      const DisplayScaling oldScaling = oldShown[path];
      const DisplayScaling newScaling = newShown[path];
      if (oldScaling == newScaling) continue;
      if (oldType.getMember()->findMemberAtPath(&_oldManager, path) == nullptr) continue;
      if (newType.getMember()->findMemberAtPath(&_newManager, path) == nullptr) continue;
      _changes.json("in " + displayName(newType) + ", " + prefixOf(path) +
                    insteadOf(toText(newScaling), toText(oldScaling)));
    }
  }

  static void collectShown(const Member& member, const std::string& path, Shown& shown) {
    if (const auto* number = dynamic_cast<const MemNumeric*>(&member)) {
      if (!number->getDisplayScaling().isIdentity()) shown[path] = number->getDisplayScaling();
    }
    if (member.getKind() != Member::Kind::Aggregate) return;
    for (const Member* child : childrenOf(static_cast<const MemAggregate&>(member))) {
      const std::string& name = child->getProgName();
      collectShown(*child, path.empty() ? name : path + "." + name, shown);
    }
  }

  TypeManager& _oldManager;
  const VarType& _oldType;
  TypeManager& _newManager;
  const VarType& _newType;
  ChangeList _changes;
  std::vector<LayoutChange> _layoutChanges;
  std::vector<std::pair<std::string, std::string>> _pairs;  // old path and new path
  // What is behind references with changed names is told once.
  std::set<std::pair<const Member*, const Member*>> _followed;
  std::set<std::pair<const EnumType*, const EnumType*>> _followedEnums;
};

// --- References ---

void addReferences(const Member& member, std::vector<TypeId>& references) {
  const Member::Kind kind = member.getKind();
  if (kind == Member::Kind::Ref || kind == Member::Kind::Enum) {
    references.push_back(refIdOf(member));
  }
  if (kind != Member::Kind::Aggregate) return;
  for (const auto& child : static_cast<const MemAggregate&>(member).getChildren()) {
    if (child) addReferences(*child, references);
  }
}

void addReferences(const std::vector<DpRef*>& datapoints, std::vector<TypeId>& references) {
  for (const DpRef* datapoint : datapoints) {
    if (!datapoint->getTypeId().isGenericNv()) references.push_back(datapoint->getTypeId());
  }
}

// What types of any kind have.
void compareItemFacts(const BaseType& oldType, const BaseType& newType, ChangeList& changes) {
  if (oldType.getIndex() != newType.getIndex()) {
    changes.wire("number " +
                 insteadOf(std::to_string(newType.getIndex()), std::to_string(oldType.getIndex())));
  }
  const bool isObsolete = newType.hasFlags(BaseType::kObsolete);
  if (isObsolete != oldType.hasFlags(BaseType::kObsolete)) {
    changes.note(isObsolete ? "obsolete now" : "not obsolete any more");
  }
  const auto* oldProperty = dynamic_cast<const CpType*>(&oldType);
  const auto* newProperty = dynamic_cast<const CpType*>(&newType);
  if (oldProperty == nullptr || newProperty == nullptr) return;
  const std::string& oldDefault = oldProperty->getDefaultValue();
  const std::string& newDefault = newProperty->getDefaultValue();
  if (oldDefault != newDefault) {
    changes.note("default value " + insteadOf(quoted(newDefault), quoted(oldDefault)));
  }
}

}  // namespace

std::vector<Change> compareTypes(TypeManager& oldManager, const BaseType& oldType,
                                 TypeManager& newManager, const BaseType& newType) {
  ChangeList facts;
  compareItemFacts(oldType, newType, facts);
  std::vector<Change> changes = facts.take();
  std::vector<Change> more;
  if (oldType.getTypeId().getType() == ResourceType::Enum) {
    ChangeList items;
    compareItems(static_cast<const EnumType&>(oldType), static_cast<const EnumType&>(newType), "",
                 items);
    more = items.take();
  } else if (oldType.getTypeId().getType() == ResourceType::Fp) {
    more =
        compareProfiles(static_cast<const FpType&>(oldType), static_cast<const FpType&>(newType));
  } else {
    more = VarTypeDiff(oldManager, static_cast<const VarType&>(oldType), newManager,
                       static_cast<const VarType&>(newType))
               .run();
  }
  changes.insert(changes.end(), more.begin(), more.end());
  return changes;
}

std::vector<TypeId> findReferences(const BaseType& type) {
  std::vector<TypeId> references;
  if (const auto* varType = dynamic_cast<const VarType*>(&type)) {
    if (varType->getMember() != nullptr) addReferences(*varType->getMember(), references);
  }
  if (const auto* profile = dynamic_cast<const FpType*>(&type)) {
    if (profile->hasBase()) references.push_back(profile->getBase());
    addReferences(profile->getNvColl(), references);
    addReferences(profile->getCpColl(), references);
  }
  return references;
}

}  // namespace zavri::korvat::tool
