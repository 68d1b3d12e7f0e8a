#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/work_journal.h"
#include "flash/engine/work_state.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

// Content for some sectors. The data must outlive it.
struct Content {
  const SectorSet* sectors = nullptr;
  std::span<const std::uint8_t> bytes;

  std::span<const std::uint8_t> At(const Range& range) const {
    return sectors->PartOf(bytes, range);
  }
};

// Sectors that also contain bytes outside the change, and how these are protected.
struct SharedSectors {
  std::vector<std::uint32_t> addresses;
  WorkJournal* journal = nullptr;  // already begun; null if there are no shared sectors
  Content original;                // content before the change
  // Sectors whose bytes come from another journal. They are written first, because until then these
  // bytes exist only in that journal.
  std::map<std::uint32_t, JournalStore::Entry> taken_over;
};

// The result of a comparison that found differences.
struct Mismatch {
  Ranges wrong;
  std::uint32_t first = 0;  // first wrong address
  std::uint8_t found = 0;   // byte read at that address
  std::uint8_t wanted = 0;
};

// "17 bytes differ from what was written"
std::string DifferenceText(const Ranges& wrong);
// Throws Failure kVerify.
[[noreturn]] void FailVerify(const Mismatch& mismatch);

// Writes whole sectors, reads them back, and updates the state.
class SectorWriter {
 public:
  SectorWriter(Camera& camera, Host& host, Output& output, Progress& progress, WorkState& state,
               SharedSectors& shared)
      : camera_(camera),
        host_(host),
        output_(output),
        progress_(progress),
        state_(state),
        shared_(shared) {}

  // Whether a stop request ends the work between two blocks.
  enum class StopWish { kHeed, kIgnore };

  // Erases and writes the runs of sectors, with one progress bar. The sectors `by_words`, which are
  // part of the runs, are not erased; only their words are written. Each remaining shared sector is
  // handled separately: record it in the journal, erase, write, read back, remove it from the
  // journal. Throws Failure as the camera does, kStopped between two blocks if the user requested a
  // stop and `wish` is kHeed, and kVerify if a shared sector was wrong twice. Returns the sectors
  // that were read back after everything else was written and need not be read again.
  Ranges Write(const Ranges& runs, const Content& content,
               const std::vector<WordSector>& by_words = {}, StopWish wish = StopWish::kHeed);

  // Reads the runs with one progress bar, and compares them with the content.
  Mismatch Compare(const Ranges& runs, const Content& content);

 private:
  void WriteBlock(const Range& block, const Content& content);
  void WriteWords(const WordSector& sector, const Content& content);
  void WriteShared(const Range& sector, const Content& content);
  void HeedStop(StopWish wish) const;
  void Wrote(const Range& block, const Content& content);
  void Tell(std::uint64_t done);

  Camera& camera_;
  Host& host_;
  Output& output_;
  Progress& progress_;
  WorkState& state_;
  SharedSectors& shared_;
  std::uint64_t done_ = 0;  // bytes of the runs
  std::uint64_t told_ = 0;  // highest reported progress
};

// The sectors that contain these bytes.
Ranges SectorsOf(const Ranges& bytes);

}  // namespace borvanusb
