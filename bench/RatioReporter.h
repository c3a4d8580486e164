#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace zavri::korvat::bench {

// Prints each run, and at the end one line per case: the time of "<case>/korvat" over that of
// "<case>/baseline" in the same run of the program. Single times depend on the machine; quote the
// ratio.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override;
  void Finalize() override;

 private:
  struct Timing {
    std::string name;
    double seconds;  // CPU time of one iteration
  };

  std::vector<Timing> _timings;
};

}  // namespace zavri::korvat::bench
