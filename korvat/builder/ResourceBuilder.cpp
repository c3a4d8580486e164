#include "korvat/builder/ResourceBuilder.h"

#include <array>
#include <exception>
#include <filesystem>
#include <fstream>
#include <new>
#include <system_error>
#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/builder/ElementMap.h"
#include "korvat/builder/EnumBuilder.h"
#include "korvat/builder/FpBuilder.h"
#include "korvat/builder/ResourceTransitionTable.h"
#include "korvat/builder/VarBuilder.h"
#include "korvat/types/ResourceFileSet.h"

namespace zavri::korvat::builder {

using base::Logger;

namespace {

using Table = ResourceTransitionTable;
using enum ResourceTransitionTable::Event;

constexpr std::array<const char*, 2> kModeNames{"M_CollectStrings", "M_BuildResources"};
static_assert(kModeNames.size() == ResourceBuilder::M_BuildResources + 1);

// The end of "enumt" gives no event, and that of "enum" ends an item wherever it stands. This shows
// in the pass that collects strings, where no item builder sees the ends: strings behind the items
// are collected only when the last item is no "enumt".
// clang-format off
constexpr TElementMap<11> kElements({{
    // name      start       end             value
    {"control",  PE_control, PE_control_end, PE_None},
    {"cpt",      PE_cpt,     PE_item_end,    PE_None},
    {"enum",     PE_None,    PE_item_end,    PE_None},
    {"enumt",    PE_enumt,   PE_None,        PE_None},
    {"folder",   PE_None,    PE_None,        PE_folder_value},
    {"fpt",      PE_fpt,     PE_item_end,    PE_None},
    {"items",    PE_items,   PE_items_end,   PE_None},
    {"ldrf",     PE_ldrf,    PE_ldrf_end,    PE_None},
    {"nvt",      PE_nvt,     PE_item_end,    PE_None},
    {"string",   PE_string,  PE_string_end,  PE_string_value},
    {"strings",  PE_strings, PE_strings_end, PE_None},
}});
// clang-format on
static_assert(kElements.isUnambiguous());

// True for pipes, terminals and the like: opening or reading one may not end.
bool isWaitedFor(const std::string& path) {
  std::error_code unreadable;
  return std::filesystem::is_other(path, unreadable);
}

}  // namespace

ResourceBuilder::ResourceBuilder(ResourceFileSet& fileSet) : _fileSet(fileSet) {}

ResourceBuilder::~ResourceBuilder() = default;

const char* ResourceBuilder::modeName(std::uint32_t mode) {
  return findName(kModeNames, mode, "(unknown)");
}

bool ResourceBuilder::load(const std::string& path, bool warnIfMissing) {
  Logger::trace("[ResourceBuilder::load] %s\n", path.c_str());
  _strings.clear();
  _isOutOfMemory = false;
  prepare(M_CollectStrings);
  if (!runPass(path, warnIfMissing)) return false;

  prepare(M_BuildResources);
  return runPass(path, warnIfMissing);
}

void ResourceBuilder::prepare(Mode mode) {
  reinit();
  _mode = mode;
  _state = Table::PS_Begin;
  _builderKind = ResourceType::Invalid;
  _itemBuilder.reset();
}

bool ResourceBuilder::runPass(const std::string& path, bool warnIfMissing) {
  const char* mode = modeName(_mode);
  Logger::trace("[ResourceBuilder::load][%s] %s\n", mode, path.c_str());
  std::ifstream file;
  if (!isWaitedFor(path)) file.open(path, std::ios::binary);
  if (!file.is_open()) {
    if (warnIfMissing) {
      Logger::warning("[ResourceBuilder][%s] cannot load '%s'\n", mode, path.c_str());
    }
    return false;
  }

  try {
    if (parse(file) == State::Complete) return true;
    Logger::warning("[ResourceBuilder][%s] could not parse file '%s'\n", mode, path.c_str());
  } catch (const std::exception& exception) {
    _isOutOfMemory = dynamic_cast<const std::bad_alloc*>(&exception) != nullptr;
    Logger::warning("[ResourceBuilder][%s] std-exception while parsing file '%s': %s\n", mode,
                    path.c_str(), exception.what());
  } catch (const char* text) {
    Logger::warning("[ResourceBuilder][%s] exception while parsing file '%s': %s\n", mode,
                    path.c_str(), text);
  } catch (...) {
    Logger::warning("[ResourceBuilder][%s] unknown exception while parsing file '%s'\n", mode,
                    path.c_str());
  }
  return false;
}

// True while all callbacks go to the item builder.
bool ResourceBuilder::isBuildingItem() const {
  return _state == Table::PS_InItem && _itemBuilder != nullptr;
}

// True for what the pass that collects strings meets inside an item: only an element's end can have
// an effect there.
bool ResourceBuilder::isPassingItem() const {
  return _state == Table::PS_InItem && !base::isLogged(Logger::Trace);
}

void ResourceBuilder::onElement(const xml::Element& element, const xml::Attributes& attributes) {
  if (isBuildingItem()) {
    _itemBuilder->onElement(element.name, AttributeMap(attributes.begin(), attributes.end()));
    return;
  }
  if (isPassingItem()) return;

  const std::uint32_t event = kElements.find(element.name).start;
  Logger::trace("<%s>  ==> %s  (%s)\n", element.name.c_str(), Table::eventName(event),
                Table::stateName(_state));
  if (event != PE_None) processEvent(event, &attributes, nullptr);
}

void ResourceBuilder::onElementEnd(const xml::Element& element) {
  if (isBuildingItem()) {
    _itemBuilder->onElementEnd(element.name);
    return;
  }

  const std::uint32_t event = kElements.find(element.name).end;
  if (base::isLogged(Logger::Trace)) {
    Logger::trace("</%s>  ==> %s  (%s)\n", element.name.c_str(), Table::eventName(event),
                  Table::stateName(_state));
  }
  if (event != PE_None) processEvent(event, nullptr, nullptr);
}

void ResourceBuilder::onValue(const std::string& value) {
  const std::string& elementName = getElementStack().back().name;
  Logger::trace("[ResourceBuilder::onValue] element=<%s> value='%s'\n", elementName.c_str(),
                value.c_str());
  if (isBuildingItem()) {
    _itemBuilder->onValue(elementName, value);
    return;
  }
  if (isPassingItem()) return;

  processEvent(kElements.find(elementName).value, nullptr, &value);
}

void ResourceBuilder::processEvent(std::uint32_t event, const xml::Attributes* attributes,
                                   const std::string* value) {
  Logger::trace("[ResourceBuilder::processEvent] %s value=%s\n", Table::eventName(event),
                toPrintable(value));
  if (event == PE_None) return;

  const Transition* row = findTransition(Table::kTransitions, _state, event);
  if (row == nullptr) return;

  _state = row->nextState;  // before the action runs: an item's start element is handled again
  if (row->action != Table::PA_none) processAction(row->action, attributes, value);
}

void ResourceBuilder::processAction(std::uint32_t action, const xml::Attributes* attributes,
                                    const std::string* value) {
  if (action == Table::PA_checkDone) {
    Logger::trace("[ResourceBuilder::checkDone]\n");
    stop(true);
  } else if (_mode == M_CollectStrings) {
    collect(action, attributes, value);
  } else {
    build(action, attributes, value);
  }
}

void ResourceBuilder::collect(std::uint32_t action, const xml::Attributes* attributes,
                              const std::string* value) {
  if (action == Table::PA_setActStringId) setStringId(attributes);
  if (action == Table::PA_addToDictionary) addToDictionary(value);
}

void ResourceBuilder::build(std::uint32_t action, const xml::Attributes* attributes,
                            const std::string* value) {
  switch (action) {
    case Table::PA_setFolderValue:
      return Logger::trace("[ResourceBuilder::setFolderValue] %s\n", toPrintable(value));
    case Table::PA_handleEnum:
      return handleItem("handleEnum", ResourceType::Enum, "enumt", attributes);
    case Table::PA_handleNv:
      return handleItem("handleNv", ResourceType::Nv, "nvt", attributes);
    case Table::PA_handleCp:
      return handleItem("handleCp", ResourceType::Cp, "cpt", attributes);
    case Table::PA_handleFp:
      return handleItem("handleFp", ResourceType::Fp, "fpt", attributes);
    case Table::PA_verify:
      return Logger::trace("[ResourceBuilder::verify]\n");
    default:  // the others belong to the other pass
      return;
  }
}

void ResourceBuilder::handleItem(const char* operation, ResourceType kind, const char* elementName,
                                 const xml::Attributes* attributes) {
  Logger::trace("[ResourceBuilder::%s]\n", operation);
  if (attributes == nullptr) return;

  if (_builderKind != kind) {
    _builderKind = kind;
    _itemBuilder = makeItemBuilder(kind);
  }
  onElement(xml::Element{elementName}, *attributes);  // now for the item builder
}

std::unique_ptr<ItemBuilder> ResourceBuilder::makeItemBuilder(ResourceType kind) {
  std::unique_ptr<ItemBuilder> itemBuilder;
  switch (kind) {
    case ResourceType::Enum:
      itemBuilder = std::make_unique<EnumBuilder>();
      break;
    case ResourceType::Nv:
    case ResourceType::Cp:
      itemBuilder = std::make_unique<VarBuilder>();
      break;
    case ResourceType::Fp:
      itemBuilder = std::make_unique<FpBuilder>();
      break;
    case ResourceType::Invalid:
      return nullptr;
  }
  itemBuilder->setMaster(this);
  itemBuilder->setFileSetName(_fileSet.getFolder());
  return itemBuilder;
}

void ResourceBuilder::setStringId(const xml::Attributes* attributes) {
  Logger::trace("[ResourceBuilder::setActStringId]\n");
  if (attributes == nullptr) return;

  const std::string* id = attributes->find("id");
  _stringId = id == nullptr ? std::string() : *id;
}

void ResourceBuilder::addToDictionary(const std::string* value) {
  Logger::trace("[ResourceBuilder::addToDictionary] '%s' -> '%s'\n", _stringId.c_str(),
                toPrintable(value));
  if (value != nullptr) _strings[_stringId] = *value;
  _stringId.clear();
}

void ResourceBuilder::addItem(std::unique_ptr<BaseType> item) {
  Logger::trace("[ResourceBuilder::addItem] %s\n", toPrintable(item ? &item->getName() : nullptr));
  if (!item) return;

  if (!_fileSet.addType(_builderKind, std::move(item))) {
    Logger::warning("[ResourceBuilder::onItemBuildDone]\n");
  }
}

void ResourceBuilder::onItemBuildDone() {
  Logger::trace("[ResourceBuilder::onItemBuildDone]\n");
  processEvent(PE_item_end, nullptr, nullptr);
}

const std::string* ResourceBuilder::lookupString(const std::string& id) {
  Logger::trace("[ResourceBuilder::lookupString] '%s'\n", id.c_str());
  const auto found = _strings.find(id);
  return found == _strings.end() ? nullptr : &found->second;
}

void ResourceBuilder::skipElement() {
  Logger::trace("[ResourceBuilder::skipElement]\n");
  xml::XmlParser::skipElement();
}

}  // namespace zavri::korvat::builder
