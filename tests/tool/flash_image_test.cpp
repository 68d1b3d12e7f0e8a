// The images that flash program and flash verify accept, and the output file of --diff.
#include <functional>
#include <ostream>
#include <string_view>

#include "../files/peak_memory.h"
#include "base/files.h"
#include "flash/program.h"
#include "flash/verify.h"
#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

constexpr std::size_t kMebi = std::size_t{1} << 20U;
constexpr std::string_view kHexFile = ":0400100001020304E2\r\n:00000001FF\r\n";

class FlashImageTest : public FlashTest {
 protected:
  std::string WriteText(const std::string& name, std::string_view text) const {
    return WriteFile(name, Bytes(text.begin(), text.end()));
  }
  std::string ReadText(const std::string& name) const {
    const Bytes bytes = ReadFile(name);
    return {bytes.begin(), bytes.end()};
  }
};

// ---- Files that are recognised, but not read ----------------------------------------------------

TEST_F(FlashImageTest, FilesThatAreNotReadAreNeitherProgrammedNorCompared) {
  Flash() = Pattern(64 * kKibi, 1);
  const Bytes before = Flash();
  Bytes uf2 = {'U', 'F', '2', '\n', 0x57, 0x51, 0x5D, 0x9E};
  uf2.resize(508, 0);
  uf2.insert(uf2.end(), {0x30, 0x6F, 0xB1, 0x0A});
  struct Case {
    std::string file;
    std::string message;
    std::string hint;
  };
  const std::vector<Case> cases = {
      {WriteFile("fw.uf2", uf2), "a UF2 file", "raw bytes"},
      {WriteText("fw.txt", "00001008h: 00 01 02 03 04 05 06 07;\r\n"), "a text dump of a flash",
       "ends in .bin"},
  };
  for (const Case& test : cases) {
    FlashProgramCommand program;
    program.image = test.file;
    FlashProgramCommand several = program;
    several.all = true;
    FlashVerifyCommand verify{test.file, 0, File("diff.csv")};
    for (const Outcome& outcome : {Run(program), Run(several), Run(verify)}) {
      EXPECT_EQ(outcome.code, ExitCode::kFile);
      EXPECT_TRUE(outcome.message.starts_with(test.file + " is " + test.message +
                                              ", not the raw bytes of a flash"))
          << outcome.message;
      EXPECT_NE(outcome.hint.find(test.hint), std::string::npos) << outcome.hint;
      EXPECT_NE(outcome.hint.find("--force"), std::string::npos) << outcome.hint;
    }
  }
  EXPECT_EQ(Chip().transfers, 0U);
  EXPECT_EQ(Flash(), before);
  EXPECT_EQ(FilesWith("diff"), std::vector<std::string>{});
}

TEST_F(FlashImageTest, ForceTakesTheirBytesAsTheyAre) {
  constexpr std::string_view kDump = "00001008h: 00 01 02 03 04 05 06 07;\r\n";
  FlashProgramCommand program;
  program.image = WriteText("fw.txt", kDump);
  program.force = true;
  EXPECT_EQ(Run(program).code, ExitCode::kDone);
  EXPECT_TRUE(std::equal(kDump.begin(), kDump.end(), Flash().begin()));
  FlashVerifyCommand verify{program.image, 0, ""};
  verify.force = true;
  EXPECT_EQ(Run(verify).code, ExitCode::kDone);
}

TEST_F(FlashImageTest, FormatRawTakesTheBytesOfAHexFileAsTheyAre) {
  FlashProgramCommand program;
  program.image = WriteText("fw.hex", kHexFile);
  program.form = ImageForm::kRaw;
  EXPECT_EQ(Run(program).code, ExitCode::kDone);
  EXPECT_TRUE(std::equal(kHexFile.begin(), kHexFile.end(), Flash().begin()));
}

TEST_F(FlashImageTest, BlankImageIsComparedWithoutForce) {
  EXPECT_EQ(Run(FlashVerifyCommand{WriteFile("blank.bin", Bytes(100, 0xFF)), 0, ""}).code,
            ExitCode::kDone);
}

// ---- The file of --diff -------------------------------------------------------------------------

TEST_F(FlashImageTest, DifferencesAreWrittenAsEver) {
  Flash() = Overlaid(Bytes(64 * kKibi, 0xFF), 0, Bytes{0, 1, 2, 3, 0xAB});
  const std::string image = WriteFile("image.bin", Bytes{0, 9, 2, 255, 0});
  EXPECT_EQ(Run(FlashVerifyCommand{image, 0, File("diff.json")}).code, ExitCode::kVerify);
  EXPECT_EQ(ReadText("diff.json"),
            "{\"differences\":[{\"address\":1,\"expected\":9,\"found\":1},"
            "{\"address\":3,\"expected\":255,\"found\":3},"
            "{\"address\":4,\"expected\":0,\"found\":171}]}\n");
  EXPECT_EQ(Run(FlashVerifyCommand{image, 0, File("diff.csv")}).code, ExitCode::kVerify);
  EXPECT_EQ(ReadText("diff.csv"),
            "address,expected,found\r\n"
            "0x00000001,0x09,0x01\r\n"
            "0x00000003,0xff,0x03\r\n"
            "0x00000004,0x00,0xab\r\n");
  const std::string equal = WriteFile("equal.bin", Bytes{0, 1, 2, 3, 0xAB});
  EXPECT_EQ(Run(FlashVerifyCommand{equal, 0, File("diff.json")}).code, ExitCode::kDone);
  EXPECT_EQ(ReadText("diff.json"), "{\"differences\":[]}\n");
  EXPECT_EQ(Run(FlashVerifyCommand{equal, 0, File("diff.csv")}).code, ExitCode::kDone);
  EXPECT_EQ(ReadText("diff.csv"), "address,expected,found\r\n");
}

TEST_F(FlashImageTest, DifferencesAtTheLastAddressesAreWritten) {
  const std::string image = WriteFile("image.bin", Bytes{1});
  FlashVerifyCommand command{image, 0xFFFFFFFF, File("diff.json")};
  command.flash_size = std::uint64_t{1} << 32U;
  EXPECT_EQ(Run(command).code, ExitCode::kVerify);
  EXPECT_EQ(ReadText("diff.json"),
            "{\"differences\":[{\"address\":4294967295,\"expected\":1,\"found\":255}]}\n");
}

TEST_F(FlashImageTest, MillionDifferencesTakeLittleMemory) {
  Flash() = Bytes(kMebi, 0x11);
  FlashVerifyCommand command{WriteFile("image.bin", Bytes(kMebi, 0x22)), 0, ""};
  command.flash_size = kMebi;
  Run(command);  // allocates the memory that the comparison itself needs
  for (const char* name : {"diff.json", "diff.csv"}) {
    command.diff = File(name);
    const std::size_t growth =
        borvan_test::PeakGrowth([&] { EXPECT_EQ(Run(command).code, ExitCode::kVerify); });
    RecordProperty(name, static_cast<int>(growth / 1024));
    // Image, read bytes and their copies; not 570 bytes for each difference.
    EXPECT_LT(growth, 16 * kMebi) << name;
  }
}

TEST_F(FlashImageTest, DiffOverTheImageItselfIsRefusedHoweverItIsSpelled) {
  const std::string image = WriteFile("image.bin", Bytes{1});
  const Outcome outcome = Run(FlashVerifyCommand{image, 0, File("./image.bin")});
  EXPECT_EQ(outcome.code, ExitCode::kUsage);
  EXPECT_EQ(ReadFile("image.bin"), Bytes{1});
}

// ---- Files that are written in parts ------------------------------------------------------------

TEST_F(FlashImageTest, FileInPartsAppearsWhenItIsComplete) {
  const std::string name = File("parts.txt");
  WriteFileInParts(name, [&](std::ostream& file) {
    file << "one " << std::flush;
    EXPECT_FALSE(FileExists(name));
    file << "two";
  });
  EXPECT_EQ(ReadText("parts.txt"), "one two");
}

TEST_F(FlashImageTest, FileInPartsThatBreaksOffLeavesTheOldOneAndNoOther) {
  const std::string name = WriteText("parts.txt", "old");
  // Simulates a full disk.
  EXPECT_THROW(WriteFileInParts(name,
                                [](std::ostream& file) {
                                  file << "half";
                                  file.setstate(std::ios::badbit);
                                }),
               Failure);
  EXPECT_THROW(WriteFileInParts(name, [](std::ostream&) { throw std::bad_alloc(); }),
               std::bad_alloc);
  EXPECT_EQ(ReadText("parts.txt"), "old");
  EXPECT_EQ(FilesWith(""), std::vector<std::string>{"parts.txt"});
}

}  // namespace
}  // namespace borvanusb::tool_test
