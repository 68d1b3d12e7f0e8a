// The test program. Started with "--program PATH ADDRESS COUNT" it is the other process of a test:
// it programs COUNT words of a camera's flash from ADDRESS on, the n-th with n. Started with
// "--touch PATH" it only asks for a length and makes one transfer. Exit code 0: all was answered.

#include <gtest/gtest.h>
#include <objbase.h>

#include <cwchar>
#include <string>

#include "host.h"

namespace {

int Program(const std::wstring& path, std::uint32_t address, std::uint32_t count) {
  const auto control = host::OpenCamera(path);
  if (!control) {
    return 3;
  }
  for (std::uint32_t i = 0; i < count; ++i) {
    if (!host::ProgramWord(control.Get(), address + 4 * i, i)) {
      return 4;
    }
  }
  return 0;
}

int Touch(const std::wstring& path) {
  const auto control = host::OpenCamera(path);
  if (!control) {
    return 3;
  }
  std::uint8_t value = 0;
  return host::ReadRegister(control.Get(), 0x100, &value) ? 0 : 4;
}

std::uint32_t Number(const wchar_t* text) {
  return static_cast<std::uint32_t>(std::wcstoul(text, nullptr, 0));
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  const std::wstring mode = argc > 1 ? argv[1] : L"";
  if (mode == L"--program" || mode == L"--touch") {
    CoInitialize(nullptr);
    return mode == L"--touch" ? Touch(argv[2]) : Program(argv[2], Number(argv[3]), Number(argv[4]));
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
