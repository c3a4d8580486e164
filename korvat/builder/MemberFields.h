#pragma once

#include <string>

#include "korvat/members/Member.h"

// Setters of one field of a member from its text in a definition. A member of a kind without the
// field is left alone, with a warning; a number that does not fit the field is cut to its range.
namespace zavri::korvat::builder {

enum class Limit { Min, Max, Invalid };

// Raw numbers, for all numeric kinds.
void setLimit(Member& member, Limit limit, const std::string& text);

enum class ScalingPart { A, B, C };

// For all numeric kinds; 16 bits wide.
void setScaling(Member& member, ScalingPart part, const std::string& text);

// Base type by its name, for scalars and floats. The name must be of an integer type for the one
// and of a floating type for the other. `fileSetName` is for the messages.
void setNcType(Member& member, const std::string& text, const std::string& fileSetName);

// For bit fields: "yes" or anything else, and two bit counts from 0 to 255.
void setBitfieldSigned(Member& member, const std::string& text);
void setBitfieldWidth(Member& member, const std::string& text);
void setBitfieldOffset(Member& member, const std::string& text);

// Elements, for all kinds. A negative number is refused and one above kMaxArraySize cut, both with
// a warning. An array without a minimum gets its size for one: it always has all its elements.
void setArrayMinSize(Member& member, const std::string& text);
void setArraySize(Member& member, const std::string& text);

}  // namespace zavri::korvat::builder
