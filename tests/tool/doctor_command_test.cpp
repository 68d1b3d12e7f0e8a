// doctor: its report, and the cause that it finds.
#include "station/doctor.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class DoctorTest : public testing::Test {
 protected:
  DoctorTest() {
    SystemReport& system = desk_.host.system_report;
    system.program = R"(C:\tools\borvanusb.exe)";
    system.program_version = "0.1.0";
    system.pointer_bits = 64;
    system.system = "Windows 10.0.19043";
    system.code_page = "1252";
    system.library = R"(C:\tools\BorvanUSB_x64.dll)";
    system.library_version = "0.1.0.0";
    system.devices = {{"Fake camera", R"(\\?\usb#a)", ""}, {"Screen", "", "it has no device path"}};
  }

  SystemReport& System() { return desk_.host.system_report; }
  ExitCode Doctor() { return desk_.Do(DoctorCommand{}, "doctor"); }
  std::string Cause() { return desk_.result["cause"]; }

  CommandDesk desk_;
};

TEST_F(DoctorTest, TellsAllThatABugReportNeeds) {
  System().environment = {{"BORVANUSB_CAMERA", "0"}};
  System().library_places = {R"(C:\tools)"};
  EXPECT_EQ(Doctor(), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out,
            "program      C:\\tools\\borvanusb.exe, version 0.1.0, 64 bits\n"
            "system       Windows 10.0.19043, code page 1252\n"
            "library      C:\\tools\\BorvanUSB_x64.dll, version 0.1.0.0\n"
            "             looked for at C:\\tools\n"
            "COM          works\n"
            "environment  BORVANUSB_CAMERA=0\n"
            "\n"
            "video devices of the system: 2\n"
            "  Fake camera  \\\\?\\usb#a\n"
            "    listed as a camera\n"
            "  Screen  (without a path)\n"
            "    not listed: it has no device path\n"
            "cameras: 1\n"
            "  0  1234:0001  Fake camera\n"
            "    vendor unit: answers\n"
            "\n"
            "all is well: Fake camera can be used\n");
  EXPECT_EQ(desk_.result["system"]["environment"]["BORVANUSB_CAMERA"], "0");
  EXPECT_EQ(desk_.result["devices"][1]["reason"], "it has no device path");
}

TEST_F(DoctorTest, CameraWithoutAVendorUnitIsTheCause) {
  desk_.host.before_open = [](const CameraIdentity&) {
    throw Failure(ExitCode::kRefused, "the camera has no vendor unit");
  };
  EXPECT_EQ(Doctor(), ExitCode::kRefused);
  EXPECT_EQ(Cause(), "no listed camera can be used: the camera has no vendor unit");
  EXPECT_NE(desk_.output.out.find("    vendor unit: the camera has no vendor unit\n"),
            std::string::npos);
}

TEST_F(DoctorTest, OneUsableCameraIsEnough) {
  auto second = std::make_shared<FakeChip>();
  second->identity.path = "other";
  second->identity.name = "Second";
  desk_.host.chips.push_back(second);
  desk_.Chip().before_transfer = [](std::uint64_t) {
    throw Failure(ExitCode::kDevice, "the transfer failed");
  };
  EXPECT_EQ(Doctor(), ExitCode::kDone);
  EXPECT_EQ(Cause(), "all is well: Second can be used");
  EXPECT_EQ(desk_.result["cameras"][0]["problem"], "the transfer failed");
}

TEST_F(DoctorTest, CauseIsTheFirstThingThatIsWrongOnTheWayToACamera) {
  desk_.host.chips.clear();
  EXPECT_EQ(Doctor(), ExitCode::kNoCamera);
  EXPECT_EQ(Cause(), "none of the video devices counts as a USB camera");
  System().devices.clear();
  Doctor();
  EXPECT_EQ(Cause(), "the system lists no video device at all");
  System().com_problem = "0x80040154";
  Doctor();
  EXPECT_EQ(Cause(), "COM does not work: 0x80040154");
  System().library_problem = "it lacks UsbIniDevice";
  Doctor();
  EXPECT_EQ(Cause(), R"(C:\tools\BorvanUSB_x64.dll can't be used: it lacks UsbIniDevice)");
  System().library.clear();
  EXPECT_EQ(Doctor(), ExitCode::kNoCamera);
  EXPECT_EQ(Cause(), "BorvanUSB_x64.dll was not found");
  EXPECT_NE(desk_.output.out.find("library      not found\n"), std::string::npos);
}

TEST_F(DoctorTest, ListThatCannotBeHadIsTold) {
  desk_.host.list_failure = Failure(ExitCode::kNoCamera, "the system's list can't be had");
  EXPECT_EQ(Doctor(), ExitCode::kNoCamera);
  EXPECT_EQ(Cause(), "the cameras can't be listed: the system's list can't be had");
  EXPECT_EQ(desk_.result["list_problem"], "the system's list can't be had");
}

}  // namespace
}  // namespace borvanusb::tool_test
