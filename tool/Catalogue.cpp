#include "tool/Catalogue.h"

#include <cstdio>
#include <filesystem>

#include "korvat/base/BinaryUtils.h"
#include "korvat/base/StringUtils.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/ResourceFileSet.h"
#include "tool/Failure.h"

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

bool isBlank(char character) {
  return character == ' ' || character == '\t' || character == '\n' || character == '\r' ||
         character == '\v' || character == '\f';
}

std::string plural(std::size_t count, const std::string& noun) {
  return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

// True when a value of the member can be shorter than its full size.
bool hasDynamicArray(const Member& member, TypeManager& manager) {
  if (member.isDynamicArray()) return true;
  if (member.getKind() == Member::Kind::Ref) {
    const VarType* type = static_cast<const MemRef&>(member).resolve(&manager);
    return type != nullptr && type->getMember() != nullptr &&
           hasDynamicArray(*type->getMember(), manager);
  }
  if (member.getKind() != Member::Kind::Aggregate) return false;
  for (const auto& child : static_cast<const MemAggregate&>(member).getChildren()) {
    if (child && hasDynamicArray(*child, manager)) return true;
  }
  return false;
}

}  // namespace

std::string displayName(const BaseType& type) {
  return type.getTypeId().toLonFormatId();
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
  _manager.setBaseDir(_folder);
  _manager.setNetworkEndianess(options.order);
  _manager.setUseDynamicArrays(options.useDynamicArrays);
  _manager.setSupportInvalidKeyword(options.supportInvalidKeyword);
  if (options.showUnionsAsHex) _manager.setUnionModeBit(TypeManager::UnionModeBit::UnionRawHex);

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
  const bool isBareName = text.find('/') == std::string::npos;
  const std::string prefix = _options.prefix.empty() ? TypeId::StdPrefix : _options.prefix;
  const TypeId id = _manager.toTypeId(isBareName ? prefix + "/" + text : text);
  const BaseType* type = _manager.getType(id);
  if (type == nullptr) {
    throw Failure(kNotFound, "unknown type '" + text + "': no " +
                                 resourceTypeName(id ? id.getType() : ResourceType::Enum) +
                                 " type of that name in set " +
                                 (id.getPrefix().empty() ? "(none)" : id.getPrefix()) + " of '" +
                                 _folder + "'" + takeReason() + "; see 'korvat list'");
  }
  return *type;
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
  const std::string prefix = TypeId(type, _options.prefix, "").getPrefix();
  return _manager.getResourceFileSet(prefix).getGroup(type, true);
}

Failure Catalogue::missingGroup(ResourceType type) {
  const std::string set = _options.prefix.empty() ? TypeId::StdPrefix : _options.prefix;
  return Failure(kNotFound, std::string("no ") + resourceTypeName(type) + " types in set " + set +
                                " of '" + _folder + "'" + takeReason());
}

unsigned Catalogue::getSize(const VarType& type) {
  unsigned byteCount = 0;
  if (!type.getMaxSize(&_manager, byteCount)) {
    throw Failure(kProblem,
                  "the layout of " + displayName(type) + " cannot be followed" + takeReason());
  }
  return byteCount;
}

base::Buffer Catalogue::readHex(const std::string& text) const {
  base::Buffer buffer;
  const unsigned byteCount = util::BinaryUtils::stringToBuffer(buffer, text, 0);
  std::size_t digits = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool isDigit =
        std::string_view("0123456789abcdefABCDEF").find(text[i]) != std::string::npos;
    if (!isDigit && !isBlank(text[i])) {
      throw Failure(kProblem, "'" + text + "' is not hexadecimal: '" + text[i] + "' at position " +
                                  std::to_string(i + 1) + "; expected digits 0-9, A-F");
    }
    if (isDigit) ++digits;
  }
  if (digits != 2 * std::size_t{byteCount}) {
    throw Failure(kProblem, "'" + text + "' is not whole bytes: " + plural(digits, "digit") +
                                " given, expected an even number");
  }
  return buffer;
}

void Catalogue::checkLength(const VarType& type, const base::Buffer& buffer) {
  if (_options.acceptAnyLength) return;
  const unsigned expected = getSize(type);
  if (buffer.getSize() == expected) return;

  const bool mayBeShorter =
      _options.useDynamicArrays && hasDynamicArray(*type.getMember(), _manager);
  if (mayBeShorter && buffer.getSize() < expected) return;
  throw Failure(kProblem, plural(buffer.getSize(), "byte") + " given, but a value of " +
                              displayName(type) + " has " + (mayBeShorter ? "at most " : "") +
                              std::to_string(expected) + "; --any-length takes it all the same");
}

json::Value Catalogue::decode(const VarType& type, const base::Buffer& buffer) {
  json::Value value;
  if (!_manager.rawToJson(type.getTypeId(), buffer, value)) {
    throw Failure(kProblem, "cannot decode " + displayName(type) + takeReason());
  }
  return value;
}

}  // namespace zavri::korvat::tool
