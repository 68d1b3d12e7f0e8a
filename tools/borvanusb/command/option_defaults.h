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

// Values of options that a command line does not give, from the profile of the camera that it
// means.
struct OptionDefaults {
  std::vector<std::pair<std::string, std::string>> values;  // "--slave" and its value
  std::string file;                                         // the profile; empty: none
  // Why the camera could not be chosen, if profiles are there: one of them may have defaults.
  std::optional<Failure> failure;
};

// Asked once for each command line that may use a camera.
using DefaultsSource = std::function<OptionDefaults(const CommonArguments&)>;

// Whether a profile may give this option a value: not to those that choose the camera, what is
// changed in it, or the files of one run.
bool MayHaveDefault(std::string_view option);

// What is known of cameras beside what they answer. The room profile has it; commands.cmake names
// it.
struct CameraKnowledge {
  // Throws Failure kFile for a profile that is given and can't be used.
  OptionDefaults (*defaults)(const CommonArguments& common, Host& host);
  // Throws Failure kFile when a profile is given that is for other cameras than this one.
  void (*require_fit)(const CameraIdentity& camera, const CommonArguments& common, Host& host);
};
const CameraKnowledge& ToolKnowledge();

// The defaults for the lines of a script: those of options that belong to a line, for the camera
// that the line means, else that of the script.
DefaultsSource LineDefaults(const Context& context);

}  // namespace borvanusb
