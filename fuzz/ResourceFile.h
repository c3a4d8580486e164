#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "fuzz/Fuzzing.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/format/Format.h"
#include "korvat/types/FpType.h"

namespace zavri::korvat::fuzz {

// A catalogue of one set, in memory as far as the system has a folder for that. The library opens
// files by name only, and twice; they stay open here to be overwritten.
class ResourceFolder {
 public:
  ResourceFolder() {
    namespace fs = std::filesystem;
    const fs::path memory = "/dev/shm";
    const fs::path parent = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    _baseDir = parent / ("korvat-fuzz-" + std::to_string(::getpid()));
    fs::create_directories(_baseDir / TypeId::StdPrefix);
  }
  ResourceFolder(const ResourceFolder&) = delete;
  ResourceFolder& operator=(const ResourceFolder&) = delete;
  ~ResourceFolder() {
    for (const auto& [kind, file] : _files) ::close(file);
    std::error_code ignored;
    std::filesystem::remove_all(_baseDir, ignored);
  }

  // Makes those bytes the file of a kind.
  void write(ResourceType kind, const void* data, std::size_t size) {
    int& file = _files.try_emplace(kind, -1).first->second;
    if (file < 0) {
      const std::string name = std::string(ResourceFileSet::getFileName(kind)) + ".xml";
      const std::filesystem::path path = _baseDir / TypeId::StdPrefix / name;
      file = ::open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, 0600);
      require(file >= 0);
    }
    require(::ftruncate(file, 0) == 0);
    require(::pwrite(file, data, size, 0) == static_cast<ssize_t>(size));
  }
  std::string getBaseDir() const { return _baseDir.string(); }

 private:
  std::filesystem::path _baseDir;
  std::map<ResourceType, int> _files;
};

// Does what applications do with a type that values have. Types may be huge: those are only
// measured.
inline void useVarType(TypeManager& manager, const VarType& type) {
  constexpr unsigned kLargest = 1024;  // bytes
  unsigned size = 0;
  if (!type.getMaxSize(&manager, size) || size > kLargest) return;

  base::Buffer raw;
  raw.setSize(size);
  json::Value value;
  JsonConverter converter(&manager, type, base::Endianess::Big, false);
  if (!converter.rawToJson(raw, value)) return;
  static_cast<void>(converter.jsonToRaw(value, raw));
  static_cast<void>(type.convertPacket(&manager, base::Endianess::Big, raw));
  if (type.getFormat() != nullptr) static_cast<void>(type.getFormat()->getFields());
}

inline void useProfile(const FpType& profile) {
  for (const auto kind : {DpRef::DpType::Nv, DpRef::DpType::Cp}) {
    const DpRef* const datapoint = profile.getDpRefByIndex(kind, 1);
    if (datapoint != nullptr) static_cast<void>(datapoint->getTypeId().toString());
  }
}

// Uses the first types of a group.
inline void useGroup(TypeManager& manager, const ResourceGroup& group) {
  constexpr int kMostTypes = 4;
  int count = 0;
  for (const auto& [name, type] : group.getTypesByName()) {
    if (++count > kMostTypes) break;
    require(group.getType(name) == type.get());
    if (const auto* varType = dynamic_cast<const VarType*>(type.get())) {
      useVarType(manager, *varType);
    } else if (const auto* profile = dynamic_cast<const FpType*>(type.get())) {
      useProfile(*profile);
    }
  }
}

// Loads an input as the file of that kind and uses what is in it.
inline int loadResourceFile(ResourceType kind, const std::uint8_t* data, std::size_t size) {
  static ResourceFolder folder;
  silenceLogger();
  folder.write(kind, data, size);

  TypeManager manager("drv");
  manager.setBaseDir(folder.getBaseDir());
  const ResourceGroup* const group =
      manager.getResourceFileSet(TypeId::StdPrefix).getGroup(kind, true, &manager);
  if (group != nullptr) useGroup(manager, *group);
  return 0;
}

}  // namespace zavri::korvat::fuzz
