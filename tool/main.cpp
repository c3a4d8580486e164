#include <CLI/CLI.hpp>
#include <cstdio>

#include "tool/Catalogue.h"
#include "tool/Commands.h"
#include "tool/Failure.h"

namespace zavri::korvat::tool {

namespace {

const std::map<std::string, base::Endianess> kOrders{{"big", base::Endianess::Big},
                                                     {"little", base::Endianess::Little}};
const std::map<std::string, int> kLogLevels{
    {"silent", base::Logger::Silent},   {"error", base::Logger::Error},
    {"warning", base::Logger::Warning}, {"info", base::Logger::Info},
    {"debug", base::Logger::Debug},     {"trace", base::Logger::Trace}};

// What the arguments of the commands are read into.
struct Arguments {
  std::string type;
  std::vector<std::string> hexPieces;
  std::string hex;
  std::string path;
  std::string kind;
  std::string pattern;
};

void addOptions(CLI::App& app, Options& options) {
  app.add_option("--catalog", options.catalog, "Base folder of the catalogue")->type_name("DIR");
  app.add_option("--prefix", options.prefix,
                 "Set that bare type names belong to (the standard set)")
      ->type_name("PREFIX");
  app.add_option("--order", options.order,
                 "Byte order of raw values: big (network order) or little")
      ->transform(CLI::CheckedTransformer(kOrders))
      ->type_name("ORDER");
  app.add_flag("--dynamic-arrays", options.useDynamicArrays,
               "Arrays take their length from the number before them");
  app.add_flag("--invalid-keyword", options.supportInvalidKeyword,
               "Show the text \"invalid\" for a member's invalid marker");
  app.add_flag("--union-hex", options.showUnionsAsHex, "Show unions as hexadecimal text");
  app.add_flag("--any-length", options.acceptAnyLength, "Take input of any length");
  app.add_flag("--json", options.printJson, "Print describe and list as JSON");
  app.add_option("--log", options.logLevel,
                 "Show the library's messages: silent, error, warning, info, debug or trace")
      ->transform(CLI::CheckedTransformer(kLogLevels))
      ->type_name("LEVEL");
}

void addCommands(CLI::App& app, Options& options, Arguments& arguments) {
  const char* typeHelp = "Name such as SNVT_switch, with or without its prefix";
  CLI::App* decode = app.add_subcommand("decode", "Convert a raw value to JSON");
  decode->add_option("TYPE", arguments.type, typeHelp)->required();
  decode->add_option("HEX", arguments.hexPieces, "Raw value in hexadecimal")->required();
  decode->callback([&] {
    Catalogue catalogue(options);
    runDecode(catalogue, arguments.type, arguments.hexPieces);
  });

  CLI::App* get = app.add_subcommand("get", "Show one member of a raw value");
  get->add_option("TYPE", arguments.type, typeHelp)->required();
  get->add_option("HEX", arguments.hex, "Raw value in hexadecimal")->required();
  get->add_option("PATH", arguments.path, "Member, such as values[3].state")->required();
  get->callback([&] {
    Catalogue catalogue(options);
    runGet(catalogue, arguments.type, arguments.hex, arguments.path);
  });

  CLI::App* describe = app.add_subcommand("describe", "Show the layout of a type");
  describe->add_option("TYPE", arguments.type, typeHelp)->required();
  describe->callback([&] {
    Catalogue catalogue(options);
    runDescribe(catalogue, arguments.type);
  });

  CLI::App* list = app.add_subcommand("list", "List the types of the catalogue");
  list->add_option("KIND", arguments.kind, "nv, cp or enum; all when left out");
  list->add_option("PATTERN", arguments.pattern, "Part of a name, or a pattern with * and ?");
  list->callback([&] {
    Catalogue catalogue(options);
    runList(catalogue, arguments.kind, arguments.pattern);
  });
}

// An error message is one line, whatever the arguments it quotes.
int report(const std::string& message, ExitStatus status) {
  std::string line = "korvat: " + message;
  for (char& character : line) {
    if (static_cast<unsigned char>(character) < ' ') character = ' ';
  }
  std::fprintf(stderr, "%s\n", line.c_str());
  return status;
}

int run(int argc, char** argv) {
  Options options;
  Arguments arguments;
  CLI::App app("A typed view of LonWorks network data", "korvat");
  app.set_version_flag("--version", std::string("korvat ") + KORVAT_VERSION);
  app.require_subcommand(1);
  app.fallthrough();
  addOptions(app, options);
  addCommands(app, options, arguments);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const CLI::ParseError& error) {
    return report(std::string(error.what()) + "; see 'korvat --help'", kWrongUsage);
  }
  return kDone;
}

}  // namespace

int runGuarded(int argc, char** argv) {
  try {
    return run(argc, argv);
  } catch (const Failure& failure) {
    return report(failure.what(), failure.getStatus());
  } catch (const std::exception& error) {
    return report(error.what(), kProblem);
  }
}

}  // namespace zavri::korvat::tool

int main(int argc, char** argv) {
  return zavri::korvat::tool::runGuarded(argc, argv);
}
