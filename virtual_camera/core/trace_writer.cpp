#include "core/trace_writer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>
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

std::span<const std::uint8_t> BytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// What every line of a trace begins with.
constexpr std::string_view kLineBegin = "{\"time\":\"";

// A file that is a trace, empty or cut short.
bool BeginsAsTrace(const SharedFile& file) {
  std::array<std::uint8_t, kLineBegin.size()> begin{};
  // Devices have no size and may answer any number of bytes.
  const std::size_t size = file.Size() == 0 ? 0 : file.ReadAt(0, begin);
  const auto expected = BytesOf(kLineBegin);
  return std::equal(begin.begin(), begin.begin() + static_cast<std::ptrdiff_t>(size),
                    expected.begin());
}

bool EndsWithinLine(const SharedFile& file, std::uint64_t size) {
  std::uint8_t last = '\n';
  if (size != 0) {
    file.ReadAt(size - 1, std::span(&last, 1));
  }
  return last != '\n';
}

}  // namespace

TraceWriter::TraceWriter(const std::string& path_utf8, const std::string& camera) try
    : file_(path_utf8),
      camera_json_(
          nlohmann::json(camera).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) {
  if (!BeginsAsTrace(file_)) {
    throw ConfigurationError("trace: the file \"" + path_utf8 +
                             "\" is not a trace of a virtual camera; name another one or remove "
                             "it");
  }
} catch (const std::system_error& error) {
  throw ConfigurationError("trace: can't use the file \"" + path_utf8 + "\" (" + error.what() +
                           "); it must be a file that can be written");
}

bool TraceWriter::Write(const TracedTransfer& transfer, std::uint64_t missing) noexcept {
  try {
    Append(Lines(transfer, missing));
    return true;
  } catch (const std::exception&) {
    return false;
  }
}

std::string TraceWriter::Lines(const TracedTransfer& transfer, std::uint64_t missing) const {
  std::array<char, 16> result{};
  std::snprintf(result.data(), result.size(), "0x%08x", static_cast<unsigned>(transfer.result));
  const std::string begin =
      std::string(kLineBegin) + TimeText(transfer.time_us) + "\",\"camera\":" + camera_json_;
  std::string lines;
  if (missing != 0) {
    lines = begin + ",\"missing\":" + std::to_string(missing) + "}\n";
  }
  return lines + begin + ",\"direction\":\"" + DirectionName(transfer.direction) +
         "\",\"selector\":" + std::to_string(transfer.selector) +
         ",\"length\":" + std::to_string(transfer.length) + ",\"bytes\":\"" +
         HexadecimalText(transfer.bytes) + "\",\"result\":\"" + result.data() + "\"}\n";
}

void TraceWriter::Append(const std::string& lines) {
  const FileLock lock(file_);
  const std::uint64_t size = file_.Size();
  // A process that was killed, or a computer that lost its power, may have left a part of a line.
  const std::string text = (EndsWithinLine(file_, size) ? "\n" : "") + lines;
  try {
    file_.WriteAt(size, BytesOf(text));
  } catch (const std::system_error&) {
    file_.Truncate(size);
    throw;
  }
}

}  // namespace virtual_camera
