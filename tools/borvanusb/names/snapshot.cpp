#include "names/snapshot.h"

#include <set>

#include "names/field_value.h"
#include "output/output.h"

namespace borvanusb {

namespace {

// Combines the accesses of a register to its value. Returns nothing if one of them is missing.
std::optional<std::pair<std::uint64_t, std::uint64_t>> Whole(const RegisterAccess& access,
                                                             const Snapshot& snapshot) {
  std::uint64_t value = 0;
  std::uint64_t bits = 0;
  for (std::uint32_t i = 0; i < access.accesses; ++i) {
    const auto part = snapshot.find(KeyOf(access, i));
    if (part == snapshot.end()) {
      return std::nullopt;
    }
    const unsigned shift = ShiftOf(access, i);
    value |= std::uint64_t{part->second.value} << shift;
    bits |= std::uint64_t{part->second.bits} << shift;
  }
  return std::pair{value & access.mask, bits & ValueBits(access)};
}

bool IsReadable(const NamedRegister& named) {
  return CanRead(named.in_map->form->access) && !ChangesWhenRead(*named.in_map->form);
}

}  // namespace

AccessKey KeyOf(const RegisterAccess& access, std::uint32_t index) {
  AccessKey key;
  key.on_i2c = access.on_i2c;
  if (access.on_i2c) {
    key.slave = access.target.slave;
    key.mode = access.target.mode;
    key.option = access.target.option;
  } else {
    key.wide = access.width == RegisterWidth::kWide;
  }
  key.address = access.address + access.step * index;
  return key;
}

RegisterAccess AccessOf(const AccessKey& key) {
  return key.on_i2c ? I2cAccess({key.slave, key.mode, key.option}, key.address)
                    : ChipAccess(key.address, key.wide);
}

void Put(const RegisterAccess& access, std::uint64_t value, std::uint64_t bits,
         Snapshot& snapshot) {
  const std::uint64_t part = ~(~std::uint64_t{0} << access.access_bits);
  for (std::uint32_t i = 0; i < access.accesses; ++i) {
    const unsigned shift = ShiftOf(access, i);
    const auto known = static_cast<std::uint32_t>(bits >> shift & part);
    KnownValue& now = snapshot.try_emplace(KeyOf(access, i), KnownValue{0, 0}).first->second;
    now.value = (now.value & ~known) | (static_cast<std::uint32_t>(value >> shift & part) & known);
    now.bits |= known;
  }
}

Snapshot SnapshotOf(std::span<const RegisterSetting> settings) {
  Snapshot snapshot;
  for (const RegisterSetting& setting : settings) {
    Put(setting.access, setting.value, setting.bits, snapshot);
  }
  return snapshot;
}

Snapshot ResetSnapshot(const RegisterNames& names) {
  Snapshot snapshot;
  for (const NamedRegister& named : names.All()) {
    const MapRegisterForm& form = *named.in_map->form;
    const RegisterAccess access = AccessOf(named);
    const std::uint64_t bits = form.reset_mask & ValueBits(access);
    if (IsReadable(named) && bits != 0) {
      Put(access, form.reset_value, bits, snapshot);
    }
  }
  return snapshot;
}

std::vector<WordTarget> RegistersOf(const Snapshot& snapshot, const RegisterNames* names) {
  std::vector<WordTarget> registers;
  std::set<AccessKey> covered;
  for (const NamedRegister& named :
       names != nullptr ? names->All() : std::span<const NamedRegister>()) {
    const RegisterAccess access = AccessOf(named);
    if (!Whole(access, snapshot)) {
      continue;
    }
    registers.push_back({access, {&named, nullptr}});
    for (std::uint32_t i = 0; i < access.accesses; ++i) {
      covered.insert(KeyOf(access, i));
    }
  }
  for (const auto& [key, value] : snapshot) {
    if (!covered.contains(key)) {
      registers.push_back({AccessOf(key), {}});
    }
  }
  return registers;
}

std::vector<WordTarget> ReadableRegisters(const RegisterNames& names) {
  std::vector<WordTarget> registers;
  for (const NamedRegister& named : names.All()) {
    if (IsReadable(named)) {
      registers.push_back({AccessOf(named), {&named, nullptr}});
    }
  }
  return registers;
}

Snapshot ReadSnapshot(std::span<const WordTarget> registers, Camera& camera, Context& context) {
  const RegisterReading reading = ReadAll(AccessesOf(registers), camera, context);
  if (!reading.checked) {
    context.output.Note(kReadInBlocksNote);
  }
  Snapshot snapshot;
  for (std::size_t i = 0; i < registers.size(); ++i) {
    Put(registers[i].access, reading.values[i], ValueBits(registers[i].access), snapshot);
  }
  return snapshot;
}

std::vector<SnapshotDifference> CompareSnapshots(const Snapshot& left, const Snapshot& right,
                                                 const RegisterNames* names) {
  Snapshot both = left;
  both.insert(right.begin(), right.end());
  std::vector<SnapshotDifference> differences;
  for (const WordTarget& at : RegistersOf(both, names)) {
    const auto left_value = Whole(at.access, left);
    const auto right_value = Whole(at.access, right);
    SnapshotDifference difference{at, {}, {}, 0};
    if (left_value) {
      difference.left = left_value->first;
    }
    if (right_value) {
      difference.right = right_value->first;
    }
    if (left_value && right_value) {
      difference.bits = left_value->second & right_value->second;
      if (((left_value->first ^ right_value->first) & difference.bits) == 0) {
        continue;
      }
    }
    differences.push_back(difference);
  }
  return differences;
}

}  // namespace borvanusb
