// program_flash.c in C++: programs an image file into a camera's flash, reads back and compares.
//
//   program_flash_cpp IMAGE ADDRESS CAMERA [SECONDS]
#include <borvan_usb.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string>

namespace {

// Exit codes. 3 is what GCC's runtime ends a program with that an exception leaves.
enum ExitCode { kWrongArguments = 1, kFileUnusable, kNoCamera = 4, kCameraNotOpened };
enum { kJobFailed = 6, kTimeLimit, kDifferent, kUnexpected };

struct Failure : std::runtime_error {
  Failure(int exit_code, const std::string& text) : std::runtime_error(text), code(exit_code) {}
  int code;
};

// An open camera.
class Camera {
 public:
  explicit Camera(std::uint32_t index) {
    const char* message = nullptr;
    if (UsbIniDevice() < 0 || !borvan_select_device(static_cast<std::int32_t>(index), &message)) {
      throw message != nullptr ? Failure(kCameraNotOpened, message)
                               : Failure(kNoCamera, "no such camera\nIs it plugged in?");
    }
    // A camera that takes no commands can be selected too; the first access tells.
    std::uint32_t value = 0;
    if (!UsbRegisterRead(0x1A3, &value, kBorvanRegisterByte)) {
      throw Failure(kCameraNotOpened, "the camera does not take commands");
    }
  }
  // The end of the instance accesses the camera, which must not mix with a job that still runs.
  ~Camera() {
    if (!job_may_run_) {
      UsbDestroyUSB();
    }
  }
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  // Starts a job by calling `start`, and waits for its end.
  template <typename Start>
  void Run(const std::string& doing, std::uint32_t seconds, Start start) {
    const std::uint64_t before = borvan_before_job();
    const auto show = [](std::int32_t percent, void*) { std::cerr << '\r' << percent << " %"; };
    const std::uint32_t status =
        start() ? borvan_wait_for_job(kBorvanJobOther, before, seconds * 1000, show, nullptr)
                : kBorvanFileError;
    job_may_run_ = status == kBorvanWaitTimeLimit;
    if (status != 0) {
      const char* const known = borvan_status_message(status);
      std::ostringstream text;
      text << doing << ": " << (known != nullptr ? known : "an error of the system or the camera")
           << " (0x" << std::hex << status << ")\nThe flash may hold a part of the image."
           << " Program it again.";
      throw Failure(job_may_run_ ? kTimeLimit : kJobFailed, text.str());
    }
  }

 private:
  bool job_may_run_ = false;
};

std::string Load(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::uint32_t Number(const char* text, std::uint32_t highest) {
  char* end = nullptr;
  const auto number = std::strtoull(text, &end, text[0] == '0' && text[1] == 'x' ? 16 : 10);
  if (text[0] < '0' || text[0] > '9' || *end != '\0' || number > highest) {
    throw Failure(kWrongArguments,
                  std::string(text) + ": no number up to " + std::to_string(highest));
  }
  return static_cast<std::uint32_t>(number);
}

void Program(const std::string& image_file, std::uint32_t address, std::uint32_t index,
             std::uint32_t seconds) {
  const std::string image = Load(image_file);
  if (image.empty() || image.size() - 1 > UINT32_MAX - address) {
    throw Failure(kFileUnusable, image_file + ": missing, empty or larger than the flash can be");
  }
  if (address % 4096 != 0) {  // the library would erase what lies before it, too
    throw Failure(kWrongArguments, "the address is no multiple of 4096");
  }
  Camera camera(index);
  camera.Run("programming", seconds,
             [&] { return UsbFlashWriteFile(image_file.c_str(), address); });
  const std::string file = image_file + ".readback";
  const auto last = static_cast<std::uint32_t>(address + image.size() - 1);
  camera.Run("reading back", seconds,
             [&] { return UsbFlashQuickReadFile(file.c_str(), address, last); });
  std::string read_back;  // the job writes the file after it has reported its end
  for (int i = 0; i < 500 && read_back.size() != image.size(); ++i) {
    Sleep(20);
    read_back = Load(file);
  }
  if (read_back != image) {
    throw Failure(kDifferent, file + " was read back, which differs from the image");
  }
  std::cout << "\nthe flash holds the image, " << image.size() << " bytes\n";
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 4 || argc > 5) {
      throw Failure(kWrongArguments, "usage: program_flash_cpp IMAGE ADDRESS CAMERA [SECONDS]");
    }
    Program(argv[1], Number(argv[2], UINT32_MAX), Number(argv[3], 1000),
            argc > 4 ? Number(argv[4], 86400) : 600);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "\nprogram_flash_cpp: " << error.what() << '\n';
    const auto* const failure = dynamic_cast<const Failure*>(&error);
    return failure != nullptr ? failure->code : kUnexpected;
  }
}
