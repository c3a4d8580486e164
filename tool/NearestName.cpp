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

// Fewest typing mistakes between two texts (optimal string alignment), or `most` + 1 when there are
// more than `most`. Only alignments that shift the texts by up to `most` can have so few, and most
// names are done after as many characters.
std::size_t countMistakes(const std::string& a, const std::string& b, std::size_t most) {
  const std::size_t tooMany = most + 1;
  if (std::max(a.size(), b.size()) - std::min(a.size(), b.size()) > most) return tooMany;

  std::vector<std::size_t> beforeLast(b.size() + 1, tooMany);
  std::vector<std::size_t> last(b.size() + 1, tooMany);
  std::vector<std::size_t> row(b.size() + 1, tooMany);
  for (std::size_t j = 0; j <= std::min(b.size(), most); ++j) row[j] = j;
  std::size_t fewestBefore = 0;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    beforeLast.swap(last);
    last.swap(row);
    const std::size_t first = i > most ? i - most : 0;
    std::size_t fewest = tooMany;
    for (std::size_t j = first; j <= std::min(b.size(), i + most); ++j) {
      std::size_t count = last[j] + 1;
      if (j > first) count = std::min(count, row[j - 1] + 1);
      if (j > 0) count = std::min(count, last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1));
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
        count = std::min(count, beforeLast[j - 2] + 1);
      }
      row[j] = std::min(count, tooMany);
      fewest = std::min(fewest, row[j]);
    }
    // A swap of two characters starts from the row before the last.
    if (fewest == tooMany && fewestBefore == tooMany) return tooMany;
    fewestBefore = fewest;
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
    const std::size_t mistakes = countMistakes(text, candidate, mostMistakes);
    if (mistakes <= mostMistakes || isPart) {
      found.emplace_back(mistakes, name.size(), name);
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
