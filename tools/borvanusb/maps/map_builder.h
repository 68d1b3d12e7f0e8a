#pragma once

#include "maps/read_svd.h"
#include "maps/svd_tree.h"

namespace borvanusb {

// Writes the elements of a file out as a map.
void BuildMap(const SvdTree& tree, const MapLimits& limits, RegisterMap& map);

// Doubts of a map that is complete: addresses and names that occur twice, registers outside the
// address blocks of their peripheral.
void CheckMap(RegisterMap& map);

}  // namespace borvanusb
