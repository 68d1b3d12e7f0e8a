#include "core/trace_writer.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <nlohmann/json.hpp>
#include <string_view>
#include <system_error>

namespace virtual_camera {
namespace {

constexpr std::array<char, 17> kDigits = {"0123456789abcdef"};

// The digits of a number, as many as asked for. Printing functions take longer than the transfer.
void AppendDecimal(std::string& text, std::uint64_t number, std::size_t digits) {
  const std::size_t end = text.size() + digits;
  text.resize(end);
  for (std::size_t i = 1; i <= digits; ++i) {
    text[end - i] = kDigits[number % 10];
    number /= 10;
  }
}

void AppendHexadecimal(std::string& text, std::span<const std::uint8_t> bytes) {
  const std::size_t begin = text.size();
  text.resize(begin + 2 * bytes.size());
  char* place = text.data() + begin;
  for (const std::uint8_t byte : bytes) {
    *place++ = kDigits[byte >> 4];
    *place++ = kDigits[byte & 0x0F];
  }
}

// "2026-01-31T12:34:56.123456Z"
void AppendTime(std::string& text, std::uint64_t time_us) {
  const std::chrono::sys_time<std::chrono::microseconds> time{
      std::chrono::microseconds(static_cast<std::int64_t>(time_us))};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  AppendDecimal(text, static_cast<std::uint64_t>(static_cast<int>(date.year())), 4);
  text += '-';
  AppendDecimal(text, static_cast<unsigned>(date.month()), 2);
  text += '-';
  AppendDecimal(text, static_cast<unsigned>(date.day()), 2);
  text += 'T';
  AppendDecimal(text, static_cast<std::uint64_t>(clock.hours().count()), 2);
  text += ':';
  AppendDecimal(text, static_cast<std::uint64_t>(clock.minutes().count()), 2);
  text += ':';
  AppendDecimal(text, static_cast<std::uint64_t>(clock.seconds().count()), 2);
  text += '.';
  AppendDecimal(text, static_cast<std::uint64_t>(clock.subseconds().count()), 6);
  text += 'Z';
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
      lock_(file_, path_utf8),
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
  std::string begin(kLineBegin);
  AppendTime(begin, transfer.time_us);
  begin += "\",\"camera\":";
  begin += camera_json_;
  std::string lines;
  lines.reserve(begin.size() + 2 * transfer.bytes.size() + 128);
  if (missing != 0) {
    lines = begin + ",\"missing\":" + std::to_string(missing) + "}\n";
  }
  lines += begin;
  lines += ",\"direction\":\"";
  lines += DirectionName(transfer.direction);
  lines += "\",\"selector\":";
  lines += std::to_string(transfer.selector);
  lines += ",\"length\":";
  lines += std::to_string(transfer.length);
  lines += ",\"bytes\":\"";
  AppendHexadecimal(lines, transfer.bytes);
  lines += "\",\"result\":\"0x";
  const auto result = static_cast<std::uint32_t>(transfer.result);
  for (unsigned shift = 32; shift > 0; shift -= 4) {
    lines += kDigits[result >> (shift - 4) & 0x0F];
  }
  lines += "\"}\n";
  return lines;
}

void TraceWriter::Append(const std::string& lines) {
  const TraceGuard guard(lock_);
  const std::uint64_t size = file_.Size();
  // A process that was killed, or a computer that lost its power, may have left a part of a line.
  const bool is_cut = size != end_ && EndsWithinLine(file_, size);
  end_ = 0;
  try {
    if (is_cut) {
      const std::string whole = "\n" + lines;
      file_.WriteAt(size, BytesOf(whole));
    } else {
      file_.WriteAt(size, BytesOf(lines));
    }
  } catch (const std::system_error&) {
    file_.Truncate(size);
    throw;
  }
  end_ = size + (is_cut ? 1 : 0) + lines.size();
}

}  // namespace virtual_camera
