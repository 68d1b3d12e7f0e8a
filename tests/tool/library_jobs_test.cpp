// Jobs in one instance: leftovers of earlier jobs, reports that are cleared before they are seen,
// abandoned jobs.
#include <gmock/gmock.h>

#include <atomic>
#include <set>

#include "dll/job_reports.h"
#include "library_rig.h"

namespace borvanusb::tool_test {
namespace {

using borvan::Result;
using borvan_test::Transfer;
using testing::HasSubstr;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kFlash = 3;
constexpr std::uint32_t kFastWrite = 4;

class LibraryJobsTest : public LibraryTest {
 protected:
  LibraryJobsTest() {
    Bytes content(0x1000);
    for (std::size_t i = 0; i < content.size(); ++i) {
      content[i] = static_cast<std::uint8_t>(1 + i % 251);
    }
    chip->PutFlash(0, content);
  }
  // All reports of a job's end are cleared before they are seen.
  void ClearEnds() {
    exports.GetProgressInfo = [] {
      const std::uint64_t progress = GetProgressInfo();
      const JobReport report = ReportIn(progress);
      return report == JobReport::kRunning || report == JobReport::kNothing ? progress : 0;
    };
  }
  void ClearAll() {
    exports.GetProgressInfo = [] { return std::uint64_t{0}; };
  }
  void Refuse(std::uint32_t selector) {
    chip->Intercept([selector](const Transfer& transfer) -> std::optional<Result> {
      return transfer.request.id == selector && transfer.request.flags == borvan_test::kSetFlags
                 ? std::optional(kDeviceError)
                 : std::nullopt;
    });
  }
  // Transfers of a selector block until Release().
  void Hold(std::uint32_t selector) {
    chip->Intercept([this, selector](const Transfer& transfer) -> std::optional<Result> {
      if (transfer.request.id == selector && !transfer.is_length_query) {
        ++waiting;
        borvan_test::WaitUntil([this] { return released.load(); });
      }
      return std::nullopt;
    });
  }

 public:
  const Bytes image = Bytes(120, 0x33);
  std::atomic<bool> released = false;
  std::atomic<int> waiting = 0;
};

TEST(JobReportsTest, EachValueOfTheProgressHasItsMeaning) {
  EXPECT_EQ(ReportIn(0xE000000A00000000), JobReport::kNothing);
  EXPECT_EQ(ReportIn(0xE000000A00000032), JobReport::kNothing) << "halves of two reports";
  EXPECT_EQ(ReportIn(0), JobReport::kCleared);
  EXPECT_EQ(ReportIn(1), JobReport::kRunning);
  EXPECT_EQ(ReportIn(99), JobReport::kRunning);
  EXPECT_EQ(ReportIn(100), JobReport::kDone);
  EXPECT_EQ(ReportIn(0xE000000300000000), JobReport::kFailed);
  EXPECT_EQ(ReportIn(0x8007001700000000), JobReport::kFailed);
  EXPECT_EQ(ReportIn(0x0000000B00000000), JobReport::kNotice);
  EXPECT_EQ(ReportedStatus(0xE000000300000000), 0xE0000003U);
}

TEST_F(LibraryJobsTest, AllJobsRunInOneInstanceAndOneOpening) {
  int instances = 0;
  on_platform_made = [&] { ++instances; };
  const auto camera = Open();
  camera->ProgramFlash(0x1000, image, {});
  borvan_test::WaitUntil([] { return !borvan::GlobalInstance().Get()->Jobs().job_running; });
  const auto references = chip.use_count();
  for (int i = 0; i < 20; ++i) {
    camera->ProgramFlash(0x1000, image, {});
    EXPECT_EQ(camera->ReadFlash(0x1000, 120, {}), image);
    camera->ReadRegisterRun(0x100, 0x140);
    library->ListCameras();
  }
  EXPECT_EQ(instances, 1);
  EXPECT_EQ(chip.use_count(), references);
  EXPECT_EQ(OpenLibraryCamera(*library, camera->Identity())->Identity().path,
            camera->Identity().path);
  EXPECT_EQ(chip.use_count(), references) << "opened anew, the former opening is released";
}

TEST_F(LibraryJobsTest, EachCameraIsSelectedForItsOwnAccesses) {
  const auto other = std::make_shared<borvan_test::MemoryChip>();
  script->cameras.push_back(borvan_test::MakeCamera(u'b', other));
  const auto cameras = library->ListCameras();
  const auto a = OpenLibraryCamera(*library, cameras[0]);
  const auto b = OpenLibraryCamera(*library, cameras[1]);
  a->WriteRegister(0x40, 1, RegisterWidth::kByte);
  b->WriteRegister(0x40, 2, RegisterWidth::kByte);
  EXPECT_EQ(chip->Register(0x40), 1U);
  EXPECT_EQ(other->Register(0x40), 2U);
}

TEST_F(LibraryJobsTest, HundredOfAnEarlierJobIsNotTheEndOfTheNext) {
  const auto camera = Open();
  camera->ReadFlash(0, 100, {});
  ASSERT_EQ(GetProgressInfo(), 100U);
  Hold(kFastWrite);
  std::atomic<int> polls = 0;
  platform.on_sleep = [&] { released = ++polls > 50; };
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_GT(polls, 50);
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
}

TEST_F(LibraryJobsTest, FailureOfAnEarlierJobIsNotTheEndOfTheNext) {
  const auto camera = Open();
  Refuse(kFastWrite);
  FailureOf([&] { camera->ProgramFlash(0x1000, image, {}); });
  chip->Intercept(nullptr);
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_EQ(camera->ReadFlash(0x1000, 120, {}), image);
}

TEST_F(LibraryJobsTest, ReadsNeedNoReport) {
  const auto camera = Open();
  ClearAll();
  EXPECT_EQ(camera->ReadFlash(0x40, 0x80, {}), chip->Flash(0x40, 0x80));
  EXPECT_EQ(camera->ReadRegisterRun(0x100, 0x180), Bytes(0x81, 0));
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryJobsTest, FileThatShowsBeforeItsWriterIsWaitedFor) {
  const auto camera = Open();
  for (int i = 0; i < 50; ++i) {
    platform.early_looks = 1;
    EXPECT_EQ(camera->ReadFlash(0, 60, {}).size(), 60U);
  }
  platform.early_looks = 0;
  ClearEnds();
  platform.early_looks = 1;
  EXPECT_EQ(camera->ReadFlash(0, 60, {}).size(), 60U);
}

TEST_F(LibraryJobsTest, FailedReadIsAFailureThoughItsReportWasCleared) {
  // The library's threads that clear the progress take three seconds to end.
  library->SetLimit(std::chrono::seconds(20));
  const auto camera = Open();
  ClearAll();
  Refuse(5);
  chip->Strike([](const Transfer& transfer) {
    return transfer.request.id == 5 && transfer.is_length_query
               ? std::optional(borvan_test::Fault::kRefused)
               : std::nullopt;
  });
  EXPECT_EQ(FailureOf([&] { camera->ReadFlash(0x40, 0x80, {}); }).Code(), ExitCode::kDevice);
}

TEST_F(LibraryJobsTest, ProgrammingWhoseEndWasClearedIsReadBack) {
  // The library's threads that clear the progress take three seconds to end.
  library->SetLimit(std::chrono::seconds(20));
  const auto camera = Open();
  ClearEnds();
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
  Refuse(kFastWrite);
  const Failure failure = FailureOf([&] { camera->ProgramFlash(0x1000, image, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(),
              HasSubstr("programming flash 0x1000-0x1077: it failed, and the reason was lost"));
}

TEST_F(LibraryJobsTest, ProgrammingOfWhichNoReportIsSeenIsReadBack) {
  // The library's threads that clear the progress take three seconds to end.
  library->SetLimit(std::chrono::seconds(20));
  const auto camera = Open();
  ClearAll();
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
}

TEST_F(LibraryJobsTest, ListWhoseEndWasClearedIsNotCalledWritten) {
  // The library's threads that clear the progress take three seconds to end.
  library->SetLimit(std::chrono::seconds(20));
  const auto camera = Open();
  ClearEnds();
  const Failure failure =
      FailureOf([&] { camera->WriteRegisterList("0xfffd, 0x00,\n0x0100, 0x5a,\n"); });
  EXPECT_EQ(failure.Code(), ExitCode::kDevice);
  EXPECT_THAT(failure.Message(), HasSubstr("its result is not known"));
  EXPECT_EQ(FailureOf([&] {
              camera->WriteI2cList("0xfff8, 0x6c,\n0xfffe, 3,\n0x3012, 0x5a,\n", 0);
            }).Code(),
            ExitCode::kDevice);
}

// The 100 of an earlier job is cleared after three seconds, while this job runs.
TEST_F(LibraryJobsTest, JobWhoseReportsAreClearedWhileItRunsIsWaitedFor) {
  const auto camera = Open();
  camera->ReadFlash(0, 100, {});
  Hold(kFlash);
  const auto start = std::chrono::steady_clock::now();
  bool was_cleared = false;
  platform.on_sleep = [&] {
    was_cleared = was_cleared || GetProgressInfo() == 0;
    released = std::chrono::steady_clock::now() - start > std::chrono::milliseconds(3500);
  };
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_TRUE(was_cleared);
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
}

TEST_F(LibraryJobsTest, FileThatAWorkerCannotUseIsAFailureOfTheFile) {
  const auto camera = Open();
  exports.UsbFlashWriteFile = [](const char* name, std::uint32_t address) {
    // The file exists when the library checks for it, but can't be opened.
    return UsbFlashWriteFile(*name == 0 ? name : "/", address);
  };
  const Failure failure = FailureOf([&] { camera->ProgramFlash(0x1000, image, {}); });
  EXPECT_EQ(failure.Code(), ExitCode::kFile);
  EXPECT_THAT(failure.Message(), HasSubstr("0xE000000A"));
}

TEST_F(LibraryJobsTest, NothingIsWrittenBesideAJobThatWasAbandoned) {
  const auto camera = OpenWithShortLimit();
  Hold(kFastWrite);
  EXPECT_EQ(FailureOf([&] { camera->ProgramFlash(0x1000, Bytes(5000, 1), {}); }).Code(),
            ExitCode::kTimeout);
  ASSERT_EQ(waiting, 1);
  chip->ForgetTransfers();
  const I2cTarget sensor{0x6C, 1, 0};
  const std::vector<std::function<void()>> accesses = {
      [&] { camera->ProgramFlash(0x1000, image, {}); },
      [&] { camera->WriteFlashWord(0x2000, 1); },
      [&] { camera->EraseSector(0x2000); },
      [&] { camera->WriteRegister(0x40, 1, RegisterWidth::kByte); },
      [&] { camera->WriteRegisterList("0xfffd, 0,\n0x0100, 0x5a,\n"); },
      [&] { camera->WriteI2c(sensor, 1, 1); },
      [&] { camera->WriteI2cList("0xfff8, 0x6c,\n0xfffe, 3,\n0x3012, 0x5a,\n", 0); },
      [&] { camera->ReadFlash(0, 4, {}); },
      [&] { OpenLibraryCamera(*library, camera->Identity()); },
  };
  for (const auto& access : accesses) {
    const Failure failure = FailureOf(access);
    EXPECT_EQ(failure.Code(), ExitCode::kTimeout);
    EXPECT_THAT(failure.Message(),
                HasSubstr("an earlier job of this program may still be running"));
  }
  EXPECT_TRUE(chip->Transfers().empty());
  EXPECT_EQ(library->ListCameras().size(), 1U) << "which has no transfer";
  released = true;
  EXPECT_TRUE(BecomesIdle());
  camera->ProgramFlash(0x1000, image, {});
  EXPECT_EQ(chip->Flash(0x1000, 120), image);
}

TEST_F(LibraryJobsTest, AbandonedReadLeavesNoFileOnceItHasEnded) {
  const auto camera = OpenWithShortLimit();
  Hold(5);
  EXPECT_EQ(FailureOf([&] { camera->ReadFlash(0, 100, {}); }).Code(), ExitCode::kTimeout);
  EXPECT_EQ(FailureOf([&] { camera->ReadFlash(0, 100, {}); }).Code(), ExitCode::kTimeout);
  EXPECT_EQ(LeftBehind(), 1U) << "the job still has it open";
  released = true;
  EXPECT_TRUE(BecomesIdle());
  EXPECT_EQ(LeftBehind(), 0U);
}

TEST_F(LibraryJobsTest, StopAbandonsAProgrammingAtOnce) {
  const auto camera = Open();
  Hold(kFastWrite);
  platform.on_sleep = [&] { supervisor.RequestStop(); };
  EXPECT_EQ(FailureOf([&] { camera->ProgramFlash(0x1000, image, {}); }).Code(), ExitCode::kStopped);
  platform.on_sleep = nullptr;
  const Supervisor::Hold hold(supervisor);
  EXPECT_EQ(FailureOf([&] { camera->WriteFlashWord(0x2000, 1); }).Code(), ExitCode::kTimeout);
  released = true;
  EXPECT_TRUE(BecomesIdle());
}

TEST_F(LibraryJobsTest, TooManyClearTasksAreWaitedFor) {
  platform.most_clear_tasks = 4;
  const auto camera = Open();
  const auto start = std::chrono::steady_clock::now();
  camera->ReadFlash(0, 4, {});
  camera->ReadFlash(0, 4, {});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
  camera->ReadFlash(0, 4, {});
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
}

// The library may hang in any of its functions.
TEST_F(LibraryJobsTest, LookingForACameraIsUnderTheTimeLimit) {
  static const Supervisor* watch;
  static std::string doing;
  watch = &supervisor;
  doing.clear();
  exports.UsbUpdateDevice = [] {
    doing = watch->Overdue(std::chrono::milliseconds(0)).value_or("");
    return UsbUpdateDevice();
  };
  const auto camera = Open();
  EXPECT_TRUE(library->IsListed(camera->Identity()));
  EXPECT_EQ(doing, "listing the cameras");
}

}  // namespace
}  // namespace borvanusb::tool_test
