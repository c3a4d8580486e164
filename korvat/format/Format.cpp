#include "korvat/format/Format.h"

namespace zavri::korvat {

void Format::dump(std::string& text, unsigned level) const {
  dumpKind(text, level);
  if (_body) {
    _body->dump(text, level + 1);
  } else {
    indent(text, level + 1);
    text += "(null)\n";
  }
}

}  // namespace zavri::korvat
