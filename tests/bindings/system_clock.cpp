// What borvan_wait_for_job.h takes from Windows, for programs of this system.

#include <borvan_usb.h>

#include <chrono>
#include <thread>

extern "C" {

void Sleep(unsigned long milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

unsigned long GetTickCount() {
  const auto time = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<unsigned long>(
      std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

}  // extern "C"
