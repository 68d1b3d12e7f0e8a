#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <vector>

#include "names/register_access.h"
#include "names/register_names.h"
#include "names/register_setting.h"
#include "names/register_words.h"

namespace borvanusb {

// Values of registers, access by access, read or to be written. Lists, presets and cameras can be
// compared in this form, with or without names.

// Identifies one access: a register of the chip or of a device on the I2C bus.
struct AccessKey {
  bool on_i2c = false;
  bool wide = false;         // for the chip
  std::uint32_t slave = 0;   // for the I2C bus
  std::int32_t mode = 0;     // for the I2C bus
  std::uint32_t option = 0;  // for the I2C bus
  std::uint32_t address = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison's own 0 for a pointer
  auto operator<=>(const AccessKey&) const = default;
};

AccessKey KeyOf(const RegisterAccess& access, std::uint32_t index);
RegisterAccess AccessOf(const AccessKey& key);

struct KnownValue {
  std::uint32_t value = 0;
  std::uint32_t bits = 0xFFFFFFFF;  // known bits of the value
};

using Snapshot = std::map<AccessKey, KnownValue>;

// Adds a register's value to a snapshot. `bits` are the known ones.
void Put(const RegisterAccess& access, std::uint64_t value, std::uint64_t bits, Snapshot& snapshot);
// The values that registers have after these settings, applied in order.
Snapshot SnapshotOf(std::span<const RegisterSetting> settings);
// The reset values in the profile, of readable registers.
Snapshot ResetSnapshot(const RegisterNames& names);

// The registers that these accesses belong to: first complete named registers, then the remaining
// accesses by number. `names` may be null.
std::vector<WordTarget> RegistersOf(const Snapshot& snapshot, const RegisterNames* names);
// All named registers that can be read without side effects.
std::vector<WordTarget> ReadableRegisters(const RegisterNames& names);

// Reads registers into a snapshot.
Snapshot ReadSnapshot(std::span<const WordTarget> registers, Camera& camera, Context& context);

// A register whose values differ between two snapshots.
struct SnapshotDifference {
  WordTarget at;
  std::optional<std::uint64_t> left;  // nothing: not in that snapshot
  std::optional<std::uint64_t> right;
  std::uint64_t bits = 0;  // known on both sides
};

// In the order of RegistersOf().
std::vector<SnapshotDifference> CompareSnapshots(const Snapshot& left, const Snapshot& right,
                                                 const RegisterNames* names);

}  // namespace borvanusb
