#include "tool/Finding.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <tuple>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

namespace {

const char* severityName(Severity severity) {
  switch (severity) {
    case Severity::Error:
      return "error";
    case Severity::Warning:
      return "warning";
    case Severity::Note:
      return "note";
  }
  return "";
}

std::string toLine(const Finding& finding) {
  std::string line = finding.file;
  if (finding.line != 0) line += ":" + std::to_string(finding.line);
  line += std::string(": ") + severityName(finding.severity) + ": ";
  if (!finding.type.empty()) line += finding.type + ": ";
  return line + finding.message + "\n";
}

json::Value toJson(const std::vector<Finding>& findings) {
  json::Value rows;
  rows.switchType(json::JsonType::Array);
  for (const Finding& finding : findings) {
    json::Value& row = rows[rows.getSize()];
    row["file"] = finding.file;
    row["line"].setValue(std::uint64_t{finding.line});
    row["severity"] = severityName(finding.severity);
    row["type"] = finding.type;
    row["message"] = finding.message;
  }
  return rows;
}

}  // namespace

void sortByPlace(std::vector<Finding>& findings) {
  std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.file, a.line) < std::tie(b.file, b.line);
  });
}

void printFindings(const std::vector<Finding>& findings, bool asJson) {
  if (asJson) {
    std::printf("%s\n", toJson(findings).stringify(2).c_str());
    return;
  }
  for (const Finding& finding : findings) std::fputs(toLine(finding).c_str(), stdout);
}

}  // namespace zavri::korvat::tool
