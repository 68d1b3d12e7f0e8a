#include "child_process.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <vector>

#include "core/camera.h"
#include "core/state_file.h"

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#endif

namespace virtual_camera_test {
namespace {

std::string program;

// Endless writes of 56 equal registers in one block and of one flash word after the other, until
// somebody kills the process.
[[noreturn]] void Hammer(virtual_camera::Camera& camera, const std::string& ready_file) {
  std::vector<std::uint8_t> block(64, 0);
  block[3] = 56;
  block[6] = 0x01;  // from register 0x0100
  for (std::uint32_t round = 0;; ++round) {
    for (std::size_t i = 8; i < 64; ++i) {
      block[i] = static_cast<std::uint8_t>(round);
    }
    camera.Set(7, block);
    const std::vector<std::uint8_t> word = {0x38,
                                            0,
                                            0,
                                            static_cast<std::uint8_t>(round >> 6),
                                            static_cast<std::uint8_t>(round << 2),
                                            0,
                                            0,
                                            0,
                                            0,
                                            0,
                                            0};
    camera.Set(3, word);
    if (round == 20) {
      std::ofstream(ready_file) << "ready";
    }
  }
}

// Sets of 56 equal registers in one block, each with the count of such sets that came before it, as
// the first fault counts them. `sets` of them, or until somebody kills the process.
int Count(virtual_camera::Camera& camera, const virtual_camera::CameraConfiguration& configuration,
          std::uint32_t sets) {
  const auto state = virtual_camera::LookAtState(configuration.state_file, configuration.plugged);
  std::uint64_t round = state.fields.fault_counters[0];
  std::vector<std::uint8_t> block(64, 0);
  block[3] = 56;
  block[6] = 0x01;  // from register 0x0100
  for (std::uint32_t i = 0; sets == 0 || i < sets; ++i, ++round) {
    std::fill(block.begin() + 8, block.end(), static_cast<std::uint8_t>(round));
    if (camera.Set(7, block).result != 0) {
      return 1;
    }
  }
  return 0;
}

// Owns the camera's lock, with a change that is not committed, until somebody kills the process.
[[noreturn]] void OwnLock(const virtual_camera::CameraConfiguration& configuration,
                          const std::string& ready_file) {
  virtual_camera::StateFile state(configuration.state_file, configuration.plugged);
  state.Lock();
  state.State().fields.plugged = false;
  std::ofstream(ready_file) << "ready";
  while (true) {
    std::this_thread::sleep_for(std::chrono::seconds(1));
  }
}

}  // namespace

void RememberProgram(const char* path) {
  program = path;
}

int RunChild(const std::string& action, const std::string& configuration_file) {
  const auto configuration = virtual_camera::LoadConfiguration(configuration_file);
  if (action == "own") {
    OwnLock(configuration.cameras.at(0), configuration_file + ".ready");
  }
  virtual_camera::Camera camera(configuration.cameras.at(0));
  if (action == "count" || action == "burst") {
    return Count(camera, configuration.cameras.at(0), action == "burst" ? 5000 : 0);
  }
  if (action == "hammer") {
    Hammer(camera, configuration_file + ".ready");
  }
  if (action == "write") {
    // register 0x0042 = 0x5A in the byte form, then a read of it whose reply nobody fetches
    for (const std::vector<std::uint8_t>& step : {std::vector<std::uint8_t>{0x28, 0x42, 0x00, 0x08},
                                                  {0x28, 0x00, 0x00, 0x38},
                                                  {0x28, 0x5A, 0x00, 0x48},
                                                  {0x24, 0x42, 0x00, 0x18},
                                                  {0x24, 0x00, 0x00, 0x58}}) {
      if (camera.Set(1, step).result != 0) {
        return 1;
      }
    }
    return 0;
  }
  return 2;
}

#ifdef _WIN32

ChildProcess::ChildProcess(const std::string& action, const std::string& configuration_file) {
  std::string command = "\"" + program + "\" --child " + action + " \"" + configuration_file + "\"";
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION information{};
  if (!::CreateProcessA(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                        &startup, &information)) {
    throw std::runtime_error("the child can't be started");
  }
  ::CloseHandle(information.hThread);
  process_ = information.hProcess;
}

ChildProcess::~ChildProcess() {
  Kill();
  ::CloseHandle(process_);
}

int ChildProcess::Wait() {
  ::WaitForSingleObject(process_, INFINITE);
  DWORD code = 0;
  ::GetExitCodeProcess(process_, &code);
  return static_cast<int>(code);
}

void ChildProcess::Kill() {
  ::TerminateProcess(process_, 9);
  ::WaitForSingleObject(process_, INFINITE);
}

#else

ChildProcess::ChildProcess(const std::string& action, const std::string& configuration_file)
    : process_(::fork()) {
  if (process_ == 0) {
    ::execl(program.c_str(), program.c_str(), "--child", action.c_str(), configuration_file.c_str(),
            static_cast<char*>(nullptr));
    ::_exit(127);
  }
  if (process_ < 0) {
    throw std::runtime_error("the child can't be started");
  }
}

ChildProcess::~ChildProcess() {
  Kill();
}

int ChildProcess::Wait() {
  int status = 0;
  ::waitpid(process_, &status, 0);
  process_ = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ChildProcess::Kill() {
  if (process_ > 0) {
    ::kill(process_, SIGKILL);
    Wait();
  }
}

#endif

}  // namespace virtual_camera_test
