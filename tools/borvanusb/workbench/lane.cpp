#include "workbench/lane.h"

#include <algorithm>
#include <utility>

#include "base/format.h"
#include "base/time_text.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;
using std::chrono::milliseconds;

// Jobs wait for the running one. Once it has run for longer than this, they are refused as busy.
constexpr milliseconds kPatience{2000};
// After a second stop request, a worker ends by itself within a second. If it does not, it is
// killed.
constexpr milliseconds kKillDelay{3000};
constexpr std::size_t kMostOutput = 64U << 20U;

Failure WorkerGone(const WorkbenchJob& job, int code) {
  constexpr int kEnough = 2;
  if (job.stops >= kEnough) {
    return {ExitCode::kStopped, "stopped by the user in the middle",
            "What was being changed is unsure: read it back, or run the same command again."};
  }
  return {ExitCode::kInternal,
          Format("the process that worked with the camera has ended (code {})", code),
          "What was being changed is unsure: read it back, or run the same command again. Plug the "
          "camera in again if it does not answer."};
}

}  // namespace

void Lane::Prepare() {
  if (worker_) {
    return;
  }
  const std::uint64_t number = ++worker_number_;
  const std::weak_ptr<Lane> lane = weak_from_this();
  const auto post = tools_.post;
  worker_ = tools_.start_worker({[=](const WorkerReport& report) {
                                   post([=] {
                                     if (const auto self = lane.lock()) {
                                       self->OnReport(number, report);
                                     }
                                   });
                                 },
                                 [=](int code) {
                                   post([=] {
                                     if (const auto self = lane.lock()) {
                                       self->OnWorkerEnd(number, code);
                                     }
                                   });
                                 }});
  WorkerOrder enter;
  enter.kind = WorkerOrder::Kind::kEnter;
  enter.text = tools_.folder;
  worker_->Send(enter);
}

void Lane::Submit(std::unique_ptr<WorkbenchJob> job) {
  const bool long_work = job_ && !job_->internal && tools_.clock() - job_->started_at > kPatience;
  if (long_work) {
    job->on_busy(JobJson(*job_));
    return;
  }
  waiting_.push_back(std::move(job));
  Pump();
}

void Lane::RejectWaiting() {
  while (!waiting_.empty()) {
    const auto job = std::move(waiting_.front());
    waiting_.pop_front();
    job->on_busy(JobJson(*job_));
  }
}

bool Lane::Stop(const std::string& job) {
  const auto waiting =
      std::ranges::find_if(waiting_, [&](const auto& one) { return one->id == job; });
  if (waiting != waiting_.end()) {
    const auto stopped = std::move(*waiting);
    waiting_.erase(waiting);
    stopped->on_end(static_cast<int>(ExitCode::kStopped),
                    AnswerOf(*stopped, Failure(ExitCode::kStopped, "stopped before it began")));
    return true;
  }
  if (!job_ || job_->id != job) {
    return false;
  }
  WorkerOrder stop;
  stop.kind = WorkerOrder::Kind::kStop;
  stop.number = run_;
  worker_->Send(stop);
  if (++job_->stops == 2) {
    tools_.after(kKillDelay, [lane = weak_from_this(), run = run_] {
      const auto self = lane.lock();
      if (self && self->busy_ == Busy::kJob && self->run_ == run && self->worker_) {
        self->worker_->Kill();
      }
    });
  }
  return true;
}

void Lane::StopAll() {
  live_.clear();
  while (!waiting_.empty()) {
    Stop(std::string(waiting_.front()->id));
  }
  if (job_) {
    Stop(std::string(job_->id));
  }
}

void Lane::Renew() {
  renew_ = true;
  live_refused_.clear();
  if (busy_ == Busy::kLive) {
    StopLive();
  }
  Pump();
}

void Lane::Pump() {
  if (busy_ != Busy::kNo) {
    if (!waiting_.empty()) {
      StopLive();
    }
    return;
  }
  if (renew_) {
    renew_ = false;
    DropWorker();
  }
  if (!waiting_.empty()) {
    BeginJob();
  } else if (!live_pausing_ && !ReadableLive().empty()) {
    BeginLive();
  }
}

void Lane::SendRun(WorkerOrder order) {
  Prepare();
  order.number = ++run_;
  worker_->Send(order);
}

void Lane::BeginJob() {
  job_ = std::move(waiting_.front());
  waiting_.pop_front();
  job_->started = TimeText(tools_.now());
  job_->started_at = tools_.clock();
  busy_ = Busy::kJob;
  PublishJob("started", nullptr);
  try {
    WorkerOrder order;
    order.kind = WorkerOrder::Kind::kRun;
    order.words = job_->line;
    SendRun(std::move(order));
  } catch (const Failure& failure) {
    EndJob(static_cast<int>(failure.Code()), AnswerOf(*job_, failure));
    return;
  }
  tools_.after(kPatience, [lane = weak_from_this(), run = run_] {
    const auto self = lane.lock();
    if (self && self->busy_ == Busy::kJob && self->run_ == run && !self->job_->internal) {
      self->RejectWaiting();
    }
  });
}

void Lane::DropWorker() {
  ++worker_number_;
  worker_.reset();
}

void Lane::OnReport(std::uint64_t worker, const WorkerReport& report) {
  if (worker != worker_number_ || report.number != run_) {
    return;
  }
  if (busy_ == Busy::kJob) {
    TakeJobReport(report);
  } else if (busy_ == Busy::kLive) {
    TakeLiveReport(report);
  }
}

void Lane::TakeJobReport(const WorkerReport& report) {
  switch (report.kind) {
    case WorkerReport::Kind::kOut:
      job_->output += report.text;
      if (job_->accepted.streams) {
        for (const std::string& line : TakeLines(job_->output)) {
          tools_.publish("output",
                         {{"job", job_->id}, {"line", Json::parse(line, nullptr, false)}});
        }
      }
      if (job_->output.size() > kMostOutput) {
        job_->output.resize(kMostOutput);
      }
      break;
    case WorkerReport::Kind::kError:
      if (TakeErrorText(*job_, report.text) && !job_->internal) {
        Json event = {{"job", job_->id}};
        event.update(job_->progress);
        tools_.publish("progress", event);
      }
      break;
    case WorkerReport::Kind::kRound:
      break;
    case WorkerReport::Kind::kEnd:
      EndJob(report.code, AnswerOf(*job_, report.code));
      break;
  }
}

void Lane::EndJob(int code, const Json& answer) {
  const auto job = std::move(job_);
  busy_ = Busy::kNo;
  renew_ = renew_ || LeavesWorkerUnsure(code);
  if (!job->internal) {
    tools_.publish("job", {{"job", JobJson(*job)}, {"state", "ended"}, {"exit", code}});
  }
  job->on_end(code, WithPlainNames(answer, tools_.folder));
  Pump();
}

void Lane::OnWorkerEnd(std::uint64_t worker, int code) {
  if (worker != worker_number_) {
    return;
  }
  DropWorker();
  if (busy_ == Busy::kJob) {
    // The worker's own last error has priority over the fact that the worker is gone.
    const Json last = AnswerOf(*job_, code);
    const bool told = last["error"].is_object();
    const Failure gone = WorkerGone(*job_, code);
    const int told_code = told ? last["error"].value("code", code) : static_cast<int>(gone.Code());
    Json answer = told ? last : AnswerOf(*job_, gone);
    answer["exit"] = told_code;
    EndJob(told_code, answer);
  } else if (busy_ == Busy::kLive) {
    EndLive(static_cast<int>(ExitCode::kInternal));
  }
}

void Lane::PublishJob(const char* state, const Json& exit) {
  if (!job_->internal) {
    tools_.publish("job", {{"job", JobJson(*job_)}, {"state", state}, {"exit", exit}});
  }
}

}  // namespace borvanusb
