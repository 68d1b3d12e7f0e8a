#include "i2c/i2c_list.h"

#include <utility>

#include "base/format.h"
#include "base/width_modes.h"

namespace borvanusb {

namespace {

constexpr int kMarkerDigits = 4;
constexpr int kSlaveDigits = 2;

bool IsMarker(std::uint32_t address) {
  return address == kSlaveMarker || address == kWidthMarker || address == kPauseMarker ||
         address == kDroppedMarker || IsPassedOver(address);
}

class Checker {
 public:
  Checker(ListText list, const std::optional<I2cTarget>& opening) {
    checked_.list = std::move(list);
    whole_ = checked_.list.problems.empty();
    for (const ListEntry& entry : checked_.list.entries) {
      if (entry.address != kPauseMarker && !IsPassedOver(entry.address)) {
        checked_.opens_itself = entry.address == kSlaveMarker;
        break;
      }
    }
    if (!checked_.opens_itself && opening) {
      checked_.slave = opening->slave;
      mode_ = opening->mode;
      by_entries_ = !WidthModeOf(opening->mode).list_code;
    }
  }

  CheckedI2cList Check() {
    for (const ListEntry& entry : checked_.list.entries) {
      Take(entry);
    }
    if (whole_ && checked_.registers == 0) {
      Problem(0, "the list has no register");
    }
    SortByLine(checked_.list.problems);
    SortByLine(checked_.list.remarks);
    return std::move(checked_);
  }

 private:
  void Take(const ListEntry& entry) {
    if (entry.address == kPauseMarker) {
      if (const std::string problem = PauseProblem(entry); !problem.empty()) {
        Problem(entry.line, problem);
      }
    } else if (IsPassedOver(entry.address)) {
      return;
    } else if (by_entries_ && (entry.address == kSlaveMarker || entry.address == kWidthMarker)) {
      Problem(entry.line, Format("{} chooses a device and a width of at most 16 bits: a list for "
                                 "mode {} can't hold it",
                                 Hex(entry.address), WidthModeOf(*mode_).name));
    } else if (entry.address == kSlaveMarker) {
      TakeSlave(entry);
    } else if (entry.address == kWidthMarker && slave_seen_) {
      TakeWidth(entry);
    } else {
      TakeRegister(entry);
    }
  }

  void TakeSlave(const ListEntry& entry) {
    if (entry.value > kHighestSlave) {
      Problem(entry.line, Format("slave {} has more than 8 bits", Hex(entry.value)));
    }
    if (!checked_.slave) {
      checked_.slave = entry.value;
    }
    slave_seen_ = true;
  }

  void TakeWidth(const ListEntry& entry) {
    slave_seen_ = false;
    width_told_ = true;
    mode_ = ModeOfListCode(entry.value);
    if (!mode_) {
      Problem(entry.line, Format("width code {} means one width to some chips and another to "
                                 "others: 0x01 for 8/8, 0x03 for 16/8, 0x04 for 16/16",
                                 Hex(entry.value, 2)));
    }
  }

  void TakeRegister(const ListEntry& entry) {
    ++checked_.registers;
    slave_seen_ = false;
    if (entry.address == kWidthMarker) {
      TakeLoneWidth(entry);
      return;
    }
    if (!mode_) {
      // Reported only once. If there are invalid lines, they may hide the width code, so it is not
      // reported.
      if (!width_told_ && whole_) {
        Problem(entry.line,
                "there is no width code (0xfffe after 0xfff8) before this register: the list "
                "would end here");
      }
      width_told_ = true;
      return;
    }
    const WidthMode& mode = WidthModeOf(*mode_);
    if (entry.address > mode.highest_address) {
      Problem(entry.line, Format("address {} is beyond {}, the highest in mode {}",
                                 Hex(entry.address), Hex(mode.highest_address), mode.name));
    }
    if (entry.value > mode.highest_value) {
      Problem(entry.line, Format("value {} is beyond {}, the highest in mode {}", Hex(entry.value),
                                 Hex(mode.highest_value), mode.name));
    }
  }

  // A width code whose slave is missing is more likely than a register with this address.
  void TakeLoneWidth(const ListEntry& entry) {
    if (checked_.registers == 1) {
      Problem(
          entry.line,
          "0xfffe begins the list: without 0xfff8 before it, it is a register of the device, not "
          "a width code");
    } else {
      checked_.list.remarks.push_back(
          {entry.line,
           "0xfffe without 0xfff8 before it is a register of the device here, not a width "
           "code"});
    }
  }

  void Problem(std::uint64_t line, std::string text) {
    checked_.list.problems.push_back({line, std::move(text)});
  }

  CheckedI2cList checked_;
  bool whole_ = false;  // no entry is hidden by an invalid line
  bool by_entries_ = false;
  bool slave_seen_ = false;
  bool width_told_ = false;
  std::optional<std::int32_t> mode_;
};

std::string Opening(const I2cTarget& target) {
  return Format(
      "{}\n{}\n", ListLine(kSlaveMarker, target.slave, kMarkerDigits, kSlaveDigits),
      ListLine(kWidthMarker, WidthModeOf(target.mode).list_code.value(), kMarkerDigits, 2));
}

}  // namespace

CheckedI2cList CheckI2cList(std::string_view text, const std::optional<I2cTarget>& opening) {
  return Checker(ReadListText(text), opening).Check();
}

std::string I2cListText(const std::vector<ListEntry>& entries,
                        const std::optional<I2cTarget>& opening) {
  std::string text = opening ? Opening(*opening) : "";
  for (const ListEntry& entry : entries) {
    text += Format("{}\n", ListLine(entry.address, entry.value, kMarkerDigits, 2));
  }
  return text;
}

std::string I2cDumpText(const I2cTarget& target, const Range& range,
                        std::span<const std::uint32_t> values) {
  const WidthMode& mode = WidthModeOf(target.mode);
  std::string text =
      mode.list_code ? Opening(target)
                     : Format("// no list can name this device: load with --slave {} --mode {}\n",
                              Hex(target.slave), mode.name);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto address = static_cast<std::uint32_t>(range.first + i);
    const std::string line =
        Format("{}\n", ListLine(address, values[i], mode.address_digits, mode.value_digits));
    text += IsMarker(address) ? Format("// no list can write this register: {}", line) : line;
  }
  return text;
}

}  // namespace borvanusb
