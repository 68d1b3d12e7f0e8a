#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegReadCommand {
  Range range;  // if it is the only word
  bool wide = false;
  std::vector<std::string> words = {};  // ranges, names, patterns
};

ExitCode Run(const RegReadCommand& command, Context& context);

CommandRule RegReadRule();

}  // namespace borvanusb
