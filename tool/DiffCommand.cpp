#include "tool/Commands.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <utility>

#include "tool/Finding.h"
#include "tool/ItemIndex.h"
#include "tool/SetFolders.h"
#include "tool/TextTable.h"
#include "tool/TypeDiff.h"

namespace zavri::korvat::tool {

namespace {

namespace fs = std::filesystem;

// Users of a type that one finding names.
constexpr std::size_t kMaxNamedUsers = 10;

// One of the two catalogues.
struct Side {
  explicit Side(Catalogue& catalogue) : manager(catalogue.getManager()) {
    for (const auto& [folder, set] : findSetFolders(manager).sets) {
      sets[TypeId(ResourceType::Nv, folder, "").getPrefix()] = set;
    }
  }

  TypeManager& manager;
  std::map<std::string, ResourceFileSet*> sets;  // by prefix: folders may be called otherwise
};

// One resource file of a side.
struct File {
  std::string path;
  bool isLoaded = false;
  ItemIndex index;
  std::map<std::string, const BaseType*> types;  // by name, without those that formats have made
};

// Compares all sets of two catalogues.
class CatalogueDiff {
 public:
  // Throws kNotFound for a folder that is no catalogue.
  CatalogueDiff(Catalogue& oldCatalogue, Catalogue& newCatalogue)
      : _old(oldCatalogue), _new(newCatalogue) {
    requireFiles(_old);
    requireFiles(_new);
  }

  void run() {
    std::set<std::string> prefixes;
    for (const auto& [prefix, set] : _old.sets) prefixes.insert(prefix);
    for (const auto& [prefix, set] : _new.sets) prefixes.insert(prefix);
    for (const std::string& prefix : prefixes) {
      for (const ResourceType kind : kFileKinds) {
        compareFiles(openFile(_old, prefix, kind), openFile(_new, prefix, kind));
      }
    }
    for (const Broken& broken : _broken) nameUsers(broken);
    sortByPlace(_findings);
  }

  const std::vector<Finding>& getFindings() const { return _findings; }
  bool isBroken() const { return _failureCount + _wireCount + _jsonCount > 0; }

  std::string getSummary() const {
    const std::string compared = plural(_typeCount, "type") + " compared";
    if (_findings.empty()) return "no change: " + compared;
    const std::string rest = plural(_noteCount, "note") + "; " + compared;
    if (!isBroken()) return "nothing breaks: " + rest;
    return (_failureCount == 0 ? "" : plural(_failureCount, "file") + " not loaded, ") +
           plural(_wireCount, "change") + " of the wire, " + std::to_string(_jsonCount) +
           " of the JSON, " + rest;
  }

 private:
  // A type as others refer to it. An enumeration may have the name of another type.
  using Key = std::pair<ResourceType, std::string>;

  // Types that are changed by one cause, and where the findings about it stand.
  struct Broken {
    Finding place;
    std::vector<Key> types;
  };

  static Key keyOf(const TypeId& id) { return {id.getType(), id.toString()}; }

  static void requireFiles(const Side& side) {
    for (const auto& [prefix, set] : side.sets) {
      for (const ResourceType kind : kFileKinds) {
        if (fs::exists(getFilePath(side.manager, set->getFolder(), kind))) return;
      }
    }
    throw noCatalogue(side.manager);
  }

  // Null when there is no such file.
  std::unique_ptr<File> openFile(Side& side, const std::string& prefix, ResourceType kind) {
    const auto set = side.sets.find(prefix);
    if (set == side.sets.end()) return nullptr;
    auto file = std::make_unique<File>();
    file->path = getFilePath(side.manager, set->second->getFolder(), kind);
    if (!fs::exists(file->path)) return nullptr;
    if (!file->index.read(file->path)) {
      addFailure(file->path, file->index.getLine(), file->index.getError());
      return file;
    }
    const ResourceGroup* group = set->second->getGroup(kind, true, &side.manager);
    if (group == nullptr) {
      addFailure(file->path, 0, "the file cannot be loaded");
      return file;
    }
    file->isLoaded = true;
    for (const auto& [name, type] : group->getTypesByName()) {
      if (!type->hasFlags(BaseType::kDerivedFormat)) file->types[name] = type.get();
    }
    return file;
  }

  void compareFiles(const std::unique_ptr<File>& oldFile, const std::unique_ptr<File>& newFile) {
    if (oldFile && !oldFile->isLoaded) return;
    if (newFile && !newFile->isLoaded) return;
    if (oldFile && newFile) {
      compareTypesOf(*oldFile, *newFile);
    } else if (oldFile) {
      Broken broken{{oldFile->path, 0, Severity::Error, "", ""}, {}};
      for (const auto& [name, type] : oldFile->types) {
        broken.types.push_back(keyOf(type->getTypeId()));
      }
      add(broken.place,
          {Breaks::Wire, "the file is removed with its " + plural(oldFile->types.size(), "type")});
      _broken.push_back(std::move(broken));
    } else if (newFile) {
      add({newFile->path, 0, Severity::Note, "", ""},
          {Breaks::Nothing, "the file is added with its " + plural(newFile->types.size(), "type")});
    }
  }

  void compareTypesOf(const File& oldFile, const File& newFile) {
    std::map<std::int32_t, const BaseType*> fresh;  // new types, by number
    for (const auto& [name, type] : newFile.types) {
      if (oldFile.types.count(name) != 0) continue;
      fresh.emplace(type->getIndex(), type);
      add(placeOf(newFile, *type), {Breaks::Nothing, "new type"});
    }
    for (const auto& [name, oldType] : oldFile.types) {
      const auto found = newFile.types.find(name);
      if (found != newFile.types.end()) {
        comparePair(*oldType, *found->second, placeOf(newFile, *found->second));
        continue;
      }
      const auto heir = fresh.find(oldType->getIndex());
      const std::string heirText = heir == fresh.end() || oldType->getIndex() < 0
                                       ? ""
                                       : "; its number " + std::to_string(oldType->getIndex()) +
                                             " is that of " + displayName(*heir->second) + " now";
      const Finding place = placeOf(oldFile, *oldType);
      add(place, {Breaks::Wire, "the type is removed" + heirText});
      _broken.push_back({place, {keyOf(oldType->getTypeId())}});
    }
  }

  void comparePair(const BaseType& oldType, const BaseType& newType, const Finding& place) {
    ++_typeCount;
    bool isChanged = false;
    for (const Change& change : compareTypes(_old.manager, oldType, _new.manager, newType)) {
      add(place, change);
      isChanged = isChanged || change.breaks != Breaks::Nothing;
    }
    const Key key = keyOf(newType.getTypeId());
    if (isChanged) _broken.push_back({place, {key}});

    // A user that names the type in one version only has changed itself.
    std::set<Key> oldReferences;
    for (const TypeId& id : findReferences(oldType)) oldReferences.insert(keyOf(id));
    std::set<Key> references;
    for (const TypeId& id : findReferences(newType)) references.insert(keyOf(id));
    for (const Key& reference : references) {
      if (oldReferences.count(reference) != 0) _users[reference].push_back({key, &newType});
    }
  }

  static Finding placeOf(const File& file, const BaseType& type) {
    return {file.path, file.index.findLine(type.getName()), Severity::Note, displayName(type), ""};
  }

  void add(Finding finding, const Change& change) {
    finding.severity = change.breaks == Breaks::Nothing ? Severity::Note : Severity::Error;
    switch (change.breaks) {
      case Breaks::Wire:
        finding.message = "wire: " + change.message;
        ++_wireCount;
        break;
      case Breaks::Json:
        finding.message = "json: " + change.message;
        ++_jsonCount;
        break;
      case Breaks::Nothing:
        finding.message = change.message;
        ++_noteCount;
        break;
    }
    _findings.push_back(std::move(finding));
  }

  void addFailure(const std::string& path, unsigned long line, const std::string& message) {
    _findings.push_back({path, line, Severity::Error, "", message});
    ++_failureCount;
  }

  // One note for everything that changes because of these types, however far away.
  void nameUsers(const Broken& broken) {
    std::set<Key> met(broken.types.begin(), broken.types.end());
    std::vector<Key> pending = broken.types;
    std::set<std::string> names;
    while (!pending.empty()) {
      const Key key = pending.back();
      pending.pop_back();
      const auto users = _users.find(key);
      if (users == _users.end()) continue;
      for (const User& user : users->second) {
        if (!met.insert(user.key).second) continue;
        pending.push_back(user.key);
        names.insert(displayName(*user.type));
      }
    }
    if (names.empty()) return;

    std::string message = names.size() == 1 ? "1 type or profile uses it and changes with it: "
                                            : std::to_string(names.size()) +
                                                  " types and profiles use it and change with it: ";
    std::size_t namedCount = 0;
    for (const std::string& name : names) {
      if (namedCount == kMaxNamedUsers) break;
      message += (namedCount++ == 0 ? "" : ", ") + name;
    }
    if (names.size() > namedCount) {
      message += " and " + std::to_string(names.size() - namedCount) + " more";
    }
    add(broken.place, {Breaks::Nothing, message});
  }

  struct User {
    Key key;
    const BaseType* type;
  };

  Side _old;
  Side _new;
  std::vector<Finding> _findings;
  std::vector<Broken> _broken;
  std::map<Key, std::vector<User>> _users;  // of a type, in both versions
  std::size_t _typeCount = 0;
  std::size_t _failureCount = 0;
  std::size_t _wireCount = 0;
  std::size_t _jsonCount = 0;
  std::size_t _noteCount = 0;
};

}  // namespace

void runDiff(Catalogue& oldCatalogue, Catalogue& newCatalogue) {
  CatalogueDiff diff(oldCatalogue, newCatalogue);
  diff.run();
  const bool asJson = newCatalogue.getOptions().printJson;
  printFindings(diff.getFindings(), asJson);
  if (diff.isBroken()) throw Failure(kProblem, diff.getSummary());
  if (!asJson) std::printf("%s\n", diff.getSummary().c_str());
}

}  // namespace zavri::korvat::tool
