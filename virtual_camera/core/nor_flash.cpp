#include "core/nor_flash.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <vector>

#include "core/format.h"

namespace virtual_camera {
namespace {

constexpr std::uint8_t kErased = 0xFF;
constexpr std::size_t kFillChunk = 65536;

bool IsStuck(std::uint64_t position, std::span<const std::uint32_t> stuck_words) {
  return std::any_of(stuck_words.begin(), stuck_words.end(),
                     [&](std::uint32_t word) { return word / 4 == position / 4; });
}

}  // namespace

NorFlash::NorFlash(const FlashConfiguration& configuration) try
    : configuration_(configuration), file_(configuration.file) {
  std::uint64_t size = file_.Size();
  if (size > configuration_.size) {
    throw ConfigurationError(
        Format("flash: the file \"{}\" has {} bytes; flash.size, here {}, must be at least that",
               configuration_.file, size, configuration_.size));
  }
  const std::vector<std::uint8_t> erased(kFillChunk, kErased);
  while (size < configuration_.size) {
    const std::size_t count =
        std::min<std::size_t>(kFillChunk, static_cast<std::size_t>(configuration_.size - size));
    file_.WriteAt(size, std::span(erased).first(count));
    size += count;
  }
} catch (const std::system_error& error) {
  throw ConfigurationError(Format(
      "flash: can't use the file \"{}\" ({}); it must be a file that can be read and written",
      configuration.file, error.what()));
}

std::optional<std::uint64_t> NorFlash::PositionOf(std::uint64_t address) const {
  if (address < configuration_.size) {
    return address;
  }
  if (configuration_.beyond_end == BeyondEnd::kWrap) {
    return address % configuration_.size;
  }
  return std::nullopt;
}

std::size_t NorFlash::Contiguous(std::uint64_t position, std::size_t count) const {
  return static_cast<std::size_t>(std::min<std::uint64_t>(count, configuration_.size - position));
}

bool NorFlash::Read(std::uint32_t address, std::span<std::uint8_t> bytes) const {
  if (!PositionOf(address)) {
    return false;
  }
  std::fill(bytes.begin(), bytes.end(), kErased);
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::optional<std::uint64_t> position = PositionOf(std::uint64_t{address} + done);
    if (!position) {
      break;
    }
    const std::size_t count = Contiguous(*position, bytes.size() - done);
    file_.ReadAt(*position, bytes.subspan(done, count));
    done += count;
  }
  return true;
}

std::optional<std::uint64_t> NorFlash::Erase(std::uint32_t address) {
  const std::optional<std::uint64_t> position = PositionOf(address);
  if (!position) {
    return std::nullopt;
  }
  const std::vector<std::uint8_t> erased(kSectorSize, kErased);
  file_.WriteAt(*position / kSectorSize * kSectorSize, erased);
  return std::uint64_t{configuration_.erase_ms} * 1000;
}

std::optional<std::uint64_t> NorFlash::Program(std::uint32_t address,
                                               std::span<const std::uint8_t> bytes,
                                               std::span<const std::uint32_t> stuck_words) {
  if (!PositionOf(address)) {
    return std::nullopt;
  }
  std::uint64_t pages = 0;
  std::size_t done = 0;
  while (done < bytes.size()) {
    const std::optional<std::uint64_t> position = PositionOf(std::uint64_t{address} + done);
    if (!position) {
      break;
    }
    // A page program past the end of its page would wrap to the start of the page, so the chip
    // splits it.
    const std::size_t count = std::min<std::size_t>(
        bytes.size() - done, static_cast<std::size_t>(kPageSize - *position % kPageSize));
    std::array<std::uint8_t, kPageSize> page;
    const std::span cells = std::span(page).first(count);
    file_.ReadAt(*position, cells);
    for (std::size_t i = 0; i < count; ++i) {
      if (!IsStuck(*position + i, stuck_words)) {
        cells[i] &= bytes[done + i];
      }
    }
    file_.WriteAt(*position, cells);
    done += count;
    ++pages;
  }
  return pages * configuration_.program_us;
}

}  // namespace virtual_camera
