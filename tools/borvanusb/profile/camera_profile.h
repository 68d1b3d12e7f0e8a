#pragma once

// A camera profile: what is known of one kind of camera module. It gives registers, flash regions
// and lists of settings their names. Values only; read_profile.h makes them from a file.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
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

// In which order a register that is wider than an access is read and written.
enum class AccessOrder { kHighFirst, kLowFirst };

// A write before or after that of a register, which makes the device take over its parts at once.
struct LatchWrite {
  std::uint64_t address = 0;
  std::uint32_t value = 0;
};

// How the registers of a map are accessed; a profile can say it anew for single registers.
struct AccessRule {
  AccessOrder order = AccessOrder::kHighFirst;  // of the accesses in time
  // Which end of the value the lowest address holds.
  bool high_at_lowest = true;
  std::vector<LatchWrite> before_write;
  std::vector<LatchWrite> after_write;
  std::vector<LatchWrite> before_read;
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
  std::uint32_t step = 1;                      // addresses from one access to the next
  AccessRule rule;
  std::map<std::string, AccessRule> register_rules;  // by the map's name for the register
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
