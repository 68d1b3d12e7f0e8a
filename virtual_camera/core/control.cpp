// The control program's operations on a camera's state. Cameras may run meanwhile.
#include <algorithm>
#include <map>
#include <vector>

#include "core/blocks.h"
#include "core/camera.h"
#include "core/faults.h"
#include "core/format.h"
#include "core/plug.h"
#include "core/printable.h"
#include "core/state_file.h"

namespace virtual_camera {
namespace {

// Under the lock of the state, plugs in a camera that is due to return, runs `action` and stores
// the changes.
template <typename Action>
void Change(const CameraConfiguration& configuration, const Action& action) {
  StateFile file(configuration.state_file, configuration.plugged);
  const StateLock lock(file);
  RefreshPlug(file.State(), WallClockUs());
  action(file.State());
  file.Commit();
}

// Returns the state for the next transfer: a camera that is due to return is plugged in. Changes no
// file.
DeviceState Look(const CameraConfiguration& configuration) {
  DeviceState state = LookAtState(configuration.state_file, configuration.plugged);
  RefreshPlug(state, WallClockUs());
  RefreshFaultCounters(configuration, state.fields);
  return state;
}

std::string PlugText(const DeviceFields& fields) {
  if (fields.plugged) {
    return "plugged in";
  }
  if (fields.back_at_us == 0) {
    return "unplugged";
  }
  const std::uint64_t now = WallClockUs();
  const std::uint64_t left_ms = fields.back_at_us > now ? (fields.back_at_us - now) / 1000 : 0;
  return Format("unplugged, back in {} ms", left_ms);
}

std::string RegistersText(const RegisterStore& registers, RegisterSpace space) {
  std::map<std::uint32_t, std::uint32_t> sorted;
  for (const auto& [key, value] : registers.Values()) {
    if (key >> 32 == space.number) {
      sorted.emplace(static_cast<std::uint32_t>(key), value);
    }
  }
  std::string text;
  for (const auto& [address, value] : sorted) {
    text += Format("    0x{:04x} = 0x{:02x}\n", address, value);
  }
  return text.empty() ? "    none\n" : text;
}

// Describes the transfers that are missing in the traces, if any.
std::string TraceText(const CameraConfiguration& configuration, const DeviceFields& fields) {
  const auto last = [](std::uint64_t count) {
    return count == 1 ? std::string("last transfer is missing: ")
                      : Format("last {} transfers are missing: ", count);
  };
  std::string text;
  if (!configuration.trace_file.empty() && fields.untraced != 0) {
    text += Format("  trace: the {}{} could not be written\n", last(fields.untraced),
                   Printable(configuration.trace_file));
  }
  if (fields.process_untraced != 0) {
    text += Format("  trace of a process: its {}its file could not be written\n",
                   last(fields.process_untraced));
  }
  return text;
}

}  // namespace

void PowerCycle(const CameraConfiguration& configuration) {
  Change(configuration, [](DeviceState& state) { state.LosePower(); });
}

void SetPlugged(const CameraConfiguration& configuration, bool plugged) {
  Change(configuration, [plugged](DeviceState& state) {
    if (plugged) {
      PlugIn(state);
    } else {
      state.fields.plugged = false;
      state.fields.back_at_us = 0;
    }
  });
}

bool IsPlugged(const CameraConfiguration& configuration) {
  return Look(configuration).fields.plugged;
}

void ResetFaultCounters(const CameraConfiguration& configuration) {
  Change(configuration, [](DeviceState& state) { state.fields.fault_counters = {}; });
}

std::string DescribeState(const CameraConfiguration& configuration) {
  const DeviceState state = Look(configuration);
  std::string text = Format(
      "{}\n"
      "  path: {}\n"
      "  state: {}\n"
      "  flash: {} KiB in {}\n"
      "  chip registers written since power-on:\n"
      "{}",
      Printable(configuration.name), Printable(configuration.path), PlugText(state.fields),
      configuration.flash.size / 1024, Printable(configuration.flash.file),
      RegistersText(state.registers, RegisterSpace::Chip()));
  for (const SensorConfiguration& sensor : configuration.sensors) {
    text += Format(
        "  sensor 0x{:02x} (width mode {}), registers written since power-on:\n"
        "{}",
        sensor.slave, sensor.mode,
        RegistersText(state.registers, RegisterSpace::Slave(sensor.slave)));
  }
  for (std::size_t i = 0; i < configuration.faults.size() && i < kMaxFaults; ++i) {
    text += Format("  fault {}: {} matching transfers so far\n", i, state.fields.fault_counters[i]);
  }
  return text + TraceText(configuration, state.fields);
}

}  // namespace virtual_camera
