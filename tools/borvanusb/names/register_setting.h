#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_access.h"
#include "names/register_names.h"
#include "names/register_words.h"

namespace borvanusb {

// A register and the value to write to it, or to some of its fields.
struct RegisterSetting {
  RegisterAccess access;
  const NamedRegister* named = nullptr;  // null: given as a number
  std::vector<NamedTarget> targets;      // as named by the user; empty for a number
  std::uint64_t value = 0;
  std::uint64_t bits = 0;  // bits of `value` to set; the others are kept

  std::string Name() const;
};

// The two words of a setting: "SENSOR.CTRL.GAIN" and "0x10" of "SENSOR.CTRL.GAIN = 0x10". Throws
// Failure kUsage if the text is not a setting.
struct SettingWords {
  std::string of;
  std::string value;
};
SettingWords SplitSetting(const std::string& text);

// Parses "SENSOR.CTRL.GAIN=0x10" or "0x1a3=0x20". Throws Failure kUsage, with the allowed values,
// if it can't be written. `names` may be null if the word is a number.
RegisterSetting ParseSetting(const std::string& text, const RegisterNames* names,
                             const NumberMeaning& numbers);
RegisterSetting MakeSetting(const std::string& word, const std::string& value,
                            const RegisterNames* names, const NumberMeaning& numbers);

// Merges settings of the same register into one, at the position of the first. With `anywhere` all
// of them are merged, otherwise only consecutive ones. Throws Failure kUsage if a merged setting
// sets a field twice.
std::vector<RegisterSetting> MergeSettings(std::vector<RegisterSetting> settings, bool anywhere);

// Throws Failure kUsage if the setting requires reading other fields first and the register can't
// be read.
void CheckSetting(const RegisterSetting& setting);

// The result of a write.
struct WrittenSetting {
  std::optional<std::uint64_t> before;  // value before, if the register was read first
  std::uint64_t value = 0;              // what was written
  bool verified = false;                // read back and equal
};

// Writes a setting. Reads the register first if some of its bits must be kept, and reads it back
// with `verify`. Throws the exceptions of Camera, and Failure kVerify if the value differs.
WrittenSetting WriteSetting(const RegisterSetting& setting, bool verify, Camera& camera,
                            Context& context);

}  // namespace borvanusb
