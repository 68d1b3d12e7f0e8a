#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "flash/program.h"

namespace borvanusb {

// The words of a `flash program` command line that does what `command` says, without --all and
// --camera.
std::vector<std::string> ProgramWords(const FlashProgramCommand& command);

// The command line that writes a backup back.
std::string GoBackText(const std::string& backup, std::uint32_t address,
                       const CameraIdentity& camera, bool is_blank);

}  // namespace borvanusb
