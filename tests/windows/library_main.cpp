// The test program. Started with "--call NAME AFTER" it is a host that makes one call without an
// instance, where AFTER is "start" or "destroy": its exit code is the code of the exception that
// ended it, 0 when the call returned.

#include <borvan_usb.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <map>
#include <string>

#include "crash_guard.h"

namespace {

int Call(const std::string& name, const std::string& after) {
  const std::map<std::string, void (*)()> calls = {
      {"UsbGetDeviceNum", [] { UsbGetDeviceNum(); }},
      {"UsbGetAllDeviceInfo", [] { UsbGetAllDeviceInfo(); }},
      {"UsbGetSelectDeviceInfo", [] { UsbGetSelectDeviceInfo(); }},
      {"UsbSelectDevice", [] { UsbSelectDevice(0); }},
      {"UsbDestroyUSB", [] { UsbDestroyUSB(); }},
      {"UsbSelectDevice(-1)", [] { UsbSelectDevice(-1); }},
      {"GetProgressInfo", [] { GetProgressInfo(); }},
  };
  const auto found = calls.find(name);
  if (found == calls.end()) {
    return 97;
  }
  if (after == "destroy") {
    UsbIniDevice();
    UsbDestroyUSB();
  }
  found->second();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  test::EndOnCrash();
  if (argc == 4 && std::string(argv[1]) == "--call") {
    return Call(argv[2], argv[3]);
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
