#include "registers/register_list.h"

#include <utility>

#include "base/chip_register.h"
#include "base/format.h"
#include "registers/list_markers.h"

namespace borvanusb {

namespace {

constexpr std::uint32_t kHighestAddress = 0xFFFF;
constexpr std::uint32_t kHighestValue = 0xFF;

// The library sends this many adjacent registers as one block, with the delay values of the first
// one.
constexpr std::size_t kShortestRun = 21;
constexpr std::size_t kLongestRun = 56;

bool IsDelay(std::uint32_t address) {
  return address == kFirstDelayMarker || address == kSecondDelayMarker;
}

bool IsMarker(std::uint32_t address) {
  return IsDelay(address) || address == kPauseMarker || address == kDroppedMarker;
}

// Simulates how the library forms blocks of adjacent registers. Finds the registers inside a block,
// except its first.
class Rows {
 public:
  void Add(std::uint32_t address) {
    const std::size_t place = inside_.size();
    inside_.push_back(false);
    if (std::exchange(broke_off_, false) && address == 1) {
      // A quirk of the library: it takes register 1 as the successor of the previous register.
      Begin(place - 1, 0);
      strays_ = true;
    }
    if (length_ == 0 || address != previous_ + 1) {
      const bool was_run = Close();
      // The register that ends a block can't start the next one.
      if (was_run) {
        broke_off_ = true;
      } else {
        Begin(place, address);
      }
      return;
    }
    ++length_;
    previous_ = address;
    if (length_ == kLongestRun) {
      Close();
    }
  }

  void End() { Close(); }
  const std::vector<bool>& Inside() const { return inside_; }
  // Indexes of registers from which on the library writes to wrong addresses.
  const std::vector<std::size_t>& Strays() const { return stray_places_; }

 private:
  void Begin(std::size_t place, std::uint32_t address) {
    first_ = place;
    length_ = 1;
    previous_ = address;
    strays_ = false;
  }

  bool Close() {
    const bool is_run = length_ >= kShortestRun;
    for (std::size_t i = 1; is_run && i < length_; ++i) {
      inside_[first_ + i] = true;
    }
    if (is_run && strays_) {
      stray_places_.push_back(first_ + 1);
    }
    length_ = 0;
    return is_run;
  }

  std::vector<bool> inside_;
  std::size_t first_ = 0;
  std::size_t length_ = 0;
  std::uint32_t previous_ = 0;
  bool broke_off_ = false;  // the previous register ended a block
  bool strays_ = false;     // the row starts with such a register
  std::vector<std::size_t> stray_places_;
};

class Checker {
 public:
  explicit Checker(ListText list) { checked_.list = std::move(list); }

  CheckedRegisterList Check() {
    // Invalid lines may hide entries, even the first one.
    const bool whole = checked_.list.problems.empty();
    for (const ListEntry& entry : checked_.list.entries) {
      CheckNumbers(entry);
      CheckPlace(entry, whole);
    }
    if (!marks_.empty()) {
      Problem(marks_.front().line, "no register follows this delay value: it has no effect");
    }
    if (whole && checked_.registers == 0) {
      Problem(0, "the list has no register");
    }
    CheckRows();
    SortByLine(checked_.list.problems);
    SortByLine(checked_.list.remarks);
    return std::move(checked_);
  }

 private:
  void CheckNumbers(const ListEntry& entry) {
    if (entry.address > kHighestAddress) {
      Problem(entry.line, Format("address {} has more than 16 bits", Hex(entry.address)));
    }
    if (entry.address == kPauseMarker) {
      if (const std::string problem = PauseProblem(entry); !problem.empty()) {
        Problem(entry.line, problem);
      }
    } else if (entry.value > kHighestValue) {
      Problem(entry.line, Format("value {} has more than 8 bits", Hex(entry.value)));
    }
  }

  void CheckPlace(const ListEntry& entry, bool whole) {
    if (entry.address == kPauseMarker) {
      if (checked_.registers > 0) {
        Remark(entry.line,
               "this pause is made before the first register is written, not here: put registers "
               "that must wait into a separate list");
      }
      return;
    }
    if (!opened_) {
      opened_ = true;
      if (whole && entry.address != kFirstDelayMarker) {
        const bool for_i2c = entry.address == kSlaveMarker;
        Problem(
            entry.line,
            Format(
                "a register list begins with 0xfffd, this one with {}{}: nothing would be written",
                Hex(entry.address, kAddressDigits), for_i2c ? ", as I2C lists do" : ""));
      }
    }
    if (IsDelay(entry.address)) {
      marks_.push_back(entry);
      return;
    }
    ++checked_.registers;
    rows_.Add(entry.address);
    lines_.push_back(entry.line);
    marks_before_.push_back(marks_.empty() ? 0 : marks_.front().line);
    marks_.clear();
  }

  void CheckRows() {
    rows_.End();
    const std::vector<bool>& inside = rows_.Inside();
    for (std::size_t i = 0; i < inside.size(); ++i) {
      if (inside[i] && marks_before_[i] != 0) {
        Remark(marks_before_[i],
               "delay values inside 21 or more registers in a row are ignored: put the rest of the "
               "row into a separate list");
      }
    }
    for (const std::size_t place : rows_.Strays()) {
      Problem(lines_[place],
              "register 0x1 after the register that ends 21 or more in a row counts as the next of "
              "that row: these values would go to other registers; put these lines into a separate "
              "list");
    }
  }

  void Problem(std::uint64_t line, std::string text) {
    checked_.list.problems.push_back({line, std::move(text)});
  }
  void Remark(std::uint64_t line, std::string text) {
    checked_.list.remarks.push_back({line, std::move(text)});
  }

  CheckedRegisterList checked_;
  bool opened_ = false;
  std::vector<ListEntry> marks_;             // since the last register
  std::vector<std::uint64_t> marks_before_;  // for each register: the line of its first mark, or 0
  std::vector<std::uint64_t> lines_;         // for each register: its line
  Rows rows_;
};

std::string PageLines(std::uint32_t address) {
  return Format("{}\n{}\n",
                ListLine(kFirstDelayMarker, address >> 24U, kAddressDigits, kByteDigits),
                ListLine(kSecondDelayMarker, address >> 16U & 0xFFU, kAddressDigits, kByteDigits));
}

}  // namespace

CheckedRegisterList CheckRegisterList(std::string_view text) {
  return Checker(ReadListText(text)).Check();
}

std::vector<bool> InsideBlocks(const std::vector<ListEntry>& entries) {
  Rows rows;
  for (const ListEntry& entry : entries) {
    if (!IsDelay(entry.address) && entry.address != kPauseMarker) {
      rows.Add(entry.address);
    }
  }
  rows.End();
  return rows.Inside();
}

std::string RegisterListText(const std::vector<ListEntry>& entries) {
  std::string text;
  for (const ListEntry& entry : entries) {
    text += Format("{}\n", ListLine(entry.address, entry.value, kAddressDigits, kByteDigits));
  }
  return text;
}

std::string RegisterDumpText(const Range& range, std::span<const std::uint32_t> values) {
  std::string text = PageLines(range.first);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto register_address = static_cast<std::uint32_t>((range.first & kHighestAddress) + i);
    const std::string line =
        Format("{}\n", ListLine(register_address, values[i], kAddressDigits, kByteDigits));
    text +=
        IsMarker(register_address) ? Format("// no list can write this register: {}", line) : line;
  }
  return text;
}

std::string WideRegisterDumpText(const Range& range, std::span<const std::uint32_t> values) {
  std::string text =
      "// 32-bit registers; a list can't contain them, so this can't be loaded back\n";
  for (std::size_t i = 0; i < values.size(); ++i) {
    text += Format("{} {}\n", Hex(range.first + i, kAddressDigits), Hex(values[i], kWideDigits));
  }
  return text;
}

}  // namespace borvanusb
