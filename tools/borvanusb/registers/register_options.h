#pragma once

// Arguments and options of commands on registers, both of the chip and over I2C.

#include <string>
#include <utility>

#include "command/command_rules.h"
#include "command/standard_streams.h"
#include "command/values.h"

namespace borvanusb {

constexpr int kByteBits = 8;
constexpr const char* kRangeText = "0x1a3, or several: 0x1000-0x10ff, 0x1000+256";
constexpr const char* kMaskText = "change only the bits that are 1 in M; reads first";
constexpr const char* kVerifyText = "read back and compare";
constexpr const char* kDumpFileText =
    "file to write, as a list, or raw bytes for .bin; default: standard output (-)";
constexpr const char* kHexText = "show a hex dump instead of a list";
constexpr const char* kVerifyListText = "read every register back and compare";
constexpr const char* kCheckText = "check the list and write nothing";

// Rejects options about a camera or its transfers if the command line does not use a camera.
void RefuseCamera(const GivenOptions& given, const std::string& why);

template <typename C>
void AddRange(RuleOf<C>& rule, std::string name) {
  rule.Add(Argument(std::move(name), kRangeText),
           [](C& command, const std::string& text) { command.range = RangeValue(text); });
}

template <typename C>
void AddDumpFile(RuleOf<C>& rule) {
  rule.Add(File(Optional(Argument("FILE", kDumpFileText))),
           [](C& command, const std::string& text) { command.file = FileOrStreamValue(text); });
  rule.AddFlag("--hex", kHexText, &C::hex);
}

// Checks the combination of the options that AddDumpFile added.
template <typename C>
void CheckDumpFile(const C& command, const GivenOptions& given) {
  CheckStandardOutput(command.file, given);
  if (command.hex && !command.file.empty()) {
    throw WrongUse("--hex: shows the values on standard output; a file gets a list");
  }
}

template <typename C>
void AddList(RuleOf<C>& rule) {
  rule.Add(
      File(Argument("FILE", "the list, or - for standard input; the whole list is checked first")),
      [](C& command, const std::string& text) { command.file = FileOrStreamValue(text); });
  rule.AddFlag("--check-only", kCheckText, &C::check_only);
  rule.AddFlag("--verify", kVerifyListText, &C::verify);
}

template <typename C>
void CheckVerify(const C& command) {
  if (command.verify && command.check_only) {
    throw WrongUse("--verify: reads back what was written, and --check-only writes nothing");
  }
}

template <typename C>
void CheckCheckOnly(const C& command, const GivenOptions& given) {
  if (command.check_only) {
    RefuseCamera(given, "--check-only, which uses no camera");
  }
}

template <typename C>
void AddAddressAndValue(RuleOf<C>& rule) {
  rule.Add(Argument("ADDR", "the register's address"),
           [](C& command, const std::string& text) { command.address = AddressValue(text); });
  rule.Add(Argument("VALUE", "what to write"),
           [](C& command, const std::string& text) { command.value = WordValue(text); });
}

template <typename C>
void AddMaskAndVerify(RuleOf<C>& rule) {
  rule.Add(Option("--mask", "M", kMaskText),
           [](C& command, const std::string& text) { command.mask = WordValue(text); });
  rule.AddFlag("--verify", kVerifyText, &C::verify);
}

}  // namespace borvanusb
