#include "device/windows_platform.h"

#include <windows.h>

#include <limits>
#include <utility>

namespace borvan {
namespace {

class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;
  ~FileHandle() {
    if (IsOpen()) {
      CloseHandle(handle_);
    }
  }
  bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }

 private:
  const HANDLE handle_;
};

}  // namespace

WindowsMoniker::WindowsMoniker(Microsoft::WRL::ComPtr<IMoniker> moniker)
    : moniker_(std::move(moniker)) {}

IMoniker* WindowsMoniker::Get() const {
  return moniker_.Get();
}

void WindowsPlatform::InitialiseCom() {
  // A thread that has chosen another apartment keeps it; enumeration works there too.
  static_cast<void>(CoInitialize(nullptr));
}

std::optional<SystemVersion> WindowsPlatform::GetSystemVersion() {
  OSVERSIONINFOEXA version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  static_assert(sizeof(version) == 156);
#if defined(_MSC_VER)
#pragma warning(suppress : 4996 28159)  // returns the version for the host's manifest, as wanted
#endif
  if (GetVersionExA(reinterpret_cast<OSVERSIONINFOA*>(&version)) == 0) {
    return std::nullopt;
  }
  return SystemVersion{version.dwMajorVersion, version.dwMinorVersion};
}

std::string WindowsPlatform::ToAnsi(std::u16string_view wide) {
  if (wide.empty() || wide.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    return {};
  }
  const auto* const source = reinterpret_cast<const wchar_t*>(wide.data());
  const int source_length = static_cast<int>(wide.size());
  // Without best-fit characters: a path must not silently become another path.
  const int length = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, source, source_length,
                                         nullptr, 0, nullptr, nullptr);
  if (length <= 0) {
    return {};
  }
  std::string text(static_cast<std::size_t>(length), '\0');
  WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, source, source_length, text.data(), length,
                      nullptr, nullptr);
  return text;
}

std::uint32_t WindowsPlatform::TryOpenExclusively(const std::string& path) {
  const FileHandle file(CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  return file.IsOpen() ? ERROR_SUCCESS : GetLastError();
}

std::string WindowsPlatform::SystemMessage(std::uint32_t code) {
  char* text = nullptr;
  const DWORD length = FormatMessageA(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, code, 0, reinterpret_cast<char*>(&text), 0, nullptr);
  if (length == 0 || text == nullptr) {
    return {};
  }
  const std::unique_ptr<char, decltype(&LocalFree)> owner(text, &LocalFree);
  return {text, length};
}

}  // namespace borvan
