#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "profile/camera_profile.h"

namespace borvanusb {

// A register with a name from a profile, in the chip or in a device on the I2C bus.
struct NamedRegister {
  std::string name;  // "SENSOR.EXPOSURE", including the prefix of its map
  const ProfileMap* map = nullptr;
  const MapRegister* in_map = nullptr;
  const AccessRule* rule = nullptr;
  std::uint32_t address = 0;   // of the access with the lowest address
  std::uint32_t accesses = 0;  // number of accesses

  std::uint32_t Bits() const { return in_map->form->bits; }
  // Its highest value.
  std::uint64_t Mask() const;
};

// A register, or one of its fields.
struct NamedTarget {
  const NamedRegister* of = nullptr;
  const MapField* field = nullptr;  // null: the whole register

  bool operator==(const NamedTarget&) const = default;
};

std::string NameOf(const NamedTarget& target);

// All registers of a profile in one name space. Names are not case-sensitive. Leading parts may be
// omitted if the rest is unique: EXPOSURE for SENSOR.EXPOSURE.
class RegisterNames {
 public:
  explicit RegisterNames(std::shared_ptr<const CameraProfile> profile);

  const CameraProfile& Profile() const { return *profile_; }
  // In the order of the profile.
  std::span<const NamedRegister> All() const { return registers_; }
  // Registers of the maps that can't be accessed by name, with the reason.
  std::span<const std::string> Unreachable() const { return unreachable_; }

  // Finds a register or field. Throws Failure kUsage if the name is unknown, with the most similar
  // name, or ambiguous.
  NamedTarget Find(const std::string& name) const;
  // Finds all registers and fields that match a pattern with * and ?. A * does not match a dot.
  // Throws Failure kUsage if nothing matches.
  std::vector<NamedTarget> Match(const std::string& pattern) const;

 private:
  std::vector<NamedTarget> Matches(std::string_view name) const;
  std::string Nearest(const std::string& name) const;

  std::shared_ptr<const CameraProfile> profile_;
  std::vector<NamedRegister> registers_;
  std::vector<std::string> unreachable_;
};

}  // namespace borvanusb
