// The command `profile names`.

#include "profile_commands/names.h"

#include <nlohmann/json.hpp>

#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "names/known_names.h"
#include "output/output.h"

namespace borvanusb {

ExitCode Run(const ProfileNamesCommand& command, Context& context) {
  const std::vector<std::string> found =
      CompletedNames(command.kind, command.word, *KnownNames(context));
  for (const std::string& name : found) {
    context.output.Line(name);
  }
  context.result = {{"names", found}};
  return ExitCode::kDone;
}

CommandRule ProfileNamesRule() {
  RuleOf<ProfileNamesCommand> rule({"profile", "names"},
                                   "Prints names of a profile, for shells that complete them.");
  rule.Add(Choices(Argument("KIND", "registers, settings, regions or presets"),
                   {kNameKinds.begin(), kNameKinds.end()}),
           [](ProfileNamesCommand& command, const std::string& text) {
             command.kind = static_cast<NameKind>(ChoiceValue(text, kNameKinds));
           });
  rule.Add(Optional(Argument("WORD", "how the names begin; default: all")),
           [](ProfileNamesCommand& command, const std::string& text) { command.word = text; });
  rule.Details("Makes no transfers. With --profile no camera is needed.");
  rule.Refuse("--progress", kNoProgress);
  rule.Refuse("--trace", "which makes no transfers");
  rule.Example("borvanusb profile names registers SENSOR.");
  return rule.Take();
}

}  // namespace borvanusb
