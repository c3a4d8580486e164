#include "tool/Commands.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/Value.h"
#include "korvat/types/EnumType.h"
#include "tool/Failure.h"
#include "tool/Leaves.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

// What speaks for a type, in bits: a random value would keep to limits that leave 1 of 2^n raw
// numbers in one case out of 2^n. Nothing for a number that breaks its limits.
using Evidence = std::optional<double>;

Evidence evidenceOf(double allowedCount, unsigned bitCount) {
  return std::max(bitCount - std::log2(std::max(allowedCount, 1.0)), 0.0);
}

template <typename M, typename T>
Evidence evidenceOfInteger(const M& member, T raw, unsigned bitCount) {
  if (!member.isInRange(raw)) return std::nullopt;
  if (!member.hasMin() || !member.hasMax()) return 0;
  const double allowed =
      static_cast<double>(member.getMax()) - static_cast<double>(member.getMin()) + 1;
  const bool isMarkerOutside = member.hasInvalid() && (member.getInvalid() < member.getMin() ||
                                                       member.getInvalid() > member.getMax());
  return evidenceOf(allowed + (isMarkerOutside ? 1 : 0), bitCount);
}

// Of random singles, few are numbers of an everyday size.
Evidence evidenceOfFloat(const MemFloat& member, double raw) {
  constexpr double kEverydayBits = 2;
  const Standing standing = standingOf(member, raw);
  if (standing == Standing::Below || standing == Standing::Above) return std::nullopt;
  if (!std::isfinite(raw) && standing != Standing::Marker) return std::nullopt;
  const double size = std::abs(raw);
  return raw == 0 || (size > 1e-6 && size < 1e9) ? kEverydayBits : 0;
}

class Guess {
 public:
  Guess(TypeManager& manager, base::Endianess order) : _manager(manager), _order(order) {}

  Evidence weigh(const VarType& type, base::Buffer& raw, const json::Value& value) {
    const Value access(&_manager, &type, _order, raw);
    double sum = 0;
    for (const Leaf& leaf : findLeaves(access, value)) {
      if (leaf.isInUnion || !leaf.access.isValid()) continue;
      const Evidence evidence = weighLeaf(leaf, raw);
      if (!evidence) return std::nullopt;
      sum += *evidence;
    }
    return sum;
  }

 private:
  Evidence weighLeaf(const Leaf& leaf, const base::Buffer& raw) {
    const Member& member = *leaf.access.getMember();
    const bool isText = member.isArray() && leaf.access.getElementIndex() < 0;
    if (isText) return weighText(leaf.shown->asString());
    switch (member.getKind()) {
      case Member::Kind::Scalar: {
        const auto& scalar = static_cast<const MemScalar&>(member);
        std::int64_t number = 0;
        static_cast<void>(leaf.access.get(-1, number));
        return evidenceOfInteger(scalar, number, 8 * scalar.getByteCount());
      }
      case Member::Kind::Float: {
        double number = 0;
        static_cast<void>(leaf.access.get(-1, number));
        return evidenceOfFloat(static_cast<const MemFloat&>(member), number);
      }
      case Member::Kind::Bitfield: {
        const auto& field = static_cast<const MemBitfield&>(member);
        const unsigned offset = firstByteOf(_manager, leaf.access);
        if (offset >= raw.getSize()) return 0;
        return evidenceOfInteger(field, readBits(raw.getData()[offset], field.getSlot()),
                                 field.getSlot().width);
      }
      case Member::Kind::Enum: {
        const EnumType* type = static_cast<const MemEnum&>(member).resolveEnum(&_manager);
        if (type == nullptr) return 0;
        if (type->getName(leaf.access.getInt8()).empty()) return std::nullopt;
        return evidenceOf(static_cast<double>(type->getItemsByValue().size()), 8);
      }
      case Member::Kind::Invalid:
      case Member::Kind::Ref:
      case Member::Kind::Aggregate:
        break;
    }
    return 0;
  }

  // A text is made of characters that can be printed: 95 of 256.
  static Evidence weighText(const std::string& text) {
    for (const char c : text) {
      if (static_cast<unsigned char>(c) < ' ') return std::nullopt;
    }
    constexpr double kBitsPerCharacter = 1.4;
    return kBitsPerCharacter * static_cast<double>(text.size());
  }

  TypeManager& _manager;
  base::Endianess _order;
};

struct Candidate {
  const VarType* type;
  double evidence;  // bits
  json::Value value;
};

std::vector<Candidate> findCandidates(Catalogue& catalogue, base::Buffer& raw) {
  std::vector<Candidate> candidates;
  Guess guess(catalogue.getManager(), catalogue.getOptions().order);
  for (const ResourceType kind : {ResourceType::Nv, ResourceType::Cp}) {
    for (const ResourceGroup* group : catalogue.findGroups(kind)) {
      for (const auto& [name, type] : group->getTypesByName()) {
        const auto* varType = type->asVarType();
        if (varType == nullptr || varType->getMember() == nullptr) continue;
        if (varType->hasFlags(BaseType::kDerivedFormat)) continue;
        if (catalogue.findSize(*varType) != raw.getSize()) continue;
        json::Value value = catalogue.decode(*varType, raw);
        const Evidence evidence = guess.weigh(*varType, raw, value);
        if (evidence) candidates.push_back({varType, *evidence, std::move(value)});
      }
    }
  }
  // Obsolete types last among equals, then by kind and number.
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) {
                     const bool isOldA = a.type->hasFlags(BaseType::kObsolete);
                     const bool isOldB = b.type->hasFlags(BaseType::kObsolete);
                     if (a.evidence != b.evidence) return a.evidence > b.evidence;
                     if (isOldA != isOldB) return isOldB;
                     const ResourceType kindA = a.type->getTypeId().getType();
                     const ResourceType kindB = b.type->getTypeId().getType();
                     if (kindA != kindB) return kindA < kindB;
                     return a.type->getIndex() < b.type->getIndex();
                   });
  return candidates;
}

}  // namespace

void runGuess(Catalogue& catalogue, const std::vector<std::string>& hex) {
  catalogue.refuseDynamicArrays("guess");
  base::Buffer raw = catalogue.readHex(join(hex));
  const std::vector<Candidate> candidates = findCandidates(catalogue, raw);
  if (candidates.empty()) {
    throw Failure(kNotFound,
                  "no type of " + bytesText(raw.getSize()) + " has this value within its limits");
  }
  json::Value rows;
  rows.switchType(json::JsonType::Array);
  std::string lines;
  for (const Candidate& candidate : candidates) {
    const std::string name = catalogue.nameOf(*candidate.type);
    lines += pad(name, 28) + "  " + candidate.value.stringify() + "\n";
    json::Value& row = rows[rows.getSize()];
    row["type"] = name;
    row["evidence"].setValue(std::round(candidate.evidence * 10) / 10);
    row["value"] = candidate.value;
  }
  std::fputs(catalogue.getOptions().printJson ? (rows.stringify(2) + "\n").c_str() : lines.c_str(),
             stdout);
}

}  // namespace zavri::korvat::tool
