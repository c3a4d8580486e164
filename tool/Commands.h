#pragma once

#include <string>
#include <vector>

#include "tool/Catalogue.h"

// The commands of the program. Each writes its result to standard output only when all of it is
// known, and throws Failure where there is none.
namespace zavri::korvat::tool {

// Raw bytes, given as hexadecimal text in one or more pieces, to JSON.
void runDecode(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex);

// One member of a raw value as JSON.
void runGet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path);

// The layout of a type, or the items of an enumeration.
void runDescribe(Catalogue& catalogue, const std::string& type);

// The types of one kind ("nv", "cp" or "enum"; all for an empty text) whose name matches a pattern:
// with "*" and "?" as a whole, without them anywhere, in either case.
void runList(Catalogue& catalogue, const std::string& kind, const std::string& pattern);

}  // namespace zavri::korvat::tool
