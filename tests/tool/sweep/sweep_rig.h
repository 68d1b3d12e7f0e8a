#pragma once

// Runs commands over the real exports of the library, on a camera with one bad transfer.

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "base/exit_code.h"
#include "command/context.h"
#include "library_rig.h"
#include "support/fake_camera.h"
#include "support/temporary_folder.h"
#include "sweep/swept_camera.h"

namespace borvanusb::sweep {

// The result of running a command.
// NOLINTNEXTLINE(bugprone-exception-escape): moving a JSON value throws nothing; it only asserts
struct RunEnd {
  ExitCode code = ExitCode::kDone;
  std::string message;  // of a failure
  nlohmann::ordered_json result;
  std::string out;  // standard output
};

// Keeps scratch files in memory if possible, and does not really wait.
class SweepPlatform : public tool_test::TestPlatform {
 public:
  // Names are never reused, because an abandoned job may still have a file of an earlier run open.
  ScratchFile NewScratchFile(std::string_view extension) override;
  void Sleep(std::chrono::milliseconds time) override;

 private:
  std::uint64_t files_ = 0;
};

// Creates the tests' folders in memory if possible, because each run flushes several files to the
// disk.
struct FoldersInMemory {
  FoldersInMemory();
};

// One camera, and a folder for the files of the commands.
class SweepTest : public FoldersInMemory, public tool_test::LibraryTest {
 public:
  // Starts with a new camera and an empty folder.
  void StartAnew(const Content& content);

  // The name of a file in the folder.
  std::string File(const std::string& name) const { return work_ + "/" + name; }
  std::string Put(const std::string& name, const Bytes& bytes) const;
  std::string Put(const std::string& name, const std::string& text) const;
  // Returns nothing if the file does not exist.
  std::optional<Bytes> Read(const std::string& name) const;
  // The files of the folder with this ending.
  std::vector<std::string> FilesThatEnd(const std::string& ending) const;

  // Runs a command like a separate process: the state of camera and folder is kept.
  RunEnd Perform(const std::function<ExitCode(Context&)>& command,
                 const std::optional<Fault>& fault);

  const SweptCamera& Camera() const { return camera_; }

 protected:
  SweepTest();
  ~SweepTest() override;

 private:
  borvan_test::TemporaryFolder folder_;
  std::string work_;
  SweepPlatform platform_;
  SweptCamera camera_;
};

}  // namespace borvanusb::sweep
