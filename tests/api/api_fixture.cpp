#include "api/api_fixture.h"

namespace borvan_test {
namespace {

ApiTest* g_current_test = nullptr;

}  // namespace

ApiTest::ApiTest() {
  g_current_test = this;
}

ApiTest::~ApiTest() {
  borvan::GlobalInstance().Set(nullptr);
  g_current_test = nullptr;
}

std::unique_ptr<borvan::DevicePlatform> ApiTest::MakePlatform() {
  if (g_current_test->on_platform_made) {
    g_current_test->on_platform_made();
  }
  return std::make_unique<ScriptedPlatform>(g_current_test->script);
}

void ApiTest::StartWithChip() {
  script->cameras = {MakeCamera(u'a', chip)};
  UsbIniDevice();
  ASSERT_TRUE(UsbSelectDevice(0));
  chip->ForgetTransfers();
}

bool ApiTest::JobEnded() {
  const auto device = borvan::GlobalInstance().Get();
  return WaitUntil([&] { return !device->Jobs().job_running; });
}

}  // namespace borvan_test

namespace borvan {

std::unique_ptr<DevicePlatform> MakeDevicePlatform() {
  return borvan_test::ApiTest::MakePlatform();
}

}  // namespace borvan
