#pragma once

#include <string>
#include <vector>

#include "korvat/types/TypeId.h"
#include "korvat/types/TypeManager.h"

namespace zavri::korvat {
class BaseType;
}

namespace zavri::korvat::tool {

// What a change breaks for those who keep to the old definition.
enum class Breaks {
  Wire,     // bytes: they mean something else, or stand somewhere else
  Json,     // the bytes stay, their JSON form is another
  Nothing,  // additions, and what people read
};

// One difference between two versions of a type; without file and line.
struct Change {
  Breaks breaks;
  std::string message;
};

// Compares two versions of a type of one kind. A reference that leads to the same name in both is
// no difference here: what has changed there is a change of that type. One that leads to another
// name is followed, and only notes remain when the members there are the same.
std::vector<Change> compareTypes(TypeManager& oldManager, const BaseType& oldType,
                                 TypeManager& newManager, const BaseType& newType);

// The types that `type` names: enumerations and types of its members; types of the datapoints of a
// profile and the profile it inherits from. Without those that stand for any type.
std::vector<TypeId> findReferences(const BaseType& type);

}  // namespace zavri::korvat::tool
