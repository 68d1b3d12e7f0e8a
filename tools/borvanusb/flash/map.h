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
  std::optional<Range> range;  // default: the whole flash
  std::optional<std::uint64_t> flash_size;
  std::string range_remark = {};  // for the user; usually empty
};

ExitCode Run(const FlashMapCommand& command, Context& context);

CommandRule FlashMapRule();

}  // namespace borvanusb
