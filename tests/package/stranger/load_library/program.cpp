// Programs IMAGE into the flash of the first camera at 0x40000 and reads it back into COPY, with
// the DLL that the first argument names. Nothing of the library is linked: the types are the
// header's.
#include <borvan_usb.h>
#include <windows.h>

#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace {

constexpr std::uint32_t kAddress = 0x40000;

template <typename Function>
void Bind(HMODULE library, const char* name, Function& function) {
  const FARPROC address = GetProcAddress(library, name);
  static_assert(sizeof function == sizeof address);
  std::memcpy(&function, &address, sizeof function);
}

struct Library {
  explicit Library(const char* file) : handle(LoadLibraryA(file)) {
    if (handle != nullptr) {
      Bind(handle, "UsbIniDevice", init);
      Bind(handle, "UsbSelectDevice", select);
      Bind(handle, "UsbFlashWriteFile", program);
      Bind(handle, "UsbFlashQuickReadFile", read);
      Bind(handle, "GetProgressInfo", progress);
      Bind(handle, "UsbDestroyUSB", destroy);
    }
  }
  bool Complete() const { return init && select && program && read && progress && destroy; }

  HMODULE handle;
  decltype(&UsbIniDevice) init = nullptr;
  decltype(&UsbSelectDevice) select = nullptr;
  decltype(&UsbFlashWriteFile) program = nullptr;
  decltype(&UsbFlashQuickReadFile) read = nullptr;
  decltype(&GetProgressInfo) progress = nullptr;
  decltype(&UsbDestroyUSB) destroy = nullptr;
};

std::uint32_t SizeOf(const char* name) {
  std::error_code error;
  const auto size = std::filesystem::file_size(name, error);
  return error ? 0 : static_cast<std::uint32_t>(size);
}

// A new instance shows nothing of a former job, so the first end that is seen is this job's.
bool Ends(const Library& library, bool started) {
  for (int i = 0; started && i < 3000; ++i) {
    const BorvanProgressState state = borvan_progress_state(library.progress());
    if (state == kBorvanProgressDone || state == kBorvanProgressFailed) {
      return state == kBorvanProgressDone;
    }
    Sleep(20);
  }
  return false;
}

bool Opens(const Library& library) {
  return library.init() >= 0 && library.select(0);
}

}  // namespace

int main(int argc, char** argv) {
  const std::uint32_t size = argc == 4 ? SizeOf(argv[2]) : 0;
  if (size == 0) {
    std::puts("usage: program BorvanUSB_x64.dll IMAGE COPY");
    return 1;
  }
  const Library library(argv[1]);
  if (!library.Complete()) {
    std::printf("%s is not the library\n", argv[1]);
    return 2;
  }
  if (!Opens(library) || !Ends(library, library.program(argv[2], kAddress))) {
    return 3;
  }
  if (!Opens(library) || !Ends(library, library.read(argv[3], kAddress, kAddress + size - 1))) {
    return 4;
  }
  for (int i = 0; i < 500 && SizeOf(argv[3]) != size; ++i) {
    Sleep(20);  // the job writes its file after it has ended
  }
  library.destroy();
  return SizeOf(argv[3]) == size ? 0 : 5;
}
