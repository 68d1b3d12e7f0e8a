// Flash commands with a profile that defines regions.
#include "base/files.h"
#include "flash/erase.h"
#include "flash/map.h"
#include "flash/program.h"
#include "flash/read.h"
#include "flash/verify.h"
#include "flash/word.h"
#include "flash_support.h"
#include "support/json_schema.h"

namespace borvanusb::tool_test {
namespace {

// boot is read-only and ends inside a sector; images belong into app.
constexpr std::string_view kProfile = R"({
  "name": "Test module",
  "cameras": [{"vid": "1234", "pid": "0001"}],
  "flash": {
    "size": "64K",
    "image-region": "app",
    "regions": [
      {"name": "boot", "range": "0x0-0x1fff", "read-only": true, "description": "the loader"},
      {"name": "app", "range": "0x2000-0x7fff"},
      {"name": "config", "range": "0x8000-0x8fff", "files": ["cfg*.bin", "*.hex"],
       "begins-with": "55aa"},
      {"name": "serial", "range": "0x9800-0x9fff", "read-only": true}
    ]
  }
})";

class FlashRegionsTest : public FlashTest {
 protected:
  FlashRegionsTest() {
    Flash() = before_;
    common.profile = WriteText("module.json", kProfile);
    program_.backup = false;
  }

  std::string WriteText(const std::string& name, std::string_view text) const {
    return WriteFile(name, Bytes(text.begin(), text.end()));
  }

  // A command that must be rejected before accessing the camera.
  template <typename Command>
  std::string Refused(const Command& command, ExitCode code) {
    const std::uint64_t transfers = Chip().transfers;
    const Outcome outcome = Run(command);
    EXPECT_EQ(outcome.code, code) << outcome.message;
    EXPECT_EQ(Chip().transfers, transfers);
    EXPECT_EQ(Flash(), before_);
    EXPECT_FALSE(HasJournal());
    EXPECT_EQ(FilesWith("backup"), std::vector<std::string>{});
    return outcome.message;
  }

  const Bytes before_ = Pattern(64 * kKibi, 1);
  FlashProgramCommand program_;
};

TEST_F(FlashRegionsTest, ImageGoesToTheRegionThatIsNamed) {
  Bytes image = Pattern(0x100, 2);
  image[0] = 0x55;
  image[1] = 0xAA;
  program_.image = WriteFile("CFG-3.bin", image);
  program_.region = "config";
  const Outcome outcome = Run(program_);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Overlaid(before_, 0x8000, image));
  EXPECT_EQ(outcome.result["images"][0]["region"], "config");
  EXPECT_TRUE(outcome.result["profile"]["file"].get<std::string>().ends_with("module.json"));
  EXPECT_EQ(BreachOfSchema("flash-program", outcome.result), "");
  FlashVerifyCommand verify{program_.image, std::nullopt, ""};
  verify.region = "config";
  EXPECT_EQ(Run(verify).code, ExitCode::kDone);
}

TEST_F(FlashRegionsTest, ImageWithoutAPlaceGoesToTheRegionForImages) {
  program_.image = WriteFile("fw.bin", Pattern(0x1800, 2));
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x2000, Pattern(0x1800, 2)));
  EXPECT_NE(
      output->notes.find("fw.bin goes to the region app (0x2000-0x7fff), the profile's region "
                         "for images\n"),
      std::string::npos)
      << output->notes;
  FailFrom(300);
  Flash() = before_;
  EXPECT_NE(Run(program_).hint.find(program_.image + " --region app --no-backup --camera"),
            std::string::npos);
}

TEST_F(FlashRegionsTest, PlaceThatIsGivenCountsMoreThanTheRegionForImages) {
  program_.image = WriteFile("fw.bin", Pattern(0x100, 2));
  program_.address = 0xA000;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0xA000, Pattern(0x100, 2)));
  Flash() = before_;
  // 01+b0+01 = b2
  program_.image = WriteText("fw.hex", ":01B00000014E\n:00000001FF\n");
  program_.address.reset();
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0xB000, Bytes{1}));
}

TEST_F(FlashRegionsTest, ImageThatDoesNotFitIsRefused) {
  program_.image = WriteFile("fw.bin", Pattern(0x6001, 2));
  EXPECT_EQ(
      Refused(program_, ExitCode::kFile),
      program_.image +
          " does not fit into the region app (0x2000-0x7fff) of 24576 bytes (24 KiB): it would "
          "go to 0x2000-0x8000");
  program_.force = true;
  Refused(program_, ExitCode::kFile);
  // A file with its own addresses must lie inside the region: 01+b0+01 = b2.
  program_.image = WriteText("fw.hex", ":01B00000014E\n:00000001FF\n");
  program_.region = "app";
  EXPECT_EQ(
      Refused(program_, ExitCode::kFile),
      program_.image +
          " does not fit into the region app (0x2000-0x7fff) of 24576 bytes (24 KiB): it would "
          "go to 0xb000");
}

TEST_F(FlashRegionsTest, FilesThatTheRegionDoesNotExpectAreRefused) {
  program_.image = WriteFile("fw.bin", Pattern(0x10, 2));
  program_.region = "config";
  EXPECT_EQ(Refused(program_, ExitCode::kFile),
            program_.image +
                " is not a file for region config (0x8000-0x8fff), which accepts cfg*.bin, *.hex");
  program_.image = WriteFile("cfg.bin", Bytes{0x55, 0xAB, 3});
  EXPECT_EQ(Refused(program_, ExitCode::kFile),
            program_.image +
                " is not an image for region config (0x8000-0x8fff): it begins with 55ab instead "
                "of 55aa");
  program_.image = WriteFile("cfg.bin", Bytes{0x55});
  EXPECT_EQ(
      Refused(program_, ExitCode::kFile),
      program_.image +
          " is not an image for region config (0x8000-0x8fff): it begins with 55 instead of 55aa");
  program_.force = true;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x8000, Bytes{0x55}));
}

TEST_F(FlashRegionsTest, ReadOnlyRegionIsNeverWrittenWithoutForce) {
  program_.image = WriteFile("fw.bin", Pattern(0x10, 2));
  program_.region = "boot";
  const std::string message =
      ": the region boot (0x0-0x1fff) is read-only, and 0x0-0xfff of it "
      "would be erased or written";
  EXPECT_EQ(Refused(program_, ExitCode::kFile), program_.image + message);
  program_.region = "";
  program_.address = 0;
  EXPECT_EQ(Refused(program_, ExitCode::kFile), program_.image + message);
  // An additional image.
  FlashProgramCommand several = program_;
  several.image = WriteFile("app.bin", Pattern(0x10, 2));
  several.address = 0x2000;
  several.more = {{program_.image, 0x1000}};
  Refused(several, ExitCode::kFile);
  // Erasing a sector that is shared with a region would also erase bytes of the region.
  program_.address = 0x9000;
  EXPECT_EQ(Refused(program_, ExitCode::kFile),
            program_.image +
                ": the region serial (0x9800-0x9fff) is read-only, and 0x9800-0x9fff of "
                "it would be erased or written");
  program_.force = true;
  EXPECT_EQ(Run(program_).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x9000, Pattern(0x10, 2)));
}

TEST_F(FlashRegionsTest, WayBackIntoAReadOnlyRegionIsForced) {
  program_.image = WriteFile("fw.bin", Pattern(0x10, 2));
  program_.backup = true;
  program_.force = true;
  const auto way_back = [this](std::uint32_t address, const std::string& backup) {
    program_.address = address;
    program_.backup_file = backup;
    Flash() = before_;
    Chip().programmed_packets = 0;
    Chip().before_transfer = [this](std::uint64_t /*number*/) {
      if (Chip().programmed_packets > 0) {
        throw Failure(ExitCode::kDevice, "the camera is gone");
      }
    };
    const Outcome outcome = Run(program_);
    EXPECT_EQ(outcome.code, ExitCode::kDevice) << outcome.message;
    return outcome.hint.substr(std::min(outcome.hint.find("To go back: "), outcome.hint.size()));
  };
  const std::string camera = R"( --camera "\\?\usb#vid_1234&pid_0001#a")";
  const std::string start = "To go back: borvanusb flash program ";
  EXPECT_EQ(way_back(0x9000, File("a.bin")),
            start + File("a.bin") + " --address 0x9000 --force" + camera);
  EXPECT_EQ(way_back(0x3000, File("b.bin")), start + File("b.bin") + " --address 0x3000" + camera);
}

TEST_F(FlashRegionsTest, ReadOnlyRegionIsNeverErasedWithoutForce) {
  FlashEraseCommand erase{{0x1000, 0x2FFF}, true, false, {}};
  EXPECT_EQ(Refused(erase, ExitCode::kUsage),
            "RANGE: 0x1000-0x2fff: the region boot (0x0-0x1fff) is read-only, and 0x1000-0x1fff of "
            "it would be erased or written");
  erase.region = "boot";
  Refused(erase, ExitCode::kUsage);
  erase.force = true;
  EXPECT_EQ(Run(erase).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0, Bytes(0x2000, 0xFF)));
}

TEST_F(FlashRegionsTest, RegionIsErasedByName) {
  FlashEraseCommand erase{{}, true, false, {}};
  erase.region = "config";
  const Outcome outcome = Run(erase);
  EXPECT_EQ(outcome.code, ExitCode::kDone) << outcome.message;
  EXPECT_EQ(Flash(), Overlaid(before_, 0x8000, Bytes(0x1000, 0xFF)));
  EXPECT_EQ(outcome.result["first"], 0x8000);
  Flash() = before_;
  erase.region = "serial";
  erase.force = true;
  EXPECT_EQ(Refused(erase, ExitCode::kUsage),
            "RANGE: 0x9800-0x9fff ends within a sector; only whole sectors of 4096 bytes can be "
            "erased");
}

TEST_F(FlashRegionsTest, WordsInReadOnlyRegionsAreReadAlone) {
  FlashWordCommand word{0x97FD, 0, true, false, {}};
  EXPECT_EQ(Refused(word, ExitCode::kUsage),
            "ADDR: 0x97fd-0x9800: the region serial (0x9800-0x9fff) is read-only, and 0x9800 of it "
            "would be erased or written");
  word.value.reset();
  EXPECT_EQ(Run(word).code, ExitCode::kDone);
  word.value = 0;
  word.force = true;
  EXPECT_EQ(Run(word).code, ExitCode::kDone);
  EXPECT_EQ(Flash(), Overlaid(before_, 0x97FD, Bytes(4, 0)));
  Flash() = before_;
  FlashWordCommand beside{0x97FC, 0, true, false, {}};
  EXPECT_EQ(Run(beside).code, ExitCode::kDone);
}

TEST_F(FlashRegionsTest, RegionIsRead) {
  FlashReadCommand read{{}, File("boot.hex")};
  read.region = "boot";
  EXPECT_EQ(Run(read).code, ExitCode::kDone);
  FlashVerifyCommand verify{File("boot.hex"), std::nullopt, ""};
  verify.region = "boot";
  EXPECT_EQ(Run(verify).code, ExitCode::kDone);
}

TEST_F(FlashRegionsTest, UnknownRegionNamesTheOthers) {
  FlashReadCommand read{{}, File("x.bin")};
  read.region = "bot";
  const Outcome outcome = Run(read);
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(outcome.message, "region bot: the profile has no region of this name");
  EXPECT_EQ(outcome.hint, "The regions are boot, app, config, serial.");
  common.profile.clear();
  EXPECT_EQ(Run(read).message,
            "region bot: there is no profile that names the regions of this camera's flash");
}

TEST_F(FlashRegionsTest, MapDrawsAndNamesTheRegions) {
  Flash() = Overlaid(Bytes(64 * kKibi, 0xFF), 0x1000, Pattern(0x2000, 1));
  FlashMapCommand map;  // uses the size in the profile
  const Outcome outcome = Run(map);
  EXPECT_EQ(
      output->out,
      "0x00000000  .##.............\n"
      "            aabbbbbbcd------\n"
      "# used: 8192 bytes (8 KiB)   . blank: 57344 bytes (56 KiB)   each character is a sector "
      "of 4096 bytes\n"
      "a  boot: 0x0-0x1fff, 8192 bytes (8 KiB), read-only; the loader\n"
      "b  app: 0x2000-0x7fff, 24576 bytes (24 KiB)\n"
      "c  config: 0x8000-0x8fff, 4096 bytes (4 KiB)\n"
      "d  serial: 0x9800-0x9fff, 2048 bytes (2 KiB), read-only\n");
  EXPECT_EQ(BreachOfSchema("flash-map", outcome.result), "");
  EXPECT_EQ(outcome.result["regions"][3].dump(),
            R"({"name":"serial","first":38912,"last":40959,"size":2048,"read_only":true,)"
            R"("description":""})");
  map.range = Range{0x2000, 0x7FFF};
  EXPECT_EQ(Run(map).result["regions"].size(), 1U);
}

}  // namespace
}  // namespace borvanusb::tool_test
