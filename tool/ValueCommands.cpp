#include <cstdio>

#include "tool/Commands.h"
#include "tool/JsonPath.h"

namespace zavri::korvat::tool {

namespace {

json::Value decodeText(Catalogue& catalogue, const std::string& type, const std::string& hex) {
  const VarType& varType = catalogue.findVarType(type);
  const base::Buffer buffer = catalogue.readHex(hex);
  catalogue.checkLength(varType, buffer);
  return catalogue.decode(varType, buffer);
}

void print(const json::Value& value) {
  std::printf("%s\n", value.stringify().c_str());
}

}  // namespace

void runDecode(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex) {
  std::string text;
  for (const std::string& piece : hex) text += (text.empty() ? "" : " ") + piece;
  print(decodeText(catalogue, type, text));
}

void runGet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path) {
  print(select(decodeText(catalogue, type, hex), path));
}

}  // namespace zavri::korvat::tool
