// Register lists through the exports: from a file into the chip, and runs of registers into files.

#include <chrono>
#include <thread>

#include "lists_rig.h"

namespace {

using test::Bytes;
using test::Failure;
using test::kDone;
using test::Line;
using test::ProgressBecomes;
using test::Text;

class LibraryLists : public test::ListsRig {};

TEST_F(LibraryLists, OfRegistersArriveInTheChip) {
  UseCamera();
  std::string text = "// settings\r\n" + Line(0xFFFD, 5);
  for (std::uint32_t i = 0; i < 60; ++i) {
    text += Line(0x100 + i, 0xC0 - i);
  }
  text += Line(0x3012, 0x15A) + "0xFFF2, 0x01,\r\n" + Line(0x200, 7) + Line(0x200, 8);
  WriteRegisters(text);
  for (std::uint32_t i = 0; i < 60; ++i) {
    EXPECT_EQ(Register(0x100 + i), 0xC0 - i) << i;
  }
  EXPECT_EQ(Register(0x13C), 0U) << "behind the run";
  EXPECT_EQ(Register(0x3012), 0x5AU) << "a byte";
  EXPECT_EQ(Register(0x200), 8U) << "the later one";
}

TEST_F(LibraryLists, OfRegistersWaitForTheirPausesFirst) {
  UseCamera();
  const auto start = std::chrono::steady_clock::now();
  WriteRegisters(Line(0xFFFD, 0) + Line(0x100, 1) + Line(0xFFFF, 200) + Line(0x101, 2));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  EXPECT_EQ(Register(0x101), 2U);
}

TEST_F(LibraryLists, OfRegistersWithoutHeaderEndWithStatus11AndWriteNothing) {
  UseCamera();
  WriteRegisters(Line(0x100, 1), Failure(11));
  EXPECT_EQ(Register(0x100), 0U);
}

TEST_F(LibraryLists, OfRegistersThatTheChipRefusesAreAFailureOfTheFastInterface) {
  UseCamera(R"(, "faults": [{"selector": 7, "direction": "set", "result": "0x8007001F"}])");
  WriteRegisters(Line(0xFFFD, 0) + Line(0x100, 1), Failure(0xE0000007));
}

TEST_F(LibraryLists, OfRegistersWithoutALengthEndWithTheDevicesCode) {
  UseCamera(R"(, "faults": [{"selector": 7, "direction": "length", "result": "0x80070490"}])");
  WriteRegisters(Line(0xFFFD, 0) + Line(0x100, 1), Failure(0x80070490));
}

TEST_F(LibraryLists, OfRegistersWithoutAnEntryAreRefusedAtOnce) {
  UseCamera();
  for (const char* const text : {"", "// nothing\r\n\r\n", "0xfff2,1,\r\n", "no comma\r\n"}) {
    Renew();
    EXPECT_FALSE(UsbRegisterWriteFile(ListFile(text).c_str())) << text;
    EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A)) << text;
  }
}

TEST_F(LibraryLists, OfRegistersWithALineOfOneFieldAreRefusedWhole) {
  UseCamera();
  EXPECT_FALSE(
      UsbRegisterWriteFile(ListFile(Line(0xFFFD, 0) + Line(0x100, 1) + "0x101,\r\n").c_str()));
  EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A));
  EXPECT_EQ(Register(0x100), 0U);
}

TEST_F(LibraryLists, ThatDoNotExistAreRefusedAtOnce) {
  UseCamera();
  for (const std::string& name : {std::string(), File("missing.txt")}) {
    Renew();
    EXPECT_FALSE(UsbRegisterWriteFile(name.c_str()));
    EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A));
    Renew();
    EXPECT_FALSE(UsbI2CWriteFile(name.c_str(), 0));
    EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A));
  }
}

// ---- Runs of registers ----

TEST_F(LibraryLists, RegisterRunsAsTextHaveTheirPageAndALineEach) {
  UseCamera(R"(, "registers": {"0x100": 90, "0x101": "0x112233A5"})");
  EXPECT_EQ(Text(RegisterRun("run.txt", 0x100, 0x101)),
            "0xfffd, 0x00,\r\n0xfffe, 0x00,\r\n0x0100, 0x5a,\r\n0x0101, 0xa5,\r\n");
  EXPECT_EQ(Text(RegisterRun("run.txt", 0x12340100, 0x100)),
            "0xfffd, 0x12,\r\n0xfffe, 0x34,\r\n0x0100, 0x00,\r\n")
      << "the run stays in its start's page";
}

TEST_F(LibraryLists, RegisterRunsElseAreOneByteEach) {
  UseCamera(R"(, "registers": {"0x100": 90, "0x101": "0x112233A5", "0x138": 1, "0x170": 2})");
  for (const char* const name : {"run.bin", "run.TXT", "run", "run.txt.raw"}) {
    EXPECT_EQ(RegisterRun(name, 0x100, 0x101), (Bytes{0x5A, 0xA5})) << name;
  }
  // Three exchanges of 56.
  const Bytes run = RegisterRun("run.bin", 0x100, 0x170);
  ASSERT_EQ(run.size(), 0x71U);
  EXPECT_EQ(run[0x38], 1U);
  EXPECT_EQ(run[0x70], 2U);
}

TEST_F(LibraryLists, RegisterRunsThatEndBelowTheirStartAreEmpty) {
  UseCamera();
  EXPECT_EQ(RegisterRun("run.txt", 0x101, 0x100), Bytes{});
}

TEST_F(LibraryLists, RegisterRunsThatFailLeaveAnEmptyFile) {
  UseCamera(R"(, "faults": [{"selector": 7, "direction": "get", "result": "0x8007001F"}])");
  EXPECT_TRUE(UsbRegisterReadFile(File("run.txt").c_str(), 0x100, 0x101));
  EXPECT_TRUE(ProgressBecomes(Failure(0x8007001F)));
  EXPECT_EQ(FinishedFile(File("run.txt")), Bytes{});
}

TEST_F(LibraryLists, RegisterRunsAreListsThatCanBeWrittenBack) {
  UseCamera();
  std::string text = Line(0xFFFD, 0);
  for (std::uint32_t i = 0; i < 100; ++i) {
    text += Line(0x100 + i, (i * 7) & 0xFF);
  }
  WriteRegisters(text);
  const std::string run = Text(RegisterRun("run.txt", 0x100, 0x163));
  WriteRegisters(Line(0xFFFD, 0) + Line(0x110, 0xEE) + Line(0x163, 0xEE));
  WriteRegisters(run);
  EXPECT_EQ(Text(RegisterRun("run.txt", 0x100, 0x163)), run);
  EXPECT_EQ(Register(0x110), 0x70U);
}

// ---- Lists of both kinds ----

TEST_F(LibraryLists, ReadIntoFilesThatCanNotBeMadeAreAFileError) {
  UseSensors(false);
  const std::string file = File("no-such-folder\\run.txt");
  EXPECT_TRUE(UsbRegisterReadFile(file.c_str(), 0, 1));
  EXPECT_TRUE(ProgressBecomes(Failure(0xE000000A)));
  Renew();
  EXPECT_TRUE(UsbI2CReadFile(0, 1, file.c_str(), 0x20, 0));
  EXPECT_TRUE(ProgressBecomes(Failure(0xE000000A)));
  Renew();
  EXPECT_FALSE(UsbRegisterReadFile("", 0, 1));
  EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A));
  Renew();
  EXPECT_FALSE(UsbI2CReadFile(0, 1, "", 0x20, 0));
  EXPECT_EQ(GetProgressInfo(), Failure(0xE000000A));
}

TEST_F(LibraryLists, WithoutAChannelTellWhatTheyMissedFirst) {
  test::CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  UseCamera(camera);
  WriteRegisters(Line(0xFFFD, 0) + Line(1, 2), Failure(0x80004003));
  WriteI2c(Line(0xFFF8, 0x20) + Line(0xFFFE, 0) + Line(1, 2), Failure(0xE0000002));
  Renew();
  EXPECT_TRUE(UsbRegisterReadFile(File("run").c_str(), 0, 1));
  EXPECT_TRUE(ProgressBecomes(Failure(0x80004003)));
  Renew();
  EXPECT_TRUE(UsbI2CReadFile(0, 1, File("run").c_str(), 0x20, 0));
  EXPECT_TRUE(ProgressBecomes(Failure(0x80004003)));
}

TEST_F(LibraryLists, ProgressOfAFinishedOneStaysForThreeSeconds) {
  UseCamera();
  WriteRegisters(Line(0xFFFD, 0) + Line(1, 2));
  std::this_thread::sleep_for(std::chrono::milliseconds(2'500));
  EXPECT_EQ(GetProgressInfo(), kDone);
  std::this_thread::sleep_for(std::chrono::milliseconds(1'500));
  EXPECT_EQ(GetProgressInfo(), 0U);
}

}  // namespace
