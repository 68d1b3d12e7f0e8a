#pragma once

#include <chrono>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/work_state.h"
#include "flash/place_images.h"

namespace borvanusb {

// The result of programming, for --report, --json and the database of a production line.
struct ProgramOutcome {
  std::optional<CameraIdentity> camera;
  std::vector<std::pair<std::string, std::string>> tags;  // from the user: name and value
  std::string library_version;                            // empty: unknown
  std::string computer;                                   // empty: unknown
  std::string profile_file;                               // empty: none
  std::string profile_name;
  std::string image_file;
  std::uint64_t image_size = 0;
  std::string image_sha256;
  std::uint32_t address = 0;        // of the first byte
  std::vector<PlacedImage> images;  // empty if it failed before positions were known
  std::optional<std::uint64_t> flash_size;
  bool dry_run = false;
  std::uint64_t sectors = 0;  // sectors that contain bytes of the image
  Ranges changes;             // sectors that differ
  std::uint64_t transfers = 0;
  double expected_seconds = 0;
  std::string backup;            // empty: none
  std::optional<bool> verified;  // nothing: not read back
  std::chrono::system_clock::time_point started;
  std::chrono::system_clock::time_point finished;
  double read_seconds = 0;
  double program_seconds = 0;
  double verify_seconds = 0;
  double total_seconds = 0;
  ExitCode code = ExitCode::kDone;
  std::string message;  // of a failure
  std::string hint;
};

// An array of {"first", "last"}.
nlohmann::ordered_json ToJson(const Ranges& ranges);
// The files of an image, as an array.
nlohmann::ordered_json ToJson(const std::vector<PlacedImage>& images);
nlohmann::ordered_json ToJson(const ProgramOutcome& outcome, const WorkState& state);

// A duration for users: "0.42 s", "75.0 s".
std::string SecondsText(double seconds);

}  // namespace borvanusb
