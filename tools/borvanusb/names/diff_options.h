#pragma once

#include <string>

#include "command/command_rules.h"
#include "command/values.h"
#include "names/diff_sources.h"

namespace borvanusb {

// Adds the arguments `left`, `right` and `csv` of commands that compare two sides.

// Throws WrongUse if both sides are the same camera, or if an option has no effect.
void CheckDiffSides(const std::string& left, const std::string& right, const GivenOptions& given);

template <typename C>
void AddDiffSides(RuleOf<C>& rule) {
  rule.Add(File(Argument("A",
                         "a list, camera (the current values of the camera), camera:WHICH, "
                         "preset:NAME, or reset (the reset values of the profile)")),
           [](C& command, const std::string& text) { command.left = FileValue(text); });
  rule.Add(File(Argument("B", "the other side")),
           [](C& command, const std::string& text) { command.right = FileValue(text); });
  rule.Add(File(Option("--csv", "FILE", "write the differences to a file, too")),
           [](C& command, const std::string& text) { command.csv = FileValue(text); });
  rule.Check([](const C& command, const GivenOptions& given) {
    CheckDiffSides(command.left, command.right, given);
  });
  rule.Details(
      "From a camera, only the registers of the other side are read; with two cameras, all "
      "registers of the profile. A list may also have lines NAME=VALUE, as reg dump --all-named "
      "writes them.");
}

}  // namespace borvanusb
