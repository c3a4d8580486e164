#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "fuzz/Fuzzing.h"
#include "korvat/base/Value.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/format/Format.h"
#include "korvat/types/FpType.h"

namespace zavri::korvat::fuzz {

// A catalogue of one file, in memory as far as the system has a folder for that. The library opens
// files by name only, and twice; the file stays open here to be overwritten.
class ResourceFile {
 public:
  explicit ResourceFile(ResourceType kind) {
    namespace fs = std::filesystem;
    const fs::path memory = "/dev/shm";
    const fs::path parent = fs::is_directory(memory) ? memory : fs::temp_directory_path();
    _baseDir = parent / ("korvat-fuzz-" + std::to_string(::getpid()));
    const fs::path folder = _baseDir / TypeId::StdPrefix;
    fs::create_directories(folder);
    const fs::path path = folder / (std::string(ResourceFileSet::getFileName(kind)) + ".xml");
    _file = ::open(path.c_str(), O_CREAT | O_RDWR | O_TRUNC | O_CLOEXEC, 0600);
    require(_file >= 0);
  }
  ResourceFile(const ResourceFile&) = delete;
  ResourceFile& operator=(const ResourceFile&) = delete;
  ~ResourceFile() {
    ::close(_file);
    std::error_code ignored;
    std::filesystem::remove_all(_baseDir, ignored);
  }

  void write(const std::uint8_t* data, std::size_t size) const {
    require(::ftruncate(_file, 0) == 0);
    require(::pwrite(_file, data, size, 0) == static_cast<ssize_t>(size));
  }
  std::string getBaseDir() const { return _baseDir.string(); }

 private:
  std::filesystem::path _baseDir;
  int _file = -1;
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

// Loads an input as the file of that kind and uses its first types.
inline int loadResourceFile(ResourceType kind, const std::uint8_t* data, std::size_t size) {
  constexpr int kMostTypes = 4;
  static const ResourceFile file(kind);
  silenceLogger();
  file.write(data, size);

  TypeManager manager("drv");
  manager.setBaseDir(file.getBaseDir());
  const ResourceGroup* const group =
      manager.getResourceFileSet(TypeId::StdPrefix).getGroup(kind, true, &manager);
  if (group == nullptr) return 0;

  int count = 0;
  for (const auto& [name, type] : group->getTypesByName()) {
    if (++count > kMostTypes) break;
    require(group->getType(name) == type.get());
    if (const auto* varType = dynamic_cast<const VarType*>(type.get())) {
      useVarType(manager, *varType);
    } else if (const auto* profile = dynamic_cast<const FpType*>(type.get())) {
      useProfile(*profile);
    }
  }
  return 0;
}

}  // namespace zavri::korvat::fuzz
