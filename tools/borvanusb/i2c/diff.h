#pragma once

#include <string>

#include "base/exit_code.h"
#include "i2c/bus_options.h"
#include "names/diff_sources.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two of: an I2C list, "camera", "camera:WHICH", "preset:NAME", "reset".
struct I2cDiffCommand {
  I2cOptions i2c;  // the device of a list that does not name its own
  std::string left;
  std::string right;
  std::string csv = {};
};

ExitCode Run(const I2cDiffCommand& command, Context& context);

CommandRule I2cDiffRule();

// What an I2C list leaves in the registers of its devices. Throws Failure kFile for a list that
// can't be loaded, kUsage for one that names no device while `options` name none.
Snapshot RegistersOfI2cList(const std::string& file, const I2cOptions& options, Context& context);

}  // namespace borvanusb
