// What GetProgressInfo says of jobs that a faulty device, or none, makes fail.
// Selectors: 3 flash words and erasing, 4 fast writing, 5 fast reading.

#include "rig.h"

namespace {

using test::Bytes;
using test::CameraText;
using test::Failure;
using test::kDone;
using test::Pattern;
using test::ProgressBecomes;
using test::Slice;

class LibraryFailures : public test::Rig {
 protected:
  void Faulty(const std::string& fault) { UseCamera(R"(, "faults": [{)" + fault + "}]"); }
  void Program(std::size_t size) {
    ASSERT_TRUE(UsbFlashWriteFile(MakeFile("image", Pattern(size)).c_str(), 0));
  }
  void Dump(std::uint32_t start, std::uint32_t end) {
    ASSERT_TRUE(UsbFlashQuickReadFile(File("dump").c_str(), start, end));
  }
};

TEST_F(LibraryFailures, ARefusedEraseIsAnEraseFailure) {
  Faulty(R"("selector": 3, "direction": "set", "at": 2, "result": "0x8007001F")");
  Program(10'000);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000001)));
}

TEST_F(LibraryFailures, AFailureStaysUntilTheNextReport) {
  Faulty(R"("selector": 3, "direction": "set", "result": "0x8007001F")");
  Program(1);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000001)));
  Sleep(3'500);
  EXPECT_EQ(GetProgressInfo(), Failure(0xE0000001));
}

TEST_F(LibraryFailures, NoLengthOfTheFastWriteIsAFailureOfTheFastInterface) {
  Faulty(R"("selector": 4, "direction": "length", "result": "0x80070490")");
  Program(10);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000007)));
}

TEST_F(LibraryFailures, APositiveAnswerToTheFastWritesLengthQueryIsOneToo) {
  Faulty(R"("selector": 4, "direction": "length", "result": "S_FALSE")");
  Program(10);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000007)));
}

TEST_F(LibraryFailures, APieceThatIsNeverTakenIsAWriteFailure) {
  Faulty(R"("selector": 4, "direction": "set", "result": "0x8007001F")");
  Program(10);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000003)));
}

TEST_F(LibraryFailures, APieceThatIsTakenAtTheFourthAttemptIsNone) {
  UseCamera(R"(, "faults": [
      {"selector": 4, "direction": "set", "at": 1, "result": "0x8007001F"},
      {"selector": 4, "direction": "set", "at": 2, "result": "0x8007001F"},
      {"selector": 4, "direction": "set", "at": 3, "result": "0x8007001F"}])");
  Program(120);
  EXPECT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(Slice(Flash(), 0, 120), Pattern(120));
}

TEST_F(LibraryFailures, ACameraThatGoesWhileItIsProgrammedIsAWriteFailure) {
  Faulty(R"("selector": 4, "direction": "set", "unplug": {"after": 5})");
  Program(1'200);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000003)));
  EXPECT_EQ(Slice(Flash(), 0, 300), Pattern(300)) << "five pieces were written";
  EXPECT_EQ(Slice(Flash(), 300, 60), Bytes(60, 0xFF));
}

TEST_F(LibraryFailures, AnEndBelowTheStartIsAnInvalidAddress) {
  UseCamera();
  Dump(0x101, 0x100);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000004)));
  EXPECT_EQ(FinishedFile(File("dump")), Bytes{});
}

TEST_F(LibraryFailures, NoLengthOfTheFlashCommandsIsALengthFailureOfADump) {
  Faulty(R"("selector": 3, "direction": "length", "result": "0x80070490")");
  Dump(0, 0xFF);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000002)));
}

TEST_F(LibraryFailures, NoLengthOfTheFastReadIsAFailureOfTheFastInterface) {
  Faulty(R"("selector": 5, "direction": "length", "result": "0x80070490")");
  Dump(0, 0xFF);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000007)));
}

TEST_F(LibraryFailures, AFailedReadIsRepeatedUntilItSucceeds) {
  PresetFlash(Pattern(0x10000));
  Faulty(R"("selector": 5, "direction": "get", "every": 2, "result": "0x8007001F")");
  Dump(0x40, 0x2FF);
  EXPECT_TRUE(ProgressBecomes(kDone));
  EXPECT_EQ(FinishedFile(File("dump")), Slice(Pattern(0x10000), 0x40, 0x2C0));
}

// A range below eight bytes has one pass, and its failure is the device's own.
TEST_F(LibraryFailures, AFailedReadOfAFewBytesGivesTheDevicesCode) {
  Faulty(R"("selector": 5, "direction": "get", "result": "0x8007001F")");
  Dump(0, 6);
  EXPECT_TRUE(ProgressBecomes(Failure(0x8007001F)));
  EXPECT_EQ(FinishedFile(File("dump")), Bytes{});
}

TEST_F(LibraryFailures, WithoutAChannelJobsTellWhatTheyMissedFirst) {
  CameraText camera;
  camera.nodes = R"("camera-terminal", "processing")";
  UseCamera(camera);
  Program(10);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000001)));
  Program(0);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000007))) << "nothing to erase";
  Dump(0, 10);
  EXPECT_TRUE(ProgressBecomes(Failure(0xE0000002)));
}

}  // namespace
