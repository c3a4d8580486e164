#include "korvat/format/Concatenation.h"

namespace zavri::korvat::format {

void Concatenation::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  for (std::size_t i = 0; i < _parts.size(); ++i) dumpChild(text, level + 1, i, _parts[i].get());
}

}  // namespace zavri::korvat::format
