#include "tool/SetFolders.h"

#include <filesystem>

namespace zavri::korvat::tool {

namespace fs = std::filesystem;

SetFolders findSetFolders(TypeManager& manager) {
  SetFolders folders;
  const std::string baseDir = manager.getBaseDir();
  const auto ignore = [&](const std::string& folder, const std::string& reason) {
    folders.ignored.push_back({baseDir + "/" + folder, 0, Severity::Warning, "", reason});
  };
  for (const fs::directory_entry& entry : fs::directory_iterator(baseDir)) {
    const std::string folder = entry.path().filename().string();
    if (!entry.is_directory()) continue;
    const TypeId id(ResourceType::Nv, folder, "");
    if (id.getScope() == Scope::InvalidScope) {
      ignore(folder,
             "the folder is named after no set (16 hexadecimal digits, '-', a scope from 0 to 6): "
             "nobody finds its types");
      continue;
    }
    ResourceFileSet& set = manager.getResourceFileSet(id.getPrefix());
    if (set.getFolder() == folder) {
      folders.sets[folder] = &set;
    } else {
      ignore(folder, "the folder is hidden by " + set.getFolder() + ", which has the same prefix");
    }
  }
  return folders;
}

std::string getFilePath(const TypeManager& manager, const std::string& folder, ResourceType kind) {
  return manager.getBaseDir() + "/" + folder + "/" + ResourceFileSet::getFileName(kind) + ".xml";
}

Failure noCatalogue(const TypeManager& manager) {
  return Failure(kNotFound, "no catalogue: '" + manager.getBaseDir() +
                                "' holds no resource set; expected folders such as " +
                                TypeId::StdPrefix + " with " +
                                ResourceFileSet::getFileName(ResourceType::Nv) + ".xml");
}

}  // namespace zavri::korvat::tool
