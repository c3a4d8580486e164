#include "tool/CsvMembers.h"

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

bool isRecordName(std::string_view name) {
  return name == "type" || name == "raw" || name == "error";
}

std::string CsvMembers::findColumn(const std::string& name,
                                   const std::unordered_set<std::string>& leafNames) const {
  // Where both are there, the one without the prefix was a column before the value was decoded.
  const std::string prefixed = kMemberPrefix + name;
  if (_columns.count(prefixed) != 0 && leafNames.count(prefixed) == 0) return prefixed;
  return isRecordName(name) || _columns.count(name) == 0 ? "" : name;
}

const CsvMembers::Members& CsvMembers::findMembers(const VarType& type) {
  const auto found = _members.find(&type);
  if (found != _members.end()) return found->second;

  const TypeLeaves typeLeaves(_catalogue, type);
  std::unordered_set<std::string> leafNames;
  for (const Leaf& leaf : typeLeaves.leaves) leafNames.insert(leafName(leaf.path));
  Members members;
  std::string names;
  for (const Leaf& leaf : typeLeaves.leaves) {
    const std::string name = leafName(leaf.path);
    if (members.columns.empty() && names.size() < 200) names += (names.empty() ? "" : ", ") + name;
    const std::string column = findColumn(name, leafNames);
    if (column.empty()) continue;
    members.columns.push_back(
        {column, MemberPath(leaf.path), leaf.shown->isString(), isCharText(leaf)});
    members.names.insert(column);
  }
  if (members.columns.empty()) {
    throw Failure(kProblem, "no column is named like a member of " + displayName(type) +
                                "; its members are: " + names);
  }
  return _members.emplace(&type, std::move(members)).first->second;
}

void CsvMembers::gather(const VarType& type, json::Value& record) {
  const Members& members = findMembers(type);
  json::Value value;
  for (const MemberColumn& member : members.columns) {
    const std::string text = std::as_const(record)[member.column].asString();
    if (text.empty() && !member.isEmptyText) continue;
    member.path.make(value) = readCell(text, member.isText);
  }
  json::Value gathered;
  for (const auto& [name, field] : record.getPropertyMap()) {
    if (members.names.count(name) == 0) gathered[name] = field;
  }
  gathered["value"] = std::move(value);
  record = std::move(gathered);
}

}  // namespace zavri::korvat::tool
