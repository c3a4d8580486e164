#pragma once

#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "korvat/base/XmlParser.h"
#include "korvat/builder/BuilderMaster.h"
#include "korvat/builder/ItemBuilder.h"

namespace zavri::korvat::builder {

// Feeds XML text to one item builder and is its master meanwhile.
class BuilderDriver : public BuilderMaster, private xml::XmlParser {
 public:
  explicit BuilderDriver(ItemBuilder& builder) : _builder(builder) { builder.setMaster(this); }
  ~BuilderDriver() override { _builder.setMaster(nullptr); }

  // True when the text is well-formed and was read to its end.
  bool feed(const std::string& xml) {
    std::istringstream stream(xml);
    return parse(stream) == State::Complete;
  }

  void addItem(std::unique_ptr<BaseType> item) override {
    calls.push_back("addItem");
    items.push_back(std::move(item));
  }
  void onItemBuildDone() override { calls.push_back("onItemBuildDone"); }
  const std::string* lookupString(const std::string& id) override {
    const auto found = strings.find(id);
    return found == strings.end() ? nullptr : &found->second;
  }
  void skipElement() override {
    calls.push_back("skipElement");
    xml::XmlParser::skipElement();
  }

  // The only item, as a T; null when it is none or there is another number of items.
  template <typename T>
  const T* item() const {
    return items.size() == 1 ? dynamic_cast<const T*>(items.front().get()) : nullptr;
  }

  std::vector<std::unique_ptr<BaseType>> items;  // that the builder gave, in order
  std::vector<std::string> calls;                // what the builder asked for, but for strings
  std::map<std::string, std::string> strings;    // the dictionary

 private:
  void onElement(const xml::Element& element, const xml::Attributes& attributes) override {
    _builder.onElement(element.name, AttributeMap(attributes.begin(), attributes.end()));
  }
  void onElementEnd(const xml::Element& element) override { _builder.onElementEnd(element.name); }
  void onValue(const std::string& value) override {
    _builder.onValue(getElementStack().back().name, value);
  }

  ItemBuilder& _builder;
};

}  // namespace zavri::korvat::builder
