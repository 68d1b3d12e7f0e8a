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

// Limits for connections.
struct ServerLimits {
  std::size_t connections = 16;
  std::chrono::milliseconds header{5000};      // to receive the head of a request
  std::chrono::milliseconds body{30000};       // to receive its body, and to send an answer
  std::chrono::milliseconds idle{30000};       // between two requests
  std::chrono::milliseconds heartbeat{10000};  // interval of heartbeats on an event stream
  std::chrono::milliseconds event{10000};      // for a page to receive one event
  std::size_t event_bytes = 8U << 20U;         // queued for one page
};

struct ServerSettings {
  std::uint16_t port = 0;                     // 0: any free port
  bool stay = false;                          // keep running when the last page is gone
  std::chrono::milliseconds patience{10000};  // how long the last page may be absent
  Session session;                            // token and cookie; the server sets the port
  WordLimits limits;
  ServerLimits connection;
  std::string version;
  std::span<const PageFile> page;
  WorkerStarter start_worker;
  std::vector<std::string> profile_words;
  std::function<bool()> stop_requested;
};

// Serves pages on 127.0.0.1. Everything runs on the thread that calls Run().
class WorkbenchServer {
 public:
  // Starts to listen. Throws Failure kInternal if the port is not available. `folder` must outlive
  // the server.
  WorkbenchServer(ServerSettings settings, const RunFolder& folder);
  ~WorkbenchServer();
  WorkbenchServer(const WorkbenchServer&) = delete;
  WorkbenchServer& operator=(const WorkbenchServer&) = delete;

  // "http://127.0.0.1:8123/?token=…"
  std::string Address() const;
  std::uint16_t Port() const;
  // Returns when a stop was requested and all work has ended, or when the last page is gone.
  void Run();

 private:
  class Hall;
  std::unique_ptr<Hall> hall_;
};

}  // namespace borvanusb
