#include "tool/Summaries.h"

#include "korvat/types/ResourceFileSet.h"
#include "tool/ItemIndex.h"

namespace zavri::korvat::tool {

const std::string& Summaries::find(const BaseType& type) {
  static const std::string kNone;
  const TypeId id = type.getTypeId();
  const std::string path =
      _baseDir + "/" + id.getPrefix() + "/" + ResourceFileSet::getFileName(id.getType()) + ".xml";
  const auto [file, isNew] = _files.try_emplace(path);
  if (isNew) {
    ItemIndex index;
    // The types of a file that cannot be read a second time have no summary.
    if (index.read(path)) {
      for (const ItemIndex::Item& item : index.getItems()) file->second[item.name] = item.summary;
    }
  }
  const auto found = file->second.find(id.getId());
  return found == file->second.end() ? kNone : found->second;
}

}  // namespace zavri::korvat::tool
