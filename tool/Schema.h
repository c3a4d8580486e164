#pragma once

#include "korvat/base/Value.h"
#include "korvat/types/VarType.h"
#include "tool/Catalogue.h"

namespace zavri::korvat::tool {

// Members beyond which a type gets no schema: a few types can describe billions of them.
inline constexpr unsigned kMaxSchemaMembers = 100'000;

// The JSON Schema (draft 2020-12) of the JSON values of a type, as the options of the catalogue
// shape them. It takes every value that decode shows and encode takes without cutting:
//
//   structure        object, every member required
//   union            object of its alternatives, one of them at least and within its limits, or
//                    hexadecimal text
//   array            array of that many elements; a dynamic one has from its least to its most
//   text             string of at most that many characters
//   number           its limits as they are shown, and beside them its invalid marker
//   enumeration      string: one of the names, or the decimal number of a value without one
//
// What a character encoding in the value itself decides may be text or an array. "title" names the
// type that a part comes from, "unit" is the unit of a number. Throws Failure when the layout
// cannot be followed, or has more than kMaxSchemaMembers.
json::Value makeSchema(Catalogue& catalogue, const VarType& type);

}  // namespace zavri::korvat::tool
