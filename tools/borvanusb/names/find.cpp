// The command `reg find`.

#include "names/find.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/name_pattern.h"
#include "base/numbers.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "maps/map_text.h"
#include "names/known_names.h"
#include "names/register_text.h"
#include "output/columns.h"
#include "output/output.h"

namespace borvanusb {

namespace {

bool Holds(const std::string& where, const std::string& text) {
  return MatchesPattern(Format("*{}*", text), where);
}

bool FieldHolds(const MapField& field, const std::string& text) {
  return Holds(std::string(field.name), text) ||
         Holds(PlainText(field.description, field.index), text);
}

// Whether all texts occur in the name, number or description of a register or of one of its fields.
bool IsMeant(const NamedRegister& named, const std::vector<std::string>& texts) {
  return std::ranges::all_of(texts, [&](const std::string& text) {
    const MapRegisterForm& form = *named.in_map->form;
    const auto number = ParseNumber(text);
    return (number && *number == named.address) || Holds(named.name, text) ||
           Holds(PlainText(form.description, named.in_map->index), text) ||
           std::ranges::any_of(form.fields,
                               [&](const MapField& field) { return FieldHolds(field, text); });
  });
}

}  // namespace

ExitCode Run(const RegFindCommand& command, Context& context) {
  const auto names = KnownNames(context);
  std::vector<const NamedRegister*> found;
  for (const NamedRegister& named : names->All()) {
    if (IsMeant(named, command.texts)) {
      found.push_back(&named);
    }
  }
  std::size_t columns = 0;
  for (const NamedRegister* const named : found) {
    columns = std::max(columns, ColumnsOf(named->name));
  }
  auto list = nlohmann::ordered_json::array();
  for (const NamedRegister* const named : found) {
    const MapRegisterForm& form = *named->in_map->form;
    context.output.Line(Format("{}  {}  {} bits  {}  {}", Padded(named->name, columns),
                               AddressText(AccessOf(*named)), named->Bits(), WordOf(form.access),
                               PlainText(form.description, named->in_map->index)));
    for (const MapField& field : form.fields) {
      if (!command.texts.empty() && std::ranges::any_of(command.texts, [&](const auto& text) {
            return FieldHolds(field, text);
          })) {
        context.output.Line(Format("  {} {}  {}", field.name, BitsText(field),
                                   PlainText(field.description, field.index)));
      }
    }
    if (context.common.json) {
      list.push_back(DescriptionJson(*named));
    }
  }
  context.output.Note(Format("{} of {}", Count(found.size(), "register"), names->All().size()));
  context.result = {{"profile", names->Profile().file}, {"registers", std::move(list)}};
  return ExitCode::kDone;
}

CommandRule RegFindRule() {
  RuleOf<RegFindCommand> rule({"reg", "find"}, "Looks for registers and fields of a profile.");
  rule.Add(Optional(Repeated(Argument("TEXT", "in name, number or description; default: all"))),
           [](RegFindCommand& command, const std::string& text) {
             command.texts.push_back(FileValue(text));
           });
  rule.Details(
      "All texts must be found in a register or its fields. With --profile no camera is needed.");
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb reg find exposure");
  return rule.Take();
}

}  // namespace borvanusb
