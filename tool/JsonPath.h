#pragma once

#include <string>
#include <vector>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// A member path ("values[3].state") taken apart once, to be followed in many converted values. The
// empty path leads to the whole value.
class MemberPath {
 public:
  explicit MemberPath(const std::string& text);

  const std::string& getText() const { return _text; }

  // The node at the path; null when `root` has none.
  const json::Value* find(const json::Value& root) const;
  json::Value* find(json::Value& root) const;
  // The same; throws Failure naming the component that leads nowhere and what there is instead.
  const json::Value& get(const json::Value& root) const;
  // The same; what is missing along the path is made. For paths that have led somewhere.
  json::Value& make(json::Value& root) const;

 private:
  // A member's name or an index without its brackets; where that is no number, all of the indices.
  struct Step {
    std::string text;
    bool isElement = false;
    bool isNumber = false;
    unsigned index = 0;
  };

  void addIndices(const std::string& text);
  const json::Value& getElement(const json::Value& array, const Step& step) const;

  std::string _text;
  std::vector<Step> _steps;
};

// The node at a member path of a converted value. Throws as MemberPath::get().
const json::Value& select(const json::Value& root, const std::string& path);

// A value that holds `leaf` at a member path that select() has found, and null everywhere else.
json::Value placeAt(const std::string& path, const json::Value& leaf);

}  // namespace zavri::korvat::tool
