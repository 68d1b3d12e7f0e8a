#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace borvanusb {

// Names of scratch files tell whose they are, so that a later process can remove what one left that
// was killed: "borvanusb-PROCESS-TICKS-NUMBER.EXTENSION".

// `ticks`: a time, since a process's number comes again. `number`: counts the process's files.
std::string ScratchName(std::uint32_t process, std::uint64_t ticks, unsigned number,
                        std::string_view extension);

// The process that made the scratch file with this name; nothing for any other file's name.
std::optional<std::uint32_t> ScratchOwner(std::string_view name);

}  // namespace borvanusb
