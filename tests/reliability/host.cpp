#include "host.h"

#include <tlhelp32.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

namespace reliability {
namespace {

constexpr char kClassKey[] = "Software\\Classes\\CLSID\\{8E3B6C1F-52D4-4F0A-9C77-31B2A6E4D905}";
constexpr char kListKey[] =
    "Software\\Classes\\CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance\\"
    "{8E3B6C1F-52D4-4F0A-9C77-31B2A6E4D905}";
constexpr char kName[] = "Camera in memory";

void SetText(const std::string& key, const char* name, const std::string& text) {
  if (RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ, text.c_str(),
                      static_cast<DWORD>(text.size() + 1)) != ERROR_SUCCESS) {
    throw std::runtime_error("the camera can't be registered under " + key);
  }
}

std::string PathOf(const char* module) {
  std::array<char, 1024> path = {};
  GetModuleFileNameA(GetModuleHandleA(module), path.data(), static_cast<DWORD>(path.size()));
  return path.data();
}

template <class Function>
void Find(HMODULE module, const char* name, Function*& function) {
  // FARPROC stands for any function type, which a direct cast would be warned about.
  function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  if (function == nullptr) {
    throw std::runtime_error(std::string(name) + " is not exported");
  }
}

int NumberOf(const char* variable, int usual) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? usual : static_cast<int>(std::strtol(text, nullptr, 10));
}

}  // namespace

CameraRegistration::CameraRegistration() {
  const std::string server = std::string(kClassKey) + "\\InprocServer32";
  SetText(server, nullptr, PathOf("memory_camera.dll"));
  SetText(server, "ThreadingModel", "Both");
  ShowCamera();
}

CameraRegistration::~CameraRegistration() {
  HideCamera();
  static_cast<void>(RegDeleteTreeA(HKEY_LOCAL_MACHINE, kClassKey));
}

void HideCamera() {
  static_cast<void>(RegDeleteTreeA(HKEY_LOCAL_MACHINE, kListKey));
}

void ShowCamera() {
  SetText(kListKey, "CLSID", "{8E3B6C1F-52D4-4F0A-9C77-31B2A6E4D905}");
  SetText(kListKey, "FriendlyName", kName);
  SetText(kListKey, "DevicePath", "\\\\?\\usb#vid_0001&pid_0003#memory");
}

Library LoadBorvanUsb() {
  Library library = {};
  library.module = LoadLibraryA("BorvanUSB_x64.dll");
  if (library.module == nullptr) {
    throw std::runtime_error("BorvanUSB_x64.dll must lie beside the program");
  }
  Find(library.module, "UsbIniDevice", library.ini);
  Find(library.module, "UsbDestroyUSB", library.destroy);
  Find(library.module, "UsbUpdateDevice", library.update);
  Find(library.module, "UsbGetDeviceNum", library.count);
  Find(library.module, "UsbGetAllDeviceInfo", library.all);
  Find(library.module, "UsbSelectDevice", library.select);
  Find(library.module, "UsbRegisterRead", library.register_read);
  Find(library.module, "UsbFlashWriteFile", library.flash_write_file);
  Find(library.module, "UsbFlashQuickReadFile", library.flash_read_file);
  Find(library.module, "UsbRegisterWriteFile", library.register_write_file);
  Find(library.module, "UsbRegisterReadFile", library.register_read_file);
  Find(library.module, "UsbI2CWriteFile", library.i2c_write_file);
  Find(library.module, "UsbI2CReadFile", library.i2c_read_file);
  Find(library.module, "GetProgressInfo", library.progress);
  return library;
}

std::int32_t FindCamera(const Library& library) {
  // The records are nobody's to free: a test that looked into them each time would grow by them.
  for (std::int32_t index = library.count() - 1; index >= 0; --index) {
    if (library.count() == 1) {
      return 0;
    }
    const UsbDeviceInfo* const all = library.all();
    if (std::strncmp(all[index].name, kName, sizeof all[index].name) == 0) {
      return index;
    }
  }
  return -1;
}

bool Start(const Library& library) {
  if (library.ini() < 0) {
    return false;
  }
  const std::int32_t index = FindCamera(library);
  return index >= 0 && library.select(index);
}

JobFiles::JobFiles() {
  const std::filesystem::path folder =
      std::filesystem::temp_directory_path() /
      ("borvan_reliability_" + std::to_string(GetCurrentProcessId()));
  std::filesystem::create_directories(folder);
  folder_ = folder.string() + "\\";
  Put("image", std::string(61, '\x11'));
  Put("registers.txt", "0xfffd,0x00,\n0x10,0x01,\n0x30,0x02,\n");
  Put("i2c.txt", "0xfff8,0x6c,\n0xfffe,0x03,\n0x10,0x01,\n");
}

JobFiles::~JobFiles() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void JobFiles::Put(const std::string& name, const std::string& content) const {
  std::ofstream(Path(name), std::ios::binary) << content;
}

bool JobFiles::Run(const Library& library, Job job, int number) const {
  const std::string output = Path("output" + std::to_string(number));
  switch (job) {
    case kFlashWrite:
      return library.flash_write_file(Path("image").c_str(), 0);
    case kFlashRead:
      return library.flash_read_file(output.c_str(), 0, 64);
    case kRegisterWrite:
      return library.register_write_file(Path("registers.txt").c_str());
    case kRegisterRead:
      return library.register_read_file(output.c_str(), 0, 56);
    case kI2cWrite:
      return library.i2c_write_file(Path("i2c.txt").c_str(), 0);
    default:
      return library.i2c_read_file(0, 1, output.c_str(), 0x6C, 0);
  }
}

std::size_t Handles() {
  // GetProcessHandleCount has no answer everywhere; each value that could be a handle has one.
  constexpr std::uintptr_t kLast = 0x40000;
  std::size_t count = 0;
  for (std::uintptr_t value = 4; value < kLast; value += 4) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE) {
      ++count;
    }
  }
  return count;
}

std::size_t Threads() {
  const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  THREADENTRY32 entry = {};
  entry.dwSize = sizeof entry;
  std::size_t count = 0;
  for (BOOL more = Thread32First(snapshot, &entry); more != FALSE;
       more = Thread32Next(snapshot, &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
      ++count;
    }
  }
  CloseHandle(snapshot);
  return count;
}

Memory HeapMemory() {
  std::array<HANDLE, 64> heaps = {};
  const DWORD count = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
  Memory memory;
  for (DWORD i = 0; i < count && i < heaps.size(); ++i) {
    PROCESS_HEAP_ENTRY entry = {};
    HeapLock(heaps.at(i));
    while (HeapWalk(heaps.at(i), &entry) != FALSE) {
      if ((entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0) {
        ++memory.blocks;
        memory.bytes += entry.cbData;
      }
    }
    HeapUnlock(heaps.at(i));
  }
  return memory;
}

bool ThreadsBecome(std::size_t count) {
  constexpr DWORD kStep = 20;
  constexpr DWORD kLongest = 60'000;
  for (DWORD waited = 0; waited < kLongest; waited += kStep) {
    if (Threads() <= count) {
      return true;
    }
    Sleep(kStep);
  }
  return false;
}

void WaitForClearTasks() {
  constexpr DWORD kSecondMoreThanOneTakes = 4'000;
  Sleep(kSecondMoreThanOneTakes);
}

int Rounds(int usual) {
  return NumberOf("BORVAN_ROUNDS", usual);
}

std::mt19937 RandomOf(int round) {
  return std::mt19937(static_cast<std::uint32_t>(round + NumberOf("BORVAN_SEED", 0) * 1'000'003));
}

int Below(std::mt19937& random, int limit) {
  return static_cast<int>(random() % static_cast<std::uint32_t>(limit));
}

}  // namespace reliability
