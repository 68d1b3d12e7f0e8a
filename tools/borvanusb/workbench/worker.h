#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace borvanusb {

// A worker is a process of this program that runs command lines for one camera, one after another.
// The workbench and the worker exchange lines; each line is a JSON object.

// An order from the workbench. Each run has a number, so a late stop request can't stop another
// run.
struct WorkerOrder {
  // A command line that is repeated, `rate` times a second.
  struct Repeated {
    std::vector<std::string> words;
    double rate = 0;
  };
  enum class Kind {
    kEnter,   // change to the folder `text`; sent before the first run
    kRun,     // run `words`
    kRepeat,  // run each of `repeated` at its rate and keep the camera open, until a stop
    kStop     // acts like Ctrl-C; a second one ends the process
  };
  Kind kind = Kind::kRun;
  std::uint64_t number = 0;
  std::vector<std::string> words;
  std::vector<Repeated> repeated;
  std::string text;
};

// A report from the worker.
struct WorkerReport {
  enum class Kind {
    kOut,    // standard output in `text`
    kError,  // standard error in `text`
    kRound,  // one reading of kRepeat, number `index`, has ended with the exit code `code`
    kEnd     // the run has ended with the exit code `code`
  };
  Kind kind = Kind::kEnd;
  std::uint64_t number = 0;
  std::string text;
  int code = 0;
  std::size_t index = 0;  // in `repeated` of the order
};

// The order or report as a line, with the line end.
std::string LineOf(const WorkerOrder& order);
std::string LineOf(const WorkerReport& report);
// Parse a line. Return nothing if it is invalid.
std::optional<WorkerOrder> ReadOrder(std::string_view line);
std::optional<WorkerReport> ReadReport(std::string_view line);

// A running worker process. The destructor ends the process.
class Worker {
 public:
  Worker() = default;
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  virtual ~Worker() = default;

  // If sending fails, the order is lost and `on_end` follows.
  virtual void Send(const WorkerOrder& order) = 0;
  // Kills the process; `on_end` follows.
  virtual void Kill() = 0;
};

// Both are called on other threads. `on_end` is called once, and last.
struct WorkerEvents {
  std::function<void(const WorkerReport&)> on_report;
  std::function<void(int code)> on_end;
};

// Throws Failure if the process can't be started.
using WorkerStarter = std::function<std::unique_ptr<Worker>(WorkerEvents)>;

}  // namespace borvanusb
