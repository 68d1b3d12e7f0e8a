#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/exit_code.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashProgramCommand {
  std::string image;
  std::uint32_t address = 0;
  std::optional<std::uint64_t> flash_size;
  bool dry_run = false;
  bool verify = true;
  bool backup = true;
  std::string backup_file;  // empty: beside the image, named after camera and time
  bool restore_on_failure = false;
  bool force = false;
  std::string report;
  std::string journal;  // of an unfinished change: its file, or "none"
  bool all = false;
  std::vector<std::pair<std::string, std::string>> tags = {};  // for the report: name, value
};

ExitCode Run(const FlashProgramCommand& command, Context& context);

CommandRule FlashProgramRule();

}  // namespace borvanusb
