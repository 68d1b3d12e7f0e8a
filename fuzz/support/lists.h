#pragma once

#include <vector>

#include "base/list_entry.h"
#include "support/input.h"

namespace borvan_fuzz {

// Takes a list from the input: adjacent and single registers, gaps, markers of both kinds of lists,
// and numbers of any size. It has at most a few hundred entries.
std::vector<borvan::ListEntry> TakeList(Input& input);

}  // namespace borvan_fuzz
