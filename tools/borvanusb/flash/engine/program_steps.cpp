#include "flash/engine/program_steps.h"

#include <algorithm>
#include <chrono>
#include <span>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/joined.h"
#include "base/time_text.h"
#include "flash/engine/camera_evidence.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/flash_size.h"
#include "flash/engine/safeguard.h"
#include "flash/engine/sector_fate.h"
#include "flash/engine/transfer_count.h"

namespace borvanusb {

namespace {

SectorWriter WriterFor(Security& security, WorkSite& site) {
  return {site.camera, site.host, site.output, site.progress, site.state, security.shared};
}

std::optional<BackupRecord> KeepBackup(const Image& image, const FlashExamination& seen,
                                       const ProgramPlan& plan, const BackupWish& wish,
                                       WorkSite& site) {
  const Range range{plan.changes.front().first, plan.changes.back().last};
  const Ranges places = Within(plan.sectors.Runs(), range);
  const std::optional<BackupRecord>& earlier = seen.recovery.backup;
  if (earlier && std::ranges::all_of(
                     places, [&](const Range& place) { return IsIn(PlacesOf(*earlier), place); })) {
    site.output.Note(
        Format("the backup from before the interrupted programming is kept: {}", earlier->file));
    return earlier;
  }
  if (!wish.wanted) {
    return std::nullopt;
  }
  const std::string file =
      wish.file.empty() ? BackupName(image.files.front(), site.camera.Identity(), range.first,
                                     site.host, places.size() > 1 ? "hex" : "bin")
                        : wish.file;
  std::vector<PlacedBytes> parts;
  for (const Range& place : places) {
    parts.push_back({place.first, seen.Before().At(place)});
  }
  BackupRecord backup = WriteBackup(file, parts);
  site.output.Note(Format("backup of {}: {}", RangesText(places), file));
  return backup;
}

std::unique_ptr<WorkJournal> BeginJournal(const Image& image, const FlashExamination& seen,
                                          const ProgramPlan& plan,
                                          const std::optional<BackupRecord>& backup,
                                          WorkSite& site) {
  const CameraIdentity& camera = site.camera.Identity();
  const auto now = site.host.Now();
  std::vector<std::string> full_names;
  for (const std::string& file : image.files) {
    full_names.push_back(AbsoluteName(file));
  }
  auto journal = std::make_unique<WorkJournal>(
      site.store, site.store.NewName(TimeInFileName(now)),
      Journal{
          .command = "flash program",
          .begun = TimeText(now),
          .vid = camera.vid,
          .pid = camera.pid,
          .camera = camera.path,
          .image = Joined(full_names, ", "),
          .sha256 = image.sha256,
          .address = image.First(),
          .size = image.End() - image.First(),
          .ranges = image.segments.size() > 1 ? image.Places() : Ranges(),
          .backup = backup,
          .sectors = RecordSectors(plan.sectors, plan.changes, seen.recovery.before, plan.after),
          .landmarks = TakeLandmarks(site.camera, plan.sectors),
          .open_sector = std::nullopt,
          .replaces = {}});
  try {
    journal->Begin();
  } catch (const Failure& failure) {
    throw Failure(ExitCode::kFile, Format("the journal: {}", failure.Message()),
                  "Set BORVANUSB_JOURNALS to a folder that you may write to.");
  }
  return journal;
}

// Continues reading the sectors until `end` bytes have been read.
void ReadSectors(FlashExamination& seen, std::uint64_t end, WorkSite& site) {
  const auto start = site.host.Clock();
  for (const Range& run : seen.sectors.Runs()) {
    const std::uint64_t begin = seen.sectors.OffsetOf(run.first);
    const std::uint64_t done = seen.now.size();
    const std::uint64_t run_end = std::min(begin + run.Size(), end);
    if (done >= run_end) {
      continue;
    }
    const std::vector<std::uint8_t> read = site.camera.ReadFlash(
        static_cast<std::uint32_t>(run.first + (done - begin)), run_end - done,
        [&](std::uint64_t part) { site.progress.Advance(done + part); });
    seen.now.insert(seen.now.end(), read.begin(), read.end());
  }
  seen.seconds += std::chrono::duration<double>(site.host.Clock() - start).count();
}

// The sectors that can be changed word by word without an erase. A sector that is restored from a
// journal is not among them, because its journal expects an erase. Without verification there are
// none: then jobs are used, which report whether the flash accepted the data.
std::vector<WordSector> PlanWords(const FlashExamination& seen, const ProgramPlan& plan,
                                  bool verify) {
  if (!verify) {
    return {};
  }
  std::vector<WordSector> sectors =
      SectorsOfFewWords(plan.changes, plan.sectors, seen.now, plan.after);
  for (const JournalStore::Entry& entry : seen.recovery.used) {
    std::erase_if(sectors, [&](const WordSector& sector) {
      return sector.address == entry.journal.open_sector->address;
    });
  }
  return sectors;
}

// The transfers for changing the sectors and reading them back.
std::uint64_t PlannedTransfers(const ProgramPlan& plan, bool verify) {
  std::uint64_t transfers = 0;
  for (const WordSector& sector : plan.by_words) {
    transfers += sector.words.size() * kWordWriteTransfers;
  }
  for (const Range& block : CutIntoBlocks(WithoutWordSectors(plan.changes, plan.by_words))) {
    transfers += BlockTransfers(plan.After().At(block));
  }
  for (const Range& run : verify ? plan.changes : Ranges()) {
    transfers += ReadTransfers(run.Size());
  }
  return transfers;
}

}  // namespace

FlashExamination Examine(const Image& image, const ToldSize& flash_size, const std::string& journal,
                         WorkSite& site) {
  FlashExamination seen;
  seen.sectors = SectorsAround(image.Places());
  site.progress.Begin("read", seen.sectors.Size());
  const Range first = seen.sectors.Runs().front();
  if (!flash_size.size && first.first == 0 && first.Size() > kFlashHead) {
    // The first part is also used to detect the flash's end. The rest is read later, because
    // reading addresses that do not answer never ends.
    ReadSectors(seen, kFlashHead, site);
  }
  const FlashEnd end = FindFlashEnd(site.camera, image.End(), flash_size, site.output, seen.now);
  seen.flash_size = end.size;
  RefuseBeyondEnd(image, end);
  ReadSectors(seen, seen.sectors.Size(), site);
  site.progress.Done();
  const CameraIdentity& camera = site.camera.Identity();
  seen.recovery =
      Recover({camera.path, image.Named(), image.sha256, seen.sectors, seen.now, journal},
              JournalsInReach(site.store, site.host, camera),
              [&](const Journal& of) { return CompareLandmarks(site.camera, of); });
  for (const std::string& note : seen.recovery.notes) {
    site.output.Note(note);
  }
  return seen;
}

ProgramPlan Plan(const Image& image, const FlashExamination& seen, bool verify) {
  ProgramPlan plan;
  plan.sectors = seen.sectors;
  plan.after = LayOver(seen.sectors, seen.recovery.truth, image);
  plan.changes = DifferingSectors(seen.sectors, seen.now, plan.after);
  for (const std::uint32_t address : HalfUsedSectors(image.Places())) {
    if (IsIn(plan.changes, {address, address})) {
      plan.shared.push_back(address);
    }
  }
  plan.by_words = PlanWords(seen, plan, verify);
  plan.transfers = PlannedTransfers(plan, verify);
  std::uint64_t read = 0;
  for (const Range& run : seen.sectors.Runs()) {
    read += ReadTransfers(run.Size());
  }
  plan.expected_seconds =
      seen.seconds / static_cast<double>(read) * static_cast<double>(plan.transfers);
  return plan;
}

Security Secure(const Image& image, const FlashExamination& seen, const ProgramPlan& plan,
                const BackupWish& wish, WorkSite& site) {
  Security security;
  security.shared.addresses = plan.shared;
  security.shared.original = {&seen.sectors, seen.recovery.truth};
  for (const JournalStore::Entry& entry : seen.recovery.used) {
    security.shared.taken_over.emplace(entry.journal.open_sector->address, entry);
  }
  security.backup = KeepBackup(image, seen, plan, wish, site);
  FollowInJournals(site.store, plan.changes, plan.sectors, seen.recovery.truth, plan.after);
  ReleaseSectors(site.store, seen.recovery, plan.changes, plan.sectors, plan.after);
  if (!plan.shared.empty() || security.backup) {
    security.journal = BeginJournal(image, seen, plan, security.backup, site);
  }
  security.shared.journal = security.journal.get();
  return security;
}

Ranges Write(const ProgramPlan& plan, Security& security, WorkSite& site) {
  return WriterFor(security, site).Write(plan.changes, plan.After(), plan.by_words);
}

void Verify(const ProgramPlan& plan, Security& security, const Ranges& vouched, WorkSite& site) {
  Mismatch mismatch =
      WriterFor(security, site).Compare(Without(plan.changes, vouched), plan.After());
  if (!mismatch.wrong.empty()) {
    const Ranges sectors = SectorsOf(mismatch.wrong);
    site.output.Note(Format("{}: {}; writing {} once more", DifferenceText(mismatch.wrong),
                            RangesText(mismatch.wrong), RangesText(sectors)));
    site.state.SetWrong(mismatch.wrong);
    WriterFor(security, site).Write(sectors, plan.After());
    // Compares everything again. If addresses wrap, the second attempt has overwritten other
    // sectors.
    mismatch = WriterFor(security, site).Compare(plan.changes, plan.After());
  }
  site.state.SetWrong(mismatch.wrong);
  if (!mismatch.wrong.empty()) {
    FailVerify(mismatch);
  }
}

void FinishJournals(const FlashExamination& seen, Security& security, WorkSite& site) {
  try {
    if (security.journal) {
      security.journal->End();
    }
    for (const std::string& file : seen.recovery.finished) {
      site.store.Remove(file);
    }
  } catch (const Failure& failure) {
    site.output.Note(Format("{}; the change itself is finished", failure.Message()));
  }
}

std::string RestoreOldBytes(const FlashExamination& seen, Security& security, WorkSite& site) {
  // A stop is ignored here, because it would leave the unwanted partial state.
  const auto hold = site.host.HoldStop();
  site.output.Note("writing the old bytes back");
  site.state.BeginRestoring();
  const Content before = seen.Before();
  try {
    const Ranges runs =
        Union(site.state.Touched(), DifferingSectors(seen.sectors, seen.now, seen.recovery.before));
    SectorWriter writer = WriterFor(security, site);
    const Ranges vouched = writer.Write(runs, before, {}, SectorWriter::StopWish::kIgnore);
    const Mismatch mismatch = WriterFor(security, site).Compare(Without(runs, vouched), before);
    if (!mismatch.wrong.empty()) {
      return Format("; the old bytes were written back, but {} reads back differently",
                    RangesText(mismatch.wrong));
    }
    site.state.SetRestored();
    security.journal->End();
    return "";
  } catch (const Failure& failure) {
    site.progress.Break();
    return Format("; writing the old bytes back failed too: {}", failure.Message());
  }
}

void SettleOpenSector(const Image& image, Security& security, WorkSite& site) {
  WorkJournal* const journal = security.journal.get();
  if (journal == nullptr || !journal->IsBegun() || !journal->OpenSector()) {
    return;
  }
  const SharedSector& open = *journal->OpenSector();
  try {
    const std::vector<std::uint8_t> found = site.camera.ReadFlash(open.address, kSectorSize, {});
    if (FateOf(found, open, image.Places()) == SectorFate::kUnharmed) {
      journal->Close(found);
      site.state.SetKept({}, {});
    }
  } catch (const Failure&) {
    // The sector stays open, and the next run reads it again.
    return;
  }
}

}  // namespace borvanusb
