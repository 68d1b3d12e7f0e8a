#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "base/numbers.h"

namespace borvanusb {

// Parses the values of arguments. Each function throws WrongValue for an invalid text. The
// exception's text follows the quoted argument: why it is invalid and what is allowed.
class WrongValue : public std::exception {
 public:
  explicit WrongValue(std::string why) : why_(std::move(why)) {}
  const char* what() const noexcept override { return why_.c_str(); }

 private:
  std::string why_;
};

constexpr std::uint32_t kHighestNumber = 0xFFFFFFFF;

// The highest number with this many bits: 8, 16 or 32.
constexpr std::uint32_t HighestOf(int bits) {
  return bits == 32 ? kHighestNumber : (std::uint32_t{1} << static_cast<unsigned>(bits)) - 1;
}

// An address, 0 to 0xffffffff. K and M are allowed, because flash addresses are often round.
std::uint32_t AddressValue(const std::string& text);
// A number from `lowest` to `highest`.
std::uint64_t NumberValue(const std::string& text, std::uint64_t lowest, std::uint64_t highest);
// A value or mask of 32 bits. Smaller widths are checked later, when all options are known.
std::uint32_t WordValue(const std::string& text);
// One address or a range.
Range RangeValue(const std::string& text);
// A range of flash addresses. A single address is not allowed.
Range FlashRangeValue(const std::string& text);
// A range of whole sectors. An end that is the first address of the next sector is rejected.
Range EraseRangeValue(const std::string& text);
// A remark on a range whose last address looks like one past its end, such as 0-4M. It continues
// the text of the range. Returns an empty text for other ranges.
std::string RemarkOnEnd(const std::string& text);
// A flash size: whole sectors of 4096 bytes, up to 4 GiB.
std::uint64_t FlashSizeValue(const std::string& text);
// A decimal number, with or without a decimal point, from `lowest` to `highest`.
double DecimalValue(const std::string& text, double lowest, double highest);
// A duration with its unit: 100ms, 2s, 1.5s. From 1 ms to 24 hours.
std::chrono::milliseconds DurationValue(const std::string& text);
// A text that must not be empty. An empty text usually comes from an undefined shell variable.
std::string FileValue(const std::string& text);
// The same, and "-" stands for standard input or output. FileValue rejects "-".
std::string FileOrStreamValue(const std::string& text);
std::string CameraValue(const std::string& text);
// The index of a text in `choices`.
std::size_t ChoiceValue(const std::string& text, std::span<const std::string_view> choices);
std::size_t ChoiceValue(const std::string& text, std::initializer_list<std::string_view> choices);

// A text for messages: in quotes, on one line. An overlong text is truncated and ends with three
// dots.
std::string Quoted(std::string_view text);

}  // namespace borvanusb
