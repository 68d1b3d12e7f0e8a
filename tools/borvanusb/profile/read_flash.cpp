// Reads the flash section of a profile: size and regions.
#include <algorithm>
#include <cctype>

#include "base/format.h"
#include "base/hex_bytes.h"
#include "profile/profile_sections.h"

namespace borvanusb {

namespace {

constexpr std::uint64_t kLargestFlash = std::uint64_t{1} << 32U;

// A region and its position in the file.
struct ToldRegion {
  FlashRegion region;
  const JsonNode* node = nullptr;
};

void ReadBeginning(const JsonNode& item, FlashRegion& region, ValueReader& values) {
  auto text = values.Text(item, "begins-with");
  if (!text) {
    return;
  }
  std::ranges::transform(*text, text->begin(), [](unsigned char digit) {
    return static_cast<char>(std::tolower(digit));
  });
  const auto bytes = ParseHexBytes(*text);
  if (!bytes || bytes->empty()) {
    values.Wrong(*item.Find("begins-with"),
                 "must be bytes in hexadecimal, two digits each, such as \"55aa\"");
    return;
  }
  region.begins_with = *bytes;
}

std::optional<ToldRegion> ReadRegion(const JsonNode& item, ValueReader& values) {
  if (!values.IsObject(item,
                       {"name", "range", "read-only", "files", "begins-with", "description"})) {
    return std::nullopt;
  }
  ToldRegion told{{}, &item};
  FlashRegion& region = told.region;
  region.name = values.NeededText(item, "name");
  if (!region.name.empty() && !IsPlainName(region.name)) {
    values.Wrong(*item.Find("name"), "may have letters, digits and _ - . only");
  }
  const std::string text = values.NeededText(item, "range");
  const auto range = ParseRange(text);
  if (!text.empty() && (!range || text.find_first_of("-+") == std::string::npos)) {
    values.Wrong(*item.Find("range"),
                 "must be a range, such as \"0x0-0x3ffff\" or \"0x40000+0x1000\"");
    return std::nullopt;
  }
  region.range = range.value_or(Range{});
  region.read_only = values.Flag(item, "read-only", false);
  region.files = values.Texts(item, "files");
  ReadBeginning(item, region, values);
  region.description = values.Text(item, "description").value_or("");
  return told;
}

void CheckRegions(const std::vector<ToldRegion>& regions, std::optional<std::uint64_t> size,
                  ValueReader& values) {
  for (std::size_t i = 0; i < regions.size(); ++i) {
    const FlashRegion& region = regions[i].region;
    if (size && region.range.last >= *size) {
      values.Wrong(*regions[i].node,
                   Format("{} is beyond the flash's end, {}", Text(region.range), SizeText(*size)));
    }
    for (std::size_t other = 0; other < i; ++other) {
      if (regions[other].region.name == region.name) {
        values.Wrong(*regions[i].node, Format("there are two regions \"{}\"", region.name));
      }
    }
    if (i > 0 && regions[i - 1].region.range.last >= region.range.first) {
      values.Wrong(
          *regions[i].node,
          Format("the regions \"{}\" ({}) and \"{}\" ({}) overlap", regions[i - 1].region.name,
                 Text(regions[i - 1].region.range), region.name, Text(region.range)));
    }
  }
}

}  // namespace

FlashLayout ReadFlashSection(const JsonNode* node, ValueReader& values) {
  FlashLayout layout;
  if (node == nullptr || !values.IsObject(*node, {"size", "regions", "image-region"})) {
    return layout;
  }
  layout.size = values.Number(*node, "size", kLargestFlash);
  if (layout.size && (*layout.size == 0 || *layout.size % kSectorSize != 0)) {
    values.Wrong(*node->Find("size"), "must be whole sectors of 4096 bytes, such as \"1M\"");
    layout.size.reset();
  }
  std::vector<ToldRegion> regions;
  for (const JsonNode& item : values.Items(node->Find("regions"))) {
    if (auto told = ReadRegion(item, values)) {
      regions.push_back(std::move(*told));
    }
  }
  std::ranges::stable_sort(regions, {},
                           [](const ToldRegion& told) { return told.region.range.first; });
  CheckRegions(regions, layout.size, values);
  for (ToldRegion& told : regions) {
    layout.regions.push_back(std::move(told.region));
  }
  layout.image_region = values.Text(*node, "image-region").value_or("");
  if (!layout.image_region.empty()) {
    const FlashRegion* const region = layout.Find(layout.image_region);
    if (region == nullptr || region->read_only) {
      values.Wrong(*node->Find("image-region"), region == nullptr
                                                    ? "must be the name of a region"
                                                    : "is a region that is read-only");
    }
  }
  return layout;
}

}  // namespace borvanusb
