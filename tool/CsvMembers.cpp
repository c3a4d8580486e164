#include "tool/CsvMembers.h"

#include <algorithm>
#include <utility>

#include "korvat/members/Member.h"
#include "tool/ValueShape.h"

namespace zavri::korvat::tool {

namespace {

// A number for a member that shows one; what is no number is left to the conversion to refuse.
json::Value readCell(const std::string& text, bool isText) {
  json::Value value;
  std::string error;
  if (isText || !json::Value::parse(text, value, error) || !value.isNumber()) value = text;
  return value;
}

bool isCharText(const Leaf& leaf) {
  const Member* member = leaf.access.getMember();
  return leaf.shown->isString() && !leaf.isInUnion && member != nullptr &&
         member->getKind() == Member::Kind::Scalar && member->isArray();
}

}  // namespace

const std::vector<CsvMembers::MemberColumn>& CsvMembers::findMembers(const VarType& type) {
  const auto found = _members.find(&type);
  if (found != _members.end()) return found->second;

  const TypeLeaves typeLeaves(_catalogue, type);
  std::vector<MemberColumn> members;
  std::string names;
  for (const Leaf& leaf : typeLeaves.leaves) {
    const std::string name = leafName(leaf.path);
    if (members.empty() && names.size() < 200) names += (names.empty() ? "" : ", ") + name;
    const bool isRecordProperty = name == "type" || name == "raw" || name == "error";
    if (isRecordProperty || std::find(_columns.begin(), _columns.end(), name) == _columns.end()) {
      continue;
    }
    members.push_back({name, MemberPath(leaf.path), leaf.shown->isString(), isCharText(leaf)});
  }
  if (members.empty()) {
    throw Failure(kProblem, "no column is named like a member of " + displayName(type) +
                                "; its members are: " + names);
  }
  return _members.emplace(&type, std::move(members)).first->second;
}

void CsvMembers::gather(const VarType& type, json::Value& record) {
  const std::vector<MemberColumn>& members = findMembers(type);
  json::Value value;
  for (const MemberColumn& member : members) {
    const std::string text = std::as_const(record)[member.column].asString();
    if (text.empty() && !member.isEmptyText) continue;
    member.path.make(value) = readCell(text, member.isText);
  }
  json::Value gathered;
  for (const auto& [name, field] : record.getPropertyMap()) {
    const bool isMember =
        std::any_of(members.begin(), members.end(),
                    [&name = name](const auto& member) { return member.column == name; });
    if (!isMember) gathered[name] = field;
  }
  gathered["value"] = std::move(value);
  record = std::move(gathered);
}

}  // namespace zavri::korvat::tool
