#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// What working with the library needs of the system.
class LibraryPlatform {
 public:
  LibraryPlatform() = default;
  LibraryPlatform(const LibraryPlatform&) = delete;
  LibraryPlatform& operator=(const LibraryPlatform&) = delete;
  virtual ~LibraryPlatform() = default;

  // A file that does not exist yet and by which the library and this program exchange bytes. The
  // library knows 8-bit names only, whatever the user's folders are called.
  struct ScratchFile {
    std::string library_name;  // in the system's ANSI code page
    std::string name;          // UTF-8
  };
  // `extension` without the dot. Throws Failure kFile.
  virtual ScratchFile NewScratchFile(std::string_view extension) = 0;
  // Removes it if it is there; a job that still has it open keeps it.
  virtual void RemoveScratchFile(const ScratchFile& file) = 0;
  struct ScratchState {
    bool exists = false;
    bool open = false;       // by somebody, in this process or another
    std::uint64_t size = 0;  // of a file that nobody has open
  };
  // Looks at a scratch file without keeping others from it.
  virtual ScratchState Look(const ScratchFile& file) = 0;

  // The numbers of this process's threads; nothing when the system does not tell.
  virtual std::optional<std::vector<std::uint32_t>> Threads() = 0;
  // How many of its threads that only wait the library may have at a time; each takes memory and,
  // on some systems, handles.
  virtual std::size_t MostClearTasks() const = 0;

  // A text of the library's, from the ANSI code page to UTF-8.
  virtual std::string ToUtf8(std::string_view text) = 0;
  // The name that the system has for the video device with this path, UTF-8: for names that the
  // library's 8-bit texts can't hold. Nothing when it can't be told.
  virtual std::optional<std::string> DeviceName(const std::string& /*path*/) {
    return std::nullopt;
  }
  // The system's text for a code that is not the library's own; empty when it has none.
  virtual std::string SystemMessage(std::uint32_t status) = 0;

  virtual void Sleep(std::chrono::milliseconds time) = 0;

  // Keeps other borvanusb processes from the camera with this path while the result lives: their
  // transfers would mix with ours. May be had several times by one thread. Null when another
  // process did not let go within `limit`.
  class CameraLock {
   public:
    virtual ~CameraLock() = default;
  };
  virtual std::unique_ptr<CameraLock> LockCamera(const std::string& path,
                                                 std::chrono::milliseconds limit) = 0;
};

}  // namespace borvanusb
