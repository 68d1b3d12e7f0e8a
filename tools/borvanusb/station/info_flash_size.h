#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "camera/camera.h"

namespace borvanusb {

// The size of a camera's flash and its source, for `info`.
struct FlashSizeAnswer {
  std::optional<std::uint64_t> bytes;
  std::string how;  // "given by --flash-size", or why it is unknown
};

//   told  --flash-size
FlashSizeAnswer AskFlashSize(Camera& camera, std::optional<std::uint64_t> told);

}  // namespace borvanusb
