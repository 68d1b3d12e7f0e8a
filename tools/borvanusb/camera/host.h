#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/common_arguments.h"
#include "base/failure.h"
#include "base/terminal.h"
#include "camera/camera.h"

namespace borvanusb {

class WorkbenchPlatform;

// What `doctor` reports about the system.

// A device in the system's category of video inputs.
struct VideoDevice {
  std::string name;    // empty if it can't be read
  std::string path;    // empty if it can't be read
  std::string reason;  // why it is not listed as a camera; empty if it is
};

struct SystemReport {
  std::string program;  // full name of this program's file
  std::string program_version;
  int pointer_bits = 0;
  std::string system;                       // "Windows 10.0.19043", with "Wine 8.0" under Wine
  std::string code_page;                    // of 8-bit texts: "1252"
  std::string library;                      // full name of the DLL; empty if it was not found
  std::string library_version;              // from its version resource
  std::string library_problem;              // why it can't be used; empty if it can
  std::vector<std::string> library_places;  // places searched for the DLL, in order
  std::string com_problem;                  // why COM fails; empty if it works
  std::vector<VideoDevice> devices;         // all devices in the category of video inputs
  std::vector<std::pair<std::string, std::string>> environment;  // this tool's variables
};

// The failure for a camera that exists but does not have this chip.
class NoVendorUnit : public Failure {
 public:
  using Failure::Failure;
};

// The functions of the system and the library that commands use.
class Host {
 public:
  Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  virtual ~Host() = default;

  // Sets what applies to all following calls, such as the time limit and the trace. Must be called
  // before a command runs.
  virtual void Configure(const CommonArguments& arguments) = 0;

  // Lists the cameras that the library finds now. Throws Failure kNoCamera if the system's video
  // devices can't be listed.
  virtual std::vector<CameraIdentity> ListCameras() = 0;

  // Opens a camera. Only one camera is open at a time. Throws Failure: kRefused if the camera can't
  // be opened, NoVendorUnit (also kRefused) if it has no vendor unit, kNoCamera if it was removed.
  virtual std::unique_ptr<Camera> OpenCamera(const CameraIdentity& camera) = 0;

  // Reserves the camera: no other borvanusb process can use it until the result is destroyed.
  // Throws Failure kRefused at once if another process has reserved it. Single accesses need no
  // call of this function: each one reserves the camera itself.
  class Reservation {
   public:
    virtual ~Reservation() = default;
  };
  virtual std::unique_ptr<Reservation> ReserveCamera(const CameraIdentity& camera) = 0;

  // Whether another borvanusb process has reserved the camera with this path.
  virtual bool IsReservedElsewhere(const std::string& path) = 0;

  // Returns the user's folder for the journals of unfinished changes. The folder need not exist.
  // Throws Failure kFile if the system names no such folder.
  virtual std::string JournalFolder() const = 0;

  // Whether the user asked to stop (Ctrl-C). Every access to a camera then throws Failure kStopped.
  // While a StopHold exists, accesses continue: for work that must reach a safe state first.
  virtual bool StopRequested() const = 0;
  class StopHold {
   public:
    virtual ~StopHold() = default;
  };
  virtual std::unique_ptr<StopHold> HoldStop() = 0;

  // Sets the function that returns the lines to print if the process must end in the middle of its
  // work: when a call exceeds the time limit, or after a second Ctrl-C. The function may be called
  // on another thread at any time until it is replaced. An empty function prints nothing.
  virtual void SetLastWords(std::function<std::vector<std::string>()> words) = 0;

  // Waits. Returns early if the user asks to stop.
  virtual void Sleep(std::chrono::milliseconds time) = 0;
  // The date and time, for reports.
  virtual std::chrono::system_clock::time_point Now() const = 0;
  virtual std::chrono::steady_clock::time_point Clock() const = 0;

  // Asks a question on the terminal. Returns true only for the answers "y" and "yes". Returns false
  // if there is no terminal.
  virtual bool Ask(const std::string& question) = 0;
  // Decides what happens if a camera can't be found, reserved or opened: waits a while and returns
  // true to retry, or returns false to report the failure. An empty function never retries.
  // SetTryAgain returns the previous function. Used by --wait.
  using TryAgain = std::function<bool(const Failure&)>;
  TryAgain SetTryAgain(TryAgain try_again) {
    return std::exchange(try_again_, std::move(try_again));
  }
  // Repeats `work` until it succeeds or TryAgain returns false. Then the failure is thrown.
  template <typename Work>
  auto UntilItWorks(Work work) -> decltype(work()) {
    while (true) {
      try {
        return work();
      } catch (const Failure& failure) {
        if (!try_again_ || !try_again_(failure)) {
          throw;
        }
      }
    }
  }

  // Reads standard input to its end, as bytes. Throws Failure: kFile if it can't be read or was
  // already read, kStopped if the user asks to stop before its end.
  virtual std::string ReadStandardInput() = 0;
  // Returns an environment variable as UTF-8. Returns an empty text if it is not set.
  virtual std::string Environment(const std::string& name) const = 0;

  // Checks the camera that a command uses, and throws Failure if it is unsuitable. An empty
  // function accepts every camera.
  using CameraCheck = std::function<void(const CameraIdentity&)>;
  // Returns the previous function.
  CameraCheck SetCameraCheck(CameraCheck check) {
    return std::exchange(camera_check_, std::move(check));
  }
  void CheckCamera(const CameraIdentity& camera) const {
    if (camera_check_) {
      camera_check_(camera);
    }
  }

  virtual SystemReport ExamineSystem() = 0;
  // Returns the version of the library. Empty if it is unknown.
  virtual std::string LibraryVersion() { return {}; }

  // Returns the terminal for a prompt. Null if there is none.
  virtual Terminal* Prompt() { return nullptr; }
  // Resets the stop request, so that the prompt can continue after a stopped command.
  virtual void ForgetStop() {}

  // Returns the lines that --verbose prints about the work so far: the library, the opened cameras,
  // the calls.
  virtual std::vector<std::string> Details() const { return {}; }

  // Returns the system functions for `workbench`. Null if this host has no workbench.
  virtual WorkbenchPlatform* Workbench() { return nullptr; }

  // Runs this program in parallel, once for each element of `arguments`, and returns the exit
  // codes. Calls `on_line` on the calling thread for each output line of a child: with the number
  // of the child, whether the line is from its standard error, and the line without its line end.
  virtual std::vector<int> RunChildren(
      const std::vector<std::vector<std::string>>& arguments,
      const std::function<void(std::size_t, bool, const std::string&)>& on_line) = 0;

 private:
  CameraCheck camera_check_;
  TryAgain try_again_;
};

}  // namespace borvanusb
