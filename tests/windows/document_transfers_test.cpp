// What docs/list-files.md says about how lists travel, seen in the trace of the camera.

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>

#include "demo_cameras.h"

namespace {

// A block of 64 bytes, two digits to a byte.
constexpr std::size_t kBlockDigits = 128;

class ListTransfers : public test::DemoCameras {
 protected:
  // Loads a list of chip registers into the first camera and returns the blocks that were set on
  // selector 7, as hexadecimal digits.
  std::vector<std::string> BlocksOf(const std::string& list) {
    Select(kInPackets);
    EXPECT_TRUE(
        UsbRegisterWriteFile(MakeFile("list.txt", test::Bytes(list.begin(), list.end())).c_str()));
    EXPECT_TRUE(test::ProgressBecomes(test::kDone));
    std::vector<std::string> blocks;
    std::ifstream trace(File("demo.trace.jsonl"));
    EXPECT_TRUE(trace.is_open());
    const std::string bytes = "\"bytes\":\"";
    for (std::string line; std::getline(trace, line);) {
      if (line.find(R"("direction":"set","selector":7)") != std::string::npos) {
        blocks.push_back(line.substr(line.find(bytes) + bytes.size(), kBlockDigits));
      }
    }
    return blocks;
  }

  bool LoadI2c(const std::string& list, std::int32_t camera, std::uint64_t end) {
    Select(camera);
    const std::string file = MakeFile("list.txt", test::Bytes(list.begin(), list.end()));
    return UsbI2CWriteFile(file.c_str(), 0) && test::ProgressBecomes(end);
  }

  static std::string Row(std::uint32_t first, int count) {
    std::string lines;
    for (int i = 0; i < count; ++i) {
      std::array<char, 32> line{};
      std::snprintf(line.data(), line.size(), "0x%04x,0x01,\n",
                    static_cast<unsigned>(first) + static_cast<unsigned>(i));
      lines += line.data();
    }
    return lines;
  }

  static std::uint32_t Sensor(std::uint32_t slave, std::uint32_t address, std::int32_t mode) {
    std::uint32_t value = 0xDEADDEAD;
    EXPECT_TRUE(UsbI2cRead(slave, address, &value, mode, 0));
    return value;
  }
};

const char kOpening[] = "0xfffd,0x00,\n0xfffe,0x00,\n";

TEST_F(ListTransfers, TwentyRegistersInARowGoAsSingleOnes) {
  const std::vector<std::string> blocks = BlocksOf(kOpening + Row(0x8000, 20));
  ASSERT_EQ(blocks.size(), 2U);
  // Single registers, not delayed, 18 of them, first delay 0, second delay 0, register, value.
  EXPECT_EQ(blocks[0].substr(0, 26), "00010012fffd00fffe00800001");
  EXPECT_EQ(blocks[1].substr(0, 32), "00010002fffd00fffe00801201801301") << "the last two";
}

TEST_F(ListTransfers, TwentyOneRegistersInARowGoAsARun) {
  const std::vector<std::string> blocks = BlocksOf(kOpening + Row(0x8000, 21));
  ASSERT_EQ(blocks.size(), 1U);
  // A run, behind markers, 21 values, both delays 0, first register, values, unused.
  EXPECT_EQ(blocks[0].substr(0, 16 + 2 * 22),
            "0000011500008000"
            "010101010101010101010101010101010101010101"
            "ff");
}

TEST_F(ListTransfers, MarkersInsideARunArePassedOver) {
  const std::vector<std::string> blocks = BlocksOf(
      kOpening + Row(0x8000, 10) + "0xfffd,0x05,\n0xfffe,0x0a,\n" + Row(0x800A, 11) + "9000,2\n");
  ASSERT_EQ(blocks.size(), 2U);
  EXPECT_EQ(blocks[0].substr(0, 16), "0000011500008000");
  EXPECT_EQ(blocks[1].substr(0, 32), "00010002fffd00fffe00900002900002") << "no delays";
}

TEST_F(ListTransfers, TheRegisterBehindTheGapAfterARunBeginsNoOther) {
  const std::vector<std::string> blocks =
      BlocksOf(kOpening + Row(0x8000, 21) + Row(0x9000, 21) + "0xa000,0x01,\n");
  ASSERT_EQ(blocks.size(), 3U);
  EXPECT_EQ(blocks[0].substr(0, 16), "0000011500008000");
  EXPECT_EQ(blocks[1].substr(0, 26), "00010012fffd00fffe00900001") << "18 single registers";
  EXPECT_EQ(blocks[2].substr(0, 8), "00010004") << "the other four";
}

TEST_F(ListTransfers, ARunBehindThatRegisterNeedsTwentyOneByItself) {
  const std::vector<std::string> blocks =
      BlocksOf(kOpening + Row(0x8000, 21) + Row(0x9000, 22) + "0xa000,0x01,\n");
  ASSERT_EQ(blocks.size(), 4U);
  EXPECT_EQ(blocks[0].substr(0, 16), "0000011500008000");
  EXPECT_EQ(blocks[1].substr(0, 32), "00010002fffd00fffe00900001900001");
  EXPECT_EQ(blocks[2].substr(0, 16), "0000001500009001");
  EXPECT_EQ(blocks[3].substr(0, 32), "00010002fffd00fffe00a00001a00001");
}

TEST_F(ListTransfers, DelaysOfSingleRegistersHoldUntilOthersFollow) {
  const std::vector<std::string> blocks = BlocksOf(
      "0xfffd,5\n0xfffe,0xa\n0x8000,1\n0x8002,2\n0xfffd,7\n0x8004,3\n0x8006,4\n0xfffe,0xff,\n");
  ASSERT_EQ(blocks.size(), 2U);
  // Single registers, both delays differ from 0, two of them, first delay 5, second delay 10.
  EXPECT_EQ(blocks[0].substr(0, 32), "00010102fffd05fffe0a800001800202");
  // A first delay alone sets the second one to 0.
  EXPECT_EQ(blocks[1].substr(0, 32), "00010002fffd07fffe00800403800604");
}

TEST_F(ListTransfers, TheWidthCodeIsWrittenRegisterByRegisterOnly) {
  const std::string list = "0xfff8,0x6c,\n0xfffe,0x03,\n0x3012,0x5a,\n";
  ASSERT_TRUE(LoadI2c(list, kInPackets, test::kDone));
  EXPECT_EQ(Sensor(0x6C, 0xFFFE, kBorvanI2cAddress16Data8), 0x00U);
  ASSERT_TRUE(LoadI2c(list, kRegisterByRegister, test::kDone));
  EXPECT_EQ(Sensor(0x6C, 0xFFFE, kBorvanI2cAddress16Data8), 0x03U);
}

TEST_F(ListTransfers, OtherWidthCodesMeanDifferentWidths) {
  ASSERT_TRUE(LoadI2c("fff8,48\nfffe,2\n0a,76\n", kRegisterByRegister, test::kDone));
  EXPECT_EQ(Sensor(0x48, 0x0A, kBorvanI2cAddress8Data8), 0x76U);
  ASSERT_TRUE(LoadI2c("fff8,6c\nfffe,2\n3012,5a\n", kInPackets, test::kDone));
  EXPECT_EQ(Sensor(0x6C, 0x3012, kBorvanI2cAddress16Data8), 0x5AU);
}

TEST_F(ListTransfers, PausesOfMoreThan255MillisecondsArePassedOver) {
  for (const std::int32_t camera : {kInPackets, kRegisterByRegister}) {
    const auto start = std::chrono::steady_clock::now();
    ASSERT_TRUE(LoadI2c("fff8,6c\nfffe,3\n3012,5a\nffff,2710\n3013,5b\n", camera, test::kDone));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(8)) << camera;
    EXPECT_EQ(Sensor(0x6C, 0x3013, kBorvanI2cAddress16Data8), 0x5BU);
  }
}

}  // namespace
