#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "camera/camera.h"

namespace borvanusb {

// The size of a camera's flash and how it is known, for `info`.
struct FlashSizeAnswer {
  std::optional<std::uint64_t> bytes;
  std::string how;  // "given by --flash-size", or why it can't be told
};

//   told  --flash-size
FlashSizeAnswer AskFlashSize(Camera& camera, std::optional<std::uint64_t> told);

}  // namespace borvanusb
