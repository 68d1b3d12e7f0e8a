#pragma once

#include "base/exit_code.h"
#include "command/arguments.h"
#include "command/context.h"

namespace borvanusb {

// Every command: does the work, writes its text to context.output and the same facts to
// context.result, and returns kDone, or another code when the work was done and its outcome is that
// code (a comparison that differs, a self test that fails). What keeps it from doing its work it
// throws as a Failure.
ExitCode Run(const ListCommand& command, Context& context);
ExitCode Run(const InfoCommand& command, Context& context);
ExitCode Run(const RegReadCommand& command, Context& context);
ExitCode Run(const RegWriteCommand& command, Context& context);
ExitCode Run(const RegDumpCommand& command, Context& context);
ExitCode Run(const RegLoadCommand& command, Context& context);
ExitCode Run(const RegDiffCommand& command, Context& context);
ExitCode Run(const I2cReadCommand& command, Context& context);
ExitCode Run(const I2cWriteCommand& command, Context& context);
ExitCode Run(const I2cDumpCommand& command, Context& context);
ExitCode Run(const I2cLoadCommand& command, Context& context);
ExitCode Run(const I2cScanCommand& command, Context& context);
ExitCode Run(const FlashReadCommand& command, Context& context);
ExitCode Run(const FlashWordCommand& command, Context& context);
ExitCode Run(const FlashEraseCommand& command, Context& context);
ExitCode Run(const FlashMapCommand& command, Context& context);
ExitCode Run(const FlashProgramCommand& command, Context& context);
ExitCode Run(const FlashVerifyCommand& command, Context& context);
ExitCode Run(const WatchCommand& command, Context& context);
ExitCode Run(const BenchCommand& command, Context& context);
ExitCode Run(const SelftestCommand& command, Context& context);
ExitCode Run(const DoctorCommand& command, Context& context);
ExitCode Run(const RunCommand& command, Context& context);
ExitCode Run(const CompletionCommand& command, Context& context);
ExitCode Run(const ManualCommand& command, Context& context);

}  // namespace borvanusb
