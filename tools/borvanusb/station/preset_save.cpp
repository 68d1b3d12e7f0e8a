// The command `preset save`.

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/failure.h"
#include "base/files.h"
#include "base/format.h"
#include "camera/camera_choice.h"
#include "camera/host.h"
#include "command/camera_work.h"
#include "command/command_rules.h"
#include "command/context.h"
#include "command/values.h"
#include "names/field_value.h"
#include "names/presets.h"
#include "names/register_words.h"
#include "output/output.h"
#include "profile/profile_folder.h"
#include "profile/read_profile.h"
#include "station/preset.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

const ProfilePreset* ExistingPreset(const CameraProfile& profile, const std::string& name) {
  const auto found = std::ranges::find(profile.presets, name, &ProfilePreset::name);
  return found != profile.presets.end() ? &*found : nullptr;
}

// The registers and fields to save.
std::vector<std::string> WordsToSave(const PresetSaveCommand& command,
                                     const ProfilePreset* existing) {
  if (existing != nullptr && !existing->file.empty()) {
    throw Failure(ExitCode::kUsage,
                  Format("preset \"{}\" is the list {}", command.name, existing->file),
                  "borvanusb reg dump and i2c dump write lists; or choose another name.");
  }
  if (existing != nullptr && !command.replace) {
    throw Failure(ExitCode::kUsage, Format("there is a preset \"{}\" already", command.name),
                  "Replace it with --replace, or choose another name.");
  }
  if (!command.words.empty()) {
    return command.words;
  }
  if (existing == nullptr) {
    throw Failure(
        ExitCode::kUsage,
        Format("preset save: WHAT is missing: \"{}\" is a new preset", command.name),
        Format("Say which registers: borvanusb preset save {} \"SENSOR.*\"", command.name));
  }
  std::vector<std::string> words;
  for (const std::string& setting : existing->settings) {
    words.push_back(setting.substr(0, setting.find('=')));
  }
  return words;
}

// "NAME=VALUE" for each value that can be written again.
std::vector<std::string> SettingTexts(const std::vector<WordTarget>& targets,
                                      const std::vector<std::uint64_t>& values) {
  std::vector<std::string> texts;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const NamedTarget& target = targets[i].target;
    if (target.of == nullptr) {
      texts.push_back(Format("{}={}", Hex(targets[i].access.address, 4), Hex(values[i], 2)));
      continue;
    }
    const MapAccess access =
        target.field != nullptr ? target.field->access : target.of->in_map->form->access;
    if (!CanWrite(access) || !CanWrite(target.of->in_map->form->access)) {
      continue;
    }
    const std::uint64_t value = PartOf(target, values[i]);
    const std::string meaning =
        target.field != nullptr ? MeaningOf(*target.field, value) : std::string();
    texts.push_back(
        Format("{}={}", NameOf(target), meaning.empty() ? ValueText(target, value) : meaning));
  }
  return texts;
}

Json PresetJson(const PresetSaveCommand& command, const ProfilePreset* existing,
                const std::vector<std::string>& settings) {
  Json preset = {{"name", command.name}};
  const std::string description = !command.description.empty() || existing == nullptr
                                      ? command.description
                                      : existing->description;
  if (!description.empty()) {
    preset["description"] = description;
  }
  preset["settings"] = settings;
  return preset;
}

// The text of the profile with the preset added. The whole file is written again, but its keys keep
// their order.
std::string ProfileWith(const std::string& text, const std::string& name, const Json& preset) {
  Json profile = Json::parse(text);
  Json& presets = profile["presets"];
  if (presets.is_null()) {
    presets = Json::array();
  }
  const auto same = std::ranges::find_if(
      presets, [&](const Json& other) { return other.value("name", "") == name; });
  if (same != presets.end()) {
    *same = preset;
  } else {
    presets.push_back(preset);
  }
  return profile.dump(2) + "\n";
}

}  // namespace

ExitCode Run(const PresetSaveCommand& command, Context& context) {
  const CameraIdentity identity = ChosenCamera(context.host, context.common.cameras);
  const auto names = NamesNeededFor(command.name, identity, context);
  const std::string& file = names->Profile().file;
  const ProfilePreset* const existing = ExistingPreset(names->Profile(), command.name);
  const std::vector<WordTarget> targets =
      TargetsOf(WordsToSave(command, existing), names.get(), {});
  CheckWritable(file);
  const auto camera = context.host.OpenCamera(identity);
  const RegisterReading reading = ReadAll(AccessesOf(targets), *camera, context);
  const std::vector<std::string> settings = SettingTexts(targets, reading.values);
  if (settings.empty()) {
    throw Failure(ExitCode::kUsage, "nothing to save: none of these registers can be written",
                  "Name registers that a preset can set.");
  }
  const std::string text =
      ProfileWith(ReadWholeText(file), command.name, PresetJson(command, existing, settings));
  // Checks the new text, because an invalid profile would make everything else in it unusable.
  const ProfileReading check =
      ReadProfileText(text, file, [](const std::string& name) { return ReadWholeText(name); });
  if (!check.errors.empty()) {
    throw Failure(ExitCode::kUsage, check.errors.front().text, "The profile is as it was.");
  }
  WriteWholeText(file, text);
  ForgetKeptProfile(file);
  for (const std::string& setting : settings) {
    context.output.Line(setting);
  }
  context.output.Line(
      Format("preset \"{}\" with {} in {}", command.name, Count(settings.size(), "setting"), file));
  context.result = {{"preset", command.name}, {"profile", file}, {"settings", settings}};
  return ExitCode::kDone;
}

CommandRule PresetSaveRule() {
  RuleOf<PresetSaveCommand> rule({"preset", "save"},
                                 "Saves values of registers as a preset of the profile.");
  rule.Add(
      NamesOf("presets", Argument("NAME", "the preset")),
      [](PresetSaveCommand& command, const std::string& text) { command.name = FileValue(text); });
  rule.Add(
      NamesOf("registers", Optional(Repeated(Argument(
                               "WHAT", "registers and fields; default: those of the preset")))),
      [](PresetSaveCommand& command, const std::string& text) {
        command.words.push_back(RegisterWord(text));
      });
  rule.Add(Option("--description", "TEXT", "what the preset is for"),
           [](PresetSaveCommand& command, const std::string& text) {
             command.description = FileValue(text);
           });
  rule.AddFlag("--replace", "replace a preset of this name", &PresetSaveCommand::replace);
  rule.Details("The whole file of the profile is rewritten; the order of its keys stays.");
  rule.Example("borvanusb preset save evening \"SENSOR.*\"");
  return rule.Take();
}

}  // namespace borvanusb
