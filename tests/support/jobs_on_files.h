#pragma once

// The six jobs on a file each, with a device that does all it is asked for.

#include <gtest/gtest.h>

#include <array>
#include <sstream>
#include <string>

#include "base/hexadecimal_text.h"
#include "jobs/job_starters.h"
#include "jobs/scripted_device.h"

namespace borvan_test {

enum class FileJob { kFlashWrite, kRegisterWrite, kI2cWrite, kFlashRead, kRegisterRead, kI2cRead };

inline constexpr std::array kReadingJobs = {FileJob::kFlashWrite, FileJob::kRegisterWrite,
                                            FileJob::kI2cWrite};
inline constexpr std::array kWritingJobs = {FileJob::kFlashRead, FileJob::kRegisterRead,
                                            FileJob::kI2cRead};

// What came of a job: the starter's result, then each report.
inline constexpr const char* kRefused = "e000000a; e000000a -1";
inline constexpr const char* kReported = "0; e000000a -1";
inline constexpr const char* kDone = "0; 0 100";
inline constexpr const char* kDoneThenReported = "0; 0 100; e000000a -1";

class JobsOnFiles : public testing::Test {
 protected:
 public:
  // Bytes and entries that the reading operations give.
  std::size_t delivered = 100;
  // Bytes of the image that programming got last.
  std::size_t image_size = 0;
  // Called while the device reads or writes.
  std::function<void()> meanwhile = [] {};

  std::string Run(FileJob job, const std::string& path) {
    const auto device = std::make_shared<ScriptedDevice>();
    ReportRecorder recorder(device);
    Script(*device);
    std::ostringstream outcome;
    outcome << std::hex << static_cast<std::uint32_t>(Start(job, device, path, recorder));
    EXPECT_TRUE(recorder.JobsEnded());
    for (const Report& report : recorder.Reports()) {
      outcome << "; " << std::hex << static_cast<std::uint32_t>(report.status) << std::dec << ' '
              << report.percent;
    }
    EXPECT_FALSE(device->Jobs().job_running);
    EXPECT_FALSE(device->Jobs().stop_requested);
    return outcome.str();
  }

 private:
  void Script(ScriptedDevice& device) {
    device.SetEveryOperation([this] {
      meanwhile();
      return 0;
    });
    device.flash_write = [this](const ScriptedDevice::Bytes& image, auto&&...) {
      meanwhile();
      image_size = image.size();
      return 0;
    };
    device.flash_read = [this](ScriptedDevice::Bytes& output, auto&&...) {
      meanwhile();
      output.assign(delivered, 0x5A);
      return 0;
    };
    const auto read_list = [this](ScriptedDevice::List& list, auto&&...) {
      meanwhile();
      list.assign(delivered, {0x3012, 0x5A});
      return 0;
    };
    device.register_read = read_list;
    device.i2c_read = read_list;
  }

  borvan::Result Start(FileJob job, const std::shared_ptr<ScriptedDevice>& device,
                       const std::string& path, ReportRecorder& recorder) {
    switch (job) {
      case FileJob::kFlashWrite:
        return borvan::StartFlashWriteJob(device, path, "0", recorder.Callback());
      case FileJob::kRegisterWrite:
        return borvan::StartRegisterWriteJob(device, path, recorder.Callback());
      case FileJob::kI2cWrite:
        return borvan::StartI2cWriteJob(device, path, 0, recorder.Callback());
      case FileJob::kFlashRead:
        // A text dump has the lines of the range, however many bytes came.
        return borvan::StartFlashQuickReadJob(device, path, "0", borvan::FormatHex(delivered - 1),
                                              recorder.Callback());
      case FileJob::kRegisterRead:
        return borvan::StartRegisterReadJob(device, path, "0", "0", recorder.Callback());
      case FileJob::kI2cRead:
        return borvan::StartI2cReadJob(device, path, "0", "0", "0", 1, recorder.Callback());
    }
    return 0;
  }
};

// The content of a list that both write jobs take, and that programming takes as an image.
inline constexpr const char* kListText = "0xfffd,0x00,\n0x3012,0x5a,\n";

}  // namespace borvan_test
