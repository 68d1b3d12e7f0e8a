// Selecting a camera: its description, its channel, and the feature register.

#include <gtest/gtest.h>

#include <stdexcept>

#include "device/device_fixture.h"

namespace borvan_test {
namespace {

constexpr std::uint32_t kFeatureRegister = 0x1A3;

// The byte read of register 0x1A3, as it is sent: opcode, half of the address low byte first, tag.
const std::vector<std::vector<std::uint8_t>> kFeatureRead = {{0x24, 0xA3, 0x01, 0x18},
                                                             {0x24, 0x00, 0x00, 0x58}};

class CameraSelectionTest : public DeviceTest {
 protected:
  CameraSelectionTest() {
    chip->PutRegister(kFeatureRegister, 0x20);
    other->PutRegister(kFeatureRegister, 0x4F);
  }

 public:
  const std::shared_ptr<MemoryChip> chip = std::make_shared<MemoryChip>();
  const std::shared_ptr<MemoryChip> other = std::make_shared<MemoryChip>();
};

TEST_F(CameraSelectionTest, SelectionDescribesTheCamera) {
  List({MakeCamera(u'a'), MakeCamera(u'b', chip)});
  EXPECT_EQ(device->SelectDevice(1), 0);
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  const auto selected = device->GetSelectedDevice();
  EXPECT_EQ(selected.path, "\\\\?\\usb#vid_1234&pid_5678#b");
  EXPECT_EQ(selected.name, "Camera b");
  EXPECT_EQ(selected.vid, 0x1234);
  EXPECT_EQ(selected.pid, 0x5678);
  EXPECT_EQ(selected.moniker, script->listed.at(1).lock());
}

TEST_F(CameraSelectionTest, SelectionReadsTheFeatureRegister) {
  List({MakeCamera(u'a', chip)});
  EXPECT_EQ(device->FeatureText(), "");
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(chip->Sent(1), kFeatureRead);
  EXPECT_EQ(device->FeatureText(), "20");
}

TEST_F(CameraSelectionTest, RefusedIndexChangesNothingButReadsTheFeatureRegisterAgain) {
  List({MakeCamera(u'a'), MakeCamera(u'b', chip)});
  device->SelectDevice(1);
  for (const std::uint32_t index : {2U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    chip->ForgetTransfers();
    chip->PutRegister(kFeatureRegister, index & 0xFFU);
    EXPECT_EQ(device->SelectDevice(index), kFailedResult) << index;
    EXPECT_EQ(device->GetSelectedIndex(), 1) << index;
    EXPECT_EQ(device->GetSelectedDevice().name, "Camera b") << index;
    EXPECT_EQ(chip->Sent(1), kFeatureRead) << index;
  }
  EXPECT_EQ(device->FeatureText(), "ff");
}

TEST_F(CameraSelectionTest, EveryIndexIsRefusedByAnEmptyList) {
  EXPECT_EQ(device->SelectDevice(0), kFailedResult);
  EXPECT_EQ(device->GetSelectedIndex(), 0);
  EXPECT_EQ(device->GetSelectedDevice().path, "");
}

TEST_F(CameraSelectionTest, SelectingAnotherCameraReleasesTheFormerControl) {
  List({MakeCamera(u'a', chip), MakeCamera(u'b', other)});
  const auto references_before = chip.use_count();
  device->SelectDevice(0);
  EXPECT_EQ(chip.use_count(), references_before + 1);
  device->SelectDevice(1);
  EXPECT_EQ(chip.use_count(), references_before);
  EXPECT_EQ(device->FeatureText(), "4f");
}

TEST_F(CameraSelectionTest, SelectingTheSameCameraAgainOpensItAnew) {
  List({MakeCamera(u'a', chip)});
  device->SelectDevice(0);
  const auto references = chip.use_count();
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(chip.use_count(), references);
}

TEST_F(CameraSelectionTest, CameraWithoutVendorNodeIsSelectedWithItsChannelClosed) {
  List({MakeCamera(u'a', chip), MakeCamera(u'b')});
  device->SelectDevice(0);
  EXPECT_EQ(device->SelectDevice(1), 0);
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  std::string value = "12";
  EXPECT_EQ(device->RegisterRead("0", value, 0), kNullPointerResult);
  EXPECT_EQ(value, "12");
  std::uint32_t length = 99;
  EXPECT_EQ(device->ChannelGetLength(1, &length), kNullPointerResult);
  EXPECT_EQ(length, 99U);
}

TEST_F(CameraSelectionTest, LaterVendorNodeReplacesAnEarlierOne) {
  Camera camera = MakeCamera(u'a', chip);
  camera.vendor_nodes.push_back({other, 5});
  List({camera});
  const auto references_before = chip.use_count();
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(device->FeatureText(), "4f");
  EXPECT_TRUE(chip->Transfers().empty());
  EXPECT_EQ(chip.use_count(), references_before);
}

TEST_F(CameraSelectionTest, StandardExceptionOfTheSystemBecomesAFailure) {
  Camera broken = MakeCamera(u'b');
  broken.raise = [] { throw std::runtime_error("driver"); };
  List({MakeCamera(u'a', chip), broken});
  device->SelectDevice(0);
  EXPECT_EQ(device->SelectDevice(1), kFailedResult);
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  EXPECT_EQ(device->GetSelectedDevice().name, "Camera b");
  // The former camera's channel was closed before the opening.
  std::string value;
  EXPECT_EQ(device->RegisterRead("0", value, 0), kNullPointerResult);
}

TEST_F(CameraSelectionTest, FeatureRegisterIsReadAfterAStandardException) {
  Camera broken = MakeCamera(u'a', chip);
  broken.raise = [] { throw std::bad_alloc(); };
  List({broken});
  EXPECT_EQ(device->SelectDevice(0), kFailedResult);
  EXPECT_EQ(chip->Sent(1), kFeatureRead);
}

TEST_F(CameraSelectionTest, MessageOfTheOpeningPassesOutAfterTheSelectionChanged) {
  Camera broken = MakeCamera(u'b', other);
  broken.raise = [] { throw "ERROR: gcap.pVCap->QueryInterface failed"; };
  List({MakeCamera(u'a', chip), broken});
  device->SelectDevice(0);
  chip->ForgetTransfers();
  try {
    device->SelectDevice(1);
    ADD_FAILURE() << "nothing was thrown";
  } catch (const char* message) {
    EXPECT_STREQ(message, "ERROR: gcap.pVCap->QueryInterface failed");
  }
  EXPECT_EQ(device->GetSelectedIndex(), 1);
  EXPECT_EQ(device->GetSelectedDevice().name, "Camera b");
  EXPECT_TRUE(chip->Transfers().empty());
  EXPECT_TRUE(other->Transfers().empty()) << "the feature register must not be read then";
  EXPECT_EQ(device->FeatureText(), "20");
}

TEST_F(CameraSelectionTest, NodeThatWasOpenedBeforeTheMessageStaysOpen) {
  Camera broken = MakeCamera(u'a', chip);
  broken.raise = [] { throw "ERROR: create node instance failed for KSNODETYPE_DEV_SPECIFIC!"; };
  List({broken});
  EXPECT_THROW(device->SelectDevice(0), const char*);
  chip->PutRegister(0x10, 0x55);
  std::string value;
  EXPECT_EQ(device->RegisterRead("10", value, 0), 0);
  EXPECT_EQ(value, "55");
}

TEST_F(CameraSelectionTest, OpeningWithoutASelectionRaisesTheBindingMessage) {
  try {
    device->OpenExtensionUnit();
    ADD_FAILURE() << "nothing was thrown";
  } catch (const char* message) {
    EXPECT_STREQ(message, "ERROR: gcap.pmVideo->BindToObject failed");
  }
}

TEST_F(CameraSelectionTest, UnansweredFeatureReadKeepsTheFormerText) {
  List({MakeCamera(u'a', chip), MakeCamera(u'b', other), MakeCamera(u'c')});
  device->SelectDevice(0);
  ASSERT_EQ(device->FeatureText(), "20");
  other->Intercept([](const Transfer& transfer) -> std::optional<borvan::Result> {
    if (!transfer.is_length_query && transfer.request.flags == kGetFlags) {
      return static_cast<borvan::Result>(0x8007001F);
    }
    return std::nullopt;
  });
  // The result is that of the selection, whatever the read gave.
  EXPECT_EQ(device->SelectDevice(1), 0);
  EXPECT_EQ(device->FeatureText(), "20");
  EXPECT_EQ(device->SelectDevice(2), 0);
  EXPECT_EQ(device->FeatureText(), "20");
}

TEST_F(CameraSelectionTest, FeatureTextIsEmptyWhenNoReadWasEverAnswered) {
  List({MakeCamera(u'a')});
  EXPECT_EQ(device->SelectDevice(0), 0);
  EXPECT_EQ(device->FeatureText(), "");
}

TEST_F(CameraSelectionTest, DestructionReleasesNeitherMonikersNorTheControl) {
  List({MakeCamera(u'a', chip), MakeCamera(u'b')});
  device->SelectDevice(0);
  const auto references = chip.use_count();
  const auto monikers = script->listed;
  device.reset();
  EXPECT_FALSE(monikers.at(0).expired());
  EXPECT_FALSE(monikers.at(1).expired());
  EXPECT_EQ(chip.use_count(), references);
}

TEST_F(CameraSelectionTest, ControlReleasedBySelectionIsNotKeptByDestruction) {
  List({MakeCamera(u'a', chip), MakeCamera(u'b', other)});
  const auto references_before = chip.use_count();
  device->SelectDevice(0);
  device->SelectDevice(1);
  device.reset();
  EXPECT_EQ(chip.use_count(), references_before);
}

}  // namespace
}  // namespace borvan_test
