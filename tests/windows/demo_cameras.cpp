#include "demo_cameras.h"

#include <fstream>
#include <iterator>

namespace test {

DemoCameras::DemoCameras() {
  const std::string cameras = SourceFile("virtual_camera/configurations/demo.json");
  MakeFile("cameras.json", Bytes(cameras.begin(), cameras.end()));
  Control("register");
}

void DemoCameras::Select(std::int32_t camera) {
  ASSERT_GE(UsbIniDevice(), 0);
  ASSERT_EQ(UsbGetDeviceNum(), 2);
  ASSERT_TRUE(UsbSelectDevice(camera));
}

std::string SourceFile(const std::string& name) {
  std::ifstream file(BORVAN_SOURCE_FOLDER + name, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << name;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace test
