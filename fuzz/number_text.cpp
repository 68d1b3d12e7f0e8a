// The number texts against models of the Windows runtime's conversions and against printf.

#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "base/hexadecimal_text.h"
#include "support/check.h"
#include "support/input.h"
#include "support/number_model.h"

namespace {

using borvan_fuzz::CheckEqual;

void CheckReading(const std::string& text) {
  CheckEqual(borvan::ParseUnsignedLong(text), borvan_fuzz::ModelUnsignedLong(text), "strtoul");
  CheckEqual(static_cast<std::uint32_t>(borvan::ParseLong(text)),
             static_cast<std::uint32_t>(borvan_fuzz::ModelLong(text)), "strtol");
  CheckEqual(borvan::ParseUnsigned64Low(text), borvan_fuzz::ModelUnsigned64Low(text),
             "64 bits unsigned");

  // This system's function gives the same results as that of Windows, except if 64 bits overflow.
  errno = 0;
  const unsigned long long number = std::strtoull(text.c_str(), nullptr, 16);
  if (errno == 0) {
    CheckEqual(borvan::ParseUnsigned64Low(text), number & 0xFFFFFFFF, "strtoull");
  }
}

// A character above 0xFF ends a number like any other character that is not a digit.
void CheckWideReading(const std::string& text) {
  std::u16string wide;
  std::string narrow;
  for (std::size_t i = 0; i + 1 < text.size(); i += 2) {
    const auto high = static_cast<unsigned char>(text[i + 1]);
    const auto low = static_cast<unsigned char>(text[i]);
    wide.push_back(static_cast<char16_t>(high << 8 | low));
    narrow.push_back(high == 0 && low < 0x80 ? text[i] : '?');
  }
  CheckEqual(static_cast<std::uint32_t>(borvan::ParseLong(wide)),
             static_cast<std::uint32_t>(borvan_fuzz::ModelLong(narrow)), "wcstol");
}

void CheckWriting(std::uint64_t number) {
  char text[20];
  std::snprintf(text, sizeof text, "%" PRIx64, number);
  CheckEqual(borvan::FormatHex(number), text, "%llx");
  const auto low = static_cast<std::uint32_t>(number);
  std::snprintf(text, sizeof text, "%08" PRIx32, low);
  CheckEqual(borvan::FormatHex8(low), text, "%08x");
  const auto byte = static_cast<std::uint8_t>(number);
  std::snprintf(text, sizeof text, "%02x", byte);
  CheckEqual(borvan::FormatHexByte(byte), text, "%02x");
  CheckEqual(borvan::ParseUnsignedLong(borvan::FormatHex(low)), low, "written and read, 32 bits");
  CheckEqual(borvan::ParseUnsigned64Low(borvan::FormatHex(number)), low,
             "written and read, 64 bits");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  CheckReading(text);
  CheckWideReading(text);
  borvan_fuzz::Input input(data, size);
  const std::uint64_t high = input.Word();
  CheckWriting(high << 32 | input.Word());
  return 0;
}
