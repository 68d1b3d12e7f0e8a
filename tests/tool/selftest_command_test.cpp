// selftest: each check fails only for the fault that it is made for.
#include "station/selftest.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class SelftestTest : public testing::Test {
 protected:
  SelftestTest() {
    FakeChip& chip = desk_.Chip();
    for (std::uint32_t i = 0; i < chip.flash.size(); ++i) {
      chip.flash[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
    }
    for (std::uint32_t address = 0; address < 0x400; ++address) {
      chip.registers[address] = 0x10000 + address * 3;
    }
    chip.sensors[0x6C][0] = 0x56;
  }

  static SelftestCommand WithSensor() { return {{0x6C, 1, 0}}; }

  // The first letters of the results: "PPPPPPPSS".
  std::string Results() {
    std::string letters;
    for (const auto& test : desk_.result["tests"]) {
      letters += static_cast<char>(test["result"].get<std::string>()[0] - 'a' + 'A');
    }
    return letters;
  }
  std::string Why(std::size_t test) { return desk_.result["tests"][test]["why"]; }

  void Fault(std::function<void(FakeRead, std::uint32_t, std::uint32_t&)> fault) {
    desk_.Chip().after_read = std::move(fault);
  }

  CommandDesk desk_;
};

TEST_F(SelftestTest, GoodCameraPassesAndIsNotChanged) {
  const std::vector<std::uint8_t> flash = desk_.Chip().flash;
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kDone);
  EXPECT_EQ(Results(), "PPPPPPPPP");
  EXPECT_NE(desk_.output.out.find("9 passed, 0 failed, 0 skipped\n"), std::string::npos);
  EXPECT_EQ(desk_.Chip().flash, flash);
  EXPECT_EQ(desk_.Chip().erases, 0U);
}

TEST_F(SelftestTest, SensorIsLeftOutWithoutASlave) {
  EXPECT_EQ(desk_.Do(SelftestCommand{}, "selftest"), ExitCode::kDone);
  EXPECT_EQ(Results(), "PPPPPPPSS");
  EXPECT_NE(desk_.output.out.find("skip  sensor answers (no --slave)\n"), std::string::npos);
}

TEST_F(SelftestTest, SilentVendorUnitFailsTheFirstAndSkipsTheRest) {
  desk_.Chip().before_transfer = [](std::uint64_t) {
    throw Failure(ExitCode::kDevice, "the transfer failed");
  };
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kDevice);
  EXPECT_EQ(Results(), "FSSSSSSSS");
  EXPECT_EQ(Why(0), "the transfer failed");
}

TEST_F(SelftestTest, FeatureRegisterThatChangesIsFound) {
  std::uint32_t reads = 0;
  Fault([&reads](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    if (read == FakeRead::kByteRegister && address == 0x1A3 && ++reads == 3) {
      value ^= 0x04;
    }
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PFPPPPPPP");
  EXPECT_EQ(Why(1), "register 0x1a3 changes by itself: 0xe9, then 0xed");
}

TEST_F(SelftestTest, WideReadThatDisagreesIsFound) {
  Fault([](FakeRead read, std::uint32_t, std::uint32_t& value) {
    value ^= read == FakeRead::kWideRegister ? 0x01U : 0U;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPFPPPPPP");
  EXPECT_EQ(Why(2), "register 0x1a3 reads as 0x000104e8 wide and as 0xe9 as a byte");
}

TEST_F(SelftestTest, RunThatDisagreesIsFound) {
  Fault([](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    value ^= read == FakeRead::kRegisterRun && address == 0x1C0 ? 0x80U : 0U;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPPFPPPPP");
  EXPECT_EQ(Why(3), "register 0x01c0 reads as 0xc0 in a run and as 0x40 alone");
}

TEST_F(SelftestTest, CounterAmongTheRegistersIsNoFault) {
  std::uint32_t counter = 0;
  Fault([&counter](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    const bool is_register = read == FakeRead::kByteRegister || read == FakeRead::kRegisterRun;
    value = is_register && address == 0x190 ? ++counter & 0xFFU : value;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kDone);
}

TEST_F(SelftestTest, FlashThatReadsDifferentlyTheSecondTimeIsFound) {
  std::uint32_t reads = 0;
  Fault([&reads](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    if (read == FakeRead::kFlashBulk && address == 0x123 && ++reads == 2) {
      value ^= 0x01;
    }
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPPPFPPPP");
  EXPECT_EQ(Why(4), "two reads of the flash differ, byte 0x0123: 0xf6, then 0xf7");
}

TEST_F(SelftestTest, FlashWordThatDisagreesOrFailsIsFound) {
  Fault([](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    value = read == FakeRead::kFlashWord && address == 0xFC ? 0 : value;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPPPPFPPP");
  EXPECT_EQ(Why(5),
            "the flash word at 0x00fc reads as 0x00000000 alone and as 0xe4ebf2f9 in bulk (0 also "
            "means that the read failed)");
}

TEST_F(SelftestTest, FlashThatKnowsOnlyWholePacketsIsFound) {
  // Reads that begin inside a packet return the bytes from the packet's start.
  bool inside = false;
  std::uint32_t reads_of_37 = 0;
  Fault([&](FakeRead read, std::uint32_t address, std::uint32_t& value) {
    if (read != FakeRead::kFlashBulk) {
      return;
    }
    inside = address == 37 ? ++reads_of_37 == 5 : inside;
    value = inside ? desk_.Chip().flash[address - 37] : value;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPPPPPFPP");
  EXPECT_EQ(Why(6), "reads from 0 and from 0x25 differ, byte 0x0025: 0x03, then 0x00");
}

TEST_F(SelftestTest, SilentSensorIsFound) {
  EXPECT_EQ(desk_.Do(SelftestCommand{{0x6E, 1, 0}}, "selftest"), ExitCode::kDevice);
  EXPECT_EQ(Results(), "PPPPPPPFF");
  EXPECT_EQ(Why(7), "nothing answers");
}

TEST_F(SelftestTest, SensorRegisterThatChangesIsFound) {
  std::uint32_t reads = 0;
  Fault([&reads](FakeRead read, std::uint32_t, std::uint32_t& value) {
    value += read == FakeRead::kI2c ? ++reads : 0;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kVerify);
  EXPECT_EQ(Results(), "PPPPPPPPF");
  EXPECT_EQ(Why(8), "register 0x0 changes by itself: 0x58, then 0x59");
}

TEST_F(SelftestTest, ExitCodeIsThatOfTheWorst) {
  Fault([](FakeRead read, std::uint32_t, std::uint32_t& value) {
    if (read == FakeRead::kFlashBulk) {
      throw Failure(ExitCode::kTimeout, "reading the flash does not move on");
    }
    value ^= read == FakeRead::kWideRegister ? 0x01U : 0U;
  });
  EXPECT_EQ(desk_.Do(WithSensor(), "selftest"), ExitCode::kTimeout);
  EXPECT_EQ(Results(), "PPFPFFFPP");
}

TEST_F(SelftestTest, StopByTheUserEndsIt) {
  desk_.Chip().before_transfer = [](std::uint64_t number) {
    if (number == 9) {
      throw Failure(ExitCode::kStopped, "stopped by the user");
    }
  };
  EXPECT_EQ(desk_.FailureOf(WithSensor()).Code(), ExitCode::kStopped);
}

}  // namespace
}  // namespace borvanusb::tool_test
