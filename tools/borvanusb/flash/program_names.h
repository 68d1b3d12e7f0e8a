#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "flash/engine/journal.h"
#include "flash/image_files.h"
#include "flash/place_images.h"
#include "flash/program.h"

namespace borvanusb {

// The words of a `flash program` command line that does what `command` says, without --all and
// --camera.
std::vector<std::string> ProgramWords(const FlashProgramCommand& command);

// Reads the images of a command, and refuses what can't be right for any camera. Throws Failure.
std::vector<ImageFile> LoadForProgramming(const FlashProgramCommand& command, Output& output);

// The command with the place that an image without one has got.
FlashProgramCommand Placed(FlashProgramCommand command, const std::vector<PlacedImage>& images);

// The command line that writes a backup back. `bytes` are those of a backup without gaps; `force`
// because they are blank, or belong to a read-only region.
std::string GoBackText(const BackupRecord& backup, std::span<const std::uint8_t> bytes,
                       const CameraIdentity& camera, bool force);

}  // namespace borvanusb
