#include "com/configuration_file.h"

#include <windows.h>

#include "core/configuration.h"
#include "core/wide_text.h"

namespace virtual_camera {
namespace {

std::wstring EnvironmentText(const std::wstring& name) {
  std::wstring value;
  DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0);
  // Another thread may lengthen the value between the two calls.
  while (size > value.size()) {
    value.resize(size);
    size = GetEnvironmentVariableW(name.c_str(), value.data(), static_cast<DWORD>(value.size()));
  }
  value.resize(size);
  return value;
}

}  // namespace

std::string ProcessTraceFile() {
  return Utf8Of(EnvironmentText(WideOf(kTraceVariable)));
}

std::string ConfigurationFile() {
  const std::wstring named = EnvironmentText(kConfigurationVariable);
  if (!named.empty()) {
    return Utf8Of(named);
  }
  std::wstring folder = EnvironmentText(L"ProgramData");
  if (folder.empty()) {
    folder = L"C:\\ProgramData";
  }
  return Utf8Of(folder + L"\\BorvanUSB\\virtual-camera.json");
}

}  // namespace virtual_camera
