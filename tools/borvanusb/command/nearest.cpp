#include "command/nearest.h"

#include <algorithm>
#include <cstddef>

namespace borvanusb {

namespace {

// The number of letters to add, remove, change or swap with their neighbour.
std::size_t Distance(std::string_view from, std::string_view to) {
  std::vector<std::vector<std::size_t>> rows(from.size() + 1,
                                             std::vector<std::size_t>(to.size() + 1));
  for (std::size_t i = 0; i <= from.size(); ++i) {
    rows[i][0] = i;
  }
  for (std::size_t j = 0; j <= to.size(); ++j) {
    rows[0][j] = j;
  }
  for (std::size_t i = 1; i <= from.size(); ++i) {
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t change = from[i - 1] == to[j - 1] ? 0 : 1;
      rows[i][j] = std::min({rows[i - 1][j] + 1, rows[i][j - 1] + 1, rows[i - 1][j - 1] + change});
      if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1]) {
        rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
      }
    }
  }
  return rows[from.size()][to.size()];
}

}  // namespace

std::string NearestWord(std::string_view word, const std::vector<std::string>& known) {
  // The tool's words are short. A long word, such as a path, must not need a large table.
  constexpr std::size_t kLongest = 40;
  if (word.size() > kLongest) {
    return "";
  }
  std::string nearest;
  std::size_t least = std::max<std::size_t>(1, word.size() / 3) + 1;
  for (const std::string& candidate : known) {
    // Users often type only the beginning of a word.
    const bool begun = word.size() >= 3 && candidate.starts_with(word);
    const std::size_t distance = begun ? 0 : Distance(word, candidate);
    if (distance < least) {
      least = distance;
      nearest = candidate;
    }
  }
  return nearest;
}

}  // namespace borvanusb
