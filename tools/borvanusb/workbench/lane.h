#pragma once

#include <deque>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "workbench/desk_tools.h"
#include "workbench/job.h"
#include "workbench/live_reads.h"
#include "workbench/worker.h"

namespace borvanusb {

// A repeated reading, as passed to the worker of the camera.
struct LiveLine {
  LiveRead read;
  std::vector<std::string> line;  // what the worker runs
  std::string shown;              // the same as a person would type it

  friend bool operator==(const LiveLine&, const LiveLine&) = default;
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
  // Replaces what is read live. Does nothing if it is the same.
  void SetLive(std::vector<LiveLine> live);
  // Called when the camera was unplugged: the following work gets a new worker.
  void Renew();

 private:
  enum class Busy { kNo, kJob, kLive };

  void Pump();
  void BeginJob();
  void SendRun(WorkerOrder order);
  void RejectWaiting();
  void OnReport(std::uint64_t worker, const WorkerReport& report);
  void OnWorkerEnd(std::uint64_t worker, int code);
  void TakeJobReport(const WorkerReport& report);
  void EndJob(int code, const nlohmann::ordered_json& answer);
  void PublishJob(const char* state, const nlohmann::ordered_json& exit);
  void DropWorker();

  // Live reading: lane_live.cpp.
  std::vector<LiveLine> ReadableLive() const;
  void BeginLive();
  void StopLive();
  void TakeLiveReport(const WorkerReport& report);
  void TakeRound(const LiveLine& live, int code);
  void TellLiveProblem(const LiveLine& live, const std::string& problem, bool ended);
  void EndLive(int code);
  void PauseLive();

  const std::string camera_;
  DeskTools& tools_;
  std::unique_ptr<Worker> worker_;
  std::uint64_t worker_number_ = 0;  // identifies reports of a former worker
  bool renew_ = false;               // replace the worker when idle
  Busy busy_ = Busy::kNo;
  std::uint64_t run_ = 0;  // number of the current run
  std::unique_ptr<WorkbenchJob> job_;
  std::deque<std::unique_ptr<WorkbenchJob>> waiting_;
  std::vector<LiveLine> live_;
  std::vector<LiveLine> live_at_work_;
  // Command lines that can't be right: they are not tried again.
  std::set<std::vector<std::string>> live_refused_;
  std::map<std::vector<std::string>, std::string> live_problems_;  // the last ones that were told
  bool live_stopping_ = false;
  bool live_pausing_ = false;  // every reading failed; until the next try
  std::string live_output_;
};

}  // namespace borvanusb
