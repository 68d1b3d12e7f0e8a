#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct RegWriteCommand {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  bool wide = false;
  std::optional<std::uint32_t> mask;  // only these bits are changed
  bool verify = false;
  std::vector<std::string> words = {};  // "ADDR", "VALUE", or settings "NAME=VALUE"
};

ExitCode Run(const RegWriteCommand& command, Context& context);

CommandRule RegWriteRule();

}  // namespace borvanusb
