#include "control/commands.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <vector>

#include "com/plugging.h"
#include "com/registration.h"
#include "core/camera.h"
#include "core/format.h"
#include "core/printable.h"
#include "core/trace.h"
#include "core/wide_text.h"

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
  return Format("camera {} \"{}\"", position, Printable(configuration.cameras[position].name));
}

// Which cameras are registered: those of this configuration, none, or others.
std::string RegistrationText(const Configuration& configuration) {
  if (IsRegistered(configuration)) {
    return "the cameras are registered";
  }
  if (!IsRegistered(HKEY_CLASSES_ROOT)) {
    return "the cameras are not registered";
  }
  const std::string file = Utf8Of(RegisteredConfiguration(HKEY_CLASSES_ROOT));
  return Format("these cameras are not registered; those of {} are",
                file.empty() ? "another file" : Printable(file));
}

// Message for a command that changed the device, but the change is not visible to hosts yet.
void RemarkUnregistered(const Configuration& configuration, std::ostream& out) {
  if (!IsRegistered(configuration)) {
    out << (IsRegistered(HKEY_CLASSES_ROOT) ? "these" : "the")
        << " cameras are not registered: no host sees them before \"register\"\n";
  }
}

// Returns a message if the entries that hosts see do not match the state of the camera. A command
// that only shows the state does not correct them.
std::string ListText(const Configuration& configuration, std::size_t position) {
  const bool plugged = IsPlugged(configuration.cameras[position]);
  const bool listed = HasEntry(HKEY_CLASSES_ROOT, EntryOf(configuration, position));
  if (plugged == listed || !IsRegistered(configuration)) {
    return {};
  }
  const std::string number = std::to_string(position);
  return plugged ? Format("  hosts don't list it yet: \"plug {}\" puts it on their list\n", number)
                 : Format("  hosts still list it: \"unplug {}\" takes it off their list\n", number);
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
      throw CommandError(
          Format("CAMERA \"{}\": cameras {} and {} have this name: give the number or the path",
                 text, found, i));
    }
    found = i;
  }
  if (found == count) {
    throw CommandError(Format("CAMERA \"{}\": no such camera: give {}, a name or a device path",
                              text, count == 1 ? std::string("0") : Format("0 to {}", count - 1)));
  }
  return found;
}

void RegisterCommand(const Configuration& configuration, const std::wstring& dll,
                     std::ostream& out) {
  if (!std::filesystem::exists(dll)) {
    throw CommandError(
        Format("{}: not found: it must be in the folder of virtual-camera.exe", Utf8Of(dll)));
  }
  const std::vector<CategoryEntry> entries = Register(configuration, dll);
  out << "registered " << entries.size() << " of " << configuration.cameras.size() << " cameras\n";
  for (const CategoryEntry& entry : entries) {
    out << "  " << Title(configuration, entry.position) << ' ' << Printable(Utf8Of(entry.path))
        << '\n';
  }
}

void UnregisterCommand(std::ostream& out) {
  UnregisterCameras(HKEY_CLASSES_ROOT);
  out << "unregistered\n";
}

void PlugCommand(const Configuration& configuration, std::size_t position, std::ostream& out) {
  Plug(configuration, position);
  out << Title(configuration, position) << ": plugged in\n";
  RemarkUnregistered(configuration, out);
}

void UnplugCommand(const Configuration& configuration, std::size_t position, std::ostream& out) {
  Unplug(configuration, position);
  out << Title(configuration, position) << ": unplugged\n";
  RemarkUnregistered(configuration, out);
}

void PowerCycleCommand(const Configuration& configuration, const std::string& camera,
                       std::ostream& out) {
  for (const std::size_t position : Chosen(configuration, camera)) {
    PowerCycle(configuration.cameras[position]);
    out << Title(configuration, position) << ": power switched off and on\n";
  }
  SyncEntries(configuration);
}

void ResetFaultsCommand(const Configuration& configuration, const std::string& camera,
                        std::ostream& out) {
  for (const std::size_t position : Chosen(configuration, camera)) {
    ResetFaultCounters(configuration.cameras[position]);
    out << Title(configuration, position) << ": fault counts reset\n";
  }
  SyncEntries(configuration);
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
    out << ListText(configuration, position);
  }
  out << RegistrationText(configuration) << '\n';
}

void TraceCommand(const std::string& file, std::ostream& out) {
  std::ifstream trace(std::filesystem::path(WideOf(file)), std::ios::binary);
  if (!trace) {
    throw CommandError(Format("FILE \"{}\": can't be read", file));
  }
  const bool is_trace = PrintTrace(trace, out);
  if (!trace.eof()) {
    throw CommandError(Format("FILE \"{}\": can't be read completely", file));
  }
  if (!is_trace) {
    throw CommandError(Format("FILE \"{}\": is not a trace", file));
  }
}

void CheckCommand(const Configuration& configuration, const std::string& file, std::ostream& out) {
  out << Printable(file) << ": " << configuration.cameras.size()
      << (configuration.cameras.size() == 1 ? " camera" : " cameras") << ", no mistakes\n";
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    out << "  " << Title(configuration, position) << ' '
        << Printable(configuration.cameras[position].path) << '\n';
  }
}

}  // namespace virtual_camera
