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

// A side of a comparison: a camera, a list, a preset or the reset values. Written as "camera",
// "camera:WHICH", "reset" or "preset:NAME"; any other text is a file name.

enum class DiffSource { kCamera, kReset, kPreset, kFile };

struct DiffSide {
  DiffSource source = DiffSource::kFile;
  std::string text;  // as given
  std::string name;  // camera (empty: the chosen one), preset or file
};

DiffSide DiffSideOf(const std::string& text);

// Reads a file as a snapshot. `names` is null if there is no profile.
using DiffFileReader = std::function<Snapshot(const std::string& file, const RegisterNames* names)>;

// Compares two sides, prints the differences and fills the result. Returns kVerify if they differ.
//   command  "reg diff"
//   csv      file to which the differences are also written; empty: none
ExitCode CompareSides(const std::string& command, const DiffSide& left, const DiffSide& right,
                      const std::string& csv, const DiffFileReader& read_file, Context& context);

}  // namespace borvanusb
