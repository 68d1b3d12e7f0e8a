// What registration leaves in the registry, also when it fails half way. Everything but the last
// tests works on a key of the test's own that stands for HKEY_CLASSES_ROOT.

#include "com/registration.h"

#include <array>

#include "com/identifiers.h"
#include "fixture.h"
#include "host.h"

namespace {

using virtual_camera::AddEntry;
using virtual_camera::CategoryEntry;
using virtual_camera::HasEntry;
using virtual_camera::IsRegistered;
using virtual_camera::RegisterCameras;
using virtual_camera::RegisteredConfiguration;
using virtual_camera::RemoveEntry;
using virtual_camera::UnregisterCameras;

constexpr wchar_t kTestKey[] = L"Software\\BorvanUSB registration test";
constexpr wchar_t kInstances[] = L"CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance";

class Registration : public testing::Test {
 protected:
  Registration() {
    RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey);
    RegCreateKeyExW(HKEY_CURRENT_USER, kTestKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &root_,
                    nullptr);
  }
  ~Registration() override {
    RegCloseKey(root_);
    RegDeleteTreeW(HKEY_CURRENT_USER, kTestKey);
  }

  DWORD SubkeyCount(const std::wstring& name) {
    HKEY key = nullptr;
    DWORD count = 0;
    if (RegOpenKeyExW(root_, name.c_str(), 0, KEY_READ, &key) == ERROR_SUCCESS) {
      RegQueryInfoKeyW(key, nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                       nullptr, nullptr, nullptr);
      RegCloseKey(key);
    }
    return count;
  }

  std::wstring Text(const std::wstring& key, const wchar_t* name) {
    std::array<wchar_t, 512> text = {};
    DWORD size = sizeof text;
    return RegGetValueW(root_, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text.data(), &size) ==
                   ERROR_SUCCESS
               ? text.data()
               : L"(none)";
  }

  static std::wstring ClassId() {
    std::array<wchar_t, 40> text = {};
    StringFromGUID2(virtual_camera::kClassId, text.data(), static_cast<int>(text.size()));
    return text.data();
  }

  HKEY root_ = nullptr;
};

const std::vector<CategoryEntry> kTwo = {{0, L"First", L"\\\\?\\usb#one"},
                                         {1, L"Second", L"\\\\?\\usb#two"}};

TEST_F(Registration, WritesTheClassAndOneEntryForEachCamera) {
  RegisterCameras(root_, L"C:\\folder\\some.dll", L"C:\\cameras.json", kTwo);
  EXPECT_TRUE(IsRegistered(root_));
  const std::wstring server = L"CLSID\\" + ClassId() + L"\\InprocServer32";
  EXPECT_EQ(Text(server, L""), L"C:\\folder\\some.dll");
  EXPECT_EQ(Text(server, L"ThreadingModel"), L"Both");
  EXPECT_EQ(RegisteredConfiguration(root_), L"C:\\cameras.json");
  ASSERT_EQ(SubkeyCount(kInstances), 2U);
  const std::wstring second = std::wstring(kInstances) + L"\\" + ClassId() + L"#001";
  EXPECT_EQ(Text(second, L"CLSID"), ClassId());
  EXPECT_EQ(Text(second, L"FriendlyName"), L"Second");
  EXPECT_EQ(Text(second, L"DevicePath"), L"\\\\?\\usb#two");
}

TEST_F(Registration, ReplacesThePreviousCameras) {
  RegisterCameras(root_, L"C:\\some.dll", L"C:\\cameras.json", kTwo);
  RegisterCameras(root_, L"C:\\some.dll", L"C:\\other.json", {{0, L"Third", L"\\\\?\\usb#three"}});
  EXPECT_EQ(SubkeyCount(kInstances), 1U);
  EXPECT_EQ(RegisteredConfiguration(root_), L"C:\\other.json");
}

TEST_F(Registration, LeavesOtherProgramsEntriesAlone) {
  const std::wstring other = std::wstring(kInstances) + L"\\{00000000-1111-2222-3333-444444444444}";
  HKEY key = nullptr;
  RegCreateKeyExW(root_, other.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
  RegCloseKey(key);
  RegisterCameras(root_, L"C:\\some.dll", L"C:\\cameras.json", kTwo);
  EXPECT_EQ(SubkeyCount(kInstances), 3U);
  UnregisterCameras(root_);
  EXPECT_EQ(SubkeyCount(kInstances), 1U);
}

TEST_F(Registration, UnregisteringLeavesNothing) {
  RegisterCameras(root_, L"C:\\some.dll", L"C:\\cameras.json", kTwo);
  UnregisterCameras(root_);
  EXPECT_FALSE(IsRegistered(root_));
  EXPECT_EQ(RegisteredConfiguration(root_), L"");
  EXPECT_EQ(SubkeyCount(kInstances), 0U);
  EXPECT_EQ(SubkeyCount(L"CLSID\\" + ClassId()), 0U);
}

TEST_F(Registration, UnregisteringTwiceIsNoError) {
  UnregisterCameras(root_);
  EXPECT_FALSE(IsRegistered(root_));
}

TEST_F(Registration, AHalfMadeRegistrationIsUndone) {
  // Below a key that vanishes with the session no lasting key can be made: the class can be
  // registered, the first entry can't.
  HKEY key = nullptr;
  RegCreateKeyExW(root_, L"CLSID", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
  RegCloseKey(key);
  ASSERT_EQ(RegCreateKeyExW(root_, kInstances, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                            nullptr, &key, nullptr),
            ERROR_SUCCESS);
  RegCloseKey(key);
  try {
    RegisterCameras(root_, L"C:\\some.dll", L"C:\\cameras.json", kTwo);
    FAIL() << "registered below a volatile key";
  } catch (const virtual_camera::RegistrationError& error) {
    EXPECT_LT(error.result, 0);
    EXPECT_NE(std::string(error.what()).find("#000"), std::string::npos) << error.what();
  }
  EXPECT_FALSE(IsRegistered(root_));
  EXPECT_EQ(SubkeyCount(L"CLSID"), 1U);  // the category's key, which was there before
}

TEST_F(Registration, AnEntryIsRemovedByItsPathInAnyCase) {
  RegisterCameras(root_, L"C:\\some.dll", L"C:\\cameras.json", kTwo);
  RemoveEntry(root_, L"\\\\?\\USB#ONE");
  EXPECT_EQ(SubkeyCount(kInstances), 1U);
  EXPECT_FALSE(HasEntry(root_, kTwo[0]));
  EXPECT_TRUE(HasEntry(root_, {1, L"", L"\\\\?\\USB#two"}));
  EXPECT_FALSE(HasEntry(root_, {2, L"", L"\\\\?\\usb#two"}));
  RemoveEntry(root_, L"\\\\?\\usb#one");  // gone already: no error
  EXPECT_EQ(SubkeyCount(kInstances), 1U);
  AddEntry(root_, kTwo[0]);
  EXPECT_EQ(SubkeyCount(kInstances), 2U);
}

using DllRegistration = test::CameraTest;

TEST_F(DllRegistration, AWrongFileLeavesThePreviousCamerasRegistered) {
  Register({test::FirstCamera(), test::SecondCamera()});
  Configure({R"({"name": "no path"})"});
  EXPECT_EQ(CallDll("DllRegisterServer"), static_cast<HRESULT>(0x80040201));  // SELFREG_E_CLASS
  EXPECT_EQ(host::VideoInputs().size(), 2U);
}

TEST_F(DllRegistration, UnregisteringNeedsNoFile) {
  Register({test::FirstCamera()});
  DeleteFileW(ConfigurationPath().c_str());
  EXPECT_EQ(CallDll("DllUnregisterServer"), S_OK);
  EXPECT_TRUE(host::VideoInputs().empty());
}

TEST_F(DllRegistration, TheDllMayBeUnloadedOnceNothingOfItIsLeft) {
  Register({test::FirstCamera()});
  {
    const auto control = host::OpenCamera(test::kFirstPath);
    ASSERT_TRUE(control);
    EXPECT_EQ(CallDll("DllCanUnloadNow"), S_FALSE);
  }
  EXPECT_EQ(CallDll("DllCanUnloadNow"), S_OK);
}

}  // namespace
