#include "flash/engine/safeguard.h"
#include "base/time_text.h"

#include <algorithm>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/sha256.h"

namespace borvanusb {

namespace {

constexpr int kAddressDigits = 8;

// A file's name without its extension, with the folder.
std::string StemOf(const std::string& file) {
  const std::size_t slash = file.find_last_of("/\\");
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t point = file.find_last_of('.');
  return point == std::string::npos || point <= start ? file : file.substr(0, point);
}

}  // namespace

std::vector<JournalStore::Entry> JournalsInReach(const JournalStore& store, Host& host,
                                                 const CameraIdentity& camera) {
  std::vector<JournalStore::Entry> entries = store.Load();
  std::erase_if(entries, [&](const JournalStore::Entry& entry) {
    const std::string& path = entry.journal.camera;
    return !path.empty() && path != camera.path && host.IsReservedElsewhere(path);
  });
  return entries;
}

BackupRecord WriteBackup(const std::string& file, std::uint32_t address,
                         std::span<const std::uint8_t> bytes) {
  const std::string name = AbsoluteName(file);
  BackupRecord record{name, address, bytes.size(), Sha256(bytes)};
  if (FileExists(name)) {
    // A run that was cut off right after it wrote its backup has left just this.
    if (Sha256(ReadWholeFile(name)) == record.sha256) {
      return record;
    }
    throw Failure(ExitCode::kFile,
                  Format("the backup: {} exists already and is not overwritten", file),
                  "Give another name with --backup, or omit it for an automatic name.");
  }
  try {
    WriteWholeFile(name, bytes);
  } catch (const Failure& failure) {
    throw Failure(failure.Code(), Format("the backup: {}", failure.Message()),
                  "Give another name with --backup, or make no backup with --no-backup.");
  }
  return record;
}

std::string BackupName(const std::string& neighbour, const CameraIdentity& camera,
                       std::uint32_t address, const Host& host) {
  const std::string stem = Format("{}-backup-{}-{}-{}", StemOf(neighbour), CameraInFileName(camera),
                                  Hex(address, kAddressDigits), TimeInFileName(host.Now()));
  std::string name = Format("{}.bin", stem);
  for (int i = 2; FileExists(name); ++i) {
    name = Format("{}-{}.bin", stem, i);
  }
  return name;
}

std::vector<SectorRecord> RecordSectors(const SectorSpan& sectors, const Ranges& changes,
                                        std::span<const std::uint8_t> before,
                                        std::span<const std::uint8_t> after) {
  std::vector<SectorRecord> records;
  if (changes.empty()) {
    return records;
  }
  for (std::uint64_t address = changes.front().first; address <= changes.back().last;
       address += kSectorSize) {
    const auto first = static_cast<std::uint32_t>(address);
    const Range sector{first, first + (kSectorSize - 1)};
    records.push_back({first,
                       SectorDigest(PartOf(before, sectors.address, sector)),
                       SectorDigest(PartOf(after, sectors.address, sector)),
                       {}});
  }
  return records;
}

void ReleaseSectors(const JournalStore& store, const Recovery& recovery, const Ranges& changes,
                    const SectorSpan& sectors, std::span<const std::uint8_t> after) {
  const auto is_in = [](const std::vector<JournalStore::Entry>& entries, const std::string& file) {
    return std::ranges::any_of(
        entries, [&](const JournalStore::Entry& entry) { return entry.file == file; });
  };
  for (JournalStore::Entry& entry : store.Load()) {
    std::optional<SharedSector>& open = entry.journal.open_sector;
    if (!open || is_in(recovery.used, entry.file)) {
      continue;
    }
    const Range sector{open->address, open->address + (kSectorSize - 1)};
    const bool changes_it = std::ranges::any_of(changes, [&](const Range& range) {
      return range.first <= sector.first && sector.last <= range.last;
    });
    if (changes_it) {
      open->since.push_back(SectorDigest(PartOf(after, sectors.address, sector)));
      if (is_in(recovery.misplaced, entry.file)) {
        entry.journal.camera.clear();
      }
      store.Save(entry.file, entry.journal);
    }
  }
}

void FollowInJournals(const JournalStore& store, const Ranges& changes, const SectorSpan& sectors,
                      std::span<const std::uint8_t> before, std::span<const std::uint8_t> after) {
  for (JournalStore::Entry& entry : store.Load()) {
    bool added = false;
    for (const Range& change : changes) {
      added |= FollowChange(entry.journal, {change.first, change.Size()},
                            PartOf(before, sectors.address, change),
                            PartOf(after, sectors.address, change));
    }
    if (added) {
      store.Save(entry.file, entry.journal);
    }
  }
}

}  // namespace borvanusb
