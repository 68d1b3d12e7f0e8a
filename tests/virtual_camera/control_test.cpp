// What the control program does beside running cameras.
#include <chrono>
#include <filesystem>
#include <thread>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ControlTest : public DeviceTest {
 protected:
  ControlTest() {
    configuration.registers = {{0x100, 0x11}};
    configuration.sensors = {{0x36, 0, {{0x05, 0x22}}}};
  }
  // Register 0x100, sensor register 5 and flash byte 0 get other values.
  void ChangeEverything() {
    Set(7, Padded({0x00, 0x00, 0x00, 0x01, 0, 0, 0x01, 0x00, 0x99}, 64));
    Set(6, Padded({0x00, 0x36, 0x00, 0x01, 0, 0, 0, 0x05, 0x88}, 64));
    Set(3, {0x38, 0, 0, 0, 0, 0x77, 0xFF, 0xFF, 0xFF, 0, 0});
  }
  std::uint8_t Register() {
    Set(7, Padded({0x01, 0x00, 0x00, 0x38, 0, 0, 0x01, 0x00}, 64));
    return Get(7, 64).at(8);
  }
  std::uint8_t SensorRegister() {
    Set(6, Padded({0x10, 0x36, 0x00, 0x38, 0, 0, 0, 0x05}, 64));
    return Get(6, 64).at(8);
  }
};

TEST_F(ControlTest, PowerCycleRestoresRegistersAndKeepsFlash) {
  ChangeEverything();
  EXPECT_EQ(Register(), 0x99);
  EXPECT_EQ(SensorRegister(), 0x88);
  virtual_camera::PowerCycle(configuration);
  EXPECT_EQ(Get(7, 64), Bytes(64, 0));  // the reply that waited is gone
  EXPECT_EQ(Register(), 0x11);
  EXPECT_EQ(SensorRegister(), 0x22);
  EXPECT_EQ(FlashByte(0), 0x77);
}

TEST_F(ControlTest, UnpluggedCameraAnswersNothing) {
  camera();
  virtual_camera::SetPlugged(configuration, false);
  EXPECT_FALSE(virtual_camera::IsPlugged(configuration));
  EXPECT_EQ(camera().QueryLength(1).result, kGone);
  EXPECT_EQ(Set(1, {0x24, 0x00, 0x00, 0x18}), kGone);
  EXPECT_EQ(GetResult(1, 4), kGone);
  EXPECT_EQ(Set(9, {}), kGone);
  virtual_camera::SetPlugged(configuration, true);
  EXPECT_TRUE(virtual_camera::IsPlugged(configuration));
  EXPECT_EQ(camera().QueryLength(1).result, Code(0x800700EA));
}

TEST_F(ControlTest, PluggingInIsAPowerCycle) {
  ChangeEverything();
  virtual_camera::SetPlugged(configuration, true);  // it is plugged in: nothing happens
  EXPECT_EQ(Register(), 0x99);
  virtual_camera::SetPlugged(configuration, false);
  virtual_camera::SetPlugged(configuration, true);
  EXPECT_EQ(Register(), 0x11);
  EXPECT_EQ(FlashByte(0), 0x77);
}

TEST_F(ControlTest, NewCameraMayStartUnplugged) {
  configuration.plugged = false;
  EXPECT_FALSE(virtual_camera::IsPlugged(configuration));
  EXPECT_EQ(camera().QueryLength(1).result, kGone);
}

TEST_F(ControlTest, StateIsDescribedForPeople) {
  configuration.faults.resize(1);
  configuration.faults[0].delay_ms = 1;
  ChangeEverything();
  const std::string text = virtual_camera::DescribeState(configuration);
  EXPECT_EQ(text,
            "Virtual camera\n"
            "  path: \\\\?\\usb#vid_1234&pid_5678&mi_00#virtual\n"
            "  state: plugged in\n"
            "  flash: 64 KiB in " +
                configuration.flash.file +
                "\n"
                "  chip registers written since power-on:\n"
                "    0x0100 = 0x99\n"
                "  sensor 0x36 (width mode 0), registers written since power-on:\n"
                "    0x0005 = 0x88\n"
                "  fault 0: 3 matching transfers so far\n");
}

TEST_F(ControlTest, DescriptionSaysThatACameraIsGone) {
  virtual_camera::SetPlugged(configuration, false);
  EXPECT_THAT(virtual_camera::DescribeState(configuration), HasSubstr("  state: unplugged\n"));
}

TEST_F(ControlTest, CountersOfOtherFaultsAreNotShown) {
  configuration.faults.resize(1);
  configuration.faults[0].delay_ms = 1;
  camera().QueryLength(1);
  CloseCamera();
  configuration.faults[0].at = 5;
  EXPECT_THAT(virtual_camera::DescribeState(configuration),
              HasSubstr("  fault 0: 0 matching transfers so far\n"));
}

TEST_F(ControlTest, ControlCharactersOfNamesAreSpelledOut) {
  configuration.name = "a\n  state: unplugged\x1B[2J\x7F \xC2\x9B \xC2\xA0\xC3\xA4";
  configuration.path = "b\r";
  const std::string text = virtual_camera::DescribeState(configuration);
  EXPECT_TRUE(
      text.starts_with("a\\u000a  state: unplugged\\u001b[2J\\u007f \\u009b \xC2\xA0\xC3\xA4\n"
                       "  path: b\\u000d\n  state: plugged in\n"))
      << text;
}

// Whoever only looks changes no file.
class LookingTest : public ControlTest {
 protected:
  std::size_t FileCount() const {
    std::size_t count = 0;
    for ([[maybe_unused]] const auto& entry :
         std::filesystem::directory_iterator(folder.File(""))) {
      ++count;
    }
    return count;
  }
};

TEST_F(LookingTest, ACameraThatNobodyUsedYetGetsNoFiles) {
  EXPECT_TRUE(virtual_camera::IsPlugged(configuration));
  EXPECT_THAT(virtual_camera::DescribeState(configuration), HasSubstr("  state: plugged in\n"));
  configuration.plugged = false;
  EXPECT_FALSE(virtual_camera::IsPlugged(configuration));
  EXPECT_THAT(virtual_camera::DescribeState(configuration), HasSubstr("  state: unplugged\n"));
  EXPECT_EQ(FileCount(), 0U);
}

// It shows what the next transfer meets.
TEST_F(LookingTest, ACameraWhoseTimeHasComeStaysAsItIs) {
  configuration.faults.resize(1);
  configuration.faults[0].direction = virtual_camera::Direction::kLength;
  configuration.faults[0].unplug = virtual_camera::UnplugAction{.back_after_ms = 0};
  ChangeEverything();
  camera().QueryLength(1);
  CloseCamera();
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  const std::string before = folder.Read("camera.state");
  EXPECT_TRUE(virtual_camera::IsPlugged(configuration));
  const std::string text = virtual_camera::DescribeState(configuration);
  EXPECT_THAT(text, HasSubstr("  state: plugged in\n"));
  EXPECT_THAT(text, HasSubstr("  chip registers written since power-on:\n    none\n"));
  EXPECT_EQ(folder.Read("camera.state"), before);
  EXPECT_EQ(Register(), 0x11);
}

TEST_F(LookingTest, AStateFileThatIsHalfMadeStaysAsItIs) {
  camera();
  CloseCamera();
  const std::string half = folder.Read("camera.state").substr(0, 700);
  folder.Write("camera.state", half);
  EXPECT_TRUE(virtual_camera::IsPlugged(configuration));
  EXPECT_THAT(virtual_camera::DescribeState(configuration), HasSubstr("  state: plugged in\n"));
  EXPECT_EQ(folder.Read("camera.state"), half);
}

TEST_F(LookingTest, AStateFileThatCantBeReadIsNamed) {
  folder.Write("camera.state", "my precious text");
  EXPECT_THROW(virtual_camera::IsPlugged(configuration), virtual_camera::ConfigurationError);
  EXPECT_THROW(virtual_camera::DescribeState(configuration), virtual_camera::ConfigurationError);
  EXPECT_EQ(folder.Read("camera.state"), "my precious text");
  configuration.state_file = folder.File("no such folder/camera.state");
  try {
    virtual_camera::IsPlugged(configuration);
    FAIL();
  } catch (const virtual_camera::ConfigurationError& error) {
    EXPECT_THAT(error.what(),
                testing::StartsWith("state: can't use the file \"" + configuration.state_file));
  }
}

}  // namespace
}  // namespace virtual_camera_test
