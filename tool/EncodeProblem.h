#pragma once

#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "tool/Catalogue.h"

namespace zavri::korvat::tool {

// The error for a problem that the library has met with the JSON value `given`: where in the raw
// value the member lies, what it takes, and which names may have been meant. `moreCount` problems
// are only counted.
Failure explainProblem(Catalogue& catalogue, const VarType& type, const json::Value& given,
                       const JsonConverter::Problem& problem, std::size_t moreCount);

}  // namespace zavri::korvat::tool
