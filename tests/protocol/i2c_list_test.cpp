// Runs and lists of registers on the I2C bus: fast on selector 6, else step by step on selector 2.

#include <gmock/gmock.h>

#include "camera_with_script.h"
#include "support/list_building.h"

namespace borvan::test {
namespace {

using ::testing::IsEmpty;

// The feature register answers 0: no fast paths.
class I2cListSlow : public CameraWithScript {
 protected:
  Result Read(std::uint32_t start, std::uint32_t end, std::uint32_t mode = 1) {
    return device_.I2cReadList(list_, 0x16C, start, end, mode, Recorder());
  }
  Result Write(const List& list, std::uint32_t option = 0) {
    return device_.I2cWriteList(list, option, Recorder());
  }
  void TearDown() override {
    EXPECT_THAT(reports_, IsEmpty());
    CameraWithScript::TearDown();
  }
  List list_;
};

// The feature register answers 0x20.
class I2cListFast : public I2cListSlow {
 protected:
  I2cListFast() {
    Play(FeatureRead(0x20));
    EXPECT_EQ(device_.SelectDevice(0), 0);
    control_->ExpectAllPlayed();
    Play({});
  }
};

Bytes Values(Bytes head, std::uint8_t value) {
  for (unsigned i = 0; i < 56; ++i) {
    head.push_back(static_cast<std::uint8_t>(value + i));
  }
  return head;
}

Bytes Full(Bytes bytes) {
  bytes.resize(64, 0xFF);
  return bytes;
}

const Bytes kForeignHead(8, 0xEE);

TEST_F(I2cListFast, ReadOf256RegistersMakesFiveExchanges) {
  // 10 opcode, slave (low byte), width code 0, 56 values, block start; behind it the reply before.
  Play({ReportsLength(6, 64), Takes(6, 64, {0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0x00}),
        Gives(6, 64, Values(kForeignHead, 0x00)),
        Takes(6, 64, Values({0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0x38}, 0x00)),
        Gives(6, 64, Values(kForeignHead, 0x38)),
        Takes(6, 64, Values({0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0x70}, 0x38)),
        Gives(6, 64, Values(kForeignHead, 0x70)),
        Takes(6, 64, Values({0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0xA8}, 0x70)),
        Gives(6, 64, Values(kForeignHead, 0xA8)),
        Takes(6, 64, Values({0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0xE0}, 0xA8)),
        Gives(6, 64, Values(kForeignHead, 0xE0))});
  EXPECT_EQ(Read(0x00, 0xFF, 0), 0);
  EXPECT_EQ(list_, Registers(0, 256, 0));
}

TEST_F(I2cListFast, ReadsWith32BitRegistersShareOneWidthCode) {
  const Bytes heads[] = {
      {0x10, 0x6C, 0x00, 0x38, 0x00, 0x00, 0x00, 0x44},  // of modes 0 to 5
      {0x10, 0x6C, 0x01, 0x38, 0x00, 0x00, 0x33, 0x44},
      {0x10, 0x6C, 0x02, 0x38, 0x00, 0x00, 0x33, 0x44},
      {0x10, 0x6C, 0x05, 0x38, 0x11, 0x22, 0x33, 0x44},
      {0x10, 0x6C, 0x05, 0x38, 0x11, 0x22, 0x33, 0x44},
      {0x10, 0x6C, 0x05, 0x38, 0x11, 0x22, 0x33, 0x44},
  };
  for (std::uint32_t mode = 0; mode < std::size(heads); ++mode) {
    SCOPED_TRACE(mode);
    Play({ReportsLength(6, 64), Takes(6, 64, heads[mode]),
          Gives(6, 64, Values(kForeignHead, 0x11))});
    list_.clear();
    EXPECT_EQ(Read(0x11223344, 0x11223345, mode), 0);
    EXPECT_EQ(list_, Registers(0x11223344, 2, 0x11));
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cListFast, ReadInAModeAbove5KeepsBytes2To7OfTheReplyBefore) {
  for (const std::uint32_t mode : {6U, 0x100U}) {
    Play({ReportsLength(6, 64), Takes(6, 64, {0x10, 0x6C, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00}),
          Gives(6, 64, Values(kForeignHead, 0x11)),
          Takes(6, 64, Values({0x10, 0x6C, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE}, 0x11)),
          Gives(6, 64, Values(kForeignHead, 0x49))});
    list_.clear();
    EXPECT_EQ(Read(0x10, 0x48, mode), 0);
    EXPECT_EQ(list_, Registers(0x10, 57, 0x11));
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cListFast, ReadGoesNoFurtherThanTheLastAddress) {
  Play({ReportsLength(6, 64), Takes(6, 64, {0x10, 0x6C, 0x05, 0x38, 0xFF, 0xFF, 0xFF, 0xFE}),
        Gives(6, 64, Values(kForeignHead, 0x11))});
  EXPECT_EQ(Read(0xFFFFFFFE, 0xFFFFFFFF, 3), 0);
  EXPECT_EQ(list_, Registers(0xFFFFFFFE, 2, 0x11));
}

TEST_F(I2cListFast, ReadAppendsThoughAGetFailedAndGivesTheLastResult) {
  Play({ReportsLength(6, 64), Takes(6, 64, {0x10, 0x6C, 0x01, 0x38, 0, 0, 0x01, 0x00}),
        Gives(6, 64, Values(kForeignHead, 0x40), kDeviceGone),
        Takes(6, 64, Values({0x10, 0x6C, 0x01, 0x38, 0, 0, 0x01, 0x38}, 0x40), kDeviceGone),
        Gives(6, 64, Values(kForeignHead, 0x78), 5)});
  EXPECT_EQ(Read(0x100, 0x138), 5);
  EXPECT_EQ(list_, Registers(0x100, 57, 0x40));
}

TEST_F(I2cListFast, ReadGoesOnWithLength0AfterAFailedLengthQuery) {
  const Transfer queries[] = {AnswersLengthQuery(6, kDeviceGone, 64), ReportsLength(6, 65536),
                              AnswersLengthQuery(6, 0, 64)};
  for (const Transfer& query : queries) {
    Play({query, Takes(6, 0, {}), GivesNothing(6, 0, 1)});
    list_.clear();
    EXPECT_EQ(Read(0x10, 0x10), 1);
    EXPECT_EQ(list_, (List{{0x10, 0}}));
    control_->ExpectAllPlayed();
  }
}

TEST_F(I2cListFast, ReadOfNothingGivesTheLengthQuerysResult) {
  Play({AnswersLengthQuery(6, 5)});
  EXPECT_EQ(Read(1, 0), 5);
  Play({AnswersLengthQuery(6, kDeviceGone)});
  EXPECT_EQ(Read(1, 0), kDeviceGone);
  EXPECT_THAT(list_, IsEmpty());
}

TEST_F(I2cListFast, ReadStopsBeforeTheNextExchangeAndKeepsWhatItHas) {
  Play({ReportsLength(6, 64), Takes(6, 64, {0x10, 0x6C, 0x01, 0x38, 0, 0, 0, 0}),
        Gives(6, 64, Values(kForeignHead, 0))});
  StopDuring(1);
  EXPECT_EQ(Read(0, 100), kTerminated);
  EXPECT_EQ(list_, Registers(0, 56, 0));
  Play({ReportsLength(6, 64)});
  EXPECT_EQ(Read(0, 100), kTerminated);
}

TEST_F(I2cListSlow, ReadEndsItsExchangesAtTheFirstFailedGet) {
  // The low half of the register is sent in every mode.
  Play({ReportsLength(2, 6), Takes(2, 6, {0x14, 0x6C, 0x05, 0x01}),
        Takes(2, 6, {0x14, 0x00, 0x30, 0x02}), Gives(2, 6, {0xEE, 0x5A, 0xEE, 0xEE, 0xEE, 0xEE}),
        Takes(2, 6, {0x14, 0x6C, 0x05, 0x01}, kDeviceGone),
        Takes(2, 6, {0x14, 0x01, 0x30, 0x02}, kDeviceGone), Gives(2, 6, {0xEE, 0x5B, 0xEE}, 5),
        Takes(2, 6, {0x14, 0x6C, 0x05, 0x01}), Takes(2, 6, {0x14, 0x02, 0x30, 0x02}),
        Gives(2, 6, {0xEE, 0x5C}, kDeviceGone)});
  EXPECT_EQ(Read(0x93000, 0x93010, 0x105), kDeviceGone);
  EXPECT_EQ(list_, (List{{0x93000, 0x5A}, {0x93001, 0x5B}}));
}

TEST_F(I2cListSlow, ReadSendsNothingAfterAFailedLengthQuery) {
  Play({AnswersLengthQuery(2, kDeviceGone, 4)});
  EXPECT_EQ(Read(0, 1), kDeviceGone);
  Play({ReportsLength(2, 65536)});
  EXPECT_EQ(Read(0, 1), kBadLength);
  Play({AnswersLengthQuery(2, 5)});
  EXPECT_EQ(Read(1, 0), 5);
  EXPECT_THAT(list_, IsEmpty());
}

TEST_F(I2cListSlow, ReadLooksForAStopRequestEvenAfterAFailure) {
  Play({ReportsLength(2, 4), Takes(2, 4, {0x14, 0x6C, 0x01, 0x01}),
        Takes(2, 4, {0x14, 0x00, 0x00, 0x02}), Gives(2, 4, {0, 0x5A}, kDeviceGone)});
  StopDuring(3);
  EXPECT_EQ(Read(0, 5), kTerminated);
  EXPECT_THAT(list_, IsEmpty());
}

const List kSettings = {{0xFFF8, 0x6C}, {0xFFFE, 2}, {0x3012, 0x5A}, {0x3013, 0x5B}};

TEST_F(I2cListSlow, WriteSendsTheWidthCodeAndEachRegisterAndIgnoresFirstResults) {
  Play({ReportsLength(2, 4), Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}, kDeviceGone),  // slave, mode
        Takes(2, 4, {0x18, 0xFE, 0xFF, 0x02}, kDeviceGone),                       // 0xFFFE
        Takes(2, 4, {0x18, 0x02, 0x00, 0x04}),                                    // the code
        Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}, kDeviceGone),
        Takes(2, 4, {0x18, 0x12, 0x30, 0x02}, kDeviceGone), Takes(2, 4, {0x18, 0x5A, 0x00, 0x04}),
        Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}), Takes(2, 4, {0x18, 0x13, 0x30, 0x02}),
        Takes(2, 4, {0x18, 0x5B, 0x00, 0x04}, 5)});
  EXPECT_EQ(Write(kSettings, 0xF), 5);
}

TEST_F(I2cListSlow, WriteEndsAtAFailedThirdCommand) {
  std::vector<Transfer> script = {ReportsLength(2, 4), Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}),
                                  Takes(2, 4, {0x18, 0xFE, 0xFF, 0x02}),
                                  Takes(2, 4, {0x18, 0x02, 0x00, 0x04}, kDeviceGone)};
  Play(script);
  EXPECT_EQ(Write(kSettings), kDeviceGone);
  control_->ExpectAllPlayed();
  script.back().result = 0;
  script.push_back(Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}));
  script.push_back(Takes(2, 4, {0x18, 0x12, 0x30, 0x02}));
  script.push_back(Takes(2, 4, {0x18, 0x5A, 0x00, 0x04}, kDeviceGone));
  Play(script);
  EXPECT_EQ(Write(kSettings), kDeviceGone);
}

TEST_F(I2cListSlow, WriteOfAWidthCodeAloneGivesItsThirdCommandsResult) {
  Play({ReportsLength(2, 4), Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}),
        Takes(2, 4, {0x18, 0xFE, 0xFF, 0x02}), Takes(2, 4, {0x18, 0x02, 0x00, 0x04}, 5)});
  EXPECT_EQ(Write({{0xFFF8, 0x6C}, {0xFFFE, 2}}), 5);
}

TEST_F(I2cListSlow, WriteStopsBeforeTheNextEntry) {
  Play({ReportsLength(2, 4), Takes(2, 4, {0x18, 0x6C, 0x00, 0x01}),
        Takes(2, 4, {0x18, 0xFE, 0xFF, 0x02}), Takes(2, 4, {0x18, 0x02, 0x00, 0x04})});
  StopDuring(1);
  EXPECT_EQ(Write(kSettings), kTerminated);
  control_->ExpectAllPlayed();
  Play({ReportsLength(2, 4)});
  EXPECT_EQ(Write(kSettings), kTerminated);
  // An empty list has no entry to stop at.
  Play({ReportsLength(2, 4)});
  EXPECT_EQ(Write({}), 0);
}

TEST_F(I2cListSlow, WriteLengthQueries) {
  Play({AnswersLengthQuery(2, kDeviceGone)});
  EXPECT_EQ(Write(kSettings), kLengthQueryFailed);
  Play({ReportsLength(2, 65536)});
  EXPECT_EQ(Write({}), kLengthQueryFailed);
  Play({AnswersLengthQuery(2, 5)});
  EXPECT_EQ(Write({}), 5);
  Play({ReportsLength(2, 4)});
  EXPECT_EQ(Write({{0x10, 1}, {0xFFF8, 0x6C}}), kIncomplete);
}

TEST_F(I2cListFast, WriteSendsARunOf56AndOneOf4) {
  Play({ReportsLength(6, 64),
        Takes(6, 64, Values({0x00, 0x6C, 0x30, 0x38, 0xFF, 0xFF, 0xFF, 0x10}, 0)),
        Takes(6, 64,
              Full({0x00, 0x6C, 0x30, 0x04, 0xFF, 0xFF, 0xFF, 0x48,  // run of 4 from 0x48
                    0x38, 0x39, 0x3A, 0x3B}),
              5)});
  EXPECT_EQ(Write(Joined({{{0xFFF8, 0x6C}, {0xFFFE, 0}}, Registers(0x10, 60, 0)}), 3), 5);
}

TEST_F(I2cListFast, WriteEndsAtAFailedPacket) {
  Play({ReportsLength(6, 64),
        Takes(6, 64, Values({0x00, 0x6C, 0x00, 0x38, 0xFF, 0xFF, 0xFF, 0x10}, 0), kDeviceGone)});
  EXPECT_EQ(Write(Joined({{{0xFFF8, 0x6C}, {0xFFFE, 0}}, Registers(0x10, 60, 0)})), kDeviceGone);
}

TEST_F(I2cListFast, WriteDiscardsThePendingBlockWhenStopped) {
  Play({ReportsLength(6, 64)});
  StopDuring(0);
  EXPECT_EQ(Write(kSettings), kTerminated);
  control_->ExpectAllPlayed();
  device_.Jobs().stop_requested = false;
  Play({ReportsLength(6, 64),
        Takes(6, 64, Values({0x00, 0x6C, 0x00, 0x38, 0xFF, 0xFF, 0xFF, 0x10}, 0))});
  StopDuring(1);
  EXPECT_EQ(Write(Joined({{{0xFFF8, 0x6C}, {0xFFFE, 0}}, Registers(0x10, 60, 0)})), kTerminated);
}

TEST_F(I2cListFast, WriteStoppedDuringTheLastPacketIsDone) {
  // Width code 2 means mode 1 here, and is not written.
  Play({ReportsLength(6, 64),
        Takes(6, 64, Full({0x00, 0x6C, 0x01, 0x02, 0xFF, 0xFF, 0x30, 0x12, 0x5A, 0x5B}))});
  StopDuring(1);
  EXPECT_EQ(Write(kSettings), 0);
}

TEST_F(I2cListFast, WritePausesBetweenPackets) {
  Play({ReportsLength(6, 64),
        Takes(6, 64, Full({0x00, 0x6C, 0x00, 0x01, 0xFF, 0xFF, 0xFF, 0x10, 1})),
        Takes(6, 64, Full({0x00, 0x6C, 0x00, 0x01, 0xFF, 0xFF, 0xFF, 0x11, 2}))});
  EXPECT_EQ(Write({{0xFFF8, 0x6C}, {0xFFFE, 0}, {0x10, 1}, {0xFFFF, 100}, {0x11, 2}}), 0);
  EXPECT_GE(control_->ArrivalOf(2) - control_->ArrivalOf(1), std::chrono::milliseconds(100));
}

TEST_F(I2cListFast, WriteLengthQueries) {
  Play({AnswersLengthQuery(6, kDeviceGone)});
  EXPECT_EQ(Write({}), kFastInterfaceFailed);
  Play({ReportsLength(6, 65536)});
  EXPECT_EQ(Write(kSettings), kFastInterfaceFailed);
  Play({AnswersLengthQuery(6, 5)});
  EXPECT_EQ(Write({}), 5);
  Play({ReportsLength(6, 64)});
  EXPECT_EQ(Write({{0x10, 1}, {0xFFF8, 0x6C}}), kIncomplete);
}

TEST_F(CameraWithoutChannel, I2cListsOnTheSlowPath) {
  List list;
  EXPECT_EQ(device_.I2cReadList(list, 0x6C, 0, 3, 1, {}), kNoChannel);
  EXPECT_EQ(device_.I2cWriteList(kSettings, 0, {}), kLengthQueryFailed);
  EXPECT_THAT(list, IsEmpty());
}

}  // namespace
}  // namespace borvan::test
