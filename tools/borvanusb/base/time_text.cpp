#include "base/time_text.h"

#include <array>
#include <cstddef>
#include <cstdio>

namespace borvanusb {

std::string TimeText(std::chrono::system_clock::time_point time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto day = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(seconds - day);
  std::array<char, 64> text{};
  const int length = std::snprintf(
      text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
      static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
      static_cast<int>(clock.seconds().count()));
  return {text.data(), static_cast<std::size_t>(length)};
}

std::string TimeInFileName(std::chrono::system_clock::time_point time) {
  std::string text = TimeText(time);
  std::erase_if(text, [](char character) { return character == '-' || character == ':'; });
  return text;
}

}  // namespace borvanusb
