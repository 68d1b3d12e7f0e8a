#include "commands.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <vector>

#include "plugging.h"
#include "registration.h"
#include "virtual_camera/core/camera.h"
#include "virtual_camera/core/trace.h"
#include "wide_text.h"

namespace virtual_camera {
namespace {

std::vector<std::size_t> Chosen(const Configuration& configuration, const std::string& camera) {
  if (!camera.empty()) {
    return {FindCamera(configuration, camera)};
  }
  std::vector<std::size_t> all(configuration.cameras.size());
  for (std::size_t position = 0; position < all.size(); ++position) {
    all[position] = position;
  }
  return all;
}

std::string Title(const Configuration& configuration, std::size_t position) {
  return "camera " + std::to_string(position) + " \"" + configuration.cameras[position].name + "\"";
}

// Said when a command changed the device but no host can see it yet.
void RemarkUnregistered(std::ostream& out) {
  if (!IsRegistered(HKEY_CLASSES_ROOT)) {
    out << "the cameras are not registered: no host sees them before \"register\"\n";
  }
}

}  // namespace

std::size_t FindCamera(const Configuration& configuration, const std::string& text) {
  const std::size_t count = configuration.cameras.size();
  std::size_t position = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), position);
  if (error == std::errc() && end == text.data() + text.size() && position < count) {
    return position;
  }
  const std::wstring wanted = WideOf(text);
  std::size_t found = count;
  for (std::size_t i = 0; i < count; ++i) {
    const CameraConfiguration& camera = configuration.cameras[i];
    if (!SamePath(WideOf(camera.name), wanted) && !SamePath(WideOf(camera.path), wanted)) {
      continue;
    }
    if (found != count) {
      throw CommandError("CAMERA \"" + text + "\": cameras " + std::to_string(found) + " and " +
                         std::to_string(i) + " have this name: give the number or the path");
    }
    found = i;
  }
  if (found == count) {
    throw CommandError("CAMERA \"" + text + "\": no such camera: give " +
                       (count == 1 ? std::string("0") : "0 to " + std::to_string(count - 1)) +
                       ", a name or a device path");
  }
  return found;
}

void RegisterCommand(const Configuration& configuration, const std::wstring& dll,
                     std::ostream& out) {
  if (!std::filesystem::exists(dll)) {
    throw CommandError(Utf8Of(dll) + ": not found: it must lie beside virtual-camera.exe");
  }
  const std::vector<CategoryEntry> entries = PluggedEntries(configuration);
  RegisterCameras(HKEY_CLASSES_ROOT, dll, entries);
  out << "registered " << entries.size() << " of " << configuration.cameras.size() << " cameras\n";
  for (const CategoryEntry& entry : entries) {
    out << "  " << Title(configuration, entry.position) << ' ' << Utf8Of(entry.path) << '\n';
  }
}

void UnregisterCommand(std::ostream& out) {
  UnregisterCameras(HKEY_CLASSES_ROOT);
  out << "unregistered\n";
}

void PlugCommand(const Configuration& configuration, std::size_t position, std::ostream& out) {
  Plug(configuration, position);
  out << Title(configuration, position) << ": plugged in\n";
  RemarkUnregistered(out);
}

void UnplugCommand(const Configuration& configuration, std::size_t position, std::ostream& out) {
  Unplug(configuration, position);
  out << Title(configuration, position) << ": unplugged\n";
}

void PowerCycleCommand(const Configuration& configuration, const std::string& camera,
                       std::ostream& out) {
  for (const std::size_t position : Chosen(configuration, camera)) {
    PowerCycle(configuration.cameras[position]);
    out << Title(configuration, position) << ": power was off and is on again\n";
  }
}

void ResetFaultsCommand(const Configuration& configuration, const std::string& camera,
                        std::ostream& out) {
  for (const std::size_t position : Chosen(configuration, camera)) {
    ResetFaultCounters(configuration.cameras[position]);
    out << Title(configuration, position) << ": faults count from the start\n";
  }
}

void StateCommand(const Configuration& configuration, const std::string& camera,
                  std::ostream& out) {
  for (const std::size_t position : Chosen(configuration, camera)) {
    const CameraConfiguration& chosen = configuration.cameras[position];
    const std::string description = DescribeState(chosen);
    out << "camera " << position << '\n' << description;
    if (!description.ends_with('\n')) {
      out << '\n';
    }
  }
  out << (IsRegistered(HKEY_CLASSES_ROOT) ? "the cameras are registered\n"
                                          : "the cameras are not registered\n");
}

void TraceCommand(const std::string& file, std::ostream& out) {
  std::ifstream trace(std::filesystem::path(WideOf(file)), std::ios::binary);
  if (!trace) {
    throw CommandError("FILE \"" + file + "\": can't be read");
  }
  PrintTrace(trace, out);
}

void CheckCommand(const Configuration& configuration, const std::string& file, std::ostream& out) {
  out << file << ": " << configuration.cameras.size()
      << (configuration.cameras.size() == 1 ? " camera" : " cameras") << ", no mistakes\n";
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    out << "  " << Title(configuration, position) << ' ' << configuration.cameras[position].path
        << '\n';
  }
}

}  // namespace virtual_camera
