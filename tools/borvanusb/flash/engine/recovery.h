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

// Evaluates earlier journals before a new change starts.

// The new change, and the current content of its sectors.
struct RecoveryRequest {
  std::string camera;              // device path
  std::vector<PlacedBytes> named;  // bytes to change, with their new values
  std::string sha256;              // of these bytes
  SectorSet sectors;
  std::span<const std::uint8_t> now;  // verified content of `sectors`
  std::string choice;                 // value of --journal: a file, "none" or empty
};

struct Recovery {
  // The content of the sectors after restoring the bytes that an interrupted change destroyed.
  std::vector<std::uint8_t> truth;
  // The same, and if an interrupted change is now repeated, also with its old bytes. A backup
  // contains this, and restoring writes it.
  std::vector<std::uint8_t> before;
  // Journals whose shared sector is restored in `truth`.
  std::vector<JournalStore::Entry> used;
  // Journals that are no longer needed once the sectors have their new content.
  std::vector<std::string> finished;
  // Journals with this path and an open sector here that belong to another camera.
  std::vector<JournalStore::Entry> misplaced;
  std::optional<BackupRecord> backup;  // of the repeated change; it is kept
  std::vector<std::string> notes;      // for the user
};

// Compares a journal's landmarks with the camera's flash. Called only for a few journals.
using LandmarkCheck = std::function<Evidence(const Journal&)>;

// Throws Failure kFile if it is unclear whether the bytes in a journal belong to this camera,
// because then neither keeping nor replacing the bytes in the flash would be safe. The lines of the
// hint end with the option to add to the command line.
Recovery Recover(const RecoveryRequest& request, const std::vector<JournalStore::Entry>& journals,
                 const LandmarkCheck& landmarks);

}  // namespace borvanusb
