#include "dll/camera_library.h"

#include <algorithm>
#include <array>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

constexpr int kStatusDigits = 8;
// Replaces each character in the library's 8-bit texts that the code page does not contain.
constexpr char kLostCharacter = '?';

// The library clears the progress kClearDelay after the successful end of a job. The actual time
// may differ by kClearSlack from the one computed here: this program notices the end a little after
// the job reports it, and the clearing thread may run late.
constexpr std::chrono::seconds kClearDelay{3};
constexpr std::chrono::milliseconds kClearSlack{30};
constexpr std::chrono::milliseconds kClearInterval{10};

std::string TextOf(const char* field) {
  std::array<char, kBorvanTextFieldSize + 1> text{};
  borvan_copy_text(field, text.data());
  return text.data();
}

std::string IdOf(const char* field) {
  std::array<char, kBorvanIdFieldSize + 1> text{};
  borvan_copy_id(field, text.data());
  return text.data();
}

}  // namespace

std::vector<CameraIdentity> CameraLibrary::Listed() const {
  const std::int32_t count = exports_.UsbGetDeviceNum();
  if (count <= 0) {
    return {};
  }
  const UsbDeviceInfo* const records = exports_.UsbGetAllDeviceInfo();
  std::vector<CameraIdentity> cameras;
  for (std::int32_t i = 0; i < count; ++i) {
    const UsbDeviceInfo& record = records[i];
    cameras.push_back({i, platform_.ToUtf8(TextOf(record.path)),
                       platform_.ToUtf8(TextOf(record.name)), IdOf(record.vendor_id),
                       IdOf(record.product_id)});
  }
  return cameras;
}

std::vector<CameraIdentity> CameraLibrary::ListCameras() {
  const Supervisor::Call call(supervisor_, "listing the cameras");
  std::vector<CameraIdentity> cameras = ListAnew();
  for (CameraIdentity& camera : cameras) {
    if (camera.name.find(kLostCharacter) != std::string::npos) {
      camera.name = platform_.DeviceName(camera.path).value_or(camera.name);
    }
  }
  return cameras;
}

std::vector<CameraIdentity> CameraLibrary::ListAnew() {
  std::string why;
  if (!has_instance_) {
    const std::int32_t result = exports_.UsbIniDevice();
    has_instance_ = true;
    why = result < 0 ? Format(": {}", StatusText(static_cast<std::uint32_t>(result))) : "";
  } else if (!exports_.UsbUpdateDevice()) {
    why = " again";
  }
  if (!why.empty()) {
    throw Failure(ExitCode::kNoCamera, Format("the system's video devices can't be listed{}", why),
                  "borvanusb doctor shows more.");
  }
  return Listed();
}

void CameraLibrary::Select(const CameraIdentity& camera) {
  CheckIdle();
  const std::vector<CameraIdentity> cameras = [this] {
    const Supervisor::Call call(supervisor_, "listing the cameras");
    return ListAnew();
  }();
  const auto found =
      std::find_if(cameras.begin(), cameras.end(),
                   [&](const CameraIdentity& listed) { return listed.path == camera.path; });
  if (found == cameras.end()) {
    throw Failure(ExitCode::kNoCamera,
                  Format("camera {} was disconnected: {}", camera.name, camera.path),
                  "Plug it in again; borvanusb list shows the cameras.");
  }
  const Supervisor::Call call(supervisor_, "opening the camera");
  selected_.reset();
  try {
    exports_.UsbSelectDevice(found->index);
  } catch (const char* message) {  // the library throws this if a camera can't be opened
    throw Failure(ExitCode::kRefused, Format("camera {} can't be opened: {}", camera.name, message),
                  "Close other programs that use the camera, or plug it in again.");
  }
  selected_ = camera.path;
}

void CameraLibrary::SelectOnce(const CameraIdentity& camera) {
  if (selected_ != camera.path) {
    Select(camera);
  }
}

bool CameraLibrary::IsListed(const CameraIdentity& camera) {
  const Supervisor::Call call(supervisor_, "listing the cameras");
  if (!exports_.UsbUpdateDevice()) {
    return false;
  }
  const std::vector<CameraIdentity> cameras = Listed();
  return std::any_of(cameras.begin(), cameras.end(),
                     [&](const CameraIdentity& listed) { return listed.path == camera.path; });
}

void CameraLibrary::CheckIdle() {
  if (abandoned_ && abandoned_()) {
    abandoned_ = nullptr;
  }
  if (abandoned_) {
    throw Failure(ExitCode::kTimeout,
                  "an earlier job of this program may still be running in the camera; nothing more "
                  "is read or written",
                  "Plug the camera in again and start the command again.");
  }
}

void CameraLibrary::NoteJobEnd() {
  clear_tasks_.push_back(Supervisor::Clock::now() + kClearDelay);
}

void CameraLibrary::LimitClearTasks() {
  ForgetEndedClearTasks();
  while (clear_tasks_.size() >= platform_.MostClearTasks()) {
    supervisor_.ObeyStop();
    platform_.Sleep(kClearInterval);
    ForgetEndedClearTasks();
  }
}

void CameraLibrary::ForgetEndedClearTasks() {
  while (!clear_tasks_.empty() && clear_tasks_.front() + kClearSlack < Supervisor::Clock::now()) {
    clear_tasks_.pop_front();
  }
}

bool CameraLibrary::ClearTaskIsDue() const {
  const auto now = Supervisor::Clock::now();
  return std::any_of(clear_tasks_.begin(), clear_tasks_.end(), [&](const auto due) {
    return now > due - kClearSlack && now < due + kClearSlack;
  });
}

std::string CameraLibrary::StatusText(std::uint32_t status) const {
  std::string digits = Hex(status, kStatusDigits).substr(2);
  std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
    return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  });
  const char* const own = borvan_status_message(status);
  const std::string text = own != nullptr ? own : platform_.SystemMessage(status);
  return Format("0x{}{}", digits, text.empty() ? "" : Format(", {}", text));
}

Failure GoneFailure(const std::string& doing, const CameraIdentity& camera) {
  return {ExitCode::kDevice, Format("{}: the camera is gone: {}", doing, camera.path),
          "Plug it in again and repeat the command."};
}

}  // namespace borvanusb
