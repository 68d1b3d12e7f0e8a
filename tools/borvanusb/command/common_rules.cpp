// The options of all commands.
#include <cmath>

#include "command/command_rules.h"
#include "command/values.h"

namespace borvanusb {

CommonRules MakeCommonRules() {
  CommonRules rules;
  const auto add = [&](OptionDescription option,
                       std::function<void(CommonArguments&, const std::string&)> store) {
    rules.options.push_back(std::move(option));
    rules.store.push_back(std::move(store));
  };
  add(Repeated(Option("--camera", "WHICH",
                      "a camera by index, path, vid:pid, name, or 3 or more characters of "
                      "path or name; needed when there are several")),
      [](CommonArguments& common, const std::string& text) {
        common.cameras.push_back(CameraValue(text));
      });
  add(File(Option("--profile", "FILE",
                  "the camera's profile: names of registers, flash regions, presets")),
      [](CommonArguments& common, const std::string& text) { common.profile = FileValue(text); });
  add(Flag("--force-profile", "use the profile even if it is for other cameras"),
      [](CommonArguments& common, const std::string&) { common.force_profile = true; });
  add(Option("--timeout", "SECONDS", "longest time without progress, default 10"),
      [](CommonArguments& common, const std::string& text) {
        constexpr double kMilliseconds = 1000;
        common.timeout =
            std::chrono::milliseconds(std::llround(DecimalValue(text, 0.1, 3600) * kMilliseconds));
      });
  add(Option("--wait", "SECONDS", "how long to wait for a camera that is missing or busy"),
      [](CommonArguments& common, const std::string& text) {
        constexpr double kMilliseconds = 1000;
        common.wait =
            std::chrono::milliseconds(std::llround(DecimalValue(text, 0.1, 86400) * kMilliseconds));
      });
  add(Choices(Option("--progress", "HOW",
                     "auto (a bar on a terminal, else lines), bar, lines, json or none"),
              {"auto", "bar", "lines", "json", "none"}),
      [](CommonArguments& common, const std::string& text) {
        common.progress =
            static_cast<ProgressMode>(ChoiceValue(text, {"auto", "bar", "lines", "json", "none"}));
      });
  add(File(Option("--trace", "FILE", "write the transfers of virtual cameras to a file")),
      [](CommonArguments& common, const std::string& text) { common.trace = FileValue(text); });
  add(File(Option("--log", "FILE", "append all texts of the run to a file, with times")),
      [](CommonArguments& common, const std::string& text) { common.log = FileValue(text); });
  add(Flag("--json", "print the result as one JSON object"),
      [](CommonArguments& common, const std::string&) { common.json = true; });
  add(Flag("--quiet", "no progress and no notes, only results and errors"),
      [](CommonArguments& common, const std::string&) { common.quiet = true; });
  add(Flag("--verbose", "report at the end which library, cameras and calls were used"),
      [](CommonArguments& common, const std::string&) { common.verbose = true; });
  OptionDescription help = Flag("-h", "show this help, or that of a command");
  help.names.emplace_back("--help");
  add(help, [](CommonArguments&, const std::string&) {});
  add(Flag("--version", "print the version"), [](CommonArguments&, const std::string&) {});
  return rules;
}

}  // namespace borvanusb
