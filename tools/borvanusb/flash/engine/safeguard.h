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

// The common work before and after every change of the flash: earlier journals, the backup, and the
// change's own journal.

// The user's journals for this kind of camera. Journals of cameras that another process is working
// with are skipped. Throws Failure kFile.
std::vector<JournalStore::Entry> JournalsInReach(const JournalStore& store, Host& host,
                                                 const CameraIdentity& camera);

// Writes a backup. Never replaces an existing file. Throws Failure kFile.
BackupRecord WriteBackup(const std::string& file, std::uint32_t address,
                         std::span<const std::uint8_t> bytes);
// Writes a backup of bytes with gaps as an Intel HEX file, or of bytes without gaps as raw bytes.
BackupRecord WriteBackup(const std::string& file, const std::vector<PlacedBytes>& parts);

// The path of a generated name, without extension:
// "image-backup-1234-0001-5e8a9c01-0x00003000-TIME", beside `neighbour`. A number is added if the
// file exists.
std::string BackupName(const std::string& neighbour, const CameraIdentity& camera,
                       std::uint32_t address, const Host& host,
                       const std::string& extension = "bin");

// The records of the sectors from the first to the last of `changes`. `before` and `after` are the
// content of `sectors`.
std::vector<SectorRecord> RecordSectors(const SectorSet& sectors, const Ranges& changes,
                                        std::span<const std::uint8_t> before,
                                        std::span<const std::uint8_t> after);

// Updates journals before a change starts: it will overwrite their open sector without using the
// bytes in the journal. The journals in `misplaced` lose their path. `after` is the target content
// of `sectors`.
void ReleaseSectors(const JournalStore& store, const Recovery& recovery, const Ranges& changes,
                    const SectorSet& sectors, std::span<const std::uint8_t> after);

// Updates the journals of this kind of camera before a change starts, because it may be
// interrupted. `changes` are whole sectors; `before` and `after` are the content of `sectors`.
// Journals with other paths are also updated, because they may belong to this camera.
void FollowInJournals(const JournalStore& store, const Ranges& changes, const SectorSet& sectors,
                      std::span<const std::uint8_t> before, std::span<const std::uint8_t> after);

}  // namespace borvanusb
