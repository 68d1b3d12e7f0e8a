// The command `reg show`.

#include "names/show.h"

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/numbers.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "maps/map_text.h"
#include "names/field_value.h"
#include "names/known_names.h"
#include "names/register_text.h"
#include "names/register_words.h"
#include "output/output.h"

namespace borvanusb {

namespace {

std::string DeviceText(const RegisterAccess& access) {
  if (!access.on_i2c) {
    return access.width == RegisterWidth::kWide ? "chip, 32 bits an access" : "chip";
  }
  return Format("I2C slave {}", Hex(access.target.slave, 2));
}

void PrintEnumerations(const MapField& field, Output& output) {
  for (const MapEnumeration* const enumeration : field.enumerations) {
    if (enumeration == nullptr) {
      continue;
    }
    for (const MapEnumeratedValue& value : enumeration->values) {
      const std::string text = PlainText(value.description);
      output.Line(Format("      {} = {}{}{}",
                         value.is_default ? "else" : Format("{}", value.value & value.counting),
                         value.name, text.empty() ? "" : "  ", text));
    }
  }
}

void PrintField(const NamedTarget& target, std::optional<std::uint64_t> value, Output& output) {
  const MapField& field = *target.field;
  std::string now;
  if (value) {
    const std::uint64_t part = PartOf(target, *value);
    const std::string meaning = MeaningOf(field, part);
    now = Format("  now {}{}", ValueText(target, part),
                 meaning.empty() ? "" : Format(" ({})", meaning));
  }
  const std::string text = PlainText(field.description, field.index);
  output.Line(Format("  {} {}  {}{}", field.name, BitsText(field), WordOf(field.access), now));
  if (!text.empty()) {
    output.Line(Format("      {}", text));
  }
  if (field.constraint.kind == MapWriteConstraint::Kind::kRange) {
    output.Line(
        Format("      may be set to {} to {}", field.constraint.minimum, field.constraint.maximum));
  }
  PrintEnumerations(field, output);
}

void PrintRegister(const NamedRegister& named, std::optional<std::uint64_t> value, Output& output) {
  const MapRegisterForm& form = *named.in_map->form;
  const RegisterAccess access = AccessOf(named);
  const NamedTarget whole{&named, nullptr};
  output.Line(named.name);
  const std::string text = PlainText(form.description, named.in_map->index);
  if (!text.empty()) {
    output.Line(Format("  {}", text));
  }
  output.Line(Format("  address  {} ({}), {} bits, {}", Hex(named.address, 4), DeviceText(access),
                     named.Bits(), WordOf(form.access)));
  if (form.reset_mask != 0) {
    output.Line(Format("  reset    {}", ValueText(whole, form.reset_value & form.reset_mask)));
  }
  if (ChangesWhenRead(form)) {
    output.Line("  reading it changes it");
  }
  if (value) {
    output.Line(Format("  now      {}", ValueText(whole, *value)));
  }
}

}  // namespace

ExitCode Run(const RegShowCommand& command, Context& context) {
  std::optional<CameraIdentity> identity;
  std::shared_ptr<const RegisterNames> names;
  if (command.read) {
    identity = ChosenCamera(context.host, context.common.cameras);
    names = NamesNeededFor(command.name, *identity, context);
  } else {
    names = KnownNames(context);
  }
  const NamedTarget target = names->Find(command.name);
  const MapRegisterForm& form = *target.of->in_map->form;
  std::optional<std::uint64_t> value;
  // Showing the documentation of a register must not change it.
  if (identity && CanRead(form.access) && !ChangesWhenRead(form)) {
    const auto camera = context.host.OpenCamera(*identity);
    value = ReadOne(AccessOf(*target.of), *camera);
  }
  PrintRegister(*target.of, value, context.output);
  for (const MapField& field : form.fields) {
    if (target.field == nullptr || target.field == &field) {
      PrintField({target.of, &field}, value, context.output);
    }
  }
  context.result = DescriptionJson(*target.of);
  context.result["value"] = value ? nlohmann::ordered_json(*value) : nlohmann::ordered_json();
  context.result["hex"] = value ? nlohmann::ordered_json(ValueText({target.of, nullptr}, *value))
                                : nlohmann::ordered_json();
  return ExitCode::kDone;
}

CommandRule RegShowRule() {
  RuleOf<RegShowCommand> rule({"reg", "show"}, "Shows what a register is and what it holds.");
  rule.Add(
      NamesOf("registers", Argument("NAME", "a register or field of the profile: SENSOR.CTRL")),
      [](RegShowCommand& command, const std::string& text) { command.name = FileValue(text); });
  rule.Add(Flag("--no-read", "show the documentation alone; with --profile no camera is needed"),
           [](RegShowCommand& command, const std::string&) { command.read = false; });
  rule.Details("A register that changes when it is read is not read; reg read NAME reads it once.");
  rule.Refuse("--progress", kNoProgress);
  rule.Example("borvanusb reg show SENSOR.CTRL");
  return rule.Take();
}

}  // namespace borvanusb
