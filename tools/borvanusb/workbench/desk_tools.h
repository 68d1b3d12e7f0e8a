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

// What the work needs of its surroundings. All of it happens on one thread, the desk's.
struct DeskTools {
  // Has a function called on the desk's thread; may be called on any.
  std::function<void(std::function<void()>)> post;
  std::function<void(std::chrono::milliseconds, std::function<void()>)> after;
  std::function<std::chrono::steady_clock::time_point()> clock;
  std::function<std::chrono::system_clock::time_point()> now;
  WorkerStarter start_worker;
  // Sends an event to every page.
  std::function<void(std::string_view name, const nlohmann::ordered_json& data)> publish;
  std::string folder;                      // of this run, full name
  std::vector<std::string> profile_words;  // in front of every command line: --profile FILE
  ToolDescription tool;
};

}  // namespace borvanusb
