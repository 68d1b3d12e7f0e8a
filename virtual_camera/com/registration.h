#pragma once

// What the system's registry holds about the virtual camera: its class, and one entry in the
// category of video inputs for each camera that is plugged in.

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

// what(): one line. result: the HRESULT that a COM caller gets for it.
class RegistrationError : public std::runtime_error {
 public:
  RegistrationError(const std::string& text, HRESULT code)
      : std::runtime_error(text), result(code) {}
  HRESULT result;
};

// All functions take the key that stands for HKEY_CLASSES_ROOT.

// Registers `dll` (full path) as server of the class with exactly these entries, which come from
// the configuration file `configuration`. What an earlier registration left is removed first; when
// a step fails, all is removed and RegistrationError raised: never is half a set of cameras left.
void RegisterCameras(HKEY classes, const std::wstring& dll, const std::wstring& configuration,
                     const std::vector<CategoryEntry>& entries);

// Removes the class and all its entries; RegistrationError if something can't be removed.
void UnregisterCameras(HKEY classes);

bool IsRegistered(HKEY classes);

// The full name of the configuration file whose cameras are registered. Empty when there are none,
// and for a registration of version 0.1.0, which left no name.
std::wstring RegisteredConfiguration(HKEY classes);

// Adds or replaces the entry with this position; RegistrationError on failure.
void AddEntry(HKEY classes, const CategoryEntry& entry);

// Whether the entry with this position has this path.
bool HasEntry(HKEY classes, const CategoryEntry& entry);

// Removes the entries with this device path, if there are any; RegistrationError on failure.
void RemoveEntry(HKEY classes, const std::wstring& path);

}  // namespace virtual_camera
