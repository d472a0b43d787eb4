#include "toolkit/text/Suggestion.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

namespace velmar::toolkit {

namespace {

// Letters to insert, to leave out, to replace or to swap with their neighbour.
std::size_t distance(const std::string& one, const std::string& other) {
  std::vector<std::size_t> twoBefore;
  std::vector<std::size_t> before(other.size() + 1);
  std::iota(before.begin(), before.end(), std::size_t{0});
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::vector<std::size_t> row = {i};
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const std::size_t replaced = before[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      row.push_back(std::min({replaced, before[j] + 1, row[j - 1] + 1}));
      if (i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1]) {
        row[j] = std::min(row[j], twoBefore[j - 2] + 1);
      }
    }
    twoBefore = std::exchange(before, row);
  }
  return before.back();
}

}  // namespace

std::string suggestion(const std::string& word, const std::vector<std::string>& candidates) {
  const std::string* nearest = nullptr;
  std::size_t least = std::max<std::size_t>(word.size() / 3, 1) + 1;
  for (const std::string& candidate : candidates) {
    const std::size_t letters = distance(word, candidate);
    if (letters >= least) continue;
    least = letters;
    nearest = &candidate;
  }
  return nearest == nullptr ? "" : "; did you mean " + *nearest + "?";
}

}  // namespace velmar::toolkit
