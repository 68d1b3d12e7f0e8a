#include "arguments.h"

#include <cstdlib>

#include "failure.h"

namespace {

constexpr std::uint32_t kSectorSize = 4096;
constexpr std::uint64_t kHighestAddress = 0xFFFFFFFF;
constexpr std::uint64_t kLongestTimeLimit = 86400;

[[noreturn]] void Refuse(const std::string& text) {
  throw Failure(ExitCode::kWrongArguments, text + " (see --help)");
}

std::uint64_t ParseNumber(const std::string& option, const std::string& text, std::uint64_t lowest,
                          std::uint64_t highest) {
  const bool hexadecimal = text.starts_with("0x") || text.starts_with("0X");
  const std::string digits = hexadecimal ? text.substr(2) : text;
  const char* const allowed = hexadecimal ? "0123456789abcdefABCDEF" : "0123456789";
  // 16 digits always fit into 64 bits, so the conversion can't overflow.
  const bool number = !digits.empty() && digits.size() <= 16 &&
                      digits.find_first_not_of(allowed) == std::string::npos;
  const std::uint64_t value =
      number ? std::strtoull(digits.c_str(), nullptr, hexadecimal ? 16 : 10) : 0;
  if (!number || value < lowest || value > highest) {
    Refuse(option + ": \"" + text + "\" is no number from " + std::to_string(lowest) + " to " +
           std::to_string(highest) + ", decimal or with 0x");
  }
  return value;
}

}  // namespace

Arguments ParseArguments(int argc, const char* const* argv) {
  Arguments arguments;
  for (int i = 1; i < argc; ++i) {
    const std::string option = argv[i];
    if (option == "--help" || option == "-h") {
      arguments.help = true;
      return arguments;
    }
    if (option == "--compare-only") {
      arguments.compare_only = true;
      continue;
    }
    if (option != "--image" && option != "--address" && option != "--camera" &&
        option != "--dump" && option != "--timeout") {
      Refuse("\"" + option + "\" is no option of this program");
    }
    ++i;
    const std::string value = i < argc ? argv[i] : "";
    if (value.empty()) {
      Refuse(option + " needs a value");
    }
    if (option == "--image") {
      arguments.image = value;
    } else if (option == "--address") {
      arguments.address =
          static_cast<std::uint32_t>(ParseNumber(option, value, 0, kHighestAddress));
      // The library erases from the address on as it is given, and a sector that is only half
      // meant loses its other half.
      if (arguments.address % kSectorSize != 0) {
        Refuse("--address: " + value + " is no multiple of 4096, the size of a flash sector");
      }
    } else if (option == "--camera") {
      arguments.camera = value;
    } else if (option == "--dump") {
      arguments.dump = value;
    } else {
      arguments.time_limit = std::chrono::seconds(ParseNumber(option, value, 1, kLongestTimeLimit));
    }
  }
  if (arguments.image.empty()) {
    Refuse("--image is missing");
  }
  return arguments;
}

const char* HelpText() {
  return R"(Programs a camera's flash with an image, reads it back and compares.

usage: program_flash --image FILE [--address N] [--camera INDEX|PATH] [--dump FILE] [--timeout S]
                     [--compare-only]

  --image FILE     the bytes to program
  --address N      flash address of the first byte, a multiple of 4096, decimal or with 0x;
                   0 when left out
  --camera C       which camera: its index or device path as listed; may be left out when there
                   is only one
  --dump FILE      where to put what was read back; an existing file is replaced; a name ending
                   in .txt gives lines of text; flash-dump.bin when left out
  --timeout S      seconds after which to give up, 1 to 86400; 600 when left out
  --compare-only   leave the flash as it is: only read back and compare

exit codes
  0  the flash holds the image
  1  wrong arguments
  2  the image file can't be used
  3  no such camera
  4  the camera can't be opened
  5  programming failed
  6  reading back failed
  7  the flash differs from the image
  8  the time limit was reached
  9  interrupted with Ctrl-C
 10  anything else, such as lack of memory

Nothing stops the camera in the middle of a command: after 5, 8, 9 or 10 its flash may hold a part of
the image only, and a camera without its firmware may not start again.
)";
}
