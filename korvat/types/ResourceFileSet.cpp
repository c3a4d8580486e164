#include "korvat/types/ResourceFileSet.h"

#include <array>
#include <new>
#include <string_view>
#include <utility>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/FileUtils.h"
#include "korvat/base/Logger.h"
#include "korvat/builder/ResourceBuilder.h"
#include "korvat/members/Limits.h"
#include "korvat/types/CpType.h"
#include "korvat/types/DisplayFormats.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/NvType.h"
#include "korvat/types/ResourceGroupFp.h"
#include "korvat/types/TypeManager.h"

namespace zavri::korvat {

using base::Logger;

namespace {

constexpr std::size_t kUsagePosition = 10;  // of the usage byte's two digits in a prefix
constexpr std::size_t kScopePosition = 17;  // of the scope digit in a prefix

// Bits of the usage byte that its mask takes away, in the order they are tried.
constexpr std::array<std::uint8_t, 3> kUsageVariants{0x80, 0x40, 0xC0};

std::unique_ptr<ResourceGroup> makeGroup(ResourceType type, const ResourceFileSet* fileSet) {
  switch (type) {
    case ResourceType::Enum:
      return std::make_unique<TResourceGroup<EnumType>>(fileSet);
    case ResourceType::Nv:
      return std::make_unique<TResourceGroup<NvType>>(fileSet);
    case ResourceType::Cp:
      return std::make_unique<TResourceGroup<CpType>>(fileSet);
    case ResourceType::Fp:
      return std::make_unique<ResourceGroupFp>(fileSet);
    case ResourceType::Invalid:
      break;
  }
  return nullptr;
}

bool scopeCountsUsage(const std::string& prefix) {
  if (prefix.size() <= kScopePosition) return false;
  return std::string_view("256").find(prefix[kScopePosition]) != std::string_view::npos;
}

// `prefix` with `bits` set in its usage byte; as it is when there are no two digits there.
std::string withUsageBits(const std::string& prefix, std::uint8_t bits) {
  base::Buffer usage;
  if (util::BinaryUtils::stringToBuffer(usage, prefix.substr(kUsagePosition, 2), 0) != 1) {
    return prefix;
  }
  usage.getData()[0] |= bits;
  std::string variant = prefix;
  return variant.replace(kUsagePosition, 2, util::BinaryUtils::toString(usage));
}

// Counts a load while it is under way.
class LoadCount {
 public:
  explicit LoadCount(unsigned* count) : _count(count) {
    if (_count != nullptr) ++*_count;
  }
  LoadCount(const LoadCount&) = delete;
  LoadCount& operator=(const LoadCount&) = delete;
  ~LoadCount() {
    if (_count != nullptr) --*_count;
  }

  bool isTooDeep() const { return _count != nullptr && *_count > kMaxNestedLoads; }

 private:
  unsigned* _count;
};

// What follows the reading of a file of variable types.
void finishVarTypes(ResourceGroup& group, TypeManager* typeManager) {
  buildDisplayFormats(group, typeManager);
  for (const auto& [name, type] : group.getTypesByName()) {
    auto* varType = dynamic_cast<VarType*>(type.get());
    if (varType == nullptr) {
      Logger::warning("[korvat] not a VarType: %s\n", type->getTypeId().toString().c_str());
    } else {
      varType->resolveDiscriminators();
    }
  }
}

}  // namespace

ResourceFileSet::ResourceFileSet(const TypeManager* owner, const char* folder)
    : _baseDir(owner->getBaseDir()), _folder(folder) {
  Logger::debug("[ResourceFileSet::ResourceFileSet] folder: %s\n", folder);
}

ResourceFileSet::~ResourceFileSet() = default;

std::string ResourceFileSet::locateFolder(const std::string& baseDir, const std::string& prefix) {
  std::string folder = util::FileUtils::locateFolder(baseDir, prefix, false);
  if (folder.empty() && scopeCountsUsage(prefix)) {
    for (const std::uint8_t bits : kUsageVariants) {
      folder = util::FileUtils::locateFolder(baseDir, withUsageBits(prefix, bits), false);
      if (!folder.empty()) break;
    }
  }
  Logger::debug("[ResourceFileSet::locateFolder] baseDir='%s' prefix='%s' ==> '%s'\n",
                baseDir.c_str(), prefix.c_str(), folder.c_str());
  return folder.empty() ? prefix : folder;
}

const char* ResourceFileSet::getFileName(ResourceType type) {
  switch (type) {
    case ResourceType::Enum:
      return "enums";
    case ResourceType::Nv:
      return "nvs";
    case ResourceType::Cp:
      return "cps";
    case ResourceType::Fp:
      return "fps";
    case ResourceType::Invalid:
      break;
  }
  return "";
}

std::optional<ResourceFileSet::Place> ResourceFileSet::getPlaceUnderWay() const {
  if (_builderUnderWay == nullptr) return std::nullopt;
  return Place{_groupUnderWay, _builderUnderWay->getLine()};
}

bool ResourceFileSet::isGroup(ResourceType type) {
  return type >= ResourceType::Enum && type <= ResourceType::Fp;
}

std::unique_ptr<ResourceGroup>* ResourceFileSet::findSlot(ResourceType type) {
  return isGroup(type) ? &_groups[static_cast<std::size_t>(type)] : nullptr;
}

const ResourceGroup* ResourceFileSet::getGroup(ResourceType type, bool showWarnings,
                                               TypeManager* typeManager) {
  std::unique_ptr<ResourceGroup>* slot = findSlot(type);
  if (slot == nullptr) return nullptr;
  if (*slot) return slot->get();

  const LoadCount count(typeManager == nullptr ? nullptr : &typeManager->_loadsUnderWay);
  if (count.isTooDeep()) {
    Logger::warning("[korvat] too many resource files that need each other: %s in %s\n",
                    getFileName(type), _folder.c_str());
    return nullptr;
  }
  *slot = makeGroup(type, this);
  try {
    if (!loadResources(type, showWarnings, typeManager)) slot->reset();
  } catch (...) {
    _groupUnderWay = ResourceType::Invalid;
    _builderUnderWay = nullptr;
    slot->reset();  // nobody may find a group that is only half read
    throw;
  }
  return slot->get();
}

const ResourceGroup* ResourceFileSet::getLoadedGroup(ResourceType type) const {
  if (!isGroup(type) || type == _groupUnderWay) return nullptr;
  return _groups[static_cast<std::size_t>(type)].get();
}

bool ResourceFileSet::loadResources(ResourceType type, bool showWarnings,
                                    TypeManager* typeManager) {
  if (_folder.empty()) return false;

  const std::string root = _baseDir.empty() ? util::FileUtils::getDefaultBaseDir() : _baseDir + "/";
  const std::string path = root + _folder + "/" + getFileName(type) + ".xml";
  Logger::debug("[ResourceFileSet::loadResources][%s] going to load %s\n", resourceTypeName(type),
                path.c_str());

  builder::ResourceBuilder builder(*this);
  _groupUnderWay = type;
  _builderUnderWay = &builder;
  const bool isLoaded = builder.load(path, showWarnings);
  _builderUnderWay = nullptr;
  _groupUnderWay = ResourceType::Invalid;
  // Whoever needs the types must not take them for missing.
  if (builder.isOutOfMemory()) throw std::bad_alloc();
  if (!isLoaded) return false;
  if (type == ResourceType::Nv || type == ResourceType::Cp) {
    finishVarTypes(**findSlot(type), typeManager);
  }
  return true;
}

bool ResourceFileSet::addType(ResourceType group, std::unique_ptr<BaseType> type) {
  // A group that is loaded takes nothing any more: the new type could replace one that is in use.
  if (group != _groupUnderWay || !type) return false;
  const std::unique_ptr<ResourceGroup>* slot = findSlot(group);
  if (slot == nullptr || !*slot) return false;

  TypeId& typeId = type->getTypeId();
  typeId.setPrefix(_folder);
  if (typeId.getScope() == Scope::InvalidScope) typeId.setPrefix("");
  return (*slot)->internalAddType(std::move(type));
}

}  // namespace zavri::korvat
