#include "tool/ValueShape.h"

#include <algorithm>

#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"

namespace zavri::korvat::tool {

namespace {

// Columns beyond which a row is no use to anybody.
constexpr std::size_t kMostColumns = 20'000;

bool isKind(const Leaf& leaf, Member::Kind kind) {
  const Member* member = leaf.access.getMember();
  return member != nullptr && member->getKind() == kind;
}

bool isEnum(const Leaf& leaf) {
  return isKind(leaf, Member::Kind::Enum);
}

// An array that is shown as text is no number.
bool isNumber(const Leaf& leaf) {
  if (isEnum(leaf)) return true;
  if (leaf.shown->isString()) {
    return isKind(leaf, Member::Kind::Scalar) && !leaf.access.getMember()->isArray();
  }
  return isKind(leaf, Member::Kind::Scalar) || isKind(leaf, Member::Kind::Bitfield) ||
         isKind(leaf, Member::Kind::Float);
}

template <typename T>
T read(const Leaf& leaf) {
  T number{};
  static_cast<void>(leaf.access.get(-1, number));
  return number;
}

std::int8_t readEnum(const Leaf& leaf) {
  return static_cast<std::int8_t>(read<std::uint8_t>(leaf));
}

std::int64_t readBitfield(const Leaf& leaf) {
  const BitSlot& slot = static_cast<const MemBitfield*>(leaf.access.getMember())->getSlot();
  const int bits = leaf.access.getBitfield();
  const bool isNegative = slot.isSigned && slot.width > 0 && bits >= 1 << (slot.width - 1);
  return isNegative ? bits - (1 << slot.width) : bits;
}

json::Value readRaw(const Leaf& leaf) {
  json::Value number;
  switch (leaf.access.getMember()->getKind()) {
    case Member::Kind::Enum:
      number.setValue(readEnum(leaf));
      break;
    case Member::Kind::Bitfield:
      number.setValue(readBitfield(leaf));
      break;
    case Member::Kind::Scalar:
      number.setValue(read<std::int64_t>(leaf));
      break;
    case Member::Kind::Float:
      if (static_cast<const MemFloat*>(leaf.access.getMember())->getNcType() == NcType::Float) {
        number.setValue(read<float>(leaf));
      } else {
        number.setValue(read<double>(leaf));
      }
      break;
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  return number;
}

bool holdsInvalid(const MemFloat& member, const Leaf& leaf) {
  if (member.getNcType() != NcType::Float) return member.isInvalid(read<double>(leaf));
  // The single that encode stores for a marker that no single equals.
  return member.hasInvalid() && read<float>(leaf) == static_cast<float>(member.getInvalid());
}

bool holdsInvalid(const Leaf& leaf) {
  const Member& member = *leaf.access.getMember();
  switch (member.getKind()) {
    case Member::Kind::Scalar:
      return static_cast<const MemScalar&>(member).isInvalid(read<std::int64_t>(leaf));
    case Member::Kind::Bitfield:
      return static_cast<const MemBitfield&>(member).isInvalid(
          static_cast<std::int16_t>(readBitfield(leaf)));
    case Member::Kind::Float:
      return holdsInvalid(static_cast<const MemFloat&>(member), leaf);
    case Member::Kind::Enum:
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
    case Member::Kind::Aggregate:
      break;
  }
  return false;
}

void changeEnum(const Leaf& leaf, EnumForm form, json::Value& shown) {
  if (form == EnumForm::Name) return;
  json::Value number;
  number.setValue(readEnum(leaf));
  if (form == EnumForm::Number) {
    shown = number;
    return;
  }
  json::Value both;
  both["name"] = shown;
  if (shown.asString() == number.asString()) both["name"].clear();
  both["number"] = number;
  shown = both;
}

// Lets arrays have their full size for a while.
class FullArrays {
 public:
  explicit FullArrays(TypeManager& manager)
      : _manager(manager), _isDynamic(manager.getUseDynamicArrays()) {
    _manager.setUseDynamicArrays(false);
  }
  FullArrays(const FullArrays&) = delete;
  FullArrays& operator=(const FullArrays&) = delete;
  ~FullArrays() { _manager.setUseDynamicArrays(_isDynamic); }

 private:
  TypeManager& _manager;
  bool _isDynamic;
};

json::Value decodeZeros(Catalogue& catalogue, const VarType& type, const base::Buffer& raw) {
  const FullArrays whileDecoding(catalogue.getManager());
  return catalogue.decode(type, raw);
}

base::Buffer makeZeros(unsigned byteCount) {
  base::Buffer raw;
  raw.setSize(byteCount);
  return raw;
}

}  // namespace

std::string leafName(const std::string& path) {
  return path.empty() ? "value" : path;
}

TypeLeaves::TypeLeaves(Catalogue& catalogue, const VarType& type)
    : raw(makeZeros(catalogue.getSize(type))),
      access(&catalogue.getManager(), &type, catalogue.getOptions().order, raw),
      decoded(decodeZeros(catalogue, type, raw)),
      leaves(findLeaves(access, decoded)) {}

ValueShape::ValueShape(Catalogue& catalogue, const ShapeOptions& options)
    : _catalogue(catalogue), _options(options), _isPlain(options.isPlain()) {
  if (options.isChangingMembers() && catalogue.getOptions().useDynamicArrays) {
    throw Failure(kWrongUsage,
                  "--enum, --raw-too and --null-invalid need arrays at their full size: they do "
                  "not go with --dynamic-arrays");
  }
  for (const std::string& path : options.paths) {
    if (path.empty()) throw Failure(kWrongUsage, "--select needs the path of a member");
    _paths.emplace_back(path);
  }
}

// True for a chosen member and all that is inside it.
bool ValueShape::isChosen(const std::string& path) const {
  const auto holds = [&](const std::string& chosen) {
    return path.compare(0, chosen.size(), chosen) == 0 &&
           (path.size() == chosen.size() || path[chosen.size()] == '.' ||
            path[chosen.size()] == '[');
  };
  return _options.paths.empty() || std::any_of(_options.paths.begin(), _options.paths.end(), holds);
}

ValueShape::Plan& ValueShape::findPlan(const VarType& type) {
  const auto found = _plans.find(&type);
  if (found != _plans.end()) return *found->second;

  auto plan = std::make_unique<Plan>(_catalogue, type);
  for (const MemberPath& path : _paths) path.get(plan->type.decoded);
  for (const Leaf& leaf : plan->type.leaves) {
    if (!isNumber(leaf)) continue;
    plan->numbers.push_back({MemberPath(leaf.path), &leaf, isChosen(leaf.path)});
  }
  return *_plans.emplace(&type, std::move(plan)).first->second;
}

void ValueShape::changeMembers(const VarType& type, const base::Buffer& raw, json::Value& value,
                               json::Value& rawNumbers) {
  if (!_options.isChangingMembers()) return;
  Plan& plan = findPlan(type);
  const unsigned size = plan.type.raw.getSize();
  plan.type.raw = raw;
  plan.type.raw.setSize(size);  // decode reads zeros beyond the end
  if (_options.withRawNumbers) rawNumbers.switchType(json::JsonType::Object);
  for (const NumberLeaf& number : plan.numbers) {
    json::Value* shown = number.isChosen ? number.path.find(value) : nullptr;
    if (shown == nullptr) continue;
    if (_options.withRawNumbers)
      rawNumbers[leafName(number.path.getText())] = readRaw(*number.leaf);
    if (isEnum(*number.leaf)) {
      changeEnum(*number.leaf, _options.enumForm, *shown);
    } else if (_options.isInvalidNull && holdsInvalid(*number.leaf)) {
      shown->clear();
    }
  }
}

void ValueShape::chooseMembers(const VarType& type, json::Value& value) {
  if (_paths.empty()) return;
  findPlan(type);
  json::Value chosen;
  for (const MemberPath& path : _paths) {
    const json::Value* member = path.find(value);
    chosen[path.getText()] = member == nullptr ? json::Value() : *member;
  }
  value = std::move(chosen);
}

std::vector<ShapeColumn> ValueShape::makeColumns(const VarType& type) {
  std::vector<ShapeColumn> columns;
  for (const Leaf& leaf : findPlan(type).type.leaves) {
    if (!isChosen(leaf.path)) continue;
    const std::string name = leafName(leaf.path);
    const bool isBoth = isEnum(leaf) && _options.enumForm == EnumForm::Both;
    const std::string base = leaf.path.empty() ? "" : leaf.path + ".";
    columns.push_back({name, MemberPath(isBoth ? base + "name" : leaf.path)});
    if (isBoth) columns.push_back({name + ".number", MemberPath(base + "number")});
    if (_options.withRawNumbers && isNumber(leaf)) {
      columns.push_back({name + ".raw", MemberPath(""), ShapeColumn::Cell::RawNumber});
    }
    if (columns.size() > kMostColumns) {
      throw Failure(kProblem, displayName(type) + " has more than " + std::to_string(kMostColumns) +
                                  " members: choose some with --select");
    }
  }
  return columns;
}

std::vector<ShapeColumn> ValueShape::makeColumns() const {
  std::vector<ShapeColumn> columns;
  for (const MemberPath& path : _paths) {
    if (_options.enumForm != EnumForm::Both) {
      columns.push_back({path.getText(), path});
      continue;
    }
    columns.push_back({path.getText(), path, ShapeColumn::Cell::EnumName});
    columns.push_back({path.getText() + ".number", path, ShapeColumn::Cell::EnumNumber});
  }
  return columns;
}

}  // namespace zavri::korvat::tool
