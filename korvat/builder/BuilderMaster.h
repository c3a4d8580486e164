#pragma once

#include <memory>
#include <string>

#include "korvat/types/BaseType.h"

namespace zavri::korvat::builder {

// What an item builder reports to and asks for help.
class BuilderMaster {
 public:
  virtual ~BuilderMaster() = default;

  // Takes a finished item; destroys it when it cannot be stored. May be null.
  virtual void addItem(std::unique_ptr<BaseType> item) = 0;
  // The item builder has seen the end of its item: the elements that follow are the master's again.
  virtual void onItemBuildDone() = 0;
  // Text that the file's dictionary holds under `id`, or null. Valid until the next load.
  virtual const std::string* lookupString(const std::string& id) = 0;
  // From an element start: passes over the rest of the element, children included.
  virtual void skipElement() = 0;
};

}  // namespace zavri::korvat::builder
