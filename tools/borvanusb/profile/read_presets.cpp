// Reads the presets of a profile.
#include <algorithm>

#include "base/format.h"
#include "profile/profile_sections.h"

namespace borvanusb {

namespace {

std::optional<ProfilePreset> ReadPreset(const JsonNode& item, const FilesOfProfile& files,
                                        ValueReader& values) {
  if (!values.IsObject(item, {"name", "description", "file", "kind", "settings"})) {
    return std::nullopt;
  }
  ProfilePreset preset;
  preset.name = values.NeededText(item, "name");
  if (!preset.name.empty() && !IsPlainName(preset.name)) {
    values.Wrong(*item.Find("name"), "may have letters, digits and _ - . only");
  }
  preset.description = values.Text(item, "description").value_or("");
  preset.settings = values.Texts(item, "settings");
  const bool has_file = item.Find("file") != nullptr;
  if (has_file == (item.Find("settings") != nullptr)) {
    values.Wrong(item, "needs either \"file\" or \"settings\"");
  }
  if (has_file) {
    preset.file = files.full_name(values.NeededText(item, "file"));
    constexpr std::size_t kI2c = 1;
    preset.on_i2c = values.Choice(item, "kind", {"registers", "i2c"}).value_or(0) == kI2c;
  } else if (const JsonNode* const kind = item.Find("kind")) {
    values.Wrong(*kind, "is for list files");
  }
  return preset;
}

}  // namespace

std::vector<ProfilePreset> ReadPresetSection(const JsonNode* node, const FilesOfProfile& files,
                                             ValueReader& values) {
  std::vector<ProfilePreset> presets;
  for (const JsonNode& item : values.Items(node)) {
    auto preset = ReadPreset(item, files, values);
    if (!preset) {
      continue;
    }
    if (std::ranges::find(presets, preset->name, &ProfilePreset::name) != presets.end()) {
      values.Wrong(item, Format("there are two presets \"{}\"", preset->name));
    }
    presets.push_back(std::move(*preset));
  }
  return presets;
}

}  // namespace borvanusb
