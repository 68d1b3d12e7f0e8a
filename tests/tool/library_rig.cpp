#include "library_rig.h"

#include <filesystem>
#include <thread>

namespace borvanusb::tool_test {
namespace {

// Longer than any job, even on a busy machine.
constexpr std::chrono::seconds kLimit{60};
constexpr std::chrono::microseconds kBriefSleep{10};
constexpr std::chrono::microseconds kSleep{100};

// A host can't free the library's arrays. A test that is linked with the library can, at its end.
UsbDeviceInfo* GetAllDeviceInfo() {
  static std::vector<std::unique_ptr<UsbDeviceInfo[]>> arrays;
  arrays.emplace_back(UsbGetAllDeviceInfo());
  return arrays.back().get();
}

}  // namespace

LibraryPlatform::ScratchFile TestPlatform::NewScratchFile(std::string_view extension) {
  const std::string name =
      folder.Path("scratch" + std::to_string(made.size()) + "." + std::string(extension));
  made.push_back(name);
  return {name, name};
}

// As on Windows, an open file can't be removed.
void TestPlatform::RemoveScratchFile(const ScratchFile& file) {
  if (!Look(file).open) {
    std::filesystem::remove(file.name);
  }
}

LibraryPlatform::ScratchState TestPlatform::Look(const ScratchFile& file) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (!fs::exists(file.name, error)) {
    return {};
  }
  if (early_looks > 0) {
    --early_looks;
    return {true, false, 0};
  }
  for (const auto& descriptor : fs::directory_iterator("/proc/self/fd")) {
    if (fs::read_symlink(descriptor.path(), error) == file.name) {
      return {true, true, 0};
    }
  }
  return {true, false, fs::file_size(file.name, error)};
}

std::optional<std::vector<std::uint32_t>> TestPlatform::Threads() {
  std::vector<std::uint32_t> threads;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/self/task")) {
    threads.push_back(static_cast<std::uint32_t>(std::stoul(thread.path().filename().string())));
  }
  return threads;
}

std::optional<std::string> TestPlatform::DeviceName(const std::string& path) {
  asked_names.push_back(path);
  const auto name = device_names.find(path);
  return name != device_names.end() ? std::optional(name->second) : std::nullopt;
}

std::string TestPlatform::SystemMessage(std::uint32_t status) {
  return status == 0x80070017 ? "Data error" : "";
}

// Sleeps for a shorter time, because these tests wait for thousands of jobs.
void TestPlatform::Sleep(std::chrono::milliseconds time) {
  if (on_sleep) {
    on_sleep();
  }
  std::this_thread::sleep_for(time.count() == 0 ? kBriefSleep : kSleep);
}

std::unique_ptr<LibraryPlatform::CameraLock> TestPlatform::LockCamera(
    const std::string& /*path*/, std::chrono::milliseconds /*limit*/) {
  return locked_elsewhere ? nullptr : std::make_unique<CameraLock>();
}

LibraryTest::LibraryTest() {
  exports.UsbIniDevice = UsbIniDevice;
  exports.UsbUpdateDevice = UsbUpdateDevice;
  exports.UsbGetDeviceNum = UsbGetDeviceNum;
  exports.UsbGetAllDeviceInfo = GetAllDeviceInfo;
  exports.UsbSelectDevice = UsbSelectDevice;
  exports.UsbRegisterRead = UsbRegisterRead;
  exports.UsbRegisterWrite = UsbRegisterWrite;
  exports.UsbRegisterReadFile = UsbRegisterReadFile;
  exports.UsbRegisterWriteFile = UsbRegisterWriteFile;
  exports.UsbI2cRead = UsbI2cRead;
  exports.UsbI2cWrite = UsbI2cWrite;
  exports.UsbI2CReadFile = UsbI2CReadFile;
  exports.UsbI2CWriteFile = UsbI2CWriteFile;
  exports.UsbFlashRead = UsbFlashRead;
  exports.UsbFlashWrite = UsbFlashWrite;
  exports.UsbFlashErase = UsbFlashErase;
  exports.UsbFlashWriteFile = UsbFlashWriteFile;
  exports.UsbFlashQuickReadFile = UsbFlashQuickReadFile;
  exports.GetProgressInfo = GetProgressInfo;
  library.emplace(exports, platform, supervisor, kLimit);
  script->cameras = {borvan_test::MakeCamera(u'a', chip)};
}

std::unique_ptr<Camera> LibraryTest::OpenWithShortLimit() {
  library->SetLimit(std::chrono::milliseconds(300));
  return Open();
}

std::unique_ptr<Camera> LibraryTest::Open() {
  auto camera = OpenLibraryCamera(*library, library->ListCameras().at(0));
  chip->ForgetTransfers();
  return camera;
}

Failure LibraryTest::FailureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Failure& failure) {
    return failure;
  }
  ADD_FAILURE() << "it ended well";
  return {ExitCode::kDone, ""};
}

bool LibraryTest::BecomesIdle() {
  return borvan_test::WaitUntil([this] {
    try {
      library->CheckIdle();
      return true;
    } catch (const Failure&) {
      return false;
    }
  });
}

std::size_t LibraryTest::LeftBehind() const {
  std::size_t count = 0;
  for (const std::string& name : platform.made) {
    count += std::filesystem::exists(name) ? 1U : 0U;
  }
  return count;
}

}  // namespace borvanusb::tool_test
