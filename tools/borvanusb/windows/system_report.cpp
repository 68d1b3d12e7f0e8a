#include "windows/system_report.h"

#include <windows.h>

#include <array>

#include "base/format.h"
#include "base/version.h"
#include "windows/system_library.h"
#include "windows/text.h"
#include "windows/video_devices.h"

namespace borvanusb {

namespace {

constexpr int kBitsPerByte = 8;
constexpr std::array<const wchar_t*, 5> kVariables = {L"BORVANUSB_CAMERA", L"BORVANUSB_DLL",
                                                      L"BORVANUSB_JOURNALS",
                                                      L"BORVAN_VIRTUAL_CAMERA", L"TEMP"};

template <typename Function>
Function SystemFunction(const char* name) {
  Function function = nullptr;
  FindFunction(GetModuleHandleW(L"ntdll.dll"), name, function);
  return function;
}

std::string SystemName() {
  std::string name = "Windows";
  RTL_OSVERSIONINFOW version{};
  version.dwOSVersionInfoSize = sizeof(version);
  // The documented function returns the version that the program was built for.
  const auto query = SystemFunction<LONG(WINAPI*)(RTL_OSVERSIONINFOW*)>("RtlGetVersion");
  if (query != nullptr && query(&version) == 0) {
    name +=
        Format(" {}.{}.{}", version.dwMajorVersion, version.dwMinorVersion, version.dwBuildNumber);
  }
  const auto wine = SystemFunction<const char*(__cdecl*)()>("wine_get_version");
  return wine != nullptr ? Format("{} (Wine {})", name, wine()) : name;
}

}  // namespace

SystemReport ExamineWindows(const LoadedLibrary& library) {
  SystemReport report;
  report.program = ToUtf8(ProgramFile());
  report.program_version = kToolVersion;
  report.pointer_bits = static_cast<int>(sizeof(void*)) * kBitsPerByte;
  report.system = SystemName();
  report.code_page = std::to_string(GetACP());
  report.library = library.File();
  report.library_version = library.Version();
  report.library_problem = library.Problem();
  report.library_places = library.Places();
  report.com_problem = ListVideoDevices(report.devices);
  for (const wchar_t* const variable : kVariables) {
    const std::wstring value = EnvironmentVariable(variable);
    if (!value.empty()) {
      report.environment.emplace_back(ToUtf8(variable), ToUtf8(value));
    }
  }
  return report;
}

}  // namespace borvanusb
