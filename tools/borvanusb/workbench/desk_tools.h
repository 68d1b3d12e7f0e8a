#pragma once

#include <chrono>
#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "command/command_line.h"
#include "workbench/worker.h"

namespace borvanusb {

// The functions and data that the desk needs from its environment. The desk runs on one thread.
struct DeskTools {
  // Queues a function to run on the desk's thread. May be called on any thread.
  std::function<void(std::function<void()>)> post;
  std::function<void(std::chrono::milliseconds, std::function<void()>)> after;
  std::function<std::chrono::steady_clock::time_point()> clock;
  std::function<std::chrono::system_clock::time_point()> now;
  WorkerStarter start_worker;
  // Sends an event to all pages.
  std::function<void(std::string_view name, const nlohmann::ordered_json& data)> publish;
  std::string folder;                      // the run's folder, full name
  std::vector<std::string> profile_words;  // --profile FILE, added to every command line
  ToolDescription tool;
};

}  // namespace borvanusb
