#pragma once

#include <optional>
#include <string>

#include "base/exit_code.h"
#include "registers/list_markers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegLoadCommand {
  std::string file;
  bool check_only = false;
  bool verify = false;
  // For lists whose registers have different addresses on some chips.
  std::optional<ListMarkers> markers = std::nullopt;
  bool all = false;  // all connected cameras
};

ExitCode Run(const RegLoadCommand& command, Context& context);

CommandRule RegLoadRule();

}  // namespace borvanusb
