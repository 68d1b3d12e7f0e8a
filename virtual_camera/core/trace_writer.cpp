#include "core/trace_writer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

#include "core/format.h"

namespace virtual_camera {
namespace {

// "2026-01-31T12:34:56.123456Z"
std::string TimeText(std::uint64_t time_us) {
  const std::chrono::sys_time<std::chrono::microseconds> time{
      std::chrono::microseconds(static_cast<std::int64_t>(time_us))};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  return Format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}.{:06}Z", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                clock.hours().count(), clock.minutes().count(), clock.seconds().count(),
                clock.subseconds().count());
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

// The start of every line of a trace.
constexpr std::string_view kLineBegin = "{\"time\":\"";

// Whether the file is a trace, which may be empty or truncated.
bool BeginsAsTrace(const SharedFile& file) {
  std::array<std::uint8_t, kLineBegin.size()> begin{};
  // Devices have no size and may return any number of bytes.
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
      lock_(file_, path_utf8),
      camera_json_(
          nlohmann::json(camera).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) {
  if (!BeginsAsTrace(file_)) {
    throw ConfigurationError(Format(
        "trace: the file \"{}\" is not a trace of a virtual camera; name another one or remove it",
        path_utf8));
  }
} catch (const std::system_error& error) {
  throw ConfigurationError(
      Format("trace: can't use the file \"{}\" ({}); it must be a file that can be written",
             path_utf8, error.what()));
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
  const std::string begin =
      Format("{}{}\",\"camera\":{}", kLineBegin, TimeText(transfer.time_us), camera_json_);
  std::string lines;
  if (missing != 0) {
    lines = Format("{},\"missing\":{}}}\n", begin, missing);
  }
  return Format(
      R"({}{},"direction":"{}","selector":{},"length":{},"bytes":"{}","result":"0x{:08x}"}})"
      "\n",
      lines, begin, DirectionName(transfer.direction), transfer.selector, transfer.length,
      HexadecimalText(transfer.bytes), static_cast<std::uint32_t>(transfer.result));
}

void TraceWriter::Append(const std::string& lines) {
  const TraceGuard guard(lock_);
  const std::uint64_t size = file_.Size();
  // A process that was killed, or a computer that lost its power, may have left a part of a line.
  const bool is_cut = size != end_ && EndsWithinLine(file_, size);
  const std::string text = is_cut ? "\n" + lines : lines;
  end_ = 0;
  try {
    file_.WriteAt(size, BytesOf(text));
  } catch (const std::system_error&) {
    file_.Truncate(size);
    throw;
  }
  end_ = size + text.size();
}

}  // namespace virtual_camera
