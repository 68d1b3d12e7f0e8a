#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace borvanusb {

// What every command takes. File names and texts are UTF-8.

enum class ProgressMode { kAuto, kBar, kLines, kJson, kNone };

// The words of a command line without the common options, sorted: a line can be made of them again.
struct GivenWords {
  std::vector<std::string> command;    // "flash", "program"
  std::vector<std::string> options;    // the command's own: "--all", "--mode=16/8"
  std::vector<std::string> arguments;  // what stands without an option
};

struct CommonArguments {
  std::vector<std::string> cameras;  // --camera, as given
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds timeout{10000};  // nothing moved for that long: give up
  std::string trace;                         // file for the transfers of virtual cameras
  std::string profile;                       // of the camera, a file; empty: the fitting one
  bool force_profile = false;                // use it for a camera that it is not for
  std::chrono::milliseconds wait{0};         // for a camera that is not there yet or busy
  std::string log;                           // file that gets all that is said
  GivenWords words;
  ProgressMode progress = ProgressMode::kAuto;
  std::vector<std::string> defaulted;  // options whose values come from a profile: "--slave"
};

}  // namespace borvanusb
