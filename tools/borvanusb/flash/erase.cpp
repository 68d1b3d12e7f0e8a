#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>

#include "base/failure.h"
#include "base/files.h"
#include "base/flash_memory.h"
#include "base/format.h"
#include "base/sha256.h"
#include "base/time_text.h"
#include "camera/camera_choice.h"
#include "camera/camera_json.h"
#include "camera/host.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "flash/engine/byte_ranges.h"
#include "flash/engine/camera_evidence.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/recovery.h"
#include "flash/engine/safeguard.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/sector_writer.h"
#include "flash/engine/work_journal.h"
#include "flash/erase.h"
#include "flash/flash_options.h"
#include "flash/program_names.h"
#include "flash/regions.h"
#include "flash/report.h"
#include "output/output.h"
#include "output/progress.h"

namespace borvanusb {

namespace {

void RefuseHalfSectors(const Range& range) {
  const Range whole = SectorsAround(range.first, range.Size()).Whole();
  if (!(whole == range)) {
    throw Failure(
        ExitCode::kUsage,
        Format("RANGE: {} ends within a sector; only whole sectors of 4096 bytes can be erased",
               Text(range)),
        Format("The sectors around it are {}.", Text(whole)));
  }
}

// Erases one range of whole sectors. Use one object per run.
class Eraser {
 public:
  Eraser(const FlashEraseCommand& command, Context& context)
      : command_(command),
        context_(context),
        identity_(ChosenCamera(context.host, context.common.cameras)),
        layout_(LayoutFor(identity_, context)),
        range_(command.region.empty() ? command.range : RegionNamed(layout_, command.region).range),
        sectors_{range_.first, range_.Size()},
        blank_(range_.Size(), kErased) {
    RefuseHalfSectors(range_);
    if (!command.force) {
      RefuseReadOnly(layout_, {range_}, Format("RANGE: {}", Text(range_)), ExitCode::kUsage);
    }
  }

  ExitCode Run();

 private:
  // The content of the backup.
  std::span<const std::uint8_t> BackedUp() const {
    return PartOf(std::span<const std::uint8_t>(recovery_.before), range_.first,
                  PlacesOf(*backup_).front());
  }
  void Examine();
  void Confirm() const;
  void Secure();
  void Erase(const Ranges& sectors);
  [[noreturn]] void FailErase(const Failure& failure, const Ranges& erased,
                              std::uint32_t sector) const;
  void Verify();
  void End();
  ExitCode Tell();

  const FlashEraseCommand& command_;
  Context& context_;
  const CameraIdentity identity_;
  const FlashLayout layout_;
  const Range range_;
  const SectorSpan sectors_;
  const std::vector<std::uint8_t> blank_;
  std::unique_ptr<Host::Reservation> reservation_;
  std::unique_ptr<Camera> camera_;
  std::optional<JournalStore> store_;
  std::optional<WorkJournal> journal_;
  std::optional<BackupRecord> backup_;
  Recovery recovery_;
  Ranges changes_;  // sectors that are not blank before the erase
  Ranges wrong_;    // bytes that are not blank after the erase
};

ExitCode Eraser::Run() {
  reservation_ = context_.host.ReserveCamera(identity_);
  camera_ = context_.host.OpenCamera(identity_);
  store_.emplace(AbsoluteName(context_.host.JournalFolder()), identity_);
  CheckWithinFlash(*camera_, "RANGE", range_, SizeFor(command_.flash_size, layout_),
                   context_.output);
  Confirm();
  Examine();
  if (!changes_.empty()) {
    Secure();
    Erase(changes_);
    Verify();
  }
  if (wrong_.empty()) {
    End();
  }
  return Tell();
}

void Eraser::Confirm() const {
  if (!command_.yes &&
      !context_.host.Ask(Format("Erase {} of flash, {}, of camera {}?", SizeText(range_.Size()),
                                Text(range_), CameraLine(identity_)))) {
    throw Failure(ExitCode::kStopped, "nothing was erased",
                  "Answer y, or give --yes to erase without being asked.");
  }
}

void Eraser::Examine() {
  context_.progress.Begin("read", range_.Size());
  const std::vector<std::uint8_t> now = camera_->ReadFlash(
      range_.first, range_.Size(), [&](std::uint64_t done) { context_.progress.Advance(done); });
  context_.progress.Done();
  const RecoveryRequest request{
      identity_.path, {{range_.first, blank_}}, Sha256(blank_), sectors_, now, {}};
  recovery_ = Recover(request, JournalsInReach(*store_, context_.host, identity_),
                      [&](const Journal& journal) { return CompareLandmarks(*camera_, journal); });
  for (const std::string& note : recovery_.notes) {
    context_.output.Note(note);
  }
  changes_ = DifferingSectors(range_.first, now, blank_);
}

void Eraser::Secure() {
  const Range saved{changes_.front().first, changes_.back().last};
  if (recovery_.backup) {
    backup_ = recovery_.backup;
    context_.output.Note(
        Format("the backup from before the interrupted erasing is kept: {}", backup_->file));
  } else if (command_.backup) {
    const std::string file = command_.backup_file.empty()
                                 ? BackupName("flash", identity_, saved.first, context_.host)
                                 : command_.backup_file;
    backup_ =
        WriteBackup(file, saved.first,
                    PartOf(std::span<const std::uint8_t>(recovery_.before), range_.first, saved));
    context_.output.Note(Format("backup of {}: {}", Text(saved), file));
  }
  FollowInJournals(*store_, changes_, sectors_, recovery_.truth, blank_);
  ReleaseSectors(*store_, recovery_, changes_, sectors_, blank_);
  if (backup_) {
    journal_.emplace(*store_, store_->NewName(TimeInFileName(context_.host.Now())),
                     Journal{.command = "flash erase",
                             .begun = TimeText(context_.host.Now()),
                             .vid = identity_.vid,
                             .pid = identity_.pid,
                             .camera = identity_.path,
                             .image = {},
                             .sha256 = Sha256(blank_),
                             .address = range_.first,
                             .size = range_.Size(),
                             .ranges = {},
                             .backup = backup_,
                             .sectors = RecordSectors(sectors_, changes_, recovery_.before, blank_),
                             .landmarks = TakeLandmarks(*camera_, sectors_),
                             .open_sector = std::nullopt,
                             .replaces = {}});
    journal_->Begin();
  }
}

void Eraser::Erase(const Ranges& sectors) {
  context_.progress.Begin("erase", TotalSize(sectors));
  std::uint64_t done = 0;
  Ranges erased;
  for (const Range& run : sectors) {
    for (std::uint64_t address = run.first; address <= run.last; address += kSectorSize) {
      const auto sector = static_cast<std::uint32_t>(address);
      try {
        if (context_.host.StopRequested()) {
          throw Failure(ExitCode::kStopped, "stopped by the user");
        }
        camera_->EraseSector(sector);
      } catch (const Failure& failure) {
        FailErase(failure, erased, sector);
      }
      AppendRange(erased, {sector, sector + (kSectorSize - 1)});
      done += kSectorSize;
      context_.progress.Advance(done);
    }
  }
  context_.progress.Done();
}

void Eraser::FailErase(const Failure& failure, const Ranges& erased, std::uint32_t sector) const {
  const bool at_sector = failure.Code() != ExitCode::kStopped;
  const std::string message = Format(
      "{}; {} is erased{}", failure.Message(), erased.empty() ? "nothing" : RangesText(erased),
      at_sector ? Format(", the sector at {} perhaps", Hex(sector)) : "");
  std::string hint = failure.Hint();
  if (backup_) {
    hint += Format("{}To go back: {}", hint.empty() ? "" : "\n",
                   GoBackText(*backup_, BackedUp(), identity_, command_.force));
  }
  throw Failure(failure.Code(), message, hint);
}

void Eraser::Verify() {
  for (bool again = false;; again = true) {
    context_.progress.Begin("verify", TotalSize(changes_));
    wrong_.clear();
    std::uint64_t done = 0;
    for (const Range& run : changes_) {
      const std::vector<std::uint8_t> found =
          camera_->ReadFlash(run.first, run.Size(),
                             [&](std::uint64_t part) { context_.progress.Advance(done + part); });
      done += run.Size();
      const Ranges here = DifferingBytes(run.first, found,
                                         std::span<const std::uint8_t>(blank_).first(found.size()));
      wrong_.insert(wrong_.end(), here.begin(), here.end());
    }
    context_.progress.Done();
    if (wrong_.empty() || again) {
      return;
    }
    const Ranges sectors = SectorsOf(wrong_);
    context_.output.Note(Format("{} is not blank; erasing once more", RangesText(sectors)));
    Erase(sectors);
  }
}

void Eraser::End() {
  try {
    if (journal_) {
      journal_->End();
    }
    for (const std::string& file : recovery_.finished) {
      store_->Remove(file);
    }
  } catch (const Failure& failure) {
    context_.output.Note(Format("{}; the change itself is finished", failure.Message()));
  }
}

ExitCode Eraser::Tell() {
  using Json = nlohmann::ordered_json;
  context_.result = {{"camera", CameraJson(identity_)},
                     {"first", range_.first},
                     {"last", range_.last},
                     {"size", range_.Size()},
                     {"erased", ToJson(changes_)},
                     {"backup", backup_ ? Json(backup_->file) : Json()},
                     {"verified", wrong_.empty()},
                     {"wrong", ToJson(wrong_)}};
  if (!wrong_.empty()) {
    context_.output.Error(
        Format("borvanusb: flash erase: erased {}, but {} bytes do not read 0xff: {}", Text(range_),
               TotalSize(wrong_), RangesText(wrong_)));
    return ExitCode::kVerify;
  }
  const std::uint64_t sectors = range_.Size() / kSectorSize;
  const std::uint64_t erased = TotalSize(changes_) / kSectorSize;
  context_.output.Line(
      Format("Erased {}, {}; all of it reads 0xff{}", SizeText(range_.Size()), Text(range_),
             erased == sectors
                 ? std::string(".")
                 : Format(", {} of {} sectors were blank already.", sectors - erased, sectors)));
  return ExitCode::kDone;
}

}  // namespace

ExitCode Run(const FlashEraseCommand& command, Context& context) {
  if (command.region.empty()) {
    RefuseHalfSectors(command.range);
  }
  return Eraser(command, context).Run();
}

CommandRule FlashEraseRule() {
  RuleOf<FlashEraseCommand> rule({"flash", "erase"}, "Erases whole sectors of 4096 bytes.");
  rule.Add(Optional(Argument("RANGE", "0x40000+256K, or 0x40000-0x7ffff (both included)")),
           [](FlashEraseCommand& command, const std::string& text) {
             command.range = EraseRangeValue(text);
           });
  AddRegion(rule, "erase this region of the camera's profile, in place of RANGE");
  AddFlashSize(rule);
  rule.AddFlag("--yes", "erase without asking", &FlashEraseCommand::yes);
  AddBackup(rule, "in this folder");
  rule.AddFlag("--force", "erase a read-only region, too", &FlashEraseCommand::force);
  rule.Check([](const FlashEraseCommand& command, const GivenOptions& given) {
    CheckRangeOrRegion(given);
    CheckBackup(command, given);
  });
  rule.Example("borvanusb flash erase 0x40000+256K");
  return rule.Take();
}

}  // namespace borvanusb
