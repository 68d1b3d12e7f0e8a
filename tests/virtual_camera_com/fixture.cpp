#include "fixture.h"

#include <objbase.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

namespace test {
namespace {

std::filesystem::path NewFolder() {
  static int count = 0;
  return std::filesystem::temp_directory_path() /
         ("virtual_camera_" + std::to_string(GetCurrentProcessId()) + "_" +
          std::to_string(++count));
}

}  // namespace

std::string CameraJson(const std::string& path_end, const std::string& name,
                       const std::string& nodes, const std::string& more) {
  return R"({"path": "\\\\?\\usb#vid_1234&)" + path_end + R"(", "name": ")" + name +
         R"(", "nodes": [)" + nodes + R"(], "flash": {"size": "64K"})" + more + "}";
}

std::string FirstCamera(const std::string& more) {
  return CameraJson("pid_000a#1&1&1#first", "First", R"("camera-terminal", "processing", "vendor")",
                    more);
}

std::string SecondCamera(const std::string& more) {
  return CameraJson("pid_000b#2&2&2#second", "Second",
                    R"("camera-terminal", "streaming", "vendor")", more);
}

std::wstring ProgramFolder() {
  std::array<wchar_t, 4096> file = {};
  GetModuleFileNameW(nullptr, file.data(), static_cast<DWORD>(file.size()));
  const std::wstring text = file.data();
  return text.substr(0, text.find_last_of(L'\\') + 1);
}

Process::Process(const std::wstring& program, const std::wstring& arguments, Reader reader) {
  SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
  HANDLE child_end = nullptr;
  CreatePipe(&output_, &child_end, &inherited, 0);
  SetHandleInformation(output_, HANDLE_FLAG_INHERIT, 0);
  if (reader == Reader::kNobody) {
    CloseHandle(std::exchange(output_, nullptr));
  }
  STARTUPINFOW startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdOutput = child_end;
  startup.hStdError = child_end;
  PROCESS_INFORMATION process = {};
  std::wstring line = L"\"" + ProgramFolder() + program + L"\" " + arguments;
  if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                     &process) != FALSE) {
    process_ = process.hProcess;
    CloseHandle(process.hThread);
  } else {
    ADD_FAILURE() << "can't start a program: error " << GetLastError();
  }
  CloseHandle(child_end);
}

Process::~Process() {
  if (process_ != nullptr) {
    Kill();
    CloseHandle(process_);
  }
  if (output_ != nullptr) {
    CloseHandle(output_);
  }
}

Outcome Process::Wait() {
  Outcome outcome;
  std::array<char, 4096> piece = {};
  DWORD count = 0;
  while (output_ != nullptr &&
         ReadFile(output_, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) &&
         count > 0) {
    outcome.output.append(piece.data(), count);
  }
  std::erase(outcome.output, '\r');
  WaitForSingleObject(process_, INFINITE);
  GetExitCodeProcess(process_, &outcome.exit_code);
  return outcome;
}

void Process::Kill() {
  TerminateProcess(process_, 99);
  WaitForSingleObject(process_, INFINITE);
}

Outcome Control(const std::wstring& arguments) {
  return Process(L"virtual-camera.exe", arguments).Wait();
}

CameraTest::CameraTest() {
  CoInitialize(nullptr);
  const std::filesystem::path folder = NewFolder();
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  folder_ = folder.wstring() + L"\\";
  SetEnvironmentVariableW(L"BORVAN_VIRTUAL_CAMERA", ConfigurationPath().c_str());
  dll_ = LoadLibraryW((ProgramFolder() + L"BorvanVirtualCamera.dll").c_str());
}

CameraTest::~CameraTest() {
  CallDll("DllUnregisterServer");
  FreeLibrary(dll_);
  CoUninitialize();
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void CameraTest::Configure(const std::vector<std::string>& cameras) {
  std::ofstream file(std::filesystem::path(ConfigurationPath()), std::ios::binary);
  file << R"({"cameras": [)";
  for (std::size_t i = 0; i < cameras.size(); ++i) {
    file << (i > 0 ? ",\n" : "\n") << cameras[i];
  }
  file << "]}\n";
}

void CameraTest::Register(const std::vector<std::string>& cameras) {
  Configure(cameras);
  ASSERT_EQ(CallDll("DllRegisterServer"), S_OK);
}

std::string CameraTest::Content(const std::wstring& name) const {
  std::ifstream file(std::filesystem::path(folder_ + name), std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

HRESULT CameraTest::CallDll(const char* entry_point) {
  using Entry = HRESULT(STDAPICALLTYPE*)();
  // FARPROC stands for any function type, which a direct cast would be warned about.
  const auto entry =
      reinterpret_cast<Entry>(reinterpret_cast<void*>(GetProcAddress(dll_, entry_point)));
  return entry != nullptr ? entry() : E_NOTIMPL;
}

}  // namespace test
