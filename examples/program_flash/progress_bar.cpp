#include "progress_bar.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace {

constexpr std::size_t kCells = 40;
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
    Print("", percent, seconds, "\n");
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
  const auto full = static_cast<std::size_t>(percent) * kCells / 100;
  std::string bar(1, '[');
  bar.append(full, '#').append(kCells - full, '.').append("] ");
  Print(bar, percent, seconds, "\r");
}

void ProgressBar::Print(const std::string& bar, std::int32_t percent, double seconds,
                        const char* end) const {
  std::array<char, 128> line{};
  const int length =
      std::snprintf(line.data(), line.size(), "%-12s %s%3d %%  %5.1f s%s", title_.c_str(),
                    bar.c_str(), static_cast<int>(percent), seconds, end);
  // At one go, as far as the runtime library goes along; some keep a buffer for this stream.
  std::fwrite(line.data(), 1, std::min(static_cast<std::size_t>(length), line.size() - 1), stderr);
  std::fflush(stderr);
}

double ProgressBar::Seconds() const {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
}
