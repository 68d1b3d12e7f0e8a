#include "profile_commands/profile_text.h"

#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/numbers.h"
#include "base/width_modes.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

Json TextOrNull(const std::string& text) {
  return text.empty() ? Json() : Json(text);
}

Json DeviceOf(const ProfileMap& map) {
  if (!map.on_i2c) {
    return {{"kind", "chip"}, {"wide", map.width == RegisterWidth::kWide}};
  }
  return {{"kind", "i2c"},
          {"slave", map.target.slave},
          {"mode", WidthModeOf(map.target.mode).name},
          {"option", map.target.option}};
}

Json MapsJson(const CameraProfile& profile) {
  Json maps = Json::array();
  for (const ProfileMap& map : profile.maps) {
    maps.push_back({{"file", map.file},
                    {"prefix", TextOrNull(map.prefix)},
                    {"device", DeviceOf(map)},
                    {"registers", map.map->registers.size()}});
  }
  return maps;
}

Json FlashJson(const FlashLayout& flash) {
  Json regions = Json::array();
  for (const FlashRegion& region : flash.regions) {
    regions.push_back({{"name", region.name},
                       {"first", region.range.first},
                       {"last", region.range.last},
                       {"size", region.range.Size()},
                       {"read_only", region.read_only},
                       {"files", region.files},
                       {"description", region.description}});
  }
  return {{"size", flash.size ? Json(*flash.size) : Json()},
          {"regions", std::move(regions)},
          {"image_region", TextOrNull(flash.image_region)}};
}

Json PresetsJson(const CameraProfile& profile) {
  Json presets = Json::array();
  for (const ProfilePreset& preset : profile.presets) {
    presets.push_back({{"name", preset.name},
                       {"description", preset.description},
                       {"file", TextOrNull(preset.file)},
                       {"settings", preset.settings}});
  }
  return presets;
}

}  // namespace

Json CamerasJson(const CameraProfile& profile) {
  Json cameras = Json::array();
  for (const CameraPattern& pattern : profile.cameras) {
    cameras.push_back({{"vid", TextOrNull(pattern.vid)},
                       {"pid", TextOrNull(pattern.pid)},
                       {"name", TextOrNull(pattern.name)}});
  }
  return cameras;
}

Json ProfileJson(const CameraProfile& profile) {
  Json options = Json::array();
  for (const auto& [name, value] : profile.options) {
    options.push_back({{"name", name}, {"value", value}});
  }
  return {{"file", profile.file},
          {"name", profile.name},
          {"description", profile.description},
          {"cameras", CamerasJson(profile)},
          {"maps", MapsJson(profile)},
          {"flash", FlashJson(profile.flash)},
          {"presets", PresetsJson(profile)},
          {"options", std::move(options)}};
}

std::string DeviceText(const ProfileMap& map) {
  if (!map.on_i2c) {
    return map.width == RegisterWidth::kWide ? "chip, 32 bits an access" : "chip";
  }
  return Format("I2C slave {}, mode {}", Hex(map.target.slave, 2),
                WidthModeOf(map.target.mode).name);
}

std::string BareName(const std::string& file) {
  return file.substr(file.find_last_of("/\\") + 1);
}

}  // namespace borvanusb
