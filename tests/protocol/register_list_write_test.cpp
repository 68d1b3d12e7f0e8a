// Lists of chip registers, written in blocks on selector 7.

#include <gmock/gmock.h>

#include <chrono>

#include "camera_with_script.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using std::chrono::milliseconds;
using ::testing::IsEmpty;

class RegisterListWrite : public CameraWithScript {
 protected:
  Result Write(const List& list) { return device_.RegisterWriteList(list, 0x55, Recorder()); }

  void TearDown() override {
    EXPECT_THAT(reports_, IsEmpty());
    CameraWithScript::TearDown();
  }
};

// `bytes`, then 0xFF up to 64 bytes.
Bytes Full(Bytes bytes) {
  bytes.resize(64, 0xFF);
  return bytes;
}

// Register 0x10 with the value 0x77, twice, without delays.
const Bytes kSingle = Full({0x00, 0x01, 0x00, 0x02,              // scatter block, 2 records
                            0xFF, 0xFD, 0x00, 0xFF, 0xFE, 0x00,  // delays
                            0x00, 0x10, 0x77, 0x00, 0x10, 0x77});

// 21 registers from 0x100 on, the values from 0x20 on.
Bytes RunOf21(std::uint8_t marked) {
  return Full({0x00, 0x00, marked, 0x15,                                            // run of 21
               0x00, 0x00,                                                          // delays
               0x01, 0x00,                                                          // register
               0x20, 0x21, 0x22,   0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A,  // values
               0x2B, 0x2C, 0x2D,   0x2E, 0x2F, 0x30, 0x31, 0x32, 0x33, 0x34});
}

TEST_F(RegisterListWrite, SendsARunAndASingleRegisterBehindIt) {
  Play({ReportsLength(7, 64),
        Takes(7, 64, Full({0x00, 0x00, 0x01, 0x20,                          // run of 32, marked
                           0x05, 0x00,                                      // delays
                           0x01, 0x00,                                      // register 0x100
                           0x00, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07,  // values
                           0x08, 0x09, 0x0A, 0x0B, 0x0C, 0x0D, 0x0E, 0x0F,  //
                           0x10, 0x11, 0x12, 0x13, 0x14, 0x15, 0x16, 0x17,  //
                           0x18, 0x19, 0x1A, 0x1B, 0x1C, 0x1D, 0x1E, 0x1F})),
        Takes(7, 64,
              Full({0x00, 0x01, 0x00, 0x02,              // scatter block, 2 records
                    0xFF, 0xFD, 0x05, 0xFF, 0xFE, 0x00,  // delays
                    0x02, 0x00, 0x77, 0x02, 0x00, 0x77}))});
  EXPECT_EQ(Write(Joined({{{0xFFFD, 5}}, Registers(0x100, 32, 0), {{0x200, 0x77}}})), 0);
}

TEST_F(RegisterListWrite, OfNothingOrMarksAloneGives0WithoutATransfer) {
  EXPECT_EQ(Write({}), 0);
  EXPECT_EQ(Write({{0xFFFD, 1}}), 0);
  EXPECT_EQ(Write({{0xFFFE, 1}, {0xFFFD, 1}, {0xFFFE, 1}}), 0);
  EXPECT_EQ(control_->Count(), 0U);
}

TEST_F(RegisterListWrite, WithoutAHeaderGives11AndSendsNothing) {
  const List lists[] = {{{0x10, 0x77}},
                        {{0x10, 0x77}, {0xFFFD, 1}, {0x20, 0x77}},
                        {{0xFFFE, 1}, {0xFFFD, 1}, {0x10, 0x77}},
                        {{0xFFFF, 1}, {0x10, 0x77}},
                        {{0xFFFF, 1}, {0x10, 0x77}, {0xFFFD, 0}, {0x20, 0x77}},
                        {{0x1FFFD, 0}, {0x10, 0x77}}};  // all 32 bits make a marker
  for (const List& list : lists) {
    Play({ReportsLength(7, 64)});
    EXPECT_EQ(Write(list), 11);
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterListWrite, WithoutAHeaderDoesNotPause) {
  Play({ReportsLength(7, 64)});
  List list(40, {0xFFFF, 255});
  list.push_back({0x10, 0x77});
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(Write(list), 11);
  EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(5000));  // 10.2 s of pauses
}

TEST_F(RegisterListWrite, PausesMayStandBeforeTheHeader) {
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle)});
  EXPECT_EQ(Write({{0xFFFF, 1}, {0xFFFF, 256}, {0xFFFD, 0}, {0x10, 0x77}}), 0);
}

TEST_F(RegisterListWrite, OfMarksAndPausesAloneGivesTheLengthQuerysResult) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}}) {
    Play({AnswersLengthQuery(7, answer)});
    EXPECT_EQ(Write({{0xFFFF, 0}}), answer);
    control_->ExpectAllPlayed();
    Play({AnswersLengthQuery(7, answer)});
    EXPECT_EQ(Write({{0xFFFD, 0}, {0xFFFE, 1}, {0xFFFF, 0}}), answer);
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterListWrite, DropsTheMarksAtItsEnd) {
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle)});
  EXPECT_EQ(Write({{0xFFFD, 0}, {0x10, 0x77}, {0xFFFD, 1}, {0xFFFE, 1}}), 0);
}

TEST_F(RegisterListWrite, PausesAllFallBeforeTheFirstBlock) {
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle), Takes(7, 64, RunOf21(0))});
  EXPECT_EQ(Write(Joined({{{0xFFFD, 0}, {0x10, 0x77}},
                          {{0xFFFF, 100}, {0xFFFF, 256}, {0xFFFF, 0xFFFFFFFF}},
                          Registers(0x100, 21, 0x20),
                          {{0xFFFF, 150}}})),
            0);
  EXPECT_GE(control_->ArrivalOf(1) - control_->ArrivalOf(0), milliseconds(250));
  EXPECT_LT(control_->ArrivalOf(2) - control_->ArrivalOf(1), milliseconds(100));
}

TEST_F(RegisterListWrite, ResultIsThatOfTheLastBlock) {
  const List list = Joined({{{0xFFFD, 0}, {0x10, 0x77}}, Registers(0x100, 21, 0x20)});
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle, 5), Takes(7, 64, RunOf21(0), 1)});
  EXPECT_EQ(Write(list), 1);
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle, 5), Takes(7, 64, RunOf21(0))});
  EXPECT_EQ(Write(list), 0);
}

TEST_F(RegisterListWrite, EndsAtAFailedBlock) {
  const List list = Joined(
      {{{0xFFFD, 0}, {0x10, 0x77}}, Registers(0x100, 21, 0x20), {{0xFFFD, 0}, {0x10, 0x77}}});
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle, kDeviceGone)});
  EXPECT_EQ(Write(list), kFastInterfaceFailed);
  control_->ExpectAllPlayed();
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle), Takes(7, 64, RunOf21(0), kDeviceGone)});
  EXPECT_EQ(Write(list), kFastInterfaceFailed);
  control_->ExpectAllPlayed();
  Play({ReportsLength(7, 64), Takes(7, 64, kSingle), Takes(7, 64, RunOf21(0)),
        Takes(7, 64, kSingle, kDeviceGone)});
  EXPECT_EQ(Write(list), kFastInterfaceFailed);
}

TEST_F(RegisterListWrite, FailedLengthQuerySendsNothing) {
  const List lists[] = {{{0xFFFD, 0}, {0x10, 0x77}}, {{0x10, 0x77}}};  // with a header, and without
  for (const List& list : lists) {
    Play({AnswersLengthQuery(7, kDeviceGone, 64)});
    EXPECT_EQ(Write(list), kDeviceGone);
    Play({ReportsLength(7, 65536)});
    EXPECT_EQ(Write(list), kBadLength);
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterListWrite, LengthQueryAnsweredWithSuccessLeavesTheLengthAt0) {
  for (const Result answer : {Result{0}, Result{1}, Result{5}}) {
    Play({AnswersLengthQuery(7, answer, 64), Takes(7, 0, {})});
    EXPECT_EQ(Write({{0xFFFD, 0}, {0x10, 0x77}}), 0) << answer;
    control_->ExpectAllPlayed();
  }
}

TEST_F(RegisterListWrite, BlocksHaveTheReportedLength) {
  // Zeros follow what the block holds.
  Bytes longer = kSingle;
  longer.resize(80, 0x00);
  Play({ReportsLength(7, 80), Takes(7, 80, longer)});
  EXPECT_EQ(Write({{0xFFFD, 0}, {0x10, 0x77}}), 0);
  control_->ExpectAllPlayed();
  Play({ReportsLength(7, 12), Takes(7, 12, kSingle)});
  EXPECT_EQ(Write({{0xFFFD, 0}, {0x10, 0x77}}), 0);
}

TEST_F(RegisterListWrite, CanNotBeStopped) {
  device_.Jobs().stop_requested = true;
  Play({ReportsLength(7, 64), Takes(7, 64, RunOf21(1))});
  EXPECT_EQ(Write(Joined({{{0xFFFD, 0}}, Registers(0x100, 21, 0x20)})), 0);
}

TEST_F(CameraWithoutChannel, RegisterListWriteAnswersNullPointer) {
  EXPECT_EQ(device_.RegisterWriteList({{0xFFFD, 0}, {0x10, 0x77}}, 0, {}), kNoChannel);
  EXPECT_EQ(device_.RegisterWriteList({{0x10, 0x77}}, 0, {}), kNoChannel);
  // Nothing to send: the channel plays no part.
  EXPECT_EQ(device_.RegisterWriteList({}, 0, {}), 0);
  EXPECT_EQ(device_.RegisterWriteList({{0xFFFD, 0}}, 0, {}), 0);
}

}  // namespace
}  // namespace borvan::test
