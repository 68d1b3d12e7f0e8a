#pragma once

// A camera in memory and a host for it, for tests of the commands, without library and system.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/failure.h"
#include "camera/camera.h"
#include "camera/host.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb::tool_test {

// The ways to read from a camera.
enum class FakeRead { kByteRegister, kWideRegister, kRegisterRun, kI2c, kFlashBulk, kFlashWord };

// The state of a camera that is kept between openings.
struct FakeChip {
  CameraIdentity identity{0, R"(\\?\usb#vid_1234&pid_0001#a)", "Fake camera", "1234", "0001"};
  std::vector<std::uint8_t> flash = std::vector<std::uint8_t>(1U << 16U, 0xFF);
  bool wraps = true;  // addresses wrap at the flash's end; otherwise words there are read as 0
  std::map<std::uint32_t, std::uint32_t> registers;
  // By slave and register.
  std::map<std::uint32_t, std::map<std::uint32_t, std::uint32_t>> sensors;
  // The width modes in which a sensor answers. A sensor that is not listed answers in all.
  std::map<std::uint32_t, std::set<std::int32_t>> sensor_modes;
  std::vector<std::string> register_lists;  // loaded texts
  std::vector<std::string> i2c_lists;

  // Called before each transfer (reading a flash packet of 64 bytes or writing one of 60, a word,
  // an erase, a register access). The number counts from 1 over all openings. May throw Failure to
  // make the transfer fail.
  std::function<void(std::uint64_t number)> before_transfer;
  // Changes the bytes that a programming transfer writes, to simulate a chip with errors or stuck
  // bits.
  std::function<void(std::uint32_t address, std::span<std::uint8_t> bytes)> after_programming;
  // Changes a value that was read: of a register, a byte of a bulk read or a flash word. May throw
  // Failure. Simulates a chip with errors.
  std::function<void(FakeRead read, std::uint32_t address, std::uint32_t& value)> after_read;
  std::uint64_t transfers = 0;
  std::uint64_t erases = 0;
  std::uint64_t programmed_packets = 0;
  std::uint64_t read_bytes = 0;
  std::vector<std::uint32_t> erased_sectors;
};

// Captures all output; and a host with the given chips as its cameras.
class FakeOutput : public Output {
 public:
  void Line(std::string_view text) override { out += std::string(text) + "\n"; }
  void Bytes(std::string_view bytes) override { out += bytes; }
  bool OutputIsTerminal() const override { return output_is_terminal; }
  void JsonLine(std::string_view json) override { json_lines.emplace_back(json); }
  void Note(std::string_view text) override { notes += std::string(text) + "\n"; }
  void Detail(std::string_view text) override { details += std::string(text) + "\n"; }
  void Error(std::string_view text) override { errors += std::string(text) + "\n"; }
  bool TakesResults() const override { return takes_results; }
  int ErrorColumns() const override { return columns; }
  void MoveUp(int lines) override { notes += "up " + std::to_string(lines) + "\n"; }

  bool output_is_terminal = false;
  bool takes_results = true;  // false: writing to standard output fails
  int columns = 0;            // of the terminal; 0: none
  std::string out;
  std::vector<std::string> json_lines;
  std::string notes;
  std::string details;
  std::string errors;
};

// Records each stage with the units done at its end. Fails the test if a stage runs backwards or
// beyond its total.
class FakeProgress : public Progress {
 public:
  struct Bar {
    std::string stage;
    std::uint64_t total = 0;
    std::uint64_t done = 0;
    bool complete = false;
    std::vector<std::string> stages;  // with new names
    ProgressUnit unit = ProgressUnit::kBytes;
  };
  using Progress::Begin;
  void Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) override;
  void Stage(std::string_view stage) override;
  void Advance(std::uint64_t done) override;
  void Done() override;
  void Break() override;

  std::vector<Bar> bars;

 private:
  bool open_ = false;
};

class FakeHost : public Host {
 public:
  explicit FakeHost(std::vector<std::shared_ptr<FakeChip>> chips = {std::make_shared<FakeChip>()});

  void Configure(const CommonArguments& /*arguments*/) override {}
  std::vector<CameraIdentity> ListCameras() override;
  std::unique_ptr<Camera> OpenCamera(const CameraIdentity& camera) override;
  std::unique_ptr<Reservation> ReserveCamera(const CameraIdentity& camera) override;
  bool IsReservedElsewhere(const std::string& path) override {
    return busy_elsewhere.contains(path);
  }
  std::string JournalFolder() const override { return journal_folder; }
  bool StopRequested() const override { return stop_requested; }
  std::unique_ptr<StopHold> HoldStop() override;
  void SetLastWords(std::function<std::vector<std::string>()> words) override;
  void Sleep(std::chrono::milliseconds time) override;
  std::chrono::system_clock::time_point Now() const override;
  std::chrono::steady_clock::time_point Clock() const override { return clock; }
  bool Ask(const std::string& question) override;
  std::string ReadStandardInput() override { return input; }
  std::string Environment(const std::string& name) const override;
  SystemReport ExamineSystem() override { return system_report; }
  std::string LibraryVersion() override { return library_version; }
  Terminal* Prompt() override { return terminal; }
  void ForgetStop() override { stop_requested = false; }
  std::vector<std::string> Details() const override { return details; }
  std::vector<int> RunChildren(
      const std::vector<std::vector<std::string>>& arguments,
      const std::function<void(std::size_t, bool, const std::string&)>& on_line) override;

  FakeChip& Chip(std::size_t index = 0) { return *chips.at(index); }

  std::vector<std::shared_ptr<FakeChip>> chips;
  bool stop_requested = false;
  int stop_holds = 0;
  bool answer = false;                 // to all questions
  std::vector<std::string> questions;  // that were asked
  std::string input;                   // content of standard input
  bool reserved_elsewhere = false;
  std::set<std::string> busy_elsewhere;  // paths of cameras used by other processes
  std::string journal_folder;            // set by tests of flash changes
  std::function<void(const CameraIdentity&)> before_open;  // may throw Failure
  std::optional<Failure> list_failure;                     // thrown when listing the cameras
  std::function<void()> on_sleep;                          // simulates events during a sleep
  std::function<std::vector<std::string>()> last_words;
  std::map<std::string, std::string> environment;
  std::chrono::steady_clock::time_point clock;
  SystemReport system_report;
  std::string library_version = "0.2.0";
  Terminal* terminal = nullptr;
  std::vector<std::string> details;
  // Simulates a child of RunChildren. Gets its arguments and a function that receives its lines.
  std::function<int(const std::vector<std::string>&,
                    const std::function<void(bool, const std::string&)>&)>
      child;
};

}  // namespace borvanusb::tool_test
