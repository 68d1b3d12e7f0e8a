// Settings by name: allowed values, and the bits that are written.
#include "names/register_setting.h"

#include <gtest/gtest.h>

#include "names_support.h"
#include "support/command_desk.h"

namespace borvanusb::tool_test {
namespace {

class RegisterSettingTest : public testing::Test {
 protected:
  std::string Refusal(const std::string& text) const {
    try {
      CheckSetting(ParseSetting(text, &names_, {}));
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.Code(), ExitCode::kUsage);
      return failure.Message() + " | " + failure.Hint();
    }
    return "taken";
  }
  std::vector<RegisterSetting> Settings(const std::vector<std::string>& words,
                                        bool anywhere) const {
    std::vector<RegisterSetting> settings;
    settings.reserve(words.size());
    for (const std::string& word : words) {
      settings.push_back(ParseSetting(word, &names_, {}));
    }
    return MergeSettings(std::move(settings), anywhere);
  }
  // Writes the settings and returns the value of register `address` of the chip.
  std::uint32_t After(const std::vector<std::string>& words, std::uint32_t address,
                      bool verify = true) {
    const auto camera = desk_.host.OpenCamera(desk_.Chip().identity);
    for (const RegisterSetting& setting : Settings(words, true)) {
      WriteSetting(setting, verify, *camera, desk_.context);
    }
    return desk_.Chip().registers[address];
  }

  const RegisterNames names_{TestProfile()};
  CommandDesk desk_;
};

TEST_F(RegisterSettingTest, FieldsChangeAloneAndAreWrittenOnce) {
  desk_.Chip().registers[0x100] = 0x81;
  const std::uint64_t before = desk_.Chip().transfers;
  EXPECT_EQ(After({"CHIP.CTRL.GAIN=0x10", "CHIP.CTRL.MODE=hdr"}, 0x100, false), 0xC2U);
  EXPECT_EQ(desk_.Chip().transfers - before, 2U);  // one read, one write
}

TEST_F(RegisterSettingTest, BlanksAroundTheSignAreNoPartOfNameAndValue) {
  EXPECT_EQ(After({"CHIP.CTRL.GAIN =\t0x10 "}, 0x100), 0x40U);
  EXPECT_EQ(After({" 0x100 = 0x21"}, 0x100), 0x21U);
}

TEST_F(RegisterSettingTest, ValuesThatAreRefused) {
  EXPECT_EQ(Refusal("CHIP.CTRL.GAIN=21"),
            "CHIP.CTRL.GAIN: 21 is outside the allowed range | Allowed are 0 to 0x14.");
  EXPECT_EQ(Refusal("CHIP.CTRL.MODE=4"),
            "CHIP.CTRL.MODE: 4 is too big for 2 bits | Allowed are 0 to 3; off (0), hdr (2).");
  EXPECT_EQ(Refusal("CHIP.CTRL.MODE=fast"),
            "CHIP.CTRL.MODE: fast is not a valid value | Allowed are 0 to 3; off (0), hdr (2).");
  EXPECT_EQ(Refusal("CHIP.CTRL.STATE=1"),
            "CHIP.CTRL.STATE: is read-only | borvanusb reg show CHIP.CTRL shows what can be "
            "written.");
  EXPECT_EQ(
      Refusal("SERIAL=1"),
      "CHIP.SERIAL: is read-only | borvanusb reg show CHIP.SERIAL shows what can be written.");
  EXPECT_EQ(Refusal("EXPOSURE=0x1000000"),
            "SENSOR.EXPOSURE: 0x1000000 is too big for 24 bits | Allowed are 0 to 0xffffff.");
  EXPECT_EQ(Refusal("0x100=0x100"), "0x100: 0x100 is too big for 8 bits | Allowed are 0 to 0xff.");
  EXPECT_EQ(
      Refusal("=1"),
      "=1: is not a valid setting | A setting is a register, =, and its value: SENSOR.GAIN=0x10");
}

TEST_F(RegisterSettingTest, FieldsOfRegistersThatCantBeRead) {
  EXPECT_EQ(Refusal("KEY.LOW=1"),
            "CHIP.KEY: has fields that would have to be kept, but it can't be read | Set all of "
            "its fields, or the register: CHIP.KEY=VALUE.");
  EXPECT_EQ(After({"KEY.LOW=1", "KEY.HIGH=2"}, 0x104), 0x21U);
}

TEST_F(RegisterSettingTest, FlagsThatAWriteClearsAreLeft) {
  // DONE (bit 0) is cleared by writing 1, HIT (bit 1) by writing 0. To keep them, 0 and 1 are
  // written.
  desk_.Chip().registers[0x102] = 0x03;
  EXPECT_EQ(After({"FLAGS.ON=1"}, 0x102, false), 0x12U);
  desk_.Chip().registers[0x102] = 0x13;
  EXPECT_EQ(After({"FLAGS.DONE=1"}, 0x102, false), 0x13U);  // ON is kept, DONE cleared by writing 1
}

TEST_F(RegisterSettingTest, MergingInOneCommandAndInAList) {
  EXPECT_EQ(Settings({"CHIP.CTRL.GAIN=1", "CTRL2=5", "CHIP.CTRL.MODE=off"}, true).size(), 2U);
  EXPECT_EQ(Settings({"CHIP.CTRL.GAIN=1", "CTRL2=5", "CHIP.CTRL.MODE=off"}, false).size(), 3U);
  EXPECT_EQ(Settings({"CHIP.CTRL.GAIN=1", "CHIP.CTRL.MODE=off"}, false).size(), 1U);
  EXPECT_EQ(Settings({"CTRL2=1", "CTRL2=2"}, false).size(), 2U);
  EXPECT_THROW(Settings({"CTRL2=1", "0x101=2"}, true), Failure);
}

TEST_F(RegisterSettingTest, VerifyFindsWhatDidNotArrive) {
  desk_.Chip().after_read = [](FakeRead, std::uint32_t address, std::uint32_t& value) {
    value = address == 0x101 ? 0x40 : value;
  };
  try {
    After({"CTRL2=0x41"}, 0x101);
    ADD_FAILURE() << "verified";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.Code(), ExitCode::kVerify);
    EXPECT_EQ(failure.Message(), "CHIP.CTRL2 reads back as 0x40 after 0x41 was written");
  }
}

TEST_F(RegisterSettingTest, BitsOfTheChipsOwnAreNotCompared) {
  // STATE (bit 7) is read-only and changes between the accesses.
  desk_.Chip().registers[0x100] = 0x00;
  desk_.Chip().after_read = [](FakeRead, std::uint32_t address, std::uint32_t& value) {
    value |= address == 0x100 ? 0x80U : 0U;
  };
  After({"CHIP.CTRL=0x05"}, 0x100);
}

}  // namespace
}  // namespace borvanusb::tool_test
