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
  std::optional<std::uint32_t> value;  // value to write; without it, the word is read
  bool yes = false;
  bool backup = true;
  std::string backup_file = {};  // empty: in the current folder, named by camera, address and time
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool force = false;  // also in a read-only region
};

ExitCode Run(const FlashWordCommand& command, Context& context);

CommandRule FlashWordRule();

}  // namespace borvanusb
