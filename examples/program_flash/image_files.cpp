#include "image_files.h"

#include <windows.h>

#include <fstream>
#include <limits>

namespace {

// A file handle that closes itself.
class File {
 public:
  File(const std::string& name, DWORD access, DWORD sharing)
      : handle_(CreateFileA(name.c_str(), access, sharing, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {}
  ~File() {
    if (IsOpen()) {
      CloseHandle(handle_);
    }
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  HANDLE Handle() const { return handle_; }

 private:
  HANDLE handle_;
};

bool Identify(const std::string& name, BY_HANDLE_FILE_INFORMATION& identity) {
  const File file(name, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE);
  return file.IsOpen() && GetFileInformationByHandle(file.Handle(), &identity) != 0;
}

}  // namespace

bool ReadWholeFile(const std::string& file_name, std::vector<std::uint8_t>& bytes) {
  std::ifstream file(file_name, std::ios::binary | std::ios::ate);
  const std::streamoff length = file ? static_cast<std::streamoff>(file.tellg()) : -1;
  // A longer one has addresses that no flash has; it need not be read to be refused.
  if (length < 0 || length > std::numeric_limits<std::uint32_t>::max()) {
    return false;
  }
  bytes.resize(static_cast<std::size_t>(length));
  file.seekg(0);
  file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(length));
  return static_cast<bool>(file);
}

bool IsSameFile(const std::string& left, const std::string& right) {
  BY_HANDLE_FILE_INFORMATION one{};
  BY_HANDLE_FILE_INFORMATION other{};
  return Identify(left, one) && Identify(right, other) &&
         one.dwVolumeSerialNumber == other.dwVolumeSerialNumber &&
         one.nFileIndexHigh == other.nFileIndexHigh && one.nFileIndexLow == other.nFileIndexLow;
}

bool RemoveFile(const std::string& file_name) {
  return DeleteFileA(file_name.c_str()) != 0 || GetLastError() == ERROR_FILE_NOT_FOUND;
}

FileState LookAtFile(const std::string& file_name) {
  FileState state;
  // Opening it for nobody else fails as long as anybody has it open.
  const File file(file_name, GENERIC_READ, 0);
  if (!file.IsOpen()) {
    state.in_use = GetLastError() == ERROR_SHARING_VIOLATION;
    state.exists = state.in_use;
    return state;
  }
  LARGE_INTEGER length{};
  state.exists = true;
  state.length =
      GetFileSizeEx(file.Handle(), &length) != 0 ? static_cast<std::uint64_t>(length.QuadPart) : 0;
  return state;
}
