#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashEraseCommand {
  Range range;
  bool yes = false;
  bool backup = true;
  std::string backup_file = {};  // likewise
  std::optional<std::uint64_t> flash_size = std::nullopt;
  std::string region = {};  // in place of a range
  bool force = false;       // a read-only region, too
};

ExitCode Run(const FlashEraseCommand& command, Context& context);

CommandRule FlashEraseRule();

}  // namespace borvanusb
