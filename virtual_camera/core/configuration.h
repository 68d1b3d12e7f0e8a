#pragma once

// The configuration of a virtual camera, and the reader of the JSON file that describes it.

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace virtual_camera {

// Node types of the capture filter's topology, as `nodes` of the JSON file names them.
enum class NodeType {
  kCameraTerminal,  // "camera-terminal"
  kProcessing,      // "processing"
  kSelector,        // "selector"
  kStreaming,       // "streaming"
  kVendor,          // "vendor": the vendor extension unit
};

enum class Direction { kSet, kGet, kLength };

// How the flash handles an address at or beyond its end.
enum class BeyondEnd { kWrap, kFail };

// How the chip handles an I2C transfer that no device acknowledges.
enum class AbsentSlave { kZeros, kOnes, kFailure };

// How the chip interprets the two marker bytes (0xFFFD, 0xFFFE) in register list blocks.
enum class ListHeader {
  kIgnored,  // registers lie below 0x10000 whatever the bytes are
  kPage,     // they are bits 24 to 31 and 16 to 23 of the register addresses
};

inline constexpr std::uint32_t kSelectorCount = 7;  // selectors 1 to 7
inline constexpr std::uint32_t kMaxFaults = 64;     // each has a counter in the state file
inline constexpr std::uint32_t kFlashMinimum = 64 * 1024;
inline constexpr std::uint32_t kFlashMaximum = 64 * 1024 * 1024;

struct FlashConfiguration {
  std::uint32_t size = 1024 * 1024;  // bytes, a multiple of 4096
  std::string file;                  // UTF-8
  BeyondEnd beyond_end = BeyondEnd::kWrap;
  std::uint32_t erase_ms = 0;    // busy time of one sector erase
  std::uint32_t program_us = 0;  // busy time of one page program
};

struct SensorConfiguration {
  std::uint8_t slave = 0;
  std::uint8_t mode = 0;                             // width mode, 0 to 5
  std::map<std::uint32_t, std::uint32_t> registers;  // initial values; all others are 0
};

struct UnplugAction {
  std::optional<std::uint32_t> back_after_ms;  // nothing: permanently
};

// One entry of `faults`: which transfers it matches, when it takes effect, and what it does.
struct FaultConfiguration {
  std::optional<std::uint32_t> selector;  // nothing: any
  std::optional<Direction> direction;     // nothing: any

  // At most one of these; none: every matching transfer.
  std::optional<std::uint64_t> at;     // only the n-th matching transfer, counted from 1
  std::optional<std::uint64_t> every;  // every n-th
  std::optional<double> probability;   // 0 to 1, drawn from the camera's seed

  // At least one of these.
  std::optional<std::int32_t> result;         // returned; a negative one does not reach the chip
  bool wrong_tag = false;                     // the reply's tag byte is inverted
  std::optional<std::uint32_t> length;        // reported by a length query
  std::optional<std::uint32_t> short_answer;  // the most bytes that a get returns
  std::uint32_t delay_ms = 0;                 // the answer comes late
  std::optional<std::uint32_t> stuck_word;    // flash address of a word that can't be programmed
  bool lie = false;                           // a set returns success and does nothing
  std::optional<UnplugAction> unplug;         // the camera is unplugged after this transfer
};

struct CameraConfiguration {
  std::string path;             // device path, UTF-8
  std::string name;             // friendly name, UTF-8
  std::vector<NodeType> nodes;  // by node id
  FlashConfiguration flash;
  std::map<std::uint32_t, std::uint32_t> registers;  // initial values; all others are 0
  ListHeader list_header = ListHeader::kIgnored;
  std::vector<SensorConfiguration> sensors;
  AbsentSlave absent_slave = AbsentSlave::kFailure;
  std::array<std::uint32_t, kSelectorCount> lengths = {4, 12, 11, 64, 64, 64, 64};
  std::vector<FaultConfiguration> faults;
  std::uint64_t seed = 0;
  std::string trace_file;          // UTF-8; empty: no trace
  std::string process_trace_file;  // a second trace, only of this process's transfers
  std::string state_file;          // UTF-8; never empty after loading
  bool plugged = true;             // whether a camera without a state file starts plugged in
};

struct Configuration {
  std::string file;  // the JSON file, UTF-8
  std::vector<CameraConfiguration> cameras;
};

// what() is one line: the file, the key, and what is allowed there.
class ConfigurationError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Reads the JSON file `file_utf8`. File names in it are relative to its folder. Omitted names of
// state and flash files default to "<file without extension>.camera<index>.state" and ".flash" in
// the same folder. Throws ConfigurationError, also if hosts would treat the paths of two cameras as
// equal, or if a file serves two purposes. Creates and changes no file.
Configuration LoadConfiguration(const std::string& file_utf8);

// The environment variable that names the file of process_trace_file.
inline constexpr char kTraceVariable[] = "BORVAN_VIRTUAL_CAMERA_TRACE";

// Throws ConfigurationError if the file that kTraceVariable names, in UTF-8, is the configuration
// itself or a state or flash file of its cameras. An empty name means no file.
void CheckProcessTrace(const Configuration& configuration, const std::string& trace_file_utf8);

}  // namespace virtual_camera
