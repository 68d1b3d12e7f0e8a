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
                         "a list, the word camera for what the camera holds now, camera:WHICH, "
                         "preset:NAME, or reset for the reset values of the profile")),
           [](C& command, const std::string& text) { command.left = FileValue(text); });
  rule.Add(File(Argument("B", "the other one")),
           [](C& command, const std::string& text) { command.right = FileValue(text); });
  rule.Add(File(Option("--csv", "FILE", "write the differences to a file, too")),
           [](C& command, const std::string& text) { command.csv = FileValue(text); });
  rule.Check([](const C& command, const GivenOptions& given) {
    CheckDiffSides(command.left, command.right, given);
  });
  rule.Details(
      "Of a camera only the registers are read that the other side has; of two cameras all that "
      "the "
      "profile names. A list may also have lines NAME=VALUE, as reg dump --all-named writes them.");
}

}  // namespace borvanusb
