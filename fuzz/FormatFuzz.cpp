// Display formats: any text is parsed or refused with a reason, and what was parsed reads the same
// again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "korvat/base/Logger.h"
#include "korvat/format/FormatParser.h"

using zavri::base::Logger;
using zavri::korvat::format::FormatParser;

namespace {

void require(bool isTrue) {
  if (!isTrue) std::abort();
}

// The tree of `text`; empty for a text that is no format.
std::string treeOf(const std::string& text) {
  FormatParser parser;
  std::string tree;
  const bool isParsed = parser.parse(text);
  const auto format = parser.takeFormat();
  require(isParsed == parser.getError().empty());
  require(isParsed == (format != nullptr));
  if (format) {
    require(format->getText() == text);
    format->dump(tree, 0);
    static_cast<void>(format->getFields());
  }
  return tree;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const Logger::Sink previous = Logger::setSink([](Logger::Level, const std::string&) {});
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string tree = treeOf(text);
  if (tree.empty()) return 0;

  // What stands behind the format does not count, so the tree stays the same.
  require(treeOf(text + ")") == tree);
  return 0;
}
