#include "scripted_progress.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <deque>

namespace {

struct Report {
  unsigned time;
  std::uint64_t value;
};

struct Script {
  std::deque<Report> reports;
  std::uint64_t value = 0;
  unsigned time = 0;
  unsigned suspension = 0;
  unsigned looks = 0;
  unsigned longest_nap = 0;
  unsigned marks = 0;

  void PlayDue() {
    while (!reports.empty() && reports.front().time <= time) {
      value = reports.front().value;
      reports.pop_front();
    }
  }
};

Script script;

// A wait that polls for ever must fail a test, not hang it.
constexpr unsigned kMostLooks = 1'000'000;

}  // namespace

void script_clear() {
  script = Script();
}

void script_report(unsigned milliseconds, std::uint64_t value) {
  script.reports.push_back({milliseconds, value});
}

void script_suspend(unsigned milliseconds) {
  script.suspension = milliseconds;
}

unsigned script_time() {
  return script.time;
}

unsigned script_looks() {
  return script.looks;
}

unsigned script_longest_nap() {
  return script.longest_nap;
}

unsigned script_marks() {
  return script.marks;
}

std::uint64_t GetProgressInfo() {
  if (++script.looks > kMostLooks) {
    std::abort();
  }
  script.PlayDue();
  return script.value;
}

// As the library: with an empty name it starts nothing and reports so at once.
bool UsbFlashWriteFile(const char* file_name, std::uint32_t /*start_address*/) {
  if (file_name[0] != '\0') {
    std::abort();
  }
  script.PlayDue();
  script.value = 0xE000000A00000000;
  ++script.marks;
  return false;
}

void Sleep(unsigned long milliseconds) {
  const auto nap = static_cast<unsigned>(milliseconds);
  script.longest_nap = std::max(script.longest_nap, nap);
  script.time += nap + script.suspension;
  script.suspension = 0;
}

unsigned long GetTickCount() {
  return script.time;
}
