#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "command/context.h"
#include "sweep/sweep_rig.h"

namespace borvanusb::sweep {

// A command on a camera, and how one sees from outside whether its end is true.
struct Scenario {
  std::string name;
  Content content;
  std::function<void(SweepTest&)> prepare;  // the command's files; may be empty
  std::function<ExitCode(SweepTest&, Context&)> run;
  ExitCode expected = ExitCode::kDone;
  // What is untrue or lost after a run that ended so, whatever it ended with; empty: nothing. Takes
  // what is true from the camera itself, never from what the tool read.
  std::function<std::string(const SweepTest&, const RunEnd&)> wrong;
};

// Runs scenarios with every bad transfer there can be: each must end truly, and the same command
// again, without the fault, must end well. BORVAN_LONG=1 takes every transfer and every fault;
// otherwise a selection that is the same each time, of BORVAN_SWEEP_FAULTS faults if that is set.
class FaultSweep {
 public:
  explicit FaultSweep(SweepTest& rig) : rig_(rig) {}
  // Tells the number of runs and, as failures of the test, what was untrue.
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

// Whether every transfer and fault is tried.
bool IsLong();

}  // namespace borvanusb::sweep
