#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace borvanusb {

// One camera as the system lists it.
struct CameraIdentity {
  std::int32_t index = 0;  // place in the list
  std::string path;        // device path, lower case, UTF-8
  std::string name;        // friendly name, UTF-8
  std::string vid;         // four upper-case hexadecimal digits
  std::string pid;         // likewise
};

// The register that tells which fast paths the chip's firmware has; every chip has it.
constexpr std::uint32_t kFeatureRegister = 0x1A3;
constexpr std::uint32_t kFeatureFastI2c = 0x20;

enum class RegisterWidth { kByte, kWide };

// A device on the camera's I2C bus and how it is spoken to.
struct I2cTarget {
  std::uint32_t slave = 0;   // as the chip takes it: 0 to 255, nothing shifted
  std::int32_t mode = 0;     // width mode, 0 to 5
  std::uint32_t option = 0;  // handed to the chip as it is
};

// Told while a bulk operation goes on: bytes (or registers) done, never less than before, never
// more than the whole.
using Advance = std::function<void(std::uint64_t done)>;

constexpr std::uint32_t kSectorSize = 4096;

// An open camera. Every function throws Failure: kDevice when the camera refuses, is gone or gives
// no two readings that agree, kTimeout when there is no progress, or when a job that was given up
// may still be running (then no further access is made), kStopped when the user asked to stop,
// kFile when the exchange with the library through files fails.
//
// What is read is read at least twice, by separate accesses, and returned when two readings agree:
// no single transfer that goes wrong makes a value wrong; only the two functions that sample read
// once. Writes are made once; whether they
// arrived is seen by reading back.
class Camera {
 public:
  Camera() = default;
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;
  virtual ~Camera() = default;

  virtual const CameraIdentity& Identity() const = 0;

  // How often two readings have differed so far, and another had to be made.
  virtual std::uint64_t Disagreements() const { return 0; }

  // Chip registers. A read that the chip left unanswered is a failure, not a value. A value that
  // changes between readings is returned as last read, after five of them; a register that reading
  // clears is returned cleared.
  virtual std::uint32_t ReadRegister(std::uint32_t address, RegisterWidth width) = 0;
  // One reading, which nothing confirms, of a register that reading changes.
  virtual std::uint32_t SampleRegister(std::uint32_t address, RegisterWidth width) = 0;
  virtual void WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) = 0;
  // A run of 8-bit registers of one page (the same high 16 bits), by jobs; much faster than one by
  // one. Values that change between readings are read one by one, as above.
  virtual std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t first, std::uint32_t last) = 0;
  // Writes a register list, by a job. The text is that of a list file.
  virtual void WriteRegisterList(const std::string& list_text) = 0;

  // Registers of devices on the I2C bus. A value that changes between readings is returned as last
  // read.
  virtual std::uint32_t ReadI2c(const I2cTarget& target, std::uint32_t address) = 0;
  // One reading, as SampleRegister.
  virtual std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) = 0;
  // A run of registers, in blocks where the chip has the fast path and values are 8-bit; otherwise
  // one by one.
  virtual std::vector<std::uint32_t> ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                                std::uint32_t last) = 0;
  virtual void WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) = 0;
  // Writes an I2C list, by a job. The text is that of a list file.
  virtual void WriteI2cList(const std::string& list_text, std::uint32_t option) = 0;

  // Flash. Reads go through jobs, so a failing read is a failure and never rubbish. Up to 48 bytes
  // before `address` may be read, too.
  virtual std::vector<std::uint8_t> ReadFlash(std::uint32_t address, std::uint64_t size,
                                              const Advance& advance) = 0;
  // Four bytes by single accesses, the one at `address` in bits 24 to 31. 0 also when two reads
  // failed: only for looking where a failure must not cost a time limit.
  virtual std::uint32_t PeekFlashWord(std::uint32_t address) = 0;
  // Erases every sector that the bytes reach into, from `address` on, and programs them, by one
  // job. The last packet of 60 is filled up with zeros: a size that is no multiple of 60 writes up
  // to 59 bytes more. Reports 0 while it erases.
  virtual void ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                            const Advance& advance) = 0;
  virtual void WriteFlashWord(std::uint32_t address, std::uint32_t value) = 0;
  // The sector of 4096 bytes at `address`.
  virtual void EraseSector(std::uint32_t address) = 0;
};

}  // namespace borvanusb
