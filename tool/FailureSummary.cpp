#include "tool/FailureSummary.h"

#include <algorithm>
#include <cctype>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/ErrorReport.h"

namespace zavri::korvat::tool {

namespace {

// Reasons that are told apart. Words of a record may get into the messages.
constexpr std::size_t kMostReasons = 1000;
// What a message gives in JSON behind these words goes on to its end.
constexpr std::string_view kLeads[] = {"found: ", "not a number: "};

bool isWordPart(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

// Of "cannot encode TYPE: path: what is wrong" the message without the path.
std::string dropPath(const std::string& message) {
  constexpr std::string_view kStart = "cannot encode ";
  if (message.compare(0, kStart.size(), kStart) != 0) return message;
  const std::size_t path = message.find(": ", kStart.size());
  if (path == std::string::npos) return message;
  const std::size_t text = message.find(": ", path + 2);
  const bool isPath = text != std::string::npos && message.find(' ', path + 2) > text;
  return isPath ? message.substr(0, path) + message.substr(text) : message;
}

// Of several problems the message shows the first one.
std::string dropCount(const std::string& message) {
  return message.substr(0, message.rfind(" (and "));
}

// The position behind the text quoted from `begin` on; `begin` when it is no such text: an
// apostrophe, or a double quote that names a property.
std::size_t skipQuoted(const std::string& text, std::size_t begin) {
  const char quote = text[begin];
  const char before = begin == 0 ? '\0' : text[begin - 1];
  if (quote == '\'' && isWordPart(before)) return begin;
  if (quote == '"' && (begin < 2 || text.compare(begin - 2, 2, ": ") != 0)) return begin;
  const std::size_t end = quote == '"' ? text.rfind(quote) : text.find(quote, begin + 1);
  return end == std::string::npos || end <= begin ? begin : end + 1;
}

// Whether a text of the record, or the name of a property, holds `text`.
bool stands(const std::string& text, const json::Value& record) {
  if (record.isString()) return record.getText().find(text) != std::string_view::npos;
  for (const auto& [name, value] : record.getPropertyMap()) {
    if (name.find(text) != std::string::npos || stands(text, value)) return true;
  }
  if (!record.isArray()) return false;
  for (unsigned i = 0; i < record.getSize(); ++i) {
    if (stands(text, record[i])) return true;
  }
  return false;
}

// The position behind the prefix of a set, such as 9000010000000000-3, that stands at `begin`;
// `begin` when there is none.
std::size_t skipPrefix(const std::string& text, std::size_t begin) {
  constexpr std::size_t kDigits = 16;
  if (begin + kDigits + 2 > text.size() || text[begin + kDigits] != '-') return begin;
  for (std::size_t i = begin; i < begin + kDigits; ++i) {
    if (std::isxdigit(static_cast<unsigned char>(text[i])) == 0) return begin;
  }
  return std::isdigit(static_cast<unsigned char>(text[begin + kDigits + 1])) == 0
             ? begin
             : begin + kDigits + 2;
}

std::size_t skipNumber(const std::string& text, std::size_t begin) {
  std::size_t end = begin;
  while (end < text.size() && (std::isdigit(static_cast<unsigned char>(text[end])) != 0 ||
                               (text[end] == '.' && end + 1 < text.size() &&
                                std::isdigit(static_cast<unsigned char>(text[end + 1])) != 0))) {
    ++end;
  }
  return end;
}

}  // namespace

std::string toReason(const std::string& message, const json::Value& record) {
  const std::string text = dropCount(dropPath(message));
  std::string reason;
  std::size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    const bool isDigit = std::isdigit(static_cast<unsigned char>(c)) != 0;
    if (text.compare(i, 2, "; ") == 0) return reason;  // a hint follows
    if (text.compare(i, 7, " (byte ") == 0 && text.find(')', i) != std::string::npos) {
      i = text.find(')', i) + 1;
      continue;
    }
    for (const std::string_view lead : kLeads) {
      if (text.compare(i, lead.size(), lead) == 0) return reason + std::string(lead) + "...";
    }
    if (c == '\'' || c == '"') {
      const std::size_t end = skipQuoted(text, i);
      if (end > i) {
        const bool isGiven = end > i + 2 && stands(text.substr(i + 1, end - i - 2), record);
        reason += isGiven ? std::string(1, c) + "..." + c : text.substr(i, end - i);
        i = end;
        continue;
      }
    } else if (const std::size_t end = skipPrefix(text, i);
               end > i && (i == 0 || !isWordPart(text[i - 1]))) {
      reason += text.substr(i, end - i);
      i = end;
      continue;
    } else if (isDigit && (i == 0 || !isWordPart(text[i - 1]))) {
      reason += 'N';
      i = skipNumber(text, i);
      continue;
    }
    reason += c;
    ++i;
  }
  return reason;
}

namespace {

json::Value numberOf(std::uint64_t number) {
  json::Value value;
  value.setValue(number);
  return value;
}

}  // namespace

void FailureSummary::add(const std::string& message, std::uint64_t line,
                         const json::Value& record) {
  ++_count;
  const std::string reason = toReason(message, record);
  auto found = _groups.find(reason);
  if (found == _groups.end()) {
    if (_groups.size() == kMostReasons) {
      _isFull = true;
      return;
    }
    found = _groups.emplace(reason, Group{0, line}).first;
  }
  ++found->second.count;
}

void FailureSummary::print(bool asJson) const {
  using Row = std::pair<std::string, Group>;
  std::vector<Row> rows(_groups.begin(), _groups.end());
  std::sort(rows.begin(), rows.end(), [](const Row& a, const Row& b) {
    if (a.second.count != b.second.count) return a.second.count > b.second.count;
    return a.second.firstLine < b.second.firstLine;
  });
  const std::size_t shown = std::min(rows.size(), kMostShown);
  std::uint64_t rest = _count;
  for (std::size_t i = 0; i < shown; ++i) {
    const Group& group = rows[i].second;
    const std::string& reason = rows[i].first;
    const std::string place = std::to_string(group.count) + " failed, the first in line " +
                              std::to_string(group.firstLine) + ": ";
    report(Failure(kProblem, asJson ? reason : place + reason)
               .with("count", numberOf(group.count))
               .with("line", numberOf(group.firstLine)),
           asJson);
    rest -= group.count;
  }
  if (rest > 0) {
    const std::string reasons =
        (_isFull ? "more than " : "") + std::to_string(rows.size() - shown) + " other reasons";
    report(Failure(kProblem, asJson ? reasons : std::to_string(rest) + " failed for " + reasons)
               .with("count", numberOf(rest)),
           asJson);
  }
}

}  // namespace zavri::korvat::tool
