#include "images/read_image.h"

#include <algorithm>
#include <array>
#include <utility>

#include "images/elf.h"
#include "images/intel_hex.h"
#include "images/srecord.h"

namespace borvanusb {

namespace {

constexpr std::array<std::pair<std::string_view, ImageForm>, 12> kEndings = {{
    {"hex", ImageForm::kIntelHex},
    {"ihex", ImageForm::kIntelHex},
    {"ihx", ImageForm::kIntelHex},
    {"srec", ImageForm::kSRecord},
    {"mot", ImageForm::kSRecord},
    {"s19", ImageForm::kSRecord},
    {"s28", ImageForm::kSRecord},
    {"s37", ImageForm::kSRecord},
    {"s1", ImageForm::kSRecord},
    {"s2", ImageForm::kSRecord},
    {"s3", ImageForm::kSRecord},
    {"elf", ImageForm::kElf},
}};

char Small(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

}  // namespace

std::string_view NameOf(ImageForm form) {
  switch (form) {
    case ImageForm::kAuto:
      return "auto";
    case ImageForm::kRaw:
      return "raw";
    case ImageForm::kIntelHex:
      return "hex";
    case ImageForm::kSRecord:
      return "srec";
    case ImageForm::kElf:
      return "elf";
  }
  return "";
}

std::optional<ImageForm> FormOfName(std::string_view file) {
  const std::size_t point = file.find_last_of("./\\");
  if (point == std::string_view::npos || file[point] != '.') {
    return std::nullopt;
  }
  std::string ending(file.substr(point + 1));
  std::ranges::transform(ending, ending.begin(), Small);
  const auto known =
      std::ranges::find(kEndings, ending, [](const auto& entry) { return entry.first; });
  return known != kEndings.end() ? std::optional(known->second) : std::nullopt;
}

std::optional<ImageForm> FormOf(std::string_view file, std::span<const std::uint8_t> bytes,
                                ImageForm wished) {
  if (wished != ImageForm::kAuto) {
    return wished;
  }
  const auto content = RecogniseFormat(bytes);
  if (!content) {
    return FormOfName(file).value_or(ImageForm::kRaw);
  }
  switch (*content) {
    case ImageFormat::kIntelHex:
      return ImageForm::kIntelHex;
    case ImageFormat::kSRecord:
      return ImageForm::kSRecord;
    case ImageFormat::kElf:
      return ImageForm::kElf;
    case ImageFormat::kUf2:
    case ImageFormat::kTextDump:
      break;
  }
  return std::nullopt;
}

ImageContent ReadImage(std::span<const std::uint8_t> bytes, ImageForm form) {
  switch (form) {
    case ImageForm::kIntelHex:
      return ReadIntelHex(bytes);
    case ImageForm::kSRecord:
      return ReadSRecord(bytes);
    case ImageForm::kElf:
      return ReadElf(bytes);
    case ImageForm::kAuto:
    case ImageForm::kRaw:
      break;
  }
  SegmentCollector collector;
  collector.Add(0, bytes, {"byte", 0});
  return {collector.Take(), std::nullopt};
}

}  // namespace borvanusb
