// Nothing is read, compared, erased or written beyond the end of the flash.
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

// A flash of 1 MiB whose size can be detected, because its first 64 KiB contain firmware.
class FlashEndTest : public FlashTest {
 protected:
  FlashEndTest() {
    Flash() = Overlaid(Bytes(kMebi, 0xFF), 0, Pattern(200 * kKibi, 1));
    before_ = Flash();
  }

  // The command must be rejected before any change, whether addresses wrap or do not answer.
  template <typename Command>
  void ExpectRefused(const Command& command, ExitCode code, const std::string& begin) {
    for (const bool wraps : {true, false}) {
      Chip().wraps = wraps;
      const Outcome outcome = Run(command);
      EXPECT_EQ(outcome.code, code) << outcome.message;
      EXPECT_TRUE(outcome.message.starts_with(begin)) << outcome.message;
      EXPECT_NE(outcome.message.find(wraps ? "wraps at 1 MiB" : "does not answer beyond 1 MiB"),
                std::string::npos)
          << outcome.message;
      EXPECT_NE(outcome.hint.find("--flash-size"), std::string::npos) << outcome.hint;
      EXPECT_EQ(Chip().read_bytes, 0U);
      EXPECT_EQ(Chip().erases, 0U);
      EXPECT_EQ(Flash(), before_);
      EXPECT_TRUE(host.questions.empty());
    }
  }

  Bytes before_;
};

TEST_F(FlashEndTest, EraseAcrossTheEndDoesNotEraseTheFirstSector) {
  ExpectRefused(FlashEraseCommand{{0xFF000, 0x100FFF}, true}, ExitCode::kUsage,
                "RANGE: 0xff000-0x100fff ends beyond the flash of 1048576 bytes (1 MiB)");
  ExpectRefused(FlashEraseCommand{{0x200000, 0x200FFF}, false}, ExitCode::kUsage,
                "RANGE: 0x200000-0x200fff is beyond the flash of 1048576 bytes (1 MiB)");
}

TEST_F(FlashEndTest, WordBeyondTheEndIsNeitherWrittenNorRead) {
  ExpectRefused(FlashWordCommand{0x200000, 1, true}, ExitCode::kUsage,
                "ADDR: 0x200000-0x200003 is beyond the flash of 1048576 bytes (1 MiB)");
  ExpectRefused(FlashWordCommand{0x200000, std::nullopt, false}, ExitCode::kUsage,
                "ADDR: 0x200000-0x200003 is beyond");
  ExpectRefused(FlashWordCommand{0xFFFFD, 1, true}, ExitCode::kUsage,
                "ADDR: 0xffffd-0x100000 ends beyond the flash of 1048576 bytes (1 MiB)");
}

TEST_F(FlashEndTest, VerifyBeyondTheEndDoesNotPass) {
  const std::string image = WriteFile("image.bin", Bytes(before_.begin(), before_.begin() + 5000));
  ExpectRefused(FlashVerifyCommand{image, 0x100000, ""}, ExitCode::kFile,
                "--address: 0x100000 is beyond the flash of 1048576 bytes (1 MiB)");
  ExpectRefused(FlashVerifyCommand{image, 0xFF000, ""}, ExitCode::kFile,
                image + " does not fit: it would end at 0x100387");
}

TEST_F(FlashEndTest, ReadBeyondTheEndWritesNoFile) {
  ExpectRefused(FlashReadCommand{{0, 0x1FFFFF}, File("dump.bin")}, ExitCode::kUsage,
                "RANGE: 0x0-0x1fffff ends beyond the flash of 1048576 bytes (1 MiB)");
  EXPECT_EQ(FilesWith("dump"), std::vector<std::string>{});
}

TEST_F(FlashEndTest, MapBeyondTheEndDrawsNothing) {
  FlashMapCommand command;
  command.range = Range{0, 0x100FFF};
  ExpectRefused(command, ExitCode::kUsage, "RANGE: 0x0-0x100fff ends beyond the flash");
}

TEST_F(FlashEndTest, WhatEndsWithTheFlashIsDone) {
  for (const bool wraps : {true, false}) {
    Chip().wraps = wraps;
    EXPECT_EQ(Run(FlashReadCommand{{0, 0xFFFFF}, File("dump.bin")}).code, ExitCode::kDone);
    EXPECT_EQ(ReadFile("dump.bin"), before_);
    EXPECT_EQ(Run(FlashWordCommand{0xFFFFC, std::nullopt, false}).code, ExitCode::kDone);
    FlashMapCommand map;
    map.range = Range{0xFF000, 0xFFFFF};
    EXPECT_EQ(Run(map).code, ExitCode::kDone);
    const std::string image = WriteFile("image.bin", Bytes(100, 0xFF));
    EXPECT_EQ(Run(FlashVerifyCommand{image, 0xFFF9C, ""}).code, ExitCode::kDone);
    EXPECT_EQ(Run(FlashEraseCommand{{0xFF000, 0xFFFFF}, true}).code, ExitCode::kDone);
  }
}

TEST_F(FlashEndTest, ReadOfTheWholeFlashTakesFewTransfersMore) {
  Run(FlashReadCommand{{0, 0xFFFFF}, File("dump.bin")});
  EXPECT_LE(Chip().transfers, kMebi / 64 + 40);
  const std::uint64_t before = Chip().transfers;
  FlashReadCommand told{{0, 0xFFFFF}, File("dump.bin")};
  told.flash_size = kMebi;
  Run(told);
  EXPECT_EQ(Chip().transfers - before, kMebi / 64);
}

// The first 64 KiB contain only a short loader: too little for the quick detection, but enough for
// `info`.
TEST_F(FlashEndTest, FlashThatTellsItsSizeToACloseLookTellsItHereToo) {
  before_ = Overlaid(Bytes(kMebi, 0xFF), 0, Pattern(256, 1));
  Flash() = before_;
  for (const bool wraps : {true, false}) {
    Chip().wraps = wraps;
    const Outcome outcome = Run(FlashEraseCommand{{0xFF000, 0x100FFF}, true});
    EXPECT_EQ(outcome.code, ExitCode::kUsage);
    EXPECT_TRUE(outcome.message.starts_with("RANGE: 0xff000-0x100fff ends beyond"))
        << outcome.message;
    EXPECT_EQ(Flash(), before_);
  }
}

TEST_F(FlashEndTest, SizeThatIsToldCountsAndNothingIsLookedAt) {
  // The addresses themselves are valid in the camera.
  const std::string image = WriteFile("image.bin", Pattern(100, 1));
  const auto refuse = [&](auto command, ExitCode code) {
    command.flash_size = 0x10000;
    const Outcome outcome = Run(command);
    EXPECT_EQ(outcome.code, code);
    EXPECT_NE(outcome.message.find("the flash of 65536 bytes (64 KiB), whose last address is "
                                   "0xffff; from --flash-size"),
              std::string::npos)
        << outcome.message;
  };
  refuse(FlashReadCommand{{0, 0x10000}, File("dump.bin")}, ExitCode::kUsage);
  refuse(FlashWordCommand{0xFFFD, 1, true}, ExitCode::kUsage);
  refuse(FlashEraseCommand{{0x10000, 0x10FFF}, true}, ExitCode::kUsage);
  refuse(FlashVerifyCommand{image, 0xFFFF, ""}, ExitCode::kFile);
  FlashMapCommand map;
  map.range = Range{0, 0x10000};
  refuse(map, ExitCode::kUsage);
  EXPECT_EQ(Chip().transfers, 0U);
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashEndTest, SizeThatCantBeFoundOutIsRemarkedAndNothingRefused) {
  Flash() = Bytes(kMebi, 0xFF);
  EXPECT_EQ(Run(FlashReadCommand{{0, 0x1FFFF}, File("dump.bin")}).code, ExitCode::kDone);
  EXPECT_EQ(output->notes,
            "the flash's size is unknown: the first 64 KiB are blank; pass --flash-size to "
            "check that nothing reaches beyond its end\n");
  // Every flash has at least 64 KiB.
  EXPECT_EQ(Run(FlashReadCommand{{0, 0xFFFF}, File("dump.bin")}).code, ExitCode::kDone);
  EXPECT_EQ(output->notes, "");
}

TEST_F(FlashEndTest, HintSaysTheWholeFlash) {
  EXPECT_EQ(Run(FlashReadCommand{{0, 0x100000}, File("dump.bin")}).hint,
            "The whole flash is 0+1M. If it has another size, give it with --flash-size.");
}

TEST_F(FlashEndTest, AllReadsTheWholeFlash) {
  FlashReadCommand command;
  command.whole = true;
  command.file = File("all.bin");
  EXPECT_EQ(Run(command).result["size"], kMebi);
  EXPECT_EQ(ReadFile("all.bin"), before_);
  EXPECT_NE(output->notes.find("the flash wraps at 1 MiB"), std::string::npos);
  command.flash_size = 0x20000;
  EXPECT_EQ(Run(command).result["last"], 0x1FFFF);
  Flash() = Bytes(kMebi, 0xFF);
  command.flash_size.reset();
  const Outcome outcome = Run(command);
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(outcome.hint, "Give it with --flash-size, or give a range such as 0+1M.");
}

TEST_F(FlashEndTest, RemarkOnARangeIsPrinted) {
  FlashReadCommand read{{0, 0x1000}, File("dump.bin")};
  read.range_remark = "THE REMARK";
  EXPECT_EQ(Run(read).code, ExitCode::kDone);
  EXPECT_EQ(output->notes, "THE REMARK\n");
  FlashMapCommand map;
  map.range = Range{0, 0x1000};
  map.range_remark = "THE REMARK";
  EXPECT_EQ(Run(map).code, ExitCode::kDone);
  EXPECT_EQ(output->notes, "THE REMARK\n");
}

}  // namespace
}  // namespace borvanusb::tool_test
