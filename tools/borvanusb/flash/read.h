#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/exit_code.h"
#include "base/numbers.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashReadCommand {
  Range range;
  std::string file;  // empty: hex dump on standard output; "-": bytes on standard output
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool whole = false;             // read all; `range` is unused
  std::string range_remark = {};  // for the user; usually empty
  bool all_cameras = false;       // read all connected cameras
  std::string region = {};        // instead of a range
  std::string format = {};        // "raw", "hex", "srec", "text"; empty: by the name
};

ExitCode Run(const FlashReadCommand& command, Context& context);

CommandRule FlashReadRule();

}  // namespace borvanusb
