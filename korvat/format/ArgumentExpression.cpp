#include "korvat/format/ArgumentExpression.h"

namespace zavri::korvat::format {

bool ArgumentExpression::add(const std::string& memberPath) {
  if (getPartName(_arguments.size()) == nullptr) return false;
  _arguments.push_back(memberPath);
  return true;
}

void ArgumentExpression::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  indent(text, level + 1);
  text += _arguments.empty() ? "expressions:(empty)\n" : "expressions:\n";
  for (std::size_t i = 0; i < _arguments.size(); ++i) {
    indent(text, level + 2);
    text += "[" + std::to_string(i) + "] " + getPartName(i) + " = " + _arguments[i] + "\n";
  }
}

}  // namespace zavri::korvat::format
