#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_names.h"
#include "names/snapshot.h"

namespace borvanusb {

// What can be compared: a camera, lists, presets, reset values. "camera", "camera:WHICH", "reset",
// "preset:NAME"; anything else is a file.

enum class DiffSource { kCamera, kReset, kPreset, kFile };

struct DiffSide {
  DiffSource source = DiffSource::kFile;
  std::string text;  // as given
  std::string name;  // of the camera (empty: the chosen one), of the preset, of the file
};

DiffSide DiffSideOf(const std::string& text);

// What a file says of registers. `names` is null when there is no profile.
using DiffFileReader = std::function<Snapshot(const std::string& file, const RegisterNames* names)>;

// Compares two sides, prints the differences and fills the result. Returns kVerify when they
// differ.
//   command  "reg diff"
//   csv      file that the differences are written to, too; empty: none
ExitCode CompareSides(const std::string& command, const DiffSide& left, const DiffSide& right,
                      const std::string& csv, const DiffFileReader& read_file, Context& context);

}  // namespace borvanusb
