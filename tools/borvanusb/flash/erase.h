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
  std::string backup_file = {};  // as in flash program
  std::optional<std::uint64_t> flash_size = std::nullopt;
  std::string region = {};  // instead of a range
  bool force = false;       // also erase a read-only region
};

ExitCode Run(const FlashEraseCommand& command, Context& context);

CommandRule FlashEraseRule();

}  // namespace borvanusb
