// Flash words and erases, selector 3.

#include "camera_with_script.h"

namespace borvan::test {
namespace {

class FlashAccess : public CameraWithScript {};

TEST_F(FlashAccess, WriteSendsOneBlock) {
  Play({ReportsLength(3, 11), Takes(3, 11,
                                    {0x38,                    // write
                                     0x12, 0x34, 0x56, 0x78,  // address
                                     0x9A, 0xBC, 0xDE, 0xF0,  // value
                                     0x00, 0x00})});          // spare
  EXPECT_EQ(device_.FlashWrite("12345678", "9abcdef0"), 0);
}

TEST_F(FlashAccess, EraseSendsTheAddressAsGiven) {
  Play({ReportsLength(3, 11),
        Takes(3, 11, {0x32, 0x00, 0x00, 0x00, 0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00})});
  EXPECT_EQ(device_.FlashErase("1"), 0);
}

TEST_F(FlashAccess, WriteAndEraseResultIsThatOfTheSet) {
  for (const Result answer : {Result{1}, Result{5}, kDeviceGone}) {
    Play({ReportsLength(3, 11), Takes(3, 11, {0x38}, answer)});
    EXPECT_EQ(device_.FlashWrite("0", "0"), answer);
    control_->ExpectAllPlayed();
    Play({ReportsLength(3, 11), Takes(3, 11, {0x32}, answer)});
    EXPECT_EQ(device_.FlashErase("0"), answer);
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashAccess, TextsAreReadAsWindowsReadsThem) {
  Play(
      {ReportsLength(3, 11), Takes(3, 11, {0x38, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x01})});
  EXPECT_EQ(device_.FlashWrite("123456789", "-100000000"), 0);
}

TEST_F(FlashAccess, ReadDeliversTheBytesInFlashOrder) {
  Play({ReportsLength(3, 11),
        Takes(3, 11, {0x34, 0x12, 0x34, 0x56, 0x78, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}),
        Gives(3, 11, {0x34, 0x12, 0x34, 0x56, 0x78, 0xDE, 0xAD, 0xBE, 0xEF, 0x77, 0x88})});
  std::string value;
  EXPECT_EQ(device_.FlashRead("12345678", value), 0);
  EXPECT_EQ(value, "deadbeef");
}

TEST_F(FlashAccess, ReadIgnoresTheResultOfItsSet) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34}, kDeviceGone),
        Gives(3, 11, {0x34, 0, 0, 0, 0, 0x00, 0x01, 0x02, 0x03})});
  std::string value;
  EXPECT_EQ(device_.FlashRead("0", value), 0);
  EXPECT_EQ(value, "00010203");
}

TEST_F(FlashAccess, ReadDeliversOnAPositiveGet) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34}),
        Gives(3, 11, {0x34, 0, 0, 0, 0, 0x00, 0x01, 0x02, 0x03}, 5)});
  std::string value;
  EXPECT_EQ(device_.FlashRead("0", value), 0);
  EXPECT_EQ(value, "00010203");
}

TEST_F(FlashAccess, ReadWithAForeignReplyGives1WithoutFurtherRequests) {
  for (unsigned first = 0; first <= 0xFF; ++first) {
    const bool is_echo = first == 0x34;
    Play({ReportsLength(3, 11), Takes(3, 11, {0x34}),
          Gives(3, 11, {static_cast<std::uint8_t>(first), 0, 0, 0, 0, 0x00, 0x01, 0x02, 0x03})});
    std::string value = "5";
    EXPECT_EQ(device_.FlashRead("0", value), is_echo ? 0 : 1) << first;
    EXPECT_EQ(value, is_echo ? "00010203" : "5") << first;
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashAccess, ReadThatNeverSucceedsTriesSixNeighbours) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x00}),
        GivesNothing(3, 11, kDeviceGone),
        // k = 1: 0xFFF and 0x1003
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFF}), GivesNothing(3, 11, kDeviceGone),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x03}), GivesNothing(3, 11, kDeviceGone),
        // k = 2: 0xFFE and 0x1002
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFE}), GivesNothing(3, 11, kDeviceGone),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x02}), GivesNothing(3, 11, kDeviceGone),
        // k = 3: 0xFFD and 0x1001
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFD}), GivesNothing(3, 11, kDeviceGone),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x01}), GivesNothing(3, 11, kDeviceGone)});
  std::string value = "5";
  EXPECT_EQ(device_.FlashRead("1000", value), 1);
  EXPECT_EQ(value, "5");
  EXPECT_EQ(control_->Count(), 1U + 7U + 7U);
}

TEST_F(FlashAccess, RetriesEndAtTheFirstPairThatIsAnsweredAndDeliverNothing) {
  const Bytes word = {0x34, 0, 0, 0, 0, 0x11, 0x22, 0x33, 0x44};
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x00}),
        GivesNothing(3, 11, kDeviceGone),
        // k = 1: the lower word alone
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFF}), Gives(3, 11, word),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x03}), GivesNothing(3, 11, kDeviceGone),
        // k = 2: both
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFE}), Gives(3, 11, word),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x02}), Gives(3, 11, word)});
  std::string value = "5";
  EXPECT_EQ(device_.FlashRead("1000", value), 1);
  EXPECT_EQ(value, "5");
}

TEST_F(FlashAccess, RetriesGoOnWhenOnlyTheUpperWordIsAnswered) {
  const Bytes word = {0x34, 0, 0, 0, 0, 0x11, 0x22, 0x33, 0x44};
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x00}),
        GivesNothing(3, 11, kDeviceGone), Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFF}),
        GivesNothing(3, 11, kDeviceGone), Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x03}),
        Gives(3, 11, word), Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFE}), Gives(3, 11, word),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x02}), GivesNothing(3, 11, kDeviceGone),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFD}), Gives(3, 11, word, 1),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x01}), Gives(3, 11, word, 5)});
  std::string value = "5";
  EXPECT_EQ(device_.FlashRead("1000", value), 1);
  EXPECT_EQ(value, "5");
}

TEST_F(FlashAccess, RetriesSendCleanBlocksAndIgnoreTagsAndSets) {
  // The failed get left bytes behind; the answers to the pair carry foreign tags.
  const Bytes rubbish(11, 0xEE);
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x00}),
        Gives(3, 11, rubbish, kDeviceGone),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x0F, 0xFF}, kDeviceGone), Gives(3, 11, rubbish),
        Takes(3, 11, {0x34, 0x00, 0x00, 0x10, 0x03}, kDeviceGone), Gives(3, 11, rubbish)});
  std::string value = "5";
  EXPECT_EQ(device_.FlashRead("1000", value), 1);
  EXPECT_EQ(value, "5");
}

TEST_F(FlashAccess, RetryAddressesWrapAt32Bits) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0x00, 0x00, 0x00, 0x00}),
        GivesNothing(3, 11, kDeviceGone), Takes(3, 11, {0x34, 0xFF, 0xFF, 0xFF, 0xFF}),
        Gives(3, 11, {0x34}), Takes(3, 11, {0x34, 0x00, 0x00, 0x00, 0x03}), Gives(3, 11, {0x34})});
  std::string value;
  EXPECT_EQ(device_.FlashRead("0", value), 1);
  Play({ReportsLength(3, 11), Takes(3, 11, {0x34, 0xFF, 0xFF, 0xFF, 0xFD}),
        GivesNothing(3, 11, kDeviceGone), Takes(3, 11, {0x34, 0xFF, 0xFF, 0xFF, 0xFC}),
        Gives(3, 11, {0x34}), Takes(3, 11, {0x34, 0x00, 0x00, 0x00, 0x00}), Gives(3, 11, {0x34})});
  EXPECT_EQ(device_.FlashRead("fffffffd", value), 1);
}

TEST_F(FlashAccess, FailedLengthQueryIsTheResult) {
  std::string value = "5";
  Play({AnswersLengthQuery(3, kDeviceGone, 11)});
  EXPECT_EQ(device_.FlashWrite("0", "0"), kDeviceGone);
  Play({AnswersLengthQuery(3, kDeviceGone, 11)});
  EXPECT_EQ(device_.FlashErase("0"), kDeviceGone);
  Play({AnswersLengthQuery(3, kDeviceGone, 11)});
  EXPECT_EQ(device_.FlashRead("0", value), kDeviceGone);
  EXPECT_EQ(value, "5");
}

TEST_F(FlashAccess, LengthQueryAnsweredWithSuccessMeansLengthZero) {
  for (const Result answer : {0, 1, 5}) {
    Play({AnswersLengthQuery(3, answer, 11), Takes(3, 0, {})});
    EXPECT_EQ(device_.FlashErase("0"), 0);
    control_->ExpectAllPlayed();
  }
}

TEST_F(CameraWithoutChannel, FlashAccessesAnswerNullPointer) {
  std::string value = "5";
  EXPECT_EQ(device_.FlashWrite("0", "0"), kNoChannel);
  EXPECT_EQ(device_.FlashErase("0"), kNoChannel);
  EXPECT_EQ(device_.FlashRead("0", value), kNoChannel);
  EXPECT_EQ(value, "5");
}

}  // namespace
}  // namespace borvan::test
