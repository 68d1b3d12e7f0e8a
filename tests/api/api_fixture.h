#pragma once

#include <borvan_usb.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "api/device_instance.h"
#include "support/scripted_platform.h"

namespace borvan_test {

// Exports on a scripted system; there is no instance before and after each test.
class ApiTest : public testing::Test {
 public:
  // The running test's system, for the instance that the library makes.
  static std::unique_ptr<borvan::DevicePlatform> MakePlatform();

 protected:
  ApiTest();
  ~ApiTest() override;

  // An instance with one selected camera, whose chip has answered its first feature read.
  void StartWithChip();

  // Waits until the instance's job has ended; false when it does not.
  static bool JobEnded();

 public:
  // What each test sets and reads.
  const std::shared_ptr<PlatformScript> script = std::make_shared<PlatformScript>();
  const std::shared_ptr<MemoryChip> chip = std::make_shared<MemoryChip>();
  std::function<void()> on_platform_made;  // called before an instance is made
};

// The process's instance with operations that note their texts and answer what the test says.
class RecordingDevice : public borvan::BorvanUsb_Q7 {
 public:
  explicit RecordingDevice(std::shared_ptr<PlatformScript> script)
      : BorvanUsb_Q7(std::make_unique<ScriptedPlatform>(std::move(script))) {}

  borvan::Result result = 0;
  std::string answer;  // the text that reads give back
  std::vector<std::string> texts;
  std::vector<std::uint32_t> numbers;
  std::vector<borvan::ListEntry> list;
  std::vector<std::uint8_t> image;

  borvan::Result FlashWrite(std::string address, std::string value) override {
    texts = {"FlashWrite", address, value};
    return result;
  }
  borvan::Result FlashRead(std::string address, std::string& value) override {
    texts = {"FlashRead", address, value};
    value = answer;
    return result;
  }
  borvan::Result FlashErase(std::string address) override {
    texts = {"FlashErase", address};
    return result;
  }
  borvan::Result RegisterWrite(std::string address, std::string value, std::uint8_t flag) override {
    texts = {"RegisterWrite", address, value};
    numbers = {flag};
    return result;
  }
  borvan::Result RegisterRead(std::string address, std::string& value, std::uint8_t flag) override {
    texts = {"RegisterRead", address, value};
    numbers = {flag};
    value = answer;
    return result;
  }
  borvan::Result FlashWriteImage(std::vector<std::uint8_t> bytes, std::uint32_t start,
                                 borvan::ProgressCallback) override {
    image = std::move(bytes);
    numbers = {start};
    return result;
  }
  borvan::Result FlashQuickReadImage(std::vector<std::uint8_t>& output, std::uint32_t start,
                                     std::uint32_t end, borvan::ProgressCallback) override {
    output = {0x11, 0x22};
    numbers = {start, end};
    return result;
  }
  borvan::Result RegisterWriteList(std::vector<borvan::ListEntry> entries, std::uint32_t ignored,
                                   borvan::ProgressCallback) override {
    list = std::move(entries);
    numbers = {ignored};
    return result;
  }
  borvan::Result RegisterReadList(std::vector<borvan::ListEntry>&, std::uint32_t start,
                                  std::uint32_t end, borvan::ProgressCallback) override {
    numbers = {start, end};
    return result;
  }
  borvan::Result I2cWriteList(std::vector<borvan::ListEntry> entries, std::uint32_t option,
                              borvan::ProgressCallback) override {
    list = std::move(entries);
    numbers = {option};
    return result;
  }
  borvan::Result I2cReadList(std::vector<borvan::ListEntry>&, std::uint32_t slave,
                             std::uint32_t start, std::uint32_t end, std::uint32_t mode,
                             borvan::ProgressCallback) override {
    numbers = {slave, start, end, mode};
    return result;
  }
};

// Exports on a recording instance.
class RecordedApiTest : public ApiTest {
 protected:
  RecordedApiTest() { borvan::GlobalInstance().Set(device); }

 public:
  const std::shared_ptr<RecordingDevice> device = std::make_shared<RecordingDevice>(script);
};

}  // namespace borvan_test
