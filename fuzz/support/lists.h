#pragma once

#include <vector>

#include "base/list_entry.h"
#include "support/input.h"

namespace borvan_fuzz {

// Takes a list of registers and markers: rows of registers, gaps, single ones, markers of both
// kinds of lists, and numbers of any size. At most some hundred entries.
std::vector<borvan::ListEntry> TakeList(Input& input);

}  // namespace borvan_fuzz
