#include "rig.h"

#include <objbase.h>

#include <array>
#include <chrono>
#include <fstream>
#include <iterator>
#include <thread>

namespace test {
namespace {

constexpr char kConfigurationVariable[] = "BORVAN_VIRTUAL_CAMERA";

void CallCameraDll(const char* entry_point) {
  static const HMODULE kDll = LoadLibraryA((ProgramFolder() + "BorvanVirtualCamera.dll").c_str());
  using Entry = HRESULT(STDAPICALLTYPE*)();
  // FARPROC stands for any function type, which a direct cast would be warned about.
  const auto entry =
      reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(kDll, entry_point)));
  ASSERT_NE(entry, nullptr) << "BorvanVirtualCamera.dll must lie beside the test";
  ASSERT_EQ(entry(), S_OK) << entry_point;
}

std::string Json(const CameraText& camera) {
  return R"({"path": ")" + camera.prefix + camera.path + R"(", "name": ")" + camera.name +
         R"(", "nodes": [)" + camera.nodes + R"(], "flash": {"size": ")" + camera.flash_size +
         "\"}" + camera.more + "}";
}

Bytes ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

void WriteFile(const std::string& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

// True when nobody else has the file open.
bool IsFinished(const std::string& path) {
  const HANDLE file =
      CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return false;
  }
  CloseHandle(file);
  return true;
}

}  // namespace

Rig::Rig() {
  CoInitialize(nullptr);
  SetEnvironmentVariableA(kConfigurationVariable, File("cameras.json").c_str());
  Configure({});
}

Rig::~Rig() {
  if (UsbUpdateDevice()) {
    UsbDestroyUSB();
  }
  CallCameraDll("DllUnregisterServer");
  CoUninitialize();
}

void Rig::Configure(const std::vector<CameraText>& cameras) {
  std::ofstream file(File("cameras.json"), std::ios::binary);
  file << R"({"cameras": [)";
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    file << (i > 0 ? ",\n" : "\n") << Json(cameras[i]);
  }
  file << "]}\n";
}

void Rig::PlugIn(const std::vector<CameraText>& cameras) {
  Configure(cameras);
  CallCameraDll("DllRegisterServer");
}

void Rig::UseCamera(const CameraText& camera) {
  PlugIn({camera});
  ASSERT_GE(UsbIniDevice(), 0);
  ASSERT_EQ(UsbGetDeviceNum(), 1);
  ASSERT_TRUE(UsbSelectDevice(0));
}

void Rig::UseCamera(const std::string& more) {
  CameraText camera;
  camera.more = more;
  UseCamera(camera);
}

void Rig::Control(const std::string& arguments) {
  ASSERT_EQ(RunProgram("virtual-camera.exe " + arguments), 0U) << arguments;
}

void Rig::PresetFlash(const Bytes& bytes) {
  WriteFile(File("cameras.camera0.flash"), bytes);
}

Bytes Rig::Flash() const {
  return ReadFile(File("cameras.camera0.flash"));
}

std::string Rig::MakeFile(const std::string& name, const Bytes& bytes) const {
  WriteFile(File(name), bytes);
  return File(name);
}

Bytes Rig::FinishedFile(const std::string& path) const {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!IsFinished(path) && std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_TRUE(IsFinished(path)) << path;
  return ReadFile(path);
}

Bytes Pattern(std::size_t size, std::uint32_t seed) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<std::uint8_t>(i * 7 + (i >> 8) * 13 + seed);
  }
  return bytes;
}

Bytes Slice(const Bytes& bytes, std::size_t start, std::size_t count) {
  const std::size_t first = std::min(start, bytes.size());
  const std::size_t last = std::min(first + count, bytes.size());
  return {bytes.begin() + static_cast<std::ptrdiff_t>(first),
          bytes.begin() + static_cast<std::ptrdiff_t>(last)};
}

bool ProgressBecomes(std::uint64_t progress, int milliseconds) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
  while (std::chrono::steady_clock::now() < limit) {
    if (GetProgressInfo() == progress) {
      return true;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  ADD_FAILURE() << "the progress is " << std::hex << GetProgressInfo() << " and not " << progress;
  return false;
}

std::string ProgramFolder() {
  std::array<char, 4096> file = {};
  GetModuleFileNameA(nullptr, file.data(), static_cast<DWORD>(file.size()));
  const std::string text = file.data();
  return text.substr(0, text.find_last_of('\\') + 1);
}

DWORD RunProgram(const std::string& program_and_arguments) {
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process = {};
  std::string line = ProgramFolder() + program_and_arguments;
  if (CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                     &process) == FALSE) {
    ADD_FAILURE() << "can't start " << line << ": error " << GetLastError();
    return 0xFFFFFFFF;
  }
  CloseHandle(process.hThread);
  constexpr DWORD kLongestRun = 60'000;
  if (WaitForSingleObject(process.hProcess, kLongestRun) != WAIT_OBJECT_0) {
    TerminateProcess(process.hProcess, 98);
    WaitForSingleObject(process.hProcess, kLongestRun);
  }
  DWORD code = 0;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hProcess);
  return code;
}

}  // namespace test
