#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>
#include <string>

#include "camera/host.h"
#include "workbench/worker.h"

namespace borvanusb {

// The main loop of a worker process. One thread receives the orders, another thread runs them.
class WorkerLoop {
 public:
  struct Hooks {
    std::function<void(const WorkerReport&)> send;
    // Called when a run starts: discards stop requests for earlier runs.
    std::function<void()> forget_stops;
    // Stops the current run, as Ctrl-C does.
    std::function<void()> stop;
    // Changes to a folder. Throws Failure.
    std::function<void(const std::string&)> enter;
  };
  WorkerLoop(Host& host, Hooks hooks) : host_(host), hooks_(std::move(hooks)) {}

  // Receives an order. Called on the thread that reads orders.
  void Take(const WorkerOrder& order);
  // Called when the workbench is gone. Stops the current run; then Run() returns.
  void Close();

  // Runs orders until Close() is called. Returns the exit code of the process.
  int Run();
  // The words of the current run. Empty between runs. May be called on any thread.
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
  std::set<std::uint64_t> stopped_early_;  // numbers of orders in orders_
  bool closed_ = false;
  std::vector<std::string> words_;
  std::atomic<std::uint64_t> number_{0};  // of the current run; 0 between runs
};

}  // namespace borvanusb
