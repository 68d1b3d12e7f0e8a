// Stop requests at each point of an image write: they are looked for before each piece, never
// during the erases.

#include <gmock/gmock.h>

#include <algorithm>

#include "camera_with_script.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

Transfer Piece(std::uint8_t address, Result result = 0) {
  Bytes packet(64, 0x11);
  std::fill_n(packet.begin(), 3, std::uint8_t{0x00});
  packet[3] = address;
  return Takes(4, 64, std::move(packet), result);
}

// Writes of three pieces: transfers 0 length of erases, 1 and 2 erases (of 4,140 bytes), 3 length
// of pieces, 4 onwards pieces.
class FlashImageWriteStop : public CameraWithScript {
 protected:
  FlashImageWriteStop() : image_(4140, 0xFF) {
    std::fill_n(image_.begin(), 180, std::uint8_t{0x11});
  }

  std::vector<Transfer> ScriptWith(const std::vector<Transfer>& pieces) {
    std::vector<Transfer> script = {ReportsLength(3, 11), Takes(3, 11, {0x32}),
                                    Takes(3, 11, {0x32, 0x00, 0x00, 0x10, 0x00}),
                                    ReportsLength(4, 64)};
    script.insert(script.end(), pieces.begin(), pieces.end());
    return script;
  }

  Bytes image_;  // 69 pieces: three to send, 66 blank ones
};

TEST_F(FlashImageWriteStop, BeforeTheStartErasesAllAndSendsNoPiece) {
  Play(ScriptWith({}));
  device_.Jobs().stop_requested = true;
  EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), kTerminated);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWriteStop, DuringAnythingBeforeThePiecesErasesAllAndSendsNoPiece) {
  for (std::size_t index = 0; index <= 3; ++index) {
    device_.Jobs().stop_requested = false;
    Play(ScriptWith({}));
    StopDuring(index);
    EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), kTerminated) << index;
    control_->ExpectAllPlayed();
  }
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashImageWriteStop, DuringAPieceEndsBeforeTheNext) {
  Play(ScriptWith({Piece(0)}));
  StopDuring(4);
  EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), kTerminated);
  control_->ExpectAllPlayed();
  device_.Jobs().stop_requested = false;
  Play(ScriptWith({Piece(0), Piece(60), Piece(120)}));
  StopDuring(6);
  // The blank pieces behind are not gone through either: 2 of 69 pieces, then the stop.
  EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), kTerminated);
  EXPECT_THAT(Percentages(), ElementsAre(1, 2));
}

TEST_F(FlashImageWriteStop, DuringRetriesLetsThemGoOn) {
  Play(ScriptWith({Piece(0, kDeviceGone), Piece(0, kDeviceGone), Piece(0)}));
  StopDuring(4);
  EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), kTerminated);
}

TEST_F(FlashImageWriteStop, FailureOfThePieceUnderWayComesFirst) {
  Play(ScriptWith({Piece(0, kDeviceGone), Piece(0, kDeviceGone), Piece(0, kDeviceGone),
                   Piece(0, kDeviceGone)}));
  StopDuring(7);
  EXPECT_EQ(device_.FlashWriteImage(image_, 0, Recorder()), Code(0xE0000003));
}

TEST_F(FlashImageWriteStop, DuringTheLastPieceIsTooLate) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x32}), ReportsLength(4, 64), Piece(0), Piece(60)});
  StopDuring(4);
  EXPECT_EQ(device_.FlashWriteImage(Bytes(120, 0x11), 0, Recorder()), 0);
  EXPECT_THAT(Percentages(), ElementsAre(50));
}

TEST_F(FlashImageWriteStop, FromTheReportEndsBeforeTheNextPiece) {
  Play({ReportsLength(3, 11), Takes(3, 11, {0x32}), ReportsLength(4, 64), Piece(0), Piece(60)});
  const auto stop = [this](std::int32_t, std::int32_t) { device_.Jobs().stop_requested = true; };
  EXPECT_EQ(device_.FlashWriteImage(Bytes(180, 0x11), 0, stop), kTerminated);
}

TEST_F(FlashImageWriteStop, OfAnEmptyImageHasNoPieceToStopAt) {
  Play({ReportsLength(3, 11), ReportsLength(4, 64)});
  device_.Jobs().stop_requested = true;
  EXPECT_EQ(device_.FlashWriteImage({}, 0, Recorder()), 0);
}

}  // namespace
}  // namespace borvan::test
