#include "tool/ItemIndex.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

#include "korvat/base/StringUtils.h"

namespace zavri::korvat::tool {

namespace {

struct ElementRow {
  std::string_view name;
  ResourceType kind;
};

constexpr std::array<ElementRow, 4> kElements{{
    {"enumt", ResourceType::Enum},
    {"nvt", ResourceType::Nv},
    {"cpt", ResourceType::Cp},
    {"fpt", ResourceType::Fp},
}};

std::optional<std::int32_t> numberOf(const xml::Attributes& attributes, const char* name) {
  const std::string* text = attributes.find(name);
  if (text == nullptr) return std::nullopt;
  return util::StringUtils::toInt32(*text);
}

}  // namespace

bool ItemIndex::read(const std::string& path) {
  _items.clear();
  _lines.clear();
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    _error = std::string("cannot be read: ") + std::strerror(errno);
    return false;
  }
  if (parse(file) == State::Complete) return true;
  _error = XmlParser::getError();
  return false;
}

void ItemIndex::onElement(const xml::Element& element, const xml::Attributes& attributes) {
  const auto& open = getElementStack();
  if (open.size() < 3 || open[1].name != "items") return;
  if (open.size() > 3) {
    const std::string* id = attributes.find("id");
    if (element.name == "e-member" && id != nullptr && !_items.empty()) {
      _items.back().enumerators.push_back({*id, std::nullopt, getLine()});
    }
    return;
  }
  const auto row = std::find_if(kElements.begin(), kElements.end(), [&](const ElementRow& known) {
    return known.name == element.name;
  });
  if (row == kElements.end()) return;

  const std::string* id = attributes.find("id");
  const std::string name = id == nullptr ? std::string() : *id;
  const std::string* summary = attributes.find("summary");
  _items.push_back({row->kind,
                    row->kind == ResourceType::Fp ? TypeId::stripPrefix(name) : name,
                    numberOf(attributes, "idx"),
                    numberOf(attributes, "key"),
                    summary == nullptr ? std::string() : *summary,
                    getLine(),
                    {}});
  _lines[_items.back().name] = getLine();
}

void ItemIndex::onValue(const std::string& value) {
  if (_items.empty() || _items.back().enumerators.empty()) return;
  if (getElementStack().back().name != "value") return;
  _items.back().enumerators.back().value = util::StringUtils::toInt32(value);
}

unsigned long ItemIndex::findLine(const std::string& name) const {
  const auto found = _lines.find(name);
  return found == _lines.end() ? 0 : found->second;
}

}  // namespace zavri::korvat::tool
