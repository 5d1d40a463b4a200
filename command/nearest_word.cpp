#include "command/nearest_word.h"

#include <algorithm>

namespace vellobar::command {

std::size_t distance_between(std::string_view left, std::string_view right) {
  // The distance of Damerau and Levenshtein, in its form that exchanges neighbours only once.
  std::vector<std::size_t> before_last, last, row(right.size() + 1);
  for (std::size_t j = 0; j <= right.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= left.size(); ++i) {
    before_last = last;
    last = row;
    row[0] = i;
    for (std::size_t j = 1; j <= right.size(); ++j) {
      const std::size_t changed = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      row[j] = std::min({changed, last[j] + 1, row[j - 1] + 1});
      const bool exchanged = i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
      if (exchanged) row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
  }
  return row.back();
}

std::string nearest_word(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr std::size_t kLongestWord = 40;
  if (word.empty() || word.size() > kLongestWord) return {};
  const std::size_t near = std::max<std::size_t>(1, word.size() / 3);
  std::string nearest;
  std::size_t nearest_distance = near + 1;
  for (const std::string& candidate : candidates) {
    const bool is_begun = word.size() >= 2 && std::string_view(candidate).starts_with(word);
    const std::size_t distance = is_begun ? 1 : distance_between(word, candidate);
    if (distance >= nearest_distance) continue;
    nearest = candidate;
    nearest_distance = distance;
  }
  return nearest;
}

}  // namespace vellobar::command
