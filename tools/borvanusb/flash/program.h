#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/exit_code.h"
#include "flash/image_files.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashProgramCommand {
  std::string image;
  std::optional<std::uint32_t> address;  // where its address 0 goes
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
  std::string region;  // where the image goes, in place of an address
  ImageForm form = ImageForm::kAuto;
  std::vector<ImageWish> more;  // images besides the first
};

ExitCode Run(const FlashProgramCommand& command, Context& context);

CommandRule FlashProgramRule();

}  // namespace borvanusb
