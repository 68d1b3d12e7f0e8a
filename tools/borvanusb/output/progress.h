#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// What a user sees of a bulk operation, on standard error. Nothing ever runs backwards within a
// stage's total, or beyond it.
class Progress {
 public:
  Progress() = default;
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  virtual ~Progress() = default;

  // Opens a bar: `total` units (bytes, mostly), 0 done. Ends the one before, if still open.
  virtual void Begin(std::string_view stage, std::uint64_t total) = 0;
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
