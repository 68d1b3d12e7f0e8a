#pragma once

// Lists and registers as a failing test shows them.

#include <string>
#include <vector>

#include "base/list_entry.h"
#include "camera_in_process.h"

namespace borvan_test {

using List = std::vector<borvan::ListEntry>;

// One line "{0x3012, 0x5a}," an entry: can be pasted into a test.
std::string ToText(const List& list);

// The first places where two cameras differ, with what each holds; empty when none.
std::string Differences(const Registers& expected, const Registers& found);

}  // namespace borvan_test
