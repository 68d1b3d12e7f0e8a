#pragma once

// Runs one command for several cameras at the same time, with one process for each.

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "base/exit_code.h"
#include "camera/camera.h"
#include "command/command_rules.h"
#include "command/context.h"

namespace borvanusb {

struct SeveralWork {
  // The words of the command line for one camera, without --all and the common options.
  std::function<std::vector<std::string>(const CameraIdentity&)> words;
  // A short summary of one camera's result: "14 registers written".
  std::function<std::string(const nlohmann::ordered_json&)> summary;
  bool shows_progress = true;  // the command accepts --progress
};

// Whether a command is for several cameras: with --all, or with more than one --camera.
inline bool IsForSeveral(bool all, const Context& context) {
  return all || context.common.cameras.size() > 1;
}

// Runs the command for all cameras (`all`) or for those of --camera. Shows the progress and the
// result of each one. Returns the highest exit code. Prints one JSON line for each camera, as in
// docs/json/several.schema.json; context.result stays empty. With `all`, cameras without a vendor
// unit are skipped; throws Failure kNoCamera if there is no other one.
ExitCode RunForSeveral(const SeveralWork& work, bool all, Context& context);

// The cameras of RunForSeveral.
std::vector<CameraIdentity> SeveralCameras(bool all, Context& context);

// The words of the current command line without --all. `change` (may be empty) is called for each
// option with a value and for each argument, and may change the value. For an argument, `option` is
// "".
using ChangeValue = std::function<void(const std::string& option, std::string& value)>;
std::vector<std::string> WordsForOne(const GivenWords& words, const ChangeValue& change = {});

// Inserts a text before the extension: "dir/report.json" with "-2" becomes "dir/report-2.json".
std::string InsertBeforeExtension(const std::string& file, const std::string& part);

constexpr std::string_view kAllText = "all cameras, at the same time";

template <typename C>
void AddAll(RuleOf<C>& rule) {
  rule.AddFlag("--all", kAllText, &C::all);
}

inline bool IsForSeveral(bool all, const GivenOptions& given) {
  return all || given.Count("--camera") > 1;
}

// Throws WrongUse.
inline void CheckAll(bool all, const GivenOptions& given) {
  if (all && given.Has("--camera")) {
    throw WrongUse("--all: means every camera, --camera only some: give one of the two");
  }
}

}  // namespace borvanusb
