#include "korvat/builder/ItemBuilder.h"

#include <utility>

#include "korvat/base/Logger.h"
#include "korvat/base/StringUtils.h"

namespace zavri::korvat::builder {

using base::Logger;

namespace {

// The enumeration type that lists the character encodings.
constexpr const char* kCharEncodingType = "char_encoding_t";

}  // namespace

void ItemBuilder::setIdAndIndex(BaseType& item, const AttributeMap* attributes) {
  if (attributes == nullptr) {
    Logger::warning("[ItemBuilder] missing attributes in member\n");
    return;
  }

  if (const std::string* id = findAttribute(*attributes, "id")) {
    item.getTypeId().setId(*id);
    if (*id == kCharEncodingType) item.addFlags(BaseType::kCharEncoding);
  } else {
    Logger::warning("[ItemBuilder] missing attribute 'id' in item\n");
  }

  if (const std::string* index = findAttribute(*attributes, "idx")) {
    item.setIndex(util::StringUtils::toInt32(*index));
  } else {
    Logger::warning("[ItemBuilder] missing attribute 'idx' in item\n");
  }
}

void ItemBuilder::passItemToMaster(std::unique_ptr<BaseType> item) {
  if (_master != nullptr) _master->addItem(std::move(item));
}

void ItemBuilder::reportDone() {
  if (_master != nullptr) _master->onItemBuildDone();
}

const std::string* ItemBuilder::lookupString(const std::string& id) {
  return _master == nullptr ? nullptr : _master->lookupString(id);
}

void ItemBuilder::skipElement() {
  if (_master != nullptr) _master->skipElement();
}

}  // namespace zavri::korvat::builder
