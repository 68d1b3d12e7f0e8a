#include "flash/program.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "flash/flash_options.h"
#include "flash/program_several.h"
#include "flash/programmer.h"

namespace borvanusb {

ExitCode Run(const FlashProgramCommand& command, Context& context) {
  if (command.all || context.common.cameras.size() > 1) {
    return ProgramSeveral(command, context);
  }
  return FlashProgrammer(command, context).Run();
}

namespace {

void CheckProgram(const FlashProgramCommand& command, const GivenOptions& given) {
  CheckBackup(command, given);
  const bool backup_named = given.Has("--backup");
  if (command.all && given.Has("--camera")) {
    throw WrongUse("--all: means every camera, --camera only some: give one of the two");
  }
  if (backup_named && (command.all || given.Count("--camera") > 1)) {
    throw WrongUse(
        "--backup: one file can't hold the backups of several cameras; omit it to name "
        "the files after the cameras");
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
  rule.AddFlag("--force", "program what is no firmware, and read-only regions",
               &FlashProgramCommand::force);
  rule.Add(File(Option("--report", "FILE", "write what was done as JSON")),
           [](FlashProgramCommand& command, const std::string& text) {
             command.report = FileValue(text);
           });
  rule.Add(
      File(Option("--journal", "FILE", "the journal to use, or none, if a message asks for it")),
      [](FlashProgramCommand& command, const std::string& text) {
        command.journal = FileValue(text);
      });
  rule.AddFlag("--all", "every camera there is, at the same time", &FlashProgramCommand::all);
  rule.Check(CheckProgram);
  rule.Details("The old bytes are saved.");
  rule.Example("borvanusb flash program boot.hex app.bin@0x20000 cfg.bin@region:config");
  return rule.Take();
}

}  // namespace borvanusb
