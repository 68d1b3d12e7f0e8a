#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "flash/image.h"
#include "flash/journal.h"
#include "flash/sector_plan.h"

// What the sectors around an image hold once bytes that a cut-off process took with it are put back
// from its journal.
struct Recovery {
  std::vector<std::uint8_t> before;     // the sectors' true content
  std::vector<UnfinishedWork> carried;  // works whose bytes belong to other sectors: still to keep
  std::optional<BackupRecord> backup;   // of the same work, made when it began, and still good
  std::vector<std::string> notes;       // what was done and why, for people
};

// What is being programmed, and what the camera holds now.
struct RecoveryRequest {
  const Image& image;
  SectorSpan sectors;
  std::span<const std::uint8_t> now;  // the content of `sectors`
  std::string backup_file;            // where a backup is asked for; empty: a name of its own
  std::string journal_file;           // for messages
};

// Judges each unfinished work of the journal by what the flash holds. Throws Failure kFile when it
// can't be told whether the bytes in the journal are this camera's: neither keeping nor replacing
// the flash's bytes would be safe then.
Recovery Recover(const RecoveryRequest& request, const std::vector<UnfinishedWork>& works);

// What the journal must say of the work that is about to begin: the half-used sectors among those
// that change.
std::vector<SectorRecord> HalfUsedRecords(const Image& image, const SectorSpan& sectors,
                                          const Ranges& changes,
                                          std::span<const std::uint8_t> before,
                                          std::span<const std::uint8_t> after);
