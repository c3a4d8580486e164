#include "tool/Commands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/AsciiText.h"
#include "korvat/members/MemEnum.h"
#include "korvat/types/EnumType.h"
#include "korvat/types/FpType.h"
#include "tool/Failure.h"
#include "tool/Layout.h"
#include "tool/Summaries.h"
#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

// The parts of a type that are searched, the most telling one first.
enum class Part { Name, Summary, Unit, Member, Enumerator };
constexpr std::array<const char*, 5> kPartNames{"name", "summary", "unit", "member", "enumerator"};

struct Text {
  Part part;
  std::string text;
};

void addEnumerators(const EnumType& type, std::vector<Text>& texts) {
  for (const auto& [name, value] : type.getItemsByName()) texts.push_back({Part::Enumerator, name});
}

std::vector<Text> textsOf(TypeManager& manager, const BaseType& type, const std::string& summary) {
  std::vector<Text> texts{{Part::Name, displayName(type)}};
  if (!summary.empty()) texts.push_back({Part::Summary, summary});
  if (const auto* enumType = dynamic_cast<const EnumType*>(&type)) addEnumerators(*enumType, texts);
  if (const auto* profile = dynamic_cast<const FpType*>(&type)) {
    for (const DpRef::DpType kind : {DpRef::DpType::Nv, DpRef::DpType::Cp}) {
      for (const DpRef* datapoint : profile->getColl(kind)) {
        texts.push_back({Part::Member, datapoint->getName()});
      }
    }
  }
  const auto* varType = dynamic_cast<const VarType*>(&type);
  if (varType == nullptr || varType->getMember() == nullptr) return texts;
  try {
    for (const LayoutRow& row : makeLayout(manager, *varType)) {
      if (!row.member->getUnit().empty()) texts.push_back({Part::Unit, row.member->getUnit()});
      if (!row.path.empty()) texts.push_back({Part::Member, row.path});
      if (row.member->getKind() != Member::Kind::Enum) continue;
      const EnumType* items = static_cast<const MemEnum&>(*row.member).resolveEnum(&manager);
      if (items != nullptr) addEnumerators(*items, texts);
    }
  } catch (const Failure&) {  // a layout that cannot be followed has a name all the same
  }
  return texts;
}

struct Match {
  const BaseType* type;
  std::string summary;      // may be empty
  Part best;                // part in which a word was found at best
  std::vector<Text> found;  // for each word the most telling text that holds it, without doubles
};

// True when every word stands in some text of the type.
bool matchAll(const std::vector<Text>& texts, const std::vector<std::string>& words, Match& match) {
  for (const std::string& word : words) {
    const Text* best = nullptr;
    for (const Text& text : texts) {
      if (lowered(text.text).find(word) == std::string::npos) continue;
      if (best == nullptr || text.part < best->part) best = &text;
    }
    if (best == nullptr) return false;
    match.best = std::max(match.best, best->part);
    const bool isKnown = std::any_of(
        match.found.begin(), match.found.end(),
        [&](const Text& found) { return found.part == best->part && found.text == best->text; });
    if (!isKnown) match.found.push_back(*best);
  }
  return true;
}

std::vector<std::string> splitWords(const std::vector<std::string>& arguments) {
  std::vector<std::string> words;
  for (const std::string& argument : arguments) {
    std::string word;
    for (const char c : argument + " ") {
      if (!util::isBlank(c)) {
        word += util::toLower(c);
      } else if (!word.empty()) {
        words.push_back(std::exchange(word, ""));
      }
    }
  }
  return words;
}

std::vector<Match> findMatches(Catalogue& catalogue, const std::vector<std::string>& words) {
  std::vector<Match> matches;
  Summaries summaries(catalogue.getManager().getBaseDir());
  for (const ResourceType kind :
       {ResourceType::Nv, ResourceType::Cp, ResourceType::Enum, ResourceType::Fp}) {
    for (const ResourceGroup* group : catalogue.findGroups(kind)) {
      for (const auto& [name, type] : group->getTypesByName()) {
        Match match{type.get(), summaries.find(*type), Part::Name, {}};
        if (matchAll(textsOf(catalogue.getManager(), *type, match.summary), words, match)) {
          matches.push_back(std::move(match));
        }
      }
    }
  }
  std::stable_sort(matches.begin(), matches.end(),
                   [](const Match& a, const Match& b) { return a.best < b.best; });
  return matches;
}

}  // namespace

void runSearch(Catalogue& catalogue, const std::vector<std::string>& arguments) {
  const std::vector<std::string> words = splitWords(arguments);
  if (words.empty()) throw Failure(kWrongUsage, "no word to search for");
  const std::vector<Match> matches = findMatches(catalogue, words);
  if (matches.empty()) throw Failure(kNotFound, "no type matches '" + join(words) + "'");

  json::Value rows;
  rows.switchType(json::JsonType::Array);
  std::string lines;
  for (const Match& match : matches) {
    json::Value& row = rows[rows.getSize()];
    row["kind"] = resourceTypeName(match.type->getTypeId().getType());
    row["name"] = catalogue.nameOf(*match.type);
    if (!match.summary.empty()) row["summary"] = match.summary;
    std::string line =
        pad(row["kind"].asString(), 5) + pad(row["name"].asString(), 28) + "  " + match.summary;
    for (const Text& found : match.found) {
      json::Value& place = row["found"][row["found"].getSize()];
      const std::string part = kPartNames[static_cast<std::size_t>(found.part)];
      place["part"] = part;
      place["text"] = found.text;
      if (found.part > Part::Summary) line += "  (" + part + " " + found.text + ")";
    }
    lines += toLine(line);
  }
  std::fputs(catalogue.getOptions().printJson ? (rows.stringify(2) + "\n").c_str() : lines.c_str(),
             stdout);
}

}  // namespace zavri::korvat::tool
