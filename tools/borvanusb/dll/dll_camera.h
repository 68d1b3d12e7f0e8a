#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/agreement.h"
#include "base/numbers.h"
#include "camera/camera.h"
#include "dll/camera_library.h"
#include "dll/job.h"

namespace borvanusb {

// The hint after a failure that the camera may get over.
inline constexpr const char* kAgain = "Plug the camera in again and repeat the command.";

// Implements Camera with the exports of the library.
class DllCamera : public Camera {
 public:
  // The camera must be selected in the library.
  DllCamera(CameraLibrary& library, CameraIdentity identity)
      : library_(library), identity_(std::move(identity)) {}

  const CameraIdentity& Identity() const override { return identity_; }
  std::uint64_t Disagreements() const override { return disagreements_; }
  std::uint32_t ReadRegister(std::uint32_t address, RegisterWidth width) override;
  std::uint32_t SampleRegister(std::uint32_t address, RegisterWidth width) override;
  void WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) override;
  std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t first, std::uint32_t last) override;
  void WriteRegisterList(const std::string& list_text) override;
  std::uint32_t ReadI2c(const I2cTarget& target, std::uint32_t address) override;
  std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) override;
  std::vector<std::uint32_t> ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                        std::uint32_t last) override;
  void WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) override;
  void WriteI2cList(const std::string& list_text, std::uint32_t option) override;
  std::vector<std::uint8_t> ReadFlash(std::uint32_t address, std::uint64_t size,
                                      const Advance& advance) override;
  std::uint32_t PeekFlashWord(std::uint32_t address) override;
  void ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    const Advance& advance) override;
  void WriteFlashWord(std::uint32_t address, std::uint32_t value) override;
  void EraseSector(std::uint32_t address) override;

  // Reads the features of the chip. Must be called before any other access. Throws like
  // ReadRegister.
  void LearnFeatures();

 private:
  // Locks and selects the camera. No other borvanusb process can access it until the result is
  // destroyed. Throws Failure: kRefused if another process has the camera, kTimeout like
  // CameraLibrary::CheckIdle, kDevice if the camera can no longer be opened.
  std::unique_ptr<LibraryPlatform::CameraLock> Lock() const;
  // Runs a job. Throws Failure if it fails, with `what` in the message: "reading flash 0x1000".
  JobEnd Finish(const std::string& what, const Job& job) const;
  [[noreturn]] void JobFailed(const std::string& what, std::uint32_t status) const;
  // Throws the failure of a single access, which has no status code.
  [[noreturn]] void Refused(const std::string& what) const;
  [[noreturn]] static void OutcomeUnknown(const std::string& what);
  // Runs a job that writes a file of `size` bytes, and returns the bytes. `start` calls the export
  // with the name of the file.
  using StartWithFile = std::function<bool(const Exports&, const char*)>;
  std::vector<std::uint8_t> Dump(const std::string& what, std::uint64_t size, Job job,
                                 const StartWithFile& start) const;
  std::vector<std::uint8_t> ReadFlashByJob(std::uint32_t address, std::uint64_t size,
                                           const Advance& advance) const;
  std::vector<std::uint8_t> ReadFlashOnce(std::uint32_t address, std::uint64_t size,
                                          std::uint32_t shift, bool ends_range,
                                          const Advance& advance) const;
  std::vector<std::uint8_t> ReadFlashPart(std::uint32_t address, std::uint64_t size,
                                          bool ends_range, const Advance& advance);
  // Like ReadUntilTwoAgree. Also counts the additional readings.
  template <typename Read>
  auto ReadTwice(Read read) {
    const auto value = ReadUntilTwoAgree(read);
    disagreements_ += static_cast<std::uint64_t>(value.more);
    return value;
  }
  std::uint32_t ReadRegisterOnce(std::uint32_t address, RegisterWidth width) const;
  std::uint32_t ReadRegisterUnlocked(std::uint32_t address, RegisterWidth width);
  std::uint32_t ReadI2cOnce(const I2cTarget& target, std::uint32_t address) const;
  std::uint32_t ReadI2cUnlocked(const I2cTarget& target, std::uint32_t address);
  bool CanReadI2cInBlocks(const I2cTarget& target, std::uint64_t registers) const;
  // Reads consecutive I2C registers once, by one job.
  std::vector<std::uint8_t> ReadI2cRunOnce(const I2cTarget& target, const Range& run) const;
  std::vector<std::uint32_t> ReadI2cInBlocks(const I2cTarget& target, const Range& run);
  // Reads consecutive registers once. The library detects a failed read only for the last block of
  // 56 registers.
  std::vector<std::uint8_t> ReadRunOnce(std::uint32_t first, std::uint32_t last) const;
  // Returns the values of a block for which the two readings `one` and `other` differ.
  std::vector<std::uint8_t> DecideBlock(std::uint32_t first, std::span<const std::uint8_t> one,
                                        std::span<const std::uint8_t> other);
  // Writes `bytes` to a file and runs a job that reads the file.
  JobEnd SendFile(const std::string& what, std::span<const std::uint8_t> bytes,
                  std::string_view extension, Job job, const StartWithFile& start) const;
  std::uint8_t LastByte(std::uint32_t address, std::span<const std::uint8_t> before) const;

  CameraLibrary& library_;
  const CameraIdentity identity_;
  std::uint64_t disagreements_ = 0;
  bool has_fast_i2c_ = false;
};

}  // namespace borvanusb
