#include "tool/NearestName.h"

#include <algorithm>
#include <tuple>

#include "tool/TextTable.h"

namespace zavri::korvat::tool {

namespace {

constexpr std::size_t kLongestName = 64;  // longer texts are no misspelt names
constexpr std::size_t kMostNames = 3;     // that may have been meant
constexpr std::size_t kMostJoined = 30;   // in a list of all names
constexpr std::size_t kShortestPart = 3;  // characters that a name may be found by

// Fewest typing mistakes between two texts (optimal string alignment).
std::size_t countMistakes(const std::string& a, const std::string& b) {
  std::vector<std::size_t> beforeLast(b.size() + 1);
  std::vector<std::size_t> last(b.size() + 1);
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t isWrong = a[i - 1] == b[j - 1] ? 0 : 1;
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, last[j - 1] + isWrong});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        row[j] = std::min(row[j], beforeLast[j - 2] + 1);
      }
    }
  }
  return row[b.size()];
}

}  // namespace

std::vector<std::string> findNearest(const std::string& given,
                                     const std::vector<std::string>& names) {
  if (given.empty() || given.size() > kLongestName) return {};
  const std::string text = lowered(given);
  const std::size_t mostMistakes = std::max<std::size_t>(text.size() / 4, 1);

  // Mistakes, then length; a name that only holds the text comes after those.
  std::vector<std::tuple<std::size_t, std::size_t, std::string>> found;
  for (const std::string& name : names) {
    const std::string candidate = lowered(name);
    const bool isPart = text.size() >= kShortestPart && candidate.find(text) != std::string::npos;
    const std::size_t longer = std::max(candidate.size(), text.size());
    std::size_t mistakes = mostMistakes + 1;
    if (longer - std::min(candidate.size(), text.size()) <= mostMistakes) {
      mistakes = countMistakes(text, candidate);
    }
    if (mistakes <= mostMistakes || isPart) {
      found.emplace_back(std::min(mistakes, mostMistakes + 1), name.size(), name);
    }
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> nearest;
  for (const auto& [mistakes, size, name] : found) {
    const bool isBest = mistakes == std::get<0>(found.front());
    if (isBest && nearest.size() < kMostNames) nearest.push_back(name);
  }
  return nearest;
}

std::string joinNames(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < std::min(names.size(), kMostJoined); ++i) {
    text += (i == 0 ? "" : ", ") + names[i];
  }
  if (names.size() > kMostJoined) text += ", ... (" + std::to_string(names.size()) + " in all)";
  return text;
}

std::string didYouMean(const std::vector<std::string>& names) {
  std::string text;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const bool isLast = i + 1 == names.size();
    text += (i == 0 ? "" : isLast ? " or " : ", ") + ("'" + names[i] + "'");
  }
  return text.empty() ? "" : "; did you mean " + text + "?";
}

}  // namespace zavri::korvat::tool
