#include <windows.h>

#include "core/names.h"
#include "core/wide_text.h"

namespace virtual_camera {
namespace {

// Returns an empty text for a name that Windows can't complete.
std::wstring FullName(const std::wstring& name) {
  std::wstring full(MAX_PATH, L'\0');
  DWORD length =
      ::GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  while (length >= full.size()) {
    full.resize(length + 1);
    length =
        ::GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
  }
  full.resize(length);
  return full;
}

// Converts to upper case, as file systems do to compare names.
std::string UpperUtf8(const std::wstring& text) {
  if (text.empty()) {
    return {};
  }
  const int size = static_cast<int>(text.size());
  std::wstring upper(text.size(), L'\0');
  ::LCMapStringEx(LOCALE_NAME_INVARIANT, LCMAP_UPPERCASE, text.data(), size, upper.data(), size,
                  nullptr, nullptr, 0);
  return Utf8Of(upper);
}

bool Identify(const std::wstring& name, FileIdentity& identity) {
  // Folders can be opened only with backup semantics. The identity needs no access rights.
  const HANDLE file =
      ::CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) {
    return false;
  }
  BY_HANDLE_FILE_INFORMATION information{};
  const bool known = ::GetFileInformationByHandle(file, &information) != FALSE;
  ::CloseHandle(file);
  if (known) {
    identity.volume = information.dwVolumeSerialNumber;
    identity.number = std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow;
  }
  return known;
}

}  // namespace

FileIdentity IdentifyFile(const std::string& name_utf8) {
  FileIdentity identity;
  const std::wstring name = FullName(WideOf(name_utf8));
  if (Identify(name, identity)) {
    return identity;
  }
  // A folder keeps the backslash after it: "C:" alone is the current folder of that drive.
  std::size_t slash = name.find_last_of(L'\\');
  while (slash != std::wstring::npos && !Identify(name.substr(0, slash + 1), identity)) {
    slash = slash == 0 ? std::wstring::npos : name.find_last_of(L'\\', slash - 1);
  }
  identity.rest = UpperUtf8(slash == std::wstring::npos ? name : name.substr(slash));
  return identity;
}

bool SameDevicePath(const std::string& a_utf8, const std::string& b_utf8) {
  return SamePath(WideOf(a_utf8), WideOf(b_utf8));
}

}  // namespace virtual_camera
