// Selectors 3, 4 and 5: the SPI NOR flash.
#include <chrono>

#include "device_fixture.h"

namespace virtual_camera_test {
namespace {

using testing::ElementsAre;
using virtual_camera::BeyondEnd;

class FlashTest : public DeviceTest {
 protected:
  static Bytes WriteWord(std::uint16_t address, Bytes word) {
    return {0x38,
            0x00,
            0x00,
            static_cast<std::uint8_t>(address >> 8),
            static_cast<std::uint8_t>(address),
            word[0],
            word[1],
            word[2],
            word[3],
            0x00,
            0x00};
  }
  static double Milliseconds(std::chrono::steady_clock::time_point since) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - since)
        .count();
  }
};

TEST_F(FlashTest, NewFlashIsErasedToItsWholeSize) {
  camera();
  EXPECT_EQ(folder.Read("flash.bin"), std::string(64 * 1024, '\xFF'));
}

TEST_F(FlashTest, WordWriteStoresTheValueMostSignificantByteFirst) {
  EXPECT_EQ(Set(3, {0x38,                    // write
                    0x00, 0x00, 0x10, 0x00,  // address 0x00001000
                    0x01, 0x02, 0x03, 0x04,  // value 0x01020304
                    0x00, 0x00}),            // spare
            kOk);
  EXPECT_EQ(FlashByte(0x1000), 0x01);
  EXPECT_EQ(FlashByte(0x1001), 0x02);
  EXPECT_EQ(FlashByte(0x1002), 0x03);
  EXPECT_EQ(FlashByte(0x1003), 0x04);
  EXPECT_EQ(FlashByte(0x1004), 0xFF);
}

TEST_F(FlashTest, WordReadAnswersBytesInFlashOrderAtAnyAddress) {
  folder.Write("flash.bin", std::string("\x10\x11\x12\x13\x14\x15", 6));
  EXPECT_EQ(Set(3, {0x34,                    // read
                    0x00, 0x00, 0x00, 0x01,  // address 1
                    0, 0, 0, 0, 0x00, 0x00}),
            kOk);
  // opcode and address echoed, four bytes from address 1, spare
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0, 0, 0, 1, 0x11, 0x12, 0x13, 0x14, 0, 0));
}

// People and tests replace it without asking who has it open.
TEST_F(FlashTest, FileMayBeReplacedWhileACameraHasItOpen) {
  const Bytes read = {0x34, 0, 0, 0x10, 0x00, 0, 0, 0, 0, 0, 0};  // 4 bytes from 0x1000
  camera();
  folder.Write("flash.bin", std::string(64 * 1024, '\x21'));
  EXPECT_EQ(Set(3, read), kOk);
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0, 0, 0x10, 0, 0x21, 0x21, 0x21, 0x21, 0, 0));
  // What is missing is as if erased.
  folder.Write("flash.bin", "");
  EXPECT_EQ(Set(3, read), kOk);
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0, 0, 0x10, 0, 0xFF, 0xFF, 0xFF, 0xFF, 0, 0));
}

TEST_F(FlashTest, ProgrammingOnlyClearsBits) {
  Set(3, WriteWord(0x20, {0xF0, 0xF0, 0xF0, 0xF0}));
  Set(3, WriteWord(0x20, {0xCC, 0xFF, 0x0F, 0x00}));
  EXPECT_EQ(FlashByte(0x20), 0xC0);
  EXPECT_EQ(FlashByte(0x21), 0xF0);
  EXPECT_EQ(FlashByte(0x22), 0x00);
  EXPECT_EQ(FlashByte(0x23), 0x00);
}

TEST_F(FlashTest, EraseSetsTheSectorThatHoldsTheAddress) {
  folder.Write("flash.bin", std::string(64 * 1024, '\0'));
  EXPECT_EQ(Set(3, {0x32,                    // erase
                    0x00, 0x00, 0x10, 0x01,  // address 0x1001, in the second sector
                    0, 0, 0, 0, 0, 0}),
            kOk);
  EXPECT_EQ(FlashByte(0x0FFF), 0x00);
  EXPECT_EQ(FlashByte(0x1000), 0xFF);
  EXPECT_EQ(FlashByte(0x1FFF), 0xFF);
  EXPECT_EQ(FlashByte(0x2000), 0x00);
}

TEST_F(FlashTest, PacketCrossesPagesInAddressOrder) {
  Bytes packet = {0x00, 0x00, 0x01, 0xE0};  // address 0x1E0: 32 bytes before the page's end
  for (std::uint8_t i = 0; i < 60; ++i) {
    packet.push_back(i);
  }
  EXPECT_EQ(Set(4, packet), kOk);
  EXPECT_EQ(FlashByte(0x1DF), 0xFF);
  EXPECT_EQ(FlashByte(0x1E0), 0);
  EXPECT_EQ(FlashByte(0x1FF), 31);
  EXPECT_EQ(FlashByte(0x200), 32);
  EXPECT_EQ(FlashByte(0x21B), 59);
  EXPECT_EQ(FlashByte(0x21C), 0xFF);
  EXPECT_EQ(FlashByte(0x100), 0xFF);  // where a part alone would have wrapped to
}

TEST_F(FlashTest, FastReadAnswersSixtyFourBytes) {
  folder.Write("flash.bin", std::string(100, 'x') + "0123456789");
  EXPECT_EQ(Set(5, Padded({0x00, 0x00, 0x00, 0x63}, 64)), kOk);  // address 99
  Bytes expected = Padded({'x', '0', '1', '2', '3', '4', '5', '6', '7', '8', '9'}, 64, 0xFF);
  EXPECT_EQ(Get(5, 64), expected);
}

TEST_F(FlashTest, AddressesWrapAtTheEnd) {
  Bytes packet = Padded({0x00, 0x00, 0xFF, 0xFE}, 64, 0xFF);  // two bytes before the end
  packet[4] = 0x01;
  packet[5] = 0x02;
  packet[6] = 0x03;
  EXPECT_EQ(Set(4, packet), kOk);
  EXPECT_EQ(FlashByte(0xFFFE), 0x01);
  EXPECT_EQ(FlashByte(0xFFFF), 0x02);
  EXPECT_EQ(FlashByte(0x0000), 0x03);
  Set(3, {0x34, 0x12, 0x34, 0xFF, 0xFF, 0, 0, 0, 0, 0, 0});  // far beyond the end
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0x12, 0x34, 0xFF, 0xFF, 0x02, 0x03, 0xFF, 0xFF, 0, 0));
  EXPECT_EQ(Set(3, {0x32, 0x00, 0x01, 0x00, 0x00, 0, 0, 0, 0, 0, 0}), kOk);  // erases sector 0
  EXPECT_EQ(FlashByte(0x0000), 0xFF);
}

TEST_F(FlashTest, AddressesBeyondTheEndFailWhereTheFlashDoesNotWrap) {
  configuration.flash.beyond_end = BeyondEnd::kFail;
  EXPECT_EQ(Set(3, {0x38, 0x00, 0x01, 0x00, 0x00, 1, 2, 3, 4, 0, 0}), kGenFailure);
  EXPECT_EQ(Set(3, {0x32, 0x00, 0x01, 0x00, 0x00, 0, 0, 0, 0, 0, 0}), kGenFailure);
  EXPECT_EQ(Set(4, Padded({0x00, 0x01, 0x00, 0x00}, 64)), kGenFailure);
  EXPECT_EQ(Set(3, {0x34, 0x00, 0x01, 0x00, 0x00, 0, 0, 0, 0, 0, 0}), kOk);
  EXPECT_EQ(GetResult(3, 11), kGenFailure);  // a read fails when its reply is fetched
  EXPECT_EQ(Set(5, Padded({0x00, 0x01, 0x00, 0x00}, 64)), kOk);
  EXPECT_EQ(GetResult(5, 64), kGenFailure);
  EXPECT_EQ(folder.Read("flash.bin"), std::string(64 * 1024, '\xFF'));
}

TEST_F(FlashTest, TransferOverTheEndKeepsWhatIsInside) {
  configuration.flash.beyond_end = BeyondEnd::kFail;
  EXPECT_EQ(Set(4, Padded({0x00, 0x00, 0xFF, 0xFF}, 64)), kOk);  // one byte is inside
  EXPECT_EQ(FlashByte(0xFFFF), 0x00);
  EXPECT_EQ(FlashByte(0x0000), 0xFF);
  EXPECT_EQ(Set(5, Padded({0x00, 0x00, 0xFF, 0xFF}, 64)), kOk);
  EXPECT_EQ(Get(5, 64), Padded({0x00}, 64, 0xFF));
}

TEST_F(FlashTest, UnknownOpcodeFailsAndAnswersZeros) {
  EXPECT_EQ(Set(3, {0x33, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0}), kGenFailure);
  EXPECT_EQ(Get(3, 11), Bytes(11, 0));
  EXPECT_EQ(FlashByte(0), 0xFF);
}

TEST_F(FlashTest, FlashOutlivesTheCamera) {
  Set(3, WriteWord(0x00, {1, 2, 3, 4}));
  CloseCamera();
  Set(3, {0x34, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_THAT(Get(3, 11), ElementsAre(0x34, 0, 0, 0, 0, 1, 2, 3, 4, 0, 0));
}

TEST_F(FlashTest, NextTransferWaitsForTheErase) {
  configuration.flash.erase_ms = 500;
  camera();
  const auto start = std::chrono::steady_clock::now();
  Set(3, {0x32, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  const double after_erase = Milliseconds(start);
  camera().QueryLength(3);  // the USB side is never busy
  const double after_query = Milliseconds(start);
  Get(3, 11);
  EXPECT_LT(after_erase, 400.0);
  EXPECT_LT(after_query, 450.0);
  EXPECT_GE(Milliseconds(start), 499.0);
}

TEST_F(FlashTest, PacketOverTwoPagesTakesTwoProgramTimes) {
  configuration.flash.program_us = 30000;
  camera();
  const auto start = std::chrono::steady_clock::now();
  Set(4, Padded({0x00, 0x00, 0x00, 0xF0}, 64));  // 16 bytes in one page, 44 in the next
  Get(4, 64);
  EXPECT_GE(Milliseconds(start), 59.0);
}

TEST_F(FlashTest, FileLongerThanTheFlashIsRefused) {
  folder.Write("flash.bin", std::string(64 * 1024 + 1, '\0'));
  EXPECT_THROW(camera(), virtual_camera::ConfigurationError);
  EXPECT_EQ(folder.Read("flash.bin").size(), 64U * 1024 + 1);
}

}  // namespace
}  // namespace virtual_camera_test
