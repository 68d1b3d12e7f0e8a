#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "list_text.h"

namespace borvan_test {

// What is wrong with a list; empty when nothing is.
using Check = std::function<std::string(const List&)>;

// Drops entries as long as `shows` still holds, large parts first: what is left shows it, and no
// single entry of it can be spared. `shows` must hold for `list`.
List Shrink(List list, const std::function<bool(const List&)>& shows);

struct Finding {
  std::uint32_t seed = 0;
  List smallest;
  std::string what;  // what is wrong with the smallest list
};

// Makes the lists of the seeds from 1 to `seeds` and looks for the first that fails.
std::optional<Finding> FindFailing(std::uint32_t seeds,
                                   const std::function<List(std::uint32_t seed)>& make,
                                   const Check& check);

// FindFailing, and a failed test that shows the smallest list when it finds one.
void ExpectAllPass(std::uint32_t seeds, const std::function<List(std::uint32_t seed)>& make,
                   const Check& check);

}  // namespace borvan_test
