#include "tool/Commands.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <optional>
#include <set>
#include <string_view>

#include "korvat/base/AsciiText.h"
#include "korvat/members/MemAggregate.h"
#include "korvat/members/MemRef.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "korvat/types/ResourceGroup.h"
#include "tool/Failure.h"
#include "tool/TextTable.h"

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
  for (const ResourceType type : kKinds) {
    if (kind == resourceTypeName(type)) return {type};
  }
  throw Failure(kWrongUsage, "unknown kind '" + kind + "'; expected nv, cp, enum or fp");
}

// Bytes, both ends included.
struct SizeRange {
  unsigned smallest;
  unsigned largest;
};

// "2" or "1-4".
SizeRange readSize(const std::string& text) {
  const std::size_t dash = text.find('-');
  SizeRange range{};
  const auto read = [](std::string_view digits, unsigned& byteCount) {
    const char* end = digits.data() + digits.size();
    const auto [stop, error] = std::from_chars(digits.data(), end, byteCount);
    return error == std::errc() && stop == end;
  };
  const std::string_view digits = text;
  bool isRead = read(digits.substr(0, dash), range.smallest);
  range.largest = range.smallest;
  if (dash != std::string::npos) isRead = isRead && read(digits.substr(dash + 1), range.largest);
  if (isRead && range.smallest <= range.largest) return range;
  throw Failure(kWrongUsage, "'" + text +
                                 "' is no size: expected a number of bytes such as 2, or a range "
                                 "such as 1-4");
}

// What the command line asks for.
struct Filter {
  std::vector<ResourceType> kinds;
  std::string pattern;
  std::optional<std::string> unit;
  std::optional<SizeRange> size;
  std::string text;  // for the message that there is no such type
};

Filter readQuery(const ListQuery& query) {
  Filter filter;
  filter.kinds = {kKinds.begin(), kKinds.end()};
  filter.pattern = query.pattern;
  if (query.kind) {
    if (!query.pattern.empty()) {
      throw Failure(kWrongUsage, "'" + query.pattern + "' is one argument too many: --kind says '" +
                                     *query.kind + "', so that only PATTERN is expected");
    }
    filter.kinds = kindsOf(*query.kind);
    filter.pattern = query.kindOrPattern;
  } else if (query.pattern.empty() && !isKind(query.kindOrPattern)) {
    filter.pattern = query.kindOrPattern;
  } else {
    filter.kinds = kindsOf(query.kindOrPattern);
  }
  filter.unit = query.unit;
  if (query.size) filter.size = readSize(*query.size);

  const bool isNameAsked = !filter.pattern.empty() || (!query.unit && !query.size);
  if (isNameAsked) filter.text = " '" + filter.pattern + "'";
  if (query.unit) filter.text += " --unit '" + *query.unit + "'";
  if (query.size) filter.text += " --size " + *query.size;
  return filter;
}

// Whether a member has that unit, also behind references. They may lead through any number of
// types, and in a circle: each type is met once.
bool hasUnit(const Member& root, TypeManager& manager, const std::string& unit) {
  std::set<const VarType*> met;
  std::vector<const Member*> pending = {&root};
  while (!pending.empty()) {
    const Member& member = *pending.back();
    pending.pop_back();
    if (!member.getUnit().empty() && matchesGlob(member.getUnit(), unit)) return true;
    if (member.getKind() == Member::Kind::Ref) {
      const VarType* type = static_cast<const MemRef&>(member).resolve(&manager);
      if (type == nullptr || type->getMember() == nullptr || !met.insert(type).second) continue;
      pending.push_back(type->getMember());
    } else if (member.getKind() == Member::Kind::Aggregate) {
      for (const auto& child : static_cast<const MemAggregate&>(member).getChildren()) {
        if (child) pending.push_back(child.get());
      }
    }
  }
  return false;
}

// Bytes of a value; what the definition says where that cannot be counted.
unsigned sizeOf(const VarType& type, TypeManager& manager) {
  unsigned byteCount = 0;
  if (type.getMaxSize(&manager, byteCount)) return byteCount;
  return static_cast<unsigned>(std::max(type.getSize(), 0));
}

bool isAskedFor(const BaseType& type, TypeManager& manager, const Filter& filter) {
  if (!matches(displayName(type), filter.pattern)) return false;
  if (!filter.unit && !filter.size) return true;
  const auto* varType = dynamic_cast<const VarType*>(&type);
  if (varType == nullptr) return false;
  if (filter.size) {
    const unsigned byteCount = sizeOf(*varType, manager);
    if (byteCount < filter.size->smallest || byteCount > filter.size->largest) return false;
  }
  return !filter.unit ||
         (varType->getMember() != nullptr && hasUnit(*varType->getMember(), manager, *filter.unit));
}

// Types in the order of their numbers, then their names.
std::vector<const BaseType*> findTypes(const ResourceGroup& group, TypeManager& manager,
                                       const Filter& filter) {
  std::vector<const BaseType*> types;
  for (const auto& [name, type] : group.getTypesByName()) {
    if (isAskedFor(*type, manager, filter)) types.push_back(type.get());
  }
  std::stable_sort(types.begin(), types.end(), [](const BaseType* a, const BaseType* b) {
    return a->getIndex() < b->getIndex();
  });
  return types;
}

json::Value describeShortly(const BaseType& type, TypeManager& manager) {
  json::Value entry;
  entry["kind"] = resourceTypeName(type.getTypeId().getType());
  entry["index"] = type.getIndex();
  entry["name"] = displayName(type);
  if (const auto* varType = dynamic_cast<const VarType*>(&type)) {
    entry["size"] = sizeOf(*varType, manager);
  }
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
  if (!entry["size"].isNull())
    line += "  " + bytesText(static_cast<std::size_t>(entry["size"].asInt32()));
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

void runList(Catalogue& catalogue, const ListQuery& query) {
  const Filter filter = readQuery(query);
  TypeManager& manager = catalogue.getManager();
  json::Value entries;
  entries.switchType(json::JsonType::Array);
  std::string lines;
  bool isAnyGroup = false;
  for (const ResourceType type : filter.kinds) {
    const ResourceGroup* group = catalogue.findGroup(type);
    if (group == nullptr) continue;  // a set need not have types of every kind
    isAnyGroup = true;
    for (const BaseType* found : findTypes(*group, manager, filter)) {
      json::Value& entry = entries[entries.getSize()];
      entry = describeShortly(*found, manager);
      lines += toLine(entry);
    }
  }
  if (!isAnyGroup) throw catalogue.missingGroup(filter.kinds.front());
  if (entries.getSize() == 0) throw Failure(kNotFound, "no type matches" + filter.text);
  std::fputs(
      catalogue.getOptions().printJson ? (entries.stringify(2) + "\n").c_str() : lines.c_str(),
      stdout);
}

}  // namespace zavri::korvat::tool
