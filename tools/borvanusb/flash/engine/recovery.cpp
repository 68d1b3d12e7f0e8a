#include "flash/engine/recovery.h"

#include <algorithm>
#include <map>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/sha256.h"
#include "flash/engine/sector_fate.h"
#include "images/intel_hex.h"

namespace borvanusb {

namespace {

using Bytes = std::span<const std::uint8_t>;
using Entry = JournalStore::Entry;

const std::string kNoJournal = "none";
// An interruption can leave at most the sectors of one block half done.
constexpr std::uint64_t kSectorsOfABlock = 30;

Ranges PlacesOfNamed(const std::vector<PlacedBytes>& named) {
  Ranges places;
  for (const PlacedBytes& bytes : named) {
    places.push_back(bytes.Place());
  }
  return places;
}

// The page of the workbench finds journals by this text and the sentences around it
// (workbench/page/src/model/journals.ts): change both together.
std::string WorkText(const Journal& journal) {
  return Format("the unfinished {}{} at {}, started {}", journal.command,
                journal.image.empty() ? "" : Format(" of {}", journal.image),
                RangesText(NamedBy(journal)), journal.begun);
}

class Judge {
 public:
  Judge(const RecoveryRequest& request, const LandmarkCheck& landmarks)
      : request_(request), landmarks_(landmarks), named_(PlacesOfNamed(request.named)) {
    recovery_.truth.assign(request.now.begin(), request.now.end());
  }

  Recovery Take(const std::vector<Entry>& journals) {
    CheckChoice(journals);
    for (const Entry& entry : journals) {
      TakeOpenSector(entry);
    }
    for (const auto& [address, entries] : candidates_) {
      PutBack(address, entries);
    }
    recovery_.before = recovery_.truth;
    for (const Entry& entry : journals) {
      TakeBackup(entry);
    }
    if (!chosen_.empty()) {
      // The user's choice of a journal may be wrong, so the backup keeps the sector's current
      // content.
      const Range sector = SectorAt(chosen_address_);
      Lay(request_.sectors.PartOf(request_.now, sector), sector, recovery_.before);
      recovery_.backup.reset();
    }
    return std::move(recovery_);
  }

 private:
  // Copies a sector's bytes into the content of the sectors.
  void Lay(Bytes bytes, const Range& sector, std::vector<std::uint8_t>& content) const {
    std::ranges::copy(bytes, request_.sectors.PartOf(std::span(content), sector).begin());
  }

  void CheckChoice(const std::vector<Entry>& journals) {
    if (request_.choice.empty() || request_.choice == kNoJournal) {
      return;
    }
    for (const Entry& entry : journals) {
      const Journal& journal = entry.journal;
      if (SameFile(entry.file, request_.choice) && journal.open_sector &&
          request_.sectors.Holds(SectorAt(journal.open_sector->address))) {
        chosen_ = entry.file;
        chosen_address_ = journal.open_sector->address;
        return;
      }
    }
    throw Failure(
        ExitCode::kUsage,
        Format("--journal: {} is not a journal with bytes for these sectors of this kind of camera",
               request_.choice),
        "Give the file that the message named, or none.");
  }

  void TakeOpenSector(const Entry& entry) {
    const Journal& journal = entry.journal;
    if (!journal.open_sector) {
      return;
    }
    const SharedSector& open = *journal.open_sector;
    const Range sector = SectorAt(open.address);
    const bool same_path = journal.camera == request_.camera;
    if (!request_.sectors.Holds(sector)) {
      if (same_path) {
        recovery_.notes.push_back(Format("{}, stays unfinished; {} holds the bytes beside it in {}",
                                         WorkText(journal), entry.file, Text(sector)));
      }
      return;
    }
    if (entry.file == chosen_) {
      candidates_[open.address] = {entry};
      return;
    }
    if (open.address == chosen_address_ && !chosen_.empty()) {
      return;
    }
    const Bytes found = request_.sectors.PartOf(request_.now, sector);
    switch (FateOf(found, open, NamedBy(journal))) {
      case SectorFate::kUnharmed:
        Misplace(entry, same_path);
        break;
      case SectorFate::kOnItsWay:
        TakeHarmed(entry, same_path);
        break;
      case SectorFate::kEither:
        TakeEither(entry, same_path);
        break;
      case SectorFate::kOtherwise:
        TakeOtherwise(entry, same_path);
        break;
    }
  }

  void Misplace(const Entry& entry, bool same_path) {
    if (same_path) {
      recovery_.misplaced.push_back(entry);
    }
  }

  SameCamera Identity(const Journal& journal) const {
    return Weigh(CompareSectors(journal, request_.sectors, request_.now) + landmarks_(journal));
  }

  // Handles a sector in a state that the interruption can have caused.
  void TakeHarmed(const Entry& entry, bool same_path) {
    // --journal none answers the question in doubtful cases. If there is no doubt, the journal is
    // used anyway.
    const bool none = request_.choice == kNoJournal;
    const SameCamera identity = Identity(entry.journal);
    const std::uint32_t address = entry.journal.open_sector->address;
    const bool is_covered = IsIn(named_, SectorAt(address));
    if (identity == SameCamera::kYes || (identity == SameCamera::kUnknown && same_path && !none)) {
      candidates_[address].push_back(entry);
    } else if (none || is_covered) {
      Misplace(entry, same_path);
    } else if (same_path) {
      Ask(entry, "the rest of this flash differs from that camera's");
    } else if (identity == SameCamera::kUnknown) {
      Ask(entry, "the rest of this flash is blank");
    }
  }

  // Handles content that the interruption can have caused, but that a later change also wrote, to
  // this camera or another.
  void TakeEither(const Entry& entry, bool same_path) {
    const std::uint32_t address = entry.journal.open_sector->address;
    const bool asks = request_.choice != kNoJournal && !IsIn(named_, SectorAt(address)) &&
                      Identity(entry.journal) != SameCamera::kNo;
    if (asks) {
      Ask(entry, Format("the sector {} contains data of a later change, which the interruption may "
                        "also have left",
                        Text(SectorAt(address))));
    }
    Misplace(entry, same_path);
  }

  // Handles content that the interruption can't have caused. Something else wrote it, to this
  // camera or another one, or a power failure had an effect that no data sheet describes.
  void TakeOtherwise(const Entry& entry, bool same_path) {
    const std::uint32_t address = entry.journal.open_sector->address;
    if (!same_path) {
      return;
    }
    const bool asks = request_.choice != kNoJournal && !IsIn(named_, SectorAt(address)) &&
                      Identity(entry.journal) != SameCamera::kNo;
    if (asks) {
      Ask(entry, Format("the sector {} contains neither the old nor the new data",
                        Text(SectorAt(address))));
    }
    Misplace(entry, same_path);
  }

  void PutBack(std::uint32_t address, const std::vector<Entry>& entries) {
    const Entry* const rival = RivalIn(entries);
    if (rival != nullptr && request_.choice == kNoJournal) {
      for (const Entry& entry : entries) {
        Misplace(entry, entry.journal.camera == request_.camera);
      }
      return;
    }
    const Entry& entry = Best(entries);
    if (rival != nullptr) {
      Ask(entry, Format("{} may be this camera's as well", rival->file));
    }
    const Range sector = SectorAt(address);
    Lay(entry.journal.open_sector->original, sector, recovery_.truth);
    if (IsIn(named_, sector)) {
      recovery_.finished.push_back(entry.file);
      return;
    }
    recovery_.used.push_back(entry);
    recovery_.notes.push_back(Format("{}, was interrupted; the bytes beside it in {} come from {}",
                                     WorkText(entry.journal), Text(sector), entry.file));
  }

  // The journal with this camera's path, otherwise the first one that has a path.
  const Entry& Best(const std::vector<Entry>& entries) const {
    const Entry* best = &entries.front();
    for (const Entry& entry : entries) {
      const bool here = entry.journal.camera == request_.camera;
      if ((here && best->journal.camera != request_.camera) ||
          (best->journal.camera.empty() && !entry.journal.camera.empty())) {
        best = &entry;
      }
    }
    return *best;
  }

  // A journal with other bytes than the best one. Then it is unclear which of the two applies,
  // unless one of them has lost its path.
  const Entry* RivalIn(const std::vector<Entry>& entries) const {
    const Entry& best = Best(entries);
    const auto rival = std::ranges::find_if(entries, [&](const Entry& entry) {
      return &entry != &best &&
             entry.journal.open_sector->original != best.journal.open_sector->original &&
             (best.journal.camera.empty() || !entry.journal.camera.empty());
    });
    return rival != entries.end() ? &*rival : nullptr;
  }

  bool IsSameWork(const Journal& journal) const {
    return journal.sha256 == request_.sha256 && NamedBy(journal) == named_;
  }

  bool IsUsed(const Entry& entry) const {
    return std::ranges::any_of(recovery_.used,
                               [&](const Entry& used) { return used.file == entry.file; });
  }

  void TakeBackup(const Entry& entry) {
    const Journal& journal = entry.journal;
    const bool is_here = journal.camera == request_.camera || IsUsed(entry);
    if (!is_here || !IsSameWork(journal) || request_.choice == kNoJournal) {
      return;
    }
    if (!journal.open_sector) {
      recovery_.finished.push_back(entry.file);
    }
    if (journal.backup && !recovery_.backup) {
      TryBackup(journal, *journal.backup);
    }
  }

  void TryBackup(const Journal& journal, const BackupRecord& backup) {
    const Ranges places = PlacesOf(backup);
    const bool is_here = std::ranges::all_of(places, [&](const Range& place) {
      return place.first % kSectorSize == 0 && place.Size() % kSectorSize == 0 &&
             request_.sectors.Holds(place);
    });
    if (!is_here || !FileExists(backup.file)) {
      return;
    }
    const std::vector<std::uint8_t> bytes = ReadWholeFile(backup.file);
    if (Sha256(bytes) == backup.sha256) {
      const Segments old_bytes = BackupBytes(backup, bytes);
      if (PlacesOf(old_bytes) == places) {
        UseBackup(journal, backup, old_bytes);
      }
    }
  }

  static Segments BackupBytes(const BackupRecord& backup, Bytes file) {
    if (backup.ranges.empty()) {
      return {{backup.address, {file.begin(), file.end()}}};
    }
    return ReadIntelHex(file).segments;
  }

  enum class SectorState { kOld, kNew, kHalf, kOther };

  // The target content of a sector: the new bytes, and the old content for the rest.
  std::vector<std::uint8_t> NewBytes(const Range& sector, Bytes old_bytes) const {
    std::vector<std::uint8_t> bytes(old_bytes.begin(), old_bytes.end());
    for (const PlacedBytes& named : request_.named) {
      for (const Range& part : Within({named.Place()}, sector)) {
        std::ranges::copy(PartOf(named.bytes, named.address, part),
                          PartOf(std::span(bytes), sector.first, part).begin());
      }
    }
    return bytes;
  }

  SectorState StateOf(const Journal& journal, const SectorRecord& record, Bytes old_bytes) const {
    const Range sector = SectorAt(record.address);
    const Bytes found = request_.sectors.PartOf(Bytes(recovery_.truth), sector);
    const std::string digest = SectorDigest(found);
    if (std::ranges::equal(found, old_bytes)) {
      return SectorState::kOld;
    }
    if (digest == record.after || digest == record.now) {
      return SectorState::kNew;
    }
    const std::vector<std::uint8_t> new_bytes = NewBytes(sector, old_bytes);
    if (IsHalfCleared(found, old_bytes, new_bytes)) {
      return SectorState::kHalf;
    }
    if (!IsIn(named_, sector)) {
      const bool is_open = journal.open_sector && journal.open_sector->address == record.address;
      return is_open && CanBeLeftByCut(found, *journal.open_sector) ? SectorState::kHalf
                                                                    : SectorState::kOther;
    }
    return IsHalfErased(found, old_bytes) || IsHalfProgrammed(found, new_bytes)
               ? SectorState::kHalf
               : SectorState::kOther;
  }

  // Checks each sector: if its content comes from the interrupted change, its old bytes are taken
  // from the backup. If something else has written it since, its content is kept.
  void UseBackup(const Journal& journal, const BackupRecord& backup, const Segments& backup_bytes) {
    std::vector<std::uint8_t> before = recovery_.before;
    Ranges half;
    std::uint64_t known = 0;
    std::uint64_t other = 0;
    for (const SectorRecord& record : journal.sectors) {
      const Range sector = SectorAt(record.address);
      const auto segment = std::ranges::find_if(
          backup_bytes, [&](const Segment& part) { return IsIn({part.Place()}, sector); });
      if (segment == backup_bytes.end()) {
        continue;
      }
      const Bytes old_bytes = PartOf(Bytes(segment->bytes), segment->address, sector);
      const SectorState state = StateOf(journal, record, old_bytes);
      if (state == SectorState::kHalf) {
        AppendRange(half, sector);
      }
      ++(state == SectorState::kOther ? other : known);
      if (state != SectorState::kOther) {
        Lay(old_bytes, sector, before);
      }
    }
    const bool fits_a_cut =
        half.empty() ||
        (std::uint64_t{half.back().last} - half.front().first) / kSectorSize < kSectorsOfABlock;
    if (!fits_a_cut || known == 0 || other * 3 > known ||
        Weigh(landmarks_(journal)) == SameCamera::kNo) {
      return;  // belongs to another camera
    }
    recovery_.before = std::move(before);
    if (other == 0) {
      recovery_.backup = backup;
    } else {
      recovery_.notes.push_back(
          Format("the backup from before the interruption is also kept: {}", backup.file));
    }
  }

  [[noreturn]] static void Ask(const Entry& entry, const std::string& why) {
    throw Failure(
        ExitCode::kFile,
        Format("{} belongs to {}, and it is unknown whether that was this camera: {}", entry.file,
               WorkText(entry.journal), why),
        Format("If it was this camera, and nothing was programmed there since, add --journal {}: "
               "the bytes beside the image come from it.\n"
               "Otherwise add --journal none: the sector keeps the bytes it holds, and the journal "
               "stays.",
               entry.file));
  }

  const RecoveryRequest& request_;
  const LandmarkCheck& landmarks_;
  const Ranges named_;
  Recovery recovery_;
  std::string chosen_;
  std::uint32_t chosen_address_ = 0;
  std::map<std::uint32_t, std::vector<Entry>> candidates_;
};

}  // namespace

Recovery Recover(const RecoveryRequest& request, const std::vector<Entry>& journals,
                 const LandmarkCheck& landmarks) {
  return Judge(request, landmarks).Take(journals);
}

}  // namespace borvanusb
