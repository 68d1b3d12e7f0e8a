#include "commands/commands.h"
#include "commands/flash_program_several.h"
#include "commands/flash_programmer.h"

ExitCode Run(const FlashProgramCommand& command, Context& context) {
  if (command.all || context.common.cameras.size() > 1) {
    return ProgramSeveral(command, context);
  }
  return FlashProgrammer(command, context).Run();
}
