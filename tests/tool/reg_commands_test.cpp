// reg read and reg write.
#include "registers/read.h"
#include "registers/write.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class RegCommandsTest : public testing::Test {
 protected:
  CommandDesk desk_;
};

TEST_F(RegCommandsTest, ReadShowsALineARegister) {
  desk_.Chip().registers = {{0x1A3, 0x20}, {0x1A4, 0xABCDEF01}};
  EXPECT_EQ(desk_.Do(RegReadCommand{{0x1A3, 0x1A4}, false}, "reg-read"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "0x01a3  0x20\n0x01a4  0x01\n");
  EXPECT_EQ(desk_.result.dump(),
            R"({"wide":false,"checked":true,"registers":[{"address":419,"value":32},)"
            R"({"address":420,"value":1}]})");
  EXPECT_EQ(desk_.Do(RegReadCommand{{0x1A4, 0x1A4}, true}, "reg-read"), ExitCode::kDone);
  EXPECT_EQ(desk_.output.out, "0x01a4  0xabcdef01\n");
}

TEST_F(RegCommandsTest, LongRowIsReadInBlocksAndSaidToBeUnchecked) {
  desk_.Chip().registers = {{0x110, 0x77}};
  desk_.Do(RegReadCommand{{0x100, 0x110}, false}, "reg-read");  // 17 registers
  EXPECT_EQ(desk_.Chip().transfers, 1U);
  EXPECT_EQ(desk_.result["checked"], false);
  EXPECT_EQ(desk_.result["registers"][16]["value"], 0x77);
  EXPECT_NE(desk_.output.notes.find("does not confirm"), std::string::npos);
}

TEST_F(RegCommandsTest, SixteenRegistersAreReadOneByOne) {
  desk_.Do(RegReadCommand{{0x100, 0x10F}, false}, "reg-read");
  EXPECT_EQ(desk_.Chip().transfers, 16U);
  EXPECT_EQ(desk_.result["checked"], true);
  EXPECT_EQ(desk_.output.notes, "");
}

TEST_F(RegCommandsTest, WideAndPageCrossingRowsAreReadOneByOne) {
  desk_.Do(RegReadCommand{{0x100, 0x17F}, true}, "reg-read");
  EXPECT_EQ(desk_.Chip().transfers, 128U);
  desk_.Do(RegReadCommand{{0xFFC0, 0x1003F}, false}, "reg-read");
  EXPECT_EQ(desk_.Chip().transfers, 256U);
  ASSERT_EQ(desk_.progress.bars.size(), 2U);
  EXPECT_EQ(desk_.progress.bars[1].done, 128U);
  EXPECT_TRUE(desk_.progress.bars[1].complete);
}

TEST_F(RegCommandsTest, LongRunIsReadInSeveralPartsThatFitTogether) {
  desk_.Chip().registers = {{0x1BFF, 1}, {0x1C00, 2}, {0x1FFF, 3}};
  desk_.Do(RegReadCommand{{0, 0x1FFF}, false}, "reg-read");
  EXPECT_EQ(desk_.Chip().transfers, 2U);  // 7168 registers and 1024
  const auto& registers = desk_.result["registers"];
  ASSERT_EQ(registers.size(), 8192U);
  EXPECT_EQ(registers[0x1BFF]["value"], 1);
  EXPECT_EQ(registers[0x1C00]["value"], 2);
  EXPECT_EQ(registers[0x1FFF]["value"], 3);
}

TEST_F(RegCommandsTest, TooManyRegistersAreRefused) {
  const Failure failure = desk_.FailureOf(RegReadCommand{{0, 0x100000}, false});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(),
            "RANGE: 0x0-0x100000 has 1048577 registers; the limit for one command is 1048576");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegCommandsTest, WriteWritesOnce) {
  EXPECT_EQ(desk_.Do(RegWriteCommand{0x100, 0x5A, false, {}, false}, "reg-write"), ExitCode::kDone);
  EXPECT_EQ(desk_.Chip().registers[0x100], 0x5AU);
  EXPECT_EQ(desk_.Chip().transfers, 1U);
  EXPECT_EQ(desk_.output.out, "0x0100  0x5a\n");
  EXPECT_EQ(desk_.result.dump(),
            R"({"wide":false,"address":256,"before":null,"value":90,"verified":false})");
}

TEST_F(RegCommandsTest, MaskedWriteChangesItsBitsAlone) {
  desk_.Chip().registers[0x100] = 0xF5;
  desk_.Do(RegWriteCommand{0x100, 0x0A, false, 0x0F, true}, "reg-write");
  EXPECT_EQ(desk_.Chip().registers[0x100], 0xFAU);
  EXPECT_EQ(desk_.output.out, "0x0100  0xf5 -> 0xfa  verified\n");
  EXPECT_EQ(desk_.result["before"], 0xF5);
  EXPECT_EQ(desk_.result["value"], 0xFA);
}

TEST_F(RegCommandsTest, WideMaskedWriteKeepsTheOtherBits) {
  desk_.Chip().registers[0x100] = 0x12345678;
  desk_.Do(RegWriteCommand{0x100, 0x80000000, true, 0x80000000, true}, "reg-write");
  EXPECT_EQ(desk_.Chip().registers[0x100], 0x92345678U);
  EXPECT_EQ(desk_.output.out, "0x0100  0x12345678 -> 0x92345678  verified\n");
}

TEST_F(RegCommandsTest, ValueOutsideTheMaskIsRefusedBeforeAnything) {
  const Failure failure = desk_.FailureOf(RegWriteCommand{0x100, 0x1F, false, 0x0F, false});
  EXPECT_EQ(failure.Code(), ExitCode::kUsage);
  EXPECT_EQ(failure.Message(), "VALUE: 0x1f has bits outside --mask 0xf");
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegCommandsTest, VerifyFindsARegisterThatDoesNotTakeItsValue) {
  desk_.Chip().after_read = [](FakeRead, std::uint32_t, std::uint32_t& value) { value |= 0x01; };
  const Failure failure = desk_.FailureOf(RegWriteCommand{0x100, 0x5A, false, {}, true});
  EXPECT_EQ(failure.Code(), ExitCode::kVerify);
  EXPECT_EQ(failure.Message(), "register 0x0100 reads back as 0x5b after 0x5a was written");
}

TEST_F(RegCommandsTest, VerifyOfAMaskedWriteLooksAtItsBitsAlone) {
  // Bit 0 is toggled by the chip itself.
  std::uint32_t reads = 0;
  desk_.Chip().after_read = [&reads](FakeRead, std::uint32_t, std::uint32_t& value) {
    value = (value & 0xFEU) | (reads++ & 1U);
  };
  EXPECT_EQ(desk_.Do(RegWriteCommand{0x100, 0x50, false, 0xF0, true}, "reg-write"),
            ExitCode::kDone);
}

// A wide write consists of four transfers. If one of them is lost, the chip uses the value of an
// earlier write for that part.
TEST_F(RegCommandsTest, MaskedWriteThatDamagedOtherBitsIsMadeOnceMore) {
  FakeChip& chip = desk_.Chip();
  chip.registers[0x100] = 0x1122C3A5;
  chip.before_transfer = [&chip](std::uint64_t number) {
    if (number == 3) {  // after the read and the write
      chip.registers[0x100] = 0xC355;
    }
  };
  EXPECT_EQ(desk_.Do(RegWriteCommand{0x100, 0x50, true, 0xF0, true}, "reg-write"), ExitCode::kDone);
  EXPECT_EQ(chip.registers[0x100], 0x1122C355U);
  EXPECT_EQ(desk_.output.notes, "");
}

TEST_F(RegCommandsTest, OtherBitsThatStayChangedAreTold) {
  FakeChip& chip = desk_.Chip();
  chip.registers[0x100] = 0xA5;
  chip.after_read = [](FakeRead, std::uint32_t, std::uint32_t& value) {
    value |= value == 0xA5 ? 0U : 0x02U;
  };
  EXPECT_EQ(desk_.Do(RegWriteCommand{0x100, 0x50, false, 0xF0, true}, "reg-write"),
            ExitCode::kDone);
  EXPECT_EQ(desk_.output.notes,
            "note: bits outside the mask changed, too: register 0x0100 reads back as 0x57\n");
}

TEST_F(RegCommandsTest, WriteIsRefusedWhileAnotherProcessWorksWithTheCamera) {
  desk_.host.reserved_elsewhere = true;
  EXPECT_EQ(desk_.FailureOf(RegWriteCommand{0x100, 1, false, 1, false}).Code(), ExitCode::kRefused);
  EXPECT_EQ(desk_.Chip().transfers, 0U);
}

TEST_F(RegCommandsTest, ProgressCountsRegisters) {
  desk_.Do(RegReadCommand{{0, 0xFFF}, false}, "reg-read");
  desk_.Do(RegReadCommand{{0, 0x7F}, true}, "reg-read");
  ASSERT_EQ(desk_.progress.bars.size(), 2U);
  for (const FakeProgress::Bar& bar : desk_.progress.bars) {
    EXPECT_EQ(bar.unit, ProgressUnit::kRegisters);
  }
}

}  // namespace
}  // namespace borvanusb::tool_test
