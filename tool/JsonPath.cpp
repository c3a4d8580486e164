#include "tool/JsonPath.h"

#include <algorithm>
#include <vector>

#include "korvat/base/StringUtils.h"
#include "tool/Failure.h"
#include "tool/NearestName.h"

namespace zavri::korvat::tool {

namespace {

// "[3][1]" as "3" and "1"; what does not fit the form stays in the text and is no number then.
std::vector<std::string> splitIndices(const std::string& text) {
  std::vector<std::string> indices;
  std::size_t begin = 0;
  while (begin < text.size()) {
    const std::size_t end = std::min(text.find(']', begin), text.size());
    const bool isClosed = text[begin] == '[' && end < text.size();
    indices.push_back(isClosed ? text.substr(begin + 1, end - begin - 1) : text.substr(begin));
    begin = isClosed ? end + 1 : text.size();
  }
  return indices;
}

std::vector<std::string> memberNames(const json::Value& object) {
  std::vector<std::string> names;
  for (const auto& [name, value] : object.getPropertyMap()) names.push_back(name);
  return names;
}

const json::Value& selectMember(const json::Value& node, const std::string& name,
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

// The node at "[3]" or "[3][1]".
const json::Value& selectElement(const json::Value& array, const std::string& indices,
                                 const std::string& path) {
  const json::Value* node = &array;
  for (const std::string& text : splitIndices(indices)) {
    const bool isNumber =
        !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (!isNumber) {
      throw Failure(kProblem,
                    "'" + indices + "' at path '" + path + "' is not an index; expected [n]");
    }
    const auto index = static_cast<unsigned>(util::StringUtils::toInt32(text));
    if (!node->isArray() || index >= node->getSize()) {
      const std::string expected = node->isArray() ? "there are " + std::to_string(node->getSize())
                                                   : "there is no array here";
      throw Failure(kProblem, "no element [" + text + "] at path '" + path + "'; " + expected);
    }
    node = &(*node)[index];
  }
  return *node;
}

// "name", "name[3]" or "[3][1]": the name and the indices, each empty when there is none.
struct Component {
  std::string name;
  std::string index;
};

std::vector<Component> split(const std::string& path) {
  std::vector<Component> components;
  std::size_t begin = 0;
  while (!path.empty() && begin <= path.size()) {  // a "." at the end is followed by an empty name
    const std::size_t end = std::min(path.find('.', begin), path.size());
    const std::string text = path.substr(begin, end - begin);
    const std::size_t bracket = std::min(text.find('['), text.size());
    components.push_back({text.substr(0, bracket), text.substr(bracket)});
    begin = end + 1;
  }
  return components;
}

}  // namespace

const json::Value& select(const json::Value& root, const std::string& path) {
  const json::Value* node = &root;
  for (const Component& component : split(path)) {
    if (!component.name.empty() || component.index.empty()) {
      node = &selectMember(*node, component.name, path);
    }
    if (!component.index.empty()) node = &selectElement(*node, component.index, path);
  }
  return *node;
}

json::Value placeAt(const std::string& path, const json::Value& leaf) {
  json::Value root;
  json::Value* node = &root;
  for (const Component& component : split(path)) {
    if (!component.name.empty()) node = &(*node)[component.name];
    for (const std::string& index : splitIndices(component.index)) {
      node = &(*node)[static_cast<unsigned>(util::StringUtils::toInt32(index))];
    }
  }
  *node = leaf;
  return root;
}

}  // namespace zavri::korvat::tool
