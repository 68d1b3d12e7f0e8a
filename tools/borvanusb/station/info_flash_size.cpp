#include "station/info_flash_size.h"

#include "flash/engine/flash_size.h"

namespace borvanusb {

FlashSizeAnswer AskFlashSize(Camera& camera, std::optional<std::uint64_t> told) {
  if (told) {
    return {told, "given by --flash-size"};
  }
  const FlashSizeFinding finding = FindFlashSize(camera);
  return {finding.size, finding.text};
}

}  // namespace borvanusb
