#include "library/job.h"

#include <algorithm>
#include <exception>

#include "failure.h"

namespace {

using Milliseconds = std::chrono::milliseconds;

// Short jobs end within some polls of 1 ms; after that a job gets time between two.
constexpr int kQuickPolls = 30;
constexpr Milliseconds kQuickInterval{1};
constexpr Milliseconds kInterval{4};
// A job that stands still is looked into that often.
constexpr Milliseconds kLookInterval{1000};
// A 0 after progress means that the 100 came and was cleared, three seconds later, while this
// process got no time. A single 0 may also be two halves of different reports, so it must last.
constexpr int kZerosThatLast = 5;
constexpr std::int32_t kWhole = 100;

// Reads the values of GetProgressInfo one after the other.
class Follower {
 public:
  explicit Follower(const Job& job) : job_(job) {}

  // Whether the job has ended.
  bool See(std::uint64_t progress) {
    const std::int32_t percent = borvan_progress_percent(progress);
    zeros_in_a_row_ = progress == 0 ? zeros_in_a_row_ + 1 : 0;
    switch (borvan_progress_state(progress)) {
      case kBorvanProgressDone:
        return true;
      case kBorvanProgressFailed:
        end_ = {static_cast<std::uint32_t>(borvan_progress_status(progress)), true};
        return true;
      case kBorvanProgressNotice:
        if (job_.notice_is_end) {
          end_.status = static_cast<std::uint32_t>(borvan_progress_status(progress));
          return true;
        }
        Moved(kWhole - 1);
        return false;
      case kBorvanProgressRunning:
        if (borvan_progress_status(progress) == 0 && percent > percent_) {
          Moved(percent);
        }
        return percent_ > 0 && zeros_in_a_row_ >= kZerosThatLast;
    }
    return false;
  }

  const JobEnd& End() const { return end_; }

  // Time since the job last reported something new.
  Supervisor::Clock::duration StandingStill() const { return Supervisor::Clock::now() - moved_; }

  bool HasReported() const { return percent_ > 0; }

 private:
  void Moved(std::int32_t percent) {
    if (percent <= percent_) {
      return;
    }
    percent_ = std::min(percent, kWhole - 1);
    moved_ = Supervisor::Clock::now();
    if (job_.advance != nullptr && *job_.advance) {
      (*job_.advance)(job_.total * static_cast<std::uint64_t>(percent_) / kWhole);
    }
  }

  const Job& job_;
  JobEnd end_;
  std::int32_t percent_ = 0;
  int zeros_in_a_row_ = 0;
  Supervisor::Clock::time_point moved_ = Supervisor::Clock::now();
};

void Start(const CameraLibrary& library, const Job& job) {
  const Supervisor::Call call(library.Watch(), job.doing);
  bool started = false;
  try {
    started = job.start(library.Functions());
  } catch (const std::exception& error) {
    throw Failure(ExitCode::kInternal,
                  std::string(job.doing) + " can't be started: " + error.what(),
                  "Close other programs and try again.");
  }
  if (!started) {
    const auto status =
        static_cast<std::uint32_t>(borvan_progress_status(library.Functions().GetProgressInfo()));
    throw Failure(ExitCode::kFile,
                  std::string(job.doing) + " can't be started: " + library.StatusText(status));
  }
}

std::string Seconds(Milliseconds time) {
  constexpr std::int64_t kTenth = 100;
  const std::int64_t tenths = time.count() / kTenth;
  std::string text = std::to_string(tenths / 10);
  if (tenths % 10 != 0) {
    text += '.';
    text += std::to_string(tenths % 10);
  }
  text += " s";
  return text;
}

}  // namespace

JobEnd RunJob(const CameraLibrary& library, const CameraIdentity& camera, const Job& job) {
  Start(library, job);
  Follower follower(job);
  Milliseconds next_look = kLookInterval;
  for (int polls = 0;; ++polls) {
    if (follower.See(library.Functions().GetProgressInfo())) {
      break;
    }
    library.Watch().ObeyStop();
    // A read of a camera that fell off is repeated for ever, and reports nothing.
    if (follower.StandingStill() > next_look) {
      next_look += kLookInterval;
      if (!library.IsListed(camera)) {
        throw GoneFailure(job.doing, camera);
      }
    }
    const Milliseconds patience =
        library.Limit() + (follower.HasReported() ? Milliseconds(0) : job.silence);
    if (follower.StandingStill() > patience) {
      throw Failure(
          ExitCode::kTimeout, std::string(job.doing) + ": nothing moves since " + Seconds(patience),
          "Plug the camera in again and repeat the command; --timeout sets how long to wait.");
    }
    library.Platform().Sleep(polls < kQuickPolls ? kQuickInterval : kInterval);
  }
  if (job.advance != nullptr && *job.advance && !follower.End().failed) {
    (*job.advance)(job.total);
  }
  return follower.End();
}
