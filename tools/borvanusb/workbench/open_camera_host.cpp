#include "workbench/open_camera_host.h"

namespace borvanusb {

namespace {

// A handle to a camera that stays open when the handle is closed.
class SharedCamera : public Camera {
 public:
  explicit SharedCamera(std::shared_ptr<Camera> camera) : camera_(std::move(camera)) {}

  const CameraIdentity& Identity() const override { return camera_->Identity(); }
  std::uint64_t Disagreements() const override { return camera_->Disagreements(); }
  std::uint32_t ReadRegister(std::uint32_t address, RegisterWidth width) override {
    return camera_->ReadRegister(address, width);
  }
  std::uint32_t SampleRegister(std::uint32_t address, RegisterWidth width) override {
    return camera_->SampleRegister(address, width);
  }
  void WriteRegister(std::uint32_t address, std::uint32_t value, RegisterWidth width) override {
    camera_->WriteRegister(address, value, width);
  }
  std::vector<std::uint8_t> ReadRegisterRun(std::uint32_t first, std::uint32_t last) override {
    return camera_->ReadRegisterRun(first, last);
  }
  void WriteRegisterList(const std::string& list_text) override {
    camera_->WriteRegisterList(list_text);
  }
  std::uint32_t ReadI2c(const I2cTarget& target, std::uint32_t address) override {
    return camera_->ReadI2c(target, address);
  }
  std::uint32_t SampleI2c(const I2cTarget& target, std::uint32_t address) override {
    return camera_->SampleI2c(target, address);
  }
  std::vector<std::uint32_t> ReadI2cRun(const I2cTarget& target, std::uint32_t first,
                                        std::uint32_t last) override {
    return camera_->ReadI2cRun(target, first, last);
  }
  void WriteI2c(const I2cTarget& target, std::uint32_t address, std::uint32_t value) override {
    camera_->WriteI2c(target, address, value);
  }
  void WriteI2cList(const std::string& list_text, std::uint32_t option) override {
    camera_->WriteI2cList(list_text, option);
  }
  std::vector<std::uint8_t> ReadFlash(std::uint32_t address, std::uint64_t size,
                                      const Advance& advance) override {
    return camera_->ReadFlash(address, size, advance);
  }
  std::uint32_t PeekFlashWord(std::uint32_t address) override {
    return camera_->PeekFlashWord(address);
  }
  void ProgramFlash(std::uint32_t address, std::span<const std::uint8_t> bytes,
                    const Advance& advance) override {
    camera_->ProgramFlash(address, bytes, advance);
  }
  void WriteFlashWord(std::uint32_t address, std::uint32_t value) override {
    camera_->WriteFlashWord(address, value);
  }
  void EraseSector(std::uint32_t address) override { camera_->EraseSector(address); }

 private:
  const std::shared_ptr<Camera> camera_;
};

}  // namespace

std::vector<CameraIdentity> OpenCameraHost::ListCameras() {
  if (!cameras_) {
    cameras_ = host_.ListCameras();
  }
  return *cameras_;
}

std::unique_ptr<Camera> OpenCameraHost::OpenCamera(const CameraIdentity& camera) {
  if (!camera_ || opened_ != camera.path) {
    camera_.reset();
    camera_ = host_.OpenCamera(camera);
    opened_ = camera.path;
  }
  return std::make_unique<SharedCamera>(camera_);
}

}  // namespace borvanusb
