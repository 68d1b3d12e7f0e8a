// Ranges and addresses of the flash commands, as they are written on a command line.
#include <gtest/gtest.h>

#include "base/format.h"
#include "base/numbers.h"
#include "command/values.h"
#include "command_line_support.h"
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/name_address.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "i2c/read.h"
#include "registers/read.h"

namespace borvanusb::tool_test {
namespace {

using Addresses = std::vector<std::uint32_t>;

// ---- Ranges -------------------------------------------------------------------------------------

TEST(FlashArgumentsTest, SingleAddressIsNoRangeOfFlash) {
  const std::string single =
      R"(RANGE: "1M" is a single address; a range has a size or a last address, too: 1M+4K or )"
      "1M-0x100fff";
  ExpectRefused({"flash", "read", "1M", "a.bin"}, single + "; all means the whole flash");
  ExpectRefused({"flash", "map", "1M"}, single + "; all means the whole flash");
  ExpectRefused({"flash", "erase", "1M"}, single);
  ExpectRefused({"flash", "read", "0xffffffff", "a.bin"},
                R"(RANGE: "0xffffffff" is a single address; a range has a size or a last address, )"
                "too: 0xffffffff+4K or 0xffffffff-0xffffffff; all means the whole flash");
  // Both notations for a single byte are accepted.
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "1M+1", "a.bin"}).range,
            (Range{0x100000, 0x100000}));
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "1M-1M", "a.bin"}).range,
            (Range{0x100000, 0x100000}));
}

TEST(FlashArgumentsTest, SingleAddressesStayWhereOneIsMeant) {
  EXPECT_EQ(As<FlashWordCommand>({"flash", "word", "1M"}).address, 0x100000U);
  EXPECT_EQ(As<RegReadCommand>({"reg", "read", "0x100"}).range, (Range{0x100, 0x100}));
  EXPECT_EQ(As<I2cReadCommand>({"i2c", "read", "0x100", "--slave", "1"}).range,
            (Range{0x100, 0x100}));
}

TEST(FlashArgumentsTest, WhatIsNoRangeSaysWhichFormsThereAre) {
  const std::string forms =
      " is not a valid range: 1M+4K (first address and size) or 0-0xfffff (first and last "
      "address), up to 0xffffffff";
  ExpectRefused({"flash", "erase", "all"}, "RANGE: \"all\"" + forms);
  ExpectRefused({"flash", "read", "5-4", "a.bin"},
                "RANGE: \"5-4\"" + forms + "; all means the whole flash");
  ExpectRefused({"flash", "map", "4G"}, "RANGE: \"4G\"" + forms + "; all means the whole flash");
}

TEST(FlashArgumentsTest, AllIsTheWholeFlash) {
  const auto read = As<FlashReadCommand>({"flash", "read", "all", "a.bin"});
  EXPECT_TRUE(read.whole);
  EXPECT_EQ(read.file, "a.bin");
  EXPECT_FALSE(As<FlashReadCommand>({"flash", "read", "0+1M", "all"}).whole);
  EXPECT_EQ(As<FlashMapCommand>({"flash", "map", "all"}).range, std::nullopt);
}

TEST(FlashArgumentsTest, EndThatLooksLikeOnePastTheLastIsRemarked) {
  const std::string remark = "0-4M includes the byte at 4M; 0+4M means 4194304 bytes (4 MiB)";
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "0-4M", "a.bin"}).range_remark, remark);
  EXPECT_EQ(As<FlashMapCommand>({"flash", "map", "0-4M"}).range_remark, remark);
  EXPECT_EQ(RemarkOnEnd("0x1000-0x3000"),
            "includes the byte at 0x3000; 0x1000+8K means 8192 bytes (8 KiB)");
  EXPECT_EQ(RemarkOnEnd("0x1001-0x2000"),
            "includes the byte at 0x2000; 0x1001+4095 means 4095 bytes");
  for (const char* text : {"0-0xfff", "0+4M", "0+4097", "4K-4K", "0-0x1001", "4M", "x", ""}) {
    EXPECT_EQ(RemarkOnEnd(text), "") << text;
  }
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "0+4M", "a.bin"}).range_remark, "");
}

TEST(FlashArgumentsTest, EraseRefusesSuchAnEnd) {
  ExpectRefused({"flash", "erase", "0x1000-0x2000"},
                "RANGE: \"0x1000-0x2000\" includes the byte at 0x2000; 0x1000+4K means 4096 bytes "
                "(4 KiB)");
  EXPECT_EQ(As<FlashEraseCommand>({"flash", "erase", "0x1000+4K"}).range, (Range{0x1000, 0x1FFF}));
}

TEST(FlashArgumentsTest, SizesAreWrittenAsTheyAreRead) {
  EXPECT_EQ(SizeArgument(4194304), "4M");
  EXPECT_EQ(SizeArgument(1048576 + 1024), "1025K");
  EXPECT_EQ(SizeArgument(4095), "4095");
  EXPECT_EQ(SizeArgument(0), "0");
}

TEST(FlashArgumentsTest, EveryFlashCommandTakesTheFlashsSize) {
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "0+1", "a", "--flash-size", "1M"}).flash_size,
            1048576U);
  EXPECT_EQ(As<FlashWordCommand>({"flash", "word", "0", "--flash-size", "1M"}).flash_size,
            1048576U);
  EXPECT_EQ(As<FlashEraseCommand>({"flash", "erase", "0+4K", "--flash-size", "1M"}).flash_size,
            1048576U);
  EXPECT_EQ(As<FlashVerifyCommand>({"flash", "verify", "a", "--flash-size", "1M"}).flash_size,
            1048576U);
  EXPECT_EQ(As<FlashVerifyCommand>({"flash", "verify", "a"}).flash_size, std::nullopt);
}

// ---- Addresses in names -------------------------------------------------------------------------

constexpr const char* kBackup = "fw-backup-1234-0001-b41ae103-0x00020000-20261121T205718Z.bin";

TEST(NameAddressTest, AddressStandsAlone) {
  EXPECT_EQ(AddressesInName(kBackup), Addresses{0x20000});
  EXPECT_EQ(AddressesInName("fw_0X20800.bin"), Addresses{0x20800});
  EXPECT_EQ(AddressesInName("0xffffffff"), Addresses{0xFFFFFFFF});
  EXPECT_EQ(AddressesInName("fw-0xa000.bin"), Addresses{0xA000});
  EXPECT_EQ(AddressesInName("fw 0x1000 (0x20800).bin"), (Addresses{0x1000, 0x20800}));
  EXPECT_EQ(AddressesInName("\xD0\xBF\xD1\x80 0x1000\xD0\xBF.bin"), Addresses{0x1000});
  for (const char* name : {"", "fw.bin", "fw-v0x10.bin", "fw-0x.bin", "fw-0x10z.bin", "0x123456789",
                           "fw-20800.bin", "fw-0x0.bin", "fw-0x00000000.bin"}) {
    EXPECT_EQ(AddressesInName(name), Addresses{}) << name;
  }
}

TEST(NameAddressTest, FolderIsNotPartOfTheName) {
  EXPECT_EQ(AddressesInName("0x1000/fw.bin"), Addresses{});
  EXPECT_EQ(AddressesInName(R"(C:\0x1000\fw.bin)"), Addresses{});
  EXPECT_EQ(AddressesInName(R"(C:\old\)" + std::string(kBackup)), Addresses{0x20000});
}

TEST(NameAddressTest, OfABackupsNameItsOwnAddressCounts) {
  EXPECT_EQ(AddressesInName("fw-0x20800-backup-1234-0001-b41ae103-0x00020000-20261121T205718Z.bin"),
            Addresses{0x20000});
  EXPECT_EQ(AddressesInName("fw-0x20800-backup-1234-0001-b41ae103-0x00000000-20261121T205718Z.bin"),
            Addresses{});
}

TEST(NameAddressTest, ProgramAndVerifyAskForTheAddressThatTheNameCarries) {
  for (const std::string command : {"program", "verify"}) {
    const Failure failure = FailureOf({"flash", command, kBackup, "--camera", "my camera"});
    EXPECT_EQ(failure.Code(), ExitCode::kUsage);
    EXPECT_EQ(failure.Message(), "--address: is missing, but the name of \"" +
                                     std::string(kBackup) + "\" contains 0x20000");
    const std::string line =
        Format("borvanusb flash {} {} --camera \"my camera\"", command, kBackup);
    EXPECT_EQ(
        failure.Hint(),
        Format("If it belongs to 0x20000: {} --address 0x20000\nIf it belongs to the beginning "
               "of the flash: {} --address 0",
               line, line));
  }
  EXPECT_EQ(FailureOf({"flash", "program", "--json", "--", "-0x1000.bin"}).Hint(),
            "If it belongs to 0x1000: borvanusb flash program --json --address 0x1000 -- "
            "-0x1000.bin\nIf it belongs to the beginning of the flash: borvanusb flash program "
            "--json --address 0 -- -0x1000.bin");
}

TEST(NameAddressTest, AddressThatIsGivenWins) {
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", kBackup, "--address", "0x20000"}).address,
            0x20000U);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", kBackup, "--address", "0"}).address, 0U);
  EXPECT_EQ(As<FlashVerifyCommand>({"flash", "verify", kBackup, "--address", "4K"}).address,
            0x1000U);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "fw.bin"}).address, std::nullopt);
}

TEST(NameAddressTest, CommandLineThatCantBeRightAnywayIsRefusedForThatFirst) {
  ExpectRefused({"flash", "program", kBackup, "--backup", "b", "--no-backup"},
                "--no-backup: contradicts --backup");
}

// ---- Places of images
// ----------------------------------------------------------------------------

TEST(ImageWordTest, PlaceFollowsTheLastAtSign) {
  const auto parts = [](const std::string& text) {
    const ImageWish wish = ImageWishValue(text);
    return Format("{} {} {}", wish.file, wish.address ? Hex(*wish.address) : "-", wish.region);
  };
  EXPECT_EQ(parts("app.bin"), "app.bin - ");
  EXPECT_EQ(parts("app.bin@0x20000"), "app.bin 0x20000 ");
  EXPECT_EQ(parts("app.bin@128K"), "app.bin 0x20000 ");
  EXPECT_EQ(parts("app.bin@0xffffffff"), "app.bin 0xffffffff ");
  EXPECT_EQ(parts("cfg.bin@region:config"), "cfg.bin - config");
  EXPECT_EQ(parts(R"(C:\fw@2\a@b.bin@0)"), R"(C:\fw@2\a@b.bin 0x0 )");
  for (const char* name : {"a@b.bin", "a@", "@0x10", "a@2.hex", "a@0x100000000", "fw@2/app.bin"}) {
    EXPECT_EQ(parts(name), std::string(name) + " - ") << name;
  }
  EXPECT_THROW(ImageWishValue("a@region:"), WrongValue);
}

TEST(ImageWordTest, WordsNameTheSamePlaceAgain) {
  for (const char* text : {"app.bin", "app.bin@0x20000", "cfg.bin@region:config", "a@b.bin"}) {
    EXPECT_EQ(ImageWord(ImageWishValue(text)), text);
  }
  EXPECT_EQ(ImageWord({"fw@2"}), "fw@2@0");
}

TEST(FlashArgumentsTest, SeveralImagesHaveAPlaceEach) {
  const auto command = As<FlashProgramCommand>(
      {"flash", "program", "boot.hex", "app.bin@0x20000", "--dry-run", "cfg.bin@region:config"});
  EXPECT_EQ(command.image, "boot.hex");
  EXPECT_EQ(command.address, std::nullopt);
  ASSERT_EQ(command.more.size(), 2U);
  EXPECT_EQ(command.more[0].address, 0x20000U);
  EXPECT_EQ(command.more[1].region, "config");
  EXPECT_EQ(As<FlashVerifyCommand>({"flash", "verify", "a@0", "b@1M"}).more[0].address, 0x100000U);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "a.bin@4K"}).address, 0x1000U);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "a.bin@region:b"}).region, "b");
}

TEST(FlashArgumentsTest, PlacesThatContradictAreRefused) {
  ExpectRefused({"flash", "program", "a.bin", "b.bin", "--address", "0"},
                "--address: several images can't go to one place; give each its own, as IMAGE@ADDR "
                "or IMAGE@region:NAME");
  ExpectRefused({"flash", "verify", "a.bin", "b.bin", "--region", "x"},
                "--region: several images can't go to one place; give each its own, as IMAGE@ADDR "
                "or IMAGE@region:NAME");
  ExpectRefused({"flash", "program", "a.bin", "--address", "0", "--region", "x"},
                "--region: \"x\" contradicts another place that is given; give one of the two");
  for (const char* option : {"--address", "--region"}) {
    for (const char* image : {"a.bin@0", "a.bin@region:b"}) {
      ExpectRefused({"flash", "program", option, "0", image},
                    std::string(option) +
                        ": \"0\" contradicts another place that is given; give one of the two");
    }
  }
  ExpectRefused(
      {"flash", "program", "a.bin@0", "b.bin", "--format", "raw"},
      "IMAGE: \"b.bin\" has no place; with several images give each its own, as IMAGE@ADDR "
      "or IMAGE@region:NAME");
  ExpectRefused({"flash", "program", "a.bin", "--format", "uf2"},
                "--format: \"uf2\" is not allowed: auto, raw, hex, srec or elf");
}

// --address is refused with several images, so no command line with it is suggested.
TEST(FlashArgumentsTest, OfSeveralImagesTheOneWithoutAPlaceIsNamed) {
  ExpectRefused({"flash", "program", "fw-0x1000.bin", "b.bin@0x80000"},
                "IMAGE: \"fw-0x1000.bin\" has no place, but its name contains 0x1000; give it one, "
                "such as \"fw-0x1000.bin@0x1000\"");
  EXPECT_EQ(FailureOf({"flash", "verify", "b.bin@0x80000", "fw-0x1000.bin"}).Hint(),
            "borvanusb flash verify --help shows more.");
}

TEST(FlashArgumentsTest, FilesWithAddressesOfTheirOwnAreNotAskedForOne) {
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "fw-0x1000.hex"}).address, std::nullopt);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "fw-0x1000", "--format", "srec"}).form,
            ImageForm::kSRecord);
  EXPECT_EQ(As<FlashProgramCommand>({"flash", "program", "fw-0x1000.bin", "--region", "a"}).region,
            "a");
  EXPECT_EQ(FailureOf({"flash", "program", "fw-0x1000.hex", "--format", "raw"}).Message(),
            "--address: is missing, but the name of \"fw-0x1000.hex\" contains 0x1000");
}

TEST(FlashArgumentsTest, RegionTakesThePlaceOfARange) {
  const auto read = As<FlashReadCommand>({"flash", "read", "--region", "boot", "boot.bin"});
  EXPECT_EQ(read.region, "boot");
  EXPECT_EQ(read.file, "boot.bin");
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "boot.bin", "--region", "boot"}).file,
            "boot.bin");
  EXPECT_EQ(As<FlashReadCommand>({"flash", "read", "0+4K", "a.bin", "--format", "hex"}).format,
            "hex");
  EXPECT_EQ(As<FlashEraseCommand>({"flash", "erase", "--region", "a", "--force"}).region, "a");
  ExpectRefused({"flash", "read", "0+4K", "--region", "a"},
                "RANGE: \"0+4K\" contradicts --region: give one of the two");
  ExpectRefused({"flash", "read", "a.bin", "b.bin", "--region", "a"},
                "FILE: \"b.bin\" is one argument too many: --region takes no RANGE");
  ExpectRefused({"flash", "read"},
                "RANGE: is missing; give it, or a region of the camera's profile with --region");
  ExpectRefused({"flash", "erase"},
                "RANGE: is missing; give it, or a region of the camera's profile with --region");
  ExpectRefused({"flash", "erase", "0+4K", "--region", "a"},
                "--region: contradicts RANGE: give one of the two");
}

TEST(FlashArgumentsTest, VerifyTakesForceAsProgramDoes) {
  EXPECT_TRUE(As<FlashVerifyCommand>({"flash", "verify", "a", "--force"}).force);
  EXPECT_FALSE(As<FlashVerifyCommand>({"flash", "verify", "a"}).force);
}

TEST(FlashArgumentsTest, TagsHaveANameOnceEach) {
  const auto parse = [](std::vector<std::string> words) {
    words.insert(words.begin(), {"flash", "program", "a.bin"});
    return std::get<Arguments>(ParseCommandLine(words));
  };
  const Arguments arguments = parse({"--tag", "order=4711", "--tag", "note=a=b"});
  const auto* const command = ValuesOf<FlashProgramCommand>(*arguments.command);
  EXPECT_EQ(command->tags,
            (std::vector<std::pair<std::string, std::string>>{{"order", "4711"}, {"note", "a=b"}}));
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--tag", "order"},
                                                {"--tag", "=1"},
                                                {"--tag", "order=1", "--tag", "order=2"}}) {
    EXPECT_THROW(parse(wrong), Failure);
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
