// Single chip registers, selector 1.

#include "camera_with_script.h"

namespace borvan::test {
namespace {

class RegisterAccess : public CameraWithScript {};

TEST_F(RegisterAccess, WideWriteSendsFourCommands) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x12, 0x44, 0x33, 0x00}),  // value, low half
        Takes(1, 4, {0x22, 0x22, 0x11, 0x00}),                       // value, high half
        Takes(1, 4, {0x42, 0x34, 0x12, 0x00}),                       // address, low half
        Takes(1, 4, {0x82, 0x00, 0x80, 0x00})});                     // address, high half
  EXPECT_EQ(device_.RegisterWrite("80001234", "11223344", 1), 0);
}

TEST_F(RegisterAccess, WriteIsWideForEveryFlagButZero) {
  for (const std::uint8_t flag : Bytes{1, 2, 3, 0x80, 0xFF}) {
    Play({ReportsLength(1, 4), Takes(1, 4, {0x12, 0x5A, 0x00, 0x00}),
          Takes(1, 4, {0x22, 0x00, 0x00, 0x00}), Takes(1, 4, {0x42, 0xCD, 0xAB, 0x00}),
          Takes(1, 4, {0x82, 0x00, 0x00, 0x00})});
    EXPECT_EQ(device_.RegisterWrite("abcd", "5a", flag), 0) << int{flag};
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterAccess, ByteWriteSendsThreeCommands) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x28, 0xCD, 0xAB, 0x08}),  // A0 A1
        Takes(1, 4, {0x28, 0x00, 0x00, 0x38}),                       // A2 A3
        Takes(1, 4, {0x28, 0x5A, 0x00, 0x48})});                     // V0
  EXPECT_EQ(device_.RegisterWrite("abcd", "5a", 0), 0);
}

TEST_F(RegisterAccess, ByteWriteSendsTheLowByteOfALargerValue) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x28, 0x78, 0x56, 0x08}),
        Takes(1, 4, {0x28, 0x34, 0x12, 0x38}), Takes(1, 4, {0x28, 0x44, 0x00, 0x48})});
  EXPECT_EQ(device_.RegisterWrite("12345678", "11223344", 0), 0);
}

TEST_F(RegisterAccess, WriteReadsItsTextsAsWindowsDoes) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x12, 0xFF, 0xFF, 0x00}),  // too large: 0xFFFFFFFF
        Takes(1, 4, {0x22, 0xFF, 0xFF, 0x00}),
        Takes(1, 4, {0x42, 0x00, 0x00, 0x00}),  // no number: 0
        Takes(1, 4, {0x82, 0x00, 0x00, 0x00})});
  EXPECT_EQ(device_.RegisterWrite("zz", "123456789", 1), 0);
}

TEST_F(RegisterAccess, WriteResultIsThatOfTheLastSet) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x28, 0xCD, 0xAB, 0x08}, kDeviceGone),
        Takes(1, 4, {0x28, 0x00, 0x00, 0x38}, kDeviceGone), Takes(1, 4, {0x28, 0x5A, 0x00, 0x48})});
  EXPECT_EQ(device_.RegisterWrite("abcd", "5a", 0), 0);
  Play({ReportsLength(1, 4), Takes(1, 4, {0x28, 0xCD, 0xAB, 0x08}),
        Takes(1, 4, {0x28, 0x00, 0x00, 0x38}), Takes(1, 4, {0x28, 0x5A, 0x00, 0x48}, kDeviceGone)});
  EXPECT_EQ(device_.RegisterWrite("abcd", "5a", 0), kDeviceGone);
}

TEST_F(RegisterAccess, BytesBehindACommandAreZero) {
  // `Takes` fills what it expects up with zeros.
  Play({ReportsLength(1, 64), Takes(1, 64, {0x28, 0xCD, 0xAB, 0x08}),
        Takes(1, 64, {0x28, 0x00, 0x00, 0x38}), Takes(1, 64, {0x28, 0x5A, 0x00, 0x48})});
  EXPECT_EQ(device_.RegisterWrite("abcd", "5a", 0), 0);
}

TEST_F(RegisterAccess, WideReadTakesTheLowHalfFirst) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x41, 0x34, 0x12, 0x00}),  // A0 A1
        Takes(1, 4, {0x81, 0x56, 0x80, 0x00}),                       // A2 A3
        Gives(1, 4, {0x41, 0x44, 0x33, 0x11}),                       // V0 V1
        Gives(1, 4, {0x81, 0x02, 0x01, 0x21})});                     // V2 V3
  std::string value = "7";
  EXPECT_EQ(device_.RegisterRead("80561234", value, 1), 0);
  EXPECT_EQ(value, "01023344");
}

TEST_F(RegisterAccess, ReadIsWideForFlagOneAlone) {
  for (const std::uint8_t flag : Bytes{0, 2, 3, 0x81, 0xFF}) {
    Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0x78, 0x56, 0x18}),  // A0 A1
          Takes(1, 4, {0x24, 0x34, 0x12, 0x58}),                       // A2 A3
          Gives(1, 4, {0x24, 0x5A, 0x77, 0x28})});                     // V0
    std::string value = "7";
    EXPECT_EQ(device_.RegisterRead("12345678", value, flag), 0) << int{flag};
    EXPECT_EQ(value, "5a") << int{flag};
    control_->ExpectAllPlayed();
  }
}

// A wide read of register 0 with these two replies; returns the text, which was "7" before.
class WideRead : public RegisterAccess {
 protected:
  std::string ValueAfter(Transfer first, Transfer second, Result expected) {
    Play({ReportsLength(1, 4), Takes(1, 4, {0x41, 0x00, 0x00, 0x00}),
          Takes(1, 4, {0x81, 0x00, 0x00, 0x00}), std::move(first), std::move(second)});
    std::string value = "7";
    EXPECT_EQ(device_.RegisterRead("0", value, 1), expected);
    control_->ExpectAllPlayed();
    return value;
  }
};

TEST_F(WideRead, IgnoresReplyWithForeignTag) {
  const Transfer low = Gives(1, 4, {0xFF, 0x44, 0x33, 0x11});
  const Transfer high = Gives(1, 4, {0xFF, 0x22, 0x11, 0x21});
  for (unsigned number = 0; number <= 0xFF; ++number) {
    const auto tag = static_cast<std::uint8_t>(number);
    EXPECT_EQ(ValueAfter(Gives(1, 4, {0x41, 0x44, 0x33, tag}), high, 0),
              tag == 0x11 ? "11223344" : "7");
    EXPECT_EQ(ValueAfter(low, Gives(1, 4, {0x81, 0x22, 0x11, tag}), 0),
              tag == 0x21 ? "11223344" : "7");
  }
}

TEST_F(WideRead, IgnoresHalvesInTheOtherOrderOrTwice) {
  const Transfer low = Gives(1, 4, {0x41, 0x44, 0x33, 0x11});
  const Transfer high = Gives(1, 4, {0x81, 0x22, 0x11, 0x21});
  EXPECT_EQ(ValueAfter(high, low, 0), "7");
  EXPECT_EQ(ValueAfter(low, low, 0), "7");
  EXPECT_EQ(ValueAfter(high, high, 0), "7");
}

TEST_F(WideRead, LooksAtTheFirstReplyEvenWhenItsGetFailed) {
  EXPECT_EQ(ValueAfter(Gives(1, 4, {0x41, 0x44, 0x33, 0x11}, kDeviceGone),
                       Gives(1, 4, {0x81, 0x22, 0x11, 0x21}), 0),
            "11223344");
  EXPECT_EQ(ValueAfter(GivesNothing(1, 4, kDeviceGone), Gives(1, 4, {0x81, 0x22, 0x11, 0x21}), 0),
            "7");
}

TEST_F(WideRead, FailedSecondGetLeavesTheText) {
  EXPECT_EQ(ValueAfter(Gives(1, 4, {0x41, 0x44, 0x33, 0x11}),
                       Gives(1, 4, {0x81, 0x22, 0x11, 0x21}, kDeviceGone), kDeviceGone),
            "7");
}

TEST_F(WideRead, PositiveSecondGetIsTheResultAndDelivers) {
  EXPECT_EQ(ValueAfter(Gives(1, 4, {0x41, 0x44, 0x33, 0x11}),
                       Gives(1, 4, {0x81, 0x22, 0x11, 0x21}, 5), 5),
            "11223344");
}

TEST_F(RegisterAccess, WideReadEndsWhenTheSecondSetFails) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x41, 0x34, 0x12, 0x00}, kDeviceGone),
        Takes(1, 4, {0x81, 0x00, 0x80, 0x00}, Code(0x8007001F))});
  std::string value = "7";
  EXPECT_EQ(device_.RegisterRead("80001234", value, 1), Code(0x8007001F));
  EXPECT_EQ(value, "7");
}

TEST_F(RegisterAccess, ByteReadIgnoresTheFirstSetAndEndsAtTheSecond) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0xCD, 0xAB, 0x18}, kDeviceGone),
        Takes(1, 4, {0x24, 0x00, 0x00, 0x58}), Gives(1, 4, {0x24, 0x00, 0x77, 0x28})});
  std::string value = "7";
  EXPECT_EQ(device_.RegisterRead("abcd", value, 0), 0);
  EXPECT_EQ(value, "00");
  Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0xCD, 0xAB, 0x18}),
        Takes(1, 4, {0x24, 0x00, 0x00, 0x58}, kDeviceGone)});
  EXPECT_EQ(device_.RegisterRead("abcd", value, 0), kDeviceGone);
  EXPECT_EQ(value, "00");
}

TEST_F(RegisterAccess, ByteReadIgnoresReplyWithForeignTag) {
  for (unsigned tag = 0; tag <= 0xFF; ++tag) {
    Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0xCD, 0xAB, 0x18}),
          Takes(1, 4, {0x24, 0x00, 0x00, 0x58}),
          Gives(1, 4, {0xFF, 0x5A, 0x00, static_cast<std::uint8_t>(tag)}, 1)});
    std::string value = "7";
    EXPECT_EQ(device_.RegisterRead("abcd", value, 0), 1);
    EXPECT_EQ(value, tag == 0x28 ? "5a" : "7") << tag;
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterAccess, ByteReadWithAFailedGetLeavesTheText) {
  Play({ReportsLength(1, 4), Takes(1, 4, {0x24, 0xCD, 0xAB, 0x18}),
        Takes(1, 4, {0x24, 0x00, 0x00, 0x58}), Gives(1, 4, {0x24, 0x5A, 0x00, 0x28}, kDeviceGone)});
  std::string value = "7";
  EXPECT_EQ(device_.RegisterRead("abcd", value, 0), kDeviceGone);
  EXPECT_EQ(value, "7");
}

TEST_F(RegisterAccess, FailedLengthQuerySendsNothing) {
  std::string value = "7";
  for (const std::uint8_t flag : Bytes{0, 1}) {
    Play({AnswersLengthQuery(1, kDeviceGone, 4)});
    EXPECT_EQ(device_.RegisterWrite("0", "0", flag), kLengthQueryFailed);
    Play({AnswersLengthQuery(1, kDeviceGone, 4)});
    EXPECT_EQ(device_.RegisterRead("0", value, flag), kLengthQueryFailed);
  }
  EXPECT_EQ(value, "7");
}

TEST_F(RegisterAccess, LengthQueryAnsweredWithSuccessMeansLengthZero) {
  for (const Result answer : {0, 1, 5}) {
    Play({AnswersLengthQuery(1, answer, 4), Takes(1, 0, {}), Takes(1, 0, {}), Takes(1, 0, {})});
    EXPECT_EQ(device_.RegisterWrite("0", "0", 0), 0);
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterAccess, ProbeReadsRegisterZeroAsAByte) {
  const std::vector<Transfer> sets = {ReportsLength(1, 4), Takes(1, 4, {0x24, 0x00, 0x00, 0x18}),
                                      Takes(1, 4, {0x24, 0x00, 0x00, 0x58})};
  std::vector<Transfer> answered = sets;
  answered.push_back(Gives(1, 4, {0x24, 0x01, 0x00, 0x99}));
  Play(answered);
  EXPECT_TRUE(device_.ProbeDevice());
  control_->ExpectAllPlayed();
  std::vector<Transfer> failed = sets;
  failed.push_back(GivesNothing(1, 4, kDeviceGone));
  Play(failed);
  EXPECT_FALSE(device_.ProbeDevice());
}

TEST_F(CameraWithoutChannel, RegisterAccessesAnswerNullPointer) {
  std::string value = "7";
  for (const std::uint8_t flag : Bytes{0, 1, 2}) {
    EXPECT_EQ(device_.RegisterWrite("0", "0", flag), kNoChannel);
    EXPECT_EQ(device_.RegisterRead("0", value, flag), kNoChannel);
  }
  EXPECT_EQ(value, "7");
  EXPECT_FALSE(device_.ProbeDevice());
}

}  // namespace
}  // namespace borvan::test
