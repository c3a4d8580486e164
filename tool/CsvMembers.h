#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tool/Catalogue.h"
#include "tool/JsonPath.h"

namespace zavri::korvat::tool {

// Names of columns that a record has of its own. Members of these names, and those that a column of
// the input has taken, have columns with kMemberPrefix.
bool isRecordName(std::string_view name);
inline constexpr const char* kMemberPrefix = "value.";

// Values put together from the columns of a row that are named like leaves of their type, see
// leafName(), with kMemberPrefix or without. What it has to know about a type is found out once.
class CsvMembers {
 public:
  // The catalogue must outlive it.
  CsvMembers(Catalogue& catalogue, const std::vector<std::string>& columns)
      : _catalogue(catalogue), _columns(columns.begin(), columns.end()) {}

  // Takes the columns of the type out of a record of texts and puts "value" in their place. An
  // empty field gives a member no value, unless it is a text outside of unions. Throws Failure when
  // no column belongs to the type.
  void gather(const VarType& type, json::Value& record);
  // Throws as gather() does.
  void prepare(const VarType& type) { findMembers(type); }

 private:
  struct MemberColumn {
    std::string column;
    MemberPath path;
    bool isText;       // what is given is no number
    bool isEmptyText;  // an empty field is an empty text
  };

  struct Members {
    std::vector<MemberColumn> columns;
    std::unordered_set<std::string> names;  // of the columns
  };

  const Members& findMembers(const VarType& type);
  // The column of a member; empty when there is none.
  std::string findColumn(const std::string& name,
                         const std::unordered_set<std::string>& leafNames) const;

  Catalogue& _catalogue;
  std::unordered_set<std::string> _columns;
  std::unordered_map<const VarType*, Members> _members;
};

}  // namespace zavri::korvat::tool
