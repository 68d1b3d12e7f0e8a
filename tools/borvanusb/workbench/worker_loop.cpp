#include "workbench/worker_loop.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "command/tool.h"
#include "workbench/job.h"
#include "workbench/open_camera_host.h"
#include "workbench/repeat_times.h"

namespace borvanusb {

namespace {

// A repeated reading that failed is tried again after this time.
constexpr std::chrono::seconds kPause{2};

}  // namespace

void WorkerLoop::Take(const WorkerOrder& order) {
  const std::lock_guard lock(mutex_);
  if (order.kind != WorkerOrder::Kind::kStop) {
    orders_.push_back(order);
    changed_.notify_one();
  } else if (number_ == order.number) {
    hooks_.stop();
  } else if (std::ranges::find(orders_, order.number, &WorkerOrder::number) != orders_.end()) {
    // The process still starts, or an earlier order is not complete.
    stopped_early_.insert(order.number);
  }
}

void WorkerLoop::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  orders_.clear();
  if (number_ != 0) {
    hooks_.stop();
  }
  changed_.notify_one();
}

std::vector<std::string> WorkerLoop::Words() const {
  const std::lock_guard lock(mutex_);
  return words_;
}

std::optional<WorkerOrder> WorkerLoop::Next() {
  std::unique_lock lock(mutex_);
  number_ = 0;
  words_.clear();
  changed_.wait(lock, [this] { return closed_ || !orders_.empty(); });
  if (closed_) {
    return std::nullopt;
  }
  WorkerOrder order = std::move(orders_.front());
  orders_.pop_front();
  hooks_.forget_stops();
  number_ = order.number;
  words_ = order.words;
  if (stopped_early_.erase(order.number) != 0) {
    hooks_.stop();
  }
  return order;
}

int WorkerLoop::Run() {
  while (const auto order = Next()) {
    switch (order->kind) {
      case WorkerOrder::Kind::kEnter:
        hooks_.enter(order->text);
        break;
      case WorkerOrder::Kind::kRepeat:
        Repeat(*order);
        break;
      default:
        RunOnce(*order);
        break;
    }
  }
  return static_cast<int>(ExitCode::kDone);
}

int WorkerLoop::RunWords(std::uint64_t number, const std::vector<std::string>& words, Host& host) {
  ToolStreams streams;
  streams.output = [&](std::string_view text) -> std::optional<WriteProblem> {
    hooks_.send({WorkerReport::Kind::kOut, number, std::string(text), 0});
    return std::nullopt;
  };
  streams.error = [&](std::string_view text) {
    hooks_.send({WorkerReport::Kind::kError, number, std::string(text), 0});
  };
  return RunTool(words, host, streams);
}

void WorkerLoop::RunOnce(const WorkerOrder& order) {
  const int code = RunWords(order.number, order.words, host_);
  hooks_.send({WorkerReport::Kind::kEnd, order.number, "", code});
}

// One that fails does not end the others: its page may have asked for what this camera lacks. When
// all fail, it is the camera.
void WorkerLoop::Repeat(const WorkerOrder& order) {
  std::vector<double> rates;
  for (const WorkerOrder::Repeated& each : order.repeated) {
    rates.push_back(each.rate);
  }
  OpenCameraHost host(host_);
  RepeatTimes times(rates, host_.Clock());
  std::size_t left = order.repeated.size();
  std::size_t failures = 0;  // since the last success
  int code = 0;
  while (!host_.StopRequested()) {
    const auto next = times.First();
    if (next && next->due > host_.Clock()) {
      host_.Sleep(std::chrono::ceil<std::chrono::milliseconds>(next->due - host_.Clock()));
      continue;
    }
    if (!next) {
      break;
    }
    code = RunWords(order.number, order.repeated[next->reading].words, host);
    hooks_.send({WorkerReport::Kind::kRound, order.number, "", code, next->reading});
    if (code == static_cast<int>(ExitCode::kDone)) {
      failures = 0;
      times.Done(next->reading, host_.Clock());
    } else if (code == static_cast<int>(ExitCode::kUsage)) {
      --left;
      times.End(next->reading);
    } else {
      ++failures;
      times.Delay(next->reading, host_.Clock(), kPause);
    }
    const bool all_fail = left > 0 && failures >= left;
    if (all_fail || LeavesWorkerUnsure(code)) {
      break;
    }
  }
  hooks_.send({WorkerReport::Kind::kEnd, order.number, "", code});
}

}  // namespace borvanusb
