#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "workbench/desk_tools.h"
#include "workbench/job.h"
#include "workbench/worker.h"

namespace borvanusb {

// Registers that a page wants to see again and again.
struct LiveSet {
  std::string id;
  std::vector<std::string> line;  // what the worker runs; empty: nothing is wanted
  double rate = 10;
};

// One camera, or none: its worker process, the jobs that wait for it, and the live reading that
// fills the time between them. At most one command line runs at a time.
class Lane : public std::enable_shared_from_this<Lane> {
 public:
  // `camera` is a path, or empty.
  Lane(std::string camera, DeskTools& tools) : camera_(std::move(camera)), tools_(tools) {}

  const std::string& Camera() const { return camera_; }
  // The job at work; null when there is none.
  const WorkbenchJob* Current() const { return job_.get(); }
  bool IsIdle() const { return job_ == nullptr && waiting_.empty(); }

  // Starts the worker, so that it is ready when it is needed.
  void Prepare();
  void Submit(std::unique_ptr<WorkbenchJob> job);
  // False when the job is not here.
  bool Stop(const std::string& job);
  void StopAll();
  // Replaces what is read live.
  void SetLive(LiveSet live);
  // The camera was unplugged: what follows begins with a new worker.
  void Renew();

 private:
  enum class Busy { kNo, kJob, kLive };

  void Pump();
  void BeginJob();
  void BeginLive();
  bool SendRun(WorkerOrder::Kind kind, const std::vector<std::string>& line, double rate);
  void RejectWaiting();
  void OnReport(std::uint64_t worker, const WorkerReport& report);
  void OnWorkerEnd(std::uint64_t worker, int code);
  void TakeJobReport(const WorkerReport& report);
  void TakeLiveReport(const WorkerReport& report);
  void EndJob(int code, const nlohmann::ordered_json& answer);
  void EndLive(int code);
  void PublishJob(const char* state, const nlohmann::ordered_json& exit);
  void PublishLine(const std::string& line);
  void StopLive();
  void DropWorker();

  const std::string camera_;
  DeskTools& tools_;
  std::unique_ptr<Worker> worker_;
  std::uint64_t worker_number_ = 0;  // tells the reports of a former worker
  bool renew_ = false;               // as soon as it is idle
  Busy busy_ = Busy::kNo;
  std::uint64_t run_ = 0;  // number of the run at work
  std::unique_ptr<WorkbenchJob> job_;
  std::deque<std::unique_ptr<WorkbenchJob>> waiting_;
  LiveSet live_;
  bool live_stopping_ = false;
  bool live_pausing_ = false;  // it failed, and is tried again later
  std::string live_output_;
  std::string live_problem_;  // the last one that was told
};

}  // namespace borvanusb
