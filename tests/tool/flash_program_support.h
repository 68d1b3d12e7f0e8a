#pragma once

// An image that covers parts of three sectors, for the tests of flash program.

#include <chrono>
#include <cstdint>

#include "flash/program.h"
#include "flash_support.h"

namespace borvanusb::tool_test {

constexpr std::uint32_t kAddress = 0x1F00;  // inside a sector
constexpr std::size_t kImageSize = 0x1500;  // ends inside the third sector
constexpr unsigned kLandmarks = 9;          // words to recognise the camera

class FlashProgramTest : public FlashTest {
 protected:
  FlashProgramTest() {
    Flash() = Pattern(64 * kKibi, 1);
    before_ = Flash();
    image_ = Pattern(kImageSize, 2);
    command_.image = WriteFile("image.bin", image_);
    command_.address = kAddress;
  }

  Outcome Program() { return Run(command_); }
  Bytes Wanted() const { return Overlaid(before_, kAddress, image_); }
  // Every transfer takes 125 microseconds.
  void LetTimePass() {
    Chip().before_transfer = [this](std::uint64_t) {
      host.clock += std::chrono::microseconds(125);
    };
  }
  void UseImage(const Bytes& bytes, std::uint32_t address) {
    image_ = bytes;
    command_.image = WriteFile("image.bin", bytes);
    command_.address = address;
  }

  Bytes before_;
  Bytes image_;
  FlashProgramCommand command_;
};

}  // namespace borvanusb::tool_test
