#include "plugging.h"

#include <chrono>
#include <exception>
#include <mutex>
#include <string>
#include <thread>

#include "virtual_camera/core/camera.h"
#include "wide_text.h"

namespace virtual_camera {
namespace {

constexpr std::uint64_t kFileTimePerMillisecond = 10'000;

std::uint64_t Now() {
  FILETIME time = {};
  GetSystemTimeAsFileTime(&time);
  return static_cast<std::uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

// Two threads of this process may notice the same due camera.
std::mutex& PluggingMutex() {
  static std::mutex mutex;
  return mutex;
}

// The code of a thread that sleeps must not be unmapped by a host that frees its COM servers.
void PinModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<LPCWSTR>(reinterpret_cast<std::uintptr_t>(&PinModule)),
                     &module);
}

void PlugLocked(const Configuration& configuration, std::size_t position) {
  const CameraConfiguration& camera = configuration.cameras.at(position);
  // Plugging in is a power cycle: one that is in already keeps its registers.
  if (!IsPlugged(camera)) {
    SetPlugged(camera, true);
  }
  if (IsRegistered(HKEY_CLASSES_ROOT)) {
    AddEntry(HKEY_CLASSES_ROOT, EntryOf(configuration, position));
  }
  SetReturnTime(HKEY_CLASSES_ROOT, WideOf(camera.path), std::nullopt);
}

}  // namespace

CategoryEntry EntryOf(const Configuration& configuration, std::size_t position) {
  const CameraConfiguration& camera = configuration.cameras.at(position);
  return {position, WideOf(camera.name), WideOf(camera.path)};
}

std::vector<CategoryEntry> PluggedEntries(const Configuration& configuration) {
  std::vector<CategoryEntry> entries;
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    if (IsPlugged(configuration.cameras[position])) {
      entries.push_back(EntryOf(configuration, position));
    }
  }
  return entries;
}

void Plug(const Configuration& configuration, std::size_t position) {
  const std::lock_guard lock(PluggingMutex());
  PlugLocked(configuration, position);
}

void Unplug(const Configuration& configuration, std::size_t position) {
  const std::lock_guard lock(PluggingMutex());
  const CameraConfiguration& camera = configuration.cameras.at(position);
  SetPlugged(camera, false);
  SetReturnTime(HKEY_CLASSES_ROOT, WideOf(camera.path), std::nullopt);
  RemoveEntry(HKEY_CLASSES_ROOT, WideOf(camera.path));
}

void FallOff(const Configuration& configuration, std::size_t position,
             std::optional<std::uint32_t> back_after_ms) {
  try {
    const std::wstring path = WideOf(configuration.cameras.at(position).path);
    RemoveEntry(HKEY_CLASSES_ROOT, path);
    if (!back_after_ms) {
      return;
    }
    SetReturnTime(HKEY_CLASSES_ROOT, path, Now() + *back_after_ms * kFileTimePerMillisecond);
    PinModule();
    std::thread([configuration, delay = std::chrono::milliseconds(*back_after_ms)] {
      std::this_thread::sleep_for(delay);
      PlugDueCameras(configuration);
    }).detach();
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
  }
}

void PlugDueCameras(const Configuration& configuration) {
  const std::lock_guard lock(PluggingMutex());
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    try {
      const std::optional<std::uint64_t> time =
          ReturnTime(HKEY_CLASSES_ROOT, WideOf(configuration.cameras[position].path));
      if (time && *time <= Now()) {
        PlugLocked(configuration, position);
      }
    } catch (const std::exception& error) {
      OutputDebugStringA(error.what());
    }
  }
}

}  // namespace virtual_camera
