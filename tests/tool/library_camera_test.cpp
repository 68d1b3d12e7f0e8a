// A camera through the exports: cameras, registers, I2C, lists.
#include <gmock/gmock.h>

#include "library_rig.h"

namespace borvanusb::tool_test {
namespace {

using borvan::Result;
using borvan_test::Transfer;
using testing::HasSubstr;

using LibraryCameraTest = LibraryTest;

TEST_F(LibraryCameraTest, CamerasAreListedWithTheirIdentities) {
  script->cameras.push_back(borvan_test::MakeCamera(u'b', chip));
  const auto cameras = library->ListCameras();
  ASSERT_EQ(cameras.size(), 2U);
  EXPECT_EQ(cameras[1].index, 1);
  EXPECT_EQ(cameras[1].path, "\\\\?\\usb#vid_1234&pid_5678#b");
  EXPECT_EQ(cameras[1].name, "Camera b");
  EXPECT_EQ(cameras[1].vid, "1234");
  EXPECT_EQ(cameras[1].pid, "5678");
}

TEST_F(LibraryCameraTest, NameThatTheCodePageLacksIsTheSystems) {
  script->cameras[0].friendly_name = u"Camera ?";
  script->cameras.push_back(borvan_test::MakeCamera(u'b', chip));
  script->cameras.push_back(borvan_test::MakeCamera(u'c', chip));
  script->cameras[2].friendly_name = u"??";
  const std::string path = "\\\\?\\usb#vid_1234&pid_5678#";
  platform.device_names[path + "a"] = "Camera \xE2\x84\x96";
  platform.device_names[path + "b"] = "Another name";
  const auto cameras = library->ListCameras();
  ASSERT_EQ(cameras.size(), 3U);
  EXPECT_EQ(cameras[0].name, "Camera \xE2\x84\x96");
  // The system is not asked for a name that the library knows.
  EXPECT_EQ(cameras[1].name, "Camera b");
  // If the system has no name either, the library's name is used.
  EXPECT_EQ(cameras[2].name, "??");
  EXPECT_EQ(platform.asked_names, (std::vector<std::string>{path + "a", path + "c"}));
  // No names are needed after the camera was chosen.
  platform.asked_names.clear();
  OpenLibraryCamera(*library, cameras[0])->ReadRegisterRun(0, 1);
  EXPECT_TRUE(platform.asked_names.empty());
}

TEST_F(LibraryCameraTest, NoListOfTheSystemIsNoCamera) {
  script->outcome = borvan::VideoInputListing::Outcome::kNoDeviceEnumerator;
  script->listing_result = kDeviceError;
  const Failure failure = FailureOf([&] { library->ListCameras(); });
  EXPECT_EQ(failure.Code(), ExitCode::kNoCamera);
  EXPECT_THAT(failure.Message(), HasSubstr("0x80070017, Data error"));
}

TEST_F(LibraryCameraTest, CameraIsFoundByItsPathWhereverItStandsInTheList) {
  const auto cameras = library->ListCameras();
  script->cameras.insert(script->cameras.begin(), borvan_test::MakeCamera(u'0'));
  EXPECT_EQ(OpenLibraryCamera(*library, cameras[0])->ReadRegister(0x1A3, RegisterWidth::kByte), 0U);
}

TEST_F(LibraryCameraTest, CameraThatLeftTheListIsGone) {
  const auto cameras = library->ListCameras();
  script->cameras.clear();
  const Failure failure = FailureOf([&] { OpenLibraryCamera(*library, cameras[0]); });
  EXPECT_EQ(failure.Code(), ExitCode::kNoCamera);
  EXPECT_THAT(failure.Message(), HasSubstr("was disconnected"));
}

TEST_F(LibraryCameraTest, CameraWithoutVendorUnitIsRefused) {
  script->cameras = {borvan_test::MakeCamera(u'a')};
  const Failure failure = FailureOf([&] { Open(); });
  EXPECT_EQ(failure.Code(), ExitCode::kRefused);
  EXPECT_THAT(failure.Message(), HasSubstr("no vendor unit"));
}

TEST_F(LibraryCameraTest, CameraThatCannotBeOpenedIsRefusedWithTheLibrarysReason) {
  script->cameras[0].raise = [] { throw "ERROR: gcap.pVCap->QueryInterface failed"; };
  const Failure failure = FailureOf([&] { Open(); });
  EXPECT_EQ(failure.Code(), ExitCode::kRefused);
  EXPECT_THAT(failure.Message(), HasSubstr("ERROR: gcap.pVCap->QueryInterface failed"));
}

TEST_F(LibraryCameraTest, RegistersAreWrittenAndReadInBothWidths) {
  const auto camera = Open();
  camera->WriteRegister(0x100, 0x5A, RegisterWidth::kByte);
  EXPECT_EQ(camera->ReadRegister(0x100, RegisterWidth::kByte), 0x5AU);
  camera->WriteRegister(0x80001234, 0x11223344, RegisterWidth::kWide);
  EXPECT_EQ(camera->ReadRegister(0x80001234, RegisterWidth::kWide), 0x11223344U);
}

TEST_F(LibraryCameraTest, RegisterOfAllOnesIsReadTwiceToBeSure) {
  const auto camera = Open();
  chip->PutRegister(0x40, 0xFFFFFFFF);
  EXPECT_EQ(camera->ReadRegister(0x40, RegisterWidth::kWide), 0xFFFFFFFFU);
}

TEST_F(LibraryCameraTest, ReplyToAnotherCommandIsAFailureAndNoValue) {
  const auto camera = Open();
  for (const RegisterWidth width : {RegisterWidth::kByte, RegisterWidth::kWide}) {
    // The library reports an unanswered read as success: no get reaches the chip, and all return
    // S_OK.
    chip->Intercept([](const Transfer& transfer) -> std::optional<Result> {
      return transfer.request.flags == borvan_test::kGetFlags && !transfer.is_length_query
                 ? std::optional<Result>(0)
                 : std::nullopt;
    });
    const Failure failure = FailureOf([&] { camera->ReadRegister(0x40, width); });
    EXPECT_EQ(failure.Code(), ExitCode::kDevice);
    EXPECT_THAT(failure.Message(), HasSubstr("register 0x40: the chip did not answer"));
  }
}

TEST_F(LibraryCameraTest, RefusedAccessSaysWhatWasTried) {
  const auto camera = Open();
  chip->Intercept([](const Transfer&) { return kDeviceError; });
  const I2cTarget sensor{0x6C, 1, 0};
  EXPECT_THAT(FailureOf([&] { camera->ReadRegister(0x41, RegisterWidth::kByte); }).Message(),
              HasSubstr("reading register 0x41: the camera refused"));
  EXPECT_THAT(FailureOf([&] { camera->WriteRegister(0x42, 1, RegisterWidth::kByte); }).Message(),
              HasSubstr("writing register 0x42"));
  EXPECT_THAT(FailureOf([&] { camera->ReadI2c(sensor, 0x300A); }).Message(),
              HasSubstr("reading I2C register 0x300a of slave 0x6c"));
  EXPECT_THAT(FailureOf([&] { camera->WriteI2c(sensor, 0x300A, 1); }).Message(),
              HasSubstr("writing I2C register 0x300a of slave 0x6c"));
  EXPECT_THAT(FailureOf([&] { camera->WriteFlashWord(0x1000, 1); }).Message(),
              HasSubstr("writing flash word 0x1000"));
  EXPECT_THAT(FailureOf([&] { camera->EraseSector(0x2000); }).Message(),
              HasSubstr("erasing flash sector 0x2000"));
}

TEST_F(LibraryCameraTest, RefusedAccessOfACameraThatLeftSaysSo) {
  const auto camera = Open();
  script->cameras.clear();
  chip->Intercept([](const Transfer&) { return kDeviceError; });
  const Failure failure = FailureOf([&] { camera->WriteRegister(0x42, 1, RegisterWidth::kByte); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("the camera is gone"));
}

TEST_F(LibraryCameraTest, CameraInUseElsewhereIsRefused) {
  const auto camera = Open();
  platform.locked_elsewhere = true;
  const Failure failure = FailureOf([&] { camera->ReadRegister(0x40, RegisterWidth::kByte); });
  EXPECT_EQ(failure.Code(), ExitCode::kRefused);
  EXPECT_TRUE(chip->Transfers().empty());
}

TEST_F(LibraryCameraTest, I2cReadGivesTheReplysValue) {
  const auto camera = Open();
  chip->PutI2cRegister(0x6C, 2, 0x300A, 0x1234);
  EXPECT_EQ(camera->ReadI2c({0x6C, 2, 0}, 0x300A), 0x1234U);
}

TEST_F(LibraryCameraTest, RegisterListIsSentAndItsFileRemoved) {
  const auto camera = Open();
  camera->WriteRegisterList("0xfffd, 0x00,\n0x0100, 0x5a,\n");
  EXPECT_EQ(chip->Sent(7).size(), 1U);
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryCameraTest, RegisterListWithoutItsHeadIsAFailureThoughTheJobCallsItDone) {
  const auto camera = Open();
  const Failure failure = FailureOf([&] { camera->WriteRegisterList("0x0100, 0x5a,\n"); });
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_THAT(failure.Message(), HasSubstr("0xfffd"));
}

TEST_F(LibraryCameraTest, FailingListSaysWhy) {
  const auto camera = Open();
  chip->Intercept([](const Transfer& transfer) -> std::optional<Result> {
    return transfer.request.id == 7 || transfer.request.id == 2 ? std::optional(kDeviceError)
                                                                : std::nullopt;
  });
  EXPECT_THAT(
      FailureOf([&] { camera->WriteRegisterList("0xfffd, 0,\n0x0100, 0x5a,\n"); }).Message(),
      HasSubstr("writing a register list: 0x80070017, Data error"));
  EXPECT_THAT(FailureOf([&] {
                camera->WriteI2cList("0xfff8, 0x6c,\n0xfffe, 3,\n0x3012, 0x5a,\n", 0);
              }).Message(),
              HasSubstr("writing an I2C list: 0xE0000002, GetLen fails in channel"));
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryCameraTest, RegisterRunHasAByteForEachRegister) {
  const auto camera = Open();
  EXPECT_EQ(camera->ReadRegisterRun(0x100, 0x140).size(), 65U);
  EXPECT_EQ(LeftBehind(), 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
