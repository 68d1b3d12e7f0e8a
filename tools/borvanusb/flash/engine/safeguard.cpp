#include "flash/engine/safeguard.h"

#include <algorithm>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/sha256.h"
#include "base/time_text.h"
#include "images/intel_hex.h"

namespace borvanusb {

namespace {

constexpr int kAddressDigits = 8;

// A file name with its folder, without its extension.
std::string StemOf(const std::string& file) {
  const std::size_t slash = file.find_last_of("/\\");
  const std::size_t start = slash == std::string::npos ? 0 : slash + 1;
  const std::size_t point = file.find_last_of('.');
  return point == std::string::npos || point <= start ? file : file.substr(0, point);
}

// Writes a backup, unless the file already has this content.
BackupRecord KeepFile(const std::string& file, BackupRecord record,
                      std::span<const std::uint8_t> bytes) {
  const std::string& name = record.file;
  if (FileExists(name)) {
    // A run that was interrupted just after writing its backup has left this file.
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
  return KeepFile(file, {AbsoluteName(file), address, bytes.size(), Sha256(bytes)}, bytes);
}

BackupRecord WriteBackup(const std::string& file, const std::vector<PlacedBytes>& parts) {
  if (parts.size() == 1) {
    return WriteBackup(file, parts.front().address, parts.front().bytes);
  }
  BackupRecord record{.file = AbsoluteName(file), .address = parts.front().address, .sha256 = {}};
  Segments segments;
  for (const PlacedBytes& part : parts) {
    segments.push_back({part.address, {part.bytes.begin(), part.bytes.end()}});
    record.ranges.push_back(part.Place());
  }
  record.size = std::uint64_t{record.ranges.back().last} - record.address + 1;
  const std::string text = IntelHexText(segments);
  const std::vector<std::uint8_t> bytes(text.begin(), text.end());
  record.sha256 = Sha256(bytes);
  return KeepFile(file, std::move(record), bytes);
}

std::string BackupName(const std::string& neighbour, const CameraIdentity& camera,
                       std::uint32_t address, const Host& host, const std::string& extension) {
  const std::string stem = Format("{}-backup-{}-{}-{}", StemOf(neighbour), CameraInFileName(camera),
                                  Hex(address, kAddressDigits), TimeInFileName(host.Now()));
  std::string name = Format("{}.{}", stem, extension);
  for (int i = 2; FileExists(name); ++i) {
    name = Format("{}-{}.{}", stem, i, extension);
  }
  return name;
}

std::vector<SectorRecord> RecordSectors(const SectorSet& sectors, const Ranges& changes,
                                        std::span<const std::uint8_t> before,
                                        std::span<const std::uint8_t> after) {
  std::vector<SectorRecord> records;
  if (changes.empty()) {
    return records;
  }
  const Range whole{changes.front().first, changes.back().last};
  for (const Range& run : Within(sectors.Runs(), whole)) {
    for (std::uint64_t address = run.first; address <= run.last; address += kSectorSize) {
      const auto first = static_cast<std::uint32_t>(address);
      const Range sector{first, first + (kSectorSize - 1)};
      records.push_back({first,
                         SectorDigest(sectors.PartOf(before, sector)),
                         SectorDigest(sectors.PartOf(after, sector)),
                         {}});
    }
  }
  return records;
}

void ReleaseSectors(const JournalStore& store, const Recovery& recovery, const Ranges& changes,
                    const SectorSet& sectors, std::span<const std::uint8_t> after) {
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
    if (IsIn(changes, sector)) {
      open->since.push_back(SectorDigest(sectors.PartOf(after, sector)));
      if (is_in(recovery.misplaced, entry.file)) {
        entry.journal.camera.clear();
      }
      store.Save(entry.file, entry.journal);
    }
  }
}

void FollowInJournals(const JournalStore& store, const Ranges& changes, const SectorSet& sectors,
                      std::span<const std::uint8_t> before, std::span<const std::uint8_t> after) {
  for (JournalStore::Entry& entry : store.Load()) {
    bool added = false;
    for (const Range& change : changes) {
      added |= FollowChange(entry.journal, {change.first, change.Size()},
                            sectors.PartOf(before, change), sectors.PartOf(after, change));
    }
    if (added) {
      store.Save(entry.file, entry.journal);
    }
  }
}

}  // namespace borvanusb
