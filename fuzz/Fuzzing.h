#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "korvat/base/Buffer.h"
#include "korvat/base/Logger.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/ResourceGroup.h"
#include "korvat/types/TypeManager.h"
#include "korvat/types/VarType.h"

// What the fuzz targets share.
namespace zavri::korvat::fuzz {

// Ends the run: the input is a finding.
inline void require(bool isTrue) {
  if (!isTrue) std::abort();
}

// Messages are formatted, so that their arguments are used, and dropped.
inline void silenceLogger() {
  static const base::Logger::Sink previous =
      base::Logger::setSink([](base::Logger::Level, const std::string&) {});
}

// Takes an input apart from its front. Behind its end there are zeros.
class Input {
 public:
  Input(const std::uint8_t* data, std::size_t size) : _data(data), _size(size) {}

  std::uint8_t takeByte() {
    if (_size == 0) return 0;
    --_size;
    return *_data++;
  }
  // Two bytes, the low one first.
  unsigned takeNumber() {
    const unsigned low = takeByte();
    return low + 256u * takeByte();
  }
  // Up to the next zero byte, which is passed over, or the end.
  std::string takeText() {
    const std::uint8_t* const end = std::find(_data, _data + _size, std::uint8_t{0});
    std::string text(_data, end);
    const std::size_t used = std::min(text.size() + 1, _size);
    _data += used;
    _size -= used;
    return text;
  }
  base::Buffer takeBytes(unsigned count) {
    const auto size = static_cast<unsigned>(std::min<std::size_t>(count, _size));
    const base::Buffer bytes(_data, size);
    _data += size;
    _size -= size;
    return bytes;
  }
  base::Buffer takeRest() { return takeBytes(~0u); }
  std::string takeRestAsText() {
    std::string text(reinterpret_cast<const char*>(_data), _size);
    _size = 0;
    return text;
  }

 private:
  const std::uint8_t* _data;
  std::size_t _size;
};

// The embedded catalogue and the types of it that values have, in a fixed order. Left out are those
// of large values, thousands of zeros for the most part: they take the time of all others together.
struct Types {
  static constexpr unsigned kLargest = 40;  // bytes

  Types() {
    silenceLogger();
    manager.setBaseDir(KORVAT_SOURCE_CATALOG);
    ResourceFileSet& fileSet = manager.getResourceFileSet(TypeId::StdPrefix);
    for (const ResourceType kind :
         {ResourceType::Enum, ResourceType::Fp, ResourceType::Nv, ResourceType::Cp}) {
      const ResourceGroup* const group = fileSet.getGroup(kind, true, &manager);
      require(group != nullptr);
      for (const auto& [name, type] : group->getTypesByName()) {
        const auto* varType = dynamic_cast<const VarType*>(type.get());
        unsigned size = 0;
        if (varType == nullptr || !varType->getMaxSize(&manager, size)) continue;
        if (size <= kLargest) all.push_back(varType);
      }
    }
    require(!all.empty());
  }

  TypeManager manager{"drv"};
  std::vector<const VarType*> all;
};

inline Types& getTypes() {
  static Types types;
  return types;
}

// What a target over values takes from the front of its input: a type and how it is converted.
struct ValueCase {
  explicit ValueCase(Input& input) : type(*findType(input)) {
    const unsigned bits = input.takeByte();
    const unsigned modes = input.takeByte();
    manager.setUseDynamicArrays((bits & 1) != 0);
    manager.setAllowMissingFields((bits & 2) != 0);
    manager.setAllowUndefinedFields((bits & 4) != 0);
    manager.setAllowCuttingToMinMax((bits & 8) == 0);
    manager.setSupportInvalidKeyword((bits & 16) != 0);
    allowSeveralUnionMembers = (bits & 32) != 0;
    if ((bits & 64) != 0) order = base::Endianess::Little;
    for (unsigned bit = 0; bit < 4; ++bit) {
      const auto mode = static_cast<TypeManager::UnionModeBit>(bit);
      if ((modes & (1u << bit)) != 0) {
        manager.setUnionModeBit(mode);
      } else {
        manager.clearUnionModeBit(mode);
      }
    }
  }

  TypeManager& manager = getTypes().manager;
  const VarType& type;
  base::Endianess order = base::Endianess::Big;
  bool allowSeveralUnionMembers = false;

 private:
  static const VarType* findType(Input& input) {
    return getTypes().all[input.takeNumber() % getTypes().all.size()];
  }
};

}  // namespace zavri::korvat::fuzz
