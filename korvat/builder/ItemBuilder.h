#pragma once

#include <memory>
#include <string>

#include "korvat/builder/AttributeMap.h"
#include "korvat/builder/BuilderMaster.h"
#include "korvat/types/BaseType.h"

namespace zavri::korvat::builder {

// Builds catalogue items of one kind, one after the other, from the elements between the start and
// the end of an item element. Problems in an item are warnings and leave the field unset.
class ItemBuilder {
 public:
  virtual ~ItemBuilder() = default;

  // Drops a half-built item, so that the next one can begin.
  virtual void reset() {}

  virtual void onElement(const std::string& name, const AttributeMap& attributes) = 0;
  virtual void onElementEnd(const std::string& name) = 0;
  // The text of the element `name`.
  virtual void onValue(const std::string& name, const std::string& value) = 0;

  // The master must outlive the builder's use. Without one, finished items are destroyed.
  void setMaster(BuilderMaster* master) { _master = master; }

  // Name of the resource file set that is being loaded, for messages and references.
  const std::string& getFileSetName() const { return _fileSetName; }
  void setFileSetName(const std::string& name) { _fileSetName = name; }

 protected:
  // Reads "id" and "idx" of the item element; a missing one is a warning and left unset.
  static void setIdAndIndex(BaseType& item, const AttributeMap* attributes);

  void passItemToMaster(std::unique_ptr<BaseType> item);
  void reportDone();
  const std::string* lookupString(const std::string& id);
  void skipElement();

 private:
  BuilderMaster* _master = nullptr;
  std::string _fileSetName;
};

}  // namespace zavri::korvat::builder
