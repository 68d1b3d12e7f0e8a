// The camera that --camera selects.
#include "camera/camera_choice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/failure.h"

namespace borvanusb::tool_test {
namespace {

using testing::HasSubstr;
using testing::Not;

std::vector<CameraIdentity> Cameras() {
  return {
      {0, R"(\\?\usb#vid_1234&pid_0001&mi_00#6&2a8c5f1&0&0000)", "Front camera", "1234", "0001"},
      {1, R"(\\?\usb#vid_1234&pid_0001&mi_00#6&2a8c5f1&0&0001)", "Rear camera", "1234", "0001"},
      {2, R"(\\?\usb#vid_12ab&pid_0002&mi_00#6&2a8c5f1&0&0002)", "B", "12AB", "0002"},
  };
}

std::int32_t Chosen(const std::string& choice) {
  return ChooseCamera(Cameras(), choice).index;
}

Failure FailureOf(const std::string& choice,
                  const std::vector<CameraIdentity>& cameras = Cameras()) {
  try {
    const CameraIdentity camera = ChooseCamera(cameras, choice);
    ADD_FAILURE() << choice << " chooses " << CameraLine(camera);
  } catch (const Failure& failure) {
    return failure;
  }
  return {ExitCode::kDone, ""};
}

TEST(CameraChoiceTest, IndexPathIdsAndNameMeanOneWhole) {
  EXPECT_EQ(Chosen("1"), 1);
  EXPECT_EQ(Chosen(R"(\\?\USB#vid_1234&pid_0001&mi_00#6&2a8c5f1&0&0001)"), 1);
  EXPECT_EQ(Chosen("12ab:0002"), 2);
  EXPECT_EQ(Chosen("REAR camera"), 1);
  // A full name may be short.
  EXPECT_EQ(Chosen("b"), 2);
}

TEST(CameraChoiceTest, PartsOfThreeCharactersAndMoreDoWhereNothingMatchesWhole) {
  EXPECT_EQ(Chosen("rea"), 1);
  EXPECT_EQ(Chosen("0&0001"), 1);
  EXPECT_EQ(Chosen("vid_12ab"), 2);
  EXPECT_EQ(FailureOf("camera").Code(), ExitCode::kSeveralCameras);
}

TEST(CameraChoiceTest, FewerCharactersAreNoPart) {
  // Each text occurs in the path or name of only one camera.
  for (const std::string choice : {"F", "r", "re", "ab", "nt"}) {
    const Failure failure = FailureOf(choice);
    EXPECT_EQ(failure.Code(), ExitCode::kNoCamera);
    EXPECT_THAT(
        failure.Message(),
        HasSubstr("--camera: no camera has the path, vid:pid or name " + choice +
                  ", and a part of a path or name needs at least 3 characters; there are: 0  "));
  }
  EXPECT_THAT(FailureOf("elsewhere").Message(), Not(HasSubstr("3 characters")));
  // Two characters, but more bytes.
  std::vector<CameraIdentity> cameras = Cameras();
  cameras[0].name = "\xE5\x89\x8D\xE7\xBD\xAE\xE6\x91\x84\xE5\x83\x8F";
  EXPECT_EQ(FailureOf("\xE5\x89\x8D\xE7\xBD\xAE", cameras).Code(), ExitCode::kNoCamera);
  EXPECT_EQ(ChooseCamera(cameras, "\xE5\x89\x8D\xE7\xBD\xAE\xE6\x91\x84").index, 0);
}

TEST(CameraChoiceTest, PartsOfIdsMeanNoCamera) {
  std::vector<CameraIdentity> cameras = Cameras();
  cameras[0].name = "Line 12:34 a234:0001b";
  for (const std::string choice : {"1234:", ":0001", "234:0001", "1234:000", "12:34", "12AB:2"}) {
    const Failure failure = FailureOf(choice, cameras);
    EXPECT_EQ(failure.Code(), ExitCode::kNoCamera) << choice;
    EXPECT_THAT(failure.Message(),
                HasSubstr(choice + ", and vid:pid needs four hexadecimal digits on each side"));
  }
  EXPECT_EQ(FailureOf("1234:0009", cameras).Code(), ExitCode::kNoCamera);
  EXPECT_EQ(FailureOf("1234:0001", cameras).Code(), ExitCode::kSeveralCameras);
  // Texts that are not IDs are searched like others.
  EXPECT_EQ(ChooseCamera(cameras, "Line 12:").index, 0);
}

TEST(CameraChoiceTest, IndexStaysAnIndex) {
  // These digits occur in every path.
  EXPECT_EQ(Chosen("0001"), 1);
  EXPECT_EQ(FailureOf("1234").Code(), ExitCode::kNoCamera);
  EXPECT_THAT(FailureOf("3").Message(), HasSubstr("there is no camera 3, the highest index is 2"));
}

TEST(CameraChoiceTest, WithoutAChoiceTheOnlyCameraIsMeant) {
  EXPECT_EQ(ChooseCamera({Cameras()[2]}, "").index, 2);
  EXPECT_EQ(FailureOf("").Code(), ExitCode::kSeveralCameras);
  EXPECT_EQ(FailureOf("", {}).Code(), ExitCode::kNoCamera);
}

}  // namespace
}  // namespace borvanusb::tool_test
