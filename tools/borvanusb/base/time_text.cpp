#include "base/time_text.h"

#include "base/format.h"

namespace borvanusb {

std::string TimeText(std::chrono::system_clock::time_point time) {
  const auto seconds = std::chrono::floor<std::chrono::seconds>(time);
  const auto day = std::chrono::floor<std::chrono::days>(seconds);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(seconds - day);
  return Format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                clock.hours().count(), clock.minutes().count(), clock.seconds().count());
}

std::string TimeInFileName(std::chrono::system_clock::time_point time) {
  std::string text = TimeText(time);
  std::erase_if(text, [](char character) { return character == '-' || character == ':'; });
  return text;
}

}  // namespace borvanusb
