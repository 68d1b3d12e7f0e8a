// Single registers on the I2C bus, selector 2.

#include "camera_with_script.h"

namespace borvan::test {
namespace {

class I2cAccess : public CameraWithScript {};

TEST_F(I2cAccess, WriteSendsTwelveBytesWhateverLengthIsReported) {
  for (const std::uint32_t reported : {0U, 4U, 12U, 64U, 65536U, 0xFFFFFFFFU}) {
    Play({ReportsLength(2, reported), Takes(2, 12,
                                            {0x00, 0x20, 0x81, 0x02,  // write, slave, option, mode
                                             0x00, 0x00, 0x12, 0x34,  // register
                                             0x00, 0x00, 0xAB, 0xCD})});  // data
    EXPECT_EQ(device_.I2cWrite("20", "1234", "abcd", 2, 0x81), 0) << reported;
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cAccess, WriteResultIsThatOfTheSet) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}, kDeviceGone}) {
    Play({ReportsLength(2, 12),
          Takes(2, 12, {0x00, 0x6C, 0, 0, 0, 0, 0, 0x12, 0, 0, 0, 0x34}, answer)});
    EXPECT_EQ(device_.I2cWrite("6c", "12", "34", 0, 0), answer);
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cAccess, TextsAreReadAsWindowsReadsThemAndCut) {
  Play({ReportsLength(2, 12), Takes(2, 12,
                                    {0x00, 0xFF, 0xFF, 0x05,  // slave "-1", option 0x1FF: low bytes
                                     0xFF, 0xFF, 0xFF, 0xFF,  // register: too large
                                     0x00, 0x00, 0x00, 0x00})});  // value: no number
  EXPECT_EQ(device_.I2cWrite("-1", "100000000", "zz", 5, 0x1FF), 0);
}

TEST_F(I2cAccess, ReadSendsNoDataAndDelivers) {
  Play({ReportsLength(2, 12),
        Takes(2, 12,
              {0x01, 0x6C, 0x00, 0x01,    // read, slave, option, mode
               0x00, 0x00, 0x30, 0x12,    // register
               0x00, 0x00, 0x00, 0x00}),  // data: zero in a request
        Gives(2, 12,
              {0x01, 0x6C, 0x00, 0x01, 0x00, 0x00, 0x30, 0x12, 0x0A, 0x0B, 0x0C, 0x0D})});  // data
  std::string value = "ffffffff";
  EXPECT_EQ(device_.I2cRead("6c", "3012", value, 1, 0), 0);
  EXPECT_EQ(value, "0d");
}

TEST_F(I2cAccess, EachWidthMode) {
  struct ModeCase {
    std::int32_t mode;
    Bytes write;       // of 0xAABBCCDD to register 0x11223344
    Bytes read;        // of that register
    const char* text;  // after the data bytes 0A 0B 0C 0D
  };
  const ModeCase cases[] = {
      {0,
       {0x00, 0x6C, 0x07, 0x00, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0x00, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0d"},
      {1,
       {0x00, 0x6C, 0x07, 0x01, 0x00, 0x00, 0x33, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0x01, 0x00, 0x00, 0x33, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0d"},
      {2,
       {0x00, 0x6C, 0x07, 0x02, 0x00, 0x00, 0x33, 0x44, 0x00, 0x00, 0xCC, 0xDD},
       {0x01, 0x6C, 0x07, 0x02, 0x00, 0x00, 0x33, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0c0d"},
      {3,
       {0x00, 0x6C, 0x07, 0x03, 0x11, 0x22, 0x33, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0x03, 0x11, 0x22, 0x33, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0d"},
      {4,
       {0x00, 0x6C, 0x07, 0x04, 0x11, 0x22, 0x33, 0x44, 0x00, 0x00, 0xCC, 0xDD},
       {0x01, 0x6C, 0x07, 0x04, 0x11, 0x22, 0x33, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0c0d"},
      {5,
       {0x00, 0x6C, 0x07, 0x05, 0x11, 0x22, 0x33, 0x44, 0xAA, 0xBB, 0xCC, 0xDD},
       {0x01, 0x6C, 0x07, 0x05, 0x11, 0x22, 0x33, 0x44, 0x00, 0x00, 0x00, 0x00},
       "0a0b0c0d"},
      // Other modes are sent as they are, with the widths of mode 0, and the text stays.
      {6,
       {0x00, 0x6C, 0x07, 0x06, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0x06, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0x00},
       "5"},
      {-1,
       {0x00, 0x6C, 0x07, 0xFF, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0xFF, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0x00},
       "5"},
      // The whole number counts for the widths, the low byte is sent.
      {0x102,
       {0x00, 0x6C, 0x07, 0x02, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0xDD},
       {0x01, 0x6C, 0x07, 0x02, 0x00, 0x00, 0x00, 0x44, 0x00, 0x00, 0x00, 0x00},
       "5"},
  };
  for (const ModeCase& each : cases) {
    SCOPED_TRACE(each.mode);
    Play({ReportsLength(2, 12), Takes(2, 12, each.write)});
    EXPECT_EQ(device_.I2cWrite("6c", "11223344", "aabbccdd", each.mode, 7), 0);
    control_->ExpectAllPlayed();
    Play({ReportsLength(2, 12), Takes(2, 12, each.read),
          Gives(2, 12, {0, 0, 0, 0, 0, 0, 0, 0, 0x0A, 0x0B, 0x0C, 0x0D})});
    std::string value = "5";
    EXPECT_EQ(device_.I2cRead("6c", "11223344", value, each.mode, 7), 0);
    EXPECT_EQ(value, each.text);
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cAccess, ReadDeliversOnAPositiveAnswer) {
  Play({ReportsLength(2, 12), Takes(2, 12, {0x01, 0x6C}, 5),
        Gives(2, 12, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x99}, 1)});
  std::string value = "5";
  EXPECT_EQ(device_.I2cRead("6c", "0", value, 0, 0), 1);
  EXPECT_EQ(value, "99");
}

TEST_F(I2cAccess, ReadEndsAtAFailedSet) {
  Play({ReportsLength(2, 12), Takes(2, 12, {0x01, 0x6C}, kDeviceGone)});
  std::string value = "5";
  EXPECT_EQ(device_.I2cRead("6c", "0", value, 0, 0), kDeviceGone);
  EXPECT_EQ(value, "5");
}

TEST_F(I2cAccess, ReadWithAFailedGetLeavesTheText) {
  Play({ReportsLength(2, 12), Takes(2, 12, {0x01, 0x6C}),
        Gives(2, 12, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x99}, kDeviceGone)});
  std::string value = "5";
  EXPECT_EQ(device_.I2cRead("6c", "0", value, 0, 0), kDeviceGone);
  EXPECT_EQ(value, "5");
}

TEST_F(I2cAccess, FailedLengthQuerySendsNothing) {
  std::string value = "5";
  Play({AnswersLengthQuery(2, kDeviceGone)});
  EXPECT_EQ(device_.I2cWrite("6c", "0", "0", 0, 0), kLengthQueryFailed);
  Play({AnswersLengthQuery(2, kDeviceGone)});
  EXPECT_EQ(device_.I2cRead("6c", "0", value, 0, 0), kLengthQueryFailed);
  EXPECT_EQ(value, "5");
}

TEST_F(I2cAccess, LengthQueryAnsweredWithSuccessIsEnough) {
  for (const Result answer : {0, 1, 5}) {
    Play({AnswersLengthQuery(2, answer), Takes(2, 12, {0x00, 0x6C})});
    EXPECT_EQ(device_.I2cWrite("6c", "0", "0", 0, 0), 0);
    control_->ExpectAllPlayed();
  }
}

TEST_F(CameraWithoutChannel, I2cAccessesAnswerNullPointer) {
  std::string value = "5";
  EXPECT_EQ(device_.I2cWrite("6c", "0", "0", 0, 0), kNoChannel);
  EXPECT_EQ(device_.I2cRead("6c", "0", value, 0, 0), kNoChannel);
  EXPECT_EQ(value, "5");
}

}  // namespace
}  // namespace borvan::test
