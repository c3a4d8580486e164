#include "tool/ProfileDiff.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>

#include "korvat/base/StringUtils.h"
#include "tool/ChangeList.h"

namespace zavri::korvat::tool {

namespace {

using util::StringUtils;

class ProfileDiff {
 public:
  ProfileDiff(const FpType& oldType, const FpType& newType)
      : _oldType(oldType), _newType(newType) {}

  std::vector<Change> run() {
    const std::string oldKey = keyText(_oldType);
    const std::string newKey = keyText(_newType);
    if (oldKey != newKey) _changes.wire(insteadOf(newKey, oldKey));
    const std::string oldBase = baseText(_oldType);
    const std::string newBase = baseText(_newType);
    if (oldBase != newBase) _changes.wire(insteadOf(newBase, oldBase));
    compareDatapoints(_oldType.getNvColl(), _newType.getNvColl());
    compareDatapoints(_oldType.getCpColl(), _newType.getCpColl());
    return _changes.take();
  }

 private:
  using Datapoints = std::vector<DpRef*>;
  // A name, and how many have it already: a faulty profile has no changes either.
  using Name = std::pair<std::string, std::size_t>;
  using ByName = std::map<Name, const DpRef*>;
  using ByIndex = std::multimap<std::int32_t, const DpRef*>;
  using Pair = std::pair<const DpRef*, const DpRef*>;  // old and new

  static std::string keyText(const FpType& type) {
    return type.hasKey() ? "key " + std::to_string(type.getKey()) : "no key";
  }

  static std::string baseText(const FpType& type) {
    return type.hasBase() ? "inherits from " + nameOf(type.getBase()) : "inherits from nothing";
  }

  static ByName byName(const Datapoints& datapoints) {
    ByName named;
    std::map<std::string, std::size_t> counts;
    for (const DpRef* datapoint : datapoints) {
      named[{datapoint->getName(), counts[datapoint->getName()]++}] = datapoint;
    }
    return named;
  }

  void compareDatapoints(const Datapoints& oldOnes, const Datapoints& newOnes) {
    const ByName oldNames = byName(oldOnes);
    const ByName newNames = byName(newOnes);
    ByIndex fresh;  // new ones that may be old ones with another name
    for (const auto& [name, newOne] : newNames) {
      if (oldNames.count(name) == 0) fresh.emplace(newOne->getIndex(), newOne);
    }
    std::vector<Pair> renumbered;
    for (const auto& [name, oldOne] : oldNames) {
      const auto sameName = newNames.find(name);
      if (sameName != newNames.end()) {
        const DpRef* newOne = sameName->second;
        if (oldOne->getIndex() != newOne->getIndex()) renumbered.emplace_back(oldOne, newOne);
        compareDatapoint(*oldOne, *newOne);
        continue;
      }
      const auto sameIndex = fresh.find(oldOne->getIndex());
      if (sameIndex == fresh.end() || sameIndex->second->getTypeId() != oldOne->getTypeId()) {
        _changes.wire(oldOne->getName() + ": removed");
        continue;
      }
      _changes.json(oldOne->getName() + ": renamed to " + quoted(sameIndex->second->getName()));
      compareDatapoint(*oldOne, *sameIndex->second);
      fresh.erase(sameIndex);
    }
    reportRenumbered(std::move(renumbered));
    for (const auto& [index, newOne] : fresh) {
      if (newOne->isMandatory()) {
        _changes.wire(newOne->getName() + ": new and mandatory");
      } else {
        _changes.note(newOne->getName() + ": new and optional");
      }
    }
  }

  // A datapoint that is put between others moves all behind it: one finding tells of all.
  void reportRenumbered(std::vector<Pair> renumbered) {
    if (renumbered.empty()) return;
    std::sort(renumbered.begin(), renumbered.end(), [](const Pair& a, const Pair& b) {
      return a.first->getIndex() < b.first->getIndex();
    });
    const auto& [oldOne, newOne] = renumbered.front();
    std::string message =
        newOne->getName() + ": number " +
        insteadOf(std::to_string(newOne->getIndex()), std::to_string(oldOne->getIndex()));
    if (renumbered.size() > 1) {
      message += ", and " + plural(renumbered.size() - 1, "more datapoint") + " renumbered";
    }
    _changes.wire(message);
  }

  void compareDatapoint(const DpRef& oldOne, const DpRef& newOne) {
    const std::string prefix = prefixOf(newOne.getName());
    const auto compare = [&](const std::string& newText, const std::string& oldText) {
      if (newText != oldText) _changes.wire(prefix + insteadOf(newText, oldText));
    };
    compare(nameOf(newOne.getTypeId()), nameOf(oldOne.getTypeId()));
    // A number that follows the number in the collection is told with that one.
    const std::int64_t shift = std::int64_t{newOne.getMember()} - oldOne.getMember();
    if (shift != std::int64_t{newOne.getIndex()} - oldOne.getIndex() && shift != 0) {
      compare("member number " + std::to_string(newOne.getMember()),
              std::to_string(oldOne.getMember()));
    }
    compare(directionText(newOne), directionText(oldOne));
    compare(appliesText(newOne), appliesText(oldOne));
    if (newOne.isMandatory() && !oldOne.isMandatory()) _changes.wire(prefix + "mandatory now");
    if (!newOne.isMandatory() && oldOne.isMandatory()) _changes.wire(prefix + "optional now");
    if (!newOne.isArrayPermitted() && oldOne.isArrayPermitted()) {
      _changes.wire(prefix + "may not be an array any more");
    }
    if (newOne.isArrayPermitted() && !oldOne.isArrayPermitted()) {
      _changes.note(prefix + "may be an array now");
    }
    compareLimits(oldOne, newOne, prefix);
  }

  static std::string directionText(const DpRef& datapoint) {
    return datapoint.getDirection() == DpRef::Direction::Input ? "input" : "output";
  }

  static std::string appliesText(const DpRef& datapoint) {
    return datapoint.getAppliesTo().empty() ? "applies to nothing"
                                            : "applies to " + quoted(datapoint.getAppliesTo());
  }

  // They are for people and devices: no value is converted with them.
  void compareLimits(const DpRef& oldOne, const DpRef& newOne, const std::string& prefix) {
    const auto compare = [&](const char* what, bool hasNew, double newValue, bool hasOld,
                             double oldValue) {
      const std::string newText = hasNew ? StringUtils::toString(newValue) : "none";
      const std::string oldText = hasOld ? StringUtils::toString(oldValue) : "none";
      if (newText != oldText) {
        _changes.note(prefix + what + " " + insteadOf(newText, oldText));
      }
    };
    compare("minimum", newOne.hasMin(), newOne.getMin(), oldOne.hasMin(), oldOne.getMin());
    compare("maximum", newOne.hasMax(), newOne.getMax(), oldOne.hasMax(), oldOne.getMax());
    compare("default", newOne.hasDefault(), newOne.getDefaultValue(), oldOne.hasDefault(),
            oldOne.getDefaultValue());
  }

  const FpType& _oldType;
  const FpType& _newType;
  ChangeList _changes;
};

}  // namespace

std::vector<Change> compareProfiles(const FpType& oldType, const FpType& newType) {
  return ProfileDiff(oldType, newType).run();
}

}  // namespace zavri::korvat::tool
