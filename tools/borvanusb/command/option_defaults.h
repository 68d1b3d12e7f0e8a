#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/common_arguments.h"
#include "base/failure.h"
#include "camera/camera.h"
#include "command/context.h"

namespace borvanusb {

// Default values of options, from the profile of the camera that the command line refers to.
struct OptionDefaults {
  std::vector<std::pair<std::string, std::string>> values;  // "--slave" and its value
  std::string file;                                         // the profile; empty: none
  // Set if profiles exist but the camera could not be chosen. Its profile might have defaults.
  std::optional<Failure> failure;
};

// Called once for each command line that may use a camera.
using DefaultsSource = std::function<OptionDefaults(const CommonArguments&)>;

// Whether a profile may set this option. It may not choose the camera, what is changed in it, or
// the files of a run.
bool MayHaveDefault(std::string_view option);

// Facts about cameras that do not come from the cameras themselves. The room profile implements it;
// commands.cmake names the implementation.
struct CameraKnowledge {
  // Throws Failure kFile if a given profile can't be used.
  OptionDefaults (*defaults)(const CommonArguments& common, Host& host);
  // Throws Failure kFile if a given profile is for other cameras.
  void (*require_fit)(const CameraIdentity& camera, const CommonArguments& common, Host& host);
};
const CameraKnowledge& ToolKnowledge();

// The defaults for the lines of a script. They include only options that may be used in a line. The
// camera is that of the line, else that of the script.
DefaultsSource LineDefaults(const Context& context);

}  // namespace borvanusb
