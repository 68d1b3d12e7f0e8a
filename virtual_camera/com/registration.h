#pragma once

// The registry entries of the virtual camera: its class, and for each camera that is plugged in one
// entry in the category of video inputs.

#include <windows.h>

#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

namespace virtual_camera {

// One entry of the category of video inputs.
struct CategoryEntry {
  std::size_t position;  // place among the cameras of the configuration, 0-based
  std::wstring name;     // what hosts show to the user
  std::wstring path;     // the device path
};

// what() is one line. `result` is the HRESULT that a COM caller receives.
class RegistrationError : public std::runtime_error {
 public:
  RegistrationError(const std::string& text, HRESULT code)
      : std::runtime_error(text), result(code) {}
  HRESULT result;
};

// All functions take the key that they use as HKEY_CLASSES_ROOT.

// Registers `dll` (full path) as the server of the class, with exactly these entries, which come
// from the configuration file `configuration`. First removes the entries of an earlier
// registration. If a step fails, removes everything and throws RegistrationError, so the set of
// cameras is never incomplete.
void RegisterCameras(HKEY classes, const std::wstring& dll, const std::wstring& configuration,
                     const std::vector<CategoryEntry>& entries);

// Removes the class and all its entries. Throws RegistrationError if something can't be removed.
void UnregisterCameras(HKEY classes);

bool IsRegistered(HKEY classes);

// Returns the full name of the configuration file whose cameras are registered. Empty if there are
// none, and for a registration by version 0.1.0, which did not store the name.
std::wstring RegisteredConfiguration(HKEY classes);

// Adds or replaces the entry with this position. Throws RegistrationError on failure.
void AddEntry(HKEY classes, const CategoryEntry& entry);

// Whether the entry with this position has this path.
bool HasEntry(HKEY classes, const CategoryEntry& entry);

// Removes all entries with this device path. Throws RegistrationError on failure.
void RemoveEntry(HKEY classes, const std::wstring& path);

}  // namespace virtual_camera
