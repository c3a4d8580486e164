#pragma once

#include <array>
#include <memory>
#include <optional>
#include <string>

#include "korvat/base/Export.h"
#include "korvat/types/BaseType.h"
#include "korvat/types/ResourceGroup.h"

namespace zavri::korvat {

class TypeManager;
namespace builder {
class ResourceBuilder;
}

// The resources of one prefix: a folder with one file per kind of type, each read the first time
// something asks for its kind.
//
// Copies of a manager share their file sets. So that a set never depends on a manager that may be
// gone, it notes the base folder of the one that made it; a later change of that folder does not
// move the set. Loading changes the set, and so does a request for a group whose file is missing;
// once the groups in use are loaded, look-ups in them may run side by side.
class KORVAT_API ResourceFileSet {
 public:
  // `folder` is relative to the manager's base folder. Reads nothing.
  ResourceFileSet(const TypeManager* owner, const char* folder);
  ~ResourceFileSet();

  // Folder under `baseDir` that holds the resources of `prefix`. Where no folder has that name and
  // the scope is one that counts the usage byte (2, 5, 6), the variants with the two top bits of
  // that byte set are tried; when there is none of them either, the prefix itself.
  static std::string locateFolder(const std::string& baseDir, const std::string& prefix);

  // The group of that kind, loaded now if it was not; null when its file is missing or broken (the
  // next call tries again) and for Invalid. `showWarnings` also reports a missing file. The display
  // formats of a group that is loaded now may show members of other types: `typeManager` finds
  // those; without it they count as missing. Throws std::bad_alloc when memory runs out.
  const ResourceGroup* getGroup(ResourceType type, bool showWarnings,
                                TypeManager* typeManager = nullptr);

  // The same, but null, and nothing is read, when it is not loaded.
  const ResourceGroup* getLoadedGroup(ResourceType type) const;

  // Takes a type that was read from the file of `group`; false, and the type is destroyed, when
  // that is not the file being read or the group drops the type. The type becomes one of this set's
  // prefix when the folder's name is a valid prefix.
  bool addType(ResourceType group, std::unique_ptr<BaseType> type);

  const std::string& getFolder() const { return _folder; }

  // "enums", "nvs", "cps" or "fps", to which ".xml" is added; empty for Invalid.
  static const char* getFileName(ResourceType type);

  // A place in a resource file.
  struct Place {
    ResourceType group;
    unsigned long line;  // from 1
  };
  // The place being read: tells a sink of the Logger what a message is about. Nothing when no file
  // of this set is being read.
  std::optional<Place> getPlaceUnderWay() const;

 private:
  bool loadResources(ResourceType type, bool showWarnings, TypeManager* typeManager);
  std::unique_ptr<ResourceGroup>* findSlot(ResourceType type);
  static bool isGroup(ResourceType type);

  std::string _baseDir;
  std::string _folder;
  ResourceType _groupUnderWay = ResourceType::Invalid;  // whose file is being read
  const builder::ResourceBuilder* _builderUnderWay = nullptr;
  // By ResourceType; the first stays empty. Destroyed in the reverse of this order. That of the
  // functional profiles is a ResourceGroupFp.
  std::array<std::unique_ptr<ResourceGroup>, 5> _groups;
};

}  // namespace zavri::korvat
