#include <nlohmann/json.hpp>

#include "commands/camera_work.h"
#include "commands/commands.h"
#include "commands/list_problems.h"
#include "files.h"
#include "lists/register_list.h"
#include "output/output.h"

ExitCode Run(const RegLoadCommand& command, Context& context) {
  const CheckedRegisterList checked = CheckRegisterList(ReadWholeText(command.file));
  if (command.check_only) {
    return ReportCheck("reg load", command.file, checked.list, checked.registers, context);
  }
  RequireGoodList(command.file, checked.list, "nothing was sent", context);
  NoteRemarks(command.file, checked.list, context);
  const ReservedCamera camera = ReserveChosenCamera(context);
  // What was checked is what is sent: the file could be read differently, or change.
  camera->WriteRegisterList(RegisterListText(checked.list.entries));
  context.output.Line(Count(checked.registers, "register") + " written from " + command.file);
  context.result = LoadJson(command.file, checked.list, checked.registers, true);
  return ExitCode::kDone;
}
