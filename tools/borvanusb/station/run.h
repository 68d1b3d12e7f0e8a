#pragma once

#include <string>
#include <utility>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RunCommand {
  std::string file;  // "-": standard input; empty: lines typed at the terminal
  bool keep_going = false;
  std::vector<std::pair<std::string, std::string>> variables = {};  // name and value
};

ExitCode Run(const RunCommand& command, Context& context);

CommandRule RunRule();

}  // namespace borvanusb
