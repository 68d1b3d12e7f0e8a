// Runs of chip registers, 56 an exchange on selector 7.

#include <gmock/gmock.h>

#include "camera_with_script.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class RegisterListRead : public CameraWithScript {
 protected:
  Result Read(std::uint32_t start, std::uint32_t end) {
    return device_.RegisterReadList(list_, start, end, Recorder());
  }

  void TearDown() override {
    EXPECT_THAT(reports_, IsEmpty());
    CameraWithScript::TearDown();
  }

  List list_;
};

// `head`, then 56 values that count up from `value`.
Bytes Values(Bytes head, std::uint8_t value) {
  for (unsigned i = 0; i < 56; ++i) {
    head.push_back(static_cast<std::uint8_t>(value + i));
  }
  return head;
}

const Bytes kForeignHead(8, 0xEE);

TEST_F(RegisterListRead, Of113RegistersMakesThreeExchanges) {
  Play({ReportsLength(7, 64),
        Takes(7, 64,
              {0x01, 0x00, 0x00, 0x38,  // block read, 56 values
               0x00, 0x12,              // bits 24 to 31 and 16 to 23 of the start
               0x00, 0x00}),            // block start
        Gives(7, 64, Values(kForeignHead, 0x00)),
        // The values of the reply before stay behind the head.
        Takes(7, 64, Values({0x01, 0x00, 0x00, 0x38, 0x00, 0x12, 0x00, 0x38}, 0x00)),
        Gives(7, 64, Values(kForeignHead, 0x38)),
        Takes(7, 64, Values({0x01, 0x00, 0x00, 0x38, 0x00, 0x12, 0x00, 0x70}, 0x38)),
        Gives(7, 64, Values(kForeignHead, 0x70))});
  EXPECT_EQ(Read(0x00120000, 0x00120070), 0);
  EXPECT_EQ(list_, Joined({{{0xFFFD, 0x00}, {0xFFFE, 0x12}}, Registers(0, 113, 0)}));
}

TEST_F(RegisterListRead, OfOneRegister) {
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0xAB, 0xCD, 0x12, 0x34}),
        Gives(7, 64, Values(kForeignHead, 0x5A), 1)});
  EXPECT_EQ(Read(0xABCD1234, 0xABCD1234), 1);
  EXPECT_THAT(list_, ElementsAre(ListEntry{0xFFFD, 0xAB}, ListEntry{0xFFFE, 0xCD},
                                 ListEntry{0x1234, 0x5A}));
}

TEST_F(RegisterListRead, EndsWithThePageOfTheStart) {
  // 64 registers up to 0xFFFF, though the end lies in another page.
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0xAB, 0x12, 0xFF, 0xC0}),
        Gives(7, 64, Values(kForeignHead, 0x10)),
        Takes(7, 64, Values({0x01, 0x00, 0x00, 0x38, 0xAB, 0x12, 0xFF, 0xF8}, 0x10)),
        Gives(7, 64, Values(kForeignHead, 0x48))});
  EXPECT_EQ(Read(0xAB12FFC0, 0x0000FFFF), 0);
  EXPECT_EQ(list_, Joined({{{0xFFFD, 0xAB}, {0xFFFE, 0x12}}, Registers(0xFFC0, 64, 0x10)}));
}

TEST_F(RegisterListRead, OfAnEndBelowTheStartReadsNothingAndGivesTheLengthQuerysResult) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}}) {
    Play({AnswersLengthQuery(7, answer)});
    EXPECT_EQ(Read(0x00120071, 0x00120070), answer);
    control_->ExpectAllPlayed();
  }
  // The low halves alone bound the run.
  Play({ReportsLength(7, 64)});
  EXPECT_EQ(Read(0x0001FFFF, 0x00020000), 0);
  EXPECT_THAT(list_, IsEmpty());
}

TEST_F(RegisterListRead, AppendsToWhatTheListHolds) {
  list_ = {{0x1, 0x2}};
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x10}),
        Gives(7, 64, Values(kForeignHead, 0x77))});
  EXPECT_EQ(Read(0x10, 0x10), 0);
  EXPECT_EQ(list_, (List{{0x1, 0x2}, {0xFFFD, 0x00}, {0xFFFE, 0x00}, {0x10, 0x77}}));
}

TEST_F(RegisterListRead, TakesValuesThoughAGetFailed) {
  // The failed get moves nothing: zeros are left of the block's beginning.
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x00}),
        GivesNothing(7, 64, kDeviceGone),
        Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x38}, kDeviceGone),
        Gives(7, 64, Values(kForeignHead, 0x42))});
  EXPECT_EQ(Read(0x100, 0x138), 0);
  ASSERT_EQ(list_.size(), 2U + 57U);
  for (std::uint32_t i = 0; i < 56; ++i) {
    EXPECT_EQ(list_[2 + i], (ListEntry{0x100 + i, 0})) << i;
  }
  EXPECT_EQ(list_.back(), (ListEntry{0x138, 0x42}));
}

TEST_F(RegisterListRead, ResultIsThatOfTheLastGet) {
  // What the failed get leaves in place are the values before.
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x00}),
        Gives(7, 64, Values(kForeignHead, 0x42)),
        Takes(7, 64, Values({0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x01, 0x38}, 0x42)),
        GivesNothing(7, 64, kDeviceGone)});
  EXPECT_EQ(Read(0x100, 0x138), kDeviceGone);
  ASSERT_EQ(list_.size(), 2U + 57U);
  EXPECT_EQ(list_.back(), (ListEntry{0x138, 0x42}));
}

TEST_F(RegisterListRead, FailedLengthQuerySendsNothing) {
  Play({AnswersLengthQuery(7, kDeviceGone, 64)});
  EXPECT_EQ(Read(0, 0), kDeviceGone);
  Play({ReportsLength(7, 65536)});
  EXPECT_EQ(Read(0, 0), kBadLength);
  EXPECT_THAT(list_, IsEmpty());
}

TEST_F(RegisterListRead, LengthQueryAnsweredWithSuccessLeavesTheLengthAt0) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}}) {
    Play({AnswersLengthQuery(7, answer, 64), Takes(7, 0, {}), GivesNothing(7, 0, 0)});
    list_.clear();
    EXPECT_EQ(Read(0x10, 0x11), 0) << answer;
    EXPECT_THAT(list_, ElementsAre(ListEntry{0xFFFD, 0}, ListEntry{0xFFFE, 0}, ListEntry{0x10, 0},
                                   ListEntry{0x11, 0}))
        << answer;
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterListRead, AReplyShorterThanTheBlockLeavesZeros) {
  Play({ReportsLength(7, 9), Takes(7, 9, {0x01, 0x00, 0x00, 0x38, 0x00, 0x00, 0x00, 0x10}),
        Gives(7, 9, Values(kForeignHead, 0x42))});
  EXPECT_EQ(Read(0x10, 0x11), 0);
  EXPECT_THAT(list_, ElementsAre(ListEntry{0xFFFD, 0}, ListEntry{0xFFFE, 0}, ListEntry{0x10, 0x42},
                                 ListEntry{0x11, 0}));
}

TEST_F(RegisterListRead, DoesNotLookForAStopRequest) {
  device_.Jobs().stop_requested = true;
  Play({ReportsLength(7, 64), Takes(7, 64, {0x01, 0x00, 0x00, 0x38}), Gives(7, 64, {})});
  EXPECT_EQ(Read(0, 0), 0);
}

TEST_F(CameraWithoutChannel, RegisterListReadAnswersNullPointer) {
  List list;
  EXPECT_EQ(device_.RegisterReadList(list, 0, 0x70, {}), kNoChannel);
  EXPECT_EQ(device_.RegisterReadList(list, 0x70, 0, {}), kNoChannel);
  EXPECT_THAT(list, IsEmpty());
}

}  // namespace
}  // namespace borvan::test
