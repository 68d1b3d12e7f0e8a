#include "flash/engine/flash_end.h"

#include "base/failure.h"
#include "base/flash_memory.h"
#include "base/format.h"
#include "flash/engine/flash_size.h"

namespace borvanusb {

namespace {

std::string FlashText(const FlashEnd& end) {
  return Format("the flash of {}, whose last address is {}; {}", SizeText(*end.size),
                Hex(*end.size - 1), end.reason);
}

std::string RangeHint(std::uint64_t size) {
  return Format("The whole flash is 0+{}. If it has another size, give it with --flash-size.",
                SizeArgument(size));
}

std::string ImageHint(const Image& image) {
  return Format("Check the image and {}. If the flash has another size, give it with --flash-size.",
                image.has_addresses ? "its addresses" : "--address");
}

}  // namespace

FlashEnd FindFlashEnd(Camera& camera, std::uint64_t end, const ToldSize& told, Output& output,
                      std::span<const std::uint8_t> head) {
  if (told.size) {
    return {told.size, told.reason};
  }
  const FlashSizeFinding finding = FindFlashEndBefore(camera, end, head);
  if (!finding.size && !finding.text.empty()) {
    output.Note(Format(
        "the flash's size is {}; pass --flash-size to check that nothing reaches beyond its end",
        finding.text));
  }
  return {finding.size, Format("it {}", finding.text)};
}

void RefuseBeyondEnd(const Image& image, const FlashEnd& end) {
  if (!end.size || image.End() <= *end.size) {
    return;
  }
  if (image.First() >= *end.size && !image.has_addresses) {
    throw Failure(ExitCode::kFile,
                  Format("--address: {} is beyond {}", Hex(image.First()), FlashText(end)),
                  ImageHint(image));
  }
  throw Failure(ExitCode::kFile,
                Format("{} does not fit: it would end at {}, beyond {}", image.file,
                       Hex(image.End() - 1), FlashText(end)),
                ImageHint(image));
}

std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const std::string& argument,
                                              const Range& range, const ToldSize& told,
                                              Output& output) {
  const FlashEnd end = FindFlashEnd(camera, std::uint64_t{range.last} + 1, told, output);
  if (end.size && range.last >= *end.size) {
    throw Failure(
        ExitCode::kUsage,
        Format("{}: {}{}{}", argument, Text(range),
               range.first >= *end.size ? " is beyond " : " ends beyond ", FlashText(end)),
        RangeHint(*end.size));
  }
  return end.size;
}

std::optional<std::uint64_t> CheckWithinFlash(Camera& camera, const Image& image,
                                              const ToldSize& told, Output& output) {
  const FlashEnd end = FindFlashEnd(camera, image.End(), told, output);
  RefuseBeyondEnd(image, end);
  return end.size;
}

Range WholeFlash(Camera& camera, const ToldSize& told, Output& output) {
  std::optional<std::uint64_t> size = told.size;
  if (!size) {
    const FlashSizeFinding finding = FindFlashSize(camera);
    if (!finding.size) {
      throw Failure(ExitCode::kUsage, Format("the flash's size is {}", finding.text),
                    "Give it with --flash-size, or give a range such as 0+1M.");
    }
    output.Note(Format("the flash {}", finding.text));
    size = finding.size;
  }
  if (*size == 0 || *size > kAddressSpace) {
    throw Failure(ExitCode::kUsage,
                  Format("--flash-size: {} is not the size of a flash", SizeText(*size)),
                  "Sizes from 4K to 4096M are allowed.");
  }
  return {0, static_cast<std::uint32_t>(*size - 1)};
}

}  // namespace borvanusb
