#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// What stands behind a command's words in its usage line: what it needs, what it may have in
// brackets, and `options` if it has options beside these. `shown` gives an option's name and value.
template <typename Shown>
std::string UsageArguments(const CommandDescription& command, Shown shown,
                           const std::string& options) {
  std::string usage;
  bool has_options = false;
  const auto more = [](const OptionDescription& option) {
    return option.positional && option.repeated ? "..." : "";
  };
  for (const OptionDescription& option : command.options) {
    if (option.required) {
      usage += ' ';
      usage += shown(option);
      usage += more(option);
    } else if (option.positional) {
      usage += " [";
      usage += shown(option);
      usage += more(option);
      usage += ']';
    } else {
      has_options = true;
    }
  }
  return has_options ? usage + options : usage;
}

}  // namespace borvanusb
