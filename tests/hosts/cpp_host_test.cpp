// A host in C++ built with the library's compiler catches exceptions by their type, although it is
// linked with a C++ runtime of its own.

#include <cerrno>
#include <new>
#include <string>
#include <system_error>

#include <borvan_library_version.h>

#include "hosts/export_calls.h"
#include "hosts/hosts_rig.h"
#include "hosts/library_imports.h"

namespace {

class CppHost : public test::HostsRig {
 protected:
  CppHost() {
    UsbIniDevice();
    EXPECT_EQ(UsbGetDeviceNum(), 2);
  }

  static void SelectAndAccess() {
    ASSERT_TRUE(UsbSelectDevice(kGood));
    std::uint32_t value = 0;
    EXPECT_TRUE(UsbRegisterWrite(0x100, 0x5A, kBorvanRegisterByte));
    EXPECT_TRUE(UsbRegisterRead(0x100, &value, kBorvanRegisterByte));
    EXPECT_EQ(value, 0x5AU);
  }

  // The type and the text of what a call raises; empty when it returns.
  static std::string RaisedBy(int call) {
    try {
      MakeExportCall(call);
    } catch (const std::system_error& error) {
      EXPECT_EQ(error.code().value(), EAGAIN);  // the category is one of the library's own runtime
      return std::string("std::system_error: ") + error.what();
    } catch (const std::bad_alloc& error) {
      return std::string("std::bad_alloc: ") + error.what();
    }
    return "";
  }

  static bool RaisesBadAlloc(int call) {
    const std::string raised = RaisedBy(call);
    EXPECT_TRUE(raised.empty() || raised == "std::bad_alloc: std::bad_alloc") << raised;
    return !raised.empty();
  }

  static std::string SelectGone() {
    try {
      UsbSelectDevice(kGone);
    } catch (const char* message) {
      return message;
    }
    return "";
  }
};

// The version resource of the DLL, read as any host reads it, against the macros of the header.
TEST(LibraryVersion, IsThatOfTheHeaders) {
  EXPECT_EQ(borvan_library_version(), BORVAN_USB_VERSION_NUMBER);
}

TEST(LibraryVersion, IsThatOfAnyLibraryWithAVersion) {
  // Windows' own; Wine 8 gives it 10.0, as Windows 10 does, or 6.1 for Windows 7.
  EXPECT_GE(borvan_version_of_library(GetModuleHandleA("kernel32.dll")), 6000000U);
}

TEST(LibraryVersion, IsZeroWithoutALibraryAndWithoutAResource) {
  EXPECT_EQ(borvan_version_of_library(nullptr), 0U);
  EXPECT_EQ(borvan_version_of_library(GetModuleHandleA(nullptr)), 0U);  // this program has none
}

TEST_F(CppHost, CatchesTheMessageTwiceInARowAndGoesOn) {
  EXPECT_EQ(SelectGone(), "ERROR: gcap.pmVideo->BindToObject failed");
  EXPECT_EQ(SelectGone(), "ERROR: gcap.pmVideo->BindToObject failed");
  SelectAndAccess();
}

TEST_F(CppHost, SelectsWithoutExceptions) {
  const char* message = "";
  EXPECT_FALSE(borvan_select_device(2, &message));
  EXPECT_EQ(message, nullptr);
  for (int i = 0; i < 2; ++i) {
    EXPECT_FALSE(borvan_select_device(kGone, &message));
    EXPECT_STREQ(message, "ERROR: gcap.pmVideo->BindToObject failed");
  }
  EXPECT_TRUE(borvan_select_device(kGood, &message));
  EXPECT_EQ(message, nullptr);
  SelectAndAccess();
}

TEST_F(CppHost, CatchesASystemErrorFromEveryJobStarterThatGetsNoThread) {
  SelectAndAccess();
  const std::system_error expected(std::make_error_code(std::errc::resource_unavailable_try_again));
  void* const begin_thread = ReplaceImport("_beginthreadex", reinterpret_cast<void*>(&NoThread));
  ASSERT_NE(begin_thread, nullptr);
  for (int i = 0; i < kJobStarterCount; ++i) {
    EXPECT_EQ(RaisedBy(i), std::string("std::system_error: ") + expected.what())
        << kExportCalls[i].name;
  }
  ReplaceImport("_beginthreadex", begin_thread);
  SelectAndAccess();
}

TEST_F(CppHost, CatchesBadAllocFromEveryCallThatGetsNoMemory) {
  ASSERT_TRUE(TakeOverMalloc());
  for (int i = 0; i < kExportCallCount; ++i) {
    const int raised = TimesRaisedWithoutMemory(i, RaisesBadAlloc);
    EXPECT_GE(raised, 0) << kExportCalls[i].name;
    EXPECT_EQ(raised > 0, kExportCalls[i].allocates) << kExportCalls[i].name << ' ' << raised;
  }
  GiveMallocBack();
  EXPECT_GE(UsbIniDevice(), 0);
  SelectAndAccess();
}

}  // namespace
