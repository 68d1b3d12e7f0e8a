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

// How well a process is placed to find cameras, for `doctor`.
struct VideoDevice {
  std::string name;    // empty when it can't be read
  std::string path;    // likewise
  std::string reason;  // why it is not listed as a camera; empty when it is
};

struct SystemReport {
  std::string program;  // full name of this program's file
  std::string program_version;
  int pointer_bits = 0;
  std::string system;                       // "Windows 10.0.19043", with "Wine 8.0" if so
  std::string code_page;                    // of 8-bit texts: "1252"
  std::string library;                      // full name of the DLL, empty when none was found
  std::string library_version;              // from its version resource
  std::string library_problem;              // why it can't be used, empty when it can
  std::vector<std::string> library_places;  // where it was looked for, in order
  std::string com_problem;                  // empty when COM works
  std::vector<VideoDevice> devices;         // the category of video inputs, whole
  std::vector<std::pair<std::string, std::string>> environment;  // our variables that are set
};

// A camera that is there but is not one of this chip.
class NoVendorUnit : public Failure {
 public:
  using Failure::Failure;
};

// What a command needs of the system and of the library.
class Host {
 public:
  Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  virtual ~Host() = default;

  // What holds for all that follows: the time limit, the trace. Called before a command runs.
  virtual void Configure(const CommonArguments& arguments) = 0;

  // The cameras the library finds now. Throws Failure kNoCamera when the system's list can't be
  // had.
  virtual std::vector<CameraIdentity> ListCameras() = 0;

  // Opens a camera. Throws Failure: kRefused when it can't be opened, NoVendorUnit (kRefused, too)
  // when it has no vendor unit, kNoCamera when it is gone. One camera is open at a time.
  virtual std::unique_ptr<Camera> OpenCamera(const CameraIdentity& camera) = 0;

  // Keeps every other borvanusb process from using the camera until the result is destroyed. Throws
  // Failure kRefused at once when another one has it. Single accesses take it for themselves.
  class Reservation {
   public:
    virtual ~Reservation() = default;
  };
  virtual std::unique_ptr<Reservation> ReserveCamera(const CameraIdentity& camera) = 0;

  // Whether another borvanusb process keeps the camera with this path for itself now.
  virtual bool IsReservedElsewhere(const std::string& path) = 0;

  // The user's folder for the journals of changes that were begun; it need not exist. Throws
  // Failure kFile when the system names none.
  virtual std::string JournalFolder() const = 0;

  // Whether the user asked to stop (Ctrl-C). Every access to a camera ends with Failure kStopped
  // then, except while a StopHold exists: work that must reach a safe place first.
  virtual bool StopRequested() const = 0;
  class StopHold {
   public:
    virtual ~StopHold() = default;
  };
  virtual std::unique_ptr<StopHold> HoldStop() = 0;

  // What is told, one line each, when the process has to end in the middle: a call that hangs
  // beyond the time limit, a second Ctrl-C. It may be called from another thread at any time, until
  // it is replaced; empty: nothing.
  virtual void SetLastWords(std::function<std::vector<std::string>()> words) = 0;

  // Waits, less when a stop is asked for.
  virtual void Sleep(std::chrono::milliseconds time) = 0;
  // "2026-11-21T19:18:05Z" and the like, for reports.
  virtual std::chrono::system_clock::time_point Now() const = 0;
  virtual std::chrono::steady_clock::time_point Clock() const = 0;

  // Asks a question on the terminal; false without one, or for anything but "y" or "yes".
  virtual bool Ask(const std::string& question) = 0;
  // What to do when a camera can't be found, reserved or opened: waits a while and returns true to
  // try again; empty: the failure stands. Returns the one before. For --wait.
  using TryAgain = std::function<bool(const Failure&)>;
  TryAgain SetTryAgain(TryAgain try_again) {
    return std::exchange(try_again_, std::move(try_again));
  }
  // Does the work until it succeeds or TryAgain lets its failure stand.
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

  // All of standard input, byte for byte. Throws Failure: kFile when it can't be read or was read
  // before, kStopped when the user asks to stop while it has not ended.
  virtual std::string ReadStandardInput() = 0;
  // An environment variable, UTF-8; empty when it isn't set.
  virtual std::string Environment(const std::string& name) const = 0;

  // What must hold of the camera that a command works with: throws Failure when it does not. Empty:
  // nothing.
  using CameraCheck = std::function<void(const CameraIdentity&)>;
  // Returns the one before.
  CameraCheck SetCameraCheck(CameraCheck check) {
    return std::exchange(camera_check_, std::move(check));
  }
  void CheckCamera(const CameraIdentity& camera) const {
    if (camera_check_) {
      camera_check_(camera);
    }
  }

  virtual SystemReport ExamineSystem() = 0;
  // The version of the library; empty when it is not known.
  virtual std::string LibraryVersion() { return {}; }

  // The terminal where the user types, for a prompt; null without one.
  virtual Terminal* Prompt() { return nullptr; }
  // Forgets that a stop was asked for: the prompt continues after the command that was stopped.
  virtual void ForgetStop() {}

  // What --verbose reports about the work so far, in lines: the library, the cameras that were
  // opened, the calls that were made.
  virtual std::vector<std::string> Details() const { return {}; }

  // What `workbench` needs of the system; null where there is no workbench.
  virtual WorkbenchPlatform* Workbench() { return nullptr; }

  // Runs this program several times at once, with these arguments, and returns the exit codes.
  // `on_line` gets each line of their outputs, without its end, on the calling thread: which child,
  // whether from its standard error, the line.
  virtual std::vector<int> RunChildren(
      const std::vector<std::vector<std::string>>& arguments,
      const std::function<void(std::size_t, bool, const std::string&)>& on_line) = 0;

 private:
  CameraCheck camera_check_;
  TryAgain try_again_;
};

}  // namespace borvanusb
