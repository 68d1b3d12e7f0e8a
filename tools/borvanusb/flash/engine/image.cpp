#include "flash/engine/image.h"

#include <algorithm>
#include <limits>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "base/numbers.h"
#include "base/sha256.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32U;

}  // namespace

Image LoadImage(const std::string& file, std::uint32_t address) {
  Image image{file, ReadWholeFile(file), {}, address};
  if (image.bytes.empty()) {
    throw Failure(ExitCode::kFile, Format("{} is empty", file),
                  "Give a file that holds the raw bytes of the flash.");
  }
  if (image.End() > kAddressSpace) {
    throw Failure(ExitCode::kFile,
                  Format("{} has {} and would go from {} beyond the last address 0xffffffff", file,
                         SizeText(image.bytes.size()), Hex(address)),
                  "Check --address.");
  }
  image.sha256 = Sha256(image.bytes);
  return image;
}

void RefuseBlankImage(const Image& image) {
  const std::uint8_t first = image.bytes.front();
  const bool same =
      std::ranges::all_of(image.bytes, [&](std::uint8_t byte) { return byte == first; });
  if (same && (first == 0 || first == std::numeric_limits<std::uint8_t>::max())) {
    throw Failure(
        ExitCode::kFile,
        Format("{} holds nothing but {} bytes, which is no firmware", image.file, Hex(first, 2)),
        "If the flash must hold these bytes, give --force.");
  }
}

}  // namespace borvanusb
