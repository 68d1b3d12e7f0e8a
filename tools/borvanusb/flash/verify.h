#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashVerifyCommand {
  std::string image;
  std::uint32_t address = 0;
  std::string diff;  // JSON, or CSV for a name that ends in .csv
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool force = false;
  bool all = false;  // every camera there is
};

ExitCode Run(const FlashVerifyCommand& command, Context& context);

CommandRule FlashVerifyRule();

}  // namespace borvanusb
