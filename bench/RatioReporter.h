#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace zavri::korvat::bench {

// Collects the runs of the cases, of which each has two sides, "<case>/korvat" and
// "<case>/baseline", and puts them into one table: the medians of both sides' CPU times, the first
// over the second, and the bytes that korvat converts in a second. Single times depend on the
// machine; quote the ratio.
class RatioReporter : public benchmark::BenchmarkReporter {
 public:
  bool ReportContext(const Context& context) override;
  void ReportRuns(const std::vector<Run>& runs) override;

  void printTable() const;
  // The table as JSON: an array of objects. False when the file cannot be written.
  bool writeTable(const std::string& path) const;

  // True when a case was skipped, such as one whose two sides give different results.
  bool hasErrors() const { return _hasErrors; }

 private:
  struct Side {
    std::vector<double> seconds;  // CPU time of one iteration, one entry a repetition
    double bytes = 0;             // that one iteration converts; 0 when the case converts none
  };
  struct Row {
    std::string name;
    double korvat;    // seconds
    double baseline;  // seconds
    double bytesPerSecond;
  };

  std::vector<Row> makeRows() const;

  std::map<std::int64_t, std::string> _cases;  // by the order in which they were registered
  std::map<std::string, Side> _sides;
  bool _hasErrors = false;
};

}  // namespace zavri::korvat::bench
