#pragma once

#include <string_view>

#include "command/command_rules.h"

namespace borvanusb {

// Commands that print a text which is built into the tool.
template <typename C>
void RefuseAllOfCameras(RuleOf<C>& rule) {
  constexpr std::string_view kNoCamera = "which uses no camera";
  rule.Refuse("--camera", kNoCamera);
  rule.Refuse("--profile", kNoCamera);
  rule.Refuse("--force-profile", kNoCamera);
  rule.Refuse("--timeout", kNoCamera);
  rule.Refuse("--trace", kNoCamera);
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--verbose", kNoCamera);
}

}  // namespace borvanusb
