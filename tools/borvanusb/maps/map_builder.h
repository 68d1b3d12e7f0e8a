#pragma once

#include "maps/read_svd.h"
#include "maps/svd_tree.h"

namespace borvanusb {

// Expands the elements of a file into a map.
void BuildMap(const SvdTree& tree, const MapLimits& limits, RegisterMap& map);

// Adds doubts about a complete map: duplicate addresses and names, registers outside the address
// blocks of their peripheral.
void CheckMap(RegisterMap& map);

}  // namespace borvanusb
