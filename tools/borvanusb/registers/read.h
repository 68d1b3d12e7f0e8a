#pragma once

#include <string>
#include <vector>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegReadCommand {
  Range range;  // the only word, if it is a range or number
  bool wide = false;
  std::vector<std::string> words = {};  // ranges, names, patterns
};

ExitCode Run(const RegReadCommand& command, Context& context);

CommandRule RegReadRule();

}  // namespace borvanusb
