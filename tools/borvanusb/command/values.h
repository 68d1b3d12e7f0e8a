#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "base/numbers.h"

namespace borvanusb {

// The values of arguments from their texts. Each function throws WrongValue for a text that is not
// one: what it is not and what is allowed, as the continuation of the text in quotes.
class WrongValue : public std::exception {
 public:
  explicit WrongValue(std::string why) : why_(std::move(why)) {}
  const char* what() const noexcept override { return why_.c_str(); }

 private:
  std::string why_;
};

constexpr std::uint32_t kHighestNumber = 0xFFFFFFFF;

// The highest number of so many bits: 8, 16 or 32.
constexpr std::uint32_t HighestOf(int bits) {
  return bits == 32 ? kHighestNumber : (std::uint32_t{1} << static_cast<unsigned>(bits)) - 1;
}

// An address, 0 to 0xffffffff. K and M are allowed: flash addresses are round.
std::uint32_t AddressValue(const std::string& text);
// A number from `lowest` to `highest`.
std::uint64_t NumberValue(const std::string& text, std::uint64_t lowest, std::uint64_t highest);
// A value or mask of 32 bits; narrower ones are checked when all options are known.
std::uint32_t WordValue(const std::string& text);
// One address or several.
Range RangeValue(const std::string& text);
// A range of flash addresses; a single address is none.
Range FlashRangeValue(const std::string& text);
// The same for whole sectors: an end that looks like the next sector's first address is refused.
Range EraseRangeValue(const std::string& text);
// What is to be known of a range whose last address looks like one past its end, such as 0-4M, as
// the continuation of the text; nothing for other texts.
std::string RemarkOnEnd(const std::string& text);
// A flash size: whole sectors of 4096 bytes, up to 4 GiB.
std::uint64_t FlashSizeValue(const std::string& text);
// A decimal number with a point or without, from `lowest` to `highest`.
double DecimalValue(const std::string& text, double lowest, double highest);
// A time with its unit: 100ms, 2s, 1.5s; 1 ms to 24 hours.
std::chrono::milliseconds DurationValue(const std::string& text);
// A text that is not empty; an empty one is a shell variable that was never set.
std::string FileValue(const std::string& text);
// The same where "-" means standard input or output; FileValue refuses it.
std::string FileOrStreamValue(const std::string& text);
std::string CameraValue(const std::string& text);
// The place of a text among the choices.
std::size_t ChoiceValue(const std::string& text, std::initializer_list<std::string_view> choices);

// A text as messages show it: in quotes, on one line, whole unless it is longer than any word that
// people write; then its beginning and three dots.
std::string Quoted(std::string_view text);

}  // namespace borvanusb
