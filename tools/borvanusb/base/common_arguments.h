#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace borvanusb {

// The options that every command accepts. File names and texts are UTF-8.

enum class ProgressMode { kAuto, kBar, kLines, kJson, kNone };

// The words of a command line, by kind and without the common options. An equivalent command line
// can be composed from them.
struct GivenWords {
  std::vector<std::string> command;    // "flash", "program"
  std::vector<std::string> options;    // the command's own: "--all", "--mode=16/8"
  std::vector<std::string> arguments;  // positional arguments
};

struct CommonArguments {
  std::vector<std::string> cameras;  // --camera, as given
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds timeout{10000};  // fail after this time without progress
  std::string trace;                         // file that logs the transfers of virtual cameras
  std::string profile;                // file of the camera's profile; empty: the matching one
  bool force_profile = false;         // use it even if it does not match the camera
  std::chrono::milliseconds wait{0};  // for a camera that is absent or busy
  std::string log;                    // file that receives all messages
  GivenWords words;
  ProgressMode progress = ProgressMode::kAuto;
  std::vector<std::string> defaulted;  // options that a profile has set: "--slave"
};

}  // namespace borvanusb
