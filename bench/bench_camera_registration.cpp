#include "bench_camera_registration.h"

#include <windows.h>

#include <string>

#include "bench_library.h"

namespace bench {
namespace {

constexpr char kClassId[] = "{5B0E7A54-3C1D-4E0B-9B52-7D0C64F1A2E8}";
constexpr char kClassesRoot[] = "Software\\Classes\\CLSID\\";
constexpr char kVideoInputs[] = "{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance\\";

std::string ClassKey() {
  return std::string(kClassesRoot) + kClassId;
}

std::string CategoryKey() {
  return std::string(kClassesRoot) + kVideoInputs + kClassId;
}

void SetText(const std::string& key, const char* name, const std::string& text) {
  const LSTATUS result = RegSetKeyValueA(HKEY_LOCAL_MACHINE, key.c_str(), name, REG_SZ,
                                         text.c_str(), static_cast<DWORD>(text.size() + 1));
  Require(result == ERROR_SUCCESS, "the camera can't be registered under " + key);
}

std::string CameraPath() {
  char path[MAX_PATH] = {};
  const DWORD length = GetModuleFileNameA(GetModuleHandleA("bench_camera.dll"), path, MAX_PATH);
  Require(length > 0 && length < MAX_PATH, "the path of bench_camera.dll can't be told");
  return path;
}

}  // namespace

CameraRegistration::CameraRegistration() {
  const std::string server = ClassKey() + "\\InprocServer32";
  SetText(server, nullptr, CameraPath());
  SetText(server, "ThreadingModel", "Both");
  SetText(CategoryKey(), "CLSID", kClassId);
  SetText(CategoryKey(), "FriendlyName", "Flash in memory");
  SetText(CategoryKey(), "DevicePath", "\\\\?\\usb#vid_0001&pid_0002#bench");
}

CameraRegistration::~CameraRegistration() {
  static_cast<void>(RegDeleteTreeA(HKEY_LOCAL_MACHINE, CategoryKey().c_str()));
  static_cast<void>(RegDeleteTreeA(HKEY_LOCAL_MACHINE, ClassKey().c_str()));
}

}  // namespace bench
