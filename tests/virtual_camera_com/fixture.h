#pragma once

// What the tests share: a folder of their own with a configuration file, the virtual camera's DLL,
// and other programs run beside the test.

#include <gtest/gtest.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace test {

// The two cameras of the tests' usual configuration; the second has its vendor node at id 2 too.
inline constexpr wchar_t kFirstPath[] = L"\\\\?\\usb#vid_1234&pid_000a#1&1&1#first";
inline constexpr wchar_t kSecondPath[] = L"\\\\?\\usb#vid_1234&pid_000b#2&2&2#second";

// One camera as a JSON object; `more` is appended to its keys, like R"(, "seed": 1)".
std::string CameraJson(const std::string& path_end, const std::string& name,
                       const std::string& nodes, const std::string& more);
std::string FirstCamera(const std::string& more = "");
std::string SecondCamera(const std::string& more = "");

struct Outcome {
  DWORD exit_code = 0;
  std::string output;  // standard output and standard error
};

// A program of the build's folder that runs beside the test.
class Process {
 public:
  enum class Reader { kThisTest, kNobody };

  // `arguments` as they stand on a command line. With kNobody it can't write its output.
  Process(const std::wstring& program, const std::wstring& arguments,
          Reader reader = Reader::kThisTest);
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  // Reads its output to the end and waits for its exit.
  Outcome Wait();
  // Ends it at once, as a crash would.
  void Kill();

 private:
  HANDLE process_ = nullptr;
  HANDLE output_ = nullptr;
};

// Runs virtual-camera.exe.
Outcome Control(const std::wstring& arguments);

// The folder of the programs, with a backslash at its end.
std::wstring ProgramFolder();

// Every test starts with a configuration file of its own in an empty folder, registered, and ends
// with nothing registered.
class CameraTest : public testing::Test {
 protected:
  CameraTest();
  ~CameraTest() override;

  // Writes the configuration file with these cameras.
  void Configure(const std::vector<std::string>& cameras);
  // Configure and DllRegisterServer.
  void Register(const std::vector<std::string>& cameras);

  HRESULT CallDll(const char* entry_point);

  const std::wstring& folder() const { return folder_; }
  std::wstring ConfigurationPath() const { return folder_ + L"cameras.json"; }

  // A file of the folder.
  std::string Content(const std::wstring& name) const;

 private:
  std::wstring folder_;
  HMODULE dll_ = nullptr;
};

}  // namespace test
