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

// A register and what shall stand in it, or in some of its fields.
struct RegisterSetting {
  RegisterAccess access;
  const NamedRegister* named = nullptr;  // null: given by number
  std::vector<NamedTarget> targets;      // that were named; empty for a number
  std::uint64_t value = 0;
  std::uint64_t bits = 0;  // of the value, that were named; the others are kept

  std::string Name() const;
};

// The two words of a setting: "SENSOR.CTRL.GAIN" and "0x10" of "SENSOR.CTRL.GAIN = 0x10". Throws
// Failure kUsage for a text that is no setting.
struct SettingWords {
  std::string of;
  std::string value;
};
SettingWords SplitSetting(const std::string& text);

// "SENSOR.CTRL.GAIN=0x10", "0x1a3=0x20". Throws Failure kUsage for what can't be written, with what
// is allowed. `names` may be null when the word is a number.
RegisterSetting ParseSetting(const std::string& text, const RegisterNames* names,
                             const NumberMeaning& numbers);
RegisterSetting MakeSetting(const std::string& word, const std::string& value,
                            const RegisterNames* names, const NumberMeaning& numbers);

// Settings of the same register become one, at the place of the first: with `anywhere` all of them,
// else only those in a row. Throws Failure kUsage when a field is set twice in one of them.
std::vector<RegisterSetting> MergeSettings(std::vector<RegisterSetting> settings, bool anywhere);

// Throws Failure kUsage where a field can't be written without the others, because the register
// can't be read for them.
void CheckSetting(const RegisterSetting& setting);

// How a setting was written.
struct WrittenSetting {
  std::optional<std::uint64_t> before;  // if the register was read first
  std::uint64_t value = 0;              // what was written
  bool verified = false;                // read back and found
};

// Writes a setting: reads the register first where it has bits to keep, and reads it back when
// asked to. Throws Failure as Camera does, kVerify when it reads back as something else.
WrittenSetting WriteSetting(const RegisterSetting& setting, bool verify, Camera& camera,
                            Context& context);

}  // namespace borvanusb
