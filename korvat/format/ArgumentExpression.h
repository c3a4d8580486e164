#pragma once

#include <string>
#include <vector>

#include "korvat/format/FormatBase.h"

namespace zavri::korvat::format {

// A function over members, whose place in the call tells what they are: date(year, month, day).
class KORVAT_API ArgumentExpression : public FormatBase {
 public:
  void dump(std::string& text, unsigned level) const override;

  // What the argument at `position` (from 0) means, such as "year"; null beyond the last one.
  virtual const char* getPartName(std::size_t position) const = 0;

  // Takes the member path of the next argument. False, and nothing changes, when the function has
  // no part for it.
  [[nodiscard]] bool add(const std::string& memberPath);
  const std::vector<std::string>& getArguments() const { return _arguments; }

 protected:
  explicit ArgumentExpression(Kind kind) : FormatBase(kind) {}

 private:
  std::vector<std::string> _arguments;  // member paths
};

}  // namespace zavri::korvat::format
