#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "command/context.h"
#include "sweep/sweep_rig.h"

namespace borvanusb::sweep {

// A command on a camera, with a check of its result.
struct Scenario {
  std::string name;
  Content content;
  std::function<void(SweepTest&)> prepare;  // creates the command's files; may be empty
  std::function<ExitCode(SweepTest&, Context&)> run;
  ExitCode expected = ExitCode::kDone;
  // Checks a run, whatever its result: returns what is untrue or lost, else an empty text. Uses the
  // real state of the camera, never data that the tool has read.
  std::function<std::string(const SweepTest&, const RunEnd&)> wrong;
};

// Runs scenarios with every possible bad transfer. Each run must report a true result, and the same
// command must succeed afterwards without the fault. With BORVAN_LONG=1, all transfers and faults
// are tried; otherwise a fixed selection, of BORVAN_SWEEP_FAULTS faults if set.
class FaultSweep {
 public:
  explicit FaultSweep(SweepTest& rig) : rig_(rig) {}
  // Prints the number of runs, and reports untrue results as test failures.
  ~FaultSweep();
  FaultSweep(const FaultSweep&) = delete;
  FaultSweep& operator=(const FaultSweep&) = delete;

  void Sweep(const Scenario& scenario);

 private:
  struct Strike {
    Fault fault;
    Transfer transfer;
  };

  RunEnd Run(const Scenario& scenario, const std::optional<Fault>& fault);
  std::vector<Strike> StrikesOf(const std::vector<Transfer>& transfers) const;
  void Try(const Scenario& scenario, const Strike& strike);
  void Tell(const Scenario& scenario, const std::string& when, const std::string& kind,
            const std::string& what);

  SweepTest& rig_;
  std::uint64_t runs_ = 0;
  std::map<ExitCode, std::uint64_t> ends_;
  struct Finding {
    std::uint64_t count = 0;
    std::string first;
  };
  std::map<std::string, Finding> findings_;
};

// Whether all transfers and faults are tried.
bool IsLong();

}  // namespace borvanusb::sweep
