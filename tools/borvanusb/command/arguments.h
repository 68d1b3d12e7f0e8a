#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "base/numbers.h"
#include "registers/list_markers.h"

namespace borvanusb {

// What the command line asks for, as plain values. File names and texts are UTF-8.

enum class ProgressMode { kAuto, kBar, kLines, kJson, kNone };

struct CommonArguments {
  std::vector<std::string> cameras;  // --camera, as given
  bool json = false;
  bool quiet = false;
  bool verbose = false;
  std::chrono::milliseconds timeout{10000};  // nothing moved for that long: give up
  std::string trace;                         // file for the transfers of virtual cameras
  ProgressMode progress = ProgressMode::kAuto;
};

struct ListCommand {
  bool watch = false;
};

struct InfoCommand {
  std::optional<std::uint64_t> flash_size;
};

struct RegReadCommand {
  Range range;
  bool wide = false;
};

struct RegWriteCommand {
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  bool wide = false;
  std::optional<std::uint32_t> mask;  // only these bits change
  bool verify = false;
};

struct RegDumpCommand {
  Range range;
  std::string file;  // empty: standard output
  bool wide = false;
};

struct RegLoadCommand {
  std::string file;
  bool check_only = false;
  bool verify = false;
  // For lists whose registers lie elsewhere on some chips.
  std::optional<ListMarkers> markers = std::nullopt;
};

// Compares two lists; either may be "camera" for the registers that the other one names.
struct RegDiffCommand {
  std::string left;
  std::string right;
};

// How to speak to the device on the bus, for the I2C commands.
struct I2cOptions {
  std::optional<std::uint32_t> slave;
  std::int32_t mode = 1;  // 16/8, what most sensors have
  std::uint32_t option = 0;
};

struct I2cReadCommand {
  I2cOptions i2c;
  Range range;
};

struct I2cWriteCommand {
  I2cOptions i2c;
  std::uint32_t address = 0;
  std::uint32_t value = 0;
  std::optional<std::uint32_t> mask;
  bool verify = false;
};

struct I2cDumpCommand {
  I2cOptions i2c;
  Range range;
  std::string file;
};

struct I2cLoadCommand {
  I2cOptions i2c;  // slave and mode open the list if it doesn't itself
  std::string file;
  bool check_only = false;
  bool verify = false;
};

struct I2cScanCommand {
  I2cOptions i2c;
  Range slaves{0, 255};
  std::uint32_t address = 0;  // the register that is read from each
  bool yes = false;
};

struct FlashReadCommand {
  Range range;
  std::string file;
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool whole = false;             // all of the flash; `range` is not used then
  std::string range_remark = {};  // what the user should know of the range; mostly empty
};

struct FlashWordCommand {
  std::uint32_t address = 0;
  std::optional<std::uint32_t> value;  // written; without one the word is read
  bool yes = false;
  bool backup = true;
  std::string backup_file = {};  // empty: in the current folder, named after camera, address, time
  std::optional<std::uint64_t> flash_size = std::nullopt;
};

struct FlashEraseCommand {
  Range range;
  bool yes = false;
  bool backup = true;
  std::string backup_file = {};  // likewise
  std::optional<std::uint64_t> flash_size = std::nullopt;
};

struct FlashMapCommand {
  std::optional<Range> range;  // the whole flash if left out
  std::optional<std::uint64_t> flash_size;
  std::string range_remark = {};  // what the user should know of the range; mostly empty
};

struct FlashProgramCommand {
  std::string image;
  std::uint32_t address = 0;
  std::optional<std::uint64_t> flash_size;
  bool dry_run = false;
  bool verify = true;
  bool backup = true;
  std::string backup_file;  // empty: beside the image, named after camera and time
  bool restore_on_failure = false;
  bool force = false;
  std::string report;
  std::string journal;  // of an unfinished change: its file, or "none"
  bool all = false;
};

struct FlashVerifyCommand {
  std::string image;
  std::uint32_t address = 0;
  std::string diff;  // JSON, or CSV for a name that ends in .csv
  std::optional<std::uint64_t> flash_size = std::nullopt;
  bool force = false;
};

struct WatchCommand {
  std::vector<Range> registers;
  std::vector<Range> i2c_registers;
  I2cOptions i2c;
  bool wide = false;
  double rate = 2;                     // polls a second
  std::optional<std::uint64_t> count;  // polls; without it until Ctrl-C
  std::string csv;
};

struct BenchCommand {
  std::uint64_t rounds = 200;
  I2cOptions i2c;
};

struct SelftestCommand {
  I2cOptions i2c;
};

struct DoctorCommand {};

struct RunCommand {
  std::string file;
  bool keep_going = false;
};

enum class Shell { kBash, kPowerShell };

struct CompletionCommand {
  Shell shell = Shell::kBash;
};

struct ManualCommand {};

using Command =
    std::variant<ListCommand, InfoCommand, RegReadCommand, RegWriteCommand, RegDumpCommand,
                 RegLoadCommand, RegDiffCommand, I2cReadCommand, I2cWriteCommand, I2cDumpCommand,
                 I2cLoadCommand, I2cScanCommand, FlashReadCommand, FlashWordCommand,
                 FlashEraseCommand, FlashMapCommand, FlashProgramCommand, FlashVerifyCommand,
                 WatchCommand, BenchCommand, SelftestCommand, DoctorCommand, RunCommand,
                 CompletionCommand, ManualCommand>;

struct Arguments {
  CommonArguments common;
  Command command;
};

}  // namespace borvanusb
