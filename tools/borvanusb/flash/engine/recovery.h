#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flash/engine/camera_evidence.h"
#include "flash/engine/journal.h"
#include "flash/engine/journal_store.h"
#include "flash/engine/sector_plan.h"

namespace borvanusb {

// What the journals mean for a change that is about to begin.

// A change, and what the flash holds where it goes.
struct RecoveryRequest {
  std::string camera;              // device path
  std::vector<PlacedBytes> named;  // the bytes that the change names, as they shall become
  std::string sha256;              // of these bytes
  SectorSet sectors;
  std::span<const std::uint8_t> now;  // the content of `sectors`, to be believed
  std::string choice;                 // --journal: a journal's file, "none", or empty
};

struct Recovery {
  // What the sectors hold once the bytes that a cut-off change took with it are put back.
  std::vector<std::uint8_t> truth;
  // The same with the old bytes of a change that was cut off and is now repeated: what a backup
  // holds, and what restoring writes.
  std::vector<std::uint8_t> before;
  // Journals whose shared sector is put back in `truth`.
  std::vector<JournalStore::Entry> used;
  // Journals that are done with once the sectors hold what they shall.
  std::vector<std::string> finished;
  // Journals with an open sector here, of this path, that are not of this camera as it is now.
  std::vector<JournalStore::Entry> misplaced;
  std::optional<BackupRecord> backup;  // of the change that is repeated; it stays
  std::vector<std::string> notes;      // for people
};

// Compares a journal's landmarks with the camera's flash; called for few journals.
using LandmarkCheck = std::function<Evidence(const Journal&)>;

// Throws Failure kFile where it can't be told whether the bytes in a journal are this camera's:
// neither keeping nor replacing the flash's bytes would be safe then. The hint's lines end with
// what must be added to the command line.
Recovery Recover(const RecoveryRequest& request, const std::vector<JournalStore::Entry>& journals,
                 const LandmarkCheck& landmarks);

}  // namespace borvanusb
