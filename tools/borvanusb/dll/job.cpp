#include "dll/job.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <vector>

#include "base/failure.h"
#include "base/format.h"
#include "dll/job_reports.h"

namespace borvanusb {

namespace {

using Milliseconds = std::chrono::milliseconds;
using Clock = Supervisor::Clock;

// The intervals between two polls. Short jobs end within milliseconds, so the intervals are short
// at first: none until kSpinTime, kQuickInterval until kQuickTime, then kInterval. Long work is
// made of many jobs, each of which ends unnoticed for up to an interval, so the last percents of a
// job are polled quickly, too.
constexpr Milliseconds kSpinTime{2};
constexpr Milliseconds kQuickTime{30};
constexpr Milliseconds kQuickInterval{1};
constexpr Milliseconds kInterval{4};
constexpr std::int32_t kNearlyDone = 97;  // percent
// While a job makes no progress, the program checks at this interval whether the camera is listed.
constexpr Milliseconds kLookInterval{1000};
// If the reports do not show whether a job has ended, the program looks for the job's thread: first
// after kFirstThreadLook, then at increasing intervals of up to kThreadLookInterval.
constexpr Milliseconds kFirstThreadLook{20};
constexpr Milliseconds kThreadLookInterval{250};
// The program looks for the file at every poll if the reports indicate that it may exist, otherwise
// only at one of so many polls.
constexpr int kPollsPerLook = 16;
// The maximum time between two polls that counts as time without progress. On a busy machine this
// process may be suspended for longer, but then the job is, too.
constexpr Milliseconds kMostStanding{50};
constexpr Milliseconds kStopPatience{1000};
// How long to wait for the report of a write error, which comes after the file was closed.
constexpr Milliseconds kReportPatience{200};
constexpr std::int32_t kWhole = 100;

std::string Seconds(Milliseconds time) {
  constexpr std::int64_t kTenth = 100;
  const std::int64_t tenths = time.count() / kTenth;
  return tenths % 10 != 0 ? Format("{}.{} s", tenths / 10, tenths % 10)
                          : Format("{} s", tenths / 10);
}

// The thread of a job. It is identified by comparing the threads of the process before and after
// the start of the job.
class JobThread {
 public:
  explicit JobThread(LibraryPlatform& platform)
      : platform_(platform), before_(platform.Threads()) {}

  void Started() {
    const auto after = platform_.Threads();
    if (!before_ || !after) {
      return;
    }
    known_ = true;
    std::copy_if(after->begin(), after->end(), std::back_inserter(threads_),
                 [&](std::uint32_t thread) { return !Contains(*before_, thread); });
  }

  bool HasEnded() const {
    const auto now = known_ ? platform_.Threads() : std::nullopt;
    return now && std::none_of(threads_.begin(), threads_.end(),
                               [&](std::uint32_t thread) { return Contains(*now, thread); });
  }

 private:
  static bool Contains(const std::vector<std::uint32_t>& threads, std::uint32_t thread) {
    return std::find(threads.begin(), threads.end(), thread) != threads.end();
  }

  LibraryPlatform& platform_;
  const std::optional<std::vector<std::uint32_t>> before_;
  std::vector<std::uint32_t> threads_;
  bool known_ = false;
};

bool IsClosed(const LibraryPlatform::ScratchState& state) {
  return state.exists && !state.open;
}

class Runner {
 public:
  Runner(CameraLibrary& library, const CameraIdentity& camera, const Job& job)
      : library_(library), camera_(camera), job_(job) {}

  JobEnd Run() {
    library_.CheckIdle();
    library_.LimitClearTasks();
    PutMark();
    if (job_.file == nullptr) {
      thread_.emplace(library_.Platform());
    }
    Start();
    try {
      if (thread_) {
        thread_->Started();
      }
      return Follow();
    } catch (...) {
      if (!ended_) {
        Abandon();
      }
      throw;
    }
  }

 private:
  std::uint64_t Progress() const { return library_.Functions().GetProgressInfo(); }

  // Sets the mark that job_reports.h describes.
  void PutMark() const {
    const Supervisor::Call call(library_.Watch(), job_.doing);
    static_cast<void>(library_.Functions().UsbFlashWriteFile("", 0));
  }

  void Start() const {
    const Supervisor::Call call(library_.Watch(), job_.doing);
    bool started = false;
    try {
      started = job_.start(library_.Functions());
    } catch (const std::exception& error) {
      throw Failure(ExitCode::kInternal,
                    Format("{} can't be started: {}", job_.doing, error.what()),
                    "Close other programs and try again.");
    }
    if (!started) {
      throw Failure(ExitCode::kFile, Format("{} can't be started: {}", job_.doing,
                                            library_.StatusText(ReportedStatus(Progress()))));
    }
  }

  JobEnd Follow() {
    for (polls_ = 0;; ++polls_) {
      const std::uint64_t progress = Progress();
      const auto end = job_.file != nullptr ? EndByFile(progress) : EndByReport(progress);
      if (end) {
        return Ended(*end);
      }
      Advance(progress);
      HeedStop();
      HeedStandstill();
      library_.Platform().Sleep(Pause());
    }
  }

  JobEnd Ended(const JobEnd& end) {
    ended_ = true;
    library_.NoteJobEnd();
    if (stop_since_) {
      library_.Watch().ObeyStop();
    }
    if (end.outcome == JobEnd::Outcome::kDone && job_.advance != nullptr && *job_.advance) {
      (*job_.advance)(job_.total);
    }
    return end;
  }

  // For a job that reads. It writes its file after it has read all bytes and reported its end.
  std::optional<JobEnd> EndByFile(std::uint64_t progress) {
    const JobReport report = ReportIn(progress);
    const bool may_be_there = report != JobReport::kNothing && report != JobReport::kRunning;
    if (!may_be_there && polls_ % kPollsPerLook != 0) {
      return std::nullopt;
    }
    const auto state = library_.Platform().Look(*job_.file);
    if (!IsClosed(state)) {
      return std::nullopt;
    }
    if (state.size == job_.file_size) {
      return JobEnd{};
    }
    const auto patience = Clock::now() + kReportPatience;
    for (bool first = true; Clock::now() < patience; first = false) {
      const std::uint64_t last = Progress();
      const JobReport last_report = ReportIn(last);
      // The file may be visible shortly before it shows as open.
      if (last_report != JobReport::kFailed && !first && IsBeingWritten()) {
        return std::nullopt;
      }
      if (last_report == JobReport::kFailed || (last_report == JobReport::kNothing && !first)) {
        return JobEnd{JobEnd::Outcome::kFailed, ReportedStatus(last)};
      }
      library_.Platform().Sleep(kQuickInterval);
    }
    return JobEnd{JobEnd::Outcome::kUnknown};
  }

  bool IsBeingWritten() const {
    const auto state = library_.Platform().Look(*job_.file);
    return !IsClosed(state) || state.size == job_.file_size;
  }

  std::optional<JobEnd> EndByReport(std::uint64_t progress) {
    if (const auto end = ReportedEnd(progress)) {
      return end;
    }
    // The progress may show only the mark or a cleared report for a long time, either because the
    // job is erasing sectors or because it has ended. The job's thread shows which.
    const auto now = Clock::now();
    const bool cleared = ReportIn(progress) == JobReport::kCleared;
    if (cleared && !cleared_) {
      next_thread_look_ = now + kFirstThreadLook;
    }
    cleared_ = cleared;
    if (now < next_thread_look_) {
      return std::nullopt;
    }
    next_thread_look_ = now + std::min(2 * (now - started_), Clock::duration(kThreadLookInterval));
    if (!thread_->HasEnded()) {
      return std::nullopt;
    }
    const std::uint64_t last = Progress();
    if (const auto end = ReportedEnd(last)) {
      return end;
    }
    if (ReportIn(last) == JobReport::kNothing) {
      return JobEnd{JobEnd::Outcome::kFailed, kMarkStatus};
    }
    return JobEnd{JobEnd::Outcome::kUnknown};
  }

  std::optional<JobEnd> ReportedEnd(std::uint64_t progress) const {
    const JobReport report = ReportIn(progress);
    if (report == JobReport::kDone) {
      return JobEnd{};
    }
    if (report == JobReport::kFailed) {
      return JobEnd{JobEnd::Outcome::kFailed, ReportedStatus(progress)};
    }
    if (report == JobReport::kNotice && job_.notice_is_end) {
      return JobEnd{JobEnd::Outcome::kDone, ReportedStatus(progress)};
    }
    return std::nullopt;
  }

  void Advance(std::uint64_t progress) {
    const JobReport report = ReportIn(progress);
    std::int32_t percent = 0;
    if (report == JobReport::kRunning) {
      percent = borvan_progress_percent(progress);
    } else if (report == JobReport::kDone || report == JobReport::kNotice) {
      percent = kWhole - 1;
    }
    if (percent <= percent_) {
      return;
    }
    percent_ = percent;
    standing_ = Clock::duration(0);
    next_look_ = kLookInterval;
    if (job_.advance != nullptr && *job_.advance) {
      (*job_.advance)(job_.total * static_cast<std::uint64_t>(percent_) / kWhole);
    }
  }

  void HeedStop() {
    if (!library_.Watch().MustStop()) {
      return;
    }
    const auto now = Clock::now();
    if (!stop_since_) {
      stop_since_ = now;
    }
    if (job_.file == nullptr || now - *stop_since_ > kStopPatience) {
      library_.Watch().ObeyStop();
    }
  }

  void HeedStandstill() {
    const auto now = Clock::now();
    standing_ += std::min(now - last_poll_, Clock::duration(kMostStanding));
    last_poll_ = now;
    // If the camera was removed, the library repeats a read forever and reports nothing.
    if (standing_ > next_look_) {
      next_look_ += kLookInterval;
      if (!library_.IsListed(camera_)) {
        throw GoneFailure(job_.doing, camera_);
      }
    }
    const Milliseconds patience =
        library_.Limit() + (percent_ > 0 ? Milliseconds(0) : job_.silence);
    if (standing_ > patience) {
      throw Failure(
          ExitCode::kTimeout, Format("{}: no progress for {}", job_.doing, Seconds(patience)),
          "Plug the camera in again and repeat the command; --timeout sets how long to wait.");
    }
  }

  Milliseconds Pause() const {
    const auto time = Clock::now() - started_;
    if (time < kSpinTime || (job_.only_report_tells && library_.ClearTaskIsDue())) {
      return Milliseconds(0);
    }
    return time < kQuickTime || percent_ >= kNearlyDone ? kQuickInterval : kInterval;
  }

  void Abandon() {
    if (job_.file != nullptr) {
      library_.Abandon([&platform = library_.Platform(), file = *job_.file] {
        if (!IsClosed(platform.Look(file))) {
          return false;
        }
        platform.RemoveScratchFile(file);
        return true;
      });
    } else {
      library_.Abandon([thread = *thread_] { return thread.HasEnded(); });
    }
    library_.Deselect();
  }

  CameraLibrary& library_;
  const CameraIdentity& camera_;
  const Job& job_;
  std::optional<JobThread> thread_;
  bool ended_ = false;
  bool cleared_ = false;
  int polls_ = 0;
  std::int32_t percent_ = 0;
  const Clock::time_point started_ = Clock::now();
  Clock::time_point next_thread_look_ = started_ + kFirstThreadLook;
  Clock::time_point last_poll_ = started_;
  Clock::duration standing_{0};  // time without progress
  Clock::duration next_look_ = kLookInterval;
  std::optional<Clock::time_point> stop_since_;
};

}  // namespace

JobEnd RunJob(CameraLibrary& library, const CameraIdentity& camera, const Job& job) {
  return Runner(library, camera, job).Run();
}

}  // namespace borvanusb
