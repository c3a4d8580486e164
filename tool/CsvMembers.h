#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "tool/Catalogue.h"
#include "tool/JsonPath.h"

namespace zavri::korvat::tool {

// Values put together from the columns of a row that are named like leaves of their type, see
// leafName(). What it has to know about a type is found out once.
class CsvMembers {
 public:
  // The catalogue must outlive it.
  CsvMembers(Catalogue& catalogue, const std::vector<std::string>& columns)
      : _catalogue(catalogue), _columns(columns) {}

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

  const std::vector<MemberColumn>& findMembers(const VarType& type);

  Catalogue& _catalogue;
  std::vector<std::string> _columns;
  std::unordered_map<const VarType*, std::vector<MemberColumn>> _members;
};

}  // namespace zavri::korvat::tool
