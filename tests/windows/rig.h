#pragma once

// Virtual cameras plugged in for one test, and the library's host around them.

#include <borvan_usb.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "temporary_folder.h"

namespace test {

using Bytes = std::vector<std::uint8_t>;

// One camera of the configuration file.
struct CameraText {
  // Its device path is the two together, as they stand in JSON.
  std::string prefix = R"(\\\\?\\usb#)";
  std::string path = "vid_1234&pid_0001#one";
  std::string name = "Camera";
  // Further keys of its JSON object, each with a comma before it, like R"(, "seed": 1)".
  std::string more;
  std::string nodes = R"("camera-terminal", "processing", "vendor")";
  std::string flash_size = "64K";
};

// Every test starts without an instance and without cameras and ends so.
class Rig : public testing::Test {
 protected:
  Rig();
  ~Rig() override;

  // Plugs these cameras in, in this order, in place of the former ones.
  void PlugIn(const std::vector<CameraText>& cameras);
  // One camera with further keys, listed and selected.
  void UseCamera(const std::string& more = "");
  void UseCamera(const CameraText& camera);

  // Replaces the configuration file and leaves the cameras' registration as it is.
  void Configure(const std::vector<CameraText>& cameras);

  // Runs a command of virtual-camera.exe, which must succeed.
  void Control(const std::string& arguments);

  // Fills flash of the first camera before it is plugged in.
  void PresetFlash(const Bytes& bytes);
  Bytes Flash() const;

  std::string File(const std::string& name) const { return folder_.File(name); }
  // Makes a file of these bytes and returns its path.
  std::string MakeFile(const std::string& name, const Bytes& bytes) const;
  // The file's bytes once nobody has it open any more.
  Bytes FinishedFile(const std::string& path) const;

 private:
  TemporaryFolder folder_;
};

// Bytes that differ from address to address, from one 256 to the next too.
Bytes Pattern(std::size_t size, std::uint32_t seed = 1);

// The first `count` bytes from `start` on.
Bytes Slice(const Bytes& bytes, std::size_t start, std::size_t count);

// Polls until the progress is exactly this; false after `milliseconds`.
bool ProgressBecomes(std::uint64_t progress, int milliseconds = 20'000);

// The progress of a failed job.
constexpr std::uint64_t Failure(std::uint32_t status) {
  return std::uint64_t{status} << 32;
}
constexpr std::uint64_t kDone = 100;

// Runs a program of the build's folder to its end. `program_and_arguments` as on a command line.
// Returns its exit code.
DWORD RunProgram(const std::string& program_and_arguments);

// The folder of the programs, with a backslash at its end.
std::string ProgramFolder();

}  // namespace test
