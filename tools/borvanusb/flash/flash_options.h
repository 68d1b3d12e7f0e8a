#pragma once

// The arguments and options that commands on the flash share.

#include <string>
#include <string_view>
#include <vector>

#include "base/numbers.h"
#include "command/command_rules.h"
#include "command/values.h"
#include "flash/image_files.h"

namespace borvanusb {

constexpr const char* kWholeFlash = "all";  // in place of a range
constexpr const char* kFlashSizeText = "size of the flash, such as 1M, if the tool can't find it";

// The range of a command that also takes all.
Range RangeBesideAll(const std::string& text);

// What the user should know of a range; mostly empty.
std::string RangeRemark(const std::string& text);

// Without --address an image whose name tells another one than 0 is in doubt: backups carry theirs.
// Throws WrongUse.
void AskForAddress(const ImageWish& image, ImageForm form, const GivenOptions& given);

// What can't be right in the places of several images, or of one. Throws WrongUse.
void CheckPlaces(const std::vector<ImageWish>& images, ImageForm form, const GivenOptions& given);

// The form that --format names.
ImageForm ImageFormValue(const std::string& text);

// The name of a region.
std::string RegionValue(const std::string& text);

template <typename C>
void AddFlashSize(RuleOf<C>& rule) {
  rule.Add(Option("--flash-size", "SIZE", kFlashSizeText),
           [](C& command, const std::string& text) { command.flash_size = FlashSizeValue(text); });
}

template <typename C>
void AddRegion(RuleOf<C>& rule, std::string_view text) {
  rule.Add(Option("--region", "NAME", text),
           [](C& command, const std::string& name) { command.region = RegionValue(name); });
}

// A command on a range, or on a region of that name. Throws WrongUse.
void CheckRangeOrRegion(const GivenOptions& given);

template <typename C>
void AddBackup(RuleOf<C>& rule, std::string_view place) {
  rule.Add(
      File(Option("--backup", "FILE", "where the old bytes go; default " + std::string(place))),
      [](C& command, const std::string& text) { command.backup_file = FileValue(text); });
  rule.Add(Flag("--no-backup", "don't keep the old bytes"),
           [](C& command, const std::string&) { command.backup = false; });
}

template <typename C>
void CheckBackup(const C& command, const GivenOptions& given) {
  if (given.Has("--backup") && !command.backup) {
    throw WrongUse("--no-backup: contradicts --backup");
  }
}

// An image goes to one place: that after an @, --address or --region. Throws WrongValue.
inline void RefuseSecondPlace(bool has_place) {
  if (has_place) {
    throw WrongValue("contradicts another place that is given; give one of the two");
  }
}

// After AddImage, since the word for an image may have its place, too.
template <typename C>
void AddImageAddress(RuleOf<C>& rule) {
  rule.Add(Option("--address", "ADDR", "where address 0 of the image goes, default 0"),
           [](C& command, const std::string& text) {
             const std::uint32_t address = AddressValue(text);
             RefuseSecondPlace(command.address || !command.region.empty());
             command.address = address;
           });
  rule.Add(Option("--region", "NAME", "the region of the camera's profile that it goes to"),
           [](C& command, const std::string& text) {
             const std::string region = RegionValue(text);
             RefuseSecondPlace(command.address || !command.region.empty());
             command.region = region;
           });
  rule.Add(
      Choices(Option("--format", "FORMAT", "of the image: auto (default), raw, hex, srec, elf"),
              {"auto", "raw", "hex", "srec", "elf"}),
      [](C& command, const std::string& text) { command.form = ImageFormValue(text); });
}

// The images of a command with the options above.
template <typename C>
std::vector<ImageWish> WishesOf(const C& command) {
  std::vector<ImageWish> wishes = {{command.image, command.address, command.region}};
  wishes.insert(wishes.end(), command.more.begin(), command.more.end());
  return wishes;
}

template <typename C>
void AddImage(RuleOf<C>& rule) {
  rule.Add(Repeated(File(Argument("IMAGE", "file, or file@ADDR, or file@region:NAME"))),
           [](C& command, const std::string& text) {
             const ImageWish wish = ImageWishValue(text);
             if (command.image.empty()) {
               command.image = wish.file;
               command.address = wish.address;
               command.region = wish.region;
             } else {
               command.more.push_back(wish);
             }
           });
}

}  // namespace borvanusb
