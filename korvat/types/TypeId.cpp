#include "korvat/types/TypeId.h"

#include <algorithm>
#include <string_view>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"

namespace zavri::korvat {

using base::Logger;

namespace {

struct PrefixRow {
  ResourceType type;
  const char* standard;
  const char* user;
};

constexpr std::array<PrefixRow, 3> kPrefixes{{
    {ResourceType::Nv, "SNVT", "UNVT"},
    {ResourceType::Cp, "SCPT", "UCPT"},
    {ResourceType::Fp, "SFPT", "UFPT"},
}};

constexpr std::size_t kPrefixLetters = 4;

// A constant of the compiler, so that identifiers among the static objects of other files may be
// made before the strings of this one.
constexpr std::string_view kStdPrefix = "0000000000000000-0";

// Type named by the second and third letter of "SNVT" and its like.
ResourceType typeOfLetters(char second, char third) {
  if (second == 'N') return ResourceType::Nv;  // the third letter is not looked at
  if (third != 'P') return ResourceType::Invalid;
  if (second == 'C') return ResourceType::Cp;
  if (second == 'F') return ResourceType::Fp;
  return ResourceType::Invalid;
}

}  // namespace

const char* resourceTypeName(ResourceType type) {
  switch (type) {
    case ResourceType::Invalid:
      return "invalid";
    case ResourceType::Enum:
      return "enum";
    case ResourceType::Nv:
      return "nv";
    case ResourceType::Cp:
      return "cp";
    case ResourceType::Fp:
      return "fp";
  }
  return "";
}

const std::string TypeId::StdPrefix(kStdPrefix);
const std::string TypeId::StdProgId = "0000000000000000";
const std::string TypeId::GenericNvType = "_xxx";
const TypeId TypeId::None;

// The LonMark program ID: format and manufacturer (3 bytes), device class (2), usage (1, its two
// top bits are not part of the class), channel type (1), model (1).
const TypeId::ScopeMaskTable TypeId::ScopeMask{{
    {0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xF0, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x00, 0x00},
    {0xF0, 0x00, 0x00, 0xFF, 0xFF, 0x3F, 0xFF, 0x00},
    {0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00},
    {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00},
    {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 0xFF, 0x00},
    {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x3F, 0xFF, 0xFF},
}};

TypeId::TypeId(ResourceType type, const std::string& prefix, const std::string& id)
    : _type(type), _id(id) {
  setPrefix(prefix);
}

bool TypeId::operator==(const TypeId& other) const {
  return _type == other._type && getScopeMaskedProgId() == other.getScopeMaskedProgId() &&
         _prefixValid == other._prefixValid && _scope == other._scope && _id == other._id;
}

bool TypeId::operator<(const TypeId& other) const {
  if (_type != other._type) return _type < other._type;
  if (_progId != other._progId) return _progId < other._progId;
  if (_scope != other._scope) return _scope < other._scope;
  if (const int order = _id.compare(other._id); order != 0) return order < 0;
  return _prefixValid != other._prefixValid;
}

std::size_t TypeId::getSeparatorPosition() {
  static const std::size_t position = kStdPrefix.find('-');
  return position;
}

void TypeId::setPrefix(const std::string& prefix) {
  _scope = 0;
  _progId = base::ProgId();
  _prefixValid = prefix.empty();

  const std::size_t separator = getSeparatorPosition();
  if (prefix.size() <= separator) return;

  _prefixValid = _progId.set(prefix.substr(0, separator));
  // No range check, and the terminating zero stands in for a missing digit: such a scope reads as
  // InvalidScope later.
  _scope = static_cast<std::int8_t>(prefix.c_str()[separator + 1] - '0');
}

std::string TypeId::getPrefix() const {
  if (!_prefixValid) return "";
  if (!_progId.isValid()) return std::string(kStdPrefix);
  return getScopeMaskedProgId().toString() + "-" + std::to_string(_scope);
}

Scope TypeId::getScope() const {
  if (!_prefixValid) return Scope::InvalidScope;
  if (!_progId.isValid()) return Scope::Standard;
  return numToScope(_scope);
}

void TypeId::setScope(Scope scope) {
  const signed char number = scopeToNum(scope);
  if (number < 0) {
    Logger::warning("[TypeId::setScope] invalid scope %ld/%d\n", static_cast<long>(scope), number);
    return;
  }
  _scope = number;
}

bool TypeId::lowerScope() {
  const Scope scope = getScope();
  if (scope == Scope::Standard || scope == Scope::InvalidScope) return false;
  _scope = static_cast<std::int8_t>(scopeToNum(scope) - 1);
  return true;
}

base::ProgId TypeId::getScopeMaskedProgId() const {
  if (numToScope(_scope) == Scope::InvalidScope) return _progId;

  auto bytes = _progId.getBytes();
  const auto& mask = ScopeMask[static_cast<std::size_t>(_scope)];
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] &= mask[i];

  base::ProgId masked;
  masked.set(bytes.data());
  return masked;
}

Scope TypeId::numToScope(signed char number) {
  if (number < 0 || number > 6) return Scope::InvalidScope;
  return static_cast<Scope>(number);
}

signed char TypeId::scopeToNum(Scope scope) {
  const auto number = static_cast<signed char>(scope);
  return number < 0 || number > 6 ? static_cast<signed char>(-1) : number;
}

bool TypeId::isGenericNv() const {
  return _type == ResourceType::Nv && !_progId.isValid() && _id == GenericNvType;
}

std::string TypeId::toString() const {
  return getPrefix() + "/" + toLonFormatId();
}

void TypeId::fromString(const std::string& text) {
  const std::string source = text;  // `text` may be the name that this identifier has
  _type = ResourceType::Invalid;
  _scope = 0;
  _progId = base::ProgId();
  _id.clear();

  const std::size_t slash = source.find('/');
  if (slash == std::string::npos) return;

  setPrefix(source.substr(0, slash));
  if (!fromLonFormatId(source.substr(slash + 1))) {
    Logger::debug("[TypeId::fromString]failed to get type and id from '%s'\n", source.c_str());
  }
}

std::string TypeId::toLonFormatId() const {
  const auto* row = std::find_if(kPrefixes.begin(), kPrefixes.end(),
                                 [this](const PrefixRow& p) { return p.type == _type; });
  if (row == kPrefixes.end()) return _id;
  return (isStandard() ? row->standard : row->user) + _id;
}

bool TypeId::fromLonFormatId(const std::string& text) {
  _id = text;  // first, as `text` may be the name that this identifier has
  _type = ResourceType::Invalid;
  if (_id.empty()) return false;

  _type = ResourceType::Enum;
  const char first = _id[0];
  if (_id.size() <= kPrefixLetters || _id[3] != 'T') return true;
  if (first != 'S' && first != 'U') return true;

  const ResourceType type = typeOfLetters(_id[1], _id[2]);
  if (type == ResourceType::Invalid) return true;
  _type = type;
  _id.erase(0, kPrefixLetters);
  if (first == 'S') setPrefix("");
  return true;
}

std::string TypeId::toLonFormat() const {
  std::string text = "#" + getPrefix();
  std::replace(text.begin(), text.end(), '-', '[');
  return text + "]." + toLonFormatId();
}

std::string TypeId::stripPrefix(const std::string& text) {
  Logger::trace("[TypeId::stripPrefix] '%s'\n", text.c_str());
  for (const PrefixRow& row : kPrefixes) {
    if (util::StringUtils::startsWith(text, row.standard, 0) ||
        util::StringUtils::startsWith(text, row.user, 0)) {
      return text.substr(kPrefixLetters);
    }
  }
  return text;
}

}  // namespace zavri::korvat
