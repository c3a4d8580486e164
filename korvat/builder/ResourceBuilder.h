#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "korvat/base/XmlParser.h"
#include "korvat/builder/BuilderMaster.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat {
class ResourceFileSet;
}

namespace zavri::korvat::builder {

class ItemBuilder;

// Reads resource directory files into one file set:
//
//   <ldrf>
//     <control><folder>0000000000000000-0</folder></control>
//     <strings><string id="u_degC">degrees Celsius</string> ... </strings>
//     <items><enumt .../> <nvt .../> <cpt .../> <fpt .../> ... </items>
//   </ldrf>
//
// Each file is read twice: the first pass collects the strings, the second builds the items, so
// that an item may use a string that is defined behind it. Each item element goes to the item
// builder of its kind.
class ResourceBuilder : private xml::XmlParser, public BuilderMaster {
 public:
  // A pass over a file.
  enum Mode : std::uint32_t {
    M_CollectStrings,
    M_BuildResources,
  };

  // The file set must outlive the builder.
  explicit ResourceBuilder(ResourceFileSet& fileSet);
  ~ResourceBuilder() override;

  // Loads one file. False, with a warning, when it cannot be opened (the warning only if asked
  // for; a pipe, a device or a socket is never opened) or is broken. Text that is no XML fails
  // before any item is read; where the items themselves end the load, those before were added all
  // the same.
  bool load(const std::string& path, bool warnIfMissing);

  // True when memory ran out while the last file was parsed: it is not at fault then.
  bool isOutOfMemory() const { return _isOutOfMemory; }

  // Line, from 1, that the load has reached.
  using xml::XmlParser::getLine;

  void addItem(std::unique_ptr<BaseType> item) override;
  void onItemBuildDone() override;
  const std::string* lookupString(const std::string& id) override;
  void skipElement() override;

  // "M_CollectStrings" or "M_BuildResources"; "(unknown)" for any other number.
  static const char* modeName(std::uint32_t mode);

 protected:
  void onElement(const xml::Element& element, const xml::Attributes& attributes) override;
  void onElementEnd(const xml::Element& element) override;
  void onValue(const std::string& value) override;

  // Feeds one event of the directory's own elements, see ResourceTransitionTable. What an action
  // does depends on the pass.
  void processEvent(std::uint32_t event, const xml::Attributes* attributes,
                    const std::string* value);
  void processAction(std::uint32_t action, const xml::Attributes* attributes,
                     const std::string* value);
  std::uint32_t getState() const { return _state; }
  const ItemBuilder* getItemBuilder() const { return _itemBuilder.get(); }

 private:
  void prepare(Mode mode);
  bool runPass(const std::string& path, bool warnIfMissing);
  bool isBuildingItem() const;
  bool isPassingItem() const;

  void collect(std::uint32_t action, const xml::Attributes* attributes, const std::string* value);
  void build(std::uint32_t action, const xml::Attributes* attributes, const std::string* value);
  void handleItem(const char* operation, ResourceType kind, const char* elementName,
                  const xml::Attributes* attributes);
  std::unique_ptr<ItemBuilder> makeItemBuilder(ResourceType kind);
  void setStringId(const xml::Attributes* attributes);
  void addToDictionary(const std::string* value);

  ResourceFileSet& _fileSet;
  Mode _mode = M_CollectStrings;
  bool _isOutOfMemory = false;
  std::uint32_t _state = 0;
  ResourceType _builderKind = ResourceType::Invalid;  // of the items that _itemBuilder builds
  std::map<std::string, std::string> _strings;        // text by id
  std::string _stringId;                              // of the "string" element being read
  std::unique_ptr<ItemBuilder> _itemBuilder;          // kept for the next item of its kind
};

}  // namespace zavri::korvat::builder
