#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "bench/RatioReporter.h"

namespace {

// What makes the ratios comparable; what the caller gives comes later and so prevails.
constexpr const char* kDefaults[] = {
    "--benchmark_repetitions=9",
    "--benchmark_enable_random_interleaving=true",
    "--benchmark_min_time=0.05",
};

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> texts{argv[0]};
  texts.insert(texts.end(), std::begin(kDefaults), std::end(kDefaults));
  std::string tableFile;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--table") == 0 && i + 1 < argc) {
      tableFile = argv[++i];
    } else {
      texts.push_back(argv[i]);
    }
  }
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  int count = static_cast<int>(arguments.size());
  benchmark::Initialize(&count, arguments.data());
  if (benchmark::ReportUnrecognizedArguments(count, arguments.data())) return 2;

  zavri::korvat::bench::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  reporter.printTable();
  if (!tableFile.empty() && !reporter.writeTable(tableFile)) {
    std::fprintf(stderr, "cannot write %s\n", tableFile.c_str());
    return 1;
  }
  return reporter.hasErrors() ? 1 : 0;
}
