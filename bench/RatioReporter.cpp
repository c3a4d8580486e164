#include "bench/RatioReporter.h"

#include <cstdio>

namespace zavri::korvat::bench {

namespace {

constexpr std::string_view kOurs = "/korvat";
constexpr std::string_view kBaseline = "/baseline";

}  // namespace

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  ConsoleReporter::ReportRuns(runs);
  for (const Run& run : runs) {
    const bool isMedian = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
    if (run.error_occurred || (run.run_type == Run::RT_Aggregate && !isMedian)) continue;
    if (run.repetitions > 1 && !isMedian) continue;
    const double iterations = isMedian ? 1.0 : static_cast<double>(run.iterations);
    _timings.push_back({run.run_name.function_name, run.cpu_accumulated_time / iterations});
  }
}

void RatioReporter::Finalize() {
  std::printf("\n%-34s %s\n", "case", "korvat / baseline");
  for (const Timing& ours : _timings) {
    if (!ours.name.ends_with(kOurs)) continue;
    const std::string name = ours.name.substr(0, ours.name.size() - kOurs.size());
    for (const Timing& baseline : _timings) {
      if (baseline.name != name + std::string(kBaseline)) continue;
      std::printf("%-34s %.2f\n", name.c_str(), ours.seconds / baseline.seconds);
    }
  }
}

}  // namespace zavri::korvat::bench
