// Programs IMAGE into the flash of the first camera at 0x40000 and reads it back into COPY.
#include <borvan_usb.h>

#include <cstdio>
#include <filesystem>
#include <system_error>

namespace {

constexpr std::uint32_t kAddress = 0x40000;

std::uint32_t SizeOf(const char* name) {
  std::error_code error;
  const auto size = std::filesystem::file_size(name, error);
  return error ? 0 : static_cast<std::uint32_t>(size);
}

bool Ends(const char* job, bool started, std::uint64_t before) {
  const std::uint32_t status =
      started ? borvan_wait_for_job(kBorvanJobOther, before, 60000, nullptr, nullptr)
              : kBorvanFileError;
  std::printf("%s: status 0x%08lX\n", job, static_cast<unsigned long>(status));
  return status == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint32_t size = argc == 3 ? SizeOf(argv[1]) : 0;
  const char* message = nullptr;
  if (size == 0 || UsbIniDevice() < 0 || !borvan_select_device(0, &message)) {
    std::printf("usage: program IMAGE COPY; %s\n",
                message != nullptr ? message : "no image or no camera");
    return 1;
  }
  std::uint64_t before = borvan_before_job();
  if (!Ends("program", UsbFlashWriteFile(argv[1], kAddress), before)) {
    return 2;
  }
  before = borvan_before_job();
  if (!Ends("read", UsbFlashQuickReadFile(argv[2], kAddress, kAddress + size - 1), before)) {
    return 3;
  }
  for (int i = 0; i < 500 && SizeOf(argv[2]) != size; ++i) {
    Sleep(20);  // the job writes its file after it has ended
  }
  UsbDestroyUSB();
  return SizeOf(argv[2]) == size ? 0 : 4;
}
