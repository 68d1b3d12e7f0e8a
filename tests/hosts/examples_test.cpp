// How the examples end with a camera that can't be opened: none of them by the library's exception.

#include "hosts/hosts_rig.h"

namespace {

using test::RunProgram;

class Examples : public test::HostsRig {};

TEST_F(Examples, ReadRegisterTellsHowItWent) {
  EXPECT_EQ(RunProgram("read_register.exe 0x1a3 --camera 1"), 0U);
  EXPECT_EQ(RunProgram("read_register.exe --help"), 0U);
  EXPECT_EQ(RunProgram("read_register.exe"), 1U) << "wrong arguments";
  EXPECT_EQ(RunProgram("read_register.exe 0x1a3 --camera 2"), 2U) << "no such camera";
  EXPECT_EQ(RunProgram("read_register.exe 0x1a3 --camera 0"), 4U) << "it can't be opened";
}

TEST_F(Examples, ReadRegisterTellsThatTheCameraDoesNotAnswer) {
  test::CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  PlugIn({camera});
  EXPECT_EQ(RunProgram("read_register.exe 0x1a3"), 5U);
}

TEST_F(Examples, LoadSettingsTellsWhyThereIsNoCamera) {
  EXPECT_EQ(RunProgram("load_settings.exe sensor.txt --camera 0"), 4U) << "it can't be opened";
  EXPECT_EQ(RunProgram("load_settings.exe sensor.txt --camera 2"), 9U) << "no such camera";
}

TEST_F(Examples, ProgramFlashTellsThatTheCameraCannotBeOpened) {
  EXPECT_EQ(RunProgram("program_flash.exe --image image.bin --camera 0"), 4U);
}

}  // namespace
