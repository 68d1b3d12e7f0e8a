#pragma once

#include <cstdint>
#include <optional>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct InfoCommand {
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool all = false;  // all connected cameras
};

ExitCode Run(const InfoCommand& command, Context& context);

CommandRule InfoRule();

}  // namespace borvanusb
