#pragma once

// Commands as the tool runs them, over the library's own exports, on a camera that has one bad
// transfer.

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

// What a run of a command left.
// NOLINTNEXTLINE(bugprone-exception-escape): moving a JSON value throws nothing; it only asserts
struct RunEnd {
  ExitCode code = ExitCode::kDone;
  std::string message;  // of a failure
  nlohmann::ordered_json result;
  std::string out;  // standard output
};

// Scratch files in memory where the system has such a folder, and waits that cost nothing.
class SweepPlatform : public tool_test::TestPlatform {
 public:
  // A job that was left behind may still have the file of an earlier run: no name comes again.
  ScratchFile NewScratchFile(std::string_view extension) override;
  void Sleep(std::chrono::milliseconds time) override;

 private:
  std::uint64_t files_ = 0;
};

// The tests' folders lie in memory where the system has such a folder: a run writes several files
// through to the disk.
struct FoldersInMemory {
  FoldersInMemory();
};

// One camera in a process, and a folder for the files of the commands.
class SweepTest : public FoldersInMemory, public tool_test::LibraryTest {
 public:
  // A fresh camera and an empty folder.
  void StartAnew(const Content& content);

  // The name of a file in the folder.
  std::string File(const std::string& name) const { return work_ + "/" + name; }
  std::string Put(const std::string& name, const Bytes& bytes) const;
  std::string Put(const std::string& name, const std::string& text) const;
  // Nothing if there is none.
  std::optional<Bytes> Read(const std::string& name) const;
  // The names of the folder's files that end so.
  std::vector<std::string> FilesThatEnd(const std::string& ending) const;

  // Runs a command as a process of its own would: what camera and folder hold lasts.
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
