// Programming a whole image: erases on selector 3, pieces on selector 4.

#include <gmock/gmock.h>

#include "camera_with_script.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// The four address bytes, then the piece; zeros up to 64 bytes.
Transfer Piece(Bytes address, const Bytes& piece, Result result = 0) {
  address.insert(address.end(), piece.begin(), piece.end());
  return Takes(4, 64, std::move(address), result);
}

Transfer Erase(std::uint8_t a3, std::uint8_t a2, std::uint8_t a1, std::uint8_t a0,
               Result result = 0) {
  return Takes(3, 11, {0x32, a3, a2, a1, a0, 0, 0, 0, 0, 0, 0}, result);
}

// `bytes`, then `count` bytes of `value`.
Bytes And(Bytes bytes, std::size_t count, std::uint8_t value) {
  for (std::size_t i = 0; i < count; ++i) {
    bytes.push_back(value);
  }
  return bytes;
}

class FlashImageWrite : public CameraWithScript {};

TEST_F(FlashImageWrite, EmptyImageOnlyAsksForLengths) {
  Play({ReportsLength(3, 11), ReportsLength(4, 64)});
  EXPECT_EQ(device_.FlashWriteImage({}, 0x1000, Recorder()), 0);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWrite, OneByteErasesASectorAndSendsAPieceFilledUpWithZeros) {
  Play({ReportsLength(3, 11), Erase(0x12, 0x34, 0x56, 0x78), ReportsLength(4, 64),
        Piece({0x12, 0x34, 0x56, 0x78}, {0xAB})});
  EXPECT_EQ(device_.FlashWriteImage({0xAB}, 0x12345678, Recorder()), 0);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWrite, OneByteOfFFIsSentForItsZeros) {
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), ReportsLength(4, 64),
        Piece({0x00, 0x00, 0x00, 0x00}, {0xFF})});
  EXPECT_EQ(device_.FlashWriteImage({0xFF}, 0, Recorder()), 0);
}

TEST_F(FlashImageWrite, AMultipleOfSixtyIsSentWithoutTheBlankPieceBehindIt) {
  Bytes first(60, 0x00);
  first.front() = 0xA1;
  first[30] = 0x5A;
  first.back() = 0xA2;
  Play({ReportsLength(3, 11), Erase(0x00, 0x01, 0x00, 0x00), ReportsLength(4, 64),
        Piece({0x00, 0x01, 0x00, 0x00}, first), Piece({0x00, 0x01, 0x00, 0x3C}, Bytes(60, 0x11))});
  EXPECT_EQ(device_.FlashWriteImage(And(first, 60, 0x11), 0x10000, Recorder()), 0);
  EXPECT_THAT(Percentages(), ElementsAre(50));
}

TEST_F(FlashImageWrite, BlankPiecesAreNotSentButCount) {
  const Bytes image = And(And(And(Bytes(60, 0x11), 60, 0xFF), 60, 0x22), 60, 0xFF);
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), ReportsLength(4, 64),
        Piece({0x00, 0x00, 0x00, 0x00}, Bytes(60, 0x11)),
        Piece({0x00, 0x00, 0x00, 0x78}, Bytes(60, 0x22))});
  EXPECT_EQ(device_.FlashWriteImage(image, 0, Recorder()), 0);
  EXPECT_THAT(Percentages(), ElementsAre(25, 50, 75));
}

TEST_F(FlashImageWrite, SixtyErasedBytesAcrossTwoPiecesAreSent) {
  const Bytes image = And(And(Bytes(30, 0x11), 60, 0xFF), 30, 0x22);
  const Bytes first = And(Bytes(30, 0x11), 30, 0xFF);
  const Bytes second = And(Bytes(30, 0xFF), 30, 0x22);
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), ReportsLength(4, 64),
        Piece({0x00, 0x00, 0x00, 0x00}, first), Piece({0x00, 0x00, 0x00, 0x3C}, second)});
  EXPECT_EQ(device_.FlashWriteImage(image, 0, Recorder()), 0);
}

TEST_F(FlashImageWrite, ABlankImageIsErasedAndNothingElse) {
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), ReportsLength(4, 64)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 0xFF), 0, Recorder()), 0);
  EXPECT_THAT(Percentages(), ElementsAre(50));
}

TEST_F(FlashImageWrite, ErasesInOrderFromTheUnalignedStartAddress) {
  // 12,285 bytes: two whole sectors and a third begun. All blank but the last piece's filling.
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x12, 0x34), Erase(0x00, 0x00, 0x22, 0x34),
        Erase(0x00, 0x00, 0x32, 0x34), ReportsLength(4, 64),
        // piece 204: 0x1234 + 204 * 60 = 0x4204; 45 bytes of FF and 15 zeros
        Piece({0x00, 0x00, 0x42, 0x04}, Bytes(45, 0xFF))});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(12285, 0xFF), 0x1234, Recorder()), 0);
}

TEST_F(FlashImageWrite, SectorCountChangesBehind4096Bytes) {
  // Piece 68 begins at 4080 (0xFF0): 16 or 17 bytes of FF, then zeros.
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), ReportsLength(4, 64),
        Piece({0x00, 0x00, 0x0F, 0xF0}, Bytes(16, 0xFF))});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(4096, 0xFF), 0, {}), 0);
  control_->ExpectAllPlayed();
  Play({ReportsLength(3, 11), Erase(0x00, 0x00, 0x00, 0x00), Erase(0x00, 0x00, 0x10, 0x00),
        ReportsLength(4, 64), Piece({0x00, 0x00, 0x0F, 0xF0}, Bytes(17, 0xFF))});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(4097, 0xFF), 0, {}), 0);
}

TEST_F(FlashImageWrite, AddressesWrapAt32Bits) {
  Bytes image(4097, 0xFF);
  image[0] = 0x11;
  image[60] = 0x22;
  Bytes first(60, 0xFF);
  first[0] = 0x11;
  Bytes second(60, 0xFF);
  second[0] = 0x22;
  Play({ReportsLength(3, 11), Erase(0xFF, 0xFF, 0xFF, 0xE0), Erase(0x00, 0x00, 0x0F, 0xE0),
        ReportsLength(4, 64), Piece({0xFF, 0xFF, 0xFF, 0xE0}, first),
        Piece({0x00, 0x00, 0x00, 0x1C}, second), Piece({0x00, 0x00, 0x0F, 0xD0}, Bytes(17, 0xFF))});
  EXPECT_EQ(device_.FlashWriteImage(image, 0xFFFFFFE0, {}), 0);
}

TEST_F(FlashImageWrite, EmptyCallbackIsNeverCalled) {
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64),
        Piece({0, 0, 0, 0}, Bytes(60, 1)), Piece({0, 0, 0, 60}, Bytes(60, 1))});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 1), 0, {}), 0);
}

TEST_F(FlashImageWrite, ReportsAPieceAfterItWasSentWithTheShareBeforeIt) {
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64),
        Piece({0, 0, 0, 0}, Bytes(60, 1)), Piece({0, 0, 0, 60}, Bytes(60, 1)),
        Piece({0, 0, 0, 120}, Bytes(60, 1))});
  std::vector<std::pair<std::size_t, std::int32_t>> seen;
  const auto record = [&](std::int32_t, std::int32_t percent) {
    seen.emplace_back(control_->Count(), percent);
  };
  EXPECT_EQ(device_.FlashWriteImage(Bytes(180, 1), 0, record), 0);
  EXPECT_THAT(seen, ElementsAre(std::pair(5, 33), std::pair(6, 66)));
}

TEST_F(FlashImageWrite, ReportsEachPercentageOnce) {
  // 250 pieces, blank: 0.4 per cent each.
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), Erase(0, 0, 0x10, 0), Erase(0, 0, 0x20, 0),
        Erase(0, 0, 0x30, 0), ReportsLength(4, 64)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(15000, 0xFF), 0, Recorder()), 0);
  std::vector<std::int32_t> one_to_99;
  for (std::int32_t percent = 1; percent < 100; ++percent) {
    one_to_99.push_back(percent);
  }
  EXPECT_EQ(Percentages(), one_to_99);
}

TEST_F(FlashImageWrite, FailedEraseEndsAtOnce) {
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), Erase(0, 0, 0x10, 0, kDeviceGone)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(12288, 1), 0, Recorder()), kEraseFailed);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWrite, PositiveEraseIsNoFailure) {
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0, 5), ReportsLength(4, 64)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(60, 0xFF), 0, Recorder()), 0);
}

TEST_F(FlashImageWrite, LengthOfErasesIsNotChecked) {
  // Without a length the erase is sent with length 0.
  for (const Result answer : {Result{0}, Result{1}, Result{5}, kDeviceGone}) {
    Play({AnswersLengthQuery(3, answer, 11), Takes(3, 0, {}), ReportsLength(4, 64)});
    EXPECT_EQ(device_.FlashWriteImage(Bytes(60, 0xFF), 0, Recorder()), 0);
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashImageWrite, LengthOfPiecesMustBeAnswered) {
  for (const Result answer : {Result{1}, Result{5}, kDeviceGone}) {
    Play({ReportsLength(3, 11), AnswersLengthQuery(4, answer, 64)});
    EXPECT_EQ(device_.FlashWriteImage({}, 0, Recorder()), kFastInterfaceFailed);
    control_->ExpectAllPlayed();
    Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), AnswersLengthQuery(4, answer, 64)});
    EXPECT_EQ(device_.FlashWriteImage({1}, 0, Recorder()), kFastInterfaceFailed);
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashImageWrite, LengthOfPiecesAnsweredWithZeroLeavesLengthZero) {
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), AnswersLengthQuery(4, 0, 64), Takes(4, 0, {})});
  EXPECT_EQ(device_.FlashWriteImage({1}, 0, Recorder()), 0);
}

TEST_F(FlashImageWrite, PieceIsTriedFourTimesWithPauses) {
  const Bytes piece(60, 0x11);
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64),
        Piece({0, 0, 0, 0}, piece, kDeviceGone), Piece({0, 0, 0, 0}, piece, kDeviceGone),
        Piece({0, 0, 0, 0}, piece, 5), Piece({0, 0, 0, 0}, piece, kDeviceGone)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 0x11), 0, Recorder()), kWriteFailed);
  for (std::size_t attempt = 4; attempt <= 6; ++attempt) {
    EXPECT_GE(control_->ArrivalOf(attempt) - control_->ArrivalOf(attempt - 1),
              std::chrono::milliseconds(1))
        << attempt;
  }
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWrite, RetriesEndAtTheFirstZero) {
  const Bytes piece(60, 0x11);
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64),
        Piece({0, 0, 0, 0}, piece, kDeviceGone), Piece({0, 0, 0, 0}, piece, 5),
        Piece({0, 0, 0, 0}, piece), Piece({0, 0, 0, 60}, piece, 1), Piece({0, 0, 0, 60}, piece)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 0x11), 0, Recorder()), 0);
  EXPECT_THAT(Percentages(), ElementsAre(50));
}

TEST_F(FlashImageWrite, PositiveResultThatLastsIsNoFailure) {
  const Bytes piece(60, 0x11);
  const auto stubborn = [&](std::uint8_t address, Result last) {
    return std::vector<Transfer>{
        Piece({0, 0, 0, address}, piece, 5), Piece({0, 0, 0, address}, piece, kDeviceGone),
        Piece({0, 0, 0, address}, piece, 5), Piece({0, 0, 0, address}, piece, last)};
  };
  std::vector<Transfer> script = {ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64)};
  const auto add = [&](const std::vector<Transfer>& more) {
    script.insert(script.end(), more.begin(), more.end());
  };
  // The last transfer's result is the operation's.
  add(stubborn(0, 5));
  add(stubborn(60, 7));
  Play(script);
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 0x11), 0, Recorder()), 7);
  control_->ExpectAllPlayed();
  script.push_back(Piece({0, 0, 0, 120}, piece));
  Play(script);
  EXPECT_EQ(device_.FlashWriteImage(Bytes(180, 0x11), 0, Recorder()), 0);
}

TEST_F(FlashImageWrite, BlankPiecesAtTheEndKeepTheResultOfTheLastSentPiece) {
  const Bytes image = And(Bytes(60, 0x11), 60, 0xFF);
  const Transfer positive = Piece({0, 0, 0, 0}, Bytes(60, 0x11), 3);
  Play({ReportsLength(3, 11), Erase(0, 0, 0, 0), ReportsLength(4, 64), positive, positive, positive,
        positive});
  EXPECT_EQ(device_.FlashWriteImage(image, 0, Recorder()), 3);
}

TEST_F(FlashImageWrite, PacketIsSentWithTheReportedLength) {
  const Bytes packet = And({0x00, 0x00, 0x00, 0x00}, 60, 0x11);
  Play({ReportsLength(3, 64), Takes(3, 64, {0x32}), ReportsLength(4, 65), Takes(4, 65, packet)});
  EXPECT_EQ(device_.FlashWriteImage(Bytes(60, 0x11), 0, {}), 0);
}

TEST_F(CameraWithoutChannel, ImageWriteFailsAtTheErase) {
  EXPECT_EQ(device_.FlashWriteImage({1}, 0, {}), kEraseFailed);
}

TEST_F(CameraWithoutChannel, EmptyImageWriteFailsAtTheFastInterface) {
  EXPECT_EQ(device_.FlashWriteImage({}, 0, {}), kFastInterfaceFailed);
}

}  // namespace
}  // namespace borvan::test
