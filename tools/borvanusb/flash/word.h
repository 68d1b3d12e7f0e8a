#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashWordCommand {
  std::uint32_t address = 0;
  std::optional<std::uint32_t> value;  // written; without one the word is read
  bool yes = false;
  bool backup = true;
  std::string backup_file = {};  // empty: in the current folder, named after camera, address, time
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool force = false;  // in a read-only region, too
};

ExitCode Run(const FlashWordCommand& command, Context& context);

CommandRule FlashWordRule();

}  // namespace borvanusb
