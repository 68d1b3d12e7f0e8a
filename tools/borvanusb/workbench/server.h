#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "workbench/gate.h"
#include "workbench/run_folder.h"
#include "workbench/services.h"
#include "workbench/word_rules.h"
#include "workbench/worker.h"

namespace borvanusb {

// What a connection may take.
struct ServerLimits {
  std::size_t connections = 16;
  std::chrono::milliseconds header{5000};      // for the head of a request
  std::chrono::milliseconds body{30000};       // for its body, and for an answer
  std::chrono::milliseconds idle{30000};       // between two requests
  std::chrono::milliseconds heartbeat{10000};  // between two signs of life of the events
  std::chrono::milliseconds event{10000};      // for one event to be taken
  std::size_t event_bytes = 8U << 20U;         // waiting for one page
};

struct ServerSettings {
  std::uint16_t port = 0;                     // 0: any
  bool stay = false;                          // continues when the last page is gone
  std::chrono::milliseconds patience{10000};  // how long the last page may be gone
  Session session;                            // token and cookie; the port is filled in
  WordLimits limits;
  ServerLimits connection;
  std::string version;
  std::span<const PageFile> page;
  WorkerStarter start_worker;
  std::vector<std::string> profile_words;
  std::function<bool()> stop_requested;
};

// Serves pages on 127.0.0.1. Everything happens on the thread that calls Run.
class WorkbenchServer {
 public:
  // Listens from now on. Throws Failure kInternal when the port can't be had. `folder` must outlive
  // it.
  WorkbenchServer(ServerSettings settings, const RunFolder& folder);
  ~WorkbenchServer();
  WorkbenchServer(const WorkbenchServer&) = delete;
  WorkbenchServer& operator=(const WorkbenchServer&) = delete;

  // "http://127.0.0.1:8123/?token=…"
  std::string Address() const;
  std::uint16_t Port() const;
  // Returns when a stop was asked for and all work has ended, or when the last page is gone.
  void Run();

 private:
  class Hall;
  std::unique_ptr<Hall> hall_;
};

}  // namespace borvanusb
