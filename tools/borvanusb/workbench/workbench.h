#pragma once

#include <cstdint>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct WorkbenchCommand {
  std::uint16_t port = 0;  // 0: chosen by the system
  bool browser = true;
  bool read_only = false;
  bool stay = false;
};

ExitCode Run(const WorkbenchCommand& command, Context& context);

CommandRule WorkbenchRule();

}  // namespace borvanusb
