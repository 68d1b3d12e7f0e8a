#include "core/faults.h"

#include <bit>

namespace virtual_camera {
namespace {

static_assert(kMaxFaults == kStateFaults);

// A well-known 64-bit mixer: every bit of the input affects every bit of the output.
constexpr std::uint64_t Mix(std::uint64_t value) {
  value += 0x9E3779B97F4A7C15;
  value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9;
  value = (value ^ (value >> 27)) * 0x94D049BB133111EB;
  return value ^ (value >> 31);
}

// Identifies a list of faults by what its counters depend on.
std::uint64_t Fingerprint(const CameraConfiguration& configuration) {
  std::uint64_t sum = Mix(configuration.seed);
  for (const FaultConfiguration& fault : configuration.faults) {
    for (const std::uint64_t part :
         {std::uint64_t{fault.selector.value_or(0)},
          std::uint64_t{fault.direction ? 1U + static_cast<unsigned>(*fault.direction) : 0U},
          fault.at.value_or(0), fault.every.value_or(0),
          std::bit_cast<std::uint64_t>(fault.probability.value_or(-1.0))}) {
      sum = Mix(sum ^ part);
    }
  }
  return sum;
}

bool Matches(const FaultConfiguration& fault, Direction direction, std::uint32_t selector) {
  return (!fault.selector || *fault.selector == selector) &&
         (!fault.direction || *fault.direction == direction);
}

// `count` is 1 for the first matching transfer.
bool Strikes(const FaultConfiguration& fault, std::uint64_t seed, std::size_t index,
             std::uint64_t count) {
  if (fault.at) {
    return count == *fault.at;
  }
  if (fault.every) {
    return count % *fault.every == 0;
  }
  if (fault.probability) {
    constexpr double kTwoTo53 = 9007199254740992.0;
    const std::uint64_t draw = Mix(Mix(seed ^ Mix(index)) ^ count) >> 11;
    return static_cast<double>(draw) / kTwoTo53 < *fault.probability;
  }
  return true;
}

template <typename Value>
void KeepFirst(std::optional<Value>& kept, const std::optional<Value>& next) {
  if (!kept) {
    kept = next;
  }
}

void Add(FaultEffects& effects, const FaultConfiguration& fault) {
  KeepFirst(effects.result, fault.result);
  KeepFirst(effects.length, fault.length);
  KeepFirst(effects.short_answer, fault.short_answer);
  KeepFirst(effects.unplug, fault.unplug);
  effects.wrong_tag = effects.wrong_tag || fault.wrong_tag;
  effects.lie = effects.lie || fault.lie;
  effects.delay_ms += fault.delay_ms;
  if (fault.stuck_word) {
    effects.stuck_words.push_back(*fault.stuck_word);
  }
}

}  // namespace

void RefreshFaultCounters(const CameraConfiguration& configuration, DeviceFields& fields) {
  if (configuration.faults.empty()) {
    return;
  }
  if (const std::uint64_t fingerprint = Fingerprint(configuration);
      fields.fault_fingerprint != fingerprint) {
    fields.fault_fingerprint = fingerprint;
    fields.fault_counters = {};
  }
}

FaultEffects StrikeFaults(const CameraConfiguration& configuration, Direction direction,
                          std::uint32_t selector, DeviceFields& fields) {
  FaultEffects effects;
  RefreshFaultCounters(configuration, fields);
  for (std::size_t i = 0; i < configuration.faults.size() && i < kStateFaults; ++i) {
    const FaultConfiguration& fault = configuration.faults[i];
    if (!Matches(fault, direction, selector)) {
      continue;
    }
    const std::uint64_t count = ++fields.fault_counters[i];
    if (Strikes(fault, configuration.seed, i, count)) {
      Add(effects, fault);
    }
  }
  return effects;
}

}  // namespace virtual_camera
