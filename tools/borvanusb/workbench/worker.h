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

// A worker is a process of this program that runs command lines one after the other, for one
// camera. It and the workbench exchange lines, each a JSON object.

// What the workbench asks for. Each run has a number, so that a stop that comes late stops nothing
// else.
struct WorkerOrder {
  // A command line that is repeated, `rate` times a second.
  struct Repeated {
    std::vector<std::string> words;
    double rate = 0;
  };
  enum class Kind {
    kEnter,   // go into the folder `text`; before the first run
    kRun,     // run `words`
    kRepeat,  // run each of `repeated` at its rate, with the camera kept open, until a stop
    kStop     // what Ctrl-C does; a second one ends the process
  };
  Kind kind = Kind::kRun;
  std::uint64_t number = 0;
  std::vector<std::string> words;
  std::vector<Repeated> repeated;
  std::string text;
};

// What a worker tells.
struct WorkerReport {
  enum class Kind {
    kOut,    // standard output: `text`
    kError,  // standard error: `text`
    kRound,  // one reading of kRepeat is complete: `code` is that of the command, `index` its place
    kEnd     // the run has ended with the exit code `code`
  };
  Kind kind = Kind::kEnd;
  std::uint64_t number = 0;
  std::string text;
  int code = 0;
  std::size_t index = 0;  // in `repeated` of the order
};

// With the line end.
std::string LineOf(const WorkerOrder& order);
std::string LineOf(const WorkerReport& report);
// Nothing for a line that is none.
std::optional<WorkerOrder> ReadOrder(std::string_view line);
std::optional<WorkerReport> ReadReport(std::string_view line);

// A started worker. Destroying it ends the process.
class Worker {
 public:
  Worker() = default;
  Worker(const Worker&) = delete;
  Worker& operator=(const Worker&) = delete;
  virtual ~Worker() = default;

  // What can't be sent is lost; the worker's end follows.
  virtual void Send(const WorkerOrder& order) = 0;
  // Ends the process now; `on_end` follows.
  virtual void Kill() = 0;
};

// Both are called on threads of their own; `on_end` last, and once.
struct WorkerEvents {
  std::function<void(const WorkerReport&)> on_report;
  std::function<void(int code)> on_end;
};

// Throws Failure when the process can't be started.
using WorkerStarter = std::function<std::unique_ptr<Worker>(WorkerEvents)>;

}  // namespace borvanusb
