#pragma once

// The cameras of the random sequences, with the known state of their flashes.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "base/files.h"
#include "flash/engine/camera_evidence.h"
#include "flash/engine/journal.h"
#include "flash/engine/sector_fate.h"
#include "flash_support.h"
#include "images/segments.h"

namespace borvanusb::tool_test {

constexpr std::size_t kFlash = 64 * kKibi;
inline const std::vector<std::string> kPorts = {R"(\\?\usb#vid_1234&pid_0001#port1)",
                                                R"(\\?\usb#vid_1234&pid_0001#port2)"};

// Not derived from std::exception, so that our code does not catch it, just as it can't catch a
// kill.
struct Killed {};

// A camera module with the known content of its flash.
struct Module {
  std::string name;
  std::shared_ptr<FakeChip> chip = std::make_shared<FakeChip>();
  Bytes truth;
  std::vector<std::uint8_t> limbo =
      std::vector<std::uint8_t>(kFlash, 0);  // named by a failed command

  Module(std::string module_name, Bytes flash) : name(std::move(module_name)), truth(flash) {
    chip->flash = std::move(flash);
  }
};

// A file to program.
struct SequenceImage {
  std::string name;
  std::uint32_t address = 0;
  Bytes bytes;        // without gaps
  Segments segments;  // what the file holds
};

// Cuts the bytes from `first` to before `end` out of the last piece, which must be longer.
inline void CutOut(Segments& segments, std::uint32_t first, std::uint32_t end) {
  const Segment last = segments.back();
  segments.back().bytes.resize(first);
  if (end < last.bytes.size()) {
    segments.push_back({last.address + end, {last.bytes.begin() + end, last.bytes.end()}});
  }
}

struct Statistics {
  std::uint64_t sequences = 0;
  std::uint64_t runs = 0;
  std::uint64_t done = 0;
  std::uint64_t cut = 0;
  std::uint64_t asked = 0;
  std::uint64_t asked_owner = 0;  // although it was the right camera at its port
  // Another camera has equal landmarks, and a content of the sector that an interruption can leave.
  std::uint64_t alike = 0;
};

// The unfinished sectors in the journals.
inline std::vector<SharedSector> OpenSectors(const std::vector<std::string>& journals) {
  std::vector<SharedSector> sectors;
  for (const std::string& file : journals) {
    if (auto open = ParseJournal(ReadWholeText(file)).open_sector) {
      sectors.push_back(std::move(*open));
    }
  }
  return sectors;
}

// Whether one of them contains this byte for this address.
inline bool IsKept(const std::vector<SharedSector>& sectors, std::size_t place, std::uint8_t byte) {
  return std::ranges::any_of(sectors, [&](const SharedSector& open) {
    return place >= open.address && place < open.address + std::size_t{kSectorSize} &&
           open.original[place - open.address] == byte;
  });
}

// Whether this flash can't be distinguished from the one of the journal.
inline bool LooksAlike(const Bytes& flash, const Journal& journal) {
  const bool agrees = std::ranges::all_of(journal.landmarks, [&](const Landmark& landmark) {
    std::uint32_t word = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      word = word << 8U | flash[landmark.address + i];
    }
    return AgreesWith(landmark, word);
  });
  const std::span<const std::uint8_t> found(flash.data() + journal.open_sector->address,
                                            kSectorSize);
  return agrees && CanBeLeftByCut(found, *journal.open_sector);
}

}  // namespace borvanusb::tool_test
