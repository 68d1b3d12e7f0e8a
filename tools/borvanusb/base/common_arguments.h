#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace borvanusb {

// What every command takes. File names and texts are UTF-8.

enum class ProgressMode { kAuto, kBar, kLines, kJson, kNone };

struct CommonArguments {
  std::vector<std::string> cameras;  // --camera, as given
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds timeout{10000};  // nothing moved for that long: give up
  std::string trace;                         // file for the transfers of virtual cameras
  std::string profile;                       // of the camera, a file; empty: the fitting one
  bool force_profile = false;                // use it for a camera that it is not for
  ProgressMode progress = ProgressMode::kAuto;
  std::vector<std::string> defaulted;  // options whose values come from a profile: "--slave"
};

}  // namespace borvanusb
