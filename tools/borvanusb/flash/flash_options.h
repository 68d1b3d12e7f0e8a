#pragma once

// The arguments and options that commands on the flash share.

#include <string>
#include <string_view>

#include "base/numbers.h"
#include "command/command_rules.h"
#include "command/values.h"

namespace borvanusb {

constexpr const char* kWholeFlash = "all";  // in place of a range
constexpr const char* kFlashSizeText = "size of the flash, such as 1M, if the tool can't find it";

// The range of a command that also takes all.
Range RangeBesideAll(const std::string& text);

// What the user should know of a range; mostly empty.
std::string RangeRemark(const std::string& text);

// Without --address an image whose name tells another one than 0 is in doubt: backups carry theirs.
// Throws WrongUse.
void AskForAddress(const std::string& image, const GivenOptions& given);

template <typename C>
void AddFlashSize(RuleOf<C>& rule) {
  rule.Add(Option("--flash-size", "SIZE", kFlashSizeText),
           [](C& command, const std::string& text) { command.flash_size = FlashSizeValue(text); });
}

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

template <typename C>
void AddImageAddress(RuleOf<C>& rule) {
  rule.Add(Option("--address", "ADDR", "where the image begins in the flash, default 0"),
           [](C& command, const std::string& text) { command.address = AddressValue(text); });
}

template <typename C>
void AddImage(RuleOf<C>& rule) {
  rule.Add(File(Argument("IMAGE", "file with the bytes")),
           [](C& command, const std::string& text) { command.image = FileValue(text); });
}

}  // namespace borvanusb
