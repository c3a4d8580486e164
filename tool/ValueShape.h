#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "korvat/members/Value.h"
#include "tool/Catalogue.h"
#include "tool/JsonPath.h"
#include "tool/Leaves.h"

namespace zavri::korvat::tool {

// How the enumerations of a decoded value are shown.
enum class EnumForm {
  Name,    // as decode does
  Number,  // -128 to 127
  Both,    // {"name":"DAY_TUE","number":2}; the name of a number without one is null
};

// What the command line says about the form of decoded values.
struct ShapeOptions {
  std::vector<std::string> paths;  // members to keep; all when empty
  EnumForm enumForm = EnumForm::Name;
  bool withRawNumbers = false;
  bool isInvalidNull = false;

  bool isChangingMembers() const {
    return enumForm != EnumForm::Name || withRawNumbers || isInvalidNull;
  }
  bool isPlain() const { return paths.empty() && !isChangingMembers(); }
};

// One cell of a row that holds a decoded value.
struct ShapeColumn {
  enum class Cell {
    Member,      // what is found at the path
    RawNumber,   // found in the raw numbers, under the column's name without ".raw"
    EnumName,    // of a member whose kind the column does not know: its name in EnumForm::Both, or
                 // the member when it is no enumeration
    EnumNumber,  // its number in EnumForm::Both; nothing when it is no enumeration
  };

  std::string name;
  MemberPath path;
  Cell cell = Cell::Member;
};

// The path of a leaf as the name of a column or of a raw number: "value" for the value itself.
std::string leafName(const std::string& path);

// The leaves that zeros of a type are decoded to, arrays at their full size. Used where it was
// made.
struct TypeLeaves {
  TypeLeaves(Catalogue& catalogue, const VarType& type);
  TypeLeaves(const TypeLeaves&) = delete;
  TypeLeaves& operator=(const TypeLeaves&) = delete;

  base::Buffer raw;  // what the leaves give access to
  Value access;
  json::Value decoded;
  std::vector<Leaf> leaves;
};

// Brings decoded values into the form of the options. What it has to know about a type is found
// out once. Throws Failure for a path that leads to no member of a type.
class ValueShape {
 public:
  // Throws kWrongUsage for options that do not go together. The catalogue must outlive it.
  ValueShape(Catalogue& catalogue, const ShapeOptions& options);

  bool isPlain() const { return _isPlain; }

  // Finds out about a type; so that its failure comes early.
  void prepare(const VarType& type) { findPlan(type); }

  // Changes what `raw` was decoded to, all but the choice of members. `rawNumbers` gets an object
  // of leaf names, or stays as it is without that option.
  void changeMembers(const VarType& type, const base::Buffer& raw, json::Value& value,
                     json::Value& rawNumbers);
  // Puts an object of the chosen members by their paths into the place of a value, where there is a
  // choice. A member that the value does not reach, such as an element of a short dynamic array,
  // is null.
  void chooseMembers(const VarType& type, json::Value& value);

  // A column for each leaf of the chosen members of a type. Throws when there are too many.
  std::vector<ShapeColumn> makeColumns(const VarType& type);
  // A column for each chosen member, whatever the type; two with EnumForm::Both.
  std::vector<ShapeColumn> makeColumns() const;

 private:
  // A leaf whose member is a number or an enumeration.
  struct NumberLeaf {
    MemberPath path;
    const Leaf* leaf;
    bool isChosen;
  };
  struct Plan {
    Plan(Catalogue& catalogue, const VarType& type) : type(catalogue, type) {}

    TypeLeaves type;
    std::vector<NumberLeaf> numbers;
  };

  Plan& findPlan(const VarType& type);
  bool isChosen(const std::string& path) const;

  Catalogue& _catalogue;
  ShapeOptions _options;
  bool _isPlain;
  std::vector<MemberPath> _paths;
  std::unordered_map<const VarType*, std::unique_ptr<Plan>> _plans;
};

}  // namespace zavri::korvat::tool
