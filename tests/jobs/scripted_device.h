#pragma once

// A device object whose bulk operations do what a test says, and a host that records the reports.

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "device/borvan_usb_base.h"
#include "support/scripted_platform.h"
#include "support/temporary_folder.h"

namespace borvan_test {

// What a driver reports for a device that does not work.
inline constexpr auto kDriverFailure = static_cast<borvan::Result>(0x8007001F);

// Operations without a script answer 0.
class ScriptedDevice : public borvan::BorvanUSBBase {
 public:
  ScriptedDevice()
      : BorvanUSBBase(std::make_unique<ScriptedPlatform>(std::make_shared<PlatformScript>())) {}

  using Bytes = std::vector<std::uint8_t>;
  using List = std::vector<borvan::ListEntry>;
  using Progress = borvan::ProgressCallback;

  // To be set before a job starts.
  std::function<borvan::Result(Bytes, std::uint32_t, Progress)> flash_write;
  std::function<borvan::Result(Bytes&, std::uint32_t, std::uint32_t, Progress)> flash_read;
  std::function<borvan::Result(List, std::uint32_t, Progress)> register_write;
  std::function<borvan::Result(List&, std::uint32_t, std::uint32_t, Progress)> register_read;
  std::function<borvan::Result(List, std::uint32_t, Progress)> i2c_write;
  std::function<borvan::Result(List&, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t,
                               Progress)>
      i2c_read;

  // One script for all of them.
  void SetEveryOperation(const std::function<borvan::Result()>& act) {
    const auto operation = [act](auto&&...) { return act(); };
    flash_write = operation;
    flash_read = operation;
    register_write = operation;
    register_read = operation;
    i2c_write = operation;
    i2c_read = operation;
  }

  borvan::Result FlashWriteImage(Bytes image, std::uint32_t start, Progress progress) override {
    return flash_write ? flash_write(std::move(image), start, std::move(progress)) : 0;
  }
  borvan::Result FlashQuickReadImage(Bytes& output, std::uint32_t start, std::uint32_t end,
                                     Progress progress) override {
    return flash_read ? flash_read(output, start, end, std::move(progress)) : 0;
  }
  borvan::Result RegisterWriteList(List list, std::uint32_t ignored, Progress progress) override {
    return register_write ? register_write(std::move(list), ignored, std::move(progress)) : 0;
  }
  borvan::Result RegisterReadList(List& list, std::uint32_t start, std::uint32_t end,
                                  Progress progress) override {
    return register_read ? register_read(list, start, end, std::move(progress)) : 0;
  }
  borvan::Result I2cWriteList(List list, std::uint32_t option, Progress progress) override {
    return i2c_write ? i2c_write(std::move(list), option, std::move(progress)) : 0;
  }
  borvan::Result I2cReadList(List& list, std::uint32_t slave, std::uint32_t start,
                             std::uint32_t end, std::uint32_t mode, Progress progress) override {
    return i2c_read ? i2c_read(list, slave, start, end, mode, std::move(progress)) : 0;
  }
};

// One report, and how things stood when it was made.
struct Report {
  std::int32_t status = 0;
  std::int32_t percent = 0;
  std::thread::id thread;
  bool job_running = false;
  bool stop_requested = false;

  friend bool operator==(const Report& report, std::pair<std::uint32_t, std::int32_t> expected) {
    return static_cast<std::uint32_t>(report.status) == expected.first &&
           report.percent == expected.second;
  }
};

// Takes the reports of one job. The job is over when it has let go of the callback, which its
// record holds to the end of its thread.
class ReportRecorder {
 public:
  explicit ReportRecorder(std::shared_ptr<borvan::BorvanUSBBase> device)
      : device_(std::move(device)) {}

  // Called at each report, on the reporting thread; set it before the job starts.
  std::function<void(const Report&)> on_report;

  // A callback for one job.
  borvan::ProgressCallback Callback() {
    const auto token = std::make_shared<Token>(ended_);
    ++started_;
    return [this, token](std::int32_t status, std::int32_t percent) {
      const Report report{status, percent, std::this_thread::get_id(), device_->Jobs().job_running,
                          device_->Jobs().stop_requested};
      if (on_report) {
        on_report(report);
      }
      const std::lock_guard lock(mutex_);
      reports_.push_back(report);
    };
  }

  // True once every job that got a callback has freed its record.
  bool JobsEnded() {
    return WaitUntil([&] { return *ended_ == started_; });
  }

  std::vector<Report> Reports() const {
    const std::lock_guard lock(mutex_);
    return reports_;
  }

 private:
  using Counter = std::shared_ptr<std::atomic<std::size_t>>;

  // Counts its end. The counter orders what the job did before what the test does then.
  class Token {
   public:
    explicit Token(Counter ended) : ended_(std::move(ended)) {}
    Token(const Token&) = delete;
    Token& operator=(const Token&) = delete;
    ~Token() { ++*ended_; }

   private:
    const Counter ended_;
  };

  const std::shared_ptr<borvan::BorvanUSBBase> device_;
  mutable std::mutex mutex_;
  std::vector<Report> reports_;
  std::size_t started_ = 0;
  const Counter ended_ = std::make_shared<std::atomic<std::size_t>>(0);
};

// A door that a job waits at until the test opens it.
class Gate {
 public:
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  // Returns false when nobody opened the gate for ten seconds.
  bool Wait() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), [&] { return open_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool open_ = false;
};

// Jobs on a scripted device and on files.
class ReportedJobsTest : public testing::Test {
 protected:
  // Status and percentage of each report since the start; no job may run any more.
  void ExpectReports(const std::vector<std::pair<std::uint32_t, std::int32_t>>& expected) {
    ASSERT_TRUE(recorder.JobsEnded());
    const auto reports = recorder.Reports();
    ASSERT_EQ(reports.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ(reports.at(i), expected.at(i))
          << i << ": " << reports.at(i).status << ", " << reports.at(i).percent;
    }
    EXPECT_FALSE(device->Jobs().job_running);
    EXPECT_FALSE(device->Jobs().stop_requested);
  }

 public:
  const TemporaryFolder folder;
  const std::shared_ptr<ScriptedDevice> device = std::make_shared<ScriptedDevice>();
  ReportRecorder recorder{device};
};

}  // namespace borvan_test
