#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "korvat/base/XmlParser.h"
#include "korvat/types/TypeId.h"

namespace zavri::korvat::tool {

// The items of one resource file as they stand there, also those that a later one replaces.
class ItemIndex : private xml::XmlParser {
 public:
  struct Enumerator {
    std::string name;
    std::optional<std::int32_t> value;
    unsigned long line;
  };

  struct Item {
    ResourceType kind;
    std::string name;  // as a group knows it
    std::optional<std::int32_t> index;
    std::optional<std::int32_t> key;  // of a profile
    std::string summary;              // what the item is for; may be empty
    unsigned long line;
    std::vector<Enumerator> enumerators;  // of an enumeration
  };

  // False when the file cannot be read or is no well-formed XML: getError() and getLine() tell.
  [[nodiscard]] bool read(const std::string& path);

  const std::vector<Item>& getItems() const { return _items; }
  // Line of the last item called `name`, which is the one that counts; 0 when there is none.
  unsigned long findLine(const std::string& name) const;

  using xml::XmlParser::getLine;
  const std::string& getError() const { return _error; }

 private:
  void onElement(const xml::Element& element, const xml::Attributes& attributes) override;
  void onElementEnd(const xml::Element&) override {}
  void onValue(const std::string& value) override;

  std::vector<Item> _items;
  std::unordered_map<std::string, unsigned long> _lines;  // by name
  std::string _error;
};

}  // namespace zavri::korvat::tool
