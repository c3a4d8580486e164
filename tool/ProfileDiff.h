#pragma once

#include <vector>

#include "korvat/types/FpType.h"
#include "tool/TypeDiff.h"

namespace zavri::korvat::tool {

// Compares two versions of a functional profile: its key, the profile it inherits from and its
// datapoints, each with the one of its name. What has changed in an inherited profile or in the
// type of a datapoint is a change of that one.
std::vector<Change> compareProfiles(const FpType& oldType, const FpType& newType);

}  // namespace zavri::korvat::tool
