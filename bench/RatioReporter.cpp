#include "bench/RatioReporter.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "korvat/base/Value.h"

namespace zavri::korvat::bench {

namespace {

const std::string kOurs = "/korvat";
const std::string kBaseline = "/baseline";

double medianOf(std::vector<double> numbers) {
  std::sort(numbers.begin(), numbers.end());
  const std::size_t middle = numbers.size() / 2;
  return numbers.size() % 2 != 0 ? numbers[middle] : (numbers[middle - 1] + numbers[middle]) / 2;
}

// "1.25 us", in the unit that fits.
std::string timeText(double seconds) {
  char text[32];
  if (seconds < 1e-6) {
    std::snprintf(text, sizeof text, "%.1f ns", seconds * 1e9);
  } else if (seconds < 1e-3) {
    std::snprintf(text, sizeof text, "%.2f us", seconds * 1e6);
  } else {
    std::snprintf(text, sizeof text, "%.2f ms", seconds * 1e3);
  }
  return text;
}

std::string rateText(double bytesPerSecond) {
  if (bytesPerSecond == 0) return "-";
  char text[32];
  std::snprintf(text, sizeof text, "%.1f MB/s", bytesPerSecond / 1e6);
  return text;
}

}  // namespace

bool RatioReporter::ReportContext(const Context& context) {
  PrintBasicContext(&std::cerr, context);
  return true;
}

void RatioReporter::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    const std::string name = run.run_name.function_name;
    if (run.error_occurred) {
      std::fprintf(stderr, "%s: %s\n", name.c_str(), run.error_message.c_str());
      _hasErrors = true;
      continue;
    }
    if (run.run_type == Run::RT_Aggregate) continue;
    Side& side = _sides[name];
    if (name.ends_with(kOurs)) {
      _cases[run.family_index] = name.substr(0, name.size() - kOurs.size());
    }
    const double seconds = run.cpu_accumulated_time / static_cast<double>(run.iterations);
    side.seconds.push_back(seconds);
    for (const auto& [counter, value] : run.counters) {
      if (counter == "bytes_per_second") {
        side.bytes = value * seconds;
      } else if (side.seconds.size() == 1) {
        std::printf("%s: %s %.2f\n", name.c_str(), counter.c_str(), value.value);
      }
    }
  }
}

std::vector<RatioReporter::Row> RatioReporter::makeRows() const {
  std::vector<Row> rows;
  for (const auto& [order, name] : _cases) {
    const auto ours = _sides.find(name + kOurs);
    const auto baseline = _sides.find(name + kBaseline);
    if (ours == _sides.end() || baseline == _sides.end()) continue;
    const double seconds = medianOf(ours->second.seconds);
    rows.push_back(
        {name, seconds, medianOf(baseline->second.seconds), ours->second.bytes / seconds});
  }
  return rows;
}

void RatioReporter::printTable() const {
  std::printf("%-44s %11s %11s %6s %12s\n", "case", "korvat", "baseline", "ratio", "bytes");
  for (const Row& row : makeRows()) {
    std::printf("%-44s %11s %11s %6.3f %12s\n", row.name.c_str(), timeText(row.korvat).c_str(),
                timeText(row.baseline).c_str(), row.korvat / row.baseline,
                rateText(row.bytesPerSecond).c_str());
  }
}

bool RatioReporter::writeTable(const std::string& path) const {
  json::Value table;
  table.switchType(json::JsonType::Array);
  for (const Row& row : makeRows()) {
    json::Value& entry = table[table.getSize()];
    entry["case"].setValue(row.name);
    entry["korvat_seconds"].setValue(row.korvat);
    entry["baseline_seconds"].setValue(row.baseline);
    entry["ratio"].setValue(row.korvat / row.baseline);
    if (row.bytesPerSecond != 0) entry["bytes_per_second"].setValue(row.bytesPerSecond);
  }
  std::ofstream file(path);
  file << table.stringify(2) << '\n';
  file.close();
  return !file.fail();
}

}  // namespace zavri::korvat::bench
