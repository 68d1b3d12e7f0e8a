// What makes programming safe: the backup, the journal, and the way back.

#include <algorithm>
#include <span>

#include "base/files.h"
#include "command/command_line.h"
#include "flash/engine/camera_evidence.h"
#include "flash/engine/safeguard.h"
#include "flash/engine/sector_fate.h"
#include "flash/program_names.h"
#include "flash/programmer.h"
#include "flash/report.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

bool IsBlank(std::span<const std::uint8_t> bytes) {
  return std::ranges::all_of(bytes, [&](std::uint8_t byte) { return byte == bytes.front(); }) &&
         (bytes.front() == 0 || bytes.front() == 0xFF);
}

}  // namespace

void FlashProgrammer::Safeguard() {
  state_->Plan(outcome_.changes, {}, {});
  shared_.original = Truth();
  for (const std::uint32_t address : HalfUsedSectors(image_.address, image_.bytes.size())) {
    if (std::ranges::any_of(outcome_.changes, [&](const Range& run) {
          return run.first <= address && address <= run.last;
        })) {
      shared_.addresses.push_back(address);
    }
  }
  for (const JournalStore::Entry& entry : recovery_.used) {
    shared_.taken_over.emplace(entry.journal.open_sector->address, entry);
  }
  KeepBackup();
  FollowInJournals(*store_, outcome_.changes, sectors_, recovery_.truth, after_);
  ReleaseSectors(*store_, recovery_, outcome_.changes, sectors_, after_);
  if (!shared_.addresses.empty() || backup_) {
    BeginJournal();
  }
  PlanWaysOn();
}

void FlashProgrammer::KeepBackup() {
  const Range range{outcome_.changes.front().first, outcome_.changes.back().last};
  const std::optional<BackupRecord>& earlier = recovery_.backup;
  if (earlier && range.first >= earlier->address && range.last < earlier->address + earlier->size) {
    backup_ = earlier;
    context_.output.Note("the backup from before the cut-off programming stays: " + earlier->file);
    return;
  }
  if (!command_.backup) {
    return;
  }
  const std::string file = command_.backup_file.empty()
                               ? BackupName(command_.image, identity_, range.first, context_.host)
                               : command_.backup_file;
  backup_ = WriteBackup(file, range.first, Before().At(range));
  context_.output.Note("backup of " + Text(range) + ": " + file);
}

void FlashProgrammer::BeginJournal() {
  Journal journal{.command = "flash program",
                  .begun = TimeText(context_.host.Now()),
                  .vid = identity_.vid,
                  .pid = identity_.pid,
                  .camera = identity_.path,
                  .image = AbsoluteName(image_.file),
                  .sha256 = image_.sha256,
                  .address = image_.address,
                  .size = image_.bytes.size(),
                  .backup = backup_,
                  .sectors = RecordSectors(sectors_, outcome_.changes, recovery_.before, after_),
                  .landmarks = TakeLandmarks(*camera_, sectors_),
                  .open_sector = std::nullopt,
                  .replaces = {}};
  journal_.emplace(*store_, store_->NewName(TimeInFileName(context_.host.Now())),
                   std::move(journal));
  try {
    journal_->Begin();
  } catch (const Failure& failure) {
    throw Failure(ExitCode::kFile, "the journal: " + failure.Message(),
                  "Set BORVANUSB_JOURNALS to a folder that you may write to.");
  }
  shared_.journal = &*journal_;
}

void FlashProgrammer::PlanWaysOn() {
  std::vector<std::string> words = ProgramWords(command_);
  words.insert(words.end(), {"--camera", identity_.path});
  std::string back;
  if (backup_) {
    const Range range{backup_->address,
                      static_cast<std::uint32_t>(backup_->address + backup_->size - 1)};
    back = GoBackText(backup_->file, range.first, identity_, IsBlank(Before().At(range)));
    outcome_.backup = backup_->file;
  }
  state_->Plan(outcome_.changes, CommandLineText(words), back);
}

// The flash holds what it shall: nothing in the journals of this change is needed any more.
void FlashProgrammer::End() {
  try {
    if (journal_) {
      journal_->End();
    }
    for (const std::string& file : recovery_.finished) {
      store_->Remove(file);
    }
  } catch (const Failure& failure) {
    context_.output.Note(failure.Message() + "; the change itself is finished");
  }
}

// A sector that a failure left open may be unharmed; then no journal needs to hold its bytes, and
// none is left to puzzle over when another camera is plugged in here.
void FlashProgrammer::SettleOpenSector(ExitCode code) {
  const bool may_answer = code == ExitCode::kDevice || code == ExitCode::kVerify;
  if (!may_answer || !journal_ || !journal_->IsBegun() || !journal_->OpenSector()) {
    return;
  }
  const SharedSector& open = *journal_->OpenSector();
  try {
    const std::vector<std::uint8_t> found = camera_->ReadFlash(open.address, kSectorSize, {});
    const Range named{image_.address, static_cast<std::uint32_t>(image_.End() - 1)};
    if (FateOf(found, open, named) == SectorFate::kUnharmed) {
      journal_->Close(found);
      state_->SetKept({}, {});
    }
  } catch (const Failure&) {
    // It stays open; the next run looks again.
    return;
  }
}

std::string FlashProgrammer::RestoreOldBytes() {
  // Stopping now would leave what the user wants to be rid of.
  const auto hold = context_.host.HoldStop();
  context_.output.Note("writing the old bytes back");
  state_->BeginRestoring();
  try {
    const Ranges runs =
        Union(state_->Touched(), DifferingSectors(sectors_.address, now_, recovery_.before));
    const Ranges vouched = Writer().Write(runs, Before(), SectorWriter::StopWish::kIgnore);
    const Mismatch mismatch = Writer().Compare(Without(runs, vouched), Before());
    if (!mismatch.wrong.empty()) {
      return "; the old bytes were written back, but " + RangesText(mismatch.wrong) +
             " does not read back so";
    }
    state_->SetRestored();
    journal_->End();
    return "";
  } catch (const Failure& failure) {
    context_.progress.Break();
    return "; writing the old bytes back failed too: " + failure.Message();
  }
}

}  // namespace borvanusb
