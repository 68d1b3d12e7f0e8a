// flash program, verify and read with files of all formats, and with several images.
#include "base/files.h"
#include "base/sha256.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash_support.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {
namespace {

// 1 2 3 4 at 0x10, aa bb at 0x2000; 02+20+aa+bb = 187.
constexpr std::string_view kHex = ":0400100001020304E2\r\n:02200000AABB79\r\n:00000001FF\r\n";

class FlashFormatsTest : public FlashTest {
 protected:
  FlashFormatsTest() {
    Flash() = before_;
    program_.backup = false;
  }

  std::string WriteText(const std::string& name, std::string_view text) const {
    return WriteFile(name, Bytes(text.begin(), text.end()));
  }

  Bytes Wanted(std::uint32_t offset = 0) const {
    return Overlaid(Overlaid(before_, 0x10 + offset, Bytes{1, 2, 3, 4}), 0x2000 + offset,
                    Bytes{0xAA, 0xBB});
  }

  // A command that must be rejected before accessing the camera.
  template <typename Command>
  std::string Refused(const Command& command, ExitCode code = ExitCode::kFile) {
    const std::uint64_t transfers = Chip().transfers;
    const Outcome outcome = Run(command);
    EXPECT_EQ(outcome.code, code) << outcome.message;
    EXPECT_EQ(Chip().transfers, transfers);
    EXPECT_EQ(Flash(), before_);
    return outcome.message;
  }

  const Bytes before_ = Pattern(64 * kKibi, 1);
  FlashProgramCommand program_;
};

TEST_F(FlashFormatsTest, JustTheBytesOfAHexFileChange) {
  program_.image = WriteText("fw.hex", kHex);
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Wanted());
  EXPECT_EQ(Chip().erased_sectors, (std::vector<std::uint32_t>{0x0, 0x2000}));
  EXPECT_EQ(BreachOfSchema("flash-program", outcome.result), "");
  EXPECT_EQ(outcome.result["address"], 0x10);
  EXPECT_EQ(outcome.result["image"]["size"], 6);
  EXPECT_EQ(outcome.result["image"]["sha256"], Sha256(Bytes{1, 2, 3, 4, 0xAA, 0xBB}));
  ASSERT_EQ(outcome.result["images"].size(), 1U);
  EXPECT_EQ(outcome.result["images"][0]["format"], "hex");
  EXPECT_EQ(outcome.result["images"][0]["places"].dump(),
            R"([{"first":16,"last":19},{"first":8192,"last":8193}])");
  EXPECT_TRUE(output->out.starts_with(
      "Programmed 6 bytes at 0x10-0x13, 0x2000-0x2001: 2 of 2 sectors changed"))
      << output->out;
  EXPECT_EQ(Run(FlashVerifyCommand{program_.image, std::nullopt, ""}).code, ExitCode::kDone);
  EXPECT_EQ(output->out,
            "Equal: the flash holds the image at 0x10-0x13, 0x2000-0x2001, 6 bytes.\n");
}

TEST_F(FlashFormatsTest, AddressIsAddedToTheAddressesInTheFile) {
  program_.image = WriteText("fw.hex", kHex);
  program_.address = 0x3000;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted(0x3000));
}

TEST_F(FlashFormatsTest, AddressBeyondTheLastIsRefused) {
  program_.image = WriteText("fw.hex", kHex);
  program_.address = 0xFFFFE000;
  EXPECT_EQ(Refused(program_), program_.image +
                                   ": its bytes at 0x2000-0x2001, moved by 0xffffe000, are beyond "
                                   "the last address 0xffffffff");
}

TEST_F(FlashFormatsTest, FormatThatIsRecognisedInAnotherNameIsTold) {
  program_.image = WriteText("fw.bin", kHex);
  program_.dry_run = true;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_NE(output->notes.find("fw.bin is an Intel HEX file: the addresses in it count\n"),
            std::string::npos)
      << output->notes;
  EXPECT_NE(output->out.find("goes to    0x10-0x13, 0x2000-0x2001\n"), std::string::npos)
      << output->out;
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashFormatsTest, BrokenFilesAreRefusedWithTheirLine) {
  program_.image = WriteText("fw.hex", ":0400100001020304E2\n:02200000AABB78\n:00000001FF\n");
  EXPECT_EQ(Refused(program_), program_.image +
                                   " can't be read as an Intel HEX file: line 2: the checksum is "
                                   "0x78, but the calculated checksum is 0x79");
  program_.image = WriteText("fw.srec", "S1051000AABB85\n");
  EXPECT_TRUE(Refused(program_).find("line 1: the file ends here") != std::string::npos);
  program_.image = WriteText("raw.elf", "firmware");
  EXPECT_EQ(
      Refused(program_),
      program_.image + " can't be read as an ELF file: byte 0: the ELF magic number is missing");
  FlashVerifyCommand verify{program_.image, std::nullopt, ""};
  Refused(verify);
}

TEST_F(FlashFormatsTest, ImageBeyondTheFlashIsRefused) {
  program_.image = WriteText("fw.hex", ":020000040001F9\n:010000000BF4\n:00000001FF\n");
  program_.flash_size = 64 * kKibi;
  EXPECT_EQ(Refused(program_).substr(0, program_.image.size() + 45),
            program_.image + " does not fit: it would end at 0x10000, beyon");
}

TEST_F(FlashFormatsTest, FileThatSpreadsOverGigabytesTakesNoSpace) {
  // The flash of 64 KiB wraps, so its end is detected in the first 64 KiB.
  program_.image =
      WriteText("fw.hex", ":010000000BF4\n:02000004FFFFFC\n:01FFFF00778A\n:00000001FF\n");
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kFile);
  EXPECT_NE(outcome.message.find("does not fit"), std::string::npos) << outcome.message;
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashFormatsTest, NameWithAnotherAddressThanTheFileIsInDoubt) {
  program_.image = WriteText("fw-0x3000.hex", kHex);
  EXPECT_EQ(Refused(program_, ExitCode::kUsage),
            "--address: is missing; the name of " + program_.image +
                " contains 0x3000, but the addresses in the file begin at 0x10");
  program_.address = 0;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Wanted());
  Flash() = before_;
  program_.image = WriteText("fw-0x10.hex", kHex);
  program_.address.reset();
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
}

TEST_F(FlashFormatsTest, BackupThatLooksLikeAnotherFormatGoesBackRaw) {
  Flash() = Overlaid(before_, 0x1000, Bytes(kHex.begin(), kHex.end()));
  program_.image = WriteFile("image.bin", Pattern(0x1000, 7));
  program_.address = 0x1000;
  program_.backup = true;
  program_.backup_file = File("old.bin");
  FailFrom(100);
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kDevice);
  EXPECT_NE(outcome.hint.find("old.bin --address 0x1000 --format raw --camera"), std::string::npos)
      << outcome.hint;
}

// ---- Several images
// -------------------------------------------------------------------------------

TEST_F(FlashFormatsTest, SeveralImagesAreOnePieceOfWork) {
  program_.image = WriteFile("boot.bin", Pattern(0x1800, 2));
  program_.address = 0x0;
  program_.more = {{WriteFile("app.bin", Pattern(0x900, 3)), 0x1800},
                   {WriteText("cfg.hex", ":01800000017E\n:00000001FF\n")}};
  program_.backup = true;
  program_.backup_file = File("old.hex");
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(),
            Overlaid(Overlaid(Overlaid(before_, 0, Pattern(0x1800, 2)), 0x1800, Pattern(0x900, 3)),
                     0x8000, Bytes{1}));
  // Each sector is erased once, although two images share one.
  std::vector<std::uint32_t> erased = Chip().erased_sectors;
  std::ranges::sort(erased);
  EXPECT_EQ(erased, (std::vector<std::uint32_t>{0, 0x1000, 0x2000, 0x8000}));
  EXPECT_EQ(BreachOfSchema("flash-program", outcome.result), "");
  EXPECT_EQ(outcome.result["images"].size(), 3U);
  EXPECT_EQ(outcome.result["images"][1]["sha256"], Sha256(Pattern(0x900, 3)));
  EXPECT_EQ(outcome.result["image"]["size"], 0x2101);
  EXPECT_FALSE(HasJournal());

  FlashVerifyCommand verify{program_.image, program_.address, ""};
  verify.more = program_.more;
  EXPECT_EQ(Run(verify).code, ExitCode::kDone);
  Flash()[0x1900] ^= 1U;
  EXPECT_EQ(Run(verify).code, ExitCode::kVerify);
  EXPECT_EQ(output->errors, "borvanusb: flash verify: 1 byte differs, the first at 0x1900\n");
}

TEST_F(FlashFormatsTest, PlanShowsEachImage) {
  program_.image = WriteFile("boot.bin", Pattern(0x1000, 2));
  program_.address = 0x0;
  program_.more = {{WriteFile("app.bin", Pattern(0x900, 3)), 0x8000}};
  program_.dry_run = true;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_NE(output->out.find("boot.bin, 4096 bytes (4 KiB)\n"), std::string::npos) << output->out;
  EXPECT_NE(output->out.find("goes to    0x8000-0x88ff\n"), std::string::npos) << output->out;
  EXPECT_EQ(Flash(), before_);
}

TEST_F(FlashFormatsTest, ImagesThatOverlapAreRefused) {
  program_.image = WriteFile("boot.bin", Pattern(0x1001, 2));
  program_.address = 0x0;
  program_.more = {{WriteFile("app.bin", Pattern(0x900, 3)), 0x1000}};
  EXPECT_EQ(Refused(program_), program_.image + " and " + program_.more[0].file +
                                   " overlap: both have bytes for 0x1000");
}

TEST_F(FlashFormatsTest, RawImageAmongSeveralNeedsAPlace) {
  program_.image = WriteFile("boot.bin", Pattern(0x1001, 2));
  program_.more = {{WriteFile("app.bin", Pattern(0x900, 3)), 0x8000}};
  EXPECT_EQ(
      Refused(program_, ExitCode::kUsage),
      program_.image + " contains raw bytes and needs a position when several images are given");
}

TEST_F(FlashFormatsTest, FailureNamesTheLineThatContinuesWithAllImages) {
  program_.image = WriteFile("boot.bin", Pattern(0x1000, 2));
  program_.address = 0x0;
  program_.more = {{WriteFile("app.bin", Pattern(0x900, 3)), 0x8000},
                   {WriteText("cfg.hex", ":01900000016E\n:00000001FF\n")}};
  FailFrom(400);
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kDevice);
  EXPECT_NE(outcome.hint.find("To continue: borvanusb flash program \"" + program_.image +
                              "@0x0\" \"" + program_.more[0].file + "@0x8000\" " +
                              program_.more[1].file + " --no-backup --camera"),
            std::string::npos)
      << outcome.hint;
}

// ---- Reading
// ----------------------------------------------------------------------------------------

TEST_F(FlashFormatsTest, FlashIsReadIntoEachFormatAndGoesBackFromIt) {
  for (const char* name : {"dump.hex", "dump.srec", "dump.s37", "dump.S28", "dump.bin"}) {
    const Outcome outcome = Run(FlashReadCommand{{0x0FF3, 0x2101}, File(name)});
    EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
    EXPECT_EQ(BreachOfSchema("flash-read", outcome.result), "");
    Flash() = Bytes(64 * kKibi, 0xFF);
    FlashProgramCommand back;
    back.image = File(name);
    back.backup = false;
    if (std::string_view(name).ends_with(".bin")) {
      back.address = 0x0FF3;
    }
    EXPECT_EQ(Run(back).code, ExitCode::kDone) << name;
    EXPECT_EQ(Flash(), Overlaid(Bytes(64 * kKibi, 0xFF), 0x0FF3,
                                Bytes(before_.begin() + 0x0FF3, before_.begin() + 0x2102)))
        << name;
    Flash() = before_;
  }
}

TEST_F(FlashFormatsTest, FormatIsSaidByOptionOrName) {
  FlashReadCommand command{{0x10, 0x13}, File("dump.bin")};
  Flash() = Overlaid(before_, 0x10, Bytes{1, 2, 3, 4});
  command.format = "hex";
  EXPECT_EQ(Run(command).result["form"], "hex");
  EXPECT_EQ(ReadWholeText(command.file), ":0400100001020304E2\r\n:00000001FF\r\n");
  command.file = File("dump.s19");
  command.format = "";
  EXPECT_EQ(Run(command).result["form"], "srec");
  // 07+10+1+2+3+4 = 21; 03+01 = 04; 03
  EXPECT_EQ(ReadWholeText(command.file),
            "S0030000FC\r\nS107001001020304DE\r\nS5030001FB\r\nS9030000FC\r\n");
  command.format = "raw";
  EXPECT_EQ(Run(command).result["form"], "raw");
  EXPECT_EQ(ReadFile("dump.s19"), (Bytes{1, 2, 3, 4}));
}

TEST_F(FlashFormatsTest, FormsThatAreNotWrittenAreRefused) {
  EXPECT_EQ(Refused(FlashReadCommand{{0, 3}, File("dump.elf")}, ExitCode::kUsage),
            "FILE: " + File("dump.elf") + ": ELF files are read, but not written");
  Flash() = before_;
  FlashReadCommand wide{{0xFFFE, 0x10001}, File("dump.s19")};
  wide.flash_size = 1U << 20U;
  EXPECT_EQ(Refused(wide, ExitCode::kUsage),
            "FILE: " + File("dump.s19") +
                ": its records reach up to the address 0xffff, and the last one is 0x10001");
}

}  // namespace
}  // namespace borvanusb::tool_test
