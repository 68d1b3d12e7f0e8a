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

// What registers hold or shall hold, access by access, so that lists, presets and cameras can be
// compared, with names or without.

// One access: a register of the chip or of a device on the bus.
struct AccessKey {
  bool on_i2c = false;
  bool wide = false;         // of the chip
  std::uint32_t slave = 0;   // on the bus
  std::int32_t mode = 0;     // likewise
  std::uint32_t option = 0;  // likewise
  std::uint32_t address = 0;

  // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the comparison's own 0 for a pointer
  auto operator<=>(const AccessKey&) const = default;
};

AccessKey KeyOf(const RegisterAccess& access, std::uint32_t index);
RegisterAccess AccessOf(const AccessKey& key);

struct KnownValue {
  std::uint32_t value = 0;
  std::uint32_t bits = 0xFFFFFFFF;  // of it that are known
};

using Snapshot = std::map<AccessKey, KnownValue>;

// Puts a register's value into a snapshot; `bits` of it are known.
void Put(const RegisterAccess& access, std::uint64_t value, std::uint64_t bits, Snapshot& snapshot);
// What settings leave in registers, one after the other.
Snapshot SnapshotOf(std::span<const RegisterSetting> settings);
// The reset values that a profile tells, of registers that can be read.
Snapshot ResetSnapshot(const RegisterNames& names);

// The registers that hold these accesses: those with names, whole and by their rules, then the
// accesses that no name covers. `names` may be null.
std::vector<WordTarget> RegistersOf(const Snapshot& snapshot, const RegisterNames* names);
// All registers with names that can be read without changing them.
std::vector<WordTarget> ReadableRegisters(const RegisterNames& names);

// Reads registers into a snapshot.
Snapshot ReadSnapshot(std::span<const WordTarget> registers, Camera& camera, Context& context);

// A register in which two snapshots differ.
struct SnapshotDifference {
  WordTarget at;
  std::optional<std::uint64_t> left;  // none: that side does not have it
  std::optional<std::uint64_t> right;
  std::uint64_t bits = 0;  // in which both are known
};

// In the order of RegistersOf.
std::vector<SnapshotDifference> CompareSnapshots(const Snapshot& left, const Snapshot& right,
                                                 const RegisterNames* names);

}  // namespace borvanusb
