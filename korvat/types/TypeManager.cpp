#include "korvat/types/TypeManager.h"

#include <algorithm>
#include <stdexcept>

#include "korvat/base/Logger.h"
#include "korvat/base/ShortText.h"
#include "korvat/base/StringUtils.h"
#include "korvat/convert/ConversionPlan.h"
#include "korvat/convert/JsonConverter.h"
#include "korvat/convert/PlanCache.h"
#include "korvat/members/Value.h"
#include "korvat/types/FpType.h"
#include "korvat/types/ResourceFileSet.h"
#include "korvat/types/ResourceGroupFp.h"
#include "korvat/types/VarType.h"

namespace zavri::korvat {

using base::Logger;

namespace {

// True for an empty prefix too: searchFpType() has its own answer for it.
bool mayBePrefix(const std::string& text) {
  return text.empty() || text.size() == TypeId::StdPrefix.size();
}

// The prefix whose program ID begins with the other one of the digits 8 and 9; any other first
// digit stays.
std::string toAlternatePrefix(std::string prefix) {
  if (prefix[0] == '8') {
    prefix[0] = '9';
  } else if (prefix[0] == '9') {
    prefix[0] = '8';
  }
  return prefix;
}

}  // namespace

const std::string TypeManager::restTypePrefix = "/~/type/";
const std::string TypeManager::restTypeGenericDp = "/~/type/schema/fragment/dp";

TypeManager::TypeManager(const char* driverType)
    : _driverType(driverType == nullptr ? "" : driverType), _plans(std::make_unique<PlanCache>()) {}

TypeManager::TypeManager(const TypeManager& other) : TypeManager(nullptr) {
  *this = other;
}

TypeManager& TypeManager::operator=(const TypeManager& other) {
  if (this == &other) return *this;
  // Pointers from look-ups of either manager hold on.
  for (const auto& [prefix, fileSet] : _fileSets) retire(fileSet);
  for (const auto& fileSet : other._retiredFileSets) retire(fileSet);
  _fileSets = other._fileSets;
  _fileSetsByKey = other._fileSetsByKey;
  _standardFileSet = other._standardFileSet;
  _baseDir = other._baseDir;
  _driverType = other._driverType;
  _networkEndianess = other._networkEndianess;
  _useDynamicArrays = other._useDynamicArrays;
  _showWarnings = other._showWarnings;
  _allowMissingFields = other._allowMissingFields;
  _allowUndefinedFields = other._allowUndefinedFields;
  _allowCuttingToMinMax = other._allowCuttingToMinMax;
  _supportInvalidKeyword = other._supportInvalidKeyword;
  _unionModeBits = other._unionModeBits;
  _plans = std::make_unique<PlanCache>();
  return *this;
}

TypeManager::~TypeManager() = default;

void TypeManager::retire(const std::shared_ptr<ResourceFileSet>& fileSet) {
  const auto found = std::find(_retiredFileSets.begin(), _retiredFileSets.end(), fileSet);
  if (found == _retiredFileSets.end()) _retiredFileSets.push_back(fileSet);
}

ResourceFileSet& TypeManager::getResourceFileSet(const std::string& prefix) {
  // A set that exists is found without changing the map: threads may look up side by side.
  const auto found = _fileSets.find(prefix);
  if (found != _fileSets.end()) return *found->second;

  const std::shared_ptr<ResourceFileSet> fileSet = makeFileSet(prefix);
  addFileSet(prefix, fileSet);
  return *fileSet;
}

ResourceFileSet& TypeManager::getResourceFileSet(const TypeId& id) {
  ResourceFileSet* const fileSet = findFileSet(id);
  return fileSet != nullptr ? *fileSet : getResourceFileSet(id.getPrefix());
}

// By the key alone; a set that is not found this way may still exist.
ResourceFileSet* TypeManager::findFileSet(const TypeId& id) const {
  const std::uint8_t* const progId = id.getProgId().getBytes().data();
  if (id.isPrefixValid() && base::loadBytes<std::uint64_t>(progId) == 0) return _standardFileSet;
  if (id.getScope() == Scope::InvalidScope) return nullptr;

  const PrefixKey key = keyOf(id);
  const auto found =
      std::lower_bound(_fileSetsByKey.begin(), _fileSetsByKey.end(), key,
                       [](const auto& entry, const PrefixKey& k) { return entry.first < k; });
  return found != _fileSetsByKey.end() && found->first == key ? found->second : nullptr;
}

TypeManager::PrefixKey TypeManager::keyOf(const TypeId& id) {
  const base::ProgId masked = id.getScopeMaskedProgId();
  std::uint64_t progId = 0;
  for (const std::uint8_t byte : masked.getBytes()) progId = progId << 8 | byte;
  return {progId, id.getScope()};
}

void TypeManager::addFileSet(const std::string& prefix,
                             const std::shared_ptr<ResourceFileSet>& fileSet) {
  _fileSets.emplace(prefix, fileSet);
  if (prefix == TypeId::StdPrefix) _standardFileSet = fileSet.get();
  // Only a text that identifiers with this key spell alike has its set found by the key.
  const TypeId id(ResourceType::Nv, prefix, "");
  if (id.getScope() == Scope::InvalidScope || id.getPrefix() != prefix) return;

  const std::pair<PrefixKey, ResourceFileSet*> entry(keyOf(id), fileSet.get());
  _fileSetsByKey.insert(std::lower_bound(_fileSetsByKey.begin(), _fileSetsByKey.end(), entry),
                        entry);
}

std::shared_ptr<ResourceFileSet> TypeManager::makeFileSet(const std::string& prefix) {
  const std::string folder = ResourceFileSet::locateFolder(_baseDir, prefix);
  return std::make_shared<ResourceFileSet>(this, folder.c_str());
}

const BaseType* TypeManager::getType(const TypeId& id) {
  if (!id) return nullptr;

  ResourceFileSet& fileSet = getResourceFileSet(id);
  const ResourceGroup* group = fileSet.getLoadedGroup(id.getType());
  if (group == nullptr) group = fileSet.getGroup(id.getType(), _showWarnings, this);
  if (group == nullptr) {
    Logger::debug("[TypeManager::getType] no resource-group '%s' in file-set '%s'\n",
                  resourceTypeName(id.getType()), fileSet.getFolder().c_str());
    return nullptr;
  }
  return group->getType(id.getId());
}

const BaseType* TypeManager::getType(const std::string& text) {
  return getType(toTypeId(text));
}

const VarType* TypeManager::getVarType(const TypeId& id) {
  const BaseType* type = getType(id);
  return type == nullptr ? nullptr : type->asVarType();
}

const VarType* TypeManager::getVarType(const std::string& text) {
  return dynamic_cast<const VarType*>(getType(text));
}

const FpType* TypeManager::getFpType(const TypeId& id) {
  return dynamic_cast<const FpType*>(getType(id));
}

const FpType* TypeManager::getFpType(const std::string& text) {
  return dynamic_cast<const FpType*>(getType(text));
}

const BaseType* TypeManager::getTypeByIndex(const std::string& prefix, ResourceType type,
                                            std::int32_t index) {
  if (type == ResourceType::Invalid) return nullptr;

  ResourceFileSet& fileSet = getResourceFileSet(TypeId(type, prefix, ""));
  const ResourceGroup* group = fileSet.getGroup(type, false, this);
  if (group == nullptr) {
    Logger::debug("[TypeManager::getTypeByIndex] no resource-group '%s' in file-set '%s'\n",
                  resourceTypeName(type), fileSet.getFolder().c_str());
    return nullptr;
  }
  return group->getTypeByIndex(index);
}

const VarType* TypeManager::getVarTypeByIndex(const std::string& prefix, ResourceType type,
                                              std::int32_t index) {
  return dynamic_cast<const VarType*>(getTypeByIndex(prefix, type, index));
}

const FpType* TypeManager::getFpTypeByIndex(const std::string& prefix, std::int32_t index) {
  return dynamic_cast<const FpType*>(getTypeByIndex(prefix, ResourceType::Fp, index));
}

TypeId TypeManager::getTypeIdByIndex(const std::string& prefix, ResourceType type,
                                     std::int32_t index) {
  const BaseType* found = getTypeByIndex(prefix, type, index);
  return found == nullptr ? TypeId::None : TypeId(type, prefix, found->getName());
}

bool TypeManager::searchFpType(TypeId& id, std::int32_t key) {
  const std::string prefix = id.getPrefix();
  const auto found = _fileSets.find(prefix);
  const bool isKnown = found != _fileSets.end();
  const std::shared_ptr<ResourceFileSet> fileSet = isKnown ? found->second : makeFileSet(prefix);
  const auto* group =
      dynamic_cast<const ResourceGroupFp*>(fileSet->getGroup(ResourceType::Fp, false));
  if (group == nullptr) return false;
  if (!isKnown) addFileSet(prefix, fileSet);

  const FpType* profile = group->findByKey(key);
  if (profile == nullptr) return false;
  id.setId(profile->getName());
  return true;
}

TypeId TypeManager::searchFpType(const std::string& prefix, std::int32_t key) {
  if (!mayBePrefix(prefix)) return TypeId::None;
  // Not the standard set, as elsewhere: callers rely on the exception.
  if (prefix.empty()) throw std::out_of_range("invalid string position");

  TypeId primary(ResourceType::Fp, prefix, "");
  TypeId alternate(ResourceType::Fp, toAlternatePrefix(prefix), "");
  do {
    if (alternate != primary) {
      if (searchFpType(alternate, key)) return alternate;
      alternate.lowerScope();
    }
    if (searchFpType(primary, key)) return primary;
  } while (primary.lowerScope());
  return TypeId::None;
}

const DpRef* TypeManager::searchDpRef(const std::string& prefix, DpRef::DpType dpType,
                                      std::int32_t fpKey, std::int32_t index, bool useBase) {
  if (!mayBePrefix(prefix) || fpKey < 0 || index < 1) return nullptr;

  const FpType* profile = getFpType(searchFpType(prefix, fpKey));
  if (profile != nullptr && useBase) profile = getFpType(profile->getBase());
  if (profile == nullptr) return nullptr;
  return profile->getDpRefByIndex(dpType, static_cast<std::uint32_t>(index));
}

TypeId TypeManager::searchVarType(const std::string& prefix, DpRef::DpType dpType,
                                  std::int32_t fpKey, std::int32_t index, bool) {
  const DpRef* datapoint = searchDpRef(prefix, dpType, fpKey, index, false);
  return datapoint == nullptr ? TypeId::None : datapoint->getTypeId();
}

TypeId TypeManager::toTypeId(const std::string& text) const {
  std::string typeText = text;
  if (util::StringUtils::startsWith(text, restTypePrefix, 0)) {
    const std::size_t kindEnd = text.find('/', restTypePrefix.size());
    const std::size_t driverEnd =
        kindEnd == std::string::npos ? kindEnd : text.find('/', kindEnd + 1);
    typeText.clear();
    if (driverEnd != std::string::npos) {
      const std::string driver = text.substr(kindEnd + 1, driverEnd - kindEnd - 1);
      if (!driver.empty() && driver != _driverType) {
        Logger::trace("[TypeManager::toTypeId] probably wrong driver in type '%s'\n", text.c_str());
      }
      typeText = text.substr(driverEnd + 1);
    }
  }

  TypeId id;
  if (typeText.empty()) {
    Logger::warning("[TypeManager::toTypeId] wrong typeId '%s'\n", text.c_str());
  } else {
    id.fromString(typeText);
  }
  return id;
}

std::string TypeManager::toFullTypeId(const TypeId& id, bool isValue) const {
  if (id == TypeId::None) return "";
  if (id.isGenericNv()) return isValue ? "" : restTypeGenericDp;

  const char* kind = isValue ? "value/" : "dp/";
  if (id.getType() == ResourceType::Fp) kind = "fb/";
  return restTypePrefix + kind + _driverType + "/" + id.toString();
}

const ConversionPlan* TypeManager::findPlan(const TypeId& id, base::Endianess endianess) const {
  const bool isCovered =
      endianess == base::Endianess::Big && !_useDynamicArrays && !base::isLogged(Logger::Trace);
  if (!isCovered) return nullptr;
  const PlanCache::Entry* entry = _plans->find(id);
  return entry == nullptr ? nullptr : entry->plan.get();
}

void TypeManager::makePlan(const TypeId& id, const VarType& type) {
  if (_plans->find(id) != nullptr) return;
  bool isLoaded = true;
  const auto findType = [this, &isLoaded](const TypeId& refId) -> const BaseType* {
    const ResourceFileSet* fileSet = findFileSet(refId);
    const ResourceGroup* group =
        fileSet == nullptr ? nullptr : fileSet->getLoadedGroup(refId.getType());
    if (group == nullptr) isLoaded = false;
    return group == nullptr ? nullptr : group->getType(refId.getId());
  };
  _plans->add(id, type, findType, isLoaded);
}

bool TypeManager::rawToJson(const TypeId& id, const base::Buffer& buffer, json::Value& value,
                            base::Endianess endianess, bool allowSeveralUnionMembers) {
  const ConversionPlan* plan = findPlan(id, endianess);
  const bool isPlanned = plan != nullptr && !(plan->hasUnions() && isUnionRawToRawHex());
  if (isPlanned && plan->rawToJson(buffer, value, _supportInvalidKeyword)) return true;

  const VarType* type = getVarType(id);
  if (type == nullptr) return false;
  JsonConverter converter(this, *type, endianess, allowSeveralUnionMembers);
  const bool isDone = converter.rawToJson(buffer, value);
  if (isDone) makePlan(id, *type);
  return isDone;
}

bool TypeManager::rawToJson(const TypeId& id, const base::Buffer& buffer, json::Value& value) {
  return rawToJson(id, buffer, value, _networkEndianess,
                   hasUnionModeBit(UnionModeBit::UnionConverterFlag));
}

bool TypeManager::jsonToRaw(const TypeId& id, const json::Value& value, base::Buffer& buffer,
                            base::Endianess endianess, bool allowSeveralUnionMembers) {
  const ConversionPlan* plan = _allowCuttingToMinMax ? findPlan(id, endianess) : nullptr;
  if (plan != nullptr && plan->jsonToRaw(value, buffer)) return true;

  const VarType* type = getVarType(id);
  if (type == nullptr) return false;
  JsonConverter converter(this, *type, endianess, allowSeveralUnionMembers);
  const bool isDone = converter.jsonToRaw(value, buffer);
  if (isDone) makePlan(id, *type);
  return isDone;
}

bool TypeManager::jsonToRaw(const TypeId& id, const json::Value& value, base::Buffer& buffer) {
  return jsonToRaw(id, value, buffer, _networkEndianess,
                   hasUnionModeBit(UnionModeBit::UnionConverterFlag));
}

bool TypeManager::rawToJsonText(const TypeId& id, const base::Buffer& buffer, std::string& text,
                                base::Endianess endianess, bool allowSeveralUnionMembers) {
  const ConversionPlan* plan = findPlan(id, endianess);
  const bool isPlanned = plan != nullptr && !(plan->hasUnions() && isUnionRawToRawHex());
  if (isPlanned && plan->rawToJsonText(buffer, text, _supportInvalidKeyword)) return true;

  const VarType* type = getVarType(id);
  if (type == nullptr) return false;
  json::Value value;
  JsonConverter converter(this, *type, endianess, allowSeveralUnionMembers);
  const bool isDone = converter.rawToJson(buffer, value);
  if (isDone) makePlan(id, *type);
  text = value.stringify();
  return isDone;
}

bool TypeManager::rawToJsonText(const TypeId& id, const base::Buffer& buffer, std::string& text) {
  return rawToJsonText(id, buffer, text, _networkEndianess,
                       hasUnionModeBit(UnionModeBit::UnionConverterFlag));
}

bool TypeManager::jsonTextToRaw(const TypeId& id, std::string_view text, base::Buffer& buffer,
                                base::Endianess endianess, bool allowSeveralUnionMembers) {
  const ConversionPlan* plan = _allowCuttingToMinMax ? findPlan(id, endianess) : nullptr;
  if (plan != nullptr && plan->jsonTextToRaw(text, buffer)) return true;

  if (getVarType(id) == nullptr) return false;
  json::Value value;
  std::string error;
  if (!json::Value::parse(text, value, error)) return false;
  return jsonToRaw(id, value, buffer, endianess, allowSeveralUnionMembers);
}

bool TypeManager::jsonTextToRaw(const TypeId& id, std::string_view text, base::Buffer& buffer) {
  return jsonTextToRaw(id, text, buffer, _networkEndianess,
                       hasUnionModeBit(UnionModeBit::UnionConverterFlag));
}

bool TypeManager::convert(base::Endianess endianess, const TypeId& id, base::Buffer& buffer, bool) {
  const VarType* type = getVarType(id);
  if (type == nullptr) {
    Logger::warning("[korvat] missing var type %s\n", id.toString().c_str());
    return false;
  }
  return type->convertPacket(this, endianess, buffer);
}

Value TypeManager::accessValue(base::Endianess endianess, const TypeId& id, base::Buffer& buffer) {
  return Value(this, getVarType(id), endianess, buffer);
}

bool TypeManager::isUnionJsonToRawHex() const {
  return hasUnionModeBit(UnionModeBit::UnionRawHex) &&
         !hasUnionModeBit(UnionModeBit::UnionNoRawHexToRaw);
}

bool TypeManager::isUnionRawToRawHex() const {
  return hasUnionModeBit(UnionModeBit::UnionRawHex) &&
         !hasUnionModeBit(UnionModeBit::UnionNoRawHexToJson);
}

}  // namespace zavri::korvat
