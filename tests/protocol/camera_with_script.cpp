#include "camera_with_script.h"

#include <utility>

namespace borvan::test {
namespace {

class OneCameraPlatform : public DevicePlatform {
 public:
  explicit OneCameraPlatform(std::shared_ptr<const Camera> camera) : camera_(std::move(camera)) {}

  void InitialiseCom() override {}

  std::optional<SystemVersion> GetSystemVersion() override { return SystemVersion{10, 0}; }

  VideoInputListing ListVideoInputs() override {
    VideoInputListing listing;
    listing.outcome = VideoInputListing::Outcome::kWalked;
    listing.result = kFalse;
    listing.devices.push_back({u"\\\\?\\usb#vid_1234&pid_5678#1#global", u"Camera",
                               std::make_shared<VideoInputMoniker>()});
    return listing;
  }

  void OpenVendorNodes(VideoInputMoniker* /*moniker*/, const VendorNodeHandler& keep) override {
    if (camera_->control != nullptr) {
      // Not 2: requests name node 2 whatever was found.
      keep(camera_->control, 7);
    }
    if (camera_->refusal != nullptr) {
      throw camera_->refusal;
    }
  }

  std::string ToAnsi(std::u16string_view wide) override {
    std::string text;
    for (const char16_t character : wide) {
      text += static_cast<char>(character);
    }
    return text;
  }

  std::uint32_t TryOpenExclusively(const std::string& /*path*/) override { return 0; }

  std::string SystemMessage(std::uint32_t /*code*/) override { return {}; }

 private:
  const std::shared_ptr<const Camera> camera_;
};

}  // namespace

std::unique_ptr<DevicePlatform> PlatformWith(std::shared_ptr<const Camera> camera) {
  return std::make_unique<OneCameraPlatform>(std::move(camera));
}

std::vector<Transfer> FeatureRead(std::uint8_t value) {
  return {ReportsLength(1, 4), Takes(1, 4, {0x24, 0xA3, 0x01, 0x18}),  // register 0x1A3: A0 A1
          Takes(1, 4, {0x24, 0x00, 0x00, 0x58}),                       // A2 A3
          Gives(1, 4, {0x24, value, 0x00, 0x28})};  // its value, with the tag of a byte read
}

CameraWithScript::CameraWithScript() : device_(PlatformWith(camera_)) {
  camera_->control = control_;
  static_cast<void>(device_.EnumerateDevices());
  control_->Play(FeatureRead(0x00));
  EXPECT_EQ(device_.SelectDevice(0), 0);
  control_->ExpectAllPlayed();
  control_->Play({});
}

void CameraWithScript::StopDuring(std::size_t index) {
  control_->BeforeAnswer([this, index](std::size_t transfer) {
    if (transfer == index) {
      device_.Jobs().stop_requested = true;
    }
  });
}

ProgressCallback CameraWithScript::Recorder() {
  return [this](std::int32_t status, std::int32_t percent) {
    reports_.push_back({status, percent});
  };
}

std::vector<std::int32_t> CameraWithScript::Percentages() const {
  std::vector<std::int32_t> percentages;
  for (const Report& report : reports_) {
    EXPECT_EQ(report.status, 0);
    percentages.push_back(report.percent);
  }
  return percentages;
}

}  // namespace borvan::test
