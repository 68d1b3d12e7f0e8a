#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "camera/host.h"
#include "workbench/worker.h"

namespace borvanusb {

// The inside of a worker process. One thread hands in the orders as they arrive, another runs them.
class WorkerLoop {
 public:
  struct Hooks {
    std::function<void(const WorkerReport&)> send;
    // A new run begins: stops of earlier ones are forgotten.
    std::function<void()> forget_stops;
    // Ctrl-C, for the run at work.
    std::function<void()> stop;
    // Goes into a folder; throws Failure.
    std::function<void(const std::string&)> enter;
  };
  WorkerLoop(Host& host, Hooks hooks) : host_(host), hooks_(std::move(hooks)) {}

  // On the thread that reads orders.
  void Take(const WorkerOrder& order);
  // The workbench is gone: the run at work is stopped, and Run returns.
  void Close();

  // Runs orders until Close. Returns the exit code of the process.
  int Run();
  // The words of the run at work; empty between runs. On any thread.
  std::vector<std::string> Words() const;
  std::uint64_t Number() const { return number_; }

 private:
  std::optional<WorkerOrder> Next();
  void RunOnce(const WorkerOrder& order);
  void Repeat(const WorkerOrder& order);
  int RunWords(std::uint64_t number, const std::vector<std::string>& words, Host& host);

  Host& host_;
  const Hooks hooks_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<WorkerOrder> orders_;
  bool closed_ = false;
  std::vector<std::string> words_;
  std::atomic<std::uint64_t> number_{0};  // of the run at work, 0 between runs
};

}  // namespace borvanusb
