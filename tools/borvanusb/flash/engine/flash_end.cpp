#include "flash/engine/flash_end.h"

#include "base/failure.h"
#include "flash/engine/flash_size.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32U;

std::string FlashText(const FlashEnd& end) {
  return "the flash of " + SizeText(*end.size) + ", whose last address is " + Hex(*end.size - 1) +
         "; " + end.reason;
}

std::string RangeHint(std::uint64_t size) {
  return "The whole flash is 0+" + SizeArgument(size) +
         ". If its size is another one, say it with --flash-size.";
}

constexpr const char* kImageHint =
    "Check the image and --address. If the flash's size is another one, say it with --flash-size.";

}  // namespace

FlashEnd FindFlashEnd(Camera& camera, std::uint64_t end, std::optional<std::uint64_t> told,
                      Output& output) {
  if (told) {
    return {told, "--flash-size says so"};
  }
  const FlashSizeFinding finding = FindFlashEndBefore(camera, end);
  if (!finding.size && !finding.text.empty()) {
    output.Note("the flash's size " + finding.text +
                "; pass --flash-size to check that nothing reaches beyond its end");
  }
  return {finding.size, "it " + finding.text};
}

void RefuseBeyondEnd(const Image& image, const FlashEnd& end) {
  if (!end.size || image.End() <= *end.size) {
    return;
  }
  if (image.address >= *end.size) {
    throw Failure(ExitCode::kFile,
                  "--address: " + Hex(image.address) + " lies beyond " + FlashText(end),
                  kImageHint);
  }
  throw Failure(ExitCode::kFile,
                image.file + " does not fit: it would end at " + Hex(image.End() - 1) +
                    ", beyond " + FlashText(end),
                kImageHint);
}

std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const std::string& argument,
                                              const Range& range, std::optional<std::uint64_t> told,
                                              Output& output) {
  const FlashEnd end = FindFlashEnd(camera, std::uint64_t{range.last} + 1, told, output);
  if (end.size && range.last >= *end.size) {
    throw Failure(ExitCode::kUsage,
                  argument + ": " + Text(range) +
                      (range.first >= *end.size ? " lies beyond " : " ends beyond ") +
                      FlashText(end),
                  RangeHint(*end.size));
  }
  return end.size;
}

std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const Image& image,
                                              std::optional<std::uint64_t> told, Output& output) {
  const FlashEnd end = FindFlashEnd(camera, image.End(), told, output);
  RefuseBeyondEnd(image, end);
  return end.size;
}

Range WholeFlash(Camera& camera, std::optional<std::uint64_t> told, Output& output) {
  std::optional<std::uint64_t> size = told;
  if (!size) {
    const FlashSizeFinding finding = FindFlashSize(camera);
    if (!finding.size) {
      throw Failure(ExitCode::kUsage, "the flash's size " + finding.text,
                    "Say it with --flash-size, or give a range such as 0+1M.");
    }
    output.Note("the flash " + finding.text);
    size = finding.size;
  }
  if (*size == 0 || *size > kAddressSpace) {
    throw Failure(ExitCode::kUsage, "--flash-size: " + SizeText(*size) + " is no flash's size",
                  "Sizes from 4K to 4096M are allowed.");
  }
  return {0, static_cast<std::uint32_t>(*size - 1)};
}

}  // namespace borvanusb
