#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "profile/camera_profile.h"

namespace borvanusb {

// A register that a profile names: of the chip or of a device on the I2C bus.
struct NamedRegister {
  std::string name;  // "SENSOR.EXPOSURE", with the prefix of its map
  const ProfileMap* map = nullptr;
  const MapRegister* in_map = nullptr;
  const AccessRule* rule = nullptr;
  std::uint32_t address = 0;   // of its lowest access
  std::uint32_t accesses = 0;  // that it takes

  std::uint32_t Bits() const { return in_map->form->bits; }
  // Its highest value.
  std::uint64_t Mask() const;
};

// What a name means: a register, or a field of it.
struct NamedTarget {
  const NamedRegister* of = nullptr;
  const MapField* field = nullptr;  // null: the whole register

  bool operator==(const NamedTarget&) const = default;
};

std::string NameOf(const NamedTarget& target);

// All registers that a profile names, as one space of names. Names are looked for without regard
// to small and large letters, and without their first parts where that is clear: EXPOSURE for
// SENSOR.EXPOSURE.
class RegisterNames {
 public:
  explicit RegisterNames(std::shared_ptr<const CameraProfile> profile);

  const CameraProfile& Profile() const { return *profile_; }
  // In the order of the profile.
  std::span<const NamedRegister> All() const { return registers_; }
  // Registers of the maps that have no name here, each with the reason.
  std::span<const std::string> Unreachable() const { return unreachable_; }

  // The register or field of this name. Throws Failure kUsage for a name that means nothing, with
  // the nearest one, and for one that means several.
  NamedTarget Find(const std::string& name) const;
  // All registers and fields that a pattern with * and ? means, * standing for no dot. Throws
  // Failure kUsage when there are none.
  std::vector<NamedTarget> Match(const std::string& pattern) const;

 private:
  std::vector<NamedTarget> Matches(std::string_view name) const;
  std::string Nearest(const std::string& name) const;

  std::shared_ptr<const CameraProfile> profile_;
  std::vector<NamedRegister> registers_;
  std::vector<std::string> unreachable_;
};

}  // namespace borvanusb
