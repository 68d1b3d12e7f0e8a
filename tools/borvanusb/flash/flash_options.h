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

constexpr const char* kWholeFlash = "all";  // instead of a range
constexpr const char* kFlashSizeText = "size of the flash, such as 1M, if the tool can't find it";

// The range of a command that also accepts kWholeFlash.
Range RangeBesideAll(const std::string& text);

// A remark about a range for the user. Usually empty.
std::string RangeRemark(const std::string& text);

// If a file name contains an address other than 0, --address is required: the names of backups
// contain their address. Throws WrongUse.
void AskForAddress(const ImageWish& image, ImageForm form, const GivenOptions& given);

// Throws WrongUse if the positions of images can't be correct.
void CheckPlaces(const std::vector<ImageWish>& images, ImageForm form, const GivenOptions& given);

// Parses a value of --format.
ImageForm ImageFormValue(const std::string& text);

// Parses the name of a region.
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

// Checks a command that takes a range or the name of a region. Throws WrongUse.
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

// An image has one position: after an @, with --address or with --region. Throws WrongValue for a
// second one.
inline void RefuseSecondPlace(bool has_place) {
  if (has_place) {
    throw WrongValue("contradicts another place that is given; give one of the two");
  }
}

// Must be added after AddImage, because the word of an image may contain its position, too.
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
