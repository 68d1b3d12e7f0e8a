#pragma once

// A camera in a scratch folder, and the few verbs that tests use on it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "core/camera.h"
#include "scratch_folder.h"

namespace virtual_camera_test {

using Bytes = std::vector<std::uint8_t>;

constexpr std::int32_t Code(std::uint32_t bits) {
  return static_cast<std::int32_t>(bits);
}
inline constexpr std::int32_t kOk = 0;
inline constexpr std::int32_t kGenFailure = Code(0x8007001F);
inline constexpr std::int32_t kGone = Code(0x8007048F);

// `head` and then zeros up to `size`.
inline Bytes Padded(Bytes head, std::size_t size, std::uint8_t filler = 0) {
  head.resize(size, filler);
  return head;
}

class DeviceTest : public testing::Test {
 protected:
  DeviceTest() {
    configuration.path = "\\\\?\\usb#vid_1234&pid_5678&mi_00#virtual";
    configuration.name = "Virtual camera";
    configuration.flash.size = 64 * 1024;
    configuration.flash.file = folder.File("flash.bin");
    configuration.state_file = folder.File("camera.state");
  }

  virtual_camera::Camera& camera() {
    if (!camera_) {
      camera_ = std::make_unique<virtual_camera::Camera>(configuration);
    }
    return *camera_;
  }
  void CloseCamera() { camera_.reset(); }

  std::int32_t Set(std::uint32_t selector, const Bytes& block) {
    return camera().Set(selector, block).result;
  }
  // The answered bytes; fails the test unless the get succeeds.
  Bytes Get(std::uint32_t selector, std::size_t size) {
    Bytes bytes(size, 0xEE);
    const virtual_camera::Answer answer = camera().Get(selector, bytes);
    EXPECT_EQ(answer.result, kOk);
    bytes.resize(answer.bytes);
    return bytes;
  }
  std::int32_t GetResult(std::uint32_t selector, std::size_t size) {
    Bytes bytes(size);
    return camera().Get(selector, bytes).result;
  }

  // The flash as it is in its file.
  std::uint8_t FlashByte(std::size_t address) const {
    return static_cast<std::uint8_t>(folder.Read("flash.bin").at(address));
  }

  ScratchFolder folder;
  virtual_camera::CameraConfiguration configuration;

 private:
  std::unique_ptr<virtual_camera::Camera> camera_;
};

}  // namespace virtual_camera_test
