#include "tool/Commands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

#include "korvat/base/AsciiText.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/ResourceGroup.h"
#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

// `pattern` with "*" for any text and "?" for any character against the whole of `text`.
bool matchesGlob(std::string_view text, std::string_view pattern) {
  std::size_t t = 0;
  std::size_t p = 0;
  std::size_t star = std::string_view::npos;  // last "*" met, and how much it stands for so far
  std::size_t starText = 0;
  while (t < text.size()) {
    if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      starText = t;
    } else if (p < pattern.size() &&
               (pattern[p] == '?' || util::toLower(pattern[p]) == util::toLower(text[t]))) {
      ++p;
      ++t;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      t = ++starText;
    } else {
      return false;
    }
  }
  return std::all_of(pattern.begin() + static_cast<std::ptrdiff_t>(p), pattern.end(),
                     [](char c) { return c == '*'; });
}

bool matches(const std::string& name, const std::string& pattern) {
  const bool isGlob = pattern.find_first_of("*?") != std::string::npos;
  return matchesGlob(name, isGlob ? pattern : "*" + pattern + "*");
}

constexpr std::array<ResourceType, 4> kKinds{ResourceType::Nv, ResourceType::Cp, ResourceType::Enum,
                                             ResourceType::Fp};

bool isKind(const std::string& text) {
  return std::any_of(kKinds.begin(), kKinds.end(),
                     [&](ResourceType type) { return text == resourceTypeName(type); });
}

std::vector<ResourceType> kindsOf(const std::string& kind) {
  if (kind.empty()) return {kKinds.begin(), kKinds.end()};
  for (const ResourceType type : kKinds) {
    if (kind == resourceTypeName(type)) return {type};
  }
  throw Failure(kWrongUsage, "unknown kind '" + kind + "'; expected nv, cp, enum or fp");
}

// Types in the order of their numbers, then their names.
std::vector<const BaseType*> findTypes(const ResourceGroup& group, const std::string& pattern) {
  std::vector<const BaseType*> types;
  for (const auto& [name, type] : group.getTypesByName()) {
    if (matches(displayName(*type), pattern)) types.push_back(type.get());
  }
  std::stable_sort(types.begin(), types.end(), [](const BaseType* a, const BaseType* b) {
    return a->getIndex() < b->getIndex();
  });
  return types;
}

json::Value describeShortly(const BaseType& type) {
  json::Value entry;
  entry["kind"] = resourceTypeName(type.getTypeId().getType());
  entry["index"] = type.getIndex();
  entry["name"] = displayName(type);
  if (const auto* varType = dynamic_cast<const VarType*>(&type)) entry["size"] = varType->getSize();
  if (const auto* enumType = dynamic_cast<const EnumType*>(&type)) {
    entry["items"] = static_cast<std::uint32_t>(enumType->getItemsByName().size());
  }
  if (const auto* fpType = dynamic_cast<const FpType*>(&type)) {
    if (fpType->hasKey()) entry["key"] = fpType->getKey();
    entry["nvs"] = static_cast<std::uint32_t>(fpType->getNvColl().size());
    entry["cps"] = static_cast<std::uint32_t>(fpType->getCpColl().size());
  }
  entry["obsolete"].setBoolean(type.hasFlags(BaseType::kObsolete));
  return entry;
}

std::string toLine(const json::Value& entry) {
  std::string line = entry["kind"].asString();
  line.resize(5, ' ');
  const std::string index = entry["index"].asString();
  line += std::string(index.size() < 5 ? 5 - index.size() : 0, ' ') + index + "  ";
  line += entry["name"].asString();
  if (line.size() < 44) line.resize(44, ' ');
  if (!entry["size"].isNull()) line += "  " + entry["size"].asString() + " bytes";
  if (!entry["items"].isNull()) line += "  " + entry["items"].asString() + " items";
  if (!entry["key"].isNull()) line += "  key " + entry["key"].asString() + ",";
  if (!entry["nvs"].isNull()) {
    line += std::string(entry["key"].isNull() ? "  " : " ") + entry["nvs"].asString() + " nvs, " +
            entry["cps"].asString() + " cps";
  }
  if (entry["obsolete"].asInt32() != 0) line += "  obsolete";
  return line + "\n";
}

}  // namespace

void runList(Catalogue& catalogue, const std::string& kind, const std::string& pattern) {
  // "list temp" means a pattern, "list nv" a kind.
  const bool isPattern = pattern.empty() && !kind.empty() && !isKind(kind);
  const std::vector<ResourceType> kinds = kindsOf(isPattern ? "" : kind);
  json::Value entries;
  entries.switchType(json::JsonType::Array);
  std::string lines;
  bool isAnyGroup = false;
  for (const ResourceType type : kinds) {
    const ResourceGroup* group = catalogue.findGroup(type);
    if (group == nullptr) continue;  // a set need not have types of every kind
    isAnyGroup = true;
    for (const BaseType* found : findTypes(*group, isPattern ? kind : pattern)) {
      json::Value& entry = entries[entries.getSize()];
      entry = describeShortly(*found);
      lines += toLine(entry);
    }
  }
  if (!isAnyGroup) throw catalogue.missingGroup(kinds.front());
  if (entries.getSize() == 0) {
    throw Failure(kNotFound, "no type matches '" + (isPattern ? kind : pattern) + "'");
  }
  std::fputs(
      catalogue.getOptions().printJson ? (entries.stringify(2) + "\n").c_str() : lines.c_str(),
      stdout);
}

}  // namespace zavri::korvat::tool
