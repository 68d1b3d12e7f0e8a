#include "workbench/worker_loop.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "command/tool.h"
#include "workbench/open_camera_host.h"

namespace borvanusb {

void WorkerLoop::Take(const WorkerOrder& order) {
  const std::lock_guard lock(mutex_);
  if (order.kind != WorkerOrder::Kind::kStop) {
    orders_.push_back(order);
    changed_.notify_one();
  } else if (number_ == order.number) {
    hooks_.stop();
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

int WorkerLoop::RunWords(const WorkerOrder& order, Host& host) {
  ToolStreams streams;
  streams.output = [&](std::string_view text) -> std::optional<WriteProblem> {
    hooks_.send({WorkerReport::Kind::kOut, order.number, std::string(text), 0});
    return std::nullopt;
  };
  streams.error = [&](std::string_view text) {
    hooks_.send({WorkerReport::Kind::kError, order.number, std::string(text), 0});
  };
  return RunTool(order.words, host, streams);
}

void WorkerLoop::RunOnce(const WorkerOrder& order) {
  const int code = RunWords(order, host_);
  hooks_.send({WorkerReport::Kind::kEnd, order.number, "", code});
}

void WorkerLoop::Repeat(const WorkerOrder& order) {
  using Seconds = std::chrono::duration<double>;
  const auto interval =
      std::chrono::duration_cast<std::chrono::steady_clock::duration>(Seconds(1 / order.rate));
  OpenCameraHost host(host_);
  auto next = host_.Clock();
  int code = 0;
  while (code == 0 && !host_.StopRequested()) {
    code = RunWords(order, host);
    hooks_.send({WorkerReport::Kind::kRound, order.number, "", code});
    // If readings are late by more than one interval, the missed ones are skipped.
    next = std::max(next + interval, host_.Clock() - interval);
    if (code == 0 && next > host_.Clock()) {
      host_.Sleep(std::chrono::ceil<std::chrono::milliseconds>(next - host_.Clock()));
    }
  }
  hooks_.send({WorkerReport::Kind::kEnd, order.number, "", code});
}

}  // namespace borvanusb
