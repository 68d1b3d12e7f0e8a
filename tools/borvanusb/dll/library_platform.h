#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// The system functions that are needed to work with the library.
class LibraryPlatform {
 public:
  LibraryPlatform() = default;
  LibraryPlatform(const LibraryPlatform&) = delete;
  LibraryPlatform& operator=(const LibraryPlatform&) = delete;
  virtual ~LibraryPlatform() = default;

  // The name of a temporary file for a data exchange between the library and this program. The
  // library accepts only 8-bit names, so the file has a second name that works for any folder.
  struct ScratchFile {
    std::string library_name;  // in the system's ANSI code page
    std::string name;          // UTF-8
  };
  // Returns the name of a file that does not exist yet. `extension` is without the dot. Throws
  // Failure kFile.
  virtual ScratchFile NewScratchFile(std::string_view extension) = 0;
  // Removes the file if it exists. Does not remove it while a job has it open.
  virtual void RemoveScratchFile(const ScratchFile& file) = 0;
  struct ScratchState {
    bool exists = false;
    bool open = false;       // in this process or another
    std::uint64_t size = 0;  // valid only if the file is not open
  };
  // Returns the state of a temporary file. Does not block other accesses to the file.
  virtual ScratchState Look(const ScratchFile& file) = 0;

  // Returns the thread IDs of this process. Returns nothing if the system does not provide them.
  virtual std::optional<std::vector<std::uint32_t>> Threads() = 0;
  // Returns the maximum number of waiting threads of the library (see
  // CameraLibrary::LimitClearTasks). Each one takes memory and, on some systems, handles.
  virtual std::size_t MostClearTasks() const = 0;

  // Converts a text of the library from the ANSI code page to UTF-8.
  virtual std::string ToUtf8(std::string_view text) = 0;
  // Returns the system's name of the video device with this path, as UTF-8. It is needed for names
  // that the 8-bit texts of the library can't represent. Returns nothing if the name is unknown.
  virtual std::optional<std::string> DeviceName(const std::string& /*path*/) {
    return std::nullopt;
  }
  // Returns the system's text for a status code that the library does not define. Empty if the
  // system has none.
  virtual std::string SystemMessage(std::uint32_t status) = 0;

  virtual void Sleep(std::chrono::milliseconds time) = 0;

  // Locks the camera with this path: no other borvanusb process can use it until the result is
  // destroyed. Otherwise their transfers would interfere. A thread may hold several locks of the
  // same camera. Returns null if another process still has the lock after `limit`.
  class CameraLock {
   public:
    virtual ~CameraLock() = default;
  };
  virtual std::unique_ptr<CameraLock> LockCamera(const std::string& path,
                                                 std::chrono::milliseconds limit) = 0;
};

}  // namespace borvanusb
