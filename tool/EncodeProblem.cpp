#include "tool/EncodeProblem.h"

#include <algorithm>

#include "korvat/base/StringUtils.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemBitfield.h"
#include "korvat/members/MemEnum.h"
#include "korvat/members/MemFloat.h"
#include "korvat/members/MemScalar.h"
#include "korvat/members/Value.h"
#include "korvat/types/EnumType.h"
#include "tool/JsonPath.h"
#include "tool/Leaves.h"
#include "tool/NearestName.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

// What a member takes, and the names it knows.
struct Expectation {
  std::string text;  // "0 to 100 percent of full level"; may be empty
  std::vector<std::string> names;
};

// The limits as decode shows them, the smaller one first.
template <typename M>
std::string limitsText(const M& member) {
  if (!member.hasMin() || !member.hasMax()) return "a number";
  double low = member.toPhysical(member.getMin());
  double high = member.toPhysical(member.getMax());
  if (low > high) std::swap(low, high);
  std::string text = util::StringUtils::toString(low) + " to " + util::StringUtils::toString(high);
  if (!member.getUnit().empty()) text += " " + member.getUnit();
  return text;
}

std::vector<std::string> childNames(const MemAggregate& aggregate) {
  std::vector<std::string> names;
  for (const auto& child : aggregate.getChildren()) {
    if (child) names.push_back(child->getProgName());
  }
  return names;
}

std::vector<std::string> enumeratorNames(const EnumType& type) {
  std::vector<std::string> names;
  for (const auto& [name, value] : type.getItemsByName()) names.push_back(name);
  return names;
}

Expectation expectationOf(TypeManager& manager, const MemberValue& place) {
  const Member& member = *place.getMember();
  if (member.isArray() && place.getElementIndex() < 0) return {};
  switch (member.getKind()) {
    case Member::Kind::Scalar:
      return {limitsText(static_cast<const MemScalar&>(member)), {}};
    case Member::Kind::Float:
      return {limitsText(static_cast<const MemFloat&>(member)), {}};
    case Member::Kind::Bitfield:
      return {limitsText(static_cast<const MemBitfield&>(member)), {}};
    case Member::Kind::Enum: {
      const EnumType* type = static_cast<const MemEnum&>(member).resolveEnum(&manager);
      if (type == nullptr) return {};
      return {"a name or number of " + type->getName(), enumeratorNames(*type)};
    }
    case Member::Kind::Aggregate: {
      std::vector<std::string> names = childNames(static_cast<const MemAggregate&>(member));
      return {"an object of " + joinNames(names), std::move(names)};
    }
    case Member::Kind::Invalid:
    case Member::Kind::Ref:
      break;
  }
  return {};
}

// The name that nothing is called: that of an enumerator, or of a member.
std::string unknownName(const json::Value& node, const std::vector<std::string>& names) {
  if (node.isString()) return node.asString();
  for (const auto& [name, value] : node.getPropertyMap()) {
    if (std::find(names.begin(), names.end(), name) == names.end()) return name;
  }
  return "";
}

json::Value findGiven(const json::Value& root, const std::string& path) {
  try {
    return select(root, path);
  } catch (const Failure&) {  // it is missing
    return {};
  }
}

}  // namespace

Failure explainProblem(Catalogue& catalogue, const VarType& type, const json::Value& given,
                       const JsonConverter::Problem& problem, std::size_t moreCount) {
  base::Buffer raw;
  raw.setSize(catalogue.getSize(type));
  TypeManager& manager = catalogue.getManager();
  const Value access(&manager, &type, catalogue.getOptions().order, raw);
  const MemberValue place = access[problem.path];
  const json::Value node = findGiven(given, problem.path);

  std::string message = "cannot encode " + displayName(type) + ": " +
                        (problem.path.empty() ? "" : problem.path + ": ") + problem.text;
  json::Value byte;
  json::Value bit;
  Expectation expected;
  if (place.isValid()) {
    byte = firstByteOf(manager, place);
    if (place.getMember()->getKind() == Member::Kind::Bitfield) {
      bit = std::int32_t{static_cast<const MemBitfield*>(place.getMember())->getSlot().offset};
    }
    // What has no path is the value as a whole.
    if (!problem.path.empty()) {
      message +=
          " (byte " + byte.asString() + (bit.isNull() ? "" : ", bit " + bit.asString()) + ")";
    }
    expected = expectationOf(manager, place);
    // What the library says about an enumeration tells already that it takes names and numbers.
    const bool isSaid = place.getMember()->getKind() == Member::Kind::Enum;
    if (!expected.text.empty() && !isSaid) message += "; expected " + expected.text;
  }
  const std::vector<std::string> nearest =
      findNearest(unknownName(node, expected.names), expected.names);
  message += didYouMean(nearest);
  if (moreCount > 0) {
    message +=
        " (and " + std::to_string(moreCount) + " more problem" + (moreCount == 1 ? ")" : "s)");
  }

  Failure failure(kProblem, message);
  failure.with("type", displayName(type)).with("member", problem.path);
  if (!byte.isNull()) failure.with("byte", byte);
  if (!bit.isNull()) failure.with("bit", bit);
  if (!node.isNull()) failure.with("given", node);
  if (!expected.text.empty()) failure.with("expected", expected.text);
  return failure.with("nearest", nearest);
}

}  // namespace zavri::korvat::tool
