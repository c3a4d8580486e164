#include "tool/Completion.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string_view>
#include <utility>

#include "korvat/members/MemEnum.h"
#include "korvat/types/EnumType.h"
#include "tool/Catalogue.h"

namespace zavri::korvat::tool {

namespace {

using Words = std::vector<Offers::Word>;

// Member paths beyond which no more are offered.
constexpr std::size_t kMaxPaths = 1000;

// What the words before the last one say, and where they leave it.
struct Line {
  const CLI::App* command = nullptr;          // the program itself before a command is named
  std::map<std::string, std::string> values;  // by placeholder, such as TYPE
  const CLI::Option* place = nullptr;  // option or argument that the last word is for, if any
  std::string word;                    // the last one, without the "--option=" before it

  std::string getValue(const std::string& placeholder) const {
    const auto found = values.find(placeholder);
    return found == values.end() ? "" : found->second;
  }
};

// "TYPE": what the help writes for an argument, or for the value of an option.
std::string placeholderOf(const CLI::Option& option) {
  if (option.get_positional()) return option.get_name(true);
  const std::string text = option.get_type_name();
  return text.substr(0, text.find(':'));
}

const CLI::App* findCommand(const CLI::App& app, const std::string& name) {
  const auto found =
      app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

const CLI::Option* findOption(const CLI::App& app, const CLI::App& command,
                              const std::string& name) {
  const CLI::Option* option = command.get_option_no_throw(name);
  return option != nullptr ? option : app.get_option_no_throw(name);
}

bool takesValue(const CLI::Option* option) {
  return option != nullptr && option->get_items_expected_max() > 0;
}

// The argument that takes the word with this number, from 0; null for a word too many.
const CLI::Option* findArgument(const CLI::App& command, int number) {
  for (const CLI::Option* option : command.get_options()) {
    if (!option->get_positional()) continue;
    if (number < option->get_items_expected_max()) return option;
    number -= option->get_items_expected_max();
  }
  return nullptr;
}

class LineReader {
 public:
  explicit LineReader(const CLI::App& app) : _app(app) { _line.command = &app; }

  // False for a command that does not exist.
  bool read(const std::string& word) {
    if (_line.place != nullptr) {
      _line.values[placeholderOf(*std::exchange(_line.place, nullptr))] = word;
    } else if (word.size() > 1 && word[0] == '-') {
      readOption(word);
    } else if (_line.command == &_app) {
      _line.command = findCommand(_app, word);
    } else if (const CLI::Option* argument = findArgument(*_line.command, _argumentCount++)) {
      _line.values[placeholderOf(*argument)] = word;
    }
    return _line.command != nullptr;
  }

  Line finish(const std::string& word) {
    _line.word = word;
    if (_line.place != nullptr) return _line;
    const std::size_t equals = word.find('=');
    if (word.rfind("--", 0) == 0 && equals != std::string::npos) {
      _line.place = findOption(_app, *_line.command, word.substr(0, equals));
      _line.word = word.substr(equals + 1);
    } else if (_line.command != &_app && word.rfind('-', 0) != 0) {
      _line.place = findArgument(*_line.command, _argumentCount);
    }
    return _line;
  }

 private:
  void readOption(const std::string& word) {
    const std::size_t equals = word.find('=');
    const CLI::Option* option = findOption(_app, *_line.command, word.substr(0, equals));
    if (!takesValue(option)) return;
    if (equals == std::string::npos) {
      _line.place = option;
    } else {
      _line.values[placeholderOf(*option)] = word.substr(equals + 1);
    }
  }

  const CLI::App& _app;
  Line _line;
  int _argumentCount = 0;
};

// --- What the parser knows ---

void addCommands(const CLI::App& app, Words& words) {
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    if (command->get_group().empty()) continue;  // hidden from the help, too
    words.push_back({command->get_name(), command->get_description()});
  }
}

void addOptions(const CLI::App& app, Words& words) {
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      words.push_back({"--" + name, option->get_description()});
    }
  }
}

// Every command takes --help, which is among the options of the program already.
void addCommandOptions(const CLI::App& command, Words& words) {
  addOptions(command, words);
  std::erase_if(words, [](const Offers::Word& word) { return word.text == "--help"; });
}

// The values that the parser takes, from the way it writes them: "{big->0,little->1}".
void addFixedValues(const CLI::Option& option, Words& words) {
  const std::string text = option.get_type_name();
  const std::size_t open = text.find('{');
  if (open == std::string::npos) return;
  const std::size_t close = std::min(text.find('}', open), text.size());
  for (const std::string& item : CLI::detail::split(text.substr(open + 1, close - open - 1), ',')) {
    words.push_back({item.substr(0, item.find("->")), ""});
  }
}

// --- What the catalogue knows ---

// No shell gives these characters a meaning of their own, apart from brackets, which at worst do
// not match a file. What begins with "-" would be an option.
bool isPlain(std::string_view text) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+./%@[]";
  return !text.empty() && text[0] != '-' &&
         text.find_first_not_of(kPlain) == std::string_view::npos;
}

void addName(const std::string& name, Words& words) {
  if (isPlain(name)) words.push_back({name, ""});
}

void addTypes(Catalogue& catalogue, std::initializer_list<ResourceType> kinds, Words& words) {
  for (const ResourceType kind : kinds) {
    const ResourceGroup* group = catalogue.findGroup(kind);
    if (group == nullptr) continue;
    for (const auto& [name, type] : group->getTypesByName()) addName(displayName(*type), words);
  }
}

void addValueTypes(Catalogue& catalogue, const Line&, Words& words) {
  addTypes(catalogue, {ResourceType::Nv, ResourceType::Cp}, words);
}

void addAllTypes(Catalogue& catalogue, const Line&, Words& words) {
  addTypes(catalogue, {ResourceType::Nv, ResourceType::Cp, ResourceType::Enum}, words);
}

void addProfiles(Catalogue& catalogue, const Line&, Words& words) {
  addTypes(catalogue, {ResourceType::Fp}, words);
}

void addSets(Catalogue& catalogue, const Line&, Words& words) {
  for (const auto& entry :
       std::filesystem::directory_iterator(catalogue.getManager().getBaseDir())) {
    const std::string folder = entry.path().filename().string();
    const TypeId id(ResourceType::Nv, folder, "");
    if (id.getScope() != Scope::InvalidScope) addName(folder, words);
  }
}

const VarType& findType(Catalogue& catalogue, const Line& line) {
  return catalogue.findVarType(line.getValue("TYPE"));
}

void addFormats(Catalogue& catalogue, const Line& line, Words& words) {
  for (const auto& [name, text] : findType(catalogue, line).getFormats()) addName(name, words);
}

void addPathsBelow(const json::Value& node, const std::string& path, const std::string& word,
                   Words& words) {
  const std::size_t common = std::min(path.size(), word.size());
  if (words.size() >= kMaxPaths || path.compare(0, common, word, 0, common) != 0) return;

  addName(path, words);
  for (const auto& [name, value] : node.getPropertyMap()) {
    addPathsBelow(value, path.empty() ? name : path + "." + name, word, words);
  }
  const unsigned elementCount = node.isArray() ? node.getSize() : 0;
  for (unsigned i = 0; i < elementCount; ++i) {
    addPathsBelow(node[i], path + "[" + std::to_string(i) + "]", word, words);
  }
}

// The paths of a value, and so of what "get" shows: one with zeros in all of its bytes.
void addPaths(Catalogue& catalogue, const Line& line, Words& words) {
  const VarType& type = findType(catalogue, line);
  const std::vector<std::uint8_t> zeros(catalogue.getSize(type));
  const base::Buffer raw(zeros.data(), static_cast<unsigned>(zeros.size()));
  addPathsBelow(catalogue.decode(type, raw), "", line.word, words);
}

void addEnumerators(Catalogue& catalogue, const Line& line, Words& words) {
  const VarType& type = findType(catalogue, line);
  const Member* member =
      type.getMember()->findMemberAtPath(&catalogue.getManager(), line.getValue("PATH"));
  if (member == nullptr || member->getKind() != Member::Kind::Enum) return;
  const EnumType* enumType =
      static_cast<const MemEnum*>(member)->resolveEnum(&catalogue.getManager());
  if (enumType == nullptr) return;
  for (const auto& [value, name] : enumType->getItemsByValue()) addName(name, words);
}

struct CatalogueRow {
  std::string_view command;  // empty for every command
  std::string_view placeholder;
  void (*add)(Catalogue& catalogue, const Line& line, Words& words);
};

// The first row that fits counts.
constexpr CatalogueRow kCatalogueRows[] = {
    {"describe", "TYPE", addAllTypes},
    {"", "TYPE", addValueTypes},
    {"", "PROFILE", addProfiles},
    {"", "PREFIX", addSets},
    {"", "PATH", addPaths},
    {"set", "VALUE", addEnumerators},
    {"decode", "NAME", addFormats},
};

struct FixedRow {
  std::string_view placeholder;
  Offers::Kind kind;
  std::string words;  // separated by blanks
};

// Places whose values the parser does not check.
const FixedRow kFixedRows[] = {
    {"DIR", Offers::Kind::Folders, ""},
    {"FILE", Offers::Kind::Files, ""},
    {"KIND", Offers::Kind::Words, "nv cp enum fp"},
};

// Shells hand the words over as they are typed.
std::string expandHome(const std::string& path) {
  const char* home = std::getenv("HOME");
  return home != nullptr && path.rfind("~/", 0) == 0 ? home + path.substr(1) : path;
}

void addFromCatalogue(const Line& line, const std::string& placeholder, Words& words) {
  const CatalogueRow* row = std::find_if(
      std::begin(kCatalogueRows), std::end(kCatalogueRows), [&](const CatalogueRow& candidate) {
        return candidate.placeholder == placeholder &&
               (candidate.command.empty() || candidate.command == line.command->get_name());
      });
  if (row == std::end(kCatalogueRows)) return;

  Options options;
  options.catalog = expandHome(line.getValue("DIR"));
  options.prefix = line.getValue("PREFIX");
  try {
    Catalogue catalogue(options);
    row->add(catalogue, line, words);
  } catch (const std::exception&) {
    // Whatever is wrong, nobody wants to read it in the middle of a line that is being typed.
  }
}

Offers offersFor(const Line& line) {
  Offers offers;
  addFixedValues(*line.place, offers.words);
  if (!offers.words.empty()) return offers;

  const std::string placeholder = placeholderOf(*line.place);
  for (const FixedRow& row : kFixedRows) {
    if (row.placeholder != placeholder) continue;
    offers.kind = row.kind;
    if (row.kind != Offers::Kind::Words) return offers;
    for (const std::string& word : CLI::detail::split(row.words, ' ')) {
      offers.words.push_back({word, ""});
    }
    return offers;
  }
  addFromCatalogue(line, placeholder, offers.words);
  return offers;
}

}  // namespace

Offers findOffers(const CLI::App& app, const std::vector<std::string>& words) {
  LineReader reader(app);
  for (std::size_t i = 0; i + 1 < words.size(); ++i) {
    if (!reader.read(words[i])) return {};
  }
  const Line line = reader.finish(words.empty() ? "" : words.back());
  if (line.place != nullptr) return offersFor(line);

  Offers offers;
  if (line.word.rfind('-', 0) == 0) {
    if (line.command != &app) addCommandOptions(*line.command, offers.words);
    addOptions(app, offers.words);
  } else if (line.command == &app) {
    addCommands(app, offers.words);
  }
  return offers;
}

}  // namespace zavri::korvat::tool
