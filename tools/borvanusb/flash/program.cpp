#include "flash/program.h"

#include <algorithm>

#include "command/command_rules.h"
#include "command/context.h"
#include "command/several_cameras.h"
#include "command/values.h"
#include "flash/flash_options.h"
#include "flash/program_several.h"
#include "flash/programmer.h"

namespace borvanusb {

ExitCode Run(const FlashProgramCommand& command, Context& context) {
  if (IsForSeveral(command.all, context)) {
    return ProgramSeveral(command, context);
  }
  return FlashProgrammer(command, context).Run();
}

namespace {

void CheckProgram(const FlashProgramCommand& command, const GivenOptions& given) {
  CheckBackup(command, given);
  const bool backup_named = given.Has("--backup");
  CheckAll(command.all, given);
  if (backup_named && IsForSeveral(command.all, given)) {
    throw WrongUse(
        "--backup: one file can't hold the backups of several cameras; omit it to name "
        "the files after the cameras");
  }
  if (given.Has("--journal") && IsForSeveral(command.all, given)) {
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
  CheckPlaces(WishesOf(command), command.form, given);
}

}  // namespace

CommandRule FlashProgramRule() {
  RuleOf<FlashProgramCommand> rule({"flash", "program"},
                                   "Programs an image, then reads it back to compare.");
  AddImage(rule);
  AddImageAddress(rule);
  AddFlashSize(rule);
  rule.AddFlag("--dry-run", "show what would be done, and change nothing",
               &FlashProgramCommand::dry_run);
  rule.Add(Flag("--no-verify", "don't read back"),
           [](FlashProgramCommand& command, const std::string&) { command.verify = false; });
  AddBackup(rule, "beside IMAGE");
  rule.AddFlag("--restore-on-failure", "write the backup back if programming fails",
               &FlashProgramCommand::restore_on_failure);
  rule.AddFlag("--force", "program files that do not look like firmware, and read-only regions",
               &FlashProgramCommand::force);
  rule.Add(File(Option("--report", "FILE", "write what was done as JSON")),
           [](FlashProgramCommand& command, const std::string& text) {
             command.report = FileValue(text);
           });
  rule.Add(Repeated(Option("--tag", "NAME=VALUE", "put this into the report, such as order=4711")),
           [](FlashProgramCommand& command, const std::string& text) {
             const std::size_t sign = text.find('=');
             if (sign == std::string::npos || sign == 0) {
               throw WrongValue("is not a valid tag: NAME=VALUE, such as order=4711");
             }
             const std::string name = text.substr(0, sign);
             const auto same = [&](const auto& other) { return other.first == name; };
             if (std::ranges::any_of(command.tags, same)) {
               throw WrongValue("is the second value of this name");
             }
             command.tags.emplace_back(name, text.substr(sign + 1));
           });
  rule.Add(
      File(Option("--journal", "FILE", "the journal to use, or none, if a message asks for it")),
      [](FlashProgramCommand& command, const std::string& text) {
        command.journal = FileValue(text);
      });
  AddAll(rule);
  rule.Check(CheckProgram);
  rule.Details("The old bytes are saved.");
  rule.Example("borvanusb flash program firmware.bin --address 0x40000");
  rule.Example("borvanusb flash program boot.hex app.bin@0x20000 cfg.bin@region:config");
  return rule.Take();
}

}  // namespace borvanusb
