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

// Registers as users write them: "0x1a3", "0x1000-0x10ff", "SENSOR.EXPOSURE", "CTRL*".

// The register names of a camera. Null if it has no profile.
std::shared_ptr<const RegisterNames> NamesFor(const CameraIdentity& camera, Context& context);
// The same for a command that requires them. Throws Failure kUsage if there is no profile.
std::shared_ptr<const RegisterNames> NamesNeeded(const CameraIdentity& camera, Context& context);
// The same for a word that is not a number.
std::shared_ptr<const RegisterNames> NamesNeededFor(const std::string& word,
                                                    const CameraIdentity& camera, Context& context);

// Whether a word is a number or a range of numbers.
bool IsNumberWord(const std::string& word);

// A register that a word refers to.
struct WordTarget {
  RegisterAccess access;
  NamedTarget target;  // `of` is null for a number
};

// The device that numbers on the command line refer to.
struct NumberMeaning {
  bool wide = false;                // 32-bit registers of the chip
  std::optional<I2cTarget> target;  // set for a device on the I2C bus
};

// Resolves words to registers, in the order of the words. A name without wildcards stands for one
// register or field. A name of a group alone, such as "SENSOR", is not allowed. Throws Failure
// kUsage for an unknown word. The names must outlive the result.
std::vector<WordTarget> TargetsOf(const std::vector<std::string>& words, const RegisterNames* names,
                                  const NumberMeaning& numbers);

std::vector<RegisterAccess> AccessesOf(std::span<const WordTarget> targets);

// Whether one of the words needs names.
bool HasNames(const std::vector<std::string>& words);
// The first word that needs names. Empty if there is none.
std::string FirstName(const std::vector<std::string>& words);

// Whether a word starts like a name.
bool MayBeName(const std::string& text);
// Returns a word of a command line. Throws WrongValue if it can be neither a number nor a name.
std::string RegisterWord(const std::string& text);

constexpr const char* kWhatText =
    "0x1a3, several: 0x1000-0x10ff, or names of a profile: SENSOR.GAIN, \"CTRL*\"";
constexpr const char* kNamesText =
    "Names are those of the camera's profile (--profile), of the chip and of the devices on the "
    "I2C bus. The first parts of a name may be omitted if the rest is unambiguous. * stands for "
    "any characters except a dot; put such a word in quotes.";
constexpr const char* kReadInBlocksNote =
    "note: so many registers are read in blocks, which the chip does not confirm register by "
    "register";

}  // namespace borvanusb
