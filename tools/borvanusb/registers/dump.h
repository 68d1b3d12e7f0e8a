#pragma once

#include <string>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegDumpCommand {
  Range range;
  std::string file;  // empty: standard output
  bool wide = false;
  bool all_named = false;  // instead of the range
  bool hex = false;        // hex dump on standard output instead of a list
};

ExitCode Run(const RegDumpCommand& command, Context& context);

CommandRule RegDumpRule();

}  // namespace borvanusb
