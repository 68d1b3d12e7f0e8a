// flash read, word, erase, map and verify.
#include "base/sha256.h"
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "flash_support.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {
namespace {

class FlashCommandsTest : public FlashTest {
 protected:
  FlashCommandsTest() {
    Flash() = Pattern(64 * kKibi, 1);
    before_ = Flash();
  }

  Bytes before_;
};

// ---- read ---------------------------------------------------------------------------------------

TEST_F(FlashCommandsTest, ReadWithoutAFileShowsAHexDump) {
  Flash()[0x1000] = 0x41;
  Flash()[0x1001] = 0x00;
  const Outcome outcome = Run(FlashReadCommand{{0x1000, 0x1001}, ""});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(output->out,
            "00001000  41 00                                             |A.              |\n");
  EXPECT_EQ(outcome.result["file"], nullptr);
  EXPECT_EQ(outcome.result["bytes"], "4100");
  EXPECT_EQ(BreachOfSchema("flash-read", outcome.result), "");
}

TEST_F(FlashCommandsTest, ReadToStandardOutputIsTheBytesAlone) {
  Flash()[0x1000] = 0x0A;
  Flash()[0x1001] = 0x00;
  Flash()[0x1002] = 0x1B;
  EXPECT_EQ(Run(FlashReadCommand{{0x1000, 0x1002}, "-"}).code, ExitCode::kDone);
  EXPECT_EQ(output->out, std::string("\x0A\x00\x1B", 3));
  EXPECT_TRUE(output->notes.starts_with("Read 3 bytes from 0x1000-0x1002 into standard output, "))
      << output->notes;
}

TEST_F(FlashCommandsTest, RawBytesAreNotForATerminalNorBesideJson) {
  output_is_terminal = true;
  EXPECT_EQ(Run(FlashReadCommand{{0x1000, 0x1002}, "-"}).code, ExitCode::kUsage);
  EXPECT_EQ(Run(FlashReadCommand{{0x1000, 0x1002}, ""}).code, ExitCode::kDone);
  output_is_terminal = false;
  common.json = true;
  EXPECT_EQ(Run(FlashReadCommand{{0x1000, 0x1002}, "-"}).code, ExitCode::kUsage);
}

TEST_F(FlashCommandsTest, ReadWritesTheRangesBytes) {
  const Outcome outcome = Run(FlashReadCommand{{0x1001, 0x2100}, File("dump.bin")});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  const Bytes wanted(before_.begin() + 0x1001, before_.begin() + 0x2101);
  EXPECT_EQ(ReadFile("dump.bin"), wanted);
  EXPECT_EQ(outcome.result["size"], 0x1100);
  EXPECT_EQ(outcome.result["form"], "raw");
  EXPECT_EQ(outcome.result["sha256"], Sha256(wanted));
  ASSERT_EQ(progress->bars.size(), 1U);
  EXPECT_TRUE(progress->bars[0].complete);
}

TEST_F(FlashCommandsTest, ReadIntoATextFileWritesLines) {
  Flash() = Overlaid(Flash(), 0x1008, Bytes{0, 1, 2, 3, 4, 5, 6, 7, 0xAB});
  EXPECT_EQ(Run(FlashReadCommand{{0x1008, 0x1010}, File("dump.txt")}).code, ExitCode::kDone);
  const Bytes bytes = ReadFile("dump.txt");
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()),
            "00001008h: 00 01 02 03 04 05 06 07;\r\n"
            "00001010h: ab 00 00 00 00 00 00 00;\r\n");
}

TEST_F(FlashCommandsTest, ReadThatFailsLeavesNoFile) {
  FailFrom(3);
  EXPECT_EQ(Run(FlashReadCommand{{0, 0xFFF}, File("dump.bin")}).code, ExitCode::kDevice);
  EXPECT_EQ(FilesWith("dump"), std::vector<std::string>{});
}

TEST_F(FlashCommandsTest, ReadIntoAFileThatCantBeWrittenReadsNothing) {
  EXPECT_EQ(Run(FlashReadCommand{{0, 0xFFF}, File("missing/dump.bin")}).code, ExitCode::kFile);
  EXPECT_EQ(Chip().transfers, 0U);
}

// ---- word ---------------------------------------------------------------------------------------

TEST_F(FlashCommandsTest, WordIsReadWithItsFirstByteOnTop) {
  Flash() = Overlaid(Flash(), 0x1001, Bytes{0x12, 0x34, 0x56, 0x78});
  const Outcome outcome = Run(FlashWordCommand{0x1001, std::nullopt, false, false, {}});
  EXPECT_EQ(output->out, "0x1001: 0x12345678\n");
  EXPECT_EQ(outcome.result["value"], 0x12345678);
}

TEST_F(FlashCommandsTest, WordThatCantBeReadIsAFailureAndNotZero) {
  Chip().wraps = false;
  FlashWordCommand command{0x10000, std::nullopt, false, false, {}};
  command.flash_size = 0x20000;
  EXPECT_EQ(Run(command).code, ExitCode::kTimeout);
}

TEST_F(FlashCommandsTest, WordBeyondTheLastAddressIsRefused) {
  EXPECT_EQ(Run(FlashWordCommand{0xFFFFFFFD, std::nullopt, false, false, {}}).code,
            ExitCode::kUsage);
}

TEST_F(FlashCommandsTest, WordIsWrittenAndReadBack) {
  Flash() = Bytes(64 * kKibi, 0xFF);
  const Outcome outcome = Run(FlashWordCommand{0x1000, 0x12345678, true, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(output->out, "0x1000: 0x12345678, reads back as written\n");
  EXPECT_EQ(outcome.result["before"], 0xFFFFFFFF);
  EXPECT_EQ(outcome.result["verified"], true);
  EXPECT_EQ(Bytes(Flash().begin() + 0x1000, Flash().begin() + 0x1004),
            (Bytes{0x12, 0x34, 0x56, 0x78}));
}

TEST_F(FlashCommandsTest, WordWhoseBitsAreClearedAlreadyReadsBackOtherwise) {
  Flash() = Overlaid(Flash(), 0x1000, Bytes{0x0F, 0xFF, 0xFF, 0xFF});
  const Outcome outcome = Run(FlashWordCommand{0x1000, 0xF0000000, true, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
  EXPECT_EQ(output->errors,
            "borvanusb: flash word: 0x1000: wrote 0xf0000000, but reads back 0x00000000\n");
  EXPECT_NE(output->notes.find("writing only clears bits"), std::string::npos);
  EXPECT_EQ(outcome.result["verified"], false);
}

TEST_F(FlashCommandsTest, WordIsNotWrittenWithoutAYes) {
  const Outcome outcome = Run(FlashWordCommand{0x1000, 0, false, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(outcome.message, "nothing was written");
  EXPECT_EQ(host.questions.size(), 1U);
  EXPECT_EQ(Flash(), before_);
}

// ---- erase --------------------------------------------------------------------------------------

TEST_F(FlashCommandsTest, EraseAsksAndErasesWholeSectors) {
  host.answer = true;
  const Outcome outcome = Run(FlashEraseCommand{{0x1000, 0x2FFF}, false, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(host.questions, std::vector<std::string>{"Erase 8192 bytes (8 KiB) of flash, "
                                                     "0x1000-0x2fff, of camera 0  1234:0001  "
                                                     "Fake camera?"});
  EXPECT_EQ(Flash(), Overlaid(before_, 0x1000, Bytes(0x2000, 0xFF)));
  EXPECT_EQ(output->out, "Erased 8192 bytes (8 KiB), 0x1000-0x2fff; all of it reads 0xff.\n");
}

TEST_F(FlashCommandsTest, EraseWithoutAYesErasesNothing) {
  const Outcome outcome = Run(FlashEraseCommand{{0x1000, 0x2FFF}, false, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(outcome.message, "nothing was erased");
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashCommandsTest, EraseOfHalfASectorNamesTheWholeOnes) {
  for (const Range& range : {Range{0x1001, 0x1FFF}, Range{0x1000, 0x1FFE}, Range{0x1800, 0x1900}}) {
    const Outcome outcome = Run(FlashEraseCommand{range, true, false, {}});
    EXPECT_EQ(outcome.code, ExitCode::kUsage);
    EXPECT_EQ(outcome.hint, "The sectors around it are 0x1000-0x1fff.");
  }
  EXPECT_EQ(Chip().transfers, 0U);
}

TEST_F(FlashCommandsTest, EraseThatLeavesBytesIsToldWhere) {
  Chip().before_transfer = [this](std::uint64_t) {
    if (Chip().erases >= 2) {
      Flash()[0x2345] = 0x7F;
    }
  };
  const Outcome outcome = Run(FlashEraseCommand{{0x1000, 0x2FFF}, true, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
  EXPECT_EQ(outcome.result["wrong"].dump(), R"([{"first":9029,"last":9029}])");
}

TEST_F(FlashCommandsTest, EraseThatFailsTellsWhatIsErased) {
  // After reading four sectors and two erases.
  FailFrom(4 * 64 + 3);
  const Outcome outcome = Run(FlashEraseCommand{{0x1000, 0x4FFF}, true, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kDevice);
  EXPECT_EQ(outcome.message,
            "the camera is gone; 0x1000-0x2fff is erased, the sector at 0x3000 perhaps");
}

TEST_F(FlashCommandsTest, EraseStopsBetweenSectors) {
  Chip().before_transfer = [this](std::uint64_t number) {
    host.stop_requested = host.stop_requested || number == 4 * 64 + 1;
  };
  const Outcome outcome = Run(FlashEraseCommand{{0x1000, 0x4FFF}, true, false, {}});
  EXPECT_EQ(outcome.code, ExitCode::kStopped);
  EXPECT_EQ(outcome.message, "stopped by the user; 0x1000-0x1fff is erased");
}

TEST_F(FlashCommandsTest, WritingCommandsLeaveACameraInUseAlone) {
  host.reserved_elsewhere = true;
  EXPECT_EQ(Run(FlashEraseCommand{{0x1000, 0x1FFF}, true, false, {}}).code, ExitCode::kRefused);
  EXPECT_EQ(Run(FlashWordCommand{0x1000, 0, true, false, {}}).code, ExitCode::kRefused);
  EXPECT_EQ(Chip().transfers, 0U);
}

// ---- map ----------------------------------------------------------------------------------------

TEST_F(FlashCommandsTest, MapShowsEachSectorAsASign) {
  Flash() = Bytes(512 * kKibi, 0xFF);
  Flash() = Overlaid(Flash(), 0, Pattern(0x1001, 1));
  Flash()[std::size_t{65} * 4096] = 0;
  FlashMapCommand command;
  command.flash_size = 66 * 4096;
  const Outcome outcome = Run(command);
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(output->out, "0x00000000  ##" + std::string(62, '.') +
                             "\n"
                             "0x00040000  .#\n"
                             "# used: 12288 bytes (12 KiB)   . blank: 258048 bytes (252 KiB)   "
                             "each character is a sector of 4096 bytes\n");
  EXPECT_EQ(outcome.result["used"].dump(),
            R"([{"first":0,"last":8191},{"first":266240,"last":270335}])");
  EXPECT_EQ(outcome.result["blank"].dump(), R"([{"first":8192,"last":266239}])");
}

TEST_F(FlashCommandsTest, MapFindsTheFlashsSize) {
  const Outcome outcome = Run(FlashMapCommand{});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(outcome.result["last"], 0xFFFF);
  EXPECT_NE(output->notes.find("the flash wraps at 64 KiB"), std::string::npos);
}

TEST_F(FlashCommandsTest, MapOfABlankFlashAsksForItsSize) {
  Flash() = Bytes(64 * kKibi, 0xFF);
  const Outcome outcome = Run(FlashMapCommand{});
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(outcome.message, "the flash's size is unknown: the first 64 KiB are blank");
}

TEST_F(FlashCommandsTest, MapOfARangeShowsTheSectorsAroundIt) {
  FlashMapCommand command;
  command.range = Range{0x1800, 0x2100};
  EXPECT_EQ(Run(command).result["first"], 0x1000);
  EXPECT_TRUE(output->out.starts_with("0x00001000  ##\n")) << output->out;
}

// ---- verify -------------------------------------------------------------------------------------

TEST_F(FlashCommandsTest, VerifyOfAnEqualImage) {
  const std::string image =
      WriteFile("image.bin", Bytes(before_.begin() + 0x1234, before_.begin() + 0x2234));
  const Outcome outcome = Run(FlashVerifyCommand{image, 0x1234, ""});
  EXPECT_EQ(outcome.code, ExitCode::kDone);
  EXPECT_EQ(outcome.result["equal"], true);
  EXPECT_TRUE(outcome.result["first_difference"].is_null());
  EXPECT_EQ(output->out,
            "Equal: the flash holds the image at 0x1234-0x2233, 4096 bytes (4 KiB).\n");
}

TEST_F(FlashCommandsTest, VerifyTellsTheFirstDifferenceAndAllRanges) {
  Bytes bytes(0x100, 0x11);
  Flash() = Overlaid(Flash(), 0x1000, bytes);
  Flash()[0x1010] = 0x22;
  Flash()[0x1020] = 0x33;
  Flash()[0x1021] = 0x44;
  const Outcome outcome =
      Run(FlashVerifyCommand{WriteFile("image.bin", bytes), 0x1000, File("diff.csv")});
  EXPECT_EQ(outcome.code, ExitCode::kVerify);
  EXPECT_EQ(output->errors, "borvanusb: flash verify: 3 bytes differ, the first at 0x1010\n");
  EXPECT_EQ(output->out,
            "Different: 3 of 256 bytes, in 2 ranges\n"
            "first      0x00001010: the flash holds 0x22, the image 0x11\n"
            "ranges     0x1010, 0x1020-0x1021\n");
  EXPECT_EQ(outcome.result["first_difference"], 0x1010);
  EXPECT_EQ(outcome.result["different_bytes"], 3);
  const Bytes csv = ReadFile("diff.csv");
  EXPECT_EQ(std::string(csv.begin(), csv.end()),
            "address,expected,found\r\n"
            "0x00001010,0x11,0x22\r\n"
            "0x00001020,0x11,0x33\r\n"
            "0x00001021,0x11,0x44\r\n");
}

TEST_F(FlashCommandsTest, VerifyWritesItsDifferencesAsJsonToo) {
  Flash() = Overlaid(Flash(), 0x1000, Bytes{1, 2});
  Run(FlashVerifyCommand{WriteFile("image.bin", Bytes{1, 3}), 0x1000, File("diff.json")});
  const Bytes json = ReadFile("diff.json");
  EXPECT_EQ(std::string(json.begin(), json.end()),
            "{\"differences\":[{\"address\":4097,\"expected\":3,\"found\":2}]}\n");
}

TEST_F(FlashCommandsTest, VerifyOverTheImageItselfIsRefused) {
  const std::string image = WriteFile("image.bin", Bytes{1});
  EXPECT_EQ(Run(FlashVerifyCommand{image, 0, image}).code, ExitCode::kUsage);
  EXPECT_EQ(ReadFile("image.bin"), Bytes{1});
}

}  // namespace
}  // namespace borvanusb::tool_test
