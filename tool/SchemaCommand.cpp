#include <cstdio>

#include "tool/Commands.h"
#include "tool/Schema.h"

namespace zavri::korvat::tool {

void runSchema(Catalogue& catalogue, const std::vector<std::string>& types) {
  const unsigned short indent = types.size() == 1 ? 2 : 0;
  std::string text;
  for (const std::string& type : types) {
    text += makeSchema(catalogue, catalogue.findVarType(type)).stringify(indent) + "\n";
  }
  std::fputs(text.c_str(), stdout);
}

}  // namespace zavri::korvat::tool
