#include "support/fake_camera.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/agreement.h"
#include "base/failure.h"

namespace borvanusb::tool_test {
namespace {

constexpr std::uint64_t kReadPacket = 64;
constexpr std::uint64_t kWritePacket = 60;
constexpr std::uint32_t kWide = 0xFFFFFFFF;
constexpr std::uint32_t kByte = 0xFF;

class FakeReservation : public Host::Reservation {};

class FakeStopHold : public Host::StopHold {
 public:
  explicit FakeStopHold(int& holds) : holds_(holds) { ++holds_; }
  ~FakeStopHold() override { --holds_; }
  FakeStopHold(const FakeStopHold&) = delete;
  FakeStopHold& operator=(const FakeStopHold&) = delete;

 private:
  int& holds_;
};

class FakeCamera : public Camera {
 public:
  FakeCamera(FakeHost& host, std::shared_ptr<FakeChip> chip)
      : host_(host), chip_(std::move(chip)) {}

  const CameraIdentity& Identity() const override { return chip_->identity; }

  std::uint32_t ReadRegister(std::uint32_t address, RegisterWidth width) override {
    Transfer();
    const bool wide = width == RegisterWidth::kWide;
    return Given(wide ? FakeRead::kWideRegister : FakeRead::kByteRegister, address,
                 chip_->registers[address] & (wide ? kWide : kByte));
  }
  std::uint32_t SampleRegister(std::uint32_t address, RegisterWidth width) override {
    return ReadRegister(address, width);
  }
  void WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) override {
    Transfer();
    chip_->registers[address] = value & (width == RegisterWidth::kWide ? kWide : kByte);
  }
  std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t first, std::uint32_t last) override {
    Transfer();
    std::vector<std::uint8_t> values;
    for (std::uint64_t address = first; address <= last; ++address) {
      const auto number = static_cast<std::uint32_t>(address);
      values.push_back(static_cast<std::uint8_t>(
          Given(FakeRead::kRegisterRun, number, chip_->registers[number])));
    }
    return values;
  }
  void WriteRegisterList(const std::string& list_text) override {
    Transfer();
    chip_->register_lists.push_back(list_text);
  }

  std::uint32_t ReadI2c(const I2cTarget& target, std::uint32_t address) override {
    Transfer();
    const auto sensor = chip_->sensors.find(target.slave);
    const auto modes = chip_->sensor_modes.find(target.slave);
    const bool other_mode =
        modes != chip_->sensor_modes.end() && !modes->second.contains(target.mode);
    if (sensor == chip_->sensors.end() || other_mode) {
      throw Failure(ExitCode::kDevice, "nothing answers");
    }
    return Given(FakeRead::kI2c, address, sensor->second[address]);
  }
  std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) override {
    return ReadI2c(target, address);
  }
  std::vector<std::uint32_t> ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                        std::uint32_t last) override {
    std::vector<std::uint32_t> values;
    for (std::uint64_t address = first; address <= last; ++address) {
      values.push_back(ReadI2c(target, static_cast<std::uint32_t>(address)));
    }
    return values;
  }
  void WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) override {
    Transfer();
    chip_->sensors[target.slave][address] = value;
  }
  void WriteI2cList(const std::string& list_text, std::uint32_t /*option*/) override {
    Transfer();
    chip_->i2c_lists.push_back(list_text);
  }

  std::vector<std::uint8_t> ReadFlash(std::uint32_t address, std::uint64_t size,
                                      const Advance& advance) override {
    std::vector<std::uint8_t> bytes;
    for (std::uint64_t offset = 0; offset < size; offset += kReadPacket) {
      Transfer();
      const std::uint64_t end = std::min(size, offset + kReadPacket);
      for (std::uint64_t i = offset; i < end; ++i) {
        bytes.push_back(static_cast<std::uint8_t>(Given(
            FakeRead::kFlashBulk, static_cast<std::uint32_t>(address + i), Byte(address + i))));
      }
      chip_->read_bytes += end - offset;
      Report(advance, end);
    }
    return bytes;
  }
  std::uint32_t PeekFlashWord(std::uint32_t address) override {
    Transfer();
    std::uint32_t word = 0;
    const bool answers = chip_->wraps || std::uint64_t{address} + 4 <= chip_->flash.size();
    for (std::uint32_t i = 0; i < 4 && answers; ++i) {
      word = word << 8U | Byte(std::uint64_t{address} + i);
    }
    return ReadUntilTwoAgree([&] { return Given(FakeRead::kFlashWord, address, word); }).value;
  }
  void ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    const Advance& advance) override {
    for (std::uint64_t offset = 0; offset < bytes.size(); offset += kSectorSize) {
      Erase(static_cast<std::uint32_t>(address + offset));
    }
    for (std::uint64_t offset = 0; offset < bytes.size(); offset += kWritePacket) {
      std::vector<std::uint8_t> packet(kWritePacket, 0);
      const auto part =
          bytes.subspan(offset, std::min<std::uint64_t>(kWritePacket, bytes.size() - offset));
      std::copy(part.begin(), part.end(), packet.begin());
      const bool blank =
          std::all_of(packet.begin(), packet.end(), [](std::uint8_t byte) { return byte == 0xFF; });
      if (!blank) {
        Transfer();
        ++chip_->programmed_packets;
        Program(static_cast<std::uint32_t>(address + offset), packet);
      }
      Report(advance, std::min<std::uint64_t>(offset + kWritePacket, bytes.size()));
    }
  }
  void WriteFlashWord(std::uint32_t address, std::uint32_t value) override {
    Transfer();
    std::vector<std::uint8_t> bytes;
    for (unsigned shift = 32; shift > 0; shift -= 8) {
      bytes.push_back(static_cast<std::uint8_t>(value >> (shift - 8)));
    }
    Program(address, bytes);
  }
  void EraseSector(std::uint32_t address) override { Erase(address); }

 private:
  std::uint8_t& Byte(std::uint64_t address) {
    if (!chip_->wraps && address >= chip_->flash.size()) {
      throw Failure(ExitCode::kTimeout, "reading the flash does not move on");
    }
    return chip_->flash[address % chip_->flash.size()];
  }
  std::uint32_t Given(FakeRead read, std::uint32_t address, std::uint32_t value) const {
    if (chip_->after_read) {
      chip_->after_read(read, address, value);
    }
    return value;
  }
  void Transfer() {
    if (host_.stop_requested && host_.stop_holds == 0) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
    ++chip_->transfers;
    if (chip_->before_transfer) {
      chip_->before_transfer(chip_->transfers);
    }
  }
  static void Report(const Advance& advance, std::uint64_t done) {
    if (advance) {
      advance(done);
    }
  }
  void Erase(std::uint32_t address) {
    Transfer();
    ++chip_->erases;
    const std::uint32_t sector = address / kSectorSize * kSectorSize;
    chip_->erased_sectors.push_back(sector);
    for (std::uint32_t i = 0; i < kSectorSize; ++i) {
      Byte(std::uint64_t{sector} + i) = 0xFF;
    }
  }
  void Program(std::uint32_t address, std::span<const std::uint8_t> bytes) {
    std::vector<std::uint8_t> result;
    for (std::uint64_t i = 0; i < bytes.size(); ++i) {
      result.push_back(static_cast<std::uint8_t>(Byte(address + i) & bytes[i]));
    }
    if (chip_->after_programming) {
      chip_->after_programming(address, result);
    }
    for (std::uint64_t i = 0; i < bytes.size(); ++i) {
      Byte(address + i) = result[i];
    }
  }

  FakeHost& host_;
  std::shared_ptr<FakeChip> chip_;
};

}  // namespace

void FakeProgress::Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) {
  bars.push_back({std::string(stage), total, 0, false, {std::string(stage)}, unit});
  open_ = true;
}

void FakeProgress::Stage(std::string_view stage) {
  ASSERT_TRUE(open_);
  bars.back().stages.emplace_back(stage);
}

void FakeProgress::Advance(std::uint64_t done) {
  ASSERT_TRUE(open_);
  EXPECT_GE(done, bars.back().done) << bars.back().stage;
  EXPECT_LE(done, bars.back().total) << bars.back().stage;
  bars.back().done = done;
}

void FakeProgress::Done() {
  if (open_) {
    bars.back().complete = true;
  }
  open_ = false;
}

void FakeProgress::Break() {
  open_ = false;
}

FakeHost::FakeHost(std::vector<std::shared_ptr<FakeChip>> the_chips)
    : chips(std::move(the_chips)) {}

std::vector<CameraIdentity> FakeHost::ListCameras() {
  if (list_failure) {
    throw Failure(*list_failure);
  }
  std::vector<CameraIdentity> cameras;
  for (const auto& chip : chips) {
    cameras.push_back(chip->identity);
    cameras.back().index = static_cast<std::int32_t>(cameras.size()) - 1;
  }
  return cameras;
}

std::unique_ptr<Camera> FakeHost::OpenCamera(const CameraIdentity& camera) {
  return UntilItWorks([&]() -> std::unique_ptr<Camera> {
    if (before_open) {
      before_open(camera);
    }
    for (const auto& chip : chips) {
      if (chip->identity.path == camera.path) {
        return std::make_unique<FakeCamera>(*this, chip);
      }
    }
    throw Failure(ExitCode::kNoCamera, "the camera is gone");
  });
}

std::unique_ptr<Host::Reservation> FakeHost::ReserveCamera(const CameraIdentity& /*camera*/) {
  return UntilItWorks([&]() -> std::unique_ptr<Reservation> {
    if (reserved_elsewhere) {
      throw Failure(ExitCode::kRefused, "another borvanusb is working with this camera");
    }
    return std::make_unique<FakeReservation>();
  });
}

std::unique_ptr<Host::StopHold> FakeHost::HoldStop() {
  return std::make_unique<FakeStopHold>(stop_holds);
}

void FakeHost::SetLastWords(std::function<std::vector<std::string>()> words) {
  last_words = std::move(words);
}

void FakeHost::Sleep(std::chrono::milliseconds time) {
  clock += time;
  if (on_sleep) {
    on_sleep();
  }
}

std::chrono::system_clock::time_point FakeHost::Now() const {
  // 2026-01-02 03:04:05 UTC.
  return std::chrono::system_clock::from_time_t(1767323045);
}

bool FakeHost::Ask(const std::string& question) {
  questions.push_back(question);
  return answer;
}

std::string FakeHost::Environment(const std::string& name) const {
  const auto variable = environment.find(name);
  return variable == environment.end() ? "" : variable->second;
}

std::vector<int> FakeHost::RunChildren(
    const std::vector<std::vector<std::string>>& arguments,
    const std::function<void(std::size_t, bool, const std::string&)>& on_line) {
  std::vector<int> codes;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    codes.push_back(child(arguments[i], [&](bool from_error, const std::string& line) {
      on_line(i, from_error, line);
    }));
  }
  return codes;
}

}  // namespace borvanusb::tool_test
