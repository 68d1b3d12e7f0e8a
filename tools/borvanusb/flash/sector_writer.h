#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "camera.h"
#include "flash/byte_ranges.h"
#include "flash/work_state.h"
#include "host.h"
#include "output/progress.h"

// Content for some sectors, and the address of its first byte.
struct Content {
  std::uint32_t address = 0;
  std::span<const std::uint8_t> bytes;

  std::span<const std::uint8_t> At(const Range& range) const {
    return PartOf(bytes, address, range);
  }
};

// Writes and reads back whole sectors, and keeps the state told.
class SectorWriter {
 public:
  SectorWriter(Camera& camera, Host& host, Progress& progress, WorkState& state)
      : camera_(camera), host_(host), progress_(progress), state_(state) {}

  // Whether the user's wish to stop ends the work between two blocks.
  enum class StopWish { kHeed, kIgnore };

  // Erases and writes the runs of sectors, under one bar. Throws Failure as the camera does, and
  // kStopped between two blocks when the user asked to stop and that is heeded.
  void Write(const Ranges& runs, const Content& content, StopWish wish = StopWish::kHeed);

  // Reads the runs back under one bar. Returns the bytes that differ from the content; `read` gets
  // each run and what was read of it.
  Ranges Compare(const Ranges& runs, const Content& content,
                 const std::function<void(const Range&, std::span<const std::uint8_t>)>& read);

 private:
  void WriteBlock(const Range& block, const Content& content, std::uint64_t done_before);

  Camera& camera_;
  Host& host_;
  Progress& progress_;
  WorkState& state_;
};

// The sectors that some bytes lie in.
Ranges SectorsOf(const Ranges& bytes);
