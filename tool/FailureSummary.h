#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "korvat/base/Value.h"

namespace zavri::korvat::tool {

// Counts the failures of a stream by reason, in constant memory. Reasons are told apart without the
// numbers, texts of the record and member paths in their messages.
class FailureSummary {
 public:
  // Reasons that print() shows.
  static constexpr std::size_t kMostShown = 10;

  // Counts a failure of the record that begins in the line of that number; `record` is null when it
  // could not be read.
  void add(const std::string& message, std::uint64_t line, const json::Value& record);

  std::uint64_t getCount() const { return _count; }

  // The most frequent reasons, one line each, to standard error; as JSON with "count", and "line",
  // the first one that failed.
  void print(bool asJson) const;

 private:
  struct Group {
    std::uint64_t count = 0;
    std::uint64_t firstLine = 0;
  };

  std::unordered_map<std::string, Group> _groups;
  bool _isFull = false;  // there are more reasons than groups
  std::uint64_t _count = 0;
};

// What failures with messages of one form have in common: numbers stand as N, quoted texts that
// come from the record as '...' or "..."; a member's path, its byte and what is said to help are
// left out.
std::string toReason(const std::string& message, const json::Value& record);

}  // namespace zavri::korvat::tool
