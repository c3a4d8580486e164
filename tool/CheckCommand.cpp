#include "tool/Commands.h"

#include <cstdio>
#include <filesystem>
#include <map>
#include <utility>

#include "korvat/base/StringUtils.h"
#include "tool/Finding.h"
#include "tool/ItemIndex.h"
#include "tool/SetFolders.h"
#include "tool/TextTable.h"
#include "tool/TypeCheck.h"

namespace zavri::korvat::tool {

namespace {

using base::Logger;
namespace fs = std::filesystem;

// Loads all sets of a catalogue and collects what is wrong with them.
class CatalogueCheck {
 public:
  explicit CatalogueCheck(Catalogue& catalogue) : _manager(catalogue.getManager()) {}

  void run() {
    SetFolders folders = findSetFolders(_manager);
    _sets = std::move(folders.sets);
    _findings = std::move(folders.ignored);
    // Loading a file may load others that it refers to, so that all sets are known before.
    const Logger::Sink previous =
        Logger::setSink([this](Logger::Level level, const std::string& text) {
          if (level <= Logger::Warning) noteMessage(level, text);
        });
    for (const auto& [folder, set] : _sets) {
      for (const ResourceType kind : kFileKinds) checkFile(folder, *set, kind);
    }
    Logger::setSink(previous);
    sortByPlace(_findings);
  }

  const std::vector<Finding>& getFindings() const { return _findings; }
  bool hasFiles() const { return _fileCount > 0; }

  std::string getSummary() const {
    return plural(_typeCount, "type") + " in " + plural(_fileCount, "file") + " of " +
           plural(_sets.size(), "set");
  }

 private:
  std::string pathOf(const std::string& folder, ResourceType kind) const {
    return getFilePath(_manager, folder, kind);
  }

  void add(const std::string& file, unsigned long line, Severity severity, const std::string& type,
           const std::string& message) {
    _findings.push_back({file, line, severity, type, message});
  }

  // What the library says while it reads a file.
  void noteMessage(Logger::Level level, const std::string& text) {
    for (const auto& [folder, set] : _sets) {
      const auto place = set->getPlaceUnderWay();
      if (!place) continue;
      // Said of an item in a file of another kind, which is a finding of its own.
      if (text == "[ResourceBuilder::onItemBuildDone]\n") continue;
      const Severity severity = level <= Logger::Error ? Severity::Error : Severity::Warning;
      add(pathOf(folder, place->group), place->line, severity, "", util::StringUtils::trim(text));
    }
  }

  void checkFile(const std::string& folder, ResourceFileSet& set, ResourceType kind) {
    const std::string path = pathOf(folder, kind);
    if (!fs::exists(path)) return;  // a set need not have types of every kind
    ++_fileCount;
    ItemIndex index;
    if (!index.read(path)) {
      return add(path, index.getLine(), Severity::Error, "", index.getError());
    }
    const ResourceGroup* group = set.getGroup(kind, true, &_manager);
    if (group == nullptr) return add(path, 0, Severity::Error, "", "the file cannot be loaded");
    checkItems(folder, kind, index.getItems());
    for (const auto& [name, type] : group->getTypesByName()) {
      if (type->hasFlags(BaseType::kDerivedFormat)) continue;
      ++_typeCount;
      for (const Problem& problem : checkType(_manager, *type)) {
        add(path, index.findLine(name), problem.severity, displayName(*type), problem.message);
      }
    }
  }

  // What stands in the file and is not loaded, or takes the place of something else.
  void checkItems(const std::string& folder, ResourceType kind,
                  const std::vector<ItemIndex::Item>& items) {
    const std::string path = pathOf(folder, kind);
    std::map<std::string, unsigned long> names;  // line of the first one
    std::map<std::int32_t, unsigned long> indices;
    std::map<std::int32_t, unsigned long> keys;
    for (const ItemIndex::Item& item : items) {
      const std::string name = TypeId(item.kind, folder, item.name).toLonFormatId();
      const auto reportDuplicate = [&](const auto& first, unsigned long line, Severity severity,
                                       const std::string& what) {
        if (first.second) return;  // it is new
        add(path, line, severity, name,
            what + " as in line " + std::to_string(first.first->second));
      };
      if (item.kind != kind) {
        add(path, item.line, Severity::Error, name,
            std::string("is not loaded from a file of that name: it belongs into ") +
                ResourceFileSet::getFileName(item.kind) + ".xml");
        continue;
      }
      reportDuplicate(names.emplace(item.name, item.line), item.line, Severity::Error,
                      "has the same name");
      if (item.index) {
        reportDuplicate(indices.emplace(*item.index, item.line), item.line, Severity::Error,
                        "has the same number " + std::to_string(*item.index));
      }
      if (item.key) {
        reportDuplicate(keys.emplace(*item.key, item.line), item.line, Severity::Error,
                        "has the same key " + std::to_string(*item.key));
      }
      std::map<std::string, unsigned long> enumerators;
      std::map<std::int32_t, unsigned long> values;
      for (const ItemIndex::Enumerator& enumerator : item.enumerators) {
        reportDuplicate(enumerators.emplace(enumerator.name, enumerator.line), enumerator.line,
                        Severity::Error, "the member '" + enumerator.name + "' has the same name");
        if (!enumerator.value) continue;
        reportDuplicate(values.emplace(*enumerator.value, enumerator.line), enumerator.line,
                        Severity::Warning,
                        "the member '" + enumerator.name + "' has the same value " +
                            std::to_string(*enumerator.value));
      }
    }
  }

  TypeManager& _manager;
  std::map<std::string, ResourceFileSet*> _sets;  // by folder
  std::vector<Finding> _findings;
  std::size_t _fileCount = 0;
  std::size_t _typeCount = 0;
};

}  // namespace

void runCheck(Catalogue& catalogue) {
  CatalogueCheck check(catalogue);
  check.run();
  if (!check.hasFiles()) throw noCatalogue(catalogue.getManager());

  const std::vector<Finding>& findings = check.getFindings();
  const bool asJson = catalogue.getOptions().printJson;
  if (findings.empty() && !asJson) {
    std::printf("no finding: %s\n", check.getSummary().c_str());
  } else {
    printFindings(findings, asJson);
  }
  if (!findings.empty()) {
    throw Failure(kProblem, std::to_string(findings.size()) +
                                (findings.size() == 1 ? " finding" : " findings") + " in " +
                                check.getSummary());
  }
}

}  // namespace zavri::korvat::tool
