#pragma once

// What the control program does, one function for each of its commands. Each prints its outcome to
// `out` and raises an exception whose what() is one line for the user: ConfigurationError,
// RegistrationError, or CommandError.

#include <iosfwd>
#include <stdexcept>
#include <string>

#include "core/configuration.h"

namespace virtual_camera {

class CommandError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// The position of the camera that `text` names: its position in the file (from 0), else its name,
// else its device path, both without regard to case. CommandError when there is no such camera or
// the name fits several.
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

// These only look: they change nothing in the registry and no file.
void StateCommand(const Configuration& configuration, const std::string& camera, std::ostream& out);
// `file` in UTF-8.
void TraceCommand(const std::string& file, std::ostream& out);
void CheckCommand(const Configuration& configuration, const std::string& file, std::ostream& out);

}  // namespace virtual_camera
