#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "camera/camera.h"
#include "command/context.h"
#include "names/register_access.h"
#include "names/register_names.h"

namespace borvanusb {

// Registers as people write them: "0x1a3", "0x1000-0x10ff", "SENSOR.EXPOSURE", "CTRL*".

// The names of a camera's registers. Null when it has no profile.
std::shared_ptr<const RegisterNames> NamesFor(const CameraIdentity& camera, Context& context);
// The same where a word needs them. Throws Failure kUsage when there is no profile.
std::shared_ptr<const RegisterNames> NamesNeededFor(const std::string& word,
                                                    const CameraIdentity& camera, Context& context);

// Whether a word is a number or a range, and no name.
bool IsNumberWord(const std::string& word);

// A register that a word means.
struct WordTarget {
  RegisterAccess access;
  NamedTarget target;  // its `of` is null for a number
};

// How numbers among the words are meant.
struct NumberMeaning {
  bool wide = false;                // registers of the chip of 32 bits
  std::optional<I2cTarget> target;  // of a device on the bus
};

// The registers that words mean, in their order. A name without a pattern stands for one register
// or field; one that nothing but its first parts follow, "SENSOR", for nothing. Throws Failure
// kUsage for a word that means nothing. The names must outlive the result.
std::vector<WordTarget> TargetsOf(const std::vector<std::string>& words, const RegisterNames* names,
                                  const NumberMeaning& numbers);

std::vector<RegisterAccess> AccessesOf(std::span<const WordTarget> targets);

// Whether one of the words needs names.
bool HasNames(const std::vector<std::string>& words);
// The first word that does; empty when none does.
std::string FirstName(const std::vector<std::string>& words);

// Whether a word begins as names do.
bool MayBeName(const std::string& text);
// A word of a command line: throws WrongValue for one that can be neither a number nor a name.
std::string RegisterWord(const std::string& text);

constexpr const char* kWhatText =
    "0x1a3, several: 0x1000-0x10ff, or names of a profile: SENSOR.GAIN, \"CTRL*\"";
constexpr const char* kNamesText =
    "Names are those of the camera's profile (--profile), of the chip and of the devices on the "
    "I2C bus. The first parts of a name may be left out where it is clear. * stands for any "
    "characters but a dot; put such a word in quotes.";
constexpr const char* kReadInBlocksNote =
    "note: so many registers are read in blocks, which the chip does not confirm register by "
    "register";

}  // namespace borvanusb
