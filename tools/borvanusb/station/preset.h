#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct PresetApplyCommand {
  std::string name;
  bool verify = false;
  bool all = false;  // all connected cameras
};

struct PresetDiffCommand {
  std::string name;
  std::string csv = {};
};

struct PresetSaveCommand {
  std::string name;
  std::vector<std::string> words = {};  // empty: the registers that are in the preset
  std::string description = {};
  bool replace = false;
};

ExitCode Run(const PresetApplyCommand& command, Context& context);
ExitCode Run(const PresetDiffCommand& command, Context& context);
ExitCode Run(const PresetSaveCommand& command, Context& context);

CommandRule PresetApplyRule();
CommandRule PresetDiffRule();
CommandRule PresetSaveRule();

}  // namespace borvanusb
