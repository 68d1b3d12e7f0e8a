#include "windows/windows_library_platform.h"

#include <windows.h>

#include <tlhelp32.h>

#include <algorithm>
#include <array>
#include <vector>

#include "base/failure.h"
#include "base/numbers.h"
#include "dll/scratch_names.h"
#include "windows/handle.h"
#include "windows/text.h"
#include "windows/video_devices.h"

namespace borvanusb {

namespace {

constexpr std::size_t kLongestName = 32768;
// The library's file functions accept 260 characters. Our file names need some of them.
constexpr std::size_t kLongestFolder = 200;
constexpr int kRemoveTries = 50;
constexpr DWORD kRemoveInterval = 2;

// The folder's name if the library can use it, otherwise its short name.
std::wstring UsableByLibrary(const std::wstring& folder) {
  if (ToAnsi(folder) && folder.size() < kLongestFolder) {
    return folder;
  }
  std::wstring name(kLongestName, L'\0');
  name.resize(GetShortPathNameW(folder.c_str(), name.data(), static_cast<DWORD>(name.size())));
  return !name.empty() && ToAnsi(name) && name.size() < kLongestFolder ? name : std::wstring();
}

bool CanWriteTo(const std::wstring& folder) {
  const std::wstring name =
      folder + L"borvanusb-" + std::to_wstring(GetCurrentProcessId()) + L".try";
  const UniqueHandle file(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                      FILE_FLAG_DELETE_ON_CLOSE, nullptr));
  return file.get() != INVALID_HANDLE_VALUE;
}

std::wstring FolderOf(DWORD (*get)(DWORD, wchar_t*)) {
  std::wstring name(kLongestName, L'\0');
  name.resize(get(static_cast<DWORD>(name.size()), name.data()));
  return name;
}

// A folder for scratch files: the user's own or, if its name is not possible in the code page, a
// folder that all users can write to.
std::wstring FindScratchFolder() {
  std::vector<std::wstring> folders = {
      FolderOf([](DWORD size, wchar_t* name) { return GetTempPathW(size, name); }),
      FolderOf([](DWORD size, wchar_t* name) { return GetCurrentDirectoryW(size, name); }),
      FolderOf(
          [](DWORD size, wchar_t* name) { return GetEnvironmentVariableW(L"PUBLIC", name, size); }),
      FolderOf([](DWORD size, wchar_t* name) {
        return GetEnvironmentVariableW(L"ProgramData", name, size);
      }),
  };
  for (const std::wstring& folder : folders) {
    std::wstring usable = folder.empty() ? folder : UsableByLibrary(folder);
    if (!usable.empty() && usable.back() != L'\\') {
      usable += L'\\';
    }
    if (!usable.empty() && CanWriteTo(usable)) {
      return usable;
    }
  }
  throw Failure(ExitCode::kFile, "there is no folder for temporary files that the library can use",
                "Set TEMP to a folder whose name has letters of the system's code page only.");
}

// Whether a process with this id is running. Also true if this is unknown.
bool IsAlive(std::uint32_t process) {
  const UniqueHandle handle(OpenProcess(SYNCHRONIZE, FALSE, process));
  if (handle == nullptr) {
    return GetLastError() != ERROR_INVALID_PARAMETER;
  }
  return WaitForSingleObject(handle.get(), 0) != WAIT_OBJECT_0;
}

// Removes scratch files of killed processes, and of jobs that kept them open. Each may contain a
// part of a camera's flash.
void RemoveLeftFiles(const std::wstring& folder) {
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW((folder + L"borvanusb-*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    return;
  }
  do {
    const auto owner = ScratchOwner(borvanusb::ToUtf8(found.cFileName));
    if ((found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 && owner && !IsAlive(*owner)) {
      DeleteFileW((folder + found.cFileName).c_str());
    }
  } while (FindNextFileW(search, &found) != FALSE);
  FindClose(search);
}

// FNV-1a, to shorten a long name.
std::uint64_t Digest(std::string_view text) {
  std::uint64_t digest = 0xCBF29CE484222325;
  for (const char character : text) {
    digest = (digest ^ static_cast<std::uint8_t>(character)) * 0x100000001B3;
  }
  return digest;
}

// Lower case as in the library's paths: only A to Z are converted.
std::string InLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                                : character;
  });
  return text;
}

class MutexLock : public LibraryPlatform::CameraLock {
 public:
  explicit MutexLock(UniqueHandle mutex) : mutex_(std::move(mutex)) {}
  ~MutexLock() override { ReleaseMutex(mutex_.get()); }
  MutexLock(const MutexLock&) = delete;
  MutexLock& operator=(const MutexLock&) = delete;

 private:
  UniqueHandle mutex_;
};

}  // namespace

LibraryPlatform::ScratchFile WindowsLibraryPlatform::NewScratchFile(std::string_view extension) {
  if (scratch_folder_.empty()) {
    scratch_folder_ = FindScratchFolder();
    RemoveLeftFiles(scratch_folder_);
  }
  // A process id alone is not unique: it may be reused while an old file exists.
  LARGE_INTEGER ticks{};
  QueryPerformanceCounter(&ticks);
  const std::wstring name =
      scratch_folder_ +
      ToWide(ScratchName(GetCurrentProcessId(), static_cast<std::uint64_t>(ticks.QuadPart),
                         ++scratch_files_, extension));
  return {ToAnsi(name).value_or(""), borvanusb::ToUtf8(name)};
}

void WindowsLibraryPlatform::RemoveScratchFile(const ScratchFile& file) {
  const std::wstring name = ToWide(file.name);
  // Retries, because a job closes its file just after reporting its end.
  for (int i = 0; i < kRemoveTries; ++i) {
    if (DeleteFileW(name.c_str()) != FALSE || GetLastError() == ERROR_FILE_NOT_FOUND) {
      return;
    }
    ::Sleep(kRemoveInterval);
  }
}

LibraryPlatform::ScratchState WindowsLibraryPlatform::Look(const ScratchFile& file) {
  const UniqueHandle handle(CreateFileW(ToWide(file.name).c_str(), GENERIC_READ, 0, nullptr,
                                        OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() == INVALID_HANDLE_VALUE) {
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return {!missing, !missing, 0};
  }
  LARGE_INTEGER size{};
  const bool told = GetFileSizeEx(handle.get(), &size) != FALSE;
  return {true, !told, told ? static_cast<std::uint64_t>(size.QuadPart) : 0};
}

std::optional<std::vector<std::uint32_t>> WindowsLibraryPlatform::Threads() {
  const UniqueHandle snapshot(CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0));
  if (snapshot.get() == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  std::vector<std::uint32_t> threads;
  THREADENTRY32 entry{};
  entry.dwSize = sizeof entry;
  for (BOOL more = Thread32First(snapshot.get(), &entry); more != FALSE;
       more = Thread32Next(snapshot.get(), &entry)) {
    if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
      threads.push_back(entry.th32ThreadID);
    }
  }
  // The list is only valid if it contains the calling thread.
  const bool whole =
      std::find(threads.begin(), threads.end(), GetCurrentThreadId()) != threads.end();
  return whole ? std::optional(std::move(threads)) : std::nullopt;
}

// Under Wine, each thread needs several file descriptors of the process, which are limited to 1024.
std::size_t WindowsLibraryPlatform::MostClearTasks() const {
  constexpr std::size_t kMost = 100;
  return kMost;
}

std::string WindowsLibraryPlatform::ToUtf8(std::string_view text) {
  return AnsiToUtf8(text);
}

std::optional<std::string> WindowsLibraryPlatform::DeviceName(const std::string& path) {
  std::vector<VideoDevice> devices;
  ListVideoDevices(devices);
  const auto device = std::find_if(
      devices.begin(), devices.end(),
      [&](const VideoDevice& candidate) { return InLowerCase(candidate.path) == path; });
  if (device == devices.end() || device->name.empty()) {
    return std::nullopt;
  }
  return device->name;
}

std::string WindowsLibraryPlatform::SystemMessage(std::uint32_t status) {
  return borvanusb::SystemMessage(status);
}

void WindowsLibraryPlatform::Sleep(std::chrono::milliseconds time) {
  ::Sleep(static_cast<DWORD>(time.count()));
}

std::unique_ptr<LibraryPlatform::CameraLock> WindowsLibraryPlatform::LockCamera(
    const std::string& path, std::chrono::milliseconds limit) {
  const std::wstring name = L"BorvanUSB-" + ToWide(Hex(Digest(path)).substr(2));
  // The camera is shared by the sessions of all users. If global names are not permitted, uses a
  // name of this session.
  UniqueHandle mutex(
      CreateMutexExW(nullptr, (L"Global\\" + name).c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE));
  if (mutex == nullptr && GetLastError() != ERROR_ACCESS_DENIED) {
    mutex.reset(
        CreateMutexExW(nullptr, (L"Local\\" + name).c_str(), 0, SYNCHRONIZE | MUTEX_MODIFY_STATE));
  }
  if (mutex == nullptr) {
    return nullptr;  // in use by another user's program
  }
  // Also succeeds if the previous owner ended without releasing it.
  const DWORD result = WaitForSingleObject(mutex.get(), static_cast<DWORD>(limit.count()));
  if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED) {
    return nullptr;
  }
  return std::make_unique<MutexLock>(std::move(mutex));
}

}  // namespace borvanusb
