#include "progress_bar.h"

#include <windows.h>

#include <cstdio>
#include <utility>

namespace {

constexpr std::int32_t kCells = 40;
constexpr std::int32_t kPlainStep = 25;

bool StandardErrorIsTerminal() {
  DWORD mode = 0;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace

ProgressBar::ProgressBar(std::string title)
    : title_(std::move(title)),
      start_(std::chrono::steady_clock::now()),
      live_(StandardErrorIsTerminal()) {}

ProgressBar::~ProgressBar() {
  if (line_open_) {
    std::fputs("\n", stderr);
  }
}

void ProgressBar::Show(std::int32_t percent) {
  const double seconds = Seconds();
  if (!live_) {
    if (percent / kPlainStep == shown_percent_ / kPlainStep && shown_percent_ >= 0) {
      return;
    }
    shown_percent_ = percent;
    std::fprintf(stderr, "%-12s %3d %%  %5.1f s\n", title_.c_str(), static_cast<int>(percent),
                 seconds);
    std::fflush(stderr);
    return;
  }
  // Writing to a terminal costs more than looking: only what changes to the eye is written.
  const auto tenths = static_cast<std::int64_t>(seconds * 10);
  if (percent == shown_percent_ && tenths == shown_tenths_) {
    return;
  }
  shown_percent_ = percent;
  shown_tenths_ = tenths;
  line_open_ = true;
  const std::int32_t full = percent * kCells / 100;
  const std::string bar = std::string(static_cast<std::size_t>(full), '#') +
                          std::string(static_cast<std::size_t>(kCells - full), '.');
  std::fprintf(stderr, "\r%-12s [%s] %3d %%  %5.1f s", title_.c_str(), bar.c_str(),
               static_cast<int>(percent), seconds);
  std::fflush(stderr);
}

double ProgressBar::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}
