#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "base/flash_memory.h"

namespace borvanusb {

// A camera in the list of the system.
struct CameraIdentity {
  std::int32_t index = 0;  // position in the list
  std::string path;        // device path, lower case, UTF-8
  std::string name;        // friendly name, UTF-8
  std::string vid;         // four upper-case hexadecimal digits
  std::string pid;         // four upper-case hexadecimal digits
};

// The register with the fast paths that the firmware of the chip supports. Every chip has it.
constexpr std::uint32_t kFeatureRegister = 0x1A3;
constexpr std::uint32_t kFeatureFastI2c = 0x20;

enum class RegisterWidth { kByte, kWide };

constexpr std::uint32_t kHighestSlave = 0xFF;

// A device on the camera's I2C bus, and how to access it.
struct I2cTarget {
  std::uint32_t slave = 0;   // sent to the chip unchanged, not shifted; 0 to 255
  std::int32_t mode = 0;     // width mode, 0 to 5
  std::uint32_t option = 0;  // sent to the chip unchanged
};

// Receives the progress of a bulk operation: the number of bytes (or registers) done. The number
// never decreases and never exceeds the total.
using Advance = std::function<void(std::uint64_t done)>;

// An open camera. Bulk operations run as background jobs of the library, which exchange their data
// through temporary files.
//
// Every function throws Failure:
//   kDevice   the camera refuses an access or was removed, or no two readings agree
//   kTimeout  there is no progress, or an abandoned job may still be running in the camera; in the
//             second case the function makes no access
//   kStopped  the user asked to stop
//   kFile     the data exchange with the library through a file fails
//
// A read function reads at least twice, by separate accesses, and returns a value that two readings
// agree on. A single failed transfer therefore can't produce a wrong value. Only the two Sample
// functions read once. A write function writes once and does not verify; callers check a write by
// reading back.
class Camera {
 public:
  Camera() = default;
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  virtual ~Camera() = default;

  virtual const CameraIdentity& Identity() const = 0;

  // The number of times so far that readings differed and another one was necessary.
  virtual std::uint64_t Disagreements() const { return 0; }

  // Reads a register of the chip. Throws if the chip does not answer. If the value changes with
  // every reading, the function returns the last of five readings. For a register that is cleared
  // by reading, it returns the cleared value; use SampleRegister for such a register.
  virtual std::uint32_t ReadRegister(std::uint32_t address, RegisterWidth width) = 0;
  // Reads a register once, without confirmation. For registers whose value changes when they are
  // read.
  virtual std::uint32_t SampleRegister(std::uint32_t address, RegisterWidth width) = 0;
  virtual void WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) = 0;
  // Reads consecutive 8-bit registers by jobs, which is much faster than single reads. Requires
  // addresses with the same high 16 bits. Registers whose readings differ are read one by one, as
  // by ReadRegister.
  virtual std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t first, std::uint32_t last) = 0;
  // Writes a register list by a job. `list_text` has the format of a list file.
  virtual void WriteRegisterList(const std::string& list_text) = 0;

  // Reads a register of a device on the I2C bus. If the value changes with every reading, the
  // function returns the last reading.
  virtual std::uint32_t ReadI2c(const I2cTarget& target, std::uint32_t address) = 0;
  // Reads a register once, without confirmation.
  virtual std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) = 0;
  // Reads consecutive registers. Reads in blocks if the chip has the fast path and the values are
  // 8-bit; otherwise one by one.
  virtual std::vector<std::uint32_t> ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                                std::uint32_t last) = 0;
  virtual void WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) = 0;
  // Writes an I2C list by a job. `list_text` has the format of a list file.
  virtual void WriteI2cList(const std::string& list_text, std::uint32_t option) = 0;

  // Reads flash by jobs, because a job reports a failed read and a single access does not. It may
  // also read up to 48 bytes before `address`.
  virtual std::vector<std::uint8_t> ReadFlash(std::uint32_t address, std::uint64_t size,
                                              const Advance& advance) = 0;
  // Reads four bytes by single accesses. The byte at `address` is in bits 24 to 31. A failed single
  // access reads as 0, so the function also returns 0 if two reads failed. Use it only where a
  // failed read must return at once and not after the time limit.
  virtual std::uint32_t PeekFlashWord(std::uint32_t address) = 0;
  // Erases all sectors that the bytes at `address` overlap, and programs the bytes, by one job. The
  // job writes packets of 60 bytes and pads the last one with zeros: if the size is not a multiple
  // of 60, it writes up to 59 more bytes. Progress stays at 0 during the erase.
  virtual void ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                            const Advance& advance) = 0;
  virtual void WriteFlashWord(std::uint32_t address, std::uint32_t value) = 0;
  // Erases the sector of 4096 bytes at `address`.
  virtual void EraseSector(std::uint32_t address) = 0;
};

}  // namespace borvanusb
