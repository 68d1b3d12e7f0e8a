#include "flash/image_files.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "command/command_line.h"
#include "command/values.h"
#include "flash/name_address.h"

namespace borvanusb {

namespace {

constexpr std::string_view kRegionMark = "region:";

std::string TextOf(ImageForm form) {
  switch (form) {
    case ImageForm::kIntelHex:
      return "an Intel HEX file";
    case ImageForm::kSRecord:
      return "a Motorola S-record file";
    case ImageForm::kElf:
      return "an ELF file";
    case ImageForm::kAuto:
    case ImageForm::kRaw:
      break;
  }
  return "a file of raw bytes";
}

[[noreturn]] void RefuseOtherFormat(const std::string& file, std::span<const std::uint8_t> bytes) {
  const bool is_dump = RecogniseFormat(bytes) == ImageFormat::kTextDump;
  throw Failure(
      ExitCode::kFile,
      Format("{} is {}, not the raw bytes of a flash", file,
             is_dump ? "a text dump of a flash" : "a UF2 file"),
      Format("{}\nTo take the file's bytes as they are, give --force.",
             is_dump ? "Read the flash again into a file whose name ends in .bin, and use that."
                     : "Convert it to raw bytes with the tool that made it and give the address of "
                       "its first byte with --address."));
}

// Throws if the address in the file's name differs from the one in its content, because only one of
// them can be intended.
void RefuseDoubtfulAddress(const ImageFile& image) {
  const std::vector<std::uint32_t> named = AddressesInName(image.wish.file);
  const std::uint32_t first = image.segments.front().address;
  if (image.wish.HasPlace() || named.empty() || std::ranges::find(named, first) != named.end()) {
    return;
  }
  throw Failure(ExitCode::kUsage,
                Format("--address: is missing; the name of {} contains {}, but the addresses in "
                       "the file begin at {}",
                       image.wish.file, Hex(named.front()), Hex(first)),
                Format("To use the addresses in the file, add --address 0.\n"
                       "If they count from {} on, add --address {}.",
                       Hex(named.front()), Hex(named.front())));
}

ImageFile LoadImageFile(const ImageWish& wish, ImageForm form, bool take_any, Output& output) {
  ImageFile image{wish, form, {}};
  std::vector<std::uint8_t> bytes = ReadWholeFile(wish.file);
  if (bytes.empty()) {
    throw Failure(ExitCode::kFile, Format("{} is empty", wish.file),
                  "Give a file that holds the bytes of the flash.");
  }
  const auto found = FormOf(wish.file, bytes, form);
  if (!found && !take_any) {
    RefuseOtherFormat(wish.file, bytes);
  }
  image.form = found.value_or(ImageForm::kRaw);
  if (!image.HasAddresses()) {
    image.segments.push_back({0, std::move(bytes)});
    return image;
  }
  try {
    image.segments = ReadImage(bytes, image.form).segments;
  } catch (const ImageError& error) {
    throw Failure(ExitCode::kFile,
                  Format("{} can't be read as {}: {}", wish.file, TextOf(image.form), error.what()),
                  "Check that the file is whole, or make it again.\n"
                  "To take the file's bytes as they are, give --format raw.");
  }
  if (form == ImageForm::kAuto && !FormOfName(wish.file)) {
    output.Note(Format("{} is {}: the addresses in it count", wish.file, TextOf(image.form)));
  }
  RefuseDoubtfulAddress(image);
  return image;
}

}  // namespace

ImageWish ImageWishValue(const std::string& text) {
  ImageWish wish{FileValue(text)};
  const std::size_t mark = text.rfind('@');
  if (mark == std::string::npos || mark == 0) {
    return wish;
  }
  const std::string_view place = std::string_view(text).substr(mark + 1);
  if (place.starts_with(kRegionMark)) {
    wish.region = place.substr(kRegionMark.size());
    if (wish.region.empty()) {
      throw WrongValue("has no name of a region after region:");
    }
  } else if (const auto number = ParseSize(place);
             number && *number <= std::numeric_limits<std::uint32_t>::max()) {
    wish.address = static_cast<std::uint32_t>(*number);
  } else {
    return wish;
  }
  wish.file = text.substr(0, mark);
  return wish;
}

std::string ImageWord(const ImageWish& wish) {
  if (!wish.region.empty()) {
    return Format("{}@{}{}", wish.file, kRegionMark, wish.region);
  }
  if (wish.address) {
    return Format("{}@{}", wish.file, Hex(*wish.address));
  }
  // The @0 is needed if the name itself would be parsed as a name and a position.
  return ImageWishValue(wish.file).HasPlace() ? Format("{}@0", wish.file) : wish.file;
}

bool MayBeRaw(const std::string& file, ImageForm form) {
  return form == ImageForm::kAuto ? !FormOfName(file) : form == ImageForm::kRaw;
}

std::vector<ImageFile> LoadImageFiles(const std::vector<ImageWish>& wishes, ImageForm form,
                                      bool take_any, Output& output) {
  std::vector<ImageFile> files;
  for (const ImageWish& wish : wishes) {
    files.push_back(LoadImageFile(wish, form, take_any, output));
    if (wishes.size() > 1 && !files.back().HasAddresses() && !wish.HasPlace()) {
      throw Failure(
          ExitCode::kUsage,
          Format("{} contains raw bytes and needs a position when several images are given",
                 wish.file),
          Format("Give it one: {0}@ADDR or {0}@region:NAME.", wish.file));
    }
  }
  return files;
}

void RefuseBlankImage(const ImageFile& image) {
  const std::uint8_t first = image.segments.front().bytes.front();
  const bool same = std::ranges::all_of(image.segments, [&](const Segment& segment) {
    return std::ranges::all_of(segment.bytes, [&](std::uint8_t byte) { return byte == first; });
  });
  if (same && (first == 0 || first == std::numeric_limits<std::uint8_t>::max())) {
    throw Failure(
        ExitCode::kFile,
        Format("{} contains only {} bytes and is not firmware", image.wish.file, Hex(first, 2)),
        "If the flash must hold these bytes, give --force.");
  }
}

}  // namespace borvanusb
