#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashMapCommand {
  std::optional<Range> range;  // the whole flash if left out
  std::optional<std::uint64_t> flash_size;
  std::string range_remark = {};  // what the user should know of the range; mostly empty
};

ExitCode Run(const FlashMapCommand& command, Context& context);

CommandRule FlashMapRule();

}  // namespace borvanusb
