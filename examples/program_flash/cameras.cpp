#include "cameras.h"

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <exception>

#include "failure.h"

namespace {

// A register that every camera answers; the library reads it itself when it selects one.
constexpr std::uint32_t kFeatureRegister = 0x1A3;

constexpr std::size_t kMostDigitsOfAnIndex = 9;

// The library's paths are lower case; what a user pastes from elsewhere need not be.
std::string LowerCase(std::string text) {
  for (char& character : text) {
    if (character >= 'A' && character <= 'Z') {
      character = static_cast<char>(character - 'A' + 'a');
    }
  }
  return text;
}

std::string IdOf(const char* field) {
  std::array<char, kBorvanIdFieldSize + 1> text{};
  borvan_copy_id(field, text.data());
  return text.data();
}

std::string TextOf(const char* field) {
  std::array<char, kBorvanTextFieldSize + 1> text{};
  borvan_copy_text(field, text.data());
  return text.data();
}

}  // namespace

std::vector<UsbDeviceInfo> ListCameras() {
  const std::int32_t result = UsbIniDevice();
  if (result < 0) {
    throw Failure(ExitCode::kNoCamera, "the system's list of cameras can't be had: " +
                                           StatusText(static_cast<std::uint32_t>(result)));
  }
  const std::int32_t count = UsbGetDeviceNum();
  if (count <= 0) {
    throw Failure(ExitCode::kNoCamera, "no USB camera found");
  }
  // The library's array can't be freed by anyone, so it is asked for once and copied.
  const UsbDeviceInfo* const cameras = UsbGetAllDeviceInfo();
  return {cameras, cameras + count};
}

void PrintCameras(const std::vector<UsbDeviceInfo>& cameras) {
  std::puts("cameras:");
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    const UsbDeviceInfo& camera = cameras[i];
    std::printf("  %u  %s:%s  %s\n              %s\n", static_cast<unsigned>(i),
                IdOf(camera.vendor_id).c_str(), IdOf(camera.product_id).c_str(),
                TextOf(camera.name).c_str(), PathOf(camera).c_str());
  }
  std::fflush(stdout);
}

std::int32_t FindCamera(const std::vector<UsbDeviceInfo>& cameras, const std::string& choice) {
  if (choice.empty()) {
    if (cameras.size() > 1) {
      // The wrong camera's firmware would be gone: no guessing.
      throw Failure(ExitCode::kNoCamera, "more than one camera: choose one with --camera");
    }
    return 0;
  }
  if (choice.find_first_not_of("0123456789") == std::string::npos) {
    if (choice.size() > kMostDigitsOfAnIndex || std::stoul(choice) >= cameras.size()) {
      throw Failure(ExitCode::kNoCamera, "--camera: there is no camera " + choice +
                                             ", the highest index is " +
                                             std::to_string(cameras.size() - 1));
    }
    return static_cast<std::int32_t>(std::stoul(choice));
  }
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    if (LowerCase(PathOf(cameras[i])) == LowerCase(choice)) {
      return static_cast<std::int32_t>(i);
    }
  }
  throw Failure(ExitCode::kNoCamera, "--camera: no camera has the device path " + choice);
}

std::string PathOf(const UsbDeviceInfo& camera) {
  return TextOf(camera.path);
}

void OpenCamera(std::int32_t index) {
  const std::string camera = "camera " + std::to_string(index);
  try {
    if (!UsbSelectDevice(index)) {
      throw Failure(ExitCode::kNoCamera, camera + " is gone");
    }
  } catch (const char* message) {  // how the library tells that a camera can't be opened
    throw Failure(ExitCode::kCameraNotOpened, camera + ": " + message);
  }
  // A camera without the vendor channel is selected all the same; a first access tells.
  std::uint32_t value = 0;
  if (!UsbRegisterRead(kFeatureRegister, &value, kBorvanRegisterByte)) {
    throw Failure(ExitCode::kCameraNotOpened,
                  camera + " has no vendor channel, or its chip does not take commands");
  }
}

std::string StatusText(std::uint32_t status) {
  std::array<char, 256> text{};
  std::snprintf(text.data(), text.size(), "0x%08lX", static_cast<unsigned long>(status));
  std::string result = text.data();
  if (const char* const message = borvan_status_message(status)) {
    return result + ", " + message;
  }
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
      nullptr, status, 0, text.data(), static_cast<DWORD>(text.size()), nullptr);
  return length > 0 ? result + ", " + std::string(text.data(), length) : result;
}
