#include "names/register_access.h"

#include <algorithm>
#include <map>
#include <tuple>

#include "base/chip_register.h"
#include "base/width_modes.h"
#include "camera/i2c_failure.h"
#include "camera/register_readings.h"
#include "command/camera_work.h"
#include "names/field_value.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kWideBits = 32;
// A single read takes eight transfers, including its check; a block of 56 registers takes six.
constexpr std::uint64_t kMostSingleReads = 16;
// Small enough to report progress and notice Ctrl-C at least once a second.
constexpr std::uint64_t kChipPart = 128 * std::uint64_t{kRunBlock};
constexpr std::uint64_t kI2cPart = 16 * std::uint64_t{kRunBlock};

const AccessRule& AccessRuleOf(const RegisterAccess& access) {
  static const AccessRule kPlain;
  return access.rule != nullptr ? *access.rule : kPlain;
}

// Identifies a device. A run of addresses stays within one device.
using DeviceKey = std::tuple<bool, bool, std::uint32_t, std::int32_t, std::uint32_t>;

DeviceKey KeyOf(const RegisterAccess& access) {
  return {access.on_i2c, access.width == RegisterWidth::kWide, access.target.slave,
          access.target.mode, access.target.option};
}

bool IsReadAlone(const RegisterAccess& access) {
  const AccessRule& rule = AccessRuleOf(access);
  return access.read_once || !rule.before_read.empty() ||
         (access.accesses > 1 && rule.order != AccessOrder::kUpwards);
}

std::uint32_t AddressOf(const RegisterAccess& access, std::uint32_t index) {
  return access.address + access.step * index;
}

std::uint32_t ReadAt(const RegisterAccess& device, std::uint32_t address, Camera& camera) {
  if (!device.on_i2c) {
    return device.read_once ? camera.SampleRegister(address, device.width)
                            : camera.ReadRegister(address, device.width);
  }
  return ExplainingI2c(camera, device.target, [&] {
    return device.read_once ? camera.SampleI2c(device.target, address)
                            : camera.ReadI2c(device.target, address);
  });
}

void WriteAt(const RegisterAccess& device, std::uint32_t address, std::uint32_t value,
             Camera& camera) {
  if (device.on_i2c) {
    ExplainingI2c(camera, device.target, [&] { camera.WriteI2c(device.target, address, value); });
  } else {
    camera.WriteRegister(address, value, device.width);
  }
}

void WriteLatches(const RegisterAccess& device, std::span<const LatchWrite> writes,
                  Camera& camera) {
  for (const LatchWrite& write : writes) {
    WriteAt(device, write.address, write.value, camera);
  }
}

// The indexes of the accesses, in the order in which they are made.
std::vector<std::uint32_t> InTime(const RegisterAccess& access) {
  std::vector<std::uint32_t> places;
  for (std::uint32_t i = 0; i < access.accesses; ++i) {
    places.push_back(i);
  }
  if (AccessRuleOf(access).order == AccessOrder::kDownwards) {
    std::ranges::reverse(places);
  }
  return places;
}

bool IsInBlocks(const ReadPiece& piece) {
  return !piece.of.on_i2c && piece.of.width == RegisterWidth::kByte &&
         piece.range.Size() > kMostSingleReads;
}

// Reads all addresses of a piece.
std::vector<std::uint32_t> ReadRow(const ReadPiece& piece, Camera& camera,
                                   const std::function<void(std::uint64_t)>& advance) {
  std::vector<std::uint32_t> values;
  const std::uint64_t size = IsInBlocks(piece) ? kChipPart : piece.of.on_i2c ? kI2cPart : 1;
  for (std::uint64_t first = piece.range.first; first <= piece.range.last; first += size) {
    const auto from = static_cast<std::uint32_t>(first);
    const auto to =
        static_cast<std::uint32_t>(std::min<std::uint64_t>(piece.range.last, first + size - 1));
    if (IsInBlocks(piece)) {
      const auto part = camera.ReadRegisterRun(from, to);
      values.insert(values.end(), part.begin(), part.end());
    } else if (piece.of.on_i2c) {
      const auto part = ExplainingI2c(camera, piece.of.target,
                                      [&] { return camera.ReadI2cRun(piece.of.target, from, to); });
      values.insert(values.end(), part.begin(), part.end());
    } else {
      values.push_back(camera.ReadRegister(from, piece.of.width));
    }
    advance(values.size());
  }
  return values;
}

// Whether the address extends the piece, which must be of the same device. On the chip, a piece
// ends at a multiple of 65536.
bool Continues(const ReadPiece& piece, std::uint32_t address) {
  return address == piece.range.last + 1 && piece.range.last != UINT32_MAX &&
         (piece.of.on_i2c || address >> kPageShift == piece.range.last >> kPageShift);
}

}  // namespace

RegisterAccess AccessOf(const NamedRegister& named) {
  RegisterAccess access;
  access.on_i2c = named.map->on_i2c;
  access.width = named.map->width;
  access.target = named.map->target;
  access.address = named.address;
  access.accesses = named.accesses;
  access.access_bits = named.map->access_bits;
  access.step = named.map->step;
  access.mask = named.Mask();
  access.rule = named.rule;
  access.read_once = ChangesWhenRead(*named.in_map->form);
  return access;
}

RegisterAccess ChipAccess(std::uint32_t address, bool wide) {
  RegisterAccess access;
  access.address = address;
  if (wide) {
    access.width = RegisterWidth::kWide;
    access.access_bits = kWideBits;
  }
  return access;
}

RegisterAccess I2cAccess(const I2cTarget& target, std::uint32_t address) {
  RegisterAccess access;
  access.on_i2c = true;
  access.target = target;
  access.address = address;
  access.access_bits = static_cast<std::uint32_t>(WidthModeOf(target.mode).data_bits);
  return access;
}

unsigned ShiftOf(const RegisterAccess& access, std::uint32_t index) {
  const bool high_first = AccessRuleOf(access).bytes == ByteOrder::kHighFirst;
  return access.access_bits * (high_first ? access.accesses - 1 - index : index);
}

std::vector<ReadPiece> PlanReads(std::span<const RegisterAccess> registers) {
  std::map<DeviceKey, std::map<std::uint32_t, const RegisterAccess*>> rows;
  for (const RegisterAccess& access : registers) {
    for (std::uint32_t i = 0; !IsReadAlone(access) && i < access.accesses; ++i) {
      rows[KeyOf(access)].emplace(AddressOf(access, i), &access);
    }
  }
  std::vector<ReadPiece> pieces;
  for (const auto& [key, addresses] : rows) {
    bool begun = false;
    for (const auto& [address, access] : addresses) {
      if (begun && Continues(pieces.back(), address)) {
        pieces.back().range.last = address;
      } else {
        pieces.push_back({*access, {address, address}, {}});
        begun = true;
      }
    }
  }
  for (std::size_t i = 0; i < registers.size(); ++i) {
    if (IsReadAlone(registers[i])) {
      pieces.push_back({registers[i], {registers[i].address, registers[i].address}, i});
    }
  }
  return pieces;
}

namespace {

std::uint64_t AccessesIn(std::span<const ReadPiece> pieces) {
  std::uint64_t total = 0;
  for (const ReadPiece& piece : pieces) {
    total += piece.range.Size();
  }
  return total;
}

RegisterReading ReadPieces(std::span<const RegisterAccess> registers,
                           std::span<const ReadPiece> pieces, Camera& camera,
                           const std::function<void(std::uint64_t)>& advance) {
  RegisterReading reading{std::vector<std::uint64_t>(registers.size()), true};
  std::map<DeviceKey, std::map<std::uint32_t, std::uint32_t>> found;
  std::uint64_t done = 0;
  for (const ReadPiece& piece : pieces) {
    if (piece.alone) {
      reading.values[*piece.alone] = ReadOne(piece.of, camera);
    } else {
      const auto values = ReadRow(piece, camera, [&](std::uint64_t now) { advance(done + now); });
      reading.checked = reading.checked && !IsInBlocks(piece);
      auto& of_device = found[KeyOf(piece.of)];
      for (std::size_t i = 0; i < values.size(); ++i) {
        of_device[piece.range.first + static_cast<std::uint32_t>(i)] = values[i];
      }
    }
    done += piece.range.Size();
    advance(done);
  }
  for (std::size_t i = 0; i < registers.size(); ++i) {
    const RegisterAccess& access = registers[i];
    for (std::uint32_t part = 0; !IsReadAlone(access) && part < access.accesses; ++part) {
      reading.values[i] |= std::uint64_t{found[KeyOf(access)][AddressOf(access, part)]}
                           << ShiftOf(access, part);
    }
    reading.values[i] &= access.mask;
  }
  return reading;
}

}  // namespace

RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera,
                        Context& context) {
  const std::vector<ReadPiece> pieces = PlanReads(registers);
  RowProgress progress(context, AccessesIn(pieces));
  RegisterReading reading =
      ReadPieces(registers, pieces, camera, [&](std::uint64_t done) { progress.Advance(done); });
  progress.Done();
  return reading;
}

RegisterReading ReadAll(std::span<const RegisterAccess> registers, Camera& camera) {
  return ReadPieces(registers, PlanReads(registers), camera, [](std::uint64_t) {});
}

std::uint64_t ReadOne(const RegisterAccess& access, Camera& camera) {
  WriteLatches(access, AccessRuleOf(access).before_read, camera);
  std::uint64_t value = 0;
  for (const std::uint32_t part : InTime(access)) {
    value |= std::uint64_t{ReadAt(access, AddressOf(access, part), camera)}
             << ShiftOf(access, part);
  }
  return value & access.mask;
}

void WriteOne(const RegisterAccess& access, std::uint64_t value, Camera& camera) {
  WriteLatches(access, AccessRuleOf(access).before_write, camera);
  const std::uint64_t mask = (std::uint64_t{1} << access.access_bits) - 1;
  for (const std::uint32_t part : InTime(access)) {
    WriteAt(access, AddressOf(access, part),
            static_cast<std::uint32_t>(value >> ShiftOf(access, part) & mask), camera);
  }
  WriteLatches(access, AccessRuleOf(access).after_write, camera);
}

std::uint64_t ValueBits(const RegisterAccess& access) {
  constexpr std::uint32_t kWidest = 64;
  constexpr std::uint64_t kAllBits = ~std::uint64_t{0};
  const std::uint32_t bits = access.access_bits * access.accesses;
  return access.mask & (bits >= kWidest ? kAllBits : ~(kAllBits << bits));
}

int ValueDigits(const RegisterAccess& access) {
  return static_cast<int>(access.access_bits * access.accesses / kBitsOfDigit);
}

}  // namespace borvanusb
