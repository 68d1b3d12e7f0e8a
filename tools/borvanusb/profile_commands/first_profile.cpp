#include "profile_commands/first_profile.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "base/format.h"
#include "base/numbers.h"

namespace borvanusb {

namespace {

using Json = nlohmann::ordered_json;

std::string DevicesText(const std::vector<std::uint32_t>& devices) {
  std::string text;
  for (const std::uint32_t device : devices) {
    text += Format("{}{}", text.empty() ? "" : ", ", Hex(device, 2));
  }
  return text;
}

// The facts about the camera as text. JSON has no comments, so they go into the description.
std::string DescriptionOf(const CameraFacts& facts) {
  std::string text =
      Format("Written by borvanusb profile new on {} for the camera {}. Feature register {}: {}.",
             facts.date, facts.camera.name, Hex(kFeatureRegister), Hex(facts.features, 2));
  if (!facts.flash_size) {
    text += Format(" Size of the flash: {}.", facts.flash_size_reason);
  }
  if (facts.scanned) {
    text += facts.devices.empty()
                ? " No device answers on the I2C bus"
                : Format(" I2C devices that answer: {}", DevicesText(facts.devices));
    text += Format(" (width mode {}).", facts.mode);
    if (!facts.doubtful.empty()) {
      text += Format(" These answer with zeros or ones only: {}.", DevicesText(facts.doubtful));
    }
  }
  return text +
         " Still to add: register maps in \"maps\", the regions of the flash, presets. "
         "docs/profiles.md describes all keys.";
}

bool IsUsbId(const std::string& text) {
  constexpr std::size_t kDigits = 4;
  return text.size() == kDigits &&
         text.find_first_not_of("0123456789ABCDEFabcdef") == std::string::npos;
}

// Identifies the camera by its USB IDs if they are known, because a name may change with the
// driver.
Json CameraOf(const CameraIdentity& camera) {
  if (IsUsbId(camera.vid) && IsUsbId(camera.pid)) {
    return {{"vid", camera.vid}, {"pid", camera.pid}};
  }
  return {{"name", camera.name.empty() ? "*" : camera.name}};
}

}  // namespace

std::string FirstProfileText(const CameraFacts& facts) {
  const std::string name = facts.camera.name.empty()
                               ? Format("camera {}:{}", facts.camera.vid, facts.camera.pid)
                               : facts.camera.name;
  Json profile = {{"name", name},
                  {"description", DescriptionOf(facts)},
                  {"cameras", Json::array({CameraOf(facts.camera)})},
                  {"maps", Json::array()}};
  if (facts.flash_size) {
    const std::string whole = Format("0x0-{}", Hex(*facts.flash_size - 1));
    profile["flash"] = {
        {"size", SizeArgument(*facts.flash_size)},
        {"regions",
         Json::array({{{"name", "all"}, {"range", whole}, {"description", "The whole flash."}}})}};
  }
  profile["presets"] = Json::array();
  profile["options"] = Json::object();
  // A single device is the obvious default.
  if (facts.devices.size() == 1) {
    profile["options"] = {{"slave", Hex(facts.devices.front(), 2)}, {"mode", facts.mode}};
  }
  return profile.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace borvanusb
