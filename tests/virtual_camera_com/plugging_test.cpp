// Cables: cameras that are unplugged and plugged in by the control program or by a fault.

#include "fixture.h"
#include "host.h"

namespace {

using test::Control;
using test::FirstCamera;
using test::kFirstPath;
using test::kSecondPath;
using test::SecondCamera;

constexpr auto kGone = static_cast<HRESULT>(0x8007048F);
constexpr auto kMoreDataLeft = static_cast<HRESULT>(0x800700EA);

// Falls off with the second set on selector 1 and is back after 1.5 s: long enough for a
// busy machine to look at the list in between.
constexpr char kFallsOff[] =
    R"(, "faults": [{"selector": 1, "direction": "set", "at": 2, "unplug": {"back_after_ms": 1500}}])";
constexpr char kFallsOffForGood[] =
    R"(, "faults": [{"selector": 1, "direction": "set", "at": 2, "unplug": {}}])";
constexpr DWORD kLongerThanFault = 1700;  // ms

class Plugging : public test::CameraTest {};

TEST_F(Plugging, AnUnpluggedCameraIsNoLongerListed) {
  Register({FirstCamera(), SecondCamera()});
  EXPECT_EQ(Control(L"unplug 0").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});
}

TEST_F(Plugging, APluggedCameraComesBackAtItsPlace) {
  Register({FirstCamera(), SecondCamera()});
  EXPECT_EQ(Control(L"unplug First").exit_code, 0U);
  EXPECT_EQ(Control(L"plug First").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
}

TEST_F(Plugging, TransfersOfAnUnpluggedCameraFail) {
  Register({FirstCamera()});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  ASSERT_EQ(Control(L"unplug 0").exit_code, 0U);
  std::vector<std::uint8_t> block(4);
  EXPECT_EQ(host::QueryLength(control.Get(), 1).result, kGone);
  EXPECT_EQ(host::Set(control.Get(), 1, block).result, kGone);
  EXPECT_EQ(host::Get(control.Get(), 1, block).result, kGone);
  ASSERT_EQ(Control(L"plug 0").exit_code, 0U);
  EXPECT_EQ(host::QueryLength(control.Get(), 1).result, kMoreDataLeft);
}

TEST_F(Plugging, AMonikerOfAnUnpluggedCameraDoesNotBind) {
  Register({FirstCamera()});
  const auto inputs = host::VideoInputs();
  ASSERT_EQ(inputs.size(), 1U);
  ASSERT_EQ(Control(L"unplug 0").exit_code, 0U);
  host::ComPtr<IBaseFilter> filter;
  EXPECT_LT(inputs[0].moniker->BindToObject(nullptr, nullptr, IID_IBaseFilter,
                                            reinterpret_cast<void**>(filter.GetAddressOf())),
            0);
  EXPECT_FALSE(filter);
}

TEST_F(Plugging, RegisteringLeavesUnpluggedCamerasOut) {
  Register({FirstCamera(), SecondCamera()});
  ASSERT_EQ(Control(L"unplug 1").exit_code, 0U);
  ASSERT_EQ(CallDll("DllRegisterServer"), S_OK);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kFirstPath});
}

TEST_F(Plugging, PluggingInWithoutRegistrationMakesNoEntry) {
  Configure({FirstCamera()});
  ASSERT_EQ(Control(L"unplug 0").exit_code, 0U);
  const test::Outcome outcome = Control(L"plug 0");
  EXPECT_EQ(outcome.exit_code, 0U);
  EXPECT_NE(outcome.output.find("not registered"), std::string::npos) << outcome.output;
  EXPECT_TRUE(host::ListedPaths().empty());
}

TEST_F(Plugging, AFaultThatUnplugsTakesTheCameraFromTheListAndBack) {
  Register({FirstCamera(kFallsOff), SecondCamera()});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  EXPECT_EQ(host::Set(control.Get(), 1, {0x24, 0, 0, 0x18}).result, S_OK);
  host::Set(control.Get(), 1, {0x24, 0, 0, 0x58});
  EXPECT_EQ(host::QueryLength(control.Get(), 1).result, kGone);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});

  for (int i = 0; i < 100 && host::ListedPaths().size() < 2; ++i) {
    Sleep(100);
  }
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
  EXPECT_EQ(host::QueryLength(control.Get(), 1).result, kMoreDataLeft);
  EXPECT_TRUE(host::OpenCamera(kFirstPath));
}

TEST_F(Plugging, AFaultWithoutATimeUnplugsForGood) {
  Register({FirstCamera(kFallsOffForGood)});
  const auto control = host::OpenCamera(kFirstPath);
  ASSERT_TRUE(control);
  host::Set(control.Get(), 1, {0x24, 0, 0, 0x18});
  host::Set(control.Get(), 1, {0x24, 0, 0, 0x58});
  Sleep(kLongerThanFault);
  EXPECT_TRUE(host::ListedPaths().empty());
  ASSERT_EQ(Control(L"plug 0").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kFirstPath});
}

// The process in which the camera fell off is gone before its time is over.
class FallenOff : public Plugging {
 protected:
  void FallOff() {
    Register({FirstCamera(kFallsOff), SecondCamera()});
    EXPECT_EQ(test::Process(L"virtual_camera_com_test.exe",
                            L"--touch \"" + std::wstring(kFirstPath) + L"\"")
                  .Wait()
                  .exit_code,
              4U);
    EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});
    Sleep(kLongerThanFault);
    EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});
  }
};

TEST_F(FallenOff, ItIsBackWithTheNextBinding) {
  FallOff();
  EXPECT_TRUE(host::OpenCamera(kSecondPath));
  EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
}

TEST_F(FallenOff, ItIsBackWithTheNextCommandThatHandlesACamera) {
  for (const wchar_t* const command : {L"plug 1", L"reset-faults", L"power-cycle 1"}) {
    FallOff();
    EXPECT_EQ(Control(L"state").exit_code, 0U);
    EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath}) << "state only looks";
    EXPECT_EQ(Control(command).exit_code, 0U);
    EXPECT_EQ(host::ListedPaths(), (std::vector<std::wstring>{kFirstPath, kSecondPath}));
    DeleteFileW((folder() + L"cameras.camera0.state").c_str());
  }
}

TEST_F(FallenOff, ItStaysAwayWhenTheUserUnplugsIt) {
  FallOff();
  // Catches up first, then unplugs for good.
  EXPECT_EQ(Control(L"unplug 0").exit_code, 0U);
  EXPECT_EQ(Control(L"reset-faults").exit_code, 0U);
  EXPECT_EQ(host::ListedPaths(), std::vector<std::wstring>{kSecondPath});
}

}  // namespace
