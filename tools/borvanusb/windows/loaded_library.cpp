#include "windows/loaded_library.h"

#include <windows.h>

#include <cstddef>
#include <cstring>
#include <memory>
#include <type_traits>

#include "base/format.h"
#include "windows/text.h"

namespace borvanusb {

namespace {

constexpr const wchar_t* kFileName = L"BorvanUSB_x64.dll";
constexpr const wchar_t* kVariable = L"BORVANUSB_DLL";
constexpr std::size_t kLongestName = 32768;

// Offset of the record with the version numbers. It follows three 16-bit numbers and
// "VS_VERSION_INFO" with its terminating zero, padded to 32 bits.
constexpr std::size_t kFixedInfoPlace = 40;
// RT_VERSION as a wide string; the header defines it only for the build's character type.
const wchar_t* const kVersionType = MAKEINTRESOURCEW(16);
constexpr DWORD kFixedInfoSignature = 0xFEEF04BD;

struct LibraryFreer {
  void operator()(HMODULE library) const { FreeLibrary(library); }
};
using LibraryAsData = std::unique_ptr<std::remove_pointer_t<HMODULE>, LibraryFreer>;

bool IsFile(const std::wstring& name) {
  const DWORD attributes = GetFileAttributesW(name.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

std::wstring FullName(const std::wstring& name) {
  std::wstring full(kLongestName, L'\0');
  full.resize(
      GetFullPathNameW(name.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr));
  return full;
}

}  // namespace

std::wstring ProgramFile() {
  std::wstring name(kLongestName, L'\0');
  name.resize(GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size())));
  return name;
}

std::wstring EnvironmentVariable(const wchar_t* name) {
  std::wstring value(kLongestName, L'\0');
  value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
  return value;
}

// Reads the file as data instead of using version.dll. Windows may load that DLL from the program's
// folder, so a foreign file there would be executed.
std::string FileVersion(const std::wstring& file) {
  const LibraryAsData library(LoadLibraryExW(
      file.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
  const HRSRC place =
      library ? FindResourceW(library.get(), MAKEINTRESOURCEW(VS_VERSION_INFO), kVersionType)
              : nullptr;
  const HGLOBAL resource = place != nullptr ? LoadResource(library.get(), place) : nullptr;
  const void* const content = resource != nullptr ? LockResource(resource) : nullptr;
  VS_FIXEDFILEINFO info = {};
  if (content == nullptr || SizeofResource(library.get(), place) < kFixedInfoPlace + sizeof(info)) {
    return {};
  }
  std::memcpy(&info, static_cast<const std::byte*>(content) + kFixedInfoPlace, sizeof(info));
  if (info.dwSignature != kFixedInfoSignature) {
    return {};
  }
  return Format("{}.{}.{}", HIWORD(info.dwFileVersionMS), LOWORD(info.dwFileVersionMS),
                HIWORD(info.dwFileVersionLS));
}

LoadedLibrary LoadedLibrary::Load() {
  LoadedLibrary library;
  std::wstring file = EnvironmentVariable(kVariable);
  if (!file.empty()) {
    file = FullName(file);
    library.places_.push_back(Format("{} (BORVANUSB_DLL)", ToUtf8(file)));
  } else {
    const std::wstring program = ProgramFile();
    file = program.substr(0, program.find_last_of(L"\\/") + 1) + kFileName;
    library.places_.push_back(ToUtf8(file));
  }
  if (!IsFile(file)) {
    library.problem_ = Format("BorvanUSB_x64.dll is not found: there is no file {}", ToUtf8(file));
    return library;
  }
  library.file_ = ToUtf8(file);
  library.version_ = FileVersion(file);
  library.LoadFile(file);
  return library;
}

void LoadedLibrary::LoadFile(const std::wstring& file) {
  const HMODULE module = LoadLibraryExW(
      file.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (module == nullptr) {
    const DWORD error = GetLastError();
    problem_ =
        Format("{} can't be loaded: {}", file_,
               error == ERROR_BAD_EXE_FORMAT ? "it is no 64-bit library" : SystemMessage(error));
    return;
  }
  ForEachExport(exports_, [&](const char* name, auto& function) {
    using Function = std::remove_reference_t<decltype(function)>;
    function = reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
    if (function == nullptr && problem_.empty()) {
      problem_ =
          Format("{} lacks the function {}: it is another library, or an older one", file_, name);
    }
  });
}

}  // namespace borvanusb
