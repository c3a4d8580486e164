#include "tool/JsonPath.h"

#include <algorithm>
#include <utility>

#include "korvat/base/StringUtils.h"
#include "tool/Failure.h"
#include "tool/NearestName.h"

namespace zavri::korvat::tool {

namespace {

std::vector<std::string> memberNames(const json::Value& object) {
  std::vector<std::string> names;
  for (const auto& [name, value] : object.getPropertyMap()) names.push_back(name);
  return names;
}

const json::Value& getMember(const json::Value& node, const std::string& name,
                             const std::string& path) {
  const json::Value* member = node.getPropertyMap().find(name);
  if (member != nullptr) return *member;
  const std::vector<std::string> names = memberNames(node);
  const std::vector<std::string> nearest = findNearest(name, names);
  const std::string expected =
      node.isObject() ? "expected one of: " + joinNames(names) : "there are no members here";
  throw Failure(kProblem, "no member '" + name + "' at path '" + path + "'; " + expected +
                              didYouMean(nearest))
      .with("member", path)
      .with("given", name)
      .with("expected", names)
      .with("nearest", nearest);
}

}  // namespace

// Components are "name", "name[3]" or "[3][1]"; a "." at the end is followed by an empty name.
MemberPath::MemberPath(const std::string& text) : _text(text) {
  std::size_t begin = 0;
  while (!text.empty() && begin <= text.size()) {
    const std::size_t end = std::min(text.find('.', begin), text.size());
    const std::string component = text.substr(begin, end - begin);
    const std::size_t bracket = std::min(component.find('['), component.size());
    if (bracket > 0 || component.empty()) _steps.push_back({component.substr(0, bracket)});
    addIndices(component.substr(bracket));
    begin = end + 1;
  }
}

// "[3][1]" as "3" and "1"; what does not fit the form stays in the text and is no number then.
void MemberPath::addIndices(const std::string& text) {
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find(']', begin), text.size());
    const bool isClosed = text[begin] == '[' && end < text.size();
    Step step{isClosed ? text.substr(begin + 1, end - begin - 1) : text.substr(begin), true};
    step.isNumber =
        !step.text.empty() && step.text.find_first_not_of("0123456789") == std::string::npos;
    if (step.isNumber) {
      step.index = static_cast<unsigned>(util::StringUtils::toInt32(step.text));
    } else {
      step.text = text;
    }
    _steps.push_back(step);
    begin = isClosed ? end + 1 : text.size();
  }
}

const json::Value* MemberPath::find(const json::Value& root) const {
  const json::Value* node = &root;
  for (const Step& step : _steps) {
    if (!step.isElement) {
      node = node->getPropertyMap().find(step.text);
      if (node == nullptr) return nullptr;
    } else {
      if (!step.isNumber || !node->isArray() || step.index >= node->getSize()) return nullptr;
      node = &(*node)[step.index];
    }
  }
  return node;
}

json::Value* MemberPath::find(json::Value& root) const {
  return find(std::as_const(root)) == nullptr ? nullptr : &make(root);
}

const json::Value& MemberPath::get(const json::Value& root) const {
  const json::Value* node = &root;
  for (const Step& step : _steps) {
    node = step.isElement ? &getElement(*node, step) : &getMember(*node, step.text, _text);
  }
  return *node;
}

const json::Value& MemberPath::getElement(const json::Value& array, const Step& step) const {
  if (!step.isNumber) {
    throw Failure(kProblem,
                  "'" + step.text + "' at path '" + _text + "' is not an index; expected [n]")
        .with("member", _text)
        .with("given", step.text)
        .with("expected", "[n]");
  }
  if (array.isArray() && step.index < array.getSize()) return array[step.index];
  const std::string expected =
      array.isArray() ? "there are " + std::to_string(array.getSize()) : "there is no array here";
  throw Failure(kProblem, "no element [" + step.text + "] at path '" + _text + "'; " + expected)
      .with("member", _text)
      .with("given", "[" + step.text + "]")
      .with("expected", expected);
}

json::Value& MemberPath::make(json::Value& root) const {
  json::Value* node = &root;
  for (const Step& step : _steps) {
    node = step.isElement ? &(*node)[step.index] : &(*node)[step.text];
  }
  return *node;
}

const json::Value& select(const json::Value& root, const std::string& path) {
  return MemberPath(path).get(root);
}

json::Value placeAt(const std::string& path, const json::Value& leaf) {
  json::Value root;
  MemberPath(path).make(root) = leaf;
  return root;
}

}  // namespace zavri::korvat::tool
