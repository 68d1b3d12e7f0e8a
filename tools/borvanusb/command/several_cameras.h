#pragma once

// One command for several cameras: each by a process of its own, at the same time.

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
  // What the result of one camera says, in a few words: "14 registers written".
  std::function<std::string(const nlohmann::ordered_json&)> summary;
  bool shows_progress = true;  // whether the command takes --progress
};

// Whether a command is for several cameras: --all, or more than one --camera.
inline bool IsForSeveral(bool all, const Context& context) {
  return all || context.common.cameras.size() > 1;
}

// Runs the command for every camera (`all`) or for those of --camera, shows how far each is, and
// then how it ended. Returns the highest of their exit codes. Prints one JSON line for each camera,
// as docs/json/several.schema.json has it; context.result stays empty. With `all`, cameras without
// a vendor unit are skipped; throws Failure kNoCamera when no other one is there.
ExitCode RunForSeveral(const SeveralWork& work, bool all, Context& context);

// The cameras of RunForSeveral.
std::vector<CameraIdentity> SeveralCameras(bool all, Context& context);

// The words of the given command line without --all; `change`, which may be empty, sees each option
// that has a value and each argument and may change the value. An argument's option is "".
using ChangeValue = std::function<void(const std::string& option, std::string& value)>;
std::vector<std::string> WordsForOne(const GivenWords& words, const ChangeValue& change = {});

// "dir/report.json" with "-2" before its extension: "dir/report-2.json".
std::string InsertBeforeExtension(const std::string& file, const std::string& part);

constexpr std::string_view kAllText = "every camera there is, at the same time";

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
