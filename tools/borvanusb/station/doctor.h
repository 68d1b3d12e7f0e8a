#pragma once

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct DoctorCommand {};

ExitCode Run(const DoctorCommand& command, Context& context);

CommandRule DoctorRule();

}  // namespace borvanusb
