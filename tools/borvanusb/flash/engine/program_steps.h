#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "camera/host.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/image.h"
#include "flash/engine/journal_store.h"
#include "flash/engine/recovery.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/sector_writer.h"
#include "flash/engine/work_journal.h"
#include "flash/engine/work_state.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

// The five steps of programming an image so that exactly its bytes change: Examine, Plan, Secure,
// Write, Verify. Each makes values from values; the camera, and the files of Secure, are the only
// things that a step changes. A step throws Failure; `site.state` then says what the flash holds.

// What the steps work with.
struct WorkSite {
  Camera& camera;
  Host& host;
  Output& output;      // remarks
  Progress& progress;  // bars
  const JournalStore& store;
  WorkState& state;
};

// What there is before anything changes.
struct FlashExamination {
  std::optional<std::uint64_t> flash_size;
  SectorSet sectors;              // that the image reaches into
  std::vector<std::uint8_t> now;  // what they hold
  Recovery recovery;              // what earlier changes that were cut off mean for them
  double seconds = 0;             // reading the sectors took

  // The content of the sectors before the change.
  Content Before() const { return {&sectors, recovery.before}; }
};

// Reads the sectors around the image and the journals. `flash_size` is the flash's size as far as
// it was told, `journal` the journal that counts where that is in doubt: a file, "none" or empty.
// Throws Failure kFile for an image beyond the flash's end and where a journal is in doubt.
FlashExamination Examine(const Image& image, const ToldSize& flash_size, const std::string& journal,
                         WorkSite& site);

// What will change.
struct ProgramPlan {
  SectorSet sectors;
  std::vector<std::uint8_t> after;    // what the sectors shall hold
  Ranges changes;                     // sectors that do not hold it yet
  std::vector<WordSector> by_words;   // those of them that need no erase
  std::vector<std::uint32_t> shared;  // those of them with bytes beside the image
  std::uint64_t transfers = 0;        // that writing and reading back take
  double expected_seconds = 0;        // for them

  Content After() const { return {&sectors, after}; }
};

ProgramPlan Plan(const Image& image, const FlashExamination& seen, bool verify);

// What keeps the old bytes while the flash changes.
struct Security {
  std::optional<BackupRecord> backup;
  std::unique_ptr<WorkJournal> journal;  // null where nothing needs one
  SharedSectors shared;                  // points into the examination
};

// Where the old bytes go: a file, a name made up beside the image, or nowhere.
struct BackupWish {
  bool wanted = true;
  std::string file;  // empty: a name made up
};

// Keeps the backup and begins the journal. `seen` must outlive the result.
Security Secure(const Image& image, const FlashExamination& seen, const ProgramPlan& plan,
                const BackupWish& wish, WorkSite& site);

// Erases and writes what changes. Returns the sectors that were read back after everything else
// was written.
Ranges Write(const ProgramPlan& plan, Security& security, WorkSite& site);

// Reads back what changed, `vouched` apart; writes once more what differs. Throws Failure kVerify
// when it still differs.
void Verify(const ProgramPlan& plan, Security& security, const Ranges& vouched, WorkSite& site);

// ---- How it ends

// The flash holds what it shall: removes the journals that nothing needs any more.
void FinishJournals(const FlashExamination& seen, Security& security, WorkSite& site);

// Writes the old bytes back. Returns what went wrong, as the end of a sentence; empty when they
// are back.
std::string RestoreOldBytes(const FlashExamination& seen, Security& security, WorkSite& site);

// A sector that a failure left open may be unharmed: then the journal need not hold its bytes, and
// no later run has to ask about it. Reads the camera, so not after one that does not answer.
void SettleOpenSector(const Image& image, Security& security, WorkSite& site);

}  // namespace borvanusb
