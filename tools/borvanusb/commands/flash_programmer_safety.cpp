// What makes programming safe: the backup, the journal, and the way back.

#include <algorithm>
#include <span>

#include "commands/flash_program_names.h"
#include "commands/flash_programmer.h"
#include "files.h"
#include "flash/sha256.h"
#include "output/output.h"
#include "output/progress.h"

namespace {

bool IsBlank(std::span<const std::uint8_t> bytes) {
  return std::ranges::all_of(bytes, [&](std::uint8_t byte) { return byte == bytes.front(); }) &&
         (bytes.front() == 0 || bytes.front() == 0xFF);
}

}  // namespace

void FlashProgrammer::Safeguard() {
  state_->Plan(outcome_.changes, {}, {});
  own_work_ = {
      .image = image_.file,
      .sha256 = image_.sha256,
      .address = image_.address,
      .size = image_.bytes.size(),
      .backup = std::nullopt,
      .half_used = HalfUsedRecords(image_, sectors_, outcome_.changes, recovery_.before, after_),
      .seen = {}};
  const bool kept =
      recovery_.backup && std::ranges::all_of(outcome_.changes, [&](const Range& run) {
        return run.first >= recovery_.backup->address &&
               run.last < recovery_.backup->address + recovery_.backup->size;
      });
  if (kept) {
    own_work_.backup = recovery_.backup;
    context_.output.Note("the backup from before the cut-off programming stays: " +
                         recovery_.backup->file);
  }
  if (!own_work_.half_used.empty() || own_work_.backup || command_.backup) {
    journal_->Choose();
  }
  if (!own_work_.backup && command_.backup) {
    MakeBackup();
  }
  if (journal_->IsChosen()) {
    WriteJournal();
  }
  std::vector<std::string> words = ProgramWords(command_);
  words.insert(words.end(), {"--camera", identity_.path});
  std::string back;
  if (own_work_.backup) {
    const Range range{
        own_work_.backup->address,
        static_cast<std::uint32_t>(own_work_.backup->address + own_work_.backup->size - 1)};
    back = GoBackText(own_work_.backup->file, range.first, identity_, IsBlank(Before().At(range)));
    outcome_.backup = own_work_.backup->file;
  }
  state_->Plan(outcome_.changes, CommandLineText(words), back);
}

void FlashProgrammer::MakeBackup() {
  const Range range{outcome_.changes.front().first, outcome_.changes.back().last};
  const std::string file = command_.backup_file.empty()
                               ? BackupName(command_.image, identity_, range.first, context_.host)
                               : command_.backup_file;
  const auto bytes = Before().At(range);
  try {
    WriteWholeFile(file, bytes);
  } catch (const Failure& failure) {
    throw Failure(failure.Code(), "the backup: " + failure.Message(),
                  "Give another name with --backup; --no-backup does without.");
  }
  own_work_.backup = BackupRecord{file, range.first, bytes.size(), Sha256(bytes)};
  context_.output.Note("backup of " + Text(range) + ": " + file);
}

void FlashProgrammer::WriteJournal() {
  std::vector<UnfinishedWork> works = recovery_.carried;
  works.push_back(own_work_);
  journal_->Write(works);
}

// A sector that came out wrong fits neither its old nor its new bytes; without this the next run
// could not tell it from another camera's.
void FlashProgrammer::RememberSeen(const Ranges& wrong) {
  if (!journal_->IsChosen()) {
    return;
  }
  own_work_.seen.clear();
  for (const Range& run : SectorsOf(wrong)) {
    for (std::uint64_t address = run.first; address < run.last; address += kSectorSize) {
      const auto sector = static_cast<std::uint32_t>(address);
      const Range range{sector, sector + (kSectorSize - 1)};
      own_work_.seen.push_back({sector, Sha256(PartOf(std::span<const std::uint8_t>(last_read_),
                                                      sectors_.address, range))});
    }
  }
  WriteJournal();
}

void FlashProgrammer::EndJournal() {
  if (!journal_->IsInUse()) {
    return;
  }
  try {
    journal_->Write(recovery_.carried);
  } catch (const Failure& failure) {
    context_.output.Note(failure.Message() + "; remove " + journal_->Name() +
                         ", the work it tells of is finished");
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
    Writer().Write(runs, Before(), SectorWriter::StopWish::kIgnore);
    const Ranges wrong = Writer().Compare(runs, Before(), [](const auto&, const auto&) {});
    if (!wrong.empty()) {
      return "; the old bytes were written back, but " + RangesText(wrong) +
             " does not read back so";
    }
    state_->SetRestored();
    EndJournal();
    return "";
  } catch (const Failure& failure) {
    context_.progress.Break();
    return "; writing the old bytes back failed too: " + failure.Message();
  }
}
