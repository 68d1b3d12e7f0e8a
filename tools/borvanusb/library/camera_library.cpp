#include "library/camera_library.h"

#include <algorithm>
#include <array>

#include "arguments/numbers.h"

namespace {

constexpr int kStatusDigits = 8;
// Stands in the library's 8-bit texts for each character that the code page lacks.
constexpr char kLostCharacter = '?';

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

std::vector<CameraIdentity> CameraLibrary::ListCameras() const {
  const Supervisor::Call call(supervisor_, "listing the cameras");
  std::vector<CameraIdentity> cameras = ListAnew();
  for (CameraIdentity& camera : cameras) {
    if (camera.name.find(kLostCharacter) != std::string::npos) {
      camera.name = platform_.DeviceName(camera.path).value_or(camera.name);
    }
  }
  return cameras;
}

std::vector<CameraIdentity> CameraLibrary::ListAnew() const {
  const std::int32_t result = exports_.UsbIniDevice();
  if (result < 0) {
    throw Failure(ExitCode::kNoCamera,
                  "the system's list of video devices can't be had: " +
                      StatusText(static_cast<std::uint32_t>(result)),
                  "borvanusb doctor tells more.");
  }
  return Listed();
}

void CameraLibrary::Select(const CameraIdentity& camera) const {
  const std::vector<CameraIdentity> cameras = [this] {
    const Supervisor::Call call(supervisor_, "listing the cameras");
    return ListAnew();
  }();
  const auto found =
      std::find_if(cameras.begin(), cameras.end(),
                   [&](const CameraIdentity& listed) { return listed.path == camera.path; });
  if (found == cameras.end()) {
    throw Failure(ExitCode::kNoCamera, "camera " + camera.name + " is gone: " + camera.path,
                  "Plug it in again; borvanusb list shows the cameras.");
  }
  const Supervisor::Call call(supervisor_, "opening the camera");
  try {
    exports_.UsbSelectDevice(found->index);
  } catch (const char* message) {  // how the library tells that a camera can't be opened
    throw Failure(ExitCode::kRefused, "camera " + camera.name + " can't be opened: " + message,
                  "Close other programs that use the camera, or plug it in again.");
  }
}

bool CameraLibrary::IsListed(const CameraIdentity& camera) const {
  if (!exports_.UsbUpdateDevice()) {
    return false;
  }
  const std::vector<CameraIdentity> cameras = Listed();
  return std::any_of(cameras.begin(), cameras.end(),
                     [&](const CameraIdentity& listed) { return listed.path == camera.path; });
}

std::string CameraLibrary::StatusText(std::uint32_t status) const {
  std::string digits = Hex(status, kStatusDigits).substr(2);
  std::transform(digits.begin(), digits.end(), digits.begin(), [](char digit) {
    return digit >= 'a' ? static_cast<char>(digit - 'a' + 'A') : digit;
  });
  const char* const own = borvan_status_message(status);
  const std::string text = own != nullptr ? own : platform_.SystemMessage(status);
  return "0x" + digits + (text.empty() ? "" : ", " + text);
}

Failure GoneFailure(const std::string& doing, const CameraIdentity& camera) {
  return {ExitCode::kDevice, doing + ": the camera is gone: " + camera.path,
          "Plug it in again and repeat the command."};
}
