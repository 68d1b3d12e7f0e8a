// The feature register, read at each selection. (Each test here begins with a camera selected whose
// feature register answered 0.)

#include "camera_with_script.h"

namespace borvan::test {
namespace {

constexpr Result kRefused = Code(0x80004005);

class SelectDevice : public CameraWithScript {};

TEST_F(SelectDevice, ReadsTheFeatureRegisterAsAByte) {
  EXPECT_EQ(device_.FeatureText(), "00");
  Play(FeatureRead(0x2F));
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.FeatureText(), "2f");
}

TEST_F(SelectDevice, ARefusedIndexReadsTheRegisterOfTheCameraStillSelected) {
  Play(FeatureRead(0x20));
  EXPECT_EQ(device_.SelectDevice(1), kRefused);
  EXPECT_EQ(device_.FeatureText(), "20");
  control_->ExpectAllPlayed();
  Play(FeatureRead(0x21));
  EXPECT_EQ(device_.SelectDevice(0xFFFFFFFF), kRefused);
  EXPECT_EQ(device_.FeatureText(), "21");
}

TEST_F(SelectDevice, AnUnansweredReadKeepsTheFormerText) {
  Play(FeatureRead(0x20));
  EXPECT_EQ(device_.SelectDevice(0), 0);
  // No length.
  Play({AnswersLengthQuery(1, kDeviceGone)});
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.FeatureText(), "20");
  control_->ExpectAllPlayed();
  // No reply.
  std::vector<Transfer> script = FeatureRead(0xFF);
  script[3] = GivesNothing(1, 4, kDeviceGone);
  Play(script);
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.FeatureText(), "20");
  control_->ExpectAllPlayed();
  // A foreign reply.
  script[3] = Gives(1, 4, {0x24, 0xFF, 0x00, 0x11});
  Play(script);
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.FeatureText(), "20");
}

TEST_F(SelectDevice, ACameraWithoutVendorNodeClosesTheChannel) {
  camera_->control = nullptr;
  Play({});
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.RegisterWrite("0", "0", 0), kNoChannel);
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(SelectDevice, TheTextOfTheFormerCameraStaysForOneWithoutVendorNode) {
  Play(FeatureRead(0x20));
  EXPECT_EQ(device_.SelectDevice(0), 0);
  control_->ExpectAllPlayed();
  camera_->control = nullptr;
  Play({});
  EXPECT_EQ(device_.SelectDevice(0), 0);
  EXPECT_EQ(device_.FeatureText(), "20");
}

TEST_F(SelectDevice, ARefusalAtOpeningReachesTheCallerAndMakesNoRead) {
  camera_->refusal = "ERROR: a vendor node refused";
  Play({});
  const char* message = nullptr;
  try {
    static_cast<void>(device_.SelectDevice(0));
  } catch (const char* text) {
    message = text;
  }
  EXPECT_STREQ(message, "ERROR: a vendor node refused");
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(SelectDevice, ANodeKeptBeforeARefusalStaysOpen) {
  camera_->refusal = "ERROR: a vendor node refused";
  EXPECT_THROW(static_cast<void>(device_.SelectDevice(0)), const char*);
  camera_->refusal = nullptr;
  Play({ReportsLength(3, 11), Takes(3, 11, {0x32})});
  EXPECT_EQ(device_.FlashErase("0"), 0);
}

TEST_F(SelectDevice, TransfersGoToTheCameraSelectedLast) {
  const auto other = std::make_shared<ScriptedControl>();
  camera_->control = other;
  Play({});
  other->Play(FeatureRead(0x00));
  EXPECT_EQ(device_.SelectDevice(0), 0);
  other->Play({ReportsLength(3, 11), Takes(3, 11, {0x32})});
  EXPECT_EQ(device_.FlashErase("0"), 0);
  other->ExpectAllPlayed();
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(CameraWithoutChannel, RefusedSelectionHasNoFeatureText) {
  EXPECT_EQ(device_.SelectDevice(0), kRefused);
  EXPECT_EQ(device_.FeatureText(), "");
}

}  // namespace
}  // namespace borvan::test
