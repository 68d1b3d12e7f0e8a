// Hosts that can't catch the library's exceptions by their type, each in a process of its own.

#include "hosts/hosts_rig.h"

namespace {

// What such hosts see of an exception, and what an uncaught one ends a C program with.
constexpr DWORD kExceptionCode = 0x20474343;
constexpr DWORD kAborted = 3;
constexpr DWORD kAllHeld = 100;

struct Part {
  const char* host;
  const char* part;
};

class HostOfMicrosoftsAbi : public test::HostsRig, public testing::WithParamInterface<Part> {
 protected:
  DWORD Run(const std::string& part) {
    return test::RunProgram(std::string(GetParam().host) + " " + part + " " + Folder());
  }
};

TEST_P(HostOfMicrosoftsAbi, GoesOn) {
  EXPECT_EQ(Run(GetParam().part), kAllHeld) << "98 is the time limit";
}

std::vector<Part> AllParts() {
  std::vector<Part> parts;
  for (const char* const host : {"microsoft_host_c.exe", "microsoft_host_cpp.exe"}) {
    for (const char* const part : {"structure", "booleans", "values", "progress", "exceptions",
                                   "helper", "threads", "memory", "fault"}) {
      parts.push_back({host, part});
    }
  }
  return parts;
}

INSTANTIATE_TEST_SUITE_P(Each, HostOfMicrosoftsAbi, testing::ValuesIn(AllParts()),
                         [](const testing::TestParamInfo<Part>& part) {
                           const std::string host = part.param.host;
                           return std::string(part.param.part) +
                                  (host.find("cpp") == host.npos ? "InC" : "InCpp");
                         });

class OtherHost : public test::HostsRig {};

TEST_F(OtherHost, OfMicrosoftsAbiEndsWithTheCodeOfAnUncaughtException) {
  EXPECT_EQ(test::RunProgram("microsoft_host_c.exe uncaught " + Folder()), kExceptionCode);
}

TEST_F(OtherHost, InCSelectsWithoutExceptions) {
  EXPECT_EQ(test::RunProgram("c_host.exe borvan_select_device"), kAllHeld);
}

TEST_F(OtherHost, InCIsAbortedByAnException) {
  EXPECT_EQ(test::RunProgram("c_host.exe UsbSelectDevice"), kAborted);
}

}  // namespace
