#include "flash/flash_options.h"

#include <array>
#include <utility>
#include <vector>

#include "base/format.h"
#include "flash/name_address.h"

namespace borvanusb {

Range RangeBesideAll(const std::string& text) {
  try {
    return FlashRangeValue(text);
  } catch (const WrongValue& wrong) {
    throw WrongValue(Format("{}; all means the whole flash", wrong.what()));
  }
}

std::string RangeRemark(const std::string& text) {
  const std::string remark = RemarkOnEnd(text);
  return remark.empty() ? remark : Format("{} {}", text, remark);
}

void CheckRangeOrRegion(const GivenOptions& given) {
  if (given.Has("RANGE") && given.Has("--region")) {
    throw WrongUse("--region: contradicts RANGE: give one of the two");
  }
  if (!given.Has("RANGE") && !given.Has("--region")) {
    throw WrongUse("RANGE: is missing; give it, or a region of the camera's profile with --region");
  }
}

void CheckPlaces(const std::vector<ImageWish>& images, ImageForm form, const GivenOptions& given) {
  const char* const option = given.Has("--address") ? "--address" : "--region";
  if (given.Has(option)) {
    if (images.size() > 1) {
      throw WrongUse(Format("{}: several images can't go to one place; give each its own, as {}",
                            option, "IMAGE@ADDR or IMAGE@region:NAME"));
    }
    return;
  }
  for (const ImageWish& image : images) {
    if (images.size() > 1 && !image.HasPlace() && MayBeRaw(image.file, form)) {
      // --address would be for all images, so the place belongs to the word of this one.
      if (const auto addresses = AddressesInName(image.file); !addresses.empty()) {
        throw WrongUse(
            Format("IMAGE: {} has no place, but its name contains {}; give it one, such as {}",
                   Quoted(image.file), Hex(addresses.front()),
                   Quoted(Format("{}@{}", image.file, Hex(addresses.front())))));
      }
    }
    if (images.size() > 1 && !image.HasPlace() && form == ImageForm::kRaw) {
      throw WrongUse(Format("IMAGE: {} has no place; with several images give each its own, as {}",
                            Quoted(image.file), "IMAGE@ADDR or IMAGE@region:NAME"));
    }
    AskForAddress(image, form, given);
  }
}

ImageForm ImageFormValue(const std::string& text) {
  constexpr std::array<ImageForm, 5> kForms = {ImageForm::kAuto, ImageForm::kRaw,
                                               ImageForm::kIntelHex, ImageForm::kSRecord,
                                               ImageForm::kElf};
  return kForms.at(ChoiceValue(text, {NameOf(kForms[0]), NameOf(kForms[1]), NameOf(kForms[2]),
                                      NameOf(kForms[3]), NameOf(kForms[4])}));
}

std::string RegionValue(const std::string& text) {
  if (text.empty()) {
    throw WrongValue("is empty; the name of a region of the profile is needed");
  }
  return text;
}

void AskForAddress(const ImageWish& image, ImageForm form, const GivenOptions& given) {
  const std::vector<std::uint32_t> addresses = AddressesInName(image.file);
  if (given.Has("--address") || image.HasPlace() || addresses.empty() ||
      !MayBeRaw(image.file, form)) {
    return;
  }
  std::string shown;
  std::vector<WrongUse::Way> ways;
  for (const std::uint32_t address : addresses) {
    shown += Format("{}{}", shown.empty() ? "" : " and ", Hex(address));
    ways.push_back({Format("If it belongs to {}", Hex(address)), {"--address", Hex(address)}});
  }
  ways.push_back({"If it belongs to the beginning of the flash", {"--address", "0"}});
  throw WrongUse(
      Format("--address: is missing, but the name of {} contains {}", Quoted(image.file), shown),
      std::move(ways));
}

}  // namespace borvanusb
