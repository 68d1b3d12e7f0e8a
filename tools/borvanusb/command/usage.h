#pragma once

#include <string>

#include "command/command_line.h"

namespace borvanusb {

// The part of a usage line after the command's words: required arguments, optional ones in
// brackets, and `options` if the command has further options. `shown` formats an option's name and
// value.
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
