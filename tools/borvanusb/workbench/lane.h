#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "workbench/desk_tools.h"
#include "workbench/job.h"
#include "workbench/worker.h"

namespace borvanusb {

// Registers that a page reads repeatedly.
struct LiveSet {
  std::string id;
  std::vector<std::string> line;  // as passed to the worker; empty: no live reading
  double rate = 10;
};

// The work for one camera, or for commands without a camera: its worker process, the queue of jobs,
// and live reading between jobs. Only one command line runs at a time.
class Lane : public std::enable_shared_from_this<Lane> {
 public:
  // `camera` is a path. Empty: for commands without a camera.
  Lane(std::string camera, DeskTools& tools) : camera_(std::move(camera)), tools_(tools) {}

  const std::string& Camera() const { return camera_; }
  // The running job. Null if there is none.
  const WorkbenchJob* Current() const { return job_.get(); }
  bool IsIdle() const { return job_ == nullptr && waiting_.empty(); }

  // Starts the worker in advance.
  void Prepare();
  void Submit(std::unique_ptr<WorkbenchJob> job);
  // Returns false if the job is not in this lane.
  bool Stop(const std::string& job);
  void StopAll();
  // Replaces the registers for live reading.
  void SetLive(LiveSet live);
  // Called when the camera was unplugged: the following work gets a new worker.
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
  std::uint64_t worker_number_ = 0;  // identifies reports of a former worker
  bool renew_ = false;               // replace the worker when idle
  Busy busy_ = Busy::kNo;
  std::uint64_t run_ = 0;  // number of the current run
  std::unique_ptr<WorkbenchJob> job_;
  std::deque<std::unique_ptr<WorkbenchJob>> waiting_;
  LiveSet live_;
  bool live_stopping_ = false;
  bool live_pausing_ = false;  // after a failure, until the next try
  std::string live_output_;
  std::string live_problem_;  // last reported problem
};

}  // namespace borvanusb
