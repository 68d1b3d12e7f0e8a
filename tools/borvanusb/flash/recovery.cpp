#include "flash/recovery.h"

#include <algorithm>

#include "camera.h"
#include "failure.h"
#include "files.h"
#include "flash/sha256.h"

namespace {

using Bytes = std::span<const std::uint8_t>;

Range SectorAt(std::uint32_t address) {
  return {address, address + (kSectorSize - 1)};
}

bool IsIn(std::uint64_t address, std::uint64_t start, std::uint64_t end) {
  return address >= start && address < end;
}

// Whether a sector on its way to `target` can hold `found`: erasing sets bits that programming has
// not yet cleared.
bool MayBecome(Bytes found, Bytes target) {
  return std::ranges::equal(
      found, target, [](std::uint8_t now, std::uint8_t then) { return (now & then) == then; });
}

bool WasSeen(const UnfinishedWork& work, std::uint32_t sector, Bytes found) {
  return std::ranges::any_of(work.seen, [&](const SeenSector& seen) {
    return seen.address == sector && seen.sha256 == Sha256(found);
  });
}

class Judge {
 public:
  Judge(const RecoveryRequest& request, Recovery& recovery)
      : request_(request), recovery_(recovery) {}

  void Take(const UnfinishedWork& work) {
    const bool same =
        work.sha256 == request_.image.sha256 && work.address == request_.image.address;
    KeepForeignBackup(work, same);
    UnfinishedWork elsewhere = work;
    elsewhere.half_used.clear();
    bool used = false;
    for (const SectorRecord& record : work.half_used) {
      if (!request_.sectors.Holds(SectorAt(record.address))) {
        elsewhere.half_used.push_back(record);
      } else if (PutBack(work, record)) {
        used = true;
      }
    }
    if (!elsewhere.half_used.empty()) {
      recovery_.notes.push_back("the unfinished programming of " + work.image + " at " +
                                Hex(work.address) + " is left as it is; " + request_.journal_file +
                                " keeps what it needs");
      recovery_.carried.push_back(std::move(elsewhere));
    }
    if (same && work.backup) {
      TakeBackup(work, *work.backup, used);
    }
  }

 private:
  // Puts the bytes beside the work's image back. Returns whether any were lost.
  bool PutBack(const UnfinishedWork& work, const SectorRecord& record) {
    const Bytes found = PartOf(request_.now, request_.sectors.address, SectorAt(record.address));
    const std::uint64_t work_end = work.address + work.size;
    bool lost = false;
    bool lost_beside_image = false;
    for (std::uint64_t i = 0; i < kSectorSize; ++i) {
      const std::uint64_t address = record.address + i;
      if (!IsIn(address, work.address, work_end) && found[i] != record.original[i]) {
        lost = true;
        lost_beside_image =
            lost_beside_image || !IsIn(address, request_.image.address, request_.image.End());
      }
    }
    if (!lost) {
      return false;
    }
    const bool fits = MayBecome(found, record.planned) || MayBecome(found, record.original) ||
                      WasSeen(work, record.address, found);
    if (!fits) {
      if (lost_beside_image) {
        Refuse(work, "the sector " + Text(SectorAt(record.address)) +
                         " holds neither what was there before nor what was being written");
      }
      return false;
    }
    for (std::uint64_t i = 0; i < kSectorSize; ++i) {
      if (!IsIn(record.address + i, work.address, work_end)) {
        recovery_.before[record.address - request_.sectors.address + i] = record.original[i];
      }
    }
    recovery_.notes.push_back(
        "programming " + work.image + " was cut off; the bytes beside it in " +
        Text(SectorAt(record.address)) + " come from " + request_.journal_file);
    return true;
  }

  void TakeBackup(const UnfinishedWork& work, const BackupRecord& backup, bool bytes_were_lost) {
    if (!FileExists(backup.file)) {
      return;
    }
    const std::vector<std::uint8_t> bytes = ReadWholeFile(backup.file);
    const bool whole = bytes.size() == backup.size && !bytes.empty() &&
                       Sha256(bytes) == backup.sha256 && backup.address % kSectorSize == 0 &&
                       bytes.size() % kSectorSize == 0 &&
                       IsIn(backup.address, request_.sectors.address, request_.sectors.End()) &&
                       backup.address + bytes.size() <= request_.sectors.End();
    if (!whole) {
      return;
    }
    std::vector<std::uint8_t> before = recovery_.before;
    std::ranges::copy(bytes, before.begin() + (backup.address - request_.sectors.address));
    if (Fits(work, backup, before)) {
      recovery_.before = std::move(before);
      recovery_.backup = backup;
      return;
    }
    if (bytes_were_lost || request_.backup_file == backup.file) {
      Refuse(work, "the flash holds neither the bytes of its backup " + backup.file +
                       " nor those of the image");
    }
  }

  // Whether each sector of the backup holds its old bytes, its new ones, or something on the way.
  bool Fits(const UnfinishedWork& work, const BackupRecord& backup,
            const std::vector<std::uint8_t>& before) const {
    const std::vector<std::uint8_t> after = LayOver(request_.sectors, before, request_.image);
    for (std::uint64_t offset = 0; offset < backup.size; offset += kSectorSize) {
      const Range sector = SectorAt(static_cast<std::uint32_t>(backup.address + offset));
      const Bytes found = PartOf(request_.now, request_.sectors.address, sector);
      const Bytes old_bytes = PartOf(Bytes(before), request_.sectors.address, sector);
      const Bytes new_bytes = PartOf(Bytes(after), request_.sectors.address, sector);
      if (!MayBecome(found, new_bytes) && !MayBecome(found, old_bytes) &&
          !WasSeen(work, sector.first, found)) {
        return false;
      }
    }
    return true;
  }

  // A backup that another unfinished work may go back to is never replaced.
  void KeepForeignBackup(const UnfinishedWork& work, bool same) const {
    if (!same && work.backup && work.backup->file == request_.backup_file &&
        FileExists(work.backup->file)) {
      throw Failure(ExitCode::kFile,
                    "--backup: " + work.backup->file +
                        " holds the bytes from before the unfinished programming of " + work.image,
                    "Give the new backup another name.");
    }
  }

  [[noreturn]] void Refuse(const UnfinishedWork& work, const std::string& why) const {
    throw Failure(ExitCode::kFile,
                  request_.journal_file + " tells of an unfinished programming of " + work.image +
                      " at " + Hex(work.address) + " with this camera, but " + why,
                  "If this is another camera at the same place, or the flash was programmed "
                  "otherwise since, remove that file and run again. Else write its backup back" +
                      (work.backup ? ": " + work.backup->file + " at " + Hex(work.backup->address)
                                   : std::string()) +
                      ".");
  }

  const RecoveryRequest& request_;
  Recovery& recovery_;
};

}  // namespace

Recovery Recover(const RecoveryRequest& request, const std::vector<UnfinishedWork>& works) {
  Recovery recovery;
  recovery.before.assign(request.now.begin(), request.now.end());
  Judge judge(request, recovery);
  for (const UnfinishedWork& work : works) {
    judge.Take(work);
  }
  return recovery;
}

std::vector<SectorRecord> HalfUsedRecords(const Image& image, const SectorSpan& sectors,
                                          const Ranges& changes, Bytes before, Bytes after) {
  std::vector<SectorRecord> records;
  for (const std::uint32_t address : HalfUsedSectors(image.address, image.bytes.size())) {
    const Range sector = SectorAt(address);
    const bool changed = std::ranges::any_of(
        changes, [&](const Range& run) { return run.first <= address && address <= run.last; });
    if (changed) {
      const Bytes original = PartOf(before, sectors.address, sector);
      const Bytes planned = PartOf(after, sectors.address, sector);
      records.push_back(
          {address, {original.begin(), original.end()}, {planned.begin(), planned.end()}});
    }
  }
  return records;
}
