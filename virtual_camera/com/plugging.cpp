#include "com/plugging.h"

#include <process.h>

#include <chrono>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>

#include "core/camera.h"
#include "core/names.h"
#include "core/utf8_path.h"
#include "core/wide_text.h"

namespace virtual_camera {
namespace {

// How often to check for the return of a camera that is due, and when to give up.
constexpr auto kReturnStep = std::chrono::milliseconds(10);
constexpr int kReturnSteps = 500;

// Two threads of this process may change the same entries.
std::mutex& EntriesMutex() {
  static std::mutex mutex;
  return mutex;
}

// Keeps the DLL loaded: a host that frees its COM servers must not unmap the code of a sleeping
// thread.
void PinModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<LPCWSTR>(reinterpret_cast<std::uintptr_t>(&PinModule)),
                     &module);
}

// Waits until the state of the device shows that it is plugged in, then adds the entry.
void AwaitReturn(const Configuration& configuration, std::size_t position) {
  for (int step = 0; step < kReturnSteps; ++step) {
    if (IsPlugged(configuration.cameras.at(position))) {
      SyncEntries(configuration);
      return;
    }
    std::this_thread::sleep_for(kReturnStep);
  }
}

struct Return {
  Configuration configuration;
  std::size_t position;
  std::chrono::milliseconds delay;
};

unsigned __stdcall ReturnThread(void* argument) {
  const std::unique_ptr<const Return> due(static_cast<const Return*>(argument));
  try {
    std::this_thread::sleep_for(due->delay);
    AwaitReturn(due->configuration, due->position);
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
  }
  return 0;
}

// With winpthreads, a std::thread that is detached at once may never run.
void StartReturnThread(Return due) {
  auto owned = std::make_unique<Return>(std::move(due));
  const std::uintptr_t thread = _beginthreadex(nullptr, 0, ReturnThread, owned.get(), 0, nullptr);
  if (thread == 0) {
    OutputDebugStringA("no thread for the camera's return");
    return;
  }
  static_cast<void>(owned.release());
  CloseHandle(reinterpret_cast<HANDLE>(thread));
}

}  // namespace

CategoryEntry EntryOf(const Configuration& configuration, std::size_t position) {
  const CameraConfiguration& camera = configuration.cameras.at(position);
  return {position, WideOf(camera.name), WideOf(camera.path)};
}

std::vector<CategoryEntry> Register(const Configuration& configuration, const std::wstring& dll) {
  std::vector<CategoryEntry> entries;
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    if (IsPlugged(configuration.cameras[position])) {
      entries.push_back(EntryOf(configuration, position));
    }
  }
  const std::filesystem::path file = std::filesystem::absolute(PathFromUtf8(configuration.file));
  RegisterCameras(HKEY_CLASSES_ROOT, dll, file.wstring(), entries);
  return entries;
}

bool IsRegistered(const Configuration& configuration) {
  const std::wstring registered = RegisteredConfiguration(HKEY_CLASSES_ROOT);
  return !registered.empty() &&
         IdentifyFile(Utf8Of(registered)) == IdentifyFile(configuration.file);
}

void SyncEntries(const Configuration& configuration) {
  const std::lock_guard lock(EntriesMutex());
  if (!IsRegistered(configuration)) {
    return;
  }
  for (std::size_t position = 0; position < configuration.cameras.size(); ++position) {
    try {
      const CategoryEntry entry = EntryOf(configuration, position);
      const bool plugged = IsPlugged(configuration.cameras[position]);
      if (plugged && HasEntry(HKEY_CLASSES_ROOT, entry)) {
        continue;
      }
      // It may have an entry with another position, from before the configuration was changed.
      RemoveEntry(HKEY_CLASSES_ROOT, entry.path);
      if (plugged) {
        AddEntry(HKEY_CLASSES_ROOT, entry);
      }
    } catch (const std::exception& error) {
      OutputDebugStringA(error.what());
    }
  }
}

void Plug(const Configuration& configuration, std::size_t position) {
  SetPlugged(configuration.cameras.at(position), true);
  SyncEntries(configuration);
}

void Unplug(const Configuration& configuration, std::size_t position) {
  SetPlugged(configuration.cameras.at(position), false);
  SyncEntries(configuration);
}

void FollowFall(const Configuration& configuration, std::size_t position,
                std::optional<std::uint32_t> back_after_ms) {
  try {
    SyncEntries(configuration);
    if (!back_after_ms) {
      return;
    }
    PinModule();
    StartReturnThread({configuration, position, std::chrono::milliseconds(*back_after_ms)});
  } catch (const std::exception& error) {
    OutputDebugStringA(error.what());
  }
}

}  // namespace virtual_camera
