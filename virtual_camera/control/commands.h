#pragma once

// The commands of the control program, one function each. A function prints its result to `out`. On
// failure it throws ConfigurationError, RegistrationError or CommandError, whose what() is one line
// for the user.

#include <iosfwd>
#include <stdexcept>
#include <string>

#include "core/configuration.h"

namespace virtual_camera {

class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Returns the position of the camera that `text` selects: by its position in the file (from 0),
// otherwise by its name, otherwise by its device path, both ignoring case. Throws CommandError if
// no camera matches or several have the name.
std::size_t FindCamera(const Configuration& configuration, const std::string& text);

// `dll` is the full path of the virtual camera's DLL.
void RegisterCommand(const Configuration& configuration, const std::wstring& dll,
                     std::ostream& out);
void UnregisterCommand(std::ostream& out);
void PlugCommand(const Configuration& configuration, std::size_t position, std::ostream& out);
void UnplugCommand(const Configuration& configuration, std::size_t position, std::ostream& out);

// `camera` is empty for all cameras.
void PowerCycleCommand(const Configuration& configuration, const std::string& camera,
                       std::ostream& out);
void ResetFaultsCommand(const Configuration& configuration, const std::string& camera,
                        std::ostream& out);

// The following functions change neither the registry nor any file.
void StateCommand(const Configuration& configuration, const std::string& camera, std::ostream& out);
// `file` in UTF-8.
void TraceCommand(const std::string& file, std::ostream& out);
void CheckCommand(const Configuration& configuration, const std::string& file, std::ostream& out);

}  // namespace virtual_camera
