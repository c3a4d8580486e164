#include "tool/JsonPath.h"

#include <algorithm>

#include "korvat/base/StringUtils.h"
#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

std::string memberNames(const json::Value& object) {
  std::string names;
  for (const auto& [name, value] : object.getPropertyMap()) {
    names += (names.empty() ? "" : ", ") + name;
  }
  return names;
}

const json::Value& selectMember(const json::Value& node, const std::string& name,
                                const std::string& path) {
  const json::Value* member = node.getPropertyMap().find(name);
  if (member != nullptr) return *member;
  const std::string expected =
      node.isObject() ? "expected one of: " + memberNames(node) : "there are no members here";
  throw Failure(kProblem, "no member '" + name + "' at path '" + path + "'; " + expected);
}

const json::Value& selectElement(const json::Value& node, const std::string& text,
                                 const std::string& path) {
  bool isNumber = false;
  const std::int32_t index =
      text.size() > 2 && text.back() == ']'
          ? util::StringUtils::toInt32(text.substr(1, text.size() - 2), isNumber)
          : 0;
  if (!isNumber || index < 0) {
    throw Failure(kProblem, "'" + text + "' at path '" + path + "' is not an index; expected [n]");
  }
  const auto element = static_cast<unsigned>(index);
  if (!node.isArray() || element >= node.getSize()) {
    const std::string expected =
        node.isArray() ? "there are " + std::to_string(node.getSize()) : "there is no array here";
    throw Failure(kProblem, "no element " + text + " at path '" + path + "'; " + expected);
  }
  return node[element];
}

}  // namespace

const json::Value& select(const json::Value& root, const std::string& path) {
  const json::Value* node = &root;
  std::size_t begin = 0;
  while (begin < path.size()) {
    const std::size_t end = std::min(path.find('.', begin), path.size());
    const std::string component = path.substr(begin, end - begin);
    const std::size_t bracket = std::min(component.find('['), component.size());
    if (bracket > 0 || component.empty()) {
      node = &selectMember(*node, component.substr(0, bracket), path);
    }
    if (bracket < component.size()) {
      node = &selectElement(*node, component.substr(bracket), path);
    }
    begin = end + 1;
  }
  return *node;
}

}  // namespace zavri::korvat::tool
