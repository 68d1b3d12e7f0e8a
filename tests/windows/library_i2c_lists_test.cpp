// I2C lists through the exports, on both of the library's paths: in packets, where the chip says
// that it takes them, and step by step.

#include <chrono>
#include <fstream>
#include <iterator>

#include "lists_rig.h"

namespace {

using test::Bytes;
using test::Failure;
using test::kDone;
using test::Line;
using test::ProgressBecomes;
using test::Text;

class LibraryI2cLists : public test::ListsRig, public testing::WithParamInterface<bool> {
 protected:
  static bool IsFast() { return GetParam(); }
};

TEST_P(LibraryI2cLists, ArriveInEachSensorAtItsWidth) {
  UseSensors(IsFast());
  std::string text = Line(0xFFF8, 0x20) + Line(0xFFFE, 1);
  for (std::uint32_t i = 0; i < 60; ++i) {
    text += Line(0x10 + i, 0x80 + i);
  }
  text += Line(0xFEF0, 9) + Line(0xFEF1, 9) + Line(0xFFF8, 0x30) + Line(0xFFFF, 1) +
          Line(0xFFFE, 3) + Line(0x3012, 0x5A) + Line(0x3500, 0x15B) + Line(0xFFF8, 0x40) +
          Line(0xFFFE, 4) + Line(0x3012, 0xABCD) + Line(0x3013, 0x1234) + Line(0x4000, 1) +
          Line(0xFFFE, 0x4321);
  WriteI2c(text);
  for (std::uint32_t i = 0; i < 60; ++i) {
    EXPECT_EQ(Sensor(0x20, 0, 0x10 + i), 0x80 + i) << i;
  }
  EXPECT_EQ(Sensor(0x30, 1, 0x3012), 0x5AU);
  EXPECT_EQ(Sensor(0x30, 1, 0x3500), 0x5BU);
  EXPECT_EQ(Sensor(0x40, 2, 0x3012), 0xABCDU);
  EXPECT_EQ(Sensor(0x40, 2, 0x3013), 0x1234U);
  EXPECT_EQ(Sensor(0x40, 2, 0x4000), 1U);
  EXPECT_EQ(Sensor(0x40, 2, 0xFFFE), 0x4321U) << "no slave stood before it";
}

// The steps send the width code to the sensor as well, the packets don't.
TEST_P(LibraryI2cLists, WriteTheWidthCodeItselfOnlyInSteps) {
  UseSensors(IsFast());
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x3012, 0x5A));
  EXPECT_EQ(Sensor(0x30, 1, 0xFFFE), IsFast() ? 0U : 3U);
}

// An unknown width code is mode 1 in packets, mode 0 in steps.
TEST_P(LibraryI2cLists, TakeAnUnknownWidthCodeForTheirPathsOwn) {
  UseSensors(IsFast());
  WriteI2c(Line(0xFFF8, IsFast() ? 0x30 : 0x20) + Line(0xFFFE, 2) + Line(0x12, 0x5A));
  EXPECT_EQ(IsFast() ? Sensor(0x30, 1, 0x12) : Sensor(0x20, 0, 0x12), 0x5AU);
}

TEST_P(LibraryI2cLists, PauseBetweenRegisters) {
  UseSensors(IsFast());
  const auto start = std::chrono::steady_clock::now();
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x12, 1) + Line(0xFFFF, 0xC8) +
           Line(0x13, 2) + Line(0xFFFF, 0x100));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_EQ(Sensor(0x30, 1, 0x13), 2U);
}

// Packets carry it beside the width mode, in the high half of byte 2; steps have no place for it.
TEST_P(LibraryI2cLists, HandTheOptionToTheChipInPackets) {
  UseSensors(IsFast(), R"(, "trace": "trace.jsonl")");
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x3012, 0x5A), kDone, 0xA7);
  EXPECT_EQ(Sensor(0x30, 1, 0x3012), 0x5AU);
  // Run, slave, option and mode, one register, two unused bytes, 0x3012, 0x5A.
  std::ifstream trace(File("trace.jsonl"));
  const std::string transfers(std::istreambuf_iterator<char>(trace), {});
  const bool has_packet = transfers.find("00307101ffff30125a") != std::string::npos;
  EXPECT_EQ(has_packet, IsFast());
  EXPECT_NE(transfers.find("\"selector\":2"), std::string::npos) << "the trace must be readable";
}

TEST_P(LibraryI2cLists, WithARegisterBeforeSlaveAndWidthAreIncomplete) {
  UseSensors(IsFast());
  for (const std::string& head : {std::string(), Line(0xFFF8, 0x30), Line(0xFFFE, 3)}) {
    WriteI2c(head + Line(0x3012, 0x5A), Failure(0xE0000008));
    EXPECT_EQ(Sensor(0x30, 1, 0x3012), 0U) << head;
  }
}

TEST_P(LibraryI2cLists, WithoutAnEntryAreAFileError) {
  UseSensors(IsFast());
  WriteI2c("", Failure(0xE000000A));
  WriteI2c("// nothing\r\n", Failure(0xE000000A));
}

TEST_P(LibraryI2cLists, WithALineOfOneFieldAreAFileErrorAndWriteNothing) {
  UseSensors(IsFast());
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x3012, 0x5A) + "0x3013,\r\n",
           Failure(0xE000000A));
  EXPECT_EQ(Sensor(0x30, 1, 0x3012), 0U);
}

TEST_P(LibraryI2cLists, ToAnAbsentSlaveEndWithTheDevicesCode) {
  UseSensors(IsFast());
  WriteI2c(Line(0xFFF8, 0x55) + Line(0xFFFE, 1) + Line(0x12, 1), Failure(0x8007001F));
}

TEST_P(LibraryI2cLists, WithoutALengthTellWhichInterfaceLacksIt) {
  UseSensors(IsFast(), R"(, "faults": [{"selector": )" + std::string(IsFast() ? "6" : "2") +
                           R"(, "direction": "length", "result": "0x80070490"}])");
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x12, 1),
           Failure(IsFast() ? 0xE0000007 : 0xE0000002));
}

TEST_P(LibraryI2cLists, AreReadBackAsLinesWithoutBlanks) {
  UseSensors(IsFast());
  WriteI2c(Line(0xFFF8, 0x30) + Line(0xFFFE, 3) + Line(0x3012, 0x5A) + Line(0x3013, 0xA5) +
           Line(0xFFF8, 0x40) + Line(0xFFFE, 4) + Line(0x3012, 0x12A5));
  EXPECT_EQ(Text(I2cRun("run.txt", 0x30, 1, 0x3012, 0x3014)),
            "0x3012,0x5a,\r\n0x3013,0xa5,\r\n0x3014,0x00,\r\n");
  EXPECT_EQ(Text(I2cRun("run.txt", 0x40, 2, 0x3012, 0x3012)), "0x3012,0x00a5,\r\n")
      << "a run read gives one byte a register";
  EXPECT_EQ(I2cRun("run.bin", 0x30, 1, 0x3012, 0x3014), (Bytes{0x5A, 0xA5, 0x00}));
  EXPECT_EQ(I2cRun("run.TXT", 0x30, 1, 0x3012, 0x3013), (Bytes{0x5A, 0xA5}));
}

TEST_P(LibraryI2cLists, AreReadBackOverManyExchanges) {
  UseSensors(IsFast());
  std::string text = Line(0xFFF8, 0x20) + Line(0xFFFE, 0);
  Bytes values;
  for (std::uint32_t i = 0; i < 0x100; ++i) {
    values.push_back(static_cast<std::uint8_t>(i * 5 + 1));
    text += Line(i, values.back());
  }
  WriteI2c(text);
  EXPECT_EQ(I2cRun("run.bin", 0x20, 0, 0, 0xFF), values);
}

TEST_P(LibraryI2cLists, RunsOf32BitAddressesHaveNoTextForm) {
  UseCamera(std::string(R"(, "registers": {"0x1a3": )") + (IsFast() ? "32" : "0") +
            R"(}, "sensors": [{"slave": 16, "mode": 5, "registers": {"0x12": 90}}])");
  EXPECT_EQ(I2cRun("run.txt", 0x10, 5, 0x12, 0x13), Bytes{});
  EXPECT_EQ(I2cRun("run.bin", 0x10, 5, 0x12, 0x13), (Bytes{0x5A, 0x00}));
}

TEST_P(LibraryI2cLists, RunsThatFailLeaveAnEmptyFile) {
  UseSensors(IsFast());
  EXPECT_TRUE(UsbI2CReadFile(0x12, 0x13, File("run.bin").c_str(), 0x55, 1));
  EXPECT_TRUE(ProgressBecomes(Failure(0x8007001F)));
  EXPECT_EQ(FinishedFile(File("run.bin")), Bytes{});
}

INSTANTIATE_TEST_SUITE_P(Each, LibraryI2cLists, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& fast) {
                           return fast.param ? "Packets" : "Steps";
                         });

}  // namespace
