#include "tool/ErrorReport.h"

#include <cstdio>
#include <cstring>

#include "tool/NearestName.h"

namespace zavri::korvat::tool {

namespace {

std::vector<std::string> commandNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(command->get_name());
  }
  return names;
}

// Options of the program and of the command that the line names.
std::vector<std::string> optionNames(const CLI::App& app) {
  std::vector<std::string> names;
  std::vector<const CLI::App*> apps{&app};
  for (const CLI::App* command : app.get_subcommands()) apps.push_back(command);
  for (const CLI::App* part : apps) {
    for (const CLI::Option* option : part->get_options()) {
      for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    }
  }
  return names;
}

}  // namespace

bool isJsonErrorWanted(int argumentCount, char** arguments) {
  for (int i = 1; i < argumentCount; ++i) {
    if (std::strcmp(arguments[i], "--errors=json") == 0) return true;
    const bool isOption = std::strcmp(arguments[i], "--errors") == 0;
    if (isOption && i + 1 < argumentCount && std::strcmp(arguments[i + 1], "json") == 0)
      return true;
  }
  return false;
}

Failure usageFailure(const CLI::App& app, const CLI::ParseError& error) {
  const std::string advice = "; see 'korvat --help'";
  const std::vector<std::string> unknown = app.remaining(true);
  if (unknown.empty()) return Failure(kWrongUsage, error.what() + advice);

  const std::string& word = unknown.front();
  const bool isOption = word.rfind("--", 0) == 0;
  if (!isOption && !app.get_subcommands().empty()) {
    return Failure(kWrongUsage, "too many arguments: '" + word + "'" + advice).with("given", word);
  }
  const std::string name = word.substr(0, isOption ? word.find('=') : std::string::npos);
  const std::vector<std::string> nearest =
      findNearest(name, isOption ? optionNames(app) : commandNames(app));
  return Failure(kWrongUsage, std::string("unknown ") + (isOption ? "option" : "command") + " '" +
                                  name + "'" + (nearest.empty() ? advice : didYouMean(nearest)))
      .with("given", name)
      .with("nearest", nearest);
}

int report(const Failure& failure, bool asJson) {
  std::string line = std::string("korvat: ") + failure.what();
  if (asJson) {
    json::Value object;
    object["error"] = failure.what();
    object["status"] = std::int32_t{failure.getStatus()};
    for (const auto& [name, detail] : failure.getDetails().getPropertyMap()) object[name] = detail;
    line = object.stringify();
  }
  for (char& character : line) {
    if (static_cast<unsigned char>(character) < ' ') character = ' ';
  }
  std::fprintf(stderr, "%s\n", line.c_str());
  return failure.getStatus();
}

}  // namespace zavri::korvat::tool
