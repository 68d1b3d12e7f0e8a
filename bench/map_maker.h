#pragma once

#include <cstddef>
#include <string>

namespace bench {

// A register map in CMSIS-SVD of at least so many bytes, always the same for a size: peripherals,
// of which some are derived from others, with arrays, clusters, fields and enumerated values.
std::string MakeMap(std::size_t bytes);

}  // namespace bench
