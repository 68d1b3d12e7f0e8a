// Commands on the SPI flash.
#include "command/command_rules.h"
#include "command/values.h"
#include "flash/name_address.h"

namespace borvanusb {

namespace {

constexpr const char* kWholeFlash = "all";  // in place of a range
constexpr const char* kFlashSizeText =
    "size of the flash, such as 1M, if the tool can't find it out";

template <typename C>
void AddFlashSize(RuleOf<C>& rule) {
  rule.Add(Option("--flash-size", "SIZE", kFlashSizeText),
           [](C& command, const std::string& text) { command.flash_size = FlashSizeValue(text); });
}

template <typename C>
void AddBackup(RuleOf<C>& rule, std::string_view place) {
  rule.Add(
      File(Option("--backup", "FILE", "where the old bytes go; default " + std::string(place))),
      [](C& command, const std::string& text) { command.backup_file = FileValue(text); });
  rule.Add(Flag("--no-backup", "don't keep the old bytes"),
           [](C& command, const std::string&) { command.backup = false; });
}

template <typename C>
void CheckBackup(const C& command, const GivenOptions& given) {
  if (given.Has("--backup") && !command.backup) {
    throw WrongUse("--no-backup: contradicts --backup");
  }
}

template <typename C>
void AddImageAddress(RuleOf<C>& rule) {
  rule.Add(Option("--address", "ADDR", "where the image begins in the flash, default 0"),
           [](C& command, const std::string& text) { command.address = AddressValue(text); });
}

template <typename C>
void AddImage(RuleOf<C>& rule) {
  rule.Add(File(Argument("IMAGE", "file with the bytes")),
           [](C& command, const std::string& text) { command.image = FileValue(text); });
}

// The range of a command that also takes all.
Range RangeBesideAll(const std::string& text) {
  try {
    return FlashRangeValue(text);
  } catch (const WrongValue& wrong) {
    throw WrongValue(wrong.what() + std::string("; all means the whole flash"));
  }
}

std::string RangeRemark(const std::string& text) {
  const std::string remark = RemarkOnEnd(text);
  return remark.empty() ? remark : text + " " + remark;
}

// Without --address an image whose name tells another one than 0 is in doubt: backups carry theirs.
void AskForAddress(const std::string& image, const GivenOptions& given) {
  const std::vector<std::uint32_t> addresses = AddressesInName(image);
  if (given.Has("--address") || addresses.empty()) {
    return;
  }
  std::string shown;
  std::vector<WrongUse::Way> ways;
  for (const std::uint32_t address : addresses) {
    shown += (shown.empty() ? "" : " and ") + Hex(address);
    ways.push_back({"If it belongs to " + Hex(address), {"--address", Hex(address)}});
  }
  ways.push_back({"If it belongs to the beginning of the flash", {"--address", "0"}});
  throw WrongUse("--address: is missing, but the name of " + Quoted(image) + " carries " + shown,
                 std::move(ways));
}

CommandRule ReadRule() {
  RuleOf<FlashReadCommand> rule({"flash", "read"}, "Reads flash into a file.");
  rule.Add(Argument("RANGE", "0x1000+4K, or 0x1000-0x1fff (both included), or all"),
           [](FlashReadCommand& command, const std::string& text) {
             command.whole = text == kWholeFlash;
             if (!command.whole) {
               command.range = RangeBesideAll(text);
               command.range_remark = RangeRemark(text);
             }
           });
  rule.Add(
      File(Argument("FILE", "raw bytes, or a text dump for a name that ends in .txt")),
      [](FlashReadCommand& command, const std::string& text) { command.file = FileValue(text); });
  AddFlashSize(rule);
  rule.Example("borvanusb flash read 0+1M backup.bin");
  rule.Example("borvanusb flash read all backup.bin");
  return rule.Take();
}

void CheckWord(const FlashWordCommand& command, const GivenOptions& given) {
  CheckBackup(command, given);
  if (!command.value && (given.Has("--backup") || !command.backup)) {
    throw WrongUse("VALUE: is missing; reading a word needs no backup");
  }
}

CommandRule WordRule() {
  RuleOf<FlashWordCommand> rule({"flash", "word"}, "Reads or writes four bytes of the flash.");
  rule.Add(Argument("ADDR", "flash address of the first byte"),
           [](FlashWordCommand& command, const std::string& text) {
             command.address = AddressValue(text);
           });
  rule.Add(
      Optional(Argument("VALUE", "what to write, the first byte highest")),
      [](FlashWordCommand& command, const std::string& text) { command.value = WordValue(text); });
  AddFlashSize(rule);
  rule.AddFlag("--yes", "write without asking", &FlashWordCommand::yes);
  AddBackup(rule, "in this folder");
  rule.Check(CheckWord);
  rule.Example("borvanusb flash word 0x40000");
  return rule.Take();
}

CommandRule EraseRule() {
  RuleOf<FlashEraseCommand> rule({"flash", "erase"}, "Erases whole sectors of 4096 bytes.");
  rule.Add(Argument("RANGE", "0x40000+256K, or 0x40000-0x7ffff (both included)"),
           [](FlashEraseCommand& command, const std::string& text) {
             command.range = EraseRangeValue(text);
           });
  AddFlashSize(rule);
  rule.AddFlag("--yes", "erase without asking", &FlashEraseCommand::yes);
  AddBackup(rule, "in this folder");
  rule.Check(CheckBackup<FlashEraseCommand>);
  rule.Example("borvanusb flash erase 0x40000+256K");
  return rule.Take();
}

CommandRule MapRule() {
  RuleOf<FlashMapCommand> rule({"flash", "map"},
                               "Draws which sectors are used and which are blank.");
  rule.Add(Optional(Argument("RANGE", "0+512K, or 0-0x7ffff (both included), or all (default)")),
           [](FlashMapCommand& command, const std::string& text) {
             if (text != kWholeFlash) {
               command.range = RangeBesideAll(text);
               command.range_remark = RangeRemark(text);
             }
           });
  AddFlashSize(rule);
  rule.Example("borvanusb flash map --flash-size 1M");
  return rule.Take();
}

void CheckProgram(const FlashProgramCommand& command, const GivenOptions& given) {
  CheckBackup(command, given);
  const bool backup_named = given.Has("--backup");
  if (command.all && given.Has("--camera")) {
    throw WrongUse("--all: means every camera, --camera only some: give one of the two");
  }
  if (backup_named && (command.all || given.Count("--camera") > 1)) {
    throw WrongUse(
        "--backup: one file can't hold the backups of several cameras; leave it out for "
        "files named after the cameras");
  }
  if (given.Has("--journal") && (command.all || given.Count("--camera") > 1)) {
    throw WrongUse("--journal: a journal belongs to one camera; program that one by itself");
  }
  if (command.restore_on_failure && command.dry_run) {
    throw WrongUse("--restore-on-failure: a dry run changes nothing that could be restored");
  }
  if (command.restore_on_failure && !command.backup) {
    throw WrongUse("--restore-on-failure: needs the backup, which --no-backup leaves out");
  }
  if (command.dry_run && !command.verify) {
    throw WrongUse("--no-verify: a dry run verifies nothing");
  }
  AskForAddress(command.image, given);
}

CommandRule ProgramRule() {
  RuleOf<FlashProgramCommand> rule({"flash", "program"},
                                   "Programs an image, then reads it back to compare.");
  AddImage(rule);
  AddImageAddress(rule);
  AddFlashSize(rule);
  rule.AddFlag("--dry-run", "tell what would be done, and change nothing",
               &FlashProgramCommand::dry_run);
  rule.Add(Flag("--no-verify", "don't read back"),
           [](FlashProgramCommand& command, const std::string&) { command.verify = false; });
  AddBackup(rule, "beside IMAGE");
  rule.AddFlag("--restore-on-failure", "put the backup back when it fails",
               &FlashProgramCommand::restore_on_failure);
  rule.AddFlag("--force", "program a file that does not look like firmware",
               &FlashProgramCommand::force);
  rule.Add(File(Option("--report", "FILE", "write what was done as JSON")),
           [](FlashProgramCommand& command, const std::string& text) {
             command.report = FileValue(text);
           });
  rule.Add(
      File(Option("--journal", "FILE", "the journal that counts, or none, where that is asked")),
      [](FlashProgramCommand& command, const std::string& text) {
        command.journal = FileValue(text);
      });
  rule.AddFlag("--all", "every camera there is, at the same time", &FlashProgramCommand::all);
  rule.Check(CheckProgram);
  rule.Details("Exactly the image's bytes change; the old ones are saved first.");
  rule.Example("borvanusb flash program firmware.bin --address 0x40000");
  return rule.Take();
}

CommandRule VerifyRule() {
  RuleOf<FlashVerifyCommand> rule({"flash", "verify"}, "Compares the flash with an image.");
  AddImage(rule);
  AddImageAddress(rule);
  AddFlashSize(rule);
  rule.Add(
      File(Option("--diff", "FILE", "write the differences: CSV for .csv, else JSON")),
      [](FlashVerifyCommand& command, const std::string& text) { command.diff = FileValue(text); });
  rule.AddFlag("--force", "compare a file that does not look like firmware",
               &FlashVerifyCommand::force);
  rule.Check([](const FlashVerifyCommand& command, const GivenOptions& given) {
    AskForAddress(command.image, given);
  });
  rule.Example("borvanusb flash verify firmware.bin --address 0x40000");
  return rule.Take();
}

}  // namespace

CommandRules FlashRules() {
  return Grouped({ReadRule(), WordRule(), EraseRule(), MapRule(), ProgramRule(), VerifyRule()},
                 "Flash");
}

}  // namespace borvanusb
