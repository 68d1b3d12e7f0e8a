#include "command/commands.h"
#include "flash/program_several.h"
#include "flash/programmer.h"

namespace borvanusb {

ExitCode Run(const FlashProgramCommand& command, Context& context) {
  if (command.all || context.common.cameras.size() > 1) {
    return ProgramSeveral(command, context);
  }
  return FlashProgrammer(command, context).Run();
}

}  // namespace borvanusb
