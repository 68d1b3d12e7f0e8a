// Programs a camera's flash with an image, reads it back and compares. See --help.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

#include "arguments.h"
#include "borvan_usb.h"
#include "cameras.h"
#include "failure.h"
#include "flash_dump.h"
#include "flash_jobs.h"
#include "image_files.h"

namespace {

constexpr std::uint64_t kAddressSpace = std::uint64_t{1} << 32U;
constexpr std::uint32_t kSectorSize = 4096;
constexpr std::uint32_t kPacketSize = 60;  // the last one is filled up with zeros

// The image, found fit to be programmed before any camera is touched.
std::vector<std::uint8_t> LoadImage(const Arguments& arguments) {
  std::vector<std::uint8_t> image;
  if (!ReadWholeFile(arguments.image, image)) {
    throw Failure(ExitCode::kImageUnusable, "can't read the image file " + arguments.image);
  }
  if (image.empty()) {
    throw Failure(ExitCode::kImageUnusable, "the image file " + arguments.image + " is empty");
  }
  if (arguments.address + image.size() > kAddressSpace) {
    throw Failure(ExitCode::kImageUnusable,
                  "the image file " + arguments.image + " reaches beyond the address 0xFFFFFFFF");
  }
  return image;
}

// An old dump must not be taken for the new one, nor the image for an old dump.
void MakeRoomForDump(const Arguments& arguments) {
  if (IsSameFile(arguments.image, arguments.dump)) {
    throw Failure(ExitCode::kWrongArguments,
                  "--dump: " + arguments.dump + " is the image file itself");
  }
  if (!RemoveFile(arguments.dump)) {
    throw Failure(ExitCode::kWrongArguments,
                  "--dump: " + arguments.dump + " can't be replaced, or its folder is missing");
  }
}

void WarnOfBytesBehindImage(const Arguments& arguments, std::size_t size) {
  const std::size_t filled = (kPacketSize - size % kPacketSize) % kPacketSize;
  const std::size_t left_in_sector = (kSectorSize - size % kSectorSize) % kSectorSize;
  if (filled > left_in_sector) {
    std::printf("note: the last packet also sets the %u bytes from 0x%08lx on to 0\n",
                static_cast<unsigned>(filled - left_in_sector),
                static_cast<unsigned long>(arguments.address + size + left_in_sector));
  }
}

std::vector<std::uint8_t> LoadDump(const Arguments& arguments, std::size_t size) {
  std::vector<std::uint8_t> dump;
  if (!ReadWholeFile(arguments.dump, dump)) {
    throw Failure(ExitCode::kReadingBackFailed, "can't read the dump " + arguments.dump);
  }
  if (!IsTextDump(arguments.dump)) {
    return dump;
  }
  const auto bytes = ParseTextDump(std::string(dump.begin(), dump.end()), arguments.address, size);
  if (!bytes) {
    throw Failure(ExitCode::kReadingBackFailed, arguments.dump + " is no text dump of that range");
  }
  return *bytes;
}

std::string SecondsText(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f s", seconds);
  return text.data();
}

void Compare(const std::vector<std::uint8_t>& image, const std::vector<std::uint8_t>& dump,
             std::uint32_t address) {
  const auto difference = FirstDifference(image, dump);
  if (!difference) {
    return;
  }
  std::array<char, 96> text{};
  if (*difference >= image.size() || *difference >= dump.size()) {
    std::snprintf(text.data(), text.size(), "the dump has %lu bytes, the image %lu",
                  static_cast<unsigned long>(dump.size()),
                  static_cast<unsigned long>(image.size()));
  } else {
    std::snprintf(
        text.data(), text.size(), "different: at 0x%08lx the image has 0x%02x, the flash 0x%02x",
        static_cast<unsigned long>(address + *difference),
        static_cast<unsigned>(image[*difference]), static_cast<unsigned>(dump[*difference]));
  }
  throw Failure(ExitCode::kDifferent, text.data());
}

// Programs through a camera that is open, and says what it is going to do.
double Program(const Arguments& arguments, std::size_t size, const Patience& patience) {
  std::printf("programming %lu bytes at 0x%08lx\n", static_cast<unsigned long>(size),
              static_cast<unsigned long>(arguments.address));
  WarnOfBytesBehindImage(arguments, size);
  std::fflush(stdout);
  return ProgramFlash(arguments.image, arguments.address, patience);
}

void Run(const Arguments& arguments) {
  const std::vector<std::uint8_t> image = LoadImage(arguments);
  const auto size = static_cast<std::uint32_t>(image.size());
  MakeRoomForDump(arguments);

  const Patience patience(arguments.time_limit);
  const std::vector<UsbDeviceInfo> cameras = ListCameras();
  PrintCameras(cameras);
  const std::int32_t index = FindCamera(cameras, arguments.camera);
  OpenCamera(index);
  std::string result = "identical: " + std::to_string(size) + " bytes";
  if (!arguments.compare_only) {
    result += ", programmed in " + SecondsText(Program(arguments, image.size(), patience));
    // The second job gets an instance of its own: in the first one's, the 100 still stands, and its
    // clearing would fall into the dump. Cameras may have come and gone, so the path is looked up.
    const std::string path = PathOf(cameras[static_cast<std::size_t>(index)]);
    OpenCamera(FindCamera(ListCameras(), path));
  }
  result +=
      ", read back in " + SecondsText(DumpFlash(arguments.dump, arguments.address, size, patience));
  Compare(image, LoadDump(arguments, image.size()), arguments.address);
  UsbDestroyUSB();
  std::puts(result.c_str());
}

// A job may still be running and nothing can stop it: nothing of the library is taken down under
// it, the process ends as a whole.
[[noreturn]] void End(const char* text, ExitCode code) {
  std::fflush(stdout);
  const std::string line = std::string("program_flash: ") + text + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
  std::fflush(stderr);
  std::_Exit(static_cast<int>(code));
}

}  // namespace

int main(int argc, char** argv) {
  // On a terminal the stream would have no buffer and pass on each character by itself.
  std::setvbuf(stdout, nullptr, _IOFBF, BUFSIZ);
  try {
    const Arguments arguments = ParseArguments(argc, argv);
    if (arguments.help) {
      std::fputs(HelpText(), stdout);
    } else {
      Run(arguments);
    }
    return static_cast<int>(ExitCode::kIdentical);
  } catch (const Failure& failure) {
    End(failure.what(), failure.Code());
  } catch (const std::exception& error) {
    End(error.what(), ExitCode::kUnexpected);
  }
}
