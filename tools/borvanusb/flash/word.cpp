#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <vector>

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
#include "flash/engine/camera_evidence.h"
#include "flash/engine/flash_end.h"
#include "flash/engine/recovery.h"
#include "flash/engine/safeguard.h"
#include "flash/engine/sector_plan.h"
#include "flash/engine/work_journal.h"
#include "flash/flash_options.h"
#include "flash/regions.h"
#include "flash/report.h"
#include "flash/word.h"
#include "output/output.h"

namespace borvanusb {

namespace {

constexpr int kWordDigits = 8;
constexpr const char* kCommand = "flash word";
constexpr std::uint32_t kLastWord = std::numeric_limits<std::uint32_t>::max() - (kWordSize - 1);

// Uses a bulk read, because a failed single access can't be distinguished from a word of 0.
std::uint32_t ReadWord(Camera& camera, std::uint32_t address) {
  std::uint32_t word = 0;
  for (const std::uint8_t byte : camera.ReadFlash(address, kWordSize, {})) {
    word = word << 8U | byte;
  }
  return word;
}

std::string WordText(std::uint32_t word) {
  return Hex(word, kWordDigits);
}

std::vector<std::uint8_t> BytesOf(std::uint32_t word) {
  std::vector<std::uint8_t> bytes;
  for (unsigned shift = 32; shift > 0; shift -= 8) {
    bytes.push_back(static_cast<std::uint8_t>(word >> (shift - 8)));
  }
  return bytes;
}

// Throws Failure kFile if an earlier change was interrupted in the word's sector: restoring the
// sector from its journal would overwrite the word.
void RefuseOpenSector(Camera& camera, const JournalStore& store, const Range& word,
                      std::span<const std::uint8_t> bytes, Context& context) {
  const auto journals = JournalsInReach(store, context.host, camera.Identity());
  const SectorSpan sectors = SectorsAround(word.first, kWordSize);
  if (journals.empty()) {
    return;
  }
  const std::vector<std::uint8_t> now = camera.ReadFlash(sectors.address, sectors.size, {});
  const RecoveryRequest request{
      camera.Identity().path, {{word.first, bytes}}, {}, sectors, now, {}};
  const Recovery recovery = Recover(
      request, journals, [&](const Journal& journal) { return CompareLandmarks(camera, journal); });
  if (!recovery.used.empty()) {
    const Journal& journal = recovery.used.front().journal;
    throw Failure(ExitCode::kFile,
                  Format("the sector belongs to an unfinished {} of {}; its journal is {}",
                         journal.command, journal.image, recovery.used.front().file),
                  "Repeat that command first.");
  }
  std::vector<std::uint8_t> after = now;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    after[word.first - sectors.address + i] &= bytes[i];  // writing only clears bits
  }
  FollowInJournals(store, {sectors.Whole()}, sectors, now, after);
  ReleaseSectors(store, recovery, {sectors.Whole()}, sectors, after);
}

class WordWriter {
 public:
  WordWriter(Camera& camera, const FlashWordCommand& command, Context& context)
      : camera_(camera),
        command_(command),
        context_(context),
        store_(AbsoluteName(context.host.JournalFolder()), camera.Identity()) {}

  ExitCode Write(std::uint32_t value) {
    const Range place{command_.address, command_.address + (kWordSize - 1)};
    RefuseOpenSector(camera_, store_, place, BytesOf(value), context_);
    const std::uint32_t before = ReadWord(camera_, command_.address);
    context_.result["before"] = before;
    if ((before & value) != value) {
      context_.output.Note(
          Format("the flash holds {} at {}; writing only clears bits, so it can't become {} before "
                 "its sector is erased",
                 WordText(before), Hex(command_.address), WordText(value)));
    }
    if (!command_.yes && !context_.host.Ask(Format("Write {} over {} at {}?", WordText(value),
                                                   WordText(before), Hex(command_.address)))) {
      throw Failure(ExitCode::kStopped, "nothing was written",
                    "Answer y, or give --yes to write without being asked.");
    }
    Secure(before, value);
    camera_.WriteFlashWord(command_.address, value);
    const std::uint32_t found = ReadWord(camera_, command_.address);
    context_.result["written"] = value;
    context_.result["value"] = found;
    context_.result["verified"] = found == value;
    if (found != value) {
      context_.output.Error(Format("borvanusb: flash word: {}: wrote {}, but reads back {}",
                                   Hex(command_.address), WordText(value), WordText(found)));
      return ExitCode::kVerify;
    }
    EndJournals();
    context_.output.Line(
        Format("{}: {}, reads back as written", Hex(command_.address), WordText(found)));
    return ExitCode::kDone;
  }

 private:
  void Secure(std::uint32_t before, std::uint32_t value) {
    context_.result["backup"] = nullptr;
    if (!command_.backup || before == value) {
      return;
    }
    const CameraIdentity& identity = camera_.Identity();
    const std::string file = command_.backup_file.empty()
                                 ? BackupName("flash", identity, command_.address, context_.host)
                                 : command_.backup_file;
    const BackupRecord backup = WriteBackup(file, command_.address, BytesOf(before));
    context_.result["backup"] = backup.file;
    context_.output.Note(
        Format("backup of {} at {}: {}", SizeText(kWordSize), Hex(command_.address), file));
    WorkJournal(store_, store_.NewName(TimeInFileName(context_.host.Now())),
                Journal{.command = kCommand,
                        .begun = TimeText(context_.host.Now()),
                        .vid = identity.vid,
                        .pid = identity.pid,
                        .camera = identity.path,
                        .image = {},
                        .sha256 = Sha256(BytesOf(value)),
                        .address = command_.address,
                        .size = kWordSize,
                        .ranges = {},
                        .backup = backup,
                        .sectors = {},
                        .landmarks = {},
                        .open_sector = std::nullopt,
                        .replaces = {}})
        .Begin();
  }

  // Also removes the journals of earlier interrupted runs of the same change.
  void EndJournals() {
    for (const JournalStore::Entry& entry : store_.Load()) {
      const Journal& journal = entry.journal;
      if (journal.command == kCommand && journal.address == command_.address &&
          journal.camera == camera_.Identity().path) {
        store_.Remove(entry.file);
      }
    }
  }

  Camera& camera_;
  const FlashWordCommand& command_;
  Context& context_;
  JournalStore store_;
};

}  // namespace

ExitCode Run(const FlashWordCommand& command, Context& context) {
  if (command.address > kLastWord) {
    throw Failure(
        ExitCode::kUsage,
        Format("ADDR: the four bytes at {} would reach beyond 0xffffffff", Hex(command.address)),
        "The last word is at 0xfffffffc.");
  }
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const Range place{command.address, command.address + (kWordSize - 1)};
  const FlashLayout layout = LayoutFor(identity, context);
  if (command.value && !command.force) {
    RefuseReadOnly(layout, {place}, Format("ADDR: {}", Text(place)), ExitCode::kUsage);
  }
  const auto reservation =
      command.value ? context.host.ReserveCamera(identity) : std::unique_ptr<Host::Reservation>();
  const auto camera = context.host.OpenCamera(identity);
  CheckWithinFlash(*camera, "ADDR", place, SizeFor(command.flash_size, layout), context.output);
  context.result["camera"] = CameraJson(identity);
  context.result["address"] = command.address;
  if (command.value) {
    return WordWriter(*camera, command, context).Write(*command.value);
  }
  const std::uint32_t word = ReadWord(*camera, command.address);
  context.result["value"] = word;
  context.output.Line(Format("{}: {}", Hex(command.address), WordText(word)));
  return ExitCode::kDone;
}

namespace {

void CheckWord(const FlashWordCommand& command, const GivenOptions& given) {
  CheckBackup(command, given);
  if (!command.value && (given.Has("--backup") || !command.backup)) {
    throw WrongUse("VALUE: is missing; reading a word needs no backup");
  }
}

}  // namespace

CommandRule FlashWordRule() {
  RuleOf<FlashWordCommand> rule({"flash", "word"}, "Reads or writes four bytes of the flash.");
  rule.Add(Argument("ADDR", "flash address of the first byte"),
           [](FlashWordCommand& command, const std::string& text) {
             command.address = AddressValue(text);
           });
  rule.Add(
      Optional(Argument("VALUE", "what to write; its highest byte goes to ADDR")),
      [](FlashWordCommand& command, const std::string& text) { command.value = WordValue(text); });
  AddFlashSize(rule);
  rule.AddFlag("--yes", "write without asking", &FlashWordCommand::yes);
  rule.AddFlag("--force", "write into a read-only region, too", &FlashWordCommand::force);
  AddBackup(rule, "in this folder");
  rule.Check(CheckWord);
  rule.Example("borvanusb flash word 0x40000");
  return rule.Take();
}

}  // namespace borvanusb
