#include "trace_writer.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <system_error>

namespace virtual_camera {
namespace {

// "2026-01-31T12:34:56.123456Z"
std::string TimeText(std::uint64_t time_us) {
  const std::chrono::sys_time<std::chrono::microseconds> time{
      std::chrono::microseconds(static_cast<std::int64_t>(time_us))};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ",
                static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()),
                static_cast<int>(clock.subseconds().count()));
  return text.data();
}

std::string HexadecimalText(std::span<const std::uint8_t> bytes) {
  constexpr std::array<char, 17> kDigits = {"0123456789abcdef"};
  std::string text;
  text.reserve(2 * bytes.size());
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

const char* DirectionName(Direction direction) {
  switch (direction) {
    case Direction::kSet:
      return "set";
    case Direction::kGet:
      return "get";
    case Direction::kLength:
      return "length";
  }
  return "";
}

}  // namespace

TraceWriter::TraceWriter(const std::string& path_utf8, const std::string& camera) try
    : file_(path_utf8),
      camera_json_(
          nlohmann::json(camera).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) {
} catch (const std::system_error& error) {
  throw ConfigurationError("trace: can't use the file \"" + path_utf8 + "\" (" + error.what() +
                           "); it must be a file that can be written");
}

void TraceWriter::Write(const TracedTransfer& transfer) {
  std::array<char, 16> result{};
  std::snprintf(result.data(), result.size(), "0x%08x", static_cast<unsigned>(transfer.result));
  const std::string line =
      "{\"time\":\"" + TimeText(transfer.time_us) + "\",\"camera\":" + camera_json_ +
      ",\"direction\":\"" + DirectionName(transfer.direction) +
      "\",\"selector\":" + std::to_string(transfer.selector) +
      ",\"length\":" + std::to_string(transfer.length) + ",\"bytes\":\"" +
      HexadecimalText(transfer.bytes) + "\",\"result\":\"" + result.data() + "\"}\n";
  file_.Lock();
  try {
    file_.WriteAt(file_.Size(), {reinterpret_cast<const std::uint8_t*>(line.data()), line.size()});
  } catch (...) {
    file_.Unlock();
    throw;
  }
  file_.Unlock();
}

}  // namespace virtual_camera
