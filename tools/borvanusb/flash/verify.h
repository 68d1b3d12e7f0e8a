#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/exit_code.h"
#include "flash/image_files.h"

namespace borvanusb {

struct CommandRule;
struct Context;

struct FlashVerifyCommand {
  std::string image;
  std::optional<std::uint32_t> address = std::nullopt;  // flash address of its address 0
  std::string diff;  // file: CSV if its name ends in .csv, else JSON
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool force = false;
  bool all = false;         // all connected cameras
  std::string region = {};  // of the image, instead of an address
  ImageForm form = ImageForm::kAuto;
  std::vector<ImageWish> more = {};  // further images
};

ExitCode Run(const FlashVerifyCommand& command, Context& context);

CommandRule FlashVerifyRule();

}  // namespace borvanusb
