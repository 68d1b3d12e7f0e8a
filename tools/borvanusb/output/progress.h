#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvanusb {

// What a bulk operation counts.
enum class ProgressUnit { kBytes, kRegisters, kEntries, kSlaves, kTests, kMeasurements };

// A unit's name, of several.
constexpr std::string_view NameOf(ProgressUnit unit) {
  switch (unit) {
    case ProgressUnit::kBytes:
      return "bytes";
    case ProgressUnit::kRegisters:
      return "registers";
    case ProgressUnit::kEntries:
      return "entries";
    case ProgressUnit::kSlaves:
      return "slaves";
    case ProgressUnit::kTests:
      return "tests";
    case ProgressUnit::kMeasurements:
      return "measurements";
  }
  return "";
}

// What a user sees of a bulk operation, on standard error. Nothing ever runs backwards within a
// stage's total, or beyond it.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  virtual ~Progress() = default;

  // Opens a bar: `total` units, 0 done. Ends the one before, if still open.
  virtual void Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) = 0;
  void Begin(std::string_view stage, std::uint64_t total) {
    Begin(stage, total, ProgressUnit::kBytes);
  }
  // Renames the open bar's stage, as when erasing and programming take turns.
  virtual void Stage(std::string_view stage) = 0;
  // Units done so far; what is less than before counts as before.
  virtual void Advance(std::uint64_t done) = 0;
  // Closes the bar as complete.
  virtual void Done() = 0;
  // Closes the bar where it stands, so that other text can follow.
  virtual void Break() = 0;
  // Takes an open bar off its line until it is drawn again, so that a line can be written there.
  virtual void Hide() {}
};

}  // namespace borvanusb
