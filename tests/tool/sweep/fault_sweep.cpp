#include "sweep/fault_sweep.h"

#include <array>
#include <cstdlib>
#include <fstream>
#include <iostream>

namespace borvanusb::sweep {
namespace {

constexpr std::array<std::uint32_t, 5> kShortAnswers = {0, 1, 8, 32, 63};
// The number of faulty runs of a scenario in the short form.
std::size_t Selection() {
  const char* const text = std::getenv("BORVAN_SWEEP_FAULTS");
  return text != nullptr ? std::strtoul(text, nullptr, 10) : 30;
}

std::uint32_t LengthOf(const Transfer& transfer) {
  return transfer.length;
}

std::vector<Fault> FaultsAt(std::uint64_t at, const Transfer& transfer) {
  std::vector<Fault> faults = {{at, FaultKind::kRefused}, {at, FaultKind::kLies}};
  if (transfer.direction != Direction::kGet) {
    return faults;
  }
  faults.push_back({at, FaultKind::kWrongTag});
  for (const std::uint32_t bytes : kShortAnswers) {
    if (bytes < LengthOf(transfer)) {
      faults.push_back({at, FaultKind::kShort, bytes});
    }
  }
  // And a short answer with a different length each time.
  faults.push_back(
      {at, FaultKind::kShort, static_cast<std::uint32_t>(at * 37 % LengthOf(transfer))});
  return faults;
}

std::string KindOf(const Fault& fault, const Transfer& transfer) {
  // Without the transfer's number, so that equal faults can be counted.
  const std::string text = ToText(fault, transfer);
  return text.substr(text.find('('));
}

}  // namespace

bool IsLong() {
  return std::getenv("BORVAN_LONG") != nullptr;
}

RunEnd FaultSweep::Run(const Scenario& scenario, const std::optional<Fault>& fault) {
  ++runs_;
  return rig_.Perform([&](Context& context) { return scenario.run(rig_, context); }, fault);
}

std::vector<FaultSweep::Strike> FaultSweep::StrikesOf(
    const std::vector<Transfer>& transfers) const {
  std::vector<Strike> strikes;
  for (std::uint64_t at = 0; at < transfers.size(); ++at) {
    for (const Fault& fault : FaultsAt(at, transfers[at])) {
      strikes.push_back({fault, transfers[at]});
    }
  }
  const std::size_t selection = Selection();
  if (IsLong() || strikes.size() <= selection) {
    return strikes;
  }
  std::vector<Strike> selected;
  for (std::size_t i = 0; i < selection; ++i) {
    selected.push_back(strikes[i * strikes.size() / selection]);
  }
  return selected;
}

void FaultSweep::Sweep(const Scenario& scenario) {
  rig_.StartAnew(scenario.content);
  if (scenario.prepare) {
    scenario.prepare(rig_);
  }
  const RunEnd healthy = Run(scenario, std::nullopt);
  const std::string wrong = scenario.wrong(rig_, healthy);
  ASSERT_EQ(healthy.code, scenario.expected) << scenario.name << ": " << healthy.message;
  ASSERT_EQ(wrong, "") << scenario.name << ", healthy";
  for (const Strike& strike : StrikesOf(rig_.Camera().Seen())) {
    Try(scenario, strike);
  }
}

void FaultSweep::Try(const Scenario& scenario, const Strike& strike) {
  rig_.StartAnew(scenario.content);
  if (scenario.prepare) {
    scenario.prepare(rig_);
  }
  const RunEnd end = Run(scenario, strike.fault);
  ++ends_[end.code];
  const std::string when = ToText(strike.fault, strike.transfer) + ": ended with " +
                           std::to_string(static_cast<int>(end.code)) +
                           (end.message.empty() ? "" : " (" + end.message + ")");
  const std::string kind = KindOf(strike.fault, strike.transfer);
  if (const std::string wrong = scenario.wrong(rig_, end); !wrong.empty()) {
    Tell(scenario, when, kind, wrong);
  }
  if (end.code == scenario.expected) {
    return;
  }
  const RunEnd again = Run(scenario, std::nullopt);
  if (again.code != scenario.expected) {
    Tell(scenario, when, kind,
         "again without the fault: ended with " + std::to_string(static_cast<int>(again.code)) +
             " (" + again.message + ")");
  } else if (const std::string wrong = scenario.wrong(rig_, again); !wrong.empty()) {
    Tell(scenario, when, kind, "again without the fault: " + wrong);
  }
}

void FaultSweep::Tell(const Scenario& scenario, const std::string& when, const std::string& kind,
                      const std::string& what) {
  Finding& finding = findings_[scenario.name + ": " + kind];
  if (finding.count++ == 0) {
    finding.first = when + ": " + what;
  }
  if (const char* const file = std::getenv("BORVAN_SWEEP_FINDINGS"); file != nullptr) {
    std::ofstream(file, std::ios::app) << scenario.name << ": " << when << ": " << what << "\n";
  }
}

FaultSweep::~FaultSweep() {
  for (const auto& [name, finding] : findings_) {
    ADD_FAILURE() << name << ": " << finding.count << " times, the first: " << finding.first;
  }
  std::cout << runs_ << " runs; ends of those with a fault:";
  for (const auto& [code, count] : ends_) {
    std::cout << "  " << static_cast<int>(code) << ": " << count;
  }
  std::cout << "\n";
}

}  // namespace borvanusb::sweep
