// What ends a host's process and what must not: each case in a process of its own.

#include "rig.h"

namespace {

// What using null ends with; a build that traps undefined behaviour notices it a moment earlier.
#if defined(BORVAN_TRAP_UNDEFINED)
constexpr DWORD kFault = EXCEPTION_ILLEGAL_INSTRUCTION;
#else
constexpr DWORD kFault = EXCEPTION_ACCESS_VIOLATION;
#endif

class LibraryProcess : public test::Rig {
 protected:
  static DWORD Call(const std::string& name, const std::string& after) {
    return test::RunProgram("windows_library_test.exe --call " + name + " " + after);
  }
};

TEST_F(LibraryProcess, FaultsWhenItUsesAnInstanceThatWasNeverMade) {
  for (const char* const name : {"UsbGetDeviceNum", "UsbGetAllDeviceInfo", "UsbGetSelectDeviceInfo",
                                 "UsbSelectDevice", "UsbDestroyUSB"}) {
    EXPECT_EQ(Call(name, "start"), kFault) << name;
  }
}

TEST_F(LibraryProcess, FaultsWhenItUsesAnInstanceThatWasDestroyed) {
  for (const char* const name : {"UsbGetDeviceNum", "UsbGetAllDeviceInfo", "UsbGetSelectDeviceInfo",
                                 "UsbSelectDevice", "UsbDestroyUSB"}) {
    EXPECT_EQ(Call(name, "destroy"), kFault) << name;
  }
}

TEST_F(LibraryProcess, LivesWhenACheckedCallFindsNoInstance) {
  for (const char* const after : {"start", "destroy"}) {
    EXPECT_EQ(Call("GetProgressInfo", after), 0U) << after;
    EXPECT_EQ(Call("UsbSelectDevice(-1)", after), 0U) << after;
  }
}

TEST_F(LibraryProcess, LivesWhenItUnloadsTheLibraryBesideAJob) {
  PlugIn({test::CameraText{}});
  const std::string image = MakeFile("image", test::Pattern(20'000));
  EXPECT_EQ(test::RunProgram("windows_unload_host.exe \"" + image + "\""), 0U);
  EXPECT_EQ(test::Slice(Flash(), 0, 20'000), test::Pattern(20'000)) << "the job must finish";
}

}  // namespace
