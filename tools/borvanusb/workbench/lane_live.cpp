// Live reading in the time between the jobs of a camera.
#include <algorithm>
#include <utility>

#include "base/time_text.h"
#include "workbench/lane.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

// Live reading of which all failed is tried again.
constexpr std::chrono::milliseconds kLivePause{2000};

}  // namespace

void Lane::SetLive(std::vector<LiveLine> live) {
  if (live == live_) {
    return;
  }
  live_ = std::move(live);
  const auto is_gone = [this](const std::vector<std::string>& line) {
    return std::ranges::find(live_, line, &LiveLine::line) == live_.end();
  };
  std::erase_if(live_refused_, is_gone);
  std::erase_if(live_problems_, [&](const auto& problem) { return is_gone(problem.first); });
  live_pausing_ = false;
  StopLive();
  Pump();
}

std::vector<LiveLine> Lane::ReadableLive() const {
  std::vector<LiveLine> readable = live_;
  std::erase_if(readable,
                [this](const LiveLine& live) { return live_refused_.contains(live.line); });
  return readable;
}

void Lane::BeginLive() {
  live_output_.clear();
  live_stopping_ = false;
  live_at_work_ = ReadableLive();
  busy_ = Busy::kLive;
  WorkerOrder order;
  order.kind = WorkerOrder::Kind::kRepeat;
  for (const LiveLine& live : live_at_work_) {
    order.repeated.push_back({live.line, live.read.rate});
  }
  try {
    SendRun(std::move(order));
  } catch (const Failure& failure) {
    busy_ = Busy::kNo;
    for (const LiveLine& live : live_at_work_) {
      TellLiveProblem(live, failure.Message(), false);
    }
    PauseLive();
  }
}

void Lane::StopLive() {
  if (busy_ != Busy::kLive || live_stopping_) {
    return;
  }
  live_stopping_ = true;
  WorkerOrder stop;
  stop.kind = WorkerOrder::Kind::kStop;
  stop.number = run_;
  worker_->Send(stop);
}

void Lane::TakeLiveReport(const WorkerReport& report) {
  if (report.kind == WorkerReport::Kind::kOut) {
    live_output_ += report.text;
  } else if (report.kind == WorkerReport::Kind::kEnd) {
    EndLive(report.code);
  } else if (report.kind == WorkerReport::Kind::kRound && report.index < live_at_work_.size()) {
    TakeRound(live_at_work_[report.index], report.code);
  }
}

void Lane::TakeRound(const LiveLine& live, int code) {
  const Json reading = Json::parse(std::exchange(live_output_, {}), nullptr, false);
  if (code == 0 && reading.is_object()) {
    live_problems_.erase(live.line);
    tools_.publish(
        "values", {{"camera", camera_},
                   {"pages", live.read.pages},
                   {"words", live.read.words},
                   {"time", std::chrono::duration<double>(tools_.now().time_since_epoch()).count()},
                   {"registers", reading.value("registers", Json::array())}});
    return;
  }
  if (live_stopping_) {
    return;
  }
  const bool is_wrong = code == static_cast<int>(ExitCode::kUsage);
  if (is_wrong) {
    live_refused_.insert(live.line);
  }
  if (reading.is_object() && reading.contains("error")) {
    TellLiveProblem(live, reading["error"].value("message", std::string()), is_wrong);
  }
}

// Once, as long as it stays the same.
void Lane::TellLiveProblem(const LiveLine& live, const std::string& problem, bool ended) {
  if (std::exchange(live_problems_[live.line], problem) == problem) {
    return;
  }
  tools_.publish("log", {{"time", TimeText(tools_.now())},
                         {"camera", camera_},
                         {"pages", live.read.pages},
                         {"ended", ended},
                         {"text", problem},
                         {"line", live.shown}});
}

void Lane::EndLive(int code) {
  busy_ = Busy::kNo;
  renew_ = renew_ || LeavesWorkerUnsure(code);
  if (!live_stopping_) {
    PauseLive();
  }
  Pump();
}

void Lane::PauseLive() {
  live_pausing_ = true;
  tools_.after(kLivePause, [lane = weak_from_this()] {
    if (const auto self = lane.lock()) {
      self->live_pausing_ = false;
      self->Pump();
    }
  });
}

}  // namespace borvanusb
