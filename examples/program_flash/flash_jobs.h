#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// When to give up: at a moment, or when the user asks for it with Ctrl-C.
class Patience {
 public:
  // Counts from now on, and takes over Ctrl-C.
  explicit Patience(std::chrono::seconds time_limit);

  // Waits for the time between two polls. Throws Failure (kTimeLimit, kInterrupted); doing: what
  // the message says was going on.
  void WaitABit(const std::string& doing) const;

 private:
  std::chrono::seconds time_limit_;
  std::chrono::steady_clock::time_point end_;
};

// Programs the image file and waits for the end of the job. A camera must be open in an instance
// on which no job ran. Returns the seconds it took; throws Failure.
double ProgramFlash(const std::string& image_file, std::uint32_t address, const Patience& patience);

// Dumps `size` flash bytes, 1 or more, and waits until the file is whole and closed. A camera must
// be open in an instance on which no job ran, and there must be no file by that name. Returns the
// seconds it took; throws Failure.
double DumpFlash(const std::string& dump_file, std::uint32_t address, std::uint32_t size,
                 const Patience& patience);
