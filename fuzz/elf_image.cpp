// ELF files: any bytes, any bytes after a valid magic number, and files with valid tables whose
// segments may overlap. Compared with an independent reader.

#include <vector>

#include "images/elf.h"
#include "support/image_models.h"
#include "support/input.h"

namespace {

using borvan_fuzz::Input;
using Bytes = std::vector<std::uint8_t>;

void CheckFile(const Bytes& file) {
  borvan_fuzz::CheckAgainst(borvan_fuzz::ModelOfElf(file),
                            [&] { return borvanusb::ReadElf(file); });
}

void Put(Bytes& file, bool low_first, std::size_t place, unsigned size, std::uint64_t number) {
  if (file.size() < place + size) {
    file.resize(place + size);
  }
  for (unsigned i = 0; i < size; ++i) {
    file[place + i] = static_cast<std::uint8_t>(number >> (8 * (low_first ? i : size - 1 - i)));
  }
}

// Mostly small numbers, so that segments lie in the file and overlap; sometimes very large ones.
std::uint64_t SomeNumber(Input& input, bool wide) {
  const std::uint64_t number = input.Byte();
  if (number < 0xF0) {
    return number % 0x60;
  }
  const std::uint64_t greatest = wide && number < 0xF8 ? ~std::uint64_t{0} : 0xFFFFFFFF;
  return greatest - number % 8;
}

Bytes MadeFile(Input input) {
  const bool wide = input.Choice(2) == 1;
  const bool low_first = input.Choice(2) == 1;
  const unsigned word = wide ? 8 : 4;
  const std::size_t header = wide ? 64 : 52;
  const std::size_t entry = wide ? 56 : 32;
  const std::uint32_t count = input.Choice(5);
  Bytes file = {0x7F,
                'E',
                'L',
                'F',
                static_cast<std::uint8_t>(wide ? 2 : 1),
                static_cast<std::uint8_t>(low_first ? 1 : 2),
                1};
  file.resize(header);
  Put(file, low_first, wide ? 32 : 28, word, header);
  Put(file, low_first, wide ? 54 : 42, 2, entry + (input.Choice(16) == 0 ? 8 : 0));
  Put(file, low_first, wide ? 56 : 44, 2, count);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t place = header + i * entry;
    Put(file, low_first, place, 4, input.Choice(4) == 0 ? 2 : 1);
    Put(file, low_first, place + (wide ? 8 : 4), word, SomeNumber(input, wide));
    Put(file, low_first, place + (wide ? 24 : 12), word, SomeNumber(input, wide) * 3);
    const std::uint64_t size = SomeNumber(input, wide);
    Put(file, low_first, place + (wide ? 32 : 16), word, size);
    Put(file, low_first, place + (wide ? 40 : 20), word, size + input.Choice(3) - 1);
    Put(file, low_first, place + entry - word, word, 0);
  }
  const Bytes rest = input.Rest();
  file.insert(file.end(), rest.begin(), rest.end());
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes file(data, data + size);
  CheckFile(file);
  const Bytes mark = {0x7F, 'E', 'L', 'F'};
  file.insert(file.begin(), mark.begin(), mark.end());
  CheckFile(file);
  CheckFile(MadeFile(Input(data, size)));
  return 0;
}
