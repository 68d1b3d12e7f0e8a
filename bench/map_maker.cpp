#include "map_maker.h"

#include <cstdint>
#include <string_view>
#include <utility>

namespace bench {
namespace {

constexpr unsigned kRegisters = 14;  // of a peripheral, beside its array and its clusters
constexpr unsigned kDerivedEach = 5;

std::string Text(std::uint64_t number) {
  return std::to_string(number);
}

std::string Hex(std::uint64_t number) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text = "0x";
  for (int shift = 28; shift >= 0; shift -= 4) {
    text += kDigits[number >> static_cast<unsigned>(shift) & 15U];
  }
  return text;
}

// Elements of the file, each on a line of its own as the tools of chip makers write them.
class MapWriter {
 public:
  void Begin(std::string_view tag, std::string_view attributes = {}) {
    Indent();
    text_ += '<';
    text_ += tag;
    text_ += attributes;
    text_ += ">\n";
    ++depth_;
  }
  void End(std::string_view tag) {
    --depth_;
    Indent();
    text_ += "</";
    text_ += tag;
    text_ += ">\n";
  }
  void Value(std::string_view tag, std::string_view value) {
    Indent();
    text_ += '<';
    text_ += tag;
    text_ += '>';
    text_ += value;
    text_ += "</";
    text_ += tag;
    text_ += ">\n";
  }
  std::string& Text() { return text_; }

 private:
  void Indent() { text_.append(std::size_t{2} * depth_, ' '); }

  std::string text_ = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
  unsigned depth_ = 0;
};

void WriteValues(MapWriter& out, unsigned width) {
  out.Begin("enumeratedValues");
  for (unsigned value = 0; value < (1U << width) && value < 4; ++value) {
    out.Begin("enumeratedValue");
    out.Value("name", "MODE" + Text(value));
    out.Value("description", "The channel works in mode " + Text(value));
    out.Value("value", Text(value));
    out.End("enumeratedValue");
  }
  out.End("enumeratedValues");
}

void WriteFields(MapWriter& out, unsigned seed) {
  out.Begin("fields");
  unsigned bit = 0;
  for (unsigned number = 0; bit < 30; ++number) {
    const unsigned width = 1 + (seed + number) % 7;
    out.Begin("field");
    out.Value("name", "F" + Text(number) + "_BITS");
    out.Value("description", "Selects what part " + Text(number) + " does &amp; when");
    if (number % 3 == 0) {
      out.Value("bitRange", "[" + Text(bit + width - 1) + ":" + Text(bit) + "]");
    } else if (number % 3 == 1) {
      out.Value("bitOffset", Text(bit));
      out.Value("bitWidth", Text(width));
    } else {
      out.Value("lsb", Text(bit));
      out.Value("msb", Text(bit + width - 1));
    }
    out.Value("access", number % 4 == 3 ? "read-only" : "read-write");
    if ((seed + number) % 5 == 0) {
      WriteValues(out, width);
    }
    out.End("field");
    bit += width;
  }
  out.End("fields");
}

void WriteRegister(MapWriter& out, const std::string& name, unsigned offset, unsigned seed) {
  out.Begin("register");
  out.Value("name", name);
  out.Value("description", "Register " + name + " of the block");
  out.Value("addressOffset", Hex(offset));
  out.Value("size", "64");
  out.Value("resetValue", Hex(seed));
  WriteFields(out, seed);
  out.End("register");
}

void WriteArrays(MapWriter& out, unsigned seed) {
  out.Begin("register");
  out.Value("dim", "8");
  out.Value("dimIncrement", "4");
  out.Value("dimIndex", seed % 2 == 0 ? "0-7" : "A,B,C,D,E,F,G,H");
  out.Value("name", "DATA%s");
  out.Value("addressOffset", "0x100");
  out.End("register");
  out.Begin("cluster");
  out.Value("dim", "4");
  out.Value("dimIncrement", "0x40");
  out.Value("name", "CH[%s]");
  out.Value("addressOffset", "0x200");
  WriteRegister(out, "CFG", 0, seed + 1);
  out.Begin("cluster");
  out.Value("name", "TIMING");
  out.Value("addressOffset", "0x10");
  WriteRegister(out, "START", 0, seed + 2);
  out.Begin("register", " derivedFrom=\"START\"");
  out.Value("name", "STOP");
  out.Value("addressOffset", "8");
  out.End("register");
  out.End("cluster");
  out.End("cluster");
}

void WritePeripheral(MapWriter& out, unsigned number) {
  const bool derived = number % kDerivedEach != 0;
  const std::string of = " derivedFrom=\"BLOCK" + Text(number - number % kDerivedEach) + "\"";
  out.Begin("peripheral", derived && number % 2 == 1 ? of : std::string());
  out.Value("name", "BLOCK" + Text(number));
  out.Value("baseAddress", Hex(0x40000000 + number * 0x1000));
  if (!derived || number % 2 == 0) {
    out.Value("description", "Block " + Text(number));
    out.Begin("addressBlock");
    out.Value("offset", "0");
    out.Value("size", "0x1000");
    out.Value("usage", "registers");
    out.End("addressBlock");
    out.Begin("registers");
    for (unsigned i = 0; i < kRegisters; ++i) {
      WriteRegister(out, "CTRL" + Text(i), i * 8, number + i);
    }
    WriteArrays(out, number);
    out.End("registers");
  }
  out.End("peripheral");
}

}  // namespace

std::string MakeMap(std::size_t bytes) {
  MapWriter out;
  out.Begin("device", " schemaVersion=\"1.3\"");
  out.Value("name", "MADE");
  out.Value("description", "A map that a program made");
  out.Value("addressUnitBits", "8");
  out.Value("width", "32");
  out.Value("size", "32");
  out.Value("access", "read-write");
  out.Value("resetMask", "0xFFFFFFFF");
  out.Begin("peripherals");
  for (unsigned number = 0; out.Text().size() < bytes; ++number) {
    WritePeripheral(out, number);
  }
  out.End("peripherals");
  out.End("device");
  return std::move(out.Text());
}

}  // namespace bench
