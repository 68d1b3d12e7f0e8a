#include "comparison.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>

namespace borvan_test {

List Shrink(List list, const std::function<bool(const List&)>& shows) {
  std::size_t part = std::max<std::size_t>(list.size() / 2, 1);
  while (true) {
    bool dropped = false;
    for (std::size_t at = 0; at < list.size();) {
      const std::size_t end = std::min(at + part, list.size());
      List shorter(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(at));
      shorter.insert(shorter.end(), list.begin() + static_cast<std::ptrdiff_t>(end), list.end());
      if (shows(shorter)) {
        list = std::move(shorter);
        dropped = true;
      } else {
        at = end;
      }
    }
    if (part > 1) {
      part /= 2;
    } else if (!dropped) {
      return list;
    }
  }
}

std::optional<Finding> FindFailing(std::uint32_t seeds,
                                   const std::function<List(std::uint32_t seed)>& make,
                                   const Check& check) {
  for (std::uint32_t seed = 1; seed <= seeds; ++seed) {
    List list = make(seed);
    if (check(list).empty()) {
      continue;
    }
    Finding finding;
    finding.seed = seed;
    finding.smallest =
        Shrink(std::move(list), [&](const List& shorter) { return !check(shorter).empty(); });
    finding.what = check(finding.smallest);
    return finding;
  }
  return std::nullopt;
}

void ExpectAllPass(std::uint32_t seeds, const std::function<List(std::uint32_t seed)>& make,
                   const Check& check) {
  const auto finding = FindFailing(seeds, make, check);
  if (finding.has_value()) {
    ADD_FAILURE() << "seed " << finding->seed << ", shrunk to " << finding->smallest.size()
                  << " entries:\n"
                  << ToText(finding->smallest) << finding->what;
  }
}

}  // namespace borvan_test
