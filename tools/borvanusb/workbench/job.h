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

// A command line of a page: waiting, at work or done.
struct WorkbenchJob {
  using Json = nlohmann::ordered_json;

  std::string id;
  std::string camera;              // path; empty: none
  std::vector<std::string> words;  // as the page gave them
  std::vector<std::string> line;   // what the worker runs
  std::string shown;               // the same as a person would type it
  AcceptedWords accepted;
  std::string started;                               // UTC
  std::chrono::steady_clock::time_point started_at;  // since when it has the camera
  int stops = 0;                                     // times that a stop was asked for
  bool internal = false;                             // the workbench's own: no page hears of it
  Json progress;                                     // null until there is some
  std::string output;
  std::string error_rest;  // of standard error: a line that has not yet ended
  std::vector<std::string> messages;
  // Called once: with the exit code and the answer of /api/run.
  std::function<void(int code, const Json& answer)> on_end;
  // Called instead when other work has the camera.
  std::function<void(const Json& busy)> on_busy;
};

// As /api/state shows it.
nlohmann::ordered_json JobJson(const WorkbenchJob& job);

// The answer of /api/run, from what the worker wrote.
nlohmann::ordered_json AnswerOf(const WorkbenchJob& job, int code);
// The same for one that could not come to its end.
nlohmann::ordered_json AnswerOf(const WorkbenchJob& job, const Failure& failure);

// An answer in which files of the run's folder have their plain names, as the page knows them.
nlohmann::ordered_json WithPlainNames(nlohmann::ordered_json answer, const std::string& folder);

// Takes a part of standard error: progress goes to job.progress, whole lines to job.messages.
// Returns whether there was progress.
bool TakeErrorText(WorkbenchJob& job, std::string_view text);

// Whether the library in the worker may be in any state after this exit code.
bool LeavesWorkerUnsure(int code);

// Takes whole lines off the beginning of a text.
std::vector<std::string> TakeLines(std::string& text);

}  // namespace borvanusb
