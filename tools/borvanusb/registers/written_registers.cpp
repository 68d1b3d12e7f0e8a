#include "registers/written_registers.h"

#include <utility>

#include "base/chip_register.h"
#include "base/width_modes.h"
#include "registers/list_markers.h"
#include "registers/register_list.h"

namespace borvanusb {

namespace {

constexpr unsigned kFirstShift = 24;
constexpr unsigned kSecondShift = 16;

// The marker values that are sent with a register.
struct Markers {
  std::uint32_t first = 0;
  std::uint32_t second = 0;

  std::uint32_t Page() const {
    return (first & kLowByte) << kFirstShift | (second & kLowByte) << kSecondShift;
  }
};

struct MarkedRegister {
  const ListEntry* entry = nullptr;
  std::uint32_t page = 0;
};

// Simulates how the library applies markers: from the marked register on. Markers inside a block
// are ignored.
std::vector<MarkedRegister> MarkedRegisters(const std::vector<ListEntry>& entries) {
  const std::vector<bool> inside = InsideBlocks(entries);
  std::vector<MarkedRegister> registers;
  Markers current;
  Markers next;
  bool has_next = false;
  std::uint32_t last_first = 0;
  for (const ListEntry& entry : entries) {
    switch (entry.address) {
      case kPauseMarker:
        break;
      case kFirstDelayMarker:
        next = {entry.value, has_next ? next.second : 0};
        has_next = true;
        last_first = entry.value;
        break;
      case kSecondDelayMarker:
        next = {last_first, entry.value};
        has_next = true;
        break;
      default:
        if (has_next && !inside[registers.size()]) {
          current = next;
        }
        has_next = false;
        registers.push_back({&entry, current.Page()});
    }
  }
  return registers;
}

class I2cWriter {
 public:
  explicit I2cWriter(const std::optional<I2cTarget>& opening) {
    if (opening) {
      slave_ = opening->slave;
      mode_ = opening->mode;
    }
  }

  void Take(const ListEntry& entry) {
    if (entry.address == kPauseMarker || IsPassedOver(entry.address)) {
      return;
    }
    if (entry.address == kSlaveMarker) {
      slave_ = entry.value & kLowByte;
      slave_seen_ = true;
      return;
    }
    if (entry.address == kWidthMarker && std::exchange(slave_seen_, false)) {
      mode_ = ModeOfListCode(entry.value).value_or(mode_);
      TakeWidthCode(entry);
      return;
    }
    slave_seen_ = false;
    const I2cRegister place = At(entry.address);
    written_.uncertain.erase(place);
    written_.values[place] = entry.value & WidthModeOf(mode_).highest_value;
  }

  WrittenI2cRegisters End() { return std::move(written_); }

 private:
  // Chips that process lists register by register also write the width code to the device. This
  // only matters for registers that the list itself writes.
  void TakeWidthCode(const ListEntry& entry) {
    const I2cRegister place = At(entry.address);
    if (written_.values.erase(place) != 0) {
      written_.uncertain[place] = entry.line;
    }
  }

  I2cRegister At(std::uint32_t address) const {
    return {slave_, mode_, address & WidthModeOf(mode_).highest_address};
  }

  WrittenI2cRegisters written_;
  std::uint32_t slave_ = 0;
  std::int32_t mode_ = 0;
  bool slave_seen_ = false;
};

}  // namespace

RegisterValues WrittenRegisters(const std::vector<ListEntry>& entries, ListMarkers markers) {
  RegisterValues values;
  for (const MarkedRegister& written : MarkedRegisters(entries)) {
    const std::uint32_t page = markers == ListMarkers::kPage ? written.page : 0;
    values[page | written.entry->address] = written.entry->value & kLowByte;
  }
  return values;
}

const ListEntry* FirstMarkedRegister(const std::vector<ListEntry>& entries) {
  for (const MarkedRegister& written : MarkedRegisters(entries)) {
    if (written.page != 0) {
      return written.entry;
    }
  }
  return nullptr;
}

WrittenI2cRegisters WrittenByI2cList(const std::vector<ListEntry>& entries,
                                     const std::optional<I2cTarget>& opening) {
  I2cWriter writer(opening);
  for (const ListEntry& entry : entries) {
    writer.Take(entry);
  }
  return writer.End();
}

}  // namespace borvanusb
