// Reading a range of flash, 64 bytes a request, selector 5.

#include <gmock/gmock.h>

#include <functional>

#include "camera_with_script.h"

namespace borvan::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// first, first + 1, … : a packet of flash whose bytes tell where they belong.
Bytes Rising(std::uint8_t first, std::size_t count) {
  Bytes bytes;
  for (std::size_t i = 0; i < count; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(first + i));
  }
  return bytes;
}

class FlashBulkRead : public CameraWithScript {
 protected:
  // The two length queries, then `requests`.
  void PlayRead(const std::vector<Transfer>& requests) {
    std::vector<Transfer> script = {ReportsLength(3, 11), ReportsLength(5, 64)};
    script.insert(script.end(), requests.begin(), requests.end());
    Play(std::move(script));
  }

  Bytes output_;
};

TEST_F(FlashBulkRead, OneByteIsOneRequestAndReports100) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x10, 0x00}), Gives(5, 64, Rising(0xA0, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x1000, Recorder()), 0);
  EXPECT_THAT(output_, ElementsAre(0xA0));
  EXPECT_THAT(Percentages(), ElementsAre(100));
}

TEST_F(FlashBulkRead, SevenBytesReport100) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x10, 0x00}), Gives(5, 64, Rising(0xA0, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x1006, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0xA0, 7));
  EXPECT_THAT(Percentages(), ElementsAre(100));
}

TEST_F(FlashBulkRead, EightBytesAreOneRequestAndReport200) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x10, 0x00}), Gives(5, 64, Rising(0xA0, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x1007, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0xA0, 8));
  EXPECT_THAT(Percentages(), ElementsAre(200));
}

TEST_F(FlashBulkRead, SixtyThreeBytesAreOneRequest) {
  PlayRead({Takes(5, 64, {}), Gives(5, 64, Rising(0, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 62, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 63));
  EXPECT_THAT(Percentages(), ElementsAre(114));  // 8 of 7 groups
}

TEST_F(FlashBulkRead, SixtyFourBytesAreTwoRequestsTheSecondForNothing) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x10, 0x00}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x10, 0x40}), Gives(5, 64, Rising(0x40, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x103F, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 64));
  EXPECT_THAT(Percentages(), ElementsAre(112));  // 8 of 8 is not told; 9 of 8
}

TEST_F(FlashBulkRead, SixtyFiveBytesAreTwoRequests) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x10, 0x00}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x10, 0x40}), Gives(5, 64, Rising(0x40, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x1040, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 65));
  EXPECT_THAT(Percentages(), ElementsAre(112));
}

TEST_F(FlashBulkRead, OneHundredAndTwentyEightBytesAreThreeRequests) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x00, 0x00}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Rising(0x40, 64)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x80}), Gives(5, 64, Rising(0x80, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 127, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 128));
  EXPECT_THAT(Percentages(), ElementsAre(50, 106));  // 8, 16 (not told) and 17 of 16
}

TEST_F(FlashBulkRead, ReportsEachPacketAfterItsGet) {
  PlayRead({Takes(5, 64, {0, 0, 0, 0}), Gives(5, 64, {}), Takes(5, 64, {0, 0, 0, 0x40}),
            Gives(5, 64, {}), Takes(5, 64, {0, 0, 0, 0x80}), Gives(5, 64, {})});
  std::vector<std::pair<std::size_t, std::int32_t>> seen;
  const auto record = [&](std::int32_t, std::int32_t percent) {
    seen.emplace_back(control_->Count(), percent);
  };
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 159, record), 0);  // 20 groups
  EXPECT_THAT(seen, ElementsAre(std::pair(4, 40), std::pair(6, 80), std::pair(8, 105)));
}

TEST_F(FlashBulkRead, AppendsToWhatIsThere) {
  output_ = {0x01, 0x02};
  PlayRead({Takes(5, 64, {0xFE, 0xDC, 0xBA, 0x98}), Gives(5, 64, {0xA0})});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0xFEDCBA98, 0xFEDCBA98, Recorder()), 0);
  EXPECT_THAT(output_, ElementsAre(0x01, 0x02, 0xA0));
}

TEST_F(FlashBulkRead, AddressWrapsAtTheEndOfTheRange) {
  PlayRead({Takes(5, 64, {0xFF, 0xFF, 0xFF, 0xC0}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x00}), Gives(5, 64, {})});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0xFFFFFFC0, 0xFFFFFFFF, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 64));
}

TEST_F(FlashBulkRead, TheWhole4GiBRangeIsNotTakenForAnEmptyOne) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x00, 0x00}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Rising(0x40, 64))});
  StopDuring(5);
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 0xFFFFFFFF, Recorder()), kTerminated);
  EXPECT_EQ(output_, Rising(0, 128));
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashBulkRead, EndBelowStartMakesNoTransfer) {
  Play({ReportsLength(3, 11)});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x0FFF, Recorder()), kInvalidAddress);
  control_->ExpectAllPlayed();
  Play({ReportsLength(3, 11)});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0xFFFFFFFF, 0, Recorder()), kInvalidAddress);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashBulkRead, AddressesCompareUnsigned) {
  PlayRead({Takes(5, 64, {0x7F, 0xFF, 0xFF, 0xFF}), Gives(5, 64, {0x11, 0x22})});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x7FFFFFFF, 0x80000000, Recorder()), 0);
  EXPECT_THAT(output_, ElementsAre(0x11, 0x22));
}

TEST_F(FlashBulkRead, SetsAreNotChecked) {
  PlayRead({Takes(5, 64, {}, kDeviceGone), Gives(5, 64, {0x11})});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 0, Recorder()), 0);
  EXPECT_THAT(output_, ElementsAre(0x11));
}

TEST_F(FlashBulkRead, RequestsAreCleanAfterAReply) {
  // `Takes` expects zeros behind the address, though the reply before filled the buffer.
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x00, 0x00}), Gives(5, 64, Bytes(64, 0xEE)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Bytes(64, 0xEE))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 64, Recorder()), 0);
}

TEST_F(FlashBulkRead, AnyAnswerButZeroRepeatsTheAddress) {
  PlayRead({Takes(5, 64, {0x00, 0x00, 0x00, 0x00}), Gives(5, 64, Rising(0, 64)),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Bytes(64, 0xEE), kDeviceGone),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Bytes(64, 0xEE), 1),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Bytes(64, 0xEE), 5),
            Takes(5, 64, {0x00, 0x00, 0x00, 0x40}), Gives(5, 64, Rising(0x40, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 79, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 80));
  EXPECT_THAT(Percentages(), ElementsAre(80, 110));  // 8 and 11 of 10
}

TEST_F(FlashBulkRead, AFailureIsRepeatedUntilAStop) {
  std::vector<Transfer> requests;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    requests.push_back(Takes(5, 64, {0x00, 0x00, 0x10, 0x00}));
    requests.push_back(GivesNothing(5, 64, kDeviceGone));
  }
  PlayRead(requests);
  StopDuring(2 + 1999);
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0x1000, 0x1007, Recorder()), kTerminated);
  EXPECT_THAT(output_, IsEmpty());
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashBulkRead, AShortRangeIsNotRepeated) {
  for (const Result answer : {Result{1}, Result{5}, kDeviceGone}) {
    reports_.clear();
    PlayRead({Takes(5, 64, {}), Gives(5, 64, Bytes(64, 0xEE), answer)});
    EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 6, Recorder()), answer);
    EXPECT_THAT(output_, IsEmpty());
    EXPECT_THAT(Percentages(), ElementsAre(100));
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashBulkRead, AShortRangeCallsItsCallbackEvenWhenEmpty) {
  PlayRead({Takes(5, 64, {}), Gives(5, 64, {0x11})});
  EXPECT_THROW(static_cast<void>(device_.FlashQuickReadImage(output_, 0, 6, {})),
               std::bad_function_call);
}

TEST_F(FlashBulkRead, ALongerRangeNeedsNoCallback) {
  PlayRead({Takes(5, 64, {}), Gives(5, 64, Rising(0, 64))});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 7, {}), 0);
  EXPECT_EQ(output_, Rising(0, 8));
}

TEST_F(FlashBulkRead, StopBeforeTheFirstRequest) {
  for (const std::size_t index : {0U, 1U}) {
    device_.Jobs().stop_requested = false;
    PlayRead({});
    StopDuring(index);
    EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 6, Recorder()), kTerminated);
    control_->ExpectAllPlayed();
  }
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashBulkRead, StopKeepsWhatWasRead) {
  for (const std::size_t index : {2U, 3U}) {
    output_.clear();
    reports_.clear();
    device_.Jobs().stop_requested = false;
    PlayRead({Takes(5, 64, {}), Gives(5, 64, Rising(0, 64))});
    StopDuring(index);
    EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 127, Recorder()), kTerminated);
    EXPECT_EQ(output_, Rising(0, 64));
    EXPECT_THAT(Percentages(), ElementsAre(50));
    control_->ExpectAllPlayed();
  }
}

TEST_F(FlashBulkRead, StopDuringTheLastRequestIsTooLate) {
  PlayRead({Takes(5, 64, {}), Gives(5, 64, Rising(0, 64))});
  StopDuring(3);
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 7, Recorder()), 0);
  EXPECT_EQ(output_, Rising(0, 8));
}

TEST_F(FlashBulkRead, BadRangeComesBeforeAStop) {
  Play({ReportsLength(3, 11)});
  device_.Jobs().stop_requested = true;
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 1, 0, Recorder()), kInvalidAddress);
}

TEST_F(FlashBulkRead, FailedLengthQueriesHaveCodesOfTheirOwn) {
  Play({AnswersLengthQuery(3, kDeviceGone)});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 7, Recorder()), kLengthQueryFailed);
  control_->ExpectAllPlayed();
  Play({AnswersLengthQuery(3, kDeviceGone)});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 1, 0, Recorder()), kLengthQueryFailed);
  control_->ExpectAllPlayed();
  Play({ReportsLength(3, 11), AnswersLengthQuery(5, kDeviceGone, 64)});
  EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 7, Recorder()), kFastInterfaceFailed);
  EXPECT_THAT(reports_, IsEmpty());
}

TEST_F(FlashBulkRead, PositiveLengthQueriesGoOnWithLengthZero) {
  for (const Result answer : {0, 1, 5}) {
    output_.clear();
    Play({AnswersLengthQuery(3, answer), AnswersLengthQuery(5, answer, 64), Takes(5, 0, {}),
          Gives(5, 0, {})});
    EXPECT_EQ(device_.FlashQuickReadImage(output_, 0, 7, Recorder()), 0);
    // Nothing was read into the buffer: it holds the request.
    EXPECT_EQ(output_, Bytes(8, 0x00));
    control_->ExpectAllPlayed();
  }
}

TEST_F(CameraWithoutChannel, BulkReadFailsAtItsLengthQuery) {
  Bytes output;
  EXPECT_EQ(device_.FlashQuickReadImage(output, 0, 7, {}), kLengthQueryFailed);
  EXPECT_EQ(device_.FlashQuickReadImage(output, 7, 0, {}), kLengthQueryFailed);
  EXPECT_THAT(output, IsEmpty());
}

}  // namespace
}  // namespace borvan::test
