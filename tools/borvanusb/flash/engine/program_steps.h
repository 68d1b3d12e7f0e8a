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

// Programs an image in five steps so that only its bytes change: Examine, Plan, Secure, Write,
// Verify. Each step is a function from values to values, except for access to the camera and the
// files of Secure. A step throws Failure; then `site.state` has the state of the flash.

// The objects that the steps use.
struct WorkSite {
  Camera& camera;
  Host& host;
  Output& output;      // for remarks
  Progress& progress;  // for progress bars
  const JournalStore& store;
  WorkState& state;
};

// The state before anything changes.
struct FlashExamination {
  std::optional<std::uint64_t> flash_size;
  SectorSet sectors;              // that contain bytes of the image
  std::vector<std::uint8_t> now;  // their content
  Recovery recovery;              // effects of earlier interrupted changes
  double seconds = 0;             // time to read the sectors

  // The content of the sectors before the change.
  Content Before() const { return {&sectors, recovery.before}; }
};

// Reads the sectors around the image, and the journals. `flash_size` is the size if it was told.
// `journal` selects a journal if it is unclear which one applies: a file, "none" or empty. Throws
// Failure kFile if the image is beyond the flash's end, or if it is unclear whether a journal
// applies.
FlashExamination Examine(const Image& image, const ToldSize& flash_size, const std::string& journal,
                         WorkSite& site);

// The planned changes.
struct ProgramPlan {
  SectorSet sectors;
  std::vector<std::uint8_t> after;    // target content of the sectors
  Ranges changes;                     // sectors that differ from it
  std::vector<WordSector> by_words;   // changes that need no erase
  std::vector<std::uint32_t> shared;  // changes with other bytes beside the image
  std::uint64_t transfers = 0;        // for writing and reading back
  double expected_seconds = 0;        // for them

  Content After() const { return {&sectors, after}; }
};

ProgramPlan Plan(const Image& image, const FlashExamination& seen, bool verify);

// The copies of the old bytes, kept while the flash changes.
struct Security {
  std::optional<BackupRecord> backup;
  std::unique_ptr<WorkJournal> journal;  // null if none is needed
  SharedSectors shared;                  // refers to the examination
};

// Whether to make a backup, and its file.
struct BackupWish {
  bool wanted = true;
  std::string file;  // empty: a generated name beside the image
};

// Writes the backup and starts the journal. `seen` must outlive the result.
Security Secure(const Image& image, const FlashExamination& seen, const ProgramPlan& plan,
                const BackupWish& wish, WorkSite& site);

// Erases and writes the changes. Returns the sectors that need not be verified again, because they
// were read back after everything else was written.
Ranges Write(const ProgramPlan& plan, Security& security, WorkSite& site);

// Reads back the changes except `vouched`, and writes sectors that differ once more. Throws Failure
// kVerify if they still differ.
void Verify(const ProgramPlan& plan, Security& security, const Ranges& vouched, WorkSite& site);

// ---- End of the work

// After success: removes the journals that are no longer needed.
void FinishJournals(const FlashExamination& seen, Security& security, WorkSite& site);

// Writes the old bytes back. Returns an empty text on success, otherwise the problem as the end of
// a sentence.
std::string RestoreOldBytes(const FlashExamination& seen, Security& security, WorkSite& site);

// After a failure: if the open sector is intact, closes it in the journal, so that no later run has
// to ask about it. Reads the camera, so don't call it if the camera does not answer.
void SettleOpenSector(const Image& image, Security& security, WorkSite& site);

}  // namespace borvanusb
