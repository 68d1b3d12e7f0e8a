#include "base/name_pattern.h"

#include <algorithm>
#include <cstddef>

namespace borvanusb {

namespace {

constexpr char Small(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

bool MatchesPattern(std::string_view pattern, std::string_view name, char separator) {
  std::size_t in_pattern = 0;
  std::size_t in_name = 0;
  // The position of the last * in the pattern, and the end of the characters that it matches. If
  // the pattern after the * does not match, the * takes one more character. Earlier * need no
  // further attempt.
  std::size_t star = std::string_view::npos;
  std::size_t star_end = 0;
  const auto one_matches = [&] {
    if (in_pattern == pattern.size() || pattern[in_pattern] == '*') {
      return false;
    }
    return pattern[in_pattern] == '?' ? name[in_name] != separator || separator == '\0'
                                      : Small(pattern[in_pattern]) == Small(name[in_name]);
  };
  while (in_name < name.size()) {
    if (one_matches()) {
      ++in_pattern;
      ++in_name;
    } else if (in_pattern < pattern.size() && pattern[in_pattern] == '*') {
      star = in_pattern++;
      star_end = in_name;
    } else if (star != std::string_view::npos &&
               (separator == '\0' || name[star_end] != separator)) {
      in_pattern = star + 1;
      in_name = ++star_end;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', in_pattern) == std::string_view::npos;
}

bool IsPattern(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

bool SameName(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, Small, Small);
}

}  // namespace borvanusb
