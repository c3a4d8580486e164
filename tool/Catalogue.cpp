#include "tool/Catalogue.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "korvat/base/AsciiText.h"
#include "korvat/base/BinaryUtils.h"
#include "korvat/base/StringUtils.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/ResourceFileSet.h"
#include "tool/EncodeProblem.h"
#include "tool/Failure.h"
#include "tool/Leaves.h"
#include "tool/NearestName.h"
#include "tool/SetFolders.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

using base::Logger;

namespace {

// The catalogue installed beside the program, or that of the tree it was built from.
std::string findDefaultFolder() {
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
  if (!error) {
    const std::filesystem::path installed = program.parent_path() / KORVAT_INSTALLED_CATALOG;
    if (std::filesystem::is_directory(installed, error)) return installed.lexically_normal();
  }
  return KORVAT_SOURCE_CATALOG;
}

// True when `test` holds for the member or one inside it, references followed. To be called for a
// layout that can be walked: it is then finite.
bool anyMember(const Member& member, TypeManager& manager, bool (*test)(const Member&)) {
  if (test(member)) return true;
  if (member.getKind() == Member::Kind::Ref) {
    const VarType* type = static_cast<const MemRef&>(member).resolve(&manager);
    return type != nullptr && type->getMember() != nullptr &&
           anyMember(*type->getMember(), manager, test);
  }
  if (member.getKind() != Member::Kind::Aggregate) return false;
  const auto& children = static_cast<const MemAggregate&>(member).getChildren();
  return std::any_of(children.begin(), children.end(),
                     [&](const auto& child) { return child && anyMember(*child, manager, test); });
}

bool isDynamicArray(const Member& member) {
  return member.isDynamicArray();
}

bool isUnion(const Member& member) {
  return member.getKind() == Member::Kind::Aggregate &&
         static_cast<const MemAggregate&>(member).isUnion();
}

}  // namespace

std::string displayName(const BaseType& type) {
  return type.getTypeId().toLonFormatId();
}

std::vector<const VarType*> findDerivedTypes(TypeManager& manager, const VarType& type) {
  std::vector<const VarType*> types;
  for (const auto& [name, text] : type.getFormats()) {
    TypeId id = type.getTypeId();
    id.setId(type.getName() + "-" + name);
    const VarType* derived = manager.getVarType(id);
    if (derived != nullptr && derived->hasFlags(BaseType::kDerivedFormat)) types.push_back(derived);
  }
  return types;
}

Catalogue::Catalogue(const Options& options)
    : _options(options),
      _folder(options.catalog.empty() ? findDefaultFolder() : options.catalog),
      _manager("korvat"),
      _previousLevel(base::_logLevel) {
  std::error_code error;
  if (!std::filesystem::is_directory(_folder, error)) {
    throw Failure(kNotFound, "no catalogue: '" + _folder +
                                 "' is not a folder; name the base folder with --catalog DIR");
  }
  if (!options.prefix.empty() &&
      TypeId(ResourceType::Nv, options.prefix, "").getScope() == Scope::InvalidScope) {
    throw Failure(kWrongUsage, "--prefix: '" + options.prefix +
                                   "' names no set; expected 16 hexadecimal digits, '-' and a "
                                   "scope from 0 to 6")
        .with("given", options.prefix);
  }
  _manager.setBaseDir(_folder);
  _manager.setNetworkEndianess(options.order);
  _manager.setUseDynamicArrays(options.useDynamicArrays);
  _manager.setSupportInvalidKeyword(options.supportInvalidKeyword);
  _manager.setAllowMissingFields(options.allowMissingFields);
  _manager.setAllowUndefinedFields(options.allowUndefinedFields);
  _manager.setAllowCuttingToMinMax(!options.refuseCutting);
  if (options.useUnionHex) _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);

  const int level = options.logLevel;
  base::_logLevel = static_cast<Logger::Level>(std::max<int>(level, Logger::Warning));
  _previousSink =
      Logger::setSink([this, level](Logger::Level messageLevel, const std::string& text) {
        if (messageLevel <= Logger::Warning) _lastWarning = text;
        if (messageLevel <= level) std::fputs(text.c_str(), stderr);
      });
}

Catalogue::~Catalogue() {
  Logger::setSink(_previousSink);
  base::_logLevel = _previousLevel;
}

std::string Catalogue::takeReason() {
  const std::string text = util::StringUtils::trim(_lastWarning);
  _lastWarning.clear();
  return text.empty() ? "" : " (" + text + ")";
}

const BaseType& Catalogue::findType(const std::string& text) {
  _lastWarning.clear();
  const bool isBareName = text.find('/') == std::string::npos;
  const std::string prefix = _options.prefix.empty() ? TypeId::StdPrefix : _options.prefix;
  const TypeId id = _manager.toTypeId(isBareName ? prefix + "/" + text : text);
  const BaseType* type = _manager.getType(id);
  if (type == nullptr) {
    // Warnings of a file that did load explain nothing.
    const bool isLoaded =
        id &&
        _manager.getResourceFileSet(id.getPrefix()).getGroup(id.getType(), false, &_manager) !=
            nullptr;
    if (isLoaded) _lastWarning.clear();
    throw unknownType(text, id);
  }
  return *type;
}

const Catalogue::TypeNames& Catalogue::getTypeNames() {
  if (!_typeNames.all.empty()) return _typeNames;
  for (const ResourceType kind :
       {ResourceType::Nv, ResourceType::Cp, ResourceType::Enum, ResourceType::Fp}) {
    for (const ResourceGroup* group : findGroups(kind)) {
      for (const auto& [key, type] : group->getTypesByName()) {
        const std::string name = displayName(*type);
        const std::string called = nameOf(*type);
        if (called == name) _typeNames.bare.push_back(name);
        _typeNames.all.emplace(name, called);
      }
    }
  }
  return _typeNames;
}

Failure Catalogue::unknownType(const std::string& text, const TypeId& id) {
  const std::size_t slash = text.rfind('/');
  const std::string given = slash == std::string::npos ? text : text.substr(slash + 1);
  const std::string reason = takeReason();
  const TypeNames& names = getTypeNames();
  std::vector<std::string> elsewhere;  // the same name in other sets
  const auto [first, last] = names.all.equal_range(given);
  for (auto name = first; name != last; ++name) elsewhere.push_back(name->second);
  const std::vector<std::string> nearest =
      elsewhere.empty() ? findNearest(given, names.bare) : elsewhere;
  // A name that begins like no other kind is taken for an enumeration's.
  const ResourceType kind = id ? id.getType() : ResourceType::Enum;
  const std::string what =
      kind == ResourceType::Enum ? "type" : std::string(resourceTypeName(kind)) + " type";
  std::string message = "unknown type '" + text + "': no " + what + " of that name in set " +
                        id.getPrefix() + " of '" + _folder + "'" + reason;
  if (id.getPrefix().empty()) message = "unknown type '" + text + "': it names no set";
  return Failure(kNotFound,
                 message + (nearest.empty() ? "; see 'korvat list'" : didYouMean(nearest)))
      .with("given", text)
      .with("nearest", nearest);
}

const VarType& Catalogue::findVarType(const std::string& text) {
  const BaseType& type = findType(text);
  const auto* varType = dynamic_cast<const VarType*>(&type);
  if (varType == nullptr) {
    throw Failure(kNotFound, "'" + text +
                                 "' has no values: expected a network variable or "
                                 "configuration property type");
  }
  if (varType->getMember() == nullptr) {
    throw Failure(kProblem, "'" + text +
                                "' has no layout of its own: it takes the type of the "
                                "network variable it applies to; name that type");
  }
  return *varType;
}

const ResourceGroup* Catalogue::findGroup(ResourceType type) {
  _lastWarning.clear();
  const std::string prefix = TypeId(type, _options.prefix, "").getPrefix();
  return _manager.getResourceFileSet(prefix).getGroup(type, true, &_manager);
}

std::vector<const ResourceGroup*> Catalogue::findGroups(ResourceType type) {
  std::vector<const ResourceGroup*> groups{findGroup(type)};
  if (_options.prefix.empty()) {
    for (const auto& [folder, set] : findSetFolders(_manager).sets) {
      if (set != &_manager.getResourceFileSet(TypeId::StdPrefix)) {
        groups.push_back(set->getGroup(type, false, &_manager));
      }
    }
  }
  groups.erase(std::remove(groups.begin(), groups.end(), nullptr), groups.end());
  return groups;
}

std::string Catalogue::nameOf(const BaseType& type) const {
  const std::string prefix = TypeId(ResourceType::Nv, _options.prefix, "").getPrefix();
  const TypeId& id = type.getTypeId();
  return id.getPrefix() == prefix ? displayName(type) : id.getPrefix() + "/" + displayName(type);
}

void Catalogue::refuseDynamicArrays(const char* command) const {
  if (!_options.useDynamicArrays) return;
  throw Failure(kWrongUsage, std::string(command) +
                                 " shows arrays at their full size; it does not take "
                                 "--dynamic-arrays");
}

unsigned Catalogue::findSize(const VarType& type) {
  try {
    return getSize(type);
  } catch (const Failure&) {
    return 0;
  }
}

Failure Catalogue::missingGroup(ResourceType type) {
  const std::string set = _options.prefix.empty() ? TypeId::StdPrefix : _options.prefix;
  return Failure(kNotFound, std::string("no ") + resourceTypeName(type) + " types in set " + set +
                                " of '" + _folder + "'" + takeReason());
}

const Catalogue::Facts& Catalogue::getFacts(const VarType& type) {
  const auto found = _facts.find(&type);
  if (found != _facts.end()) return found->second;
  _lastWarning.clear();

  Facts facts;
  if (!type.getMaxSize(&_manager, facts.size)) {
    throw Failure(kProblem,
                  "the layout of " + displayName(type) + " cannot be followed" + takeReason());
  }
  facts.hasDynamicArray = anyMember(*type.getMember(), _manager, isDynamicArray);
  facts.hasUnion = anyMember(*type.getMember(), _manager, isUnion);
  return _facts.emplace(&type, facts).first->second;
}

base::Buffer Catalogue::readHex(const std::string& text) const {
  base::Buffer buffer;
  const unsigned byteCount = util::BinaryUtils::stringToBuffer(buffer, text, 0);
  std::size_t digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isDigit = util::hexValue(text[i]) >= 0;
    if (!isDigit && !util::isBlank(text[i])) {
      throw Failure(kProblem, "'" + text + "' is not hexadecimal: '" + text[i] + "' at position " +
                                  std::to_string(i + 1) + " (byte " + std::to_string(digits / 2) +
                                  "); expected digits 0-9, A-F")
          .with("given", text)
          .with("byte", static_cast<std::int32_t>(digits / 2))
          .with("expected", "hexadecimal digits 0-9, A-F");
    }
    if (isDigit) ++digits;
  }
  if (digits != 2 * std::size_t{byteCount}) {
    throw Failure(kProblem, "'" + text + "' is not whole bytes: " + std::to_string(digits) +
                                (digits == 1 ? " digit" : " digits") +
                                " given, expected an even number")
        .with("given", text)
        .with("expected", "an even number of hexadecimal digits");
  }
  return buffer;
}

void Catalogue::checkLength(const VarType& type, const base::Buffer& buffer) {
  if (_options.acceptAnyLength) return;
  const Facts& facts = getFacts(type);
  const unsigned expected = facts.size;
  if (buffer.getSize() == expected) return;

  unsigned needed = expected;
  const bool mayBeShorter = _options.useDynamicArrays && facts.hasDynamicArray;
  if (mayBeShorter && buffer.getSize() < expected) {
    needed = measure(type, buffer);
    if (buffer.getSize() == needed) return;
  }
  const std::string begin =
      bytesText(buffer.getSize()) + " given, but a value of " + displayName(type) + " has " +
      (mayBeShorter && needed == expected ? "at most " : "") + std::to_string(needed);
  const std::string end = "; --any-length takes it all the same";
  Failure failure = mayBeShorter ? Failure(kProblem, begin + end)
                                 : withMissingMember(type, buffer.getSize(), begin, end);
  throw failure.with("type", displayName(type))
      .with("given", bytesText(buffer.getSize()))
      .with("expected", bytesText(needed));
}

unsigned Catalogue::measure(const VarType& type, const base::Buffer& buffer) {
  JsonConverter converter(&_manager, type, _options.order, true);
  base::Buffer again;
  return converter.jsonToRaw(decode(type, buffer), again) ? again.getSize() : buffer.getSize();
}

Failure Catalogue::withMissingMember(const VarType& type, unsigned byteCount,
                                     const std::string& begin, const std::string& end) {
  constexpr unsigned kMostBytes = 64 * 1024;  // of values whose members are looked through
  const unsigned size = getSize(type);
  if (size > kMostBytes || byteCount >= size) return Failure(kProblem, begin + end);
  base::Buffer zeros;
  zeros.setSize(size);
  const json::Value value = decode(type, zeros);
  const Value access(&_manager, &type, _options.order, zeros);
  for (const Leaf& leaf : findLeaves(access, value)) {
    if (leaf.path.empty() || !leaf.access.isValid()) continue;
    const unsigned first = firstByteOf(_manager, leaf.access);
    if (first + byteCountOf(_manager, leaf.access) <= byteCount) continue;
    return Failure(kProblem, begin + ": '" + leaf.path + "' at byte " + std::to_string(first) +
                                 " is not there" + end)
        .with("member", leaf.path)
        .with("byte", first);
  }
  return Failure(kProblem, begin + end);
}

json::Value Catalogue::decode(const VarType& type, const base::Buffer& buffer) {
  json::Value value;
  _lastWarning.clear();
  if (!_manager.rawToJson(type.getTypeId(), buffer, value)) {
    throw Failure(kProblem, "cannot decode " + displayName(type) + takeReason());
  }
  return value;
}

Failure Catalogue::encodeFailure(const VarType& type, const json::Value& value,
                                 const JsonConverter& converter) {
  const auto& problems = converter.getProblems();
  if (!problems.empty()) {
    return explainProblem(*this, type, value, problems.front(), problems.size() - 1);
  }
  return Failure(kProblem, "cannot encode " + displayName(type) + takeReason())
      .with("type", displayName(type));
}

base::Buffer Catalogue::encode(const VarType& type, const json::Value& value) {
  _lastWarning.clear();
  JsonConverter first(&_manager, type, _options.order, false);
  base::Buffer raw;
  if (!first.jsonToRaw(value, raw) || !first.getProblems().empty()) {
    throw encodeFailure(type, value, first);
  }
  if (!getFacts(type).hasUnion || _options.useUnionHex) return raw;

  // What decode shows holds every alternative of a union, those that do not hold out of their
  // limits, maybe. The first one is enough when the others stand for the same bytes. Otherwise they
  // are taken together; where they stand for different bytes, nobody can tell which one is meant.
  if (decode(type, raw) == value) return raw;
  JsonConverter all(&_manager, type, _options.order, true);
  base::Buffer together;
  if (!all.jsonToRaw(value, together) || !all.getProblems().empty()) {
    throw encodeFailure(type, value, all);
  }
  if (together == raw || decode(type, together) == value) return together;
  throw Failure(kProblem,
                "cannot encode " + displayName(type) +
                    ": several alternatives of a union are given that stand for different "
                    "bytes; keep the one that holds");
}

void Catalogue::patch(const VarType& type, const json::Value& value, base::Buffer& buffer) {
  _lastWarning.clear();
  JsonConverter converter(&_manager, type, _options.order, true);
  base::Buffer changed = buffer;
  if (!converter.patchRaw(value, changed) || !converter.getProblems().empty()) {
    throw encodeFailure(type, value, converter);
  }
  buffer = changed;
}

}  // namespace zavri::korvat::tool
