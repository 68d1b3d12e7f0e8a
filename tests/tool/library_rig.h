#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "api/api_fixture.h"
#include "base/failure.h"
#include "dll/camera_library.h"
#include "dll/library_platform.h"
#include "dll/supervisor.h"
#include "support/temporary_folder.h"

namespace borvanusb::tool_test {

inline constexpr auto kDeviceError = static_cast<borvan::Result>(0x80070017);

// The operating system functions, with files in a separate folder for each test.
class TestPlatform : public LibraryPlatform {
 public:
  ScratchFile NewScratchFile(std::string_view extension) override;
  void RemoveScratchFile(const ScratchFile& file) override;
  ScratchState Look(const ScratchFile& file) override;
  std::optional<std::vector<std::uint32_t>> Threads() override;
  std::size_t MostClearTasks() const override { return most_clear_tasks; }
  std::string ToUtf8(std::string_view text) override { return std::string(text); }
  std::optional<std::string> DeviceName(const std::string& path) override;
  std::string SystemMessage(std::uint32_t status) override;
  void Sleep(std::chrono::milliseconds time) override;
  std::unique_ptr<CameraLock> LockCamera(const std::string& path,
                                         std::chrono::milliseconds limit) override;

  borvan_test::TemporaryFolder folder;
  std::vector<std::string> made;                    // scratch files
  std::map<std::string, std::string> device_names;  // names from the system, by path
  std::vector<std::string> asked_names;             // paths whose names were requested
  bool locked_elsewhere = false;
  int early_looks = 0;  // number of queries for which a new file seems closed
  std::size_t most_clear_tasks = 1'000'000;
  std::function<void()> on_sleep;
};

// A camera in memory behind the real exports of the library.
class LibraryTest : public borvan_test::ApiTest {
 protected:
  LibraryTest();

  // Opens the only camera.
  std::unique_ptr<Camera> Open();
  // With a time limit of 0.3 s, for things that never happen.
  std::unique_ptr<Camera> OpenWithShortLimit();

  // The failure that the call throws. The test fails if it throws none.
  static Failure FailureOf(const std::function<void()>& call);

  // Waits until an abandoned job has ended. Returns false if it does not end.
  bool BecomesIdle();

  // The number of files left in the scratch folder.
  std::size_t LeftBehind() const;

 public:
  // What each test sets and reads.
  Exports exports;
  TestPlatform platform;
  Supervisor supervisor;
  std::optional<CameraLibrary> library;
};

}  // namespace borvanusb::tool_test
