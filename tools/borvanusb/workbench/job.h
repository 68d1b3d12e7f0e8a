#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/failure.h"
#include "workbench/word_rules.h"

namespace borvanusb {

// A command line from a page: waiting, running or done.
struct WorkbenchJob {
  using Json = nlohmann::ordered_json;

  std::string id;
  std::string camera;              // path; empty: none
  std::vector<std::string> words;  // as received from the page
  std::vector<std::string> line;   // as passed to the worker
  std::string shown;               // as a person would type it
  AcceptedWords accepted;
  std::string started;                               // UTC
  std::chrono::steady_clock::time_point started_at;  // when it started to use the camera
  int stops = 0;                                     // number of stop requests
  bool internal = false;                             // started by the workbench itself, not shown
  Json progress;                                     // null until the first report
  std::string output;
  std::string error_rest;  // incomplete last line of standard error
  std::vector<std::string> messages;
  // Called once, with the exit code and the answer of /api/run.
  std::function<void(int code, const Json& answer)> on_end;
  // Called instead of on_end if other work uses the camera.
  std::function<void(const Json& busy)> on_busy;
};

// The job in the form of /api/state.
nlohmann::ordered_json JobJson(const WorkbenchJob& job);

// The answer of /api/run, made from the worker's output.
nlohmann::ordered_json AnswerOf(const WorkbenchJob& job, int code);
// The answer of /api/run for a job that could not complete.
nlohmann::ordered_json AnswerOf(const WorkbenchJob& job, const Failure& failure);

// Replaces the full names of files in the run's folder by their plain names, as the page knows
// them.
nlohmann::ordered_json WithPlainNames(nlohmann::ordered_json answer, const std::string& folder);

// Processes a part of standard error: progress goes to job.progress, complete lines go to
// job.messages. Returns whether there was progress.
bool TakeErrorText(WorkbenchJob& job, std::string_view text);

// Whether the library in the worker may be in any state after this exit code.
bool LeavesWorkerUnsure(int code);

// Removes the complete lines from the beginning of a text and returns them.
std::vector<std::string> TakeLines(std::string& text);

}  // namespace borvanusb
