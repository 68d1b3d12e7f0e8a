#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Names of temporary files: "borvanusb-PROCESS-TICKS-NUMBER.EXTENSION". The name contains the ID of
// the process, so that a later process can remove the files of one that was killed.

// Returns the name of a temporary file.
//   process    ID of the process that creates the file
//   ticks      a time, because the system reuses process IDs
//   number     number of the file within the process
//   extension  without the dot
std::string ScratchName(std::uint32_t process, std::uint64_t ticks, unsigned number,
                        std::string_view extension);

// Returns the ID of the process that created the temporary file with this name. Returns nothing for
// any other file name.
std::optional<std::uint32_t> ScratchOwner(std::string_view name);

}  // namespace borvanusb
