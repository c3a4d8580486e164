#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <initializer_list>
#include <map>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "tool/Catalogue.h"
#include "tool/Commands.h"
#include "tool/CompletionCommands.h"
#include "tool/ErrorReport.h"
#include "tool/Examples.h"
#include "tool/Failure.h"
#include "tool/StreamOptions.h"

namespace zavri::korvat::tool {

namespace {

// Whether a write has met a pipe that nobody reads any more.
volatile std::sig_atomic_t isReaderGone = 0;

// Such a write is to fail instead of ending the program.
void watchReader() {
  struct sigaction action {};
  action.sa_handler = [](int) { isReaderGone = 1; };
  sigaction(SIGPIPE, &action, nullptr);
}

const std::map<std::string, base::Endianess> kOrders{{"big", base::Endianess::Big},
                                                     {"little", base::Endianess::Little}};
const std::map<std::string, int> kLogLevels{
    {"silent", base::Logger::Silent},   {"error", base::Logger::Error},
    {"warning", base::Logger::Warning}, {"info", base::Logger::Info},
    {"debug", base::Logger::Debug},     {"trace", base::Logger::Trace}};

const std::map<std::string, EnumForm> kEnumForms{
    {"name", EnumForm::Name}, {"number", EnumForm::Number}, {"both", EnumForm::Both}};

// Takes one of the words and hands on what it stands for, as CLI11 reads it.
CLI::Validator oneOf(std::map<std::string, std::string> meanings) {
  std::string words;
  for (const auto& [word, meaning] : meanings) words += (words.empty() ? "" : ",") + word;
  const auto translate = [meanings = std::move(meanings), words](std::string& word) -> std::string {
    const auto found = meanings.find(word);
    if (found != meanings.end()) {
      word = found->second;
      return "";
    }
    return "'" + word + "' is none of " + words;
  };
  return CLI::Validator(translate, "{" + words + "}");
}

template <typename T>
CLI::Validator oneOf(const std::map<std::string, T>& meanings) {
  std::map<std::string, std::string> numbers;
  for (const auto& [word, value] : meanings) {
    numbers[word] = std::to_string(static_cast<int>(value));
  }
  return oneOf(std::move(numbers));
}

CLI::Validator oneOf(std::initializer_list<const char*> words) {
  std::map<std::string, std::string> meanings;
  for (const char* word : words) meanings[word] = word;
  return oneOf(std::move(meanings));
}

// What the arguments of the commands are read into.
struct Arguments {
  std::string type;
  std::vector<std::string> types;
  std::vector<std::string> hexPieces;
  std::vector<std::string> words;
  std::string hex;
  std::string json;
  std::string path;
  std::string value;
  base::Endianess from = base::Endianess::Big;
  bool isText = false;
  std::string formatName;
  bool withFormatTrees = false;
  std::string picture;
  bool isStream = false;
  StreamOptions stream;
  std::string profile;
  ListQuery listQuery;
  std::string oldCatalog;
  std::string newCatalog;
};

// An empty name, maybe of a variable that is not set, would stand for the default folder.
CLI::Validator isNamed() {
  const auto check = [](const std::string& folder) {
    return folder.empty() ? std::string("the name of the folder is empty") : std::string();
  };
  return CLI::Validator(check, "");
}

void addOptions(CLI::App& app, Options& options) {
  app.add_option("--catalog", options.catalog, "Base folder of the catalogue")
      ->check(isNamed())
      ->type_name("DIR");
  app.add_option("--prefix", options.prefix,
                 "Set that bare type names belong to (the standard set)")
      ->type_name("PREFIX");
  app.add_option("--order", options.order,
                 "Byte order of raw values: big (network order) or little")
      ->transform(oneOf(kOrders))
      ->type_name("ORDER");
  app.add_flag("--dynamic-arrays", options.useDynamicArrays,
               "Arrays take their length from the number before them");
  app.add_flag("--invalid-keyword", options.supportInvalidKeyword,
               "Show the text \"invalid\" for a member's invalid marker");
  app.add_flag("--union-hex", options.useUnionHex, "Unions are hexadecimal text in JSON");
  app.add_flag("--allow-missing", options.allowMissingFields, "Encode: numbers may be left out");
  app.add_flag("--allow-undefined", options.allowUndefinedFields,
               "Encode: properties that name no member are ignored");
  app.add_flag("--no-cut", options.refuseCutting,
               "Encode: refuse numbers out of range instead of cutting them");
  app.add_flag("--any-length", options.acceptAnyLength, "Take input of any length");
  app.add_flag("--json", options.printJson,
               "Print what is no value (describe, explain, list, diff, ...) as JSON");
  app.add_option("--errors", options.errorForm,
                 "Form of error messages: text or json (one object a line)")
      ->transform(oneOf({"text", "json"}))
      ->type_name("FORM");
  app.add_option("--color", options.color,
                 "Colors of explain: auto (on a terminal), always or never")
      ->transform(oneOf({"auto", "always", "never"}))
      ->type_name("WHEN");
  app.add_option("--log", options.logLevel,
                 "Show the library's messages: silent, error, warning, info, debug or trace")
      ->transform(oneOf(kLogLevels))
      ->type_name("LEVEL");
}

const char* const kTypeHelp = "Name such as SNVT_switch, with or without its prefix";

void addStreamOptions(CLI::App& command, Arguments& arguments) {
  CLI::Option* stream =
      command.add_flag("--stream", arguments.isStream, "Convert records, one JSON object a line");
  command.add_option("--type", arguments.stream.type, "Stream: type of records that name none")
      ->type_name("TYPE")
      ->needs(stream);
  command.add_flag("--csv", arguments.stream.isCsv, "Stream: print rows of CSV with a header")
      ->needs(stream);
  command
      .add_flag("--csv-in", arguments.stream.isFromCsv,
                "Stream: records are rows of CSV under a header")
      ->needs(stream);
}

void addShapeOptions(CLI::App& decode, Arguments& arguments) {
  decode
      .add_option("--raw-column", arguments.stream.rawColumn,
                  "Column of --csv-in with the raw value (raw)")
      ->type_name("NAME")
      ->needs("--csv-in");
  ShapeOptions& shape = arguments.stream.shape;
  decode.add_option("--select", shape.paths, "Show only these members, such as values[3].state")
      ->type_name("PATH,...")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->take_all();
  decode.add_option("--enum", shape.enumForm, "Show enumerations by name, number or both")
      ->transform(oneOf(kEnumForms))
      ->type_name("FORM");
  decode.add_flag("--raw-too", shape.withRawNumbers,
                  "Show the raw numbers too, by path in \"rawNumbers\"");
  decode.add_flag("--null-invalid", shape.isInvalidNull, "Show null for a member's invalid marker");
}

// Rows have the same columns from the first one on.
void checkCsvUsage(const StreamOptions& stream) {
  if (!stream.isCsv || !stream.type.empty()) return;
  if (stream.shape.paths.empty()) {
    throw Failure(kWrongUsage, "--csv needs --type or --select, which tell the columns");
  }
  if (stream.shape.withRawNumbers) {
    throw Failure(kWrongUsage, "--csv with --raw-too needs --type, which tells the columns");
  }
}

// A stream takes its values from standard input, otherwise they stand on the command line.
void checkStreamUsage(const Arguments& arguments, bool isValueGiven, const char* valueName) {
  if (arguments.isStream && !arguments.type.empty()) {
    throw Failure(kWrongUsage, "--stream reads standard input: name the type with --type");
  }
  if (!arguments.isStream && !isValueGiven) {
    throw Failure(kWrongUsage,
                  std::string("TYPE and ") + valueName + " are required; see 'korvat --help'");
  }
}

void addValueCommands(CLI::App& app, const Options& options, Arguments& arguments) {
  CLI::App* decode = app.add_subcommand("decode", "Convert raw values to JSON");
  decode->add_option("TYPE", arguments.type, kTypeHelp);
  CLI::Option* hex = decode->add_option("HEX", arguments.hexPieces, "Raw value in hexadecimal");
  addStreamOptions(*decode, arguments);
  addShapeOptions(*decode, arguments);
  CLI::Option* text = decode
                          ->add_flag("--text", arguments.isText,
                                     "Show the value the way the type's display format says")
                          ->excludes("--stream")
                          ->excludes("--select")
                          ->excludes("--enum")
                          ->excludes("--raw-too")
                          ->excludes("--null-invalid");
  decode
      ->add_option("--format", arguments.formatName,
                   "Name of another format of the type for --text")
      ->type_name("NAME")
      ->needs(text);
  decode->callback([&, hex] {
    checkStreamUsage(arguments, hex->count() > 0, "HEX");
    checkCsvUsage(arguments.stream);
    Catalogue catalogue(options);
    if (arguments.isStream) return runDecodeStream(catalogue, arguments.stream);
    if (arguments.isText) {
      return runDecodeText(catalogue, arguments.type, arguments.hexPieces, arguments.formatName);
    }
    runDecode(catalogue, arguments.type, arguments.hexPieces, arguments.stream.shape);
  });

  CLI::App* encode = app.add_subcommand("encode", "Convert JSON to raw values");
  encode->add_option("TYPE", arguments.type, kTypeHelp);
  CLI::Option* json = encode->add_option("JSON", arguments.json, "Value as decode shows it");
  addStreamOptions(*encode, arguments);
  encode->callback([&, json] {
    checkStreamUsage(arguments, json->count() > 0, "JSON");
    Catalogue catalogue(options);
    if (arguments.isStream) return runEncodeStream(catalogue, arguments.stream);
    runEncode(catalogue, arguments.type, arguments.json);
  });
}

void addExplainCommand(CLI::App& app, const Options& options, Arguments& arguments) {
  CLI::App* explain = app.add_subcommand("explain", "Show what each byte of a value means");
  explain->add_option("TYPE", arguments.type, kTypeHelp)->required();
  explain->add_option("HEX", arguments.hexPieces, "Raw value in hexadecimal")->required();
  explain->callback([&] {
    Catalogue catalogue(options);
    runExplain(catalogue, arguments.type, arguments.hexPieces);
  });
}

void addFindCommands(CLI::App& app, const Options& options, Arguments& arguments) {
  CLI::App* guess = app.add_subcommand("guess", "Find the types that a raw value could have");
  guess->add_option("HEX", arguments.hexPieces, "Raw value in hexadecimal")->required();
  guess->callback([&] {
    Catalogue catalogue(options);
    runGuess(catalogue, arguments.hexPieces);
  });

  CLI::App* search =
      app.add_subcommand("search", "Find types by names, units, members and enumerators");
  search->add_option("WORD", arguments.words, "All of them have to match, in either case")
      ->required();
  search->callback([&] {
    Catalogue catalogue(options);
    runSearch(catalogue, arguments.words);
  });
}

void addMemberCommands(CLI::App& app, const Options& options, Arguments& arguments) {
  CLI::App* get = app.add_subcommand("get", "Show one member of a raw value");
  get->add_option("TYPE", arguments.type, kTypeHelp)->required();
  get->add_option("HEX", arguments.hex, "Raw value in hexadecimal")->required();
  get->add_option("PATH", arguments.path, "Member, such as values[3].state")->required();
  get->callback([&] {
    Catalogue catalogue(options);
    runGet(catalogue, arguments.type, arguments.hex, arguments.path);
  });

  CLI::App* set = app.add_subcommand("set", "Change one member of a raw value");
  set->add_option("TYPE", arguments.type, kTypeHelp)->required();
  set->add_option("HEX", arguments.hex, "Raw value in hexadecimal")->required();
  set->add_option("PATH", arguments.path, "Member, such as values[3].state")->required();
  set->add_option("VALUE", arguments.value, "JSON, or plain text")->required();
  set->callback([&] {
    Catalogue catalogue(options);
    runSet(catalogue, arguments.type, arguments.hex, arguments.path, arguments.value);
  });

  CLI::App* swap = app.add_subcommand("swap", "Convert a raw value to the other byte order");
  swap->add_option("TYPE", arguments.type, kTypeHelp)->required();
  swap->add_option("HEX", arguments.hex, "Raw value in hexadecimal")->required();
  swap->add_option("--from", arguments.from, "Byte order of HEX: big or little")
      ->transform(oneOf(kOrders))
      ->type_name("ORDER")
      ->required();
  swap->callback([&] {
    Catalogue catalogue(options);
    runSwap(catalogue, arguments.type, arguments.hex, arguments.from);
  });
}

void addCatalogueCommands(CLI::App& app, Options& options, Arguments& arguments) {
  CLI::App* describe = app.add_subcommand("describe", "Show the layout of a type");
  describe->add_option("TYPE", arguments.type, kTypeHelp)->required();
  CLI::Option* trees = describe->add_flag("--formats", arguments.withFormatTrees,
                                          "Also show what each display format is parsed into");
  CLI::Option* picture =
      describe
          ->add_option("--svg", arguments.picture,
                       "Write the bit grid as a picture to this file; - is standard output")
          ->type_name("FILE")
          ->excludes(trees);
  describe->callback([&, picture] {
    Catalogue catalogue(options);
    if (picture->count() > 0) {
      return runDescribeAsPicture(catalogue, arguments.type, arguments.picture);
    }
    runDescribe(catalogue, arguments.type, arguments.withFormatTrees);
  });

  CLI::App* schema =
      app.add_subcommand("schema", "Show the JSON Schema of the JSON that a type converts to");
  schema->add_option("TYPE", arguments.types, "One name or more; of several, a line each")
      ->required();
  schema->callback([&] {
    Catalogue catalogue(options);
    runSchema(catalogue, arguments.types);
  });

  CLI::App* profile = app.add_subcommand("profile", "Show a functional profile");
  profile->add_option("PROFILE", arguments.profile, "Name such as SFPTnodeObject, or its key")
      ->required();
  profile->callback([&] {
    Catalogue catalogue(options);
    runProfile(catalogue, arguments.profile);
  });

  CLI::App* check = app.add_subcommand("check", "Look for mistakes in a catalogue");
  check->add_option("DIR", options.catalog, "Base folder, as with --catalog")->check(isNamed());
  check->callback([&] {
    Catalogue catalogue(options);
    runCheck(catalogue);
  });

  CLI::App* diff = app.add_subcommand("diff", "Show what has changed between two catalogues");
  diff->add_option("OLD", arguments.oldCatalog, "Base folder of the one to start from")->required();
  diff->add_option("NEW", arguments.newCatalog, "Base folder of the one to compare")->required();
  diff->callback([&] {
    // An empty name would stand for the catalogue that is used by default.
    if (arguments.oldCatalog.empty() || arguments.newCatalog.empty()) {
      throw Failure(kNotFound, "no catalogue: the name of a folder is empty");
    }
    Options oldOptions = options;
    oldOptions.catalog = arguments.oldCatalog;
    Options newOptions = options;
    newOptions.catalog = arguments.newCatalog;
    Catalogue oldCatalogue(oldOptions);
    Catalogue newCatalogue(newOptions);
    runDiff(oldCatalogue, newCatalogue);
  });

  CLI::App* list = app.add_subcommand("list", "List the types of the catalogue");
  ListQuery& query = arguments.listQuery;
  list->add_option("KIND", query.kindOrPattern, "nv, cp, enum or fp; all when left out");
  list->add_option("PATTERN", query.pattern, "Part of a name, or a pattern with * and ?");
  list->add_option("--kind", query.kind, "The same as KIND; the argument is PATTERN then")
      ->type_name("KIND");
  list->add_option("--unit", query.unit, "Types with a member of that unit; * and ? are wildcards")
      ->type_name("TEXT");
  list->add_option("--size", query.size, "Types whose values have N bytes, or N to M")
      ->type_name("N[-M]");
  list->callback([&] {
    Catalogue catalogue(options);
    runList(catalogue, arguments.listQuery);
  });
}

int run(int argc, char** argv) {
  watchReader();
  Options options;
  Arguments arguments;
  CLI::App app("A typed view of LonWorks network data", "korvat");
  app.set_version_flag("--version", std::string("korvat ") + KORVAT_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  addOptions(app, options);
  addValueCommands(app, options, arguments);
  addExplainCommand(app, options, arguments);
  addFindCommands(app, options, arguments);
  addMemberCommands(app, options, arguments);
  addCatalogueCommands(app, options, arguments);
  addCompletionCommand(app);
  addExamples(app);
  try {
    if (argc > 1 && std::strcmp(argv[1], "complete") == 0) {
      runComplete(app, {argv + 2, argv + argc});
    } else {
      app.parse(argc, argv);
    }
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    throw usageFailure(app, error);
  }
  // A reader that has gone away wants no more; anything else must not pass for success.
  errno = 0;
  const bool isFlushed = std::fflush(stdout) == 0;
  if ((isFlushed && std::ferror(stdout) == 0) || isReaderGone != 0) return kDone;
  // The reason of an earlier failure is not known any more.
  const std::string reason = isFlushed ? "the output is not complete" : std::strerror(errno);
  throw Failure(kProblem, "cannot write: " + reason);
}

}  // namespace

int runGuarded(int argc, char** argv) {
  const bool asJson = isJsonErrorWanted(argc, argv);
  try {
    return run(argc, argv);
  } catch (const Failure& failure) {
    return report(failure, asJson);
  } catch (const std::exception& error) {
    return report(Failure(kProblem, error.what()), asJson);
  }
}

}  // namespace zavri::korvat::tool

int main(int argc, char** argv) {
  return zavri::korvat::tool::runGuarded(argc, argv);
}
