#include "commands/info_flash_size.h"

FlashSizeAnswer AskFlashSize(Camera& /*camera*/, std::optional<std::uint64_t> told) {
  if (told) {
    return {told, "as told by --flash-size"};
  }
  return {std::nullopt, "not looked for"};
}
