#include "names/presets.h"

#include <algorithm>

#include "base/failure.h"
#include "base/format.h"
#include "base/text_lines.h"
#include "names/field_value.h"

namespace borvanusb {

namespace {

// A line without its comment.
std::string_view Meant(std::string_view line) {
  return Trimmed(line.substr(0, line.find('#')));
}

// A register or field with the value it had. Unlike a setting to write, it may be read-only.
RegisterSetting ComparableSetting(const std::string& line, const RegisterNames& names) {
  const SettingWords words = SplitSetting(line);
  if (IsNumberWord(words.of)) {
    return ParseSetting(line, &names, {});
  }
  const NamedTarget target = names.Find(words.of);
  RegisterSetting setting;
  setting.access = AccessOf(*target.of);
  setting.named = target.of;
  setting.targets = {target};
  const std::uint64_t value = ComparableValue(target, words.value);
  const bool field = target.field != nullptr;
  setting.bits = field ? BitsOf(*target.field) : target.of->Mask();
  setting.value = field && setting.bits != 0 ? value << target.field->bit_offset : value;
  return setting;
}

}  // namespace

const ProfilePreset& FindPreset(const CameraProfile& profile, const std::string& name) {
  const auto found = std::ranges::find(profile.presets, name, &ProfilePreset::name);
  if (found != profile.presets.end()) {
    return *found;
  }
  std::string known;
  for (const ProfilePreset& preset : profile.presets) {
    known += Format("{}{}", known.empty() ? "" : ", ", preset.name);
  }
  throw Failure(ExitCode::kUsage,
                Format("the profile \"{}\" has no preset \"{}\"", profile.name, name),
                known.empty() ? "It has no presets." : Format("It has {}.", known));
}

std::vector<RegisterSetting> SettingsOf(const ProfilePreset& preset, const RegisterNames& names) {
  std::vector<RegisterSetting> settings;
  for (const std::string& text : preset.settings) {
    try {
      settings.push_back(ParseSetting(text, &names, {}));
    } catch (const Failure& failure) {
      throw Failure(
          ExitCode::kFile,
          Format("preset \"{}\" of {}: {}", preset.name, names.Profile().file, failure.Message()),
          failure.Hint());
    }
  }
  return MergeSettings(std::move(settings), false);
}

std::vector<std::string> SettingsLines(std::string_view text) {
  std::vector<std::string> lines;
  for (const TextLine& line : SplitLines(text, "list").lines) {
    if (const std::string_view trimmed = Meant(line.text); !trimmed.empty()) {
      lines.emplace_back(trimmed);
    }
  }
  return lines;
}

bool IsSettingsText(std::string_view text) {
  for (const TextLine& line : SplitLines(text, "list").lines) {
    if (const std::string_view trimmed = Meant(line.text); !trimmed.empty()) {
      return trimmed.substr(0, trimmed.find(',')).find('=') != std::string_view::npos;
    }
  }
  return false;
}

std::vector<RegisterSetting> ComparableSettings(const std::string& file, std::string_view text,
                                                const RegisterNames& names) {
  std::vector<RegisterSetting> settings;
  for (const TextLine& line : SplitLines(text, "list").lines) {
    const std::string_view trimmed = Meant(line.text);
    if (trimmed.empty()) {
      continue;
    }
    try {
      settings.push_back(ComparableSetting(std::string(trimmed), names));
    } catch (const Failure& failure) {
      throw Failure(ExitCode::kFile, Format("{}:{}: {}", file, line.number, failure.Message()),
                    failure.Hint());
    }
  }
  return settings;
}

}  // namespace borvanusb
