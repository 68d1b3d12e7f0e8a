#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace borvanusb {

// The unit of a bulk operation.
enum class ProgressUnit { kBytes, kRegisters, kEntries, kSlaves, kTests, kMeasurements };

// Returns the plural name of a unit.
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

// Shows the progress of a bulk operation on standard error. The number of units done never
// decreases and never exceeds the total.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  virtual ~Progress() = default;

  // Opens a bar with `total` units, of which 0 are done. Closes the previous bar if it is open.
  virtual void Begin(std::string_view stage, std::uint64_t total, ProgressUnit unit) = 0;
  void Begin(std::string_view stage, std::uint64_t total) {
    Begin(stage, total, ProgressUnit::kBytes);
  }
  // Changes the stage's name in the open bar, for example when erasing and programming alternate.
  virtual void Stage(std::string_view stage) = 0;
  // Sets the number of units done so far. A lower number than before is ignored.
  virtual void Advance(std::uint64_t done) = 0;
  // Closes the bar as complete.
  virtual void Done() = 0;
  // Closes the bar at its current state, so that other text can follow.
  virtual void Break() = 0;
  // Clears the line of an open bar, so that other text can be written there. The next drawing shows
  // the bar again.
  virtual void Hide() {}
};

}  // namespace borvanusb
