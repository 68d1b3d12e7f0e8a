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

// The words of a `flash program` command line for `command`, without --all and --camera.
std::vector<std::string> ProgramWords(const FlashProgramCommand& command);

// Reads the images of a command and rejects what is wrong for every camera. Throws Failure.
std::vector<ImageFile> LoadForProgramming(const FlashProgramCommand& command, Output& output);

// The command with the determined position of an image that had none.
FlashProgramCommand Placed(FlashProgramCommand command, const std::vector<PlacedImage>& images);

// The command line that restores a backup. `bytes` is the content of a backup without gaps. `force`
// is required if it is blank or belongs to a read-only region.
std::string GoBackText(const BackupRecord& backup, std::span<const std::uint8_t> bytes,
                       const CameraIdentity& camera, bool force);

}  // namespace borvanusb
