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
  std::optional<std::uint32_t> address;  // flash address of its address 0
  std::optional<std::uint64_t> flash_size;
  bool dry_run = false;
  bool verify = true;
  bool backup = true;
  std::string backup_file;  // empty: beside the image, named by camera and time
  bool restore_on_failure = false;
  bool force = false;
  std::string report;
  std::string journal;  // of an unfinished change: file name, or "none"
  bool all = false;
  std::vector<std::pair<std::string, std::string>> tags = {};  // for the report: name and value
  std::string region;  // of the image, instead of an address
  ImageForm form = ImageForm::kAuto;
  std::vector<ImageWish> more;  // further images
};

ExitCode Run(const FlashProgramCommand& command, Context& context);

CommandRule FlashProgramRule();

}  // namespace borvanusb
