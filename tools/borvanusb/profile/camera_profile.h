#pragma once

// A camera profile: what is known of one kind of camera module. It gives registers, flash regions
// and lists of settings their names. Values only; read_profile.h makes them from a file.

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "base/flash_layout.h"
#include "camera/camera.h"
#include "maps/register_map.h"

namespace borvanusb {

// Which cameras a profile is for: all parts that are given must fit.
struct CameraPattern {
  std::string vid;   // four upper-case hexadecimal digits; empty: any
  std::string pid;   // likewise
  std::string name;  // with * and ?; empty: any
};

// Which byte of a register that is wider than an access lies at its lowest address.
enum class ByteOrder { kHighFirst, kLowFirst };
// Which of the accesses of such a register comes first in time: that of the lowest address, or of
// the highest.
enum class AccessOrder { kUpwards, kDownwards };

// A write beside those of a register, such as the one that makes a sensor take over all of its
// parts at once.
struct LatchWrite {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
};

// How the registers of a map are accessed. A profile can override it for single registers.
struct AccessRule {
  ByteOrder bytes = ByteOrder::kHighFirst;
  AccessOrder order = AccessOrder::kUpwards;
  std::vector<LatchWrite> before_read;
  std::vector<LatchWrite> before_write;
  std::vector<LatchWrite> after_write;
};

// A register map and the device that it describes.
struct ProfileMap {
  std::string prefix;  // in front of the map's names: "LEFT"; mostly empty
  std::string file;    // the SVD file, full name
  std::shared_ptr<const RegisterMap> map;
  bool on_i2c = false;
  RegisterWidth width = RegisterWidth::kByte;  // of the chip's registers
  I2cTarget target;                            // of a device on the bus
  std::uint64_t base = 0;                      // added to the map's addresses
  std::uint32_t access_bits = 8;               // of one access
  std::uint32_t step = 1;                      // addresses from one access to the next
  AccessRule rule;
  // By the map's name for a register.
  std::map<std::string, AccessRule, std::less<>> register_rules;
};

// A list of settings with a name: a list file, or settings as `reg write` takes them.
struct ProfilePreset {
  std::string name;
  std::string description;
  std::string file;                   // full name; empty: `settings`
  bool on_i2c = false;                // the file is an I2C list
  std::vector<std::string> settings;  // "SENSOR.GAIN=0x10", in order
};

struct CameraProfile {
  std::string file;  // full name
  std::string name;
  std::string description;
  std::vector<CameraPattern> cameras;
  std::vector<ProfileMap> maps;
  FlashLayout flash;
  std::vector<ProfilePreset> presets;
  // Defaults of the tool's options: "--slave" and its value. An option that is given counts more.
  std::vector<std::pair<std::string, std::string>> options;
};

}  // namespace borvanusb
