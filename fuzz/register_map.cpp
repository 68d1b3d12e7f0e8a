// The reader of register maps: any text is a consistent map, or an error with its line. A small
// text never expands beyond the limits.

#include <string>

#include "maps/map_text.h"
#include "maps/read_svd.h"
#include "support/check.h"

namespace {
using namespace borvanusb;

using borvan_fuzz::Check;
using borvan_fuzz::CheckEqual;

MapLimits SmallLimits() {
  MapLimits limits;
  limits.bytes = std::size_t{1} << 20U;
  limits.entries = 20'000;
  return limits;
}

std::uint64_t LinesOf(const std::string& text) {
  std::uint64_t lines = 1;
  for (const char character : text) {
    lines += character == '\n' ? 1 : 0;
  }
  return lines;
}

void CheckForm(const MapRegisterForm& form) {
  std::uint64_t entries = 1 + form.fields.size();
  for (const MapField& field : form.fields) {
    Check(!field.name.empty() && field.bit_width > 0, "a field without a name or without bits");
    for (const MapEnumeration* const enumeration : field.enumerations) {
      entries += enumeration != nullptr ? enumeration->values.size() : 0;
    }
  }
  CheckEqual(form.entries, entries, "the entries of a form");
}

void CheckMap(const RegisterMap& map, std::uint64_t lines) {
  std::uint64_t entries = 0;
  std::size_t next = 0;
  for (const MapPeripheral& peripheral : map.peripherals) {
    CheckEqual(peripheral.first_register, next, "the registers of peripherals in a row");
    next += peripheral.register_count;
    for (const MapRegister& one : map.RegistersOf(peripheral)) {
      Check(one.name.starts_with(peripheral.name), "a register outside of its peripheral");
      Check(one.address >= peripheral.base, "a register before its peripheral");
      CheckForm(*one.form);
      entries += one.form->entries;
    }
  }
  CheckEqual(next, map.registers.size(), "the registers of all peripherals");
  Check(entries <= SmallLimits().entries, "more than the limit allows");
  std::uint64_t last = 0;
  for (const ListProblem& doubt : map.Doubts()) {
    Check(doubt.line >= last && doubt.line > 0 && doubt.line <= lines, "a doubt on a wrong line");
    Check(!doubt.text.empty(), "a doubt without a text");
    last = doubt.line;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  try {
    const RegisterMap map = ReadSvd(text, SmallLimits());
    CheckMap(map, LinesOf(text));
    std::size_t printed = 0;
    PrintMap(map, [&](std::string_view line) { printed += line.size(); });
  } catch (const SvdError& error) {
    Check(error.Line() <= LinesOf(text), "an error behind the last line");
    Check(error.what()[0] != '\0', "an error without a text");
  }
  return 0;
}
