#pragma once

#include <string>

#include "base/exit_code.h"
#include "i2c/bus_options.h"
#include "names/diff_sources.h"

namespace borvanusb {

struct CommandRule;
struct Context;

// Compares two sides: an I2C list, "camera", "camera:WHICH", "preset:NAME" or "reset".
struct I2cDiffCommand {
  I2cOptions i2c;  // for a list that does not name its device
  std::string left;
  std::string right;
  std::string csv = {};
};

ExitCode Run(const I2cDiffCommand& command, Context& context);

CommandRule I2cDiffRule();

// The values that an I2C list writes to its devices. Throws Failure kFile if the list can't be
// loaded, and kUsage if neither the list nor `options` name a device.
Snapshot RegistersOfI2cList(const std::string& file, const I2cOptions& options, Context& context);

}  // namespace borvanusb
