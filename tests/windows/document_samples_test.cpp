// The lists of samples/ load on the cameras of the demonstration and leave what they say.

#include <chrono>

#include "demo_cameras.h"

namespace {

struct Expected {
  std::uint32_t slave;
  std::int32_t mode;
  std::uint32_t register_address;
  std::uint32_t value;
};

class Samples : public test::DemoCameras {
 protected:
  // Returns the milliseconds from the start to the report of its end.
  std::int64_t Load(const std::string& sample, std::int32_t camera, bool is_i2c) {
    const std::string text = test::SourceFile("samples/" + sample);
    const std::string file = MakeFile(sample, test::Bytes(text.begin(), text.end()));
    Select(camera);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(is_i2c ? UsbI2CWriteFile(file.c_str(), 0) : UsbRegisterWriteFile(file.c_str()));
    EXPECT_TRUE(test::ProgressBecomes(test::kDone)) << sample << " on camera " << camera;
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() -
                                                                 start)
        .count();
  }

  static void ExpectSensor(const std::vector<Expected>& registers) {
    for (const Expected& expected : registers) {
      std::uint32_t value = 0xDEADDEAD;
      EXPECT_TRUE(UsbI2cRead(expected.slave, expected.register_address, &value, expected.mode, 0));
      EXPECT_EQ(value, expected.value)
          << std::hex << "slave " << expected.slave << ", register " << expected.register_address;
    }
  }

  void ExpectOnBothCameras(const std::string& sample, const std::vector<Expected>& registers) {
    for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
      SCOPED_TRACE(sample + " on camera " + std::to_string(camera));
      Load(sample, camera, true);
      ExpectSensor(registers);
    }
  }
};

TEST_F(Samples, EightBitRegistersOfEightBits) {
  ExpectOnBothCameras("sensor-8-8.txt", {{0x48, 0, 0x12, 0x80},
                                         {0x48, 0, 0x0A, 0x76},
                                         {0x48, 0, 0x0B, 0x73},
                                         {0x48, 0, 0x7A, 0x20},
                                         {0x48, 0, 0x7B, 0x10},
                                         {0x48, 0, 0x7C, 0x1E},
                                         {0x48, 0, 0x7D, 0x35},
                                         {0x48, 0, 0x7E, 0x5A},
                                         {0x48, 0, 0x7F, 0x69},
                                         {0x48, 0, 0x3A, 0x04}});
}

TEST_F(Samples, SixteenBitRegistersOfEightBits) {
  ExpectOnBothCameras("sensor-16-8.txt", {{0x6C, 1, 0x3500, 0x00},
                                          {0x6C, 1, 0x3501, 0x4E},
                                          {0x6C, 1, 0x3502, 0x20},
                                          {0x6C, 1, 0x350A, 0x00},
                                          {0x6C, 1, 0x350B, 0x10},
                                          {0x6C, 1, 0x3800, 0x00},
                                          {0x6C, 1, 0x3801, 0x10},
                                          {0x6C, 1, 0x3802, 0x00},
                                          {0x6C, 1, 0x3803, 0x08},
                                          {0x6C, 1, 0x3804, 0x0A},
                                          {0x6C, 1, 0x3805, 0x3F},
                                          {0x6C, 1, 0x3806, 0x07},
                                          {0x6C, 1, 0x3807, 0xA7},
                                          {0x6C, 1, 0x503D, 0x80},
                                          // What no line names stays.
                                          {0x6C, 1, 0x300A, 0x56}});
}

TEST_F(Samples, SixteenBitRegistersOfSixteenBits) {
  ExpectOnBothCameras("sensor-16-16.txt", {{0x20, 2, 0x3002, 0x0004},
                                           {0x20, 2, 0x3004, 0x0010},
                                           {0x20, 2, 0x3006, 0x02D3},
                                           {0x20, 2, 0x3008, 0x050F},
                                           {0x20, 2, 0x3012, 0x01A4},
                                           {0x20, 2, 0x3013, 0x0020},
                                           {0x20, 2, 0x3014, 0xBEEF},
                                           {0x20, 2, 0x3070, 0x0002},
                                           {0x20, 2, 0x0000, 0x2604}});
}

TEST_F(Samples, PausesTakeTheirTimeAndASecondDeviceGetsItsRegisters) {
  for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
    SCOPED_TRACE(camera);
    // 255 + 255 + 90 ms after the reset, 10 ms for the clock.
    EXPECT_GE(Load("sensor-with-pauses.txt", camera, true), 610);
    ExpectSensor({{0x6C, 1, 0x0103, 0x01},
                  {0x6C, 1, 0x0301, 0x05},
                  {0x6C, 1, 0x0302, 0x28},
                  {0x6C, 1, 0x0303, 0x01},
                  {0x6C, 1, 0x0100, 0x01},
                  {0x48, 0, 0x02, 0x40},
                  {0x48, 0, 0x03, 0x1C}});
  }
}

TEST_F(Samples, ChipRegistersWithDelays) {
  const std::vector<std::pair<std::uint32_t, std::uint32_t>> registers = {
      {0x8000, 0x01},
      {0x8002, 0x80},
      {0x8010, 0x3C},
      {0x8100, 0x00},
      {0x8101, 0x02},
      {0x8102, 0x06},
      {0x8103, 0x0C},
      {0x8104, 0x14},
      {0x8105, 0x1E},
      {0x8106, 0x2A},
      {0x8107, 0x37},
      {0x8108, 0x45},
      {0x8109, 0x54},
      {0x810A, 0x63},
      {0x810B, 0x72},
      {0x810C, 0x81},
      {0x810D, 0x8F},
      {0x810E, 0x9D},
      {0x810F, 0xAA},
      {0x8110, 0xB6},
      {0x8111, 0xC1},
      {0x8112, 0xCB},
      {0x8113, 0xD5},
      {0x8114, 0xDE},
      {0x8115, 0xE7},
      {0x8116, 0xF0},
      {0x8117, 0xFF},
      {0x8200, 0x11},
      {0x8204, 0x22},
      // Between two registers of the list.
      {0x8001, 0x00},
      {0x8118, 0x00}};
  for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
    Load("registers-with-delays.txt", camera, false);
    for (const auto& [address, expected] : registers) {
      std::uint32_t value = 0xDEADDEAD;
      EXPECT_TRUE(UsbRegisterRead(address, &value, kBorvanRegisterByte));
      EXPECT_EQ(value, expected) << std::hex << "register " << address << " of camera " << camera;
    }
  }
}

}  // namespace
