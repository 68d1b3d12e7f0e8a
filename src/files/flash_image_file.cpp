#include "files/flash_image_file.h"

#include "files/file.h"

namespace borvan {
namespace {

// Two pieces of 60 bytes: the most that programming appends. Growing a full vector would copy the
// image and double its memory.
constexpr std::size_t kRoomForPadding = 120;

}  // namespace

std::optional<std::vector<std::uint8_t>> ReadFlashImage(const std::string& path) {
  auto file = File::OpenToRead(path);
  if (!file.has_value()) {
    return std::nullopt;
  }
  const auto size = static_cast<std::uint32_t>(file->Size());
  std::vector<std::uint8_t> image;
  image.reserve(size + kRoomForPadding);
  image.resize(size);
  file->ReadExactly(image);
  return image;
}

}  // namespace borvan
