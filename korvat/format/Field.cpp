#include "korvat/format/Field.h"

#include "korvat/base/StringUtils.h"

namespace zavri::korvat::format {

using util::StringUtils;

void Field::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  indent(text, level + 1);
  text += "field spec: " + _fieldName;
  if (_conversion != 0) text += std::string(" '%") + _conversion + "'";
  if (_numericSpec) {
    text += " * " + StringUtils::toString(_numericSpec->factor) + " + " +
            StringUtils::toString(_numericSpec->offset) +
            "   mode=" + StringUtils::toString(_numericSpec->mode.value_or(0)) +
            " index=" + StringUtils::toString(_numericSpec->index.value_or(0));
  }
  text += "\n";
}

}  // namespace zavri::korvat::format
