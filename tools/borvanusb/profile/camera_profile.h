#pragma once

// A camera profile describes one kind of camera module. It names registers, flash regions and lists
// of settings. Values only; read_profile.h reads them from a file.

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

// The cameras that a profile applies to. All given parts must match.
struct CameraPattern {
  std::string vid;   // four upper-case hexadecimal digits; empty: any
  std::string pid;   // the same form
  std::string name;  // may contain * and ?; empty: any
};

// For a register that is wider than one access: which byte is at the lowest address.
enum class ByteOrder { kHighFirst, kLowFirst };
// For a register that is wider than one access: which address is accessed first, the lowest or the
// highest.
enum class AccessOrder { kUpwards, kDownwards };

// An additional write before or after a register access. For example, it makes a sensor apply all
// parts of a register at the same time.
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
  std::string prefix;  // put before the names of the map: "LEFT"; usually empty
  std::string file;    // full name of the SVD file
  std::shared_ptr<const RegisterMap> map;
  bool on_i2c = false;
  RegisterWidth width = RegisterWidth::kByte;  // for registers of the chip
  I2cTarget target;                            // for devices on the I2C bus
  std::uint64_t base = 0;                      // added to the map's addresses
  std::uint32_t access_bits = 8;               // bits of one access
  std::uint32_t step = 1;                      // address distance between two accesses
  AccessRule rule;
  // The key is the register's name in the map.
  std::map<std::string, AccessRule, std::less<>> register_rules;
};

// A named list of settings: a list file, or settings as `reg write` takes them.
struct ProfilePreset {
  std::string name;
  std::string description;
  std::string file;                   // full name; empty: `settings` is used
  bool on_i2c = false;                // `file` is an I2C list
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
  // Defaults of the tool's options: "--slave" and its value. An option on the command line has
  // priority.
  std::vector<std::pair<std::string, std::string>> options;
};

}  // namespace borvanusb
