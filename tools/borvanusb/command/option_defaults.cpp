#include "command/option_defaults.h"

#include <algorithm>
#include <array>
#include <map>

#include "command/command_rules.h"

namespace borvanusb {

bool MayHaveDefault(std::string_view option) {
  constexpr std::array<std::string_view, 9> kOnlyGiven = {"--camera", "--profile", "--trace",
                                                          "--log",    "--address", "--region",
                                                          "--mask",   "--backup",  "--journal"};
  return std::ranges::find(kOnlyGiven, option) == kOnlyGiven.end();
}

DefaultsSource LineDefaults(const Context& context) {
  // Caches the defaults, so that cameras are listed once for each choice instead of once for each
  // line.
  using Kept = std::map<std::vector<std::string>, OptionDefaults>;
  return [&context, kept = std::make_shared<Kept>()](const CommonArguments& line) {
    CommonArguments common = context.common;
    if (!line.cameras.empty()) {
      common.cameras = line.cameras;
    }
    const auto found = kept->find(common.cameras);
    if (found != kept->end()) {
      return found->second;
    }
    OptionDefaults defaults = ToolKnowledge().defaults(common, context.host);
    std::erase_if(defaults.values, [](const auto& value) {
      return std::ranges::any_of(AllCommonRules().options, [&](const OptionDescription& option) {
        return option.names.back() == value.first;
      });
    });
    return (*kept)[common.cameras] = std::move(defaults);
  };
}

}  // namespace borvanusb
