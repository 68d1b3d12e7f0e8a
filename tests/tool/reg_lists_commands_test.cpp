// reg dump, reg load and reg diff.
#include "registers/diff.h"
#include "registers/dump.h"
#include "registers/load.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class RegListsTest : public testing::Test {
 protected:
  CommandDesk desk_;
  TestFolder folder_;
};

TEST_F(RegListsTest, DumpToStandardOutputIsAList) {
  desk_.Chip().registers = {{0x100, 0x5A}, {0x101, 0x5B}};
  desk_.Do(RegDumpCommand{{0x100, 0x101}, "", false}, "reg-dump");
  EXPECT_EQ(desk_.output.out, "0xfffd, 0x00,\n0xfffe, 0x00,\n0x0100, 0x5a,\n0x0101, 0x5b,\n");
  EXPECT_EQ(desk_.result["file"], nullptr);
  EXPECT_EQ(desk_.result["registers"][1]["value"], 0x5B);
}

TEST_F(RegListsTest, DumpToADashIsOneToStandardOutput) {
  desk_.Chip().registers = {{0x100, 0x5A}};
  desk_.Do(RegDumpCommand{{0x100, 0x100}, "-", false}, "reg-dump");
  EXPECT_EQ(desk_.output.out, "0xfffd, 0x00,\n0xfffe, 0x00,\n0x0100, 0x5a,\n");
  EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST_F(RegListsTest, HexDumpShowsRowsWithTextAlsoOfTwoPages) {
  desk_.Chip().registers = {{0xFFFE, 0x41}, {0xFFFF, 0x7F}, {0x10000, 0x7E}};
  desk_.Do(RegDumpCommand{{0xFFFE, 0x10001}, "", false, false, true}, "reg-dump");
  EXPECT_EQ(desk_.output.out,
            "0000fff0                                             41 7f  |              A.|\n"
            "00010000  7e 00                                             |~.              |\n");
  EXPECT_EQ(desk_.result["form"], "hex");
  EXPECT_EQ(desk_.result["registers"][2]["value"], 0x7E);
}

TEST_F(RegListsTest, DumpLoadsBack) {
  desk_.Chip().registers = {{0x100, 0x5A}, {0x101, 0x5B}};
  const std::string file = folder_.Name("dump.txt");
  desk_.Do(RegDumpCommand{{0x100, 0x101}, file, false}, "reg-dump");
  EXPECT_EQ(desk_.output.out, "2 registers 0x100-0x101 in " + file + "\n");
  EXPECT_EQ(desk_.Do(RegLoadCommand{file, false}, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(
      desk_.Chip().register_lists,
      (std::vector<std::string>{"0xfffd, 0x00,\n0xfffe, 0x00,\n0x0100, 0x5a,\n0x0101, 0x5b,\n"}));
}

TEST_F(RegListsTest, NameThatEndsInBinHoldsRawBytes) {
  desk_.Chip().registers = {{0x100, 0x11223344}, {0x101, 0x55667788}};
  const std::string file = folder_.Name("dump.bin");
  desk_.Do(RegDumpCommand{{0x100, 0x101}, file, false}, "reg-dump");
  EXPECT_EQ(folder_.Read("dump.bin"), "\x44\x88");
  EXPECT_EQ(desk_.result["form"], "raw");
  desk_.Do(RegDumpCommand{{0x100, 0x101}, file, true}, "reg-dump");
  EXPECT_EQ(folder_.Read("dump.bin"), "\x44\x33\x22\x11\x88\x77\x66\x55");
}

TEST_F(RegListsTest, WideDumpSaysInItsFirstLineThatItCannotBeLoaded) {
  desk_.Chip().registers = {{0x100, 0x11223344}};
  desk_.Do(RegDumpCommand{{0x100, 0x100}, "", true}, "reg-dump");
  EXPECT_EQ(desk_.output.out,
            "// 32-bit registers; a list can't contain them, so this can't be loaded back\n"
            "0x0100 0x11223344\n");
}

TEST_F(RegListsTest, ListOfTwoPagesIsRefusedAndRawBytesAreNot) {
  EXPECT_EQ(desk_.FailureOf(RegDumpCommand{{0xFFFF, 0x10000}, "", false}).Code(), ExitCode::kUsage);
  desk_.Do(RegDumpCommand{{0xFFFF, 0x10000}, folder_.Name("both.bin"), false}, "reg-dump");
}

TEST_F(RegListsTest, DumpOfAnotherPageSaysWhatLoadingDoesWithIt) {
  desk_.Do(RegDumpCommand{{0x50100, 0x50100}, "", false}, "reg-dump");
  EXPECT_EQ(desk_.output.out, "0xfffd, 0x00,\n0xfffe, 0x05,\n0x0100, 0x00,\n");
  EXPECT_NE(desk_.output.notes.find("delay values"), std::string::npos);
}

TEST_F(RegListsTest, DumpThatCannotBeWrittenReadsNothing) {
  const Failure failure =
      desk_.FailureOf(RegDumpCommand{{0, 9}, folder_.Name("none/dump.txt"), false});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegListsTest, FailedDumpLeavesNoFile) {
  desk_.Chip().before_transfer = [](std::uint64_t) {
    throw Failure(ExitCode::kDevice, "the camera is gone");
  };
  desk_.FailureOf(RegDumpCommand{{0, 9}, folder_.Name("dump.txt"), false});
  EXPECT_FALSE(std::filesystem::exists(folder_.Name("dump.txt")));
}

TEST_F(RegListsTest, ListComesFromStandardInput) {
  desk_.host.input = "0xfffd,0\n0x8001,0x100,\n";
  EXPECT_EQ(desk_.FailureOf(RegLoadCommand{"-", false}).Message(),
            "standard input:2: value 0x100 has more than 8 bits; nothing was sent");
  desk_.host.input = "0xfffd,0\n0x8000,1,\n";
  desk_.Do(RegLoadCommand{"-", false}, "reg-load");
  EXPECT_EQ(desk_.output.out, "1 register written from standard input\n");
  EXPECT_EQ(desk_.result["file"], "-");
  EXPECT_EQ(desk_.Chip().register_lists.size(), 1U);
}

TEST_F(RegListsTest, BadListIsToldWithAllItsLinesAndNothingIsSent) {
  const std::string file = folder_.Write("bad.txt", "0x8000,1,\n0x8001,0x100,\n");
  const Failure failure = desk_.FailureOf(RegLoadCommand{file, false});
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_EQ(failure.Message(), file + ": 2 problems, the first in " + file +
                                   ":1: a register list begins with 0xfffd, this one with 0x8000: "
                                   "nothing would be written; nothing was sent");
  EXPECT_EQ(desk_.output.errors,
            file +
                ":1: a register list begins with 0xfffd, this one with 0x8000: nothing would be "
                "written\n" +
                file + ":2: value 0x100 has more than 8 bits\n");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegListsTest, CheckAloneNeedsNoCameraAndTellsTheProblems) {
  desk_.host.chips.clear();
  const std::string bad = folder_.Write("bad.txt", "0xfffd,0\n0x8001,0x100,\n");
  EXPECT_EQ(desk_.Do(RegLoadCommand{bad, true}, "reg-load"), ExitCode::kFile);
  EXPECT_EQ(desk_.output.out, bad + ":2: value 0x100 has more than 8 bits\n");
  EXPECT_EQ(desk_.result["problems"][0]["line"], 2);
  EXPECT_EQ(desk_.result["written"], false);
  const std::string good = folder_.Write("good.txt", "0xfffd,0\n0x8001,0x10,\n");
  EXPECT_EQ(desk_.Do(RegLoadCommand{good, true}, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, good + ": good, 1 register\n");
}

TEST_F(RegListsTest, LoadSendsWhatWasCheckedAndNotesWhatItMayDoElse) {
  const std::string file =
      folder_.Write("list.txt", "// 0x1, 2\nFFFD,0 // x\n8001,10\nffff,a\n8003,11");
  EXPECT_EQ(desk_.Do(RegLoadCommand{file, false}, "reg-load"), ExitCode::kDone);
  EXPECT_EQ(
      desk_.Chip().register_lists,
      (std::vector<std::string>{"0xfffd, 0x00,\n0x8001, 0x10,\n0xffff, 0x0a,\n0x8003, 0x11,\n"}));
  EXPECT_EQ(desk_.output.out, "2 registers written from " + file + "\n");
  EXPECT_NE(desk_.output.notes.find(file + ":4: this pause is made before the first register"),
            std::string::npos);
}

TEST_F(RegListsTest, DiffOfTwoFilesShowsDifferentAndMissing) {
  const std::string left = folder_.Write("left.txt", "fffd,0\n10,1\n11,2\n12,3\n");
  const std::string right = folder_.Write("right.txt", "fffd,0\n10,1\n11,5\n13,4\n");
  EXPECT_EQ(desk_.Do(RegDiffCommand{left, right}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "0x0011  0x02  0x05\n0x0012  0x03  ----\n0x0013  ----  0x04\n");
  EXPECT_EQ(desk_.output.errors,
            "borvanusb: reg diff: " + left + " and " + right + " differ in 3 registers\n");
  EXPECT_EQ(desk_.result["differences"][1].dump(), R"({"address":18,"left":3,"right":null})");
  EXPECT_EQ(desk_.Do(RegDiffCommand{left, left}, "reg-diff"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "no difference in 3 registers\n");
}

TEST_F(RegListsTest, DiffWithTheCameraReadsTheRegistersOfTheList) {
  desk_.Chip().registers = {{0x8000, 1}, {0x8002, 0x81}, {0x9000, 5}};
  // Delay values, not a page, because the registers are not adjacent.
  const std::string list = folder_.Write("list.txt", "fffd,5\nfffe,a\n8000,1\n8002,80\n");
  EXPECT_EQ(desk_.Do(RegDiffCommand{list, "camera"}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "0x8002  0x80  0x81\n");
  EXPECT_EQ(desk_.Chip().transfers, 2U);
  EXPECT_EQ(desk_.Do(RegDiffCommand{"camera", list}, "reg-diff"), ExitCode::kVerify);
  EXPECT_EQ(desk_.output.out, "0x8002  0x81  0x80\n");
}

TEST_F(RegListsTest, DiffOfManyRegistersWithTheCameraShowsProgress) {
  std::string text = "fffd,0\n";
  for (int i = 0; i < 64; ++i) {
    text += std::to_string(1000 + i) + ",0\n";
  }
  desk_.Do(RegDiffCommand{folder_.Write("list.txt", text), "camera"}, "reg-diff");
  EXPECT_TRUE(desk_.progress.bars.empty());
  text += "2000,0\n";
  desk_.Do(RegDiffCommand{folder_.Write("list.txt", text), "camera"}, "reg-diff");
  ASSERT_EQ(desk_.progress.bars.size(), 1U);
  EXPECT_EQ(desk_.progress.bars[0].total, 65U);
  EXPECT_EQ(desk_.progress.bars[0].unit, ProgressUnit::kRegisters);
  EXPECT_TRUE(desk_.progress.bars[0].complete);
}

TEST_F(RegListsTest, DiffOfADumpReadsItsPage) {
  desk_.Chip().registers = {{0x50100, 0x11}, {0x50101, 0x22}};
  const std::string file = folder_.Name("dump.txt");
  desk_.Do(RegDumpCommand{{0x50100, 0x50101}, file, false}, "reg-dump");
  EXPECT_EQ(desk_.Do(RegDiffCommand{"camera", file}, "reg-diff"), ExitCode::kDone);
  EXPECT_NE(desk_.output.notes.find("bits 16 to 31 of the addresses, 0x0005"), std::string::npos);
}

TEST_F(RegListsTest, DiffRefusesWhatLoadingRefuses) {
  const std::string good = folder_.Write("good.txt", "fffd,0\n10,1\n");
  const std::string sensor = folder_.Write("sensor.txt", "fff8,6c\nfffe,3\n3012,5a\n");
  for (const RegDiffCommand& command :
       {RegDiffCommand{sensor, "camera"}, RegDiffCommand{"camera", sensor},
        RegDiffCommand{sensor, sensor}, RegDiffCommand{good, sensor}}) {
    const Failure failure = desk_.FailureOf(command);
    EXPECT_EQ(failure.Code(), ExitCode::kFile);
    EXPECT_EQ(failure.Message(),
              sensor +
                  ":1: a register list begins with 0xfffd, this one with 0xfff8, as I2C lists do: "
                  "nothing would be written; nothing was compared");
  }
  const std::string wide = folder_.Write("wide.txt", "fffd,0\n10,100\n11,1\n");
  EXPECT_EQ(desk_.FailureOf(RegDiffCommand{wide, "camera"}).Message(),
            wide + ":2: value 0x100 has more than 8 bits; nothing was compared");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegListsTest, DiffRefusesWhatIsNoListAndTwoCameras) {
  const std::string file = folder_.Write("raw.bin", "\x44\x88");
  EXPECT_EQ(desk_.FailureOf(RegDiffCommand{file, "camera"}).Code(), ExitCode::kFile);
  EXPECT_EQ(desk_.FailureOf(RegDiffCommand{"camera", "camera"}).Code(), ExitCode::kUsage);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

}  // namespace
}  // namespace borvanusb::tool_test
