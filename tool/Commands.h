#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tool/Catalogue.h"
#include "tool/StreamOptions.h"

// The commands of the program. Each writes its result to standard output only when all of it is
// known, and throws Failure where there is none.
namespace zavri::korvat::tool {

// Raw bytes, given as hexadecimal text in one or more pieces, to JSON in the form of `shape`; with
// raw numbers {"value":...,"rawNumbers":...}.
void runDecode(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex,
               const ShapeOptions& shape);

// Raw bytes as people read them: with the display format `formatName` of the type, or, for an empty
// name, with the one that is attached to it. Throws where the type has none.
void runDecodeText(Catalogue& catalogue, const std::string& type,
                   const std::vector<std::string>& hex, const std::string& formatName);

// The bytes of one value with every member beside them: raw number, scaling, unit, enumerator, and
// whether the number keeps to its limits.
void runExplain(Catalogue& catalogue, const std::string& type, const std::vector<std::string>& hex);

// The types whose size and limits a raw value keeps to, best first, each with the value it would
// have.
void runGuess(Catalogue& catalogue, const std::vector<std::string>& hex);

// The types that have all words in their name, summary, units, member names or enumerators; those
// with the words in their names first.
void runSearch(Catalogue& catalogue, const std::vector<std::string>& words);

// One member of a raw value as JSON.
void runGet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path);

// A JSON value to raw bytes, as hexadecimal text.
void runEncode(Catalogue& catalogue, const std::string& type, const std::string& jsonText);

// A raw value with one member changed; all other bits stay. `value` is JSON, or plain text.
void runSet(Catalogue& catalogue, const std::string& type, const std::string& hex,
            const std::string& path, const std::string& value);

// A raw value from one byte order into the other.
void runSwap(Catalogue& catalogue, const std::string& type, const std::string& hex,
             base::Endianess from);

// Records, one JSON object a line, from standard input to standard output, in order and in constant
// memory. A record names its type in "type", or the options do. "raw" is decoded to "value", or
// "value" encoded to "raw"; other properties pass through; a record that fails gets "error" instead
// of the result. With a type in the options a line may also be bare: hexadecimal text to decode, a
// JSON value to encode; its result is bare too. Throws kProblem at the end when a record has
// failed, after a line for each reason on standard error.
//
// Rows of CSV input are records of texts; to encode, the columns that are named like leaves of the
// type are its value. CSV output has the columns of CsvRows: decode makes one for each leaf, encode
// "raw". Decoded values take the form of the options; see ValueShape.
void runDecodeStream(Catalogue& catalogue, const StreamOptions& options);
void runEncodeStream(Catalogue& catalogue, const StreamOptions& options);

// The layout of a type, its display formats and what they have made of it, or the items of an
// enumeration. `withTrees` also shows what each format is parsed into.
void runDescribe(Catalogue& catalogue, const std::string& type, bool withTrees);

// The bit grid of a type's layout as a picture, in a file or, for "-", on standard output.
void runDescribeAsPicture(Catalogue& catalogue, const std::string& type, const std::string& path);

// The JSON Schema of the JSON that a type converts to and from, see makeSchema(); of several types
// one line each.
void runSchema(Catalogue& catalogue, const std::vector<std::string>& types);

// Which types list shows: those that keep to everything that is given.
struct ListQuery {
  std::string kindOrPattern;  // first argument: "list nv" means a kind, "list temp" a pattern
  std::string pattern;        // second argument
  // The same kind as an option, which leaves the one argument for the pattern.
  std::optional<std::string> kind;
  std::optional<std::string> unit;  // of a member, as a whole; with "*" and "?", in either case
  std::optional<std::string> size;  // bytes of a value: "2", or a range, "1-4"
};

// The types of one kind ("nv", "cp", "enum" or "fp"; all when none is given) whose name matches a
// pattern: with "*" and "?" as a whole, without them anywhere, in either case. Only types that
// values have match a unit or a size. Throws kWrongUsage for what is no kind or size.
void runList(Catalogue& catalogue, const ListQuery& query);

// What is wrong with the files of the catalogue: one line for each finding, or JSON. Throws
// kProblem at the end when there is any.
void runCheck(Catalogue& catalogue);

// What has changed from one catalogue to another: one line for each finding, or JSON. Throws
// kProblem at the end when raw values or their JSON form are not what they were.
void runDiff(Catalogue& oldCatalogue, Catalogue& newCatalogue);

// A functional profile, named or by its key, with its datapoints and those of the profiles it
// inherits from. A key is searched from the set of the option --prefix towards the standard set.
void runProfile(Catalogue& catalogue, const std::string& nameOrKey);

}  // namespace zavri::korvat::tool
