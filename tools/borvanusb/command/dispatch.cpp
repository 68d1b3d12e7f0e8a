#include "command/dispatch.h"

#include <variant>

#include "command/commands.h"

namespace borvanusb {

ExitCode Dispatch(const Command& command, Context& context) {
  return std::visit([&context](const auto& chosen) { return Run(chosen, context); }, command);
}

}  // namespace borvanusb
