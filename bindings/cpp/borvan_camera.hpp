#pragma once

// The Camera: the instance of the library and the camera that it has selected.

#include <borvan_usb.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "borvan_camera_instance.hpp"
#include "borvan_error.hpp"
#include "borvan_files.hpp"
#include "borvan_job.hpp"

#ifdef __has_include
#if __has_include(<version>)
#include <version>
#endif
#endif
#ifdef __cpp_lib_span
#include <span>
#endif

namespace borvan {

// Use one object at a time in a process, from the thread that made it. Each call X throws Error;
// TryX returns the Error in a Result. Every job has a time limit. After ErrorKind::kTimeLimit the
// job may still run, and all calls but List, Wait and Close are refused until Wait has seen its
// end. File names are in the ANSI code page; a job that writes a file writes raw bytes.
class Camera : public CameraInstance {
 public:
  // ---- Registers of the chip --------------------------------------------------------------------

  std::uint32_t ReadRegister(std::uint32_t address, Width width = Width::kByte) {
    return TryReadRegister(address, width).Get();
  }
  Result<std::uint32_t> TryReadRegister(std::uint32_t address, Width width = Width::kByte) {
    return Read(What("ReadRegister", address), [&](std::uint32_t* value) {
      return UsbRegisterRead(address, value, static_cast<std::uint8_t>(width));
    });
  }

  void WriteRegister(std::uint32_t address, std::uint32_t value, Width width = Width::kByte) {
    TryWriteRegister(address, value, width).Get();
  }
  Outcome TryWriteRegister(std::uint32_t address, std::uint32_t value, Width width = Width::kByte) {
    const std::string what = What("WriteRegister", address);
    if (width == Width::kByte && value > 0xFF) {
      return TooLarge(what, value, "0xff");
    }
    return Access(
        what, [&] { return UsbRegisterWrite(address, value, static_cast<std::uint8_t>(width)); });
  }

  // Reads 1 to 56 registers of 8 bits into a file, one byte for each.
  void ReadRegistersFile(const std::string& file, std::uint32_t first, std::uint32_t last,
                         Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryReadRegistersFile(file, first, last, limit, progress).Get();
  }
  Outcome TryReadRegistersFile(const std::string& file, std::uint32_t first, std::uint32_t last,
                               Milliseconds limit = kUsualTimeLimit,
                               const Progress& progress = {}) {
    detail::PendingJob job = FileJob("ReadRegistersFile", file, first, last);
    if (auto wrong = WrongRun(job, first, last)) {
      return *wrong;
    }
    return Run(std::move(job), limit, progress,
               [&] { return UsbRegisterReadFile(file.c_str(), first, last); });
  }

  // Writes the registers of a list file.
  void WriteRegisterList(const std::string& file, Milliseconds limit = kUsualTimeLimit,
                         const Progress& progress = {}) {
    TryWriteRegisterList(file, limit, progress).Get();
  }
  Outcome TryWriteRegisterList(const std::string& file, Milliseconds limit = kUsualTimeLimit,
                               const Progress& progress = {}) {
    detail::PendingJob job;
    job.what = "WriteRegisterList(" + file + ")";
    job.kind = kBorvanJobRegisterWrite;
    return Run(std::move(job), limit, progress, [&] { return UsbRegisterWriteFile(file.c_str()); });
  }

  // ---- Registers of devices on the I2C bus ------------------------------------------------------

  std::uint32_t ReadI2c(std::uint32_t slave, std::uint32_t address, I2cMode mode,
                        std::uint32_t option = 0) {
    return TryReadI2c(slave, address, mode, option).Get();
  }
  Result<std::uint32_t> TryReadI2c(std::uint32_t slave, std::uint32_t address, I2cMode mode,
                                   std::uint32_t option = 0) {
    const std::string what = What("ReadI2c", address);
    if (auto wrong = WrongI2c(what, slave, address, mode, option)) {
      return *wrong;
    }
    return Read(what, [&](std::uint32_t* value) {
      return UsbI2cRead(slave, address, value, static_cast<std::int32_t>(mode), option);
    });
  }

  void WriteI2c(std::uint32_t slave, std::uint32_t address, std::uint32_t value, I2cMode mode,
                std::uint32_t option = 0) {
    TryWriteI2c(slave, address, value, mode, option).Get();
  }
  Outcome TryWriteI2c(std::uint32_t slave, std::uint32_t address, std::uint32_t value, I2cMode mode,
                      std::uint32_t option = 0) {
    const std::string what = What("WriteI2c", address);
    if (auto wrong = WrongI2c(what, slave, address, mode, option)) {
      return *wrong;
    }
    static constexpr std::array<std::uint32_t, 6> kLargest = {0xFF, 0xFF,   0xFFFF,
                                                              0xFF, 0xFFFF, 0xFFFFFFFF};
    const std::uint32_t largest = kLargest[static_cast<std::size_t>(mode)];
    if (value > largest) {
      return TooLarge(what, value, Hex(largest));
    }
    return Access(what, [&] {
      return UsbI2cWrite(slave, address, value, static_cast<std::int32_t>(mode), option);
    });
  }

  // Reads 1 to 56 registers into a file, one byte for each: of wider values the low 8 bits.
  void ReadI2cFile(const std::string& file, std::uint32_t slave, I2cMode mode, std::uint32_t first,
                   std::uint32_t last, Milliseconds limit = kUsualTimeLimit,
                   const Progress& progress = {}) {
    TryReadI2cFile(file, slave, mode, first, last, limit, progress).Get();
  }
  Outcome TryReadI2cFile(const std::string& file, std::uint32_t slave, I2cMode mode,
                         std::uint32_t first, std::uint32_t last,
                         Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    detail::PendingJob job = FileJob("ReadI2cFile", file, first, last);
    if (auto wrong = WrongI2c(job.what, slave, last, mode, 0)) {
      return *wrong;
    }
    if (auto wrong = WrongRun(job, first, last)) {
      return *wrong;
    }
    return Run(std::move(job), limit, progress, [&] {
      return UsbI2CReadFile(first, last, file.c_str(), static_cast<std::int32_t>(slave),
                            static_cast<std::uint32_t>(mode));
    });
  }

  // Writes the registers of a list file, which names slave and width.
  void WriteI2cList(const std::string& file, std::uint32_t option = 0,
                    Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryWriteI2cList(file, option, limit, progress).Get();
  }
  Outcome TryWriteI2cList(const std::string& file, std::uint32_t option = 0,
                          Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    detail::PendingJob job;
    job.what = "WriteI2cList(" + file + ")";
    if (option > 0xF) {
      return NotAllowed(job.what, "option " + Hex(option), "0 to 0xf");
    }
    return Run(std::move(job), limit, progress,
               [&] { return UsbI2CWriteFile(file.c_str(), option); });
  }

  // ---- Flash -----------------------------------------------------------------------------------

  // Four bytes, the one at `address` in bits 24 to 31. The library gives 0 for a failure too, so a
  // 0 is confirmed by a dump of these bytes.
  std::uint32_t ReadFlashWord(std::uint32_t address) { return TryReadFlashWord(address).Get(); }
  Result<std::uint32_t> TryReadFlashWord(std::uint32_t address) {
    const std::string what = What("ReadFlashWord", address);
    std::uint32_t value = 0;
    const Outcome read = Access(what, [&] { return UsbFlashRead(address, &value); });
    if (!read) {
      return read.GetError();
    }
    if (value != 0) {
      return value;
    }
    const auto bytes = Dump(what, address, 4, std::chrono::seconds(10), {});
    if (!bytes) {
      return bytes.GetError();
    }
    for (const std::uint8_t byte : bytes.Get()) {
      value = value << 8 | byte;
    }
    return value;
  }

  // Clears bits in four bytes. Nothing is read back.
  void WriteFlashWord(std::uint32_t address, std::uint32_t value) {
    TryWriteFlashWord(address, value).Get();
  }
  Outcome TryWriteFlashWord(std::uint32_t address, std::uint32_t value) {
    return Access(What("WriteFlashWord", address), [&] { return UsbFlashWrite(address, value); });
  }

  // Erases 4096 bytes. The call does not wait for the flash.
  void EraseFlashSector(std::uint32_t address) { TryEraseFlashSector(address).Get(); }
  Outcome TryEraseFlashSector(std::uint32_t address) {
    const std::string what = What("EraseFlashSector", address);
    if (address % kBorvanFlashSectorSize != 0) {
      return NotAllowed(what, "address " + Hex(address), "a multiple of 4096");
    }
    return Access(what, [&] { return UsbFlashErase(address); });
  }

  // `count` bytes of flash, 1 or more. After a time limit the bytes are lost.
  std::vector<std::uint8_t> ReadFlash(std::uint32_t first, std::uint32_t count,
                                      Milliseconds limit = kUsualTimeLimit,
                                      const Progress& progress = {}) {
    return TryReadFlash(first, count, limit, progress).Get();
  }
  Result<std::vector<std::uint8_t>> TryReadFlash(std::uint32_t first, std::uint32_t count,
                                                 Milliseconds limit = kUsualTimeLimit,
                                                 const Progress& progress = {}) {
    return Dump(What("ReadFlash", first), first, count, limit, progress);
  }

  // Dumps the flash from `first` to `last`, included, into a file.
  void ReadFlashFile(const std::string& file, std::uint32_t first, std::uint32_t last,
                     Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryReadFlashFile(file, first, last, limit, progress).Get();
  }
  Outcome TryReadFlashFile(const std::string& file, std::uint32_t first, std::uint32_t last,
                           Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    return Run(FileJob("ReadFlashFile", file, first, last), limit, progress,
               [&] { return UsbFlashQuickReadFile(file.c_str(), first, last); });
  }

  // Erases and programs, without a backup and without reading back: ProgramFlash is the safe way.
  // The sectors of 4096 bytes count from `address`, and up to 59 bytes after the image become 0.
  void WriteFlashFile(const std::string& file, std::uint32_t address,
                      Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryWriteFlashFile(file, address, limit, progress).Get();
  }
  Outcome TryWriteFlashFile(const std::string& file, std::uint32_t address,
                            Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    detail::PendingJob job;
    job.what = "WriteFlashFile(" + file + ")";
    return Run(std::move(job), limit, progress,
               [&] { return UsbFlashWriteFile(file.c_str(), address); });
  }

  // As WriteFlashFile, of bytes in memory.
  Outcome TryWriteFlash(const std::uint8_t* bytes, std::size_t size, std::uint32_t address,
                        Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    const std::string what = What("WriteFlash", address);
    if (auto refused = Refused(what)) {
      return *refused;
    }
    const detail::TemporaryFile file;
    if (!detail::WriteFileBytes(file.Name(), bytes, size)) {
      return Error(ErrorKind::kStatus, what + ": the temporary file can't be written",
                   kBorvanFileError);
    }
    detail::PendingJob job;
    job.what = what;
    return Run(std::move(job), limit, progress,
               [&] { return UsbFlashWriteFile(file.Name().c_str(), address); });
  }
  void WriteFlash(const std::uint8_t* bytes, std::size_t size, std::uint32_t address,
                  Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryWriteFlash(bytes, size, address, limit, progress).Get();
  }
#ifdef __cpp_lib_span
  Outcome TryWriteFlash(std::span<const std::uint8_t> bytes, std::uint32_t address,
                        Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    return TryWriteFlash(bytes.data(), bytes.size(), address, limit, progress);
  }
  void WriteFlash(std::span<const std::uint8_t> bytes, std::uint32_t address,
                  Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryWriteFlash(bytes, address, limit, progress).Get();
  }
#endif

 private:
  static detail::PendingJob FileJob(const char* call, const std::string& file, std::uint32_t first,
                                    std::uint32_t last) {
    detail::PendingJob job;
    job.what = std::string(call) + "(" + file + ")";
    job.file = file;
    job.size = std::uint64_t{last} - first + 1;  // of no use when `last` is below `first`
    return job;
  }

  static std::optional<Error> WrongRun(const detail::PendingJob& job, std::uint32_t first,
                                       std::uint32_t last) {
    if (last < first) {
      return NotAllowed(job.what, "last " + Hex(last), Hex(first) + " or more");
    }
    if (job.size > kBorvanRegistersPerTransfer) {
      return Error(ErrorKind::kArgument, job.what + ": " + std::to_string(job.size) +
                                             " registers are not allowed: 1 to 56");
    }
    return std::nullopt;
  }

  static std::optional<Error> WrongI2c(const std::string& what, std::uint32_t slave,
                                       std::uint32_t address, I2cMode mode, std::uint32_t option) {
    const auto number = static_cast<std::int32_t>(mode);
    if (number < 0 || number > 5) {
      return NotAllowed(what, "mode " + std::to_string(number), "0 to 5");
    }
    if (slave > 0xFF) {
      return NotAllowed(what, "slave " + Hex(slave), "0 to 0xff");
    }
    if (option > 0xFF) {
      return NotAllowed(what, "option " + Hex(option), "0 to 0xff");
    }
    static constexpr std::array<std::uint32_t, 6> kLargest = {0xFF,       0xFFFF,     0xFFFF,
                                                              0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
    const std::uint32_t largest = kLargest[static_cast<std::size_t>(number)];
    if (address > largest) {
      return NotAllowed(what, "address " + Hex(address), "0 to " + Hex(largest));
    }
    return std::nullopt;
  }

  Result<std::vector<std::uint8_t>> Dump(const std::string& what, std::uint32_t first,
                                         std::uint32_t count, Milliseconds limit,
                                         const Progress& progress) {
    if (count == 0 || count - 1 > 0xFFFFFFFFU - first) {
      return NotAllowed(what, "count " + std::to_string(count),
                        "1 or more, up to the end of 32-bit addresses");
    }
    const detail::TemporaryFile file;
    detail::PendingJob job;
    job.what = what;
    job.file = file.Name();
    job.size = count;
    const Outcome outcome = Run(std::move(job), limit, progress, [&] {
      return UsbFlashQuickReadFile(file.Name().c_str(), first, first + (count - 1));
    });
    if (!outcome) {
      return outcome.GetError();
    }
    return detail::ReadFileBytes(file.Name(), count);
  }
};

}  // namespace borvan
