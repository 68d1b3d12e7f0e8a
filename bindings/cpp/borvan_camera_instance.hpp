#pragma once

// The instance of the library with its list and its selection, and what all calls of the Camera
// have in common. Programs use the Camera.

#include <borvan_usb.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "borvan_error.hpp"
#include "borvan_job.hpp"

namespace borvan {

// Widths of I2C accesses: bits of the register address, bits of the data.
enum class I2cMode : std::int32_t {
  kAddress8Data8 = kBorvanI2cAddress8Data8,
  kAddress16Data8 = kBorvanI2cAddress16Data8,
  kAddress16Data16 = kBorvanI2cAddress16Data16,
  kAddress32Data8 = kBorvanI2cAddress32Data8,
  kAddress32Data16 = kBorvanI2cAddress32Data16,
  kAddress32Data32 = kBorvanI2cAddress32Data32,
};

enum class Width : std::uint8_t { kByte = kBorvanRegisterByte, kWide = kBorvanRegisterWide };

// A camera of the list. Texts are in the ANSI code page; the IDs are four hexadecimal digits.
struct CameraInfo {
  std::int32_t index = -1;  // -1: the selected camera, whose index is not asked for
  std::string path;
  std::string name;
  std::string vendor_id;
  std::string product_id;
};

class CameraInstance {
 public:
  // Creates the library's instance. While a job of a former Camera may still run, it takes over
  // that Camera's instance, so that Wait can wait for the job.
  CameraInstance() {
    detail::ProcessState& state = detail::State();
    if (state.has_camera) {
      throw Error(ErrorKind::kBusy, "Camera: another Camera exists: close it first");
    }
    if (!state.pending) {
      const std::int32_t code = UsbIniDevice();
      if (code < 0) {
        UsbDestroyUSB();
        throw detail::StatusError("Camera", static_cast<std::uint32_t>(code));
      }
    }
    state.has_camera = true;
  }
  ~CameraInstance() { Close(); }
  CameraInstance(const CameraInstance&) = delete;
  CameraInstance& operator=(const CameraInstance&) = delete;

  // Ends the instance, except while a job may run, because this makes a transfer.
  void Close() noexcept {
    if (open_) {
      open_ = false;
      detail::ProcessState& state = detail::State();
      state.has_camera = false;
      if (!state.pending) {
        UsbDestroyUSB();
      }
    }
  }

  // The cameras that are plugged in now. Each call leaks the library's array: call it
  // when something was plugged in, not in a loop.
  std::vector<CameraInfo> List() { return TryList().Get(); }
  Result<std::vector<CameraInfo>> TryList() {
    if (auto refused = Refused("List", true)) {
      return *refused;
    }
    if (!UsbUpdateDevice()) {
      return Error(ErrorKind::kAccess, "List: the system's list of cameras can't be read");
    }
    const std::int32_t count = UsbGetDeviceNum();
    const UsbDeviceInfo* const records = count > 0 ? UsbGetAllDeviceInfo() : nullptr;
    std::vector<CameraInfo> cameras;
    cameras.reserve(static_cast<std::size_t>(std::max(count, 0)));
    for (std::int32_t i = 0; i < count; ++i) {
      cameras.push_back(InfoOf(records[i], i));
    }
    return cameras;
  }

  // Selects a camera of the list. A camera without a vendor unit is selected as well; then every
  // access fails.
  void Select(std::int32_t index) { TrySelect(index).Get(); }
  Outcome TrySelect(std::int32_t index) {
    const std::string what = "Select";
    if (auto refused = Refused(what)) {
      return *refused;
    }
    const char* message = nullptr;
    if (borvan_select_device(index, &message)) {
      return Nothing{};
    }
    if (message != nullptr) {
      return Error(ErrorKind::kCannotOpen, what + ": " + message);
    }
    return Error(ErrorKind::kNoSuchCamera, what + ": there is no camera with index " +
                                               std::to_string(index) + ": the list has " +
                                               std::to_string(UsbGetDeviceNum()));
  }

  // The selected camera; empty texts when none is.
  CameraInfo Selected() { return TrySelected().Get(); }
  Result<CameraInfo> TrySelected() {
    if (auto refused = Refused("Selected", true)) {
      return *refused;
    }
    return InfoOf(UsbGetSelectDeviceInfo(), -1);
  }

  // Waits again for a job that did not end within its time limit. Returns at once when there is
  // none.
  void Wait(Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    TryWait(limit, progress).Get();
  }
  Outcome TryWait(Milliseconds limit = kUsualTimeLimit, const Progress& progress = {}) {
    if (auto refused = Refused("Wait", true)) {
      return *refused;
    }
    return detail::State().pending ? detail::WaitForPending(limit, progress) : Outcome(Nothing{});
  }

 protected:
  static std::string Hex(std::uint32_t number) {
    std::array<char, 11> text{};
    std::snprintf(text.data(), text.size(), "0x%x", static_cast<unsigned>(number));
    return text.data();
  }
  static std::string What(const char* call, std::uint32_t address) {
    return std::string(call) + "(" + Hex(address) + ")";
  }
  static Error NotAllowed(const std::string& what, const std::string& which,
                          const std::string& allowed) {
    return Error(ErrorKind::kArgument, what + ": " + which + " is not allowed: " + allowed);
  }
  static Error TooLarge(const std::string& what, std::uint32_t value, const std::string& largest) {
    return NotAllowed(what, "value " + Hex(value), "0 to " + largest);
  }

  // Why a call can't be made now.
  std::optional<Error> Refused(const std::string& what, bool while_job_runs = false) const {
    if (!open_) {
      return Error(ErrorKind::kClosed, what + ": the camera object is closed");
    }
    if (std::this_thread::get_id() != thread_) {
      return Error(ErrorKind::kThread, what + ": the camera object belongs to another thread");
    }
    if (!while_job_runs && detail::State().pending) {
      return Error(ErrorKind::kBusy,
                   what + ": a job may still be running: wait for it with Wait()");
    }
    return std::nullopt;
  }

  template <typename Call>
  Outcome Access(const std::string& what, const Call& call) {
    if (auto refused = Refused(what)) {
      return *refused;
    }
    if (!call()) {
      return AccessFailed(what);
    }
    return Nothing{};
  }

  // If the value does not change, it is read once more with another initial value: the camera may
  // not have answered.
  template <typename Call>
  Result<std::uint32_t> Read(const std::string& what, const Call& call) {
    if (auto refused = Refused(what)) {
      return *refused;
    }
    for (const std::uint32_t before : {0xA5C3F00DU, 0x5A3C0FF2U}) {
      std::uint32_t value = before;
      if (!call(&value)) {
        return AccessFailed(what);
      }
      if (value != before) {
        return value;
      }
    }
    return Error(ErrorKind::kNoAnswer, what + ": the camera did not answer the request");
  }

  template <typename Start>
  Outcome Run(detail::PendingJob job, Milliseconds limit, const Progress& progress,
              const Start& start) {
    if (auto refused = Refused(job.what)) {
      return *refused;
    }
    if (detail::IsTextName(job.file)) {
      return Error(ErrorKind::kArgument, job.what +
                                             ": a name that ends in .txt is not allowed: the job "
                                             "would write text of unknown length");
    }
    return detail::RunJob(std::move(job), limit, progress, start);
  }

 private:
  static Error AccessFailed(const std::string& what) {
    return Error(ErrorKind::kAccess,
                 what + ": the access failed: no camera is open, or the camera refused a transfer");
  }

  static CameraInfo InfoOf(const UsbDeviceInfo& record, std::int32_t index) {
    std::array<char, kBorvanTextFieldSize + 1> text{};
    CameraInfo info;
    info.index = index;
    borvan_copy_text(record.path, text.data());
    info.path = text.data();
    borvan_copy_text(record.name, text.data());
    info.name = text.data();
    borvan_copy_id(record.vendor_id, text.data());
    info.vendor_id = text.data();
    borvan_copy_id(record.product_id, text.data());
    info.product_id = text.data();
    return info;
  }

  const std::thread::id thread_ = std::this_thread::get_id();
  bool open_ = true;
};

}  // namespace borvan
