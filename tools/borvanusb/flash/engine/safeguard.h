#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "camera/host.h"
#include "flash/engine/journal.h"
#include "flash/engine/journal_store.h"
#include "flash/engine/recovery.h"

namespace borvanusb {

// What every change of the flash does before its first byte and after its last: earlier journals,
// the backup, a journal of its own.

// The user's journals of this kind of camera. Those of cameras that another process works with
// right now are left out. Throws Failure kFile.
std::vector<JournalStore::Entry> JournalsInReach(const JournalStore& store, Host& host,
                                                 const CameraIdentity& camera);

// Writes a backup; a file that is there is never replaced. Throws Failure kFile.
BackupRecord WriteBackup(const std::string& file, std::uint32_t address,
                         std::span<const std::uint8_t> bytes);
// The same for bytes with gaps between, as an Intel HEX file; without gaps as raw bytes.
BackupRecord WriteBackup(const std::string& file, const std::vector<PlacedBytes>& parts);

// The part of a path for names that nobody chose:
// "image-backup-1234-0001-5e8a9c01-0x00003000-TIME", beside `neighbour`, with a number where that
// exists.
std::string BackupName(const std::string& neighbour, const CameraIdentity& camera,
                       std::uint32_t address, const Host& host,
                       const std::string& extension = "bin");

// The records of the sectors from the first to the last of `changes`; both contents are those of
// `sectors`.
std::vector<SectorRecord> RecordSectors(const SectorSet& sectors, const Ranges& changes,
                                        std::span<const std::uint8_t> before,
                                        std::span<const std::uint8_t> after);

// Brings journals in step with a change that is about to begin: an open sector of theirs that it
// writes without its bytes coming from there. Those of this place, `misplaced`, lose it. `after` is
// what `sectors` shall hold.
void ReleaseSectors(const JournalStore& store, const Recovery& recovery, const Ranges& changes,
                    const SectorSet& sectors, std::span<const std::uint8_t> after);

// Brings the journals of this kind of camera in step with a change that is about to begin, and may
// be cut off: `changes` are whole sectors, `before` and `after` the content of `sectors`. The
// journals of other places may be this camera's as well.
void FollowInJournals(const JournalStore& store, const Ranges& changes, const SectorSet& sectors,
                      std::span<const std::uint8_t> before, std::span<const std::uint8_t> after);

}  // namespace borvanusb
