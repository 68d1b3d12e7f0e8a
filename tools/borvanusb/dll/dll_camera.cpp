// Registers, lists and single flash accesses. The other parts of DllCamera are in
// dll_camera_flash.cpp and dll_camera_i2c.cpp.
#include "dll/dll_camera.h"

#include <algorithm>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "camera/host.h"
#include "camera/register_readings.h"

namespace borvanusb {

namespace {

// Initial value of the variable for a read. It is above every 8-bit and 16-bit value: if the
// variable keeps it, the chip did not answer.
constexpr std::uint32_t kImpossible = 0xFFFFFFFF;
constexpr std::uint32_t kOtherStart = 0x5A5AA5A5;
constexpr std::uint32_t kBadListHead = 11;
// The maximum time without progress per line of a list. A pause entry takes up to 255 ms, and every
// entry takes a few transfers.
constexpr std::chrono::milliseconds kSilencePerLine{260};
constexpr std::chrono::milliseconds kLockLimit{2000};

std::span<const std::uint8_t> BytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

std::chrono::milliseconds SilenceOf(const std::string& list_text) {
  return kSilencePerLine * (1 + std::count(list_text.begin(), list_text.end(), '\n'));
}

}  // namespace

std::unique_ptr<LibraryPlatform::CameraLock> DllCamera::Lock() const {
  auto lock = library_.Platform().LockCamera(identity_.path, kLockLimit);
  if (lock == nullptr) {
    throw Failure(
        ExitCode::kRefused,
        Format("another borvanusb is working with camera {}: {}", identity_.name, identity_.path),
        "Wait until it has ended.");
  }
  library_.CheckIdle();
  try {
    library_.SelectOnce(identity_);
  } catch (const Failure& failure) {
    if (failure.Code() != ExitCode::kNoCamera && failure.Code() != ExitCode::kRefused) {
      throw;
    }
    throw Failure(ExitCode::kDevice, failure.Message(), kAgain);
  }
  return lock;
}

void DllCamera::Refused(const std::string& what) const {
  if (!library_.IsListed(identity_)) {
    throw GoneFailure(what, identity_);
  }
  throw Failure(
      ExitCode::kDevice,
      Format("{}: the camera refused a transfer (single accesses give no status code)", what),
      kAgain);
}

JobEnd DllCamera::Finish(const std::string& what, const Job& job) const {
  const JobEnd end = RunJob(library_, identity_, job);
  if (end.outcome == JobEnd::Outcome::kFailed) {
    JobFailed(what, end.status);
  }
  return end;
}

void DllCamera::JobFailed(const std::string& what, std::uint32_t status) const {
  if (status == kBorvanFileError) {
    throw Failure(
        ExitCode::kFile, Format("{}: {}", what, library_.StatusText(status)),
        "A temporary file could not be used: is there room in the folder that TEMP names?");
  }
  library_.Deselect();
  if (!library_.IsListed(identity_)) {
    throw GoneFailure(Format("{}: {}", what, library_.StatusText(status)), identity_);
  }
  throw Failure(ExitCode::kDevice, Format("{}: {}", what, library_.StatusText(status)), kAgain);
}

void DllCamera::OutcomeUnknown(const std::string& what) {
  throw Failure(ExitCode::kDevice, Format("{}: it has ended, but its result is not known", what),
                "Load the list again; --verify reads the registers back.");
}

std::uint32_t DllCamera::ReadRegisterOnce(std::uint32_t address, RegisterWidth width) const {
  const bool wide = width == RegisterWidth::kWide;
  const std::uint8_t flag = wide ? kBorvanRegisterWide : kBorvanRegisterByte;
  const std::string what = Format("reading register {}", Hex(address));
  const Supervisor::Call call(library_.Watch(), "reading a register");
  std::uint32_t value = kImpossible;
  if (!library_.Functions().UsbRegisterRead(address, &value, flag)) {
    Refused(what);
  }
  if (value != kImpossible) {
    return value;
  }
  // Either the chip did not answer, or the register contains this very value. A second read with
  // another initial value shows which: an answer replaces that one, too.
  value = kOtherStart;
  if (!library_.Functions().UsbRegisterRead(address, &value, flag)) {
    Refused(what);
  }
  if (value == kOtherStart || (!wide && value > 0xFF)) {
    throw Failure(ExitCode::kDevice, Format("{}: the chip did not answer the read", what),
                  "Repeat it; borvanusb selftest shows more.");
  }
  return value;
}

// Reads twice because of a fault that the library ignores: if the chip refuses the first half of
// the address, it returns the value of another register.
std::uint32_t DllCamera::ReadRegisterUnlocked(std::uint32_t address, RegisterWidth width) {
  return ReadTwice([&] { return ReadRegisterOnce(address, width); }).value;
}

std::uint32_t DllCamera::ReadRegister(std::uint32_t address, RegisterWidth width) {
  const auto lock = Lock();
  return ReadRegisterUnlocked(address, width);
}

std::uint32_t DllCamera::SampleRegister(std::uint32_t address, RegisterWidth width) {
  const auto lock = Lock();
  return ReadRegisterOnce(address, width);
}

void DllCamera::WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) {
  const auto lock = Lock();
  const Supervisor::Call call(library_.Watch(), "writing a register");
  const std::uint8_t flag =
      width == RegisterWidth::kWide ? kBorvanRegisterWide : kBorvanRegisterByte;
  if (!library_.Functions().UsbRegisterWrite(address, value, flag)) {
    Refused(Format("writing register {}", Hex(address)));
  }
}

std::vector<std::uint8_t> DllCamera::ReadRunOnce(std::uint32_t first, std::uint32_t last) const {
  const std::uint64_t size = std::uint64_t{last} - first + 1;
  Job job;
  job.doing = "reading registers";
  job.silence = std::chrono::milliseconds(size);
  return Dump(Format("reading registers {}", Text(Range{first, last})), size, job,
              [&](const Exports& exports, const char* name) {
                return exports.UsbRegisterReadFile(name, first, last);
              });
}

std::vector<std::uint8_t> DllCamera::DecideBlock(std::uint32_t first,
                                                 std::span<const std::uint8_t> one,
                                                 std::span<const std::uint8_t> other) {
  ++disagreements_;
  std::vector<std::uint8_t> values =
      ReadRunOnce(first, static_cast<std::uint32_t>(first + one.size() - 1));
  // Only equality with `other` counts. `one` and `values` were read in the same way, so both may
  // contain the same stale block.
  if (std::ranges::equal(values, other)) {
    return values;
  }
  // Either some registers change by themselves, or further reads failed. Single reads decide,
  // because their replies have tags.
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i] != one[i] || values[i] != other[i]) {
      values[i] = static_cast<std::uint8_t>(
          ReadRegisterUnlocked(static_cast<std::uint32_t>(first + i), RegisterWidth::kByte));
    }
  }
  return values;
}

std::vector<std::uint8_t> DllCamera::ReadRegisterRun(std::uint32_t first, std::uint32_t last) {
  const auto lock = Lock();
  std::vector<std::uint8_t> values = ReadRunOnce(first, last);
  std::vector<std::uint8_t> other;
  for (const Range& range : CutSecondRun({first, last})) {
    const std::vector<std::uint8_t> read = ReadRunOnce(range.first, range.last);
    other.insert(other.end(), read.begin(), read.end());
  }
  for (std::size_t at = 0; at < values.size(); at += kRunBlock) {
    const std::size_t size = std::min<std::size_t>(kRunBlock, values.size() - at);
    const auto block = std::span(values).subspan(at, size);
    const auto other_block = std::span<const std::uint8_t>(other).subspan(at, size);
    if (!std::ranges::equal(block, other_block)) {
      std::ranges::copy(DecideBlock(static_cast<std::uint32_t>(first + at), block, other_block),
                        block.begin());
    }
  }
  return values;
}

void DllCamera::WriteRegisterList(const std::string& list_text) {
  const auto lock = Lock();
  Job job;
  job.doing = "writing a register list";
  job.silence = SilenceOf(list_text);
  job.notice_is_end = true;
  job.only_report_tells = true;
  const JobEnd end = SendFile(
      job.doing, BytesOf(list_text), "txt", job,
      [](const Exports& exports, const char* name) { return exports.UsbRegisterWriteFile(name); });
  if (end.status == kBadListHead) {
    throw Failure(ExitCode::kFile, "the list does not begin with an entry 0xfffd",
                  "Put a line 0xfffd, 0x00 at its beginning.");
  }
  if (end.outcome == JobEnd::Outcome::kUnknown) {
    OutcomeUnknown(job.doing);
  }
}

void DllCamera::WriteI2cList(const std::string& list_text, std::uint32_t option) {
  const auto lock = Lock();
  Job job;
  job.doing = "writing an I2C list";
  job.silence = SilenceOf(list_text);
  job.only_report_tells = true;
  const JobEnd end = SendFile(job.doing, BytesOf(list_text), "txt", job,
                              [&](const Exports& exports, const char* name) {
                                return exports.UsbI2CWriteFile(name, option);
                              });
  if (end.outcome == JobEnd::Outcome::kUnknown) {
    OutcomeUnknown(job.doing);
  }
}

std::uint32_t DllCamera::PeekFlashWord(std::uint32_t address) {
  const auto lock = Lock();
  const auto word = ReadTwice([&] {
    const Supervisor::Call call(library_.Watch(), "reading a flash word");
    std::uint32_t value = 0;
    library_.Functions().UsbFlashRead(address, &value);
    return value;
  });
  if (!word.confirmed) {
    throw Failure(
        ExitCode::kDevice,
        Format("reading flash word {}: the flash reads differently each time", Hex(address)),
        kAgain);
  }
  return word.value;
}

void DllCamera::WriteFlashWord(std::uint32_t address, std::uint32_t value) {
  const auto lock = Lock();
  const Supervisor::Call call(library_.Watch(), "writing a flash word");
  if (!library_.Functions().UsbFlashWrite(address, value)) {
    Refused(Format("writing flash word {}", Hex(address)));
  }
}

void DllCamera::EraseSector(std::uint32_t address) {
  const auto lock = Lock();
  const Supervisor::Call call(library_.Watch(), "erasing a flash sector");
  if (!library_.Functions().UsbFlashErase(address)) {
    Refused(Format("erasing flash sector {}", Hex(address)));
  }
}

void DllCamera::LearnFeatures() {
  const std::uint32_t features = ReadRegister(kFeatureRegister, RegisterWidth::kByte);
  has_fast_i2c_ = (features & kFeatureFastI2c) != 0;
}

std::unique_ptr<Camera> OpenLibraryCamera(CameraLibrary& library, const CameraIdentity& camera) {
  library.Select(camera);
  auto opened = std::make_unique<DllCamera>(library, camera);
  // The library also selects a camera without the vendor unit. Only an access shows this.
  try {
    opened->LearnFeatures();
  } catch (const Failure& failure) {
    if (failure.Code() != ExitCode::kDevice) {
      throw;
    }
    throw NoVendorUnit(
        ExitCode::kRefused,
        Format("camera {} has no vendor unit that answers ({})", camera.name, failure.Message()),
        "Is it a camera with this chip? borvanusb doctor shows more.");
  }
  return opened;
}

}  // namespace borvanusb
