// Detecting the flash size from the content of its addresses.
#include "flash/engine/flash_size.h"

#include "flash_support.h"

namespace borvanusb::tool_test {
namespace {

class FlashSizeTest : public FlashTest {
 protected:
  FlashSizeFinding Find() { return FindFlashSize(*host.OpenCamera(Chip().identity)); }
  FlashSizeFinding FindBefore(std::uint64_t end) {
    return FindFlashEndBefore(*host.OpenCamera(Chip().identity), end);
  }
  void SetFlash(std::size_t size, std::size_t used) {
    Flash() = Overlaid(Bytes(size, 0xFF), 0, Pattern(used, 1));
  }
};

TEST_F(FlashSizeTest, WordsThatShowUpAgainTellWhereAddressesWrap) {
  for (const std::size_t size : {64 * kKibi, 256 * kKibi, kMebi, 16 * kMebi, 64 * kMebi}) {
    SetFlash(size, 32 * kKibi);
    EXPECT_EQ(Find().size, size);
  }
  SetFlash(kMebi, 32 * kKibi);
  EXPECT_EQ(Find().text,
            "wraps at 1 MiB: the same words answer there again (a flash that holds everything "
            "twice would look the same)");
}

TEST_F(FlashSizeTest, AddressesThatReadZeroTellWhereTheFlashEnds) {
  for (const std::size_t size : {64 * kKibi, kMebi, 4 * kMebi}) {
    SetFlash(size, 32 * kKibi);
    Chip().wraps = false;
    EXPECT_EQ(Find().size, size);
  }
  EXPECT_EQ(Find().text, "does not answer beyond 4 MiB: all words there read 0");
}

TEST_F(FlashSizeTest, EndThatIsNoPowerOfTwoIsFoundToTheSector) {
  SetFlash(772 * kKibi, 32 * kKibi);
  Chip().wraps = false;
  EXPECT_EQ(Find().size, 772 * kKibi);
  EXPECT_EQ(Find().text, "does not answer beyond 772 KiB: all words there read 0");
}

TEST_F(FlashSizeTest, BlankFlashThatWrapsCantBeTold) {
  SetFlash(kMebi, 0);
  EXPECT_EQ(Find().size, std::nullopt);
  EXPECT_EQ(Find().text, "unknown: the first 64 KiB are blank");
}

TEST_F(FlashSizeTest, BlankFlashThatDoesNotAnswerBeyondItsEndCanBeTold) {
  SetFlash(kMebi, 0);
  Chip().wraps = false;
  EXPECT_EQ(Find().size, kMebi);
}

TEST_F(FlashSizeTest, FirmwareStoredTwiceIsNoWrapWhenTheRestDiffers) {
  SetFlash(kMebi, 100 * kKibi);
  Flash() = Overlaid(Flash(), 512 * kKibi, Pattern(100 * kKibi, 1));
  Flash() = Overlaid(Flash(), 900 * kKibi, Pattern(64 * kKibi, 2));
  EXPECT_EQ(Find().size, kMebi);
}

TEST_F(FlashSizeTest, LongZerosInTheFlashAreNoEnd) {
  SetFlash(kMebi, 64 * kKibi);
  Flash() = Overlaid(Flash(), 64 * kKibi, Bytes(448 * kKibi, 0));
  Chip().wraps = false;
  EXPECT_EQ(Find().size, kMebi);
}

TEST_F(FlashSizeTest, OneQuestionTakesFewTransfers) {
  SetFlash(4 * kMebi, 2 * kMebi);
  const FlashSizeFinding finding = FindBefore(kMebi);
  EXPECT_EQ(finding.size, std::nullopt);
  EXPECT_EQ(finding.text, "");
  EXPECT_LE(Chip().transfers, 24U);
}

TEST_F(FlashSizeTest, ImageWithinTheSmallestFlashAsksNothing) {
  SetFlash(64 * kKibi, 64 * kKibi);
  EXPECT_EQ(FindBefore(64 * kKibi).size, std::nullopt);
  EXPECT_EQ(Chip().transfers, 0U);
}

TEST_F(FlashSizeTest, OneQuestionFindsTheEndBeforeAnImages) {
  SetFlash(256 * kKibi, 200 * kKibi);
  EXPECT_EQ(FindBefore(256 * kKibi + 1).size, 256 * kKibi);
  EXPECT_EQ(FindBefore(256 * kKibi).size, std::nullopt);
  Chip().wraps = false;
  EXPECT_EQ(FindBefore(kMebi).size, 256 * kKibi);
  EXPECT_EQ(FindBefore(256 * kKibi).size, std::nullopt);
}

TEST_F(FlashSizeTest, ZerosAtAnImagesEndAreNotTakenForTheEndOfAFlash) {
  SetFlash(kMebi, 960 * kKibi);
  Flash() = Overlaid(Flash(), 960 * kKibi, Bytes(64 * kKibi, 0));
  Chip().wraps = false;
  const FlashSizeFinding finding = FindBefore(kMebi);
  EXPECT_EQ(finding.size, std::nullopt);
  EXPECT_EQ(finding.text, "unknown: all words from 0xf0000 on read 0");
}

TEST_F(FlashSizeTest, OneQuestionAboutABlankFlashSaysThatItCantBeTold) {
  SetFlash(kMebi, 0);
  EXPECT_EQ(FindBefore(kMebi).text, "unknown: the first 64 KiB are blank");
}

}  // namespace
}  // namespace borvanusb::tool_test
