#include "korvat/base/FileUtils.h"

#include <dirent.h>

#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

#include "korvat/base/StringUtils.h"

namespace zavri::util {

namespace {

namespace fs = std::filesystem;

bool isFolderName(const std::string& name) {
  if (name.empty() || name == "." || name == "..") return false;

  constexpr std::string_view kForbidden("/\\\0", 3);
  return name.find_first_of(kForbidden) == std::string::npos;
}

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

// The one folder in `base` equal to `name` but for case; empty when there is none or more than one.
// Goes without the standard directory iterator: that of libstdc++ ends the program when memory runs
// out.
std::string findIgnoringCase(const fs::path& base, const std::string& name) {
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(base.c_str()));
  if (!folder) return std::string();

  std::string found;
  while (const dirent* entry = readdir(folder.get())) {
    const std::string candidate = entry->d_name;
    std::error_code unreadable;  // such an entry is no folder for us
    if (!StringUtils::equalsIgnoreCase(candidate, name) ||
        !fs::is_directory(base / candidate, unreadable)) {
      continue;
    }
    if (!found.empty()) return std::string();
    found = candidate;
  }
  return found;
}

}  // namespace

const std::string& FileUtils::getDefaultBaseDir() {
  static const std::string kBaseDir = "res/korvat/";
  return kBaseDir;
}

std::string FileUtils::locateFolder(const std::string& baseDir, const std::string& name,
                                    bool exactCase) {
  if (!isFolderName(name) || baseDir.find('\0') != std::string::npos) return std::string();

  const fs::path base = baseDir.empty() ? getDefaultBaseDir() : baseDir;
  std::error_code error;
  if (fs::is_directory(base / name, error)) return name;
  return exactCase ? std::string() : findIgnoringCase(base, name);
}

}  // namespace zavri::util
