// The example load_settings tells by its exit code how it went.

#include "demo_cameras.h"

namespace {

using test::Bytes;
using test::RunProgram;

enum ExitCode : DWORD {
  kAllAsInTheList = 0,
  kWrongArguments = 1,
  kListUnusable = 2,
  kCameraNotOpened = 4,
  kLoadingFailed = 5,
  kReadingBackFailed = 6,
  kDifferent = 7,
  kTimeLimit = 8,
  kNoCamera = 9,
};

constexpr char kSensor[] = R"(, "sensors": [{"slave": "0x6c", "mode": 1}])";

class LoadSettings : public test::DemoCameras {
 protected:
  std::string List(const std::string& text) const {
    return MakeFile("list.txt", Bytes(text.begin(), text.end()));
  }

  // A list of three registers of the sensor.
  std::string List() const {
    return List("0xfff8,0x6c,\n0xfffe,0x03,\n0x3012,0x5a,\n0x3013,0x5b,\n0x4000,0x01,\n");
  }

  DWORD Run(const std::string& arguments) { return RunProgram("load_settings.exe " + arguments); }

  void PlugInOne(const std::string& more) {
    test::CameraText camera;
    camera.more = kSensor + more;
    PlugIn({camera});
  }
};

TEST_F(LoadSettings, EndsWellOnBothSortsOfChip) {
  for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
    EXPECT_EQ(Run(List() + " --camera " + std::to_string(camera)), kAllAsInTheList) << camera;
    Select(camera);
    std::uint32_t value = 0;
    EXPECT_TRUE(UsbI2cRead(0x6C, 0x3013, &value, kBorvanI2cAddress16Data8, 0));
    EXPECT_EQ(value, 0x5BU);
  }
}

TEST_F(LoadSettings, TakesAnOption) {
  EXPECT_EQ(Run(List() + " --option 3"), kAllAsInTheList);
}

TEST_F(LoadSettings, RefusesWrongArguments) {
  EXPECT_EQ(Run(""), kWrongArguments);
  EXPECT_EQ(Run(List() + " --camera"), kWrongArguments);
  EXPECT_EQ(Run(List() + " --camera one"), kWrongArguments);
  EXPECT_EQ(Run(List() + " --option 16"), kWrongArguments);
  EXPECT_EQ(Run(List() + " --timeout 0"), kWrongArguments);
  EXPECT_EQ(Run(List() + " another"), kWrongArguments);
  EXPECT_EQ(Run("--help"), kAllAsInTheList);
}

TEST_F(LoadSettings, RefusesAListThatIsNone) {
  EXPECT_EQ(Run(File("missing.txt")), kListUnusable);
  EXPECT_EQ(Run(List("0x3012,0x5a,\n")), kListUnusable);
  EXPECT_EQ(Run(List("0xfff8,0x6c,\n0xfffe,0x03,\n0x3012,\n")), kListUnusable);
}

TEST_F(LoadSettings, TellsThatThereIsNoSuchCamera) {
  EXPECT_EQ(Run(List() + " --camera 2"), kNoCamera);
}

TEST_F(LoadSettings, TellsThatTheCameraHasNoVendorChannel) {
  test::CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  PlugIn({camera});
  EXPECT_EQ(Run(List()), kCameraNotOpened);
}

TEST_F(LoadSettings, TellsThatLoadingFailed) {
  EXPECT_EQ(Run(List("0xfff8,0x33,\n0xfffe,0x03,\n0x3012,0x5a,\n")), kLoadingFailed)
      << "nobody has this slave address";
}

TEST_F(LoadSettings, TellsThatARegisterCannotBeReadBack) {
  PlugInOne(R"(, "faults": [{"selector": 2, "direction": "get", "result": "0x80070017"}])");
  EXPECT_EQ(Run(List()), kReadingBackFailed);
}

// The chip takes the list and forgets the second register's value. Of the four times three
// commands of a list (the width comes first) that is the ninth.
TEST_F(LoadSettings, ShowsARegisterThatDiffers) {
  PlugInOne(R"(, "faults": [{"selector": 2, "direction": "set", "at": 9, "lie": true}])");
  EXPECT_EQ(Run(List()), kDifferent);
}

TEST_F(LoadSettings, GivesUpAfterItsTimeLimit) {
  PlugInOne(R"(, "faults": [{"selector": 2, "direction": "set", "at": 1, "delay_ms": 5000}])");
  EXPECT_EQ(Run(List() + " --timeout 1"), kTimeLimit);
}

}  // namespace
