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

// Content for some sectors, which must outlive it.
struct Content {
  const SectorSet* sectors = nullptr;
  std::span<const std::uint8_t> bytes;

  std::span<const std::uint8_t> At(const Range& range) const {
    return sectors->PartOf(bytes, range);
  }
};

// Sectors that hold bytes which the change does not name, and how they are kept safe.
struct SharedSectors {
  std::vector<std::uint32_t> addresses;
  WorkJournal* journal = nullptr;  // begun; null where there is no shared sector
  Content original;                // what they held
  // Those whose bytes come from another journal: they are written first, since until then that
  // journal alone holds them.
  std::map<std::uint32_t, JournalStore::Entry> taken_over;
};

// What was read back in place of what was written.
struct Mismatch {
  Ranges wrong;
  std::uint32_t first = 0;  // of the wrong bytes
  std::uint8_t found = 0;   // there
  std::uint8_t wanted = 0;
};

// "17 bytes differ from what was written"
std::string DifferenceText(const Ranges& wrong);
// Throws Failure kVerify.
[[noreturn]] void FailVerify(const Mismatch& mismatch);

// Writes and reads back whole sectors, and keeps the state told.
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

  // Whether the user's wish to stop ends the work between two blocks.
  enum class StopWish { kHeed, kIgnore };

  // Erases and writes the runs of sectors, under one bar; `by_words`, of the runs, are not erased:
  // their words are written as they are. Each other shared one goes by itself: into the journal,
  // erased, written, read back, out of the journal. Throws Failure as the camera does, kStopped
  // between two blocks when the user asked to stop and that is heeded, and kVerify for a shared
  // sector that came out wrong twice. Returns the sectors that need no further reading: those that
  // were read back after everything else was written.
  Ranges Write(const Ranges& runs, const Content& content,
               const std::vector<WordSector>& by_words = {}, StopWish wish = StopWish::kHeed);

  // Reads the runs back under one bar and compares them with the content.
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
  std::uint64_t told_ = 0;  // the most that the bar was told
};

// The sectors that some bytes lie in.
Ranges SectorsOf(const Ranges& bytes);

}  // namespace borvanusb
