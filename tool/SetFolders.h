#pragma once

#include <array>
#include <map>
#include <string>
#include <vector>

#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/TypeManager.h"
#include "tool/Failure.h"
#include "tool/Finding.h"

namespace zavri::korvat::tool {

// The kinds of files of a set, those that others refer to first.
inline constexpr std::array<ResourceType, 4> kFileKinds{ResourceType::Enum, ResourceType::Nv,
                                                        ResourceType::Cp, ResourceType::Fp};

// The folders of a catalogue.
struct SetFolders {
  std::map<std::string, ResourceFileSet*> sets;  // by folder; they belong to the manager
  std::vector<Finding> ignored;                  // folders that nobody looks into, and why
};

// Looks into the base folder of the manager, which must exist. Loads nothing.
SetFolders findSetFolders(TypeManager& manager);

// "res/korvat/0000000000000000-0/nvs.xml"
std::string getFilePath(const TypeManager& manager, const std::string& folder, ResourceType kind);

// The error for a base folder that holds no file of any set.
Failure noCatalogue(const TypeManager& manager);

}  // namespace zavri::korvat::tool
