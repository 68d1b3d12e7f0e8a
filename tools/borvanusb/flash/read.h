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
  std::string file;  // empty: a hex dump on standard output; "-": the bytes there
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool whole = false;             // all of the flash; `range` is not used then
  std::string range_remark = {};  // what the user should know of the range; mostly empty
  bool all_cameras = false;       // every camera there is
  std::string region = {};        // in place of a range
  std::string format = {};        // of the file: "raw", "hex", "srec", "text"; empty: by its name
};

ExitCode Run(const FlashReadCommand& command, Context& context);

CommandRule FlashReadRule();

}  // namespace borvanusb
