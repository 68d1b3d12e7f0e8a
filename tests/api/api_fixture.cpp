#include "api/api_fixture.h"

namespace borvan_test {
namespace {

std::shared_ptr<PlatformScript>& CurrentScript() {
  static std::shared_ptr<PlatformScript> script;
  return script;
}

}  // namespace

ApiTest::ApiTest() {
  CurrentScript() = script;
}

ApiTest::~ApiTest() {
  borvan::GlobalInstance().Set(nullptr);
  CurrentScript() = nullptr;
}

void ApiTest::StartWithChip() {
  script->cameras = {MakeCamera(u'a', chip)};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(0));
  chip->ForgetTransfers();
}

bool ApiTest::JobEnded() {
  const auto device = borvan::GlobalInstance().Get();
  return WaitUntil([&] { return !device->Jobs().jobRunning; });
}

}  // namespace borvan_test

namespace borvan {

std::unique_ptr<DevicePlatform> MakeDevicePlatform() {
  return std::make_unique<borvan_test::ScriptedPlatform>(borvan_test::CurrentScript());
}

}  // namespace borvan
