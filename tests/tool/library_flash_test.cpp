// Flash through the exports' jobs: ends of reads, progress, hanging cameras, stops.
#include <gmock/gmock.h>

#include <atomic>
#include <numeric>

#include "library_rig.h"

namespace borvanusb::tool_test {
namespace {

using borvan::Result;
using borvan_test::Transfer;
using testing::HasSubstr;

constexpr std::uint32_t kFastRead = 5;

using Bytes = std::vector<std::uint8_t>;

class LibraryFlashTest : public LibraryTest {
 protected:
  LibraryFlashTest() {
    for (std::size_t i = 0; i < content.size(); ++i) {
      content[i] = static_cast<std::uint8_t>(1 + i % 251);  // differs from packet to packet
    }
    chip->PutFlash(0, content);
  }
  Bytes Content(std::size_t first, std::size_t size) const {
    return {content.begin() + static_cast<std::ptrdiff_t>(first),
            content.begin() + static_cast<std::ptrdiff_t>(first + size)};
  }
  // The addresses requested by fast reads.
  std::vector<std::uint32_t> Asked() const {
    std::vector<std::uint32_t> addresses;
    for (const Bytes& block : chip->Sent(kFastRead)) {
      addresses.push_back(std::uint32_t{block[0]} << 24U | std::uint32_t{block[1]} << 16U |
                          std::uint32_t{block[2]} << 8U | block[3]);
    }
    return addresses;
  }
  void FailFastReads() {
    chip->Intercept([](const Transfer& transfer) -> std::optional<Result> {
      return transfer.request.id == kFastRead && transfer.request.flags == borvan_test::kGetFlags &&
                     !transfer.is_length_query
                 ? std::optional(kDeviceError)
                 : std::nullopt;
    });
  }

 public:
  Bytes content = Bytes(0x1000);
};

TEST_F(LibraryFlashTest, ReadOfAnyLengthGivesItsBytes) {
  const auto camera = Open();
  for (const std::size_t size : {1U, 7U, 8U, 63U, 64U, 65U, 128U, 4096U}) {
    EXPECT_EQ(camera->ReadFlash(0, size, {}), Content(0, size)) << size;
  }
  EXPECT_EQ(camera->ReadFlash(0x123, 100, {}), Content(0x123, 100));
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryFlashTest, ReadOfWholePacketsNeverAsksBehindItsEnd) {
  const auto camera = Open();
  camera->ReadFlash(0x40, 0x80, {});
  EXPECT_EQ(Asked(), (std::vector<std::uint32_t>{0x40, 0x80, 0x20, 0x60, 0x80}));
}

TEST_F(LibraryFlashTest, LastByteOfZerosIsAskedForOnceMoreBecauseAFailedWordReadsAsZero) {
  chip->PutFlash(0, Bytes(64, 0));
  const auto camera = Open();
  EXPECT_EQ(camera->ReadFlash(0, 64, {}), Bytes(64, 0));
  EXPECT_EQ(Asked(), (std::vector<std::uint32_t>{0, 63, 0, 63}));
}

TEST_F(LibraryFlashTest, ProgressRisesToTheWhole) {
  const auto camera = Open();
  std::vector<std::uint64_t> seen;
  camera->ReadFlash(0, 4096, [&](std::uint64_t done) { seen.push_back(done); });
  EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
  EXPECT_EQ(seen.back(), 4096U);
}

TEST_F(LibraryFlashTest, ReadThatNeverSucceedsEndsAfterTheTimeLimit) {
  library->SetLimit(std::chrono::milliseconds(1200));
  const auto camera = Open();
  FailFastReads();
  const Failure failure = FailureOf([&] { camera->ReadFlash(0, 100, {}); });
  chip->Intercept(nullptr);  // lets the job end
  EXPECT_EQ(failure.Code(), ExitCode::kTimeout);
  EXPECT_THAT(failure.Message(), HasSubstr("reading flash: no progress for 1.2 s"));
}

TEST_F(LibraryFlashTest, ShortReadThatFailsSaysWhy) {
  const auto camera = Open();
  FailFastReads();
  const Failure failure = FailureOf([&] { camera->ReadFlash(0x10, 4, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("reading flash 0x10-0x13: 0x80070017, Data error"));
}

// A read below 8 bytes always reports 100, even if it fails. A poll may come between the 100 and
// the failure.
TEST_F(LibraryFlashTest, ShortReadWhoseHundredIsSeenBeforeItsFailureSaysWhy) {
  const auto camera = Open();
  FailFastReads();
  static bool seen;
  seen = false;
  exports.GetProgressInfo = [] {
    const std::uint64_t progress = seen ? GetProgressInfo() : 100;
    seen = true;
    return progress;
  };
  const Failure failure = FailureOf([&] { camera->ReadFlash(0x10, 4, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("reading flash 0x10-0x13: 0x80070017, Data error"));
}

TEST_F(LibraryFlashTest, ReadOfACameraThatFellOffSaysSoLongBeforeTheTimeLimit) {
  const auto camera = Open();
  FailFastReads();
  platform.on_sleep = [&] { script->cameras.clear(); };
  const Failure failure = FailureOf([&] { camera->ReadFlash(0, 100, {}); });
  chip->Intercept(nullptr);
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("the camera is gone"));
}

TEST_F(LibraryFlashTest, CameraIsOpenedAnewAfterAJobThatFailed) {
  const auto camera = Open();
  FailFastReads();
  FailureOf([&] { camera->ReadFlash(0x10, 4, {}); });
  chip->Intercept(nullptr);
  const auto other = std::make_shared<borvan_test::MemoryChip>();
  other->PutFlash(0, Bytes(4, 0x77));
  script->cameras = {borvan_test::MakeCamera(u'a', other)};  // unplugged and plugged in again
  EXPECT_EQ(camera->ReadFlash(0, 4, {}), Bytes(4, 0x77));
  FailFastReads();
  other->Intercept([](const Transfer&) { return kDeviceError; });
  FailureOf([&] { camera->ReadFlash(0x10, 4, {}); });
  script->cameras.clear();
  const Failure failure = FailureOf([&] { camera->ReadFlash(0, 4, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("was disconnected"));
}

TEST_F(LibraryFlashTest, StopIsObeyedOnceTheJobHasEnded) {
  const auto camera = Open();
  chip->Intercept([this](const Transfer& transfer) -> std::optional<Result> {
    if (transfer.request.id == kFastRead) {
      supervisor.RequestStop();
    }
    return std::nullopt;
  });
  EXPECT_EQ(FailureOf([&] { camera->ReadFlash(0, 100, {}); }).Code(), ExitCode::kStopped);
  EXPECT_EQ(Asked(), (std::vector<std::uint32_t>{0, 64})) << "one reading to its end, and no other";
  const Supervisor::Hold hold(supervisor);
  EXPECT_EQ(camera->ReadFlash(0, 100, {}), Content(0, 100));
}

TEST_F(LibraryFlashTest, StopWaitsNoLongerThanASecondForAJobThatDoesNotEnd) {
  const auto camera = Open();
  FailFastReads();
  platform.on_sleep = [&] { supervisor.RequestStop(); };
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(FailureOf([&] { camera->ReadFlash(0, 100, {}); }).Code(), ExitCode::kStopped);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  platform.on_sleep = nullptr;
  const Supervisor::Hold hold(supervisor);
  EXPECT_EQ(FailureOf([&] { camera->EraseSector(0); }).Code(), ExitCode::kTimeout);
  chip->Intercept(nullptr);
  EXPECT_TRUE(BecomesIdle());
  EXPECT_EQ(camera->ReadFlash(0, 100, {}), Content(0, 100));
}

TEST_F(LibraryFlashTest, ProgrammingErasesAndWrites) {
  const auto camera = Open();
  const Bytes image(120, 0x33);
  std::uint64_t done = 0;
  camera->ProgramFlash(0x1000, image, [&](std::uint64_t bytes) { done = bytes; });
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
  EXPECT_EQ(chip->Flash(0x1000 + 120, 4), Bytes(4, 0xFF));
  EXPECT_EQ(done, 120U);
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryFlashTest, FailedProgrammingSaysWhy) {
  const auto camera = Open();
  chip->Intercept([](const Transfer& transfer) -> std::optional<Result> {
    return transfer.request.id == 4 && !transfer.is_length_query ? std::optional(kDeviceError)
                                                                 : std::nullopt;
  });
  const Failure failure = FailureOf([&] { camera->ProgramFlash(0x1000, Bytes(60, 1), {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(),
              HasSubstr("programming flash 0x1000-0x103b: 0xE0000003, Flash write  failed"));
}

TEST_F(LibraryFlashTest, WordsAreWrittenAndPeeked) {
  const auto camera = Open();
  camera->WriteFlashWord(0x2000, 0x01020304);
  EXPECT_EQ(chip->Flash(0x2000, 4), (Bytes{1, 2, 3, 4}));
  EXPECT_EQ(camera->PeekFlashWord(0x2000), 0x01020304U);
  camera->EraseSector(0x2000);
  EXPECT_EQ(camera->PeekFlashWord(0x2000), 0xFFFFFFFFU);
}

}  // namespace
}  // namespace borvanusb::tool_test
